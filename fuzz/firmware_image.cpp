// Any bytes as a firmware image, against a naive reader: the same result, and the same bytes at the
// same offsets of the flash.
//
// Random bytes never have correct checksums, so the checksums of the image and of all parts that
// its tables describe are corrected first, unless the input's first byte is 0.
#include <proreflax/firmware.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "firmware/flash_device.h"
#include "firmware/image_write.h"
#include "fuzz/require.h"

namespace {

using bytes = std::vector<std::uint8_t>;
using writes = std::vector<std::pair<std::uint32_t, bytes>>;

constexpr std::uint32_t region_size = 300;

std::uint32_t last_seek;
writes written;

std::uint64_t word(const bytes& image, std::uint64_t at) {
  std::uint64_t number = 0;
  for (std::uint64_t i = at; i < at + 4; ++i) {
    number = number * 256 + image.at(i);
  }
  return number;
}

void put_word(bytes& image, std::uint64_t at, std::uint32_t number) {
  for (int i = 3; i >= 0; --i, number >>= 8) {
    image.at(at + static_cast<std::uint64_t>(i)) = static_cast<std::uint8_t>(number);
  }
}

std::uint32_t naive_crc(const bytes& image, std::uint64_t from, std::uint64_t to) {
  std::uint32_t crc = 0;
  for (std::uint64_t i = from; i < to; ++i) {
    crc ^= image.at(i);
    for (int bit = 0; bit < 8; ++bit) {
      crc = crc % 2 == 1 ? crc / 2 ^ 0xEDB88320 : crc / 2;
    }
  }
  return crc;
}

std::uint32_t naive_header_crc(bytes image) {
  put_word(image, 4, 0);
  return naive_crc(image, 0, 64);
}

std::uint32_t naive_check(const bytes& image) {
  if (image.size() < 64) {
    return 233;
  }
  if (word(image, 0) != 0x27051956) {
    return 237;
  }
  if (image[30] < 2 || image[30] > 4) {
    return 236;
  }
  if (naive_header_crc(image) != word(image, 4)) {
    return 234;
  }
  const std::uint64_t data_size = word(image, 12);
  if (data_size > image.size() - 64) {
    return 238;
  }
  return naive_crc(image, 64, 64 + data_size) == word(image, 24) ? 0 : 235;
}

/// The sizes of the parts; none when the table is malformed.
std::vector<std::uint64_t> naive_table(const bytes& image) {
  std::vector<std::uint64_t> sizes;
  const std::uint64_t end = 64 + word(image, 12);
  for (std::uint64_t at = 64; at + 4 < end; at += 4) {
    if (word(image, at) == 0) {
      return sizes;
    }
    sizes.push_back(word(image, at));
  }
  return {};
}

bytes slice(const bytes& image, std::uint64_t at, std::uint64_t size) {
  return {image.begin() + static_cast<std::ptrdiff_t>(at),
          image.begin() + static_cast<std::ptrdiff_t>(at + size)};
}

std::uint32_t naive_write(std::uint32_t offset, const bytes& contents, writes& flash) {
  if (contents.size() > region_size) {
    return 232;
  }
  if (!contents.empty()) {
    flash.emplace_back(offset, contents);
  }
  return 0;
}

std::uint32_t naive_update(const bytes& image, int depth, writes& flash) {
  const std::uint32_t checked = naive_check(image);
  if (checked != 0) {
    return checked;
  }
  if (image[30] == 2) {
    return naive_write(0x1000, slice(image, 0, 64 + word(image, 12)), flash);
  }
  if (image[30] == 3) {
    return naive_write(0x2000, slice(image, 64, word(image, 12)), flash);
  }
  const std::vector<std::uint64_t> sizes = naive_table(image);
  if (sizes.empty() || depth > FW_NESTING_MAX) {
    return 238;
  }
  std::uint64_t at = 64 + 4 * (sizes.size() + 1);
  for (const std::uint64_t size : sizes) {
    if (at + size > image.size()) {
      return 238;
    }
    const std::uint32_t result = naive_update(slice(image, at, size), depth + 1, flash);
    if (result != 0) {
      return result;
    }
    at += size + (4 - size % 4) % 4;
  }
  return 0;
}

/// Corrects magic and checksums, those of the parts first.
void correct(bytes& image, int depth) {
  if (image.size() < 64 || depth > FW_NESTING_MAX + 1 || word(image, 12) > image.size() - 64) {
    return;
  }
  put_word(image, 0, 0x27051956);
  std::uint64_t at = 64;
  const std::vector<std::uint64_t> sizes =
      image[30] == 4 ? naive_table(image) : std::vector<std::uint64_t>{};
  at += 4 * (sizes.size() + 1);
  for (const std::uint64_t size : sizes) {
    if (at + size > image.size()) {
      break;
    }
    bytes part = slice(image, at, size);
    correct(part, depth + 1);
    std::copy(part.begin(), part.end(), image.begin() + static_cast<std::ptrdiff_t>(at));
    at += size + (4 - size % 4) % 4;
  }
  put_word(image, 24, naive_crc(image, 64, 64 + word(image, 12)));
  put_word(image, 4, naive_header_crc(image));
}

}  // namespace

namespace proreflax {

// The flash device: two regions, and a list of what was written where.

int flash_open() {
  return 7;
}
int flash_close(int /*descriptor*/) {
  return 0;
}
int flash_get_region(int /*descriptor*/, flash_region_req* request) {
  request->address = request->kind == flash_region_kernel ? 0xBF001000 : 0xBF002000;
  request->size = region_size;
  return 1;
}
std::uint32_t flash_get_base(int /*descriptor*/) {
  return 0xBF000000;
}
off_t flash_seek(int /*descriptor*/, std::uint32_t offset) {
  last_seek = offset;
  return offset;
}
ssize_t flash_write(int /*descriptor*/, const std::uint8_t* data, std::size_t length) {
  written.emplace_back(last_seek, bytes{data, data + length});
  return static_cast<ssize_t>(length);
}

}  // namespace proreflax

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  bytes image{data + 1, data + size};
  if (data[0] != 0) {
    correct(image, 1);
  }
  // Exactly as large as the image, so that the sanitizer detects a read beyond it.
  const std::unique_ptr<std::uint8_t[]> copy{new std::uint8_t[image.size()]};
  std::copy(image.begin(), image.end(), copy.get());
  written.clear();
  const std::uint32_t result =
      upgrade_kernel(copy.get(), static_cast<std::int32_t>(image.size()), 0);

  writes expected;
  require(result == naive_update(image, 1, expected), "both readers give the same result");
  require(written == expected, "both readers write the same bytes to the same offsets");
  require(std::equal(image.begin(), image.end(), copy.get()), "the image is not changed");
  require(proreflax::g_flash_fd == -1, "the device is closed");
  return 0;
}
