#include "service/reply.h"

#include <gtest/gtest.h>
#include <proreflax/store.h>

#include <string>
#include <vector>

#include "store/ini_text.h"
#include "store/section_store.h"
#include "tests/support/device_root.h"
#include "tests/support/request_queue.h"

using namespace proreflax;

namespace {

constexpr std::int32_t asker = 4711;
constexpr std::uint32_t refused = 204;

bytes header(std::uint32_t operation, std::uint16_t section, std::uint16_t key, std::uint16_t value,
             std::uint16_t value_len) {
  return row(i32(asker), u32(operation), u16(section), u16(key), u16(value), u16(value_len));
}

bytes get(std::string_view section, std::string_view key) {
  const auto key_off = static_cast<std::uint16_t>(section.size() + 1);
  const auto value_off = static_cast<std::uint16_t>(key_off + key.size() + 1);
  return row(header(10, 0, key_off, value_off, 0), text(section), text(key));
}

bytes set(std::string_view section, std::string_view key, std::string_view value) {
  const auto key_off = static_cast<std::uint16_t>(section.size() + 1);
  const auto value_off = static_cast<std::uint16_t>(key_off + key.size() + 1);
  const auto value_len = static_cast<std::uint16_t>(value.size() + 1);
  return row(header(9, 0, key_off, value_off, value_len), text(section), text(key), text(value));
}

bytes add_app(std::string_view name) {
  return row(header(1, 0, 0, 0, 0), text(name));
}

/// The store that each test begins with, and what it is asked.
class Reply : public testing::Test {
 protected:
  Reply() {
    device_root::clear();
    device_root::write("/etc/config-file.ini",
                       "[LAN]\nConnType=1\nLanIPAddr=192.168.62.1\nempty=\n");
    load();
  }
  ~Reply() override { config_center_close(); }

  static void load() {
    EXPECT_EQ(config_load_file(device_root::path("/etc/config-file.ini").c_str()), 0U);
  }

  static reply answer(const bytes& request) {
    // In memory of its own, so that the sanitizers see a step beyond its end.
    const bytes exactly(request);
    return make_reply(reinterpret_cast<const char*>(exactly.data()), exactly.size());
  }

  static bytes answer_text(const bytes& request) {
    const reply given = answer(request);
    return {given.text, given.text + given.length};
  }

  static std::uint32_t result(const bytes& request) { return result_of(answer(request)); }

  static std::string stored(const char* section, const char* key) {
    char value[256];
    std::uint32_t length = 0;
    const std::uint32_t result_code = cfc_get_val(section, key, value, &length);
    return result_code == 0 ? std::string(value, length) : "result " + std::to_string(result_code);
  }
};

}  // namespace

TEST_F(Reply, to_a_get_carries_the_value_behind_the_key_without_a_terminator) {
  EXPECT_EQ(answer_text(get("LAN", "LanIPAddr")),
            row(i32(asker), u32(0), u16(0), u16(4), u16(14), u16(12), text("LAN"),
                text("LanIPAddr"), raw("192.168.62.1")));
}

TEST_F(Reply, goes_out_under_the_type_that_the_asker_waits_for) {
  EXPECT_EQ(answer(get("LAN", "ConnType")).type, asker);
}

TEST_F(Reply, to_a_get_of_an_empty_value_has_length_0) {
  EXPECT_EQ(answer_text(get("LAN", "empty")),
            row(i32(asker), u32(0), u16(0), u16(4), u16(10), u16(0), text("LAN"), text("empty")));
}

TEST_F(Reply, to_a_get_that_fails_is_a_bare_header) {
  EXPECT_EQ(answer_text(get("LAN", "NoKey")),
            row(i32(asker), u32(201), u16(0), u16(4), u16(10), u16(0)));
  EXPECT_EQ(answer_text(get("WAN", "ConnType")),
            row(i32(asker), u32(209), u16(0), u16(4), u16(13), u16(0)));
}

TEST_F(Reply, to_a_get_of_200_characters_fits_and_of_201_gives_212) {
  ASSERT_EQ(cfc_set_val("LAN", "ConnType", std::string(200, 'x').c_str()), 0U);
  EXPECT_EQ(answer(get("LAN", "ConnType")).length, 16U + 13U + 200U);
  ASSERT_EQ(cfc_set_val("LAN", "ConnType", std::string(201, 'x').c_str()), 0U);
  EXPECT_EQ(result(get("LAN", "ConnType")), 212U);
  EXPECT_EQ(answer(get("LAN", "ConnType")).length, 16U);
}

