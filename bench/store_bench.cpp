// Reading values out of the store, against a map of maps of strings: both find an entry by section
// name and key, and copy its value into the caller's buffer.
//
// Every round reads each entry of the store once, in the order in which a record of a section is
// filled, or in a fixed shuffled order.
#include <benchmark/benchmark.h>
#include <proreflax/store.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bench/device_text.h"
#include "bench/ratio.h"
#include "store/ini_text.h"

namespace {

using namespace bench;

using map_of_maps = std::unordered_map<std::string, std::unordered_map<std::string, std::string>>;

struct value_buffer {
  char bytes[256];
  std::uint32_t length;

  std::string_view string() const { return {bytes, length}; }
};

map_of_maps make_map(const std::vector<section>& sections) {
  map_of_maps map;
  for (const section& section : sections) {
    for (const entry& entry : section.entries) {
      map[section.name][entry.key] = entry.value;
    }
  }
  return map;
}

bool read_map(const map_of_maps& map, const char* section_name, const char* key,
              value_buffer& out) {
  const auto section = map.find(section_name);
  if (section == map.end()) {
    return false;
  }
  const auto entry = section->second.find(key);
  if (entry == section->second.end()) {
    return false;
  }
  const std::string& value = entry->second;
  out.length = static_cast<std::uint32_t>(value.size());
  value.copy(out.bytes, value.size());
  return true;
}

bool read_store(const char* section_name, const char* key, value_buffer& out) {
  return cfc_get_val(section_name, key, out.bytes, &out.length) == CFC_OK;
}

struct reading {
  const char* section_name;
  const char* key;
  const char* value;
};

enum class order { stored, random };

std::vector<reading> readings_of(const std::vector<section>& sections, order order) {
  std::vector<reading> readings;
  for (const section& section : sections) {
    for (const entry& entry : section.entries) {
      readings.push_back({section.name.c_str(), entry.key.c_str(), entry.value.c_str()});
    }
  }
  if (order == order::random) {
    std::shuffle(readings.begin(), readings.end(), std::mt19937{46});
  }
  return readings;
}

void get_value(benchmark::State& state, std::vector<section> (*make_sections)(), order order,
               double limit) {
  const std::vector<section> sections = make_sections();
  const std::vector<reading> readings = readings_of(sections, order);
  const map_of_maps map = make_map(sections);
  if (proreflax::config_load_file(text_file{sections}.path()) != CFC_OK) {
    state.SkipWithError("the store does not load");
    return;
  }
  const auto agrees = [&](const reading& reading) {
    value_buffer stored{};
    value_buffer mapped{};
    return read_store(reading.section_name, reading.key, stored) &&
           read_map(map, reading.section_name, reading.key, mapped) &&
           stored.string() == reading.value && mapped.string() == reading.value;
  };
  if (!std::all_of(readings.begin(), readings.end(), agrees)) {
    state.SkipWithError("store and map do not agree");
    return;
  }
  const auto read_all = [&](auto read) {
    value_buffer out;
    for (const reading& reading : readings) {
      bool found = read(reading, out);
      benchmark::DoNotOptimize(found);
      benchmark::DoNotOptimize(out);
    }
  };
  compare(state, timed_by::processor, limit, [&](side side) {
    if (side == side::library) {
      read_all([](const reading& r, value_buffer& out) {
        return read_store(r.section_name, r.key, out);
      });
    } else {
      read_all([&](const reading& r, value_buffer& out) {
        return read_map(map, r.section_name, r.key, out);
      });
    }
  });
  config_center_close();
}

BENCHMARK_CAPTURE(get_value, stored, device_sections, order::stored, 0.5)
    ->Name("value of 46 sections of 24, stored order")
    ->UseManualTime()
    ->Iterations(4000);
BENCHMARK_CAPTURE(get_value, random, device_sections, order::random, 1.0)
    ->Name("value of 46 sections of 24, random order")
    ->UseManualTime()
    ->Iterations(4000);
BENCHMARK_CAPTURE(get_value, factory_stored, factory_sections, order::stored, no_limit)
    ->Name("value of the factory text, stored order")
    ->UseManualTime()
    ->Iterations(4000);
BENCHMARK_CAPTURE(get_value, factory_random, factory_sections, order::random, no_limit)
    ->Name("value of the factory text, random order")
    ->UseManualTime()
    ->Iterations(4000);
BENCHMARK_CAPTURE(get_value, many_stored, many_sections, order::stored, no_limit)
    ->Name("value of 2000 sections, stored order")
    ->UseManualTime()
    ->Iterations(30);
BENCHMARK_CAPTURE(get_value, many_random, many_sections, order::random, no_limit)
    ->Name("value of 2000 sections, random order")
    ->UseManualTime()
    ->Iterations(30);

}  // namespace
