// config-center as a process that a run starts, stops and kills again and again.
//
// It counts as ready when it says so to its notice socket: while clients fight for the lock, its
// value does not tell.
#ifndef PROREFLAX_TESTS_ENDURANCE_CONFIG_SERVICE_H
#define PROREFLAX_TESTS_ENDURANCE_CONFIG_SERVICE_H

#include <sys/types.h>

#include <string>

#include "tests/endurance/run.h"
#include "tests/support/files.h"

namespace endurance {

/// An empty device with the flash copy tool and the factory file.
void prepare_device();

/// Value of the access lock, and messages on the request queue; -1 when it does not exist.
int lock_value();
long waiting_messages();

/// Whether a child has ended; it is left to be waited for.
bool has_ended(pid_t id);

/// Waits so long for a child's end; false when it goes on.
bool ends_within(pid_t id, double seconds);

class config_service {
 public:
  explicit config_service(report& found);
  ~config_service();
  config_service(const config_service&) = delete;
  config_service& operator=(const config_service&) = delete;

  /// Starts it, in a process group of its own, without waiting until it is ready.
  void launch();

  /// False, and a violation, when it ends instead or is not ready within 20 s.
  bool becomes_ready();

  bool start() {
    launch();
    return becomes_ready();
  }

  bool runs() const { return id_ > 0 && !has_ended(id_); }
  pid_t id() const { return id_; }

  enum class target { service, group };

  /// Sends a signal and waits for the end: the exit status, or minus the signal that ended it. A
  /// service that goes on for 20 s is a violation, and killed.
  int end(int signal, target to = target::service);

  /// Memory in use, in KiB, and open descriptors.
  long resident_kib() const;
  long descriptors() const;

 private:
  report& found_;
  files::temporary_folder folder_;
  std::string log_path_;
  int notices_;
  pid_t id_ = -1;
};

/// Reports memory and descriptors of a service, and a violation when either has grown.
class footprint {
 public:
  explicit footprint(const config_service& service)
      : service_{service},
        kib_before_{service.resident_kib()},
        descriptors_before_{service.descriptors()} {}
  void compare(report& found) const;

 private:
  const config_service& service_;
  long kib_before_;
  long descriptors_before_;
};

/// What has to hold once no client is left: the lock is free, and the queue empty before long but
/// for so many messages.
void expect_free_lock_and_empty_queue(const report& found, long messages = 0);

}  // namespace endurance

#endif
