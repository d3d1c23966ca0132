// The flash copy tool is killed at random moments while it saves or reads. The next read gives the
// old text or the new one, whole; the file of a killed read is as it was, or whole.
#include "tests/endurance/flash_tool.h"

namespace endurance {
namespace {

constexpr double kills_per_second = 1000;

struct counts {
  unsigned long saves_killed = 0;
  unsigned long reads_killed = 0;
  unsigned long ended_before = 0;
  unsigned long old_kept = 0;
  unsigned long new_there = 0;
};

/// One of the tool's options, killed at moments spread over its run: the time to wait adapts
/// itself so that about seven of ten are killed before they end.
class victim {
 public:
  explicit victim(const char* option) : option_{option} {}

  /// Whether the tool was killed before it ended. An end by itself must be a success.
  bool is_killed(const flash_tool& tool, dice& random, const report& found) {
    const pid_t id = tool.launch(option_);
    random.pause_up_to_us(static_cast<unsigned>(longest_us_));
    kill(id, SIGKILL);
    const int status = wait_for_child(id);
    if (status != 0 && status != -SIGKILL) {
      found.violation("writeflash %s ended with status %d: %s", option_, status,
                      tool.message().c_str());
    }
    longest_us_ = std::clamp(longest_us_ * (status == 0 ? 0.977 : 1.01), 100.0, 1e6);
    return status == -SIGKILL;
  }

 private:
  const char* option_;
  double longest_us_ = 3000;
};

void kill_a_save(const flash_tool& tool, victim& save, dice& random, const report& found,
                 counts& seen, std::string& saved) {
  const std::string next = any_text(random, random.any());
  files::write(tool.file(), next);
  const bool killed = save.is_killed(tool, random, found);
  ++(killed ? seen.saves_killed : seen.ended_before);
  const auto now = tool.saved();
  if (now == next) {
    ++seen.new_there;
  } else if (now != saved) {
    found.violation("after a killed save: neither the old text nor the new one: %s",
                    tool.message().c_str());
  } else if (!killed) {
    found.violation("a save that succeeded is not there");
  } else {
    ++seen.old_kept;
  }
  saved = now.value_or("");
}

void kill_a_read(const flash_tool& tool, victim& read, dice& random, const report& found,
                 counts& seen, const std::string& saved) {
  const std::string before = "as it was";
  files::write(tool.file(), before);
  const bool killed = read.is_killed(tool, random, found);
  ++(killed ? seen.reads_killed : seen.ended_before);
  const auto now = files::read(tool.file());
  if (now != saved && (!killed || now != before)) {
    found.violation("the file of a killed read is neither as it was nor whole");
  }
}

}  // namespace

void flash_tool_kills(const plan& planned, report& found) {
  prepare_device();
  const flash_tool tool;
  dice random{planned, 0};
  victim save{"-w"};
  victim read{"-r"};
  std::string saved = any_text(random, 1);
  if (tool.save(saved) != 0) {
    found.violation("writeflash -w: %s", tool.message().c_str());
    return;
  }
  counts seen;
  unsigned long rounds = 0;
  for (const deadline over{planned.seconds};
       !over.passed() && rounds < planned.at_most(kills_per_second); ++rounds) {
    if (random.one_in(4)) {
      kill_a_read(tool, read, random, found, seen, saved);
    } else {
      kill_a_save(tool, save, random, found, seen, saved);
    }
  }
  found.figure(seen.saves_killed, "saves killed");
  found.figure(seen.reads_killed, "reads killed");
  found.figure(seen.ended_before, "ended before");
  found.figure(seen.old_kept, "times the old text");
  found.figure(seen.new_there, "times the new one");
}

}  // namespace endurance
