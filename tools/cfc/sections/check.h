// check: which line of an INI text breaks which rule of the loader, all of them.
#ifndef PROREFLAX_TOOLS_CFC_SECTIONS_CHECK_H
#define PROREFLAX_TOOLS_CFC_SECTIONS_CHECK_H

#include <string>
#include <vector>

#include "settings/ini_check.h"
#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct check_command {
  std::string file;  // "-" for standard input
  bool json = false;
};

/// What check found.
struct check_report {
  std::string file;
  std::vector<proreflax::settings::ini_fault> faults;
  std::string failure;  // why the text was not read to its end; empty when it was

  bool accepted() const { return faults.empty() && failure.empty(); }
};

std::string json_of(const check_report& report);

exit_status run(const check_command& command, output& out);

}  // namespace cfc

#endif
