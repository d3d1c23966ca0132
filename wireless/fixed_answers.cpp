// Functions of the wireless interface whose results do not depend on the driver.
#include <proreflax/wireless.h>

#include <cstdint>
#include <iterator>

namespace {

struct channel_range {
  std::uint8_t first;
  std::uint8_t count;
};

/// Indexed by region code; entry 0 is for every code that is not listed.
constexpr channel_range channels[] = {{1, 14}, {1, 11}, {1, 13}, {10, 4}, {1, 14}, {10, 2}};

channel_range channels_of(int region) {
  const bool listed = region >= 0 && region < static_cast<int>(std::size(channels));
  return channels[listed ? region : 0];
}

}  // namespace

std::uint32_t gui_get_wls_channel_info(int region, int* first, int* count) {
  const channel_range range = channels_of(region);
  if (first != nullptr) {
    *first = range.first;
  }
  if (count != nullptr) {
    *count = range.count;
  }
  return CFC_OK;
}

std::uint32_t gui_get_wls_firmversion(void* /*version*/, void* /*size*/) {
  return CFC_FAILED;
}
