// The reference host as a component finds it: its classes in the process's class table, the
// add-in application leading to the company file, and the services that record what they did.
#include <gtest/gtest.h>

#include <string>

#include "CompanyTestSupport.h"
#include "refhost/ReferenceHost.h"
#if PARCELON_HAVE_SQLITE
#include "refhost/CompanyStore.h"
#endif

namespace parcelon::refhost::test {
namespace {

class ReferenceHostTest : public ::testing::Test {
 protected:
  void SetUp() override {
#ifdef _WIN32
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
#endif
    WriteFile(folder_.File("company.json"), R"({
      "company": {"companyName": "Acme & Co", "companyUID": "U-1", "companyAuthID": "A-1"},
      "host": {"logFolder": "logs"}
    })");
    HRESULT hr = E_FAIL;
    std::string error;
    host_ = ReferenceHost::FromFixture(folder_.File("company.json"), hr, error);
    ASSERT_TRUE(host_) << error;
    ASSERT_EQ(S_OK, host_->Register());
  }
  void TearDown() override {
    host_.reset();  // before COM ends
#ifdef _WIN32
    CoUninitialize();
#endif
  }

  template <class I>
  ComPtr<I> Create(const CLSID& clsid) {
    ComPtr<I> object;
    EXPECT_EQ(S_OK, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IidOf<I>(),
                                     object.ReleaseAndGetVoidAddress()));
    return object;
  }

  ScratchFolder folder_;
  std::unique_ptr<ReferenceHost> host_;
};

TEST_F(ReferenceHostTest, AddInLeadsToTheCompanyFile) {
  const ComPtr<IAddInGoodies> goodies =
      Get(Create<ILXApplication>(host::CLSID_LXAddIn), &ILXApplication::GetAddInGoodies);
  const ComPtr<ICompanyFile> file = Get(goodies, &IAddInGoodies::GetCurrentCompanyFile);
  EXPECT_EQ("Acme & Co", Get(Get(file, &ICompanyFile::GetCompanyInfo), &ICompanyInfo::GetCompanyName));
  host_->SetCompanyOpen(false);
  EXPECT_EQ(E_FAIL, Status(goodies, &IAddInGoodies::GetCurrentCompanyFile));
}

TEST_F(ReferenceHostTest, ClassesAreGoneWithTheHost) {
  host_.reset();
  ComPtr<ILXApplication> application;
  EXPECT_EQ(REGDB_E_CLASSNOTREG,
            CoCreateInstance(host::CLSID_LXAddIn, nullptr, CLSCTX_INPROC_SERVER,
                             IidOf<ILXApplication>(), application.ReleaseAndGetVoidAddress()));
}

TEST_F(ReferenceHostTest, AuthToolGivesTheCompanyIdentifiersOrTheCompanysFaults) {
  const ComPtr<INAAuthTool> auth = Create<INAAuthTool>(host::CLSID_NAAuthTool);
  EXPECT_EQ("U-1", Get(auth, &INAAuthTool::GetCompanyUID));
  EXPECT_EQ("A-1", Get(auth, &INAAuthTool::GetCompanyAuthID));
  host_->GetFaults().Fail("INAAuthTool::GetCompanyUID", E_OUTOFMEMORY);
  EXPECT_EQ(E_OUTOFMEMORY, Status(auth, &INAAuthTool::GetCompanyUID));
}

TEST_F(ReferenceHostTest, InboxKeepsRequestsForTheTest) {
  const ComPtr<ILXInbox> inbox = Create<ILXInbox>(host::CLSID_LXInbox);
  ASSERT_TRUE(inbox);
  ASSERT_EQ(S_OK, inbox->StoreRequest(MakeBstr("<a/>").Get(), MakeBstr("FirstRq").Get()));
  ASSERT_EQ(S_OK, inbox->StoreRequest(MakeBstr("<b/>").Get(), MakeBstr("SecondRq").Get()));
  ASSERT_EQ(2u, host_->InboxRequests().size());
  EXPECT_EQ(u"1", host_->InboxRequests()[0].id);
  EXPECT_EQ(u"FirstRq", host_->InboxRequests()[0].name);
  EXPECT_EQ(u"<b/>", host_->InboxRequests()[1].xml);
  BSTR xml = nullptr;
  ASSERT_EQ(S_OK, inbox->GetRequest(MakeBstr("2").Get(), &xml));
  EXPECT_EQ(u"<b/>", Take(xml));
  EXPECT_EQ(S_OK, inbox->DeleteRequest(MakeBstr("1").Get()));
  EXPECT_EQ(LX_E_NOTFOUND, inbox->GetRequest(MakeBstr("1").Get(), &xml));
}

