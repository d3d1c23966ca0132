#include "settings/nearest_name.h"

#include <algorithm>
#include <array>
#include <vector>

namespace proreflax::settings {

std::size_t edit_distance(std::string_view one, std::string_view other) {
  // Rows of the table of distances between the beginnings of both: the present one and two before.
  std::array<std::vector<std::size_t>, 3> rows;
  for (std::vector<std::size_t>& each : rows) {
    each.resize(other.size() + 1);
  }
  for (std::size_t i = 0; i <= one.size(); ++i) {
    std::vector<std::size_t>& row = rows[i % 3];
    const std::vector<std::size_t>& above = rows[(i + 2) % 3];
    const std::vector<std::size_t>& two_above = rows[(i + 1) % 3];
    for (std::size_t j = 0; j <= other.size(); ++j) {
      if (i == 0 || j == 0) {
        row[j] = i + j;
        continue;
      }
      const bool same = one[i - 1] == other[j - 1];
      row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (same ? 0U : 1U)});
      if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
        row[j] = std::min(row[j], two_above[j - 2] + 1);
      }
    }
  }
  return rows[one.size() % 3].back();
}

nearest_name::nearest_name(std::string_view word)
    : word_{word}, limit_{std::max<std::size_t>(word.size() / 3, 1) + 1} {}

void nearest_name::offer(std::string_view name) {
  if (const std::size_t distance = edit_distance(word_, name); distance < limit_) {
    limit_ = distance;
    name_ = name;
  }
}

}  // namespace proreflax::settings
