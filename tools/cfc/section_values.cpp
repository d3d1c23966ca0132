#include "tools/cfc/section_values.h"

#include "tools/cfc/result_text.h"
#include "tools/cfc/status.h"

namespace cfc {
namespace {

void fail(key_texts& read, std::uint32_t code, std::string sentence) {
  read = {.texts = {}, .code = code, .sentence = std::move(sentence)};
}

/// A key that is not there leaves a hole; whatever else fails would fail for the next key too.
void read_with_lock(const std::string& section, const std::vector<std::string>& keys,
                    key_texts& read) {
  for (const std::string& key : keys) {
    answer given = carry_out(get_command{section, key}, lock_flag::held);
    if (!given.ok() && given.code != CFC_ERR_NO_KEY) {
      fail(read, given.code, std::move(given.sentence));
      return;
    }
    read.texts.push_back(given.ok() ? std::optional{std::get<std::string>(*given.value)}
                                    : std::nullopt);
  }
}

}  // namespace

std::string section_entry::shown() const {
  if (!text) {
    return {};
  }
  const parsed_value value = read_stored(key.which, *text);
  return value.code == CFC_OK ? show_value(value.value) : *text;
}

key_texts read_texts(const std::string& section, const std::vector<std::string>& keys) {
  key_texts read;
  if (service_was_killed()) {
    fail(read, CFC_ERR_NO_SEM, std::string{killed_service});
    return read;
  }
  const access_lock lock;
  if (lock.held()) {
    read_with_lock(section, keys, read);
  } else {
    fail(read, lock.result(), result_sentence(lock.result()));
  }
  return read;
}

section_values read_values(const proreflax::listed_section& section) {
  const std::vector<known_key> keys = keys_of(section);
  std::vector<std::string> names;
  names.reserve(keys.size());
  for (const known_key& each : keys) {
    names.push_back(each.name());
  }
  key_texts read = read_texts(section.table.name(), names);
  section_values values{
      .section = &section, .entries = {}, .code = read.code, .sentence = read.sentence};
  for (std::size_t i = 0; i < read.texts.size(); ++i) {
    values.entries.push_back({keys[i], std::move(read.texts[i])});
  }
  return values;
}

std::vector<const proreflax::listed_section*> choose_sections(std::string_view verb,
                                                              const std::string& name,
                                                              output& out) {
  std::vector<const proreflax::listed_section*> chosen;
  for (const auto& each : proreflax::all_sections()) {
    if (name.empty() || name == each.table.name()) {
      chosen.push_back(&each);
    }
  }
  if (chosen.empty()) {
    complain_of_unknown(verb, name, out);
  }
  return chosen;
}

void complain_of_unknown(std::string_view verb, const std::string& name, output& out) {
  out.complain("cfc: " + std::string{verb} + ": section " + quoted(name) +
               " is not known here; cfc sections lists those that are");
}

void complain(std::string_view verb, const section_values& values, output& out) {
  out.complain("cfc: " + std::string{verb} + ": section " + quoted(values.name()) + ": " +
               in_words(values.code, values.sentence));
}

}  // namespace cfc
