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

const std::string header = "Ralink Assocation Table\n";
const std::string first_row = "[01] 00:0C:43:28:60:11   AID  1 PSM 0\n";
const std::string second_row = "[02] 00:0C:43:28:60:12   AID 12\n";

constexpr int untouched = static_cast<int>(0xA5A5A5A5);

/// A table whose bytes are all set, with a guarded page right behind its last row.
class Associate : public testing::Test {
 protected:
  std::uint32_t parse(std::string_view characters) {
    return parse_wls_associate(text_memory.text(characters), characters.size(), table, &count);
  }

  guarded_memory text_memory{8192};
  guarded_memory table_memory{sizeof(wls_associate_entry) * WLS_ASSOCIATE_ROWS_MAX};
  wls_associate_entry* table = table_memory.records<wls_associate_entry>(WLS_ASSOCIATE_ROWS_MAX);
  int count = untouched;
};

}  // namespace

TEST_F(Associate, gives_address_and_number_of_each_row_and_their_count) {
  EXPECT_EQ(parse("anything=1\n" + header + first_row + second_row), 0U);
  EXPECT_EQ(count, 2);
  EXPECT_THAT(table[0].mac, ElementsAre(0x00, 0x0C, 0x43, 0x28, 0x60, 0x11));
  EXPECT_EQ(table[0].number, 1);
  EXPECT_THAT(table[1].mac, ElementsAre(0x00, 0x0C, 0x43, 0x28, 0x60, 0x12));
  EXPECT_EQ(table[1].number, 12);
  EXPECT_EQ(table[2].number, untouched);
}

TEST_F(Associate, address_is_taken_from_column_5_and_number_from_column_29) {
  EXPECT_EQ(parse(header + "000:00:00:0C:43:28:60:11   987654321\n"), 0U);
  EXPECT_THAT(table[0].mac, ElementsAre(0, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5));
  EXPECT_EQ(parse(header + "44:5500:0C:43:28:60:11:77  9876543\n"), 0U);
  EXPECT_THAT(table[0].mac, ElementsAre(0x00, 0x0C, 0x43, 0x28, 0x60, 0x11));
  EXPECT_EQ(table[0].number, 76543);
}

TEST_F(Associate, null_gives_1) {
  EXPECT_EQ(gui_get_wls_associate(nullptr, &count), 1U);
  EXPECT_EQ(gui_get_wls_associate(table, nullptr), 1U);
  EXPECT_EQ(count, untouched);
}

TEST_F(Associate, without_its_header_gives_1) {
  EXPECT_EQ(parse("anything=1\n" + first_row), 1U);
  EXPECT_EQ(parse(""), 1U);
  EXPECT_EQ(count, untouched);
}

TEST_F(Associate, header_in_the_dictionary_form_of_the_word_gives_1) {
  EXPECT_EQ(parse("Ralink Association Table\n" + first_row), 1U);
}

TEST_F(Associate, header_must_be_followed_by_its_newline_at_once) {
  EXPECT_EQ(parse("Ralink Assocation Table \n" + first_row), 1U);
  EXPECT_EQ(parse("Ralink Assocation Table"), 1U);
}

TEST_F(Associate, table_without_rows_gives_0_and_a_count_of_0) {
  EXPECT_EQ(parse(header), 0U);
  EXPECT_EQ(count, 0);
}

TEST_F(Associate, row_that_is_cut_off_is_left_out) {
  EXPECT_EQ(parse(header + first_row + second_row.substr(0, second_row.size() - 1)), 0U);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(table[1].number, untouched);
}

TEST_F(Associate, file_larger_than_4095_bytes_loses_its_partial_last_row_alone) {
  device_root::clear();
  std::string characters = header;
  while (characters.size() < 4500) {
    characters += first_row;
  }
  device_root::write("/proc/wireless", characters);
  EXPECT_EQ(gui_get_wls_associate(table, &count), 0U);
  EXPECT_EQ(count, static_cast<int>((4095 - header.size()) / first_row.size()));
  EXPECT_EQ(table[count - 1].number, 1);
  EXPECT_EQ(table[count].number, untouched);
}

TEST_F(Associate, text_without_any_newline_gives_1_and_is_not_left_at_its_start) {
  for (const char* characters : {"x", "xyz", "xyzw", "Ralink Assocation Table"}) {
    EXPECT_EQ(parse(characters), 1U);
    guarded_memory page_wide{static_cast<std::size_t>(sysconf(_SC_PAGESIZE))};
    const std::string filling(static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) - 1, 'x');
    EXPECT_EQ(parse_wls_associate(page_wide.text(filling), filling.size(), table, &count), 1U);
  }
}

