// A firmware image of a file, looked at with the rules that the device itself obeys (firmware/).
//
// An image is walked in the device's order and as far as the device would go: behind the first part
// that is refused nothing is looked at.
#ifndef PROREFLAX_TOOLS_CFC_FIRMWARE_IMAGE_H
#define PROREFLAX_TOOLS_CFC_FIRMWARE_IMAGE_H

#include <proreflax/firmware.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace cfc {

/// A file in memory, as far as it is of use: what is larger than any image is cut one byte behind
/// the limit.
struct loaded_file {
  std::vector<std::uint8_t> bytes;
  std::string failure;  // why it could not be read, with its name; empty when it was

  bool is_too_big() const { return bytes.size() > FW_IMAGE_SIZE_MAX; }
};

loaded_file load_file(const std::string& path);

struct image_checksum {
  std::uint32_t expected = 0;          // as the header has it
  std::optional<std::uint32_t> found;  // of the bytes; nothing when they are not there as a whole

  bool is_right() const { return expected == found; }
};

/// What was seen of an image, or of a part of one. The bytes belong to whoever loaded them.
struct image_view {
  std::string place;  // "part 2", "part 2.1"; empty for the image of the file
  const std::uint8_t* bytes = nullptr;
  std::uint32_t size = 0;
  std::uint32_t check = CFC_OK;  // what header and checksums give
  std::uint32_t table = CFC_OK;  // what the table of parts gives
  std::vector<image_view> parts;

  /// Whether there is a header whose fields mean something.
  bool has_header() const;
  /// Whether the data is there as a whole, so that its checksum can be told.
  bool has_data() const;
  bool is_multi() const;
  std::string name() const;
  /// Of an image that has a header.
  image_checksum header_checksum() const;
  image_checksum data_checksum() const;
};

image_view look_at_image(const std::vector<std::uint8_t>& bytes);

/// Where an image is refused, and with which code.
struct image_fault {
  const image_view* image = nullptr;
  std::uint32_t code = CFC_OK;

  /// A sentence, with the numbers that are at odds.
  std::string sentence() const;
  /// "part 2: 235 CFC_ERR_FW_DATA_CRC: " and the sentence.
  std::string in_words() const;
};

/// The first thing that the device would refuse. `judge` is asked for each kernel and ramdisk that
/// is reached, for the code of what the image alone does not tell.
std::optional<image_fault> first_fault(
    const image_view& image, const std::function<std::uint32_t(const image_view&)>& judge);

/// The same, judged by the image alone, its size included.
std::optional<image_fault> first_fault(const image_view& image);

/// "0x" and eight digits.
std::string show_word(std::uint32_t word);

/// `kernel "name", 1064 bytes`
std::string show_image(const image_view& image);

}  // namespace cfc

#endif
