// Which line of an INI text breaks which rule of the loader, all of them.
//
// The loader stops at the first malformed line; here every line is judged, by the
// loader's own grammar (store/ini_line.h) and with the loader's line buffer in mind:
// it reads at most 251 bytes at once, so a longer line falls apart into pieces of
// which the first has no LF, and a NUL ends a line wherever it stands. Each physical
// line gets its faults once, however many pieces it would fall into.
#ifndef PROREFLAX_SETTINGS_INI_CHECK_H
#define PROREFLAX_SETTINGS_INI_CHECK_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace proreflax::settings {

struct ini_fault {
  std::size_t line = 0;   // from 1; 0 for a fault of the text as a whole
  std::string_view rule;  // a short name that stays the same, for programs
  std::string sentence;
};

/// Judges a text line by line.
class ini_check {
 public:
  /// More faults than this make no sense to anybody: the text is something else.
  static constexpr std::size_t most_faults = 10000;

  /// The next line, with its LF if it has one.
  void line(std::string_view text);

  /// After the last line.
  void end();

  const std::vector<ini_fault>& faults() const { return faults_; }
  bool gave_up() const { return faults_.size() >= most_faults; }

 private:
  /// Of a line with its LF.
  void judge(std::string_view text);
  void found(std::string_view rule, std::string sentence);
  void require_section();

  std::size_t line_number_ = 0;
  bool header_seen_ = false;
  std::vector<ini_fault> faults_;
};

}  // namespace proreflax::settings

#endif
