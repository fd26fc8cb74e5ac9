// The session's upload-time stamps: the removal before a request that the switch or
// ForceNewCompany asks for (with the switch's warning box), and what a pass remembers of the
// upload it wrote.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "../response/ResponseTestSupport.h"
#include "../upload/UploadTestSupport.h"
#include "component/NA_Forms.h"
#include "component/SampleSendTest.h"
#include "upload/UploadState.h"

namespace parcelon::test {
namespace {

// Written after the fixture's own "[ZPSSettings]" lines, the switch joins that section: Windows'
// profile reader takes only the first section of a name.
const std::string kURLs =
    "[URLs]\nEmailService.FormGatewayURL=https://forms.gateway.example/lxn/forms\n"
    "EmailService.FormGatewayAttachURL=https://forms.gateway.example/lxn/attachments\n";
constexpr LONG kEarlier = 1200000000;

const std::u16string kWarning =
    u"Upload time attributes successfully removed.\n"
    u"To avoid further attribute removal,\nplease reset the value of \""
    u"NetworkAdapter.RemoveUploadTimeAttrs"
    u"\"\nto \"0\" in the \""
    u"ZPSSettings.aov"
    u"\" file at this time.";

class UploadStampsTest : public SampleSendTest {
 protected:
  void SetUp() override {
    SampleSendTest::SetUp();
    for (refhost::ListRecord* record : StampedRecords())
      record->attributes = {{u"ParcelonUploadTime", u"{54901C71-3408-44fb-9031-7B4BB81D871C}", kEarlier}};
    ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(kEarlier));
    CNALogger::ResetForTesting();
  }

  std::vector<refhost::ListRecord*> StampedRecords() {
    refhost::Company& company = Host().GetCompany();
    return {company.terms.Find(1), company.terms.Find(3), company.names.Find(110)};
  }
  // How many of the records stamped in SetUp keep their stamp.
  size_t StampsLeft() {
    size_t left = 0;
    for (refhost::ListRecord* record : StampedRecords()) left += record->attributes.size();
    return left;
  }
  LONG LastTime() {
    LONG time = -1;
    EXPECT_EQ(S_OK, upload::RetrieveLastClientDataUploadTime(&time));
    return time;
  }

  // A session with the estimate 2001 sent by no method, posted unless `post` is false: one form
  // pass, whose request holds the data upload only.
  ComPtr<INA_Base5> Session(bool forceNewCompany, bool post = true) {
    ComPtr<INA_Forms2> session;
    EXPECT_EQ(S_OK, CoCreateInstance(CLSID_NA_Forms, nullptr, CLSCTX_INPROC_SERVER, IidOf<INA_Forms2>(),
                                     session.ReleaseAndGetVoidAddress()));
    EXPECT_EQ(S_OK, session->put_ForceNewCompany(forceNewCompany ? VARIANT_TRUE : VARIANT_FALSE));
    ComPtr<INA_Form> added;
    EXPECT_EQ(S_OK, session->AddForm(added.ReleaseAndGetAddressOf()));
    ComPtr<INA_Form7> form;
    EXPECT_EQ(S_OK, added.As(form));
    form->put_FormType(naftESTIMATE);
    form->put_TransactionRecordNumber(2001);
    form->put_SendMethod(nastNONE);
    form->put_Post(post ? VARIANT_TRUE : VARIANT_FALSE);
    ComPtr<INA_Base5> base;
    EXPECT_EQ(S_OK, session.As(base));
    EXPECT_EQ(S_OK, base->Initialize());
    return base;
  }

  std::string Build(const ComPtr<INA_Base5>& session) {
    BSTR xml = nullptr;
    EXPECT_EQ(S_OK, session->BuildXML(0, &xml));
    return Take(xml);
  }

