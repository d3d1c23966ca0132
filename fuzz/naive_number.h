// A naive decoder of decimal numbers: the C library's result as a long, truncated to the width of
// an int.
#ifndef PROREFLAX_FUZZ_NAIVE_NUMBER_H
#define PROREFLAX_FUZZ_NAIVE_NUMBER_H

#include <cstdint>
#include <cstdlib>

inline std::int32_t naive_number(const char* text) {
  return static_cast<std::int32_t>(std::strtol(text, nullptr, 10));
}

#endif
