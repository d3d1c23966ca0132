// firmware write: an image to flash, with everything told before it happens.
//
// Three phases: the image is checked and the flash asked where it goes,
// so that what the device would refuse is refused before anything is
// written; the library writes it; the flash is read back.
#ifndef PROREFLAX_TOOLS_CFC_FIRMWARE_WRITE_H
#define PROREFLAX_TOOLS_CFC_FIRMWARE_WRITE_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/firmware/image.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct firmware_write_command {
  std::string file;
  bool yes = false;  // do not ask
};

/// Bytes of an image and their place on flash.
struct planned_write {
  const image_view* image = nullptr;
  const std::uint8_t* data = nullptr;
  std::uint32_t length = 0;
  std::uint32_t region_kind = 0;
  std::uint32_t address = 0;      // of the region
  std::uint32_t region_size = 0;  // in bytes
  std::uint32_t offset = 0;       // of the region on the device
};

struct flash_plan {
  std::vector<planned_write> writes;
  std::uint32_t code = CFC_OK;  // what the device would give, as far as it can be told before
  std::string sentence;         // for a code other than CFC_OK

  /// Whether a later write goes to the same region.
  bool is_overwritten(const planned_write& write) const;
};

flash_plan plan_writes(const image_view& image);

/// How the flash compares with what was written.
struct comparison {
  enum class state { same, differs, not_readable };
  state found = state::not_readable;
  std::string sentence;  // where it differs, or why it cannot be read
};

comparison compare_with_flash(const planned_write& write);

exit_status run(const firmware_write_command& command, output& out);

}  // namespace cfc

#endif
