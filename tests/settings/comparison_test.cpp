#include "settings/comparison.h"

#include <gtest/gtest.h>

#include "tests/support/scripted_service.h"

using namespace proreflax::settings;

namespace {

/// The comparison of one entry of a text with the store.
std::vector<difference> differences_of(const char* section, const char* key,
                                       std::optional<std::string> expected) {
  const section_differences found =
      compare_with_store({.name = section, .entries = {{key, std::move(expected)}}});
  EXPECT_EQ(found.code, 0U);
  return found.entries;
}

}  // namespace

TEST(Comparison, covers_the_sections_of_the_text_first_and_then_the_known_ones) {
  const auto sections = sections_to_compare({{1, "OWN", "k", "1"}, {2, "LAN", "x", "2"}});
  ASSERT_EQ(sections.size(), proreflax::all_sections().size() + 1);
  EXPECT_EQ(sections[0].name, "OWN");
  EXPECT_EQ(sections[1].name, "LAN");
  EXPECT_EQ(sections[1].entries[0].expected, "2");
  EXPECT_EQ(sections[1].entries[1].key, "ConnType");
  EXPECT_FALSE(sections[1].entries[1].expected);
}

TEST(Comparison, a_key_that_the_text_repeats_has_its_last_value) {
  const auto sections = sections_to_compare({{1, "OWN", "k", "1"}, {2, "OWN", "k", "2"}});
  ASSERT_EQ(sections[0].entries.size(), 1U);
  EXPECT_EQ(sections[0].entries[0].expected, "2");
}

TEST(Comparison, texts_of_a_known_key_that_mean_the_same_do_not_differ) {
  scripted_service service;
  service.holds("LAN", "ConnType", "0x00000001");
  EXPECT_TRUE(differences_of("LAN", "ConnType", "1").empty());
  const auto found = differences_of("LAN", "ConnType", "2");
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].expected, "2");
  EXPECT_EQ(found[0].present, "1");
  EXPECT_FALSE(found[0].is_secret);
}

TEST(Comparison, a_missing_key_and_a_missing_section_hold_nothing) {
  scripted_service service;
  service.has_section("WEBLOG");
  const auto key = differences_of("WEBLOG", "password", "p");
  ASSERT_EQ(key.size(), 1U);
  EXPECT_TRUE(key[0].is_secret);
  EXPECT_FALSE(key[0].present);
  EXPECT_EQ(differences_of("OWN", "k", "v").size(), 1U);
  EXPECT_TRUE(differences_of("OWN", "k", std::nullopt).empty());
}

TEST(Comparison, a_section_that_cannot_be_read_gives_the_code) {
  scripted_service service;
  service.fails("LAN", "ConnType", 208);
  const section_differences found =
      compare_with_store({.name = "LAN", .entries = {{"ConnType", "1"}}});
  EXPECT_EQ(found.code, 208U);
  EXPECT_TRUE(found.entries.empty());
}
