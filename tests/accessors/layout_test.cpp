// The records of the listing, as this machine's C and C++ compilers lay them out. Other targets are
// checked by layout_check.c, which is only compiled.
#include "tests/accessors/layout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/accessors/listing.h"

namespace {

std::vector<std::string> lines_of(const layout_row* row) {
  std::vector<std::string> lines;
  for (; row->record != nullptr; ++row) {
    const std::string name =
        row->record + (row->member == nullptr ? "" : "." + std::string{row->member});
    lines.push_back(name + " at " + std::to_string(row->offset) + ", " +
                    std::to_string(row->bytes) + " bytes");
  }
  return lines;
}

std::vector<std::string> listed_lines() {
  std::vector<layout_row> rows;
  std::vector<std::string> members;
  members.reserve(1000);
  for (const listed_section& section : listed_sections()) {
    if (!section.has_record()) {
      continue;
    }
    rows.push_back({section.record.c_str(), nullptr, 0, section.size});
    for (const listed_field& field : section.fields) {
      members.push_back(field.member());
      rows.push_back({section.record.c_str(), members.back().c_str(), field.offset,
                      field.bytes * field.count});
    }
  }
  rows.push_back({nullptr, nullptr, 0, 0});
  return lines_of(rows.data());
}

}  // namespace

TEST(RecordLayout, is_as_listed_in_c) {
  EXPECT_THAT(lines_of(layout_in_c), testing::ElementsAreArray(listed_lines()));
}

TEST(RecordLayout, is_as_listed_in_cpp) {
  EXPECT_THAT(lines_of(layout_in_cpp), testing::ElementsAreArray(listed_lines()));
}

TEST(RecordLayout, bears_the_getters_name_without_its_prefix) {
  for (const listed_section& section : listed_sections()) {
    const std::string_view getter = section.getter;
    const std::size_t prefix = getter.substr(0, 4) == "gui_" ? 8 : 4;
    if (section.has_record()) {
      EXPECT_EQ(getter.substr(prefix), section.record);
    }
  }
}
