// The only file that sees the JSON library: it is slow to compile.
#include "tools/cfc/json_text.h"

#include <nlohmann/json.hpp>

#include "firmware/image_header.h"
#include "tools/cfc/image_names.h"
#include "tools/cfc/result_text.h"

namespace cfc {
namespace {

using json = nlohmann::ordered_json;

std::string line_of(const json& object) {
  return object.dump(-1, ' ', false, json::error_handler_t::replace);
}

bool is_utf8(const std::string& text) {
  try {
    return !json(text).dump().empty();
  } catch (const json::type_error&) {
    return false;
  }
}

std::string bytes_of(const std::string& text) {
  return show_value(binary_data{text.begin(), text.end()});
}

struct value_writer {
  json& object;

  void operator()(const std::string& text) const {
    object["value"] = text;
    if (!is_utf8(text)) {
      object["bytes"] = bytes_of(text);
    }
  }
  void operator()(std::uint32_t number) const { object["value"] = number; }
  void operator()(ipv4_address address) const { object["value"] = show_value(address); }
  void operator()(const binary_data& bytes) const { object["value"] = show_value(bytes); }
};

void add_value(json& object, const std::optional<typed_value>& value) {
  if (value) {
    std::visit(value_writer{object}, *value);
  }
}

void add_code(json& object, std::uint32_t code, const std::string& sentence) {
  object["code"] = code;
  if (const std::string_view name = result_name(code); !name.empty()) {
    object["name"] = name;
  }
  if (code != CFC_OK) {
    object["message"] = sentence;
  }
}

struct command_writer {
  json& object;

