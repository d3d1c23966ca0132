#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/config.h>
#include <proreflax/sections.h>

#include <cstring>
#include <string>

#include "tests/support/faults.h"
#include "tests/support/scripted_service.h"

using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

namespace {

class SectionsWithoutRecord : public testing::Test {
 protected:
  SectionsWithoutRecord() {
    service.holds("WEBLOG", "user_name", "admin");
    service.holds("WEBLOG", "password", "secret");
    service.holds("LAN", "LanIPAddr", "192.168.62.1");
    service.holds("LAN", "LanNetmask", "255.255.255.0");
    faults::reset();
  }

  /// The lock was taken once, held for each request, and is free again.
  void expect_one_hold() {
    EXPECT_EQ(faults::calls(faults::call::semop), 2);
    EXPECT_THAT(service.take_requests(), Each(Field(&seen_request::lock_held, true)));
    EXPECT_EQ(service.lock_value(), 1);
  }

  scripted_service service;
  char name[32] = "old name";
  char password[32] = "old password";
  std::uint32_t address = 1;
  std::uint32_t netmask = 2;
};

}  // namespace

TEST_F(SectionsWithoutRecord, web_login_is_read_name_first_under_one_lock) {
  EXPECT_EQ(gui_get_web_password(name, password), 0U);
  EXPECT_STREQ(name, "admin");
  EXPECT_STREQ(password, "secret");
  expect_one_hold();
  EXPECT_EQ(gui_get_web_password(name, password), 0U);
  EXPECT_THAT(service.take_keys(), ElementsAre("user_name", "password"));
}

TEST_F(SectionsWithoutRecord, web_login_is_written_name_first_under_one_lock) {
  EXPECT_EQ(gui_set_web_password("root", ""), 0U);
  EXPECT_EQ(service.value("WEBLOG", "user_name"), "root");
  EXPECT_EQ(service.value("WEBLOG", "password"), "");
  expect_one_hold();
  EXPECT_EQ(gui_set_web_password("root", ""), 0U);
  EXPECT_THAT(service.take_keys(), ElementsAre("user_name", "password"));
}

TEST_F(SectionsWithoutRecord, web_login_reader_refuses_null_with_1_and_leaves_the_lock_alone) {
  EXPECT_EQ(gui_get_web_password(nullptr, password), 1U);
  EXPECT_EQ(gui_get_web_password(name, nullptr), 1U);
  EXPECT_EQ(gui_get_web_password(nullptr, nullptr), 1U);
  EXPECT_EQ(faults::calls(faults::call::semget), 0);
  EXPECT_EQ(faults::calls(faults::call::semop), 0);
  EXPECT_THAT(service.take_keys(), IsEmpty());
  EXPECT_STREQ(name, "old name");
  EXPECT_STREQ(password, "old password");
}

TEST_F(SectionsWithoutRecord, web_login_writer_leaves_null_to_the_typed_operations) {
  EXPECT_EQ(gui_set_web_password(nullptr, "x"), 204U);
  EXPECT_EQ(faults::calls(faults::call::semop), 2);
  EXPECT_THAT(service.take_keys(), IsEmpty());
  EXPECT_EQ(gui_set_web_password("x", nullptr), 204U);
  EXPECT_THAT(service.take_keys(), ElementsAre("user_name"));
  EXPECT_EQ(service.lock_value(), 1);
}

TEST_F(SectionsWithoutRecord, web_login_texts_have_room_for_31_characters) {
  service.holds("WEBLOG", "password", std::string(31, 'p'));
  EXPECT_EQ(gui_get_web_password(name, password), 0U);
  EXPECT_EQ(password, std::string(31, 'p'));
  service.holds("WEBLOG", "password", std::string(32, 'q'));
  EXPECT_EQ(gui_get_web_password(name, password), 212U);
  EXPECT_EQ(password, std::string(31, 'p'));
  service.holds("WEBLOG", "user_name", std::string(32, 'q'));
  service.take_requests();
  EXPECT_EQ(gui_get_web_password(name, password), 212U);
  EXPECT_THAT(service.take_keys(), ElementsAre("user_name"));
}

TEST_F(SectionsWithoutRecord, web_login_stops_at_the_first_failure) {
  service.fails("WEBLOG", "user_name", 208);
  EXPECT_EQ(gui_get_web_password(name, password), 208U);
  EXPECT_EQ(gui_set_web_password("a", "b"), 208U);
  EXPECT_THAT(service.take_keys(), ElementsAre("user_name", "user_name"));
  EXPECT_STREQ(password, "old password");
}

TEST_F(SectionsWithoutRecord, lan_addresses_are_read_in_host_order_under_one_lock) {
  EXPECT_EQ(gui_get_lan_ip_setting(&address, &netmask), 0U);
  EXPECT_EQ(address, 0xC0A83E01U);
  EXPECT_EQ(netmask, 0xFFFFFF00U);
  expect_one_hold();
}

