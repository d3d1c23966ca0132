// Decimal numbers as the driver prints them, read as atoi() reads them: white space, one sign,
// digits, and 0 where there is none.
//
// Not atoi() itself: it leaves open what a number out of range gives. Here that is the nearest
// number in range, on every platform, which is what the device's C library gives. A caller also
// spares the base, the locale and the errno of the general conversion, which take longer than all
// else in a row.
#ifndef PROREFLAX_WIRELESS_DECIMAL_TEXT_H
#define PROREFLAX_WIRELESS_DECIMAL_TEXT_H

#include <algorithm>
#include <cstdint>

namespace proreflax {

inline bool is_white_space(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

/// The number at the start of a NUL-terminated text.
inline std::int32_t decimal_number(const char* text) {
  constexpr std::int64_t out_of_range = std::int64_t{1} << 31;
  while (is_white_space(*text)) {
    ++text;
  }
  const bool negative = *text == '-';
  text += negative || *text == '+' ? 1 : 0;
  std::int64_t number = 0;
  for (; *text >= '0' && *text <= '9'; ++text) {
    number = std::min(number * 10 + (*text - '0'), out_of_range);
  }
  return static_cast<std::int32_t>(negative ? -number : std::min(number, out_of_range - 1));
}

}  // namespace proreflax

#endif
