// The header of a firmware image: 64 bytes, numbers big-endian, nothing aligned.
//
// Fields are read byte by byte, so that an image may be at any address in memory. Its bytes are
// never changed, not even temporarily for the header's own checksum.
#ifndef PROREFLAX_FIRMWARE_IMAGE_HEADER_H
#define PROREFLAX_FIRMWARE_IMAGE_HEADER_H

#include <proreflax/firmware.h>

#include <cstdint>

namespace proreflax {

inline constexpr std::uint32_t image_magic = 0x27051956;

/// Offsets of the numbers of four bytes.
enum class header_word : std::uint8_t {
  magic = 0,
  header_crc = 4,  // over the header with this field as 0
  time_stamp = 8,  // seconds since 1970
  data_size = 12,  // bytes after the header
  load_address = 16,
  entry_point = 20,
  data_crc = 24,
};

/// Offsets of the numbers of one byte.
enum class header_byte : std::uint8_t {
  operating_system = 28,
  architecture = 29,
  type = 30,
  compression = 31,
};

/// The name, padded with NULs; a name of full length has none.
inline constexpr std::uint32_t header_name_offset = 32;
inline constexpr std::uint32_t header_name_size = 32;
static_assert(header_name_offset + header_name_size == FW_HEADER_SIZE);

/// The types that this device accepts.
inline constexpr std::uint8_t image_type_kernel = 2;
inline constexpr std::uint8_t image_type_ramdisk = 3;
inline constexpr std::uint8_t image_type_multi = 4;

constexpr std::uint32_t big_endian(const std::uint8_t* bytes) {
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | std::uint32_t{bytes[3]};
}

constexpr std::uint32_t header_field(const std::uint8_t* image, header_word field) {
  return big_endian(image + static_cast<std::uint8_t>(field));
}

constexpr std::uint8_t header_field(const std::uint8_t* image, header_byte field) {
  return image[static_cast<std::uint8_t>(field)];
}

}  // namespace proreflax

#endif
