#include "tests/firmware/image_builder.h"

#include <array>

namespace {

std::uint32_t carried_on(std::uint32_t crc, const bytes& data) {
  for (const std::uint8_t byte : data) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) {
      const bool carry = (crc & 1) != 0;
      crc >>= 1;
      if (carry) {
        crc ^= 0xEDB88320;
      }
    }
  }
  return crc;
}

}  // namespace

std::uint32_t bitwise_crc(const bytes& data) {
  return carried_on(0, data);
}

std::uint32_t common_crc(const bytes& data) {
  return ~carried_on(0xFFFFFFFF, data);
}

bytes build(const image& parts) {
  bytes header(64);
  put_big_endian(header, 0, parts.magic);
  put_big_endian(header, 12,
                 parts.data_size.value_or(static_cast<std::uint32_t>(parts.data.size())));
  put_big_endian(header, 24, parts.data_crc ? *parts.data_crc : bitwise_crc(parts.data));
  header[30] = parts.type;
  put_big_endian(header, 4, parts.header_crc.value_or(bitwise_crc(header)));
  header.insert(header.end(), parts.data.begin(), parts.data.end());
  return header;
}

bytes multi_data(const std::vector<bytes>& parts) {
  bytes data;
  for (const bytes& part : parts) {
    append_big_endian(data, static_cast<std::uint32_t>(part.size()));
  }
  append_big_endian(data, 0);
  for (const bytes& part : parts) {
    data.resize((data.size() + 3) / 4 * 4);
    data.insert(data.end(), part.begin(), part.end());
  }
  return data;
}

bytes multi_file(const std::vector<bytes>& parts) {
  return build({.type = 4, .data = multi_data(parts)});
}

bytes kernel(const bytes& data) {
  return build({.type = 2, .data = data});
}

bytes ramdisk(const bytes& data) {
  return build({.type = 3, .data = data});
}

bytes some_bytes(std::size_t count, std::uint32_t seed) {
  bytes all(count);
  for (std::uint8_t& byte : all) {
    seed = seed * 1664525 + 1013904223;
    byte = static_cast<std::uint8_t>(seed >> 24);
  }
  return all;
}

void put_big_endian(bytes& where, std::size_t offset, std::uint32_t number) {
  for (std::size_t i = 0; i < 4; ++i) {
    where[offset + i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
  }
}

void append_big_endian(bytes& where, std::uint32_t number) {
  where.resize(where.size() + 4);
  put_big_endian(where, where.size() - 4, number);
}

void correct_checksums(bytes& whole) {
  put_big_endian(whole, 24, bitwise_crc({whole.begin() + 64, whole.end()}));
  put_big_endian(whole, 4, 0);
  put_big_endian(whole, 4, bitwise_crc({whole.begin(), whole.begin() + 64}));
}
