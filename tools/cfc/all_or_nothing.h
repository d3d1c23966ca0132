// batch --all-or-nothing: all lines of a batch, or none of them.
#ifndef PROREFLAX_TOOLS_CFC_ALL_OR_NOTHING_H
#define PROREFLAX_TOOLS_CFC_ALL_OR_NOTHING_H

#include <cstddef>
#include <functional>
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

/// Told before each request how many of how many are done. Undoing is not counted.
using progress_report = std::function<void(std::size_t done, std::size_t all)>;

outcome carry_out_all_or_nothing(std::vector<batch_line> lines, progress_report report = {});

/// Complains about each line that failed, or was left behind, and tells the summary. Lines with
/// number 0 have no place of their own.
void complain(const std::string& verb, const std::string& text_name, const outcome& result,
              output& out);

}  // namespace cfc

#endif
