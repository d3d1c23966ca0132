#include "settings/line_reader.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace proreflax::settings {
namespace {

bool is_standard_input(const std::string& path) {
  return path.empty() || path == "-";
}

int open_to_read(const std::string& path) {
  return is_standard_input(path) ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

ssize_t read_some(int descriptor, char* buffer, std::size_t size) {
  ssize_t count = 0;
  do {
    count = read(descriptor, buffer, size);
  } while (count == -1 && errno == EINTR);
  return count;
}

}  // namespace

line_reader::line_reader(const std::string& path)
    : name_{is_standard_input(path) ? "stdin" : path}, descriptor_{open_to_read(path)} {
  if (descriptor_ == -1) {
    failure_ = std::string{"cannot be opened: "} + std::strerror(errno);
  }
}

line_reader::~line_reader() {
  if (descriptor_ > STDIN_FILENO) {
    close(descriptor_);
  }
}

std::optional<text_line> line_reader::next() {
  text_line line{.number = line_number_ + 1, .text = {}};
  while (failure_.empty() && (line.text.empty() || line.text.back() != '\n') && refill()) {
    take_up_to_line_feed(line.text);
  }
  if (!failure_.empty() || line.text.empty()) {
    return std::nullopt;
  }
  line_number_ = line.number;
  return line;
}

bool line_reader::refill() {
  if (unread_.empty()) {
    const ssize_t count = read_some(descriptor_, buffer_.data(), buffer_.size());
    if (count == -1) {
      failure_ = std::string{"cannot be read: "} + std::strerror(errno);
    }
    unread_ = {buffer_.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
  }
  return !unread_.empty();
}

void line_reader::take_up_to_line_feed(std::string& line) {
  const std::string_view piece = unread_.substr(0, unread_.find('\n'));
  const std::size_t taken = std::min(piece.size() + 1, unread_.size());
  line.append(unread_.substr(0, taken));
  unread_.remove_prefix(taken);
  if (line.size() > longest_line) {
    failure_ = "line " + std::to_string(line_number_ + 1) + " has more than " +
               std::to_string(longest_line) + " bytes: this is no such text";
  }
}

}  // namespace proreflax::settings
