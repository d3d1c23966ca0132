#include "settings/message_text.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "settings/result_text.h"

using namespace proreflax::settings;

TEST(MessageText, words_are_the_number_the_name_and_the_sentence) {
  EXPECT_EQ(in_words(201, result_sentence(201)),
            "201 CFC_ERR_NO_KEY: the section holds no such key");
  EXPECT_EQ(in_words(EIDRM, "gone"), std::to_string(EIDRM) + ": gone");
  EXPECT_EQ(in_words(0xFFFFFFFF, "x"), "4294967295 CFC_ERR_NOT_AN_ADDRESS: x");
}

TEST(MessageText, quoting_keeps_a_message_on_one_line_and_off_the_terminals_controls) {
  EXPECT_EQ(quoted("LAN"), "\"LAN\"");
  EXPECT_EQ(quoted("a\"b\\c"), R"("a\"b\\c")");
  EXPECT_EQ(quoted("a\n\x1b[2J\xff"), R"("a\x0a\x1b[2J\xff")");
  EXPECT_EQ(printable("a\tb \"c\""), R"(a\x09b "c")");
}

TEST(MessageText, a_pattern_has_room_for_any_value) {
  const std::string value(10000, 'x');
  EXPECT_EQ(formatted("<%s> %d", value.c_str(), 7), "<" + value + "> 7");
  EXPECT_EQ(formatted("%s", ""), "");
}
