// Measures the figures and prints them as a table: what was measured, its ratio, the limit and
// whether it is met. Exits with 1 when a limit is exceeded or a figure could not be measured.
//
// --quick measures a tenth of the rounds; its figures are rough, and only a ratio of more than 1.25
// times its limit counts as a failure. The options of Google Benchmark work too:
// --benchmark_filter=REGEX selects figures, --benchmark_out=FILE writes the times and all other
// data.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "bench/ratio.h"
#include "tests/support/private_ipc.h"

namespace {

class figure_table : public benchmark::BenchmarkReporter {
 public:
  /// A figure fails when it exceeds its limit times `tolerance`.
  explicit figure_table(double tolerance) : tolerance_{tolerance} {}

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
  bool print(const Run& run) const {
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
    const char* const verdict = ratio <= limit ? "ok" : "over";
    std::printf("%-40s %7.3f %7.2f %s\n", what, ratio, limit, verdict);
    return ratio <= limit * tolerance_;
  }

  double tolerance_;
  bool all_hold_ = true;
};

/// Whether --quick is among the arguments; removes it from them.
bool take_quick(int& argc, char** argv) {
  int kept = 1;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--quick") != 0) {
      argv[kept++] = argv[i];
    }
  }
  const bool quick = kept < argc;
  argc = kept;
  argv[kept] = nullptr;
  return quick;
}

}  // namespace

int main(int argc, char** argv) {
  bench::quick = take_quick(argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv) || !enter_private_ipc_namespace()) {
    return 1;
  }
  figure_table table{bench::quick ? 1.25 : 1.0};
  const std::size_t measured = benchmark::RunSpecifiedBenchmarks(&table);
  return measured > 0 && table.all_hold() ? 0 : 1;
}
