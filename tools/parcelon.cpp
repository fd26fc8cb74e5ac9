// parcelon: plays the host's network adapter. `build` opens a company, adds the forms named on the
// command line, drives a send session pass by pass in the adapter's calling order, and prints
// what every pass would send (a dry run: no network, the gateway's answers are simulated).
// `send` does the same over HTTP to a gateway, `gateway` serves a gateway simulator (both off
// Windows only). `style` prints the "StyleItem" of one of the company's templates.
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "component/ClassObjects.h"
#include "refhost/ReferenceHost.h"
#include "tools/SendDriver.h"
#include "tools/TemplateStyle.h"
#if PARCELON_HAVE_NETWORK
#include "diagnostics/FeatureSettings.h"
#include "response/ResponseCodes.h"
#include "tools/GatewaySimulator.h"
#include "tools/HttpExchange.h"
#include "tools/RequestValidator.h"
#endif

namespace {

constexpr char kUsage[] =
    "usage: parcelon build --company FIXTURE.json [--store STORE.db] [--ticket T] [--authid A] [--all-customers]\n"
    "                      [--respond STATUS]... --form TYPE:RECNUM [form options] [--form ... [form options]]...\n"
    "  --respond gives the status the gateway answers the next pass with (the first --respond answers\n"
    "  pass 1, the second pass 2, ...; \"0\" for the passes beyond)\n"
    "  TYPE is invoice, estimate, statement or other; form options apply to the last --form:\n"
    "  --send email|fax|paper|none|delete|void|pending   --to --cc --bcc --from --reply-to\n"
    "  --subject --text --pdf FILE   --fax-to NUMBER   --post   --synch-multiple\n"
    "       parcelon send --gateway URL [--timeout SECONDS] (then the options of build)\n"
    "  sends over HTTP to URL, each pass to the path of its configured address; exit 3 when the\n"
    "  network fails (connection, time-out, HTTP status), 4 when the gateway refuses, 1 otherwise\n"
    "       parcelon gateway [--port N] [--data DIR] [--dtds DIR] [--fault N:WHAT]...\n"
    "  serves a gateway simulator on 127.0.0.1 (port 0 picks a free one; its address is printed);\n"
    "  form requests are validated against the document type definitions in --dtds (default: the\n"
    "  source tree's dtds/)\n"
    "  WHAT is status=CODE, expired, http=CODE, drop, malformed, truncated or delay=MS for request N\n"
    "       parcelon style TEMPLATE --company FIXTURE.json [--store STORE.db] [--no-tax-flag]\n"
    "  TEMPLATE is a template's record number or full name\n";

using parcelon::tools::FormSpec;

struct Options {
  std::string company, store;
  parcelon::tools::SendSpec send;
  // `send` only: where to, and the longest a pass may take.
  std::string gateway;
  long timeoutMs = 30000;
};

[[noreturn]] void Fail(const std::string& message) {
  std::fprintf(stderr, "parcelon: %s\n%s", message.c_str(), kUsage);
  std::exit(2);
}

bool Lookup(const char* text, const std::vector<std::pair<const char*, int>>& table, int& out) {
  for (const auto& [name, value] : table)
    if (std::strcmp(text, name) == 0) return out = value, true;
  return false;
}

FormSpec ParseForm(const std::string& text) {
  const size_t colon = text.find(':');
  if (colon == std::string::npos) Fail("--form wants TYPE:RECNUM, got \"" + text + "\"");
  int type;
  if (!Lookup(text.substr(0, colon).c_str(),
              {{"invoice", naftINVOICE}, {"estimate", naftESTIMATE}, {"statement", naftSTATEMENT}, {"other", naftNON_LX}},
              type))
    Fail("unknown form type in \"" + text + "\"");
  char* end = nullptr;
  const long recNum = std::strtol(text.c_str() + colon + 1, &end, 10);
  if (*end != '\0' || recNum < 0 || recNum > INT32_MAX) Fail("bad record number in \"" + text + "\"");
  FormSpec form;
  form.type = NAFormType(type);
  form.recNum = LONG(recNum);
  return form;
}

Options ParseOptions(int argc, char** argv) {
  Options options;
  for (int i = 2; i < argc; ++i) {
    const std::string option = argv[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= argc) Fail(option + " needs a value");
      return argv[++i];
    };
    auto form = [&]() -> FormSpec& {
      if (options.send.forms.empty()) Fail(option + " must follow a --form");
      return options.send.forms.back();
    };
    const bool network = std::strcmp(argv[1], "send") == 0;
    if (option == "--company") options.company = value();
    else if (network && option == "--gateway") options.gateway = value();
    else if (network && option == "--timeout") {
      const std::string seconds = value();
      char* end = nullptr;
      const double parsed = std::strtod(seconds.c_str(), &end);
      if (*end != '\0' || !(parsed > 0 && parsed <= 3600)) Fail("--timeout wants seconds from 0 to 3600");
      options.timeoutMs = long(parsed * 1000 + 0.5);
    } else if (option == "--store") options.store = value();
    else if (option == "--ticket") options.send.ticket = value();
    else if (option == "--authid") options.send.authId = value();
    else if (option == "--all-customers") options.send.allCustomers = true;
    else if (option == "--respond") options.send.responses.push_back(value());
    else if (option == "--form") options.send.forms.push_back(ParseForm(value()));
    else if (option == "--send") {
      int send;
      if (!Lookup(value().c_str(),
                  {{"email", nastEMAIL}, {"fax", nastFAX}, {"paper", nastPAPER_MAIL}, {"none", nastNONE},
                   {"delete", nastDELETE}, {"void", nastVOID}, {"pending", nastPENDING}},
                  send))
        Fail("unknown send method");
      form().send = NASendType(send);
    } else if (option == "--to") form().to = value();
    else if (option == "--cc") form().cc = value();
    else if (option == "--bcc") form().bcc = value();
    else if (option == "--from") form().from = value();
    else if (option == "--reply-to") form().replyTo = value();
    else if (option == "--subject") form().subject = value();
    else if (option == "--text") form().text = value();
    else if (option == "--pdf") form().pdf = value();
    else if (option == "--fax-to") form().faxTo = value();
    else if (option == "--post") form().post = true;
    else if (option == "--synch-multiple") form().synchMultiple = true;
    else Fail("unknown option " + option);
  }
  if (options.company.empty() && options.store.empty()) Fail("name a --company fixture or a --store");
  if (options.send.forms.empty()) Fail("name at least one --form");
  if (std::strcmp(argv[1], "send") == 0 && options.gateway.empty()) Fail("name the --gateway URL");
  return options;
}

