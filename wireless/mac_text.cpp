#include "wireless/mac_text.h"

#include <proreflax/result.h>
#include <proreflax/wireless.h>

namespace proreflax {
namespace {

constexpr unsigned lower_case_bit = 0x20;

constexpr unsigned not_a_digit = 16;

/// The value of a hexadecimal digit, or not_a_digit.
unsigned digit_value(char character) {
  const auto code = static_cast<unsigned char>(character);
  const unsigned decimal = code - unsigned{'0'};
  if (decimal < 10) {
    return decimal;
  }
  const unsigned letter = (code | lower_case_bit) - unsigned{'a'};
  return letter < 6 ? letter + 10 : not_a_digit;
}

}  // namespace

std::uint32_t is_not_hex_digit(char character) {
  return digit_value(character) == not_a_digit ? 1 : 0;
}

std::uint32_t parse_mac_text(const char* text, std::uint8_t* out) {
  if (text == nullptr || out == nullptr) {
    return CFC_FAILED;
  }
  out[0] = 0;
  for (int i = 0; i < WLS_MAC_SIZE; ++i, text += 3) {
    // The NUL of a string that ends early is neither a digit nor ':', so nothing after it is read.
    const unsigned high = digit_value(text[0]);
    if (high == not_a_digit) {
      return CFC_FAILED;
    }
    const unsigned low = digit_value(text[1]);
    if (low == not_a_digit) {
      return CFC_FAILED;
    }
    if (i < WLS_MAC_SIZE - 1 && text[2] != ':') {
      return CFC_FAILED;
    }
    out[i] = static_cast<std::uint8_t>(high << 4 | low);
  }
  return CFC_OK;
}

}  // namespace proreflax
