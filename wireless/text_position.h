// Moving ahead in a text without ever passing its end.
#ifndef PROREFLAX_WIRELESS_TEXT_POSITION_H
#define PROREFLAX_WIRELESS_TEXT_POSITION_H

#include <algorithm>
#include <cstddef>

namespace proreflax {

/// Characters between a place of a text and the text's end, where a NUL follows the bytes read.
inline std::size_t left(const char* text, const char* end) {
  return static_cast<std::size_t>(end - text);
}

/// The place that many characters ahead, or the text's end when it is nearer.
inline const char* ahead(const char* text, std::size_t characters, const char* end) {
  return text + std::min(characters, left(text, end));
}

}  // namespace proreflax

#endif
