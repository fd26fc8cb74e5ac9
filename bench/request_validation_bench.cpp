// Validating the first data upload of a synthetic company (every customer and job, DoAllCustomers)
// against its document type, beside libxml2 parsing the same document without validation: the
// difference is what the validation adds to the parse a gateway does anyway.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>

#include <map>
#include <string>
#include <vector>

#include "BenchMain.h"
#include "LoadedCompany.h"
#include "clienttools/XMLBuilder.h"
#include "refhost/ReferenceHost.h"
#include "tools/RequestDocument.h"
#include "tools/RequestValidator.h"
#include "upload/DataUploadRequest.h"

namespace {

constexpr char kLXMainDocType[] =
    "ZPN PUBLIC '-//ORVANE//DTD LXN Platform LXMAIN 1.0//EN' 'https://gateway.orvane.example/dtds/lxmain.dtd'";

// The posted document of the first upload of the company of `names`; empty when it cannot be
// built. Built once per size.
const std::string& UploadDocument(int names) {
  static std::map<int, std::string> documents;
  std::string& document = documents[names];
  if (!document.empty()) return document;
  parcelon::refhost::ReferenceHost host(parcelon::bench::LoadedCompany(names));
  if (FAILED(host.Register())) return document;
  const std::vector<INA_Form7Ptr> forms;
  CRecNumMap map;
  XMLBuilder builder(0, 1 << 20);
  const DataUploadSession session{map, forms, false, true, 2};
  if (FAILED(CDataUploadRequest(session).BuildLXDataMsgsRq(builder))) return document;
  const OLABuffer* buffer = builder.Buffer();
  document = parcelon::tools::ComposeRequestDocument(kLXMainDocType,
                                                     std::string_view(buffer->GetData(), size_t(buffer->GetLength())));
  return document;
}

void SetCounters(benchmark::State& state, const std::string& document) {
  state.counters["MB/s"] = benchmark::Counter(double(document.size()), benchmark::Counter::kIsIterationInvariantRate,
                                              benchmark::Counter::kIs1000);
  state.counters["bytes"] = double(document.size());
}

void BM_ValidateUpload(benchmark::State& state) {
  const std::string& document = UploadDocument(int(state.range(0)));
  if (document.empty()) return state.SkipWithError("building the upload failed");
  std::string message;
  for (auto _ : state) {
    if (!parcelon::tools::ValidateRequest(document, PARCELON_DTD_DIR, message))
      return state.SkipWithError(message.c_str());
  }
  SetCounters(state, document);
}
BENCHMARK(BM_ValidateUpload)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// The baseline: libxml2 reads the same document into a tree, without network, and frees it.
void BM_LibxmlParseUpload(benchmark::State& state) {
  const std::string& document = UploadDocument(int(state.range(0)));
  if (document.empty()) return state.SkipWithError("building the upload failed");
  for (auto _ : state) {
    xmlDoc* doc = xmlReadMemory(document.data(), int(document.size()), "request.xml", nullptr, XML_PARSE_NONET);
    if (!doc) return state.SkipWithError("libxml2 could not parse the upload");
    xmlFreeDoc(doc);
  }
  SetCounters(state, document);
}
BENCHMARK(BM_LibxmlParseUpload)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

const bool kPairs = [] {
  parcelon::bench::CompareWith("BM_ValidateUpload/10000", "BM_LibxmlParseUpload/10000");
  parcelon::bench::CompareWith("BM_ValidateUpload/1000", "BM_LibxmlParseUpload/1000");
  // Linear cost: ten times the customers, ten times the time.
  parcelon::bench::CompareWith("BM_ValidateUpload/10000", "BM_ValidateUpload/1000", 10000, 1000);
  return true;
}();

}  // namespace
