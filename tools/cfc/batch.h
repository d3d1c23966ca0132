// batch: many requests from one text, one command a line.
//
// Without --all-or-nothing each line is carried out as soon as it is read, takes the lock for
// itself, and a line that fails does not keep the next from being tried. With it the whole text is
// read and screened first, the lock is held throughout, and when a line fails all that was set is
// put back in reverse order. The protocol knows no delete: a key that the batch made cannot be
// taken away again, and is named with the value that stays in it.
#ifndef PROREFLAX_TOOLS_CFC_BATCH_H
#define PROREFLAX_TOOLS_CFC_BATCH_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/output.h"
#include "tools/cfc/value_verbs.h"

namespace cfc {

struct batch_command {
  std::string file;  // empty or "-" for standard input
  bool all_or_nothing = false;
  bool json = false;
};

/// One line of the text that is neither blank nor a comment.
struct batch_line {
  std::size_t number = 0;
  std::optional<store_command> command;  // nothing for a line that is no command
  std::string fault;                     // why it is none
};

/// Reads a line; nothing for a blank one or a comment.
std::optional<batch_line> read_batch_line(std::size_t number, std::string_view text);

enum class line_state {
  done,     // carried out, and in force
  failed,   // refused; nothing changed by it, unless left_behind says otherwise
  undone,   // was set, and put back because another line failed
  stays,    // was set, and cannot be put back: left_behind says what stays
  skipped,  // not tried, because another line failed
};

std::string_view name_of(line_state state);

/// What came of a line.
struct batch_result {
  batch_line line;
  line_state state = line_state::skipped;
  exit_status status = exit_status::done;
  answer given;             // a line that was not tried has an empty one
  std::string left_behind;  // what a line that was not undone leaves in the store
};

/// What went wrong with a line that failed, with the command's names in it.
std::string failure_of(const batch_result& result);

/// Ends with the status of the first line that failed.
exit_status run(const batch_command& command, output& out);

}  // namespace cfc

#endif
