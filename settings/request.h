// What the service can be asked for: get, set, register, flush, defaults.
//
// Each is a plain record, and carry_out() makes the one request. What can be refused by the rules
// alone is refused before anything is sent, with the rule named.
#ifndef PROREFLAX_SETTINGS_REQUEST_H
#define PROREFLAX_SETTINGS_REQUEST_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "settings/access_lock.h"
#include "settings/typed_value.h"

namespace proreflax::settings {

struct get_request {
  std::string section;
  std::string key;
  value_kind kind = value_kind::string;
};

struct set_request {
  std::string section;
  std::string key;
  std::string value;
  value_kind kind = value_kind::string;
  bool force = false;  // also what the section's getter would not read
};

struct register_request {
  std::string name;
};

struct flush_request {};

struct defaults_request {};

using request =
    std::variant<get_request, set_request, register_request, flush_request, defaults_request>;

/// What came of a request.
struct answer {
  std::uint32_t code = CFC_OK;
  std::string sentence;              // for a code other than CFC_OK
  std::optional<typed_value> value;  // of a get that succeeded

  bool ok() const { return code == CFC_OK; }
};

/// "get", "set", ...
std::string_view verb_of(const request& asked);

/// The request with the names in it: set section "LAN" key "LanIPAddr".
std::string subject_of(const request& asked);

/// What the rules alone refuse, without asking the service.
answer screen(const request& asked);

/// Validates, then asks, unless the service was killed: the library would never return. `defaults`
/// takes the lock itself and must not be carried out with it held.
answer carry_out(const request& asked, lock_flag lock);

}  // namespace proreflax::settings

#endif
