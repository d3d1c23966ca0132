#include "values/number_text.h"

#include <proreflax/result.h>

#include "values/hex_text.h"

namespace proreflax {
namespace {

/// The value of a digit, or not_a_digit for every other character.
std::uint32_t digit_value(char c, std::uint32_t base) {
  const std::uint32_t value = hex_digit_value(c);
  return value < base ? value : not_a_digit;
}

}  // namespace

std::uint32_t cfc_str_to_u32(const char* text, std::uint32_t* out) {
  *out = 0;
  if (text == nullptr || *text == '\0') {
    return CFC_ERR_BAD_ARGUMENT;
  }
  const bool negative = *text == '-';
  if (negative || *text == '+') {
    ++text;
  }
  std::uint32_t base = 10;
  if (has_hex_prefix(text)) {
    base = 16;
    text += 2;
  }
  std::uint32_t value = 0;
  for (; *text != '\0'; ++text) {
    const std::uint32_t digit = digit_value(*text, base);
    if (digit == not_a_digit) {
      return CFC_ERR_BAD_DIGIT;
    }
    // This detects only a wrap to less than the previous value. A stricter test would refuse values
    // that are accepted in existing configurations: 9999999999 is read as 1410065407.
    const std::uint32_t next = value * base + digit;
    if (next < value) {
      return CFC_ERR_OVERFLOW;
    }
    value = next;
  }
  *out = negative ? 0 - value : value;
  return CFC_OK;
}

}  // namespace proreflax
