// Ratios that are valid on a noisy machine: the cost of the library against that of a peer for the
// same work, both measured in one run.
//
// One round times the library and the peer one immediately after the other, in alternating order;
// its ratio is that of the two times. The figure is the median over many short rounds, so a burst
// of other load affects a few rounds and not the figure. Absolute times are not printed: they would
// depend on the machine.
#ifndef PROREFLAX_BENCH_RATIO_H
#define PROREFLAX_BENCH_RATIO_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <utility>
#include <vector>

namespace bench {

/// The limit of a figure that has none.
inline constexpr double no_limit = 0;

/// The clock of a round: the processor time of this process, which other load does not affect, or
/// wall-clock time for work that waits for other processes.
enum class timed_by : clockid_t {
  processor = CLOCK_PROCESS_CPUTIME_ID,
  wall = CLOCK_MONOTONIC,
};

inline double seconds_now(timed_by clock) {
  timespec now{};
  clock_gettime(static_cast<clockid_t>(clock), &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

template <typename Work>
double seconds_of(timed_by clock, Work&& work) {
  const double start = seconds_now(clock);
  work();
  return seconds_now(clock) - start;
}

/// The middle one, or the upper of the two in the middle.
inline double median(std::vector<double> numbers) {
  const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
  std::nth_element(numbers.begin(), middle, numbers.end());
  return *middle;
}

/// Measures a tenth of the rounds, for a rough look.
inline bool quick = false;

enum class side { library, peer };

/// Measures one figure and reports it in the counters "ratio" and "limit". A round is one iteration
/// of the benchmark, whose time is the library's. `work(side)` does one round's work of a side.
template <typename Work>
void compare(benchmark::State& state, timed_by clock, double limit, Work&& work) {
  work(side::library);
  work(side::peer);
  std::vector<double> ratios;
  const std::size_t rounds = static_cast<std::size_t>(state.max_iterations) / (quick ? 10 : 1) + 1;
  bool library_first = true;
  for ([[maybe_unused]] auto round : state) {
    if (ratios.size() == rounds) {
      state.SetIterationTime(0);
      continue;
    }
    const side first = library_first ? side::library : side::peer;
    const side second = library_first ? side::peer : side::library;
    double library = seconds_of(clock, [&] { work(first); });
    double peer = seconds_of(clock, [&] { work(second); });
    if (!library_first) {
      std::swap(library, peer);
    }
    state.SetIterationTime(library);
    ratios.push_back(library / peer);
    library_first = !library_first;
  }
  state.counters["ratio"] = median(std::move(ratios));
  state.counters["limit"] = limit;
}

}  // namespace bench

#endif
