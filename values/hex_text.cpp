#include "values/hex_text.h"

#include <proreflax/result.h>

namespace proreflax {

std::uint32_t cfc_bin_to_hex(const std::uint8_t* data, std::uint32_t count, char* text) {
  constexpr char digits[] = "0123456789abcdef";
  *text++ = '0';
  *text++ = 'x';
  for (std::uint32_t i = count; i > 0; --i) {
    *text++ = digits[data[i - 1] >> 4];
    *text++ = digits[data[i - 1] & 0x0F];
  }
  return CFC_OK;
}

std::uint32_t cfc_hex_to_bin(const char* text, std::int32_t length, std::uint8_t* out) {
  if (length == 0) {
    return CFC_OK;
  }
  if (length < 4 || !has_hex_prefix(text) || length % 2 != 0) {
    return CFC_ERR_BAD_VALUE;
  }
  for (std::int32_t end = length; end > 2; end -= 2) {
    const std::uint32_t high = hex_digit_value(text[end - 2]);
    const std::uint32_t low = hex_digit_value(text[end - 1]);
    if (high == not_a_digit || low == not_a_digit) {
      return CFC_ERR_BAD_VALUE;
    }
    *out++ = static_cast<std::uint8_t>(high * 16 + low);
  }
  return CFC_OK;
}

}  // namespace proreflax
