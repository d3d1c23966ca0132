// firmware info: an image in words, as a tree of its parts, and what the device would say to it.
#ifndef PROREFLAX_TOOLS_CFC_FIRMWARE_INFO_H
#define PROREFLAX_TOOLS_CFC_FIRMWARE_INFO_H

#include <string>
#include <vector>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/firmware_image.h"
#include "tools/cfc/output.h"

namespace cfc {

struct firmware_info_command {
  std::string file;
  bool json = false;
};

/// Every header field and both checksums, the parts below.
std::vector<std::string> describe(const image_view& image);

exit_status run(const firmware_info_command& command, output& out);

}  // namespace cfc

#endif