// The reference host of the options' fixture or store, registered; exits on failure.
std::unique_ptr<parcelon::refhost::ReferenceHost> OpenHost(const std::string& company, [[maybe_unused]] const std::string& store) {
  HRESULT hr = S_OK;
  std::string error;
  std::unique_ptr<parcelon::refhost::ReferenceHost> host;
#if PARCELON_HAVE_SQLITE
  if (!store.empty()) {
    if (!company.empty()) {
      hr = parcelon::refhost::ReferenceHost::CreateStore(company, store, error);
      if (FAILED(hr)) std::fprintf(stderr, "parcelon: %s\n", error.c_str()), std::exit(1);
    }
    host = parcelon::refhost::ReferenceHost::FromStore(store, hr, error);
  } else
#endif
  {
    host = parcelon::refhost::ReferenceHost::FromFixture(company, hr, error);
  }
  if (!host) std::fprintf(stderr, "parcelon: %s\n", error.c_str()), std::exit(1);
  if (FAILED(host->Register())) std::fprintf(stderr, "parcelon: registering the host failed\n"), std::exit(1);
  return host;
}

int Build(const Options& options) {
  const auto host = OpenHost(options.company, options.store);
  parcelon::ClassObjectRegistration classes;
  if (FAILED(classes.Result())) return std::fprintf(stderr, "parcelon: registering the component failed\n"), 1;
  std::string transcript;
  const HRESULT hr = parcelon::tools::RunSend(options.send, transcript);
  std::fputs(transcript.c_str(), stdout);
  return FAILED(hr) ? 1 : 0;
}

#if PARCELON_HAVE_NETWORK
// The failure in the user's words and the exit code: 3 for the network, 4 for a refusal by the
// gateway, 1 for anything else.
int Explain(HRESULT hr, std::string& failure) {
  using namespace parcelon::tools;
  if (hr == kTicketExpired) failure = "the gateway says the login ticket has expired; log in again";
  if (hr == kAttachmentRefused) failure = "the gateway refused the attachment";
  if (hr == kConnectionRefused || hr == kTimedOut || hr == kConnectionBroken || (uint32_t(hr) >> 16) == 0x8019)
    return 3;
  if (hr == kTicketExpired || hr == kAttachmentRefused || hr == kFormRefused || (uint32_t(hr) >> 16) == 0xC00C)
    return 4;
  return 1;
}

int Send(const Options& options) {
  const auto host = OpenHost(options.company, options.store);
  parcelon::ClassObjectRegistration classes;
  if (FAILED(classes.Result())) return std::fprintf(stderr, "parcelon: registering the component failed\n"), 1;
  parcelon::tools::HttpExchange exchange({options.gateway, options.timeoutMs, stderr});
  parcelon::tools::SendSpec send = options.send;
  send.exchange = &exchange;
  std::string transcript, failure;
  const HRESULT hr = parcelon::tools::RunSend(send, transcript, &failure);
  std::fputs(transcript.c_str(), stdout);
  std::fflush(stdout);
  if (SUCCEEDED(hr)) return 0;
  const int code = Explain(hr, failure);
  std::fprintf(stderr,
               "parcelon: the send failed: %s (0x%08X)\n"
               "parcelon: the failed pass stamped nothing; what the gateway accepted before it stays stamped\n",
               failure.c_str(), unsigned(hr));
  return code;
}

