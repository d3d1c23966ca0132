// What is inside an image: the parts of a multi-file image, and of each other what goes to flash.
#ifndef PROREFLAX_FIRMWARE_IMAGE_PARTS_H
#define PROREFLAX_FIRMWARE_IMAGE_PARTS_H

#include <cstdint>

namespace proreflax {

/// Walks over the parts of a multi-file image that has passed image_check_header():
///
///     image_parts parts{image, size, nesting};
///     while (parts.next()) { ... parts.image(), parts.size() ... }
///     return parts.result();
class image_parts {
 public:
  /// `nesting` counts the images around the parts, `image` included.
  image_parts(const std::uint8_t* image, std::uint32_t size, int nesting);

  /// Steps to the next part, or the first: false at the end, and where the table is wrong.
  bool next();

  const std::uint8_t* image() const { return part_; }
  std::uint32_t size() const { return part_size_; }

  /// CFC_ERR_FW_TRUNCATED when there are no parts, the table is wrong where next() ended, or images
  /// are nested too deep.
  std::uint32_t result() const { return result_; }

 private:
  const std::uint8_t* whole_;
  std::uint64_t end_;
  std::uint64_t offset_;  // of the next part
  std::uint32_t parts_;
  std::uint32_t taken_ = 0;
  std::uint32_t result_;
  const std::uint8_t* part_ = nullptr;
  std::uint32_t part_size_ = 0;
};

/// What of a kernel or ramdisk goes to flash, and where to.
struct flash_contents {
  const std::uint8_t* data;
  std::uint32_t length;
  std::uint32_t region_kind;

  /// Nothing is written of a ramdisk without data, nor of what a signed length cannot tell.
  bool is_nothing() const { return static_cast<std::int32_t>(length) <= 0; }
};

flash_contents contents_of(const std::uint8_t* image);

}  // namespace proreflax

#endif
