// The request documents against their document type definitions (dtds/): every form pass of every
// whole-send transcript validates, and a request that breaks its definition, or a document that
// is no request, is refused with the validator's message.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/RequestValidity.h"
#include "support/TestSupport.h"
#include "tools/RequestDocument.h"
#include "tools/RequestValidator.h"

namespace parcelon::test {
namespace {

using tools::ComposeRequestDocument;
using tools::ValidateRequest;

const std::string kSources = PARCELON_SOURCE_DIR;
const std::string kDtds = kSources + "/dtds";

struct FormPass {
  std::string where;  // transcript file and pass, for the failure message
  std::string document;
};

// The documents of a transcript's form passes: each "body:" section (the lines up to the
// response types) composed under the "doctype:" the pass declared. Attachment passes give their
// body on the "body:" line itself and are not requests.
std::vector<FormPass> FormPassesOf(const std::string& name, const std::string& transcript) {
  std::vector<FormPass> passes;
  std::string docType, pass;
  size_t start = 0;
  bool inBody = false;
  std::string body;
  while (start < transcript.size()) {
    size_t end = transcript.find('\n', start);
    if (end == std::string::npos) end = transcript.size();
    const std::string line = transcript.substr(start, end - start);
    start = end + 1;
    if (inBody) {
      if (line.starts_with("response types to parse:")) {
        passes.push_back({name + " " + pass, ComposeRequestDocument(docType, body)});
        inBody = false;
      } else {
        body.append(line).append("\n");
      }
    } else if (line.starts_with("== pass")) {
      pass = line.substr(3);
    } else if (line.starts_with("doctype: ")) {
      docType = line.substr(9);
    } else if (line == "body:") {
      inBody = true;
      body.clear();
    }
  }
  return passes;
}

std::vector<FormPass> AllTranscriptFormPasses() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(kSources + "/tests/component/sends"))
    if (entry.path().extension() == ".txt") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  std::vector<FormPass> passes;
  for (const auto& file : files) {
    auto more = FormPassesOf(file.filename().string(), ReadFile(file.string()));
    passes.insert(passes.end(), more.begin(), more.end());
  }
  return passes;
}

std::string Validated(const std::string& document, const std::string& dtds = kDtds) {
  std::string message = "not cleared";
  return ValidateRequest(document, dtds, message) ? "valid" : message;
}

