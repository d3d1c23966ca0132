#include "accessors/section_table.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <set>
#include <string>

#include "accessors/section_list.h"
#include "accessors/section_rows.h"
#include "transport/names.h"

using namespace proreflax;

/// What packing has to get right: gaps, the largest capacity, the largest count, the longest key.
struct extremes {
  std::uint8_t a_small_one;
  std::uint32_t behind_a_gap;
  char largest[capacity_max];
  std::uint8_t next_to_it;
  std::uint16_t behind_another_gap;
  unsigned char a_name_that_with_its_index_has_49_characters[255][98];
};

namespace proreflax {

template <>
struct section<extremes> {
  using record = extremes;
  static constexpr char name[] = "A_NAME_OF_24_CHARACTERS_";
  // clang-format off
  static constexpr row rows[] = {
      FIELD("a_small_one", a_small_one),
      IP_FIELD("behind_a_gap", behind_a_gap),
      FIELD("largest", largest),
      FIELD("next_to_it", next_to_it),
      FIELD("behind_another_gap", behind_another_gap),
      FIELD("a_name_that_with_its_index_has_49_characters[%d]",
            a_name_that_with_its_index_has_49_characters),
  };
  // clang-format on
};

}  // namespace proreflax

namespace {

bool equal(const field& one, const field& other) {
  return std::string{one.name} == other.name && one.type == other.type &&
         one.count == other.count && one.capacity == other.capacity && one.offset == other.offset;
}

}  // namespace

TEST(SectionTable, a_packed_table_reads_as_its_rows) {
  const section_table table = table_of<extremes>();
  EXPECT_STREQ(table.name(), "A_NAME_OF_24_CHARACTERS_");
  std::size_t fields = 0;
  for (const field& each : table) {
    ASSERT_LT(fields, std::size(section<extremes>::rows));
    EXPECT_TRUE(equal(each, section<extremes>::rows[fields].member)) << each.name;
    ++fields;
  }
  EXPECT_EQ(fields, std::size(section<extremes>::rows));
}

TEST(SectionTable, offsets_are_those_of_the_record) {
  std::map<std::string, std::size_t> offsets;
  for (const field& each : table_of<extremes>()) {
    offsets[each.name] = each.offset;
  }
  EXPECT_EQ(offsets["behind_a_gap"], offsetof(extremes, behind_a_gap));
  EXPECT_EQ(offsets["behind_another_gap"], offsetof(extremes, behind_another_gap));
  EXPECT_EQ(offsets["next_to_it"], offsetof(extremes, next_to_it));
}

TEST(SectionTable, the_key_of_a_scalar_is_its_name_and_that_of_an_element_has_the_index) {
  key_string key;
  const field scalar{"opt", value_type::string, 0, 256, 0};
  EXPECT_STREQ(format_key(scalar, 0, key), "opt");
  const field array{"macFilters", value_type::binary, 80, 6, 0};
  EXPECT_STREQ(format_key(array, 0, key), "macFilters[0]");
  EXPECT_STREQ(format_key(array, 9, key), "macFilters[9]");
  EXPECT_STREQ(format_key(array, 10, key), "macFilters[10]");
  EXPECT_STREQ(format_key(array, 79, key), "macFilters[79]");
  EXPECT_STREQ(format_key(array, 100, key), "macFilters[100]");
}

TEST(SectionTable, the_longest_formatted_key_fits_its_buffer) {
  key_string key;
  const std::string longest(key_max, 'k');
  const field array{longest.c_str(), value_type::u8, 255, 1, 0};
  EXPECT_EQ(format_key(array, 255, key), longest + "[255]");
}

TEST(SectionList, has_every_section_once) {
  std::set<std::string> names;
  for (const listed_section& each : all_sections()) {
    EXPECT_TRUE(names.insert(each.table.name()).second) << each.table.name();
  }
  EXPECT_EQ(names.size(), 45U);
}

TEST(SectionList, every_formatted_key_obeys_the_rules_of_keys) {
  key_string key;
  for (const listed_section& each : all_sections()) {
    for (const field& which : each.table) {
      for (unsigned i = 0; i < (which.is_array() ? which.count : 1U); ++i) {
        EXPECT_TRUE(is_key(format_key(which, i, key))) << each.table.name() << " " << which.name;
      }
    }
  }
}

TEST(SectionList, the_last_field_ends_where_the_record_does) {
  for (const listed_section& each : all_sections()) {
    std::size_t end = 0;
    for (const field& which : each.table) {
      end = which.end();
    }
    EXPECT_EQ(aligned(end, each.record_alignment), each.record_bytes) << each.table.name();
  }
}
