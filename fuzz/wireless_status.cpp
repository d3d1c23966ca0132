// Any bytes as the status of the wireless interface, against a naive reader without pointers.
#include <proreflax/wireless.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "fuzz/naive_number.h"
#include "fuzz/require.h"
#include "wireless/driver_text.h"

namespace {

struct naive_status {
  bool complete = false;
  std::map<std::string, std::string>
      values;  // the last value of each key that some name began with
};

const char* const keys[] = {"if_status",     "mac_addr",    "recv_multicast",  "recv_unicast",
                            "recv_dropped",  "recv_failed", "trans_multicast", "trans_unicast",
                            "trans_dropped", "trans_failed"};

naive_status naive_read(std::string text) {
  naive_status status;
  for (int line = 0; line < 10; ++line) {
    const std::size_t equals = text.find('=');
    const std::size_t newline = equals == std::string::npos ? equals : text.find('\n', equals);
    if (newline == std::string::npos) {
      return status;
    }
    const std::string name = text.substr(0, equals).substr(0, 31);
    for (const char* const key : keys) {
      if (name.substr(0, std::strlen(key)) == key) {
        status.values[key] = text.substr(equals + 1, newline - equals - 1);
      }
    }
    text.erase(0, newline + 1);
  }
  status.complete = true;
  return status;
}

void check_text(const naive_status& status, const char* key, const char* field, std::size_t size) {
  const auto value = status.values.find(key);
  if (value != status.values.end()) {
    require(value->second.substr(0, size - 1) == field, "both readers store the same string");
  } else {
    require(field[0] == 'U' && field[1] == '\0', "a field without a line is unchanged");
  }
}

void check_number(const naive_status& status, const char* key, std::uint32_t field) {
  const auto value = status.values.find(key);
  const auto expected = value == status.values.end()
                            ? 0xDEADBEEF
                            : static_cast<std::uint32_t>(naive_number(value->second.c_str()));
  require(field == expected, "both readers give the same number");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string all{reinterpret_cast<const char*>(data), size < 4095 ? size : 4095};
  const std::string text = all.substr(0, all.find('\0'));
  // Copy and record are separate allocations of exactly their size, so that the sanitizer detects
  // every access beyond them.
  const std::unique_ptr<char[]> copy{new char[text.size() + 1]};
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  const std::unique_ptr<wls_11g_status> status{new wls_11g_status};
  *status = {0xDEADBEEF, 0xDEADBEEF, 0xDEADBEEF, 0xDEADBEEF, 0xDEADBEEF,
             0xDEADBEEF, 0xDEADBEEF, 0xDEADBEEF, "U",        "U"};

  const std::uint32_t result = proreflax::parse_wls_status(copy.get(), status.get());
  const naive_status expected = naive_read(text);
  require(result == (expected.complete ? 0U : 1U), "both readers count the same lines");
  check_text(expected, "if_status", status->if_status, sizeof status->if_status);
  check_text(expected, "mac_addr", status->mac_addr, sizeof status->mac_addr);
  check_number(expected, "recv_unicast", status->recv_unicast);
  check_number(expected, "recv_multicast", status->recv_multicast);
  check_number(expected, "recv_dropped", status->recv_dropped);
  check_number(expected, "recv_failed", status->recv_failed);
  check_number(expected, "trans_unicast", status->trans_unicast);
  check_number(expected, "trans_multicast", status->trans_multicast);
  check_number(expected, "trans_dropped", status->trans_dropped);
  check_number(expected, "trans_failed", status->trans_failed);
  return 0;
}
