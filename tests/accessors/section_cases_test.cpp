// Cases of single sections, as an application meets them: through the records' own members.
#include <gtest/gtest.h>
#include <proreflax/sections.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tests/accessors/listing.h"
#include "tests/accessors/section_values.h"
#include "tests/support/scripted_service.h"

namespace {

constexpr std::uint32_t failure = 77;

/// A record filled with one byte, to tell what was written.
template <typename Record>
Record untouched_record() {
  Record record;
  std::memset(&record, 0x5A, sizeof record);
  return record;
}

template <typename Member>
bool is_untouched(const Member& member) {
  bytes now(sizeof member);
  std::memcpy(now.data(), &member, sizeof member);
  return now == bytes(sizeof member, 0x5A);
}

class SectionCase : public testing::Test {
 protected:
  /// The service holds values of the right kinds for the section that this getter reads.
  void holds_all_of(std::string_view getter) {
    const listed_section& section = section_of(getter);
    hold(service, section, random_values(section, random));
  }

  scripted_service service;
  std::mt19937 random{7};
};

std::vector<std::string> indexed(const std::string& name, int count) {
  std::vector<std::string> keys;
  for (int i = 0; i < count; ++i) {
    keys.push_back(name + "[" + std::to_string(i) + "]");
  }
  return keys;
}

std::vector<std::string> operator+(std::vector<std::string> keys,
                                   const std::vector<std::string>& more) {
  keys.insert(keys.end(), more.begin(), more.end());
  return keys;
}

}  // namespace

// ---- Panel and network --------------------------------------------------------------------------

TEST(SectionCaseWithoutLock, a_getter_gives_the_locks_code_and_leaves_every_byte) {
  auto record = untouched_record<lan_info>();
  EXPECT_EQ(gui_get_lan_info(&record), 230U);
  EXPECT_TRUE(is_untouched(record));
  request_queue queue;
  queue.remove_queue();
  EXPECT_EQ(gui_get_lan_info(&record), 231U);
  EXPECT_TRUE(is_untouched(record));
}

TEST_F(SectionCase, a_surveillance_ip_3_that_is_missing_is_forgotten) {
  holds_all_of("gui_get_surv_info");
  service.lacks("SURVEILLANCE", "ip[3]");
  service.holds("SURVEILLANCE", "ip[7]", "10.0.0.7");
  auto record = untouched_record<surv_info>();
  EXPECT_EQ(gui_get_surv_info(&record), 0U);
  EXPECT_TRUE(is_untouched(record.ip[3]));
  EXPECT_STREQ(record.ip[7], "10.0.0.7");
  EXPECT_EQ(service.take_keys(), indexed("ip", 8) + indexed("port", 8) + indexed("user", 8) +
                                     indexed("passwd", 8) + indexed("name", 8));
}

TEST_F(SectionCase, a_surveillance_ip_7_that_is_missing_ends_the_reading_before_the_ports) {
  holds_all_of("gui_get_surv_info");
  service.holds("SURVEILLANCE", "ip[0]", "10.0.0.1");
  service.holds("SURVEILLANCE", "ip[6]", "10.0.0.6");
  service.lacks("SURVEILLANCE", "ip[7]");
  auto record = untouched_record<surv_info>();
  EXPECT_EQ(gui_get_surv_info(&record), 201U);
  EXPECT_STREQ(record.ip[0], "10.0.0.1");
  EXPECT_STREQ(record.ip[6], "10.0.0.6");
  EXPECT_TRUE(is_untouched(record.ip[7]));
  EXPECT_TRUE(is_untouched(record.port));
  EXPECT_EQ(service.take_keys(), indexed("ip", 8));
}

TEST_F(SectionCase, a_failing_port_of_panel_polling_leaves_the_host_new_and_the_rest_old) {
  holds_all_of("gui_get_pal_polling_info");
  service.holds("PANEL_POLLING", "host", "poll.example");
  service.fails("PANEL_POLLING", "port", failure);
  auto record = untouched_record<pal_polling_info>();
  EXPECT_EQ(gui_get_pal_polling_info(&record), failure);
  EXPECT_STREQ(record.host, "poll.example");
  EXPECT_TRUE(is_untouched(record.port));
  EXPECT_TRUE(is_untouched(record.url));
  EXPECT_TRUE(is_untouched(record.url1));
  EXPECT_TRUE(is_untouched(record.interval));
}

