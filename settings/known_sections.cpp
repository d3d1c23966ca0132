#include "settings/known_sections.h"

#include <proreflax/config.h>

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "settings/message_text.h"
#include "values/hex_text.h"
#include "values/number_text.h"

namespace proreflax::settings {
namespace {

/// Fields whose names begin like this hold what opens something. Numbers never do.
constexpr std::array<std::string_view, 9> secret_names{
    "passwd", "password", "passphrase", "wep_passphrase", "wep_key_", "wepkey_",
    "PMK",    "pin",      "api",
};

/// The longest text of a number or an address that the getters read.
constexpr std::size_t short_text_max = 15;

std::string text_of_bytes(const std::uint8_t* bytes, std::size_t count) {
  std::string text(2 * count + 2, '\0');
  cfc_bin_to_hex(bytes, static_cast<std::uint32_t>(count), text.data());
  return text;
}

template <typename Number>
std::string text_of_number(Number number) {
  // In memory as the store's hexadecimal text wants bytes: the lowest first, on every machine.
  std::array<std::uint8_t, sizeof number> bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<std::uint8_t>(std::uint32_t{number} >> (8 * i));
  }
  return text_of_bytes(bytes.data(), bytes.size());
}

struct store_writer {
  std::string operator()(const std::string& text) const { return text; }
  std::string operator()(std::uint8_t number) const { return text_of_number(number); }
  std::string operator()(std::uint16_t number) const { return text_of_number(number); }
  std::string operator()(std::uint32_t number) const { return text_of_number(number); }
  std::string operator()(ipv4_address address) const { return show_value(address); }
  std::string operator()(const binary_data& bytes) const {
    return bytes.empty() ? std::string{} : text_of_bytes(bytes.data(), bytes.size());
  }
};

std::string rule_of(const field& which) {
  if (kind_of(which) == value_kind::string) {
    return "a text of at most " + std::to_string(which.capacity - 1) + " characters";
  }
  if (kind_of(which) == value_kind::binary) {
    return "at most " + std::to_string(which.capacity) +
           " bytes, stored as 0x and two hexadecimal digits a byte, the last byte first; --type "
           "binary takes them in the order of memory";
  }
  return std::string{kind_rule(kind_of(which))} + ", stored in at most 15 characters";
}

parsed_value refusal(const field& which, std::uint32_t code, const std::string& text) {
  std::string value = "the value ";
  value += text.empty() ? "is empty" : is_secret(which) ? "is refused" : "is " + quoted(text);
  return {.code = code, .sentence = value + "; this key takes " + rule_of(which), .value = {}};
}

template <typename Number>
parsed_value read_number(const field& which, const std::string& text) {
  std::uint32_t number = 0;
  std::uint32_t code = cfc_str_to_u32(text.c_str(), &number);
  if (code == CFC_OK && number > std::numeric_limits<Number>::max()) {
    code = CFC_ERR_BAD_VALUE;
  }
  return code == CFC_OK ? parsed_value{.value = static_cast<Number>(number)}
                        : refusal(which, code, text);
}

parsed_value read_address(const field& which, const std::string& text) {
  ipv4_address address;
  return translate_ip_to_u32(text.c_str(), &address.number) == 0
             ? parsed_value{.value = address}
             : refusal(which, CFC_ERR_NOT_AN_ADDRESS, text);
}

parsed_value read_short(const field& which, const std::string& text) {
  if (text.size() > short_text_max) {
    return refusal(which, CFC_ERR_NO_ROOM, text);
  }
  switch (kind_of(which)) {
    case value_kind::u8:
      return read_number<std::uint8_t>(which, text);
    case value_kind::u16:
      return read_number<std::uint16_t>(which, text);
    case value_kind::u32:
      return read_number<std::uint32_t>(which, text);
    default:
      return read_address(which, text);
  }
}

parsed_value read_text(const field& which, const std::string& text) {
  return text.size() < which.capacity ? parsed_value{.value = text}
                                      : refusal(which, CFC_ERR_NO_ROOM, text);
}

parsed_value read_bytes(const field& which, const std::string& text) {
  if (text.size() > 2 * std::size_t{which.capacity} + 2) {
    return refusal(which, CFC_ERR_NO_ROOM, text);
  }
  binary_data bytes(text.empty() ? 0 : which.capacity);  // what a short text lacks reads as 0
  const std::uint32_t code =
      cfc_hex_to_bin(text.c_str(), static_cast<std::int32_t>(text.size()), bytes.data());
  return code == CFC_OK ? parsed_value{.value = std::move(bytes)} : refusal(which, code, text);
}

}  // namespace

std::string known_key::name() const {
  key_string key;
  return format_key(which, index, key);
}

const listed_section* find_known_section(const std::string& name) {
  const auto sections = all_sections();
  const auto found = std::ranges::find_if(
      sections, [&](const listed_section& each) { return name == each.table.name(); });
  return found == sections.end() ? nullptr : &*found;
}

std::vector<known_key> keys_of(const listed_section& section) {
  std::vector<known_key> keys;
  for (const field& each : section.table) {
    for (unsigned index = 0; index < std::max<unsigned>(1, each.count); ++index) {
      keys.push_back({each, index});
    }
  }
  return keys;
}

std::optional<known_key> find_known_key(const std::string& section, const std::string& key) {
  const listed_section* const known = find_known_section(section);
  if (known == nullptr) {
    return std::nullopt;
  }
  const std::vector<known_key> keys = keys_of(*known);
  const auto found = std::ranges::find(keys, key, &known_key::name);
  return found == keys.end() ? std::nullopt : std::optional{*found};
}

value_kind kind_of(const field& which) {
  switch (which.type) {
    case proreflax::value_type::u8:
      return value_kind::u8;
    case proreflax::value_type::u16:
      return value_kind::u16;
    case proreflax::value_type::u32:
      return value_kind::u32;
    case proreflax::value_type::ip:
      return value_kind::ip;
    case proreflax::value_type::binary:
      return value_kind::binary;
    case proreflax::value_type::string:
      break;
  }
  return value_kind::string;
}

std::string kind_in_words(const field& which) {
  std::string words{name_of(kind_of(which))};
  if (kind_of(which) == value_kind::string) {
    words += ", at most " + std::to_string(which.capacity - 1) + " characters";
  } else if (kind_of(which) == value_kind::binary) {
    words += ", " + std::to_string(which.capacity) + " bytes";
  }
  return words;
}

bool is_secret(const field& which) {
  const std::string_view name = which.name;
  if (kind_of(which) != value_kind::string && kind_of(which) != value_kind::binary) {
    return false;
  }
  return name.find("secret") != std::string_view::npos ||
         std::ranges::any_of(secret_names,
                             [&](std::string_view each) { return name.starts_with(each); });
}

std::string stored_text(const typed_value& value) {
  return std::visit(store_writer{}, value);
}

parsed_value read_stored(const field& which, const std::string& text) {
  switch (kind_of(which)) {
    case value_kind::string:
      return read_text(which, text);
    case value_kind::binary:
      return read_bytes(which, text);
    default:
      return read_short(which, text);
  }
}

}  // namespace proreflax::settings
