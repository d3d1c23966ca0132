// Whole files, read and written at once.
#ifndef PROREFLAX_TESTS_SUPPORT_FILES_H
#define PROREFLAX_TESTS_SUPPORT_FILES_H

#include <optional>
#include <string>
#include <string_view>

namespace files {

void write(const std::string& path, std::string_view text);

/// All bytes of a file; nothing when it cannot be read.
std::optional<std::string> read(const std::string& path);

/// The text of a file that has one; throws when there is none.
std::string text_of(const std::string& path);

}  // namespace files

#endif
