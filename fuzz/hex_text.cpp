// Any string as hexadecimal data, against a naive reader; and any data converted to a string and
// back. Input and output are in blocks of exactly their size, so that access beyond them is
// detected.
#include "values/hex_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/require.h"

namespace {

using bytes = std::vector<std::uint8_t>;

template <typename T>
struct exact_block {
  explicit exact_block(std::size_t count) : data{std::make_unique<T[]>(count)}, size{count} {}
  std::unique_ptr<T[]> data;
  std::size_t size;
};

/// The digit's value by its position in a list, or -1.
int digit_of(char c) {
  const std::string digits = "0123456789abcdefABCDEF";
  const std::size_t at = digits.find(c);
  return at == std::string::npos ? -1 : static_cast<int>(at < 16 ? at : at - 6);
}

struct reading {
  std::uint32_t result;
  bytes data;  // what was decoded, also when a bad digit ended it
};

reading naive_read(const std::string& text) {
  if (text.empty()) {
    return {0, {}};
  }
  const std::string prefix = text.substr(0, 2);
  if ((prefix != "0x" && prefix != "0X") || text.size() < 4 || text.size() % 2 != 0) {
    return {205, {}};
  }
  reading all{0, {}};
  for (std::string digits = text.substr(2); !digits.empty(); digits.resize(digits.size() - 2)) {
    const int high = digit_of(digits[digits.size() - 2]);
    const int low = digit_of(digits[digits.size() - 1]);
    if (high < 0 || low < 0) {
      all.result = 205;
      break;
    }
    all.data.push_back(static_cast<std::uint8_t>(high * 16 + low));
  }
  return all;
}

std::string naive_write(const bytes& data) {
  const std::string digits = "0123456789abcdef";
  std::string text = "0x";
  for (auto byte = data.rbegin(); byte != data.rend(); ++byte) {
    text += {digits[*byte / 16], digits[*byte % 16]};
  }
  return text;
}

void check_reading(const std::string& text) {
  const exact_block<char> block{text.size()};
  std::copy(text.begin(), text.end(), block.data.get());
  const exact_block<std::uint8_t> out{text.size() < 2 ? 0 : (text.size() - 2) / 2};
  const std::uint32_t result = proreflax::cfc_hex_to_bin(
      block.data.get(), static_cast<std::int32_t>(text.size()), out.data.get());
  reading expected = naive_read(text);
  require(result == expected.result, "both readers give the same code");
  expected.data.resize(out.size);
  require(std::equal(expected.data.begin(), expected.data.end(), out.data.get()),
          "both readers give the same bytes, and nothing after them is written");
}

void check_round_trip(const bytes& data) {
  const exact_block<char> text{2 * data.size() + 2};
  require(proreflax::cfc_bin_to_hex(data.data(), static_cast<std::uint32_t>(data.size()),
                                    text.data.get()) == 0,
          "data can be written");
  const std::string written{text.data.get(), text.size};
  require(written == naive_write(data), "both writers give the same string");
  bytes again(data.size());
  const std::uint32_t result = proreflax::cfc_hex_to_bin(
      text.data.get(), static_cast<std::int32_t>(text.size), again.data());
  require(result == (data.empty() ? 205U : 0U),
          "what is written can be read, unless data is empty");
  require(again == data, "what is written reads as itself");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  check_reading({reinterpret_cast<const char*>(data), size});
  check_round_trip({data, data + size});
  return 0;
}
