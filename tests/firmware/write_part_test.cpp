#include <gtest/gtest.h>
#include <proreflax/firmware.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cstring>

#include "firmware/flash_device.h"
#include "firmware/image_write.h"
#include "tests/firmware/driver_double.h"
#include "tests/firmware/image_builder.h"
#include "tests/support/faults.h"

using namespace proreflax;
using faults::call;

namespace {

/// The open flash, as upgrade_kernel() has it.
class WritePart : public testing::Test {
 protected:
  WritePart() {
    g_flash_fd = flash_open();
    g_flash_base = driver_double::now.base;
  }
  ~WritePart() override {
    flash_close(g_flash_fd);
    g_flash_fd = -1;
  }

  static std::uint32_t write(const bytes& whole) {
    return image_write_part(whole.data(), static_cast<std::uint32_t>(whole.size()));
  }

  flash device;
};

const bytes data = some_bytes(100);

}  // namespace

TEST_F(WritePart, of_a_kernel_goes_with_its_header_to_region_address_less_base) {
  const bytes whole = kernel(data);
  EXPECT_EQ(write(whole), 0U);
  EXPECT_EQ(flash::at(0x1000, 1000), whole);
  EXPECT_EQ(driver_double::now.regions.at(0).kind, 2U);
}

TEST_F(WritePart, of_a_ramdisk_goes_without_its_header_to_its_region) {
  EXPECT_EQ(write(ramdisk(data)), 0U);
  EXPECT_EQ(flash::at(0x2000, 1000), data);
  EXPECT_EQ(flash::at(0x1000, 1)[0], 0);
  EXPECT_EQ(driver_double::now.regions.at(0).kind, 4U);
}

TEST_F(WritePart, writes_data_size_bytes_and_not_what_lies_behind) {
  bytes whole = kernel(data);
  whole.resize(whole.size() + 50, 0xEE);
  EXPECT_EQ(write(whole), 0U);
  EXPECT_EQ(flash::at(0x1000, 1000), kernel(data));
}

TEST_F(WritePart, without_anything_to_write_gives_0_and_leaves_the_device_alone) {
  EXPECT_EQ(write(ramdisk({})), 0U);
  EXPECT_EQ(write(build({.type = 3, .data_size = 0x80000000})), 0U);
  EXPECT_EQ(write(build({.type = 2, .data_size = 0xFFFFFFC0})), 0U);
  EXPECT_TRUE(driver_double::now.requests.empty());
  EXPECT_EQ(faults::calls(call::lseek), 0);
  EXPECT_EQ(faults::calls(call::write), 0);
}

TEST_F(WritePart, of_a_kernel_without_data_writes_its_header) {
  EXPECT_EQ(write(kernel({})), 0U);
  EXPECT_EQ(flash::at(0x1000, 1000), kernel({}));
}

TEST_F(WritePart, asks_with_a_zeroed_record_and_its_kind) {
  EXPECT_EQ(write(kernel(data)), 0U);
  flash_region_req expected{};
  expected.kind = 2;
  EXPECT_EQ(std::memcmp(&driver_double::now.regions.at(0), &expected, sizeof expected), 0);
  EXPECT_EQ(driver_double::now.requests.at(0), 0x40046601UL);
}

TEST_F(WritePart, whose_region_is_not_known_gives_241) {
  driver_double::now.region_failing = 1;
  EXPECT_EQ(write(kernel(data)), 241U);
  EXPECT_TRUE(flash::is_untouched());
}

TEST_F(WritePart, larger_than_its_region_gives_232) {
  driver_double::now.kernel.size = 163;
  EXPECT_EQ(write(kernel(data)), 232U);
  EXPECT_TRUE(flash::is_untouched());
  driver_double::now.kernel.size = 164;
  EXPECT_EQ(write(kernel(data)), 0U);
  driver_double::now.ramdisk.size = 99;
  EXPECT_EQ(write(ramdisk(data)), 232U);
  driver_double::now.ramdisk.size = 100;
  EXPECT_EQ(write(ramdisk(data)), 0U);
}

TEST_F(WritePart, compares_with_its_region_unsigned) {
  driver_double::now.kernel.size = 0xFFFFFFFF;
  EXPECT_EQ(write(kernel(data)), 0U);
}

TEST_F(WritePart, that_cannot_be_positioned_gives_242) {
  faults::fail(call::lseek, 1);
  EXPECT_EQ(write(kernel(data)), 242U);
  EXPECT_TRUE(flash::is_untouched());
}

TEST_F(WritePart, that_cannot_be_written_gives_243) {
  faults::fail(call::write, 1);
  EXPECT_EQ(write(kernel(data)), 243U);
}

TEST_F(WritePart, that_comes_short_gives_243_and_is_not_taken_up_again) {
  signal(SIGXFSZ, SIG_IGN);
  rlimit old{};
  getrlimit(RLIMIT_FSIZE, &old);
  rlimit limit = old;
  limit.rlim_cur = 0x1000 + 163;
  setrlimit(RLIMIT_FSIZE, &limit);
  faults::reset();
  const std::uint32_t result = write(kernel(data));
  setrlimit(RLIMIT_FSIZE, &old);
  EXPECT_EQ(result, 243U);
  EXPECT_EQ(faults::calls(call::write), 1);
  EXPECT_EQ(flash::at(0x1000, 1000).size(), 163U);
}

TEST_F(WritePart, is_one_write) {
  EXPECT_EQ(write(kernel(some_bytes(4000))), 0U);
  EXPECT_EQ(faults::calls(call::write), 1);
  EXPECT_EQ(faults::calls(call::lseek), 1);
}

TEST_F(WritePart, uses_the_base_that_was_last_told) {
  g_flash_base = 0xBF000800;
  EXPECT_EQ(write(kernel(data)), 0U);
  EXPECT_EQ(flash::at(0x800, 164), kernel(data));
}
