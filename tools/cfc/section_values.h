// What the store holds in a section: one exchange a key, all of them under one lock.
#ifndef PROREFLAX_TOOLS_CFC_SECTION_VALUES_H
#define PROREFLAX_TOOLS_CFC_SECTION_VALUES_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/cfc/known_sections.h"
#include "tools/cfc/output.h"
#include "tools/cfc/value_verbs.h"

namespace cfc {

struct section_entry {
  known_key key;
  std::optional<std::string> text;  // as stored; nothing for a key that is not there

  /// What the text says, as a person reads it: the text itself when it breaks its key's rule.
  std::string shown() const;
};

struct section_values {
  const proreflax::listed_section* section = nullptr;
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

section_values read_values(const proreflax::listed_section& section);

/// The section of this name, or all of them for an empty one; complains about an unknown name, and
/// gives nothing.
std::vector<const proreflax::listed_section*> choose_sections(std::string_view verb,
                                                              const std::string& name, output& out);

/// Says on standard error that no section of this name is known.
void complain_of_unknown(std::string_view verb, const std::string& name, output& out);

/// Says on standard error why a section could not be read.
void complain(std::string_view verb, const section_values& values, output& out);

}  // namespace cfc

#endif
