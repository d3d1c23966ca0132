// Writing firmware images to the open flash device.
#ifndef PROREFLAX_FIRMWARE_IMAGE_WRITE_H
#define PROREFLAX_FIRMWARE_IMAGE_WRITE_H

#include <cstdint>

namespace proreflax {

/// The flash device: -1 except while upgrade_kernel() runs.
extern int g_flash_fd;

/// The address of the flash device's first byte, as the driver last reported it: 0 before the first
/// time, all ones after a failure.
extern std::uint32_t g_flash_base;

/// Writes a kernel with its header, or a ramdisk without, to its region. The image has passed
/// image_check_header(). 0, 232 or 241 to 243.
std::uint32_t image_write_part(const std::uint8_t* image, std::uint32_t size);

}  // namespace proreflax

#endif
