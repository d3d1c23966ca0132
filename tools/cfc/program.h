// cfc from its words to its exit status.
#ifndef PROREFLAX_TOOLS_CFC_PROGRAM_H
#define PROREFLAX_TOOLS_CFC_PROGRAM_H

#include <string>
#include <vector>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

/// Runs the command that the words after the program's name spell.
exit_status run_program(std::vector<std::string> words, output& out);

}  // namespace cfc

#endif
