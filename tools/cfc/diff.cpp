// Every section of the factory file is compared, and every known one: what the protocol cannot
// list, keys that applications made in sections of their own, is not seen. Two texts of a known key
// that say the same, such as "0" and "0x00000000", do not differ.
#include "tools/cfc/diff.h"

#include <algorithm>
#include <vector>

#include "tools/cfc/factory_file.h"
#include "tools/cfc/ini_entries.h"
#include "tools/cfc/result_text.h"
#include "tools/cfc/section_values.h"

namespace cfc {
namespace {

constexpr exit_status differs = exit_status::failed;
constexpr exit_status trouble = exit_status::wrong_usage;

struct compared_entry {
  std::string key;
  std::optional<std::string> factory;  // nothing for a key that is not in the file
};

struct compared_section {
  std::string name;
  std::vector<compared_entry> entries;

  compared_entry& entry(const std::string& key) {
    const auto found = std::ranges::find(entries, key, &compared_entry::key);
    return found == entries.end() ? entries.emplace_back(compared_entry{.key = key, .factory = {}})
                                  : *found;
  }
};

compared_section& section_of(std::vector<compared_section>& sections, const std::string& name) {
  const auto found = std::ranges::find(sections, name, &compared_section::name);
  return found == sections.end()
             ? sections.emplace_back(compared_section{.name = name, .entries = {}})
             : *found;
}

/// The factory's entries, and the keys that the tables know besides.
std::vector<compared_section> sections_to_compare(const std::vector<ini_entry>& factory) {
  std::vector<compared_section> sections;
  for (const ini_entry& each : factory) {
    section_of(sections, each.section).entry(each.key).factory = each.value;
  }
  for (const auto& known : proreflax::all_sections()) {
    compared_section& section = section_of(sections, known.table.name());
    for (const known_key& key : keys_of(known)) {
      section.entry(key.name());
    }
  }
  return sections;
}

class comparison {
 public:
  comparison(bool secrets, output& out) : secrets_{secrets}, out_{out} {}

  /// False when the section cannot be read. One that the device does not have holds nothing.
  bool compare(const compared_section& section) {
    std::vector<std::string> keys;
    for (const compared_entry& each : section.entries) {
      keys.push_back(each.key);
    }
    key_texts now = read_texts(section.name, keys);
    if (now.code != CFC_OK && now.code != CFC_ERR_NO_SECTION) {
      out_.complain("cfc: diff: section " + quoted(section.name) + ": " +
                    in_words(now.code, now.sentence));
      return false;
    }
    now.texts.resize(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
      compare(section.name, section.entries[i], now.texts[i]);
    }
    return true;
  }

  bool found_any() const { return !last_section_.empty(); }

 private:
  void compare(const std::string& section, const compared_entry& entry,
               const std::optional<std::string>& now) {
    const auto known = find_known_key(section, entry.key);
    if (entry.factory == now || (known && shown(*known, entry.factory) == shown(*known, now))) {
      return;
    }
    if (section != last_section_) {
      out_.result("[" + printable(section) + "]");
      last_section_ = section;
    }
    const bool hidden = !secrets_ && known && is_secret(known->which);
    show('-', entry.key, known, entry.factory, hidden);
    show('+', entry.key, known, now, hidden);
  }

  static std::optional<std::string> shown(const known_key& key,
                                          const std::optional<std::string>& text) {
    return text ? std::optional{section_entry{.key = key, .text = text}.shown()} : std::nullopt;
  }

  void show(char sign, const std::string& key, const std::optional<known_key>& known,
            const std::optional<std::string>& text, bool hidden) {
    if (text) {
      const std::string value = known ? *shown(*known, text) : *text;
      out_.result(sign + printable(key) + "=" +
                  (hidden && !text->empty() ? "(hidden)" : printable(value)));
    }
  }

  bool secrets_;
  output& out_;
  std::string last_section_;
};

}  // namespace

exit_status run(const diff_command& command, output& out) {
  std::string failure;
  const ini_entries factory = read_ini(read_lines(factory_file, failure));
  if (!failure.empty() || !factory.faults.empty()) {
    out.complain("cfc: diff: " + std::string{factory_file} + ": " +
                 (failure.empty() ? "breaks the rules that cfc check tells" : failure));
    return trouble;
  }
  comparison differences{command.secrets, out};
  for (const compared_section& each : sections_to_compare(factory.entries)) {
    if (!differences.compare(each)) {
      return trouble;
    }
  }
  return differences.found_any() ? differs : exit_status::done;
}

}  // namespace cfc
