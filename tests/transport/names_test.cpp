#include "transport/names.h"

#include <gtest/gtest.h>

#include <string>

using namespace proreflax;

namespace {

std::string characters(std::size_t count) {
  return std::string(count, 'n');
}

}  // namespace

TEST(SectionName, counts_its_nul) {
  EXPECT_EQ(cfc_section_len("LAN"), 4);
  EXPECT_EQ(cfc_section_len(""), 1);
}

TEST(SectionName, null_counts_as_an_empty_one) {
  EXPECT_EQ(cfc_section_len(nullptr), 1);
}

TEST(SectionName, line_break_anywhere_gives_0) {
  for (const char* name : {"\r", "\n", "\rLAN", "L\nN", "LAN\r", "LAN\n", "\r\n"}) {
    EXPECT_EQ(cfc_section_len(name), 0) << testing::PrintToString(name);
  }
}

TEST(SectionName, may_hold_what_a_key_may_not) {
  EXPECT_EQ(cfc_section_len("[a=b*c]"), 8);
  EXPECT_TRUE(is_section_name("="));
  EXPECT_TRUE(is_section_name("*"));
  EXPECT_TRUE(is_section_name("["));
}

TEST(SectionName, may_hold_blanks_controls_and_bytes_above_127) {
  EXPECT_TRUE(is_section_name(" "));
  EXPECT_TRUE(is_section_name("\t\x01\x7f"));
  EXPECT_TRUE(is_section_name("\x80\xff"));
  EXPECT_TRUE(is_section_name("\x8d\x8a"));
}

TEST(SectionName, is_counted_to_its_end_however_long) {
  EXPECT_EQ(cfc_section_len(characters(25).c_str()), 26);
  EXPECT_EQ(cfc_section_len(characters(100000).c_str()), 100001);
}

TEST(SectionName, line_break_behind_the_limit_still_gives_0) {
  EXPECT_EQ(cfc_section_len((characters(1000) + "\n").c_str()), 0);
}

TEST(SectionName, has_1_to_24_characters) {
  EXPECT_FALSE(is_section_name(nullptr));
  EXPECT_FALSE(is_section_name(""));
  EXPECT_TRUE(is_section_name("n"));
  EXPECT_TRUE(is_section_name(characters(24).c_str()));
  EXPECT_FALSE(is_section_name(characters(25).c_str()));
  EXPECT_FALSE(is_section_name(characters(65537).c_str()));
}

TEST(Key, counts_its_nul) {
  EXPECT_EQ(cfc_key_len("ConnType"), 9);
  EXPECT_EQ(cfc_key_len(""), 1);
}

TEST(Key, null_counts_as_an_empty_one) {
  EXPECT_EQ(cfc_key_len(nullptr), 1);
}

TEST(Key, leading_bracket_gives_1_whatever_follows) {
  EXPECT_EQ(cfc_key_len("["), 1);
  EXPECT_EQ(cfc_key_len("[abc"), 1);
  EXPECT_EQ(cfc_key_len("[a=b"), 1);
  EXPECT_EQ(cfc_key_len("[\n"), 1);
}

TEST(Key, may_hold_a_bracket_behind_its_first_character) {
  EXPECT_EQ(cfc_key_len("a["), 3);
  EXPECT_EQ(cfc_key_len("a[1]"), 5);
  EXPECT_EQ(cfc_key_len("]"), 2);
}

TEST(Key, equals_sign_asterisk_or_line_break_anywhere_gives_0) {
  for (const char forbidden : {'=', '*', '\r', '\n'}) {
    for (const std::string& key :
         {std::string{forbidden} + "key", std::string{"ke"} + forbidden + 'y',
          std::string{"key"} + forbidden, std::string{forbidden}}) {
      EXPECT_EQ(cfc_key_len(key.c_str()), 0) << testing::PrintToString(key);
    }
  }
}

TEST(Key, may_hold_blanks_controls_and_bytes_above_127) {
  EXPECT_TRUE(is_key(" "));
  EXPECT_TRUE(is_key("\t;#"));
  EXPECT_TRUE(is_key("\xbd\xaa\x8d\x8a"));
}

TEST(Key, is_counted_to_its_end_however_long) {
  EXPECT_EQ(cfc_key_len(characters(50).c_str()), 51);
  EXPECT_EQ(cfc_key_len(characters(100000).c_str()), 100001);
}

TEST(Key, has_1_to_49_characters) {
  EXPECT_FALSE(is_key(nullptr));
  EXPECT_FALSE(is_key(""));
  EXPECT_FALSE(is_key("["));
  EXPECT_TRUE(is_key("k"));
  EXPECT_TRUE(is_key(characters(49).c_str()));
  EXPECT_FALSE(is_key(characters(50).c_str()));
}

TEST(Value, is_counted_without_its_nul) {
  EXPECT_EQ(cfc_value_len("10.0.0.5"), 8);
  EXPECT_EQ(cfc_value_len(""), 0);
  EXPECT_EQ(cfc_value_len("a=b*[c"), 6);
}

TEST(Value, null_gives_minus_1) {
  EXPECT_EQ(cfc_value_len(nullptr), -1);
}

TEST(Value, line_break_anywhere_gives_minus_1) {
  for (const char* value : {"\r", "\n", "\rv", "v\n", "a\r\nb"}) {
    EXPECT_EQ(cfc_value_len(value), -1) << testing::PrintToString(value);
  }
}

TEST(Value, is_counted_to_its_end_however_long) {
  EXPECT_EQ(cfc_value_len(characters(200).c_str()), 200);
  EXPECT_EQ(cfc_value_len(characters(70000).c_str()), 70000);
}

TEST(Value, has_0_to_199_characters) {
  EXPECT_FALSE(is_value_len(-1));
  EXPECT_TRUE(is_value_len(0));
  EXPECT_TRUE(is_value_len(199));
  EXPECT_FALSE(is_value_len(200));
}
