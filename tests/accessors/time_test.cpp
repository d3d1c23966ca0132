#include "accessors/time.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/sections.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/support/faults.h"
#include "tests/support/scripted_service.h"

using namespace proreflax;
using testing::IsEmpty;

namespace {

class LocalTime : public testing::Test {
 protected:
  LocalTime() {
    g_offset_time = 0;
    for (const char* number : {"enable", "ipsel", "tzid", "dststatus"}) {
      service.holds("SNTPC", number, "0");
    }
    service.holds("SNTPC", "server_ip", "0.0.0.0");
    service.holds("SNTPC", "server_ip2", "0.0.0.0");
    zone("");
  }

  void zone(const std::string& text) { service.holds("SNTPC", "tzdetail", text); }
  void daylight_saving(const std::string& number) { service.holds("SNTPC", "dststatus", number); }

  std::int32_t offset_of(const std::string& text) {
    zone(text);
    return gui_get_offsetTime();
  }

  scripted_service service;
};

}  // namespace

// ---- The offset ---------------------------------------------------------------------------------

struct zone_row {
  const char* text;
  std::int32_t offset_seconds;
};

TEST_F(LocalTime, zones_have_these_offsets) {
  const zone_row rows[] = {
      {"(GMT+08:00) Beijing", 28800},
      {"(GMT-05:00) Eastern", -18000},
      {"GMT+5:30", 19800},
      {"GMT+8", 28800},
      {"GMT8", 28800},
      {"GMT+0530", 19800},
      {"GMT+123", 43380},
      {"GMT+01:02:03", 3723},
      {"GMT-010203", -3723},
      {"GMT+24", 86400},
      {"GMT+24:59:59", 89999},
      {"GMT+8:0:0:0", 28800},
      {"GMT+08:00:00:00", 28800},
      {"GMT+8 East", 28800},
      {"GMT+8:30.5", 30600},
      {"T1", 3600},
      {"WEST+1 GMT+2", 3600},
  };
  for (const zone_row& each : rows) {
    EXPECT_EQ(offset_of(each.text), each.offset_seconds) << each.text;
    EXPECT_EQ(g_offset_time, each.offset_seconds) << each.text;
  }
}

TEST_F(LocalTime, a_zone_with_a_t_but_no_offset_stores_0) {
  for (const char* text : {"(GMT) Greenwich", "GMT+25", "GMT+8:", "GMT", "GMT+", "GMT-", "GMT++8",
                           "GMT+-8", "GMT+ 8", "GMT+8:60", "GMT+8:00:60", "GMT+8:00:00:1",
                           "GMT+0800001", "GMT+8::0", "GMT+08:00:", "EAST OF GMT+8"}) {
    ASSERT_EQ(offset_of("GMT+1"), 3600);
    EXPECT_EQ(offset_of(text), 0) << text;
    EXPECT_EQ(g_offset_time, 0) << text;
  }
}

TEST_F(LocalTime, daylight_saving_adds_an_hour_after_the_sign) {
  daylight_saving("1");
  EXPECT_EQ(offset_of("(GMT+08:00) Beijing"), 32400);
  EXPECT_EQ(offset_of("(GMT-05:00) Eastern"), -14400);
  EXPECT_EQ(offset_of("GMT+0"), 3600);
  EXPECT_EQ(offset_of("(GMT) Greenwich"), 0);  // no offset, no hour
}

TEST_F(LocalTime, daylight_saving_is_in_force_only_at_1) {
  for (const char* number : {"0", "2", "0xffffffff"}) {
    daylight_saving(number);
    EXPECT_EQ(offset_of("GMT+1"), 3600) << number;
  }
}

TEST_F(LocalTime, a_zone_without_a_t_keeps_the_last_offset) {
  EXPECT_EQ(offset_of("nowhere"), 0);
  EXPECT_EQ(offset_of(""), 0);
  EXPECT_EQ(offset_of("GMT+2"), 7200);
  EXPECT_EQ(offset_of("nowhere"), 7200);
  EXPECT_EQ(offset_of("utc+8"), 7200);
  EXPECT_EQ(offset_of(""), 7200);
}

