#include "settings/section_values.h"

#include "settings/result_text.h"
#include "settings/service_state.h"

namespace proreflax::settings {
namespace {

void fail(key_texts& read, std::uint32_t code, std::string sentence) {
  read = {.texts = {}, .code = code, .sentence = std::move(sentence)};
}

/// A key that is not there leaves a hole; whatever else fails would fail for the next key too.
void read_with_lock(const std::string& section, const std::vector<std::string>& keys,
                    key_texts& read) {
  for (const std::string& key : keys) {
    answer given = carry_out(get_request{section, key}, lock_flag::held);
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

section_values read_values(const listed_section& section) {
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

}  // namespace proreflax::settings
