#include "tools/cfc/firmware_info.h"

#include <ctime>

#include "firmware/image_header.h"
#include "tools/cfc/image_names.h"
#include "tools/cfc/json_text.h"
#include "tools/cfc/result_text.h"

namespace cfc {

using namespace proreflax;

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
