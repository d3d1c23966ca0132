// The grammar of one line of the configuration text: what the loader accepts, and why not.
//
// A line is empty, a section header "[name]" or an entry "key=value", and ends in one LF. Bytes are
// taken as they are: no blanks are trimmed, a CR is an ordinary byte, there are no comments and no
// escapes. An entry has at least 4 bytes with its LF, so "a=" with nothing behind it is refused
// while "ab=" is an entry with an empty value: deliberate, and the writer's side keeps to it.
//
// Header-only and without the store, so that whatever checks a text uses the rules of the loader.
#ifndef PROREFLAX_STORE_INI_LINE_H
#define PROREFLAX_STORE_INI_LINE_H

#include <cstddef>
#include <cstring>

namespace proreflax {

inline constexpr std::size_t line_name_max = 24;
inline constexpr std::size_t line_key_max = 49;
inline constexpr std::size_t line_value_max = 199;

/// The loader's line buffer: the longest line that it takes at once, and a NUL.
inline constexpr std::size_t line_buffer_bytes = 252;

enum class line_fault {
  none,
  begins_with_nul,
  too_short,          // one to three bytes that are no empty line
  no_line_feed,       // the last line lacks its LF, or the line is too long, or holds a NUL
  header_not_closed,  // no "]" before the LF
  name_too_long,
  no_key,  // no "=", or nothing in front of it
  key_too_long,
  value_too_long,
  no_section_yet,  // an entry before the first header
};

enum class line_kind { empty, header, entry };

/// A line taken apart. Names, keys and values are NUL-terminated pieces of the line.
struct ini_line {
  line_fault fault = line_fault::none;
  line_kind kind = line_kind::empty;
  char* name = nullptr;
  char* key = nullptr;
  char* value = nullptr;
  std::size_t value_length = 0;
};

/// Cuts a line at its first "=". `key` becomes null when there is none, or nothing in front of it.
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
    return {.fault = line_fault::header_not_closed};
  }
  line[length - 2] = '\0';
  if (length - 3 > line_name_max) {
    return {.fault = line_fault::name_too_long};
  }
  return {.kind = line_kind::header, .name = line + 1};
}

inline ini_line read_entry(char* line, std::size_t length) {
  line[length - 1] = '\0';
  ini_line entry{.kind = line_kind::entry};
  config_split_kv(line, &entry.key, &entry.value);
  if (entry.key == nullptr) {
    entry.fault = line_fault::no_key;
    return entry;
  }
  const auto value_off = static_cast<std::size_t>(entry.value - line);
  entry.value_length = length - 1 - value_off;
  if (value_off - 1 > line_key_max) {
    entry.fault = line_fault::key_too_long;
  } else if (entry.value_length > line_value_max) {
    entry.fault = line_fault::value_too_long;
  }
  return entry;
}

/// Takes a NUL-terminated line apart, in place.
inline ini_line read_ini_line(char* line) {
  const std::size_t length = std::strlen(line);
  if (length == 0) {
    return {.fault = line_fault::begins_with_nul};
  }
  if (length == 1 && line[0] == '\n') {
    return {};
  }
  if (length < 4) {
    return {.fault = line_fault::too_short};
  }
  if (line[length - 1] != '\n') {
    return {.fault = line_fault::no_line_feed};
  }
  return line[0] == '[' ? read_header(line, length) : read_entry(line, length);
}

}  // namespace proreflax

#endif
