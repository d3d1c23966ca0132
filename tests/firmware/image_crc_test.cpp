#include "firmware/image_crc.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/firmware/image_builder.h"
#include "tests/support/guarded_memory.h"

using namespace proreflax;

namespace {

const bytes digits = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};

std::uint32_t crc_of(const bytes& data) {
  return image_crc32(0, data.data(), static_cast<std::uint32_t>(data.size()));
}

}  // namespace

TEST(ImageCrc, of_the_nine_digits_is_2DFD2D88) {
  EXPECT_EQ(crc_of(digits), 0x2DFD2D88U);
  EXPECT_EQ(bitwise_crc(digits), 0x2DFD2D88U);
}

TEST(ImageCrc, is_not_the_common_one) {
  EXPECT_EQ(common_crc(digits), 0xCBF43926U);
}

TEST(ImageCrc, becomes_the_common_one_when_inverted_before_and_behind) {
  EXPECT_EQ(~image_crc32(0xFFFFFFFF, digits.data(), 9), 0xCBF43926U);
}

TEST(ImageCrc, of_nothing_is_what_came_before) {
  EXPECT_EQ(image_crc32(0x12345678, nullptr, 0), 0x12345678U);
}

TEST(ImageCrc, agrees_with_the_bitwise_one_at_every_length_and_alignment) {
  const bytes data = some_bytes(512);
  guarded_memory memory{1024};
  for (std::size_t length = 0; length <= data.size(); ++length) {
    const std::uint32_t expected =
        bitwise_crc({data.begin(), data.begin() + static_cast<std::ptrdiff_t>(length)});
    for (std::size_t shift = 0; shift < 8; ++shift) {
      std::uint8_t* const at = memory.bytes() + 1024 - length - shift;
      std::memcpy(at, data.data(), length);
      ASSERT_EQ(image_crc32(0, at, static_cast<std::uint32_t>(length)), expected)
          << length << " bytes, " << shift << " before the end";
    }
  }
}

TEST(ImageCrc, can_be_carried_on_from_any_place) {
  const bytes data = some_bytes(300);
  for (std::uint32_t cut = 0; cut <= 300; ++cut) {
    const std::uint32_t first = image_crc32(0, data.data(), cut);
    EXPECT_EQ(image_crc32(first, data.data() + cut, 300 - cut), bitwise_crc(data)) << cut;
  }
}

TEST(ImageCrc, of_a_large_stretch_agrees_with_the_bitwise_one) {
  const bytes data = some_bytes(1'000'003);
  EXPECT_EQ(crc_of(data), bitwise_crc(data));
}
