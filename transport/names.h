// The rules of section names, keys and values: what a client may send, and what the service
// accepts.
//
// The three validators read a string once. For a string that breaks a rule they return a length
// outside the range that every caller accepts, so that null, empty, forbidden and too long are all
// handled alike. The rules differ: '[' is refused only at the beginning of a key (the saved line
// would be read as a section header), '=' and '*' only in keys.
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

/// Length of a string without its NUL, or -1 when it contains a forbidden character.
template <typename Forbidden>
constexpr std::int32_t length_without(const char* characters, Forbidden forbidden) {
  constexpr std::size_t length_max = std::numeric_limits<std::int32_t>::max() - 1;
  std::size_t length = 0;
  for (; characters[length] != '\0'; ++length) {
    if (forbidden(characters[length])) {
      return -1;
    }
  }
  return static_cast<std::int32_t>(length < length_max ? length : length_max);
}

/// Length of a section name with its NUL; 1 for null, 0 for a name that contains CR or LF.
constexpr std::int32_t cfc_section_len(const char* name) {
  return name == nullptr ? 1 : length_without(name, is_line_break) + 1;
}

/// Length of a key with its NUL; 1 for null or a leading '[', 0 for a key that contains '=', '*',
/// CR or LF.
constexpr std::int32_t cfc_key_len(const char* key) {
  return key == nullptr || key[0] == '[' ? 1 : length_without(key, is_forbidden_in_key) + 1;
}

/// Length of a value without its NUL; -1 for null or a value that contains CR or LF.
constexpr std::int32_t cfc_value_len(const char* value) {
  return value == nullptr ? -1 : length_without(value, is_line_break);
}

/// Whether a validator's result is that of a name: 1 to `max` characters and the NUL.
constexpr bool is_name_len(std::int32_t length, std::int32_t max) {
  return length >= 2 && length <= max + 1;
}

constexpr bool is_section_name(const char* name) {
  return is_name_len(cfc_section_len(name), section_name_max);
}

constexpr bool is_key(const char* key) {
  return is_name_len(cfc_key_len(key), key_max);
}

constexpr bool is_value_len(std::int32_t length) {
  return length >= 0 && length <= value_max;
}

}  // namespace proreflax

#endif