TEST_F(Reply, to_a_get_takes_a_value_offset_of_the_askers_choice_within_what_it_sent) {
  bytes request = row(header(10, 0, 4, 0, 0), text("LAN"), text("ConnType"));
  EXPECT_EQ(answer_text(request), row(header(0, 0, 4, 0, 1), raw("1")));
  request = row(header(10, 0, 4, 14, 0), text("LAN"), text("ConnType"));
  EXPECT_EQ(answer_text(request), row(header(refused, 0, 4, 14, 0)));
}

TEST_F(Reply, to_a_set_stores_the_value_and_is_a_bare_header) {
  EXPECT_EQ(answer_text(set("LAN", "LanIPAddr", "10.0.0.5")),
            row(i32(asker), u32(0), u16(0), u16(4), u16(14), u16(0)));
  EXPECT_EQ(stored("LAN", "LanIPAddr"), "10.0.0.5");
  EXPECT_TRUE(g_config_mgmt.flags & CFG_DIRTY);
}

TEST_F(Reply, to_a_set_in_an_unknown_section_is_209) {
  EXPECT_EQ(result(set("WAN", "ConnType", "1")), 209U);
}

TEST_F(Reply, to_a_set_takes_the_longest_names_and_value_and_no_longer_ones) {
  ASSERT_NE(segment_alloc(std::string(24, 's').c_str()), nullptr);
  const std::string section(24, 's');
  const std::string key(49, 'k');
  const std::string value(199, 'v');
  EXPECT_EQ(set(section, key, value).size(), request_text_max);
  EXPECT_EQ(result(set(section, key, value)), 0U);
  EXPECT_EQ(stored(section.c_str(), key.c_str()), value);
  EXPECT_EQ(result(set(section + "s", "k", value)), refused);
  EXPECT_EQ(result(set("LAN", key + "k", value)), refused);
  EXPECT_EQ(result(set("LAN", "k", value + "v")), refused);
}

TEST_F(Reply, to_a_set_with_a_line_break_in_its_value_is_204) {
  EXPECT_EQ(result(set("LAN", "ConnType", "1\n[DDNS]")), refused);
  EXPECT_EQ(result(set("LAN", "ConnType", "1\r")), refused);
  EXPECT_EQ(stored("LAN", "ConnType"), "1");
}

TEST_F(Reply, to_a_set_with_a_forbidden_key_is_204) {
  for (const char* key : {"", "[a", "a=b", "a*b", "a\nb", "a\rb"}) {
    EXPECT_EQ(result(set("LAN", key, "value")), refused) << key;
  }
  EXPECT_EQ(result(set("LAN", "a[b", "value")), 0U);
}

TEST_F(Reply, to_a_set_of_an_empty_value_under_a_key_of_one_character_is_204) {
  EXPECT_EQ(result(set("LAN", "a", "")), refused);
  EXPECT_EQ(stored("LAN", "a"), "result 201");
  EXPECT_EQ(result(set("LAN", "ab", "")), 0U);
  EXPECT_EQ(result(set("LAN", "a", "1")), 0U);
  EXPECT_EQ(result(set("LAN", "a", "")), refused);
  EXPECT_EQ(stored("LAN", "a"), "1");
}

TEST_F(Reply, to_a_set_whose_value_length_and_terminator_disagree_is_204) {
  const bytes value = row(text("LAN"), text("ConnType"), text("22"));
  EXPECT_EQ(result(row(header(9, 0, 4, 13, 3), value)), 0U);
  for (const std::uint16_t length : std::vector<std::uint16_t>{0, 1, 2, 4, 200, 65535}) {
    EXPECT_EQ(result(row(header(9, 0, 4, 13, length), value)), refused) << length;
  }
  EXPECT_EQ(result(row(header(9, 0, 4, 13, 2), text("LAN"), text("ConnType"), raw("22"))), refused)
      << "no terminator at all";
  EXPECT_EQ(result(row(header(9, 0, 4, 13, 4), text("LAN"), text("ConnType"), text("2"), text(""))),
            refused)
      << "two terminators";
}

TEST_F(Reply, with_an_offset_beyond_what_arrived_is_204) {
  const bytes names = row(text("LAN"), text("ConnType"), text("2"));
  for (const std::uint16_t beyond : std::vector<std::uint16_t>{15, 16, 200, 65535}) {
    EXPECT_EQ(result(row(header(10, beyond, 4, 13, 0), names)), refused) << beyond;
    EXPECT_EQ(result(row(header(10, 0, beyond, 13, 0), names)), refused) << beyond;
    EXPECT_EQ(result(row(header(9, 0, 4, beyond, 2), names)), refused) << beyond;
    EXPECT_EQ(result(row(header(1, beyond, 0, 0, 0), names)), refused) << beyond;
  }
  EXPECT_EQ(stored("LAN", "ConnType"), "1");
}

