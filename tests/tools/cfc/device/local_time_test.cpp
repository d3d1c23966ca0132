#include "tools/cfc/device/local_time.h"

#include <gtest/gtest.h>

using namespace cfc;

TEST(ShowOffset, has_sign_hours_and_minutes_and_seconds_where_there_are_any) {
  EXPECT_EQ(show_offset(0), "+00:00");
  EXPECT_EQ(show_offset(28800), "+08:00");
  EXPECT_EQ(show_offset(-12600), "-03:30");
  EXPECT_EQ(show_offset(-1), "-00:00:01");
  EXPECT_EQ(show_offset(90000), "+25:00");
}
