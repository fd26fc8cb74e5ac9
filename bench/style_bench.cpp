// Writing the "StyleItem" of a template of 100 and of 1,000 fields, each with its label and data
// area and their fonts: the cost per field should not grow with the number of fields.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "BenchMain.h"
#include "clienttools/XMLBuilder.h"
#include "forms/FormParts.h"
#include "forms/StyleItem.h"
#include "refhost/CompanyData.h"
#include "refhost/Fixture.h"
#include "refhost/ReferenceHost.h"

namespace {

// Template N has N fields and an item table of five columns with its tax-flag column.
std::string Template(int fields) {
  std::string list;
  for (int i = 0; i < fields; ++i) {
    if (i) list += ",";
    list += R"({"id": )" + std::to_string(i % 87) + R"(, "label": {"label": "Field )" + std::to_string(i) +
            R"(", "x": 10, "y": 20, "width": 80, "height": 12, "font": {"name": "Georgia", "bold": true}},
               "data": {"x": 100, "y": 20, "width": 120, "height": 12, "dataType": "balance", "multiLine": true}})";
  }
  return R"({"recNum": )" + std::to_string(fields) + R"(, "fullName": "Template )" + std::to_string(fields) +
         R"(", "type": "invoice", "width": 850, "height": 1100, "fields": [)" + list + R"(],
     "table": {"width": 750, "columns": [{"id": "item"}, {"id": "itemDesc"}, {"id": "qty"}, {"id": "rate"},
                                         {"id": "itemAmount"}],
               "taxFlag": {"data": {"width": 20}}}})";
}

parcelon::refhost::ReferenceHost& Host() {
  static std::unique_ptr<parcelon::refhost::ReferenceHost> host = [] {
    auto company = std::make_shared<parcelon::refhost::Company>();
    std::string error;
    parcelon::refhost::LoadFixtureText(R"({"styles": [)" + Template(100) + "," + Template(1000) + "]}", "bench.json",
                                       *company, error);
    auto made = std::make_unique<parcelon::refhost::ReferenceHost>(company);
    made->Register();
    return made;
  }();
  return *host;
}

IStylePtr StyleOf(LONG recNum) {
  ICompanyFilePtr file;
  Host().GetCompanyFile(file.ReleaseAndGetAddressOf());
  ComPtr<ILists> lists;
  file->GetLists(lists.ReleaseAndGetAddressOf());
  IStylesPtr styles;
  lists->GetStyles(styles.ReleaseAndGetAddressOf());
  IStylePtr style;
  styles->GetItemByRecNum(parcelon::forms::RecNumKey(recNum), style.ReleaseAndGetAddressOf());
  return style;
}

// One template's aggregate per iteration, into a builder that keeps its memory between them.
void BM_StyleItem(benchmark::State& state) {
  const IStylePtr style = StyleOf(LONG(state.range(0)));
  if (!style) return state.SkipWithError("no template");
  XMLBuilder builder;
  for (auto _ : state) {
    builder.Clear(0);
    if (FAILED(CStyleItemBuilder(style.Get()).BuildXML(builder, VARIANT_TRUE))) state.SkipWithError("the aggregate failed");
    benchmark::DoNotOptimize(builder.Buffer());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_StyleItem)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);

const bool kPairs = [] {
  // Per field: near 1 when the cost is linear in the fields.
  parcelon::bench::CompareWith("BM_StyleItem/1000", "BM_StyleItem/100", 1000, 100);
  return true;
}();

}  // namespace
