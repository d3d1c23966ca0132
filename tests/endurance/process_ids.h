// Process ids that come round soon, where the kernel lets the run say which one is next: a number
// of the run's PID namespace alone.
#ifndef PROREFLAX_TESTS_ENDURANCE_PROCESS_IDS_H
#define PROREFLAX_TESTS_ENDURANCE_PROCESS_IDS_H

#include <fstream>

#include "tests/endurance/run.h"

namespace endurance {

class process_ids {
 public:
  explicit process_ids(pid_t in_use) : end_{first + in_use} {}

  /// To be called for each process that was started: the id after the last one is the first again.
  void started(pid_t id) {
    if (id < first || id >= end_) {
      std::ofstream file{"/proc/sys/kernel/ns_last_pid"};
      file << first << std::flush;
      rounds_ += file.good() ? 1U : 0U;
    }
  }

  void report_rounds(report& found) const {
    if (rounds_ == 0) {
      found.figure("process ids could not be made to come round");
    } else {
      found.figure(rounds_ - 1, "times round all process ids");
    }
  }

 private:
  static constexpr pid_t first = 1000;
  pid_t end_;
  unsigned long rounds_ = 0;
};

}  // namespace endurance

#endif
