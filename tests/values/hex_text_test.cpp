#include "values/hex_text.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

using namespace proreflax;

namespace {

using bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t untouched = 0xA5;

/// The text of some bytes; a stray character behind it would show.
std::string encoded(const bytes& data) {
  std::string text(2 * data.size() + 2 + 4, '#');
  EXPECT_EQ(cfc_bin_to_hex(data.data(), static_cast<std::uint32_t>(data.size()), text.data()), 0U);
  EXPECT_EQ(text.substr(text.size() - 4), "####");
  return text.substr(0, text.size() - 4);
}

struct decoded {
  std::uint32_t result;
  std::array<std::uint8_t, 6> out;
  bool operator==(const decoded&) const = default;
};

void PrintTo(const decoded& each, std::ostream* out) {
  *out << "result " << each.result << ", out " << testing::PrintToString(each.out);
}

/// What a pattern looks like with some bytes written over its start.
decoded writes(std::uint32_t result, const bytes& written) {
  decoded expected{result, {}};
  expected.out.fill(untouched);
  std::copy(written.begin(), written.end(), expected.out.begin());
  return expected;
}

decoded decode(std::string_view text) {
  // In a block of its own size, so that a sanitizer sees a read behind its end.
  const std::vector<char> exact(text.begin(), text.end());
  decoded got = writes(0, {});
  got.result =
      cfc_hex_to_bin(exact.data(), static_cast<std::int32_t>(exact.size()), got.out.data());
  return got;
}

}  // namespace

TEST(BytesToHex, stand_last_byte_first_behind_a_prefix) {
  EXPECT_EQ(encoded({0x01, 0x02, 0x03}), "0x030201");
  EXPECT_EQ(encoded({0x00, 0xFF}), "0xff00");
}

TEST(BytesToHex, have_two_lower_case_digits_each) {
  EXPECT_EQ(encoded({0x00}), "0x00");
  EXPECT_EQ(encoded({0x0A}), "0x0a");
  EXPECT_EQ(encoded({0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01}), "0x0123456789abcdef");
}

TEST(BytesToHex, of_no_bytes_are_the_prefix_alone) {
  EXPECT_EQ(encoded({}), "0x");
}

TEST(HexToBytes, puts_the_last_pair_of_digits_first) {
  EXPECT_EQ(decode("0x030201"), writes(0, {0x01, 0x02, 0x03}));
  EXPECT_EQ(decode("0xff00"), writes(0, {0x00, 0xFF}));
  EXPECT_EQ(decode("0x7f"), writes(0, {0x7F}));
}

TEST(HexToBytes, takes_prefix_and_digits_of_either_case) {
  EXPECT_EQ(decode("0XFF00"), writes(0, {0x00, 0xFF}));
  EXPECT_EQ(decode("0xAbCdEf"), writes(0, {0xEF, 0xCD, 0xAB}));
}

TEST(HexToBytes, of_an_empty_text_are_none) {
  EXPECT_EQ(decode(""), writes(0, {}));
}

TEST(HexToBytes, refuses_a_text_below_4_characters_and_writes_nothing) {
  for (const char* text : {"0", "0x", "0x0", "00", "abc"}) {
    EXPECT_EQ(decode(text), writes(205, {})) << text;
  }
}

TEST(HexToBytes, refuses_a_negative_length) {
  decoded got = writes(0, {});
  got.result = cfc_hex_to_bin("0x00", -4, got.out.data());
  EXPECT_EQ(got, writes(205, {}));
  got.result = cfc_hex_to_bin("0x00", std::numeric_limits<std::int32_t>::min(), got.out.data());
  EXPECT_EQ(got, writes(205, {}));
}

TEST(HexToBytes, refuses_a_text_without_the_prefix_and_writes_nothing) {
  for (const char* text : {"1234", "x012", "1x12", "0y12", " 0x1", "00x1", "x0ff"}) {
    EXPECT_EQ(decode(text), writes(205, {})) << text;
  }
}

TEST(HexToBytes, refuses_an_odd_length_and_writes_nothing) {
  EXPECT_EQ(decode("0x123"), writes(205, {}));
  EXPECT_EQ(decode("0x12345"), writes(205, {}));
}

TEST(HexToBytes, keeps_what_was_decoded_before_a_bad_digit) {
  EXPECT_EQ(decode("0xg10203"), writes(205, {0x03, 0x02}));
  EXPECT_EQ(decode("0x1g0203"), writes(205, {0x03, 0x02}));
  EXPECT_EQ(decode("0x0102g3"), writes(205, {}));
  EXPECT_EQ(decode("0x01020g"), writes(205, {}));
}

TEST(HexToBytes, refuses_every_character_beside_the_digits) {
  for (const char bad : {'/', ':', '@', 'G', '`', 'g', ' ', '\0', '-', '\xff', 'x'}) {
    EXPECT_EQ(decode(std::string{"0x"} + bad + '0'), writes(205, {})) << bad;
    EXPECT_EQ(decode(std::string{"0x0"} + bad), writes(205, {})) << bad;
  }
}

TEST(HexToBytes, reads_exactly_the_length_given) {
  decoded got = writes(0, {});
  got.result = cfc_hex_to_bin("0x0102zz", 6, got.out.data());
  EXPECT_EQ(got, writes(0, {0x02, 0x01}));
}

TEST(HexToBytes, is_the_inverse_of_the_encoder) {
  bytes all(256);
  std::iota(all.begin(), all.end(), std::uint8_t{0});
  const std::string text = encoded(all);
  bytes back(all.size());
  EXPECT_EQ(cfc_hex_to_bin(text.data(), static_cast<std::int32_t>(text.size()), back.data()), 0U);
  EXPECT_EQ(back, all);
}
