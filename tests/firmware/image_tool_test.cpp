// Images made by the published tool for the same header, mkimage: every field but the two checksums
// must read alike, and with this device's checksums in place they must be taken.
#include <gtest/gtest.h>
#include <proreflax/firmware.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "firmware/image_check.h"
#include "firmware/image_header.h"
#include "tests/firmware/driver_double.h"
#include "tests/firmware/image_builder.h"
#include "tests/support/files.h"

using namespace proreflax;
namespace fs = std::filesystem;

namespace {

class ImageTool : public testing::Test {
 protected:
  void SetUp() override {
    if (std::system("command -v mkimage >/dev/null 2>&1") != 0) {
      GTEST_SKIP() << "mkimage is not installed (Debian's u-boot-tools)";
    }
  }

  fs::path file(const std::string& name, const bytes& contents) const {
    files::write(folder_.path() / name, std::string{contents.begin(), contents.end()});
    return folder_.path() / name;
  }

  /// What the tool makes of some options.
  bytes made_with(const std::string& options) const {
    const fs::path out = folder_.path() / "out";
    const std::string command =
        "SOURCE_DATE_EPOCH=1234567890 mkimage " + options + " " + out.string() + " >/dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    const std::string made = files::text_of(out);
    return {made.begin(), made.end()};
  }

  flash device;

 private:
  files::temporary_folder folder_;
};

const bytes contents = some_bytes(1001);

std::uint32_t check(const bytes& whole) {
  return image_check_header(whole.data(), static_cast<std::uint32_t>(whole.size()));
}

std::uint32_t upgrade(const bytes& whole) {
  return upgrade_kernel(whole.data(), static_cast<std::int32_t>(whole.size()), 0);
}

}  // namespace

TEST_F(ImageTool, every_field_but_the_checksums_reads_as_it_was_asked_for) {
  const bytes made = made_with(
      "-A mips -O linux -T kernel -C gzip -a 80002000 -e 80345678 -n "
      "'a name of exactly 32 characters.' -d " +
      file("data", contents).string());
  ASSERT_EQ(made.size(), 64 + contents.size());
  EXPECT_EQ(header_field(made.data(), header_word::magic), image_magic);
  EXPECT_EQ(header_field(made.data(), header_word::time_stamp), 1234567890U);
  EXPECT_EQ(header_field(made.data(), header_word::data_size), contents.size());
  EXPECT_EQ(header_field(made.data(), header_word::load_address), 0x80002000U);
  EXPECT_EQ(header_field(made.data(), header_word::entry_point), 0x80345678U);
  EXPECT_EQ(header_field(made.data(), header_byte::operating_system), 5);
  EXPECT_EQ(header_field(made.data(), header_byte::architecture), 5);
  EXPECT_EQ(header_field(made.data(), header_byte::type), image_type_kernel);
  EXPECT_EQ(header_field(made.data(), header_byte::compression), 1);
  EXPECT_EQ(std::string(made.begin() + header_name_offset,
                        made.begin() + header_name_offset + header_name_size),
            "a name of exactly 32 characters.");
}

TEST_F(ImageTool, its_checksums_are_the_common_ones_and_give_234) {
  const bytes made =
      made_with("-A mips -O linux -T kernel -C none -n k -d " + file("data", contents).string());
  EXPECT_EQ(header_field(made.data(), header_word::data_crc), common_crc(contents));
  EXPECT_EQ(check(made), 234U);
}

TEST_F(ImageTool, each_type_is_taken_with_this_devices_checksums) {
  const std::string data = file("data", contents).string();
  for (const char* type : {"kernel", "ramdisk", "multi"}) {
    bytes made = made_with("-A mips -O linux -C none -n x -T " + std::string{type} + " -d " + data);
    EXPECT_EQ(check(made), 234U) << type;
    correct_checksums(made);
    EXPECT_EQ(check(made), 0U) << type;
  }
}

TEST_F(ImageTool, multi_file_image_of_two_images_is_written_part_by_part) {
  const std::string data = file("data", contents).string();
  bytes kernel_image = made_with("-A mips -O linux -C none -n k -T kernel -d " + data);
  bytes ramdisk_image = made_with("-A mips -O linux -C none -n r -T ramdisk -d " + data);
  correct_checksums(kernel_image);
  correct_checksums(ramdisk_image);
  bytes made =
      made_with("-A mips -O linux -C none -n m -T multi -d " + file("k", kernel_image).string() +
                ":" + file("r", ramdisk_image).string());
  EXPECT_EQ(upgrade(made), 234U);
  correct_checksums(made);
  EXPECT_EQ(upgrade(made), 0U);
  EXPECT_EQ(flash::at(0x1000, kernel_image.size()), kernel_image);
  EXPECT_EQ(flash::at(0x2000, 2000), contents);
}
