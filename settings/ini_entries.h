// A configuration text as its entries, each with its line, judged by the rules of `check`.
#ifndef PROREFLAX_SETTINGS_INI_ENTRIES_H
#define PROREFLAX_SETTINGS_INI_ENTRIES_H

#include <cstddef>
#include <string>
#include <vector>

#include "settings/ini_check.h"

namespace proreflax::settings {

struct ini_entry {
  std::size_t line = 0;
  std::string section;
  std::string key;
  std::string value;
};

struct ini_entries {
  std::vector<ini_entry> entries;
  std::vector<ini_fault> faults;  // the entries are good for nothing when there are any
};

/// The lines with their LFs.
ini_entries read_ini(const std::vector<std::string>& lines);

/// All lines of a file; a sentence in `failure` when they could not be read.
std::vector<std::string> read_lines(const std::string& path, std::string& failure);

}  // namespace proreflax::settings

#endif
