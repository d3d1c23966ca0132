#include <gtest/gtest.h>
#include <proreflax/config.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>

namespace {

constexpr std::uint32_t untouched = 0xA5A5A5A5;

void expect_address(const std::string& text, std::uint32_t address) {
  std::uint32_t out = untouched;
  EXPECT_EQ(translate_ip_to_u32(text.c_str(), &out), 0) << text;
  EXPECT_EQ(out, address) << text;
}

void expect_refused(const std::string& text) {
  std::uint32_t out = untouched;
  EXPECT_EQ(translate_ip_to_u32(text.c_str(), &out), -1) << text;
  EXPECT_EQ(out, untouched) << text;
}

/// A buffer of a pattern, larger than any address text.
using guarded = std::array<char, 24>;

guarded pattern() {
  guarded all;
  all.fill(0x5A);
  return all;
}

/// What the pattern looks like with a text and its NUL written over its start.
guarded pattern_behind(const std::string& text) {
  guarded all = pattern();
  text.copy(all.data(), text.size());
  all[text.size()] = '\0';
  return all;
}

}  // namespace

TEST(IpToNumber, has_its_first_part_in_the_most_significant_byte) {
  expect_address("192.168.62.1", 0xC0A83E01);
  expect_address("1.2.3.4", 0x01020304);
  expect_address("0.0.0.0", 0);
  expect_address("255.255.255.255", 0xFFFFFFFF);
}

TEST(IpToNumber, may_have_any_number_of_leading_zeros_and_is_not_octal) {
  expect_address("010.0.0.001", 0x0A000001);
  expect_address("0000000000000000000000255.00.08.09", 0xFF000809);
}

TEST(IpToNumber, refuses_any_other_number_of_parts) {
  for (const char* text : {"", "1", "1.2", "1.2.3", "1.2.3.4.5", "1.2.3.4.5.6"}) {
    expect_refused(text);
  }
}

TEST(IpToNumber, refuses_empty_parts) {
  for (const char* text :
       {"1..2.3", ".1.2.3", "1.2.3.", "1.2.3.4.", "...", ".", ".1.2.3.4", "1..2.3.4", "1.2.3..4"}) {
    expect_refused(text);
  }
}

TEST(IpToNumber, refuses_a_part_above_255_wherever_it_stands) {
  for (const char* text : {"256.1.1.1", "1.256.1.1", "1.1.256.1", "1.1.1.256", "1.1.1.1000",
                           "0256.1.1.1", "4294967297.1.1.1", "1.1.1.99999999999999999999"}) {
    expect_refused(text);
  }
}

TEST(IpToNumber, refuses_every_other_character) {
  for (const char* text :
       {"1.2.3.4 ", " 1.2.3.4", "1.2.3.4\n", "1. 2.3.4", "a.b.c.d", "1.2.3.4a", "-1.2.3.4",
        "+1.2.3.4", "0x1.2.3.4", "1,2,3,4", "1.2.3/4", "1.2.3.:", "1.2.3.4\xff", "::1"}) {
    expect_refused(text);
  }
}

TEST(IpToNumber, refuses_null_arguments) {
  std::uint32_t out = untouched;
  EXPECT_EQ(translate_ip_to_u32(nullptr, &out), -1);
  EXPECT_EQ(out, untouched);
  EXPECT_EQ(translate_ip_to_u32("1.2.3.4", nullptr), -1);
}

TEST(NumberToIp, writes_four_decimal_parts_and_a_nul_and_nothing_more) {
  const struct {
    std::uint32_t address;
    const char* text;
  } rows[] = {{0xC0A83E01, "192.168.62.1"},
              {0x01020304, "1.2.3.4"},
              {0, "0.0.0.0"},
              {0x0A640090, "10.100.0.144"},
              {0xFFFFFFFF, "255.255.255.255"}};
  for (const auto& [address, text] : rows) {
    guarded buffer = pattern();
    EXPECT_EQ(translate_u32_to_ip(buffer.data(), 16, address), 0);
    EXPECT_EQ(buffer, pattern_behind(text)) << text;
  }
}

TEST(NumberToIp, takes_a_larger_buffer) {
  guarded buffer = pattern();
  EXPECT_EQ(translate_u32_to_ip(buffer.data(), 24, 0x01020304), 0);
  EXPECT_EQ(buffer, pattern_behind("1.2.3.4"));
  EXPECT_EQ(translate_u32_to_ip(buffer.data(), std::numeric_limits<std::int32_t>::max(), 0), 0);
}

TEST(NumberToIp, refuses_less_than_16_bytes_however_short_the_text) {
  for (const std::int32_t size : {15, 8, 1, 0, -1, std::numeric_limits<std::int32_t>::min()}) {
    guarded buffer = pattern();
    EXPECT_EQ(translate_u32_to_ip(buffer.data(), size, 0), -1) << size;
    EXPECT_EQ(buffer, pattern()) << size;
  }
}

TEST(NumberToIp, refuses_a_null_buffer) {
  EXPECT_EQ(translate_u32_to_ip(nullptr, 16, 0x01020304), -1);
}

TEST(NumberToIp, is_read_back_as_the_same_address) {
  for (std::uint32_t i = 0; i < 256; ++i) {
    const std::uint32_t address = i << 24 | (255 - i) << 16 | (i ^ 0x55) << 8 | i / 2;
    std::array<char, 16> text;
    ASSERT_EQ(translate_u32_to_ip(text.data(), 16, address), 0);
    expect_address(text.data(), address);
  }
}

TEST(OfferedAddresses, start_with_the_cameras_network) {
  EXPECT_EQ(s_ip, 0xC0A83E01);
  EXPECT_EQ(s_mask, 0xFFFFFF00);
}
