// The XML writer against libxml2's xmlTextWriter on the same customer-like stream, each cold (a
// new document every time) and warm (the same document cleared and written again), and the
// document-to-BSTR conversion against a plain copy of the same bytes.
#include <benchmark/benchmark.h>
#include <libxml/xmlwriter.h>

#include <cstdio>
#include <filesystem>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "BenchMain.h"
#include "clienttools/XMLBuilder.h"
#include "diagnostics/FeatureSettings.h"
#include "platform/Paths.h"

namespace {

constexpr int kCustomers = 100000;

const char* const kChildNames[] = {
    "ClientID", "Name",     "IsActive", "CompanyName", "Salutation", "FirstName", "MiddleName",
    "LastName", "Contact",  "Phone",    "AltPhone",    "Fax",        "Email",     "AccountNumber",
    "Balance",  "JobTitle", "Notes",    "ResaleNum",   "CreditLimit", "SalesTaxCode"};
constexpr int kChildren = sizeof kChildNames / sizeof kChildNames[0];

// The values of every customer, a fifth of them with characters to escape.
struct Stream {
  std::vector<OLAString> values;  // kCustomers * kChildren
  Stream() {
    values.reserve(size_t(kCustomers) * kChildren);
    char text[64];
    for (int c = 0; c < kCustomers; ++c) {
      for (int k = 0; k < kChildren; ++k) {
        const int n = c * kChildren + k;
        if (n % 5 == 0)
          std::snprintf(text, sizeof text, "Smith & O'Neil <%d> \"Ltd\"", n);
        else
          std::snprintf(text, sizeof text, "Value %d of customer %d", k, c);
        values.emplace_back(text);
      }
    }
  }
};

const Stream& TheStream() {
  static const Stream stream;
  return stream;
}

// The real settings service, reading a real file, with indentation off.
void UseSettingsFile() {
  static const std::string path = [] {
    std::string file = (std::filesystem::temp_directory_path() / "parcelon-bench-ZPSSettings.aov").string();
    if (FILE* f = std::fopen(file.c_str(), "w")) {
      std::fputs("[ZPSSettings]\nNetworkAdapter.IndentXML=0\n", f);
      std::fclose(f);
    }
    return file;
  }();
  parcelon::SetEnv("PARCELON_SETTINGS", path.c_str());
  AmbitAccess::Reload();
}

// The customer list written through `builder`.
void WriteCustomers(XMLBuilder& builder) {
  const Stream& stream = TheStream();
  builder.OpenAggregate("CustomerList");
  const OLAString* value = stream.values.data();
  for (int c = 0; c < kCustomers; ++c) {
    builder.OpenAggregate("Customer");
    for (int k = 0; k < kChildren; ++k) builder.AddElement(kChildNames[k], *value++);
    builder.CloseAggregate("Customer");
  }
  builder.CloseAggregate("CustomerList");
}

// The same list through libxml2's writer into `buffer`.
void WriteCustomers(xmlBufferPtr buffer) {
  const Stream& stream = TheStream();
  xmlTextWriterPtr writer = xmlNewTextWriterMemory(buffer, 0);
  xmlTextWriterStartElement(writer, BAD_CAST "CustomerList");
  const OLAString* value = stream.values.data();
  for (int c = 0; c < kCustomers; ++c) {
    xmlTextWriterStartElement(writer, BAD_CAST "Customer");
    for (int k = 0; k < kChildren; ++k)
      xmlTextWriterWriteElement(writer, BAD_CAST kChildNames[k], BAD_CAST (value++)->GetText());
    xmlTextWriterEndElement(writer);
  }
  xmlTextWriterEndElement(writer);
  xmlTextWriterFlush(writer);
  xmlFreeTextWriter(writer);
}

void CountElements(benchmark::State& state, size_t bytes) {
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
  state.counters["ns/element"] = benchmark::Counter(double(kCustomers) * (kChildren + 1),
                                                    benchmark::Counter::kIsIterationInvariantRate |
                                                        benchmark::Counter::kInvert);
}

// Cold: a new document each time, its memory allocated, grown and (wiped and) freed.
void BM_XMLBuilder_Customers(benchmark::State& state) {
  UseSettingsFile();
  TheStream();
  size_t bytes = 0;
  for (auto _ : state) {
    XMLBuilder builder;
    WriteCustomers(builder);
    bytes = builder.Buffer()->GetLength();
    benchmark::DoNotOptimize(builder.Buffer()->GetData());
  }
  CountElements(state, bytes);
}
BENCHMARK(BM_XMLBuilder_Customers)->Unit(benchmark::kMillisecond);

void BM_LibXml2TextWriter_Customers(benchmark::State& state) {
  TheStream();
  size_t bytes = 0;
  for (auto _ : state) {
    xmlBufferPtr buffer = xmlBufferCreateSize(51200);
    WriteCustomers(buffer);
    bytes = size_t(xmlBufferLength(buffer));
    benchmark::DoNotOptimize(xmlBufferContent(buffer));
    xmlBufferFree(buffer);
  }
  CountElements(state, bytes);
}
BENCHMARK(BM_LibXml2TextWriter_Customers)->Unit(benchmark::kMillisecond);

// Warm: the same document cleared and written again in the memory of the last one, as a session
// does from pass to pass.
void BM_XMLBuilder_Customers_Warm(benchmark::State& state) {
  UseSettingsFile();
  TheStream();
  XMLBuilder builder;
  WriteCustomers(builder);
  for (auto _ : state) {
    builder.Clear(0);
    WriteCustomers(builder);
    benchmark::DoNotOptimize(builder.Buffer()->GetData());
  }
  CountElements(state, builder.Buffer()->GetLength());
}
BENCHMARK(BM_XMLBuilder_Customers_Warm)->Unit(benchmark::kMillisecond);

void BM_LibXml2TextWriter_Customers_Warm(benchmark::State& state) {
  TheStream();
  xmlBufferPtr buffer = xmlBufferCreateSize(51200);
  WriteCustomers(buffer);
  for (auto _ : state) {
    xmlBufferEmpty(buffer);
    WriteCustomers(buffer);
    benchmark::DoNotOptimize(xmlBufferContent(buffer));
  }
  CountElements(state, size_t(xmlBufferLength(buffer)));
  xmlBufferFree(buffer);
}
BENCHMARK(BM_LibXml2TextWriter_Customers_Warm)->Unit(benchmark::kMillisecond);

// A 10 MB document of mixed text, as a request with a large form would be.
constexpr size_t kDocumentBytes = 10 * 1024 * 1024;

XMLBuilder& TenMegabyteDocument() {
  static XMLBuilder* builder = [] {
    auto* b = new XMLBuilder;
    std::string line = "<Line><Desc>Consulting services, week of the 7th</Desc><Amount>1234.5</Amount></Line>\n";
    while (b->Buffer()->GetLength() + line.size() <= kDocumentBytes) b->AppendRaw(line.c_str());
    return b;
  }();
  return *builder;
}

void BM_GetXMLAsBSTR_10MB(benchmark::State& state) {
  XMLBuilder& builder = TenMegabyteDocument();
  for (auto _ : state) {
    BSTR text = nullptr;
    if (FAILED(builder.GetXMLAsBSTR(&text))) state.SkipWithError("GetXMLAsBSTR failed");
    benchmark::DoNotOptimize(text);
    SysFreeString(text);
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * builder.Buffer()->GetLength());
}
BENCHMARK(BM_GetXMLAsBSTR_10MB)->Unit(benchmark::kMicrosecond);

// The baseline: the same bytes copied with memcpy into a freshly allocated block of the same size.
void BM_Memcpy_10MB(benchmark::State& state) {
  XMLBuilder& builder = TenMegabyteDocument();
  const size_t bytes = builder.Buffer()->GetLength();
  for (auto _ : state) {
    void* copy = std::malloc(bytes);
    std::memcpy(copy, builder.Buffer()->GetData(), bytes);
    benchmark::DoNotOptimize(copy);
    std::free(copy);
  }
  state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(bytes));
}
BENCHMARK(BM_Memcpy_10MB)->Unit(benchmark::kMicrosecond);

const bool kPairs = [] {
  parcelon::bench::CompareWith("BM_XMLBuilder_Customers", "BM_LibXml2TextWriter_Customers");
  parcelon::bench::CompareWith("BM_XMLBuilder_Customers_Warm", "BM_LibXml2TextWriter_Customers_Warm");
  parcelon::bench::CompareWith("BM_GetXMLAsBSTR_10MB", "BM_Memcpy_10MB");
  return true;
}();

}  // namespace
