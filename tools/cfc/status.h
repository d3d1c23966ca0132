// status: whether the service's lock and queue are there, who holds the lock, how much waits.
//
// It only looks: it never takes the lock and never sends, so it answers at once whatever state the
// device is in. A service that was killed leaves both behind; that they are there does not prove that
// it runs, and messages that keep waiting are the sign that it does not.
#ifndef PROREFLAX_TOOLS_CFC_STATUS_H
#define PROREFLAX_TOOLS_CFC_STATUS_H

#include <cstdint>
#include <string>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/output.h"

namespace cfc {

struct status_command {
  bool json = false;
};

struct lock_status {
  bool present = false;
  int error = 0;   // errno of what kept us from looking closer
  int value = 0;   // 1 free, 0 held; above 1 it was given back too often and excludes nobody
  int holder = 0;  // process id, 0 when it cannot be told; only while the lock is held
  std::string holder_name;  // empty when the process is gone
  int waiting = 0;          // processes that wait for the lock
};

struct queue_status {
  bool present = false;
  int error = 0;
  std::uint64_t messages = 0;
  std::uint64_t bytes = 0;
};

struct status_report {
  lock_status lock;
  queue_status queue;

  /// CFC_OK, CFC_ERR_NO_SEM, CFC_ERR_NO_MSQ, or the errno of what could not be looked at.
  std::uint32_t code() const;
};

status_report look_at_service();

std::string show_lock(const lock_status& lock);
std::string show_queue(const queue_status& queue);

exit_status run(const status_command& command, output& out);

}  // namespace cfc

#endif
