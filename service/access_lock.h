// The semaphore set, as the service owns it.
//
// The set has two members: the access lock, and a marker that is 1 while a service lives. The marker
// is raised with SEM_UNDO, so the kernel lowers it when the service is killed: a service that raises
// it from 0 owns both keys.
//
// A set that a killed service left is taken over, never replaced: clients that wait for the lock
// keep waiting for the same one. Were it removed, they would go on without a lock (that is their
// rule for a semop that fails) and meet a client that holds the new one. Its value is never set
// either: a client may hold the lock at that moment, and the kernel's undo brings it back.
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

  /// Lets clients come. False with errno when the lock cannot be released.
  bool release();

  /// Whether clients still find the lock. False with errno when it was removed.
  bool exists() const;

  /// Removes the set. Clients that wait for the lock come through first, for two seconds at most:
  /// the queue must be gone already, so that they leave again with "no queue".
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
