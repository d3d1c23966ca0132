// show and sections: what the known sections hold, and what they are made of.
#ifndef PROREFLAX_TOOLS_CFC_SECTIONS_SHOW_H
#define PROREFLAX_TOOLS_CFC_SECTIONS_SHOW_H

#include <string>
#include <vector>

#include "settings/section_values.h"
#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct show_command {
  std::string section;  // empty for all
  bool secrets = false;
  bool json = false;
};

struct sections_command {
  std::string section;  // empty for all
  bool json = false;
};

/// The header and a line a field, in columns: field, value, kind. Two or more elements of an array
/// in a row that are empty, or not there, share one line.
std::vector<std::string> table_of(const proreflax::settings::section_values& values, bool secrets);

/// What a section holds, a value a key; a secret is null unless secrets are asked for.
std::string json_of(const proreflax::settings::section_values& values, bool secrets);
/// What a section is made of.
std::string json_of(const proreflax::listed_section& section);

exit_status run(const show_command& command, output& out);
exit_status run(const sections_command& command, output& out);

}  // namespace cfc

#endif
