// The reference host at three sizes: loading a synthetic company (time per name should stay flat,
// memory per name is reported) and lookups by record number and by index (constant time).
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "BenchMain.h"
#include "host/HostModel.h"
#include "refhost/ComObject.h"
#include "refhost/CompanyData.h"
#include "refhost/Fixture.h"
#include "refhost/ReferenceHost.h"
#include "refhost/SyntheticCompany.h"

namespace {

using parcelon::refhost::Company;
using parcelon::refhost::ReferenceHost;

const std::string& Fixture(int names) {
  static std::map<int, std::string> texts;
  auto& text = texts[names];
  if (text.empty()) text = parcelon::refhost::SyntheticCompanyJson(names);
  return text;
}

// Bytes allocated and not freed, counting the large blocks that malloc maps on their own.
size_t BytesInUse() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void BM_LoadSyntheticCompany(benchmark::State& state) {
  const int names = int(state.range(0));
  const std::string& text = Fixture(names);
  size_t bytes = 0;
  for (auto _ : state) {
    const size_t before = BytesInUse();
    auto company = std::make_shared<Company>();
    std::string error;
    if (FAILED(parcelon::refhost::LoadFixtureText(text, "synthetic.json", *company, error))) {
      state.SkipWithError(error.c_str());
      break;
    }
    bytes = BytesInUse() - before;
    benchmark::DoNotOptimize(company.get());
    // Freeing the company is not part of loading it.
    state.PauseTiming();
    company.reset();
    state.ResumeTiming();
  }
  state.counters["ns/name"] = benchmark::Counter(double(names), benchmark::Counter::kIsIterationInvariantRate |
                                                                      benchmark::Counter::kInvert);
  state.counters["bytes/name"] = double(bytes) / names;
}
BENCHMARK(BM_LoadSyntheticCompany)
    ->Arg(1000)
    ->Arg(10000)
    ->Arg(100000)
    ->MinTime(2)  // several loads of the largest company, not one
    ->Unit(benchmark::kMillisecond);

// The company's customer list, from a host loaded once per size.
ComPtr<ICustomers> Customers(int names) {
  static std::map<int, std::unique_ptr<ReferenceHost>> hosts;
  auto& host = hosts[names];
  if (!host) {
    auto company = std::make_shared<Company>();
    std::string error;
    parcelon::refhost::LoadFixtureText(Fixture(names), "synthetic.json", *company, error);
    host = std::make_unique<ReferenceHost>(company);
  }
  ComPtr<ICompanyFile> file;
  ComPtr<ILists> lists;
  ComPtr<ICustomers> customers;
  host->GetCompanyFile(file.ReleaseAndGetAddressOf());
  file->GetLists(lists.ReleaseAndGetAddressOf());
  lists->GetCustomers(customers.ReleaseAndGetAddressOf());
  return customers;
}

// Look-ups cycle over the same number of distinct customers at every size (all of them at 1k),
// picked at random positions with a fixed seed, so that every size touches about the same memory
// per look-up: one slot of the index, one record and the element object made for it. The figures
// then compare the look-up itself rather than how much of the company fits in the processor's
// caches. (Picks evenly spaced over a list of 100k fall 100 records apart, a stride that maps
// them onto a few cache sets and measures the cache's associativity instead.)
constexpr size_t kTouched = 1000;

std::vector<int> TouchedPositions(int names) {
  std::vector<int> positions(static_cast<size_t>(names));
  std::iota(positions.begin(), positions.end(), 0);
  std::shuffle(positions.begin(), positions.end(), std::mt19937(20261123));
  positions.resize(std::min(kTouched, positions.size()));
  return positions;
}

void BM_LookupByRecNum(benchmark::State& state) {
  const int names = int(state.range(0));
  ComPtr<ICustomers> customers = Customers(names);
  VARIANT recNum;
  VariantInit(&recNum);
  recNum.vt = VT_I4;
  const std::vector<int> touched = TouchedPositions(names);
  size_t step = 0;
  for (auto _ : state) {
    recNum.lVal = 1000 + touched[step];
    if (++step == touched.size()) step = 0;
    IName* name = nullptr;
    customers->GetItemByRecNum(recNum, &name);
    benchmark::DoNotOptimize(name);
    if (name) name->Release();
  }
}
BENCHMARK(BM_LookupByRecNum)->Arg(1000)->Arg(10000)->Arg(100000);

void BM_LookupByIndex(benchmark::State& state) {
  const int names = int(state.range(0));
  ComPtr<ICustomers> customers = Customers(names);
  const std::vector<int> touched = TouchedPositions(names);
  size_t step = 0;
  for (auto _ : state) {
    IName* name = nullptr;
    customers->GetItem(touched[step], &name);
    if (++step == touched.size()) step = 0;
    benchmark::DoNotOptimize(name);
    if (name) name->Release();
  }
}
BENCHMARK(BM_LookupByIndex)->Arg(1000)->Arg(10000)->Arg(100000);

const bool kPairs = [] {
  parcelon::bench::CompareWith("BM_LoadSyntheticCompany/100000/min_time:2.000", "BM_LoadSyntheticCompany/1000/min_time:2.000", 100000, 1000);
  parcelon::bench::CompareWith("BM_LoadSyntheticCompany/10000/min_time:2.000", "BM_LoadSyntheticCompany/1000/min_time:2.000", 10000, 1000);
  parcelon::bench::CompareWith("BM_LookupByRecNum/100000", "BM_LookupByRecNum/1000");
  parcelon::bench::CompareWith("BM_LookupByRecNum/10000", "BM_LookupByRecNum/1000");
  parcelon::bench::CompareWith("BM_LookupByIndex/100000", "BM_LookupByIndex/1000");
  parcelon::bench::CompareWith("BM_LookupByIndex/10000", "BM_LookupByIndex/1000");
  return true;
}();

}  // namespace
