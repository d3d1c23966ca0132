// Whether the service lives, whether its lock and queue are there, who holds the lock, how much
// waits.
//
// Looking takes no lock and sends nothing, so it ends at once whatever state the device is in. A
// service that was killed leaves lock and queue, but not its marker, which the kernel lowers for
// it.
#ifndef PROREFLAX_SETTINGS_SERVICE_STATE_H
#define PROREFLAX_SETTINGS_SERVICE_STATE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace proreflax::settings {

struct service_status {
  enum class life { unknown, dead, alive };
  life state = life::unknown;  // unknown where lock or marker are not there or not to be looked at
  int process = 0;             // only while it is alive; 0 when it cannot be told
  std::string name;            // empty when the process is gone
};

/// What a live service serves, as far as its status file says so.
struct served_status {
  bool known = false;
  bool from_flash = false;        // else the factory settings
  bool flash_unreadable = false;  // a saved configuration is kept that could not be read
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
  service_status service;
  lock_status lock;
  queue_status queue;
  served_status served = {};

  /// CFC_OK, CFC_ERR_NO_SEM (also for a lock that a killed service left), CFC_ERR_NO_MSQ, or the
  /// errno of what could not be looked at.
  std::uint32_t code() const;
  /// The sentence to a code other than CFC_OK.
  std::string sentence() const;
};

status_report look_at_device();

/// What a status file says of the service with that process id; not known when it is another's.
served_status read_served_status(const std::string& path, int process);

/// Whether a service was killed and its lock is still there: a client would wait indefinitely.
bool service_was_killed();

/// What a request is told then.
inline constexpr std::string_view killed_service =
    "config-center is not running: it was killed, and its lock is still there";

}  // namespace proreflax::settings

#endif