TEST(RequestValidatorTest, EveryFormPassOfEveryWholeSendValidates) {
  const std::vector<FormPass> passes = AllTranscriptFormPasses();
  // The 29 transcripts of today hold 30 form passes, empty ones included.
  EXPECT_GE(passes.size(), 30u);
  size_t formGate = 0, uploads = 0, requests = 0;
  for (const FormPass& pass : passes) {
    EXPECT_EQ(Validated(pass.document), "valid") << pass.where << "\n" << pass.document;
    formGate += pass.document.find("formgate.dtd") != std::string::npos;
    uploads += pass.document.find("<LXDataMsgsRq") != std::string::npos;
    requests += pass.document.find("<LXNParcelonMsgsRq") != std::string::npos;
  }
  // Both definitions and both message sets of the host forms' request are exercised.
  EXPECT_EQ(formGate, 1u);
  EXPECT_GT(uploads, 10u);
  EXPECT_GT(requests, 20u);
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

// The line of the document that `text` starts on, as libxml2 counts them.
int LineOf(const std::string& document, const std::string& text) {
  return int(std::count(document.begin(), document.begin() + long(document.find(text)), '\n')) + 1;
}

// The template style aggregate is declared beside the request (no request carries it): the
// sample company's templates, as the style tests expect them, validate as documents of their own.
TEST(RequestValidatorTest, TheSampleTemplatesValidate) {
  for (const char* name : {"invoice-template.txt", "estimate-template.txt"}) {
    const std::string style = ReadFile(kSources + "/tests/forms/styles/" + name);
    ASSERT_FALSE(style.empty()) << name;
    const std::string document =
        "<?xml version=\"1.0\"?>\n<!DOCTYPE StyleItem SYSTEM \"https://gateway.orvane.example/dtds/lxmain.dtd\">\n" +
        style;
    EXPECT_EQ(Validated(document), "valid") << name;
    // A host value without a word in the gateway's vocabulary is written empty, and refused.
    EXPECT_EQ(Validated(Replaced(document, "border=\"None\"", "border=\"\"")),
              "line " + std::to_string(LineOf(document, "border=\"None\"")) +
                  ": Syntax of value for attribute border of StyleFieldInfo is not valid")
        << name;
  }
}

// A fax of invoice 1002 with a data upload, as the whole send gives it.
std::string UploadAndFax() {
  for (const FormPass& pass :
       FormPassesOf("upload-all-customers", ReadFile(kSources + "/tests/component/sends/upload-all-customers.txt")))
    if (pass.document.find("<InvoiceFaxRq") != std::string::npos) return pass.document;
  return {};
}

TEST(RequestValidatorTest, BrokenRequestsAreRefusedWithTheValidatorsMessage) {
  const std::string fax = UploadAndFax();
  ASSERT_FALSE(fax.empty());
  ASSERT_EQ(Validated(fax), "valid");
  const std::string companyUID = "<CompanyUID>{7D0F6E2A-33C1-4B8E-9A51-2C4E8F10B7D3}</CompanyUID>\n";
  const int requestLine = LineOf(fax, "<InvoiceFaxRq");

  struct Case {
    const char* name;
    std::string document;
    std::string message;
  };
  const Case cases[] = {
      {"two children swapped",
       Replaced(fax, "<AuthID>HP-4411-0937</AuthID>\n" + companyUID, companyUID + "<AuthID>HP-4411-0937</AuthID>\n"),
       "line " + std::to_string(requestLine) +
           ": Element InvoiceFaxRq content does not follow the DTD, expecting (AuthID? , CompanyUID , FaxData , "
           "InvoiceForm), got (CompanyUID AuthID FaxData InvoiceForm )"},
      {"a required element missing",
       Replaced(fax, "<AuthID>HP-4411-0937</AuthID>\n" + companyUID, "<AuthID>HP-4411-0937</AuthID>\n"),
       "line " + std::to_string(requestLine) +
           ": Element InvoiceFaxRq content does not follow the DTD, expecting (AuthID? , CompanyUID , FaxData , "
           "InvoiceForm), got (AuthID FaxData InvoiceForm )"},
      // The parent's content is checked before its children's declarations.
      {"an unknown element", Replaced(fax, "<FaxData>\n", "<FaxData>\n<Priority>high</Priority>\n"),
       "line " + std::to_string(LineOf(fax, "<FaxData>")) +
           ": Element FaxData content does not follow the DTD, expecting (SenderInfo? , RecipientInfo , Note?), got "
           "(Priority RecipientInfo Note )"},
      {"an unknown root", Replaced(Replaced(fax, "<ZPN>", "<Request>"), "</ZPN>", "</Request>"),
       "line " + std::to_string(LineOf(fax, "<ZPN>")) + ": No declaration for element Request"},
      {"a value outside the enumeration",
       Replaced(fax, "<LXNParcelonMsgsRq version=\"1\">", "<LXNParcelonMsgsRq version=\"2\">"),
       "line " + std::to_string(LineOf(fax, "<LXNParcelonMsgsRq")) +
           ": Value \"2\" for attribute version of LXNParcelonMsgsRq is not among the enumerated set"},
      {"a required attribute missing", Replaced(fax, "<DataUploadRq trnUID=\"*\">", "<DataUploadRq>"),
       "line " + std::to_string(LineOf(fax, "<DataUploadRq")) +
           ": Element DataUploadRq does not carry attribute trnUID"},
      {"a form request under the other documents' type", Replaced(fax, "lxmain.dtd", "formgate.dtd"),
       "line " + std::to_string(LineOf(fax, "<ZPN>")) +
           ": Element ZPN content does not follow the DTD, expecting (FormsMsgsRq), got (LXDataMsgsRq "
           "LXNParcelonMsgsRq )"},
  };
  for (const Case& test : cases) EXPECT_EQ(Validated(test.document), test.message) << test.name;
}

TEST(RequestValidatorTest, DocumentsThatAreNoRequestAreRefused) {
  const std::string request = ComposeRequestDocument(kLXMainDocType, "");
  ASSERT_EQ(Validated(request), "valid") << "an empty root: a form pass that delivers nothing";
  const std::string huge = Replaced(request, "<ZPN>\n", "<ZPN>\n" + std::string(tools::kMaxRequestDocumentBytes, ' '));

  struct Case {
    const char* name;
    std::string document;
    std::string dtds;
    std::string message;
  };
  const Case cases[] = {
      {"not XML", "Invoice 1001, by fax", kDtds, "line 1: Start tag expected, '<' not found"},
      {"empty", "", kDtds, "the document is not XML"},
      {"cut short", request.substr(0, request.size() - 4), kDtds, "line 4: expected '>'"},
      {"no declaration", "<?xml version=\"1.0\"?>\n<ZPN></ZPN>\n", kDtds,
       "the document has no document type declaration"},
      {"no system identifier", "<!DOCTYPE ZPN>\n<ZPN/>\n", kDtds,
       "the document type declaration names no system identifier"},
      {"an unknown definition",
       Replaced(request, "https://gateway.orvane.example/dtds/lxmain.dtd",
                "https://gateway.orvane.example/dtds/other.dtd"),
       kDtds,
       "the document type declaration names an unknown definition: https://gateway.orvane.example/dtds/other.dtd"},
      {"a path that climbs",
       Replaced(request, "https://gateway.orvane.example/dtds/lxmain.dtd", "../../dtds/lxmain.dtd"), kDtds,
       "the document type declaration names an unknown definition: ../../dtds/lxmain.dtd"},
      {"a bare file name", Replaced(request, "https://gateway.orvane.example/dtds/lxmain.dtd", "lxmain.dtd"), kDtds,
       "valid"},
      {"an internal subset", Replaced(request, ".dtd'>", ".dtd' [<!ELEMENT ZPN ANY>]>"), kDtds,
       "the document type declaration has an internal subset"},
      {"no definitions where they are looked for", request, kSources + "/no-such-folder",
       "cannot read the document type definition " + kSources + "/no-such-folder/lxmain.dtd"},
      {"larger than the bound", huge, kDtds,
       "the document is larger than " + std::to_string(tools::kMaxRequestDocumentBytes) + " bytes"},
  };
  for (const Case& test : cases) EXPECT_EQ(Validated(test.document, test.dtds), test.message) << test.name;
}

}  // namespace
}  // namespace parcelon::test
