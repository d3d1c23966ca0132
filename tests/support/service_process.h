// config-center as a process of its own, on the device's folder of the build tree.
#ifndef PROREFLAX_TESTS_SUPPORT_SERVICE_PROCESS_H
#define PROREFLAX_TESTS_SUPPORT_SERVICE_PROCESS_H

#include <sys/types.h>

#include <csignal>
#include <string>
#include <vector>

#include "tests/support/child.h"

class service_process {
 public:
  /// Starts the service and waits until it is ready, or has ended. `before_exec` runs in the new
  /// process.
  explicit service_process(const std::vector<std::string>& options = {},
                           void (*before_exec)() = nullptr);
  ~service_process();
  service_process(const service_process&) = delete;
  service_process& operator=(const service_process&) = delete;

  bool runs() const;
  pid_t id() const { return id_; }

  /// Sends a signal and waits for the end: the exit status, or minus the signal that ended it.
  int end(int signal = SIGTERM);

  /// Waits for the end of a service that ends by itself.
  int status();

  /// Stops it, and returns once it stands still; lets it go on.
  void freeze() const;
  void thaw() const { kill(id_, SIGCONT); }

  /// What it has written to standard error so far.
  std::string log() const;

  /// Memory that it has in use, in KiB.
  long resident_kib() const;

 private:
  pid_t id_;
  std::string log_path_;
  bool ended_ = false;
  int status_ = 0;
};

#endif
