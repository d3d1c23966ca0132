#include "tests/accessors/listing.h"

#include <array>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

constexpr auto path = PROREFLAX_SOURCE_DIR "/tests/accessors/sections.listing";

struct kind_name {
  std::string_view name;
  field_kind kind;
  std::size_t bytes;  // 0: told behind the name
};

constexpr std::array<kind_name, 6> kinds{{{"u8", field_kind::u8, 1},
                                          {"u16", field_kind::u16, 2},
                                          {"u32", field_kind::u32, 4},
                                          {"ip", field_kind::ip, 4},
                                          {"text", field_kind::text, 0},
                                          {"binary", field_kind::binary, 0}}};

const kind_name& kind_called(std::string_view name) {
  for (const kind_name& each : kinds) {
    if (each.name == name) {
      return each;
    }
  }
  throw std::runtime_error("no such kind: " + std::string{name});
}

[[noreturn]] void refuse(const std::istringstream& line) {
  throw std::runtime_error("sections.listing: " + line.str());
}

void expect_understood(const std::istringstream& line) {
  if (line.fail()) {
    refuse(line);
  }
}

void expect_end(std::istringstream& line) {
  expect_understood(line);
  if (std::string rest; line >> rest) {
    refuse(line);
  }
}

listed_field read_field(std::istringstream& line) {
  listed_field field;
  std::string word;
  line >> field.offset >> field.key >> word;
  field.is_array = field.key.find('%') != std::string::npos;
  if (field.is_array) {
    field.count = std::stoul(word);
    line >> word >> word;
  }
  const kind_name& kind = kind_called(word);
  field.kind = kind.kind;
  field.bytes = kind.bytes;
  if (field.bytes == 0) {
    line >> field.bytes;
  }
  return field;
}

listed_section read_section(std::istringstream& line) {
  listed_section section;
  line >> section.name >> section.record >> section.size >> section.getter >> section.setter;
  expect_understood(line);
  line >> section.arguments;
  line.clear();
  return section;
}

std::vector<listed_section> read_listing() {
  std::ifstream file{path};
  std::vector<listed_section> sections;
  for (std::string text; std::getline(file, text);) {
    if (text.empty() || text.front() == '#') {
      continue;
    }
    std::istringstream line{text};
    if (text.front() == ' ') {
      sections.back().fields.push_back(read_field(line));
    } else {
      sections.push_back(read_section(line));
    }
    expect_end(line);
  }
  return sections;
}

std::string key_at(const listed_field& field, std::size_t index) {
  return field.is_array ? field.member() + "[" + std::to_string(index) + "]" : field.key;
}

}  // namespace

const std::vector<listed_section>& listed_sections() {
  static const std::vector<listed_section> sections = read_listing();
  return sections;
}

const listed_section& section_of(std::string_view getter) {
  for (const listed_section& section : listed_sections()) {
    if (section.getter == getter) {
      return section;
    }
  }
  throw std::runtime_error("not listed: " + std::string{getter});
}

std::vector<element> elements_of(const listed_section& section) {
  std::vector<element> elements;
  for (const listed_field& field : section.fields) {
    for (std::size_t i = 0; i < field.count; ++i) {
      elements.push_back(
          {&field, key_at(field, i), field.offset + i * field.bytes, i + 1 == field.count});
    }
  }
  return elements;
}
