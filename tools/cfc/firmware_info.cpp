#include "tools/cfc/firmware_info.h"

#include <ctime>

#include "firmware/image_check.h"
#include "firmware/image_crc.h"
#include "firmware/image_header.h"
#include "tools/cfc/image_names.h"
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

std::string show_checksum(std::uint32_t expected, std::uint32_t found) {
  return "expected " + show_word(expected) + ", found " + show_word(found) +
         (expected == found ? ": right" : ": wrong");
}

std::string show_data_checksum(const image_view& image) {
  const std::uint32_t expected = header_field(image.bytes, header_word::data_crc);
  const std::uint32_t size = header_field(image.bytes, header_word::data_size);
  return image.has_data()
             ? show_checksum(expected, image_crc32(0, image.bytes + FW_HEADER_SIZE, size))
             : "expected " + show_word(expected) + ", and the data is not there as a whole";
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
      "header CRC    " +
          show_checksum(word(header_word::header_crc), image_header_crc(image.bytes)),
      "data CRC      " + show_data_checksum(image),
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

exit_status tell_result(const image_view& image, const std::string& file, output& out) {
  const auto fault = first_fault(image);
  if (!fault) {
    out.result("result: " +
               in_words(CFC_OK, "the device takes this image where its flash has room"));
    return exit_status::done;
  }
  if (image.has_header()) {
    out.result("result: " + fault->in_words());
  }
  out.complain("cfc: firmware info: " + printable(file) + ": " + fault->in_words());
  return exit_status::failed;
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
  if (image.has_header()) {
    for (const std::string& line : describe(image)) {
      out.result(line);
    }
  }
  return tell_result(image, command.file, out);
}

}  // namespace cfc
