// What differs between the entries of a configuration text and what the store holds.
//
// Every section of the text is compared, and every known one: what the protocol cannot list, keys
// that applications made in sections of their own, is not seen. Two texts of a known key that mean
// the same, such as "0" and "0x00000000", do not differ.
#ifndef PROREFLAX_SETTINGS_COMPARISON_H
#define PROREFLAX_SETTINGS_COMPARISON_H

#include <proreflax/result.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "settings/ini_entries.h"
#include "settings/known_sections.h"

namespace proreflax::settings {

struct compared_entry {
  std::string key;
  std::optional<std::string> expected;  // nothing for a key that is not in the text
};

struct compared_section {
  std::string name;
  std::vector<compared_entry> entries;
};

/// The entries of a text, and the keys that the tables know besides.
std::vector<compared_section> sections_to_compare(const std::vector<ini_entry>& entries);

/// Values as a person reads them; nothing for a key that is not there.
struct difference {
  std::string key;
  std::optional<std::string> expected;
  std::optional<std::string> present;
  bool is_secret = false;
};

struct section_differences {
  std::vector<difference> entries;
  std::uint32_t code = CFC_OK;  // of the exchange that ended the reading
  std::string sentence;
};

/// A section that the device does not have holds nothing.
section_differences compare_with_store(const compared_section& section);

}  // namespace proreflax::settings

#endif
