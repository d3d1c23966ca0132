// A decimal number as a naive reader takes it: what the C library makes of it as a long, cut to the
// width of an int.
#ifndef PROREFLAX_FUZZ_NAIVE_NUMBER_H
#define PROREFLAX_FUZZ_NAIVE_NUMBER_H

#include <cstdint>
#include <cstdlib>

inline std::int32_t naive_number(const char* text) {
  return static_cast<std::int32_t>(std::strtol(text, nullptr, 10));
}

#endif
