// Any bytes as the driver's event log, against a naive reader that uses strings.
#include <proreflax/wireless.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/naive_mac.h"
#include "fuzz/naive_number.h"
#include "fuzz/require.h"
#include "wireless/driver_text.h"

namespace {

constexpr int unset = -77;

struct naive_event {
  int number = unset;
  mac_bytes mac{9, 9, 9, 9, 9, 9};
  std::string message = "unset";
};

struct naive_log {
  std::uint32_t result = 0;
  int count = unset;
  std::vector<naive_event> events;
};

naive_log naive_read(const std::string& text) {
  naive_log log;
  if (text.size() < 14) {
    log.result = 1;
    return log;
  }
  log.count = naive_number(text.substr(13).c_str());
  const std::size_t first_newline = find_before_nul(text, '\n', 0);
  if (log.count >= 1 && first_newline == std::string::npos) {
    log.count = 0;
  }
  std::size_t row = first_newline + 7;
  for (int i = 0; i < log.count; ++i) {
    naive_event& event = log.events.emplace_back();
    event.number = naive_number(from(text, row).c_str());
    const std::size_t colon = find_before_nul(text, ':', row);
    if (colon == std::string::npos) {
      log.result = 1;
      return log;
    }
    naive_mac(text.substr(colon - 2), event.mac);
    const std::size_t start = colon - 2 + 17;
    const std::size_t newline = find_before_nul(text, '\n', start);
    const std::size_t length = newline == std::string::npos ? newline : newline - start;
    event.message = from(text, start).substr(0, std::min<std::size_t>(length, 79)).c_str();
    if (newline == std::string::npos || text.size() - (newline + 1) < 7) {
      return log;
    }
    row = newline + 7;
  }
  return log;
}

void check_event(const wls_event_log_entry& event, const naive_event& expected) {
  require(event.number == expected.number, "both readers give the same number");
  require(std::equal(event.mac, event.mac + 6, expected.mac.begin()),
          "both readers give the same address");
  require(event.message == expected.message, "both readers give the same message");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text{reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 4095)};
  const std::unique_ptr<char[]> copy{new char[text.size() + 1]};
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  constexpr wls_event_log_entry untouched = {unset, {9, 9, 9, 9, 9, 9}, "unset"};
  std::vector<wls_event_log_entry> table(WLS_EVENT_LOG_ROWS_MAX, untouched);
  int count = unset;

  const std::uint32_t result =
      proreflax::parse_wls_event_log(copy.get(), text.size(), &count, table.data());
  naive_log expected = naive_read(text);
  require(result == expected.result, "both readers give the same result");
  require(count == expected.count, "both readers give the same count");
  require(expected.events.size() <= table.size(), "the table has room for the rows of any file");
  expected.events.resize(table.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    check_event(table[i], expected.events[i]);
  }
  return 0;
}
