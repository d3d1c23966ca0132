#include "tools/cfc/sections/export.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/scripted_service.h"
#include "tests/tools/cfc/run_program.h"

using nlohmann::json;
using testing::StartsWith;

namespace {

/// Has sections LAN and SNTPC, with few of their keys.
class service_with_two_sections : public scripted_service {
 public:
  service_with_two_sections() {
    holds("LAN", "ConnType", "0x00000001");
    holds("LAN", "LanGw", "");
    holds("SNTPC", "tzdetail", "(GMT) x=y");
  }
};

}  // namespace

TEST(ExportVerb, leaves_out_sections_and_keys_that_are_not_there) {
  service_with_two_sections service;
  const ended text = run_cfc({"export"});
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.err, "");
  EXPECT_EQ(text.out,
            "\n[LAN]\nConnType=0x00000001\nLanGw=\n"
            "\n[SNTPC]\ntzdetail=(GMT) x=y\n");
  EXPECT_EQ(json::parse(run_cfc({"export", "--json"}).out), json::parse(R"({
    "LAN": {"ConnType": "0x00000001", "LanGw": ""}, "SNTPC": {"tzdetail": "(GMT) x=y"}})"));
}

TEST(ExportVerb, prints_nothing_when_a_section_cannot_be_read) {
  service_with_two_sections service;
  service.fails("SNTPC", "enable", 208);
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"export"}, {"export", "--json"}}) {
    const ended text = run_cfc(command);
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.out, "");
    EXPECT_THAT(text.err, StartsWith("cfc: export: section \"SNTPC\": 208 CFC_ERR_BUSY: "));
  }
}
