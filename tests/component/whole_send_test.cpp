// Whole sends of the sample company, driven as the network adapter drives them, against the
// expected transcripts in tests/component/sends/: every pass's URL, content type, header lines
// and body in full. PARCELON_UPDATE_SENDS=1 writes the transcripts anew (review them before
// committing).
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "../upload/UploadTestSupport.h"
#include "component/SampleSendTest.h"
#include "platform/Paths.h"
#include "tools/SendDriver.h"
#include "upload/UploadState.h"

namespace parcelon::test {
namespace {

using tools::FormSpec;
using tools::SendSpec;

// OLE dates of the statement period.
constexpr DATE k2009March1 = 39873, k2009March31 = 39903;

// 2009-03-01 00:00:00 UTC, after every modification time of the sample company.
constexpr LONG kLastUpload = 1235865600;

struct Scenario {
  const char* name;
  std::vector<FormSpec> forms;
  // The session's DoAllCustomers.
  bool allCustomers = false;
  // Changes the sample's fixture text before it is loaded (none: the sample as it is).
  std::string (*fixture)(const std::string& sample) = nullptr;
  // Changes the loaded company before the send, such as stamping records as uploaded earlier.
  void (*prepare)(refhost::Company& company) = nullptr;
};

// The sample company grown to 50 customers and jobs: groups of a customer with a job, a sub-job
// and a sub-sub-job, each its own record number, after the sample's own six.
std::string FiftyCustomersAndJobs(const std::string& sample) {
  auto company = nlohmann::ordered_json::parse(sample);
  auto& customers = company["customers"];
  for (int group = 1; customers.size() < 50; ++group) {
    int parent = 0;
    for (int level = 0; level < 4 && customers.size() < 50; ++level) {
      const int recNum = 500 + group * 10 + level;
      nlohmann::ordered_json name = {{"recNum", recNum}, {"modTime", "2009-02-20T12:00:00Z"}};
      name["name"] = level == 0 ? "Customer " + std::to_string(group) : "Job " + std::to_string(recNum);
      if (parent != 0) name["parent"] = parent;
      customers.push_back(name);
      parent = recNum;
    }
  }
  return company.dump(1);
}

// Stamps `record` as uploaded at `uploadTime` and changed at `modTime`.
void Stamp(refhost::ListRecord& record, LONG uploadTime, LONG modTime) {
  record.attributes = {{u"ParcelonUploadTime", u"{54901C71-3408-44fb-9031-7B4BB81D871C}", uploadTime}};
  record.modTime = modTime;
}

// After an upload at kLastUpload: term 3 was edited later and goes though no form selects it;
// term 1 and customer 110, which the invoice selects, changed exactly when they were uploaded:
// the term stays home, the customer is sent.
void TermEditedAfterTheLastUpload(refhost::Company& company) {
  Stamp(*company.terms.Find(3), kLastUpload - 1000, kLastUpload + 50);
  Stamp(*company.terms.Find(1), kLastUpload, kLastUpload);
  Stamp(*company.names.Find(110), kLastUpload, kLastUpload);
}

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
      {"upload-all-customers-fifty", {SampleForm(naftINVOICE, 1002, nastFAX)}, true, FiftyCustomersAndJobs},
      {"upload-term-edited-after-last-upload", {Posted(SampleForm(naftINVOICE, 1002, nastFAX))}, false, nullptr,
       TermEditedAfterTheLastUpload},
  };
}

class WholeSendTest : public SampleSendTest, public ::testing::WithParamInterface<Scenario> {
 protected:
  // The scenario's company fixture text.
  static std::string Fixture() {
    const std::string sample = ReadFile(kSources + "/samples/sample-company.json");
    return GetParam().fixture ? GetParam().fixture(sample) : sample;
  }

  // Runs the scenario on `fixture` and compares its transcript with the expected one (or writes
  // it anew). A scenario that prepares the company runs after an upload at kLastUpload, an hour
  // later.
  void ExpectTranscript(const std::string& fixture, bool update) {
    UseCompany(fixture);
    FakeUploadClock clock;
    clock.now = kLastUpload + 3600;
    upload::ScopedUploadClock scopedClock(clock);
    if (GetParam().prepare) {
      ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(kLastUpload));
      GetParam().prepare(Host().GetCompany());
    }
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

// `fixture` with its sections in the reverse order: transactions before the lists they refer to,
// customers before the other names.
std::string WithSectionsReversed(const std::string& fixture) {
  const auto sample = nlohmann::ordered_json::parse(fixture);
  nlohmann::ordered_json reversed = nlohmann::ordered_json::object();
  for (auto section = sample.crbegin(); section != sample.crend(); ++section)
    reversed[section.key()] = section.value();
  return reversed.dump(1);
}

TEST_P(WholeSendTest, TranscriptIsExactlyTheExpectedOne) {
  ExpectTranscript(Fixture(), !GetEnv("PARCELON_UPDATE_SENDS").empty());
}

TEST_P(WholeSendTest, TheOrderOfTheFixtureSectionsChangesNothing) {
  ExpectTranscript(WithSectionsReversed(Fixture()), false);
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
