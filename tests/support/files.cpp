#include "tests/support/files.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace files {

void write(const std::string& path, std::string_view text) {
  std::ofstream file{path, std::ios::binary};
  if (!(file << text).flush()) {
    throw std::runtime_error("cannot write " + path);
  }
}

std::optional<std::string> read(const std::string& path) {
  std::ifstream file{path, std::ios::binary};
  if (!file) {
    return std::nullopt;
  }
  return std::string{std::istreambuf_iterator<char>{file}, {}};
}

std::string text_of(const std::string& path) {
  const std::string text = read(path).value_or("");
  if (text.empty()) {
    throw std::runtime_error("nothing in " + path);
  }
  return text;
}

}  // namespace files
