#include "service/access_lock.h"

#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "transport/ipc_keys.h"

namespace proreflax {
namespace {

constexpr int semaphores = 2;
constexpr int claim_attempts = 100;
constexpr timespec hold_limit{.tv_sec = 1, .tv_nsec = 0};
constexpr int removal_limit_ms = 2000;

// What semctl takes; the platform leaves its definition to the caller.
union semaphore_argument {
  int value;
  semid_ds* state;
};

/// Another process removed the set between two calls.
bool has_vanished(int error) {
  return error == EIDRM || error == EINVAL || error == ENOENT;
}

void sleep_1_ms() {
  constexpr timespec pause{.tv_sec = 0, .tv_nsec = 1000000};
  nanosleep(&pause, nullptr);
}

bool change(int set, sembuf step) {
  return semop(set, &step, 1) == 0;
}

}  // namespace

access_lock::attempt access_lock::failure(const char* call) {
  failed_call_ = call;
  return attempt::failed;
}

/// Another attempt may succeed. Should none, this call is the one to report.
access_lock::attempt access_lock::repeat(const char* call) {
  failed_call_ = call;
  return attempt::again;
}

/// Raises the marker from 0. The lock of a fresh set is 0 and nobody's: it becomes the service's,
/// and the kernel raises it to 1 should the service be killed before it is ready.
access_lock::attempt access_lock::raise_marker(bool fresh) {
  sembuf of_left_over[] = {{marker_semaphore, 0, IPC_NOWAIT}, {marker_semaphore, 1, SEM_UNDO}};
  sembuf of_fresh[] = {{marker_semaphore, 0, IPC_NOWAIT},
                       {lock_semaphore, 0, IPC_NOWAIT},
                       {marker_semaphore, 1, SEM_UNDO},
                       {lock_semaphore, 1, 0},
                       {lock_semaphore, -1, SEM_UNDO}};
  if ((fresh ? semop(id_, of_fresh, 5) : semop(id_, of_left_over, 2)) == 0) {
    held_ = fresh;
    return attempt::done;
  }
  if (errno == EAGAIN) {
    return semctl(id_, marker_semaphore, GETVAL) > 0 ? attempt::live_service : repeat("semop");
  }
  return has_vanished(errno) || errno == EINTR ? repeat("semop") : failure("semop");
}

bool access_lock::set_owner(const permissions& allowed) {
  semid_ds state{};
  const semaphore_argument argument{.state = &state};
  if (semctl(id_, 0, IPC_STAT, argument) != 0) {
    return false;
  }
  state.sem_perm.uid = geteuid();
  state.sem_perm.gid = allowed.has_group ? allowed.group : getegid();
  state.sem_perm.mode = static_cast<unsigned short>(allowed.mode);
  return semctl(id_, 0, IPC_SET, argument) == 0;
}

/// A client that released the lock without holding it raised it above 1. Both steps are one
/// operation, so that the value never falls below 1.
void access_lock::lower_to_one() const {
  sembuf steps[] = {{lock_semaphore, -2, IPC_NOWAIT}, {lock_semaphore, 1, 0}};
  while (semop(id_, steps, 2) == 0) {
  }
}

access_lock::attempt access_lock::take(const permissions& allowed) {
  semid_ds state{};
  if (semctl(id_, 0, IPC_STAT, semaphore_argument{.state = &state}) != 0) {
    return has_vanished(errno) ? repeat("semctl") : failure("semctl");
  }
  if (state.sem_nsems != semaphores) {
    // Without a marker it is no service's, and cannot become one's.
    return semctl(id_, 0, IPC_RMID) == 0 || has_vanished(errno) ? repeat("semctl")
                                                                : failure("semctl");
  }
  // No operation has succeeded on a fresh set, even if its creator was killed immediately.
  const bool fresh = state.sem_otime == 0 && semctl(id_, lock_semaphore, GETVAL) == 0;
  if (const attempt raised = raise_marker(fresh); raised != attempt::done) {
    return raised;
  }
  if (!set_owner(allowed)) {
    return failure("semctl");
  }
  lower_to_one();
  return attempt::done;
}

access_lock::attempt access_lock::create_or_find(const permissions& allowed) {
  id_ = semget(CFC_SEM_KEY, semaphores, IPC_CREAT | IPC_EXCL | static_cast<int>(allowed.mode));
  if (id_ == -1 && errno == EEXIST) {
    id_ = semget(CFC_SEM_KEY, 0, 0);
    if (id_ == -1 && has_vanished(errno)) {
      return repeat("semget");
    }
  }
  return id_ == -1 ? failure("semget") : take(allowed);
}

access_lock::claim_result access_lock::claim(const permissions& allowed) {
  int error = 0;
  for (int i = 0; i < claim_attempts; ++i) {
    switch (create_or_find(allowed)) {
      case attempt::done:
        return claim_result::claimed;
      case attempt::live_service:
        return claim_result::live_service;
      case attempt::failed:
        return claim_result::failed;
      case attempt::again:
        error = errno;
        sleep_1_ms();
    }
  }
  errno = error;
  return claim_result::failed;
}

void access_lock::hold() {
  sembuf take{lock_semaphore, -1, SEM_UNDO};
  held_ = held_ || semtimedop(id_, &take, 1, &hold_limit) == 0;
}

bool access_lock::release() {
  if (held_ && !change(id_, {lock_semaphore, 1, SEM_UNDO})) {
    return false;
  }
  held_ = false;
  return true;
}

bool access_lock::exists() const {
  return semctl(id_, lock_semaphore, GETVAL) != -1;
}

/// Takes the lock. Once it is held and no client waits for it, no client can enter any more.
bool access_lock::nobody_waits() {
  if (!change(id_, {lock_semaphore, -1, IPC_NOWAIT | SEM_UNDO})) {
    return errno != EAGAIN && errno != EINTR;
  }
  held_ = true;
  if (semctl(id_, lock_semaphore, GETNCNT) <= 0) {
    return true;
  }
  release();
  return false;
}

void access_lock::remove() {
  release();
  for (int waited_ms = 0; waited_ms < removal_limit_ms && !nobody_waits(); ++waited_ms) {
    sleep_1_ms();
  }
  semctl(id_, 0, IPC_RMID);
}

}  // namespace proreflax
