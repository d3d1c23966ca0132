#include "settings/line_reader.h"

#include <gtest/gtest.h>

#include "tests/support/files.h"

using proreflax::settings::line_reader;
using std::string;

TEST(LineReader, gives_lines_with_their_numbers_and_line_feeds) {
  const files::temporary_file file{"one\n\nthree"};
  line_reader lines{file.path()};
  for (const string& expected : {string{"one\n"}, string{"\n"}, string{"three"}}) {
    const auto line = lines.next();
    ASSERT_TRUE(line);
    EXPECT_EQ(line->text, expected);
  }
  EXPECT_FALSE(lines.next());
  EXPECT_EQ(lines.failure(), "");
}

TEST(LineReader, takes_nul_bytes_and_lines_longer_than_its_buffer_as_they_are) {
  const string nul{"a\0b\n", 4};
  const string longest = string(line_reader::longest_line - 1, 'x') + '\n';
  const files::temporary_file file{nul + longest};
  line_reader lines{file.path()};
  EXPECT_EQ(lines.next()->text, nul);
  const auto second = lines.next();
  ASSERT_TRUE(second);
  EXPECT_EQ(second->number, 2U);
  EXPECT_EQ(second->text, longest);
}

TEST(LineReader, an_empty_file_has_no_lines) {
  const files::temporary_file file{""};
  line_reader lines{file.path()};
  EXPECT_FALSE(lines.next());
  EXPECT_EQ(lines.failure(), "");
}

TEST(LineReader, gives_up_on_a_line_without_end) {
  line_reader lines{"/dev/zero"};
  EXPECT_FALSE(lines.next());
  EXPECT_EQ(lines.failure(), "line 1 has more than 65536 bytes: this is no such text");
  EXPECT_FALSE(lines.next());
}

TEST(LineReader, says_why_a_file_cannot_be_opened_or_read) {
  line_reader missing{"/nowhere/at/all"};
  EXPECT_FALSE(missing.next());
  EXPECT_EQ(missing.failure(), "cannot be opened: No such file or directory");
  line_reader folder{"/"};
  EXPECT_FALSE(folder.next());
  EXPECT_EQ(folder.failure(), "cannot be read: Is a directory");
}

TEST(LineReader, names_standard_input_and_files) {
  EXPECT_EQ(line_reader{""}.name(), "stdin");
  EXPECT_EQ(line_reader{"-"}.name(), "stdin");
  EXPECT_EQ(line_reader{"/dev/null"}.name(), "/dev/null");
}
