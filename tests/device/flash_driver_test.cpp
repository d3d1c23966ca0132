#include <gtest/gtest.h>
#include <proreflax/firmware.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "firmware/flash_device.h"
#include "firmware/image_write.h"
#include "tests/firmware/image_builder.h"
#include "tests/support/device_root.h"
#include "tests/support/faults.h"

using namespace proreflax;

namespace {

const std::string regions =
    "# a comment\n"
    "base 0xbf000000\n"
    "region 2 0xbf001000 0x1000\n"
    "region 4 0xbf004000 0x2000 ramdisk\n";

/// The device's folder with its regions and no flash yet, and nothing failing.
class FlashDriver : public testing::Test {
 protected:
  FlashDriver() {
    device_root::clear();
    device_root::write("/etc/flash-regions", regions);
    unsetenv("PROREFLAX_FLASH_FAIL");
  }
  ~FlashDriver() override {
    unsetenv("PROREFLAX_FLASH_FAIL");
    if (descriptor >= 0) {
      flash_close(descriptor);
    }
  }

  void open() {
    descriptor = flash_open();
    ASSERT_GE(descriptor, 0);
  }

  static void fail(const char* wish) { setenv("PROREFLAX_FLASH_FAIL", wish, 1); }

  int ask_region(std::uint32_t kind) {
    request = {};
    request.kind = kind;
    return flash_get_region(descriptor, &request);
  }

  ssize_t write_at(std::uint32_t offset, std::size_t length) {
    const bytes data = some_bytes(length);
    return flash_seek(descriptor, offset) == -1 ? -2 : flash_write(descriptor, data.data(), length);
  }

  int descriptor = -1;
  flash_region_req request{};
};

std::uint32_t upgrade(const bytes& whole) {
  return upgrade_kernel(whole.data(), static_cast<std::int32_t>(whole.size()), 0);
}

const bytes firmware = multi_file({kernel(some_bytes(100)), ramdisk(some_bytes(200, 2))});

bytes on_flash(std::size_t offset, std::size_t count) {
  const std::string all = device_root::read("/dev/flash").value_or("");
  const std::string some = offset < all.size() ? all.substr(offset, count) : "";
  return {some.begin(), some.end()};
}

}  // namespace

TEST_F(FlashDriver, tells_the_regions_of_its_table) {
  open();
  EXPECT_EQ(ask_region(2), 1);
  EXPECT_EQ(request.address, 0xBF001000U);
  EXPECT_EQ(request.size, 0x1000U);
  EXPECT_EQ(ask_region(4), 1);
  EXPECT_EQ(request.address, 0xBF004000U);
  EXPECT_EQ(request.size, 0x2000U);
}

TEST_F(FlashDriver, knows_no_region_that_is_not_in_its_table) {
  open();
  EXPECT_EQ(ask_region(3), -1);
  std::filesystem::remove(device_root::path("/etc/flash-regions"));
  EXPECT_EQ(ask_region(2), -1);
}

TEST_F(FlashDriver, tells_the_base_of_its_table) {
  open();
  EXPECT_EQ(flash_get_base(descriptor), 0xBF000000U);
  device_root::write("/etc/flash-regions", "region 2 0xbf001000 0x1000\n");
  EXPECT_EQ(flash_get_base(descriptor), 0xFFFFFFFFU);
}

TEST_F(FlashDriver, answers_nobody_without_a_descriptor) {
  EXPECT_EQ(ask_region(2), -1);
  EXPECT_EQ(flash_get_base(-1), 0xFFFFFFFFU);
}

TEST_F(FlashDriver, makes_the_flash_when_it_is_first_opened_and_keeps_what_is_on_it) {
  open();
  EXPECT_EQ(write_at(0x1000, 10), 10);
  EXPECT_EQ(flash_close(descriptor), 0);
  open();
  EXPECT_EQ(on_flash(0x1000, 100), some_bytes(10));
}

