#include "tools/cfc/sections/import.h"

#include <algorithm>

#include "settings/import.h"
#include "settings/ini_entries.h"
#include "settings/message_text.h"
#include "tools/cfc/values/transaction_report.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

void complain(const std::string& name, const imported_text& text, const output& out) {
  for (const ini_fault& each : text.faults) {
    const std::string line = each.line == 0 ? "" : ":" + std::to_string(each.line);
    out.complain(name + line + ": " + each.sentence);
  }
  if (!text.failure.empty()) {
    out.complain(name + ": " + text.failure);
  }
  out.complain("cfc: import: " + name + ": nothing was changed");
}

/// Written whenever the number of per cent changes.
class percentage {
 public:
  explicit percentage(output& out) : out_{out} {}

  void operator()(std::size_t done, std::size_t all) {
    const std::size_t percent = 100 * done / std::max<std::size_t>(all, 1);
    if (percent != shown_) {
      out_.progress(formatted("cfc: import: %zu %%", percent));
      shown_ = percent;
    }
  }

 private:
  output& out_;
  std::size_t shown_ = 100;
};

}  // namespace

exit_status run(const import_command& command, output& out) {
  const std::string name = command.file.empty() || command.file == "-" ? "stdin" : command.file;
  std::string failure;
  const std::vector<std::string> lines = read_lines(command.file, failure);
  if (!failure.empty()) {
    out.complain("cfc: import: " + name + ": " + failure + "; nothing was changed");
    return exit_status::failed;
  }
  imported_text text = read_import(lines);
  if (!text.accepted()) {
    complain(name, text, out);
    return exit_status::failed;
  }
  const outcome result = carry_out_all_or_nothing(std::move(text.steps), percentage{out});
  out.progress("");
  complain("import", name, result, out);
  return status_of(result);
}

}  // namespace cfc
