// firmware info: an image in words, as a tree of its parts, and what the device would say to it.
#ifndef PROREFLAX_TOOLS_CFC_FIRMWARE_INFO_H
#define PROREFLAX_TOOLS_CFC_FIRMWARE_INFO_H

#include <optional>
#include <string>
#include <vector>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/firmware/image.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct firmware_info_command {
  std::string file;
  bool json = false;
};

/// Every header field and both checksums, the parts below.
std::vector<std::string> describe(const image_view& image);

/// The image of a file, its parts in it, and what the device would say to it.
std::string json_of(const std::string& file, const image_view& image,
                    const std::optional<image_fault>& fault);

exit_status run(const firmware_info_command& command, output& out);

}  // namespace cfc

#endif
