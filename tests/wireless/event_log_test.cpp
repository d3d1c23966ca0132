#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/wireless.h>

#include <cstdlib>
#include <string>

#include "tests/support/device_root.h"
#include "tests/support/guarded_memory.h"
#include "wireless/driver_text.h"

using namespace proreflax;
using testing::ElementsAre;

namespace {

const std::string header_of_two = "Event count: 2\n";
const std::string first_row = "[log] 7 00:0C:43:28:60:11 associated\n";
const std::string second_row = "[log] 8 00:0C:43:28:60:12 left\n";

constexpr int untouched = static_cast<int>(0xA5A5A5A5);

/// A table whose bytes are all set, with a guarded page right behind its last row.
class EventLog : public testing::Test {
 protected:
  std::uint32_t parse(std::string_view characters) {
    return parse_wls_event_log(text_memory.text(characters), characters.size(), &count, table);
  }

  /// The message of a row that carries these characters.
  std::string message_of(const std::string& characters) {
    EXPECT_EQ(parse("Event count: 1\n[log] 1 00:0C:43:28:60:11" + characters + "\n"), 0U);
    return table[0].message;
  }

  guarded_memory text_memory{8192};
  guarded_memory table_memory{sizeof(wls_event_log_entry) * WLS_EVENT_LOG_ROWS_MAX};
  wls_event_log_entry* table = table_memory.records<wls_event_log_entry>(WLS_EVENT_LOG_ROWS_MAX);
  int count = untouched;
};

/// 1 without a whole first line's number, and when the prefix ends between the beginning of a row,
/// its lead not counted, and the first ':' of its address.
std::uint32_t expected_of_prefix(const std::string& whole, std::size_t length) {
  if (length < 14) {
    return 1;
  }
  const std::string prefix = whole.substr(0, length);
  const std::size_t newline = prefix.rfind('\n');
  if (newline == std::string::npos || length == whole.size()) {
    return 0;
  }
  const bool is_first_row = newline == prefix.find('\n');
  const bool has_begun = is_first_row || length - newline > 7;
  return has_begun && prefix.find(':', newline) == std::string::npos ? 1 : 0;
}

}  // namespace

TEST_F(EventLog, gives_number_address_and_message_of_each_row) {
  EXPECT_EQ(parse(header_of_two + first_row + second_row), 0U);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(table[0].number, 7);
  EXPECT_THAT(table[0].mac, ElementsAre(0x00, 0x0C, 0x43, 0x28, 0x60, 0x11));
  EXPECT_STREQ(table[0].message, " associated");
  EXPECT_EQ(table[1].number, 8);
  EXPECT_THAT(table[1].mac, ElementsAre(0x00, 0x0C, 0x43, 0x28, 0x60, 0x12));
  EXPECT_STREQ(table[1].message, " left");
  EXPECT_EQ(table[2].number, untouched);
}

TEST_F(EventLog, null_gives_1) {
  EXPECT_EQ(gui_get_wls_event_log_table(&count, nullptr), 1U);
  EXPECT_EQ(gui_get_wls_event_log_table(nullptr, table), 1U);
  EXPECT_EQ(count, untouched);
}

TEST_F(EventLog, shorter_than_14_bytes_gives_1) {
  EXPECT_EQ(parse("Event count: "), 1U);
  EXPECT_EQ(parse(""), 1U);
  EXPECT_EQ(count, untouched);
  EXPECT_EQ(parse("Event count: 0"), 0U);
  EXPECT_EQ(count, 0);
}

TEST_F(EventLog, that_announces_0_or_less_gives_0_with_that_number_and_no_rows) {
  for (const int announced : {0, -1, -20}) {
    EXPECT_EQ(parse("Event count: " + std::to_string(announced) + "\n" + first_row), 0U);
    EXPECT_EQ(count, announced);
    EXPECT_EQ(table[0].number, untouched);
  }
}

TEST_F(EventLog, without_a_newline_has_0_rows) {
  EXPECT_EQ(parse("Event count: 5"), 0U);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(table[0].number, untouched);
}

