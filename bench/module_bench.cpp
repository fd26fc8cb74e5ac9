// The module's class object: create and release a session through IClassFactory, a million
// cycles at a time (time per cycle, and resident memory before and after the cycles, which must
// not grow), beside new and delete of a block of the same size.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <memory>

#include "BenchMain.h"
#include "component/ClassObjects.h"
#include "component/ComObject.h"
#include "component/NA_Forms.h"
#include "interfaces/ParcelonInterfaces.h"

namespace {

// The resident set of the process in KiB (/proc/self/statm counts pages).
double ResidentKiB() {
  long pages = 0, resident = 0;
  if (FILE* statm = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(statm, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(statm);
  }
  return double(resident) * 4.0;
}

size_t BytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void Report(benchmark::State& state, double residentBefore, size_t bytesBefore) {
  state.counters["ns/cycle"] = benchmark::Counter(double(state.range(0)), benchmark::Counter::kIsIterationInvariantRate |
                                                                             benchmark::Counter::kInvert);
  state.counters["RSS before KiB"] = residentBefore;
  state.counters["RSS after KiB"] = ResidentKiB();
  state.counters["heap growth B"] = double(BytesInUse()) - double(bytesBefore);
}

void BM_CreateReleaseThroughClassObject(benchmark::State& state) {
  IClassFactory* factory = nullptr;
  if (FAILED(parcelon::GetClassObject(CLSID_NA_Forms, IidOf<IClassFactory>(),
                                      reinterpret_cast<void**>(&factory)))) {
    state.SkipWithError("no class object");
    return;
  }
  const double residentBefore = ResidentKiB();
  const size_t bytesBefore = BytesInUse();
  for (auto _ : state) {
    for (int64_t cycle = 0; cycle < state.range(0); ++cycle) {
      INA_Forms2* session = nullptr;
      if (FAILED(factory->CreateInstance(nullptr, IidOf<INA_Forms2>(), reinterpret_cast<void**>(&session)))) {
        state.SkipWithError("CreateInstance failed");
        break;
      }
      session->Release();
    }
  }
  factory->Release();
  Report(state, residentBefore, bytesBefore);
}
BENCHMARK(BM_CreateReleaseThroughClassObject)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// The baseline: allocating and freeing a block of the session object's size, nothing built in it.
void BM_NewDeleteOfTheSameSize(benchmark::State& state) {
  struct SameSize {
    alignas(alignof(parcelon::CComObject<CNA_Forms>)) unsigned char bytes[sizeof(parcelon::CComObject<CNA_Forms>)];
  };
  const double residentBefore = ResidentKiB();
  const size_t bytesBefore = BytesInUse();
  for (auto _ : state) {
    for (int64_t cycle = 0; cycle < state.range(0); ++cycle) {
      auto* block = new SameSize;
      benchmark::DoNotOptimize(block);
      delete block;
    }
  }
  Report(state, residentBefore, bytesBefore);
}
BENCHMARK(BM_NewDeleteOfTheSameSize)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMillisecond);

[[maybe_unused]] const bool compared = [] {
  parcelon::bench::CompareWith("BM_CreateReleaseThroughClassObject/1000000", "BM_NewDeleteOfTheSameSize/1000000");
  parcelon::bench::CompareWith("BM_CreateReleaseThroughClassObject/1000", "BM_NewDeleteOfTheSameSize/1000");
  return true;
}();

}  // namespace
