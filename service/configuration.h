// The configuration that the service serves: where it came from, and whether it is saved.
//
// The store engine takes every failed read of flash for "nothing saved" and puts the factory
// settings there. This layer keeps a saved configuration that could not be read: it then serves the
// factory settings from memory and writes nothing to flash unless a client asks for it. It reads
// flash once and loads that copy itself: a second read, by the engine, could fail. And it
// keeps a failed save from being forgotten: the store counts as changed again, so that the next
// flush and the stop try once more.
#ifndef PROREFLAX_SERVICE_CONFIGURATION_H
#define PROREFLAX_SERVICE_CONFIGURATION_H

#include <cstdint>

#include "service/flash_tool.h"

namespace proreflax {

class configuration {
 public:
  /// Loads the saved configuration or the factory settings. False, with an error logged, when
  /// neither can be loaded.
  bool load();

  /// Execute the requests of these names. Each blocks signals while the flash tool runs.
  std::uint32_t flush();
  std::uint32_t reset();

  /// Saves what was changed. False, with an error logged, when that was not possible.
  bool save_at_end();

  bool from_flash() const { return from_flash_; }
  bool flash_unreadable() const { return flash_ == saved_configuration::unreadable; }

 private:
  void load_saved();

  bool from_flash_ = false;
  bool may_overwrite_ = false;  // a client asked for it, though the save may have failed
  saved_configuration flash_ = saved_configuration::nothing_saved;
};

}  // namespace proreflax

#endif