TEST_F(ReferenceHostTest, Base64CoderPadsTheLastGroup) {
  const ComPtr<IBase64Coder> coder = Create<IBase64Coder>(host::CLSID_Base64Coder);
  ASSERT_TRUE(coder);
  const std::pair<std::string, std::string> cases[] = {
      {"", ""}, {"M", "TQ=="}, {"Ma", "TWE="}, {"Man", "TWFu"}, {std::string("\xFF\xFE\xFD\x00", 4), "//79AA=="}};
  for (const auto& [data, encoded] : cases) {
    ASSERT_EQ(S_OK, coder->Encode(reinterpret_cast<const BYTE*>(data.data()), LONG(data.size())));
    const char* text = nullptr;
    ASSERT_EQ(S_OK, coder->EncodedMessage(&text));
    EXPECT_EQ(encoded, text);
  }
  EXPECT_EQ(E_INVALIDARG, coder->Encode(nullptr, -1));
}

TEST_F(ReferenceHostTest, ServicesAreFoundAsTheComponentFindsThem) {
  const IMessageBoxServicePtr messages =
      host::CreateHostService<IMessageBoxService>(host::CLSID_MessageBoxService);
  ASSERT_EQ(S_OK, messages->ShowMessage(MakeBstr("Text").Get(), MakeBstr("Title").Get(),
                                        host::kMessageBoxIconStop, VARIANT_TRUE));
  ASSERT_EQ(1u, host_->Messages().size());
  EXPECT_EQ(u"Text", host_->Messages()[0].text);
  EXPECT_EQ(u"Title", host_->Messages()[0].caption);
  EXPECT_EQ(host::kMessageBoxIconStop, host_->Messages()[0].style);
  EXPECT_TRUE(host_->Messages()[0].ownedByMainWindow);

  const ComPtr<IFolderLocator> locator =
      Get(host::CreateHostService<IFolderService>(host::CLSID_FolderService), &IFolderService::GetFolderLocator);
  EXPECT_EQ("logs", Get(locator, &IFolderLocator::GetFolder, host::kFolderKindLogs));
  host_->SetLogFolder("other");
  EXPECT_EQ("other", Get(locator, &IFolderLocator::GetFolder, host::kFolderKindLogs));
  EXPECT_EQ("", Get(locator, &IFolderLocator::GetFolder, 1));
}

TEST_F(ReferenceHostTest, FileRedirectionKeepsPathsAndMovesFiles) {
  const IFileRedirectionServicePtr files =
      host::CreateHostService<IFileRedirectionService>(host::CLSID_FileRedirectionService);
  const std::string from = folder_.File("a.log"), to = folder_.File("b.log");
  WriteFile(from, "x");
  BSTR mapped = nullptr;
  ASSERT_EQ(S_OK, files->MapPath(MakeBstr(from).Get(), &mapped));
  EXPECT_EQ(TextToUtf8(Take(mapped)), from);
  ASSERT_EQ(S_OK, files->Rename(MakeBstr(from).Get(), MakeBstr(to).Get()));
  EXPECT_FALSE(FileExists(from));
  EXPECT_EQ("x", ReadFile(to));
  ASSERT_EQ(S_OK, files->Remove(MakeBstr(to).Get()));
  EXPECT_FALSE(FileExists(to));
  EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), files->Remove(MakeBstr(to).Get()));
}

TEST(ReferenceHostFixture, AMalformedFixtureGivesNoHost) {
  ScratchFolder folder;
  WriteFile(folder.File("bad.json"), "{");
  HRESULT hr = S_OK;
  std::string error;
  EXPECT_FALSE(ReferenceHost::FromFixture(folder.File("bad.json"), hr, error));
  EXPECT_EQ(kInvalidFixture, hr);
  EXPECT_EQ(0u, error.find(folder.File("bad.json") + ": line 1, column 2: ")) << error;
}

