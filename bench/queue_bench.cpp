// A typed value over the queue, against the bare system calls of the same exchange. Both ask the
// same process, which answers every request with the same value at once.
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
constexpr char value_text[] = "0x00000064";
constexpr std::uint32_t value = 0x64;

bool ask_library() {
  std::uint32_t out = 0;
  return __cfc_get_u32(0, section_name, key, &out) == CFC_OK && out == value;
}

/// Asks `times` times; false as soon as an answer is missing or wrong.
template <typename Ask>
bool ask_repeatedly(int times, Ask ask) {
  for (int i = 0; i < times; ++i) {
    if (!ask()) {
      return false;
    }
  }
  return true;
}

bool ask_as(side side, int times, bare_client& bare) {
  return side == side::library
             ? ask_repeatedly(times, ask_library)
             : ask_repeatedly(times, [&] { return bare.ask() && bare.value() == value_text; });
}

void one_process(benchmark::State& state) {
  const request_queue queue;
  const echo_process echo{queue.queue_id(), {value_text}};
  bare_client bare{section_name, {key}};
  bool answered = true;
  compare(state, timed_by::wall, 1.05,
          [&](side side) { answered = answered && ask_as(side, 20, bare); });
  if (!answered) {
    state.SkipWithError("an answer was missing or wrong");
  }
}

/// Processes that ask all at once. They stay for all rounds: starting and ending them costs more
/// than what is measured.
class crowd {
 public:
  static constexpr int size = 64;
  static constexpr int questions = 5;

  crowd();
  ~crowd();
  crowd(const crowd&) = delete;
  crowd& operator=(const crowd&) = delete;

  /// Lets every process ask its questions, and waits until all are done.
  void ask(side side);
  bool always_answered() const { return shared_->answered; }

 private:
  struct shared_memory {
    pthread_barrier_t start;
    pthread_barrier_t end;
    side asked = side::library;
    volatile bool answered = true;
  };

  [[noreturn]] void work() const;

  shared_memory* shared_;
  std::array<pid_t, size> workers_{};
};

crowd::crowd() {
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

crowd::~crowd() {
  for (const pid_t worker : workers_) {
    kill(worker, SIGTERM);
    waitpid(worker, nullptr, 0);
  }
  munmap(shared_, sizeof(shared_memory));
}

void crowd::ask(side side) {
  shared_->asked = side;
  pthread_barrier_wait(&shared_->start);
  pthread_barrier_wait(&shared_->end);
}

void crowd::work() const {
  bare_client bare{section_name, {key}};
  for (;;) {
    pthread_barrier_wait(&shared_->start);
    if (!ask_as(shared_->asked, questions, bare)) {
      shared_->answered = false;
    }
    pthread_barrier_wait(&shared_->end);
  }
}

void many_processes(benchmark::State& state) {
  const request_queue queue;
  const echo_process echo{queue.queue_id(), {value_text}};
  crowd crowd;
  compare(state, timed_by::wall, 1.05, [&](side side) { crowd.ask(side); });
  if (!crowd.always_answered()) {
    state.SkipWithError("an answer was missing or wrong");
  }
}

BENCHMARK(one_process)->Name("typed get over the queue")->UseManualTime()->Iterations(3000);
BENCHMARK(many_processes)
    ->Name("typed get, 64 processes at once")
    ->UseManualTime()
    ->Iterations(400);

}  // namespace
