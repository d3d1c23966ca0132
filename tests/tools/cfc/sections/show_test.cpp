#include "tools/cfc/sections/show.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/scripted_service.h"
#include "tests/tools/cfc/run_program.h"

using namespace cfc;
using namespace proreflax::settings;
using std::string;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

using stored_texts = std::vector<std::optional<string>>;

/// A section with these texts, its keys in the order of its table.
std::vector<string> shown_table(const char* section, const stored_texts& texts) {
  section_values values{.section = find_known_section(section), .entries = {}, .sentence = {}};
  const std::vector<known_key> keys = keys_of(*values.section);
  EXPECT_EQ(keys.size(), texts.size());
  for (std::size_t i = 0; i < keys.size(); ++i) {
    values.entries.push_back({keys[i], texts[i]});
  }
  return table_of(values, false);
}

/// A service whose known sections are all there, with none of their keys.
class empty_sections : public scripted_service {
 public:
  empty_sections() {
    for (const auto& section : proreflax::all_sections()) {
      for (const known_key& key : keys_of(section)) {
        lacks(section.table.name(), key.name());
      }
    }
  }
};

section_values acl_with(std::optional<string> first, std::optional<string> last) {
  section_values values{.section = find_known_section("WLS_ACL"), .entries = {}, .sentence = {}};
  for (const known_key& each : keys_of(*values.section)) {
    values.entries.push_back({each, "0x000000000000"});
  }
  values.entries.front().text = std::move(first);
  values.entries.back().text = std::move(last);
  return values;
}

}  // namespace

TEST(ShowTableOfArrays, folds_two_elements_and_never_two_arrays_into_one_line) {
  EXPECT_THAT(shown_table("RPTIPS_DB", {"", "", "", ""}),
              ElementsAre("[RPTIPS_DB]", "host[0..1]  empty  string", "port[0..1]  empty  string"));
  EXPECT_THAT(shown_table("RPTIPS_DB", {"a", "", "", "80"}),
              ElementsAre("[RPTIPS_DB]", "host[0]  a   string", "host[1]      string",
                          "port[0]      string", "port[1]  80  string"));
}

TEST(ShowTableOfArrays, what_is_not_there_is_not_said_to_be_empty) {
  EXPECT_THAT(shown_table("RPTIPS_DB", {{}, {}, "1", {}}),
              ElementsAre("[RPTIPS_DB]", "host[0..1]  (not set)  string",
                          "port[0]     1          string", "port[1]     (not set)  string"));
}

TEST(ShowTableOfTexts, hides_no_secret_that_is_empty) {
  EXPECT_THAT(shown_table("WEBLOG", {"admin", ""}),
              ElementsAre("[WEBLOG]", "user_name  admin  string", "password          string"));
}

TEST(ShowTableOfTexts, keeps_control_characters_from_the_terminal) {
  EXPECT_THAT(shown_table("WEBLOG", {"a\x1b[2J", ""})[1], HasSubstr("a\\x1b[2J"));
}

TEST(ShowTableOfTexts, a_value_of_more_than_40_characters_leaves_the_others_where_they_are) {
  const std::vector<string> table =
      shown_table("SMSGW", {string(41, 'l'), string(40, 'u'), "", "", "r", "o"});
  EXPECT_THAT(table, testing::Contains("service  " + string(41, 'l') + "  string"));
  EXPECT_THAT(table, testing::Contains("user     " + string(40, 'u') + "  string"));
  EXPECT_THAT(table, testing::Contains("route    r" + string(39, ' ') + "  string"));
}

TEST(ShowVerb, tells_sections_apart_by_a_blank_line) {
  empty_sections service;
  const ended all = run_cfc({"show"});
  EXPECT_EQ(all.status, 0) << all.err;
  EXPECT_THAT(all.out, Not(StartsWith("\n")));
  EXPECT_THAT(all.out, HasSubstr("  string\n\n[RPTIPS_DB]\n"));
}

TEST(ShowVerb, a_missing_section_is_told_and_the_others_are_shown) {
  scripted_service service;
  service.holds("WEBLOG", "user_name", "admin");
  const ended all = run_cfc({"show"});
  EXPECT_EQ(all.status, 3);
  EXPECT_THAT(all.err, HasSubstr("cfc: show: section \"LAN\": 209 CFC_ERR_NO_SECTION: the store "
                                 "holds no such section\n"));
  EXPECT_THAT(all.out, StartsWith("[WEBLOG]\nuser_name  admin "));
}

TEST(ShowVerb, a_service_that_fails_is_not_asked_for_the_next_section) {
  for (const bool one_is_missing : {false, true}) {
    empty_sections service;
    service.fails("LAN", "ConnType", 208);
    if (one_is_missing) {
      service.fails(proreflax::all_sections()[0].table.name(),
                    keys_of(proreflax::all_sections()[0])[0].name(), 209);
    }
    const ended all = run_cfc({"show"});
    EXPECT_EQ(all.status, one_is_missing ? 3 : 1);
    EXPECT_THAT(all.err,
                EndsWith("cfc: show: section \"LAN\": 208 CFC_ERR_BUSY: the store is being "
                         "written out; try again\n"));
    EXPECT_EQ(service.take_requests().back().section, "LAN");
  }
}

TEST(SectionsVerb, lists_kinds_and_capacities_in_columns) {
  EXPECT_EQ(run_cfc({"sections", "WEBLOG"}).out,
            "WEBLOG\n  user_name                 string, at most 31 characters\n"
            "  password                  string, at most 31 characters\n");
  EXPECT_EQ(run_cfc({"sections", "WLS_ACL"}).out,
            "WLS_ACL\n  macFilters[0..79]         binary, 6 bytes\n");
}

TEST(ShowTable, folds_what_is_empty_and_writes_addresses_with_colons) {
  EXPECT_THAT(table_of(acl_with("0x018028430c00", "0x000000000000"), false),
              ElementsAre("[WLS_ACL]", "macFilters[0]      00:0c:43:28:80:01  binary",
                          "macFilters[1..79]  empty              binary"));
}

TEST(ShowTable, tells_not_set_from_empty_and_what_breaks_its_rule) {
  EXPECT_THAT(table_of(acl_with(std::nullopt, "junk"), false),
              ElementsAre("[WLS_ACL]", "macFilters[0]      (not set)  binary",
                          "macFilters[1..78]  empty      binary",
                          "macFilters[79]     junk       binary (its value is none)"));
}

TEST(ShowTable, shows_all_bytes_that_a_key_has_room_for) {
  EXPECT_EQ(table_of(acl_with("0x0201", "0x000000000000"), false)[1],
            "macFilters[0]      01:02:00:00:00:00  binary");
}
