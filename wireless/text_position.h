// Moving forward in a text without passing its end.
#ifndef PROREFLAX_WIRELESS_TEXT_POSITION_H
#define PROREFLAX_WIRELESS_TEXT_POSITION_H

#include <algorithm>
#include <cstddef>

namespace proreflax {

/// Number of characters from `text` to `end`.
inline std::size_t left(const char* text, const char* end) {
  return static_cast<std::size_t>(end - text);
}

/// The position `characters` ahead, or `end` when it is closer.
inline const char* ahead(const char* text, std::size_t characters, const char* end) {
  return text + std::min(characters, left(text, end));
}

}  // namespace proreflax

#endif
