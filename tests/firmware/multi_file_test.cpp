#include <gtest/gtest.h>
#include <proreflax/firmware.h>
#include <sys/mman.h>

#include <cstring>

#include "firmware/flash_device.h"
#include "firmware/image_crc.h"
#include "firmware/image_write.h"
#include "tests/firmware/driver_double.h"
#include "tests/firmware/image_builder.h"
#include "tests/support/faults.h"
#include "tests/support/guarded_memory.h"

using namespace proreflax;
using faults::call;

namespace {

/// The open flash, as upgrade_kernel() has it.
class MultiFile : public testing::Test {
 protected:
  MultiFile() {
    g_flash_fd = flash_open();
    g_flash_base = driver_double::now.base;
  }
  ~MultiFile() override {
    flash_close(g_flash_fd);
    g_flash_fd = -1;
  }

  static std::uint32_t update(const bytes& whole) {
    return updateFlashImage(whole.data(), static_cast<std::uint32_t>(whole.size()));
  }

  flash device;
};

const bytes kernel_data = some_bytes(100, 3);
const bytes ramdisk_data = some_bytes(200, 4);

/// A multi-file image whose table is given as it is, with some bytes behind it.
bytes with_table(const std::vector<std::uint32_t>& words, const bytes& behind = {}) {
  bytes data;
  for (const std::uint32_t word : words) {
    append_big_endian(data, word);
  }
  data.insert(data.end(), behind.begin(), behind.end());
  return build({.type = 4, .data = data});
}

/// A kernel inside that many multi-file images. The checksums are those of the code under test, to
/// have thousands of levels quickly; others prove it right.
bytes nested(int levels) {
  bytes inner = kernel(kernel_data);
  for (int level = 0; level < levels; ++level) {
    const bytes data = multi_data({inner});
    const auto size = static_cast<std::uint32_t>(data.size());
    inner = build({.type = 4, .data = data, .data_crc = image_crc32(0, data.data(), size)});
  }
  return inner;
}

}  // namespace

TEST_F(MultiFile, writes_each_part_by_its_own_type) {
  EXPECT_EQ(update(multi_file({kernel(kernel_data), ramdisk(ramdisk_data)})), 0U);
  EXPECT_EQ(flash::at(0x1000, 164), kernel(kernel_data));
  EXPECT_EQ(flash::at(0x2000, 1000), ramdisk_data);
}

TEST_F(MultiFile, writes_its_parts_in_order) {
  EXPECT_EQ(update(multi_file({kernel(some_bytes(100, 8)), kernel(kernel_data)})), 0U);
  EXPECT_EQ(flash::at(0x1000, 1000), kernel(kernel_data));
}

TEST_F(MultiFile, that_fails_its_own_check_writes_nothing) {
  bytes whole = multi_file({kernel(kernel_data)});
  whole.back() ^= 1;
  EXPECT_EQ(update(whole), 235U);
  EXPECT_TRUE(flash::is_untouched());
}

TEST_F(MultiFile, whose_first_table_word_is_0_gives_238) {
  EXPECT_EQ(update(with_table({0}, kernel(kernel_data))), 238U);
  EXPECT_EQ(update(with_table({0, 0, 0})), 238U);
}

TEST_F(MultiFile, without_a_zero_before_the_end_of_its_data_gives_238) {
  EXPECT_EQ(update(with_table({70, 68})), 238U);
  EXPECT_EQ(update(with_table({70, 68}, {0, 0, 0})), 238U);
  EXPECT_EQ(update(with_table({})), 238U);
  EXPECT_EQ(update(with_table({}, {0, 0})), 238U);
}

TEST_F(MultiFile, whose_zero_word_is_the_last_of_its_data_gives_238) {
  // The part is there, behind the data, as far as the caller's bytes go.
  const bytes part = kernel(kernel_data);
  bytes whole = with_table({static_cast<std::uint32_t>(part.size()), 0});
  whole.insert(whole.end(), part.begin(), part.end());
  EXPECT_EQ(update(whole), 238U);
  EXPECT_TRUE(flash::is_untouched());
}