#if PARCELON_HAVE_SQLITE
TEST(ReferenceHostStore, AStoreOpenedAgainKeepsTheAttributesWritten) {
  ScratchFolder folder;
  WriteFile(folder.File("company.json"),
                            R"({"customers": [{"recNum": 4, "name": "Acme", "modTime": 99}]})");
  std::string error;
  ASSERT_EQ(S_OK, ReferenceHost::CreateStore(folder.File("company.json"), folder.File("company.db"),
                                             error))
      << error;
  HRESULT hr = E_FAIL;
  {
    const auto first = ReferenceHost::FromStore(folder.File("company.db"), hr, error);
    ASSERT_TRUE(first) << error;
    const ComPtr<IName> acme = RecordOf<IName>(first->GetCompanyPtr(), 4);
    ASSERT_EQ(S_OK, acme->LockForEdit());
    ComPtr<IAttributeContainer> attributes;
    ASSERT_EQ(S_OK, acme->GetAttributes(attributes.ReleaseAndGetAddressOf()));
    ComPtr<ILongAttribute> stamp;
    ASSERT_EQ(S_OK, attributes->AddLongAttribute(MakeBstr("T").Get(), MakeBstr("O").Get(),
                                                 stamp.ReleaseAndGetAddressOf()));
    ASSERT_EQ(S_OK, stamp->SetValue(1234));
    ASSERT_EQ(S_OK, acme->Save());
  }
  const auto second = ReferenceHost::FromStore(folder.File("company.db"), hr, error);
  ASSERT_TRUE(second) << error;
  const Name& acme = *second->GetCompany().names.Find(4);
  ASSERT_EQ(1u, acme.attributes.size());
  EXPECT_EQ(1234, acme.attributes[0].value);
  EXPECT_EQ(99, acme.modTime);
}

TEST(ReferenceHostStore, SavedFieldsLieOverTheFixturesRecordsOrAreRefused) {
  struct Case {
    RecNum recNum;
    const char* json;
    const char* error;  // after the store's path; empty when the host opens
  };
  const Case cases[] = {
      {4, R"("acme@example.com")", ""},
      {9, R"("acme@example.com")", ": the saved field email of names record 9 fits no record of the fixture"},
      {4, "{not json", ": the saved field email of names record 4 fits no record of the fixture"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.recNum);
    ScratchFolder folder;
    const std::string store = folder.File("company.db");
    // Names in both sections, so that the saved field finds its record in the second one.
    WriteFile(folder.File("company.json"),
                              R"({"otherNames": [{"recNum": 2, "name": "Bank"}],)"
                              R"( "customers": [{"recNum": 4, "name": "Acme"}]})");
    std::string error;
    ASSERT_EQ(S_OK, ReferenceHost::CreateStore(folder.File("company.json"), store, error)) << error;
    CompanyStore::Open(store)->SaveRecord(ListKind::Names, c.recNum, {{"email", c.json}}, nullptr);
    HRESULT hr = E_FAIL;
    const auto host = ReferenceHost::FromStore(store, hr, error);
    if (*c.error) {
      EXPECT_EQ(kInvalidFixture, hr);
      EXPECT_EQ(store + c.error, error);
    } else {
      ASSERT_TRUE(host) << error;
      EXPECT_EQ(u"acme@example.com", host->GetCompany().names.Find(4)->email);
      EXPECT_EQ(u"", host->GetCompany().names.Find(2)->email);
    }
  }
}

TEST(ReferenceHostStore, AStoreIsNotMadeOfABadFixture) {
  ScratchFolder folder;
  WriteFile(folder.File("company.json"), R"({"terms": [{"recNum": 1}]})");
  std::string error;
  EXPECT_EQ(kInvalidFixture, ReferenceHost::CreateStore(folder.File("company.json"),
                                                        folder.File("company.db"), error));
  EXPECT_EQ(folder.File("company.json") + ": /terms/0: name: missing required field", error);
  EXPECT_FALSE(FileExists(folder.File("company.db")));
}
#endif

}  // namespace
}  // namespace parcelon::refhost::test
