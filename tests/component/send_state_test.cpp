// The send-state machine as the network adapter drives it: Initialize, the passes, and
// OnSynchCompleted moving from form to form.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ComponentTest.h"

namespace parcelon::test {
namespace {

constexpr HRESULT kNoAttachmentMessageID = HRESULT(0x8004910FL);

class SendStateTest : public ComponentTest {
 protected:
  // Adds a form whose subject names it.
  ComPtr<INA_Form7> AddNamedForm(const std::string& name, NASendType method,
                                 VARIANT_BOOL synchMultiple = VARIANT_FALSE) {
    FormSetup setup;
    setup.method = method;
    setup.synchMultiple = synchMultiple;
    ComPtr<INA_Form7> form = AddForm(setup);
    EXPECT_EQ(S_OK, form->put_Subject(MakeBstr(name).Get()));
    return form;
  }

  // The subject of the pass's form, as the adapter reads it.
  std::string CurrentSubject() { return TxEParams()[0].value_or(""); }

  // Runs the send from Initialize to its end: each pass is written as its state and the subject
  // of its form ("1A"); an attachment pass receives its message identifier first. At most
  // `limit` passes.
  std::string RunSend(int limit = 100) {
    EXPECT_EQ(S_OK, base_->Initialize());
    std::string trace;
    for (int pass = 0; pass < limit; ++pass) {
      const int state = ObservedState();
      if (state == 3) return trace + "3";
      trace += std::to_string(state) + CurrentSubject() + " ";
      if (state == 1) {
        EXPECT_EQ(S_OK, SetCookie("messageid=M" + std::to_string(pass) + "x;"));
      }
      EXPECT_EQ(S_OK, base_->OnSynchCompleted());
    }
    return trace + "...";
  }
};

struct InitializeCase {
  NASendType method;
  int state;
  HRESULT isSendMethod;
};

class InitializeTest : public SendStateTest,
                       public ::testing::WithParamInterface<InitializeCase> {};

// The first form's send method chooses the first pass: a delivered form starts with the upload
// of its attachment (tests/component/sends), any other with the form request.
TEST_P(InitializeTest, FirstFormsMethodChoosesTheFirstPass) {
  AddForm(GetParam().method);
  AddForm(nastEMAIL);
  EXPECT_EQ(S_FALSE, base_->IsSendMethod());
  ASSERT_EQ(S_OK, base_->Initialize());
  EXPECT_EQ(GetParam().state, ObservedState());
  EXPECT_EQ(GetParam().isSendMethod, base_->IsSendMethod());
}

INSTANTIATE_TEST_SUITE_P(
    SendState, InitializeTest,
    ::testing::Values(InitializeCase{nastDELETE, 2, S_FALSE}, InitializeCase{nastVOID, 2, S_FALSE},
                      InitializeCase{nastPENDING, 2, S_FALSE}));

TEST_F(SendStateTest, NewSessionWantsAPass) {
  EXPECT_EQ(0, ObservedState());
  EXPECT_EQ(S_OK, base_->OnSynchCompleted());
  EXPECT_EQ(0, ObservedState());
  EXPECT_TRUE(LogEntries().empty());
}

// With no form the send is over at once; the adapter is told it called too early.
TEST_F(SendStateTest, InitializeWithoutFormsEndsTheSend) {
  EXPECT_EQ(E_UNEXPECTED, base_->Initialize());
  EXPECT_EQ(3, ObservedState());
  EXPECT_EQ(S_FALSE, base_->IsSendMethod());
  EXPECT_EQ(S_OK, base_->OnSynchCompleted());
  EXPECT_EQ(3, ObservedState());
}

struct SendCase {
  const char* name;
  std::vector<NASendType> methods;
  int synchMultipleForm;  // index of the form with SynchMultiple, -1 for none
  const char* trace;
};

class SendTest : public SendStateTest, public ::testing::WithParamInterface<SendCase> {};

// Whether a form pass is followed by an attachment pass is decided by the send method of the form
// just completed, not by the next form's. A form alone, two e-mailed forms and SynchMultiple on
// the first of two are in tests/component/sends.
TEST_P(SendTest, PassesFollowTheForms) {
  const SendCase& c = GetParam();
  for (size_t i = 0; i < c.methods.size(); ++i)
    AddNamedForm(std::string(1, char('A' + i)), c.methods[i],
                 int(i) == c.synchMultipleForm ? VARIANT_TRUE : VARIANT_FALSE);
  EXPECT_EQ(c.trace, RunSend());
  EXPECT_TRUE(LogEntries().empty());
}

INSTANTIATE_TEST_SUITE_P(
    SendState, SendTest,
    ::testing::Values(
        SendCase{"FaxThenPaperMail", {nastFAX, nastPAPER_MAIL}, -1, "1A 2A 1B 2B 3"},
        SendCase{"DeliveredThenNone", {nastEMAIL, nastNONE}, -1, "1A 2A 1B 2B 3"},
        SendCase{"NoneThenDelivered", {nastNONE, nastEMAIL, nastFAX}, -1, "2A 2B 1C 2C 3"},
        SendCase{"RemovalNotices", {nastDELETE, nastVOID, nastPENDING}, -1, "2A 2B 2C 3"},
        SendCase{"SynchMultipleOnSecond", {nastNONE, nastNONE, nastNONE}, 1, "2A 2B 3"},
        SendCase{"SynchMultipleOnLast", {nastNONE, nastEMAIL}, 1, "2A 2B 3"}),
    [](const ::testing::TestParamInfo<SendCase>& info) { return info.param.name; });

// An attachment pass whose response gave no message identifier stays an attachment pass.
TEST_F(SendStateTest, AttachmentPassWithoutMessageIdIsRepeated) {
  ComPtr<INA_Form7> form = AddNamedForm("A", nastEMAIL);
  ASSERT_EQ(S_OK, base_->Initialize());
  EXPECT_EQ(kNoAttachmentMessageID, base_->OnSynchCompleted());
  EXPECT_EQ(1, ObservedState());
  EXPECT_EQ(
      std::vector<std::string>{SessionEntry(
          "OnSynchCompleted()", "Failed to get parcelon attachment message ID", "0x8004910f")},
      LogEntries());

  // An empty identifier is an identifier.
  ASSERT_EQ(S_OK, form->put_MessageID(MakeBstr("").Get()));
  EXPECT_EQ(S_OK, base_->OnSynchCompleted());
  EXPECT_EQ(2, ObservedState());
}

// Forms removed during a send end it after the pass under way.
TEST_F(SendStateTest, RemovingTheFormsEndsTheSend) {
  AddNamedForm("A", nastNONE);
  AddNamedForm("B", nastNONE);
  ASSERT_EQ(S_OK, base_->Initialize());
  ASSERT_EQ(S_OK, session_->RemoveAllForms());
  EXPECT_EQ("A", CurrentSubject());
  EXPECT_EQ(S_OK, base_->OnSynchCompleted());
  EXPECT_EQ(3, ObservedState());
}

// Initialize starts the send again from the first form.
TEST_F(SendStateTest, InitializeRestartsFromTheFirstForm) {
  AddNamedForm("A", nastNONE);
  AddNamedForm("B", nastEMAIL);
  EXPECT_EQ("2A 2B 3", RunSend());
  EXPECT_EQ("2A 2B 3", RunSend());
}

// A thousand forms go one by one, each with its attachment pass; the session's INA_Forms
// OnSynchCompleted is the adapter's as well.
TEST_F(SendStateTest, ThousandFormsInOneSession) {
  constexpr int kForms = 1000;
  for (int i = 0; i < kForms; ++i) AddNamedForm("F" + std::to_string(i), nastEMAIL);
  ASSERT_EQ(S_OK, base_->Initialize());
  int passes = 0;
  for (int i = 0; i < kForms; ++i) {
    const std::string name = "F" + std::to_string(i);
    ASSERT_EQ(1, ObservedState()) << name;
    ASSERT_EQ(name, CurrentSubject());
    ASSERT_EQ(S_OK, SetCookie("messageid=" + name + "x"));
    ASSERT_EQ(S_OK, session_->OnSynchCompleted());
    ASSERT_EQ(2, ObservedState()) << name;
    ASSERT_EQ(S_OK, base_->OnSynchCompleted());
    passes += 2;
  }
  EXPECT_EQ(3, ObservedState());
  EXPECT_EQ(2 * kForms, passes);
  EXPECT_TRUE(LogEntries().empty());
}

}  // namespace
}  // namespace parcelon::test
