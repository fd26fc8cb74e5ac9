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

std::vector<std::pair<std::string, std::string>>& Pairs() {
  static std::vector<std::pair<std::string, std::string>> pairs;
  return pairs;
}

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.run_type == Run::RT_Iteration && run.iterations > 0)
        perIteration_[run.benchmark_name()] = run.GetAdjustedRealTime();
    }
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    for (const auto& [name, baseline] : Pairs()) {
      const auto ours = perIteration_.find(name);
      const auto theirs = perIteration_.find(baseline);
      if (ours == perIteration_.end() || theirs == perIteration_.end() || theirs->second <= 0) continue;
      std::printf("ratio %s / %s = %.3f\n", name.c_str(), baseline.c_str(), ours->second / theirs->second);
    }
    std::fflush(stdout);
  }

 private:
  std::map<std::string, double> perIteration_;
};

}  // namespace

void CompareWith(const char* name, const char* baseline) { Pairs().emplace_back(name, baseline); }

}  // namespace parcelon::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  parcelon::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
