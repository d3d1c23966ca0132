// Any string as an IPv4 address, against a naive reader; and any address converted to a string and
// back.
#include <proreflax/config.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "fuzz/require.h"

namespace {

std::vector<std::string> cut_at_dots(const std::string& text) {
  std::vector<std::string> parts{""};
  for (const char c : text) {
    if (c == '.') {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

/// 0 to 255, with any number of leading zeros.
std::optional<std::uint32_t> naive_part(const std::string& part) {
  const bool digits = std::all_of(part.begin(), part.end(),
                                  [](char c) { return std::strchr("0123456789", c) != nullptr; });
  if (part.empty() || !digits) {
    return std::nullopt;
  }
  const std::string bare = part.substr(std::min(part.find_first_not_of('0'), part.size() - 1));
  const unsigned long number = bare.size() > 3 ? 256 : std::stoul(bare);
  return number > 255 ? std::nullopt : std::optional{static_cast<std::uint32_t>(number)};
}

std::optional<std::uint32_t> naive_address(const std::string& text) {
  const std::vector<std::string> parts = cut_at_dots(text);
  std::uint32_t address = 0;
  for (const std::string& part : parts) {
    const std::optional<std::uint32_t> number = naive_part(part);
    if (parts.size() != 4 || !number) {
      return std::nullopt;
    }
    address = address * 256 + *number;
  }
  return address;
}

std::string naive_text(std::uint32_t address) {
  return std::to_string(address >> 24) + "." + std::to_string(address >> 16 & 255) + "." +
         std::to_string(address >> 8 & 255) + "." + std::to_string(address & 255);
}

void check_round_trip(std::uint32_t address) {
  char text[16];
  std::uint32_t again = ~address;
  require(translate_u32_to_ip(text, sizeof text, address) == 0, "16 bytes hold any address");
  require(text == naive_text(address), "both writers give the same string");
  require(translate_ip_to_u32(text, &again) == 0, "an address as written can be read");
  require(again == address, "an address as written reads as itself");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string all{reinterpret_cast<const char*>(data), size};
  const std::string text = all.substr(0, all.find('\0'));
  constexpr std::uint32_t untouched = 0xDEADBEEF;
  std::uint32_t address = untouched;
  const std::int32_t result = translate_ip_to_u32(text.c_str(), &address);
  const std::optional<std::uint32_t> expected = naive_address(text);
  require(result == (expected ? 0 : -1), "both readers accept the same strings");
  require(address == expected.value_or(untouched), "both readers give the same address");
  if (size >= sizeof address) {
    std::memcpy(&address, data, sizeof address);
    check_round_trip(address);
  }
  return 0;
}
