#include "settings/export.h"

#include "settings/json_writer.h"
#include "settings/utf8_text.h"

namespace proreflax::settings {
namespace {

/// A value alone, on one line.
std::string json_of(const std::string& text) {
  json_writer json;
  if (is_utf8(text)) {
    json.text(text);
  } else {
    json.begin_object();
    json.member("bytes", bytes_in_pairs(text));
    json.end_object();
  }
  return json.take();
}

/// `{` and `}` around members, each on a line of its own.
class member_lines {
 public:
  explicit member_lines(std::size_t depth) : indent_(depth, ' ') {}

  void add(const std::string& name, const std::string& value) {
    text_ += text_.empty() ? "\n" : ",\n";
    text_ += indent_;
    text_ += json_of(name);
    text_ += ": ";
    text_ += value;
  }

  std::string object() const {
    return text_.empty() ? "{}" : "{" + text_ + "\n" + indent_.substr(1) + "}";
  }

 private:
  std::string indent_;
  std::string text_;
};

}  // namespace

std::vector<section_values> read_all_sections() {
  std::vector<section_values> all;
  for (const listed_section& each : all_sections()) {
    section_values values = read_values(each);
    if (values.code != CFC_ERR_NO_SECTION) {  // not every device has every section
      all.push_back(std::move(values));
      if (!all.back().ok()) {
        break;
      }
    }
  }
  return all;
}

std::string ini_of(const std::vector<section_values>& sections) {
  std::string text;
  for (const section_values& each : sections) {
    text += text.empty() ? "\n[" : "\n\n[";
    text += each.name();
    text += ']';
    for (const section_entry& entry : each.entries) {
      if (entry.text) {
        text += '\n';
        text += entry.key.name();
        text += '=';
        text += *entry.text;
      }
    }
  }
  return text;
}

std::string json_of(const std::vector<section_values>& sections) {
  member_lines all{1};
  for (const section_values& each : sections) {
    member_lines entries{2};
    for (const section_entry& entry : each.entries) {
      if (entry.text) {
        entries.add(entry.key.name(), json_of(*entry.text));
      }
    }
    all.add(each.name(), entries.object());
  }
  return all.object();
}

}  // namespace proreflax::settings
