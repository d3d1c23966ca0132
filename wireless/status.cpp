// The status of the wireless interface: ten lines of the form name=value.
//
// A name is recognised by its prefix, since the driver may append to it ("recv_unicast_extra" is
// "recv_unicast"). Only the first 31 characters of a name count, which makes no difference here:
// the longest known name has 15.
#include <proreflax/wireless.h>

#include <algorithm>
#include <cstring>

#include "wireless/decimal_number.h"
#include "wireless/driver_text.h"
#include "wireless/proc_file.h"

namespace proreflax {
namespace {

constexpr int lines_wanted = 10;

struct counter {
  char name[16];
  std::uint32_t wls_11g_status::*field;
};

constexpr counter counters[] = {
    {"recv_multicast", &wls_11g_status::recv_multicast},
    {"recv_unicast", &wls_11g_status::recv_unicast},
    {"recv_dropped", &wls_11g_status::recv_dropped},
    {"recv_failed", &wls_11g_status::recv_failed},
    {"trans_multicast", &wls_11g_status::trans_multicast},
    {"trans_unicast", &wls_11g_status::trans_unicast},
    {"trans_dropped", &wls_11g_status::trans_dropped},
    {"trans_failed", &wls_11g_status::trans_failed},
};

bool begins_with(const char* name, const char* key) {
  while (*key != '\0' && *name == *key) {
    ++name;
    ++key;
  }
  return *key == '\0';
}

template <std::size_t Size>
void copy_string(char (&field)[Size], const char* string) {
  const std::size_t length = strnlen(string, Size - 1);
  std::memcpy(field, string, length);
  field[length] = '\0';
}

}  // namespace

void parse_wls_status_field(wls_11g_status* status, const char* name, const char* value) {
  if (begins_with(name, "if_status")) {
    copy_string(status->if_status, value);
    return;
  }
  if (begins_with(name, "mac_addr")) {
    copy_string(status->mac_addr, value);
    return;
  }
  // No key is a prefix of another, so a name matches one counter at most.
  for (const counter& each : counters) {
    if (begins_with(name, each.name)) {
      status->*each.field = static_cast<std::uint32_t>(decimal_number(value));
      return;
    }
  }
}

std::uint32_t parse_wls_status(char* text, wls_11g_status* status) {
  for (int line = 0; line < lines_wanted; ++line) {
    char* const equals = std::strchr(text, '=');
    if (equals == nullptr) {
      return CFC_FAILED;
    }
    char* const newline = std::strchr(equals, '\n');
    if (newline == nullptr) {
      return CFC_FAILED;
    }
    *equals = '\0';
    *newline = '\0';
    parse_wls_status_field(status, text, equals + 1);
    text = newline + 1;
  }
  return CFC_OK;
}

}  // namespace proreflax

using namespace proreflax;

std::uint32_t gui_get_wls_11g_status(wls_11g_status* status) {
  char* text = nullptr;
  std::size_t length = 0;
  if (status == nullptr || read_proc_file(status_file, &text, &length) != CFC_OK) {
    return CFC_FAILED;
  }
  return parse_wls_status(text, status);
}
