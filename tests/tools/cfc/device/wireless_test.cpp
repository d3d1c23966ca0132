// The wireless verbs on driver files of the device's folder: the samples, and broken ones.
#include "tools/cfc/device/wireless.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/device_root.h"
#include "tests/tools/cfc/run_program.h"

using namespace cfc;
using namespace proreflax::settings;
using nlohmann::json;
using std::string;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class Wireless : public testing::Test {
 protected:
  Wireless() { device_root::clear(); }

  static void install_samples() {
    for (const char* name : {"wireless", "wirelesslog"}) {
      std::filesystem::copy_file(PROREFLAX_SOURCE_DIR "/device/proc/" + string{name},
                                 device_root::path("/proc/" + string{name}));
    }
  }

  static void expect_failure(const char* verb, const string& sentence) {
    const ended failed = run_cfc({"wireless", verb});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.out, "");
    EXPECT_EQ(failed.err, "cfc: wireless " + string{verb} + ": " + sentence + "\n");
    EXPECT_EQ(run_cfc({"wireless", verb, "--json"}).out, "");
  }
};

}  // namespace

TEST_F(Wireless, status_is_a_table_of_counters) {
  install_samples();
  const ended status = run_cfc({"wireless", "status"});
  EXPECT_EQ(status.status, 0);
  EXPECT_EQ(status.err, "");
  EXPECT_EQ(status.out,
            "interface    up\n"
            "MAC address  00:0C:43:28:60:10\n"
            "\n"
            "frames     received     sent\n"
            "unicast     4182933  7730146\n"
            "multicast     90218   151407\n"
            "dropped         317       88\n"
            "failed         2954     1203\n");
}

TEST_F(Wireless, status_as_json) {
  install_samples();
  EXPECT_EQ(json::parse(run_cfc({"wireless", "status", "--json"}).out), json::parse(R"({
    "interface": "up", "mac": "00:0C:43:28:60:10",
    "received": {"unicast": 4182933, "multicast": 90218, "dropped": 317, "failed": 2954},
    "sent": {"unicast": 7730146, "multicast": 151407, "dropped": 88, "failed": 1203}})"));
}

TEST_F(Wireless, what_the_driver_leaves_out_is_not_shown_as_0) {
  device_root::write("/proc/wireless",
                     "recv_unicast=0\na=1\nb=1\nc=1\nd=1\ne=1\nf=1\ng=1\nh=1\ni=1\n");
  const wireless_status_report report = read_wireless_status();
  EXPECT_EQ(report.failure, "");
  EXPECT_EQ(report.received.unicast, 0U);
  EXPECT_EQ(report.received.multicast, std::nullopt);
  EXPECT_EQ(report.sent.failed, std::nullopt);
  EXPECT_THAT(run_cfc({"wireless", "status"}).out, HasSubstr("unicast           0  not told\n"));
  const json object = json::parse(run_cfc({"wireless", "status", "--json"}).out);
  EXPECT_EQ(object["received"]["unicast"], 0);
  EXPECT_TRUE(object["sent"]["unicast"].is_null());
  EXPECT_TRUE(object["mac"].is_null());
}

TEST_F(Wireless, events_are_a_table) {
  install_samples();
  const ended events = run_cfc({"wireless", "events"});
  EXPECT_EQ(events.status, 0);
  EXPECT_EQ(events.err, "");
  EXPECT_THAT(events.out, StartsWith("event  station            message\n"
                                     "    1  00:0c:43:28:60:11  associated\n"));
  EXPECT_THAT(events.out,
              HasSubstr("\n   10  00:20:a6:4f:33:18  silent for 300 seconds, dropped\n"));
  EXPECT_EQ(std::ranges::count(events.out, '\n'), 13);
}

TEST_F(Wireless, fewer_events_than_announced_are_remarked_upon) {
  device_root::write("/proc/wirelesslog", "Event count: 9\n[log] 1 00:0C:43:28:60:11 associated\n");
  const ended events = run_cfc({"wireless", "events", "--json"});
  EXPECT_EQ(events.status, 0);
  EXPECT_EQ(json::parse(events.out), json::parse(R"({"announced": 9, "events": [
    {"number": 1, "mac": "00:0c:43:28:60:11", "message": "associated"}]})"));
  EXPECT_EQ(events.err,
            "cfc: wireless events: /proc/wirelesslog announces 9 events, and 1 was found\n");
}

TEST_F(Wireless, a_number_of_events_that_no_log_holds_is_remarked_upon) {
  const string rows = "[log] 1 00:0C:43:28:60:11 a\n[log] 2 00:0C:43:28:60:11 b\n";
  for (const auto& [announced, remark] : {std::pair{"9", "announces 9 events, and 2 were found\n"},
                                          {"-1", "announces -1 events, and 0 were found\n"}}) {
    device_root::write("/proc/wirelesslog", "Event count: " + string{announced} + "\n" + rows);
    const ended events = run_cfc({"wireless", "events"});
    EXPECT_EQ(events.status, 0);
    EXPECT_EQ(events.err, "cfc: wireless events: /proc/wirelesslog " + string{remark});
  }
}

