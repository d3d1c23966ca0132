// One `cfc get` as a process, from its start to its end, against a bare C program that makes the
// same call of the library. A script of the device pays this for every value.
//
// cfc is linked as it is for a device, with the C++ runtime in it: a dynamic libstdc++ alone
// doubles the figure.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/bare_queue.h"
#include "bench/ratio.h"
#include "tests/support/request_queue.h"

namespace {

using namespace bench;

/// Runs a program with nowhere for standard output; whether it ended with 0.
class runner {
 public:
  runner() {
    posix_spawn_file_actions_init(&actions_);
    posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  }
  ~runner() { posix_spawn_file_actions_destroy(&actions_); }
  runner(const runner&) = delete;
  runner& operator=(const runner&) = delete;

  bool run(const char* const* words) const {
    pid_t child = -1;
    int status = -1;
    return posix_spawn(&child, words[0], &actions_, nullptr, const_cast<char* const*>(words),
                       environ) == 0 &&
           waitpid(child, &status, 0) == child && status == 0;
  }

 private:
  posix_spawn_file_actions_t actions_{};
};

void one_get(benchmark::State& state) {
  constexpr const char* command[] = {PROREFLAX_BENCH_CFC, "get", "WIRELESS", "beacon_interval",
                                     nullptr};
  constexpr const char* bare[] = {PROREFLAX_BENCH_BARE_GET, nullptr};
  const request_queue queue;
  const echo_process echo{queue.queue_id(), {"0x00000064"}};
  const runner programs;
  bool ran = true;
  compare(state, timed_by::wall, 1.25, [&](side side) {
    for (int i = 0; i < 5; ++i) {
      ran = ran && programs.run(side == side::library ? command : bare);
    }
  });
  if (!ran) {
    state.SkipWithError("a program failed");
  }
}

BENCHMARK(one_get)->Name("cfc get as a process")->UseManualTime()->Iterations(500);

}  // namespace
