#include <gtest/gtest.h>
#include <proreflax/wireless.h>

#include <cstdlib>
#include <string>

#include "tests/support/device_root.h"
#include "tests/support/guarded_memory.h"
#include "wireless/driver_text.h"

using namespace proreflax;

namespace {

const std::string ten_lines =
    "recv_unicast=11\n"
    "recv_multicast=12\n"
    "recv_dropped=13\n"
    "recv_failed=14\n"
    "trans_unicast=15\n"
    "trans_multicast=16\n"
    "trans_dropped=17\n"
    "trans_failed=18\n"
    "mac_addr=00:0C:43:28:60:10\n"
    "if_status=up\n";

/// A status record whose bytes are all set, between guarded pages, and what a text makes of it.
class Status : public testing::Test {
 protected:
  std::uint32_t parse(std::string_view characters) {
    return parse_wls_status(text_memory.text(characters), &status);
  }

  /// Ten lines: the given one, and nine that name nothing.
  std::uint32_t parse_line(const std::string& line) {
    std::string characters = line + "\n";
    for (int i = 0; i < 9; ++i) {
      characters += "other=1\n";
    }
    return parse(characters);
  }

  guarded_memory text_memory{8192};
  guarded_memory record_memory{sizeof(wls_11g_status)};
  wls_11g_status& status = *record_memory.records<wls_11g_status>();
};

constexpr std::uint32_t untouched = 0xA5A5A5A5;

}  // namespace

TEST_F(Status, of_ten_lines_gives_0_and_every_field) {
  EXPECT_EQ(parse(ten_lines), 0U);
  EXPECT_EQ(status.recv_unicast, 11U);
  EXPECT_EQ(status.recv_multicast, 12U);
  EXPECT_EQ(status.recv_dropped, 13U);
  EXPECT_EQ(status.recv_failed, 14U);
  EXPECT_EQ(status.trans_unicast, 15U);
  EXPECT_EQ(status.trans_multicast, 16U);
  EXPECT_EQ(status.trans_dropped, 17U);
  EXPECT_EQ(status.trans_failed, 18U);
  EXPECT_STREQ(status.mac_addr, "00:0C:43:28:60:10");
  EXPECT_STREQ(status.if_status, "up");
}

TEST_F(Status, of_nine_lines_gives_1_with_their_nine_fields_set) {
  EXPECT_EQ(parse(ten_lines.substr(0, ten_lines.find("if_status"))), 1U);
  EXPECT_EQ(status.recv_unicast, 11U);
  EXPECT_EQ(status.trans_failed, 18U);
  EXPECT_STREQ(status.mac_addr, "00:0C:43:28:60:10");
  EXPECT_EQ(static_cast<unsigned char>(status.if_status[0]), 0xA5);
}

TEST_F(Status, never_looks_at_an_eleventh_line) {
  EXPECT_EQ(parse(ten_lines + "recv_unicast=99\n"), 0U);
  EXPECT_EQ(status.recv_unicast, 11U);
}

TEST_F(Status, counts_lines_whose_names_say_nothing) {
  EXPECT_EQ(parse_line("unheard_of=5"), 0U);
  EXPECT_EQ(status.recv_unicast, untouched);
  EXPECT_EQ(status.trans_failed, untouched);
}

TEST_F(Status, of_a_tenth_line_without_its_newline_gives_1_without_that_field) {
  EXPECT_EQ(parse(ten_lines.substr(0, ten_lines.size() - 1)), 1U);
  EXPECT_EQ(static_cast<unsigned char>(status.if_status[0]), 0xA5);
}

TEST_F(Status, name_is_told_by_how_it_begins) {
  EXPECT_EQ(parse_line("recv_unicast_extra=21"), 0U);
  EXPECT_EQ(status.recv_unicast, 21U);
  parse_line("if_status_of_ra0=up");
  EXPECT_STREQ(status.if_status, "up");
  parse_line("mac_addr2=01");
  EXPECT_STREQ(status.mac_addr, "01");
}

TEST_F(Status, name_that_only_begins_like_a_key_is_passed_over) {
  EXPECT_EQ(parse_line("recv_unicas=21"), 0U);
  EXPECT_EQ(parse_line(" recv_unicast=21"), 0U);
  EXPECT_EQ(status.recv_unicast, untouched);
}

TEST_F(Status, each_counter_goes_to_its_own_field_alone) {
  struct row {
    const char* name;
    std::uint32_t wls_11g_status::*field;
  };
  const row rows[] = {{"recv_multicast", &wls_11g_status::recv_multicast},
                      {"recv_unicast", &wls_11g_status::recv_unicast},
                      {"recv_dropped", &wls_11g_status::recv_dropped},
                      {"recv_failed", &wls_11g_status::recv_failed},
                      {"trans_multicast", &wls_11g_status::trans_multicast},
                      {"trans_unicast", &wls_11g_status::trans_unicast},
                      {"trans_dropped", &wls_11g_status::trans_dropped},
                      {"trans_failed", &wls_11g_status::trans_failed}};
  for (const row& set : rows) {
    record_memory.records<wls_11g_status>();
    parse_wls_status_field(&status, set.name, "31");
    for (const row& each : rows) {
      EXPECT_EQ(status.*each.field, each.field == set.field ? 31U : untouched)
          << set.name << " " << each.name;
    }
  }
}

