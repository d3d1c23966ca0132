// The words of result_text.h against the codes of result.h, in C and in C++.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/result_text.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "tests/library/project_text.h"
#include "tests/library/result_text_in_c.h"

using std::string;
using testing::MatchesRegex;

TEST(ResultText, every_code_has_its_name) {
  const std::map<string, string> codes = result_codes();
  ASSERT_GT(codes.size(), 30U);
  for (const auto& [name, number] : codes) {
    const auto code = static_cast<std::uint32_t>(std::stoul(number, nullptr, 0));
    EXPECT_EQ(cfc_result_name(code), name);
  }
}

TEST(ResultText, every_code_has_a_description_and_no_other_code_has_the_same) {
  std::set<string> found;
  for (const auto& [name, number] : result_codes()) {
    const string text = cfc_result_text(static_cast<std::uint32_t>(std::stoul(number, nullptr, 0)));
    EXPECT_THAT(text, MatchesRegex("[a-z].*[a-z0-9]")) << name;
    EXPECT_NE(text, "unknown result code") << name;
    EXPECT_TRUE(found.insert(text).second) << name << ": " << text;
  }
}

TEST(ResultText, a_code_of_the_interface_that_is_an_errno_value_too_keeps_its_own_words) {
  EXPECT_STREQ(cfc_result_name(EPERM), "CFC_FAILED");
  EXPECT_STREQ(cfc_result_text(EPERM), "the operation failed");
  EXPECT_STREQ(cfc_result_name(ENOMEM), "CFC_ERR_NO_MEMORY");
  EXPECT_STREQ(cfc_result_text(ENOMEM), "out of memory");
}

TEST(ResultText, an_errno_value_has_no_name_and_the_platforms_description) {
  for (const int number : {EINTR, EACCES, EINVAL, EIDRM, 199}) {
    const string expected = std::strerror(number);
    EXPECT_STREQ(cfc_result_name(static_cast<std::uint32_t>(number)), "");
    EXPECT_EQ(cfc_result_text(static_cast<std::uint32_t>(number)), expected);
  }
}

TEST(ResultText, a_number_that_is_not_a_code_has_no_name_and_is_unknown) {
  for (const std::uint32_t code : {200U, 202U, 244U, 250U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU}) {
    EXPECT_STREQ(cfc_result_name(code), "") << code;
    EXPECT_STREQ(cfc_result_text(code), "unknown result code") << code;
  }
}

TEST(ResultText, all_ones_is_an_address_that_is_malformed) {
  EXPECT_STREQ(cfc_result_name(0xFFFFFFFF), "CFC_ERR_NOT_AN_ADDRESS");
  EXPECT_STREQ(cfc_result_text(0xFFFFFFFF), "the stored value is not a dotted IPv4 address");
}

TEST(ResultText, is_the_same_in_c) {
  for (std::uint32_t code = 0; code < 300; ++code) {
    EXPECT_STREQ(result_name_in_c(code), cfc_result_name(code));
    const string text = cfc_result_text(code);
    EXPECT_EQ(result_text_in_c(code), text);
  }
  EXPECT_STREQ(result_name_in_c(0xFFFFFFFF), "CFC_ERR_NOT_AN_ADDRESS");
}
