#include "tools/cfc/command_line/words.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace cfc;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(Words, blanks_and_tabs_separate_words) {
  EXPECT_THAT(split_words("set  LAN\tIP 10.0.0.5 ").words,
              ElementsAre("set", "LAN", "IP", "10.0.0.5"));
}

TEST(Words, a_blank_line_has_none) {
  EXPECT_THAT(split_words("").words, IsEmpty());
  EXPECT_THAT(split_words(" \t ").words, IsEmpty());
}

TEST(Words, a_sharp_that_begins_a_word_begins_a_comment) {
  EXPECT_THAT(split_words("# all of it").words, IsEmpty());
  EXPECT_THAT(split_words("  # all of it 'unclosed").words, IsEmpty());
  EXPECT_THAT(split_words("get A b # why").words, ElementsAre("get", "A", "b"));
  EXPECT_THAT(split_words("set A b x#y").words, ElementsAre("set", "A", "b", "x#y"));
  EXPECT_THAT(split_words("set A b '#fff'").words, ElementsAre("set", "A", "b", "#fff"));
  EXPECT_THAT(split_words("set A b \\#fff").words, ElementsAre("set", "A", "b", "#fff"));
  EXPECT_THAT(split_words("set A b ''#x").words, ElementsAre("set", "A", "b", "#x"));
}

TEST(Words, single_quotes_take_everything_as_it_is) {
  EXPECT_THAT(split_words(R"('a "b" \ $c # d')").words, ElementsAre(R"(a "b" \ $c # d)"));
}

TEST(Words, double_quotes_take_everything_but_the_four_escapes) {
  EXPECT_THAT(split_words(R"("a 'b' \" \\ \$ \` \n")").words, ElementsAre(R"(a 'b' " \ $ ` \n)"));
}

TEST(Words, a_backslash_outside_quotes_takes_the_next_character_as_it_is) {
  EXPECT_THAT(split_words(R"(a\ b \"c \\)").words, ElementsAre("a b", "\"c", "\\"));
}

TEST(Words, quoted_pieces_join_what_they_touch) {
  EXPECT_THAT(split_words(R"(a'b c'"d e"f)").words, ElementsAre("ab cd ef"));
}

TEST(Words, empty_quotes_are_an_empty_word) {
  EXPECT_THAT(split_words("set A bb ''").words, ElementsAre("set", "A", "bb", ""));
  EXPECT_THAT(split_words("\"\" ''").words, ElementsAre("", ""));
}

TEST(Words, nothing_else_is_special) {
  EXPECT_THAT(split_words("$HOME *;|&>(x) `y`").words, ElementsAre("$HOME", "*;|&>(x)", "`y`"));
  EXPECT_THAT(split_words("caf\xc3\xa9 \x01\r").words, ElementsAre("caf\xc3\xa9", "\x01\r"));
}

TEST(Words, a_quote_that_is_not_closed_is_a_fault) {
  EXPECT_EQ(split_words("set A b 'c d").fault, "a single quote is not closed");
  EXPECT_EQ(split_words("set A b \"c d").fault, "a double quote is not closed");
  EXPECT_EQ(split_words(R"(set A b "c \")").fault, "a double quote is not closed");
}

TEST(Words, a_backslash_at_the_end_is_a_fault) {
  EXPECT_EQ(split_words("set A b c\\").fault,
            "the backslash at the end of the line escapes nothing");
}
