// sections.listing, read: what the tests know of each section, without a look at the library.
#ifndef PROREFLAX_TESTS_ACCESSORS_LISTING_H
#define PROREFLAX_TESTS_ACCESSORS_LISTING_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

enum class field_kind { u8, u16, u32, ip, text, binary };

struct listed_field {
  std::size_t offset = 0;
  std::string key;  // "ip[%d]" for an array
  field_kind kind = field_kind::u32;
  std::size_t bytes = 0;  // of one element; a text's capacity
  std::size_t count = 1;
  bool is_array = false;

  /// The record's member: the key without its index.
  std::string member() const { return key.substr(0, key.find('[')); }
};

struct listed_section {
  std::string name;
  std::string record;  // "-" where there is none
  std::size_t size = 0;
  std::string getter;
  std::string setter;
  std::string arguments;  // empty: the record; "text"; "values"
  std::vector<listed_field> fields;

  bool has_record() const { return record != "-"; }
};

/// What one request moves: a scalar, or one element of an array.
struct element {
  const listed_field* field = nullptr;
  std::string key;         // "ip[3]"
  std::size_t offset = 0;  // in the record
  bool is_last = false;    // a scalar, or its array's last: the one whose result counts
};

/// All of them, in the file's order. Read once; throws when a line is not understood.
const std::vector<listed_section>& listed_sections();

/// The section that a getter reads; throws when none is listed.
const listed_section& section_of(std::string_view getter);

/// Its elements in visiting order.
std::vector<element> elements_of(const listed_section& section);

#endif
