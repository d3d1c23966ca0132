#include "settings/ini_entries.h"

#include <gtest/gtest.h>

#include "tests/support/files.h"

using namespace proreflax::settings;

TEST(IniEntries, have_their_line_and_section) {
  const ini_entries read = read_ini({"[A]\n", "\n", "k=v\n", "[B]\n", "kk=\n"});
  EXPECT_TRUE(read.faults.empty());
  ASSERT_EQ(read.entries.size(), 2U);
  EXPECT_EQ(read.entries[0].line, 3U);
  EXPECT_EQ(read.entries[0].section + "/" + read.entries[0].key, "A/k");
  EXPECT_EQ(read.entries[1].line, 5U);
  EXPECT_EQ(read.entries[1].section + "/" + read.entries[1].key, "B/kk");
  EXPECT_EQ(read.entries[1].value, "");
}

TEST(IniEntries, of_a_malformed_text_come_with_all_its_faults) {
  const ini_entries read = read_ini({"[A]\n", "x\n", "=ab\n"});
  ASSERT_EQ(read.faults.size(), 2U);
  EXPECT_EQ(read.faults[1].line, 3U);
}

TEST(IniEntries, lines_of_a_file_end_where_it_ends_or_with_a_failure) {
  std::string failure;
  const files::temporary_file file{"a\nb"};
  EXPECT_EQ(read_lines(file.path(), failure), (std::vector<std::string>{"a\n", "b"}));
  EXPECT_EQ(failure, "");
  EXPECT_TRUE(read_lines("/nowhere", failure).empty());
  EXPECT_EQ(failure, "cannot be opened: No such file or directory");
}