TEST_F(MultiFile, may_have_its_parts_behind_its_data_as_far_as_the_callers_bytes_go) {
  const bytes part = kernel(kernel_data);
  bytes whole = with_table({static_cast<std::uint32_t>(part.size()), 0}, {part[0]});
  whole.insert(whole.end(), part.begin() + 1, part.end());
  EXPECT_EQ(update(whole), 0U);
  EXPECT_EQ(flash::at(0x1000, 1000), part);
}

TEST_F(MultiFile, parts_of_70_and_68_bytes_stand_at_0_and_72_behind_the_table) {
  const bytes first = kernel(some_bytes(6));
  const bytes second = ramdisk(some_bytes(4));
  ASSERT_EQ(first.size(), 70U);
  ASSERT_EQ(second.size(), 68U);
  bytes parts(72 + 68);
  std::copy(first.begin(), first.end(), parts.begin());
  std::copy(second.begin(), second.end(), parts.begin() + 72);
  EXPECT_EQ(update(with_table({70, 68, 0}, parts)), 0U);
  EXPECT_EQ(flash::at(0x1000, 70), first);
  EXPECT_EQ(flash::at(0x2000, 1000), some_bytes(4));
}

TEST_F(MultiFile, part_that_does_not_fit_gives_238_and_leaves_earlier_parts_written) {
  bytes whole = multi_file({kernel(kernel_data), ramdisk(ramdisk_data)});
  whole.pop_back();
  put_big_endian(whole, 12, static_cast<std::uint32_t>(whole.size() - 64));
  correct_checksums(whole);
  EXPECT_EQ(update(whole), 238U);
  EXPECT_EQ(flash::at(0x1000, 1000), kernel(kernel_data));
}

TEST_F(MultiFile, last_part_needs_no_padding) {
  EXPECT_EQ(update(multi_file({kernel(some_bytes(5)), ramdisk(some_bytes(7))})), 0U);
  EXPECT_EQ(flash::at(0x2000, 1000), some_bytes(7));
}

TEST_F(MultiFile, part_behind_one_that_ends_unpadded_at_the_end_gives_238) {
  const bytes part = kernel(some_bytes(5));
  EXPECT_EQ(update(with_table({69, 1, 0}, part)), 238U);
  EXPECT_EQ(flash::at(0x1000, 1000), part);
}

TEST_F(MultiFile, table_word_of_80000000_or_more_never_fits_and_gives_238) {
  for (const std::uint32_t word :
       {0x80000000U, 0x80000001U, 0xFFFFFFFFU, 0xFFFFFFC0U, 0x7FFFFFFFU}) {
    EXPECT_EQ(update(with_table({word, 0}, kernel(kernel_data))), 238U) << word;
  }
  EXPECT_TRUE(flash::is_untouched());
}

TEST_F(MultiFile, table_word_of_80000000_does_not_fit_even_where_so_many_bytes_are) {
  constexpr std::size_t size = 0x80001000;
  void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) {
    GTEST_SKIP() << "this machine does not give 2 GiB of addresses";
  }
  const bytes part = kernel(kernel_data);
  const bytes whole = with_table({0x80000000, 0}, part);
  std::memcpy(memory, whole.data(), whole.size());
  EXPECT_EQ(updateFlashImage(static_cast<std::uint8_t*>(memory), size), 238U);
  EXPECT_TRUE(flash::is_untouched());
  munmap(memory, size);
}

TEST_F(MultiFile, part_that_fails_its_own_check_gives_its_code_and_leaves_earlier_parts_written) {
  struct row {
    bytes part;
    std::uint32_t result;
  };
  const row rows[] = {{bytes(63), 233},
                      {build({.magic = 7}), 237},
                      {build({.type = 5}), 236},
                      {build({.header_crc = 7}), 234},
                      {build({.data_size = 1}), 238},
                      {build({.data_crc = 7}), 235},
                      {with_table({0}), 238}};
  for (const row& each : rows) {
    const flash fresh;
    g_flash_fd = flash_open();
    g_flash_base = driver_double::now.base;
    EXPECT_EQ(update(multi_file({kernel(kernel_data), each.part, ramdisk(ramdisk_data)})),
              each.result);
    EXPECT_EQ(flash::at(0x1000, 1000), kernel(kernel_data));
    flash_close(g_flash_fd);
  }
  g_flash_fd = flash_open();
}

