// The known sections that a verb is to handle, and what is wrong with them.
#ifndef PROREFLAX_TOOLS_CFC_SECTIONS_CHOSEN_SECTIONS_H
#define PROREFLAX_TOOLS_CFC_SECTIONS_CHOSEN_SECTIONS_H

#include <string>
#include <string_view>
#include <vector>

#include "settings/section_values.h"
#include "tools/cfc/output/output.h"

namespace cfc {

/// The section of this name, or all of them for an empty one; complains about an unknown name, and
/// gives nothing.
std::vector<const proreflax::listed_section*> choose_sections(std::string_view verb,
                                                              const std::string& name, output& out);

/// Says on standard error that no section of this name is known.
void complain_of_unknown(std::string_view verb, const std::string& name, output& out);

/// Says on standard error why a section could not be read.
void complain(std::string_view verb, const proreflax::settings::section_values& values,
              output& out);

}  // namespace cfc

#endif
