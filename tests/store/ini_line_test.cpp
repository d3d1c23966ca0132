// The grammar of one line: what each form is taken for, and which fault a refused line has.
#include "store/ini_line.h"

#include <gtest/gtest.h>

#include <string>

using namespace proreflax;

namespace {

/// A line taken apart, with copies of its pieces.
struct pieces {
  line_error error;
  line_type type;
  std::string name, key, value;
};

bool operator==(const pieces& a, const pieces& b) {
  return a.error == b.error && a.type == b.type && a.name == b.name && a.key == b.key &&
         a.value == b.value;
}

pieces read(std::string line) {
  const ini_line taken = read_ini_line(line.data());
  pieces all{taken.error, taken.type, "", "", ""};
  if (taken.error == line_error::none) {
    all.name = taken.name == nullptr ? "" : taken.name;
    all.key = taken.key == nullptr ? "" : taken.key;
    all.value = taken.value == nullptr ? "" : taken.value;
  }
  return all;
}

pieces empty() {
  return {line_error::none, line_type::empty, "", "", ""};
}

pieces header(const std::string& name) {
  return {line_error::none, line_type::header, name, "", ""};
}

pieces entry(const std::string& key, const std::string& value) {
  return {line_error::none, line_type::entry, "", key, value};
}

line_error fault_of(const std::string& line) {
  return read(line).error;
}

std::string times(std::size_t count, char c) {
  return std::string(count, c);
}

struct split {
  explicit split(std::string text) : line{std::move(text)} {
    config_split_kv(line.data(), &key, &value);
  }
  std::string line;
  char* key = line.data();
  char* value = nullptr;
};

}  // namespace

TEST(IniLine, a_lone_line_feed_is_an_empty_line) {
  EXPECT_TRUE(read("\n") == empty());
}

TEST(IniLine, a_line_that_begins_with_nul_is_refused) {
  EXPECT_EQ(fault_of(""), line_error::begins_with_nul);
  EXPECT_EQ(fault_of(std::string{"\0a=b\n", 5}), line_error::begins_with_nul);
}

TEST(IniLine, one_to_three_bytes_that_are_no_empty_line_are_refused) {
  for (const char* line : {"a", "=", "[", " ", "\r", "a\n", "=\n", "[\n", "\r\n", " \n", "[]\n",
                           "a=\n", "ab\n", "=a\n", "=b", "a=b", "[a]"}) {
    EXPECT_EQ(fault_of(line), line_error::too_short) << line;
  }
}

TEST(IniLine, four_bytes_or_more_without_a_line_feed_at_the_end_are_refused) {
  for (const char* line : {"ab=c", "[ab]", "a=b\r", "a=bcd", "[abc"}) {
    EXPECT_EQ(fault_of(line), line_error::no_line_feed) << line;
  }
}

TEST(IniLine, a_nul_within_a_line_cuts_its_end_off) {
  EXPECT_EQ(fault_of(std::string{"ke=v\0\n", 6}), line_error::no_line_feed);
  EXPECT_EQ(fault_of(std::string{"[LAN]\0\n", 7}), line_error::no_line_feed);
  EXPECT_EQ(fault_of(std::string{"k=\0v\n", 5}), line_error::too_short);
}

TEST(IniLine, a_header_is_a_name_between_brackets) {
  EXPECT_TRUE(read("[A]\n") == header("A"));
  EXPECT_TRUE(read("[LAN 2.4 GHz=x]\n") == header("LAN 2.4 GHz=x"));
}

TEST(IniLine, brackets_within_a_name_belong_to_it) {
  EXPECT_TRUE(read("[]]\n") == header("]"));
  EXPECT_TRUE(read("[[]\n") == header("["));
  EXPECT_TRUE(read("[a][b]\n") == header("a][b"));
}

TEST(IniLine, a_name_of_24_bytes_is_taken_and_one_of_25_is_refused) {
  EXPECT_TRUE(read("[" + times(24, 'n') + "]\n") == header(times(24, 'n')));
  EXPECT_EQ(fault_of("[" + times(25, 'n') + "]\n"), line_error::name_too_long);
}

