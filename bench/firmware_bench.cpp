// Checking a firmware image of the largest size, against zlib's CRC-32 of the same bytes: the two
// checksums differ only in two inversions.
#include <benchmark/benchmark.h>
#include <proreflax/firmware.h>
#include <zlib.h>

#include <cstdint>
#include <vector>

#include "bench/ratio.h"
#include "firmware/image_check.h"
#include "firmware/image_crc.h"
#include "firmware/image_header.h"

namespace {

using namespace bench;
using namespace proreflax;
using bytes = std::vector<std::uint8_t>;

void put_big_endian(bytes& image, header_word field, std::uint32_t number) {
  for (std::size_t i = 0; i < 4; ++i) {
    image[static_cast<std::size_t>(field) + i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
  }
}

/// A kernel image of 11 MiB.
bytes largest_image() {
  bytes image(FW_IMAGE_SIZE_MAX);
  std::uint32_t seed = 1;
  for (std::size_t i = FW_HEADER_SIZE; i < image.size(); ++i) {
    seed = seed * 1664525 + 1013904223;
    image[i] = static_cast<std::uint8_t>(seed >> 24);
  }
  constexpr std::uint32_t data_size = FW_IMAGE_SIZE_MAX - FW_HEADER_SIZE;
  image[static_cast<std::size_t>(header_byte::type)] = image_type_kernel;
  put_big_endian(image, header_word::magic, image_magic);
  put_big_endian(image, header_word::data_size, data_size);
  put_big_endian(image, header_word::data_crc, image_crc32(0, &image[FW_HEADER_SIZE], data_size));
  put_big_endian(image, header_word::header_crc, image_crc32(0, image.data(), FW_HEADER_SIZE));
  return image;
}

void check_against_zlib(benchmark::State& state) {
  const bytes image = largest_image();
  bool accepted = true;
  compare(state, timed_by::processor, 1.05, [&](side side) {
    if (side == side::library) {
      accepted &= image_check_header(image.data(), FW_IMAGE_SIZE_MAX) == CFC_OK;
    } else {
      benchmark::DoNotOptimize(crc32(0, image.data(), FW_IMAGE_SIZE_MAX));
    }
  });
  if (!accepted) {
    state.SkipWithError("the image was refused");
  }
}

BENCHMARK(check_against_zlib)
    ->Name("checking an image of 11 MiB")
    ->UseManualTime()
    ->Iterations(101);

}  // namespace
