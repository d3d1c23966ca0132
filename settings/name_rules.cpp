#include "settings/name_rules.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "settings/message_text.h"
#include "transport/names.h"

namespace proreflax::settings {
namespace {

std::string too_long(std::string_view what, const std::string& text, std::int32_t most) {
  return std::string{what} + " has " + std::to_string(text.size()) + " characters; at most " +
         std::to_string(most) + " are taken";
}

std::string holds(std::string_view what, char c) {
  return std::string{what} + " holds " +
         (c == '\r'   ? "a CR"
          : c == '\n' ? "an LF"
                      : quoted({&c, 1})) +
         ", which is forbidden in it";
}

}  // namespace

std::optional<std::string> broken_section_rule(const std::string& section) {
  constexpr std::string_view what = "the section name";
  if (is_section_name(section.c_str())) {
    return std::nullopt;
  }
  if (section.empty()) {
    return "the section name is empty";
  }
  if (const auto bad = std::ranges::find_if(section, is_line_break); bad != section.end()) {
    return holds(what, *bad);
  }
  return too_long(what, section, section_name_max);
}

std::optional<std::string> broken_key_rule(const std::string& key) {
  constexpr std::string_view what = "the key";
  if (is_key(key.c_str())) {
    return std::nullopt;
  }
  if (key.empty()) {
    return "the key is empty";
  }
  if (key.front() == '[') {
    return "the key begins with \"[\"; its saved line would read as a section header";
  }
  if (const auto bad = std::ranges::find_if(key, is_forbidden_in_key); bad != key.end()) {
    return holds(what, *bad);
  }
  return too_long(what, key, key_max);
}

std::optional<std::string> broken_value_rule(const std::string& value) {
  constexpr std::string_view what = "the value";
  if (is_value_len(cfc_value_len(value.c_str()))) {
    return std::nullopt;
  }
  if (const auto bad = std::ranges::find_if(value, is_line_break); bad != value.end()) {
    return holds(what, *bad);
  }
  return too_long(what, value, value_max);
}

std::optional<std::string> broken_entry_rule(const std::string& key, const std::string& value) {
  if (key.size() == 1 && value.empty()) {
    return "a key of one character takes no empty value; its saved line could not be read back";
  }
  return std::nullopt;
}

}  // namespace proreflax::settings
