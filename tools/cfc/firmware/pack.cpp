#include "tools/cfc/firmware/pack.h"

#include <ctime>

#include "firmware/image_check.h"
#include "firmware/image_crc.h"
#include "firmware/image_header.h"
#include "settings/message_text.h"
#include "settings/result_text.h"
#include "tools/cfc/firmware/image.h"
#include "tools/writeflash/replaced_file.h"

namespace cfc {

using namespace proreflax;
using namespace proreflax::settings;

namespace {

using byte_string = std::vector<std::uint8_t>;

// The device does not look at the two: what it runs, and that nothing is said of its processor.
constexpr std::uint8_t operating_system_linux = 5;
constexpr std::uint8_t architecture_untold = 0;

void put(byte_string& bytes, std::size_t offset, std::uint32_t number) {
  for (std::size_t i = 0; i < sizeof number; ++i) {
    bytes[offset + i] = static_cast<std::uint8_t>(number >> (24 - 8 * i));
  }
}

void put(byte_string& image, header_word field, std::uint32_t number) {
  put(image, static_cast<std::size_t>(field), number);
}

void put(byte_string& image, header_byte field, std::uint8_t number) {
  image[static_cast<std::size_t>(field)] = number;
}

std::uint8_t type_of(const std::string& name) {
  if (name == "kernel") {
    return image_type_kernel;
  }
  return name == "ramdisk" ? image_type_ramdisk : image_type_multi;
}

/// What a step leaves: a sentence when it failed.
using failure = std::string;

/// Why a file may not be packed; empty when it may.
failure refuse_part(const firmware_pack_command& command, const std::string& path,
                    const byte_string& bytes) {
  if (bytes.empty()) {
    return printable(path) + ": the file is empty";
  }
  if (type_of(command.type) != image_type_multi) {
    return {};
  }
  const image_view image = look_at_image(bytes);
  const auto fault = first_fault(image);
  return fault ? printable(path) +
                     ": the parts of a multi-file image are images: " + fault->in_words()
               : failure{};
}

failure load_parts(const firmware_pack_command& command, std::vector<byte_string>& parts) {
  for (const std::string& path : command.parts) {
    loaded_file file = load_file(path);
    failure why = file.failure.empty() ? refuse_part(command, path, file.bytes) : file.failure;
    if (!why.empty()) {
      return why;
    }
    parts.push_back(std::move(file.bytes));
  }
  return {};
}

byte_string pack(const firmware_pack_command& command, const std::vector<byte_string>& parts) {
  const image_fields fields{
      .type = type_of(command.type),
      .time = command.time.value_or(static_cast<std::uint32_t>(std::time(nullptr))),
      .load_address = command.load_address,
      .entry_point = command.entry_point.value_or(command.load_address),
      .name = command.name};
  return make_image(fields,
                    fields.type == image_type_multi ? make_multi_data(parts) : parts.front());
}

failure save(const std::string& path, const byte_string& bytes) {
  remark why;
  replaced_file file{path.c_str()};
  const bool saved =
      file.open(why) && file.write_at(0, bytes.data(), bytes.size(), why) && file.finish(why);
  return saved ? failure{} : printable(why.text());
}

exit_status end(const failure& why, const output& out) {
  out.complain("cfc: firmware pack: " + why);
  return exit_status::failed;
}

}  // namespace

std::vector<std::uint8_t> make_image(const image_fields& fields,
                                     const std::vector<std::uint8_t>& data) {
  byte_string image(FW_HEADER_SIZE);
  const auto size = static_cast<std::uint32_t>(data.size());
  put(image, header_word::magic, image_magic);
  put(image, header_word::time_stamp, fields.time);
  put(image, header_word::data_size, size);
  put(image, header_word::load_address, fields.load_address);
  put(image, header_word::entry_point, fields.entry_point);
  put(image, header_word::data_crc, image_crc32(0, data.data(), size));
  put(image, header_byte::operating_system, operating_system_linux);
  put(image, header_byte::architecture, architecture_untold);
  put(image, header_byte::type, fields.type);
  fields.name.copy(reinterpret_cast<char*>(image.data() + header_name_offset), header_name_size);
  put(image, header_word::header_crc, image_header_crc(image.data()));
  image.insert(image.end(), data.begin(), data.end());
  return image;
}

std::vector<std::uint8_t> make_multi_data(const std::vector<std::vector<std::uint8_t>>& parts) {
  constexpr std::size_t word = 4;
  byte_string data((parts.size() + 1) * word);  // the last word is the zero that ends the table
  for (std::size_t i = 0; i < parts.size(); ++i) {
    put(data, i * word, static_cast<std::uint32_t>(parts[i].size()));
  }
  for (const byte_string& part : parts) {
    data.resize((data.size() + word - 1) / word * word);
    data.insert(data.end(), part.begin(), part.end());
  }
  return data;
}

exit_status run(const firmware_pack_command& command, output& out) {
  if (type_of(command.type) != image_type_multi && command.parts.size() != 1) {
    out.complain("cfc: firmware pack: a " + command.type + " is made from one file, not from " +
                 std::to_string(command.parts.size()) + " (see: cfc firmware pack --help)");
    return exit_status::wrong_usage;
  }
  std::vector<byte_string> parts;
  if (const failure why = load_parts(command, parts); !why.empty()) {
    return end(why, out);
  }
  const byte_string bytes = pack(command, parts);
  const image_view image = look_at_image(bytes);
  if (const auto fault = first_fault(image)) {
    return end("the device would not take it: " + fault->in_words(), out);
  }
  if (const failure why = save(command.file, bytes); !why.empty()) {
    return end(why, out);
  }
  out.result(printable(command.file) + ": " + show_image(image));
  return exit_status::done;
}

}  // namespace cfc
