// Cuts: the process ends behind any system call, or the power goes and takes with it what was not
// synced. The next read finds the old text or the new one, whole. And every call fails once at each
// position: the failure is reported, and the old text is still there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/power_cut.h"
#include "tests/tools/writeflash/flash_files.h"
#include "tools/writeflash/flash_slots.h"

using namespace proreflax;
using testing::AnyOf;
using testing::Optional;

namespace fs = std::filesystem;

namespace {

using texts = std::vector<std::string>;
using effect_list = std::vector<faults::disk_effect>;

/// What is saved before, and then the text whose save is disturbed.
struct road {
  const char* name;
  texts before;
  std::string text;
};

void PrintTo(const road& each, std::ostream* out) {
  *out << each.name;
}

std::string long_text(char letter) {
  return std::string(9000, letter) + "\n";  // three pieces
}

const road roads[] = {
    {"first", {}, "first"},
    {"second", {"first"}, "second"},
    {"third", {"first", "second"}, "third"},
    {"longer", {"a", "b"}, long_text('c')},
    {"shorter", {long_text('a'), long_text('b')}, "c"},
    {"same size", {"first", "other"}, "third"},
    {"long over long", {long_text('a'), long_text('b')}, long_text('c')},
    {"saved already", {"first", "second"}, "second"},
};

class FlashRoad : public testing::TestWithParam<road>, protected flash_files {
 protected:
  void SetUp() override {
    for (const std::string& text : GetParam().before) {
      ASSERT_TRUE(save(text)) << why.text();
    }
    files::write(input, text());
    files::write(output, "was there");
    start_ = power_cut::tree_below(top);
  }

  const std::string& text() const { return GetParam().text; }
  std::optional<std::string> old() const {
    return GetParam().before.empty() ? std::nullopt : std::optional{GetParam().before.back()};
  }
  void start_again() const { power_cut::put_back(top, start_); }

  const power_cut::tree& start() const { return start_; }