  void operator()(const get_command& get) const {
    object["section"] = get.section;
    object["key"] = get.key;
    object["type"] = name_of(get.kind);
  }
  void operator()(const set_command& set) const {
    object["section"] = set.section;
    object["key"] = set.key;
    object["type"] = name_of(set.kind);
  }
  void operator()(const register_command& application) const {
    object["section"] = application.name;
  }
  void operator()(flush_command /*flush*/) const {}
  void operator()(defaults_command /*defaults*/) const {}
};

void add_command(json& object, const batch_line& line) {
  if (line.command) {
    object["command"] = verb_of(*line.command);
    std::visit(command_writer{object}, *line.command);
  }
}

bool has_code(const batch_result& result) {
  return result.state != line_state::skipped && result.line.fault.empty();
}

json object_of(const service_status& service) {
  if (service.state != service_status::life::alive) {
    return {{"alive", service.state == service_status::life::dead ? json(false) : json(nullptr)}};
  }
  return {{"alive", true}, {"pid", service.process}, {"name", service.name}};
}

json object_of(const lock_status& lock) {
  json object{{"present", lock.present}};
  if (!lock.present || lock.error != 0) {
    return object;
  }
  object["value"] = lock.value;
  object["held"] = lock.value == 0;
  if (lock.value == 0) {
    object["holder"] = {{"pid", lock.holder}, {"name", lock.holder_name}};
  }
  object["waiting"] = lock.waiting;
  return object;
}

json object_of(const queue_status& queue) {
  json object{{"present", queue.present}};
  if (queue.present && queue.error == 0) {
    object["messages"] = queue.messages;
    object["bytes"] = queue.bytes;
  }
  return object;
}

json object_of(const ini_fault& fault) {
  json object;
  if (fault.line != 0) {
    object["line"] = fault.line;
  }
  object["rule"] = fault.rule;
  object["message"] = fault.sentence;
  return object;
}

json text_or_null(const std::string& text) {
  return text.empty() ? json(nullptr) : json(text);
}

json object_of(const wireless_counts& counts) {
  const auto number = [](const std::optional<std::uint32_t>& counter) {
    return counter ? json(*counter) : json(nullptr);
  };
  return {{"unicast", number(counts.unicast)},
          {"multicast", number(counts.multicast)},
          {"dropped", number(counts.dropped)},
          {"failed", number(counts.failed)}};
}

json object_of(const image_checksum& checksum) {
  if (!checksum.found) {
    return {{"expected", checksum.expected}, {"found", nullptr}, {"right", nullptr}};
  }
  return {
      {"expected", checksum.expected}, {"found", *checksum.found}, {"right", checksum.is_right()}};
}

json object_of(std::uint8_t number, std::string_view name) {
  return {{"number", number}, {"name", name}};
}

void add_header(json& object, const image_view& image) {
  using word = proreflax::header_word;
  using byte = proreflax::header_byte;
  const auto field = [&](auto which) { return proreflax::header_field(image.bytes, which); };
  object["name"] = image.name();
  if (!is_utf8(image.name())) {
    object["name_bytes"] = bytes_of(image.name());
  }
  object["magic"] = field(word::magic);
  object["time"] = field(word::time_stamp);
  object["data_size"] = field(word::data_size);
  object["load_address"] = field(word::load_address);
  object["entry_point"] = field(word::entry_point);
  const std::uint8_t system = field(byte::operating_system);
  object["system"] = object_of(system, operating_system_name(system));
  const std::uint8_t processor = field(byte::architecture);
  object["processor"] = object_of(processor, architecture_name(processor));
  object["type"] = object_of(field(byte::type), image_type_name(field(byte::type)));
  const std::uint8_t compression = field(byte::compression);
  object["compression"] = object_of(compression, compression_name(compression));
  object["header_crc"] = object_of(image.header_checksum());
  object["data_crc"] = object_of(image.data_checksum());
}

/// What has no header has a size alone.
json object_of(const image_view& image) {
  json object;
  if (!image.place.empty()) {
    object["place"] = image.place;
  }
  object["size"] = image.size;
  if (image.has_header()) {
    add_header(object, image);
  }
  for (const image_view& part : image.parts) {
    object["parts"].push_back(object_of(part));
  }
  return object;
}

json object_of(const section_entry& entry, bool secrets) {
  json object{{"key", entry.key.name()}, {"type", name_of(kind_of(entry.key.which))}};
  if (!entry.text) {
    object["set"] = false;
  } else if (!secrets && is_secret(entry.key.which)) {
    object["value"] = nullptr;
    object["hidden"] = true;
  } else if (const parsed_value value = read_stored(entry.key.which, *entry.text);
             value.code == CFC_OK) {
    add_value(object, value.value);
  } else {
    add_value(object, *entry.text);
    object["broken"] = value.sentence;
  }
  return object;
}

json object_of(const proreflax::field& which) {
  json object{{"name", which.name}, {"type", name_of(kind_of(which))}};
  if (which.is_array()) {
    object["count"] = which.count;
  }
  if (kind_of(which) == value_kind::string) {
    object["most_characters"] = which.capacity - 1;
  } else if (kind_of(which) == value_kind::binary) {
    object["bytes"] = which.capacity;
  }
  object["secret"] = is_secret(which);
  return object;
}

/// A text that is no UTF-8 as an object with its bytes, so that it comes back as it was.
json exported_text(const std::string& text) {
  return is_utf8(text) ? json(text) : json{{"bytes", bytes_of(text)}};
}

/// Pair by pair: a value may have more bytes than the type binary takes.
std::optional<std::string> text_of_bytes(const std::string& pairs) {
  constexpr std::size_t pair = 3;  // with its colon
  std::string text;
  for (std::size_t at = 0; at < pairs.size(); at += pair) {
    const parsed_value byte = parse_value(value_kind::binary, pairs.substr(at, 2));
    const bool joined = at + 2 >= pairs.size() || pairs[at + 2] == ':';
    if (byte.code != CFC_OK || !joined) {
      return std::nullopt;
    }
    text += static_cast<char>(std::get<binary_data>(byte.value).front());
  }
  return text;
}

std::optional<std::string> imported_text(const json& value) {
  if (value.is_string()) {
    return value.get<std::string>();
  }
  if (value.is_number_integer()) {
    return value.dump();
  }
  const bool has_bytes = value.is_object() && value.size() == 1 && value.contains("bytes") &&
                         value["bytes"].is_string();
  return has_bytes ? text_of_bytes(value["bytes"].get<std::string>()) : std::nullopt;
}

json parsed_object(const std::string& text, std::string& failure) {
  try {
    json object = json::parse(text);
    if (object.is_object()) {
      return object;
    }
    failure = "this is no JSON object";
  } catch (const json::parse_error& error) {
    failure = printable(error.what());
  }
  return json::object();
}

}  // namespace

std::string json_of(const std::string& file, const image_view& image,
                    const std::optional<image_fault>& fault) {
  json object{{"file", file}, {"image", object_of(image)}};
  if (fault) {
    add_code(object, fault->code, fault->sentence());
  } else {
    add_code(object, CFC_OK, {});
  }
  if (fault && !fault->image->place.empty()) {
    object["place"] = fault->image->place;
  }
  return line_of(object);
}

std::string json_of(const section_values& values, bool secrets) {
  json object{{"section", values.name()}, {"entries", json::array()}};
  for (const section_entry& each : values.entries) {
    object["entries"].push_back(object_of(each, secrets));
  }
  return line_of(object);
}

std::string json_of(const proreflax::listed_section& section) {
  json object{{"section", section.table.name()}, {"fields", json::array()}};
  for (const proreflax::field& each : section.table) {
    object["fields"].push_back(object_of(each));
  }
  return line_of(object);
}

std::string json_of(const get_command& get, const answer& result) {
  json object;
  command_writer{object}(get);
  add_value(object, result.value);
  add_code(object, result.code, result.sentence);
  return line_of(object);
}

std::string json_of(const batch_result& result) {
  json object{{"line", result.line.number}};
  add_command(object, result.line);
  object["state"] = name_of(result.state);
  object["status"] = static_cast<int>(result.status);
  add_value(object, result.given.value);
  if (has_code(result)) {
    add_code(object, result.given.code, result.given.sentence);
  } else if (!result.line.fault.empty()) {
    object["message"] = result.line.fault;
  }
  if (!result.left_behind.empty()) {
    object["left_behind"] = result.left_behind;
  }
  return line_of(object);
}

std::string json_of(const check_report& report) {
  json object{{"file", report.file}, {"accepted", report.accepted()}, {"faults", json::array()}};
  for (const ini_fault& fault : report.faults) {
    object["faults"].push_back(object_of(fault));
  }
  if (!report.failure.empty()) {
    object["failure"] = report.failure;
  }
  return line_of(object);
}

std::string json_of(const status_report& report) {
  json object{{"service", object_of(report.service)},
              {"lock", object_of(report.lock)},
              {"queue", object_of(report.queue)}};
  add_code(object, report.code(), report.sentence());
  return line_of(object);
}

std::string json_of(const wireless_status_report& report) {
  return line_of({{"interface", text_or_null(report.interface)},
                  {"mac", text_or_null(report.mac_address)},
                  {"received", object_of(report.received)},
                  {"sent", object_of(report.sent)}});
}

std::string json_of(const wireless_event_report& report) {
  json object{{"announced", report.announced}, {"events", json::array()}};
  for (const wireless_event& each : report.events) {
    object["events"].push_back(
        {{"number", each.number}, {"mac", each.mac}, {"message", each.message}});
  }
  return line_of(object);
}

std::string json_of(const wireless_station_report& report) {
  json object{{"stations", json::array()}};
  for (const wireless_station& each : report.stations) {
    object["stations"].push_back({{"number", each.number}, {"mac", each.mac}});
  }
  return line_of(object);
}

std::string json_of(const wireless_channel_report& report) {
  return line_of({{"region", report.region}, {"first", report.first}, {"count", report.count}});
}

std::string json_of_time(std::int32_t offset_seconds, const std::string& local_time) {
  return line_of(json{{"offset_seconds", offset_seconds}, {"local_time", local_time}});
}

std::string json_of_export(const std::vector<section_values>& sections) {
  json object = json::object();
  for (const section_values& each : sections) {
    json& entries = object[each.name()] = json::object();
    for (const section_entry& entry : each.entries) {
      if (entry.text) {
        entries[entry.key.name()] = exported_text(*entry.text);
      }
    }
  }
  return object.dump(1, ' ', false, json::error_handler_t::replace);
}

std::vector<set_command> read_export(const std::string& text, std::string& failure) {
  std::vector<set_command> sets;
  const json object = parsed_object(text, failure);
  for (const auto& [section, entries] : object.items()) {
    if (!entries.is_object()) {
      failure = "section " + cfc::quoted(section) + " is no object of keys and values";
      return {};
    }
    for (const auto& [key, value] : entries.items()) {
      const auto imported = imported_text(value);
      if (!imported) {
        failure = "section " + cfc::quoted(section) + " key " + cfc::quoted(key) +
                  ": the value is neither a text nor a whole number";
        return {};
      }
      sets.push_back({.section = section, .key = key, .value = *imported});
    }
  }
  return sets;
}

}  // namespace cfc