TEST_F(Wireless, the_densest_log_is_shown_to_its_last_event) {
  string densest = "\n......:.....999......\n......";
  while (densest.size() < 4095) {
    densest += ":..............\n......";
  }
  device_root::write("/proc/wirelesslog", densest.substr(0, 4095));
  const ended events = run_cfc({"wireless", "events"});
  EXPECT_THAT(events.err, HasSubstr(" announces 999 events, and " +
                                    std::to_string(WLS_EVENT_LOG_ROWS_MAX) + " were found\n"));
  EXPECT_EQ(std::ranges::count(events.out, '\n'), WLS_EVENT_LOG_ROWS_MAX + 1);
}

TEST_F(Wireless, what_the_driver_says_of_itself_does_not_reach_the_terminal_either) {
  device_root::write("/proc/wireless",
                     "if_status=\x1b[2J\na=1\nb=1\nc=1\nd=1\ne=1\nf=1\ng=1\nh=1\ni=1\n");
  EXPECT_THAT(run_cfc({"wireless", "status"}).out,
              StartsWith("interface    \\x1b[2J\nMAC address  not told\n"));
}

TEST_F(Wireless, what_a_station_sent_does_not_reach_the_terminal) {
  device_root::write("/proc/wirelesslog", "Event count: 1\n[log] 1 00:0C:43:28:60:11 \x1b[2J\n");
  EXPECT_THAT(run_cfc({"wireless", "events"}).out, HasSubstr("\\x1b[2J\n"));
}

TEST_F(Wireless, stations_are_a_table) {
  install_samples();
  const ended stations = run_cfc({"wireless", "stations"});
  EXPECT_EQ(stations.status, 0);
  EXPECT_THAT(stations.out, StartsWith("station  MAC address\n      1  00:0c:43:28:60:11\n"));
  EXPECT_THAT(stations.out, HasSubstr("\n     12  00:0c:43:28:61:9a\n"));
  const json object = json::parse(run_cfc({"wireless", "stations", "--json"}).out);
  EXPECT_EQ(object["stations"].size(), 8U);
  EXPECT_EQ(object["stations"][3], json::parse(R"({"number": 5, "mac": "00:0e:35:7d:5a:90"})"));
}

TEST_F(Wireless, channels_of_each_region) {
  const std::pair<int, std::pair<int, int>> rows[] = {{1, {1, 11}}, {2, {1, 13}}, {3, {10, 4}},
                                                      {4, {1, 14}}, {5, {10, 2}}, {99, {1, 14}}};
  for (const auto& [region, channels] : rows) {
    const wireless_channel_report report = wireless_channels_of(region);
    EXPECT_EQ(std::pair(report.first, report.count), channels) << region;
  }
  EXPECT_EQ(run_cfc({"wireless", "channels", "3"}).out,
            "region  channels  first  last\n     3         4     10    13\n");
  EXPECT_EQ(json::parse(run_cfc({"wireless", "channels", "5", "--json"}).out),
            json::parse(R"({"region": 5, "first": 10, "count": 2})"));
}

TEST_F(Wireless, a_driver_file_that_is_not_there_is_named) {
  expect_failure("status", "/proc/wireless cannot be read: No such file or directory");
  expect_failure("stations", "/proc/wireless cannot be read: No such file or directory");
  expect_failure("events", "/proc/wirelesslog cannot be read: No such file or directory");
}

TEST_F(Wireless, a_driver_file_that_cannot_be_read_is_named) {
  for (const char* name : {"/proc/wireless", "/proc/wirelesslog"}) {
    std::filesystem::create_directory(device_root::path(name));
  }
  expect_failure("status", "/proc/wireless cannot be read: Is a directory");
  expect_failure("stations", "/proc/wireless cannot be read: Is a directory");
  expect_failure("events", "/proc/wirelesslog cannot be read: Is a directory");
}

TEST_F(Wireless, a_text_of_another_form_is_told_from_one_that_cannot_be_read) {
  device_root::write("/proc/wireless", "recv_unicast=1\n");
  device_root::write("/proc/wirelesslog", "Event");
  expect_failure("status",
                 "/proc/wireless does not begin with ten lines of a name, '=' and a value");
  expect_failure("stations", "/proc/wireless holds no table of associated stations");
  expect_failure("events", "/proc/wirelesslog is too short for a log, or has a row without ':'");
}

TEST_F(Wireless, wrong_usage_names_the_verb) {
  const ended none = run_cfc({"wireless"});
  EXPECT_EQ(none.status, 2);
  EXPECT_THAT(none.err, HasSubstr("(see: cfc wireless --help)"));
  for (const std::vector<string>& channels :
       {std::vector<string>{"wireless", "channels"}, {"wireless", "channels", "one"}}) {
    const ended refused = run_cfc(channels);
    EXPECT_EQ(refused.status, 2);
    EXPECT_THAT(refused.err, StartsWith("cfc: wireless channels: "));
    EXPECT_THAT(refused.err, HasSubstr("REGION"));
    EXPECT_THAT(refused.err, HasSubstr("(see: cfc wireless channels --help)"));
  }
}