TEST_F(Associate, malformed_address_keeps_the_row_and_fills_what_came_before) {
  EXPECT_EQ(parse(header + "[01] 00:0C:4x:28:60:11   AID  1\n" + second_row), 0U);
  EXPECT_EQ(count, 2);
  EXPECT_THAT(table[0].mac, ElementsAre(0x00, 0x0C, 0xA5, 0xA5, 0xA5, 0xA5));
  EXPECT_EQ(table[0].number, 1);
}

TEST_F(Associate, short_last_row_is_a_row_without_address_and_number) {
  EXPECT_EQ(parse(header + first_row + "[02]\n"), 0U);
  EXPECT_EQ(count, 2);
  EXPECT_THAT(table[1].mac, ElementsAre(0, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5));
  EXPECT_EQ(table[1].number, 0);
}

TEST_F(Associate, every_prefix_of_a_text_stays_inside_text_and_table) {
  const std::string whole = header + first_row + second_row;
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    EXPECT_EQ(parse(whole.substr(0, length)), length < header.size() ? 1U : 0U) << length;
  }
  EXPECT_EQ(count, 2);
}

TEST_F(Associate, densest_text_fills_the_table_to_its_last_row_and_no_further) {
  EXPECT_EQ(parse(header + std::string(4095 - header.size(), '\n')), 0U);
  EXPECT_EQ(count, WLS_ASSOCIATE_ROWS_MAX);
  EXPECT_EQ(table[WLS_ASSOCIATE_ROWS_MAX - 1].number, 0);
  EXPECT_EQ(parse(header + std::string(5000, '\n')), 0U);
  EXPECT_EQ(count, WLS_ASSOCIATE_ROWS_MAX);
}

TEST_F(Associate, row_that_begins_with_a_nul_ends_the_table) {
  std::string characters = header + first_row + second_row;
  characters[characters.find("[02]")] = '\0';
  EXPECT_EQ(parse(characters), 0U);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(table[1].number, untouched);
}

TEST_F(Associate, row_that_holds_a_nul_is_left_out_and_the_last) {
  std::string characters = header + first_row + second_row + first_row;
  characters[characters.find("AID 12")] = '\0';
  EXPECT_EQ(parse(characters), 0U);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(table[1].number, untouched);
}

TEST_F(Associate, header_after_a_nul_is_not_found) {
  EXPECT_EQ(parse(std::string("x\0", 2) + header + first_row), 1U);
}

TEST_F(Associate, cut_row_is_dropped_by_the_bytes_read_and_not_by_the_first_nul) {
  const std::string whole = header + first_row;
  char* const text = text_memory.text(whole + std::string("\0[02] 0", 7));
  EXPECT_EQ(parse_wls_associate(text, whole.size() + 7, table, &count), 0U);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(text[whole.size()], '\0');
  const std::string nul_in_the_middle = "a\n" + std::string("b\0c\nd", 5);
  char* const cut = text_memory.text(nul_in_the_middle);
  EXPECT_EQ(parse_wls_associate(cut, nul_in_the_middle.size(), table, &count), 1U);
  EXPECT_EQ(std::string(cut, 7), std::string("a\nb\0c\n\0", 7));
}

TEST_F(Associate, text_of_less_than_4_bytes_is_left_as_it_is) {
  char* const three = text_memory.text("a\nb");
  EXPECT_EQ(parse_wls_associate(three, 3, table, &count), 1U);
  EXPECT_STREQ(three, "a\nb");
  char* const four = text_memory.text("a\nbc");
  EXPECT_EQ(parse_wls_associate(four, 4, table, &count), 1U);
  EXPECT_STREQ(four, "a\n");
}

TEST_F(Associate, number_after_a_short_row_is_looked_for_in_the_bytes_read) {
  const std::string short_row = "[01]\n" + std::string("\0", 1) + std::string(23, '.') + "77\n";
  EXPECT_EQ(parse(header + short_row), 0U);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(table[0].number, 77);
}

TEST_F(Associate, number_is_what_atoi_gives_for_it) {
  for (const char* number : {"4294967297", "-4294967298", "99999999999999999999"}) {
    EXPECT_EQ(parse(header + "[01] 00:0C:43:28:60:11   AID " + number + "\n"), 0U);
    EXPECT_EQ(table[0].number, std::atoi(number));
  }
}
