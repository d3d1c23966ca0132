// batch: many requests from one text, one command a line.
//
// Without --all-or-nothing each line is carried out as soon as it is read, takes the lock for
// itself, and a line that fails does not keep the next from being tried. With it the whole text is
// read first and is one transaction.
#ifndef PROREFLAX_TOOLS_CFC_VALUES_BATCH_H
#define PROREFLAX_TOOLS_CFC_VALUES_BATCH_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "settings/transaction.h"
#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct batch_command {
  std::string file;  // empty or "-" for standard input
  bool all_or_nothing = false;
  bool json = false;
};

/// Reads a line; nothing for a blank one or a comment.
std::optional<proreflax::settings::transaction_step> read_batch_line(std::size_t number,
                                                                     std::string_view text);

std::string json_of(const proreflax::settings::step_result& result);

/// Ends with the status of the first line that failed.
exit_status run(const batch_command& command, output& out);

}  // namespace cfc

#endif
