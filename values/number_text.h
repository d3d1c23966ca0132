// Number texts: decimal, or hexadecimal after "0x" or "0X", with one optional sign in front.
#ifndef PROREFLAX_VALUES_NUMBER_TEXT_H
#define PROREFLAX_VALUES_NUMBER_TEXT_H

#include <cstdint>

namespace proreflax {

/// Stores 0 first, so that a failed parse leaves 0 behind. 0; 204 for null or empty text; 210 for a
/// character that is no digit of the base; 211 for a number that wrapped and landed lower.
std::uint32_t cfc_str_to_u32(const char* text, std::uint32_t* out);

}  // namespace proreflax

#endif
