#include "wireless/mac_text.h"

#include <proreflax/result.h>
#include <proreflax/wireless.h>

namespace proreflax {
namespace {

constexpr char lower_case_bit = 0x20;

bool is_decimal_digit(char character) {
  return character >= '0' && character <= '9';
}

/// The value of a character that is a hexadecimal digit.
int digit_value(char digit) {
  return is_decimal_digit(digit) ? digit - '0' : (digit | lower_case_bit) - 'a' + 10;
}

}  // namespace

std::uint32_t is_not_hex_digit(char character) {
  if (is_decimal_digit(character)) {
    return 0;
  }
  const int folded = character | lower_case_bit;
  return folded >= 'a' && folded <= 'f' ? 0 : 1;
}

std::uint32_t parse_mac_text(const char* text, std::uint8_t* out) {
  if (text == nullptr || out == nullptr) {
    return CFC_FAILED;
  }
  out[0] = 0;
  for (int i = 0; i < WLS_MAC_SIZE; ++i, text += 3) {
    // The NUL of a text that ends early is no digit and no ':', so nothing behind it is looked at.
    if (is_not_hex_digit(text[0]) != 0 || is_not_hex_digit(text[1]) != 0) {
      return CFC_FAILED;
    }
    if (i < WLS_MAC_SIZE - 1 && text[2] != ':') {
      return CFC_FAILED;
    }
    out[i] = static_cast<std::uint8_t>(digit_value(text[0]) << 4 | digit_value(text[1]));
  }
  return CFC_OK;
}

}  // namespace proreflax
