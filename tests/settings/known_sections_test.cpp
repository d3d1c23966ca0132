#include "settings/known_sections.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "settings/request.h"

using namespace proreflax::settings;
using std::string;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

struct stored_row {
  const char* section;
  const char* key;
  string text;
  std::uint32_t code;
};

const stored_row stored_rows[] = {
    {"LAN", "ConnType", "0x00000001", 0},
    {"LAN", "ConnType", "-1", 0},
    {"LAN", "ConnType", "", 204},
    {"LAN", "ConnType", "abc", 210},
    {"LAN", "ConnType", "4294967296", 211},
    {"LAN", "ConnType", "000000000000001", 0},
    {"LAN", "ConnType", "0000000000000001", 212},
    {"LAN", "LanIPAddr", "10.0.0.5", 0},
    {"LAN", "LanIPAddr", "10.0.0.256", 0xFFFFFFFF},
    {"LAN", "LanIPAddr", "", 0xFFFFFFFF},
    {"WLS_WPA", "wpa_key_type", "0xff", 0},
    {"WLS_WPA", "wpa_key_type", "256", 205},
    {"SYSTEMUTS", "webs_port", "65535", 0},
    {"SYSTEMUTS", "webs_port", "65536", 205},
    {"WEBLOG", "password", string(31, 'p'), 0},
    {"WEBLOG", "password", string(32, 'p'), 212},
    {"WLS_ACL", "macFilters[79]", "0x0102030405ff", 0},
    {"WLS_ACL", "macFilters[0]", "", 0},
    {"WLS_ACL", "macFilters[0]", "0x01", 0},
    {"WLS_ACL", "macFilters[0]", "0x0102030405ff00", 212},
    {"WLS_ACL", "macFilters[0]", "0x0102030405ff0", 212},
    {"WLS_ACL", "macFilters[0]", "01:02:03", 205},
};

parsed_value read(const stored_row& row) {
  const auto key = find_known_key(row.section, row.key);
  EXPECT_TRUE(key) << row.section << " " << row.key;
  return read_stored(key.value().which, row.text);
}

answer screened(const string& key, const string& value, value_kind kind, bool force = false) {
  return screen(
      set_request{.section = "WLS_ACL", .key = key, .value = value, .kind = kind, .force = force});
}

}  // namespace

TEST(KnownSections, a_stored_text_is_judged_as_its_getter_judges_it) {
  for (const stored_row& each : stored_rows) {
    EXPECT_EQ(read(each).code, each.code) << each.section << " " << each.key << "=" << each.text;
  }
}

TEST(KnownSections, every_element_of_an_array_is_a_key_and_no_other) {
  EXPECT_EQ(keys_of(*find_known_section("WLS_ACL")).size(), 80U);
  EXPECT_TRUE(find_known_key("WLS_ACL", "macFilters[79]"));
  for (const char* key : {"macFilters[80]", "macFilters", "macFilters[01]", "macFilters[-1]"}) {
    EXPECT_FALSE(find_known_key("WLS_ACL", key)) << key;
  }
  EXPECT_FALSE(find_known_key("NONE", "macFilters[0]"));
}

TEST(KnownSections, typed_values_are_stored_as_the_library_stores_them) {
  EXPECT_EQ(stored_text(std::uint8_t{10}), "0x0a");
  EXPECT_EQ(stored_text(std::uint16_t{443}), "0x01bb");
  EXPECT_EQ(stored_text(std::uint32_t{0xC0A83E01}), "0xc0a83e01");
  EXPECT_EQ(stored_text(ipv4_address{0xC0A83E01}), "192.168.62.1");
  EXPECT_EQ(stored_text(binary_data{0x00, 0x0c, 0x43}), "0x430c00");
  EXPECT_EQ(stored_text(binary_data{}), "");
  EXPECT_EQ(stored_text(string{"a b"}), "a b");
}

TEST(KnownSections, what_opens_something_is_secret_and_numbers_never_are) {
  for (const auto& [section, key] : {std::pair{"DDNS", "passwd"},
                                     {"USERS_DB", "passwd[9]"},
                                     {"WEBLOG", "password"},
                                     {"WLS_WPA", "passphrase"},
                                     {"WLS_WPA", "PMK"},
                                     {"WLS_WEP", "wep_passphrase"},
                                     {"WLS_WEP", "wep_key_3"},
                                     {"WIRELESS", "wepkey_1"},
                                     {"WLS_EXT", "svr_shared_secret"},
                                     {"GSM", "pin"},
                                     {"SMSGW", "api"}}) {
    EXPECT_TRUE(is_secret(find_known_key(section, key).value().which)) << section << " " << key;
  }
  for (const auto& [section, key] : {std::pair{"WIRELESS", "wepkey"},
                                     {"WLS_WEP", "keylength"},
                                     {"DDNS", "user"},
                                     {"WLS_WPA", "key_timeout"},
                                     {"SMSGW", "route"},
                                     {"PANEL_WIRELESS", "key_mode"}}) {
    EXPECT_FALSE(is_secret(find_known_key(section, key).value().which)) << section << " " << key;
  }
}

TEST(SetOfAKnownKey, is_refused_when_its_getter_would_not_read_it_unless_forced) {
  const answer refused = screened("macFilters[0]", "00:0c:43:28:80:01", value_kind::string);
  EXPECT_EQ(refused.code, 212U);
  EXPECT_THAT(refused.sentence, HasSubstr("at most 6 bytes"));
  EXPECT_THAT(refused.sentence, HasSubstr("--force"));
  EXPECT_TRUE(screened("macFilters[0]", "00:0c:43:28:80:01", value_kind::string, true).ok());
  EXPECT_TRUE(screened("macFilters[0]", "00:0c:43:28:80:01", value_kind::binary).ok());
  EXPECT_EQ(screened("macFilters[0]", "00:0c:43:28:80:01:02", value_kind::binary).code, 212U);
  EXPECT_TRUE(screened("another", "anything", value_kind::string).ok());
}

TEST(SetOfAKnownKey, a_refusal_tells_the_value_and_the_rule) {
  const answer number =
      screen(set_request{.section = "LAN", .key = "ConnType", .value = "0000000000000001"});
  EXPECT_THAT(number.sentence, StartsWith("the value is \"0000000000000001\"; this key takes a "));
  EXPECT_THAT(number.sentence, HasSubstr(", stored in at most 15 characters"));
  EXPECT_THAT(screen(set_request{.section = "LAN", .key = "ConnType", .value = ""}).sentence,
              StartsWith("the value is empty; this key takes a number from "));
  EXPECT_THAT(screen(set_request{.section = "WEBLOG", .key = "password", .value = string(32, 'S')})
                  .sentence,
              StartsWith("the value is refused; this key takes a text of at most 31 characters"));
}

TEST(SetOfAKnownKey, a_refusal_never_tells_a_secret) {
  const answer refused =
      screen(set_request{.section = "WEBLOG", .key = "password", .value = string(40, 'S')});
  EXPECT_EQ(refused.code, 212U);
  EXPECT_EQ(refused.sentence.find('S'), string::npos) << refused.sentence;
}
