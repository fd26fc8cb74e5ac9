// A feature switch read through the settings service, against the one system call (a stat of the
// settings file) that reading the file at every use would cost at the least.
#include <benchmark/benchmark.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "BenchMain.h"
#include "diagnostics/FeatureSettings.h"
#include "platform/Paths.h"

namespace {

const std::string& SettingsFile() {
  static const std::string path = [] {
    std::string file = (std::filesystem::temp_directory_path() / "parcelon-bench-settings.aov").string();
    if (FILE* f = std::fopen(file.c_str(), "w")) {
      std::fputs("[ZPSSettings]\nNetworkAdapter.IndentXML=1\nNetworkAdapter.PDFChunk=1000\n", f);
      std::fclose(f);
    }
    parcelon::SetEnv("PARCELON_SETTINGS", file.c_str());
    AmbitAccess::Reload();
    return file;
  }();
  return path;
}

void BM_FeatureSwitchRead(benchmark::State& state) {
  SettingsFile();
  for (auto _ : state)
    benchmark::DoNotOptimize(AmbitAccess::GetFeatureParamAsBool("ZPSSettings", "NetworkAdapter.IndentXML", nullptr));
}
BENCHMARK(BM_FeatureSwitchRead);

void BM_StatOfSettingsFile(benchmark::State& state) {
  const std::string& file = SettingsFile();
  struct stat status;
  for (auto _ : state) benchmark::DoNotOptimize(stat(file.c_str(), &status));
}
BENCHMARK(BM_StatOfSettingsFile);

const bool kPairs = [] {
  parcelon::bench::CompareWith("BM_FeatureSwitchRead", "BM_StatOfSettingsFile");
  return true;
}();

}  // namespace
