#include "tools/cfc/json_text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

using namespace cfc;
using nlohmann::json;
using std::string;

namespace {

json value_of(typed_value value) {
  return json::parse(json_of(get_command{"A", "b"}, {.value = std::move(value)}));
}

}  // namespace

TEST(JsonText, every_object_is_one_line) {
  EXPECT_EQ(json_of(get_command{"A\n", "b"}, {.code = 204, .sentence = "x\ny"}).find('\n'),
            string::npos);
}

TEST(JsonText, every_kind_of_value_has_its_type) {
  EXPECT_EQ(value_of(string{"text"})["value"], "text");
  EXPECT_EQ(value_of(std::uint8_t{255})["value"], 255);
  EXPECT_EQ(value_of(std::uint16_t{65535})["value"], 65535);
  EXPECT_EQ(value_of(std::uint32_t{0xFFFFFFFF})["value"], 0xFFFFFFFF);
  EXPECT_EQ(value_of(ipv4_address{0xC0A83E01})["value"], "192.168.62.1");
  EXPECT_EQ(value_of(binary_data{0x00, 0x0c})["value"], "00:0c");
}

TEST(JsonText, text_that_is_utf8_needs_no_bytes_beside_it) {
  const json object = value_of(string{"caf\xc3\xa9 \x01 \"q\""});
  EXPECT_EQ(object["value"], "caf\xc3\xa9 \x01 \"q\"");
  EXPECT_FALSE(object.contains("bytes"));
}

TEST(JsonText, text_that_is_no_utf8_keeps_its_bytes) {
  const json object = value_of(string{"\xff"});
  EXPECT_EQ(object["value"], "\xef\xbf\xbd");
  EXPECT_EQ(object["bytes"], "ff");
}

TEST(JsonText, names_that_are_no_utf8_break_nothing) {
  const json object = json::parse(json_of(get_command{"\xff", "\xc3"}, {.code = 209}));
  EXPECT_EQ(object["section"], "\xef\xbf\xbd");
}

TEST(JsonText, a_code_without_a_name_stands_alone) {
  const json object = json::parse(json_of(get_command{"A", "b"}, {.code = 43, .sentence = "gone"}));
  EXPECT_EQ(object["code"], 43);
  EXPECT_EQ(object["message"], "gone");
  EXPECT_FALSE(object.contains("name"));
}

TEST(JsonText, a_lock_that_cannot_be_looked_at_has_no_state) {
  const status_report report{
      .service = {}, .lock = {.present = true, .error = 13}, .queue = {.present = true}};
  const json object = json::parse(json_of(report));
  EXPECT_EQ(object["lock"], json::parse(R"({"present":true})"));
  EXPECT_EQ(object["code"], 13);
}
