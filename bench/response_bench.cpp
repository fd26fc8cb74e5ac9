// A gateway response of 1 KB and of 1 MB read through the document layer (loadXML of the BSTR the
// adapter holds, then the root element), and read with its status by CStatusParser, against
// libxml2's own xmlReadMemory of the same text as UTF-8: our layer's share of the cost.
#include <benchmark/benchmark.h>
#include <libxml/parser.h>

#include <cstdio>
#include <string>

#include "BenchMain.h"
#include "platform/Bstr.h"
#include "platform/XmlDom.h"
#include "response/StatusParser.h"
#include "tools/SendDriver.h"

namespace {

// A data upload response of about `size` bytes: the status, a token, and one line per record.
std::string Response(size_t size) {
  std::string xml =
      "<LXDataMsgsRs><DataUploadRs trnUID=\"0001\" statusCode=\"0\" statusSeverity=\"INFO\">"
      "<LastDataUploadToken>TOKEN-0001</LastDataUploadToken><Records>\n";
  const std::string end = "</Records></DataUploadRs></LXDataMsgsRs>";
  char line[96];
  for (int record = 1; xml.size() + end.size() < size; ++record) {
    std::snprintf(line, sizeof line, "<Record id=\"%06d\">Customer record %06d &amp; its jobs</Record>\n", record, record);
    xml += line;
  }
  return xml + end;
}

void BM_OurDocumentLoad(benchmark::State& state) {
  const Bstr text = parcelon::tools::ToBstr(Response(size_t(state.range(0))));
  for (auto _ : state) {
    IXMLDOMDocumentPtr document;
    VARIANT_BOOL loaded = VARIANT_FALSE;
    IXMLDOMElementPtr root;
    if (FAILED(parcelon::CreateDomDocument(document.ReleaseAndGetAddressOf())) ||
        document->loadXML(text.Get(), &loaded) != S_OK ||
        document->get_documentElement(root.ReleaseAndGetAddressOf()) != S_OK) {
      state.SkipWithError("the response does not load");
      break;
    }
    benchmark::DoNotOptimize(root.Get());
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * state.range(0));
}
BENCHMARK(BM_OurDocumentLoad)->Arg(1024)->Arg(1 << 20);

void BM_StatusParserParse(benchmark::State& state) {
  const Bstr text = parcelon::tools::ToBstr(Response(size_t(state.range(0))));
  for (auto _ : state) {
    CStatusParser parser;
    if (FAILED(parser.Parse(text.Get()))) {
      state.SkipWithError("the response does not parse");
      break;
    }
    benchmark::DoNotOptimize(parser.GetLastDataUploadToken().GetLength());
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * state.range(0));
}
BENCHMARK(BM_StatusParserParse)->Arg(1024)->Arg(1 << 20);

void BM_LibxmlReadMemory(benchmark::State& state) {
  const std::string text = Response(size_t(state.range(0)));
  for (auto _ : state) {
    xmlDoc* doc = xmlReadMemory(text.data(), int(text.size()), "response.xml", "UTF-8", XML_PARSE_NONET);
    if (!doc) {
      state.SkipWithError("libxml2 does not read the response");
      break;
    }
    benchmark::DoNotOptimize(xmlDocGetRootElement(doc));
    xmlFreeDoc(doc);
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * state.range(0));
}
BENCHMARK(BM_LibxmlReadMemory)->Arg(1024)->Arg(1 << 20);

const bool kPairs = [] {
  for (const char* size : {"/1024", "/1048576"}) {
    const std::string libxml = std::string("BM_LibxmlReadMemory") + size;
    parcelon::bench::CompareWith((std::string("BM_OurDocumentLoad") + size).c_str(), libxml.c_str());
    parcelon::bench::CompareWith((std::string("BM_StatusParserParse") + size).c_str(), libxml.c_str());
  }
  return true;
}();

}  // namespace
