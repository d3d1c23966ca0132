#include "settings/ini_entries.h"

#include "settings/line_reader.h"
#include "store/ini_line.h"

namespace proreflax::settings {

ini_entries read_ini(const std::vector<std::string>& lines) {
  ini_entries read;
  ini_check check;
  std::string section;
  for (std::size_t i = 0; i < lines.size() && !check.gave_up(); ++i) {
    check.line(lines[i]);
    std::string text = lines[i];  // taken apart in place
    const ini_line line = read_ini_line(text.data());
    if (line.error == line_error::none && line.name != nullptr) {
      section = line.name;
    } else if (line.error == line_error::none && line.key != nullptr) {
      read.entries.push_back({i + 1, section, line.key, line.value});
    }
  }
  check.end();
  read.faults = check.faults();
  return read;
}

std::vector<std::string> read_lines(const std::string& path, std::string& failure) {
  constexpr std::size_t most_lines = 50000;  // far more than any configuration has
  line_reader reader{path};
  std::vector<std::string> lines;
  while (auto line = reader.next()) {
    if (lines.size() == most_lines) {
      failure = "has more than " + std::to_string(most_lines) + " lines: this is no such text";
      return {};
    }
    lines.push_back(std::move(line->text));
  }
  failure = reader.failure();
  return lines;
}

}  // namespace proreflax::settings
