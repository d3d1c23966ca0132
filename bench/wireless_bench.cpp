// The readers of the wireless driver's files, against opening, reading and closing the same file as
// a stream, the minimum work of a reader. The files are those in the device's directory of a
// development machine.
#include <benchmark/benchmark.h>
#include <proreflax/wireless.h>

#include <cstdint>
#include <cstdio>

#include "bench/ratio.h"
#include "wireless/proc_file.h"

namespace {

using namespace bench;

constexpr int calls_per_round = 200;

bool open_read_and_close(const char* path) {
  static char buffer[proreflax::proc_buf_capacity];
  std::FILE* const file = std::fopen(path, "r");
  if (file == nullptr) {
    return false;
  }
  const bool done = std::fread(buffer, 1, sizeof buffer - 1, file) > 0;
  return std::fclose(file) == 0 && done;
}

std::uint32_t status() {
  static wls_11g_status record;
  return gui_get_wls_11g_status(&record);
}

std::uint32_t events() {
  static wls_event_log_entry table[WLS_EVENT_LOG_ROWS_MAX];
  int count = 0;
  return gui_get_wls_event_log_table(&count, table);
}

std::uint32_t stations() {
  static wls_associate_entry table[WLS_ASSOCIATE_ROWS_MAX];
  int count = 0;
  return gui_get_wls_associate(table, &count);
}

void compare_reader(benchmark::State& state, std::uint32_t (*reader)(), const char* path) {
  bool done = true;
  compare(state, timed_by::processor, 1.5, [&](side side) {
    for (int i = 0; i < calls_per_round; ++i) {
      done &= side == side::library ? reader() == CFC_OK : open_read_and_close(path);
    }
  });
  if (!done) {
    state.SkipWithError("a file was not read");
  }
}

BENCHMARK_CAPTURE(compare_reader, status, status, proreflax::status_file)
    ->Name("reading the wireless status")
    ->UseManualTime()
    ->Iterations(101);
BENCHMARK_CAPTURE(compare_reader, events, events, proreflax::event_log_file)
    ->Name("reading the wireless event log")
    ->UseManualTime()
    ->Iterations(101);
BENCHMARK_CAPTURE(compare_reader, stations, stations, proreflax::status_file)
    ->Name("reading the associated stations")
    ->UseManualTime()
    ->Iterations(101);

}  // namespace
