// The texts that come with the device of a development machine, through the readers they are for.
#include <gtest/gtest.h>
#include <proreflax/wireless.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/device_root.h"

namespace {

class SampleTexts : public testing::Test {
 protected:
  SampleTexts() {
    device_root::clear();
    for (const char* name : {"/proc/wireless", "/proc/wirelesslog"}) {
      std::filesystem::copy_file(PROREFLAX_SOURCE_DIR "/device" + std::string{name},
                                 device_root::path(name));
    }
  }
};

bool is_address(const std::uint8_t (&mac)[WLS_MAC_SIZE]) {
  return std::any_of(mac, mac + WLS_MAC_SIZE, [](std::uint8_t byte) { return byte != 0; });
}

}  // namespace

TEST_F(SampleTexts, show_the_status_of_a_busy_access_point) {
  wls_11g_status status{};
  EXPECT_EQ(gui_get_wls_11g_status(&status), 0U);
  for (const std::uint32_t counter :
       {status.recv_unicast, status.recv_multicast, status.recv_dropped, status.recv_failed,
        status.trans_unicast, status.trans_multicast, status.trans_dropped, status.trans_failed}) {
    EXPECT_GT(counter, 0U);
  }
  EXPECT_STREQ(status.mac_addr, "00:0C:43:28:60:10");
  EXPECT_STREQ(status.if_status, "up");
}

TEST_F(SampleTexts, show_as_many_events_as_they_announce) {
  static wls_event_log_entry events[WLS_EVENT_LOG_ROWS_MAX];
  int count = 0;
  ASSERT_EQ(gui_get_wls_event_log_table(&count, events), 0U);
  ASSERT_EQ(count, 12);
  for (int i = 0; i < count; ++i) {
    EXPECT_EQ(events[i].number, i + 1);
    EXPECT_TRUE(is_address(events[i].mac)) << i;
    EXPECT_EQ(events[i].message[0], ' ') << i;
  }
  EXPECT_STREQ(events[9].message, " silent for 300 seconds, dropped");
}

TEST_F(SampleTexts, show_the_stations_that_are_associated) {
  static wls_associate_entry stations[WLS_ASSOCIATE_ROWS_MAX];
  int count = 0;
  ASSERT_EQ(gui_get_wls_associate(stations, &count), 0U);
  ASSERT_EQ(count, 8);
  for (int i = 0; i < count; ++i) {
    EXPECT_TRUE(is_address(stations[i].mac)) << i;
  }
  EXPECT_EQ(stations[7].number, 12);
  EXPECT_EQ(stations[7].mac[5], 0x9A);
}