TEST_F(LocalTime, a_section_that_cannot_be_read_keeps_the_last_offset) {
  EXPECT_EQ(offset_of("GMT+2"), 7200);
  service.lacks("SNTPC", "dststatus");
  EXPECT_EQ(offset_of("GMT+3"), 7200);
  service.holds("SNTPC", "dststatus", "0");
  EXPECT_EQ(offset_of("T" + std::string(100, 'x')), 7200);  // longer than its field
}

TEST_F(LocalTime, the_section_is_read_under_one_lock) {
  zone("GMT+1");
  faults::reset();
  gui_get_offsetTime();
  EXPECT_EQ(faults::calls(faults::call::semop), 2);
  EXPECT_EQ(service.lock_value(), 1);
}

TEST(LocalTimeWithoutService, the_offset_is_0_at_load) {
  EXPECT_EQ(g_offset_time, 0);
  EXPECT_EQ(gui_get_offsetTime(), 0);
}

// ---- The parser ---------------------------------------------------------------------------------

TEST(ParseTzOffset, returns_the_first_character_behind_what_it_took) {
  const auto rest = [](const char* text) -> std::string {
    std::int32_t seconds = 0;
    const char* behind = parse_tz_offset(text, &seconds);
    return behind == nullptr ? "(null)" : behind;
  };
  EXPECT_EQ(rest("08:00) Beijing"), ") Beijing");
  EXPECT_EQ(rest("8"), "");
  EXPECT_EQ(rest("8x"), "x");
  EXPECT_EQ(rest("01:02:03:04"), "(null)");
  EXPECT_EQ(rest("01:02:03:00:"), "");
  EXPECT_EQ(rest("01:02:03:000"), "0");
  EXPECT_EQ(rest(""), "(null)");
}

TEST(ParseTzOffset, leaves_the_output_untouched_when_it_fails) {
  std::int32_t seconds = 77;
  EXPECT_EQ(parse_tz_offset("25", &seconds), nullptr);
  EXPECT_EQ(seconds, 77);
}

TEST(ParseTzOffset, characters_above_127_are_no_digits) {
  std::int32_t seconds = 77;
  EXPECT_EQ(parse_tz_offset("\xB2", &seconds), nullptr);
  const char* text = "8\xB2";
  EXPECT_EQ(parse_tz_offset(text, &seconds), text + 1);
  EXPECT_EQ(seconds, 28800);
}

// A second reader: cuts the text into fields first, and looks at their numbers afterwards.
namespace second_reader {

struct cut_field {
  std::string digits;
  bool required = false;  // a ":" stands before it
};

bool digit(char c) {
  return std::string{"0123456789"}.find(c) != std::string::npos;
}

std::vector<cut_field> cut(const std::string& text, std::size_t& at) {
  std::vector<cut_field> fields;
  bool colon = true;  // the hours are required as if one stood before them
  while (fields.size() < 4) {
    std::size_t length = 0;
    while (length < 2 && at + length < text.size() && digit(text[at + length])) {
      ++length;
    }
    fields.push_back({text.substr(at, length), colon});
    at += length;
    colon = at < text.size() && text[at] == ':';
    at += colon ? 1 : 0;
  }
  return fields;
}

std::optional<std::int32_t> read(const std::string& text, std::size_t& at) {
  const std::vector<cut_field> fields = cut(text, at);
  const int most[] = {24, 59, 59, 0};
  int numbers[4] = {};
  for (std::size_t i = 0; i < 4; ++i) {
    if (fields[i].digits.empty() && fields[i].required) {
      return std::nullopt;
    }
    numbers[i] = std::atoi(fields[i].digits.c_str());
    if (numbers[i] > most[i]) {
      return std::nullopt;
    }
  }
  return (numbers[0] * 60 + numbers[1]) * 60 + numbers[2];
}

}  // namespace second_reader

