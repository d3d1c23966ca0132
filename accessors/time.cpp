// Local time: the zone of section SNTPC as an offset in seconds, and the clock shifted by it as a
// string.
//
// The zone is the string that a user chose, such as "(GMT+08:00) Beijing": the offset follows its
// first "T". The device's clock is UTC. Nothing here reports a failure; the last offset stays
// valid.
#include "accessors/time.h"

#include <proreflax/sections.h>

#include <cctype>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace proreflax {

std::int32_t g_offset_time = 0;
char g_localtime_text[200];

namespace {

constexpr std::int32_t daylight_saving_seconds = 3600;
constexpr std::uint32_t no_digits = 0xFFFFFFFF;  // above every limit

bool is_digit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

/// Reads up to two digits into `number`, if there are any. A third is left for the next field.
const char* read_two_digits(const char* text, std::uint32_t* number) {
  if (is_digit(*text)) {
    *number = static_cast<std::uint32_t>(*text++ - '0');
  }
  if (is_digit(*text)) {
    *number = *number * 10 + static_cast<std::uint32_t>(*text++ - '0');
  }
  return text;
}

/// The signed offset that follows a "T". 0 for a malformed offset.
std::int32_t offset_after_t(const char* text, bool daylight_saving) {
  const bool negative = *text == '-';
  std::int32_t seconds = 0;
  if (parse_tz_offset(negative || *text == '+' ? text + 1 : text, &seconds) == nullptr) {
    return 0;
  }
  return (negative ? -seconds : seconds) + (daylight_saving ? daylight_saving_seconds : 0);
}

}  // namespace

const char* parse_tz_offset(const char* text, std::int32_t* out) {
  // Hours, minutes, seconds and a last field that must be 0 or absent: any other number after the
  // seconds makes the whole offset invalid.
  constexpr std::uint8_t bounds[] = {25, 60, 60, 1};
  std::uint32_t total = 0;
  std::uint32_t number = no_digits;
  for (const std::uint32_t bound : bounds) {
    text = read_two_digits(text, &number);
    if (number >= bound) {
      return nullptr;
    }
    total = bound * total + number;
    number = 0;
    if (*text == ':') {
      ++text;
      number = no_digits;
    }
  }
  *out = static_cast<std::int32_t>(total);
  return text;
}

}  // namespace proreflax

using namespace proreflax;

std::int32_t gui_get_offsetTime() {
  sntpc_info info;
  if (gui_get_sntpc_info(&info) != CFC_OK) {
    return g_offset_time;
  }
  const char* t = std::strchr(info.tzdetail, 'T');
  if (t != nullptr) {
    g_offset_time = offset_after_t(t + 1, info.dststatus == 1);
  }
  return g_offset_time;
}

char* gui_get_localtime() {
  std::time_t local = std::time(nullptr);
  local += gui_get_offsetTime();
  const std::tm* parts = std::localtime(&local);
  const char* text = parts == nullptr ? nullptr : std::asctime(parts);
  std::snprintf(g_localtime_text, sizeof g_localtime_text, "%s", text == nullptr ? "" : text);
  return g_localtime_text;
}

// ---- Entry points that do nothing ---------------------------------------------------------------

std::uint32_t gui_get_timezone(const void* /*zone*/) {
  return CFC_FAILED;
}

std::uint32_t gui_set_timezone(const void* /*zone*/) {
  return CFC_FAILED;
}

std::uint32_t gui_get_daylight_saving(const void* /*status*/, const void* /*start*/,
                                      const void* /*end*/, const void* /*bias*/) {
  return CFC_FAILED;
}

std::uint32_t gui_set_daylight_saving(const void* /*status*/, const void* /*start*/,
                                      const void* /*end*/, const void* /*bias*/) {
  return CFC_FAILED;
}

// Reports success without a result, unlike the setter: programs depend on it.
std::uint32_t gui_get_time_server(const void* /*mode*/, const void* /*first*/,
                                  const void* /*second*/) {
  return CFC_OK;
}

std::uint32_t gui_set_time_server(const void* /*mode*/, const void* /*first*/,
                                  const void* /*second*/) {
  return CFC_FAILED;
}
