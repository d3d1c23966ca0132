// Any bytes as a configuration file. The loader must accept and refuse the same files as a naive
// reader; what it accepted must be exported as the file that the naive reader's sections give, and
// loading that file must give the same store.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "fuzz/store_text.h"
#include "store/section_store.h"
#include "tests/store/naive_store.h"

namespace {

bool is_empty() {
  return g_config_mgmt.flags == 0 && g_config_mgmt.first == nullptr &&
         g_config_mgmt.cache == nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  return silence_export_notice() ? 0 : 1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text{reinterpret_cast<const char*>(data), size};
  naive_store naive;
  const std::uint32_t result = load(text);
  require(result == naive.load(text), "loader and naive reader accept the same files");
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
