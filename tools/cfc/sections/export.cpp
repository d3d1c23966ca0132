// All sections are read before the first line is written, so that a failure leaves no half of a
// text.
#include "tools/cfc/sections/export.h"

#include "settings/export.h"
#include "tools/cfc/sections/chosen_sections.h"

namespace cfc {

using namespace proreflax::settings;

exit_status run(const export_command& command, output& out) {
  const std::vector<section_values> all = read_all_sections();
  if (!all.empty() && !all.back().ok()) {
    complain("export", all.back(), out);
    return status_of(all.back().code);
  }
  if (command.json) {
    out.result(json_of(all));
  } else if (!all.empty()) {
    out.result(ini_of(all));
  }
  return exit_status::done;
}

}  // namespace cfc
