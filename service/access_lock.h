// The semaphore set that the service owns.
//
// The set has two members: the access lock, and a marker that is 1 while a service lives. The
// marker is raised with SEM_UNDO, so the kernel lowers it when the service is killed. A service
// that raises it from 0 owns both keys.
//
// A set that a killed service left is taken over, never replaced: clients that wait for the lock
// continue to wait for the same one. If it were removed, they would continue without a lock (their
// rule for a semop that fails), at the same time as a client that holds the new one. Its value is
// never set either: a client may hold the lock at that moment, and the kernel's undo restores it.
#ifndef PROREFLAX_SERVICE_ACCESS_LOCK_H
#define PROREFLAX_SERVICE_ACCESS_LOCK_H

#include <cstdint>

#include "service/permissions.h"

namespace proreflax {

class access_lock {
 public:
  enum class claim_result : std::uint8_t { claimed, live_service, failed };

  /// Creates the set with the lock held, or takes over the one that a killed service left. After
  /// `failed`, failed_call() and errno say why.
  claim_result claim(const permissions& allowed);
  const char* failed_call() const { return failed_call_; }

  /// After a takeover: waits until no client holds the lock, for a second at most, and then holds
  /// it, so that clients wait until the service is ready.
  void hold();

  /// Releases the lock, so that clients can use the service. False with errno when that fails.
  bool release();

  /// Whether clients still find the lock. False with errno when it was removed.
  bool exists() const;

  /// Removes the set. Clients that wait for the lock get it first, for two seconds at most. The
  /// queue must already be removed, so that they return with "no queue".
  void remove();

 private:
  enum class attempt : std::uint8_t { done, again, live_service, failed };

  attempt create_or_find(const permissions& allowed);
  attempt take(const permissions& allowed);
  attempt raise_marker(bool fresh);
  attempt failure(const char* call);
  attempt repeat(const char* call);
  bool set_owner(const permissions& allowed);
  void lower_to_one() const;
  bool nobody_waits();

  int id_ = -1;
  bool held_ = false;
  const char* failed_call_ = "";
};

}  // namespace proreflax

#endif
