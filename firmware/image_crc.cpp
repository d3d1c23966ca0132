// CRC-32, four bytes per step, several steps in parallel.
//
// A step processes four bytes of the remainder with one lookup in each of four tables. Steps depend
// on each other, so a superscalar processor would wait for each of them. For such a processor the
// data is distributed, word by word, to independent remainders ("lanes"), which are combined in the
// last round. A table entry is then the remainder of a byte after one complete round.
//
// All remainders are stored in memory order, least significant byte first, so that a big-endian
// machine need not swap the bytes of each word that it loads.
//
// Cost in constants: 4 KiB with one lane, 5 KiB with more. One lane suits the 32-bit target, which
// executes one instruction at a time; the number for 64-bit machines was measured (bench/).
#include "firmware/image_crc.h"

#include <bit>
#include <cstddef>
#include <utility>

namespace proreflax {
namespace {

constexpr std::uint32_t polynomial = 0xEDB88320;
constexpr bool little_endian = std::endian::native == std::endian::little;
constexpr std::size_t lanes = sizeof(void*) == 4 ? 1 : 12;
constexpr std::size_t step_bytes = 4;
constexpr std::size_t round_bytes = step_bytes * lanes;

/// Converts a number to memory order, least significant byte first, and back.
constexpr std::uint32_t memory_order(std::uint32_t value) {
  return little_endian ? value
                       : value << 24 | (value & 0xFF00) << 8 | (value >> 8 & 0xFF00) | value >> 24;
}

/// The n-th byte in memory.
constexpr std::uint32_t byte_at(std::uint32_t word, std::size_t n) {
  return word >> (little_endian ? 8 * n : 24 - 8 * n) & 0xFF;
}

/// The word without its first byte.
constexpr std::uint32_t without_first_byte(std::uint32_t word) {
  return little_endian ? word >> 8 : word << 8;
}

// Rows of the tables: the remainder of a word's n-th byte at the end of a round, and that of a
// single byte after one byte. With one lane the latter is the same as that of a word's last byte.
constexpr std::size_t one_byte_row = lanes == 1 ? step_bytes - 1 : step_bytes;
constexpr std::size_t rows = one_byte_row + 1;

struct crc_tables {
  std::uint32_t row[rows][256]{};

  constexpr crc_tables() {
    std::uint32_t of_one_byte[256]{};
    for (std::uint32_t value = 0; value < 256; ++value) {
      of_one_byte[value] = with_zero_byte(value);
      row[one_byte_row][value] = memory_order(of_one_byte[value]);
    }
    for (std::uint32_t value = 0; value < 256; ++value) {
      std::uint32_t crc = value;
      for (std::size_t bytes = 1; bytes <= round_bytes; ++bytes) {
        crc = of_one_byte[crc & 0xFF] ^ crc >> 8;
        if (bytes + step_bytes > round_bytes) {
          row[round_bytes - bytes][value] = memory_order(crc);
        }
      }
    }
  }

  static constexpr std::uint32_t with_zero_byte(std::uint32_t crc) {
    for (int bit = 0; bit < 8; ++bit) {
      crc = crc >> 1 ^ ((crc & 1) != 0 ? polynomial : 0);
    }
    return crc;
  }
};

constexpr crc_tables tables;

/// Four bytes of an image, which need not be aligned.
std::uint32_t word_at(const std::uint8_t* data) {
  struct __attribute__((packed, may_alias)) unaligned_word {
    std::uint32_t value;
  };
  return reinterpret_cast<const unaligned_word*>(data)->value;
}

/// The remainder of a word at the end of a round.
std::uint32_t after_round(std::uint32_t word) {
  return tables.row[0][byte_at(word, 0)] ^ tables.row[1][byte_at(word, 1)] ^
         tables.row[2][byte_at(word, 2)] ^ tables.row[3][byte_at(word, 3)];
}

std::uint32_t after_byte(std::uint32_t crc) {
  return tables.row[one_byte_row][byte_at(crc, 0)] ^ without_first_byte(crc);
}

struct byte_range {
  const std::uint8_t* data;
  std::uint32_t length;

  void advance(std::uint32_t bytes) {
    data += bytes;
    length -= bytes;
  }
};

template <std::size_t... Lane>
std::uint32_t crc_of_rounds(std::uint32_t crc, byte_range& rest, std::index_sequence<Lane...>) {
  std::uint32_t lane[lanes] = {crc};
  for (; rest.length >= 2 * round_bytes; rest.advance(round_bytes)) {
    ((lane[Lane] = after_round(lane[Lane] ^ word_at(rest.data + step_bytes * Lane))), ...);
  }
  // The last round processes one lane after another, each starting from the remainder of the
  // previous one.
  crc = 0;
  for (const std::uint32_t each : lane) {
    crc ^= each ^ word_at(rest.data);
    for (std::size_t byte = 0; byte < step_bytes; ++byte) {
      crc = after_byte(crc);
    }
    rest.advance(step_bytes);
  }
  return crc;
}

}  // namespace

std::uint32_t image_crc32(std::uint32_t crc, const std::uint8_t* data, std::uint32_t length) {
  byte_range rest{data, length};
  crc = memory_order(crc);
  if (rest.length >= 2 * round_bytes) {
    crc = crc_of_rounds(crc, rest, std::make_index_sequence<lanes>());
  }
  for (; rest.length > 0; rest.advance(1)) {
    crc = after_byte(crc ^ memory_order(*rest.data));
  }
  return memory_order(crc);
}

}  // namespace proreflax
