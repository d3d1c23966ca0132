// Writes an image in memory to the regions of the flash.
//
// A hostile image cannot make this expensive: parts of one image do not overlap, so each level of
// nesting costs one pass over the bytes, and the number of levels is limited.
#include "firmware/image_write.h"

#include <proreflax/firmware.h>

#include "firmware/flash_device.h"
#include "firmware/image_check.h"
#include "firmware/image_header.h"
#include "firmware/image_parts.h"

namespace proreflax {

int g_flash_fd = -1;
std::uint32_t g_flash_base = 0;

namespace {

std::uint32_t write_image(const std::uint8_t* image, std::uint32_t size, int nesting);

std::uint32_t write_parts(const std::uint8_t* image, std::uint32_t size, int nesting) {
  image_parts parts{image, size, nesting};
  while (parts.next()) {
    const std::uint32_t result = write_image(parts.image(), parts.size(), nesting + 1);
    if (result != CFC_OK) {
      return result;
    }
  }
  return parts.result();
}

/// Writes an image. `nesting` counts the images around it, itself included.
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

/// Closes the flash device on every return.
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
  if (contents.is_nothing()) {
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
