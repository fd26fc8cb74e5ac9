// Sends over loopback HTTP to the gateway simulator in this process: an e-mailed invoice with a
// 100 KB PDF (forms per second, and the share of the time spent in the component and the driver
// rather than on the wire and in the simulator) against the same send answered by the simulated
// gateway; and a first upload of every customer of a company of 10,000 names over HTTP (seconds,
// bytes on the wire per customer) against the same upload answered without a network.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "BenchMain.h"
#include "LoadedCompany.h"
#include "component/ClassObjects.h"
#include "diagnostics/FeatureSettings.h"
#include "refhost/ReferenceHost.h"
#include "tools/GatewaySimulator.h"
#include "tools/HttpExchange.h"
#include "tools/SendDriver.h"

namespace {

using parcelon::bench::LoadedCompany;
using parcelon::refhost::ReferenceHost;
namespace tools = parcelon::tools;

// A scratch folder with the settings file (the gateway addresses), a 100 KB PDF and the
// simulator's data; the simulator runs for the whole process.
struct Setup {
  std::string folder, pdf;
  std::unique_ptr<tools::GatewaySimulator> gateway;
  std::unique_ptr<parcelon::ClassObjectRegistration> classes;

  Setup() {
    folder = (std::filesystem::temp_directory_path() / ("parcelon-http-bench-" + std::to_string(getpid()))).string();
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/ZPSSettings.aov")
        << "[URLs]\nEmailService.FormGatewayURL=https://forms.gateway.example/lxn/forms\n"
           "EmailService.FormGatewayAttachURL=https://forms.gateway.example/lxn/attachments\n";
    setenv("PARCELON_SETTINGS", (folder + "/ZPSSettings.aov").c_str(), 1);
    setenv("XDG_STATE_HOME", folder.c_str(), 1);
    AmbitAccess::Reload();
    pdf = folder + "/invoice.pdf";
    std::string bytes = "%PDF-1.4\n";
    while (bytes.size() < 100 * 1024) bytes += "% filler line of a hundred kilobytes of PDF text, repeated\n";
    std::ofstream(pdf, std::ios::binary) << bytes;
    tools::GatewayOptions options;
    options.dataDirectory = folder + "/gateway";
    std::string error;
    gateway = tools::GatewaySimulator::Start(options, error);
    if (!gateway) std::fprintf(stderr, "the gateway simulator did not start: %s\n", error.c_str());
    classes = std::make_unique<parcelon::ClassObjectRegistration>();
  }
  ~Setup() {
    gateway.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  }
};

Setup& TheSetup() {
  static Setup setup;
  return setup;
}

tools::SendSpec InvoiceSend(bool allCustomers) {
  tools::FormSpec form;
  form.type = naftINVOICE;
  form.recNum = 100000;  // the first customer's invoice in the synthetic company
  form.send = nastEMAIL;
  form.to = "customer@example.com";
  form.pdf = TheSetup().pdf;
  tools::SendSpec plan;
  plan.forms = {form};
  plan.allCustomers = allCustomers;
  return plan;
}

// One send per iteration, over HTTP or answered by the simulated gateway; the share of the wall
// time spent outside the exchange (the component building and parsing, and the driver) is a counter.
void Send(benchmark::State& state, bool overHttp, int names, bool allCustomers) {
  Setup& setup = TheSetup();
  if (!setup.gateway) return state.SkipWithError("no gateway simulator");
  auto host = std::make_unique<ReferenceHost>(LoadedCompany(names));
  if (FAILED(host->Register())) return state.SkipWithError("registering the host failed");
  tools::HttpExchange http({setup.gateway->Address(), 60000, nullptr});
  tools::SendSpec plan = InvoiceSend(allCustomers);
  if (overHttp) plan.exchange = &http;
  double total = 0;
  for (auto _ : state) {
    if (allCustomers) {
      // Every upload a first one: a company that was never stamped.
      state.PauseTiming();
      host.reset();
      host = std::make_unique<ReferenceHost>(std::make_shared<parcelon::refhost::Company>(*LoadedCompany(names)));
      const HRESULT registered = host->Register();
      state.ResumeTiming();
      if (FAILED(registered)) return state.SkipWithError("registering the host failed");
    }
    std::string transcript, failure;
    const auto start = std::chrono::steady_clock::now();
    if (FAILED(tools::RunSend(plan, transcript, &failure))) return state.SkipWithError(failure.c_str());
    total += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  state.counters["forms/s"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
  if (overHttp) state.counters["component share"] = 1 - http.SecondsOnTheWire() / total;
  if (overHttp && allCustomers)
    state.counters["wire bytes/customer"] = double(http.BytesSent()) / double(state.iterations()) / names;
}

void BM_HttpInvoiceWith100KBPdf(benchmark::State& state) { Send(state, true, 1000, false); }
void BM_SimulatedInvoiceWith100KBPdf(benchmark::State& state) { Send(state, false, 1000, false); }
void BM_HttpFirstUploadOfAllCustomers(benchmark::State& state) { Send(state, true, int(state.range(0)), true); }
void BM_SimulatedFirstUploadOfAllCustomers(benchmark::State& state) { Send(state, false, int(state.range(0)), true); }

BENCHMARK(BM_HttpInvoiceWith100KBPdf)->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SimulatedInvoiceWith100KBPdf)->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HttpFirstUploadOfAllCustomers)->Arg(1000)->Arg(10000)->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SimulatedFirstUploadOfAllCustomers)->Arg(1000)->Arg(10000)->UseRealTime()->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

const bool kPairs = [] {
  parcelon::bench::CompareWith("BM_HttpInvoiceWith100KBPdf/process_time/real_time",
                               "BM_SimulatedInvoiceWith100KBPdf/process_time/real_time");
  for (const char* size : {"/1000/process_time/real_time", "/10000/process_time/real_time"})
    parcelon::bench::CompareWith((std::string("BM_HttpFirstUploadOfAllCustomers") + size).c_str(),
                                 (std::string("BM_SimulatedFirstUploadOfAllCustomers") + size).c_str());
  return true;
}();

}  // namespace
