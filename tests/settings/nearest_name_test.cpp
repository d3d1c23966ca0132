#include "settings/nearest_name.h"

#include <gtest/gtest.h>

using namespace proreflax::settings;

TEST(EditDistance, counts_insertions_deletions_replacements_and_swaps) {
  const struct {
    const char* one;
    const char* other;
    std::size_t distance;
  } rows[] = {{"", "", 0},
              {"get", "get", 0},
              {"gt", "get", 1},
              {"geet", "get", 1},
              {"gat", "get", 1},
              {"gte", "get", 1},
              {"egt", "get", 1},
              {"", "get", 3},
              {"get", "", 3},
              {"Get", "get", 1},
              {"show", "flush", 5},
              {"ca", "abc", 3},
              {"stauts", "status", 1},
              {"LanIpAddr", "LanIPAddr", 1},
              {"abcd", "badc", 2}};
  for (const auto& row : rows) {
    EXPECT_EQ(edit_distance(row.one, row.other), row.distance) << row.one << ' ' << row.other;
    EXPECT_EQ(edit_distance(row.other, row.one), row.distance) << row.other << ' ' << row.one;
  }
}

namespace {

std::string_view nearest_of_verbs(std::string_view word) {
  nearest_name nearest{word};
  for (const char* each : {"get", "set", "flush", "status", "wireless", "defaults"}) {
    nearest.offer(each);
  }
  return nearest.name();
}

}  // namespace

TEST(NearestName, is_the_one_with_the_fewest_changes) {
  EXPECT_EQ(nearest_of_verbs("gte"), "get");
  EXPECT_EQ(nearest_of_verbs("sett"), "set");
  EXPECT_EQ(nearest_of_verbs("wirless"), "wireless");
  EXPECT_EQ(nearest_of_verbs("default"), "defaults");
}

TEST(NearestName, is_the_first_of_several) {
  EXPECT_EQ(nearest_of_verbs("et"), "get");
}

TEST(NearestName, is_none_when_more_than_a_third_differs) {
  EXPECT_EQ(nearest_of_verbs("frobnicate"), "");
  EXPECT_EQ(nearest_of_verbs("x"), "");
  EXPECT_EQ(nearest_of_verbs("gut1"), "");
  EXPECT_EQ(nearest_of_verbs("wrls"), "");
  EXPECT_EQ(nearest_of_verbs("wireles1x"), "wireless") << "two of nine";
}
