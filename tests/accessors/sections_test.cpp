// Sections whose order, holes and limits deserve a sentence each, over the factory file's values.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/sections.h>
#include <proreflax/store.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "store/ini_text.h"
#include "tests/accessors/answering_service.h"

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace {

class Sections : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(proreflax::config_load_file(PROREFLAX_SOURCE_DIR "/device/etc/config-file.ini"), 0U);
    for (const cfg_segment* each = g_config_mgmt.first; each != nullptr; each = each->list_next) {
      const cfg_item* item = each->head;
      do {
        service.holds(cfg_segment_name(each), cfg_item_key(item), cfg_item_value(item));
        item = item->next;
      } while (item != each->head);
    }
    config_center_close();
  }

  answering_service service;
};

template <typename Record>
Record filled_with(unsigned char byte) {
  Record record;
  std::memset(&record, byte, sizeof record);
  return record;
}

/// Whether a field still holds the bytes that the record was filled with.
template <typename Member>
bool untouched(const Member& member) {
  const std::vector<unsigned char> fresh(sizeof member, 0xA5);
  return std::memcmp(&member, fresh.data(), sizeof member) == 0;
}

}  // namespace

TEST_F(Sections, a_missing_camera_in_the_middle_does_not_hide_the_others) {
  service.lacks("SURVEILLANCE", "ip[3]");
  service.holds("SURVEILLANCE", "ip[7]", "192.168.62.77");
  auto info = filled_with<surv_info>(0xA5);
  EXPECT_EQ(gui_get_surv_info(&info), 0U);
  EXPECT_TRUE(untouched(info.ip[3]));
  EXPECT_STREQ(info.ip[7], "192.168.62.77");
  EXPECT_STREQ(info.port[0], "80");
}

TEST_F(Sections, a_missing_last_camera_ends_the_reading) {
  service.lacks("SURVEILLANCE", "ip[7]");
  auto info = filled_with<surv_info>(0xA5);
  EXPECT_EQ(gui_get_surv_info(&info), 201U);
  EXPECT_STREQ(info.ip[0], "192.168.62.1");
  EXPECT_STREQ(info.ip[6], "");
  EXPECT_TRUE(untouched(info.port));
  EXPECT_THAT(service.keys(), Not(Contains("port[0]")));
}

TEST_F(Sections, a_bad_polling_port_leaves_what_stands_behind_it) {
  service.holds("PANEL_POLLING", "port", "eighty");
  auto info = filled_with<pal_polling_info>(0xA5);
  EXPECT_EQ(gui_get_pal_polling_info(&info), 210U);
  EXPECT_STREQ(info.host, "panel.example.net");
  EXPECT_TRUE(untouched(info.url) && untouched(info.url1) && untouched(info.interval));
}

TEST_F(Sections, a_web_port_above_65535_is_refused_behind_the_names) {
  service.holds("SYSTEMUTS", "webs_port", "65536");
  auto info = filled_with<system_uts_info>(0xA5);
  EXPECT_EQ(gui_get_system_uts_info(&info), 205U);
  EXPECT_STREQ(info.realm_name, "Network Camera");
  EXPECT_TRUE(untouched(info.webs_port));
}

TEST_F(Sections, a_malformed_gateway_gives_all_ones_and_ends_the_reading) {
  service.holds("LAN", "LanGw", "192.168.62");
  auto info = filled_with<lan_info>(0xA5);
  EXPECT_EQ(gui_get_lan_info(&info), 0xFFFFFFFFU);
  EXPECT_EQ(info.LanIPAddr, 0xC0A83E01U);
  EXPECT_TRUE(untouched(info.LanGw) && untouched(info.DnsSrv1) && untouched(info.DnsSrv2));
  EXPECT_THAT(service.keys(), ElementsAre("ConnType", "LanIPAddr", "LanNetmask", "LanGw"));
}

TEST_F(Sections, a_zone_of_128_characters_is_refused) {
  service.holds("PANEL_SNTP_TIME", "tz", std::string(128, 'z'));
  auto info = filled_with<sntp_info>(0xA5);
  EXPECT_EQ(gui_get_sntp_info(&info), 212U);
  EXPECT_EQ(info.sync, 1U);
  EXPECT_TRUE(untouched(info.tz) && untouched(info.timesvr));
  service.holds("PANEL_SNTP_TIME", "tz", std::string(127, 'z'));
  EXPECT_EQ(gui_get_sntp_info(&info), 0U);
}

