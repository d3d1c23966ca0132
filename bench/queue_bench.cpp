// A typed value over the queue, against the bare system calls of the same exchange. Both use the
// same process, which immediately replies to every request with the same value.
#include <benchmark/benchmark.h>
#include <proreflax/config.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <new>
#include <stdexcept>

#include "bench/bare_queue.h"
#include "bench/ratio.h"
#include "tests/support/request_queue.h"

namespace {

using namespace bench;

constexpr char section_name[] = "WIRELESS";
constexpr char key[] = "beacon_interval";
constexpr char value_string[] = "0x00000064";
constexpr std::uint32_t value = 0x64;

bool get_with_library() {
  std::uint32_t out = 0;
  return __cfc_get_u32(0, section_name, key, &out) == CFC_OK && out == value;
}

/// Gets the value `times` times; false as soon as a reply is missing or wrong.
template <typename Get>
bool get_repeatedly(int times, Get get) {
  for (int i = 0; i < times; ++i) {
    if (!get()) {
      return false;
    }
  }
  return true;
}

bool get_as(side side, int times, bare_client& bare) {
  return side == side::library ? get_repeatedly(times, get_with_library)
                               : get_repeatedly(times, [&] {
                                   return bare.get_values() && bare.value() == value_string;
                                 });
}

void one_process(benchmark::State& state) {
  const request_queue queue;
  const echo_process echo{queue.queue_id(), {value_string}};
  bare_client bare{section_name, {key}};
  bool correct = true;
  compare(state, timed_by::wall, 1.05,
          [&](side side) { correct = correct && get_as(side, 20, bare); });
  if (!correct) {
    state.SkipWithError("a reply was missing or wrong");
  }
}

/// Processes that send requests at the same time. They run for all rounds: starting and ending them
/// costs more than what is measured.
class client_group {
 public:
  static constexpr int size = 64;
  static constexpr int requests = 5;

  client_group();
  ~client_group();
  client_group(const client_group&) = delete;
  client_group& operator=(const client_group&) = delete;

  /// Lets every process send its requests, and waits until all are done.
  void run(side side);
  bool always_correct() const { return shared_->correct; }

 private:
  struct shared_memory {
    pthread_barrier_t start;
    pthread_barrier_t end;
    side measured = side::library;
    volatile bool correct = true;
  };

  [[noreturn]] void work() const;

  shared_memory* shared_;
  std::array<pid_t, size> workers_{};
};

client_group::client_group() {
  void* const memory = mmap(nullptr, sizeof(shared_memory), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) {
    throw std::runtime_error("no shared memory");
  }
  shared_ = new (memory) shared_memory;
  pthread_barrierattr_t across_processes;
  pthread_barrierattr_init(&across_processes);
  pthread_barrierattr_setpshared(&across_processes, PTHREAD_PROCESS_SHARED);
  pthread_barrier_init(&shared_->start, &across_processes, size + 1);
  pthread_barrier_init(&shared_->end, &across_processes, size + 1);
  for (pid_t& worker : workers_) {
    worker = fork();
    if (worker == -1) {
      throw std::runtime_error("cannot start a process");
    }
    if (worker == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      work();
    }
  }
}

client_group::~client_group() {
  for (const pid_t worker : workers_) {
    kill(worker, SIGTERM);
    waitpid(worker, nullptr, 0);
  }
  munmap(shared_, sizeof(shared_memory));
}

void client_group::run(side side) {
  shared_->measured = side;
  pthread_barrier_wait(&shared_->start);
  pthread_barrier_wait(&shared_->end);
}

void client_group::work() const {
  bare_client bare{section_name, {key}};
  for (;;) {
    pthread_barrier_wait(&shared_->start);
    if (!get_as(shared_->measured, requests, bare)) {
      shared_->correct = false;
    }
    pthread_barrier_wait(&shared_->end);
  }
}

void many_processes(benchmark::State& state) {
  const request_queue queue;
  const echo_process echo{queue.queue_id(), {value_string}};
  client_group clients;
  compare(state, timed_by::wall, 1.05, [&](side side) { clients.run(side); });
  if (!clients.always_correct()) {
    state.SkipWithError("a reply was missing or wrong");
  }
}

BENCHMARK(one_process)->Name("typed get over the queue")->UseManualTime()->Iterations(3000);
BENCHMARK(many_processes)
    ->Name("typed get, 64 processes at once")
    ->UseManualTime()
    ->Iterations(400);

}  // namespace
