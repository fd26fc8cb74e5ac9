// main() of every benchmark: the console report, then the median of each benchmark and the
// "name / baseline = ratio" lines of the declared pairs.
#include "BenchMain.h"

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace parcelon::bench {
namespace {

struct Pair {
  std::string name, baseline;
  double work, baselineWork;
};

std::vector<Pair>& Pairs() {
  static std::vector<Pair> pairs;
  return pairs;
}

// Five repetitions: every figure printed at the end is their median.
const std::vector<std::string> kDefaultFlags = {"--benchmark_repetitions=5"};
// One short repetition of each benchmark, sizes of five digits and more left out.
const std::vector<std::string> kQuickFlags = {"--benchmark_repetitions=1", "--benchmark_min_time=0.01",
                                              "--benchmark_filter=-/[0-9]{5,}(/|$)"};

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const size_t middle = values.size() / 2;
  return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// "12.345 ms": seconds in the unit that keeps the figure between 1 and 1000.
std::string Duration(double seconds) {
  static constexpr std::pair<double, const char*> kUnits[] = {{1, "s"}, {1e-3, "ms"}, {1e-6, "us"}};
  char text[48];
  for (const auto& [scale, unit] : kUnits) {
    if (seconds >= scale) {
      std::snprintf(text, sizeof text, "%.3f %s", seconds / scale, unit);
      return text;
    }
  }
  std::snprintf(text, sizeof text, "%.3f ns", seconds * 1e9);
  return text;
}

class MedianReporter : public benchmark::ConsoleReporter {
 public:
  // Colours only on a terminal: a log keeps plain text.
  MedianReporter() : ConsoleReporter(isatty(fileno(stdout)) ? OO_ColorTabular : OO_Tabular) {}

  // True when a benchmark reported an error (SkipWithError).
  bool Failed() const { return failed_; }

  // Shows the statistics of a benchmark's repetitions (or its one run, or its errors) and keeps
  // the CPU seconds per iteration of every repetition, by benchmark name; failed runs are left
  // out.
  void ReportRuns(const std::vector<Run>& runs) override {
    const bool repeated = std::any_of(runs.begin(), runs.end(),
                                      [](const Run& run) { return run.run_type == Run::RT_Aggregate; });
    std::vector<Run> shown;
    for (const Run& run : runs) {
      if (run.error_occurred)
        failed_ = true;
      else if (run.run_type == Run::RT_Iteration && run.iterations > 0)
        repetitions_[run.benchmark_name()].push_back(run.cpu_accumulated_time / double(run.iterations));
      if (!repeated || run.run_type == Run::RT_Aggregate || run.error_occurred) shown.push_back(run);
    }
    ConsoleReporter::ReportRuns(shown);
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\nMedian CPU time per iteration:\n");
    for (const auto& [name, times] : repetitions_)
      std::printf("median %s = %s (%zu repetitions)\n", name.c_str(), Duration(Median(times)).c_str(), times.size());
    for (const Pair& pair : Pairs()) {
      const auto ours = repetitions_.find(pair.name);
      const auto theirs = repetitions_.find(pair.baseline);
      if (ours == repetitions_.end() || theirs == repetitions_.end()) continue;
      const double baseline = Median(theirs->second) / pair.baselineWork;
      if (baseline <= 0) continue;
      const double ratio = (Median(ours->second) / pair.work) / baseline;
      std::printf("ratio %s / %s = %.3f (medians of %zu and %zu)%s\n", pair.name.c_str(), pair.baseline.c_str(),
                  ratio, ours->second.size(), theirs->second.size(),
                  pair.work != pair.baselineWork ? ", per unit of work" : "");
    }
    std::fflush(stdout);
  }

 private:
  std::map<std::string, std::vector<double>> repetitions_;
  bool failed_ = false;
};

}  // namespace

void CompareWith(const char* name, const char* baseline, double work, double baselineWork) {
  Pairs().push_back({name, baseline, work, baselineWork});
}

}  // namespace parcelon::bench

int main(int argc, char** argv) {
  // The defaults come first, so that flags given on the command line win.
  bool quick = false;
  std::vector<std::string> given;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--quick") == 0)
      quick = true;
    else
      given.emplace_back(argv[i]);
  }
  std::vector<std::string> flags = quick ? parcelon::bench::kQuickFlags : parcelon::bench::kDefaultFlags;
  flags.insert(flags.end(), given.begin(), given.end());
  std::vector<char*> arguments{argv[0]};
  for (std::string& flag : flags) arguments.push_back(flag.data());
  int count = int(arguments.size());
  arguments.push_back(nullptr);

  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
  parcelon::bench::MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  // A benchmark that could not do its work fails the run, so that a quick run in CI catches it.
  return reporter.Failed() ? 1 : 0;
}