TEST_F(SectionsWithoutRecord, lan_addresses_are_written_as_dotted_quads_under_one_lock) {
  EXPECT_EQ(gui_set_lan_ip_setting(0x0A000005, 0xFF000000), 0U);
  EXPECT_EQ(service.value("LAN", "LanIPAddr"), "10.0.0.5");
  EXPECT_EQ(service.value("LAN", "LanNetmask"), "255.0.0.0");
  expect_one_hold();
  EXPECT_EQ(gui_set_lan_ip_setting(0, 0), 0U);
  EXPECT_THAT(service.take_keys(), ElementsAre("LanIPAddr", "LanNetmask"));
}

TEST_F(SectionsWithoutRecord, lan_addresses_stop_at_the_first_failure) {
  service.holds("LAN", "LanIPAddr", "nowhere");
  EXPECT_EQ(gui_get_lan_ip_setting(&address, &netmask), 0xFFFFFFFFU);
  EXPECT_EQ(address, 1U);
  EXPECT_EQ(netmask, 2U);
  service.fails("LAN", "LanIPAddr", 208);
  EXPECT_EQ(gui_set_lan_ip_setting(0, 0), 208U);
  EXPECT_THAT(service.take_keys(), ElementsAre("LanIPAddr", "LanIPAddr"));
}

TEST_F(SectionsWithoutRecord, lan_address_into_null_is_read_and_then_counts_as_no_address) {
  EXPECT_EQ(gui_get_lan_ip_setting(nullptr, &netmask), 0xFFFFFFFFU);
  EXPECT_EQ(netmask, 2U);
  EXPECT_THAT(service.take_keys(), ElementsAre("LanIPAddr"));
  EXPECT_EQ(gui_get_lan_ip_setting(&address, nullptr), 0xFFFFFFFFU);
  EXPECT_EQ(address, 0xC0A83E01U);
  EXPECT_THAT(service.take_keys(), ElementsAre("LanIPAddr", "LanNetmask"));
  EXPECT_EQ(service.lock_value(), 1);
}

TEST_F(SectionsWithoutRecord, lan_address_into_null_gives_the_services_code_first) {
  service.lacks("LAN", "LanIPAddr");
  EXPECT_EQ(gui_get_lan_ip_setting(nullptr, &netmask), 201U);
  service.holds("LAN", "LanIPAddr", "10.0.0.5");
  service.fails("LAN", "LanNetmask", 208);
  EXPECT_EQ(gui_get_lan_ip_setting(&address, nullptr), 208U);
}

TEST(SectionsWithoutRecordOrService, pass_the_failure_to_lock_on) {
  char text[32] = "kept";
  std::uint32_t address = 1;
  EXPECT_EQ(gui_get_web_password(text, text), 230U);
  EXPECT_EQ(gui_get_web_password(nullptr, text), 1U);
  EXPECT_EQ(gui_get_web_password(text, nullptr), 1U);
  EXPECT_EQ(gui_set_web_password(nullptr, nullptr), 230U);
  EXPECT_EQ(gui_set_web_password("a", "b"), 230U);
  EXPECT_EQ(gui_get_lan_ip_setting(&address, &address), 230U);
  EXPECT_EQ(gui_get_lan_ip_setting(nullptr, nullptr), 230U);
  EXPECT_EQ(gui_set_lan_ip_setting(1, 2), 230U);
  EXPECT_STREQ(text, "kept");
  EXPECT_EQ(address, 1U);
}

TEST_F(SectionsWithoutRecord, single_texts_are_read_and_written_as_they_are) {
  service.holds("SYSBASE", "firmware_ver", std::string(199, 'v'));
  char text[256] = "old";
  EXPECT_EQ(gui_get_sysbase_info(text), 0U);
  EXPECT_EQ(text, std::string(199, 'v'));
  expect_one_hold();
  EXPECT_EQ(gui_set_sysbase_info("2.0"), 0U);
  EXPECT_EQ(service.value("SYSBASE", "firmware_ver"), "2.0");
  service.has_section("DEVICE");
  EXPECT_EQ(set_device_cfg("led=on"), 0U);
  EXPECT_EQ(get_device_cfg(text), 0U);
  EXPECT_STREQ(text, "led=on");
  EXPECT_EQ(service.value("DEVICE", "opt"), "led=on");
}

TEST_F(SectionsWithoutRecord, single_texts_of_200_characters_are_not_sent) {
  EXPECT_EQ(set_device_cfg(std::string(200, 'o').c_str()), 204U);
  EXPECT_EQ(gui_set_sysbase_info(std::string(200, 'o').c_str()), 204U);
  EXPECT_THAT(service.take_keys(), IsEmpty());
}
