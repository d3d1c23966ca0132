#include "firmware/image_check.h"

#include <proreflax/firmware.h>

#include "firmware/image_crc.h"
#include "firmware/image_header.h"

namespace proreflax {
namespace {

bool is_accepted_type(std::uint8_t type) {
  return type == image_type_kernel || type == image_type_ramdisk || type == image_type_multi;
}

}  // namespace

std::uint32_t image_header_crc(const std::uint8_t* image) {
  constexpr std::uint8_t zeros[4] = {};
  constexpr auto field = static_cast<std::uint32_t>(header_word::header_crc);
  constexpr std::uint32_t field_end = field + sizeof zeros;
  const std::uint32_t crc = image_crc32(image_crc32(0, image, field), zeros, sizeof zeros);
  return image_crc32(crc, image + field_end, FW_HEADER_SIZE - field_end);
}

std::uint32_t image_check_header(const std::uint8_t* image, std::uint32_t size) {
  if (image == nullptr || size < FW_HEADER_SIZE) {
    return CFC_ERR_FW_SHORT;
  }
  if (header_field(image, header_word::magic) != image_magic) {
    return CFC_ERR_FW_MAGIC;
  }
  if (!is_accepted_type(header_field(image, header_byte::type))) {
    return CFC_ERR_FW_TYPE;
  }
  if (image_header_crc(image) != header_field(image, header_word::header_crc)) {
    return CFC_ERR_FW_HDR_CRC;
  }
  const std::uint32_t data_size = header_field(image, header_word::data_size);
  if (size - FW_HEADER_SIZE < data_size) {
    return CFC_ERR_FW_TRUNCATED;
  }
  const std::uint32_t data_crc = image_crc32(0, image + FW_HEADER_SIZE, data_size);
  return data_crc == header_field(image, header_word::data_crc) ? CFC_OK : CFC_ERR_FW_DATA_CRC;
}

}  // namespace proreflax
