// Sends of the sample company over loopback HTTP to the gateway simulator in this process: what
// is stamped, what each upload carries, what the gateway keeps, and how each fault on the wire or
// in the gateway's answers ends the send. After every sequence the gateway's copy of each record
// the forms refer to equals what the host would upload now.
#include <gtest/gtest.h>
#include <httplib.h>

#include <memory>
#include <thread>
#include <string>
#include <vector>

#include "../upload/UploadTestSupport.h"
#include "component/SampleSendTest.h"
#include "response/ResponseCodes.h"
#include "tools/GatewaySimulator.h"
#include "tools/HttpExchange.h"
#include "tools/RequestValidator.h"

namespace parcelon::test {
namespace {

using tools::GatewayFault;
using tools::GatewaySimulator;
using tools::HttpExchange;

constexpr int64_t kFirstSend = 1235869200;  // after every modification time of the sample company
constexpr int64_t kHour = 3600;
constexpr char kUrls[] =
    "[URLs]\nEmailService.FormGatewayURL=https://forms.gateway.example/lxn/forms\n"
    "EmailService.FormGatewayAttachURL=https://forms.gateway.example/lxn/attachments\n";

tools::FormSpec PostedInvoice(LONG recNum = 1001) {
  tools::FormSpec form = SampleForm(naftINVOICE, recNum, nastEMAIL);
  form.post = true;
  return form;
}

// Answers the attachment passes itself and hands the form passes on: a form then names an
// attachment that the gateway never received.
class FormsOnly final : public tools::PassExchange {
 public:
  explicit FormsOnly(tools::PassExchange& forms) : forms_(forms) {}
  HRESULT Exchange(const tools::PassRequest& request, tools::PassResponse& response, std::string& error) override {
    return request.attachment ? attachments_.Exchange(request, response, error) : forms_.Exchange(request, response, error);
  }

 private:
  tools::SimulatedGateway attachments_{{}};
  tools::PassExchange& forms_;
};

// Keeps the request documents of the form passes.
class Recorder final : public tools::PassExchange {
 public:
  HRESULT Exchange(const tools::PassRequest& request, tools::PassResponse& response, std::string& error) override {
    if (!request.attachment) documents.push_back(request.body);
    return answers_.Exchange(request, response, error);
  }
  std::vector<std::string> documents;

 private:
  tools::SimulatedGateway answers_{{"0", "3000", "0", "3000", "0", "3000"}};
};

class GatewaySendTest : public SampleSendTest {
 protected:
  void SetUp() override {
    SampleSendTest::SetUp();
    Start({});
  }
  void TearDown() override {
    gateway_.reset();
    SampleSendTest::TearDown();
  }

  void Start(const std::vector<std::string>& faults, tools::GatewayOptions options = {}) {
    gateway_.reset();
    // Each gateway starts empty and checks every form request against its document type.
    if (!options.validate)
      options.validate = [](std::string_view document, std::string& message) {
        return tools::ValidateRequest(document, PARCELON_SOURCE_DIR "/dtds", message);
      };
    options.dataDirectory = ScratchFile("gateway-" + std::to_string(++gateways_));
    for (const std::string& text : faults) {
      std::string error;
      options.faults.emplace_back();
      ASSERT_TRUE(tools::ParseGatewayFault(text, options.faults.back(), error)) << error;
    }
    std::string error;
    gateway_ = GatewaySimulator::Start(std::move(options), error);
    ASSERT_TRUE(gateway_) << error;
  }

  // One send over HTTP an hour after the one before; its transcript goes to `transcript_`.
  HRESULT Send(const std::vector<tools::FormSpec>& forms, long timeoutMs = 30000, tools::PassExchange* exchange = nullptr) {
    clock_.now = kFirstSend + sends_++ * kHour;
    HttpExchange http({gateway_->Address(), timeoutMs, nullptr});
    tools::SendSpec plan;
    plan.forms = forms;
    plan.exchange = exchange ? exchange : &http;
    transcript_.clear();
    failure_.clear();
    return tools::RunSend(plan, transcript_, &failure_);
  }

