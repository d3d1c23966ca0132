#include "tools/writeflash/slot_format.h"

#include <gtest/gtest.h>

using namespace proreflax;

namespace {

constexpr std::uint32_t checksum_of_digits() {
  constexpr unsigned char digits[] = {'1', '2', '3', '4', '5', '6', '7', '8', '9'};
  crc32 sum;
  sum.add(digits, 4);
  sum.add(digits + 4, 5);
  return sum.value();
}

}  // namespace

TEST(SlotFormat, the_checksum_is_the_crc_32_of_ethernet) {
  EXPECT_EQ(checksum_of_digits(), 0xCBF43926U);
  EXPECT_EQ(crc32{}.value(), 0U);
}

TEST(SlotFormat, a_header_is_20_bytes_with_big_endian_numbers) {
  const slot_header_row row = to_row({.magic = 0x01020304,
                                      .version = 0x05060708,
                                      .sequence = 0x090A0B0C,
                                      .length = 0x0D0E0F10,
                                      .checksum = 0x11121314});
  for (unsigned i = 0; i < 20; ++i) {
    EXPECT_EQ(row[i], i + 1);
  }
  const slot_header header = from_row(row);
  EXPECT_EQ(header.magic, 0x01020304U);
  EXPECT_EQ(header.version, 0x05060708U);
  EXPECT_EQ(header.sequence, 0x090A0B0CU);
  EXPECT_EQ(header.length, 0x0D0E0F10U);
  EXPECT_EQ(header.checksum, 0x11121314U);
}

TEST(SlotFormat, the_front_of_a_header_with_zeros_behind_is_no_whole_header) {
  slot_header header{.sequence = 7, .length = 3};
  header.checksum = checksum_of(header).value() | 1;  // its last byte is not 0
  for (std::size_t front = 0; front < slot_header_bytes; ++front) {
    slot_header_row torn{};
    const slot_header_row row = to_row(header);
    std::copy_n(row.begin(), front, torn.begin());
    const slot_header arrived = from_row(torn);
    EXPECT_FALSE(arrived.magic == slot_magic && arrived.checksum == header.checksum) << front;
  }
}

TEST(SlotFormat, sequence_numbers_go_round) {
  struct row {
    std::uint32_t a, b;
    bool after;
  };
  constexpr row rows[] = {
      {2, 1, true},           {1, 2, false},          {1, 1, false},         {0, 0xFFFFFFFF, true},
      {0xFFFFFFFF, 0, false}, {5, 0xFFFFFFF0, true},  {0x80000000, 1, true}, {1, 0x80000000, false},
      {0x7FFFFFFF, 0, true},  {0, 0x7FFFFFFF, false},
  };
  for (const row& each : rows) {
    EXPECT_EQ(comes_after(each.a, each.b), each.after) << each.a << " after " << each.b;
  }
}
