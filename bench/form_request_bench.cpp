// The request of an e-mailed invoice of 200 lines: microseconds per request, and the share of the
// invoice aggregate's time spent in the host model, measured by building the same aggregate into
// a writer that writes nothing.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "BenchMain.h"
#include "clienttools/XMLBuilder.h"
#include "component/NA_Form.h"
#include "forms/FormRequest.h"
#include "forms/InvoiceForm.h"
#include "refhost/CompanyData.h"
#include "refhost/Fixture.h"
#include "refhost/ReferenceHost.h"

namespace {

constexpr LONG kInvoice = 5001;
constexpr int kLines = 200;

std::string InvoiceCompany() {
  std::string lines;
  for (int i = 0; i < kLines; ++i) {
    if (i) lines += ",";
    lines += R"({"item": 1, "description": "Labor & materials, visit )" + std::to_string(i) +
             R"(", "quantity": "2", "unitPrice": "50.00", "amount": "100.00", "isTaxable": true})";
  }
  return R"({"company": {"companyName": "Harbor & Pine", "email": "office@hp.example", "phone": "555-0100",
               "address": {"lines": ["1 Harbor Way"], "city": "Sausalito", "state": "CA"},
               "companyUID": "{00000000-0000-4000-8000-000000000001}", "companyAuthID": "HP-1"},
  "terms": [{"recNum": 1, "name": "2% 10 Net 30", "stdDueDays": 30, "stdDiscountDays": 10, "discountPct": 2.0}],
  "items": [{"recNum": 1, "name": "Labor", "type": "service"}],
  "customers": [{"recNum": 10, "name": "O'Brien & Daughters", "terms": 1,
                 "billingAddress": {"lines": ["44 Mill Road"], "city": "Mill Valley", "state": "CA"}}],
  "invoices": [{"recNum": 5001, "invoiceNumber": "5001", "date": "2009-03-07", "dueDate": "2009-04-06",
                "customer": 10, "terms": 1, "amount": "20000.00", "remainingBalance": "20000.00",
                "suggestedDiscountAmount": "400.00", "suggestedDiscountDate": "2009-03-17", "lines": [)" +
         lines + "]}]}";
}

// The host, registered once for the run.
parcelon::refhost::ReferenceHost& Host() {
  static std::unique_ptr<parcelon::refhost::ReferenceHost> host = [] {
    auto company = std::make_shared<parcelon::refhost::Company>();
    std::string error;
    parcelon::refhost::LoadFixtureText(InvoiceCompany(), "bench.json", *company, error);
    auto made = std::make_unique<parcelon::refhost::ReferenceHost>(company);
    made->Register();
    return made;
  }();
  return *host;
}

// A writer that writes nothing: what is left of a build is the host model and the builder's logic.
class NullXMLBuilder : public XMLBuilder {
 public:
  uint32_t OpenAggregateWithAttributes(XmlName, const OLAString*) override { return kDone; }
  uint32_t OpenAggregate(XmlName) override { return kDone; }
  uint32_t CloseAggregate(XmlName) override { return kDone; }
  uint32_t AppendRaw(const char*) override { return kDone; }
  uint32_t AppendText(const OLAString&, bool, bool) override { return kDone; }
  uint32_t AppendNewlines(int16_t) override { return kDone; }
  uint32_t AddNotDoneElement(XmlName) override { return kDone; }
  uint32_t AddNameValueComment(XmlName, const OLAString&) override { return kDone; }
  uint32_t AddElement(XmlName, BSTR) override { return kDone; }
  uint32_t AddElement(XmlName, const OLAString&) override { return kDone; }
  uint32_t AddCDataElement(XmlName, BSTR) override { return kDone; }
  uint32_t AddCDataElement(XmlName, const OLAString&) override { return kDone; }
  uint32_t AddHeaderLine(const OLAString&, const OLAString&) override { return kDone; }
  uint32_t AddComment(const OLAString&) override { return kDone; }
  uint32_t AddStartTag(XmlName) override { return kDone; }
  uint32_t AddIntElement(XmlName, int32_t) override { return kDone; }
  uint32_t AddLongElement(XmlName, int32_t) override { return kDone; }
  uint32_t AddFixedElement(XmlName, double, int) override { return kDone; }
  uint32_t AddDoubleElement(XmlName, double) override { return kDone; }
  uint32_t AddHostAmountElement(XmlName, IAmount* amount, bool) override {
    if (amount) amount->Release();
    return kDone;
  }
  uint32_t AddAmountElement(XmlName, OLAAmount) override { return kDone; }
  uint32_t AddPrecisionElement(XmlName, OLAPrecisionInteger) override { return kDone; }
  uint32_t AddDateTimeElement(XmlName, double) override { return kDone; }
  uint32_t AddZonedDateTimeElement(XmlName, double) override { return kDone; }
  uint32_t AddCompactDateElement(XmlName, double) override { return kDone; }
  uint32_t AddPrecisionElement2(XmlName, OLAPrecisionInteger) override { return kDone; }
  uint32_t AddBoolElement(XmlName, VARIANT_BOOL) override { return kDone; }
  uint32_t AddAddressElement(XmlName, IAddress*) override { return kDone; }
};

void BM_InvoiceEmailRequest_200Lines(benchmark::State& state) {
  Host();
  INA_Form7Ptr form;
  CNA_Form::CreateInstance(IidOf<INA_Form7>(), form.ReleaseAndGetVoidAddress());
  form->put_FormType(naftINVOICE);
  form->put_SendMethod(nastEMAIL);
  form->put_TransactionRecordNumber(kInvoice);
  for (auto _ : state) {
    BSTR xml = nullptr;
    if (FAILED(parcelon::BuildFormRequest(form.Get(), &xml))) state.SkipWithError("the request failed");
    benchmark::DoNotOptimize(xml);
    SysFreeString(xml);
  }
}
BENCHMARK(BM_InvoiceEmailRequest_200Lines)->Unit(benchmark::kMicrosecond);

template <class Builder>
void BuildInvoiceAggregate(benchmark::State& state) {
  ICompanyFilePtr file;
  Host().GetCompanyFile(file.ReleaseAndGetAddressOf());
  for (auto _ : state) {
    Builder builder;
    if (FAILED(CInvoiceFormBuilder(file.Get(), kInvoice).BuildXML(builder))) state.SkipWithError("the aggregate failed");
    benchmark::DoNotOptimize(builder.Buffer());
  }
}

void BM_InvoiceAggregate(benchmark::State& state) { BuildInvoiceAggregate<XMLBuilder>(state); }
BENCHMARK(BM_InvoiceAggregate)->Unit(benchmark::kMicrosecond);

void BM_InvoiceAggregateHostModelOnly(benchmark::State& state) { BuildInvoiceAggregate<NullXMLBuilder>(state); }
BENCHMARK(BM_InvoiceAggregateHostModelOnly)->Unit(benchmark::kMicrosecond);

const bool kPairs = [] {
  // The ratio is the host model's share of the aggregate's time; the rest is writing XML.
  parcelon::bench::CompareWith("BM_InvoiceAggregateHostModelOnly", "BM_InvoiceAggregate");
  return true;
}();

}  // namespace
