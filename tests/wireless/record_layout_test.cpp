#include "tests/wireless/record_layout.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/wireless.h>

#include <vector>

TEST(WirelessRecords, have_the_same_layout_in_c_and_cpp) {
  const std::vector<std::size_t> in_c(wireless_layout_in_c,
                                      wireless_layout_in_c + wireless_layout_length);
  const std::vector<std::size_t> in_cpp{WIRELESS_LAYOUT};
  EXPECT_EQ(in_c, in_cpp);
}

TEST(WirelessRecords, have_their_fields_in_order_without_gaps) {
  EXPECT_THAT((std::vector<std::size_t>{WIRELESS_LAYOUT}),
              testing::ElementsAre(0, 4, 8, 12, 16, 20, 24, 28, 32, 53, 4152,  // status
                                   0, 4, 10, 92,                               // event
                                   0, 4, 12));                                 // station
}
