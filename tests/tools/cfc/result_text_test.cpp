#include "tools/cfc/result_text.h"

#include <gtest/gtest.h>
#include <proreflax/result.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <regex>
#include <set>

using namespace cfc;

namespace {

struct declared_code {
  std::string name;
  std::uint32_t code;
};

/// Every enumerator of result.h, read from its text.
std::vector<declared_code> codes_of_the_header() {
  std::ifstream header{PROREFLAX_SOURCE_DIR "/include/proreflax/result.h"};
  const std::regex enumerator{R"(^  (CFC_\w+) = (\d+),?)"};
  std::vector<declared_code> codes{{"CFC_ERR_NOT_AN_ADDRESS", 0xFFFFFFFF}};
  for (std::string line; std::getline(header, line);) {
    if (std::smatch parts; std::regex_search(line, parts, enumerator)) {
      codes.push_back({parts[1], static_cast<std::uint32_t>(std::stoul(parts[2]))});
    }
  }
  return codes;
}

}  // namespace

TEST(ResultText, every_code_of_the_header_has_its_name_and_a_sentence_of_its_own) {
  std::set<std::string> sentences;
  const auto codes = codes_of_the_header();
  ASSERT_EQ(codes.size(), 37U);
  for (const auto& each : codes) {
    EXPECT_EQ(result_name(each.code), each.name);
    EXPECT_TRUE(sentences.insert(result_sentence(each.code)).second) << each.name;
    EXPECT_GT(result_sentence(each.code).size(), 3U) << each.name;
  }
}

TEST(ResultText, an_errno_value_speaks_as_the_platform_does_and_has_no_name) {
  EXPECT_EQ(result_sentence(EIDRM), std::strerror(EIDRM));
  EXPECT_EQ(result_name(EIDRM), "");
  EXPECT_EQ(in_words(EIDRM, "gone"), std::to_string(EIDRM) + ": gone");
}

TEST(ResultText, an_unknown_code_is_said_to_be_unknown) {
  EXPECT_EQ(result_name(250), "");
  EXPECT_EQ(result_sentence(250), "the service answered with a code that is not known here");
}

TEST(ResultText, words_are_the_number_the_name_and_the_sentence) {
  EXPECT_EQ(in_words(201, result_sentence(201)),
            "201 CFC_ERR_NO_KEY: the section holds no such key");
  EXPECT_EQ(in_words(0xFFFFFFFF, "x"), "4294967295 CFC_ERR_NOT_AN_ADDRESS: x");
}

TEST(ResultText, only_a_missing_section_or_key_is_nothing_there) {
  for (const auto& each : codes_of_the_header()) {
    const exit_status expected = each.code == 0                         ? exit_status::done
                                 : each.code == 201 || each.code == 209 ? exit_status::nothing_there
                                                                        : exit_status::failed;
    EXPECT_EQ(status_of(each.code), expected) << each.name;
  }
  EXPECT_EQ(status_of(EINTR), exit_status::failed);
  EXPECT_EQ(status_of(250), exit_status::failed);
}

TEST(ResultText, exit_statuses_have_their_numbers) {
  EXPECT_EQ(static_cast<int>(exit_status::done), 0);
  EXPECT_EQ(static_cast<int>(exit_status::failed), 1);
  EXPECT_EQ(static_cast<int>(exit_status::wrong_usage), 2);
  EXPECT_EQ(static_cast<int>(exit_status::nothing_there), 3);
}

TEST(ResultText, quoting_keeps_a_message_on_one_line_and_off_the_terminals_controls) {
  EXPECT_EQ(quoted("LAN"), "\"LAN\"");
  EXPECT_EQ(quoted("a\"b\\c"), R"("a\"b\\c")");
  EXPECT_EQ(quoted("a\n\x1b[2J\xff"), R"("a\x0a\x1b[2J\xff")");
  EXPECT_EQ(printable("a\tb \"c\""), R"(a\x09b "c")");
}