  // The list records that carry an upload-time stamp.
  std::string Stamps() {
    std::string text;
    const auto list = [&](const char* kind, auto& records) {
      for (size_t i = 0; i < records.Size(); ++i)
        for (const refhost::Attribute& attribute : records.At(i).attributes)
          if (attribute.name == u"ParcelonUploadTime") text += std::string(kind) + std::to_string(records.At(i).recNum) + " ";
    };
    list("term ", Host().GetCompany().terms);
    list("name ", Host().GetCompany().names);
    return text;
  }

  // The records of a data upload, as kind:ClientID.
  static std::string RecordsOf(const std::string& document) {
    tools::ReceivedRequest request;
    std::string error, text;
    EXPECT_TRUE(tools::ReadReceivedRequest(document, request, error)) << error;
    for (const tools::UploadedRecord& record : request.records)
      text += record.kind + ":" + record.clientId + (record.removed ? "(removed) " : " ");
    return text;
  }

  // What the host would upload now for `forms`, every stamp taken off first, compared record by
  // record with the gateway's copy. Ends the test's sends: the stamps are gone afterwards.
  void ExpectGatewayCopyEqualsHost(const std::vector<tools::FormSpec>& forms) {
    WriteSettings(std::string("NetworkAdapter.RemoveUploadTimeAttrs=1\n") + kUrls);
    Recorder recorder;
    tools::SendSpec plan;
    plan.forms = forms;
    plan.exchange = &recorder;
    std::string transcript;
    ASSERT_EQ(S_OK, tools::RunSend(plan, transcript)) << transcript;
    int compared = 0;
    for (const std::string& document : recorder.documents) {
      tools::ReceivedRequest request;
      std::string error;
      ASSERT_TRUE(tools::ReadReceivedRequest(document, request, error)) << error;
      const auto kept = gateway_->Store().Records(request.companyUID);
      for (const tools::UploadedRecord& record : request.records) {
        const auto found = kept.find({record.kind, record.clientId});
        ASSERT_NE(kept.end(), found) << record.kind << " " << record.clientId;
        EXPECT_EQ(record.removed ? "removed" : record.text, record.removed ? found->second.state : found->second.text)
            << record.kind << " " << record.clientId;
        ++compared;
      }
    }
    EXPECT_GT(compared, 0);
  }

