#include <gtest/gtest.h>
#include <proreflax/wireless.h>

#include <climits>

namespace {

struct channel_row {
  int region;
  int first;
  int count;
};

}  // namespace

TEST(Channels, of_each_region_are_those_of_the_table) {
  for (const channel_row& row :
       {channel_row{1, 1, 11}, {2, 1, 13}, {3, 10, 4}, {4, 1, 14}, {5, 10, 2}}) {
    int first = 0;
    int count = 0;
    EXPECT_EQ(gui_get_wls_channel_info(row.region, &first, &count), 0U);
    EXPECT_EQ(first, row.first) << row.region;
    EXPECT_EQ(count, row.count) << row.region;
  }
}

TEST(Channels, of_any_other_region_are_1_to_14) {
  for (const int region : {0, 6, -1, 7, 256 + 3, INT_MAX, INT_MIN}) {
    int first = 0;
    int count = 0;
    EXPECT_EQ(gui_get_wls_channel_info(region, &first, &count), 0U);
    EXPECT_EQ(first, 1) << region;
    EXPECT_EQ(count, 14) << region;
  }
}

TEST(Channels, are_told_as_far_as_they_are_wanted) {
  int first = 0;
  int count = 0;
  EXPECT_EQ(gui_get_wls_channel_info(3, &first, nullptr), 0U);
  EXPECT_EQ(first, 10);
  EXPECT_EQ(gui_get_wls_channel_info(3, nullptr, &count), 0U);
  EXPECT_EQ(count, 4);
}

TEST(FirmwareVersionOfTheDriver, is_not_told) {
  char version[4] = "abc";
  int size = 4;
  EXPECT_EQ(gui_get_wls_firmversion(version, &size), 1U);
  EXPECT_STREQ(version, "abc");
  EXPECT_EQ(size, 4);
  EXPECT_EQ(gui_get_wls_firmversion(nullptr, nullptr), 1U);
}
