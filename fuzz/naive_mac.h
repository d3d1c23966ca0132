// A naive decoder of MAC addresses: overwrites the bytes as far as the address is well formed.
#ifndef PROREFLAX_FUZZ_NAIVE_MAC_H
#define PROREFLAX_FUZZ_NAIVE_MAC_H

#include <array>
#include <cstdint>
#include <string>

#include "fuzz/naive_bytes.h"

using mac_bytes = std::array<std::uint8_t, 6>;

inline void naive_mac(const std::string& text, mac_bytes& bytes) {
  const std::string digits = "0123456789abcdefABCDEF";
  bytes[0] = 0;
  for (std::size_t i = 0; i < 6; ++i) {
    const std::string pair = from(text, 3 * i).substr(0, 2);
    const bool joined = i == 5 || from(text, 3 * i + 2).substr(0, 1) == ":";
    if (pair.size() != 2 || pair.find_first_not_of(digits) != std::string::npos || !joined) {
      return;
    }
    bytes[i] = static_cast<std::uint8_t>(std::stoul(pair, nullptr, 16));
  }
}

#endif