  std::unique_ptr<GatewaySimulator> gateway_;
  FakeUploadClock clock_;
  upload::ScopedUploadClock scopedClock_{clock_};
  int64_t sends_ = 0;
  int gateways_ = 0;
  std::string transcript_, failure_;
};

// The e-mailed invoice with Post: the attachment is kept, the upload applied and answered with a
// token, the form accepted; the host stamps what went up. Sent again, the upload carries only the
// invoice; after term 2 is edited, the term goes up as a change.
TEST_F(GatewaySendTest, AnAcceptedSendIsStampedAndTheNextCarriesOnlyWhatChanged) {
  ASSERT_EQ(S_OK, Send({PostedInvoice()})) << transcript_;
  EXPECT_NE(std::string::npos, transcript_.find("response: Set-Cookie: messageid=ATT000001 ; Path=/\n"));
  EXPECT_NE(std::string::npos, transcript_.find("<LastDataUploadToken>TOKEN-0001</LastDataUploadToken>"));
  EXPECT_NE(std::string::npos, transcript_.find("form status: InvoiceEMailRs 0\n"));
  EXPECT_EQ("term 2 name 100 ", Stamps());
  EXPECT_EQ(1, gateway_->Store().AttachmentCount());

  ASSERT_EQ(S_OK, Send({PostedInvoice()})) << transcript_;
  Host().GetCompany().terms.Find(2)->modTime = LONG(kFirstSend + 2 * kHour - kHour / 2);
  ASSERT_EQ(S_OK, Send({PostedInvoice()})) << transcript_;

  const std::vector<std::string> forms = gateway_->Store().FormTexts();
  ASSERT_EQ(3u, forms.size());
  const auto kept = gateway_->Store().Records("{7D0F6E2A-33C1-4B8E-9A51-2C4E8F10B7D3}");
  EXPECT_EQ("changed", kept.at({"Terms", "2"}).state);
  EXPECT_EQ("added", kept.at({"CustomerJobs", "100"}).state);
  EXPECT_EQ("changed", kept.at({"Invoices", "1001"}).state);
  ExpectGatewayCopyEqualsHost({PostedInvoice()});
}

// What each upload carried, read from the requests the gateway received.
TEST_F(GatewaySendTest, TheSecondUploadCarriesOnlyWhatChanged) {
  std::vector<std::string> uploads;
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(S_OK, Send({PostedInvoice()})) << transcript_;
    const size_t start = transcript_.find("<LXDataMsgsRq");
    const size_t end = transcript_.find("</LXDataMsgsRq>");
    ASSERT_NE(std::string::npos, end);
    uploads.push_back(RecordsOf("<?xml version=\"1.0\" encoding=\"windows-1252\"?><ZPN>" + transcript_.substr(start, end + 15 - start) + "</ZPN>"));
  }
  EXPECT_EQ("Terms:2 CustomerJobs:100 Invoices:1001 ", uploads[0]);
  EXPECT_EQ("Invoices:1001 ", uploads[1]);
  EXPECT_NE(std::string::npos, transcript_.find("<LastDataUploadToken>TOKEN-0001</LastDataUploadToken>\n<ClientSync>"));
}

// The gateway's statuses: "4011" takes every stamp off and the next send carries everything
// again; an expired ticket ends the send at the attachment; a refused upload stamps nothing.
TEST_F(GatewaySendTest, StatusesOfTheGatewayStampNothingItDidNotAccept) {
  Start({"4:status=4011", "5:expired", "9:status=3000"});
  ASSERT_EQ(S_OK, Send({PostedInvoice()})) << transcript_;  // requests 1, 2
  ASSERT_EQ(S_OK, Send({PostedInvoice()})) << transcript_;  // 3, 4: "4011"
  EXPECT_EQ("", Stamps());
  EXPECT_EQ(kTicketExpired, Send({PostedInvoice()})) << transcript_;  // 5
  EXPECT_EQ("ParseResponse failed: 0x8004910A", failure_);
  EXPECT_EQ("", Stamps());
  ASSERT_EQ(S_OK, Send({PostedInvoice()})) << transcript_;  // 6, 7: everything again
  EXPECT_EQ("term 2 name 100 ", Stamps());
  Host().GetCompany().terms.Find(2)->modTime = LONG(kFirstSend + 4 * kHour - kHour / 2);
  ASSERT_EQ(S_OK, Send({PostedInvoice()})) << transcript_;  // 8, 9: the upload refused
  EXPECT_NE(std::string::npos, transcript_.find("<DataUploadRs statusCode=\"3000\" statusSeverity=\"ERROR\"/>"));
  ASSERT_EQ(S_OK, Send({PostedInvoice()})) << transcript_;  // 10, 11: the term again
  EXPECT_NE(std::string::npos, transcript_.find("<TermsAdd>"));
  ExpectGatewayCopyEqualsHost({PostedInvoice()});
}

// Another process holds the data file record through every try: the accepted upload's token
// cannot be stored, so nothing is stamped although the gateway has the records; the next send
// carries them again with the old token and the gateway's copy is the host's.
TEST_F(GatewaySendTest, AHeldLockLeavesTheAcceptedUploadUnstampedAndTheNextSendCarriesItAgain) {
  Faults().HoldLock(u"Orvane:NetworkAdapter:DataUpload");
  EXPECT_EQ(E_FAIL, Send({PostedInvoice()})) << transcript_;
  EXPECT_EQ("ParseResponse failed: 0x80004005", failure_);
  EXPECT_EQ("", Stamps());
  Faults().Clear();
  ASSERT_EQ(S_OK, Send({PostedInvoice()})) << transcript_;
  EXPECT_NE(std::string::npos, transcript_.find("<LastDataUploadToken>0</LastDataUploadToken>"));
  EXPECT_EQ("term 2 name 100 ", Stamps());
  EXPECT_EQ("changed", gateway_->Store().Records("{7D0F6E2A-33C1-4B8E-9A51-2C4E8F10B7D3}").at({"Terms", "2"}).state);
  ExpectGatewayCopyEqualsHost({PostedInvoice()});
}

// Faults on the wire and in the answer's form: each ends the send with its result and words,
// nothing of the failed pass is stamped, and the next send completes the job.
TEST_F(GatewaySendTest, FaultsOnTheWireEndTheSendUnstampedAndTheNextSendCompletes) {
  const struct {
    const char* fault;
    long timeoutMs;
    HRESULT hr;
    const char* words;
  } cases[] = {
      {"2:http=500", 30000, tools::HttpStatusResult(500), "the gateway answered HTTP 500: The gateway failed (scripted)."},
      {"2:drop", 30000, tools::kConnectionBroken, "the connection broke off"},
      {"2:truncated", 30000, tools::kConnectionBroken, "the connection broke off"},
      {"2:delay=5000", 200, tools::kTimedOut, "no answer within 200 ms (timed out)"},
      {"2:malformed", 30000, E_FAIL, "the gateway's answer to pass 2 is not a readable document"},
      {"1:drop", 30000, tools::kConnectionBroken, "the connection broke off"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fault);
    Start({c.fault});
    const HRESULT hr = Send({PostedInvoice()}, c.timeoutMs);
    EXPECT_EQ(c.hr, hr) << transcript_;
    EXPECT_NE(std::string::npos, failure_.find(c.words)) << failure_;
    EXPECT_EQ("", Stamps());
    ASSERT_EQ(S_OK, Send({PostedInvoice()})) << transcript_;
    EXPECT_EQ("term 2 name 100 ", Stamps());
    // The next case starts from an unstamped company.
    for (size_t i = 0; i < Host().GetCompany().terms.Size(); ++i) Host().GetCompany().terms.At(i).attributes.clear();
    for (size_t i = 0; i < Host().GetCompany().names.Size(); ++i) Host().GetCompany().names.At(i).attributes.clear();
  }
  ExpectGatewayCopyEqualsHost({PostedInvoice()});
}

TEST_F(GatewaySendTest, AGatewayThatIsNotThereRefusesTheConnection) {
  const std::string address = gateway_->Address();
  gateway_->Stop();
  HttpExchange http({address, 30000, nullptr});
  tools::SendSpec plan;
  plan.forms = {PostedInvoice()};
  plan.exchange = &http;
  std::string transcript, failure;
  EXPECT_EQ(tools::kConnectionRefused, tools::RunSend(plan, transcript, &failure));
  EXPECT_EQ("pass 1 to " + address + "/lxn/attachments: no gateway answers there (connection refused)", failure);
  EXPECT_EQ("", Stamps());
}

// Puts the form request's first two children out of order: the gateway's validator refuses it.
class Misordering final : public tools::PassExchange {
 public:
  explicit Misordering(tools::PassExchange& next) : next_(next) {}
  HRESULT Exchange(const tools::PassRequest& request, tools::PassResponse& response, std::string& error) override {
    tools::PassRequest changed = request;
    const size_t auth = changed.body.find("<AuthID>"), company = changed.body.find("<CompanyUID>", auth);
    const size_t end = changed.body.find('\n', company) + 1;
    if (!request.attachment && auth != std::string::npos && company != std::string::npos)
      changed.body = changed.body.substr(0, auth) + changed.body.substr(company, end - company) +
                     changed.body.substr(auth, company - auth) + changed.body.substr(end);
    return next_.Exchange(changed, response, error);
  }

