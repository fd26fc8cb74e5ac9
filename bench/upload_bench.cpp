// The first data upload of synthetic companies with DoAllCustomers at three sizes (cost and bytes
// per customer should stay flat), beside a baseline that writes the same customer elements from
// plain in-memory records with the same writer: the difference is what the host model costs.
// Then an upload of a company whose records are all stamped, with 10, 100 or 1,000 of them changed
// since, and one session of 10, 100 or 1,000 forms with Post, one upload per form.
#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "BenchMain.h"
#include "LoadedCompany.h"
#include "clienttools/XMLBuilder.h"
#include "component/NA_Form.h"
#include "refhost/CompanyData.h"
#include "refhost/Fixture.h"
#include "refhost/ReferenceHost.h"
#include "refhost/SyntheticCompany.h"
#include "upload/DataUploadRequest.h"
#include "upload/UploadState.h"

namespace {

using parcelon::refhost::Company;
using parcelon::refhost::ReferenceHost;

using parcelon::bench::LoadedCompany;

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

// The size of the stamped company and the time of its last accepted upload.
constexpr int kStampedNames = 10000;
constexpr LONG kStampTime = 1600000000;

// The synthetic company with every term and customer/job uploaded at kStampTime, and the first
// `changed` customers and jobs modified after it.
std::shared_ptr<Company> StampedCompany(int changed) {
  static std::map<int, std::shared_ptr<Company>> companies;
  auto& company = companies[changed];
  if (company) return company;
  company = std::make_shared<Company>(*LoadedCompany(kStampedNames));
  const auto stamp = [](parcelon::refhost::ListRecord& record, LONG modTime) {
    record.attributes = {{u"ParcelonUploadTime", u"{54901C71-3408-44fb-9031-7B4BB81D871C}", kStampTime}};
    record.modTime = modTime;
  };
  for (size_t i = 0; i < company->terms.Size(); ++i) stamp(company->terms.At(i), kStampTime - 10);
  int changedSoFar = 0;
  for (size_t i = 0; i < company->names.Size(); ++i) {
    auto& name = company->names.At(i);
    if (name.customer) stamp(name, changedSoFar++ < changed ? kStampTime + 10 : kStampTime - 10);
  }
  return company;
}

void BM_StampedUpload(benchmark::State& state) {
  const int changed = int(state.range(0));
  ReferenceHost host(StampedCompany(changed));
  if (FAILED(host.Register())) return state.SkipWithError("registering the host failed");
  if (FAILED(parcelon::upload::StoreLastClientDataUploadTime(kStampTime)))
    return state.SkipWithError("storing the last upload time failed");
  const std::vector<INA_Form7Ptr> forms;
  CRecNumMap map;
  for (auto _ : state) {
    XMLBuilder builder(0, 1 << 20);
    const DataUploadSession session{map, forms, false, false, 2};
    if (FAILED(CDataUploadRequest(session).BuildLXDataMsgsRq(builder))) return state.SkipWithError("upload failed");
    if (map.Of(RecordKind::kCustomerJob).size() != size_t(changed)) return state.SkipWithError("wrong records sent");
  }
}
BENCHMARK(BM_StampedUpload)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

// One session of `forms` invoice forms with Post in a company of `names` customers and jobs: each
// form's pass writes the upload of the records of every form of the session.
void BM_SessionOfPostedForms(benchmark::State& state) {
  const int formCount = int(state.range(0));
  ReferenceHost host(LoadedCompany(int(state.range(1))));
  if (FAILED(host.Register())) return state.SkipWithError("registering the host failed");
  std::vector<INA_Form7Ptr> forms;
  for (int i = 0; i < formCount; ++i) {
    INA_Form7Ptr form;
    if (FAILED(CNA_Form::CreateInstance(IidOf<INA_Form7>(), form.ReleaseAndGetVoidAddress())))
      return state.SkipWithError("creating a form failed");
    form->put_FormType(naftINVOICE);
    form->put_TransactionRecordNumber(100000 + 4 * i);
    form->put_SendMethod(nastFAX);
    form->put_Post(VARIANT_TRUE);
    forms.push_back(form);
  }
  CRecNumMap map;
  size_t bytes = 0;
  for (auto _ : state) {
    bytes = 0;
    for (int pass = 0; pass < formCount; ++pass) {
      XMLBuilder builder(0, 1 << 20);
      const DataUploadSession session{map, forms, false, false, 2};
      if (FAILED(CDataUploadRequest(session).BuildLXDataMsgsRq(builder))) return state.SkipWithError("upload failed");
      bytes += builder.Buffer()->GetLength();
    }
  }
  state.counters["ns/form"] =
      benchmark::Counter(double(formCount), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.counters["bytes/form"] = double(bytes) / formCount;
}
// The sizes are measured in one company of 10,000 names; the small company is the quick run's.
BENCHMARK(BM_SessionOfPostedForms)
    ->Args({10, 1000})
    ->Args({10, 10000})
    ->Args({100, 10000})
    ->Args({1000, 10000})
    ->Unit(benchmark::kMillisecond);

const bool kPairs = [] {
  parcelon::bench::CompareWith("BM_FirstUploadAllCustomers/100000", "BM_FirstUploadAllCustomers/1000", 100000, 1000);
  parcelon::bench::CompareWith("BM_FirstUploadAllCustomers/10000", "BM_FirstUploadAllCustomers/1000", 10000, 1000);
  parcelon::bench::CompareWith("BM_FirstUploadAllCustomers/10000", "BM_PlainCustomerElements/10000");
  // Changed records: 100 times as many should cost far less than 100 times as much, the scan of
  // the whole list being shared.
  parcelon::bench::CompareWith("BM_StampedUpload/1000", "BM_StampedUpload/10");
  parcelon::bench::CompareWith("BM_StampedUpload/100", "BM_StampedUpload/10");
  // Per form: every pass carries the records of all forms, so the cost per form grows with them.
  parcelon::bench::CompareWith("BM_SessionOfPostedForms/1000/10000", "BM_SessionOfPostedForms/10/10000", 1000, 10);
  parcelon::bench::CompareWith("BM_SessionOfPostedForms/100/10000", "BM_SessionOfPostedForms/10/10000", 100, 10);
  return true;
}();

}  // namespace
