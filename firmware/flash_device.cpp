// Calls to the device's own flash driver.
#include "firmware/flash_device.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace proreflax {

int flash_open() {
  return open(flash_device_path, O_RDWR | O_CLOEXEC);
}

int flash_close(int descriptor) {
  return close(descriptor);
}

int flash_get_region(int descriptor, flash_region_req* request) {
  return ioctl(descriptor, FLASH_IOC_GET_REGION, request) < 0 ? -1 : 1;
}

std::uint32_t flash_get_base(int descriptor) {
  std::uint32_t base = 0;
  return ioctl(descriptor, FLASH_IOC_GET_BASE, &base) < 0 ? flash_no_base : base;
}

off_t flash_seek(int descriptor, std::uint32_t offset) {
  return lseek(descriptor, static_cast<off_t>(offset), SEEK_SET);
}

ssize_t flash_write(int descriptor, const std::uint8_t* data, std::size_t length) {
  return write(descriptor, data, length);
}

}  // namespace proreflax
