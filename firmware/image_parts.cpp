// A multi-file image contains, after its header, a table of part sizes that ends with a zero, then
// the parts. Each part starts at the next 4-byte boundary and is a complete image, which may itself
// contain parts.
//
// Sizes are untrusted input: all sums are computed in 64 bits, where 32-bit sizes cannot overflow
// them.
#include "firmware/image_parts.h"

#include <proreflax/firmware.h>

#include "firmware/flash_device.h"
#include "firmware/image_header.h"

namespace proreflax {
namespace {

constexpr std::uint32_t entry_size = 4;

/// The tools that create images use signed numbers for the sizes of parts.
constexpr std::uint32_t part_size_max = 0x7FFFFFFF;

std::uint32_t table_entry(const std::uint8_t* image, std::uint32_t index) {
  return big_endian(image + FW_HEADER_SIZE + std::uint64_t{entry_size} * index);
}

/// The number of parts in the table; 0 when no zero word ends it inside the data. The zero word
/// must not be the last word of the data: no data would be left for the parts.
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

}  // namespace

// The data size of the header limits only the table; the parts may extend to the end of the
// caller's bytes.
image_parts::image_parts(const std::uint8_t* image, std::uint32_t size, int nesting)
    : image_{image},
      end_{size},
      parts_{nesting > FW_NESTING_MAX ? 0 : count_parts(image)},
      result_{parts_ == 0 ? CFC_ERR_FW_TRUNCATED : CFC_OK} {
  offset_ = FW_HEADER_SIZE + entry_size * (std::uint64_t{parts_} + 1);
}

bool image_parts::next() {
  if (visited_ == parts_) {
    return false;
  }
  part_size_ = table_entry(image_, visited_);
  if (part_size_ > part_size_max || offset_ + part_size_ > end_) {
    result_ = CFC_ERR_FW_TRUNCATED;
    return false;
  }
  part_ = image_ + offset_;
  offset_ += rounded_up(part_size_);
  ++visited_;
  return true;
}

flash_contents contents_of(const std::uint8_t* image) {
  const std::uint32_t data_size = header_field(image, header_word::data_size);
  if (header_field(image, header_byte::type) == image_type_kernel) {
    return {image, data_size + FW_HEADER_SIZE, flash_region_kernel};
  }
  return {image + FW_HEADER_SIZE, data_size, flash_region_ramdisk};
}

}  // namespace proreflax
