// Ratios that hold on a noisy machine: what the library costs against what a peer costs for the same
// work, both measured in one run.
//
// One round times the library's side and the peer's side, one right behind the other, in turning
// order; its ratio is that of the two times. The figure is the median over many short rounds, so a
// burst of foreign load spoils a few rounds and not the figure. Times as such are printed nowhere:
// they would tell about the machine.
#ifndef PROREFLAX_BENCH_RATIO_H
#define PROREFLAX_BENCH_RATIO_H

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace bench {

/// The limit of a figure that has none.
inline constexpr double no_limit = 0;

template <typename Work>
double seconds_of(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The middle one, or the upper of the two in the middle.
inline double median(std::vector<double> numbers) {
  const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
  std::nth_element(numbers.begin(), middle, numbers.end());
  return *middle;
}

/// Measures one figure: a round is one iteration of the benchmark, whose time is the library's.
/// `work(side)` does one round's work of either side.
enum class side { library, peer };

template <typename Work>
void compare(benchmark::State& state, double limit, Work&& work) {
  work(side::library);
  work(side::peer);
  std::vector<double> ratios;
  bool library_first = true;
  for ([[maybe_unused]] auto round : state) {
    const side first = library_first ? side::library : side::peer;
    const side second = library_first ? side::peer : side::library;
    double library = seconds_of([&] { work(first); });
    double peer = seconds_of([&] { work(second); });
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
