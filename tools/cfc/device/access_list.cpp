#include "tools/cfc/device/access_list.h"

#include <proreflax/sections.h>

#include <algorithm>
#include <iterator>
#include <optional>

#include "settings/message_text.h"
#include "settings/result_text.h"
#include "settings/service_state.h"
#include "settings/typed_value.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

constexpr std::size_t mac_bytes = 6;

bool is_zero(const binary_data& bytes) {
  return std::ranges::all_of(bytes, [](unsigned byte) { return byte == 0; });
}

/// Nothing for a text that is no address. All zero marks a free slot, and is none.
std::optional<binary_data> read_mac(const std::string& text) {
  const parsed_value parsed = parse_value(value_kind::binary, text);
  const auto* const bytes = std::get_if<binary_data>(&parsed.value);
  const bool usable = parsed.code == CFC_OK && bytes->size() == mac_bytes && !is_zero(*bytes);
  return usable ? std::optional{*bytes} : std::nullopt;
}

std::uint32_t list_addresses(output& out) {
  wls_mac_ac list{};  // a slot whose key is missing is free
  if (const std::uint32_t code = gui_get_wls_mac_ac(&list); code != CFC_OK) {
    return code;
  }
  for (const auto& slot : list.macFilters) {
    const binary_data bytes{std::begin(slot), std::end(slot)};
    if (!is_zero(bytes)) {
      out.result(show_value(bytes));
    }
  }
  return CFC_OK;
}

std::uint32_t carry_out(const acl_command& command, const binary_data& mac, output& out) {
  switch (command.action) {
    case acl_command::add:
      return gui_wls_ac_add(mac.data());
    case acl_command::remove:
      return gui_wls_ac_delete(mac.data());
    case acl_command::list:
      break;
  }
  return list_addresses(out);
}

std::string sentence_of(const acl_command& command, std::uint32_t code) {
  return command.action == acl_command::add && code == CFC_FAILED ? "the access list is full"
                                                                  : result_sentence(code);
}

}  // namespace

exit_status run(const acl_command& command, output& out) {
  const auto mac = command.action == acl_command::list ? std::optional{binary_data{}}
                                                       : read_mac(command.address);
  if (!mac) {
    out.complain(
        "cfc: acl: " + quoted(command.address) +
        " is no MAC address: six bytes, not all zero, each as two hexadecimal digits, with "
        "colons between them or without");
    return exit_status::wrong_usage;
  }
  const bool killed = service_was_killed();
  const std::uint32_t code = killed ? std::uint32_t{CFC_ERR_NO_SEM} : carry_out(command, *mac, out);
  if (code != CFC_OK) {
    out.complain("cfc: acl: " +
                 in_words(code, killed ? std::string{killed_service} : sentence_of(command, code)));
  }
  return status_of(code);
}

}  // namespace cfc
