// Whole sends of the sample company, driven as the network adapter drives them, against the
// expected transcripts in tests/component/sends/: every pass's URL, content type, header lines
// and body in full. PARCELON_UPDATE_SENDS=1 writes the transcripts anew (review them before
// committing).
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "component/SampleSendTest.h"
#include "platform/Paths.h"
#include "tools/SendDriver.h"

namespace parcelon::test {
namespace {

using tools::FormSpec;
using tools::SendSpec;

// OLE dates of the statement period.
constexpr DATE k2009March1 = 39873, k2009March31 = 39903;

struct Scenario {
  const char* name;
  std::vector<FormSpec> forms;
  // The session's DoAllCustomers.
  bool allCustomers = false;
};

// `form` with Post set: its records go with the data upload.
FormSpec Posted(FormSpec form) {
  form.post = true;
  return form;
}

std::vector<Scenario> Scenarios() {
  FormSpec full = SampleForm(naftINVOICE, 1001, nastEMAIL);
  full.cc = "accounts@obrien.example";
  full.bcc = "archive@harborpine.example";
  full.replyTo = "billing@harborpine.example";
  FormSpec statement = SampleForm(naftSTATEMENT, 0, nastEMAIL);
  statement.statementCustomer = 102;
  statement.statementDate = k2009March31;
  statement.statementFrom = k2009March1;
  statement.statementTo = k2009March31;
  FormSpec other = SampleForm(naftNON_LX, 0, nastEMAIL);
  FormSpec first = SampleForm(naftINVOICE, 1001, nastEMAIL), second = SampleForm(naftESTIMATE, 2002, nastEMAIL);
  FormSpec firstTogether = first;
  firstTogether.synchMultiple = true;
  return {
      {"invoice-email-cc-bcc-reply", {full}},
      {"invoice-email-no-terms-zero-date", {SampleForm(naftINVOICE, 1003, nastEMAIL)}},
      {"invoice-fax", {SampleForm(naftINVOICE, 1002, nastFAX)}},
      {"invoice-paper-mail", {SampleForm(naftINVOICE, 1001, nastPAPER_MAIL)}},
      {"estimate-email-customer", {SampleForm(naftESTIMATE, 2002, nastEMAIL)}},
      {"estimate-fax-job", {SampleForm(naftESTIMATE, 2001, nastFAX)}},
      {"estimate-paper-mail", {SampleForm(naftESTIMATE, 2001, nastPAPER_MAIL)}},
      {"statement-email-job", {statement}},
      {"other-document-email", {other}},
      {"invoice-send-method-none", {SampleForm(naftINVOICE, 1001, nastNONE)}},
      {"two-forms-one-by-one", {first, second}},
      {"two-forms-synch-multiple", {firstTogether, second}},
      {"upload-estimate-email-job-post", {Posted(SampleForm(naftESTIMATE, 2001, nastEMAIL))}},
      {"upload-invoice-void-post", {Posted(SampleForm(naftINVOICE, 1001, nastVOID))}},
      {"upload-all-customers", {SampleForm(naftINVOICE, 1002, nastFAX)}, true},
      {"upload-several-forms-post",
       {Posted(SampleForm(naftINVOICE, 1001, nastEMAIL)), SampleForm(naftINVOICE, 1003, nastFAX),
        Posted(SampleForm(naftESTIMATE, 2002, nastPAPER_MAIL))}},
  };
}

class WholeSendTest : public SampleSendTest, public ::testing::WithParamInterface<Scenario> {
 protected:
  // Runs the scenario and compares its transcript with the expected one (or writes it anew).
  void ExpectTranscript(bool update) {
    SendSpec plan;
    plan.forms = GetParam().forms;
    plan.allCustomers = GetParam().allCustomers;
    std::string transcript;
    EXPECT_EQ(S_OK, tools::RunSend(plan, transcript)) << transcript;
    transcript = WithoutTrnUIDs(transcript);
    const std::string expectedFile = kSources + "/tests/component/sends/" + GetParam().name + ".txt";
    if (update) WriteFile(expectedFile, transcript);
    EXPECT_EQ(transcript, ReadFile(expectedFile));
    EXPECT_EQ(LogEntries(), std::vector<std::string>()) << "a whole send logs no failure";
  }
};

// The sample company with its sections in the reverse order: transactions before the lists they
// refer to, customers before the other names.
std::string SampleWithSectionsReversed() {
  const auto sample = nlohmann::ordered_json::parse(ReadFile(kSources + "/samples/sample-company.json"));
  nlohmann::ordered_json reversed = nlohmann::ordered_json::object();
  for (auto section = sample.crbegin(); section != sample.crend(); ++section)
    reversed[section.key()] = section.value();
  return reversed.dump(1);
}

TEST_P(WholeSendTest, TranscriptIsExactlyTheExpectedOne) {
  ExpectTranscript(!GetEnv("PARCELON_UPDATE_SENDS").empty());
}

TEST_P(WholeSendTest, TheOrderOfTheFixtureSectionsChangesNothing) {
  UseCompany(SampleWithSectionsReversed());
  ExpectTranscript(false);
}

INSTANTIATE_TEST_SUITE_P(Sends, WholeSendTest, ::testing::ValuesIn(Scenarios()),
                         [](const auto& info) {
                           std::string name = info.param.name;
                           for (char& c : name)
                             if (c == '-') c = '_';
                           return name;
                         });

}  // namespace
}  // namespace parcelon::test
