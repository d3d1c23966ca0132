#include "firmware/image_check.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstring>

#include "tests/firmware/image_builder.h"
#include "tests/support/guarded_memory.h"

using namespace proreflax;

namespace {

std::uint32_t check(const bytes& whole) {
  return image_check_header(whole.data(), static_cast<std::uint32_t>(whole.size()));
}

const bytes data = some_bytes(100);

}  // namespace

TEST(ImageCheck, of_each_type_that_is_taken_gives_0) {
  for (const std::uint8_t type : {std::uint8_t{2}, std::uint8_t{3}, std::uint8_t{4}}) {
    EXPECT_EQ(check(build({.type = type, .data = data})), 0U) << int{type};
  }
}

TEST(ImageCheck, of_63_bytes_gives_233) {
  const bytes whole = kernel({});
  EXPECT_EQ(image_check_header(whole.data(), 63), 233U);
  EXPECT_EQ(image_check_header(whole.data(), 0), 233U);
  EXPECT_EQ(image_check_header(whole.data(), 64), 0U);
}

TEST(ImageCheck, of_null_gives_233) {
  EXPECT_EQ(image_check_header(nullptr, 1000), 233U);
}

TEST(ImageCheck, of_another_magic_gives_237) {
  EXPECT_EQ(check(build({.data = data, .magic = 0x27051957})), 237U);
  EXPECT_EQ(check(build({.data = data, .magic = 0x56190527})), 237U);
}

TEST(ImageCheck, of_any_other_type_gives_236_even_with_correct_checksums) {
  for (int type = 0; type < 256; ++type) {
    const std::uint32_t expected = type >= 2 && type <= 4 ? 0 : 236;
    EXPECT_EQ(check(build({.type = static_cast<std::uint8_t>(type), .data = data})), expected)
        << type;
  }
}

TEST(ImageCheck, reports_a_wrong_magic_before_a_wrong_type) {
  EXPECT_EQ(check(build({.type = 5, .data = data, .magic = 1})), 237U);
}

TEST(ImageCheck, with_any_bit_of_the_header_turned_over_fails) {
  const bytes whole = kernel(data);
  for (std::size_t bit = 0; bit < 64 * 8; ++bit) {
    bytes turned = whole;
    turned[bit / 8] ^= static_cast<std::uint8_t>(1 << bit % 8);
    const bool in_magic = bit / 8 < 4;
    // Bit 0 of the type makes a ramdisk of the kernel, which is a type, but has another checksum.
    const bool makes_no_type = bit / 8 == 30 && turned[30] != 3;
    EXPECT_EQ(check(turned), in_magic ? 237U : makes_no_type ? 236U : 234U) << bit;
  }
}

TEST(ImageCheck, of_a_header_with_the_common_crc_gives_234) {
  bytes whole = kernel(data);
  put_big_endian(whole, 4, 0);
  put_big_endian(whole, 4, common_crc({whole.begin(), whole.begin() + 64}));
  EXPECT_EQ(check(whole), 234U);
}

TEST(ImageCheck, of_fewer_bytes_than_declared_gives_238) {
  EXPECT_EQ(check(build({.data = data, .data_size = 101})), 238U);
  EXPECT_EQ(check(build({.data = data, .data_size = 0xFFFFFFFF})), 238U);
  EXPECT_EQ(check(build({.data = data, .data_size = 0x80000000})), 238U);
}

TEST(ImageCheck, takes_bytes_behind_the_data) {
  bytes whole = kernel(data);
  whole.push_back(1);
  EXPECT_EQ(check(whole), 0U);
}

TEST(ImageCheck, with_any_bit_of_the_data_turned_over_gives_235) {
  const bytes whole = kernel(some_bytes(9));
  for (std::size_t bit = 64 * 8; bit < whole.size() * 8; ++bit) {
    bytes turned = whole;
    turned[bit / 8] ^= static_cast<std::uint8_t>(1 << bit % 8);
    EXPECT_EQ(check(turned), 235U) << bit;
  }
}

TEST(ImageCheck, of_data_with_the_common_crc_gives_235) {
  EXPECT_EQ(check(build({.data = data, .data_crc = common_crc(data)})), 235U);
}

TEST(ImageCheck, leaves_the_image_unchanged_also_when_it_fails) {
  // The image lies in memory that cannot be written, so it is not even changed for a moment.
  const std::vector<bytes> images = {kernel(data), build({.data = data, .header_crc = 0x01020304}),
                                     build({.data = data, .data_crc = 7})};
  const std::uint32_t results[] = {0, 234, 235};
  for (std::size_t i = 0; i < images.size(); ++i) {
    guarded_memory memory{images[i].size()};
    std::memcpy(memory.bytes(), images[i].data(), images[i].size());
    ASSERT_EQ(mprotect(memory.first_page(), images[i].size(), PROT_READ), 0);
    EXPECT_EQ(image_check_header(memory.bytes(), static_cast<std::uint32_t>(images[i].size())),
              results[i]);
  }
}

TEST(ImageCheck, of_every_prefix_stays_inside_it) {
  const bytes whole = kernel(data);
  guarded_memory memory{256};
  for (std::uint32_t length = 0; length <= whole.size(); ++length) {
    std::uint8_t* const at = memory.bytes() + 256 - length;
    std::memcpy(at, whole.data(), length);
    EXPECT_EQ(image_check_header(at, length), length < 64             ? 233U
                                              : length < whole.size() ? 238U
                                                                      : 0U);
  }
}

TEST(ImageCheck, takes_images_at_any_alignment) {
  const bytes whole = kernel(data);
  for (std::size_t shift = 0; shift < 8; ++shift) {
    bytes shifted(shift);
    shifted.insert(shifted.end(), whole.begin(), whole.end());
    EXPECT_EQ(image_check_header(shifted.data() + shift, static_cast<std::uint32_t>(whole.size())),
              0U);
  }
}
