// import: sets all that a text of export holds, or nothing of it.
#ifndef PROREFLAX_TOOLS_CFC_SECTIONS_IMPORT_H
#define PROREFLAX_TOOLS_CFC_SECTIONS_IMPORT_H

#include <string>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct import_command {
  std::string file;  // "-" for standard input
};

exit_status run(const import_command& command, output& out);

}  // namespace cfc

#endif
