#include "tests/support/device_root.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fs = std::filesystem;

namespace device_root {
namespace {

constexpr std::string_view flash_tool = "/sbin/writeflash";

}  // namespace

fs::path path(std::string_view device_path) {
  return fs::path{PROREFLAX_DEVICE_ROOT + std::string{device_path}};
}

void clear() {
  for (const char* each : {"/etc", "/proc", "/var", "/dev", "/sbin/config-file.tmp"}) {
    fs::remove_all(path(each));
  }
  fs::remove(path(flash_tool));
  for (const char* each : {"/etc", "/proc", "/var", "/dev", "/sbin"}) {
    fs::create_directories(path(each));
  }
}

void write(std::string_view device_path, std::string_view text) {
  std::ofstream file{path(device_path), std::ios::binary};
  if (!file.write(text.data(), static_cast<std::streamsize>(text.size()))) {
    throw std::runtime_error("cannot write " + path(device_path).string());
  }
}

std::optional<std::string> read(std::string_view device_path) {
  std::ifstream file{path(device_path), std::ios::binary};
  if (!file) {
    return std::nullopt;
  }
  return std::string{std::istreambuf_iterator<char>{file}, {}};
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
