#include <gtest/gtest.h>
#include <proreflax/firmware.h>

#include <functional>
#include <string>

#include "firmware/image_write.h"
#include "tests/firmware/driver_double.h"
#include "tests/firmware/image_builder.h"
#include "tests/support/faults.h"

using namespace proreflax;
using faults::call;

extern "C" {
std::uint32_t upgrade_from_c(const std::uint8_t* image, std::int32_t size_bytes);
std::uint32_t placeholders_from_c(void);
}

namespace {

std::uint32_t upgrade(const bytes& whole) {
  return upgrade_kernel(whole.data(), static_cast<std::int32_t>(whole.size()), 0);
}

const bytes kernel_data = some_bytes(100, 3);
const bytes ramdisk_data = some_bytes(200, 4);

class Upgrade : public testing::Test {
 protected:
  static void expect_opened_and_closed(int times) {
    EXPECT_EQ(faults::calls(call::open), times);
    EXPECT_EQ(faults::calls(call::close), times);
    EXPECT_EQ(g_flash_fd, -1);
  }

  flash device;
};

/// Everything that can be wrong with an upgrade at once, and the image and device to match.
struct scenario {
  image outer{.type = 4, .data = multi_data({kernel(kernel_data)})};
  std::int32_t size = 0;  // the image's own where it is 0
  int failing_seek = 0;
  int failing_write = 0;
};

struct fault {
  const char* name;
  std::uint32_t result;
  std::function<void(scenario&)> happen;
};

/// In the order in which they are found.
const fault faults_in_order[] = {
    {"too big", 232, [](scenario& s) { s.size = 0xB00001; }},
    {"no device", 239, [](scenario&) { flash::remove(); }},
    {"no base", 240, [](scenario&) { driver_double::now.knows_base = false; }},
    {"short", 233, [](scenario& s) { s.size = s.size == 0 ? 63 : s.size; }},
    {"magic", 237, [](scenario& s) { s.outer.magic = 1; }},
    {"type", 236, [](scenario& s) { s.outer.type = 5; }},
    {"header checksum", 234, [](scenario& s) { s.outer.header_crc = 1; }},
    {"data size", 238, [](scenario& s) { s.outer.data_size = 0xFFFFFF; }},
    {"data checksum", 235, [](scenario& s) { s.outer.data_crc = 1; }},
    {"part table", 238, [](scenario& s) { put_big_endian(s.outer.data, 0, 0); }},
    {"no region", 241, [](scenario&) { driver_double::now.region_failing = 1; }},
    {"region too small", 232, [](scenario&) { driver_double::now.kernel.size = 10; }},
    {"seek", 242, [](scenario& s) { s.failing_seek = 1; }},
    {"write", 243, [](scenario& s) { s.failing_write = 1; }},
};

std::uint32_t upgrade(const scenario& s) {
  const bytes whole = build(s.outer);
  const auto size = s.size == 0 ? static_cast<std::int32_t>(whole.size()) : s.size;
  if (s.failing_seek != 0) {
    faults::fail(call::lseek, s.failing_seek);
  } else {
    faults::fail(call::write, s.failing_write);
  }
  return upgrade_kernel(whole.data(), size, 0);
}

}  // namespace

TEST_F(Upgrade, writes_a_kernel_and_closes_the_device) {
  EXPECT_EQ(upgrade(kernel(kernel_data)), 0U);
  EXPECT_EQ(flash::at(0x1000, 1000), kernel(kernel_data));
  expect_opened_and_closed(1);
}

TEST_F(Upgrade, asks_for_the_base_first_and_keeps_it) {
  driver_double::now.base = 0xBF000400;
  EXPECT_EQ(upgrade(kernel(kernel_data)), 0U);
  EXPECT_EQ(driver_double::now.requests, (std::vector<unsigned long>{0x40046602, 0x40046601}));
  EXPECT_EQ(g_flash_base, 0xBF000400U);
  EXPECT_EQ(flash::at(0xC00, 1000), kernel(kernel_data));
}

TEST_F(Upgrade, ignores_its_third_argument) {
  const bytes whole = kernel(kernel_data);
  for (const std::uint32_t ignored : {0U, 1U, 0xFFFFFFFFU}) {
    EXPECT_EQ(upgrade_kernel(whole.data(), static_cast<std::int32_t>(whole.size()), ignored), 0U);
  }
}

TEST_F(Upgrade, of_B00001_bytes_gives_232_without_opening_the_device) {
  const bytes whole(0xB00001);
  EXPECT_EQ(upgrade(whole), 232U);
  EXPECT_EQ(upgrade_kernel(whole.data(), 0x7FFFFFFF, 0), 232U);
  expect_opened_and_closed(0);
}

