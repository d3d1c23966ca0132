/* The header as a C program sees it. */
#include <proreflax/firmware.h>

uint32_t upgrade_from_c(const uint8_t* image, int32_t size_bytes);
uint32_t placeholders_from_c(void);

uint32_t upgrade_from_c(const uint8_t* image, int32_t size_bytes) {
  return upgrade_kernel(image, size_bytes, 7);
}

uint32_t placeholders_from_c(void) {
  gui_sys_reset();
  return gui_set_firmware_upgrade(0, 0);
}