 private:
  power_cut::tree start_;
};

/// Where there is something to read.
class FlashReadRoad : public FlashRoad {};

/// Where the text is one piece: two long saves, one behind the other, have too many orders.
class FlashShortRoad : public FlashRoad {};

template <typename Condition>
std::vector<road> roads_where(Condition condition) {
  std::vector<road> some;
  std::copy_if(std::begin(roads), std::end(roads), std::back_inserter(some), condition);
  return some;
}

std::string name_of(const testing::TestParamInfo<road>& info) {
  std::string name = info.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

effect_list front(const effect_list& effects, std::size_t count) {
  return {effects.begin(), effects.begin() + static_cast<std::ptrdiff_t>(count)};
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Save, FlashRoad, testing::ValuesIn(roads), name_of);
INSTANTIATE_TEST_SUITE_P(Read, FlashReadRoad, testing::ValuesIn(roads_where([](const road& each) {
                           return !each.before.empty();
                         })),
                         name_of);
INSTANTIATE_TEST_SUITE_P(Save, FlashShortRoad, testing::ValuesIn(roads_where([](const road& each) {
                           return each.text.size() < 100;
                         })),
                         name_of);

TEST_P(FlashRoad, a_save_killed_after_any_call_leaves_the_old_text_or_the_new_one) {
  int ended = faults::exit_cut;
  int calls = 0;
  while (ended == faults::exit_cut) {
    ++calls;
    start_again();
    ended = wait_for_child(start_child([&] {
      faults::cut_after(calls);
      return save_input() ? 0 : 1;
    }));
    EXPECT_THAT(saved(), AnyOf(old(), Optional(text()))) << "cut after call " << calls;
    EXPECT_TRUE(why.text()[0] == '\0' || !old()) << why.text();
    EXPECT_TRUE(save("afterwards")) << why.text();
    EXPECT_THAT(saved(), Optional(std::string{"afterwards"}));
  }
  EXPECT_EQ(ended, 0);
  EXPECT_GT(calls, 15);
}

TEST_P(FlashReadRoad, a_read_killed_after_any_call_leaves_no_half_file) {
  int ended = faults::exit_cut;
  int calls = 0;
  while (ended == faults::exit_cut) {
    ++calls;
    start_again();
    ended = wait_for_child(start_child([&] {
      faults::cut_after(calls);
      return read_into_output() ? 0 : 1;
    }));
    EXPECT_THAT(files::read(output), AnyOf(Optional(std::string{"was there"}), old()));
    EXPECT_EQ(saved(), old());
  }
  EXPECT_EQ(ended, 0);
  EXPECT_GT(calls, 15);
}

TEST_P(FlashRoad, a_power_cut_at_any_moment_of_a_save_leaves_the_old_text_or_the_new_one) {
  effect_list effects;
  faults::note_effects(&effects);
  ASSERT_TRUE(save_input()) << why.text();
  faults::note_effects(nullptr);
  ASSERT_GT(effects.size(), 3U);
  std::size_t states = 0;
  for (std::size_t cut = 0; cut <= effects.size(); ++cut) {
    for (const auto& state : power_cut::states_after(start(), front(effects, cut))) {
      power_cut::put_back(top, state);
      const auto found = saved();
      if (cut == effects.size()) {
        ASSERT_EQ(found, text()) << "it was reported as saved";
      } else {
        ASSERT_THAT(found, AnyOf(old(), Optional(text()))) << "cut after effect " << cut;
      }
      ++states;
    }
  }
  EXPECT_GE(states, effects.size() + (old() == text() ? 1 : 15));
}

TEST_P(FlashRoad, a_header_is_written_over_zeros_when_all_else_is_on_the_flash) {
  effect_list effects;
  faults::note_effects(&effects);
  ASSERT_TRUE(save_input()) << why.text();
  faults::note_effects(nullptr);
  const auto header = std::find_if(effects.begin(), effects.end(), [](const auto& each) {
    return each.what == faults::disk_effect::kind::written && each.offset == 0;
  });
  EXPECT_EQ(header == effects.end(), old() == text());
  if (header != effects.end()) {
    EXPECT_EQ(header->bytes.size(), slot_header_bytes);
    const effect_list until_then{effects.begin(), header};
    EXPECT_EQ(power_cut::states_after(start(), until_then).size(), 1U);
    const auto seen = power_cut::seen_after(start(), until_then).at(header->path);
    EXPECT_EQ(seen, std::string(slot_header_bytes, '\0') + text());
  }
}

TEST_P(FlashReadRoad, a_power_cut_at_any_moment_of_a_read_leaves_no_half_file) {
  effect_list effects;
  faults::note_effects(&effects);
  ASSERT_TRUE(read_into_output());
  faults::note_effects(nullptr);
  for (std::size_t cut = 0; cut <= effects.size(); ++cut) {
    for (const auto& state : power_cut::states_after(start(), front(effects, cut))) {
      const auto& found = state.at(output);
      ASSERT_THAT(found, AnyOf(Optional(std::string{"was there"}), old())) << cut;
    }
  }
}

TEST_P(FlashShortRoad, a_save_killed_and_then_a_power_cut_in_the_next_save_lose_nothing) {
  effect_list killed;
  faults::note_effects(&killed);
  ASSERT_TRUE(save_input()) << why.text();
  faults::note_effects(nullptr);
  for (std::size_t kill = 0; kill <= killed.size(); ++kill) {
    effect_list effects = front(killed, kill);
    power_cut::put_back(top, power_cut::seen_after(start(), effects));
    files::write(input, "the next");
    faults::note_effects(&effects);
    ASSERT_TRUE(save_input()) << why.text();
    faults::note_effects(nullptr);
    for (std::size_t cut = kill; cut <= effects.size(); ++cut) {
      for (const auto& state : power_cut::states_after(start(), front(effects, cut))) {
        power_cut::put_back(top, state);
        const auto found = saved();
        if (cut == effects.size()) {
          ASSERT_EQ(found, "the next");
        } else {
          ASSERT_THAT(found, AnyOf(old(), Optional(text()), Optional(std::string{"the next"})))
              << "killed after effect " << kill << ", cut after effect " << cut;
        }
      }
    }
  }
}

TEST_P(FlashRoad, a_save_killed_and_then_the_same_again_is_safe_once_it_is_reported) {
  effect_list killed;
  faults::note_effects(&killed);
  ASSERT_TRUE(save_input()) << why.text();
  faults::note_effects(nullptr);
  // Behind the header and before its sync: the next run sees the text saved already.
  effect_list effects = front(killed, killed.size() - 1);
  power_cut::put_back(top, power_cut::seen_after(start(), effects));
  files::write(input, text());
  faults::note_effects(&effects);
  ASSERT_TRUE(save_input()) << why.text();
  faults::note_effects(nullptr);
  for (const auto& state : power_cut::states_after(start(), effects)) {
    power_cut::put_back(top, state);
    ASSERT_EQ(saved(), text());
  }
}

// -- failures ------------------------------------------------------------------------------------

namespace {

using faults::call;

/// All calls whose failure must be reported: every one but close(), behind which nothing is open
/// that was not synced.
constexpr call reported[] = {call::openat, call::mkdirat, call::flock,     call::fstat,
                             call::lstat,  call::pread,   call::pwrite,    call::fsync,
                             call::rename, call::unlink,  call::ftruncate, call::malloc};

}  // namespace

TEST_P(FlashRoad, every_call_of_a_save_that_fails_is_reported_and_loses_nothing) {
  int failures = 0;
  for (const call kind : reported) {
    for (int nth = 1;; ++nth) {
      start_again();
      const int open_before = open_descriptors();
      faults::fail(kind, nth, ENOSPC);
      const bool done = save_input();
      const bool happened = faults::happened();
      faults::reset();
      EXPECT_EQ(open_descriptors(), open_before);
      if (!happened) {
        EXPECT_TRUE(done) << why.text();
        break;
      }
      ++failures;
      EXPECT_FALSE(done) << static_cast<int>(kind) << " no " << nth;
      EXPECT_THAT(why.text(), testing::StartsWith(top + "/"));
      EXPECT_THAT(why.text(), testing::EndsWith(": No space left on device"));
      EXPECT_EQ(saved(), old()) << static_cast<int>(kind) << " no " << nth;
      EXPECT_TRUE(save("afterwards")) << why.text();
      EXPECT_THAT(saved(), Optional(std::string{"afterwards"}));
    }
  }
  EXPECT_GT(failures, 15);
}

TEST_P(FlashReadRoad, every_call_of_a_read_that_fails_is_reported_and_leaves_the_file) {
  int failures = 0;
  for (const call kind : reported) {
    for (int nth = 1;; ++nth) {
      start_again();
      const int open_before = open_descriptors();
      faults::fail(kind, nth, ENOSPC);
      const bool done = read_into_output();
      const bool happened = faults::happened();
      faults::reset();
      EXPECT_EQ(open_descriptors(), open_before);
      EXPECT_FALSE(fs::exists(output + ".part"));
      if (!happened) {
        EXPECT_TRUE(done) << why.text();
        break;
      }
      ++failures;
      EXPECT_FALSE(done) << static_cast<int>(kind) << " no " << nth;
      EXPECT_THAT(why.text(), testing::EndsWith(": No space left on device"));
      EXPECT_EQ(files::read(output), "was there");
      EXPECT_EQ(saved(), old());
    }
  }
  EXPECT_GT(failures, 12);
}

TEST_P(FlashRoad, a_medium_that_fails_in_any_call_of_a_save_loses_nothing) {
  for (const call kind : reported) {
    for (int nth = 1;; ++nth) {
      start_again();
      faults::fail(kind, nth, EIO);
      const bool done = save_input();
      const bool happened = faults::happened();
      faults::reset();
      if (!happened) {
        break;
      }
      EXPECT_EQ(saved(), done ? text() : old()) << static_cast<int>(kind) << " no " << nth;
    }
  }
}

TEST_P(FlashRoad, a_close_that_fails_changes_nothing) {
  for (int nth = 1;; ++nth) {
    start_again();
    const int open_before = open_descriptors();
    faults::fail(call::close, nth);
    EXPECT_TRUE(save_input()) << why.text();
    const bool happened = faults::happened();
    faults::reset();
    EXPECT_EQ(open_descriptors(), open_before);
    EXPECT_EQ(saved(), text());
    if (!happened) {
      break;
    }
  }
}

TEST_P(FlashRoad, a_call_that_a_signal_interrupts_is_made_again) {
  for (const call kind :
       {call::openat, call::flock, call::pread, call::pwrite, call::fsync, call::ftruncate}) {
    for (int nth = 1;; ++nth) {
      start_again();
      faults::fail(kind, nth, EINTR);
      EXPECT_TRUE(save_input()) << why.text();
      EXPECT_EQ(saved(), text());
      if (!faults::happened()) {
        break;
      }
    }
  }
}

TEST_P(FlashRoad, a_folder_that_cannot_be_synced_at_all_is_no_failure_and_a_file_is) {
  effect_list effects;
  faults::note_effects(&effects);
  ASSERT_TRUE(save_input()) << why.text();
  faults::note_effects(nullptr);
  int nth = 0;
  for (const auto& each : effects) {
    if (each.what != faults::disk_effect::kind::synced) {
      continue;
    }
    ++nth;
    for (const int error : {EINVAL, EROFS}) {
      start_again();
      faults::fail(call::fsync, nth, error);
      const bool done = save_input();
      EXPECT_TRUE(faults::happened());
      EXPECT_EQ(done, fs::is_directory(each.path)) << each.path;
      EXPECT_EQ(why.text()[0] == '\0', done) << why.text();
      EXPECT_EQ(saved(), done ? text() : old()) << each.path;
    }
  }
  EXPECT_GE(nth, 4);
}

TEST_P(FlashRoad, transfers_in_small_parts_are_whole) {
  for (const std::size_t most : {1U, 7U}) {
    start_again();
    faults::shorten_transfers(most);
    EXPECT_TRUE(save_input()) << why.text();
    EXPECT_EQ(saved(), text());
    faults::shorten_transfers(0);
    EXPECT_EQ(saved(), text());
  }
}