TEST_F(Upgrade, of_B00000_bytes_goes_on) {
  driver_double::now.kernel.size = 0xB00000;
  bytes whole = kernel(kernel_data);
  whole.resize(0xB00000);
  EXPECT_EQ(upgrade(whole), 0U);
  EXPECT_EQ(upgrade(bytes(0xB00000)), 237U);
}

TEST_F(Upgrade, of_a_negative_size_gives_233) {
  const bytes whole = kernel(kernel_data);
  for (const std::int32_t size : {-1, -64, static_cast<std::int32_t>(0x80000000)}) {
    EXPECT_EQ(upgrade_kernel(whole.data(), size, 0), 233U);
  }
  expect_opened_and_closed(3);
}

TEST_F(Upgrade, of_null_gives_233) {
  EXPECT_EQ(upgrade_kernel(nullptr, 1000, 0), 233U);
}

TEST_F(Upgrade, without_a_device_gives_239) {
  flash::remove();
  EXPECT_EQ(upgrade(kernel(kernel_data)), 239U);
  EXPECT_EQ(faults::calls(call::close), 0);
  EXPECT_EQ(g_flash_fd, -1);
}

TEST_F(Upgrade, without_a_base_gives_240_and_keeps_all_ones) {
  driver_double::now.knows_base = false;
  EXPECT_EQ(upgrade(kernel(kernel_data)), 240U);
  EXPECT_EQ(g_flash_base, 0xFFFFFFFFU);
  expect_opened_and_closed(1);
}

TEST_F(Upgrade, with_a_base_of_all_ones_gives_240) {
  driver_double::now.base = 0xFFFFFFFF;
  EXPECT_EQ(upgrade(kernel(kernel_data)), 240U);
}

TEST_F(Upgrade, closes_a_device_that_was_open_before_it) {
  g_flash_fd = flash_open();
  EXPECT_EQ(upgrade(kernel(kernel_data)), 0U);
  expect_opened_and_closed(1);
  g_flash_fd = flash_open();
  EXPECT_EQ(upgrade_kernel(nullptr, 0xB00001, 0), 232U);
  expect_opened_and_closed(2);
}

TEST_F(Upgrade, of_an_image_wrong_in_one_way_gives_the_code_of_that) {
  for (const fault& each : faults_in_order) {
    const flash fresh;
    scenario s;
    each.happen(s);
    EXPECT_EQ(upgrade(s), each.result) << each.name;
    EXPECT_EQ(g_flash_fd, -1) << each.name;
  }
}

TEST_F(Upgrade, of_an_image_wrong_in_two_ways_gives_the_code_of_the_earlier_one) {
  for (const fault& earlier : faults_in_order) {
    for (const fault* later = &earlier + 1; later != std::end(faults_in_order); ++later) {
      const flash fresh;
      scenario s;
      earlier.happen(s);
      later->happen(s);
      EXPECT_EQ(upgrade(s), earlier.result) << earlier.name << " and " << later->name;
    }
  }
}

TEST_F(Upgrade, closes_the_device_exactly_once_whichever_call_fails) {
  const bytes whole = multi_file({kernel(kernel_data), ramdisk(ramdisk_data)});
  struct row {
    call kind;
    std::uint32_t result;
  };
  // A close that fails has closed all the same, and what was written is written.
  for (const row& each :
       {row{call::open, 239}, {call::lseek, 242}, {call::write, 243}, {call::close, 0}}) {
    int nth = 1;
    for (;; ++nth) {
      faults::fail(each.kind, nth);
      const std::uint32_t result = upgrade(whole);
      EXPECT_EQ(g_flash_fd, -1);
      EXPECT_EQ(faults::calls(call::close), result == 239 ? 0 : 1);
      if (!faults::happened()) {
        EXPECT_EQ(result, 0U);
        break;
      }
      EXPECT_EQ(result, each.result);
    }
    EXPECT_GT(nth, 1);
  }
}

TEST_F(Upgrade, closes_the_device_exactly_once_whichever_region_is_not_told) {
  for (int nth = 1; nth <= 2; ++nth) {
    const flash fresh;
    driver_double::now.region_failing = nth;
    EXPECT_EQ(upgrade(multi_file({kernel(kernel_data), ramdisk(ramdisk_data)})), 241U);
    expect_opened_and_closed(1);
    EXPECT_EQ(flash::is_untouched(), nth == 1);
  }
}

TEST_F(Upgrade, works_from_c) {
  const bytes whole = kernel(kernel_data);
  EXPECT_EQ(upgrade_from_c(whole.data(), static_cast<std::int32_t>(whole.size())), 0U);
}

TEST_F(Upgrade, placeholders_give_1_and_do_nothing) {
  EXPECT_EQ(placeholders_from_c(), 1U);
  EXPECT_EQ(gui_set_firmware_upgrade(kernel_data.data(), 100), 1U);
  gui_sys_reset();
  expect_opened_and_closed(0);
  EXPECT_TRUE(driver_double::now.requests.empty());
}
