// The disk of the power-cut tests does lose what it may lose: each of these is a tool that a real
// disk would punish.
#include "tests/support/power_cut.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using power_cut::possible_contents;
using power_cut::states_after;
using power_cut::tree;
using testing::Contains;
using testing::IsSupersetOf;
using testing::Not;
using testing::UnorderedElementsAre;

namespace {

using effects = std::vector<faults::disk_effect>;
using kind = faults::disk_effect::kind;

faults::disk_effect written(std::uint64_t offset, const std::string& bytes) {
  return {kind::written, "/d/f", "", offset, bytes};
}
const faults::disk_effect emptied{kind::emptied, "/d/f"};
const faults::disk_effect file_made{kind::file_made, "/d/f"};
const faults::disk_effect file_synced{kind::synced, "/d/f"};
const faults::disk_effect folder_synced{kind::synced, "/d"};
const tree empty_folder{{"/d", std::nullopt}};

tree with_file(const std::string& content) {
  return {{"/d", std::nullopt}, {"/d/f", content}};
}

}  // namespace

TEST(PowerCut, an_unsynced_write_is_lost_kept_torn_or_zeros) {
  const std::string zeros(3, '\0');
  EXPECT_THAT(possible_contents("", {written(0, "abc")}),
              UnorderedElementsAre("", "a", "ab", "abc", zeros));
}

TEST(PowerCut, unsynced_writes_arrive_in_any_order) {
  EXPECT_THAT(possible_contents("", {written(0, "ab"), written(2, "cd")}),
              IsSupersetOf({std::string{""}, std::string{"ab"}, std::string{"\0\0cd", 4},
                            std::string{"abc"}, std::string{"a\0cd", 4}, std::string{"abcd"}}));
  EXPECT_THAT(possible_contents("old", {emptied, written(0, "new text")}),
              IsSupersetOf({std::string{"old"}, std::string{""}, std::string{"new text"},
                            std::string{"nld"}}));
}

TEST(PowerCut, many_unsynced_writes_are_lost_one_by_one) {
  effects changes;
  for (std::uint64_t i = 0; i < 6; ++i) {
    changes.push_back(written(i, std::string(1, static_cast<char>('a' + i))));
  }
  const auto all = possible_contents("", changes);
  EXPECT_THAT(all, IsSupersetOf({std::string{"abcdef"}, std::string{"abcde"}, std::string{""},
                                 std::string{"\0bcdef", 6}, std::string{"abc\0ef", 6}}));
}

TEST(PowerCut, what_was_synced_stays) {
  EXPECT_THAT(states_after(with_file(""), {written(0, "abc"), file_synced}),
              UnorderedElementsAre(with_file("abc")));
}

TEST(PowerCut, a_file_is_lost_until_its_folder_is_synced) {
  EXPECT_THAT(states_after(empty_folder, {file_made, written(0, "a"), file_synced}),
              UnorderedElementsAre(empty_folder, with_file("a")));
  EXPECT_THAT(states_after(empty_folder, {file_made, written(0, "a"), file_synced, folder_synced}),
              UnorderedElementsAre(with_file("a")));
}

TEST(PowerCut, a_file_is_lost_with_its_folder) {
  const effects made{
      {kind::folder_made, "/d/g"}, {kind::file_made, "/d/g/f"}, {kind::synced, "/d/g"}};
  EXPECT_THAT(states_after(empty_folder, made), Contains(empty_folder));
  effects synced = made;
  synced.push_back(folder_synced);
  EXPECT_THAT(states_after(empty_folder, synced), Not(Contains(empty_folder)));
}

TEST(PowerCut, a_file_renamed_before_its_sync_may_be_half) {
  const tree before{{"/d", std::nullopt}, {"/d/f", "ab"}};
  const effects moved{{kind::file_made, "/d/part"},
                      {kind::written, "/d/part", "", 0, "new"},
                      {kind::renamed, "/d/part", "/d/f"},
                      folder_synced};
  EXPECT_THAT(states_after(before, moved), Contains(with_file("n")));
  const effects synced{moved[0], moved[1], {kind::synced, "/d/part"}, moved[2]};
  EXPECT_THAT(states_after(before, synced), Contains(with_file("new")));
  EXPECT_THAT(states_after(before, synced), Not(Contains(with_file("n"))));
}

TEST(PowerCut, a_running_system_sees_everything) {
  EXPECT_EQ(power_cut::seen_after(empty_folder, {file_made, written(0, "abc"), written(1, "x")}),
            with_file("axc"));
}
