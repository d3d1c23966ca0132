#include "service/request_channel.h"

#include <signal.h>
#include <sys/msg.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "transport/ipc_keys.h"

namespace proreflax {
namespace {

constexpr long sweep_soon_ms = 10;
constexpr long sweep_idle_ms = 1000;

/// Number of new replies left on the queue after which a sweep is done early.
constexpr std::size_t left_between_sweeps = 64;

struct wire_message {
  long type;
  char text[reply_text_max];
};

/// The service itself waits for no reply, whatever a message claims.
bool is_alive(long reply_type) {
  const auto client = static_cast<pid_t>(reply_type - reply_type_bias);
  return client != getpid() && (kill(client, 0) == 0 || errno != ESRCH);
}

/// Whether the reply to a request goes out under this type.
bool asks_for(const incoming& request, long type) {
  std::int32_t reply_type = 0;
  if (request.length < sizeof reply_type) {
    return false;
  }
  std::memcpy(&reply_type, request.text, sizeof reply_type);
  return reply_type == type;
}

void remove_queue(int queue) {
  msgctl(queue, IPC_RMID, nullptr);
}

}  // namespace

bool request_channel::failure(const char* call) {
  failed_call_ = call;
  return false;
}

request_channel::claim_result request_channel::claim(const permissions& allowed) {
  const claim_result result = lock_.claim(allowed);
  failed_call_ = lock_.failed_call();
  if (result == claim_result::claimed) {
    if (const int left_over = msgget(CFC_MSQ_KEY, 0); left_over != -1) {
      remove_queue(left_over);
    }
    lock_.hold();
  }
  return result;
}

bool request_channel::create_queue(const permissions& allowed) {
  const int flags = IPC_CREAT | IPC_EXCL | static_cast<int>(allowed.mode);
  queue_ = msgget(CFC_MSQ_KEY, flags);
  if (queue_ == -1 && errno == EEXIST) {
    remove_queue(msgget(CFC_MSQ_KEY, 0));
    queue_ = msgget(CFC_MSQ_KEY, flags);
  }
  return queue_ != -1 || failure("msgget");
}

bool request_channel::reserve_room(const permissions& allowed) {
  msqid_ds state{};
  if (msgctl(queue_, IPC_STAT, &state) != 0) {
    return failure("msgctl");
  }
  reply_bytes_ = state.msg_qbytes;
  request_bytes_ = reply_bytes_ - reply_bytes_ / 4;
  if (allowed.has_group) {
    state.msg_perm.gid = allowed.group;
  }
  state.msg_qbytes = request_bytes_;
  return msgctl(queue_, IPC_SET, &state) == 0 || failure("msgctl");
}

bool request_channel::open(const permissions& allowed) {
  if (!create_queue(allowed) || !reserve_room(allowed)) {
    return false;
  }
  set_timer(sweep_idle_ms);
  return lock_.release() || failure("semop");
}

bool request_channel::receive(int flags, incoming* request) const {
  wire_message message;
  // Truncated instead of left: a message that is never received would block all that follow.
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
  } else if (!receive(0, request)) {
    return errno == EINTR ? wait_result::interrupted : wait_result::lost;
  }
  kept_.remove_if([&](long type) { return asks_for(*request, type); });
  send_kept();
  return wait_result::request;
}

void request_channel::take_waiting_requests() {
  while (backlog_count_ < backlog_max &&
         receive(IPC_NOWAIT, &backlog_[(backlog_first_ + backlog_count_) % backlog_max])) {
    ++backlog_count_;
  }
}

/// Whether the client has sent another request since: then it no longer waits for an earlier reply.
bool request_channel::is_superseded(long type) const {
  for (std::size_t i = 0; i < backlog_count_; ++i) {
    if (asks_for(backlog_[(backlog_first_ + i) % backlog_max], type)) {
      return true;
    }
  }
  return false;
}

/// Removes earlier replies to a client before the next one is sent.
void request_channel::discard(long type) const {
  wire_message message;
  // Others may send messages of this type faster than they can be removed.
  for (std::size_t waiting = waiting_messages();
       waiting > 0 &&
       msgrcv(queue_, &message, sizeof message.text, type, IPC_NOWAIT | MSG_NOERROR) >= 0;
       --waiting) {
  }
}

bool request_channel::limit_bytes(std::size_t max) const {
  msqid_ds state{};
  if (msgctl(queue_, IPC_STAT, &state) != 0) {
    return false;
  }
  state.msg_qbytes = max;
  return msgctl(queue_, IPC_SET, &state) == 0;
}