TEST_F(SectionCase, a_webs_port_above_65535_gives_205_behind_the_three_names) {
  holds_all_of("gui_get_system_uts_info");
  service.holds("SYSTEMUTS", "hostname", "camera");
  service.holds("SYSTEMUTS", "domainname", "example");
  service.holds("SYSTEMUTS", "realm_name", "realm");
  service.holds("SYSTEMUTS", "webs_port", "65536");
  auto record = untouched_record<system_uts_info>();
  EXPECT_EQ(gui_get_system_uts_info(&record), 205U);
  EXPECT_STREQ(record.hostname, "camera");
  EXPECT_STREQ(record.domainname, "example");
  EXPECT_STREQ(record.realm_name, "realm");
  EXPECT_TRUE(is_untouched(record.webs_port));
}

TEST_F(SectionCase, a_malformed_gateway_gives_all_ones_and_ends_the_reading) {
  holds_all_of("gui_get_lan_info");
  service.holds("LAN", "LanIPAddr", "192.168.62.1");
  service.holds("LAN", "LanGw", "192.168.62");
  auto record = untouched_record<lan_info>();
  EXPECT_EQ(gui_get_lan_info(&record), 0xFFFFFFFFU);
  EXPECT_EQ(record.LanIPAddr, 0xC0A83E01U);
  EXPECT_TRUE(is_untouched(record.LanGw));
  EXPECT_TRUE(is_untouched(record.DnsSrv1));
  EXPECT_TRUE(is_untouched(record.DnsSrv2));
  EXPECT_EQ(service.take_keys(),
            (std::vector<std::string>{"ConnType", "LanIPAddr", "LanNetmask", "LanGw"}));
}

TEST_F(SectionCase, a_zone_of_128_characters_gives_212_and_leaves_zone_and_server) {
  for (const std::size_t length : {128U, 199U}) {
    holds_all_of("gui_get_sntp_info");
    service.holds("PANEL_SNTP_TIME", "sync", "1");
    service.holds("PANEL_SNTP_TIME", "tz", std::string(length, 'z'));
    auto record = untouched_record<sntp_info>();
    EXPECT_EQ(gui_get_sntp_info(&record), 212U);
    EXPECT_EQ(record.sync, 1U);
    EXPECT_TRUE(is_untouched(record.tz));
    EXPECT_TRUE(is_untouched(record.timesvr));
  }
}

TEST_F(SectionCase, a_number_that_is_none_leaves_0_in_a_field_of_32_bits) {
  holds_all_of("gui_get_pal_wl_info");
  service.holds("PANEL_WIRELESS", "wep_encryption", "on");
  auto record = untouched_record<pal_wl_info>();
  EXPECT_EQ(gui_get_pal_wl_info(&record), 210U);
  EXPECT_EQ(record.wep_encryption, 0U);
  EXPECT_TRUE(is_untouched(record.key_mode));
}

TEST_F(SectionCase, a_section_that_is_missing_gives_209) {
  auto record = untouched_record<upnp_info>();
  EXPECT_EQ(gui_get_upnp_info(&record), 209U);
  EXPECT_TRUE(is_untouched(record));
  EXPECT_EQ(gui_set_upnp_info(&record), 209U);  // a setter does not register it either
  EXPECT_EQ(service.take_keys(), (std::vector<std::string>{"upnpd", "upnpd"}));
}

// ---- Camera and wireless ------------------------------------------------------------------------

