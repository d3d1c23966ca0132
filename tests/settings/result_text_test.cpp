#include "settings/result_text.h"

#include <gtest/gtest.h>
#include <proreflax/result.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <regex>
#include <set>

using namespace proreflax::settings;

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
}

TEST(ResultText, an_unknown_code_is_said_to_be_unknown) {
  EXPECT_EQ(result_name(250), "");
  EXPECT_EQ(result_sentence(250), "unknown result code");
}
