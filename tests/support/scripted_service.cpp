#include "tests/support/scripted_service.h"

#include <sys/msg.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

// The real calls, past the fault injector.
extern "C" {
int __real_msgsnd(int id, const void* message, std::size_t size, int flags);
ssize_t __real_msgrcv(int id, void* message, std::size_t size, long type, int flags);
}

namespace {

constexpr std::uint32_t no_section = 209;
constexpr std::uint32_t no_key = 201;
constexpr std::uint32_t operation_register = 1;
constexpr std::uint32_t operation_set = 9;
constexpr std::uint32_t operation_get = 10;
constexpr std::uint32_t operation_flush = 12;
constexpr std::uint32_t operation_defaults = 16;

constexpr long request_type = 1;
constexpr long stop_type = 2;  // no asker's reply type: a process id is at least 1

constexpr std::size_t header_bytes = 16;
constexpr std::size_t longer_than_any_asker_takes = 512;

template <typename Number>
Number number_at(const bytes& text, std::size_t offset) {
  Number number{};
  std::memcpy(&number, text.data() + offset, sizeof number);
  return number;
}

/// The text that starts this far into the payload, as far as the message goes.
std::string name_at(const bytes& text, std::size_t offset) {
  const auto first =
      text.begin() + static_cast<std::ptrdiff_t>(std::min(header_bytes + offset, text.size()));
  return {first, std::find(first, text.end(), 0)};
}

seen_request read_request(const bytes& text, bool lock_held) {
  seen_request request;
  request.text = text;
  request.lock_held = lock_held;
  if (text.size() < header_bytes) {
    return request;
  }
  request.asker = number_at<std::int32_t>(text, 0);
  request.operation = number_at<std::uint32_t>(text, 4);
  request.section = name_at(text, number_at<std::uint16_t>(text, 8));
  request.key = name_at(text, number_at<std::uint16_t>(text, 10));
  if (request.operation == operation_set) {
    request.value = name_at(text, number_at<std::uint16_t>(text, 12));
  }
  return request;
}

/// The request's own offsets come back with every reply.
bytes header(const seen_request& request, std::uint32_t result, std::uint16_t value_length = 0) {
  const bytes offsets{request.text.begin() + 8, request.text.begin() + 14};
  return row(i32(request.asker), u32(result), offsets, u16(value_length));
}

/// Names as they came, the value behind the key, and no NUL behind the value.
bytes reply_with_value(const seen_request& request, std::string_view value) {
  const bytes names{request.text.begin() + header_bytes, request.text.end()};
  return row(header(request, 0, static_cast<std::uint16_t>(value.size())), names, raw(value));
}

std::string in_words(const seen_request& request) {
  switch (request.operation) {
    case operation_get:
      return "get " + request.section + " " + request.key;
    case operation_set:
      return "set " + request.section + " " + request.key + "=" + request.value;
    case operation_register:
      return "register " + request.section;
    case operation_flush:
      return "flush";
    case operation_defaults:
      return "defaults";
    default:
      return "operation " + std::to_string(request.operation);
  }
}

}  // namespace

scripted_service::scripted_service() : thread_{[this] { serve(); }} {}

scripted_service::~scripted_service() {
  const message_buffer stop{stop_type, {}};
  __real_msgsnd(queue_.queue_id(), &stop, 0, 0);
  thread_.join();
}

void scripted_service::has_section(std::string_view section) {
  const std::lock_guard guard{mutex_};
  sections_[std::string{section}];
}

void scripted_service::holds(std::string_view section, std::string_view key,
                             std::string_view value) {
  const std::lock_guard guard{mutex_};
  key_of(section, key).value = value;
}

void scripted_service::lacks(std::string_view section, std::string_view key) {
  const std::lock_guard guard{mutex_};
  key_of(section, key).value.reset();
}

void scripted_service::fails(std::string_view section, std::string_view key, std::uint32_t code) {
  const std::lock_guard guard{mutex_};
  key_of(section, key).code = code;
}

void scripted_service::claims(std::string_view section, std::string_view key,
                              std::uint16_t length) {
  const std::lock_guard guard{mutex_};
  key_of(section, key).claim = length;
}

