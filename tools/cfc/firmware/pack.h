// firmware pack: images with this device's checksums, made from parts.
#ifndef PROREFLAX_TOOLS_CFC_FIRMWARE_PACK_H
#define PROREFLAX_TOOLS_CFC_FIRMWARE_PACK_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct firmware_pack_command {
  std::string type;  // kernel, ramdisk or multi
  std::string file;
  std::vector<std::string> parts;
  std::string name;
  std::uint32_t load_address = 0;
  std::optional<std::uint32_t> entry_point;  // the load address when it is not given
  std::optional<std::uint32_t> time;         // the current one when it is not given
};

/// The fields of a header that are not computed.
struct image_fields {
  std::uint8_t type = 0;
  std::uint32_t time = 0;
  std::uint32_t load_address = 0;
  std::uint32_t entry_point = 0;
  std::string name;  // at most 32 bytes
};

/// A whole image of these data bytes.
std::vector<std::uint8_t> make_image(const image_fields& fields,
                                     const std::vector<std::uint8_t>& data);

/// The data of a multi-file image: the table, then the parts on 4-byte boundaries.
std::vector<std::uint8_t> make_multi_data(const std::vector<std::vector<std::uint8_t>>& parts);

exit_status run(const firmware_pack_command& command, output& out);

}  // namespace cfc

#endif
