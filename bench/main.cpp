// Runs the benchmarks and prints their figures as a table: what was measured, its ratio, the limit
// and whether it holds. Ends with 1 when a limit is exceeded or a figure could not be measured.
//
// The options of Google Benchmark work; --benchmark_out=FILE keeps the times and all else.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

#include "tests/support/private_ipc.h"

namespace {

class figure_table : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override {
    std::printf("%-40s %7s %7s\n", "what", "ratio", "limit");
    return true;
  }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      all_hold_ = print(run) && all_hold_;
      std::fflush(stdout);
    }
  }

  bool all_hold() const { return all_hold_; }

 private:
  static bool print(const Run& run) {
    const char* const what = run.run_name.function_name.c_str();
    if (run.error_occurred) {
      std::printf("%-40s failed: %s\n", what, run.error_message.c_str());
      return false;
    }
    const double ratio = run.counters.at("ratio");
    const double limit = run.counters.at("limit");
    if (limit == 0) {
      std::printf("%-40s %7.3f %7s\n", what, ratio, "-");
      return true;
    }
    const bool holds = ratio <= limit;
    std::printf("%-40s %7.3f %7.2f %s\n", what, ratio, limit, holds ? "ok" : "over");
    return holds;
  }

  bool all_hold_ = true;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv) || !enter_private_ipc_namespace()) {
    return 1;
  }
  figure_table table;
  const std::size_t measured = benchmark::RunSpecifiedBenchmarks(&table);
  return measured > 0 && table.all_hold() ? 0 : 1;
}
