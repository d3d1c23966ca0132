// The command line, read into the record of one command.
//
// A family of verbs adds its records to `any_command` here, its grammar to command_line.cpp, and a
// run() of its own beside its records.
#ifndef PROREFLAX_TOOLS_CFC_COMMAND_LINE_COMMAND_LINE_H
#define PROREFLAX_TOOLS_CFC_COMMAND_LINE_COMMAND_LINE_H

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/cfc/device/access_list.h"
#include "tools/cfc/device/local_time.h"
#include "tools/cfc/device/status.h"
#include "tools/cfc/device/wireless.h"
#include "tools/cfc/exit_status.h"
#include "tools/cfc/firmware/info.h"
#include "tools/cfc/firmware/pack.h"
#include "tools/cfc/firmware/write.h"
#include "tools/cfc/sections/check.h"
#include "tools/cfc/sections/diff.h"
#include "tools/cfc/sections/edit.h"
#include "tools/cfc/sections/export.h"
#include "tools/cfc/sections/import.h"
#include "tools/cfc/sections/show.h"
#include "tools/cfc/values/batch.h"
#include "tools/cfc/values/value_verbs.h"

namespace cfc {

using any_command =
    std::variant<store_command, batch_command, check_command, status_command, show_command,
                 sections_command, export_command, import_command, diff_command, edit_command,
                 acl_command, time_command, wireless_command, firmware_info_command,
                 firmware_pack_command, firmware_write_command>;

/// A command, or a text to print instead: the help that was asked for (status done), or what is
/// wrong with the line.
struct parsed_line {
  std::optional<any_command> command;
  exit_status status = exit_status::done;
  std::string text;
};

/// Reads the words after the program's name.
parsed_line parse_command_line(std::vector<std::string> words);

}  // namespace cfc

#endif
