#include "tests/tools/cfc/prompted_service.h"

#include <sys/msg.h>

#include <cstring>

#include "transport/message.h"

namespace {

constexpr std::size_t text_max = 512;

struct wire_message {
  long type;
  char text[text_max];
};

template <typename Number>
Number number_at(const char* text, std::size_t offset) {
  Number number;
  std::memcpy(&number, text + offset, sizeof number);
  return number;
}

}  // namespace

struct prompted_service::request {
  std::int32_t reply_type;
  std::uint32_t operation;
  std::uint16_t value_off;
  std::string section;
  std::string key;
  std::string value;

  explicit request(const char* text)
      : reply_type{number_at<std::int32_t>(text, 0)},
        operation{number_at<std::uint32_t>(text, 4)},
        value_off{number_at<std::uint16_t>(text, 12)},
        section{text + proreflax::text_header_bytes + number_at<std::uint16_t>(text, 8)},
        key{text + proreflax::text_header_bytes + number_at<std::uint16_t>(text, 10)},
        value{text + proreflax::text_header_bytes + value_off} {}

  std::string in_words() const {
    switch (operation) {
      case proreflax::CFC_OP_GET:
        return "get " + section + " " + key;
      case proreflax::CFC_OP_SET:
        return "set " + section + " " + key + "=" + value;
      case proreflax::CFC_OP_ADD_APP:
        return "register " + section;
      case proreflax::CFC_OP_FLUSH_ALL:
        return "flush";
      default:
        return "defaults";
    }
  }
};

prompted_service::prompted_service() : thread_{[this] { serve(); }} {}

prompted_service::~prompted_service() {
  queue_.remove_queue();
  thread_.join();
}

void prompted_service::has_section(const std::string& section) {
  const std::lock_guard lock{guard_};
  sections_[section];
}

void prompted_service::holds(const std::string& section, const std::string& key,
                             const std::string& value) {
  const std::lock_guard lock{guard_};
  sections_[section][key] = value;
}

std::optional<std::string> prompted_service::value(const std::string& section,
                                                   const std::string& key) {
  const std::lock_guard lock{guard_};
  const auto& entries = sections_[section];
  const auto entry = entries.find(key);
  return entry == entries.end() ? std::nullopt : std::optional{entry->second};
}

void prompted_service::answers(std::size_t nth, std::uint32_t code) {
  const std::lock_guard lock{guard_};
  scripts_[nth].code = code;
}

void prompted_service::answers_too_long(std::size_t nth) {
  const std::lock_guard lock{guard_};
  scripts_[nth].too_long = true;
}

void prompted_service::before_answer(std::size_t nth, std::function<void()> action) {
  const std::lock_guard lock{guard_};
  scripts_[nth].action = std::move(action);
}

std::vector<std::string> prompted_service::requests() {
  const std::lock_guard lock{guard_};
  return requests_;
}

void prompted_service::serve() {
  const int queue = queue_.queue_id();
  for (;;) {
    wire_message message{};
    if (msgrcv(queue, &message, sizeof message.text, proreflax::request_type, 0) == -1) {
      return;
    }
    answer(request{message.text});
  }
}

void prompted_service::answer(const request& asked) {
  script scripted;
  {
    const std::lock_guard lock{guard_};
    requests_.push_back(asked.in_words());
    scripted = scripts_[requests_.size()];
  }
  if (scripted.action) {
    scripted.action();
  }
  std::string found;
  const std::uint32_t result = scripted.code ? *scripted.code : carry_out(asked, found);
  bytes reply = row(i32(asked.reply_type), u32(result), u16(0), u16(0), u16(0),
                    u16(static_cast<std::uint16_t>(found.size())), raw(found));
  if (scripted.too_long) {
    reply.resize(text_max);
  }
  wire_message message{asked.reply_type, {}};
  std::memcpy(message.text, reply.data(), reply.size());
  msgsnd(queue_.queue_id(), &message, reply.size(), IPC_NOWAIT);
}

std::uint32_t prompted_service::carry_out(const request& asked, std::string& value) {
  const std::lock_guard lock{guard_};
  if (asked.operation == proreflax::CFC_OP_ADD_APP) {
    sections_[asked.section];
  }
  if (asked.operation != proreflax::CFC_OP_GET && asked.operation != proreflax::CFC_OP_SET) {
    return 0;
  }
  const auto section = sections_.find(asked.section);
  if (section == sections_.end()) {
    return 209;
  }
  if (asked.operation == proreflax::CFC_OP_SET) {
    section->second[asked.key] = asked.value;
    return 0;
  }
  const auto entry = section->second.find(asked.key);
  if (entry == section->second.end()) {
    return 201;
  }
  value = entry->second;
  return 0;
}
