// cfc against the real service, on the device's folder: what an integrator types, from the factory
// file to flash and back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/device_root.h"
#include "tests/support/request_queue.h"
#include "tests/support/service_process.h"
#include "tests/tools/cfc/run_program.h"

using nlohmann::json;
using std::string;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

class CfcOnDevice : public testing::Test {
 protected:
  CfcOnDevice() {
    device_root::clear();
    device_root::install_flash_tool();
    device_root::write("/etc/config-file.ini",
                       "[LAN]\nConnType=1\nLanIPAddr=192.168.62.1\nLanMask=\n");
  }
};

}  // namespace

TEST_F(CfcOnDevice, what_is_set_and_flushed_survives_a_restart) {
  {
    const service_process service;
    EXPECT_EQ(run_cfc({"get", "LAN", "LanIPAddr"}).out, "192.168.62.1\n");
    EXPECT_EQ(run_cfc({"set", "LAN", "LanIPAddr", "10.0.0.5"}).status, 0);
    EXPECT_EQ(run_cfc({"flush"}).status, 0);
  }
  const service_process service;
  EXPECT_EQ(run_cfc({"get", "LAN", "LanIPAddr"}).out, "10.0.0.5\n");
  EXPECT_EQ(run_cfc({"defaults"}).status, 0);
  EXPECT_EQ(run_cfc({"get", "LAN", "LanIPAddr", "--type", "ip"}).out, "192.168.62.1\n");
}

TEST_F(CfcOnDevice, unset_empty_and_missing_are_told_apart) {
  const service_process service;
  const ended empty = run_cfc({"get", "LAN", "LanMask"});
  EXPECT_EQ(empty.status, 0);
  EXPECT_EQ(empty.out, "\n");
  EXPECT_EQ(run_cfc({"get", "LAN", "None"}).status, 3);
  EXPECT_EQ(run_cfc({"get", "WAN", "None"}).status, 3);
  EXPECT_EQ(run_cfc({"set", "WAN", "k", "v"}).status, 3);
}

TEST_F(CfcOnDevice, a_registered_section_takes_typed_values) {
  const service_process service;
  EXPECT_EQ(run_cfc({"register", "MYAPP"}).status, 0);
  EXPECT_EQ(run_cfc({"set", "MYAPP", "mac", "00:0c:43:28:80:01", "--type", "binary"}).status, 0);
  EXPECT_EQ(run_cfc({"get", "MYAPP", "mac"}).out, "0x018028430c00\n");
  EXPECT_EQ(run_cfc({"get", "MYAPP", "mac", "--type", "binary"}).out, "00:0c:43:28:80:01\n");
  EXPECT_EQ(run_cfc({"set", "MYAPP", "port", "443", "--type", "u16"}).status, 0);
  EXPECT_EQ(run_cfc({"get", "MYAPP", "port"}).out, "0x01bb\n");
}

TEST_F(CfcOnDevice, the_text_on_flash_passes_check) {
  {
    const service_process service;
    EXPECT_EQ(run_cfc({"set", "LAN", "k", string(199, 'v')}).status, 0);
    EXPECT_EQ(run_cfc({"register", string(24, 's')}).status, 0);
    EXPECT_EQ(run_cfc({"set", string(24, 's'), string(49, 'k'), "a=b[c]"}).status, 0);
    EXPECT_EQ(run_cfc({"flush"}).status, 0);
  }
  const string saved = device_root::path("/saved.ini");
  ASSERT_EQ((started_program{device_root::path("/sbin/writeflash"), {"-r", saved}}.wait().status),
            0);
  EXPECT_EQ(run_cfc({"check", saved}).status, 0);
  EXPECT_EQ(run_cfc({"check", device_root::path("/etc/config-file.ini")}).status, 0);
}

TEST_F(CfcOnDevice, all_or_nothing_leaves_the_store_as_it_was) {
  const service_process service;
  const ended batch = run_cfc({"batch", "--all-or-nothing"},
                              "set LAN ConnType 2\nset LAN LanMask 255.0.0.0\nset LAN fresh 1\n"
                              "get LAN None\n");
  EXPECT_EQ(batch.status, 3);
  EXPECT_THAT(batch.err, HasSubstr("key \"fresh\" was not there before"));
  EXPECT_THAT(batch.err, HasSubstr("2 were put back and 1 were not"));
  EXPECT_EQ(run_cfc({"get", "LAN", "ConnType"}).out, "1\n");
  EXPECT_EQ(run_cfc({"get", "LAN", "LanMask"}).out, "\n");
  EXPECT_EQ(run_cfc({"get", "LAN", "fresh"}).out, "1\n");
}

TEST_F(CfcOnDevice, status_names_the_service) {
  const service_process service;
  const ended status = run_cfc({"status"});
  EXPECT_EQ(status.status, 0);
  EXPECT_EQ(status.out, "service: process " + std::to_string(service.id()) + " (" +
                            name_of(service.id()) +
                            ")\nconfiguration: factory settings\nlock: free\n"
                            "queue: 0 messages waiting\n");
  const json report = json::parse(run_cfc({"status", "--json"}).out);
  EXPECT_EQ(report["service"]["alive"], true);
  EXPECT_EQ(report["service"]["pid"], service.id());
  EXPECT_EQ(report["service"]["name"], name_of(service.id()));
  EXPECT_EQ(report["configuration"]["source"], "factory");
}

TEST_F(CfcOnDevice, a_killed_service_is_told_and_nobody_waits_for_it) {
  service_process service;
  service.end(SIGKILL);
  ASSERT_TRUE(request_queue::keys_in_use());
  const ended status = run_cfc({"status"});
  EXPECT_EQ(status.status, 1);
  EXPECT_EQ(status.out,
            "service: killed, its lock is still there\nlock: free\nqueue: 0 messages waiting\n");
  EXPECT_EQ(json::parse(run_cfc({"status", "--json"}).out)["service"]["alive"], false);
  const string sentence =
      "230 CFC_ERR_NO_SEM: config-center is not running: it was killed, and its lock is still "
      "there";
  for (const std::vector<string>& command : {std::vector<string>{"get", "LAN", "ConnType"},
                                             {"set", "LAN", "ConnType", "2"},
                                             {"flush"}}) {
    const ended refused = run_cfc(command);
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, EndsWith(sentence + "\n"));
  }
  const ended batch = run_cfc({"batch", "--all-or-nothing"}, "set LAN ConnType 2\n");
  EXPECT_EQ(batch.status, 1);
  EXPECT_EQ(batch.err, "cfc: batch: stdin: " + sentence + "; nothing was changed\n");
}
