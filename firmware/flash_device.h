// The flash device, as firmware is written through it.
//
// Two files implement these calls, and which one a library has is decided when it is linked:
// firmware/flash_device.cpp asks the device's own driver; device/flash_driver.cpp, on a development
// machine alone, is a driver over a plain file.
#ifndef PROREFLAX_FIRMWARE_FLASH_DEVICE_H
#define PROREFLAX_FIRMWARE_FLASH_DEVICE_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

#ifndef PROREFLAX_DEVICE_ROOT
#define PROREFLAX_DEVICE_ROOT ""
#endif

namespace proreflax {

inline constexpr char flash_device_path[] = PROREFLAX_DEVICE_ROOT "/dev/flash";

// Requests of the driver. The numbers are fixed; they are not computed with the platform's macros,
// which pack direction and size differently from one processor to the next.
inline constexpr unsigned long FLASH_IOC_GET_REGION = 0x40046601;
inline constexpr unsigned long FLASH_IOC_GET_BASE = 0x40046602;

/// The kinds of regions that images go to.
inline constexpr std::uint32_t flash_region_kernel = 2;
inline constexpr std::uint32_t flash_region_ramdisk = 4;

/// What FLASH_IOC_GET_REGION passes to the driver and back, in the machine's byte order.
struct flash_region_req {
  std::uint8_t reserved_front[16];
  std::uint32_t address;  // where the region begins; filled by the driver
  std::uint32_t size;     // bytes in the region; filled by the driver
  std::uint32_t kind;     // which region is asked for; set by the caller
  std::uint8_t reserved_back[36];
};
static_assert(offsetof(flash_region_req, address) == 16);
static_assert(offsetof(flash_region_req, size) == 20);
static_assert(offsetof(flash_region_req, kind) == 24);
static_assert(sizeof(flash_region_req) == 64);

/// What flash_get_base() gives when the driver fails.
inline constexpr std::uint32_t flash_no_base = 0xFFFFFFFF;

/// Opens the device for reading and writing: its descriptor, or a negative number.
int flash_open();

int flash_close(int descriptor);

/// Asks where a region lies: 1, or -1 when the driver fails.
int flash_get_region(int descriptor, flash_region_req* request);

/// Asks for the address that the device's first byte has.
std::uint32_t flash_get_base(int descriptor);

/// Positions the device at an offset from its first byte: the offset, or -1.
off_t flash_seek(int descriptor, std::uint32_t offset);

/// Writes at the position: how many bytes were taken, or -1.
ssize_t flash_write(int descriptor, const std::uint8_t* data, std::size_t length);

}  // namespace proreflax

#endif
