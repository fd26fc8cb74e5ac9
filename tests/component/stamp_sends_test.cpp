// Whole sends one after another on the sample company, each answered by the driver's gateway,
// with what each leaves in the company: the stamps of the list records and the stored upload
// state. Each send's transcript and the company after it are compared in full with
// tests/component/sends/stamps-*.txt (PARCELON_UPDATE_SENDS=1 writes them anew).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../upload/UploadTestSupport.h"
#include "component/SampleSendTest.h"
#include "platform/Paths.h"
#include "upload/UploadState.h"

namespace parcelon::test {
namespace {

// 2009-03-01 01:00:00 UTC, after every modification time of the sample company; each send runs
// an hour after the one before.
constexpr int64_t kFirstSend = 1235869200;
constexpr int64_t kHour = 3600;

// One send: its transcript's file, its forms, the gateway's answers, and a change made to the
// company before it.
struct Send {
  const char* name;
  std::vector<tools::FormSpec> forms;
  std::vector<std::string> responses;
  void (*prepare)(refhost::Company& company, int64_t now) = nullptr;
};

tools::FormSpec PostedEstimate() {
  tools::FormSpec form = SampleForm(naftESTIMATE, 2001, nastEMAIL);
  form.post = true;
  return form;
}

tools::FormSpec PostedInvoice() {
  tools::FormSpec form = SampleForm(naftINVOICE, 1002, nastEMAIL);
  form.post = true;
  return form;
}

// Term 2, which the first send stamped, edited half an hour ago.
void EditTerm2(refhost::Company& company, int64_t now) { company.terms.Find(2)->modTime = LONG(now - kHour / 2); }

class StampSendsTest : public SampleSendTest {
 protected:
  // The stamps of the terms and the customers and jobs, and the stored upload state.
  std::string CompanyState() {
    std::string text = "== company\n";
    const auto list = [&](const char* kind, auto& records) {
      for (size_t i = 0; i < records.Size(); ++i)
        for (const refhost::Attribute& attribute : records.At(i).attributes)
          if (attribute.name == u"ParcelonUploadTime")
            text += std::string(kind) + " " + std::to_string(records.At(i).recNum) + " stamped " +
                    std::to_string(attribute.value) + "\n";
    };
    list("term", Host().GetCompany().terms);
    list("name", Host().GetCompany().names);
    OLAString token;
    LONG time = -1;
    const HRESULT tokenRead = upload::RetrieveLastDataUploadToken(&token);
    const HRESULT timeRead = upload::RetrieveLastClientDataUploadTime(&time);
    text += "token: " + (SUCCEEDED(tokenRead) ? std::string(token.GetText()) : HexCode(tokenRead)) + "\n";
    text += "last client upload time: " + (SUCCEEDED(timeRead) ? std::to_string(time) : HexCode(timeRead)) + "\n";
    return text;
  }

  // Runs `sends` one after another an hour apart, each answered as it says, and compares each
  // transcript with the company after it against its file; `results` are the sends' results.
  void Run(const std::vector<Send>& sends, const std::vector<HRESULT>& results) {
    const bool update = !GetEnv("PARCELON_UPDATE_SENDS").empty();
    upload::ScopedUploadClock scopedClock(clock_);
    for (size_t i = 0; i < sends.size(); ++i) {
      const Send& send = sends[i];
      clock_.now = kFirstSend + int64_t(i) * kHour;
      if (send.prepare) send.prepare(Host().GetCompany(), clock_.now);
      tools::SendSpec plan;
      plan.forms = send.forms;
      plan.responses = send.responses;
      std::string transcript;
      EXPECT_EQ(results[i], tools::RunSend(plan, transcript)) << send.name;
      transcript = WithoutTrnUIDs(transcript) + CompanyState();
      const std::string file = kSources + "/tests/component/sends/stamps-" + send.name + ".txt";
      if (update) WriteFile(file, transcript);
      EXPECT_EQ(ReadFile(file), transcript) << send.name;
    }
  }

  FakeUploadClock clock_;
};

// The e-mailed estimate of job 102 with Post: the job, its parents and its terms are stamped with
// the time the upload was built and the token is stored; sent again, it carries the token and
// the estimate only; then term 2 is edited and an invoice of a customer never sent goes up: the
// term travels although no form selects it, with the new customer and the invoice's terms.
TEST_F(StampSendsTest, AnAcceptedUploadIsStampedAndTheNextSendsCarryOnlyWhatChanged) {
  Run({{"1-estimate-post", {PostedEstimate()}, {"0", "0"}},
       {"2-estimate-again", {PostedEstimate()}, {"0", "0"}},
       {"3-term-edited-new-customer", {PostedInvoice()}, {"0", "0"}, EditTerm2}},
      {S_OK, S_OK, S_OK});
}

// "4011" removes every stamp and the last client upload time; the next send carries everything
// the form selects again.
TEST_F(StampSendsTest, Status4011RemovesEveryStampAndTheNextSendCarriesEverythingSelected) {
  Run({{"4-before-4011", {PostedEstimate()}, {"0", "0"}},
       {"4-answered-4011", {PostedEstimate()}, {"0", "4011"}},
       {"4-after-4011", {PostedEstimate()}, {"0", "0"}}},
      {S_OK, S_OK, S_OK});
}

// An expired ticket or a refused attachment ends the send before the form pass: nothing uploaded,
// nothing stamped.
TEST_F(StampSendsTest, AnExpiredTicketOrARefusedAttachmentEndsTheSendUnstamped) {
  Run({{"5-ticket-expired", {PostedEstimate()}, {"13109"}},
       {"5-attachment-refused", {PostedEstimate()}, {"13102"}}},
      {HRESULT(0x8004910A), HRESULT(0x80049109)});
  EXPECT_EQ((std::vector<std::string>{Entry("Parcelon:CNA_Forms::ParseResponse: ", "Ticket expired. ", "0x8004910a")}),
            LogEntries());
}

// An upload answered with a failure status stamps nothing, and the next send uploads the same
// records again.
TEST_F(StampSendsTest, AnUploadAnsweredWithAFailureIsNotStampedAndGoesUpAgain) {
  Run({{"6-upload-refused", {PostedEstimate()}, {"0", "3000"}},
       {"6-after-refusal", {PostedEstimate()}, {"0", "0"}}},
      {S_OK, S_OK});
}

// Another process holds the DataUpload record through every try: the token cannot be stored, so
// the upload does not count as accepted, nothing is stamped, and the failed answer ends the send.
TEST_F(StampSendsTest, ATokenThatCannotBeStoredLeavesEverythingUnstamped) {
  Faults().HoldLock(u"Orvane:NetworkAdapter:DataUpload");
  Run({{"7-record-held", {PostedEstimate()}, {"0", "0"}}}, {E_FAIL});
  EXPECT_EQ((std::vector<std::string>{
                Entry("NetworkAdapterManager:CDataFileStorage::WriteProperty(const char*, VARIANT): ",
                      "Could not acquire data file record lock in LX.", "0xffffd8f3"),
                Entry("Parcelon:CNA_Forms::StoreLastDataUploadToken(OLAString): ",
                      "Failed to write last data upload token \"TOKEN-0001\" to the data file."),
                Entry("Parcelon:CNA_Forms::ParseResponse: ", "Failed to store the last data upload token.")}),
            LogEntries());
  EXPECT_EQ((std::vector<uint32_t>{100, 100, 100, 100}), clock_.sleeps) << "five tries, 100 ms apart";
}

}  // namespace
}  // namespace parcelon::test
