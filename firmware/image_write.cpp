// From an image in memory to the regions of the flash.
//
// A multi-file image holds, behind its header, a table of part sizes that a zero ends, then the
// parts, each on the next 4-byte boundary and each a whole image, which may hold parts in turn.
//
// Sizes come from outside: all sums are made in 64 bits, where four bytes each cannot overflow
// them. A hostile image cannot make this expensive. Parts of one image do not overlap, so each
// level of nesting costs one pass over the bytes, and the levels are limited.
#include "firmware/image_write.h"

#include <proreflax/firmware.h>

#include "firmware/flash_device.h"
#include "firmware/image_check.h"
#include "firmware/image_header.h"

namespace proreflax {

int g_flash_fd = -1;
std::uint32_t g_flash_base = 0;

namespace {

constexpr std::uint32_t entry_size = 4;

/// Sizes of parts are signed numbers for the tools that make images.
constexpr std::uint32_t part_size_max = 0x7FFFFFFF;

std::uint32_t table_entry(const std::uint8_t* image, std::uint32_t index) {
  return big_endian(image + FW_HEADER_SIZE + std::uint64_t{entry_size} * index);
}

/// How many parts the table tells of; 0 when no zero word ends it inside the data. The zero word
/// must not be the data's last, on purpose: nothing would be left for the parts.
std::uint32_t count_parts(const std::uint8_t* image) {
  const std::uint64_t data_size = header_field(image, header_word::data_size);
  std::uint32_t count = 0;
  while (std::uint64_t{entry_size} * count + entry_size < data_size) {
    if (table_entry(image, count) == 0) {
      return count;
    }
    ++count;
  }
  return 0;
}

std::uint64_t rounded_up(std::uint32_t size) {
  return (std::uint64_t{size} + 3) & ~std::uint64_t{3};
}

std::uint32_t write_image(const std::uint8_t* image, std::uint32_t size, int nesting);

/// Writes the parts, which reach as far as the caller's bytes do, on purpose: the data size of the
/// header limits the table alone.
std::uint32_t write_parts(const std::uint8_t* image, std::uint32_t size, int nesting) {
  const std::uint32_t parts = count_parts(image);
  if (parts == 0 || nesting > FW_NESTING_MAX) {
    return CFC_ERR_FW_TRUNCATED;
  }
  std::uint64_t offset = FW_HEADER_SIZE + entry_size * (std::uint64_t{parts} + 1);
  for (std::uint32_t i = 0; i < parts; ++i) {
    const std::uint32_t part_size = table_entry(image, i);
    if (part_size > part_size_max || offset + part_size > size) {
      return CFC_ERR_FW_TRUNCATED;
    }
    const std::uint32_t result = write_image(image + offset, part_size, nesting + 1);
    if (result != CFC_OK) {
      return result;
    }
    offset += rounded_up(part_size);
  }
  return CFC_OK;
}

/// Writes an image; nesting counts the images around it, itself included.
std::uint32_t write_image(const std::uint8_t* image, std::uint32_t size, int nesting) {
  const std::uint32_t result = image_check_header(image, size);
  if (result != CFC_OK) {
    return result;
  }
  if (header_field(image, header_byte::type) == image_type_multi) {
    return write_parts(image, size, nesting);
  }
  return image_write_part(image, size);
}

/// What of an image goes to flash, and where to.
struct flash_contents {
  const std::uint8_t* data;
  std::uint32_t length;
  std::uint32_t region_kind;
};

flash_contents contents_of(const std::uint8_t* image) {
  const std::uint32_t data_size = header_field(image, header_word::data_size);
  if (header_field(image, header_byte::type) == image_type_kernel) {
    return {image, data_size + FW_HEADER_SIZE, flash_region_kernel};
  }
  return {image + FW_HEADER_SIZE, data_size, flash_region_ramdisk};
}

/// Closes the flash device on every way out.
class flash_closer {
 public:
  flash_closer() = default;
  ~flash_closer() {
    if (g_flash_fd >= 0) {
      flash_close(g_flash_fd);
      g_flash_fd = -1;
    }
  }
  flash_closer(const flash_closer&) = delete;
  flash_closer& operator=(const flash_closer&) = delete;
};

}  // namespace

std::uint32_t image_write_part(const std::uint8_t* image, std::uint32_t /*size*/) {
  const flash_contents contents = contents_of(image);
  if (static_cast<std::int32_t>(contents.length) <= 0) {
    return CFC_OK;
  }
  flash_region_req region{};
  region.kind = contents.region_kind;
  if (flash_get_region(g_flash_fd, &region) != 1) {
    return CFC_ERR_FW_REGION;
  }
  if (region.size < contents.length) {
    return CFC_ERR_FW_TOO_BIG;
  }
  if (flash_seek(g_flash_fd, region.address - g_flash_base) == -1) {
    return CFC_ERR_FW_SEEK;
  }
  const ssize_t written = flash_write(g_flash_fd, contents.data, contents.length);
  return written == static_cast<ssize_t>(contents.length) ? CFC_OK : CFC_ERR_FW_WRITE;
}

}  // namespace proreflax

using namespace proreflax;

std::uint32_t updateFlashImage(const std::uint8_t* image, std::uint32_t size_bytes) {
  return write_image(image, size_bytes, 1);
}

std::uint32_t upgrade_kernel(const std::uint8_t* image, std::int32_t size_bytes,
                             std::uint32_t /*ignored*/) {
  const flash_closer closer;
  if (size_bytes > FW_IMAGE_SIZE_MAX) {
    return CFC_ERR_FW_TOO_BIG;
  }
  if (g_flash_fd == -1) {
    g_flash_fd = flash_open();
  }
  if (g_flash_fd < 0) {
    return CFC_ERR_FW_OPEN;
  }
  g_flash_base = flash_get_base(g_flash_fd);
  if (g_flash_base == flash_no_base) {
    return CFC_ERR_FW_BASE;
  }
  return updateFlashImage(image, size_bytes < 0 ? 0 : static_cast<std::uint32_t>(size_bytes));
}
