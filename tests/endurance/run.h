// What the endurance runs share: how long a run may take, where it gets its random numbers, and
// the report that ends in one line of figures.
//
// A run goes on until its time is over or its count is reached, whichever comes first. What it
// finds wrong, in whichever of its processes, is a violation; one violation fails the run.
#ifndef PROREFLAX_TESTS_ENDURANCE_RUN_H
#define PROREFLAX_TESTS_ENDURANCE_RUN_H

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <random>
#include <string>

#include "tests/support/child.h"

namespace endurance {

struct plan {
  double seconds = 1;
  unsigned seed = 1;

  /// The most that a run does of something that it may do so often a second.
  unsigned long at_most(double per_second) const {
    return std::max(1UL, static_cast<unsigned long>(seconds * per_second + 0.5));
  }
};

class deadline {
 public:
  explicit deadline(double seconds)
      : at_{std::chrono::steady_clock::now() +
            std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                std::chrono::duration<double>{seconds})} {}

  bool passed() const { return std::chrono::steady_clock::now() >= at_; }

 private:
  std::chrono::steady_clock::time_point at_;
};

/// One process's random numbers: the same for the same seed and number.
class dice {
 public:
  dice(const plan& of, unsigned number) : random_{of.seed * 1000003U + number} {}

  unsigned any() { return static_cast<unsigned>(random_()); }
  unsigned below(unsigned end) { return any() % end; }
  bool one_in(unsigned chances) { return below(chances) == 0; }
  void pause_up_to_us(unsigned microseconds) { usleep(below(microseconds + 1)); }

 private:
  std::mt19937 random_;
};

class report {
 public:
  /// Any process of the run may report a violation. The first ones are described on standard error.
  void violation(const char* format, ...) const __attribute__((format(printf, 2, 3)));
  unsigned long violations() const { return *violations_; }

  void figure(const std::string& text) { figures_ += (figures_.empty() ? "" : ", ") + text; }
  void figure(unsigned long count, const char* of_what) {
    figure(std::to_string(count) + ' ' + of_what);
  }
  const std::string& figures() const { return figures_; }

 private:
  shared<std::atomic<unsigned long>> violations_;
  std::string figures_;
};

void kill_storm(const plan& planned, report& found);
void exclusive_lock(const plan& planned, report& found);
void hostile_messages(const plan& planned, report& found);
void flood(const plan& planned, report& found);
void interrupted(const plan& planned, report& found);
void service_life(const plan& planned, report& found);
void flash_tool_kills(const plan& planned, report& found);
void damaged_slots(const plan& planned, report& found);
void mixed_work(const plan& planned, report& found);

}  // namespace endurance

#endif
