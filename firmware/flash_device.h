// The flash device that firmware is written to.
//
// Two files implement these calls; the linker selects one of them: firmware/flash_device.cpp calls
// the device's own driver; device/flash_driver.cpp, only for development machines, is a driver that
// uses a plain file.
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
// which encode direction and size differently on different processors.
inline constexpr unsigned long FLASH_IOC_GET_REGION = 0x40046601;
inline constexpr unsigned long FLASH_IOC_GET_BASE = 0x40046602;

/// The kinds of regions that images are written to.
inline constexpr std::uint32_t flash_region_kernel = 2;
inline constexpr std::uint32_t flash_region_ramdisk = 4;

/// The argument of FLASH_IOC_GET_REGION, in the machine's byte order.
struct flash_region_req {
  std::uint8_t reserved_front[16];
  std::uint32_t address;  // where the region begins; filled by the driver
  std::uint32_t size;     // bytes in the region; filled by the driver
  std::uint32_t kind;     // which region is requested; set by the caller
  std::uint8_t reserved_back[36];
};
static_assert(offsetof(flash_region_req, address) == 16);
static_assert(offsetof(flash_region_req, size) == 20);
static_assert(offsetof(flash_region_req, kind) == 24);
static_assert(sizeof(flash_region_req) == 64);

/// The result of flash_get_base() when the driver fails.
inline constexpr std::uint32_t flash_no_base = 0xFFFFFFFF;

/// Opens the device for reading and writing. Returns its descriptor, or a negative number.
int flash_open();

int flash_close(int descriptor);

/// Requests the location of a region. Returns 1, or -1 when the driver fails.
int flash_get_region(int descriptor, flash_region_req* request);

/// Requests the address of the device's first byte.
std::uint32_t flash_get_base(int descriptor);

/// Positions the device at an offset from its first byte. Returns the offset, or -1.
off_t flash_seek(int descriptor, std::uint32_t offset);

/// Writes at the current position. Returns the number of bytes accepted, or -1.
ssize_t flash_write(int descriptor, const std::uint8_t* data, std::size_t length);

}  // namespace proreflax

#endif
