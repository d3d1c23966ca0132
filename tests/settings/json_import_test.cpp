#include "settings/json_import.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "settings/export.h"

using namespace proreflax::settings;
using std::string;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

/// LAN with each number 0 and each address 10.0.0.1, but no DnsSrv2.
section_values exported_lan() {
  section_values values{.section = find_known_section("LAN"), .entries = {}, .sentence = {}};
  for (const known_key& each : keys_of(*values.section)) {
    values.entries.push_back({each, kind_of(each.which) == value_kind::ip ? "10.0.0.1" : "0x00"});
  }
  values.entries.back().text.reset();
  return values;
}

string failure_of(const string& text) {
  string failure;
  EXPECT_TRUE(read_json_export(text, failure).empty()) << text;
  return failure;
}

/// What the only value of a text is set to.
string value_of(const string& text) {
  string failure;
  const auto sets = read_json_export(text, failure);
  EXPECT_EQ(failure, "") << text;
  return sets.size() == 1 ? sets[0].value : "not one set";
}

}  // namespace

TEST(JsonImport, comes_back_as_it_was_also_without_utf8) {
  section_values values = exported_lan();
  values.entries[1].text = "\xff\x01 a:b";
  string failure;
  const auto sets = read_json_export(json_of({values}), failure);
  EXPECT_EQ(failure, "");
  ASSERT_EQ(sets.size(), values.entries.size() - 1);
  for (std::size_t i = 0; i < sets.size(); ++i) {
    EXPECT_EQ(sets[i].section, "LAN");
    EXPECT_EQ(sets[i].key, values.entries[i].key.name());
    EXPECT_EQ(sets[i].value, values.entries[i].text);
  }
}

TEST(JsonImport, what_is_no_export_is_refused_and_says_where) {
  for (const auto& [text, what] :
       {std::pair{"{", "parse error"},
        {"[]", "no JSON object"},
        {"{\"LAN\": 1}", "section \"LAN\""},
        {"{\"LAN\": {\"k\": null}}", "key \"k\""},
        {"{\"LAN\": {\"k\": 1.5}}", "key \"k\""},
        {"{\"LAN\": {\"k\": 1e3}}", "key \"k\""},
        {"{\"LAN\": {\"k\": true}}", "key \"k\""},
        {"{\"LAN\": {\"k\": [\"v\"]}}", "key \"k\""},
        {"{\"LAN\": {\"k\": {}}}", "key \"k\""},
        {"{\"LAN\": {\"k\": {\"byte\": \"00\"}}}", "key \"k\""},
        {"{\"LAN\": {\"k\": {\"bytes\": {}}}}", "key \"k\""},
        {"{\"LAN\": {\"k\": {\"bytes\": \"00\", \"x\": 1}}}", "key \"k\""},
        {"{\"LAN\": [1]}", "section \"LAN\""},
        {"{\"LAN\": {}} x", "parse error"},
        {"{\"LAN\": {\"k\": \"\xff\"}}", "parse error"},
        {"{\"LAN\": {\"k\": {\"bytes\": \"0\"}}}", "key \"k\""}}) {
    EXPECT_THAT(failure_of(text), HasSubstr(what)) << text;
  }
}

TEST(JsonImport, a_parse_error_names_its_line) {
  EXPECT_THAT(failure_of("{\n\"LAN\": {\n\"k\" \"v\"}}"), StartsWith("parse error at line 3: "));
}

TEST(JsonImport, a_nul_after_the_object_does_not_hide_what_follows_it) {
  EXPECT_THAT(failure_of(string{"{}\0x", 4}), HasSubstr("after the JSON object"));
}

TEST(JsonImport, a_whole_number_stands_for_its_text) {
  EXPECT_EQ(value_of("{\"LAN\": {\"k\": 4294967295}}"), "4294967295");
  EXPECT_EQ(value_of("{\"LAN\": {\"k\": -5}}"), "-5");
}

TEST(JsonImport, a_string_may_hold_escapes_and_a_value_bytes) {
  EXPECT_EQ(value_of(R"({"LAN": {"k": "\u00e9\n\u0000"}})"), string("\xc3\xa9\n\0", 4));
  EXPECT_EQ(value_of(R"({"LAN": {"k": {"bytes": "ff:00"}}})"), string("\xff\0", 2));
  EXPECT_EQ(value_of(R"({"LAN": {"k": {"bytes": ""}}})"), "");
}

TEST(JsonImport, no_nesting_exhausts_the_stack) {
  string deep = "{\"LAN\": ";
  deep.append(1000000, '[');
  EXPECT_NE(failure_of(deep), "");
  string objects;
  for (int i = 0; i < 200000; ++i) {
    objects += "{\"a\":";
  }
  EXPECT_NE(failure_of(objects), "");
}
