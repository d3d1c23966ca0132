// Two operations of the interface that this device does not support.
#include <proreflax/firmware.h>

#include <cstdint>

std::uint32_t gui_set_firmware_upgrade(const void* /*image*/, std::uint32_t /*size_bytes*/) {
  return CFC_FAILED;
}

void gui_sys_reset() {}
