// The manual pages and what they describe: headers, result codes, section tables, limits. Whatever
// is added or changed in one place alone goes red here. And the first program of the README.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/result_text.h>
#include <proreflax/wireless.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "store/ini_line.h"
#include "tests/library/manual_pages.h"
#include "tests/library/project_text.h"
#include "tests/support/files.h"
#include "tools/writeflash/slot_format.h"

using std::string;
using std::to_string;
using std::vector;
using testing::HasSubstr;

namespace {

/// How many pages declare each name.
std::map<string, int> pages_of_names() {
  std::map<string, int> pages;
  for (const manual_page& page : library_pages()) {
    for (const declaration& each : page.synopsis) {
      ++pages[each.name];
    }
  }
  return pages;
}

std::multiset<string> names_declared_by(const manual_page& page) {
  std::multiset<string> names;
  for (const declaration& each : page.synopsis) {
    names.insert(each.name);
  }
  return names;
}

/// What the text of a page speaks of in the markup of functions and objects.
std::set<string> names_described_by(const manual_page& page) {
  const vector<string> names = matches(page.body, R"((?:^\.| )(?:Fn|Va) (\w+))");
  return {names.begin(), names.end()};
}

/// Every word of the public headers.
std::set<string> words_of_the_headers() {
  std::set<string> words;
  for (const auto& header :
       std::filesystem::directory_iterator{PROREFLAX_SOURCE_DIR "/include/proreflax"}) {
    for (const string& word : matches(files::text_of(header.path()), R"((\w+))")) {
      words.insert(word);
    }
  }
  return words;
}

/// The lines of a text that are indented by four blanks, as one text without these.
string indented_lines(const string& text) {
  string all;
  for (const string& each : matches(text, R"(^    (.*)$)")) {
    all += each + '\n';
  }
  return all;
}

/// Whether the C compiler takes a text for C99, without a warning.
bool compiles(const string& text) {
  std::FILE* const compiler = popen(PROREFLAX_C_COMPILER
                                    " -std=c99 -Wall -Wextra -Wpedantic -Werror -fsyntax-only"
                                    " -I '" PROREFLAX_SOURCE_DIR "/include' -x c -",
                                    "w");
  if (compiler == nullptr) {
    return false;
  }
  const bool written = std::fputs(text.c_str(), compiler) >= 0;
  return pclose(compiler) == 0 && written;
}

}  // namespace

TEST(ManualPages, declare_every_export_once) {
  const std::set<string> exports = listed_exports();
  EXPECT_GT(exports.size(), 100U);
  std::map<string, int> pages = pages_of_names();
  for (const string& name : exports) {
    EXPECT_EQ(pages[name], 1) << name;
  }
}

TEST(ManualPages, declare_what_the_headers_declare) {
  const std::map<string, declaration> declared = declarations();
  std::map<string, int> pages = pages_of_names();
  for (const auto& [name, each] : declared) {
    EXPECT_EQ(pages[name], 1) << name << " of " << each.header;
  }
  for (const manual_page& page : library_pages()) {
    for (const declaration& each : page.synopsis) {
      const auto found = declared.find(each.name);
      ASSERT_NE(found, declared.end()) << each.name << " of " << page.file << " is in no header";
      EXPECT_EQ(each.text, found->second.text) << page.file;
      EXPECT_EQ(each.header, found->second.header) << each.name << " in " << page.file;
    }
  }
}

TEST(ManualPages, name_themselves_and_what_they_declare) {
  for (const manual_page& page : library_pages()) {
    std::multiset<string> expected = names_declared_by(page);
    expected.insert(page.file.substr(0, page.file.find('.')));
    EXPECT_EQ(std::multiset<string>(page.names.begin(), page.names.end()), expected) << page.file;
  }
}

TEST(ManualPages, describe_what_they_declare) {
  for (const manual_page& page : library_pages()) {
    const std::set<string> described = names_described_by(page);
    for (const declaration& each : page.synopsis) {
      EXPECT_TRUE(described.count(each.name)) << each.name << " in " << page.file;
    }
  }
}

TEST(ManualPages, contain_what_the_headers_say_of_each_function) {
  for (const manual_page& page : library_pages()) {
    const string said = letters_of_the_page(page);
    for (const declaration& each : page.synopsis) {
      for (const string& part : contract_of(each)) {
        EXPECT_THAT(said, HasSubstr(part)) << each.name << " in " << page.file;
      }
    }
  }
}

