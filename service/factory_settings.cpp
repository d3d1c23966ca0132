#include "service/factory_settings.h"

#include <proreflax/store.h>

#include <cstdio>

#include "store/ini_line.h"
#include "store/paths.h"

namespace proreflax {
namespace {

/// Adds one line to the store. As in the engine's own load, `cache` is the current section.
std::uint32_t add_line(char* text) {
  const ini_line line = read_ini_line(text);
  if (line.error != line_error::none) {
    return CFC_ERR_BAD_VALUE;
  }
  if (line.type == line_type::header) {
    g_config_mgmt.cache = segment_alloc(line.name);
    return g_config_mgmt.cache == nullptr ? CFC_ERR_NO_MEMORY : CFC_OK;
  }
  if (line.type == line_type::entry) {
    const cfg_segment* const section = g_config_mgmt.cache;
    if (section == nullptr) {
      return CFC_ERR_BAD_VALUE;
    }
    return cfc_set_val(cfg_segment_name(section), line.key, line.value);
  }
  return CFC_OK;
}

std::uint32_t add_lines(std::FILE* file) {
  char line[line_buffer_bytes];
  while (std::fgets(line, sizeof line, file) != nullptr) {
    if (const std::uint32_t result = add_line(line); result != CFC_OK) {
      return result;
    }
  }
  // Half a file is not a configuration: what a flush wrote of it would replace the whole one.
  if (std::ferror(file) != 0) {
    return CFC_ERR_NO_FILE;
  }
  return g_config_mgmt.cache == nullptr ? CFC_ERR_BAD_VALUE : CFC_OK;
}

}  // namespace

std::uint32_t load_settings(const char* path) {
  std::FILE* const file = std::fopen(path, "r");
  if (file == nullptr) {
    return CFC_ERR_NO_FILE;
  }
  const std::uint32_t result = add_lines(file);
  std::fclose(file);
  if (result == CFC_OK) {
    g_config_mgmt.flags = CFG_INITIALIZED | CFG_LOADED;
  } else {
    config_center_close();
  }
  return result;
}

std::uint32_t load_factory_settings() {
  return load_settings(factory_file);
}

}  // namespace proreflax
