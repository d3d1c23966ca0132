// batch --all-or-nothing: all lines of a batch, or none of them.
#ifndef PROREFLAX_TOOLS_CFC_ALL_OR_NOTHING_H
#define PROREFLAX_TOOLS_CFC_ALL_OR_NOTHING_H

#include <string>
#include <vector>

#include "tools/cfc/batch.h"
#include "tools/cfc/exit_status.h"

namespace cfc {

/// What came of a whole batch.
struct outcome {
  std::vector<batch_result> lines;
  exit_status status = exit_status::done;
  std::string summary;  // what was done about a failure, as a sentence; empty when all went well
};

outcome carry_out_all_or_nothing(std::vector<batch_line> lines);

}  // namespace cfc

#endif