/// Sends a message, if necessary into the part of the queue that is closed to requests.
bool request_channel::put(const long* message, std::size_t length) const {
  if (msgsnd(queue_, message, length, IPC_NOWAIT) == 0) {
    return true;
  }
  if (errno != EAGAIN || !limit_bytes(reply_bytes_)) {
    return false;
  }
  const bool sent = msgsnd(queue_, message, length, IPC_NOWAIT) == 0;
  const int error = errno;
  limit_bytes(request_bytes_);
  errno = error;
  return sent;
}

bool request_channel::send(const reply& reply) {
  if (waiting_messages() > 0) {
    take_waiting_requests();
    discard(reply.type);
  }
  kept_.remove_if([&](long type) { return type == reply.type; });
  if (is_superseded(reply.type)) {
    return true;
  }
  expect_on_queue(reply.type);
  wire_message message;
  message.type = reply.type;
  std::memcpy(message.text, reply.text, reply.length);
  if (kept_.empty() && put(&message.type, reply.length)) {
    return true;
  }
  if (kept_.empty() && errno != EAGAIN && errno != ENOMEM) {
    return false;
  }
  const bool first = kept_.empty();
  if (!kept_.append(reply.type, reply.text, reply.length)) {
    errno = ENOMEM;
    return false;
  }
  if (first) {
    remove_unclaimed();
  }
  send_kept();
  return true;
}

/// Sends kept replies in order, while there is room. A lost queue is detected at the next wait.
void request_channel::send_kept() {
  if (kept_.empty()) {
    return;
  }
  take_waiting_requests();
  while (!kept_.empty() &&
         (is_superseded(kept_.first()->type) || put(&kept_.first()->type, kept_.first()->length))) {
    kept_.remove_first();
  }
}

/// Records that a reply of this type may be on the queue until a sweep finds otherwise.
void request_channel::expect_on_queue(long type) {
  if (timer_ms_ != sweep_soon_ms) {
    set_timer(sweep_soon_ms);
  }
  if (unclaimed_.holds(type)) {
    return;
  }
  if (unclaimed_.size() >= swept_size_ + left_between_sweeps) {
    remove_unclaimed();
  }
  some_unnoted_ = !unclaimed_.add(type) || some_unnoted_;
}

void request_channel::sweep() {
  remove_unclaimed();
  send_kept();
  // Less and less often while the same replies are left, and at the idle interval once none is.
  const long later_ms = timer_ms_ * 2 < sweep_idle_ms ? timer_ms_ * 2 : sweep_idle_ms;
  const long next_ms = !kept_.empty()           ? sweep_soon_ms
                       : unclaimed_.size() == 0 ? sweep_idle_ms
                                                : later_ms;
  if (next_ms != timer_ms_) {
    set_timer(next_ms);
  }
}

/// Receives the next message that is not a request, and keeps it if it is a reply that a client may
/// still receive.
request_channel::taken request_channel::take_other_message(type_set* left) {
  wire_message message;
  const ssize_t length = msgrcv(queue_, &message, sizeof message.text, request_type,
                                MSG_EXCEPT | IPC_NOWAIT | MSG_NOERROR);
  if (length < 0) {
    return taken::none;
  }
  const long type = message.type;
  const bool may_be_a_reply = some_unnoted_ || unclaimed_.holds(type);
  if (!may_be_a_reply || left->holds(type) || !is_alive(type)) {
    return taken::message;
  }
  if (left->add(type) && kept_.append(type, message.text, static_cast<std::size_t>(length))) {
    return taken::message;
  }
  // It goes back immediately, and the sweep ends: it would only receive the same message again.
  static_cast<void>(put(&message.type, static_cast<std::size_t>(length)));
  return taken::no_memory;
}

/// Receives every message except the requests. Replies that a live client may still receive are
/// kept, and go back after all were seen: otherwise the sweep would receive them again.
void request_channel::remove_unclaimed() {
  type_set left;
  bool complete = true;
  kept_.remove_if([&](long type) {
    const bool dead = !is_alive(type);
    complete = (dead || left.add(type)) && complete;
    return dead;
  });
  std::size_t unseen = waiting_messages();
  for (; unseen > 0; --unseen) {
    if (const taken other = take_other_message(&left); other != taken::message) {
      complete = complete && other == taken::none;
      break;
    }
  }
  if (complete) {
    unclaimed_.swap(left);
    some_unnoted_ = false;
  }
  swept_size_ = unclaimed_.size();
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
    remove_queue(queue_);
  }
  lock_.remove();
}

}  // namespace proreflax
