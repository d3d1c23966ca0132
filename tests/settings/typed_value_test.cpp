#include "settings/typed_value.h"

#include <gtest/gtest.h>

using namespace proreflax::settings;
using std::string;

namespace {

struct good_row {
  value_kind kind;
  string text;
  string shown;
};

struct bad_row {
  value_kind kind;
  string text;
  std::uint32_t code;
};

const good_row good_rows[] = {
    {value_kind::u8, "0", "0"},
    {value_kind::u8, "255", "255"},
    {value_kind::u8, "+10", "10"},
    {value_kind::u8, "0x0A", "10"},
    {value_kind::u8, "0Xff", "255"},
    {value_kind::u8, "012", "12"},
    {value_kind::u8, "-0", "0"},
    {value_kind::u8, "000000000000000000000000007", "7"},
    {value_kind::u16, "65535", "65535"},
    {value_kind::u16, "0xffff", "65535"},
    {value_kind::u32, "4294967295", "4294967295"},
    {value_kind::u32, "0xFFFFFFFF", "4294967295"},
    {value_kind::u32, "-1", "4294967295"},
    {value_kind::u32, "-2147483648", "2147483648"},
    {value_kind::u32, "-0x10", "4294967280"},
    {value_kind::ip, "192.168.62.1", "192.168.62.1"},
    {value_kind::ip, "010.0.0.001", "10.0.0.1"},
    {value_kind::binary, "00:0c:43", "00:0c:43"},
    {value_kind::binary, "000C43", "00:0c:43"},
    {value_kind::binary, "ff", "ff"},
    {value_kind::string, "", ""},
    {value_kind::string, " a=b ", " a=b "},
    {value_kind::string, string(199, 'v'), string(199, 'v')},
};

const bad_row bad_rows[] = {
    {value_kind::u8, "", 204},
    {value_kind::u8, "256", 205},
    {value_kind::u8, "-1", 205},
    {value_kind::u8, "-", 205},
    {value_kind::u8, "0x", 205},
    {value_kind::u8, "1 ", 210},
    {value_kind::u8, " 1", 210},
    {value_kind::u8, "--1", 210},
    {value_kind::u8, "0xg", 210},
    {value_kind::u8, "1a", 210},
    {value_kind::u8, "4294967296", 211},
    {value_kind::u16, "65536", 205},
    {value_kind::u16, "-1", 205},
    {value_kind::u32, "4294967296", 211},
    {value_kind::u32, "9999999999", 211},
    {value_kind::u32, "0x1ffffffff", 211},
    {value_kind::u32, "99999999999999999999999999999999", 211},
    {value_kind::u32, "-2147483649", 205},
    {value_kind::u32, "abc", 210},
    {value_kind::ip, "", 0xFFFFFFFF},
    {value_kind::ip, "1.2.3", 0xFFFFFFFF},
    {value_kind::ip, "1.2.3.4.5", 0xFFFFFFFF},
    {value_kind::ip, "256.1.1.1", 0xFFFFFFFF},
    {value_kind::ip, "1.2.3.4 ", 0xFFFFFFFF},
    {value_kind::binary, "", 204},
    {value_kind::binary, "0", 205},
    {value_kind::binary, "000", 205},
    {value_kind::binary, "0x0c", 205},
    {value_kind::binary, "0g", 205},
    {value_kind::binary, "00:0c43", 205},
    {value_kind::binary, "000c:43", 205},
    {value_kind::binary, "00:0c:", 205},
    {value_kind::binary, "00:", 205},
    {value_kind::binary, ":00", 205},
    {value_kind::binary, "00::0c", 205},
    {value_kind::binary, "00-0c", 205},
    {value_kind::binary, string(2 * 99, '0'), 204},
    {value_kind::string, string(200, 'v'), 204},
    {value_kind::string, "a\nb", 204},
    {value_kind::string, "a\rb", 204},
};

}  // namespace

TEST(TypedValue, texts_of_every_kind_are_read_and_shown) {
  for (const auto& each : good_rows) {
    const parsed_value parsed = parse_value(each.kind, each.text);
    EXPECT_EQ(parsed.code, 0U) << name_of(each.kind) << " " << each.text;
    EXPECT_EQ(parsed.value.index(), static_cast<std::size_t>(each.kind)) << each.text;
    EXPECT_EQ(show_value(parsed.value), each.shown);
  }
}

TEST(TypedValue, texts_that_break_the_rule_of_their_kind_are_refused) {
  for (const auto& each : bad_rows) {
    EXPECT_EQ(parse_value(each.kind, each.text).code, each.code)
        << name_of(each.kind) << " \"" << each.text << '"';
  }
}

TEST(TypedValue, a_refusal_names_the_value_the_type_and_its_rule) {
  for (const auto& each : bad_rows) {
    const string sentence = parse_value(each.kind, each.text).sentence;
    if (each.kind == value_kind::string) {
      EXPECT_TRUE(sentence.starts_with("the value h")) << sentence;
      continue;
    }
    EXPECT_NE(sentence.find(each.text.empty() ? "empty" : each.text), string::npos) << sentence;
    EXPECT_NE(sentence.find(name_of(each.kind)), string::npos) << sentence;
    EXPECT_TRUE(sentence.ends_with(kind_rule(each.kind))) << sentence;
  }
}

TEST(TypedValue, bytes_are_in_the_order_of_memory) {
  const auto value = parse_value(value_kind::binary, "01:02:ff").value;
  EXPECT_EQ(std::get<binary_data>(value), (binary_data{0x01, 0x02, 0xff}));
}

TEST(TypedValue, ninety_eight_bytes_are_the_most) {
  const auto value = parse_value(value_kind::binary, string(2 * 98, 'a')).value;
  EXPECT_EQ(std::get<binary_data>(value), binary_data(98, 0xaa));
}

TEST(TypedValue, an_address_has_its_first_part_in_the_most_significant_byte) {
  const auto value = parse_value(value_kind::ip, "192.168.62.1").value;
  EXPECT_EQ(std::get<ipv4_address>(value).number, 0xC0A83E01U);
}
