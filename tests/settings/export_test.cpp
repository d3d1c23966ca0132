#include "settings/export.h"

#include <gtest/gtest.h>

#include "tests/support/scripted_service.h"

using namespace proreflax::settings;

namespace {

/// Section WEBLOG with these texts.
section_values web_login_with(std::optional<std::string> user, std::optional<std::string> word) {
  section_values values{.section = find_known_section("WEBLOG"), .entries = {}, .sentence = {}};
  for (const known_key& each : keys_of(*values.section)) {
    values.entries.push_back({each, values.entries.empty() ? user : word});
  }
  return values;
}

}  // namespace

TEST(Export, ini_has_a_blank_line_before_each_section_and_no_line_for_a_missing_key) {
  EXPECT_EQ(ini_of({web_login_with("a=b", std::nullopt), web_login_with("", "p")}),
            "\n[WEBLOG]\nuser_name=a=b\n\n[WEBLOG]\nuser_name=\npassword=p");
  EXPECT_EQ(ini_of({}), "");
}

TEST(Export, json_has_a_key_a_line_in_the_order_of_the_table) {
  EXPECT_EQ(json_of(std::vector{web_login_with("a\"b", "\xff")}),
            "{\n \"WEBLOG\": {\n  \"user_name\": \"a\\\"b\",\n"
            "  \"password\": {\"bytes\":\"ff\"}\n }\n}");
  EXPECT_EQ(json_of(std::vector{web_login_with(std::nullopt, std::nullopt)}),
            "{\n \"WEBLOG\": {}\n}");
  EXPECT_EQ(json_of(std::vector<section_values>{}), "{}");
}

TEST(Export, the_reading_of_all_sections_leaves_out_what_is_not_there_and_ends_at_a_failure) {
  scripted_service service;
  service.holds("LAN", "ConnType", "0x00000001");
  service.has_section("WEBLOG");
  std::vector<section_values> all = read_all_sections();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0].name(), "LAN");
  EXPECT_TRUE(all[1].ok());
  service.fails("LAN", "ConnType", 208);
  all = read_all_sections();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all[0].code, 208U);
}
