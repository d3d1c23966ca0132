#include "values/number_text.h"

#include <proreflax/result.h>

#include "values/hex_text.h"

namespace proreflax {
namespace {

/// The value of a digit, or something at least `base` for every other character.
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
    // Weak on purpose: only a wrap that lands below the previous value is caught. Stored texts that
    // pass today must go on passing, so 9999999999 stays 1410065407.
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
