#include "tools/cfc/firmware/info.h"

#include <ctime>

#include "firmware/image_header.h"
#include "settings/json_writer.h"
#include "settings/message_text.h"
#include "settings/utf8_text.h"
#include "tools/cfc/firmware/image_names.h"
#include "tools/cfc/output/json_result.h"

namespace cfc {

using namespace proreflax;
using namespace proreflax::settings;

namespace {

using lines = std::vector<std::string>;

std::string show_time(std::uint32_t seconds) {
  const auto when = static_cast<std::time_t>(seconds);
  std::tm parts{};
  char text[64];
  gmtime_r(&when, &parts);
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &parts);
  return std::string{text} + " (" + std::to_string(seconds) + ")";
}

std::string show_number(std::string_view name, std::uint8_t number) {
  return std::string{name} + " (" + std::to_string(number) + ")";
}

std::string show_checksum(const image_checksum& checksum) {
  const std::string found = checksum.found ? ", found " + show_word(*checksum.found) +
                                                 (checksum.is_right() ? ": right" : ": wrong")
                                           : ", and the data is not there as a whole";
  return "expected " + show_word(checksum.expected) + found;
}

lines header_lines(const image_view& image) {
  const auto word = [&](header_word field) { return header_field(image.bytes, field); };
  const auto byte = [&](header_byte field) { return header_field(image.bytes, field); };
  const std::uint8_t system = byte(header_byte::operating_system);
  const std::uint8_t processor = byte(header_byte::architecture);
  const std::uint8_t type = byte(header_byte::type);
  const std::uint8_t compression = byte(header_byte::compression);
  return {
      "name          " + quoted(image.name()),
      "magic         " + show_word(word(header_word::magic)),
      "time          " + show_time(word(header_word::time_stamp)),
      "data size     " + std::to_string(word(header_word::data_size)) + " bytes",
      "load address  " + show_word(word(header_word::load_address)),
      "entry point   " + show_word(word(header_word::entry_point)),
      "system        " + show_number(operating_system_name(system), system),
      "processor     " + show_number(architecture_name(processor), processor),
      "type          " + show_number(image_type_name(type), type),
      "compression   " + show_number(compression_name(compression), compression),
      "header CRC    " + show_checksum(image.header_checksum()),
      "data CRC      " + show_checksum(image.data_checksum()),
  };
}

/// Hangs the lines of a part below those of its image.
void hang(lines& tree, const lines& part, bool last) {
  tree.emplace_back("|");
  for (std::size_t i = 0; i < part.size(); ++i) {
    const std::string_view front = i == 0 ? "+- " : last ? "   " : "|  ";
    tree.push_back(std::string{front}.append(part[i]));
  }
}

/// What is no image has no fields and no result.
void print(const image_view& image, const std::optional<image_fault>& fault, output& out) {
  if (!image.has_header()) {
    return;
  }
  for (const std::string& line : describe(image)) {
    out.result(line);
  }
  out.result("result: " +
             (fault ? fault->in_words()
                    : in_words(CFC_OK, "the device takes this image where its flash has room")));
}

// ---- As JSON ------------------------------------------------------------------------------------

void write_json(json_writer& json, const image_checksum& checksum) {
  json.begin_object();
  json.number_member("expected", checksum.expected);
  if (checksum.found) {
    json.number_member("found", *checksum.found);
    json.flag_member("right", checksum.is_right());
  } else {
    json.key("found").null();
    json.key("right").null();
  }
  json.end_object();
}

void write_json(json_writer& json, std::uint8_t number, std::string_view name) {
  json.begin_object();
  json.number_member("number", number);
  json.member("name", name);
  json.end_object();
}

void write_header(json_writer& json, const image_view& image) {
  const auto word = [&](header_word field) { return header_field(image.bytes, field); };
  const auto byte = [&](header_byte field) { return header_field(image.bytes, field); };
  json.member("name", image.name());
  if (!is_utf8(image.name())) {
    json.member("name_bytes", bytes_in_pairs(image.name()));
  }
  json.number_member("magic", word(header_word::magic));
  json.number_member("time", word(header_word::time_stamp));
  json.number_member("data_size", word(header_word::data_size));
  json.number_member("load_address", word(header_word::load_address));
  json.number_member("entry_point", word(header_word::entry_point));
  const std::uint8_t system = byte(header_byte::operating_system);
  write_json(json.key("system"), system, operating_system_name(system));
  const std::uint8_t processor = byte(header_byte::architecture);
  write_json(json.key("processor"), processor, architecture_name(processor));
  const std::uint8_t type = byte(header_byte::type);
  write_json(json.key("type"), type, image_type_name(type));
  const std::uint8_t compression = byte(header_byte::compression);
  write_json(json.key("compression"), compression, compression_name(compression));
  write_json(json.key("header_crc"), image.header_checksum());
  write_json(json.key("data_crc"), image.data_checksum());
}

/// What has no header has a size alone.
void write_json(json_writer& json, const image_view& image) {
  json.begin_object();
  if (!image.place.empty()) {
    json.member("place", image.place);
  }
  json.number_member("size", image.size);
  if (image.has_header()) {
    write_header(json, image);
  }
  if (!image.parts.empty()) {
    json.key("parts").begin_array();
    for (const image_view& part : image.parts) {
      write_json(json, part);
    }
    json.end_array();
  }
  json.end_object();
}

}  // namespace

std::vector<std::string> describe(const image_view& image) {
  lines all{(image.place.empty() ? "image" : image.place) + ": " + show_image(image)};
  if (image.has_header()) {
    const lines fields = header_lines(image);
    for (const std::string& each : fields) {
      all.push_back((image.parts.empty() ? "   " : "|  ") + each);
    }
  }
  for (const image_view& part : image.parts) {
    hang(all, describe(part), &part == &image.parts.back());
  }
  return all;
}

std::string json_of(const std::string& file, const image_view& image,
                    const std::optional<image_fault>& fault) {
  json_writer json;
  json.begin_object();
  json.member("file", file);
  write_json(json.key("image"), image);
  write_code(json, fault ? fault->code : std::uint32_t{CFC_OK},
             fault ? fault->sentence() : std::string{});
  if (fault && !fault->image->place.empty()) {
    json.member("place", fault->image->place);
  }
  json.end_object();
  return json.take();
}

exit_status run(const firmware_info_command& command, output& out) {
  const loaded_file file = load_file(command.file);
  if (!file.failure.empty()) {
    out.complain("cfc: firmware info: " + file.failure);
    return exit_status::failed;
  }
  const image_view image = look_at_image(file.bytes);
  const auto fault = first_fault(image);
  if (command.json) {
    out.result(json_of(command.file, image, fault));
  } else {
    print(image, fault, out);
  }
  if (!fault) {
    return exit_status::done;
  }
  out.complain("cfc: firmware info: " + printable(command.file) + ": " + fault->in_words());
  return exit_status::failed;
}

}  // namespace cfc
