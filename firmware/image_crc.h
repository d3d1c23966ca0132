// The checksum of this device's firmware images.
#ifndef PROREFLAX_FIRMWARE_IMAGE_CRC_H
#define PROREFLAX_FIRMWARE_IMAGE_CRC_H

#include <cstdint>

namespace proreflax {

/// Continues a checksum over further bytes; start with 0. The polynomial is that of the common
/// CRC-32, but the value is inverted neither before nor after: "123456789" gives 0x2DFD2D88. Images
/// for this device contain this variant.
std::uint32_t image_crc32(std::uint32_t crc, const std::uint8_t* data, std::uint32_t length);

}  // namespace proreflax

#endif