TEST_F(FlashDriver, positions_inside_a_region_alone) {
  open();
  for (const std::uint32_t inside : {0x1000U, 0x1FFFU, 0x4000U, 0x5FFFU}) {
    EXPECT_EQ(flash_seek(descriptor, inside), static_cast<off_t>(inside));
  }
  for (const std::uint32_t outside : {0U, 0xFFFU, 0x2000U, 0x3FFFU, 0x6000U, 0xFFFFFFFFU}) {
    EXPECT_EQ(flash_seek(descriptor, outside), -1) << outside;
  }
}

TEST_F(FlashDriver, writes_inside_one_region_alone) {
  open();
  EXPECT_EQ(write_at(0x1000, 0x1000), 0x1000);
  EXPECT_EQ(write_at(0x1000, 0x1001), -1);
  EXPECT_EQ(write_at(0x1FFF, 1), 1);
  EXPECT_EQ(write_at(0x1FFF, 2), -1);
  const std::uint8_t byte = 1;
  EXPECT_EQ(lseek(descriptor, 0x10, SEEK_SET), 0x10);
  EXPECT_EQ(flash_write(descriptor, &byte, 1), -1);
}

TEST_F(FlashDriver, carries_an_upgrade) {
  EXPECT_EQ(upgrade(firmware), 0U);
  EXPECT_EQ(on_flash(0x1000, 164), kernel(some_bytes(100)));
  EXPECT_EQ(on_flash(0x4000, 1000), some_bytes(200, 2));
}

TEST_F(FlashDriver, fails_every_call_that_it_is_told_to) {
  struct row {
    const char* wish;
    std::uint32_t result;
    bool kernel_written;
  };
  for (const row& each : {row{"open", 239, false},
                          {"open:1", 239, false},
                          {"base", 240, false},
                          {"base:1", 240, false},
                          {"region", 241, false},
                          {"region:1", 241, false},
                          {"region:2", 241, true},
                          {"seek:1", 242, false},
                          {"seek:2", 242, true},
                          {"write:1", 243, false},
                          {"write:2", 243, true},
                          {"short:2", 243, true},
                          {"close", 0, true}}) {
    std::filesystem::remove(device_root::path("/dev/flash"));
    fail(each.wish);
    faults::reset();
    EXPECT_EQ(upgrade(firmware), each.result) << each.wish;
    EXPECT_EQ(faults::calls(faults::call::close), faults::calls(faults::call::open)) << each.wish;
    EXPECT_EQ(on_flash(0x1000, 164) == kernel(some_bytes(100)), each.kernel_written) << each.wish;
    EXPECT_EQ(g_flash_fd, -1) << each.wish;
  }
}

TEST_F(FlashDriver, counts_calls_from_the_opening_on) {
  for (const char* wish : {"region:3", "seek:3", "write:3", "base:2", "", "shor", "unheard-of"}) {
    fail(wish);
    EXPECT_EQ(upgrade(firmware), 0U) << wish;
    EXPECT_EQ(upgrade(firmware), 0U) << wish;
  }
}

TEST_F(FlashDriver, short_write_takes_all_bytes_but_the_last) {
  open();
  fail("short");
  EXPECT_EQ(write_at(0x1000, 10), 9);
}

TEST_F(FlashDriver, region_table_that_comes_with_the_device_holds_the_largest_image) {
  std::filesystem::copy_file(PROREFLAX_SOURCE_DIR "/device/etc/flash-regions",
                             device_root::path("/etc/flash-regions"),
                             std::filesystem::copy_options::overwrite_existing);
  EXPECT_EQ(upgrade(firmware), 0U);
  open();
  EXPECT_EQ(ask_region(4), 1);
  EXPECT_GE(request.size, static_cast<std::uint32_t>(FW_IMAGE_SIZE_MAX));
  EXPECT_EQ(ask_region(2), 1);
  EXPECT_GT(request.size, 0U);
}