 private:
  tools::PassExchange& next_;
};

// A request that breaks its document type gets HTTP 400 with the validator's words; a form naming
// an attachment the gateway never received is refused after its upload was taken (and stamped).
TEST_F(GatewaySendTest, RefusedDocumentsAndUnknownAttachments) {
  HttpExchange wire({gateway_->Address(), 30000, nullptr});
  Misordering misordering(wire);
  EXPECT_EQ(tools::HttpStatusResult(400), Send({PostedInvoice()}, 30000, &misordering));
  EXPECT_EQ("pass 2 to " + gateway_->Address() +
                "/lxn/forms: the gateway answered HTTP 400: line 91: Element InvoiceEMailRq content does not follow the "
                "DTD, expecting (AuthID? , CompanyUID , EMailData , InvoiceForm , (ServiceStatusData , "
                "(ServiceStatusData , (ServiceStatusData , ServiceStatusData?)?)?)? , Attachments? , BatchSend), got "
                "(CompanyUID AuthID EMailData InvoiceForm ServiceStatusData ServiceStatusData ServiceStatusData "
                "ServiceStatusData Attachments BatchSend )",
            failure_);
  EXPECT_EQ("", Stamps());

  Start({});
  HttpExchange http({gateway_->Address(), 30000, nullptr});
  FormsOnly formsOnly(http);
  EXPECT_EQ(tools::kFormRefused, Send({PostedInvoice()}, 30000, &formsOnly));
  EXPECT_EQ("the gateway refused form 1 (InvoiceEMailRs): status 13102, \"Attachment ATT000001 is unknown.\"", failure_);
  EXPECT_EQ("term 2 name 100 ", Stamps());
}

// A gateway gone wrong answers more than any pass reads: the pass ends with the limit in words,
// whether the answer declares its length or streams without end; an answer of the limit is read.
TEST(HttpExchangeTest, AnAnswerLongerThanTheLimitEndsThePass) {
  httplib::Server server;
  const std::string atTheLimit(tools::kMaxResponseBytes, 'x');
  server.Post("/at-the-limit", [&](const httplib::Request&, httplib::Response& r) { r.set_content(atTheLimit, "text/plain"); });
  server.Post("/one-more", [&](const httplib::Request&, httplib::Response& r) {
    r.set_content(atTheLimit + "x", "text/plain");
  });
  const auto zeros = [](size_t, httplib::DataSink& sink) {
    static const std::string chunk(1 << 16, '0');
    return sink.write(chunk.data(), chunk.size());
  };
  server.Post("/declared", [&](const httplib::Request&, httplib::Response& r) {
    r.set_content_provider(size_t(4) << 30, "text/plain", [&](size_t offset, size_t, httplib::DataSink& sink) {
      return zeros(offset, sink);
    });
  });
  server.Post("/endless", [&](const httplib::Request&, httplib::Response& r) {
    r.set_chunked_content_provider("text/plain", zeros);
  });
  const int port = server.bind_to_any_port("127.0.0.1");
  ASSERT_GT(port, 0);
  std::thread serving([&] { server.listen_after_bind(); });
  const std::string address = "http://127.0.0.1:" + std::to_string(port);
  const struct {
    const char* path;
    HRESULT hr;
    const char* error;
  } cases[] = {
      {"/at-the-limit", S_OK, ""},
      {"/one-more", tools::kConnectionBroken, ": the answer is longer than 16777216 bytes"},
      {"/declared", tools::kConnectionBroken, ": the answer is longer than 16777216 bytes"},
      {"/endless", tools::kConnectionBroken, ": the answer is longer than 16777216 bytes"},
  };
  HttpExchange http({address, 30000, nullptr});
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    tools::PassRequest request;
    request.pass = 1;
    request.url = std::string("https://forms.gateway.example") + c.path;
    tools::PassResponse response;
    std::string error;
    EXPECT_EQ(c.hr, http.Exchange(request, response, error));
    EXPECT_EQ(*c.error ? "pass 1 to " + address + c.path + c.error : "", error);
    EXPECT_EQ(c.hr == S_OK ? tools::kMaxResponseBytes : 0, response.body.size());
  }
  server.stop();
  serving.join();
}

