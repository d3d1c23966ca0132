// A complete section through its getter, against the same number of exchanges in bare system calls
// under one lock. Both request the section's keys from the same process, in the getter's order; it
// replies with the values of the factory file.
#include <benchmark/benchmark.h>
#include <proreflax/sections.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/bare_queue.h"
#include "bench/device_text.h"
#include "bench/ratio.h"
#include "tests/support/request_queue.h"

namespace {

using namespace bench;

/// The approximate number of exchanges in a round, which takes a fraction of a millisecond.
constexpr std::size_t exchanges_per_round = 36;

bool reads_lan() {
  static lan_info record;
  return gui_get_lan_info(&record) == CFC_OK && record.LanIPAddr == 0xC0A83E01 &&
         record.DnsSrv2 == 0;
}

bool reads_wireless() {
  static wireless_config record;
  return gui_get_wireless_config(&record) == CFC_OK && std::strcmp(record.essid, "IPCAM-AP") == 0 &&
         record.apmac[0] == 0x02 && record.max_users_allow == 0x20;
}

bool reads_sensors() {
  static sensors_cfg record;
  return get_sensors_cfg(&record) == CFC_OK &&
         std::strcmp(record.sdata[0], "type=door,zone=1,enable=1") == 0 &&
         record.sdata[100][0] == '\0';
}

section factory_section(const std::string& name) {
  const std::vector<section> all = factory_sections();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const section& each) { return each.name == name; });
  if (found == all.end()) {
    throw std::runtime_error("the factory file has no section " + name);
  }
  return *found;
}

void whole_section(benchmark::State& state, const char* name, bool (*read)()) {
  std::vector<std::string> keys;
  std::vector<std::string> values;
  for (const entry& entry : factory_section(name).entries) {
    keys.push_back(entry.key);
    values.push_back(entry.value);
  }
  const request_queue queue;
  const echo_process echo{queue.queue_id(), values};
  bare_client bare{name, keys};
  const std::size_t times = exchanges_per_round / keys.size() + 1;
  bool correct = true;
  compare(state, timed_by::wall, 1.05, [&](side side) {
    for (std::size_t i = 0; i < times && correct; ++i) {
      correct = side == side::library ? read() : bare.get_values() && bare.value() == values.back();
    }
  });
  if (!correct) {
    state.SkipWithError("a reply was missing or wrong");
  }
}

BENCHMARK_CAPTURE(whole_section, lan, "LAN", reads_lan)
    ->Name("section LAN, 6 values")
    ->UseManualTime()
    ->Iterations(2000);
BENCHMARK_CAPTURE(whole_section, wireless, "WIRELESS", reads_wireless)
    ->Name("section WIRELESS, 35 values")
    ->UseManualTime()
    ->Iterations(1000);
BENCHMARK_CAPTURE(whole_section, sensors, "SENSORS", reads_sensors)
    ->Name("section SENSORS, 202 values")
    ->UseManualTime()
    ->Iterations(500);

}  // namespace
