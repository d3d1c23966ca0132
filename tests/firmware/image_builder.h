// Images to test with, made from parts. Everything that can be wrong can be made wrong.
#ifndef PROREFLAX_TESTS_FIRMWARE_IMAGE_BUILDER_H
#define PROREFLAX_TESTS_FIRMWARE_IMAGE_BUILDER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

using bytes = std::vector<std::uint8_t>;

/// The checksum of this device's images in a second writing, bit by bit.
std::uint32_t bitwise_crc(const bytes& data);

/// The common CRC-32 of the same bytes: all bits inverted before and behind.
std::uint32_t common_crc(const bytes& data);

/// What stands in an image; what is not given is computed.
struct image {
  std::uint8_t type = 2;
  bytes data;
  std::uint32_t magic = 0x27051956;
  std::optional<std::uint32_t> data_size;
  std::optional<std::uint32_t> data_crc;
  std::optional<std::uint32_t> header_crc;
};

bytes build(const image& parts);

/// The data of a multi-file image: the table, then the parts on 4-byte boundaries.
bytes multi_data(const std::vector<bytes>& parts);

/// A multi-file image of these parts.
bytes multi_file(const std::vector<bytes>& parts);

bytes kernel(const bytes& data);
bytes ramdisk(const bytes& data);

/// Bytes that differ from each other, seeded.
bytes some_bytes(std::size_t count, std::uint32_t seed = 1);

void put_big_endian(bytes& where, std::size_t offset, std::uint32_t number);
void append_big_endian(bytes& where, std::uint32_t number);

/// Replaces both checksums of an image by those of this device.
void correct_checksums(bytes& whole);

#endif
