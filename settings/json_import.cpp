// The text is read by events, without a tree of it in memory. The reader keeps its own stack of
// what is open: no nesting of the text can exhaust that of the program.
#include "settings/json_import.h"

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <algorithm>

#include "settings/message_text.h"

namespace proreflax::settings {
namespace {

/// Pair by pair: a value may have more bytes than the type binary takes.
std::optional<std::string> text_of_bytes(std::string_view pairs) {
  constexpr std::size_t pair = 3;  // with its colon
  std::string text;
  for (std::size_t at = 0; at < pairs.size(); at += pair) {
    const parsed_value byte = parse_value(value_kind::binary, std::string{pairs.substr(at, 2)});
    const bool joined = at + 2 >= pairs.size() || pairs[at + 2] == ':';
    if (byte.code != CFC_OK || !joined) {
      return std::nullopt;
    }
    text += static_cast<char>(std::get<binary_data>(byte.value).front());
  }
  return text;
}

/// Takes the events. An object of sections is one level deep, its entries two, and three what a
/// value that is not UTF-8 is written as, {"bytes": "ff:00"}.
class export_handler {
 public:
  using Ch = char;
  using size = rapidjson::SizeType;

  std::vector<set_request> sets;
  std::string failure;

  // The names are the reader's.
  // NOLINTBEGIN(readability-identifier-naming)
  bool Null() { return refuse(); }
  bool Bool(bool /*value*/) { return refuse(); }
  bool Int(int /*value*/) { return refuse(); }
  bool Uint(unsigned /*value*/) { return refuse(); }
  bool Int64(std::int64_t /*value*/) { return refuse(); }
  bool Uint64(std::uint64_t /*value*/) { return refuse(); }
  bool Double(double /*value*/) { return refuse(); }

  /// A number as it is written.
  bool RawNumber(const char* text, size length, bool /*copy*/) {
    const std::string_view number{text, length};
    const bool is_whole = number.find_first_of(".eE") == std::string_view::npos;
    return depth_ == entries_depth && is_whole ? take(std::string{number}) : refuse();
  }

  bool String(const char* text, size length, bool /*copy*/) {
    const std::string_view value{text, length};
    if (depth_ == entries_depth) {
      return take(std::string{value});
    }
    const auto bytes = depth_ == bytes_depth ? text_of_bytes(value) : std::nullopt;
    return bytes ? take(*bytes) : refuse();
  }

  bool Key(const char* text, size length, bool /*copy*/) {
    const std::string_view name{text, length};
    if (depth_ == bytes_depth) {
      return name == "bytes" && !has_bytes_ ? true : refuse();
    }
    (depth_ == entries_depth ? key_ : section_) = name;
    return true;
  }

  bool StartObject() {
    has_bytes_ = false;
    return ++depth_ <= bytes_depth ? true : refuse();
  }

  bool EndObject(size /*members*/) {
    return depth_-- == bytes_depth && !has_bytes_ ? refuse() : true;
  }

  bool StartArray() { return refuse(); }
  bool EndArray(size /*elements*/) { return refuse(); }
  // NOLINTEND(readability-identifier-naming)

 private:
  static constexpr int entries_depth = 2;
  static constexpr int bytes_depth = 3;

  bool take(std::string value) {
    has_bytes_ = depth_ == bytes_depth;
    sets.push_back({.section = section_, .key = key_, .value = std::move(value)});
    return true;
  }

  bool refuse() {
    if (depth_ == 0) {
      failure = "this is no JSON object";
    } else if (depth_ < entries_depth) {
      failure = "section " + quoted(section_) + " is no object of keys and values";
    } else {
      failure = "section " + quoted(section_) + " key " + quoted(key_) +
                ": the value is neither a text nor a whole number";
    }
    return false;
  }

  int depth_ = 0;
  bool has_bytes_ = false;
  std::string section_;
  std::string key_;
};

}  // namespace

std::vector<set_request> read_json_export(const std::string& text, std::string& failure) {
  constexpr unsigned flags = rapidjson::kParseIterativeFlag |
                             rapidjson::kParseValidateEncodingFlag |
                             rapidjson::kParseNumbersAsStringsFlag;
  rapidjson::MemoryStream stream{text.data(), text.size()};
  rapidjson::Reader reader;
  export_handler handler;
  const rapidjson::ParseResult result = reader.Parse<flags>(stream, handler);
  failure = std::move(handler.failure);
  if (failure.empty() && (result.IsError() || stream.Tell() < text.size())) {
    const std::size_t place = result.IsError() ? result.Offset() : stream.Tell();
    const std::string_view before{text.data(), std::min(place, text.size())};
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    failure = formatted("parse error at line %ld: %s", static_cast<long>(line),
                        result.IsError() ? rapidjson::GetParseError_En(result.Code())
                                         : "There is more after the JSON object.");
  }
  if (!failure.empty()) {
    handler.sets.clear();
  }
  return std::move(handler.sets);
}

}  // namespace proreflax::settings
