// The verbs of the command line: what each takes, as tables. The parser, the help and the usage
// errors are all made from them.
#ifndef PROREFLAX_TOOLS_CFC_COMMAND_LINE_VERBS_H
#define PROREFLAX_TOOLS_CFC_COMMAND_LINE_VERBS_H

#include <cstdint>
#include <span>

namespace cfc {

/// In the order of the rows.
enum class verb_option : std::uint8_t {
  help,
  version,
  value_type,
  json,
  json_object,
  force,
  all_or_nothing,
  secrets,
  image_type,
  output,
  name,
  load,
  entry,
  time,
  yes,
};

struct option_row {
  const char* name;
  const char* argument;  // what the help calls its value; null for a flag
  const char* choices;   // "{a,b}"; null where the value is free
  const char* description;
  char letter = '\0';
  bool required = false;
};

struct positional_row {
  const char* name;
  const char* description;
  const char* choices = nullptr;
  bool required = true;
  bool repeats = false;
};

/// In the order of the rows; `family` is for a verb that is followed by one of its members.
enum class verb : std::uint8_t {
  get,
  set,
  register_section,
  flush,
  defaults,
  batch,
  check,
  status,
  show,
  sections,
  export_all,
  import,
  diff,
  edit,
  acl,
  time,
  wireless_status,
  wireless_events,
  wireless_stations,
  wireless_channels,
  firmware_info,
  firmware_pack,
  firmware_write,
  help,
  family,
};

struct verb_row {
  const char* name;
  const char* description;
  verb which;
  std::span<const verb_option> options;  // --help first
  std::span<const positional_row> positionals;
  std::span<const verb_row> members;  // of a family
};

const option_row& row_of(verb_option which);

/// The program as a whole: the family of all verbs.
extern const verb_row program;

}  // namespace cfc

#endif
