// The grammar of one line of the configuration file: what the loader accepts, and the reasons for
// which it refuses a line.
//
// A line is empty, a section header "[name]" or an entry "key=value", and ends in one LF. Bytes are
// used unchanged: blanks are not trimmed, a CR is an ordinary byte, comments and escapes do not
// exist. An entry has at least 4 bytes with its LF, so "a=" without a value is refused while "ab="
// is an entry with an empty value. The service refuses to store what the loader would refuse.
//
// Header-only and independent of the store, so that every check of a file uses the loader's rules.
#ifndef PROREFLAX_STORE_INI_LINE_H
#define PROREFLAX_STORE_INI_LINE_H

#include <cstddef>
#include <cstring>

namespace proreflax {

inline constexpr std::size_t line_name_max = 24;
inline constexpr std::size_t line_key_max = 49;
inline constexpr std::size_t line_value_max = 199;

/// The loader's line buffer: the longest line that it reads in one call, and a NUL.
inline constexpr std::size_t line_buffer_bytes = 252;

enum class line_error {
  none,
  begins_with_nul,
  too_short,          // one to three bytes that are not an empty line
  no_line_feed,       // the last line lacks its LF, or the line is too long or contains a NUL
  header_not_closed,  // no "]" before the LF
  name_too_long,
  no_key,  // no "=", or nothing before it
  key_too_long,
  value_too_long,
  no_section_yet,  // an entry before the first header
};

enum class line_type { empty, header, entry };

/// A parsed line. Name, key and value are NUL-terminated parts of the line.
struct ini_line {
  line_error error = line_error::none;
  line_type type = line_type::empty;
  char* name = nullptr;
  char* key = nullptr;
  char* value = nullptr;
  std::size_t value_length = 0;
};

/// Splits a line at its first "=". `key` becomes null if the line has no "=" or begins with it.
inline void config_split_kv(char* line, char** key, char** value) {
  *key = nullptr;
  char* equals = line;
  while (*equals != '=' && *equals != '\0') {
    ++equals;
  }
  if (*equals == '\0' || equals == line) {
    return;
  }
  *equals = '\0';
  *key = line;
  *value = equals + 1;
}

inline ini_line read_header(char* line, std::size_t length) {
  if (line[length - 2] != ']') {
    return {.error = line_error::header_not_closed};
  }
  line[length - 2] = '\0';
  if (length - 3 > line_name_max) {
    return {.error = line_error::name_too_long};
  }
  return {.type = line_type::header, .name = line + 1};
}

inline ini_line read_entry(char* line, std::size_t length) {
  line[length - 1] = '\0';
  ini_line entry{.type = line_type::entry};
  config_split_kv(line, &entry.key, &entry.value);
  if (entry.key == nullptr) {
    entry.error = line_error::no_key;
    return entry;
  }
  const auto value_off = static_cast<std::size_t>(entry.value - line);
  entry.value_length = length - 1 - value_off;
  if (value_off - 1 > line_key_max) {
    entry.error = line_error::key_too_long;
  } else if (entry.value_length > line_value_max) {
    entry.error = line_error::value_too_long;
  }
  return entry;
}

/// Parses a NUL-terminated line in place.
inline ini_line read_ini_line(char* line) {
  const std::size_t length = std::strlen(line);
  if (length == 0) {
    return {.error = line_error::begins_with_nul};
  }
  if (length == 1 && line[0] == '\n') {
    return {};
  }
  if (length < 4) {
    return {.error = line_error::too_short};
  }
  if (line[length - 1] != '\n') {
    return {.error = line_error::no_line_feed};
  }
  return line[0] == '[' ? read_header(line, length) : read_entry(line, length);
}

}  // namespace proreflax

#endif