  FakeUploadClock clock_;
  upload::ScopedUploadClock scopedClock_{clock_};
};

TEST_F(UploadStampsTest, WithoutTheSwitchOrForceNewCompanyTheStampsStay) {
  Build(Session(false));
  EXPECT_EQ(3u, StampsLeft());
  EXPECT_EQ(kEarlier, LastTime());
  EXPECT_TRUE(Host().Messages().empty());
}

TEST_F(UploadStampsTest, ForceNewCompanyRemovesEveryStampBeforeTheRequestSilently) {
  const std::string request = Build(Session(true));
  EXPECT_EQ(0u, StampsLeft());
  EXPECT_EQ(0, LastTime());
  EXPECT_TRUE(Host().Messages().empty());
  EXPECT_NE(std::string::npos, request.find("<ForceNewCompany>Y</ForceNewCompany>"));
  // With no stamp left the terms the estimate does not select stay home, the selected ones go.
  EXPECT_NE(std::string::npos, request.find("<TermsAdd>"));
  EXPECT_EQ(std::vector<std::string>{}, LogEntries());
}

TEST_F(UploadStampsTest, TheSwitchRemovesEveryStampBeforeEachRequestAndSaysSoEachTime) {
  WriteSettings("NetworkAdapter.RemoveUploadTimeAttrs=1\n" + kURLs);
  const ComPtr<INA_Base5> session = Session(false);
  Build(session);
  EXPECT_EQ(0u, StampsLeft());
  EXPECT_EQ(0, LastTime());
  ASSERT_EQ(1u, Host().Messages().size());
  const refhost::ShownMessage& box = Host().Messages()[0];
  EXPECT_EQ(kWarning, box.text);
  EXPECT_EQ(u"ZPSSettings Warning", box.caption);
  EXPECT_EQ(0x10, box.style) << "the stop icon";
  EXPECT_FALSE(box.ownedByMainWindow);

  Build(session);
  EXPECT_EQ(2u, Host().Messages().size()) << "shown before every request";
}

TEST_F(UploadStampsTest, AFailedRemovalIsLoggedShowsNoBoxAndTheRequestIsBuilt) {
  WriteSettings("NetworkAdapter.RemoveUploadTimeAttrs=1\n" + kURLs);
  Faults().HoldLock(u"Orvane:NetworkAdapter:DataUpload");
  const std::string request = Build(Session(false));
  EXPECT_NE(std::string::npos, request.find("<LXDataMsgsRq"));
  EXPECT_EQ(0u, StampsLeft());
  EXPECT_TRUE(Host().Messages().empty());
  EXPECT_EQ((std::vector<std::string>{
                Entry("NetworkAdapterManager:CDataFileStorage::WriteProperty(const char*, VARIANT): ",
                      "Could not acquire data file record lock in LX.", "0xffffd8f3"),
                Entry("Parcelon:CUploadAttributeKiller::RemoveAttributes(): ",
                      "Failed to erase last client data upload time in the data file."),
                Entry("Parcelon:CNA_Forms::BuildXML(short, BSTR*): ",
                      "Failed to delete all the upload time attributes.  Continuing...")}),
            LogEntries());
}

TEST_F(UploadStampsTest, WithoutACompanyTheRemovalSaysSo) {
  Host().SetCompanyOpen(false);
  BSTR xml = nullptr;
  EXPECT_TRUE(FAILED(Session(true)->BuildXML(0, &xml)));
  const std::string noCompany = Entry("Parcelon:CNA_Form::GetCurrentCompanyFilePtr(ICompanyFilePtr&): ",
                                      "Failed to attach to current company from add-in goodies in LX.");
  EXPECT_EQ((std::vector<std::string>{
                noCompany,
                Entry("Parcelon:CNA_Forms::PossiblyDeleteAllUploadTimeAttributes(): ", "Failed to get current company file."),
                Entry("Parcelon:CNA_Forms::BuildXML(short, BSTR*): ",
                      "Failed to delete all the upload time attributes.  Continuing..."),
                noCompany, Entry("Parcelon:CNA_Forms::BuildLXDataMsgsRq(XMLBuilder&): ", "Failed to get company file ptr."),
                Entry("Parcelon:CNA_Forms::BuildXML(short, BSTR*): ", "Failed to build LX data msg set.")}),
            LogEntries());
  EXPECT_EQ(3u, StampsLeft());
}

// ---- What a pass stamps -----------------------------------------------------------------------

const std::string kAccepted =
    "<LXDataMsgsRs><DataUploadRs statusCode=\"0\"><LastDataUploadToken>T-1</LastDataUploadToken></DataUploadRs>"
    "</LXDataMsgsRs>";

class PassStampsTest : public UploadStampsTest {
 protected:
  void SetUp() override {
    UploadStampsTest::SetUp();
    // Nothing stamped yet: the first upload carries term 2 and job 102 with its parents.
    for (refhost::ListRecord* record : StampedRecords()) record->attributes.clear();
    clock_.now = kBuilt;
  }
  bool Term2Stamped() { return !Host().GetCompany().terms.Find(2)->attributes.empty(); }
  LONG Term2Stamp() { return Host().GetCompany().terms.Find(2)->attributes.at(0).value; }

