#include "service/configuration.h"

#include <proreflax/result_text.h>
#include <proreflax/store.h>
#include <unistd.h>

#include "service/factory_settings.h"
#include "service/log.h"
#include "store/paths.h"

namespace proreflax {
namespace {

bool is_changed() {
  return (g_config_mgmt.flags & CFG_DIRTY) != 0;
}

/// The engine has loaded the factory settings and tried to save them, but does not report whether
/// it succeeded. If no child process ended, none was started.
void check_save_of_factory_settings(unsigned children_before) {
  if (ended_children() == children_before || !last_child_succeeded()) {
    g_config_mgmt.flags |= CFG_DIRTY;
    log_line(log_level::error, "the factory settings could not be saved; the next flush retries");
  }
}

void log_missing_configuration(std::uint32_t result) {
  const char* const reason =
      result == CFC_ERR_BAD_VALUE ? "malformed; cfc check reports where" : cfc_result_text(result);
  log_line(log_level::error, "no configuration: flash has none, and %s: %s (%u %s)", factory_file,
           reason, result, cfc_result_name(result));
}

}  // namespace

/// Loads what flash holds. A copy that is malformed was read; one that cannot be loaded for another
/// reason counts as unreadable.
void configuration::load_saved() {
  flash_ = read_flash();
  if (flash_ == saved_configuration::readable) {
    const std::uint32_t result = load_settings(temporary_file);
    from_flash_ = result == CFC_OK;
    if (result != CFC_OK && result != CFC_ERR_BAD_VALUE) {
      log_line(log_level::error, "%s cannot be loaded: %s (%u %s)", temporary_file,
               cfc_result_text(result), result, cfc_result_name(result));
      flash_ = saved_configuration::unreadable;
    }
  }
  unlink(temporary_file);
}

bool configuration::load() {
  const blocked_signals while_saving;
  load_saved();
  if (from_flash_) {
    return true;
  }
  const unsigned children_before = ended_children();
  // The engine finds nothing to load on flash either, and puts the factory settings there.
  const std::uint32_t result = flash_unreadable() ? load_factory_settings() : config_center_init();
  if (result != CFC_OK) {
    log_missing_configuration(result);
    return false;
  }
  if (flash_unreadable()) {
    log_line(log_level::error,
             "the saved configuration could not be read: the factory settings are served from "
             "memory, and flash is left alone until a program asks for a flush");
  } else {
    const unsigned reads = 1;
    check_save_of_factory_settings(children_before + reads);
  }
  return true;
}

std::uint32_t configuration::flush() {
  const bool changed = is_changed();
  const blocked_signals while_saving;
  const std::uint32_t result = cfc_flush_all();
  if (result == CFC_ERR_FLASH_W || result == CFC_ERR_FORK_FLASH_W) {
    g_config_mgmt.flags |= CFG_DIRTY;
  }
  if (result == CFC_OK && changed) {
    flash_ = saved_configuration::readable;
  }
  may_overwrite_ = may_overwrite_ || changed;
  return result;
}

std::uint32_t configuration::reset() {
  const blocked_signals while_saving;
  const unsigned children_before = ended_children();
  const std::uint32_t result = config_to_default();
  if (result == CFC_OK) {
    from_flash_ = false;
    check_save_of_factory_settings(children_before);
    may_overwrite_ = true;
    if (!is_changed()) {
      flash_ = saved_configuration::readable;
    }
  }
  return result;
}

bool configuration::save_at_end() {
  if (flash_unreadable() && !may_overwrite_) {
    if (is_changed()) {
      log_line(log_level::error,
               "what was set is lost: the saved configuration could not be read at start, and is "
               "not overwritten");
    }
    return !is_changed();
  }
  const std::uint32_t result = flush();
  if (result != CFC_OK) {
    log_line(log_level::error, "what was set could not be saved: %s (%u %s)",
             cfc_result_text(result), result, cfc_result_name(result));
  }
  return result == CFC_OK;
}

}  // namespace proreflax
