#include "tools/cfc/sections/import.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/support/scripted_service.h"
#include "tests/tools/cfc/run_program.h"

using std::string;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

/// What puts a text in the place of the terminal's present line.
string in_place(const string& text) {
  return "\r\x1b[K" + text;
}

string percent(int number) {
  return in_place("cfc: import: " + std::to_string(number) + " %");
}

string section_of(int entries) {
  string text = "[A]\n";
  for (int i = 0; i < entries; ++i) {
    text += "key" + std::to_string(i) + "=v\n";
  }
  return text;
}

}  // namespace

TEST(ImportOnATerminal, tells_each_per_cent_once_on_one_line_and_clears_it) {
  scripted_service service;
  service.has_section("A");
  const files::temporary_file text{section_of(150)};  // 300 requests: three a per cent
  const ended import = run_cfc_on_terminal({"import", text.path()});
  EXPECT_EQ(import.status, 0) << import.err;
  EXPECT_EQ(import.out, "");
  string expected;
  for (int i = 0; i < 100; ++i) {
    expected += percent(i);
  }
  EXPECT_EQ(import.err, expected + in_place(""));
  EXPECT_EQ(service.value("A", "key149"), "v");
}

TEST(ImportOnATerminal, counts_what_is_read_and_what_is_set) {
  scripted_service service;
  service.has_section("A");
  const files::temporary_file text{
      "[A]\nkey=1\nother=2\nkey=3\n"};  // a key's old value is read once
  EXPECT_EQ(run_cfc_on_terminal({"import", text.path()}).err,
            percent(0) + percent(16) + percent(33) + percent(50) + percent(66) + percent(83) +
                in_place(""));
}

TEST(ImportOnATerminal, clears_its_line_before_it_complains) {
  scripted_service service;
  service.holds("A", "key", "old");
  service.holds("A", "other", "old");
  service.answers(4, 208);
  const files::temporary_file text{"[A]\nkey=1\nother=2\n"};
  const ended import = run_cfc_on_terminal({"import", text.path()});
  EXPECT_EQ(import.status, 1);
  EXPECT_THAT(import.err, StartsWith(percent(0) + percent(25) + percent(50) + percent(75) +
                                     in_place(text.path()) + ":3: set section \"A\""));
  EXPECT_THAT(import.err, EndsWith("of the sets before it 1 were put back and 0 were not\n"));
  EXPECT_EQ(service.value("A", "key"), "old");
}

TEST(ImportOnATerminal, tells_nothing_of_its_progress_elsewhere) {
  scripted_service service;
  service.has_section("A");
  const ended import = run_cfc({"import", "-"}, section_of(150));
  EXPECT_EQ(import.status, 0);
  EXPECT_EQ(import.out + import.err, "");
  EXPECT_EQ(service.requests().size(), 300U);
}

TEST(ImportedText, is_json_when_a_brace_is_the_first_that_is_no_blank) {
  scripted_service service;
  service.has_section("A");
  const ended import = run_cfc({"import", "-"}, "\n \t\r\n  {\"A\": {\"key\": \"v\"}}");
  EXPECT_EQ(import.status, 0) << import.err;
  EXPECT_EQ(service.value("A", "key"), "v");
}

TEST(ImportedText, is_refused_as_a_whole_before_anything_is_sent) {
  scripted_service service;
  service.has_section("A");
  const std::pair<const char*, string> rows[] = {
      {"", "stdin: the text holds no section header"},
      // Neither brace nor bracket: it is judged as INI.
      {"key=v\n[A]\n", "stdin:1: the entry stands in front of the first section header"},
      {R"({"A": {"key": "v"}, "B": 1})", "stdin: section \"B\" is no object of keys and values"},
  };
  for (const auto& [text, complaint] : rows) {
    const ended import = run_cfc({"import", "-"}, text);
    EXPECT_EQ(import.status, 1) << text;
    EXPECT_EQ(import.err, line(complaint) + "cfc: import: stdin: nothing was changed\n");
  }
  EXPECT_THAT(service.requests(), IsEmpty());
}

TEST(ImportedText, tells_no_line_of_a_json_value_that_fails) {
  scripted_service service;
  service.has_section("A");
  const ended import = run_cfc({"import", "-"}, "{\"B\": {\"key\": \"v\"}}");
  EXPECT_EQ(import.status, 3);
  EXPECT_THAT(import.err, StartsWith("stdin: set section \"B\" key \"key\": 209 "));
}

TEST(ImportedText, that_cannot_be_read_changes_nothing_and_says_so) {
  const ended import = run_cfc({"import", "/nowhere"});
  EXPECT_EQ(import.status, 1);
  EXPECT_EQ(import.err,
            "cfc: import: /nowhere: cannot be opened: No such file or directory; nothing was "
            "changed\n");
}

TEST(ImportedText, has_at_most_50000_lines) {
  scripted_service service;
  const string lines(49999, '\n');
  EXPECT_EQ(run_cfc({"import", "-"}, "[A]\n" + lines).status, 0);
  const ended import = run_cfc({"import", "-"}, "[A]\n\n" + lines);
  EXPECT_EQ(import.status, 1);
  EXPECT_EQ(import.err,
            "cfc: import: stdin: has more than 50000 lines: this is no such text; nothing was "
            "changed\n");
}