// The gateway reads no request body longer than its limit, whether the request declares its
// length or sends it in chunks without one; a body of the limit is read and kept. A body in
// multipart form parts is refused unread.
TEST_F(GatewaySendTest, ARequestBodyLongerThanTheLimitOrInPartsIsRefused) {
  tools::GatewayOptions options;
  options.maxRequestBytes = 64 << 10;
  Start({}, options);
  const std::string refused = "The request is longer than 65536 bytes.\n";
  const struct {
    bool chunked;
    size_t size;
    int status;
  } cases[] = {
      {false, options.maxRequestBytes, 200}, {false, options.maxRequestBytes + 1, 413},
      {true, options.maxRequestBytes, 200},  {true, options.maxRequestBytes + 1, 413},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.chunked ? "chunked " : "declared ") + std::to_string(c.size));
    httplib::Client client("127.0.0.1", gateway_->Port());
    const auto sent =
        c.chunked ? client.Post("/lxn/attachments",
                                [&](size_t offset, httplib::DataSink& sink) {
                                  static const std::string piece(4096, 'a');
                                  const size_t length = std::min(piece.size(), c.size - offset);
                                  if (length == 0) return sink.done(), true;
                                  return sink.write(piece.data(), length);
                                },
                                "application/pdf")
                  : client.Post("/lxn/attachments", std::string(c.size, 'a'), "application/pdf");
    ASSERT_TRUE(sent) << httplib::to_string(sent.error());
    EXPECT_EQ(c.status, sent->status);
    EXPECT_EQ(c.status == 413 ? refused : "", c.status == 413 ? sent->body : "");
  }
  httplib::Client client("127.0.0.1", gateway_->Port());
  const auto inParts = client.Post("/lxn/attachments", httplib::MultipartFormDataItems{{"file", "%PDF", "a.pdf", "application/pdf"}});
  ASSERT_TRUE(inParts) << httplib::to_string(inParts.error());
  EXPECT_EQ(415, inParts->status);
  EXPECT_EQ("The gateway takes no multipart/form-data requests.\n", inParts->body);
  EXPECT_EQ(2, gateway_->Store().AttachmentCount());
}

