// The store's life cycle: loaded from flash or from the factory file, flushed on request, reset,
// closed. The temporary file exists only while config_center_init() or cfc_flush_all() runs.
#include "store/life_cycle.h"

#include <unistd.h>

#include "store/child_process.h"
#include "store/ini_text.h"
#include "store/paths.h"
#include "store/section_store.h"

namespace proreflax {
namespace {

constexpr int reading = 0;
constexpr int writing = 1;

std::uint32_t load_from_flash() {
  const std::uint32_t result = config_run_writeflash(reading, temporary_file);
  return result == CFC_OK ? config_load_file(temporary_file) : result;
}

}  // namespace

std::uint32_t config_flush_file(const char* path) {
  constexpr std::uint32_t loaded_and_dirty = CFG_LOADED | CFG_DIRTY;
  if ((g_config_mgmt.flags & (loaded_and_dirty | CFG_BUSY)) != loaded_and_dirty) {
    return CFC_ERR_NOTHING_TO_FLUSH;
  }
  g_config_mgmt.flags |= CFG_BUSY;
  std::uint32_t result = CFC_ERR_WRITE;
  if (std::FILE* const file = std::fopen(path, "w+"); file != nullptr) {
    result = config_export(&g_config_mgmt, file);
    std::fclose(file);
  }
  g_config_mgmt.flags &= result == CFC_OK ? ~(CFG_BUSY | CFG_DIRTY) : ~CFG_BUSY;
  return result;
}

}  // namespace proreflax

using namespace proreflax;

std::uint32_t config_center_init() {
  const std::uint32_t result = load_from_flash();
  unlink(temporary_file);
  if (result == CFC_OK) {
    return CFC_OK;
  }
  return config_to_default();
}

std::uint32_t config_center_close() {
  config_free_all(&g_config_mgmt);
  return CFC_OK;
}

std::uint32_t cfc_flush_all() {
  std::uint32_t result = config_flush_file(temporary_file);
  if (result == CFC_ERR_NOTHING_TO_FLUSH) {
    return CFC_OK;
  }
  // The store counts as clean as soon as the temporary file is complete: a failure of the flash
  // tool is reported once, and the tool is not run again until another value is set.
  if (result == CFC_OK) {
    result = config_run_writeflash(writing, temporary_file);
  }
  unlink(temporary_file);
  return result;
}

std::uint32_t config_to_default() {
  const std::uint32_t result = config_load_file(factory_file);
  if (result == CFC_OK) {
    // The defaults are active even if they could not be saved; the failure is not reported.
    static_cast<void>(config_run_writeflash(writing, factory_file));
  }
  return result;
}
