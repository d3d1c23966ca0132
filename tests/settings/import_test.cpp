#include "settings/import.h"

#include <gtest/gtest.h>

using namespace proreflax::settings;

namespace {

const set_request& set_of(const transaction_step& step) {
  return std::get<set_request>(step.asked.value());
}

}  // namespace

TEST(Import, ini_becomes_a_step_a_line) {
  const imported_text text = read_import({"\n", "[A]\n", "k=v=w\n", "[B]\n", "ab=\n"});
  EXPECT_TRUE(text.accepted());
  ASSERT_EQ(text.steps.size(), 2U);
  EXPECT_EQ(text.steps[0].number, 3U);
  EXPECT_EQ(set_of(text.steps[0]).section, "A");
  EXPECT_EQ(set_of(text.steps[0]).value, "v=w");
  EXPECT_EQ(set_of(text.steps[1]).section, "B");
  EXPECT_EQ(set_of(text.steps[1]).key, "ab");
}

TEST(Import, json_begins_with_a_brace_and_its_steps_have_no_line) {
  const imported_text text = read_import({" \n", "\t{\"A\": {\"k\":\n", "\"v\"}}\n"});
  EXPECT_TRUE(text.accepted());
  ASSERT_EQ(text.steps.size(), 1U);
  EXPECT_EQ(text.steps[0].number, 0U);
  EXPECT_EQ(set_of(text.steps[0]).value, "v");
}

TEST(Import, what_breaks_a_rule_is_not_accepted) {
  EXPECT_FALSE(read_import({"{"}).accepted());
  EXPECT_NE(read_import({"{"}).failure, "");
  const imported_text text = read_import({"[A]\n", "=abc\n"});
  EXPECT_FALSE(text.accepted());
  ASSERT_EQ(text.faults.size(), 1U);
  EXPECT_EQ(text.faults[0].line, 2U);
}
