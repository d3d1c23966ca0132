// What known sections hold, as the texts that import and the service's loader read.
//
// Values stand in the text as the store keeps them, passwords too: what is exported is what comes
// back.
#ifndef PROREFLAX_SETTINGS_EXPORT_H
#define PROREFLAX_SETTINGS_EXPORT_H

#include <string>
#include <vector>

#include "settings/section_values.h"

namespace proreflax::settings {

/// The known sections that the device has. The last one says why the reading ended early.
std::vector<section_values> read_all_sections();

/// Without a last LF.
std::string ini_of(const std::vector<section_values>& sections);

/// An object of objects, each value the text that the store keeps, a key a line. A text that is not
/// UTF-8 is an object with its bytes. Without a last LF.
std::string json_of(const std::vector<section_values>& sections);

}  // namespace proreflax::settings

#endif