TEST_F(MultiFile, part_may_be_a_multi_file_image) {
  EXPECT_EQ(update(multi_file({multi_file({kernel(kernel_data)}), ramdisk(ramdisk_data)})), 0U);
  EXPECT_EQ(flash::at(0x1000, 164), kernel(kernel_data));
  EXPECT_EQ(flash::at(0x2000, 1000), ramdisk_data);
}

TEST_F(MultiFile, may_be_nested_16_deep) {
  EXPECT_EQ(update(nested(16)), 0U);
  EXPECT_EQ(flash::at(0x1000, 1000), kernel(kernel_data));
}

TEST_F(MultiFile, nested_17_deep_gives_238) {
  EXPECT_EQ(update(nested(17)), 238U);
  EXPECT_TRUE(flash::is_untouched());
}

TEST_F(MultiFile, nested_thousands_deep_gives_238) {
  EXPECT_EQ(update(nested(2000)), 238U);
  EXPECT_TRUE(flash::is_untouched());
}

TEST_F(MultiFile, with_huge_sizes_that_overlap_gives_238) {
  // Each entry claims all that is left, and the next one as much again.
  const bytes part = kernel(kernel_data);
  const auto size = static_cast<std::uint32_t>(part.size());
  EXPECT_EQ(update(with_table({size, size, size, 0xFFFFFFFC, 0xFFFFFFFC, 0}, part)), 238U);
  EXPECT_EQ(update(with_table(std::vector<std::uint32_t>(100'000, 0x7FFFFFFC))), 238U);
}

TEST_F(MultiFile, of_every_prefix_stays_inside_it) {
  const bytes whole = multi_file({multi_file({kernel(some_bytes(6))}), ramdisk(some_bytes(9))});
  guarded_memory memory{whole.size()};
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    std::uint8_t* const at = memory.bytes() + whole.size() - length;
    std::memcpy(at, whole.data(), length);
    EXPECT_EQ(updateFlashImage(at, static_cast<std::uint32_t>(length)), length < 64 ? 233U
                                                                        : length < whole.size()
                                                                            ? 238U
                                                                            : 0U);
  }
}

TEST_F(MultiFile, of_every_prefix_with_checksums_of_its_own_stays_inside_it) {
  const bytes whole = multi_file({multi_file({kernel(some_bytes(6))}), ramdisk(some_bytes(9))});
  guarded_memory memory{whole.size()};
  for (std::size_t length = 64; length < whole.size(); ++length) {
    bytes prefix(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    put_big_endian(prefix, 12, static_cast<std::uint32_t>(length - 64));
    correct_checksums(prefix);
    std::uint8_t* const at = memory.bytes() + whole.size() - length;
    std::memcpy(at, prefix.data(), length);
    EXPECT_EQ(updateFlashImage(at, static_cast<std::uint32_t>(length)), 238U) << length;
  }
}

TEST_F(MultiFile, with_the_device_closed_gives_241) {
  const int descriptor = g_flash_fd;
  g_flash_fd = -1;
  EXPECT_EQ(update(kernel(kernel_data)), 241U);
  EXPECT_EQ(update(ramdisk({})), 0U);
  g_flash_fd = descriptor;
}

TEST_F(MultiFile, every_call_that_fails_stops_it_there_with_earlier_parts_written) {
  const bytes whole = multi_file({kernel(kernel_data), ramdisk(ramdisk_data)});
  struct row {
    call kind;
    std::uint32_t result;
  };
  for (const row& each : {row{call::lseek, 242}, {call::write, 243}}) {
    for (int nth = 1; nth <= 2; ++nth) {
      faults::fail(each.kind, nth);
      EXPECT_EQ(update(whole), each.result);
      EXPECT_TRUE(faults::happened());
      EXPECT_EQ(faults::calls(call::write), nth - (each.kind == call::lseek ? 1 : 0));
    }
    faults::fail(each.kind, 3);
    EXPECT_EQ(update(whole), 0U);
    EXPECT_FALSE(faults::happened());
  }
}
