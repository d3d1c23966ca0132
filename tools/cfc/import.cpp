// The text becomes the lines of a batch that sets one key each, and goes the batch's way: screened
// as a whole, carried out under one lock, undone when a line fails.
#include "tools/cfc/import.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <vector>

#include "tools/cfc/all_or_nothing.h"
#include "tools/cfc/ini_entries.h"
#include "tools/cfc/json_text.h"

namespace cfc {
namespace {

/// Only a JSON text begins with a brace; an INI text begins with a bracket.
bool is_json(const std::vector<std::string>& lines) {
  for (const std::string& each : lines) {
    if (const auto at = each.find_first_not_of(" \t\r\n"); at != std::string::npos) {
      return each[at] == '{';
    }
  }
  return false;
}

class reader {
 public:
  reader(const std::string& name, output& out) : name_{name}, out_{out} {}

  /// Nothing, and complaints, for a text that cannot be taken.
  std::optional<std::vector<batch_line>> read(const std::vector<std::string>& lines) {
    return is_json(lines) ? read_json(lines) : read_ini_text(lines);
  }

 private:
  std::optional<std::vector<batch_line>> read_json(const std::vector<std::string>& lines) {
    std::string failure;
    const auto sets =
        read_export(std::accumulate(lines.begin(), lines.end(), std::string{}), failure);
    if (!failure.empty()) {
      out_.complain(name_ + ": " + failure);
      return std::nullopt;
    }
    std::vector<batch_line> batch;
    batch.reserve(sets.size());
    for (const set_command& each : sets) {
      batch.push_back({.number = 0, .command = each, .fault = {}});
    }
    return batch;
  }

  std::optional<std::vector<batch_line>> read_ini_text(const std::vector<std::string>& lines) {
    const ini_entries read = read_ini(lines);
    for (const ini_fault& each : read.faults) {
      const std::string line = each.line == 0 ? "" : ":" + std::to_string(each.line);
      out_.complain(name_ + line + ": " + each.sentence);
    }
    if (!read.faults.empty()) {
      return std::nullopt;
    }
    std::vector<batch_line> batch;
    for (const ini_entry& each : read.entries) {
      const set_command set{.section = each.section, .key = each.key, .value = each.value};
      batch.push_back({.number = each.line, .command = set, .fault = {}});
    }
    return batch;
  }

  const std::string& name_;
  output& out_;
};

/// Written whenever the number of per cent changes.
class percentage {
 public:
  explicit percentage(output& out) : out_{out} {}

  void operator()(std::size_t done, std::size_t all) {
    const std::size_t percent = 100 * done / std::max<std::size_t>(all, 1);
    if (percent != shown_) {
      out_.progress("cfc: import: " + std::to_string(percent) + " %");
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
  auto batch = reader{name, out}.read(lines);
  if (!batch) {
    out.complain("cfc: import: " + name + ": nothing was changed");
    return exit_status::failed;
  }
  const outcome result = carry_out_all_or_nothing(std::move(*batch), percentage{out});
  out.progress("");
  complain("import", name, result, out);
  return result.status;
}

}  // namespace cfc