TEST_F(Reply, to_names_without_a_terminator_is_204) {
  EXPECT_EQ(result(row(header(10, 0, 4, 12, 0), text("LAN"), raw("ConnType"))), refused);
  EXPECT_EQ(result(row(header(1, 0, 0, 0, 0), raw("APP"))), refused);
  EXPECT_EQ(result(header(10, 0, 0, 0, 0)), refused) << "no payload at all";
}

TEST_F(Reply, to_an_application_makes_its_section_once) {
  EXPECT_EQ(answer_text(add_app("WEBSERVER")), header(0, 0, 0, 0, 0));
  const cfg_segment* const section = segment_find("WEBSERVER");
  ASSERT_NE(section, nullptr);
  EXPECT_EQ(result(add_app("WEBSERVER")), 0U);
  EXPECT_EQ(segment_find("WEBSERVER"), section);
  EXPECT_EQ(result(set("WEBSERVER", "port", "80")), 0U);
}

TEST_F(Reply, to_an_application_with_a_bad_name_is_204) {
  for (const std::string& name :
       {std::string{}, std::string(25, 'n'), std::string{"a\nb"}, std::string{"a\rb"}}) {
    EXPECT_EQ(result(add_app(name)), refused) << name;
  }
  EXPECT_EQ(result(add_app(std::string(24, 'n'))), 0U);
}

TEST_F(Reply, from_a_store_that_is_not_loaded_is_209) {
  config_center_close();
  EXPECT_EQ(result(get("LAN", "ConnType")), 209U);
  EXPECT_EQ(result(set("LAN", "ConnType", "1")), 209U);
  EXPECT_EQ(result(add_app("APP")), 209U);
  EXPECT_EQ(g_config_mgmt.first, nullptr);
}

TEST_F(Reply, to_a_flush_or_a_reset_waits_for_its_effect) {
  EXPECT_EQ(answer(header(12, 0, 0, 0, 0)).before, effect::flush);
  EXPECT_EQ(answer(header(16, 0, 0, 0, 0)).before, effect::defaults);
  EXPECT_EQ(answer(get("LAN", "ConnType")).before, effect::none);
  EXPECT_EQ(answer_text(header(12, 0, 0, 0, 0)), header(0, 0, 0, 0, 0));
}

TEST_F(Reply, takes_the_result_of_its_effect) {
  reply given = answer(header(12, 0, 0, 0, 0));
  set_result(given, 222);
  EXPECT_EQ(result_of(given), 222U);
  EXPECT_EQ(bytes(given.text, given.text + given.length), header(222, 0, 0, 0, 0));
}

TEST_F(Reply, to_an_unknown_operation_is_204) {
  for (const std::uint32_t operation : {0U, 2U, 8U, 11U, 13U, 15U, 17U, 0xFFFFFFFFU}) {
    EXPECT_EQ(answer_text(header(operation, 0, 0, 0, 0)), header(refused, 0, 0, 0, 0)) << operation;
  }
}

TEST_F(Reply, to_a_request_without_a_whole_header_is_204_if_it_names_its_asker) {
  const bytes whole = header(12, 0, 0, 0, 0);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const reply given = answer({whole.begin(), whole.begin() + static_cast<long>(length)});
    EXPECT_EQ(given.type, length < 4 ? 0 : asker) << length;
    EXPECT_EQ(given.before, effect::none);
    if (length >= 4) {
      EXPECT_EQ(given.length, 16U);
      EXPECT_EQ(result_of(given), refused);
    }
  }
}

TEST_F(Reply, is_none_to_an_asker_that_no_process_can_be) {
  for (const std::int32_t nobody : {-2147483647 - 1, -1, 0, 1, 2}) {
    const bytes request = row(i32(nobody), u32(12), u32(0), u32(0));
    EXPECT_EQ(answer(request).type, 0) << nobody;
    EXPECT_EQ(answer(request).before, effect::none) << nobody;
  }
  EXPECT_EQ(answer(row(i32(3), u32(12), u32(0), u32(0))).type, 3);
}

TEST_F(Reply, to_a_request_longer_than_any_can_be_is_204) {
  bytes request = set("LAN", "ConnType", "2");
  request.resize(request_text_max);
  EXPECT_EQ(result(request), 0U);
  request = set("LAN", "ConnType", "3");
  request.resize(request_text_max + 1);
  EXPECT_EQ(result(request), refused);
  EXPECT_EQ(stored("LAN", "ConnType"), "2");
}

TEST_F(Reply, to_every_shortened_request_is_204_and_changes_nothing) {
  const bytes request = set("LAN", "ConnType", "2");
  for (std::size_t length = 4; length < request.size(); ++length) {
    EXPECT_EQ(result({request.begin(), request.begin() + static_cast<long>(length)}), refused);
  }
  EXPECT_EQ(stored("LAN", "ConnType"), "1");
}
