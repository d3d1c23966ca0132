// export: what all known sections hold, as the text that import and the service's loader read.
#ifndef PROREFLAX_TOOLS_CFC_SECTIONS_EXPORT_H
#define PROREFLAX_TOOLS_CFC_SECTIONS_EXPORT_H

#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct export_command {
  bool json = false;
};

exit_status run(const export_command& command, output& out);

}  // namespace cfc

#endif
