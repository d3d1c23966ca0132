// The sections and keys that the device's tables know, and what their values must be.
//
// All of it is read from the tables that the library's own getters and setters walk
// (accessors/section_list.h), and stored texts are read with the library's own readers: what passes
// here is what a getter takes.
#ifndef PROREFLAX_SETTINGS_KNOWN_SECTIONS_H
#define PROREFLAX_SETTINGS_KNOWN_SECTIONS_H

#include <optional>
#include <string>
#include <vector>

#include "accessors/section_list.h"
#include "settings/typed_value.h"

namespace proreflax::settings {

/// A key of a section: a field, or an element of an array.
struct known_key {
  field which;
  unsigned index = 0;

  std::string name() const;
};

/// Null for a section that has no table.
const listed_section* find_known_section(const std::string& name);

/// All keys, in the order of the table.
std::vector<known_key> keys_of(const listed_section& section);

/// Nothing for a section or a key that no table knows.
std::optional<known_key> find_known_key(const std::string& section, const std::string& key);

value_kind kind_of(const field& which);

/// What a value is, with its capacity: "u32", "string, at most 31 characters", "binary, 6 bytes".
std::string kind_in_words(const field& which);

/// Whether a value is told only to those who ask for secrets.
bool is_secret(const field& which);

/// The text under which the store keeps a value.
std::string stored_text(const typed_value& value);

/// A stored text as the getter of its section would read it, or the code and the rule it breaks.
parsed_value read_stored(const field& which, const std::string& text);

}  // namespace proreflax::settings

#endif
