#include "tests/accessors/answering_service.h"

#include <sys/msg.h>

#include <cstddef>
#include <cstring>
#include <stdexcept>

namespace {

constexpr std::uint32_t set_opcode = 9;
constexpr std::uint32_t flush_opcode = 12;
constexpr std::size_t header_bytes = 16;  // of a message text

struct message_buffer {
  long type;
  std::uint8_t text[4096];
};

template <typename Number>
Number number_at(const bytes& text, std::size_t offset) {
  Number number;
  std::memcpy(&number, text.data() + offset, sizeof number);
  return number;
}

std::string text_at(const bytes& text, std::size_t payload_offset) {
  return reinterpret_cast<const char*>(text.data()) + header_bytes + payload_offset;
}

}  // namespace

answering_service::answering_service() : thread_{[this] { serve(); }} {}

answering_service::~answering_service() {
  message_buffer end{1, {}};
  msgsnd(queue_.queue_id(), &end, 0, 0);  // a request of no bytes ends the thread
  thread_.join();
}

void answering_service::holds(const std::string& section, const std::string& key,
                              const std::string& value) {
  const std::lock_guard lock{mutex_};
  values_[{section, key}] = value;
}

void answering_service::lacks(const std::string& section, const std::string& key) {
  const std::lock_guard lock{mutex_};
  values_.erase({section, key});
}

void answering_service::refuses(const std::string& section, const std::string& key,
                                std::uint32_t result) {
  const std::lock_guard lock{mutex_};
  refused_[{section, key}] = result;
}

void answering_service::accepts(const std::string& section, const std::string& key) {
  const std::lock_guard lock{mutex_};
  refused_.erase({section, key});
}

std::string answering_service::value(const std::string& section, const std::string& key) const {
  const std::lock_guard lock{mutex_};
  const auto found = values_.find({section, key});
  return found == values_.end() ? "(none)" : found->second;
}

std::vector<asked> answering_service::requests() {
  const std::lock_guard lock{mutex_};
  return std::exchange(asked_, {});
}

std::vector<std::string> answering_service::keys() {
  std::vector<std::string> keys;
  for (const asked& each : requests()) {
    keys.push_back(each.key);
  }
  return keys;
}

int answering_service::flushes() const {
  const std::lock_guard lock{mutex_};
  return flushes_;
}

void answering_service::serve() {
  for (;;) {
    message_buffer buffer{};
    const ssize_t size = msgrcv(queue_.queue_id(), &buffer, sizeof buffer.text, 1, 0);
    if (size <= 0) {
      return;
    }
    const bytes request{buffer.text, buffer.text + size};
    const bytes reply = answer(request);
    buffer.type = number_at<std::int32_t>(request, 0);
    std::memcpy(buffer.text, reply.data(), reply.size());
    if (msgsnd(queue_.queue_id(), &buffer, reply.size(), 0) != 0) {
      throw std::runtime_error("cannot answer");
    }
  }
}

bytes answering_service::answer(const bytes& request) {
  const std::lock_guard lock{mutex_};
  const auto opcode = number_at<std::uint32_t>(request, 4);
  if (opcode == flush_opcode) {
    ++flushes_;
    return row(own_reply_type(), u32(0), u32(0), u32(0));
  }
  asked one;
  one.is_set = opcode == set_opcode;
  one.section = text_at(request, number_at<std::uint16_t>(request, 8));
  one.key = text_at(request, number_at<std::uint16_t>(request, 10));
  if (one.is_set) {
    one.value = text_at(request, number_at<std::uint16_t>(request, 12));
  }
  one.lock_value = queue_.lock_value();
  asked_.push_back(one);

  std::uint32_t result = 0;
  std::string value;
  const auto refused = refused_.find({one.section, one.key});
  const auto found = values_.find({one.section, one.key});
  if (refused != refused_.end()) {
    result = refused->second;
  } else if (one.is_set) {
    values_[{one.section, one.key}] = one.value;
  } else if (found != values_.end()) {
    value = found->second;
  } else {
    result = 201;
  }
  return row(own_reply_type(), u32(result), u16(0), u16(0), u16(0),
             u16(static_cast<std::uint16_t>(value.size())), raw(value));
}