  static constexpr int64_t kBuilt = 1235869200;
};

// Stamped with the time the upload was built, not the time the answer came; the last client
// upload time is that time plus one second.
TEST_F(PassStampsTest, AnAcceptedUploadIsStampedWithItsBuildTime) {
  const ComPtr<INA_Base5> session = Session(false);
  Build(session);
  clock_.now = kBuilt + 500;
  EXPECT_EQ(S_OK, session->ParseResponse(RootOf(kAccepted).Get()));
  EXPECT_EQ(S_OK, session->OnSynchCompleted());
  ASSERT_TRUE(Term2Stamped());
  EXPECT_EQ(LONG(kBuilt), Term2Stamp());
  EXPECT_EQ(LONG(kBuilt + 1), LastTime());
}

// A build again in the same pass whose upload fails leaves nothing to stamp, even though an
// answer accepted the one before.
TEST_F(PassStampsTest, ALaterBuildThatFailsLeavesNothingToStamp) {
  const ComPtr<INA_Base5> session = Session(false);
  Build(session);
  EXPECT_EQ(S_OK, session->ParseResponse(RootOf(kAccepted).Get()));
  Inject({"INAAuthTool::GetCompanyUID", std::nullopt, E_FAIL});
  BSTR xml = nullptr;
  EXPECT_TRUE(FAILED(session->BuildXML(0, &xml)));
  EXPECT_EQ(S_OK, session->ParseResponse(RootOf(kAccepted).Get()));
  Faults().Clear();
  EXPECT_EQ(S_OK, session->OnSynchCompleted());
  EXPECT_FALSE(Term2Stamped());
  EXPECT_EQ(kEarlier, LastTime());
}

// An answer accepting an upload counts only for a pass that wrote one: an estimate without Post
// writes none, and an accepting answer to it stamps nothing.
TEST_F(PassStampsTest, AnAcceptingAnswerToAPassWithoutUploadStampsNothing) {
  const ComPtr<INA_Base5> session = Session(false, false);
  EXPECT_EQ(std::string::npos, Build(session).find("<LXDataMsgsRq"));
  EXPECT_EQ(S_OK, session->ParseResponse(RootOf(kAccepted).Get()));
  EXPECT_EQ(S_OK, session->OnSynchCompleted());
  EXPECT_FALSE(Term2Stamped());
  EXPECT_EQ(kEarlier, LastTime());
}

// Stamping and storing the time fail each with their lines; the pass itself still ends well when
// only a record could not be stamped.
TEST_F(PassStampsTest, FailuresAfterAnAcceptedUploadAreLogged) {
  const ComPtr<INA_Base5> session = Session(false);
  Build(session);
  EXPECT_EQ(S_OK, session->ParseResponse(RootOf(kAccepted).Get()));
  StartCase();
  Inject({"ITerm::LockForEdit", 2, E_FAIL});
  EXPECT_EQ(S_OK, session->OnSynchCompleted());
  EXPECT_EQ((std::vector<std::string>{
                Entry("Parcelon:CUploadAttributeWriter::UpdateTerms(ITermsPtr): ", "Failed to lock term(4) for editing."),
                Entry("Parcelon:CUploadAttributeWriter::UpdateUploadTimeAttributes(): ",
                      "Failed while updating upload time attributes for terms.")}),
            LogEntries());
  EXPECT_FALSE(Term2Stamped());
  EXPECT_FALSE(Host().GetCompany().names.Find(102)->attributes.empty()) << "the others are stamped";
  EXPECT_EQ(LONG(kBuilt + 1), LastTime());
}

TEST_F(PassStampsTest, ATimeThatCannotBeStoredFailsThePassEnd) {
  const ComPtr<INA_Base5> session = Session(false);
  Build(session);
  EXPECT_EQ(S_OK, session->ParseResponse(RootOf(kAccepted).Get()));
  StartCase();
  Faults().HoldLock(u"Orvane:NetworkAdapter:DataUpload");
  EXPECT_EQ(E_FAIL, session->OnSynchCompleted());
  EXPECT_EQ((std::vector<std::string>{
                Entry("NetworkAdapterManager:CDataFileStorage::WriteProperty(const char*, VARIANT): ",
                      "Could not acquire data file record lock in LX.", "0xffffd8f3"),
                Entry("Parcelon:CNA_Forms::StoreLastClientDataUploadTime(time_t): ",
                      "Failed to write last client data upload time \"1235869201\" to the data file."),
                Entry("Parcelon:CNA_Forms::OnSynchCompleted(): ", "Failed to store the client data upload time.")}),
            LogEntries());
  EXPECT_TRUE(Term2Stamped());
}

}  // namespace
}  // namespace parcelon::test
