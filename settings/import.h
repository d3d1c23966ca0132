// A text of export, INI or JSON, as the steps of a transaction that set what it holds.
#ifndef PROREFLAX_SETTINGS_IMPORT_H
#define PROREFLAX_SETTINGS_IMPORT_H

#include <string>
#include <vector>

#include "settings/ini_check.h"
#include "settings/transaction.h"

namespace proreflax::settings {

struct imported_text {
  std::vector<transaction_step> steps;
  std::vector<ini_fault> faults;  // of an INI text
  std::string failure;            // why a JSON text cannot be taken; empty when it can

  /// The steps are good for nothing otherwise.
  bool accepted() const { return faults.empty() && failure.empty(); }
};

/// The lines with their LFs.
imported_text read_import(const std::vector<std::string>& lines);

}  // namespace proreflax::settings

#endif
