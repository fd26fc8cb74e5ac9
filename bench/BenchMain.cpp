// main() of every benchmark: the console report, then "name / baseline = ratio" lines.
#include "BenchMain.h"

#include <benchmark/benchmark.h>

#include <cstdio>
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

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration && run.iterations > 0)
        perIteration_[run.benchmark_name()] = run.GetAdjustedCPUTime();
    }
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    for (const Pair& pair : Pairs()) {
      const auto ours = perIteration_.find(pair.name);
      const auto theirs = perIteration_.find(pair.baseline);
      if (ours == perIteration_.end() || theirs == perIteration_.end() || theirs->second <= 0) continue;
      const double ratio = (ours->second / pair.work) / (theirs->second / pair.baselineWork);
      std::printf("ratio %s / %s = %.3f%s\n", pair.name.c_str(), pair.baseline.c_str(), ratio,
                  pair.work != pair.baselineWork ? " (per unit of work)" : "");
    }
    std::fflush(stdout);
  }

 private:
  std::map<std::string, double> perIteration_;
};

}  // namespace

void CompareWith(const char* name, const char* baseline, double work, double baselineWork) {
  Pairs().push_back({name, baseline, work, baselineWork});
}

}  // namespace parcelon::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  parcelon::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
