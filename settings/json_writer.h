// A JSON text, written from its beginning to its end: members keep the order in which they are
// written. The JSON library is seen by the sources of this class and of json_import.cpp alone.
#ifndef PROREFLAX_SETTINGS_JSON_WRITER_H
#define PROREFLAX_SETTINGS_JSON_WRITER_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "settings/typed_value.h"

namespace proreflax::settings {

/// Lines of JSON: text() has no LF in it.
class json_writer {
 public:
  json_writer();
  ~json_writer();
  json_writer(const json_writer&) = delete;
  json_writer& operator=(const json_writer&) = delete;

  void begin_object();
  void end_object();
  void begin_array();
  void end_array();

  /// Names the value or the container that follows.
  json_writer& key(std::string_view name);

  /// Text that is not UTF-8 has U+FFFD in place of what cannot be represented.
  void text(std::string_view value);
  void number(std::int64_t value);
  void boolean(bool value);
  void null();

  /// Members of the present object.
  void member(std::string_view name, std::string_view value) { key(name).text(value); }
  void number_member(std::string_view name, std::int64_t value) { key(name).number(value); }
  void flag_member(std::string_view name, bool value) { key(name).boolean(value); }

  /// Member "value"; the bytes of a string that is not UTF-8 are in "bytes" beside it.
  void value_member(const typed_value& value);

  std::string take();

 private:
  struct sink;
  std::unique_ptr<sink> sink_;
};

/// Pairs of hexadecimal digits with colons between them.
std::string bytes_in_pairs(std::string_view bytes);

}  // namespace proreflax::settings

#endif
