// Moving ahead in a text without ever passing its NUL.
#ifndef PROREFLAX_WIRELESS_TEXT_POSITION_H
#define PROREFLAX_WIRELESS_TEXT_POSITION_H

#include <cstddef>
#include <cstring>

namespace proreflax {

/// The place that many characters ahead, or the text's end when it is nearer.
inline const char* ahead(const char* text, std::size_t characters) {
  return text + strnlen(text, characters);
}

}  // namespace proreflax

#endif
