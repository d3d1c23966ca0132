#include "wireless/mac_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tests/support/guarded_memory.h"

using namespace proreflax;
using testing::ElementsAre;

namespace {

using mac = std::array<std::uint8_t, 6>;

struct parsed {
  std::uint32_t result;
  mac bytes;
};

parsed parse(const std::string& text) {
  parsed now{1, {9, 9, 9, 9, 9, 9}};
  now.result = parse_mac_text(text.c_str(), now.bytes.data());
  return now;
}

}  // namespace

TEST(HexDigit, is_0_for_digits_of_either_case_and_1_for_all_other_characters) {
  const std::string digits = "0123456789abcdefABCDEF";
  for (int c = -128; c < 256; ++c) {
    const bool digit = c > 0 && digits.find(static_cast<char>(c)) != std::string::npos;
    EXPECT_EQ(is_not_hex_digit(static_cast<char>(c)), digit ? 0U : 1U) << c;
  }
}

TEST(MacText, of_six_pairs_gives_its_bytes_in_order) {
  const parsed now = parse("00:0c:43:AF:fe:Ff");
  EXPECT_EQ(now.result, 0U);
  EXPECT_THAT(now.bytes, ElementsAre(0x00, 0x0C, 0x43, 0xAF, 0xFE, 0xFF));
}

TEST(MacText, takes_any_character_behind_the_sixth_byte) {
  for (const char* behind : {"", ":", " ", "7", "\n"}) {
    EXPECT_EQ(parse("01:02:03:04:05:06" + std::string{behind}).result, 0U) << behind;
  }
}

TEST(MacText, null_gives_1) {
  mac bytes{9};
  EXPECT_EQ(parse_mac_text(nullptr, bytes.data()), 1U);
  EXPECT_EQ(bytes[0], 9);
  EXPECT_EQ(parse_mac_text("01:02:03:04:05:06", nullptr), 1U);
}

TEST(MacText, with_a_wrong_character_keeps_the_bytes_before_it_and_leaves_the_rest) {
  EXPECT_EQ(parse("01:02:g3:04:05:06").result, 1U);
  EXPECT_THAT(parse("01:02:g3:04:05:06").bytes, ElementsAre(1, 2, 9, 9, 9, 9));
  EXPECT_THAT(parse("01:02:3:04:05:06").bytes, ElementsAre(1, 2, 9, 9, 9, 9));
  EXPECT_THAT(parse("01:02:03-04:05:06").bytes, ElementsAre(1, 2, 9, 9, 9, 9));
  EXPECT_EQ(parse("01:02:03-04:05:06").result, 1U);
}

TEST(MacText, that_fails_at_once_clears_the_first_byte) {
  EXPECT_EQ(parse("").result, 1U);
  EXPECT_THAT(parse("x").bytes, ElementsAre(0, 9, 9, 9, 9, 9));
}

TEST(MacText, is_never_read_behind_its_end) {
  const std::string whole = "01:02:03:04:05:06";
  guarded_memory memory{64};
  for (std::size_t length = 0; length < whole.size(); ++length) {
    mac bytes{};
    EXPECT_EQ(parse_mac_text(memory.text(whole.substr(0, length)), bytes.data()), 1U) << length;
  }
  mac bytes{};
  EXPECT_EQ(parse_mac_text(memory.text(whole), bytes.data()), 0U);
}
