#include "settings/name_rules.h"

#include <gtest/gtest.h>

using namespace proreflax::settings;
using std::string;

TEST(NameRules, names_within_the_limits_break_no_rule) {
  EXPECT_EQ(broken_section_rule(string(24, 's')), std::nullopt);
  EXPECT_EQ(broken_section_rule("a=*[b"), std::nullopt);
  EXPECT_EQ(broken_key_rule(string(49, 'k')), std::nullopt);
  EXPECT_EQ(broken_key_rule("macFilters[79]"), std::nullopt);
  EXPECT_EQ(broken_value_rule(string(199, 'v')), std::nullopt);
  EXPECT_EQ(broken_value_rule("a=*[b"), std::nullopt);
  EXPECT_EQ(broken_value_rule(""), std::nullopt);
}

TEST(NameRules, the_broken_rule_of_a_section_name_is_told) {
  EXPECT_EQ(broken_section_rule(""), "the section name is empty");
  EXPECT_EQ(broken_section_rule(string(25, 's')),
            "the section name has 25 characters; at most 24 are taken");
  EXPECT_EQ(broken_section_rule("a\rb"), "the section name holds a CR, which is forbidden in it");
  EXPECT_EQ(broken_section_rule("a\nb"), "the section name holds an LF, which is forbidden in it");
}

TEST(NameRules, the_broken_rule_of_a_key_is_told) {
  EXPECT_EQ(broken_key_rule(""), "the key is empty");
  EXPECT_EQ(broken_key_rule(string(50, 'k')), "the key has 50 characters; at most 49 are taken");
  EXPECT_EQ(broken_key_rule("a=b"), "the key holds \"=\", which is forbidden in it");
  EXPECT_EQ(broken_key_rule("a*b"), "the key holds \"*\", which is forbidden in it");
  EXPECT_EQ(broken_key_rule("a\rb"), "the key holds a CR, which is forbidden in it");
  EXPECT_EQ(broken_key_rule("a\nb"), "the key holds an LF, which is forbidden in it");
  EXPECT_EQ(broken_key_rule("[a"),
            "the key begins with \"[\"; its saved line would read as a section header");
}

TEST(NameRules, the_broken_rule_of_a_value_is_told) {
  EXPECT_EQ(broken_value_rule(string(200, 'v')),
            "the value has 200 characters; at most 199 are taken");
  EXPECT_EQ(broken_value_rule("a\nb"), "the value holds an LF, which is forbidden in it");
  EXPECT_EQ(broken_value_rule("a\rb"), "the value holds a CR, which is forbidden in it");
}

TEST(NameRules, a_key_of_one_character_takes_no_empty_value) {
  EXPECT_EQ(broken_entry_rule("a", ""),
            "a key of one character takes no empty value; its saved line could not be read back");
  EXPECT_EQ(broken_entry_rule("ab", ""), std::nullopt);
  EXPECT_EQ(broken_entry_rule("a", "b"), std::nullopt);
}
