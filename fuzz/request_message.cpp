// Any bytes as a sequence of requests to the service, each preceded by its length in one byte. The
// reply must be that of a naive reader of the message, the store must have the contents of the
// naive one, and after any requests the saved file of the store must load again.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "fuzz/store_text.h"
#include "service/reply.h"
#include "store/section_store.h"

using namespace proreflax;

namespace {

using sections = std::map<std::string, std::map<std::string, std::string>>;

/// The message text as a sequence of bytes, read at fixed offsets.
class naive_message {
 public:
  explicit naive_message(std::string_view text) : text_{text} {}

  bool is_complete() const { return text_.size() >= 16 && text_.size() <= 16 + 25 + 50 + 200; }
  std::int32_t reply_type() const { return at<std::int32_t>(0); }
  std::uint32_t operation() const { return at<std::uint32_t>(4); }
  std::string_view payload() const { return text_.substr(16); }
  std::size_t value_off() const { return at<std::uint16_t>(12); }

  std::optional<std::string> section() const { return name(at<std::uint16_t>(8), 24, ""); }
  std::optional<std::string> key() const {
    const auto key = name(at<std::uint16_t>(10), 49, "=*");
    return key && key->front() == '[' ? std::nullopt : key;
  }
  std::optional<std::string> value() const {
    auto value = string_at(value_off());
    if (!value || value->size() + 1 != at<std::uint16_t>(14) || value->size() > 199 ||
        value->find_first_of("\r\n") != std::string::npos) {
      return std::nullopt;
    }
    return value;
  }

 private:
  template <typename Number>
  Number at(std::size_t offset) const {
    Number number{};
    std::memcpy(&number, text_.data() + offset, sizeof number);
    return number;
  }

  std::optional<std::string> string_at(std::size_t offset) const {
    if (offset >= payload().size()) {
      return std::nullopt;
    }
    const std::size_t end = payload().find('\0', offset);
    return end == std::string_view::npos
               ? std::nullopt
               : std::optional<std::string>{payload().substr(offset, end - offset)};
  }

  std::optional<std::string> name(std::size_t offset, std::size_t size_max,
                                  const std::string& forbidden) const {
    auto name = string_at(offset);
    if (!name || name->empty() || name->size() > size_max ||
        name->find_first_of(forbidden + "\r\n") != std::string::npos) {
      return std::nullopt;
    }
    return name;
  }

  std::string_view text_;
};

struct naive_reply {
  std::uint32_t result = 204;
  std::string value;
};

naive_reply get(const naive_message& asked, const sections& store) {
  const auto section = asked.section();
  const auto key = asked.key();
  if (!section || !key || asked.value_off() > asked.payload().size()) {
    return {};
  }
  const auto entries = store.find(*section);
  if (entries == store.end()) {
    return {209, ""};
  }
  const auto entry = entries->second.find(*key);
  return entry == entries->second.end() ? naive_reply{201, ""} : naive_reply{0, entry->second};
}

naive_reply set(const naive_message& asked, sections& store) {
  const auto section = asked.section();
  const auto key = asked.key();
  const auto value = asked.value();
  if (!section || !key || !value || (key->size() == 1 && value->empty())) {
    return {};
  }
  if (!store.contains(*section)) {
    return {209, ""};
  }
  store[*section][*key] = *value;
  return {0, ""};
}

naive_reply reply_to(const naive_message& asked, sections& store) {
  switch (asked.operation()) {
    case 1:
      if (const auto name = asked.section()) {
        store.try_emplace(*name);
        return {0, ""};
      }
      return {};
    case 9:
      return set(asked, store);
    case 10:
      return get(asked, store);
    case 12:
    case 16:
      return {0, ""};
    default:
      return {};
  }
}

void check_reply(std::string_view text, sections& store) {
  // On the heap at its exact size, so that a read beyond the end is detected.
  const std::string request{text};
  const reply given = make_reply(request.data(), request.size());
  if (text.size() < 4) {
    require(given.type == 0, "a message that names no client gets no reply");
    return;
  }
  const naive_message asked{text};
  if (asked.reply_type() < 3) {
    require(given.type == 0, "no process has such a reply type");
    return;
  }
  const naive_reply expected = asked.is_complete() ? reply_to(asked, store) : naive_reply{};
  require(given.type == asked.reply_type(), "the reply goes to its client");
  require(result_of(given) == expected.result, "both give the same result");
  const bool has_value = asked.is_complete() && asked.operation() == 10 && expected.result == 0;
  const std::size_t names = has_value ? asked.value_off() : 0;
  require(given.length == 16 + names + expected.value.size(), "the reply is as long as its value");
  require(given.length <= text.size() + 200 || !asked.is_complete(),
          "the reply fits the client's record");
  require(std::string_view(given.text + 16 + names, expected.value.size()) == expected.value,
          "the value is the one stored");
}

sections sections_of_store() {
  sections all;
  for (const cfg_segment* section = g_config_mgmt.first; section != nullptr;
       section = section->list_next) {
    auto& entries = all[cfg_segment_name(section)];
    if (const cfg_item* item = section->head; item != nullptr) {
      do {
        entries[cfg_item_key(item)] = cfg_item_value(item);
        item = item->next;
      } while (item != section->head);
    }
  }
  return all;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  return silence_export_notice() ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view rest{reinterpret_cast<const char*>(data), size};
  sections naive{{"LAN", {{"ConnType", "1"}}}, {"S", {}}};
  require(load("[LAN]\nConnType=1\n[S]\n") == 0, "the first store loads");
  while (!rest.empty()) {
    const std::size_t length = static_cast<unsigned char>(rest.front());
    check_reply(rest.substr(1, length), naive);
    rest.remove_prefix(std::min(rest.size(), length + 1));
  }
  require(sections_of_store() == naive, "both stores hold the same");
  require(load(exported()) == 0, "what was set can be loaded again");
  require(sections_of_store() == naive, "the saved file gives the same store again");
  config_free_all(&g_config_mgmt);
  return 0;
}