TEST_F(Status, value_is_a_decimal_number_or_0) {
  struct row {
    const char* value;
    std::uint32_t number;
  };
  for (const row& each : {row{"7", 7},
                          {"", 0},
                          {"x", 0},
                          {"12x", 12},
                          {"  12", 12},
                          {"-1", 0xFFFFFFFF},
                          {"0x10", 0},
                          {"010", 10},
                          {"2147483647", 2147483647}}) {
    EXPECT_EQ(parse_line("recv_failed=" + std::string{each.value}), 0U);
    EXPECT_EQ(status.recv_failed, each.number) << each.value;
  }
}

TEST_F(Status, value_out_of_the_range_of_an_int_is_what_atoi_gives_for_it) {
  for (const char* value : {"2147483648", "3000000000", "4294967295", "4294967296", "-3000000000",
                            "99999999999999999999"}) {
    EXPECT_EQ(parse_line("recv_failed=" + std::string{value}), 0U);
    EXPECT_EQ(status.recv_failed, static_cast<std::uint32_t>(std::atoi(value))) << value;
  }
  if (sizeof(long) == 8) {
    EXPECT_EQ(parse_line("recv_failed=3000000000"), 0U);
    EXPECT_EQ(status.recv_failed, 3000000000U);
  }
}

TEST_F(Status, value_runs_from_the_first_equals_sign_to_the_newline) {
  EXPECT_EQ(parse_line("if_status=a=b c"), 0U);
  EXPECT_STREQ(status.if_status, "a=b c");
}

TEST_F(Status, mac_address_keeps_at_most_20_characters) {
  EXPECT_EQ(parse_line("mac_addr=01234567890123456789"), 0U);
  EXPECT_STREQ(status.mac_addr, "01234567890123456789");
  EXPECT_EQ(parse_line("mac_addr=abcdefghijabcdefghijX"), 0U);
  EXPECT_STREQ(status.mac_addr, "abcdefghijabcdefghij");
  EXPECT_EQ(static_cast<unsigned char>(status.if_status[0]), 0xA5);
}

TEST_F(Status, interface_status_is_never_cut) {
  const std::string longest(4095 - std::string{"if_status=\n"}.size(), 'u');
  EXPECT_EQ(parse("if_status=" + longest + "\n"), 1U);
  EXPECT_EQ(status.if_status, longest);
}

TEST_F(Status, name_of_32_characters_and_more_counts_as_its_first_31) {
  EXPECT_EQ(parse_line("recv_unicast" + std::string(20, '_') + "=41"), 0U);
  EXPECT_EQ(status.recv_unicast, 41U);
  EXPECT_EQ(parse_line("recv_failed" + std::string(3000, '_') + "=42"), 0U);
  EXPECT_EQ(status.recv_failed, 42U);
  EXPECT_EQ(parse_line(std::string(32, '_') + "trans_failed=43"), 0U);
  EXPECT_EQ(status.trans_failed, untouched);
}

TEST_F(Status, name_reaches_back_over_lines_without_an_equals_sign) {
  EXPECT_EQ(parse_line("recv_failed\nrecv_dropped=5"), 0U);
  EXPECT_EQ(status.recv_failed, 5U);
  EXPECT_EQ(status.recv_dropped, untouched);
}

TEST_F(Status, every_prefix_of_a_text_stays_inside_text_and_record) {
  for (std::size_t length = 0; length <= ten_lines.size(); ++length) {
    EXPECT_EQ(parse(ten_lines.substr(0, length)), length == ten_lines.size() ? 0U : 1U) << length;
  }
}

TEST_F(Status, text_ends_at_a_nul) {
  std::string characters = ten_lines;
  characters[characters.find("15")] = '\0';
  EXPECT_EQ(parse(characters), 1U);
  EXPECT_EQ(status.recv_failed, 14U);
  EXPECT_EQ(status.trans_unicast, untouched);
}

TEST_F(Status, null_gives_1) {
  EXPECT_EQ(gui_get_wls_11g_status(nullptr), 1U);
}

TEST_F(Status, is_read_from_proc_wireless) {
  device_root::clear();
  device_root::write("/proc/wireless", ten_lines + "more\n");
  EXPECT_EQ(gui_get_wls_11g_status(&status), 0U);
  EXPECT_EQ(status.recv_unicast, 11U);
  EXPECT_STREQ(status.if_status, "up");
}