TEST(IniLine, a_header_without_a_bracket_before_the_line_feed_is_refused) {
  for (const char* line : {"[A]\r\n", "[A] \n", "[a]x\n", "[a]=x\n", "[a=b\n", "[ab\n"}) {
    EXPECT_EQ(fault_of(line), line_error::header_not_closed) << line;
  }
}

TEST(IniLine, a_line_is_a_header_only_when_its_first_byte_is_a_bracket) {
  EXPECT_EQ(fault_of(" [A]\n"), line_error::no_key);
  EXPECT_TRUE(read(" [A]=x\n") == entry(" [A]", "x"));
}

TEST(IniLine, an_entry_is_cut_at_its_first_equals_sign) {
  EXPECT_TRUE(read("k=v\n") == entry("k", "v"));
  EXPECT_TRUE(read("k=a=b\n") == entry("k", "a=b"));
  EXPECT_TRUE(read("k==\n") == entry("k", "="));
}

TEST(IniLine, a_one_byte_key_takes_no_empty_value_and_a_longer_one_does) {
  EXPECT_EQ(fault_of("a=\n"), line_error::too_short);
  EXPECT_TRUE(read("ab=\n") == entry("ab", ""));
  EXPECT_TRUE(read("a=b\n") == entry("a", "b"));
}

TEST(IniLine, bytes_are_taken_as_they_are) {
  EXPECT_TRUE(read(" key = value \r\n") == entry(" key ", " value \r"));
  EXPECT_TRUE(read("#no=comment;\n") == entry("#no", "comment;"));
  EXPECT_TRUE(read("\x80\xff=\t\\n\"\n") == entry("\x80\xff", "\t\\n\""));
}

TEST(IniLine, an_entry_without_a_key_is_refused) {
  for (const char* line : {"=v\n", "==v\n", "=abc\n", "kvkv\n", "abc\n", ";comment\n", "   \n"}) {
    EXPECT_EQ(fault_of(line),
              std::string{line}.size() < 4 ? line_error::too_short : line_error::no_key)
        << line;
  }
}

TEST(IniLine, a_key_of_49_bytes_is_taken_and_one_of_50_is_refused) {
  EXPECT_TRUE(read(times(49, 'k') + "=v\n") == entry(times(49, 'k'), "v"));
  EXPECT_EQ(fault_of(times(50, 'k') + "=v\n"), line_error::key_too_long);
}

TEST(IniLine, a_value_of_199_bytes_is_taken_and_one_of_200_is_refused) {
  EXPECT_TRUE(read("k=" + times(199, 'v') + "\n") == entry("k", times(199, 'v')));
  EXPECT_EQ(fault_of("k=" + times(200, 'v') + "\n"), line_error::value_too_long);
}

TEST(IniLine, the_longest_line_fits_the_buffer) {
  const std::string longest = times(49, 'k') + "=" + times(199, 'v') + "\n";
  EXPECT_LT(longest.size(), line_buffer_bytes);
  EXPECT_TRUE(read(longest) == entry(times(49, 'k'), times(199, 'v')));
}

TEST(SplitKeyAndValue, cuts_at_the_first_equals_sign) {
  const split two{"key=a=b"};
  EXPECT_EQ(two.key, two.line.data());
  EXPECT_STREQ(two.key, "key");
  EXPECT_EQ(two.value, two.line.data() + 4);
  EXPECT_STREQ(two.value, "a=b");
}

TEST(SplitKeyAndValue, an_empty_value_is_an_empty_text) {
  const split two{"key="};
  EXPECT_STREQ(two.key, "key");
  EXPECT_STREQ(two.value, "");
}

TEST(SplitKeyAndValue, without_an_equals_sign_behind_a_key_the_key_is_null) {
  for (const char* text : {"", "=", "=v", "==", "key", "k"}) {
    const split none{text};
    EXPECT_EQ(none.key, nullptr) << text;
    EXPECT_EQ(none.line, text);
  }
}
