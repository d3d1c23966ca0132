// Loading a large file into the store and releasing it, against the minimum work of such a loader:
// read every line, allocate a block of memory for it, and free all blocks at the end. The blocks
// are kept until the last line is read, as the store keeps its records; nothing is copied into
// them.
#include <benchmark/benchmark.h>
#include <proreflax/store.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "bench/device_text.h"
#include "bench/ratio.h"
#include "store/ini_line.h"
#include "store/ini_text.h"

namespace {

using namespace bench;

constexpr std::size_t line_count = many_section_count * (2 + entries_per_section);

bool load_and_release(const char* path) {
  const bool loaded = proreflax::config_load_file(path) == CFC_OK;
  config_center_close();
  return loaded;
}

struct close_file {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

/// `blocks` has room for every line.
bool read_allocate_and_free(const char* path, std::vector<void*>& blocks) {
  const std::unique_ptr<std::FILE, close_file> file{std::fopen(path, "r")};
  if (file == nullptr) {
    return false;
  }
  std::size_t lines = 0;
  char line[proreflax::line_buffer_bytes];
  while (std::fgets(line, sizeof line, file.get()) != nullptr) {
    blocks[lines++] = std::malloc(std::strlen(line));
  }
  for (void* const block : blocks) {
    std::free(block);
  }
  return lines == blocks.size();
}

void load(benchmark::State& state) {
  const text_file file{many_sections()};
  std::vector<void*> blocks(line_count);
  bool done = true;
  compare(state, timed_by::processor, 1.5, [&](side side) {
    done &= side == side::library ? load_and_release(file.path())
                                  : read_allocate_and_free(file.path(), blocks);
  });
  if (!done) {
    state.SkipWithError("the file was not read to its end");
  }
}

BENCHMARK(load)->Name("loading 2000 sections of 24 entries")->UseManualTime()->Iterations(200);

}  // namespace
