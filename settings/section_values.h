// What the store holds in a section: one exchange a key, all of them under one lock.
#ifndef PROREFLAX_SETTINGS_SECTION_VALUES_H
#define PROREFLAX_SETTINGS_SECTION_VALUES_H

#include <optional>
#include <string>
#include <vector>

#include "settings/known_sections.h"
#include "settings/request.h"

namespace proreflax::settings {

struct section_entry {
  known_key key;
  std::optional<std::string> text;  // as stored; nothing for a key that is not there

  /// What the text says, as a person reads it: the text itself when it breaks its key's rule.
  std::string shown() const;
};

struct section_values {
  const listed_section* section = nullptr;
  std::vector<section_entry> entries;  // none when the reading failed
  std::uint32_t code = CFC_OK;         // of the exchange that ended the reading
  std::string sentence;

  bool ok() const { return code == CFC_OK; }
  std::string name() const { return section->table.name(); }
};

/// What some keys of any section hold.
struct key_texts {
  std::vector<std::optional<std::string>> texts;  // nothing for a key that is not there
  std::uint32_t code = CFC_OK;                    // of the exchange that ended the reading
  std::string sentence;
};

key_texts read_texts(const std::string& section, const std::vector<std::string>& keys);

section_values read_values(const listed_section& section);

}  // namespace proreflax::settings

#endif
