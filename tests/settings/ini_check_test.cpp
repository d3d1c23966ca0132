#include "settings/ini_check.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "store/ini_text.h"
#include "tests/support/files.h"

using namespace proreflax::settings;
using std::string;
using testing::ElementsAre;

namespace {

/// "LINE:rule" of every fault of a text.
std::vector<string> faults_of(std::string_view text) {
  ini_check check;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    check.line(text.substr(0, end));
    text.remove_prefix(end);
  }
  check.end();
  std::vector<string> faults;
  for (const ini_fault& each : check.faults()) {
    faults.push_back(std::to_string(each.line) + ":" + string{each.rule});
  }
  return faults;
}

string entry(std::size_t key, std::size_t value) {
  return string(key, 'k') + '=' + string(value, 'v') + '\n';
}

const string nul(1, '\0');

/// A line behind a header, alone at fault.
struct line_row {
  string line;
  const char* rules;  // with blanks between them; empty for a line that the loader takes
};

const line_row line_rows[] = {
    {"\n", ""},
    {"k=v\n", ""},
    {"ab=\n", ""},
    {"k=a=b\n", ""},
    {" k = v \n", ""},
    {"k=v\r\n", ""},
    {"[" + string(24, 'n') + "]\n", ""},
    {"[a]b]\n", ""},
    {entry(49, 199), ""},
    {"a=\n", "too-short"},
    {"a\n", "too-short"},
    {"[]\n", "too-short"},
    {"x", "no-line-feed too-short"},
    {"\r\n", "too-short"},
    {"k=v", "no-line-feed"},
    {"ke=v", "no-line-feed"},
    {"[" + string(25, 'n') + "]\n", "name-too-long"},
    {"[A]x\n", "header-not-closed"},
    {"[A]\r\n", "header-not-closed"},
    {"[abc\n", "header-not-closed"},
    {"=abc\n", "no-key"},
    {"kvkv\n", "no-key"},
    {entry(50, 1), "key-too-long"},
    {entry(1, 200), "value-too-long"},
    {string(50, 'k') + "=]\r\n", "key-too-long"},
    {entry(50, 200), "line-too-long"},
    {string(250, 'k') + '\n', "no-key"},
    {string(251, 'k') + '\n', "line-too-long"},
    {string(251, 'k'), "no-line-feed line-too-long"},
    {string(252, 'k'), "no-line-feed line-too-long"},
    {"[Ab", "no-line-feed header-not-closed"},
    {string(1000, 'k') + "=\n", "line-too-long"},
    {nul + "k=v\n", "nul-byte"},
    {"k" + nul + "=v\n", "nul-byte"},
    {"key=" + nul + "value\n", "nul-byte"},
    {"key=value" + nul + "\n", "nul-byte"},
    {"[A" + nul + "]\n", "nul-byte"},
    {nul, "no-line-feed nul-byte"},
};

/// The loader's verdict on a text.
std::uint32_t loads(const string& text) {
  const files::temporary_file file{text};
  return proreflax::config_load_file(file.path().c_str());
}

}  // namespace

TEST(IniCheck, each_rule_of_a_line_is_told_by_its_name) {
  for (const line_row& each : line_rows) {
    string rules;
    for (const string& fault : faults_of("[A]\n" + each.line)) {
      rules += (rules.empty() ? "" : " ") + fault.substr(2);
    }
    EXPECT_EQ(rules, each.rules) << each.line;
  }
}

TEST(IniCheck, agrees_with_the_loader_on_every_line) {
  for (const line_row& each : line_rows) {
    EXPECT_EQ(loads("[A]\n" + each.line) == 0, string{each.rules}.empty()) << each.line;
  }
}

TEST(IniCheck, all_faults_are_told_with_their_line_numbers) {
  EXPECT_THAT(faults_of("[A]\na=\n\nk=v\n[B\nkv\n=vv\n[B]\n" + entry(50, 1) + "x"),
              ElementsAre("2:too-short", "5:too-short", "6:too-short", "7:no-key", "9:key-too-long",
                          "10:no-line-feed", "10:too-short"));
}

TEST(IniCheck, a_long_line_counts_as_one) {
  EXPECT_THAT(faults_of("[A]\n" + string(2000, 'x') + "\nkv\n"),
              ElementsAre("2:line-too-long", "3:too-short"));
}

TEST(IniCheck, an_entry_in_front_of_the_first_header_is_a_fault_beside_its_others) {
  EXPECT_THAT(faults_of("k=v\n[A]\nk=v\n"), ElementsAre("1:no-section-yet"));
  EXPECT_THAT(faults_of(entry(50, 1) + "[A]\n"), ElementsAre("1:key-too-long", "1:no-section-yet"));
  EXPECT_THAT(faults_of(entry(1, 200) + "[A]\n"),
              ElementsAre("1:value-too-long", "1:no-section-yet"));
}

TEST(IniCheck, a_malformed_header_is_not_blamed_on_the_entries_below_it) {
  EXPECT_THAT(faults_of("[A]x\nk=v\n"), ElementsAre("1:header-not-closed"));
}

TEST(IniCheck, a_text_without_a_header_is_at_fault_as_a_whole) {
  EXPECT_THAT(faults_of(""), ElementsAre("0:no-section"));
  EXPECT_THAT(faults_of("\n\n"), ElementsAre("0:no-section"));
  EXPECT_THAT(faults_of("k=v\n"), ElementsAre("1:no-section-yet", "0:no-section"));
  EXPECT_EQ(loads("\n\n"), 205U);
}

TEST(IniCheck, sentences_say_what_the_loader_sees) {
  ini_check check;
  check.line("[A]\r\n");
  check.line("key=" + nul + "x\n");
  check.line(string(300, 'x') + "\n");
  ASSERT_EQ(check.faults().size(), 3U);
  EXPECT_EQ(check.faults()[0].sentence,
            "a CR stands between the \"]\" of the section header and the LF");
  EXPECT_EQ(check.faults()[1].sentence,
            "byte 5 of the line is a NUL, which ends it for the loader");
  EXPECT_EQ(check.faults()[2].sentence,
            "the line has 301 bytes with its LF; the loader reads at most 251");
}

TEST(IniCheck, gives_up_after_ten_thousand_faults) {
  ini_check check;
  for (int i = 0; i < 10001; ++i) {
    check.line("x\n");
  }
  EXPECT_EQ(check.faults().size(), 10000U);
  EXPECT_TRUE(check.gave_up());
}
