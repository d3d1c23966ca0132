#include "tests/library/record_layout.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include "tests/support/files.h"

namespace fs = std::filesystem;

TEST(RecordLayout, is_the_same_in_c_and_in_cpp) {
  std::size_t rows = 0;
  for (; layout_in_c[rows].what != nullptr && layout_in_cpp[rows].what != nullptr; ++rows) {
    EXPECT_STREQ(layout_in_c[rows].what, layout_in_cpp[rows].what);
    EXPECT_EQ(layout_in_c[rows].bytes, layout_in_cpp[rows].bytes) << layout_in_c[rows].what;
  }
  EXPECT_GT(rows, 0U);
  EXPECT_EQ(layout_in_c[rows].what, layout_in_cpp[rows].what) << "one list is longer";
}

TEST(RecordLayout, is_as_laid_down) {
  for (const layout_row* row = layout_in_c; row->what != nullptr; ++row) {
    EXPECT_EQ(row->bytes, sizeof(void*) == 4 ? row->on_32 : row->on_64) << row->what;
  }
}

TEST(RecordLayout, is_looked_at_for_every_record_of_the_public_headers) {
  std::set<std::string> seen;
  for (const layout_row* row = layout_in_c; row->what != nullptr; ++row) {
    seen.insert(row->what);
  }
  const std::regex record_end{R"(\n\} (\w+);)"};
  int records = 0;
  for (const auto& header : fs::directory_iterator{PROREFLAX_SOURCE_DIR "/include/proreflax"}) {
    if (header.path().filename() == "sections.h") {
      continue;  // the sections' records have a listing of their own
    }
    const std::string text = files::text_of(header.path());
    for (std::sregex_iterator each{text.begin(), text.end(), record_end}, end; each != end;
         ++each) {
      ++records;
      EXPECT_TRUE(seen.count("size of " + (*each)[1].str())) << (*each)[1];
    }
  }
  EXPECT_GE(records, 6);
}