TEST_F(EventLog, gives_the_announced_rows_alone) {
  EXPECT_EQ(parse("Event count: 1\n" + first_row + second_row), 0U);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(table[0].number, 7);
  EXPECT_EQ(table[1].number, untouched);
}

TEST_F(EventLog, keeps_the_announced_count_when_fewer_rows_follow) {
  EXPECT_EQ(parse("Event count: 9\n" + first_row + second_row), 0U);
  EXPECT_EQ(count, 9);
  EXPECT_EQ(table[1].number, 8);
  EXPECT_EQ(table[2].number, untouched);
}

TEST_F(EventLog, row_without_a_colon_gives_1_with_the_rows_before_it) {
  EXPECT_EQ(parse("Event count: 9\n" + first_row + "[log] 8 no station\n"), 1U);
  EXPECT_EQ(count, 9);
  EXPECT_EQ(table[0].number, 7);
  EXPECT_STREQ(table[0].message, " associated");
  EXPECT_EQ(table[1].number, 8);
  EXPECT_EQ(parse("Event count: 9\n"), 1U);
}

TEST_F(EventLog, ends_with_0_when_fewer_than_7_characters_follow_a_row) {
  EXPECT_EQ(parse("Event count: 9\n" + first_row + "[log] "), 0U);
  EXPECT_EQ(table[1].number, untouched);
  EXPECT_EQ(parse("Event count: 9\n" + first_row + "[log] 8"), 1U);
  EXPECT_EQ(table[1].number, 8);
}

TEST_F(EventLog, last_row_without_its_newline_is_kept_as_far_as_it_goes) {
  EXPECT_EQ(parse(header_of_two + first_row.substr(0, first_row.size() - 1)), 0U);
  EXPECT_STREQ(table[0].message, " associated");
  EXPECT_EQ(parse(header_of_two + "[log] 1 00:0C:43:28:60:11" + std::string(90, 'm')), 0U);
  EXPECT_EQ(table[0].message, std::string(79, 'm'));
  EXPECT_EQ(parse(header_of_two + "[log] 1 00:0C:4"), 0U);
  EXPECT_STREQ(table[0].message, "");
}

TEST_F(EventLog, message_of_exactly_80_characters_is_stored_as_its_first_79) {
  EXPECT_EQ(message_of(std::string(78, 'm')), std::string(78, 'm'));
  EXPECT_EQ(message_of(std::string(79, 'm')), std::string(79, 'm'));
  EXPECT_EQ(message_of(std::string(79, 'm') + "n"), std::string(79, 'm'));
  EXPECT_EQ(message_of(std::string(79, 'm') + "no"), std::string(79, 'm'));
  EXPECT_EQ(message_of(std::string(3000, 'm')), std::string(79, 'm'));
}

TEST_F(EventLog, message_may_be_empty) {
  EXPECT_EQ(message_of(""), "");
}

TEST_F(EventLog, address_stands_around_the_first_colon_of_the_row) {
  EXPECT_EQ(parse("Event count: 1\n[log] -3 at 00:0C:43:28:60:11 12:30\n"), 0U);
  EXPECT_EQ(table[0].number, -3);
  EXPECT_EQ(table[0].mac[5], 0x11);
  EXPECT_STREQ(table[0].message, " 12:30");
}

TEST_F(EventLog, malformed_address_keeps_the_row_and_fills_what_came_before) {
  EXPECT_EQ(parse("Event count: 2\n[log] 1 00:0C:xx:28:60:11 one\n" + second_row), 0U);
  EXPECT_THAT(table[0].mac, ElementsAre(0x00, 0x0C, 0xA5, 0xA5, 0xA5, 0xA5));
  EXPECT_STREQ(table[0].message, " one");
  EXPECT_EQ(table[1].number, 8);
}

TEST_F(EventLog, address_may_begin_in_the_lead_when_the_colon_comes_at_once) {
  EXPECT_EQ(parse("Event count: 1\n[log]1::0C:43:28:60:11 one\n"), 0U);
  EXPECT_THAT(table[0].mac, ElementsAre(0, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5));
}

