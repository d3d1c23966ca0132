// A decimal number as a naive reader takes it: what the C library makes of it in 64 bits, brought
// into the range of 32.
#ifndef PROREFLAX_FUZZ_NAIVE_NUMBER_H
#define PROREFLAX_FUZZ_NAIVE_NUMBER_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>

inline std::int32_t naive_number(const char* text) {
  const long long number = std::strtoll(text, nullptr, 10);
  return static_cast<std::int32_t>(std::clamp<long long>(number, INT32_MIN, INT32_MAX));
}

#endif
