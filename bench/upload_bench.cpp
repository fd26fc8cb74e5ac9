// The first data upload of synthetic companies with DoAllCustomers at three sizes (cost and bytes
// per customer should stay flat), beside a baseline that writes the same customer elements from
// plain in-memory records with the same writer: the difference is what the host model costs.
#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "BenchMain.h"
#include "clienttools/XMLBuilder.h"
#include "refhost/CompanyData.h"
#include "refhost/Fixture.h"
#include "refhost/ReferenceHost.h"
#include "refhost/SyntheticCompany.h"
#include "upload/DataUploadRequest.h"

namespace {

using parcelon::refhost::Company;
using parcelon::refhost::ReferenceHost;

// The synthetic company of `names`, loaded once per size.
std::shared_ptr<Company> LoadedCompany(int names) {
  static std::map<int, std::shared_ptr<Company>> companies;
  auto& company = companies[names];
  if (!company) {
    company = std::make_shared<Company>();
    std::string error;
    parcelon::refhost::LoadFixtureText(parcelon::refhost::SyntheticCompanyJson(names), "synthetic.json", *company,
                                       error);
  }
  return company;
}

void BM_FirstUploadAllCustomers(benchmark::State& state) {
  const int names = int(state.range(0));
  ReferenceHost host(LoadedCompany(names));
  if (FAILED(host.Register())) return state.SkipWithError("registering the host failed");
  const std::vector<INA_Form7Ptr> forms;
  CRecNumMap map;
  size_t bytes = 0;
  for (auto _ : state) {
    XMLBuilder builder(0, 1 << 20);
    const DataUploadSession session{map, forms, false, true, 2};
    if (FAILED(CDataUploadRequest(session).BuildLXDataMsgsRq(builder))) return state.SkipWithError("upload failed");
    bytes = builder.Buffer()->GetLength();
  }
  state.counters["ns/customer"] =
      benchmark::Counter(double(names), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.counters["bytes/customer"] = double(bytes) / names;
}
BENCHMARK(BM_FirstUploadAllCustomers)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

// The customer elements of the same company from plain records: identity, parents, level, texts.
void BM_PlainCustomerElements(benchmark::State& state) {
  const int names = int(state.range(0));
  const auto company = LoadedCompany(names);
  for (auto _ : state) {
    XMLBuilder builder(0, 1 << 20);
    builder.OpenAggregate("CustomerJobsAdd");
    for (size_t i = 0; i < company->names.Size(); ++i) {
      const parcelon::refhost::Name& name = company->names.At(i);
      if (!name.customer) continue;
      builder.OpenAggregate("CustomerJobItem");
      builder.AddLongElement("ClientID", name.recNum);
      builder.AddElement("Name", OLAString(std::string(name.name.begin(), name.name.end()).c_str()));
      builder.AddBoolElement("Hidden", name.hidden ? VARIANT_TRUE : VARIANT_FALSE);
      if (name.parent != 0) {
        builder.AddLongElement("ParentID", name.parent);
        builder.AddLongElement("ParentRootID", name.root);
      }
      builder.AddLongElement("Sublevel", name.level);
      builder.CloseAggregate("CustomerJobItem");
    }
    builder.CloseAggregate("CustomerJobsAdd");
    benchmark::DoNotOptimize(builder.Buffer()->GetLength());
  }
  state.counters["ns/customer"] =
      benchmark::Counter(double(names), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_PlainCustomerElements)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

const bool kPairs = [] {
  parcelon::bench::CompareWith("BM_FirstUploadAllCustomers/100000", "BM_FirstUploadAllCustomers/1000", 100000, 1000);
  parcelon::bench::CompareWith("BM_FirstUploadAllCustomers/10000", "BM_FirstUploadAllCustomers/1000", 10000, 1000);
  parcelon::bench::CompareWith("BM_FirstUploadAllCustomers/10000", "BM_PlainCustomerElements/10000");
  return true;
}();

}  // namespace