TEST_F(EventLog, every_prefix_of_a_text_stays_inside_text_and_table) {
  const std::string whole = "Event count: 3\n" + first_row + second_row + first_row;
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    EXPECT_EQ(parse(whole.substr(0, length)), expected_of_prefix(whole, length));
  }
  EXPECT_EQ(count, 3);
}

TEST_F(EventLog, densest_text_fills_the_table_to_its_last_row_and_no_further) {
  // A newline at once, so that the text behind it is both count and rows; then rows of 22 bytes.
  const std::string row = ":..............\n......";
  ASSERT_EQ(row.size(), 22U);
  std::string densest = "\n......:.....999......\n......";
  while (densest.size() < 4095) {
    densest += row;
  }
  EXPECT_EQ(parse(densest.substr(0, 4095)), 0U);
  EXPECT_EQ(count, 999);
  EXPECT_NE(table[WLS_EVENT_LOG_ROWS_MAX - 1].number, untouched);
  EXPECT_EQ(parse(densest + row + row + row + row), 0U);
}

TEST_F(EventLog, bytes_are_counted_beyond_a_nul) {
  std::string characters = "Event count: 0";
  characters[3] = '\0';
  EXPECT_EQ(parse(characters), 0U);
  EXPECT_EQ(count, 0);
  characters.back() = '7';
  EXPECT_EQ(parse(characters + "\n" + first_row), 0U) << "no newline before the first NUL";
  EXPECT_EQ(count, 0);
  EXPECT_EQ(table[0].number, untouched);
}

TEST_F(EventLog, search_for_the_colon_ends_at_a_nul) {
  std::string characters = header_of_two + first_row + second_row;
  characters[characters.find(" 00:0C:43:28:60:12")] = '\0';
  EXPECT_EQ(parse(characters), 1U);
  EXPECT_EQ(table[1].number, 8);
}

TEST_F(EventLog, message_with_a_nul_ends_there_and_is_the_last) {
  std::string characters = header_of_two + first_row + second_row;
  characters[characters.find("ciated")] = '\0';
  EXPECT_EQ(parse(characters), 0U);
  EXPECT_STREQ(table[0].message, " asso");
  EXPECT_EQ(table[1].number, untouched);
}

TEST_F(EventLog, nul_in_the_lead_of_a_row_is_passed) {
  std::string characters = header_of_two + first_row + second_row;
  characters[characters.find("[log] 8") + 2] = '\0';
  EXPECT_EQ(parse(characters), 0U);
  EXPECT_EQ(table[1].number, 8);
  EXPECT_STREQ(table[1].message, " left");
}

TEST_F(EventLog, nul_among_the_last_bytes_counts_as_one_that_remains) {
  const std::string characters = header_of_two + first_row;
  EXPECT_EQ(parse(characters + std::string(6, '\0')), 0U);
  EXPECT_EQ(table[1].number, untouched);
  EXPECT_EQ(parse(characters + std::string(7, '\0')), 1U);
  EXPECT_EQ(table[1].number, 0);
}

TEST_F(EventLog, numbers_are_what_atoi_gives_for_them) {
  for (const char* number : {"4294967297", "-4294967298", "99999999999999999999"}) {
    const int expected = std::atoi(number);
    EXPECT_EQ(parse("Event count: 1\n[log] " + std::string{number} + " 00:0C:43:28:60:11 x\n"), 0U);
    EXPECT_EQ(table[0].number, expected);
    parse("Event count: " + std::string{number} + "\n[log] 1 00:0C:43:28:60:11 x\n");
    EXPECT_EQ(count, expected);
  }
}

TEST_F(EventLog, is_read_from_proc_wirelesslog) {
  device_root::clear();
  device_root::write("/proc/wirelesslog", header_of_two + first_row + second_row);
  EXPECT_EQ(gui_get_wls_event_log_table(&count, table), 0U);
  EXPECT_EQ(count, 2);
  EXPECT_STREQ(table[1].message, " left");
}
