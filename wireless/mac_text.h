// MAC addresses as strings: six pairs of hexadecimal digits, separated by ':'.
#ifndef PROREFLAX_WIRELESS_MAC_TEXT_H
#define PROREFLAX_WIRELESS_MAC_TEXT_H

#include <cstddef>
#include <cstdint>

namespace proreflax {

/// Length of a MAC address string.
inline constexpr std::size_t mac_text_length = 17;

/// 0 for a hexadecimal digit of either case, 1 for any other character.
std::uint32_t is_not_hex_digit(char character);

/// Decodes a MAC address of six bytes and ignores what follows it. 0; or 1 for null or a malformed
/// address: then out[0] is 0 or decoded, and the bytes after the error are unchanged.
std::uint32_t parse_mac_text(const char* text, std::uint8_t* out);

}  // namespace proreflax

#endif
