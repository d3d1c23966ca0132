// Checks that a firmware image is complete, undamaged and of a type for this device.
#ifndef PROREFLAX_FIRMWARE_IMAGE_CHECK_H
#define PROREFLAX_FIRMWARE_IMAGE_CHECK_H

#include <cstdint>

namespace proreflax {

/// Checks the header and both checksums, but not the parts of a multi-file image. 0, or 233 to 238
/// for the first error. The image is not changed, and not read beyond its size.
std::uint32_t image_check_header(const std::uint8_t* image, std::uint32_t size);

/// The checksum that the header must contain, computed with its own four bytes as 0. `image` has at
/// least FW_HEADER_SIZE bytes.
std::uint32_t image_header_crc(const std::uint8_t* image);

}  // namespace proreflax

#endif
