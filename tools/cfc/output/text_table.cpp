#include "tools/cfc/output/text_table.h"

#include <algorithm>

namespace cfc {

text_table::text_table(std::vector<column> columns) : columns_{std::move(columns)} {
  std::vector<std::string> titles;
  for (const column& each : columns_) {
    titles.push_back(each.title);
  }
  add(std::move(titles));
}

std::size_t text_table::width_of(std::size_t place) const {
  std::size_t width = 0;
  for (const std::vector<std::string>& row : rows_) {
    width = std::max(width, row[place].size());
  }
  return width;
}

std::string text_table::line_of(const std::vector<std::string>& cells) const {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string padding(width_of(i) - cells[i].size(), ' ');
    line += i == 0 ? "" : "  ";
    line += columns_[i].aligned == side::right ? padding + cells[i] : cells[i] + padding;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

void text_table::print(output& out) const {
  for (const std::vector<std::string>& row : rows_) {
    out.result(line_of(row));
  }
}

}  // namespace cfc
