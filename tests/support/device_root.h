// The folder of the build tree that stands for the device: its factory file, its flash tool, its
// flash.
#ifndef PROREFLAX_TESTS_SUPPORT_DEVICE_ROOT_H
#define PROREFLAX_TESTS_SUPPORT_DEVICE_ROOT_H

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace device_root {

/// The folder's path, or that of a device path such as "/etc/config-file.ini" in it.
std::filesystem::path path(std::string_view device_path = "");

/// Empties /etc, /proc, /run and the flash, and removes /sbin/config-file.tmp and the flash tool.
void clear();

void write(std::string_view device_path, std::string_view text);
std::optional<std::string> read(std::string_view device_path);
bool exists(std::string_view device_path);

/// Installs the flash copy tool that was built.
void install_flash_tool();

/// Installs a shell script as flash copy tool: $1 is the option, $2 the file.
void install_flash_script(std::string_view commands);

}  // namespace device_root

#endif
