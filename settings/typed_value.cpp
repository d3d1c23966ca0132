#include "settings/typed_value.h"

#include <proreflax/config.h>

#include <limits>

#include "settings/message_text.h"
#include "settings/name_rules.h"
#include "values/hex_text.h"

namespace proreflax::settings {
namespace {

/// How many bytes the store holds under one key, as hexadecimal text.
constexpr std::size_t binary_max = 98;

constexpr std::array<std::string_view, 6> kind_rules{
    "a text of 0 to 199 characters without CR or LF",
    "a number from 0 to 255, decimal or hexadecimal after 0x",
    "a number from 0 to 65535, decimal or hexadecimal after 0x",
    "a number from -2147483648 to 4294967295, decimal or hexadecimal after 0x",
    "an IPv4 address of four decimal parts from 0 to 255 with dots between them",
    "1 to 98 bytes, each as two hexadecimal digits, with or without a colon between them, in the "
    "order of the bytes in memory",
};

parsed_value refusal(value_kind kind, std::uint32_t code, const std::string& text) {
  const std::string what = text.empty() ? "the value is empty" : "the value is " + quoted(text);
  return {.code = code,
          .sentence = what + "; a value of type " + std::string{name_of(kind)} + " is " +
                      std::string{kind_rule(kind)}};
}

/// A number text taken apart: digits alone, their base, and the sign.
struct number_text {
  const char* digits;
  std::uint32_t base = 10;
  bool negative = false;
};

number_text read_prefixes(const char* text) {
  number_text number{.digits = text, .negative = *text == '-'};
  if (number.negative || *text == '+') {
    ++number.digits;
  }
  if (has_hex_prefix(number.digits)) {
    number.digits += 2;
    number.base = 16;
  }
  return number;
}

/// The code of a refusal, or CFC_OK with the magnitude in `out`.
std::uint32_t read_digits(const number_text& number, std::uint64_t& out) {
  if (*number.digits == '\0') {
    return CFC_ERR_BAD_VALUE;
  }
  for (const char* digit = number.digits; *digit != '\0'; ++digit) {
    const std::uint32_t value = hex_digit_value(*digit);
    if (value >= number.base) {
      return CFC_ERR_BAD_DIGIT;
    }
    if (out <= std::numeric_limits<std::uint32_t>::max()) {
      out = out * number.base + value;
    }
  }
  return out <= std::numeric_limits<std::uint32_t>::max() ? CFC_OK : CFC_ERR_OVERFLOW;
}

/// The least number that a text may name, without its sign. Only a u32 takes negative numbers, as
/// its two's complement: so the library reads them.
template <typename Number>
constexpr std::uint64_t least = 0;
template <>
constexpr std::uint64_t least<std::uint32_t> = std::uint64_t{1} << 31;

template <typename Number>
parsed_value parse_number(value_kind kind, const std::string& text) {
  if (text.empty()) {
    return refusal(kind, CFC_ERR_BAD_ARGUMENT, text);
  }
  const number_text number = read_prefixes(text.c_str());
  std::uint64_t magnitude = 0;
  if (const std::uint32_t code = read_digits(number, magnitude); code != CFC_OK) {
    return refusal(kind, code, text);
  }
  if (magnitude > (number.negative ? least<Number> : std::numeric_limits<Number>::max())) {
    return refusal(kind, CFC_ERR_BAD_VALUE, text);
  }
  return {.value = static_cast<Number>(number.negative ? 0 - magnitude : magnitude)};
}

parsed_value parse_string(const std::string& text) {
  if (const auto broken = broken_value_rule(text)) {
    return {.code = CFC_ERR_BAD_ARGUMENT, .sentence = *broken};
  }
  return {.value = text};
}

parsed_value parse_address(const std::string& text) {
  ipv4_address address;
  if (translate_ip_to_u32(text.c_str(), &address.number) != 0) {
    return refusal(value_kind::ip, CFC_ERR_NOT_AN_ADDRESS, text);
  }
  return {.value = address};
}

/// The bytes of pairs of digits, with a colon between all pairs or none; empty for any other text.
binary_data read_pairs(std::string_view text) {
  const std::size_t step = text.size() > 2 && text[2] == ':' ? 3 : 2;
  binary_data bytes;
  for (std::size_t i = 0; i < text.size(); i += step) {
    if (i + 2 > text.size() || (step == 3 && i > 0 && text[i - 1] != ':')) {
      return {};
    }
    const std::uint32_t high = hex_digit_value(text[i]);
    const std::uint32_t low = hex_digit_value(text[i + 1]);
    if (high == not_a_digit || low == not_a_digit) {
      return {};
    }
    bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
  }
  // A colon behind the last pair.
  return step == 3 && text.back() == ':' ? binary_data{} : bytes;
}

parsed_value parse_binary(const std::string& text) {
  if (text.empty()) {
    return refusal(value_kind::binary, CFC_ERR_BAD_ARGUMENT, text);
  }
  binary_data bytes = read_pairs(text);
  if (bytes.empty()) {
    return refusal(value_kind::binary, CFC_ERR_BAD_VALUE, text);
  }
  if (bytes.size() > binary_max) {
    return refusal(value_kind::binary, CFC_ERR_BAD_ARGUMENT, text);
  }
  return {.value = std::move(bytes)};
}

std::string show_address(ipv4_address address) {
  std::array<char, 16> text{};
  const std::int32_t written = translate_u32_to_ip(text.data(), text.size(), address.number);
  return written == 0 ? text.data() : "";
}

std::string show_bytes(const binary_data& bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) {
      text += ':';
    }
    text += digits[byte >> 4];
    text += digits[byte & 0x0F];
  }
  return text;
}

struct shower {
  std::string operator()(const std::string& text) const { return text; }
  std::string operator()(std::uint32_t number) const { return std::to_string(number); }
  std::string operator()(ipv4_address address) const { return show_address(address); }
  std::string operator()(const binary_data& bytes) const { return show_bytes(bytes); }
};

}  // namespace

std::string_view kind_rule(value_kind kind) {
  return kind_rules[static_cast<std::size_t>(kind)];
}

parsed_value parse_value(value_kind kind, const std::string& text) {
  switch (kind) {
    case value_kind::u8:
      return parse_number<std::uint8_t>(kind, text);
    case value_kind::u16:
      return parse_number<std::uint16_t>(kind, text);
    case value_kind::u32:
      return parse_number<std::uint32_t>(kind, text);
    case value_kind::ip:
      return parse_address(text);
    case value_kind::binary:
      return parse_binary(text);
    case value_kind::string:
      break;
  }
  return parse_string(text);
}

std::string show_value(const typed_value& value) {
  return std::visit(shower{}, value);
}

}  // namespace proreflax::settings
