// The driver over a plain file belongs to a development machine: what ships has none of it.
#include <gtest/gtest.h>

#include <cctype>
#include <string>

#include "tests/support/files.h"

namespace {

bool holds(const char* library, const std::string& text) {
  return files::text_of(library).find(text) != std::string::npos;
}

/// Whether a library asks the C library for a function.
bool needs(const char* library, const std::string& function) {
  const std::string command =
      "nm -D --undefined-only '" + std::string{library} + "' | grep -q ' " + function + "\\b'";
  return std::system(command.c_str()) == 0;
}

}  // namespace

TEST(ShippedLibrary, knows_no_region_file_and_no_wish_to_fail) {
  for (const char* text : {"flash-regions", "PROREFLAX_FLASH_FAIL"}) {
    EXPECT_TRUE(holds(DEVICE_LIBRARY, text)) << text;
    EXPECT_FALSE(holds(SHIPPED_LIBRARY, text)) << text;
  }
}

TEST(ShippedLibrary, asks_the_driver_of_the_device_itself) {
  ASSERT_TRUE(needs(SHIPPED_LIBRARY, "lseek")) << "nm does not tell what the library needs";
  EXPECT_TRUE(needs(SHIPPED_LIBRARY, "ioctl"));
  EXPECT_FALSE(needs(DEVICE_LIBRARY, "ioctl"));
  EXPECT_FALSE(needs(SHIPPED_LIBRARY, "getenv"));
}

TEST(ShippedLibrary, has_no_folder_of_the_build_tree_in_front_of_the_flash) {
  const std::string shipped = files::text_of(SHIPPED_LIBRARY);
  const std::size_t path = shipped.find(std::string{"/dev/flash\0", 11});
  ASSERT_NE(path, std::string::npos);
  EXPECT_FALSE(std::isprint(static_cast<unsigned char>(shipped[path - 1])))
      << "something stands in front of it";
  EXPECT_FALSE(holds(SHIPPED_LIBRARY, PROREFLAX_DEVICE_ROOT "/dev/flash"));
  EXPECT_TRUE(holds(DEVICE_LIBRARY, PROREFLAX_DEVICE_ROOT "/dev/flash"));
}
