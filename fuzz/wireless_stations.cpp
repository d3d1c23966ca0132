// Any bytes as the table of associated stations, against a naive reader that uses strings.
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

struct naive_station {
  int number = unset;
  mac_bytes mac{9, 9, 9, 9, 9, 9};
};

/// False when the header is missing.
bool naive_read(const std::string& text, std::vector<naive_station>& stations) {
  const std::string header = "Ralink Assocation Table\n";
  const std::string whole = text.substr(0, text.rfind('\n') + 1);
  std::size_t row = whole.substr(0, whole.find('\0')).find(header);
  if (row == std::string::npos) {
    return false;
  }
  row += header.size();
  for (std::size_t newline = 0; (newline = find_before_nul(whole, '\n', row)) != std::string::npos;
       row = newline + 1) {
    naive_station& station = stations.emplace_back();
    naive_mac(from(whole, row + 5), station.mac);
    station.number = naive_number(from(whole, row + 29).c_str());
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text{reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 4095)};
  const std::unique_ptr<char[]> copy{new char[text.size() + 1]};
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  constexpr wls_associate_entry untouched = {unset, {9, 9, 9, 9, 9, 9}};
  std::vector<wls_associate_entry> table(WLS_ASSOCIATE_ROWS_MAX, untouched);
  int count = unset;

  const std::uint32_t result =
      proreflax::parse_wls_associate(copy.get(), text.size(), table.data(), &count);
  std::vector<naive_station> expected;
  const bool found = naive_read(text, expected);
  require(result == (found ? 0U : 1U), "both readers find the same header");
  require(count == (found ? static_cast<int>(expected.size()) : unset),
          "both readers give the same count");
  require(expected.size() <= table.size(), "the table has room for the rows of any file");
  expected.resize(table.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    require(table[i].number == expected[i].number, "both readers give the same number");
    require(std::equal(table[i].mac, table[i].mac + 6, expected[i].mac.begin()),
            "both readers give the same address");
  }
  return 0;
}
