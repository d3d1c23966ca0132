// The store as INI text in memory: loaded from bytes, exported to bytes.
#ifndef PROREFLAX_FUZZ_STORE_TEXT_H
#define PROREFLAX_FUZZ_STORE_TEXT_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "store/ini_text.h"

/// Loads the store from a file in memory, which is refilled for every load.
inline std::uint32_t load(std::string_view text) {
  static const int file = memfd_create("store_text", 0);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  const bool filled = ftruncate(file, 0) == 0 && pwrite(file, text.data(), text.size(), 0) ==
                                                     static_cast<ssize_t>(text.size());
  require(filled, "the file in memory can be written");
  return proreflax::config_load_file(path.c_str());
}

inline std::string exported() {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* const stream = open_memstream(&text, &size);
  require(proreflax::config_export(&g_config_mgmt, stream) == 0, "a store in memory is exported");
  std::fclose(stream);
  std::string all{text, size};
  std::free(text);
  return all;
}

/// Suppresses the line that every export prints.
inline bool silence_export_notice() {
  return std::freopen("/dev/null", "w", stdout) != nullptr;
}

#endif
