// Where a command's lines go: results to standard output, all else to standard error.
//
// Each line is written at once and whole, so that a program at the other end of a pipe sees the
// result of one batch line before it sends the next. A result that could not be written is
// remembered, and costs the command its exit status.
#ifndef PROREFLAX_TOOLS_CFC_OUTPUT_OUTPUT_H
#define PROREFLAX_TOOLS_CFC_OUTPUT_OUTPUT_H

#include <string>
#include <string_view>

namespace cfc {

class output {
 public:
  output(int results_descriptor, int complaints_descriptor)
      : results_{results_descriptor}, complaints_{complaints_descriptor} {}

  /// A line of standard output.
  void result(std::string_view line);
  /// A line of standard error.
  void complain(std::string_view line) const;
  /// Replaces the present line of standard error where that is a terminal; says nothing elsewhere.
  void progress(std::string_view text) const;

  /// The errno of the first result that could not be written; 0 when all were.
  int write_error() const { return write_error_; }

 private:
  int results_;
  int complaints_;
  int write_error_ = 0;
};

}  // namespace cfc

#endif
