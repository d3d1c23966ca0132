// Any bytes as a configuration file. The loader must take and refuse what a naive reader takes and
// refuses; what it took must be exported to the text that the naive reader's sections give, and that
// text must load again to the same store.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "store/ini_text.h"
#include "store/section_store.h"
#include "tests/store/naive_store.h"

namespace {

/// One file in memory, filled anew for every load.
std::uint32_t load(std::string_view text) {
  static const int file = memfd_create("ini_text", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  const bool filled = ftruncate(file, 0) == 0 && pwrite(file, text.data(), text.size(), 0) ==
                                                     static_cast<ssize_t>(text.size());
  require(filled, "the file in memory can be written");
  return proreflax::config_load_file(path.c_str());
}

std::string exported() {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* const stream = open_memstream(&text, &size);
  require(proreflax::config_export(&g_config_mgmt, stream) == 0, "a store in memory is exported");
  std::fclose(stream);
  std::string all{text, size};
  std::free(text);
  return all;
}

bool is_empty() {
  return g_config_mgmt.flags == 0 && g_config_mgmt.first == nullptr &&
         g_config_mgmt.cache == nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  // The export's notice is of no use here.
  return std::freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text{reinterpret_cast<const char*>(data), size};
  naive_store naive;
  const std::uint32_t result = load(text);
  require(result == naive.load(text), "loader and naive reader take the same texts");
  if (result != 0) {
    require(is_empty(), "a load that fails leaves an empty store");
    return 0;
  }
  const std::string first = exported();
  require(first == naive.exported(), "loader and naive reader read the same sections");
  require(load(first) == 0, "what the export writes can be loaded");
  require(exported() == first, "what the export writes loads to the same store");
  proreflax::config_free_all(&g_config_mgmt);
  return 0;
}
