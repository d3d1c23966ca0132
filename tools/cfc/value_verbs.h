// The verbs that ask the service for one thing: get, set, register, flush, defaults.
//
// Each is a plain record of what was asked for, and carry_out() makes the one request. What can be
// refused by the rules alone is refused before anything is sent, with the rule named.
#ifndef PROREFLAX_TOOLS_CFC_VALUE_VERBS_H
#define PROREFLAX_TOOLS_CFC_VALUE_VERBS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "tools/cfc/access_lock.h"
#include "tools/cfc/exit_status.h"
#include "tools/cfc/output.h"
#include "tools/cfc/typed_value.h"

namespace cfc {

struct get_command {
  std::string section;
  std::string key;
  value_kind kind = value_kind::string;
  bool json = false;
};

struct set_command {
  std::string section;
  std::string key;
  std::string value;
  value_kind kind = value_kind::string;
  bool force = false;  // also what the section's getter would not read
};

struct register_command {
  std::string name;
};

struct flush_command {};

struct defaults_command {};

using store_command =
    std::variant<get_command, set_command, register_command, flush_command, defaults_command>;

/// What came of a request.
struct answer {
  std::uint32_t code = CFC_OK;
  std::string sentence;              // for a code other than CFC_OK
  std::optional<typed_value> value;  // of a get that succeeded

  bool ok() const { return code == CFC_OK; }
};

/// "get", "set", ...
std::string_view verb_of(const store_command& command);

/// The command with the names in it: set section "LAN" key "LanIPAddr".
std::string subject_of(const store_command& command);

/// What the rules alone refuse, without asking the service.
answer screen(const store_command& command);

/// Screens, then asks, unless the service was killed: the library would wait for ever. `defaults`
/// takes the lock itself and must not be carried out with it held.
answer carry_out(const store_command& command, lock_flag lock);

/// The command as a program's only one: the value goes to standard output, a failure to standard
/// error.
exit_status run(const store_command& command, output& out);

}  // namespace cfc

#endif