TEST(ParseTzOffset, agrees_with_a_second_reader_on_generated_texts) {
  std::mt19937 generator{20241103};
  const std::string alphabet = "0123456789:0012:::59 +)x";
  int read = 0;
  for (int round = 0; round < 200000; ++round) {
    std::string text;
    for (std::size_t length = generator() % 12; text.size() < length;) {
      text += alphabet[generator() % alphabet.size()];
    }
    std::int32_t seconds = -1;
    const char* behind = parse_tz_offset(text.c_str(), &seconds);
    std::size_t at = 0;
    const auto expected = second_reader::read(text, at);
    ASSERT_EQ(behind != nullptr, expected.has_value()) << text;
    if (expected) {
      ++read;
      ASSERT_EQ(seconds, *expected) << text;
      ASSERT_EQ(behind, text.c_str() + at) << text;
    }
  }
  EXPECT_GT(read, 20000);  // else the texts prove little
}

// ---- The text -----------------------------------------------------------------------------------

namespace {

std::string text_of(std::time_t seconds) {
  return std::asctime(std::localtime(&seconds));
}

}  // namespace

TEST_F(LocalTime, is_the_clock_shifted_by_the_offset) {
  for (const char* text : {"GMT+0", "GMT+8", "GMT-5"}) {
    zone(text);
    const std::time_t before = std::time(nullptr);
    const std::string shown = gui_get_localtime();
    const std::time_t after = std::time(nullptr);
    bool in_between = false;
    for (std::time_t now = before; now <= after; ++now) {
      in_between = in_between || shown == text_of(now + g_offset_time);
    }
    EXPECT_TRUE(in_between) << shown;
  }
}

TEST_F(LocalTime, is_shown_in_the_fixed_form_with_its_line_feed) {
  EXPECT_THAT(gui_get_localtime(),
              testing::MatchesRegex("[A-Z][a-z][a-z] [A-Z][a-z][a-z] [ 0-9][0-9] "
                                    "[0-9][0-9]:[0-9][0-9]:[0-9][0-9] [0-9][0-9][0-9][0-9]\n"));
}

TEST_F(LocalTime, may_be_changed_by_the_caller_until_the_next_call) {
  char* const shown = gui_get_localtime();
  shown[0] = '#';
  EXPECT_EQ(g_localtime_text[0], '#');
  EXPECT_NE(gui_get_localtime()[0], '#');
}

TEST_F(LocalTime, is_always_in_the_same_buffer) {
  EXPECT_EQ(gui_get_localtime(), g_localtime_text);
  EXPECT_EQ(gui_get_localtime(), g_localtime_text);
}

TEST_F(LocalTime, is_converted_with_the_platforms_zone) {
  zone("GMT+0");
  setenv("TZ", "XYZ-3", 1);
  tzset();
  const std::time_t before = std::time(nullptr);
  const std::string shown = gui_get_localtime();
  const std::time_t after = std::time(nullptr);
  setenv("TZ", "UTC", 1);
  tzset();
  EXPECT_TRUE(shown == text_of(before + 10800) || shown == text_of(after + 10800)) << shown;
}

// ---- Entry points that do nothing ---------------------------------------------------------------

TEST_F(LocalTime, six_entry_points_do_nothing_but_return_their_constant) {
  faults::reset();
  int something = 7;
  for (const void* each :
       {static_cast<const void*>(nullptr), static_cast<const void*>(&something)}) {
    EXPECT_EQ(gui_get_timezone(each), 1U);
    EXPECT_EQ(gui_set_timezone(each), 1U);
    EXPECT_EQ(gui_get_daylight_saving(each, each, each, each), 1U);
    EXPECT_EQ(gui_set_daylight_saving(each, each, each, each), 1U);
    EXPECT_EQ(gui_get_time_server(each, each, each), 0U);
    EXPECT_EQ(gui_set_time_server(each, each, each), 1U);
  }
  EXPECT_EQ(something, 7);
  EXPECT_EQ(faults::calls(faults::call::semget), 0);
  EXPECT_THAT(service.take_keys(), IsEmpty());
}
