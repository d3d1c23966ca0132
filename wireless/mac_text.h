// MAC addresses as text: six pairs of hexadecimal digits, joined by ':'.
#ifndef PROREFLAX_WIRELESS_MAC_TEXT_H
#define PROREFLAX_WIRELESS_MAC_TEXT_H

#include <cstddef>
#include <cstdint>

namespace proreflax {

/// Characters of a MAC address.
inline constexpr std::size_t mac_text_length = 17;

/// 0 for a hexadecimal digit of either case, 1 for any other character.
std::uint32_t is_not_hex_digit(char character);

/// Decodes a MAC address of six bytes. Whatever follows it is left to the caller. 0; or 1 for null
/// or a malformed address, with out[0] 0 or decoded, and each byte behind the fault as it was.
std::uint32_t parse_mac_text(const char* text, std::uint8_t* out);

}  // namespace proreflax

#endif
