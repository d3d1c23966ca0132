#include "service/request_channel.h"

#include <signal.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/time.h>

#include <cerrno>
#include <cstring>

#include "transport/ipc_keys.h"

namespace proreflax {
namespace {

constexpr int semaphores = 2;
constexpr int claim_attempts = 100;

constexpr long sweep_soon_ms = 10;
constexpr long sweep_idle_ms = 1000;

struct wire_message {
  long type;
  char text[reply_text_max];
};

struct held_reply {
  wire_message message;
  std::size_t length;
};

// What semctl takes; the platform leaves its definition to the caller.
union semaphore_argument {
  int value;
  semid_ds* state;
};

/// Raises the marker from 0. False when it was raised already, or the set is gone.
bool raise_marker(int lock) {
  sembuf steps[] = {{marker_semaphore, 0, IPC_NOWAIT}, {marker_semaphore, 1, SEM_UNDO}};
  return semop(lock, steps, 2) == 0;
}

void remove_lock(int lock) {
  semctl(lock, 0, IPC_RMID);
}

/// Whether a set under the key belongs to a service that lives. One without a marker, or whose
/// marker is down, is left over; it is removed.
bool belongs_to_live_service(int lock) {
  if (!raise_marker(lock) && errno == EAGAIN) {
    return true;
  }
  remove_lock(lock);
  return false;
}

bool lock_belongs_to(int lock, const permissions& allowed) {
  semid_ds state{};
  const semaphore_argument argument{.state = &state};
  if (!allowed.has_group) {
    return true;
  }
  if (semctl(lock, 0, IPC_STAT, argument) != 0) {
    return false;
  }
  state.sem_perm.gid = allowed.group;
  return semctl(lock, 0, IPC_SET, argument) == 0;
}

bool queue_belongs_to(int queue, const permissions& allowed) {
  msqid_ds state{};
  if (!allowed.has_group) {
    return true;
  }
  if (msgctl(queue, IPC_STAT, &state) != 0) {
    return false;
  }
  state.msg_perm.gid = allowed.group;
  return msgctl(queue, IPC_SET, &state) == 0;
}

bool is_alive(long reply_type) {
  const auto asker = static_cast<pid_t>(reply_type - reply_type_bias);
  return kill(asker, 0) == 0 || errno != ESRCH;
}

}  // namespace

request_channel::claim_result request_channel::claim(const permissions& allowed) {
  for (int attempt = 0; attempt < claim_attempts; ++attempt) {
    lock_ = semget(CFC_SEM_KEY, semaphores, IPC_CREAT | IPC_EXCL | static_cast<int>(allowed.mode));
    if (lock_ != -1) {
      // A rival may take the fresh set for a left-over one and remove it: then try again.
      if (raise_marker(lock_)) {
        return lock_belongs_to(lock_, allowed) ? claim_result::claimed : claim_result::failed;
      }
      continue;
    }
    if (errno != EEXIST) {
      return claim_result::failed;
    }
    const int found = semget(CFC_SEM_KEY, 0, 0);
    if (found == -1 && errno != ENOENT) {
      return claim_result::failed;
    }
    if (found != -1 && belongs_to_live_service(found)) {
      return claim_result::live_service;
    }
  }
  return claim_result::live_service;
}

bool request_channel::open(const permissions& allowed) {
  if (const int left_over = msgget(CFC_MSQ_KEY, 0); left_over != -1) {
    msgctl(left_over, IPC_RMID, nullptr);
  }
  queue_ = msgget(CFC_MSQ_KEY, IPC_CREAT | IPC_EXCL | static_cast<int>(allowed.mode));
  if (queue_ == -1 || !queue_belongs_to(queue_, allowed)) {
    return false;
  }
  set_timer(sweep_idle_ms);
  return semctl(lock_, lock_semaphore, SETVAL, semaphore_argument{.value = 1}) == 0;
}

bool request_channel::receive(int flags, incoming* request) const {
  wire_message message;
  // Cut rather than left: a message that nobody can take would stand before all others for ever.
  const ssize_t length =
      msgrcv(queue_, &message, sizeof request->text, request_type, flags | MSG_NOERROR);
  if (length < 0) {
    return false;
  }
  request->length = static_cast<std::size_t>(length);
  std::memcpy(request->text, message.text, request->length);
  return true;
}

request_channel::wait_result request_channel::next(incoming* request) {
  if (backlog_count_ > 0) {
    *request = backlog_[backlog_first_];
    backlog_first_ = (backlog_first_ + 1) % backlog_max;
    --backlog_count_;
    return wait_result::request;
  }
  if (receive(0, request)) {
    return wait_result::request;
  }
  return errno == EINTR ? wait_result::interrupted : wait_result::lost;
}

void request_channel::take_waiting_requests() {
  while (backlog_count_ < backlog_max &&
         receive(IPC_NOWAIT, &backlog_[(backlog_first_ + backlog_count_) % backlog_max])) {
    ++backlog_count_;
  }
}

/// Whether the asker has sent another request since: then it no longer waits for this reply.
bool request_channel::is_superseded(const reply& answer) const {
  for (std::size_t i = 0; i < backlog_count_; ++i) {
    const incoming& later = backlog_[(backlog_first_ + i) % backlog_max];
    if (later.length >= sizeof(std::int32_t) &&
        std::memcmp(later.text, answer.text, sizeof(std::int32_t)) == 0) {
      return true;
    }
  }
  return false;
}

/// Removes earlier replies to an asker that is about to get another.
void request_channel::discard(long type) const {
  wire_message message;
  while (msgrcv(queue_, &message, sizeof message.text, type, IPC_NOWAIT | MSG_NOERROR) >= 0) {
  }
}

bool request_channel::put(const reply& answer) const {
  wire_message message;
  message.type = answer.type;
  std::memcpy(message.text, answer.text, answer.length);
  return msgsnd(queue_, &message, answer.length, IPC_NOWAIT) == 0;
}

bool request_channel::send(const reply& answer) {
  if (waiting_messages() > 0) {
    take_waiting_requests();
    discard(answer.type);
  }
  if (is_superseded(answer)) {
    return true;
  }
  remember(answer.type);
  bool sent = put(answer);
  if (!sent && errno == EAGAIN) {
    sweep(keep::of_live_askers);
    sent = put(answer);
  }
  if (!sent && errno == EAGAIN) {
    sweep(keep::nothing);
    sent = put(answer);
  }
  return sent;
}

void request_channel::remember(long type) {
  if (unclaimed_.holds(type)) {
    return;
  }
  if (unclaimed_.full()) {
    sweep(keep::of_live_askers);
  }
  if (unclaimed_.full()) {
    sweep(keep::nothing);
  }
  unclaimed_.add(type);
  if (timer_ms_ != sweep_soon_ms) {
    set_timer(sweep_soon_ms);
  }
}

void request_channel::sweep() {
  sweep(keep::of_live_askers);
  // Less and less often while the same replies are left, and at rest once none is.
  const long later_ms = timer_ms_ * 2 < sweep_idle_ms ? timer_ms_ * 2 : sweep_idle_ms;
  const long next_ms = unclaimed_.empty() ? sweep_idle_ms : later_ms;
  if (next_ms != timer_ms_) {
    set_timer(next_ms);
  }
}

/// Takes every message but the requests off, and then puts back what somebody waits for: not before
/// all are seen, or the sweep would meet it again, at the queue's end.
void request_channel::sweep(keep kept) {
  remembered left;
  held_reply held[remembered::room + 1];  // the last is for what is not kept
  std::size_t count = 0;
  for (std::size_t unseen = waiting_messages(); unseen > 0; --unseen) {
    held_reply& next = held[count];
    const ssize_t length = msgrcv(queue_, &next.message, sizeof next.message.text, request_type,
                                  MSG_EXCEPT | IPC_NOWAIT | MSG_NOERROR);
    if (length < 0) {
      break;
    }
    next.length = static_cast<std::size_t>(length);
    const long type = next.message.type;
    if (kept == keep::of_live_askers && unclaimed_.holds(type) && !left.holds(type) &&
        is_alive(type)) {
      left.add(type);
      ++count;
    }
  }
  for (std::size_t i = 0; i < count; ++i) {
    const auto put_back = [&] {
      return msgsnd(queue_, &held[i].message, held[i].length, IPC_NOWAIT) == 0;
    };
    if (!put_back() && errno == EAGAIN) {
      // Requests came into its room meanwhile.
      take_waiting_requests();
      put_back();
    }
  }
  unclaimed_ = left;
}

bool request_channel::has_lock() const {
  return semctl(lock_, lock_semaphore, GETVAL) != -1;
}

std::size_t request_channel::waiting_messages() const {
  msqid_ds state{};
  return msgctl(queue_, IPC_STAT, &state) == 0 ? state.msg_qnum : 0;
}

void request_channel::set_timer(long interval_ms) {
  timer_ms_ = interval_ms;
  const timeval interval{.tv_sec = interval_ms / 1000, .tv_usec = interval_ms % 1000 * 1000};
  const itimerval timer{.it_interval = interval, .it_value = interval};
  setitimer(ITIMER_REAL, &timer, nullptr);
}

void request_channel::close() {
  set_timer(0);
  if (queue_ != -1) {
    msgctl(queue_, IPC_RMID, nullptr);
  }
  remove_lock(lock_);
}

}  // namespace proreflax