TEST(ManualPages, list_every_result_code_with_its_number_and_description) {
  const string page = page_called("proreflax.3").body;
  EXPECT_GT(result_codes().size(), 30U);
  EXPECT_EQ(paired_matches(page, R"(^\.It Dv (CFC_\w+) Ta (\w+) Ta )"), result_codes());
  for (const auto& [name, number] : result_codes()) {
    const auto code = static_cast<std::uint32_t>(std::stoul(number, nullptr, 0));
    EXPECT_THAT(page, HasSubstr(name + " Ta " + number + " Ta " + cfc_result_text(code) + "\n"));
  }
}

TEST(ManualPages, speak_of_no_constant_that_is_in_no_header) {
  const std::set<string> known = words_of_the_headers();
  for (const manual_page& page : library_pages()) {
    for (const string& word : matches(page.text, R"(\b((?:CFC|CFG|WLS|FW)_[A-Z_0-9]+)\b)")) {
      EXPECT_TRUE(known.count(word)) << word << " in " << page.file;
    }
  }
}

TEST(ManualPages, list_every_section_as_it_is) {
  const vector<section_row> listed = sections_of_the_page();
  const vector<section_row> declared = sections_of_the_library();
  ASSERT_EQ(declared.size(), 44U);
  ASSERT_EQ(listed.size(), declared.size());
  for (std::size_t i = 0; i < listed.size(); ++i) {
    EXPECT_EQ(listed[i].name, declared[i].name);
    EXPECT_EQ(listed[i].record, declared[i].record);
    EXPECT_EQ(listed[i].getter, declared[i].getter);
    EXPECT_EQ(listed[i].setter, declared[i].setter);
    EXPECT_EQ(listed[i].exchanges, declared[i].exchanges) << listed[i].name;
    EXPECT_EQ(listed[i].arrays, declared[i].arrays) << listed[i].name;
  }
}

TEST(ManualPages, tell_the_limits_of_the_code) {
  using namespace proreflax;
  const string ini = files::text_of(PROREFLAX_SOURCE_DIR "/docs/man/proreflax_ini.5");
  EXPECT_THAT(ini, HasSubstr("\n.It Ar name Ta 1 to " + to_string(line_name_max) + " Ta"));
  EXPECT_THAT(ini, HasSubstr("\n.It Ar key Ta 1 to " + to_string(line_key_max) + " Ta"));
  EXPECT_THAT(ini, HasSubstr("\n.It Ar value Ta 0 to " + to_string(line_value_max) + " Ta"));
  const string flash = files::text_of(PROREFLAX_SOURCE_DIR "/docs/man/proreflax_flash.5");
  EXPECT_THAT(flash, HasSubstr("bytes of text, 1 to " + to_string(longest_text_bytes) + "\n"));
  EXPECT_THAT(flash, HasSubstr("A header of " + to_string(slot_header_bytes) + " bytes"));
  const string wireless = page_called("proreflax_wireless.3").text;
  EXPECT_THAT(wireless,
              HasSubstr("Dv WLS_EVENT_LOG_ROWS_MAX Pq " + to_string(WLS_EVENT_LOG_ROWS_MAX)));
  EXPECT_THAT(wireless,
              HasSubstr("Dv WLS_ASSOCIATE_ROWS_MAX Pq " + to_string(WLS_ASSOCIATE_ROWS_MAX)));
}

TEST(ManualPages, show_programs_that_compile) {
  for (const manual_page& page : library_pages()) {
    EXPECT_FALSE(examples(page).empty()) << page.file;
    for (const string& example : examples(page)) {
      EXPECT_TRUE(compiles(example)) << page.file << ":\n" << example;
    }
  }
}

TEST(ManualPages, are_found_under_every_name) {
  for (const manual_page& page : library_pages()) {
    for (const declaration& each : page.synopsis) {
      EXPECT_EQ(files::text_of(PROREFLAX_MAN_FOLDER "/man3/" + each.name + ".3"),
                ".so man3/" + page.file + "\n");
    }
  }
}

TEST(Readme, shows_a_first_program_that_compiles) {
  const string readme = files::text_of(PROREFLAX_SOURCE_DIR "/README.md");
  const string program = indented_lines(between(readme, "## A first program\n", "\n## "));
  EXPECT_THAT(program, HasSubstr("int main(void)"));
  EXPECT_LE(std::ranges::count(program, '\n'), 20);
  EXPECT_TRUE(compiles(program)) << program;
}
