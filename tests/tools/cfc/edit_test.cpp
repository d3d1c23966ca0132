#include "tools/cfc/edit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tools/cfc/json_text.h"

using namespace cfc;
using std::string;
using testing::HasSubstr;

namespace {

/// LAN with each number 0 and each address 10.0.0.1, but no DnsSrv2.
section_values lan() {
  section_values values{.section = find_known_section("LAN"), .entries = {}, .sentence = {}};
  for (const known_key& each : keys_of(*values.section)) {
    values.entries.push_back({each, kind_of(each.which) == value_kind::ip ? "10.0.0.1" : "0x00"});
  }
  values.entries.back().text.reset();
  return values;
}

const set_command& set_of(const batch_line& line) {
  return std::get<set_command>(line.command.value());
}

}  // namespace

TEST(EditedText, the_text_as_it_was_changes_nothing) {
  const edited_text edited = read_edited(lan(), text_to_edit(lan()));
  EXPECT_TRUE(edited.sets.empty());
  EXPECT_TRUE(edited.faults.empty());
}

TEST(EditedText, the_text_shows_values_as_a_person_reads_them) {
  const string text = text_to_edit(lan());
  EXPECT_THAT(text, HasSubstr("\nConnType=0\nLanIPAddr=10.0.0.1\n"));
  EXPECT_THAT(text, HasSubstr("\n# DnsSrv2=\n"));
}

TEST(EditedText, only_changed_lines_are_set_and_missing_ones_stay) {
  const edited_text edited =
      read_edited(lan(), "# note\n\nConnType=2\nLanIPAddr=10.0.0.1\nDnsSrv2=10.0.0.9");
  ASSERT_EQ(edited.sets.size(), 2U);
  EXPECT_EQ(edited.sets[0].number, 3U);
  EXPECT_EQ(set_of(edited.sets[0]).key + "=" + set_of(edited.sets[0]).value, "ConnType=2");
  EXPECT_EQ(set_of(edited.sets[0]).kind, value_kind::u32);
  EXPECT_EQ(set_of(edited.sets[1]).key, "DnsSrv2");
}

TEST(EditedText, what_is_wrong_is_told_with_its_line) {
  const edited_text edited = read_edited(
      lan(), "ConnType=x\nnothing\nFrob=1\nLanGw=10.0.0.2\nLanGw=10.0.0.3\nLanIPAddr=\n");
  std::vector<std::size_t> lines;
  for (const edit_fault& each : edited.faults) {
    lines.push_back(each.line);
  }
  EXPECT_EQ(lines, (std::vector<std::size_t>{1, 2, 3, 5, 6}));
  EXPECT_THAT(edited.faults[0].sentence, HasSubstr("u32"));
  EXPECT_THAT(edited.faults[2].sentence, HasSubstr("no key \"Frob\""));
  EXPECT_THAT(edited.faults[3].sentence, HasSubstr("twice"));
}

TEST(ExportedJson, comes_back_as_it_was_also_without_utf8) {
  section_values values = lan();
  values.entries[1].text = "\xff\x01 a:b";
  string failure;
  const auto sets = read_export(json_of_export({values}), failure);
  EXPECT_EQ(failure, "");
  ASSERT_EQ(sets.size(), values.entries.size() - 1);
  for (std::size_t i = 0; i < sets.size(); ++i) {
    EXPECT_EQ(sets[i].section, "LAN");
    EXPECT_EQ(sets[i].key, values.entries[i].key.name());
    EXPECT_EQ(sets[i].value, values.entries[i].text);
  }
}

TEST(ExportedJson, what_is_no_export_is_refused_and_says_where) {
  for (const auto& [text, what] : {std::pair{"{", "parse error"},
                                   {"[]", "no JSON object"},
                                   {"{\"LAN\": 1}", "section \"LAN\""},
                                   {"{\"LAN\": {\"k\": null}}", "key \"k\""},
                                   {"{\"LAN\": {\"k\": 1.5}}", "key \"k\""},
                                   {"{\"LAN\": {\"k\": {\"bytes\": \"0\"}}}", "key \"k\""}}) {
    string failure;
    EXPECT_TRUE(read_export(text, failure).empty()) << text;
    EXPECT_THAT(failure, HasSubstr(what));
  }
}
