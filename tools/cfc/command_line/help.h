// What --help prints, made from the tables of the verbs.
#ifndef PROREFLAX_TOOLS_CFC_COMMAND_LINE_HELP_H
#define PROREFLAX_TOOLS_CFC_COMMAND_LINE_HELP_H

#include <string>

#include "tools/cfc/command_line/verbs.h"

namespace cfc {

/// `family` is the verb that `row` is a member of, or null. Without a last LF.
std::string help_of(const verb_row* family, const verb_row& row);

/// " TYPE:{string,u8}": what follows an option; empty for a flag.
std::string argument_of(const option_row& row);

}  // namespace cfc

#endif
