#include "tools/cfc/sections/show.h"

#include <algorithm>
#include <array>
#include <utility>

#include "settings/json_writer.h"
#include "settings/message_text.h"
#include "tools/cfc/sections/chosen_sections.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

using proreflax::field;
using proreflax::listed_section;

enum class content { value, empty, missing };

bool holds_zeros_alone(const typed_value& value) {
  const auto* const bytes = std::get_if<binary_data>(&value);
  return bytes != nullptr && std::ranges::all_of(*bytes, [](unsigned byte) { return byte == 0; });
}

content content_of(const section_entry& entry) {
  if (!entry.text) {
    return content::missing;
  }
  const bool is_empty =
      entry.text->empty() || holds_zeros_alone(read_stored(entry.key.which, *entry.text).value);
  return is_empty ? content::empty : content::value;
}

using cells = std::array<std::string, 3>;

std::string value_cell(const section_entry& entry, bool secrets) {
  if (!entry.text) {
    return "(not set)";
  }
  if (!secrets && is_secret(entry.key.which) && !entry.text->empty()) {
    return "(hidden)";
  }
  return printable(entry.shown());
}

cells row_of(const section_entry& entry, bool secrets) {
  const bool fits = !entry.text || read_stored(entry.key.which, *entry.text).code == CFC_OK;
  return {entry.key.name(), value_cell(entry, secrets),
          std::string{name_of(kind_of(entry.key.which))} + (fits ? "" : " (its value is none)")};
}

cells folded_row(const section_entry& first, const section_entry& last, content what) {
  return {std::string{first.key.which.name} + "[" + std::to_string(first.key.index) + ".." +
              std::to_string(last.key.index) + "]",
          what == content::empty ? "empty" : "(not set)",
          std::string{name_of(kind_of(first.key.which))}};
}

std::vector<cells> rows_of(const std::vector<section_entry>& entries, bool secrets) {
  std::vector<cells> rows;
  for (auto first = entries.begin(); first != entries.end();) {
    const content what = content_of(*first);
    const auto end = std::find_if(first, entries.end(), [&](const section_entry& each) {
      return what == content::value || each.key.which.name != first->key.which.name ||
             content_of(each) != what;
    });
    if (end - first > 1) {
      rows.push_back(folded_row(*first, *(end - 1), what));
      first = end;
    } else {
      rows.push_back(row_of(*first, secrets));
      ++first;
    }
  }
  return rows;
}

/// As wide as the widest, but a few long values do not push the next column off the screen.
std::size_t width_of(const std::vector<cells>& rows, std::size_t column) {
  constexpr std::size_t most = 40;
  std::size_t width = 0;
  for (const cells& each : rows) {
    width = std::max(width, each[column].size());
  }
  return std::min(width, most);
}

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(text.size(), width), ' ');
  return text;
}

void describe(const listed_section& section, output& out) {
  out.result(section.table.name());
  for (const field& each : section.table) {
    std::string name = each.name;
    if (each.is_array()) {
      name += "[0.." + std::to_string(each.count - 1) + "]";
    }
    out.result("  " + padded(name, 24) + "  " + kind_in_words(each));
  }
}

void write_json(json_writer& json, const section_entry& entry, bool secrets) {
  json.begin_object();
  json.member("key", entry.key.name());
  json.member("type", name_of(kind_of(entry.key.which)));
  if (!entry.text) {
    json.flag_member("set", false);
  } else if (!secrets && is_secret(entry.key.which)) {
    json.key("value").null();
    json.flag_member("hidden", true);
  } else if (const parsed_value value = read_stored(entry.key.which, *entry.text);
             value.code == CFC_OK) {
    json.value_member(value.value);
  } else {
    json.value_member(*entry.text);
    json.member("broken", value.sentence);
  }
  json.end_object();
}

void write_json(json_writer& json, const field& which) {
  json.begin_object();
  json.member("name", which.name);
  json.member("type", name_of(kind_of(which)));
  if (which.is_array()) {
    json.number_member("count", which.count);
  }
  if (kind_of(which) == value_kind::string) {
    json.number_member("most_characters", which.capacity - 1);
  } else if (kind_of(which) == value_kind::binary) {
    json.number_member("bytes", which.capacity);
  }
  json.flag_member("secret", is_secret(which));
  json.end_object();
}

}  // namespace

std::string json_of(const section_values& values, bool secrets) {
  json_writer json;
  json.begin_object();
  json.member("section", values.name());
  json.key("entries").begin_array();
  for (const section_entry& each : values.entries) {
    write_json(json, each, secrets);
  }
  json.end_array();
  json.end_object();
  return json.take();
}

std::string json_of(const listed_section& section) {
  json_writer json;
  json.begin_object();
  json.member("section", section.table.name());
  json.key("fields").begin_array();
  for (const field& each : section.table) {
    write_json(json, each);
  }
  json.end_array();
  json.end_object();
  return json.take();
}

std::vector<std::string> table_of(const section_values& values, bool secrets) {
  const std::vector<cells> rows = rows_of(values.entries, secrets);
  std::vector<std::string> lines{"[" + values.name() + "]"};
  for (const cells& each : rows) {
    lines.push_back(padded(each[0], width_of(rows, 0)) + "  " + padded(each[1], width_of(rows, 1)) +
                    "  " + each[2]);
  }
  return lines;
}

exit_status run(const show_command& command, output& out) {
  const auto sections = choose_sections("show", command.section, out);
  exit_status status = sections.empty() ? exit_status::nothing_there : exit_status::done;
  bool first = true;
  for (const listed_section* each : sections) {
    const section_values values = read_values(*each);
    if (!values.ok()) {
      complain("show", values, out);
      const exit_status why = status_of(values.code);
      status = status == exit_status::done ? why : status;
      if (why == exit_status::failed) {
        break;  // no other section would fare better
      }
    } else if (command.json) {
      out.result(json_of(values, command.secrets));
    } else {
      if (!std::exchange(first, false)) {
        out.result("");
      }
      for (const std::string& line : table_of(values, command.secrets)) {
        out.result(line);
      }
    }
  }
  return status;
}

exit_status run(const sections_command& command, output& out) {
  const auto sections = choose_sections("sections", command.section, out);
  for (const listed_section* each : sections) {
    if (command.json) {
      out.result(json_of(*each));
    } else {
      describe(*each, out);
    }
  }
  return sections.empty() ? exit_status::nothing_there : exit_status::done;
}

}  // namespace cfc
