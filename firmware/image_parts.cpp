// A multi-file image holds, behind its header, a table of part sizes that a zero ends, then the
// parts, each on the next 4-byte boundary and each a whole image, which may hold parts in turn.
//
// Sizes come from outside: all sums are made in 64 bits, where four bytes each cannot overflow
// them.
#include "firmware/image_parts.h"

#include <proreflax/firmware.h>

#include "firmware/flash_device.h"
#include "firmware/image_header.h"

namespace proreflax {
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

}  // namespace

// The parts reach as far as the caller's bytes do, on purpose: the data size of the header limits
// the table alone.
image_parts::image_parts(const std::uint8_t* image, std::uint32_t size, int nesting)
    : whole_{image},
      end_{size},
      parts_{nesting > FW_NESTING_MAX ? 0 : count_parts(image)},
      result_{parts_ == 0 ? CFC_ERR_FW_TRUNCATED : CFC_OK} {
  offset_ = FW_HEADER_SIZE + entry_size * (std::uint64_t{parts_} + 1);
}

bool image_parts::next() {
  if (taken_ == parts_) {
    return false;
  }
  part_size_ = table_entry(whole_, taken_);
  if (part_size_ > part_size_max || offset_ + part_size_ > end_) {
    result_ = CFC_ERR_FW_TRUNCATED;
    return false;
  }
  part_ = whole_ + offset_;
  offset_ += rounded_up(part_size_);
  ++taken_;
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
