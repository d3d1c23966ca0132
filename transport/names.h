// The rules of section names, keys and values: what a
// client may send, and what the service accepts.
//
// The three validators walk a text once. What they return for a text that breaks a rule lies
// outside the range that every caller accepts, so that null, empty, forbidden and too long all end
// alike. The rules differ on purpose: '[' is refused only where it would begin a key (a saved line
// would read as a section header), '=' and '*' only in keys.
#ifndef PROREFLAX_TRANSPORT_NAMES_H
#define PROREFLAX_TRANSPORT_NAMES_H

#include <cstddef>
#include <cstdint>
#include <limits>

namespace proreflax {

inline constexpr std::int32_t section_name_max = 24;
inline constexpr std::int32_t key_max = 49;
inline constexpr std::int32_t value_max = 199;

constexpr bool is_line_break(char c) {
  return c == '\r' || c == '\n';
}

constexpr bool is_forbidden_in_key(char c) {
  return c == '=' || c == '*' || is_line_break(c);
}

/// Length of a text without its NUL, or -1 when it holds a forbidden character.
template <typename Forbidden>
constexpr std::int32_t length_without(const char* text, Forbidden forbidden) {
  constexpr std::size_t most = std::numeric_limits<std::int32_t>::max() - 1;
  std::size_t length = 0;
  for (; text[length] != '\0'; ++length) {
    if (forbidden(text[length])) {
      return -1;
    }
  }
  return static_cast<std::int32_t>(length < most ? length : most);
}

/// Length of a section name with its NUL; 1 for null, 0 for a name that holds CR or LF.
constexpr std::int32_t cfc_section_len(const char* text) {
  return text == nullptr ? 1 : length_without(text, is_line_break) + 1;
}

/// Length of a key with its NUL; 1 for null or a leading '[', 0 for a key that holds '=', '*', CR
/// or LF.
constexpr std::int32_t cfc_key_len(const char* text) {
  return text == nullptr || text[0] == '[' ? 1 : length_without(text, is_forbidden_in_key) + 1;
}

/// Length of a value without its NUL; -1 for null or a value that holds CR or LF.
constexpr std::int32_t cfc_value_len(const char* text) {
  return text == nullptr ? -1 : length_without(text, is_line_break);
}

/// A validator's result for a name: 1 to `max` characters and the NUL.
constexpr bool is_name_len(std::int32_t length, std::int32_t max) {
  return length >= 2 && length <= max + 1;
}

constexpr bool is_section_name(const char* text) {
  return is_name_len(cfc_section_len(text), section_name_max);
}

constexpr bool is_key(const char* text) {
  return is_name_len(cfc_key_len(text), key_max);
}

constexpr bool is_value_len(std::int32_t length) {
  return length >= 0 && length <= value_max;
}

}  // namespace proreflax

#endif
