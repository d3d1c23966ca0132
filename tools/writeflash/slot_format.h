// The bytes of one flash slot: a header of 20 bytes, then the text.
//
// All numbers are big-endian, so that a slot can be carried from one machine to another. The
// checksum covers every other byte of the slot. A header of zeros is no header, and neither is any
// mixture of zeros and the front of one: its checksum stands last. proreflax_flash(5) describes it.
#ifndef PROREFLAX_TOOLS_WRITEFLASH_SLOT_FORMAT_H
#define PROREFLAX_TOOLS_WRITEFLASH_SLOT_FORMAT_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace proreflax {

inline constexpr std::uint32_t slot_magic = 0x50464C53;  // "PFLS"
inline constexpr std::uint32_t slot_version = 1;
inline constexpr std::size_t slot_header_bytes = 20;

/// A slot with the longest text is still a file that a 32-bit machine can open.
inline constexpr std::uint32_t longest_text_bytes = 0x7FFFFFFF - slot_header_bytes;

using slot_header_row = std::array<unsigned char, slot_header_bytes>;

/// CRC-32 as of Ethernet: reflected polynomial 0xEDB88320, all ones before and after.
class crc32 {
 public:
  constexpr void add(const unsigned char* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
      rest_ ^= bytes[i];
      rest_ = (rest_ >> 4) ^ nibbles[rest_ & 15];
      rest_ = (rest_ >> 4) ^ nibbles[rest_ & 15];
    }
  }

  constexpr std::uint32_t value() const { return ~rest_; }

 private:
  static constexpr std::array<std::uint32_t, 16> nibbles = [] {
    std::array<std::uint32_t, 16> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
      table[i] = i;
      for (int bit = 0; bit < 4; ++bit) {
        table[i] = (table[i] >> 1) ^ (table[i] % 2 != 0 ? 0xEDB88320 : 0);
      }
    }
    return table;
  }();

  std::uint32_t rest_ = 0xFFFFFFFF;
};

struct slot_header {
  std::uint32_t magic = slot_magic;
  std::uint32_t version = slot_version;
  std::uint32_t sequence = 0;
  std::uint32_t length = 0;
  std::uint32_t checksum = 0;
};

constexpr void put_u32(unsigned char* bytes, std::uint32_t number) {
  for (int i = 0; i < 4; ++i) {
    bytes[i] = static_cast<unsigned char>(number >> (24 - 8 * i));
  }
}

constexpr std::uint32_t take_u32(const unsigned char* bytes) {
  std::uint32_t number = 0;
  for (int i = 0; i < 4; ++i) {
    number = number << 8 | bytes[i];
  }
  return number;
}

constexpr slot_header_row to_row(const slot_header& header) {
  slot_header_row row{};
  put_u32(&row[0], header.magic);
  put_u32(&row[4], header.version);
  put_u32(&row[8], header.sequence);
  put_u32(&row[12], header.length);
  put_u32(&row[16], header.checksum);
  return row;
}

constexpr slot_header from_row(const slot_header_row& row) {
  return {take_u32(&row[0]), take_u32(&row[4]), take_u32(&row[8]), take_u32(&row[12]),
          take_u32(&row[16])};
}

/// The checksum of a slot as far as its header goes; the text is added behind.
constexpr crc32 checksum_of(const slot_header& header) {
  crc32 sum;
  sum.add(to_row(header).data(), slot_header_bytes - sizeof header.checksum);
  return sum;
}

/// Whether a sequence number comes after another. Numbers go round: 0 comes after 0xFFFFFFFF.
constexpr bool comes_after(std::uint32_t a, std::uint32_t b) {
  return a != b && a - b < 0x80000000;
}

}  // namespace proreflax

#endif
