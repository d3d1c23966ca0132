// diff: what differs from the factory file.
#ifndef PROREFLAX_TOOLS_CFC_SECTIONS_DIFF_H
#define PROREFLAX_TOOLS_CFC_SECTIONS_DIFF_H

#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct diff_command {
  bool secrets = false;
};

/// As diff(1): done for no difference, failed for some, and wrong_usage for trouble.
exit_status run(const diff_command& command, output& out);

}  // namespace cfc

#endif