TEST(GatewayFaultTest, FaultsReadFromTheCommandLine) {
  const struct {
    const char* text;
    bool ok;
    GatewayFault::Kind kind;
    int value;
  } cases[] = {
      {"2:status=4011", true, GatewayFault::kStatus, 0}, {"3:http=500", true, GatewayFault::kHttp, 500},
      {"1:delay=250", true, GatewayFault::kDelay, 250},  {"4:expired", true, GatewayFault::kExpired, 0},
      {"4:drop", true, GatewayFault::kDrop, 0},          {"4:truncated", true, GatewayFault::kTruncated, 0},
      {"4:malformed", true, GatewayFault::kMalformed, 0}, {"0:drop", false, GatewayFault::kDrop, 0},
      {"x:drop", false, GatewayFault::kDrop, 0},         {"2:http=200", false, GatewayFault::kHttp, 0},
      {"2:delay=-1", false, GatewayFault::kDelay, 0},    {"2:status=", false, GatewayFault::kStatus, 0},
      {"2:explode", false, GatewayFault::kStatus, 0},    {"drop", false, GatewayFault::kStatus, 0},
  };
  for (const auto& c : cases) {
    GatewayFault fault;
    std::string error;
    EXPECT_EQ(c.ok, tools::ParseGatewayFault(c.text, fault, error)) << c.text;
    if (c.ok) {
      EXPECT_EQ(c.kind, fault.kind) << c.text;
      EXPECT_EQ(c.value, fault.value) << c.text;
    } else {
      EXPECT_FALSE(error.empty()) << c.text;
    }
  }
}

TEST(AddressOnGatewayTest, TheConfiguredPathMovesOntoTheGateway) {
  EXPECT_EQ("http://127.0.0.1:8080/lxn/forms",
            tools::AddressOnGateway("http://127.0.0.1:8080", "https://forms.gateway.example/lxn/forms"));
  EXPECT_EQ("http://127.0.0.1:8080/a?b=1", tools::AddressOnGateway("http://127.0.0.1:8080/", "https://x.example/a?b=1"));
  EXPECT_EQ("http://h/", tools::AddressOnGateway("http://h", "https://x.example"));
  EXPECT_EQ("http://h/", tools::AddressOnGateway("http://h", ""));
}

}  // namespace
}  // namespace parcelon::test
