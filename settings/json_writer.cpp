#include "settings/json_writer.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include "settings/utf8_text.h"

namespace proreflax::settings {

struct json_writer::sink {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer{buffer};

  static rapidjson::SizeType size_of(std::string_view text) {
    return static_cast<rapidjson::SizeType>(text.size());
  }
};

namespace {

struct value_writer {
  json_writer& json;

  void operator()(const std::string& text) const {
    json.member("value", text);
    if (!is_utf8(text)) {
      json.member("bytes", bytes_in_pairs(text));
    }
  }
  void operator()(std::uint32_t number) const { json.number_member("value", number); }
  void operator()(ipv4_address address) const { json.member("value", show_value(address)); }
  void operator()(const binary_data& bytes) const { json.member("value", show_value(bytes)); }
};

}  // namespace

json_writer::json_writer() : sink_{std::make_unique<sink>()} {}
json_writer::~json_writer() = default;

void json_writer::begin_object() {
  sink_->writer.StartObject();
}

void json_writer::end_object() {
  sink_->writer.EndObject();
}

void json_writer::begin_array() {
  sink_->writer.StartArray();
}

void json_writer::end_array() {
  sink_->writer.EndArray();
}

json_writer& json_writer::key(std::string_view name) {
  const std::string valid = utf8_of(name);
  sink_->writer.Key(valid.c_str(), sink::size_of(valid));
  return *this;
}

void json_writer::text(std::string_view value) {
  const std::string valid = utf8_of(value);
  sink_->writer.String(valid.c_str(), sink::size_of(valid));
}

void json_writer::number(std::int64_t value) {
  sink_->writer.Int64(value);
}

void json_writer::boolean(bool value) {
  sink_->writer.Bool(value);
}

void json_writer::null() {
  sink_->writer.Null();
}

void json_writer::value_member(const typed_value& value) {
  std::visit(value_writer{*this}, value);
}

std::string json_writer::take() {
  return {sink_->buffer.GetString(), sink_->buffer.GetSize()};
}

std::string bytes_in_pairs(std::string_view bytes) {
  return show_value(binary_data{bytes.begin(), bytes.end()});
}

}  // namespace proreflax::settings
