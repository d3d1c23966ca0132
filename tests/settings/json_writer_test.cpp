#include "settings/json_writer.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

using namespace proreflax::settings;
using nlohmann::json;
using std::string;

namespace {

string text_of(const typed_value& value) {
  json_writer writer;
  writer.begin_object();
  writer.value_member(value);
  writer.end_object();
  return writer.take();
}

json value_of(const typed_value& value) {
  return json::parse(text_of(value));
}

}  // namespace

TEST(JsonWriter, writes_members_in_their_order_on_one_line) {
  json_writer writer;
  writer.begin_object();
  writer.member("z", "a\nb");
  writer.number_member("a", -1);
  writer.key("list").begin_array();
  writer.boolean(true);
  writer.null();
  writer.end_array();
  writer.end_object();
  EXPECT_EQ(writer.take(), R"({"z":"a\nb","a":-1,"list":[true,null]})");
}

TEST(JsonWriter, every_kind_of_value_has_its_type) {
  EXPECT_EQ(value_of(string{"text"})["value"], "text");
  EXPECT_EQ(value_of(std::uint8_t{255})["value"], 255);
  EXPECT_EQ(value_of(std::uint16_t{65535})["value"], 65535);
  EXPECT_EQ(value_of(std::uint32_t{0xFFFFFFFF})["value"], 0xFFFFFFFF);
  EXPECT_EQ(value_of(ipv4_address{0xC0A83E01})["value"], "192.168.62.1");
  EXPECT_EQ(value_of(binary_data{0x00, 0x0c})["value"], "00:0c");
}

TEST(JsonWriter, text_that_is_utf8_needs_no_bytes_beside_it) {
  const json object = value_of(string{"caf\xc3\xa9 \x01 \"q\""});
  EXPECT_EQ(object["value"], "caf\xc3\xa9 \x01 \"q\"");
  EXPECT_FALSE(object.contains("bytes"));
}

TEST(JsonWriter, text_that_is_no_utf8_keeps_its_bytes) {
  const json object = value_of(string{"\xff"});
  EXPECT_EQ(object["value"], "\xef\xbf\xbd");
  EXPECT_EQ(object["bytes"], "ff");
}

TEST(JsonWriter, a_nul_is_a_character_like_others) {
  EXPECT_EQ(value_of(string{"a\0b", 3})["value"], string("a\0b", 3));
}
