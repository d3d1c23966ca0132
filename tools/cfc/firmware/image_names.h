// What the published legacy image format calls its numbers.
#ifndef PROREFLAX_TOOLS_CFC_FIRMWARE_IMAGE_NAMES_H
#define PROREFLAX_TOOLS_CFC_FIRMWARE_IMAGE_NAMES_H

#include <cstdint>
#include <string_view>

namespace cfc {

/// "unknown" for a number that has no name here.
std::string_view operating_system_name(std::uint8_t number);
std::string_view architecture_name(std::uint8_t number);
std::string_view image_type_name(std::uint8_t number);
std::string_view compression_name(std::uint8_t number);

}  // namespace cfc

#endif
