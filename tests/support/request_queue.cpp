#include "tests/support/request_queue.h"

#include <sys/msg.h>
#include <sys/sem.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "transport/ipc_keys.h"

using namespace proreflax;

namespace {

template <typename Number>
bytes number_bytes(Number number) {
  bytes all(sizeof number);
  std::memcpy(all.data(), &number, sizeof number);
  return all;
}

}  // namespace

bytes u16(std::uint16_t number) {
  return number_bytes(number);
}
bytes u32(std::uint32_t number) {
  return number_bytes(number);
}
bytes i32(std::int32_t number) {
  return number_bytes(number);
}
bytes raw(std::string_view characters) {
  return {characters.begin(), characters.end()};
}
bytes text(std::string_view characters) {
  bytes all = raw(characters);
  all.push_back(0);
  return all;
}
bytes own_reply_type() {
  return i32(getpid() + 2);
}

request_queue::request_queue()
    : lock_{semget(CFC_SEM_KEY, 1, IPC_CREAT | IPC_EXCL | 0600)},
      queue_{msgget(CFC_MSQ_KEY, IPC_CREAT | IPC_EXCL | 0600)} {
  if (lock_ == -1 || queue_ == -1) {
    throw std::runtime_error("cannot make semaphore and queue");
  }
  set_lock_value(1);
}

request_queue::~request_queue() {
  remove_queue();
  remove_lock();
}

bool request_queue::keys_in_use() {
  return semget(CFC_SEM_KEY, 0, 0) != -1 || msgget(CFC_MSQ_KEY, 0) != -1;
}

void request_queue::reply(const bytes& reply_text) const {
  message_buffer buffer{getpid() + 2, {}};
  std::copy(reply_text.begin(), reply_text.end(), buffer.text);
  if (msgsnd(queue_, &buffer, reply_text.size(), IPC_NOWAIT) != 0) {
    throw std::runtime_error("cannot put the reply on the queue");
  }
}

void request_queue::reply_with(std::uint32_t result) const {
  reply(row(own_reply_type(), u32(result), u16(0), u16(0), u16(0), u16(0)));
}

void request_queue::reply_with_value(std::string_view value) const {
  reply(row(own_reply_type(), u32(0), u16(0), u16(0), u16(0),
            u16(static_cast<std::uint16_t>(value.size())), raw(value)));
}

std::optional<message> request_queue::take(long type) const {
  message_buffer buffer{};
  const ssize_t size = msgrcv(queue_, &buffer, sizeof buffer.text, type, IPC_NOWAIT);
  if (size == -1) {
    return std::nullopt;
  }
  return message{buffer.type, {buffer.text, buffer.text + size}};
}

int request_queue::waiting() const {
  msqid_ds state{};
  msgctl(queue_, IPC_STAT, &state);
  return static_cast<int>(state.msg_qnum);
}

int request_queue::lock_value() const {
  return semctl(lock_, 0, GETVAL);
}

void request_queue::set_lock_value(int value) const {
  semctl(lock_, 0, SETVAL, value);
}

int request_queue::waiting_for_lock() const {
  return semctl(lock_, 0, GETNCNT);
}

void request_queue::remove_queue() {
  if (queue_ != -1) {
    msgctl(queue_, IPC_RMID, nullptr);
    queue_ = -1;
  }
}

void request_queue::remove_lock() {
  if (lock_ != -1) {
    semctl(lock_, 0, IPC_RMID);
    lock_ = -1;
  }
}