TEST_F(SectionCase, the_two_cameras_agree_in_six_fields_and_differ_in_the_seventh) {
  service.holds("SNXCAM", "gamma", "7");
  service.holds("SNXCAM", "saturation", "9");
  service.holds("OVCAM", "saturation", "17");
  for (const auto& [section, keys] : std::vector<std::pair<std::string, std::vector<std::string>>>{
           {"SNXCAM",
            {"framerate", "width", "height", "compress", "brightness", "contrast", "hue",
             "sharpness", "flicker"}},
           {"OVCAM",
            {"framerate", "width", "height", "compress", "brightness", "contrast", "light_freq",
             "mirror", "flip", "led_control"}}}) {
    for (const std::string& key : keys) {
      service.holds(section, key, "1");
    }
  }
  snxcam_info snx{};
  ovcam_info ov{};
  EXPECT_EQ(gui_get_snxcam_info(&snx), 0U);
  EXPECT_EQ(gui_get_ovcam_info(&ov), 0U);
  std::uint16_t snx_fields[11];
  std::uint16_t ov_fields[11];
  static_assert(sizeof snx == sizeof snx_fields && sizeof ov == sizeof ov_fields);
  std::memcpy(snx_fields, &snx, sizeof snx);
  std::memcpy(ov_fields, &ov, sizeof ov);
  EXPECT_EQ(snx_fields[6], 7U);
  EXPECT_EQ(snx.gamma, 7U);
  EXPECT_EQ(snx_fields[8], 9U);
  EXPECT_EQ(snx.saturation, 9U);
  EXPECT_EQ(ov_fields[6], 17U);
  EXPECT_EQ(ov.saturation, 17U);
}

TEST_F(SectionCase, the_wireless_domain_goes_by_its_last_test) {
  holds_all_of("gui_get_wls_domain_info");
  service.holds("WLS_DOMAIN", "domain_name", "ETSI");
  service.lacks("WLS_DOMAIN", "test[8]");
  auto record = untouched_record<wls_domain_info>();
  EXPECT_EQ(gui_get_wls_domain_info(&record), 0U);
  EXPECT_STREQ(record.domain_name, "ETSI");
  service.lacks("WLS_DOMAIN", "test[9]");
  record = untouched_record<wls_domain_info>();
  EXPECT_EQ(gui_get_wls_domain_info(&record), 201U);
  EXPECT_TRUE(is_untouched(record.status));
  EXPECT_TRUE(is_untouched(record.domain_name));
}

TEST_F(SectionCase, a_domain_is_a_number_in_wireless_and_a_text_in_ddns) {
  holds_all_of("gui_get_wireless_config");
  holds_all_of("gui_get_ddns_info");
  service.holds("WIRELESS", "domain", "0x10");
  service.holds("DDNS", "domain", "0x10");
  wireless_config wireless{};
  ddns_info ddns{};
  EXPECT_EQ(gui_get_wireless_config(&wireless), 0U);
  EXPECT_EQ(gui_get_ddns_info(&ddns), 0U);
  EXPECT_EQ(wireless.domain, 16U);
  EXPECT_STREQ(ddns.domain, "0x10");
}

TEST_F(SectionCase, the_authentication_servers_address_is_a_plain_number) {
  holds_all_of("gui_get_wls_cfg_ext");
  service.holds("WLS_EXT", "svr_addr", "192.168.62.9");
  wls_cfg_ext record{};
  EXPECT_EQ(gui_get_wls_cfg_ext(&record), 210U);
  record.svr_addr = 0xC0A83E09;
  EXPECT_EQ(gui_set_wls_cfg_ext(&record), 0U);
  EXPECT_EQ(service.value("WLS_EXT", "svr_addr"), "0xc0a83e09");
}

TEST_F(SectionCase, binary_fields_are_stored_last_byte_first) {
  holds_all_of("gui_get_wireless_config");
  service.holds("WIRELESS", "apmac", "0x665544332211");
  wireless_config record{};
  EXPECT_EQ(gui_get_wireless_config(&record), 0U);
  EXPECT_EQ(std::memcmp(record.apmac, "\x11\x22\x33\x44\x55\x66", 6), 0);
}

// ---- Device, sensors and services ---------------------------------------------------------------

