// Binary data as a hexadecimal string: "0x", then two digits per byte, the last byte first, so that
// the string is one number whose least significant byte is data[0].
#ifndef PROREFLAX_VALUES_HEX_TEXT_H
#define PROREFLAX_VALUES_HEX_TEXT_H

#include <cstdint>

namespace proreflax {

inline constexpr std::uint32_t not_a_digit = 0xFF;

/// 0 to 15, or not_a_digit. Accepts both cases.
constexpr std::uint32_t hex_digit_value(char c) {
  if (c >= '0' && c <= '9') {
    return static_cast<std::uint32_t>(c - '0');
  }
  if (c >= 'a' && c <= 'f') {
    return static_cast<std::uint32_t>(c - 'a' + 10);
  }
  if (c >= 'A' && c <= 'F') {
    return static_cast<std::uint32_t>(c - 'A' + 10);
  }
  return not_a_digit;
}

constexpr bool has_hex_prefix(const char* text) {
  return text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

/// Writes 2 * count + 2 characters and no NUL. Always 0.
std::uint32_t cfc_bin_to_hex(const std::uint8_t* data, std::uint32_t count, char* text);

/// Reads exactly `length` characters and writes (length - 2) / 2 bytes, or none for an empty
/// string. 0, or 205 for a string of another form; bytes decoded before an invalid digit stay
/// written.
std::uint32_t cfc_hex_to_bin(const char* text, std::int32_t length, std::uint8_t* out);

}  // namespace proreflax

#endif
