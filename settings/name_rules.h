// Which rule a section name, a key or a value breaks, in words.
//
// What is refused is decided by transport/names.h, the rules that the library itself obeys; here
// they only get their sentences, so that a refusal names the rule and not just a number.
#ifndef PROREFLAX_SETTINGS_NAME_RULES_H
#define PROREFLAX_SETTINGS_NAME_RULES_H

#include <optional>
#include <string>

namespace proreflax::settings {

/// Nothing for a name that keeps the rules, else the sentence.
std::optional<std::string> broken_section_rule(const std::string& section);
std::optional<std::string> broken_key_rule(const std::string& key);
std::optional<std::string> broken_value_rule(const std::string& value);

/// A one-character key takes no empty value: its saved line could not be read back.
std::optional<std::string> broken_entry_rule(const std::string& key, const std::string& value);

}  // namespace proreflax::settings

#endif
