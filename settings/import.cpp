#include "settings/import.h"

#include "settings/ini_entries.h"
#include "settings/json_import.h"

namespace proreflax::settings {
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

imported_text read_json(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& each : lines) {
    text += each;
  }
  imported_text imported;
  for (set_request& each : read_json_export(text, imported.failure)) {
    imported.steps.push_back({.number = 0, .asked = std::move(each), .fault = {}});
  }
  return imported;
}

imported_text read_ini_text(const std::vector<std::string>& lines) {
  ini_entries read = read_ini(lines);
  imported_text imported{.steps = {}, .faults = std::move(read.faults), .failure = {}};
  for (ini_entry& each : read.entries) {
    set_request set{.section = std::move(each.section),
                    .key = std::move(each.key),
                    .value = std::move(each.value)};
    imported.steps.push_back({.number = each.line, .asked = std::move(set), .fault = {}});
  }
  return imported;
}

}  // namespace

imported_text read_import(const std::vector<std::string>& lines) {
  return is_json(lines) ? read_json(lines) : read_ini_text(lines);
}

}  // namespace proreflax::settings
