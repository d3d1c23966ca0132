#include "values/number_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

using namespace proreflax;

namespace {

struct parsed {
  std::uint32_t result;
  std::uint32_t number;
  bool operator==(const parsed&) const = default;
};

void PrintTo(const parsed& each, std::ostream* out) {
  *out << "result " << each.result << ", number " << each.number;
}

parsed parse(const char* text) {
  std::uint32_t number = 0xA5A5A5A5;
  const std::uint32_t result = cfc_str_to_u32(text, &number);
  return {result, number};
}

parsed number(std::uint32_t value) {
  return {0, value};
}
parsed failure(std::uint32_t result) {
  return {result, 0};
}

}  // namespace

TEST(NumberText, is_decimal) {
  EXPECT_EQ(parse("0"), number(0));
  EXPECT_EQ(parse("10"), number(10));
  EXPECT_EQ(parse("1234567890"), number(1234567890));
}

TEST(NumberText, is_hexadecimal_behind_a_prefix_of_either_case) {
  EXPECT_EQ(parse("0x0a"), number(10));
  EXPECT_EQ(parse("0x0A"), number(10));
  EXPECT_EQ(parse("0X0a"), number(10));
  EXPECT_EQ(parse("0x0123456"), number(0x123456));
  EXPECT_EQ(parse("0xabcdef"), number(0xABCDEF));
  EXPECT_EQ(parse("0xABCDEF"), number(0xABCDEF));
  EXPECT_EQ(parse("0x789"), number(0x789));
}

TEST(NumberText, may_have_one_sign_in_front) {
  EXPECT_EQ(parse("+10"), number(10));
  EXPECT_EQ(parse("-10"), number(0xFFFFFFF6));
  EXPECT_EQ(parse("+0x10"), number(16));
  EXPECT_EQ(parse("-0x10"), number(0xFFFFFFF0));
}

TEST(NumberText, of_a_negative_number_is_its_twos_complement) {
  EXPECT_EQ(parse("-1"), number(0xFFFFFFFF));
  EXPECT_EQ(parse("-0"), number(0));
  EXPECT_EQ(parse("-2147483648"), number(0x80000000));
  EXPECT_EQ(parse("-4294967295"), number(1));
}

TEST(NumberText, with_a_second_sign_gives_210) {
  for (const char* text : {"--1", "++1", "+-1", "-+1", "1-", "1+", "0x-1", "0x+1"}) {
    EXPECT_EQ(parse(text), failure(210)) << text;
  }
}

TEST(NumberText, is_not_octal_behind_a_zero) {
  EXPECT_EQ(parse("012"), number(12));
  EXPECT_EQ(parse("09"), number(9));
  EXPECT_EQ(parse("00"), number(0));
}

TEST(NumberText, may_have_any_number_of_digits) {
  EXPECT_EQ(parse((std::string(1000, '0') + "7").c_str()), number(7));
  EXPECT_EQ(parse(("0x" + std::string(1000, '0') + "7").c_str()), number(7));
}

TEST(NumberText, with_nothing_behind_sign_or_prefix_is_0) {
  for (const char* text : {"-", "+", "0x", "0X", "-0x", "+0X"}) {
    EXPECT_EQ(parse(text), number(0)) << text;
  }
}

TEST(NumberText, that_is_null_or_empty_gives_204_and_0) {
  EXPECT_EQ(parse(nullptr), failure(204));
  EXPECT_EQ(parse(""), failure(204));
}

TEST(NumberText, with_a_character_that_is_no_decimal_digit_gives_210_and_0) {
  for (const char* text : {"1 ", " 1", "\t1", "a", "abc", "1a", "1.5", "x10", "0 x10", "/", ":",
                           "1x0", "0b1", "12\n", "00x1"}) {
    EXPECT_EQ(parse(text), failure(210)) << text;
  }
}

TEST(NumberText, with_a_character_that_is_no_hexadecimal_digit_gives_210_and_0) {
  for (const char* text : {"0xg", "0xG", "0x ", "0x1 ", "0x1g", "0x/", "0x:", "0x@", "0x`", "0x0x1",
                           "0xx", "0x\xff"}) {
    EXPECT_EQ(parse(text), failure(210)) << text;
  }
}

TEST(NumberText, reaches_up_to_32_bits) {
  EXPECT_EQ(parse("4294967295"), number(0xFFFFFFFF));
  EXPECT_EQ(parse("0xffffffff"), number(0xFFFFFFFF));
}

TEST(NumberText, that_wraps_and_lands_lower_gives_211_and_0) {
  EXPECT_EQ(parse("4294967296"), failure(211));
  EXPECT_EQ(parse("0x100000000"), failure(211));
  EXPECT_EQ(parse("-4294967296"), failure(211));
}

TEST(NumberText, that_wraps_and_lands_higher_is_accepted_on_purpose) {
  EXPECT_EQ(parse("9999999999"), number(1410065407));
  EXPECT_EQ(parse("0x1ffffffff"), number(0xFFFFFFFF));
}

TEST(NumberText, is_judged_from_left_to_right) {
  EXPECT_EQ(parse("4294967296a"), failure(211));
  EXPECT_EQ(parse("a4294967296"), failure(210));
}
