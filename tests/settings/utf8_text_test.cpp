#include "settings/utf8_text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

using namespace proreflax::settings;
using std::string;

namespace {

/// The same by another reader.
string replaced_by_json(const string& sequence) {
  using nlohmann::json;
  return json::parse(json(sequence).dump(-1, ' ', false, json::error_handler_t::replace));
}

}  // namespace

TEST(Utf8Text, agrees_with_another_reader_on_every_start_of_a_sequence) {
  for (unsigned first = 0x80; first < 0x100; ++first) {
    for (unsigned second = 0x7F; second < 0xD0; ++second) {
      for (const char* rest : {"", "\x80", "\xbf\xbf", "x"}) {
        const string sequence = string{static_cast<char>(first), static_cast<char>(second)} + rest;
        const string expected = replaced_by_json(sequence);
        EXPECT_EQ(utf8_of(sequence), expected) << first << " " << second << " " << rest;
        EXPECT_EQ(is_utf8(sequence), sequence == expected) << first << " " << second << " " << rest;
      }
    }
  }
}

TEST(Utf8Text, that_is_valid_stays) {
  for (const char* text : {"", "abc", "caf\xc3\xa9", "\xe2\x82\xac", "\xf0\x9f\x98\x80"}) {
    EXPECT_TRUE(is_utf8(text));
    EXPECT_EQ(utf8_of(text), text);
  }
}
