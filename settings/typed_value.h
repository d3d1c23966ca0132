// The kinds of value that --type names, and their texts on the command line.
//
// What is typed by a person or a script is screened more strictly than what the library reads from
// the store: a number that does not fit is refused, never wrapped. Numbers are shown in decimal,
// addresses dotted, binary data as pairs of digits in the order of the bytes in memory
// ("00:0c:43"). The store's own form of binary data, "0x" and the last byte first, is not taken
// here: whether its bytes are meant forwards or backwards could not be told from the text.
#ifndef PROREFLAX_SETTINGS_TYPED_VALUE_H
#define PROREFLAX_SETTINGS_TYPED_VALUE_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace proreflax::settings {

enum class value_kind { string, u8, u16, u32, ip, binary };

/// In the order of value_kind.
inline constexpr std::array<std::string_view, 6> kind_names{"string", "u8", "u16",
                                                            "u32",    "ip", "binary"};

constexpr std::string_view name_of(value_kind kind) {
  return kind_names[static_cast<std::size_t>(kind)];
}

/// What a value of this kind is, in words.
std::string_view kind_rule(value_kind kind);

/// Its first part in the most significant byte.
struct ipv4_address {
  std::uint32_t number = 0;
};

using binary_data = std::vector<std::uint8_t>;

/// A value, in the order of value_kind.
using typed_value = std::variant<std::string, std::uint8_t, std::uint16_t, std::uint32_t,
                                 ipv4_address, binary_data>;

/// A value read from a text, or the code and the sentence of the rule that the text breaks.
struct parsed_value {
  std::uint32_t code = 0;
  std::string sentence;
  typed_value value;
};

parsed_value parse_value(value_kind kind, const std::string& text);

std::string show_value(const typed_value& value);

}  // namespace proreflax::settings

#endif
