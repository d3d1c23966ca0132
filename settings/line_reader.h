// The lines of a file or of standard input, one at a time and as they come, so that a program can
// feed a pipe and read each result before it writes the next line.
//
// Bytes are taken as they are, NUL included. A line has a limit far above any that makes sense:
// what is no text, such as /dev/zero, ends the reading instead of filling the memory.
#ifndef PROREFLAX_SETTINGS_LINE_READER_H
#define PROREFLAX_SETTINGS_LINE_READER_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace proreflax::settings {

struct text_line {
  std::size_t number = 0;  // from 1
  std::string text;        // with its LF, which only a last line may lack
};

class line_reader {
 public:
  static constexpr std::size_t longest_line = 65536;

  /// Opens a file; an empty path or "-" is standard input.
  explicit line_reader(const std::string& path);
  ~line_reader();
  line_reader(const line_reader&) = delete;
  line_reader& operator=(const line_reader&) = delete;

  /// The next line; nothing at the end, which may be a failure().
  std::optional<text_line> next();

  /// Why the reading ended before the end of the text, as a sentence; empty when it did not.
  const std::string& failure() const { return failure_; }

  /// The path, or "stdin".
  const std::string& name() const { return name_; }

 private:
  bool refill();
  void take_up_to_line_feed(std::string& line);

  std::string name_;
  int descriptor_;
  std::string failure_;
  std::size_t line_number_ = 0;
  std::array<char, 4096> buffer_{};
  std::string_view unread_;
};

}  // namespace proreflax::settings

#endif
