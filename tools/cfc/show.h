// show and sections: what the known sections hold, and what they are made of.
#ifndef PROREFLAX_TOOLS_CFC_SHOW_H
#define PROREFLAX_TOOLS_CFC_SHOW_H

#include <string>
#include <vector>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/output.h"
#include "tools/cfc/section_values.h"

namespace cfc {

struct show_command {
  std::string section;  // empty for all
  bool secrets = false;
  bool json = false;
};

struct sections_command {
  std::string section;  // empty for all
  bool json = false;
};

/// The header and a line a field, in columns: field, value, kind. Two or more elements of an array
/// in a row that are empty, or not there, share one line.
std::vector<std::string> table_of(const section_values& values, bool secrets);

exit_status run(const show_command& command, output& out);
exit_status run(const sections_command& command, output& out);

}  // namespace cfc

#endif
