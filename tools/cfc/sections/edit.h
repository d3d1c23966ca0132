// edit: a known section in an editor.
//
// The file holds a line a key, its value as `show` and `get --type` print it. Only lines that were
// changed are set, all or nothing; a line that is taken out leaves its key as it is, since the
// protocol knows no delete.
#ifndef PROREFLAX_TOOLS_CFC_SECTIONS_EDIT_H
#define PROREFLAX_TOOLS_CFC_SECTIONS_EDIT_H

#include <string>
#include <string_view>
#include <vector>

#include "settings/section_values.h"
#include "settings/transaction.h"
#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct edit_command {
  std::string section;
};

/// The text to edit.
std::string text_to_edit(const proreflax::settings::section_values& values);

struct edit_fault {
  std::size_t line = 0;
  std::string sentence;
};

struct edited_text {
  std::vector<proreflax::settings::transaction_step>
      sets;                        // a line for each value that was changed
  std::vector<edit_fault> faults;  // nothing must be set when there are any
};

/// What became of it.
edited_text read_edited(const proreflax::settings::section_values& before, std::string_view text);

exit_status run(const edit_command& command, output& out);

}  // namespace cfc

#endif
