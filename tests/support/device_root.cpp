#include "tests/support/device_root.h"

#include "tests/support/files.h"

namespace fs = std::filesystem;

namespace device_root {
namespace {

constexpr std::string_view flash_tool = "/sbin/writeflash";

}  // namespace

fs::path path(std::string_view device_path) {
  return fs::path{PROREFLAX_DEVICE_ROOT + std::string{device_path}};
}

void clear() {
  for (const char* each : {"/etc", "/proc", "/var", "/run", "/dev", "/sbin/config-file.tmp"}) {
    fs::remove_all(path(each));
  }
  fs::remove(path(flash_tool));
  for (const char* each : {"/etc", "/proc", "/var", "/dev", "/sbin"}) {
    fs::create_directories(path(each));
  }
}

void write(std::string_view device_path, std::string_view text) {
  files::write(path(device_path), text);
}

std::optional<std::string> read(std::string_view device_path) {
  return files::read(path(device_path));
}

bool exists(std::string_view device_path) {
  return fs::exists(path(device_path));
}

void install_flash_tool() {
  fs::remove(path(flash_tool));
  fs::create_symlink(fs::path{PROREFLAX_DEVICE_ROOT "/programs/writeflash"}, path(flash_tool));
}

void install_flash_script(std::string_view commands) {
  fs::remove(path(flash_tool));
  write(flash_tool, "#!/bin/sh\n" + std::string{commands} + "\n");
  fs::permissions(path(flash_tool), fs::perms::owner_all);
}

}  // namespace device_root
