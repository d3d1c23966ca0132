#include "tests/accessors/section_values.h"

#include <algorithm>
#include <cstring>
#include <ostream>

namespace {

constexpr std::size_t longest_value = 199;

/// The number's last hexadecimal digits.
std::string hex(std::uint32_t number, std::size_t digits) {
  std::string text(digits, '0');
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit, number >>= 4) {
    *digit = "0123456789abcdef"[number & 0x0F];
  }
  return text;
}

std::string dotted(std::uint32_t address) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    text += (text.empty() ? "" : ".") + std::to_string(address >> shift & 0xFF);
  }
  return text;
}

std::uint32_t up_to(std::uint32_t most, std::mt19937& random) {
  return std::uniform_int_distribution<std::uint32_t>{0, most}(random);
}

/// Any character that a value may hold.
char random_character(std::mt19937& random) {
  const auto c = static_cast<char>(1 + up_to(254, random));
  return c == '\r' || c == '\n' ? ' ' : c;
}

std::string random_text(std::size_t most, std::mt19937& random) {
  std::string text(up_to(static_cast<std::uint32_t>(most), random), ' ');
  std::generate(text.begin(), text.end(), [&] { return random_character(random); });
  return text;
}

bytes random_bytes(std::size_t count, std::mt19937& random) {
  bytes all(count);
  std::generate(all.begin(), all.end(),
                [&] { return static_cast<std::uint8_t>(up_to(255, random)); });
  return all;
}

}  // namespace

section_value number_value(const listed_field& field, std::uint32_t number) {
  switch (field.kind) {
    case field_kind::u8:
      return {"0x" + hex(number, 2), {static_cast<std::uint8_t>(number)}};
    case field_kind::u16:
      return {"0x" + hex(number, 4), u16(static_cast<std::uint16_t>(number))};
    case field_kind::u32:
      return {"0x" + hex(number, 8), u32(number)};
    default:
      return {dotted(number), u32(number)};
  }
}

section_value text_value(const std::string& characters) {
  return {characters, text(characters)};
}

section_value binary_value(const bytes& content) {
  std::string text = "0x";
  for (auto each = content.rbegin(); each != content.rend(); ++each) {
    text += hex(*each, 2);
  }
  return {text, content};
}

section_value random_value(const listed_field& field, std::mt19937& random) {
  switch (field.kind) {
    case field_kind::u8:
      return number_value(field, up_to(0xFF, random));
    case field_kind::u16:
      return number_value(field, up_to(0xFFFF, random));
    case field_kind::text:
      return text_value(random_text(std::min(field.bytes - 1, longest_value), random));
    case field_kind::binary:
      return binary_value(random_bytes(field.bytes, random));
    default:
      return number_value(field, up_to(0xFFFFFFFF, random));
  }
}

std::vector<section_value> random_values(const listed_section& section, std::mt19937& random) {
  std::vector<section_value> values;
  for (const element& each : elements_of(section)) {
    values.push_back(random_value(*each.field, random));
  }
  return values;
}

void hold(scripted_service& service, const listed_section& section,
          const std::vector<section_value>& values) {
  const std::vector<element> elements = elements_of(section);
  for (std::size_t i = 0; i < elements.size(); ++i) {
    service.holds(section.name, elements[i].key, values[i].text);
  }
}

guarded_record::guarded_record(const listed_section& section, std::uint8_t fill)
    : all_(guard_bytes + section.size + guard_bytes, fill) {}

void guarded_record::put(const element& where, const section_value& value) {
  put(where, value.content);
}

void guarded_record::put(const element& where, const bytes& content) {
  std::memcpy(all_.data() + guard_bytes + where.offset, content.data(), content.size());
}

void PrintTo(const guarded_record& record, std::ostream* out) {
  for (std::size_t i = 0; i < record.all_.size(); ++i) {
    if (i % 32 == 0) {
      *out << "\n" << static_cast<long>(i) - static_cast<long>(guarded_record::guard_bytes) << ":";
    }
    *out << " " << hex(record.all_[i], 2);
  }
}
