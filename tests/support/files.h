// Whole files, read and written at once.
#ifndef PROREFLAX_TESTS_SUPPORT_FILES_H
#define PROREFLAX_TESTS_SUPPORT_FILES_H

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace files {

void write(const std::string& path, std::string_view text);

/// All bytes of a file; nothing when it cannot be read.
std::optional<std::string> read(const std::string& path);

/// The text of a file that has one; throws when there is none.
std::string text_of(const std::string& path);

/// An empty folder of a test's own, gone with the object.
class temporary_folder {
 public:
  explicit temporary_folder(
      const std::filesystem::path& parent = std::filesystem::temp_directory_path());
  ~temporary_folder();
  temporary_folder(const temporary_folder&) = delete;
  temporary_folder& operator=(const temporary_folder&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

/// A file that holds a text, gone with the object.
class temporary_file {
 public:
  explicit temporary_file(std::string_view text) { write(path_, text); }

  const std::string& path() const { return path_; }

 private:
  temporary_folder folder_;
  std::string path_ = folder_.path() / "text";
};

}  // namespace files

#endif
