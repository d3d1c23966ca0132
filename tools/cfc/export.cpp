// Values stand in the text as the store keeps them, passwords too: what is
// exported is what comes back. All sections are read before the first line
// is written, so that a failure leaves no half of a text.
#include "tools/cfc/export.h"

#include <vector>

#include "tools/cfc/json_text.h"
#include "tools/cfc/result_text.h"
#include "tools/cfc/section_values.h"

namespace cfc {
namespace {

void write_ini(const section_values& values, output& out) {
  out.result("");
  out.result("[" + values.name() + "]");
  for (const section_entry& each : values.entries) {
    if (each.text) {
      out.result(each.key.name() + "=" + *each.text);
    }
  }
}

}  // namespace

exit_status run(const export_command& command, output& out) {
  std::vector<section_values> all;
  for (const auto* each : choose_sections("export", "", out)) {
    section_values values = read_values(*each);
    if (values.ok()) {
      all.push_back(std::move(values));
    } else if (values.code != CFC_ERR_NO_SECTION) {  // not every device has every section
      complain("export", values, out);
      return status_of(values.code);
    }
  }
  if (command.json) {
    out.result(json_of_export(all));
    return exit_status::done;
  }
  for (const section_values& each : all) {
    write_ini(each, out);
  }
  return exit_status::done;
}

}  // namespace cfc
