#include "tools/cfc/firmware/image.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "firmware/image_check.h"
#include "firmware/image_crc.h"
#include "firmware/image_header.h"
#include "firmware/image_parts.h"
#include "settings/message_text.h"
#include "settings/result_text.h"
#include "tools/cfc/firmware/image_names.h"

namespace cfc {

using namespace proreflax;
using namespace proreflax::settings;

namespace {

class descriptor {
 public:
  explicit descriptor(const std::string& path)
      : number_{open(path.c_str(), O_RDONLY | O_CLOEXEC)} {}
  ~descriptor() {
    if (number_ >= 0) {
      close(number_);
    }
  }
  descriptor(const descriptor&) = delete;
  descriptor& operator=(const descriptor&) = delete;

  int number() const { return number_; }

 private:
  int number_;
};

/// 0, or the errno that ended the reading.
int read_up_to(int file, std::size_t limit, std::vector<std::uint8_t>& bytes) {
  constexpr std::size_t piece = 65536;
  for (std::size_t have = 0; have < limit;) {
    bytes.resize(std::min(have + piece, limit));
    const ssize_t count = read(file, bytes.data() + have, bytes.size() - have);
    if (count < 0 && errno != EINTR) {
      return errno;
    }
    have += count > 0 ? static_cast<std::size_t>(count) : 0;
    bytes.resize(have);
    if (count == 0) {
      break;
    }
  }
  return 0;
}

void look(image_view& image, int nesting);

void look_at_parts(image_view& image, int nesting) {
  image_parts parts{image.bytes, image.size, nesting};
  const std::string front = image.place.empty() ? "part " : image.place + ".";
  while (parts.next()) {
    image.parts.push_back({.place = front + std::to_string(image.parts.size() + 1),
                           .bytes = parts.image(),
                           .size = parts.size()});
    look(image.parts.back(), nesting + 1);
    if (first_fault(image.parts.back())) {
      return;
    }
  }
  image.table = parts.result();
}

void look(image_view& image, int nesting) {
  image.check = image_check_header(image.bytes, image.size);
  if (image.check == CFC_OK && image.is_multi()) {
    look_at_parts(image, nesting);
  }
}

std::string show_bytes(std::uint64_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

std::string stated_and_found(const image_checksum& checksum) {
  return "the header says " + show_word(checksum.expected) + ", the bytes give " +
         show_word(checksum.found.value_or(0));
}

/// The numbers behind a refusal; empty where the sentence says it all.
std::string numbers_of(const image_fault& fault) {
  const image_view& image = *fault.image;
  switch (fault.code) {
    case CFC_ERR_FW_SHORT:
      return show_bytes(image.size) + ", and a header has " + std::to_string(FW_HEADER_SIZE);
    case CFC_ERR_FW_MAGIC:
      return "it begins with " + show_word(header_field(image.bytes, header_word::magic)) +
             ", not with " + show_word(image_magic);
    case CFC_ERR_FW_TYPE: {
      const std::uint8_t type = header_field(image.bytes, header_byte::type);
      return "type " + std::to_string(type) + ", " + std::string{image_type_name(type)};
    }
    case CFC_ERR_FW_HDR_CRC:
      return stated_and_found(image.header_checksum());
    case CFC_ERR_FW_DATA_CRC:
      return stated_and_found(image.data_checksum());
    case CFC_ERR_FW_TRUNCATED:
      return image.has_data() ? "its table of parts"
                              : "the header declares " +
                                    show_bytes(header_field(image.bytes, header_word::data_size)) +
                                    " of data, and " + std::to_string(image.size - FW_HEADER_SIZE) +
                                    " are there";
    default:
      return {};
  }
}

}  // namespace

loaded_file load_file(const std::string& path) {
  const descriptor file{path};
  loaded_file loaded;
  const int error =
      file.number() < 0
          ? errno
          : read_up_to(file.number(), std::size_t{FW_IMAGE_SIZE_MAX} + 1, loaded.bytes);
  if (error != 0) {
    loaded.failure = printable(path) + ": " + std::strerror(error);
  }
  return loaded;
}

bool image_view::has_header() const {
  return size >= FW_HEADER_SIZE && header_field(bytes, header_word::magic) == image_magic;
}

bool image_view::has_data() const {
  return has_header() &&
         header_field(bytes, header_word::data_size) <= size - std::uint32_t{FW_HEADER_SIZE};
}

bool image_view::is_multi() const {
  return has_header() && header_field(bytes, header_byte::type) == image_type_multi;
}

std::string image_view::name() const {
  const char* const text = reinterpret_cast<const char*>(bytes + header_name_offset);
  return {text, strnlen(text, header_name_size)};
}

image_checksum image_view::header_checksum() const {
  return {header_field(bytes, header_word::header_crc), image_header_crc(bytes)};
}

image_checksum image_view::data_checksum() const {
  image_checksum checksum{header_field(bytes, header_word::data_crc), std::nullopt};
  if (has_data()) {
    checksum.found =
        image_crc32(0, bytes + FW_HEADER_SIZE, header_field(bytes, header_word::data_size));
  }
  return checksum;
}

image_view look_at_image(const std::vector<std::uint8_t>& bytes) {
  image_view image{.bytes = bytes.data(), .size = static_cast<std::uint32_t>(bytes.size())};
  if (bytes.size() > FW_IMAGE_SIZE_MAX) {
    image.check = CFC_ERR_FW_TOO_BIG;
  } else {
    look(image, 1);
  }
  return image;
}

std::string image_fault::sentence() const {
  const std::string numbers = numbers_of(*this);
  return result_sentence(code) + (numbers.empty() ? "" : " (" + numbers + ")");
}

std::string image_fault::in_words() const {
  return (image->place.empty() ? "" : image->place + ": ") + settings::in_words(code, sentence());
}

std::optional<image_fault> first_fault(
    const image_view& image, const std::function<std::uint32_t(const image_view&)>& judge) {
  if (image.check != CFC_OK) {
    return image_fault{&image, image.check};
  }
  for (const image_view& part : image.parts) {
    if (const auto fault = first_fault(part, judge)) {
      return fault;
    }
  }
  const std::uint32_t code = image.is_multi() ? image.table : judge(image);
  return code == CFC_OK ? std::nullopt : std::optional{image_fault{&image, code}};
}

std::optional<image_fault> first_fault(const image_view& image) {
  return first_fault(image, [](const image_view&) { return std::uint32_t{CFC_OK}; });
}

std::string show_word(std::uint32_t word) {
  char text[sizeof "0x00000000"];
  std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(word));
  return text;
}

std::string show_image(const image_view& image) {
  if (!image.has_header()) {
    return "no image, " + show_bytes(image.size);
  }
  return std::string{image_type_name(header_field(image.bytes, header_byte::type))} + " " +
         quoted(image.name()) + ", " + show_bytes(image.size);
}

}  // namespace cfc
