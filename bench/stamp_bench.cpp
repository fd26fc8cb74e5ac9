// Stamping the customers an accepted upload carried: every customer of a synthetic company of
// 1,000, 10,000 and 100,000 names, in memory (the cost per record should stay flat) and with
// the SQLite company store, where the stamps of a pass are one transaction; beside it the same
// stamping with one transaction per record, which shows where the store's time goes.
#include <benchmark/benchmark.h>

#if PARCELON_HAVE_SQLITE
#include <stdlib.h>
#include <unistd.h>
#endif

#include <cstdio>
#include <map>
#include <memory>
#include <string>

#include "BenchMain.h"
#include "LoadedCompany.h"
#include "refhost/CompanyData.h"
#include "refhost/Fixture.h"
#include "refhost/ReferenceHost.h"
#include "refhost/SyntheticCompany.h"
#include "upload/UploadAttributes.h"

namespace {

using parcelon::refhost::Company;
using parcelon::refhost::ReferenceHost;

// The first customer's record number in the synthetic company.
constexpr LONG kFirstName = 1000;

using parcelon::bench::LoadedCompany;

// Every customer and job marked as sent.
CRecNumMap AllNamesSent(int names) {
  CRecNumMap map;
  for (LONG recNum = kFirstName; recNum < kFirstName + names; ++recNum)
    map(RecordKind::kCustomerJob, recNum) = kMarkSentSelected;
  return map;
}

// Stamps every name once per iteration, each time with a new time so that every record changes.
void StampAll(benchmark::State& state, ReferenceHost& host, int names) {
  if (FAILED(host.Register())) return state.SkipWithError("registering the host failed");
  ICompanyFilePtr file;
  if (FAILED(host.GetCompanyFile(file.ReleaseAndGetAddressOf()))) return state.SkipWithError("no company file");
  const CRecNumMap map = AllNamesSent(names);
  int64_t uploadTime = 1700000000;
  for (auto _ : state) {
    if (FAILED(CUploadAttributeWriter(file, map, ++uploadTime).UpdateUploadTimeAttributes()))
      return state.SkipWithError("stamping failed");
  }
  state.counters["ns/record"] =
      benchmark::Counter(double(names), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_StampInMemory(benchmark::State& state) {
  ReferenceHost host(LoadedCompany(int(state.range(0))));
  StampAll(state, host, int(state.range(0)));
}
BENCHMARK(BM_StampInMemory)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

#if PARCELON_HAVE_SQLITE
// A store of the synthetic company of `names` in a fresh temporary folder, removed afterwards.
class ScratchStore {
 public:
  explicit ScratchStore(int names) {
    char folder[] = "/tmp/stamp_bench.XXXXXX";
    if (!mkdtemp(folder)) return;
    folder_ = folder;
    const std::string fixture = folder_ + "/company.json";
    if (FILE* out = std::fopen(fixture.c_str(), "wb")) {
      const std::string text = parcelon::refhost::SyntheticCompanyJson(names);
      std::fwrite(text.data(), 1, text.size(), out);
      std::fclose(out);
    }
    std::string error;
    if (FAILED(ReferenceHost::CreateStore(fixture, Path(), error))) return;
    HRESULT hr = S_OK;
    host_ = ReferenceHost::FromStore(Path(), hr, error);
  }
  ~ScratchStore() {
    host_.reset();
    for (const char* suffix : {"", "-wal", "-shm", ".locks"}) std::remove((Path() + suffix).c_str());
    std::remove((folder_ + "/company.json").c_str());
    if (!folder_.empty()) ::rmdir(folder_.c_str());
  }
  std::string Path() const { return folder_ + "/company.db"; }
  ReferenceHost* Host() const { return host_.get(); }

 private:
  std::string folder_;
  std::unique_ptr<ReferenceHost> host_;
};

void StampStore(benchmark::State& state, bool oneTransactionPerRecord) {
  const int names = int(state.range(0));
  ScratchStore store(names);
  if (!store.Host()) return state.SkipWithError("making the store failed");
  // Without the grouped writes every record's save is a transaction of its own.
  if (oneTransactionPerRecord) store.Host()->GetFaults().MakeUnavailable("ICompanyFile3");
  StampAll(state, *store.Host(), names);
}

void BM_StampSqliteStore(benchmark::State& state) { StampStore(state, false); }
BENCHMARK(BM_StampSqliteStore)->Arg(1000)->Arg(10000)->Arg(100000)->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_StampSqliteStoreOneTransactionPerRecord(benchmark::State& state) { StampStore(state, true); }
BENCHMARK(BM_StampSqliteStoreOneTransactionPerRecord)->Arg(1000)->UseRealTime()->Unit(benchmark::kMillisecond);
#endif

const bool kPairs = [] {
  // Per record: flat from a thousand names to a hundred thousand.
  parcelon::bench::CompareWith("BM_StampInMemory/100000", "BM_StampInMemory/1000", 100000, 1000);
  parcelon::bench::CompareWith("BM_StampInMemory/10000", "BM_StampInMemory/1000", 10000, 1000);
#if PARCELON_HAVE_SQLITE
  // The store's benchmarks are timed by the wall clock (an fsync is waiting, not computing); the
  // ratios below are of their CPU times, the console shows both.
  parcelon::bench::CompareWith("BM_StampSqliteStore/100000/real_time", "BM_StampSqliteStore/1000/real_time", 100000,
                               1000);
  parcelon::bench::CompareWith("BM_StampSqliteStore/1000/real_time", "BM_StampInMemory/1000");
  parcelon::bench::CompareWith("BM_StampSqliteStoreOneTransactionPerRecord/1000/real_time",
                               "BM_StampSqliteStore/1000/real_time");
#endif
  return true;
}();

}  // namespace
