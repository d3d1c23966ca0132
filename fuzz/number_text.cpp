// Any string as a number, against a naive reader; and any number written in each form and read
// back.
#include "values/number_text.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz/require.h"

namespace {

struct reading {
  std::uint32_t result;
  std::uint32_t number;
};

/// A digit's value by its position in a list, or -1.
int digit_of(char c, std::uint32_t base) {
  const std::string digits = base == 16 ? "0123456789abcdef" : "0123456789";
  const char lower = c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c;
  const std::size_t at = digits.find(lower);
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

/// The rules in 64 bits, truncated to 32 after every digit.
reading naive_read(std::string text) {
  if (text.empty()) {
    return {204, 0};
  }
  const bool negative = text[0] == '-';
  if (negative || text[0] == '+') {
    text.erase(0, 1);
  }
  const std::string prefix = text.substr(0, 2);
  const std::uint32_t base = prefix == "0x" || prefix == "0X" ? 16 : 10;
  text.erase(0, base == 16 ? 2 : 0);
  std::uint64_t number = 0;
  for (const char c : text) {
    const int digit = digit_of(c, base);
    if (digit < 0) {
      return {210, 0};
    }
    const std::uint64_t next = (number * base + static_cast<std::uint64_t>(digit)) % (1ULL << 32);
    if (next < number) {
      return {211, 0};
    }
    number = next;
  }
  return {0, static_cast<std::uint32_t>(negative ? (1ULL << 32) - number : number)};
}

std::string hexadecimal(std::uint32_t number) {
  std::string text;
  for (int digits = 8; digits > 0; --digits, number /= 16) {
    text.insert(text.begin(), "0123456789abcdef"[number % 16]);
  }
  return text;
}

void check_round_trip(std::uint32_t number) {
  const std::string decimal = std::to_string(number);
  const std::string digits = hexadecimal(number);
  for (const std::string& text :
       {"0x" + digits, "0X" + digits, decimal, "+" + decimal, "00" + decimal}) {
    std::uint32_t again = ~number;
    require(proreflax::cfc_str_to_u32(text.c_str(), &again) == 0, "a number as written is read");
    require(again == number, "a number as written reads as itself");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string all{reinterpret_cast<const char*>(data), size};
  const std::string text = all.substr(0, all.find('\0'));
  std::uint32_t number = 0xDEADBEEF;
  const std::uint32_t result = proreflax::cfc_str_to_u32(text.c_str(), &number);
  const reading expected = naive_read(text);
  require(result == expected.result, "both readers give the same code");
  require(number == expected.number, "both readers give the same number, and 0 on failure");
  if (size >= sizeof number) {
    std::memcpy(&number, data, sizeof number);
    check_round_trip(number);
  }
  return 0;
}
