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

/// How long the tool takes, in microseconds.
unsigned usual_us(const flash_tool& tool, const char* option, dice& random) {
  constexpr unsigned tries = 20;
  std::chrono::steady_clock::duration took{};
  for (unsigned i = 0; i < tries; ++i) {
    files::write(tool.file(), any_text(random, i));
    const auto began = std::chrono::steady_clock::now();
    tool.run(option);
    took += std::chrono::steady_clock::now() - began;
  }
  return static_cast<unsigned>(
      std::chrono::duration_cast<std::chrono::microseconds>(took / tries).count());
}

/// Whether the tool was killed before it ended. An end by itself must be a success.
bool killed_at_random(const flash_tool& tool, const char* option, dice& random, unsigned span_us,
                      const report& found) {
  const pid_t id = tool.launch(option);
  random.pause_up_to_us(span_us);
  kill(id, SIGKILL);
  const int status = wait_for_child(id);
  if (status != 0 && status != -SIGKILL) {
    found.violation("writeflash %s ended with status %d: %s", option, status,
                    tool.message().c_str());
  }
  return status == -SIGKILL;
}

void kill_a_save(const flash_tool& tool, dice& random, unsigned span_us, const report& found,
                 counts& seen, std::string& saved) {
  const std::string next = any_text(random, random.any());
  files::write(tool.file(), next);
  const bool killed = killed_at_random(tool, "-w", random, span_us, found);
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

void kill_a_read(const flash_tool& tool, dice& random, unsigned span_us, const report& found,
                 counts& seen, const std::string& saved) {
  const std::string before = "as it was";
  files::write(tool.file(), before);
  const bool killed = killed_at_random(tool, "-r", random, span_us, found);
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
  const unsigned save_us = usual_us(tool, "-w", random);
  const unsigned read_us = usual_us(tool, "-r", random);
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
      kill_a_read(tool, random, read_us, found, seen, saved);
    } else {
      kill_a_save(tool, random, save_us, found, seen, saved);
    }
  }
  found.figure(seen.saves_killed, "saves killed");
  found.figure(seen.reads_killed, "reads killed");
  found.figure(seen.ended_before, "ended before");
  found.figure(seen.old_kept, "times the old text");
  found.figure(seen.new_there, "times the new one");
}

}  // namespace endurance
