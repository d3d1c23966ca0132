#include "settings/comparison.h"

#include <algorithm>

#include "settings/section_values.h"

namespace proreflax::settings {
namespace {

compared_section& section_of(std::vector<compared_section>& sections, const std::string& name) {
  const auto found = std::ranges::find(sections, name, &compared_section::name);
  return found == sections.end()
             ? sections.emplace_back(compared_section{.name = name, .entries = {}})
             : *found;
}

compared_entry& entry_of(compared_section& section, const std::string& key) {
  const auto found = std::ranges::find(section.entries, key, &compared_entry::key);
  return found == section.entries.end()
             ? section.entries.emplace_back(compared_entry{.key = key, .expected = {}})
             : *found;
}

std::optional<std::string> shown(const known_key& key, const std::optional<std::string>& text) {
  return text ? std::optional{section_entry{.key = key, .text = text}.shown()} : std::nullopt;
}

/// Nothing where both say the same.
std::optional<difference> compare(const std::string& section, const compared_entry& entry,
                                  const std::optional<std::string>& present) {
  if (entry.expected == present) {
    return std::nullopt;
  }
  const auto known = find_known_key(section, entry.key);
  if (!known) {
    return difference{.key = entry.key, .expected = entry.expected, .present = present};
  }
  difference found{.key = entry.key,
                   .expected = shown(*known, entry.expected),
                   .present = shown(*known, present),
                   .is_secret = is_secret(known->which)};
  return found.expected == found.present ? std::nullopt : std::optional{std::move(found)};
}

}  // namespace

std::vector<compared_section> sections_to_compare(const std::vector<ini_entry>& entries) {
  std::vector<compared_section> sections;
  for (const ini_entry& each : entries) {
    entry_of(section_of(sections, each.section), each.key).expected = each.value;
  }
  for (const listed_section& known : all_sections()) {
    compared_section& section = section_of(sections, known.table.name());
    for (const known_key& key : keys_of(known)) {
      entry_of(section, key.name());
    }
  }
  return sections;
}

section_differences compare_with_store(const compared_section& section) {
  std::vector<std::string> keys;
  for (const compared_entry& each : section.entries) {
    keys.push_back(each.key);
  }
  key_texts present = read_texts(section.name, keys);
  if (present.code != CFC_OK && present.code != CFC_ERR_NO_SECTION) {
    return {.entries = {}, .code = present.code, .sentence = std::move(present.sentence)};
  }
  present.texts.resize(keys.size());
  section_differences differences;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (auto found = compare(section.name, section.entries[i], present.texts[i])) {
      differences.entries.push_back(std::move(*found));
    }
  }
  return differences;
}

}  // namespace proreflax::settings
