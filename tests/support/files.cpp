#include "tests/support/files.h"

#include <cstdlib>
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

temporary_folder::temporary_folder(const std::filesystem::path& parent) {
  std::string name = parent / "test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("cannot make " + name);
  }
  path_ = name;
}

temporary_folder::~temporary_folder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace files
