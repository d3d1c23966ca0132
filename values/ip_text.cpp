// IPv4 addresses as dotted quads: four decimal parts, single dots between them, nothing around
// them.
#include <proreflax/config.h>

#include <cstdint>
#include <cstdio>

namespace {

constexpr std::int32_t longest_quad_bytes = 16;  // 255.255.255.255 and its NUL

/// Reads the digits of one part, at least one, and moves `text` to the end of them. -1 when there
/// is no valid part.
std::int32_t read_part(const char*& text) {
  std::int32_t part = -1;
  for (; *text >= '0' && *text <= '9'; ++text) {
    part = (part < 0 ? 0 : part * 10) + (*text - '0');
    if (part > 255) {
      return -1;
    }
  }
  return part;
}

}  // namespace

std::uint32_t s_ip = 0xC0A83E01;
std::uint32_t s_mask = 0xFFFFFF00;

std::int32_t translate_ip_to_u32(const char* text, std::uint32_t* out) {
  if (text == nullptr || out == nullptr) {
    return -1;
  }
  std::uint32_t address = 0;
  for (int parts_left = 4; parts_left > 0; --parts_left) {
    const std::int32_t part = read_part(text);
    const char separator = parts_left > 1 ? '.' : '\0';
    if (part < 0 || *text != separator) {
      return -1;
    }
    ++text;
    address = address << 8 | static_cast<std::uint32_t>(part);
  }
  *out = address;
  return 0;
}

std::int32_t translate_u32_to_ip(char* buffer, std::int32_t size_bytes, std::uint32_t address) {
  if (buffer == nullptr || size_bytes < longest_quad_bytes) {
    return -1;
  }
  std::snprintf(buffer, longest_quad_bytes, "%u.%u.%u.%u", address >> 24, address >> 16 & 0xFF,
                address >> 8 & 0xFF, address & 0xFF);
  return 0;
}
