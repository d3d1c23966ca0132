// Number strings: decimal, or hexadecimal after "0x" or "0X", with one optional leading sign.
#ifndef PROREFLAX_VALUES_NUMBER_TEXT_H
#define PROREFLAX_VALUES_NUMBER_TEXT_H

#include <cstdint>

namespace proreflax {

/// Stores 0 first, so that `out` is 0 after a failed parse. 0; 204 for a null or empty string; 210
/// for a character that is not a digit of the base; 211 for a number that wrapped to less than its
/// previous value.
std::uint32_t cfc_str_to_u32(const char* text, std::uint32_t* out);

}  // namespace proreflax

#endif