void scripted_service::answers(std::size_t nth, std::uint32_t code) {
  const std::lock_guard guard{mutex_};
  turns_[nth].code = code;
}

void scripted_service::answers_too_long(std::size_t nth) {
  const std::lock_guard guard{mutex_};
  turns_[nth].too_long = true;
}

void scripted_service::before_answer(std::size_t nth, std::function<void()> action) {
  const std::lock_guard guard{mutex_};
  turns_[nth].action = std::move(action);
}

void scripted_service::obeys() {
  const std::lock_guard guard{mutex_};
  for (auto& [section, keys] : sections_) {
    for (auto& [name, key] : keys) {
      key.code = 0;
      key.claim.reset();
    }
  }
}

void scripted_service::starts_anew() {
  const std::lock_guard guard{mutex_};
  sections_.clear();
  requests_.clear();
}

std::optional<std::string> scripted_service::value(std::string_view section,
                                                   std::string_view key) const {
  const std::lock_guard guard{mutex_};
  const auto keys = sections_.find(std::string{section});
  if (keys == sections_.end()) {
    return std::nullopt;
  }
  const auto found = keys->second.find(std::string{key});
  return found == keys->second.end() ? std::nullopt : found->second.value;
}

std::vector<seen_request> scripted_service::take_requests() {
  const std::lock_guard guard{mutex_};
  return std::exchange(requests_, {});
}

std::vector<std::string> scripted_service::take_keys() {
  std::vector<std::string> keys;
  for (seen_request& request : take_requests()) {
    keys.push_back(std::move(request.key));
  }
  return keys;
}

std::vector<std::string> scripted_service::requests() const {
  const std::lock_guard guard{mutex_};
  std::vector<std::string> words;
  std::transform(requests_.begin(), requests_.end(), std::back_inserter(words), in_words);
  return words;
}

void scripted_service::serve() {
  message_buffer buffer{};
  for (;;) {
    const ssize_t size =
        __real_msgrcv(queue_.queue_id(), &buffer, sizeof buffer.text, -stop_type, 0);
    if (size < 0 || buffer.type != request_type) {
      return;
    }
    const seen_request request =
        read_request({buffer.text, buffer.text + size}, queue_.lock_value() == 0);
    const bytes reply = answer(request);
    buffer.type = request.asker;
    std::memcpy(buffer.text, reply.data(), reply.size());
    if (__real_msgsnd(queue_.queue_id(), &buffer, reply.size(), 0) != 0) {
      return;
    }
  }
}

bytes scripted_service::answer(const seen_request& request) {
  const turn now = next_turn(request);
  if (now.action) {
    now.action();  // without the mutex: it may ask this service what it holds
  }
  bytes reply = now.code ? header(request, *now.code) : carry_out(request);
  if (now.too_long) {
    reply.resize(longer_than_any_asker_takes);
  }
  return reply;
}

scripted_service::turn scripted_service::next_turn(const seen_request& request) {
  const std::lock_guard guard{mutex_};
  requests_.push_back(request);
  return std::exchange(turns_[++requests_seen_], {});
}

bytes scripted_service::carry_out(const seen_request& request) {
  const std::lock_guard guard{mutex_};
  if (request.operation == operation_register) {
    sections_[request.section];
  }
  if (request.operation != operation_get && request.operation != operation_set) {
    return header(request, 0);
  }
  if (sections_.count(request.section) == 0) {
    return header(request, no_section);
  }
  script& key = key_of(request.section, request.key);
  if (key.code != 0) {
    return header(request, key.code);
  }
  if (request.operation == operation_get) {
    return answer_get(request, key);
  }
  key.value = request.value;
  return header(request, 0);
}

bytes scripted_service::answer_get(const seen_request& request, const script& key) const {
  if (key.claim) {
    return header(request, 0, *key.claim);
  }
  return key.value ? reply_with_value(request, *key.value) : header(request, no_key);
}

scripted_service::script& scripted_service::key_of(std::string_view section, std::string_view key) {
  return sections_[std::string{section}][std::string{key}];
}
