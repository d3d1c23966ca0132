#include "tests/firmware/driver_double.h"

#include <cerrno>
#include <cstdarg>
#include <filesystem>

#include "firmware/image_write.h"
#include "tests/support/device_root.h"
#include "tests/support/faults.h"

using namespace proreflax;

namespace driver_double {
namespace {

int failed(int error) {
  errno = error;
  return -1;
}

int tell_region(flash_region_req* request) {
  now.regions.push_back(*request);
  if (static_cast<int>(now.regions.size()) == now.region_failing) {
    return failed(EIO);
  }
  const region& wanted = request->kind == flash_region_kernel ? now.kernel : now.ramdisk;
  request->address = wanted.address;
  request->size = wanted.size;
  return 0;
}

int tell_base(std::uint32_t* base) {
  if (!now.knows_base) {
    return failed(EIO);
  }
  *base = now.base;
  return 0;
}

}  // namespace

state now;

}  // namespace driver_double

extern "C" int __wrap_ioctl(int descriptor, unsigned long number, ...) {
  std::va_list rest;
  va_start(rest, number);
  void* const argument = va_arg(rest, void*);
  va_end(rest);
  driver_double::now.requests.push_back(number);
  if (descriptor < 0) {
    return driver_double::failed(EBADF);
  }
  switch (number) {
    case 0x40046601:
      return driver_double::tell_region(static_cast<flash_region_req*>(argument));
    case 0x40046602:
      return driver_double::tell_base(static_cast<std::uint32_t*>(argument));
    default:
      return driver_double::failed(ENOTTY);
  }
}

flash::flash() {
  driver_double::now = {};
  device_root::clear();
  device_root::write("/dev/flash", "");
  g_flash_fd = -1;
  g_flash_base = 0;
  faults::reset();
}

flash::~flash() {
  faults::reset();
}

void flash::remove() {
  std::filesystem::remove(device_root::path("/dev/flash"));
}

bytes flash::at(std::size_t offset, std::size_t count) {
  const std::string all = device_root::read("/dev/flash").value_or("");
  if (offset >= all.size()) {
    return {};
  }
  const std::string some = all.substr(offset, count);
  return {some.begin(), some.end()};
}

bool flash::is_untouched() {
  return at(0, 1).empty();
}