TEST_F(SectionCase, the_sensors_are_202_requests_data_first_then_names) {
  holds_all_of("get_sensors_cfg");
  sensors_cfg record{};
  EXPECT_EQ(get_sensors_cfg(&record), 0U);
  EXPECT_EQ(service.take_keys(), indexed("sdata", 101) + indexed("sname", 101));
  EXPECT_EQ(set_sensors_cfg(&record), 0U);
  EXPECT_EQ(service.take_keys(), indexed("sdata", 101) + indexed("sname", 101));
}

TEST_F(SectionCase, a_reporting_url_3_that_fails_is_forgotten) {
  holds_all_of("get_reporting_cfg");
  service.fails("REPORTING", "url[3]", failure);
  service.holds("REPORTING", "opt", "an option");
  auto record = untouched_record<reporting_cfg>();
  EXPECT_EQ(get_reporting_cfg(&record), 0U);
  EXPECT_TRUE(is_untouched(record.url[3]));
  EXPECT_STREQ(record.opt, "an option");
  EXPECT_EQ(service.take_keys(), std::vector<std::string>{"k_op"} + indexed("url", 10) +
                                     std::vector<std::string>{"opt"});
}

TEST_F(SectionCase, a_reporting_url_9_that_fails_ends_the_reading_before_opt) {
  holds_all_of("get_reporting_cfg");
  service.fails("REPORTING", "url[9]", failure);
  auto record = untouched_record<reporting_cfg>();
  EXPECT_EQ(get_reporting_cfg(&record), failure);
  EXPECT_TRUE(is_untouched(record.opt));
  EXPECT_EQ(service.take_keys(), std::vector<std::string>{"k_op"} + indexed("url", 10));
}

TEST_F(SectionCase, a_failing_scalar_keeps_the_array_behind_it_from_being_read) {
  holds_all_of("get_reporting_cfg");
  service.fails("REPORTING", "k_op", failure);
  auto record = untouched_record<reporting_cfg>();
  EXPECT_EQ(get_reporting_cfg(&record), failure);
  EXPECT_TRUE(is_untouched(record));
  EXPECT_EQ(service.take_keys(), std::vector<std::string>{"k_op"});
}

TEST_F(SectionCase, a_failing_gsm_band_leaves_every_text) {
  holds_all_of("get_gsm_cfg");
  service.fails("GSM", "band", failure);
  auto record = untouched_record<gsm_cfg>();
  EXPECT_EQ(get_gsm_cfg(&record), failure);
  EXPECT_TRUE(is_untouched(record));
  EXPECT_EQ(service.take_keys(), std::vector<std::string>{"band"});
}

TEST_F(SectionCase, a_firmware_version_has_room_for_255_characters) {
  char version[257];
  std::memset(version, 0x5A, sizeof version);
  service.claims("SYSBASE", "firmware_ver", 255);
  EXPECT_EQ(gui_get_sysbase_info(version), 205U);  // room enough, but no such text came
  service.claims("SYSBASE", "firmware_ver", 256);
  EXPECT_EQ(gui_get_sysbase_info(version), 212U);
  EXPECT_TRUE(is_untouched(version));
  service.obeys();
  service.holds("SYSBASE", "firmware_ver", std::string(199, 'v'));
  EXPECT_EQ(gui_get_sysbase_info(version), 0U);
  EXPECT_EQ(version, std::string(199, 'v'));
}

TEST_F(SectionCase, the_filters_rules_and_the_automations_rules_are_two_things) {
  ipfilter_cfg filter{};
  harules_cfg automation{};
  static_assert(sizeof filter.rule == 20 * 64 && sizeof automation.rule == 40 * 256);
  std::strcpy(filter.rule[19], "filter");
  std::strcpy(automation.rule[19], "automation");
  service.has_section("IPFILTER");
  service.has_section("HARULES");
  EXPECT_EQ(set_ipfilter_cfg(&filter), 0U);
  EXPECT_EQ(set_harules_cfg(&automation), 0U);
  EXPECT_EQ(service.value("IPFILTER", "rule[19]"), "filter");
  EXPECT_EQ(service.value("HARULES", "rule[19]"), "automation");
  EXPECT_EQ(service.value("IPFILTER", "rule[20]"), std::nullopt);
}
