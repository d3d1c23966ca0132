// The contents of an image: the parts of a multi-file image, and the flash contents of the others.
#ifndef PROREFLAX_FIRMWARE_IMAGE_PARTS_H
#define PROREFLAX_FIRMWARE_IMAGE_PARTS_H

#include <cstdint>

namespace proreflax {

/// Iterates over the parts of a multi-file image that has passed image_check_header():
///
///     image_parts parts{image, size, nesting};
///     while (parts.next()) { ... parts.image(), parts.size() ... }
///     return parts.result();
class image_parts {
 public:
  /// `nesting` counts the images around the parts, `image` included.
  image_parts(const std::uint8_t* image, std::uint32_t size, int nesting);

  /// Moves to the first or the next part. False at the end, and where the table is wrong.
  bool next();

  const std::uint8_t* image() const { return part_; }
  std::uint32_t size() const { return part_size_; }

  /// CFC_ERR_FW_TRUNCATED when the image has no parts, the table is wrong where next() ended, or
  /// images are nested too deeply.
  std::uint32_t result() const { return result_; }

 private:
  const std::uint8_t* image_;
  std::uint64_t end_;
  std::uint64_t offset_;  // of the next part
  std::uint32_t parts_;
  std::uint32_t visited_ = 0;
  std::uint32_t result_;
  const std::uint8_t* part_ = nullptr;
  std::uint32_t part_size_ = 0;
};

/// The bytes of a kernel or ramdisk that are written to flash, and their region.
struct flash_contents {
  const std::uint8_t* data;
  std::uint32_t length;
  std::uint32_t region_kind;

  /// Nothing is written for a ramdisk without data, or if a signed length cannot express the size.
  bool is_nothing() const { return static_cast<std::int32_t>(length) <= 0; }
};

flash_contents contents_of(const std::uint8_t* image);

}  // namespace proreflax

#endif