TEST_F(Sections, the_two_cameras_differ_from_the_seventh_field_on) {
  EXPECT_EQ(offsetof(ovcam_info, saturation), 6 * sizeof(std::uint16_t));
  EXPECT_EQ(offsetof(snxcam_info, gamma), 6 * sizeof(std::uint16_t));
  EXPECT_EQ(offsetof(snxcam_info, saturation), 8 * sizeof(std::uint16_t));
}

TEST_F(Sections, an_access_list_with_a_hole_is_read) {
  service.lacks("WLS_ACL", "macFilters[10]");
  wls_mac_ac list = {};
  EXPECT_EQ(gui_get_wls_mac_ac(&list), 0U);
  service.lacks("WLS_ACL", "macFilters[79]");
  EXPECT_EQ(gui_get_wls_mac_ac(&list), 201U);
}

TEST_F(Sections, the_domain_stops_behind_its_array_only_for_the_last_element) {
  service.lacks("WLS_DOMAIN", "test[8]");
  wls_domain_info info = {};
  EXPECT_EQ(gui_get_wls_domain_info(&info), 0U);
  EXPECT_STREQ(info.domain_name, "ETSI");
  service.lacks("WLS_DOMAIN", "test[9]");
  info = {};
  EXPECT_EQ(gui_get_wls_domain_info(&info), 201U);
  EXPECT_STREQ(info.domain_name, "");
}

TEST_F(Sections, the_sensors_take_202_exchanges_data_before_names) {
  sensors_cfg info;
  EXPECT_EQ(get_sensors_cfg(&info), 0U);
  const auto keys = service.keys();
  ASSERT_EQ(keys.size(), 202U);
  for (std::size_t i = 0; i <= 100; ++i) {
    EXPECT_EQ(keys[i], "sdata[" + std::to_string(i) + "]");
    EXPECT_EQ(keys[101 + i], "sname[" + std::to_string(i) + "]");
  }
}

TEST_F(Sections, reporting_goes_by_its_last_url) {
  service.refuses("REPORTING", "url[3]", 208);
  reporting_cfg info;
  EXPECT_EQ(get_reporting_cfg(&info), 0U);
  EXPECT_EQ(service.keys().back(), "opt");
  service.refuses("REPORTING", "url[9]", 209);
  EXPECT_EQ(get_reporting_cfg(&info), 209U);
  EXPECT_EQ(service.keys().back(), "url[9]");
}

TEST_F(Sections, a_bad_gsm_band_leaves_the_texts) {
  service.holds("GSM", "band", "");
  auto info = filled_with<gsm_cfg>(0xA5);
  EXPECT_EQ(get_gsm_cfg(&info), 204U);
  EXPECT_TRUE(untouched(info.pin) && untouched(info.apn) && untouched(info.opt));
  EXPECT_THAT(service.keys(), ElementsAre("band"));
}

// ---- Two processes ------------------------------------------------------------------------------

namespace {

/// A child that writes one record over and over. Ends with the number of writes that failed.
template <typename Record>
pid_t start_writer(std::uint32_t (*set)(const Record*), const Record& record) {
  const pid_t child = fork();
  if (child == 0) {
    int failed = 0;
    for (int i = 0; i < 50; ++i) {
      failed += set(&record) == 0 ? 0 : 1;
    }
    _exit(failed);
  }
  return child;
}

int exit_status(pid_t child) {
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

}  // namespace

TEST_F(Sections, two_writers_never_leave_a_mixed_section) {
  const lan_info one = {1, 1, 1, 1, 1, 1};
  const lan_info two = {2, 2, 2, 2, 2, 2};
  ASSERT_EQ(gui_set_lan_info(&one), 0U);
  const pid_t first = start_writer(gui_set_lan_info, one);
  const pid_t second = start_writer(gui_set_lan_info, two);
  for (int i = 0; i < 50; ++i) {
    lan_info read = {};
    EXPECT_EQ(gui_get_lan_info(&read), 0U);
    EXPECT_TRUE(std::memcmp(&read, &one, sizeof read) == 0 ||
                std::memcmp(&read, &two, sizeof read) == 0);
  }
  EXPECT_EQ(exit_status(first), 0);
  EXPECT_EQ(exit_status(second), 0);
}
