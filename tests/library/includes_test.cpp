// Which folder may lean on which, and what the public headers may include.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

const fs::path source = PROREFLAX_SOURCE_DIR;

/// The folders whose headers a folder's files may include, besides its own and the public ones. The
/// arrows point down: transport knows nothing of values, values nothing of accessors; the store,
/// the wireless readers and the firmware writer know none of them. The programs share with the
/// library what is defined in one place: the request's record, the rules of names, the grammar of a
/// saved line, the encodings of values, the tables of the sections, the rules of an image. They see
/// most of it through settings, which knows no program.
const std::map<std::string, std::set<std::string>> may_include = {
    {"transport", {}},
    {"values", {"transport"}},
    {"accessors", {"transport", "values"}},
    {"store", {}},
    {"wireless", {}},
    {"firmware", {}},
    {"service", {"store", "transport"}},
    {"settings", {"accessors", "store", "transport", "values"}},
    {"tools", {"accessors", "firmware", "settings", "store"}},
};

const std::set<std::string> headers_of_c = {
    "assert.h", "ctype.h", "errno.h",  "float.h",  "inttypes.h", "iso646.h",
    "limits.h", "math.h",  "signal.h", "stdarg.h", "stdbool.h",  "stddef.h",
    "stdint.h", "stdio.h", "stdlib.h", "string.h", "time.h"};

struct include {
  fs::path file;
  std::string name;  // as it stands between quotes or brackets
  bool quoted;
};

void add_includes_of(const fs::path& file, std::vector<include>& all) {
  static const std::regex pattern{R"(^\s*#\s*include\s*([<"])([^>"]+)[>"])"};
  std::ifstream stream{file};
  std::smatch match;
  for (std::string line; std::getline(stream, line);) {
    if (std::regex_search(line, match, pattern)) {
      all.push_back({fs::relative(file, source), match[2], match[1] == "\""});
    }
  }
}

/// Every include of every file below a folder; none when it is not there yet.
std::vector<include> includes_below(const std::string& folder) {
  std::vector<include> all;
  if (fs::exists(source / folder)) {
    for (const auto& entry : fs::recursive_directory_iterator{source / folder}) {
      const fs::path kind = entry.path().extension();
      if (kind == ".h" || kind == ".cpp" || kind == ".c") {
        add_includes_of(entry.path(), all);
      }
    }
  }
  return all;
}

}  // namespace

TEST(Includes, of_each_folder_point_to_itself_or_downwards) {
  for (const auto& [folder, below] : may_include) {
    for (const include& each : includes_below(folder)) {
      if (each.quoted) {
        const std::string included = *fs::path{each.name}.begin();
        EXPECT_TRUE(included == folder || below.count(included))
            << each.file << " includes " << each.name;
      }
    }
  }
}

TEST(Includes, of_the_projects_own_headers_stand_in_quotes_unless_they_are_public) {
  for (const auto& [folder, below] : may_include) {
    for (const include& each : includes_below(folder)) {
      if (!each.quoted) {
        EXPECT_FALSE(may_include.count(*fs::path{each.name}.begin()))
            << each.file << " includes " << each.name;
      }
    }
  }
}

TEST(Includes, were_looked_at) {
  EXPECT_GT(includes_below("transport").size(), 20U);
  EXPECT_GT(includes_below("include").size(), 3U);
}

TEST(PublicHeaders, include_only_headers_of_c_and_each_other) {
  for (const include& each : includes_below("include")) {
    EXPECT_FALSE(each.quoted) << each.file << " includes " << each.name;
    EXPECT_TRUE(headers_of_c.count(each.name) || fs::exists(source / "include" / each.name))
        << each.file << " includes " << each.name;
  }
}
