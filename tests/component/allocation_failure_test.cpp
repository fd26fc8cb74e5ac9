// A whole e-mailed invoice request with the document memory running out at every allocation in
// turn: each send either gives the complete request, byte for byte, or fails with E_OUTOFMEMORY,
// its log line and no text; a truncated document never goes out.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "clienttools/OLABuffer.h"
#include "component/SampleSendTest.h"
#include "diagnostics/FakeHost.h"
#include "tools/SendDriver.h"

namespace parcelon::test {
namespace {

const std::string kOutOfMemory = HexCode(E_OUTOFMEMORY);
const std::string kSessionPrefix = "Parcelon:CNA_Forms::BuildXML(short, BSTR*): ";
const std::string kFormPrefix = "Parcelon:CNA_Form::BuildXML(short, BSTR*): ";

// Invoice 1001 by e-mail with every address; `textLength` characters of e-mail text make both
// the form's and the session's document grow several times.
tools::FormSpec EMailedInvoice(size_t textLength) {
  tools::FormSpec form = SampleForm(naftINVOICE, 1001, nastEMAIL);
  form.cc = "accounts@obrien.example";
  form.bcc = "archive@harborpine.example";
  form.replyTo = "billing@harborpine.example";
  form.text = std::string(textLength, 't');
  return form;
}

class AllocationFailureTest : public SampleSendTest, public ::testing::WithParamInterface<size_t> {
 protected:
  void TearDown() override {
    OLABuffer::FailAllocation(0);
    SampleSendTest::TearDown();
  }

  // The send's transcript and result, with the `n`th document allocation failing (0: none), and
  // the number of document allocations it made.
  HRESULT Send(uint64_t n, std::string& transcript, uint64_t& allocations) {
    tools::SendSpec plan;
    plan.forms = {EMailedInvoice(GetParam())};
    StartCase();
    transcript.clear();
    const uint64_t before = OLABuffer::AllocationCount();
    OLABuffer::FailAllocation(n);
    const HRESULT hr = tools::RunSend(plan, transcript);
    OLABuffer::FailAllocation(0);
    allocations = OLABuffer::AllocationCount() - before;
    transcript = WithoutTrnUIDs(transcript);
    return hr;
  }
};

TEST_P(AllocationFailureTest, EveryRunGivesTheWholeRequestOrNoText) {
  std::string complete;
  uint64_t allocations = 0;
  ASSERT_EQ(S_OK, Send(0, complete, allocations)) << complete;
  ASSERT_EQ(LogEntries(), std::vector<std::string>());
  ASSERT_GE(allocations, GetParam() > 4096 ? 4u : 2u) << "the session's document and the form's, grown by a long text";
  // The form pass's request ends the transcript's text up to the body; a failed build ends it there.
  const std::string formPass = complete.substr(0, complete.find("send state: 2"));

  int failures = 0;
  for (uint64_t n = 1; n <= allocations + 1; ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n) + " of " + std::to_string(allocations));
    std::string transcript;
    uint64_t made = 0;
    const HRESULT hr = Send(n, transcript, made);
    if (hr == S_OK) {
      EXPECT_EQ(transcript, complete);
      EXPECT_EQ(LogEntries(), std::vector<std::string>());
      continue;
    }
    ++failures;
    EXPECT_EQ(hr, E_OUTOFMEMORY);
    EXPECT_EQ(transcript, formPass + "BuildXML failed: 0x8007000E\n");
    // The session says why it hands out nothing: its own document failed, or the form's did (the
    // form then says so first, after whatever its builders logged on the way).
    const std::vector<std::string> log = LogEntries();
    ASSERT_FALSE(log.empty());
    const std::string sessionOwn = Entry(kSessionPrefix, "Failed to write the request.", kOutOfMemory);
    const std::string formFailed = Entry(kSessionPrefix, "Failed to build XML for a form", kOutOfMemory);
    if (log.back() == sessionOwn) {
      EXPECT_EQ(log, std::vector<std::string>{sessionOwn});
    } else {
      EXPECT_EQ(log.back(), formFailed);
      ASSERT_GE(log.size(), 2u);
      EXPECT_EQ(log[log.size() - 2], Entry(kFormPrefix, "Failed to write the form request.", kOutOfMemory));
    }
  }
  EXPECT_EQ(failures, int(allocations)) << "every allocation of the request fails it";
}

// The form object itself: the complete request or E_OUTOFMEMORY with a null BSTR.
TEST_P(AllocationFailureTest, TheFormHandsOutNoTextAfterAFailure) {
  const tools::FormSpec invoice = EMailedInvoice(GetParam());
  const INA_Form7Ptr form = NewForm();
  ASSERT_EQ(S_OK, form->put_FormType(invoice.type));
  ASSERT_EQ(S_OK, form->put_TransactionRecordNumber(invoice.recNum));
  ASSERT_EQ(S_OK, form->put_SendMethod(invoice.send));
  ASSERT_EQ(S_OK, form->put_To(tools::ToBstr(invoice.to).Get()));
  ASSERT_EQ(S_OK, form->put_Text(tools::ToBstr(invoice.text).Get()));
  const auto build = [&](uint64_t n, std::optional<std::string>& text) {
    StartCase();
    BSTR out = reinterpret_cast<BSTR>(1);
    OLABuffer::FailAllocation(n);
    const HRESULT hr = form->BuildXML(0, &out);
    OLABuffer::FailAllocation(0);
    text = out ? std::optional<std::string>(WithoutTrnUIDs(ToAnsi(out))) : std::nullopt;
    SysFreeString(out);
    return hr;
  };
  std::optional<std::string> complete;
  const uint64_t before = OLABuffer::AllocationCount();
  ASSERT_EQ(S_OK, build(0, complete));
  ASSERT_TRUE(complete.has_value());
  const uint64_t allocations = OLABuffer::AllocationCount() - before;
  for (uint64_t n = 1; n <= allocations + 1; ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n) + " of " + std::to_string(allocations));
    std::optional<std::string> text;
    const HRESULT hr = build(n, text);
    if (n > allocations) {
      EXPECT_EQ(hr, S_OK);
      EXPECT_EQ(text, complete);
    } else {
      EXPECT_EQ(hr, E_OUTOFMEMORY);
      EXPECT_EQ(text, std::nullopt);
      ASSERT_FALSE(LogEntries().empty());
      EXPECT_EQ(LogEntries().back(), Entry(kFormPrefix, "Failed to write the form request.", kOutOfMemory));
    }
  }
}

// The sample's own text, and a text long enough to make both documents grow.
INSTANTIATE_TEST_SUITE_P(Texts, AllocationFailureTest, ::testing::Values(size_t(28), size_t(20000)));

}  // namespace
}  // namespace parcelon::test
