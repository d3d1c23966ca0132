// Rows of text in columns, as a person reads them: two
// blanks between columns, numbers to the right.
#ifndef PROREFLAX_TOOLS_CFC_OUTPUT_TEXT_TABLE_H
#define PROREFLAX_TOOLS_CFC_OUTPUT_TEXT_TABLE_H

#include <string>
#include <vector>

#include "tools/cfc/output/output.h"

namespace cfc {

class text_table {
 public:
  enum class side { left, right };

  struct column {
    std::string title;
    side aligned = side::left;
  };

  explicit text_table(std::vector<column> columns);

  /// As many cells as there are columns.
  void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

  void print(output& out) const;

 private:
  std::string line_of(const std::vector<std::string>& cells) const;
  std::size_t width_of(std::size_t place) const;

  std::vector<column> columns_;
  std::vector<std::vector<std::string>> rows_;  // the titles first
};

}  // namespace cfc

#endif