// The path of the configured address under `key`, else `fallback`.
std::string ConfiguredPath(const char* key, const char* fallback) {
  const std::string address = AmbitAccess::GetURLAddress(key);
  const std::string path = parcelon::tools::AddressOnGateway("", address);
  return address.empty() || path == "/" ? fallback : path;
}

int Gateway(int argc, char** argv) {
  parcelon::tools::GatewayOptions options;
  options.dataDirectory = ".";
  std::string dtds = PARCELON_DTD_DIR;
  for (int i = 2; i < argc; ++i) {
    const std::string option = argv[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= argc) Fail(option + " needs a value");
      return argv[++i];
    };
    if (option == "--port") {
      const std::string port = value();
      char* end = nullptr;
      const long parsed = std::strtol(port.c_str(), &end, 10);
      if (*end != '\0' || parsed < 0 || parsed > 65535) Fail("--port wants 0 to 65535");
      options.port = int(parsed);
    } else if (option == "--data") {
      options.dataDirectory = value();
    } else if (option == "--dtds") {
      dtds = value();
    } else if (option == "--fault") {
      std::string error;
      options.faults.emplace_back();
      if (!parcelon::tools::ParseGatewayFault(value(), options.faults.back(), error)) Fail(error);
    } else {
      Fail("unknown option " + option);
    }
  }
  options.validate = [dtds](std::string_view document, std::string& message) {
    return parcelon::tools::ValidateRequest(document, dtds, message);
  };
  options.formPath = ConfiguredPath("EmailService.FormGatewayURL", "/lxn/forms");
  options.attachmentPath = ConfiguredPath("EmailService.FormGatewayAttachURL", "/lxn/attachments");
  // The server's threads inherit the blocked signals; this thread waits for them.
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  std::string error;
  const auto gateway = parcelon::tools::GatewaySimulator::Start(options, error);
  if (!gateway) return std::fprintf(stderr, "parcelon: %s\n", error.c_str()), 1;
  std::printf("%s\n", gateway->Address().c_str());
  std::fflush(stdout);
  std::fprintf(stderr,
               "parcelon: gateway simulator on %s (attachments %s, forms %s, status page /), data in %s/gateway.db, "
               "document types in %s\n",
               gateway->Address().c_str(), options.attachmentPath.c_str(), options.formPath.c_str(),
               options.dataDirectory.c_str(), dtds.c_str());
  int received = 0;
  sigwait(&signals, &received);
  gateway->Stop();
  return 0;
}
#endif

int Style(int argc, char** argv) {
  std::string templateName, company, store;
  bool withTaxFlag = true;
  for (int i = 2; i < argc; ++i) {
    const std::string option = argv[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= argc) Fail(option + " needs a value");
      return argv[++i];
    };
    if (option == "--company") company = value();
    else if (option == "--store") store = value();
    else if (option == "--no-tax-flag") withTaxFlag = false;
    else if (option.rfind("--", 0) == 0 || !templateName.empty()) Fail("unknown option " + option);
    else templateName = option;
  }
  if (templateName.empty()) Fail("name a TEMPLATE");
  if (company.empty() && store.empty()) Fail("name a --company fixture or a --store");
  const auto host = OpenHost(company, store);
  ICompanyFilePtr companyFile;
  if (FAILED(host->GetCompanyFile(companyFile.ReleaseAndGetAddressOf())))
    return std::fprintf(stderr, "parcelon: the company file cannot be opened\n"), 1;
  std::string text, error;
  const HRESULT hr = parcelon::tools::WriteTemplateStyle(companyFile.Get(), templateName, withTaxFlag, text, error);
  std::fputs(text.c_str(), stdout);
  if (FAILED(hr)) return std::fprintf(stderr, "parcelon: %s\n", error.c_str()), 1;
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) Fail("name a command");
  const std::string command = argv[1];
#if PARCELON_HAVE_NETWORK
  if (command == "send") return Send(ParseOptions(argc, argv));
  if (command == "gateway") return Gateway(argc, argv);
#else
  if (command == "send" || command == "gateway") Fail("this build sends no requests: use build (the dry run)");
#endif
  if (command != "build" && command != "style") Fail("unknown command");
#ifdef _WIN32
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
#endif
  return command == "build" ? Build(ParseOptions(argc, argv)) : Style(argc, argv);
}
