// The configuration that the service serves: where it came from, and whether it is saved.
//
// The store engine treats every failed read of flash as "nothing saved" and writes the factory
// settings there. This layer preserves a saved configuration that could not be read: it then serves
// the factory settings from memory and writes nothing to flash unless a client requests it. After a
// failed save the store counts as changed again, so that the next flush and the stop retry it.
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
  bool from_flash_ = false;
  saved_configuration flash_ = saved_configuration::nothing_saved;
};

}  // namespace proreflax

#endif
