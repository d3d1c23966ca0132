// A double of the flash driver: the requests to a file that stands for the flash device are
// answered here, and remembered.
#ifndef PROREFLAX_TESTS_FIRMWARE_DRIVER_DOUBLE_H
#define PROREFLAX_TESTS_FIRMWARE_DRIVER_DOUBLE_H

#include <cstdint>
#include <string>
#include <vector>

#include "firmware/flash_device.h"
#include "tests/firmware/image_builder.h"

namespace driver_double {

struct region {
  std::uint32_t address;
  std::uint32_t size;
};

struct state {
  std::uint32_t base = 0xBF000000;
  region kernel{0xBF001000, 0x1000};
  region ramdisk{0xBF002000, 0x1000};
  bool knows_base = true;
  int region_failing = 0;                            // the n-th region request fails
  std::vector<unsigned long> requests;               // their numbers, in order
  std::vector<proreflax::flash_region_req> regions;  // the records as they came
};

extern state now;

}  // namespace driver_double

/// The device's folder with an empty flash in it, and nothing failing.
class flash {
 public:
  flash();
  ~flash();
  flash(const flash&) = delete;
  flash& operator=(const flash&) = delete;

  static void remove();

  /// What was written from an offset on; shorter at the end of what was written at all.
  static bytes at(std::size_t offset, std::size_t count);

  /// Whether not a byte was written.
  static bool is_untouched();
};

#endif
