// A client of the component's shared library that knows only its four exports: it loads the
// library (dlopen, LoadLibrary), takes the class objects from DllGetClassObject, registers the
// classes with DllRegisterServer, and plays the network adapter against the reference host of
// the sample company, which lives in the client's own process.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "interfaces/ParcelonInterfaces.h"
#include "platform/ComPtr.h"
#include "platform/Paths.h"
#include "refhost/ReferenceHost.h"
#include "tools/SendDriver.h"
#include "../support/SampleForms.h"
#include "ModuleLoader.h"
#include "RegistryTree.h"

namespace {

const std::string kSources = PARCELON_SOURCE_DIR;

std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// `transcript` with every request identifier, new for each request, as "*".
std::string WithoutRequestIds(const std::string& transcript) {
  static const std::regex requestId(R"re(trnUID="[0-9A-F]{4}(-[0-9A-F]{4}){7}")re");
  return std::regex_replace(transcript, requestId, "trnUID=\"*\"");
}

// The e-mailed invoice of the whole-send tests, with its transcript.
parcelon::tools::SendSpec EmailedInvoice() {
  parcelon::tools::FormSpec form = parcelon::test::SampleForm(naftINVOICE, 1001, nastEMAIL);
  form.cc = "accounts@obrien.example";
  form.bcc = "archive@harborpine.example";
  form.replyTo = "billing@harborpine.example";
  parcelon::tools::SendSpec plan;
  plan.forms = {form};
  return plan;
}
const std::string kEmailedInvoiceTranscript =
    kSources + "/tests/component/sends/invoice-email-cc-bcc-reply.txt";

class ClientTest : public ::testing::Test {
 protected:
  void SetUp() override {
#ifdef _WIN32
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
#endif
    ASSERT_TRUE(module_.getClassObject && module_.canUnloadNow && module_.registerServer &&
                module_.unregisterServer)
        << "cannot load " << PARCELON_MODULE_PATH;
    const std::string settings = std::string(PARCELON_SCRATCH_DIR) + "/module-settings.ini";
    std::ofstream(settings, std::ios::binary)
        << "[URLs]\nEmailService.FormGatewayURL=https://forms.gateway.example/lxn/forms\n"
           "EmailService.FormGatewayAttachURL=https://forms.gateway.example/lxn/attachments\n";
    parcelon::SetEnv("PARCELON_SETTINGS", settings.c_str());
    HRESULT hr = S_OK;
    std::string error;
    host_ = parcelon::refhost::ReferenceHost::FromFixture(kSources + "/samples/sample-company.json",
                                                          hr, error);
    ASSERT_TRUE(host_) << error;
    ASSERT_EQ(S_OK, host_->Register());
  }

  void TearDown() override {
    host_.reset();
#ifdef _WIN32
    CoUninitialize();
#endif
  }

  ComPtr<IClassFactory> ClassObject(const CLSID& clsid) {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(S_OK, module_.getClassObject(clsid, IidOf<IClassFactory>(),
                                           factory.ReleaseAndGetVoidAddress()));
    return factory;
  }

  const LoadedModule& module_ = LoadedModule::Get();
  std::unique_ptr<parcelon::refhost::ReferenceHost> host_;
};

// The e-mailed invoice of the whole-send tests, sent through the registered classes: the same
// transcript, and nothing alive afterwards.
TEST_F(ClientTest, RegisteredClassesRunTheWholeSendAndLetTheModuleGo) {
  ASSERT_EQ(S_OK, module_.registerServer());
  CLSID byName{};
  ASSERT_EQ(S_OK, CLSIDFromProgID(PARCELON_OLESTR("Parcelon.NA_Forms"), &byName));
  EXPECT_TRUE(IsEqualGUID(byName, CLSID_NA_Forms));
  ASSERT_EQ(S_OK, CLSIDFromProgID(PARCELON_OLESTR("Parcelon.NA_Form"), &byName));
  EXPECT_TRUE(IsEqualGUID(byName, CLSID_NA_Form));

  std::string transcript;
  EXPECT_EQ(S_OK, parcelon::tools::RunSend(EmailedInvoice(), transcript)) << transcript;
  EXPECT_EQ(ReadText(kEmailedInvoiceTranscript), WithoutRequestIds(transcript));
  EXPECT_EQ(S_OK, module_.canUnloadNow());

  ASSERT_EQ(S_OK, module_.unregisterServer());
  EXPECT_EQ(CO_E_CLASSSTRING, CLSIDFromProgID(PARCELON_OLESTR("Parcelon.NA_Forms"), &byName));
  ComPtr<INA_Forms> session;
  EXPECT_EQ(REGDB_E_CLASSNOTREG,
            CoCreateInstance(CLSID_NA_Forms, nullptr, CLSCTX_INPROC_SERVER, IidOf<INA_Forms>(),
                             session.ReleaseAndGetVoidAddress()));
}

// A session from the class object: the module stays while the session, a form it added, or a
// lock lives, and may go once all are released.
TEST_F(ClientTest, TheModuleStaysWhileAnObjectOrALockLives) {
  EXPECT_EQ(S_OK, module_.canUnloadNow());
  ComPtr<IClassFactory> factory = ClassObject(CLSID_NA_Forms);
  ASSERT_TRUE(factory);
  EXPECT_EQ(S_OK, module_.canUnloadNow()) << "a class object alone keeps nothing loaded";

  ComPtr<INA_Forms> session;
  ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IidOf<INA_Forms>(),
                                          session.ReleaseAndGetVoidAddress()));
  EXPECT_EQ(S_FALSE, module_.canUnloadNow());
  ComPtr<INA_Form> form;
  ASSERT_EQ(S_OK, session->AddForm(form.ReleaseAndGetAddressOf()));
  session.Reset();
  EXPECT_EQ(S_FALSE, module_.canUnloadNow()) << "the form is still held";
  form.Reset();
  EXPECT_EQ(S_OK, module_.canUnloadNow());

  ASSERT_EQ(S_OK, factory->LockServer(TRUE));
  EXPECT_EQ(S_FALSE, module_.canUnloadNow());
  ASSERT_EQ(S_OK, factory->LockServer(FALSE));
  EXPECT_EQ(S_OK, module_.canUnloadNow());
}

TEST_F(ClientTest, OnlyTheTwoClassesHaveClassObjects) {
  void* factory = &factory;
  EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
            module_.getClassObject(LIBID_PARCELONLib, IidOf<IClassFactory>(), &factory));
  EXPECT_EQ(nullptr, factory);
  ComPtr<IClassFactory> form = ClassObject(CLSID_NA_Form);
  ComPtr<INA_Form7> created;
  EXPECT_EQ(S_OK, form->CreateInstance(nullptr, IidOf<INA_Form7>(),
                                       created.ReleaseAndGetVoidAddress()));
}

#ifdef _WIN32

std::vector<std::wstring> Registration(const std::wstring& progId, const std::wstring& clsid) {
  std::vector<std::wstring> lines;
  Dump(progId, lines);
  Dump(L"CLSID\\" + clsid, lines);
  return lines;
}

// regsvr32 in the build's own Wine prefix: exactly the classes' keys and values, with the module
// as the server's only value, and the type library; regsvr32 /u removes them and leaves CLSID.
TEST_F(ClientTest, Regsvr32WritesExactlyTheClassesKeysAndRemovesThem) {
  const std::wstring modulePath = LoadedModulePath(PARCELON_MODULE_PATH);
  ASSERT_EQ(0u, Regsvr32(modulePath));
  const std::wstring libid = L"{37A2FBF3-1795-4679-94A3-A153F1A8BB54}";
  for (const auto& [name, clsid] :
       {std::pair<std::wstring, std::wstring>{L"NA_Forms", L"{37A2FC00-1795-4679-94A3-A153F1A8BB54}"},
        {L"NA_Form", L"{37A2FC02-1795-4679-94A3-A153F1A8BB54}"}}) {
    const std::wstring progId = L"Parcelon." + name;
    const std::wstring classKey = L"CLSID\\" + clsid;
    const std::vector<std::wstring> expected = {
        progId + L" = " + name + L" Class",
        progId + L"\\CLSID = " + clsid,
        progId + L"\\CurVer = " + progId,
        classKey + L" = " + name + L" Class",
        classKey + L"\\InprocServer32 = " + modulePath,
        classKey + L"\\ProgID = " + progId,
        classKey + L"\\Programmable",
        classKey + L"\\TypeLib = " + libid,
        classKey + L"\\VersionIndependentProgID = " + progId,
    };
    EXPECT_EQ(expected, Registration(progId, clsid));
  }
  std::vector<std::wstring> typeLibrary;
  Dump(L"TypeLib\\" + libid + L"\\1.0", typeLibrary);
  EXPECT_EQ(L"TypeLib\\" + libid + L"\\1.0 = PARCELONLib", typeLibrary.front());

  ASSERT_EQ(0u, Regsvr32(modulePath, true));
  for (const auto& [progId, clsid] :
       {std::pair<std::wstring, std::wstring>{L"Parcelon.NA_Forms", L"{37A2FC00-1795-4679-94A3-A153F1A8BB54}"},
        {L"Parcelon.NA_Form", L"{37A2FC02-1795-4679-94A3-A153F1A8BB54}"}}) {
    EXPECT_EQ((std::vector<std::wstring>{progId + L" (absent)", L"CLSID\\" + clsid + L" (absent)"}),
              Registration(progId, clsid));
  }
  typeLibrary.clear();
  Dump(L"TypeLib\\" + libid, typeLibrary);
  EXPECT_EQ(std::vector<std::wstring>{L"TypeLib\\" + libid + L" (absent)"}, typeLibrary);
  HKEY classes = nullptr;
  ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(HKEY_CLASSES_ROOT, L"CLSID", 0, KEY_READ, &classes));
  RegCloseKey(classes);
}

// The host's classes, each CLSID with its description, as refhost.dll registers them.
const std::pair<std::wstring, std::wstring> kHostClasses[] = {
    {L"{6915CD3B-C996-4A07-B8DF-5CECB68DCBAA}", L"Reference host application"},
    {L"{550E1AB5-5162-498D-82E3-419B69D2E31E}", L"Reference host authentication tool"},
    {L"{4844F3F7-2161-4AC4-B219-B3B4311782AA}", L"Reference host inbox"},
    {L"{6623996E-B972-4D72-8EAB-D3B3B1F7B4DA}", L"Reference host base64 coder"},
    {L"{371050FB-6A0F-472B-A7DF-E42A451CC3FD}", L"Reference host feature settings"},
    {L"{D0AD6423-2DF8-4D50-9A1F-809EF7A8DC50}", L"Reference host folder service"},
    {L"{8DD2F611-435E-47EF-95C5-2D83A8978C07}", L"Reference host message box service"},
    {L"{B291F57E-F141-4503-AE18-982A61DB4900}", L"Reference host file redirection service"},
};

// regsvr32 on the reference host's server: each host class with its description and the module
// as its server's only value; regsvr32 /u removes them and leaves CLSID.
TEST(RefHostServer, Regsvr32WritesExactlyTheHostsClassesAndRemovesThem) {
  const std::wstring modulePath = LoadedModulePath(PARCELON_REFHOST_MODULE_PATH);
  ASSERT_FALSE(modulePath.empty()) << "cannot load " << PARCELON_REFHOST_MODULE_PATH;
  ASSERT_EQ(0u, Regsvr32(modulePath));
  for (const auto& [clsid, description] : kHostClasses) {
    std::vector<std::wstring> lines;
    Dump(L"CLSID\\" + clsid, lines);
    EXPECT_EQ((std::vector<std::wstring>{L"CLSID\\" + clsid + L" = " + description,
                                         L"CLSID\\" + clsid + L"\\InprocServer32 = " + modulePath}),
              lines);
  }
  ASSERT_EQ(0u, Regsvr32(modulePath, true));
  for (const auto& [clsid, description] : kHostClasses) {
    std::vector<std::wstring> lines;
    Dump(L"CLSID\\" + clsid, lines);
    EXPECT_EQ(std::vector<std::wstring>{L"CLSID\\" + clsid + L" (absent)"}, lines);
  }
  HKEY classes = nullptr;
  ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(HKEY_CLASSES_ROOT, L"CLSID", 0, KEY_READ, &classes));
  RegCloseKey(classes);
}

// refhost.dll's DllGetClassObject, the module loaded if need be; null when it cannot be.
GetClassObjectEntry RefHostGetClassObject() {
  HMODULE refhost = LoadLibraryA(PARCELON_REFHOST_MODULE_PATH);
  return refhost ? reinterpret_cast<GetClassObjectEntry>(
                       reinterpret_cast<void*>(GetProcAddress(refhost, "DllGetClassObject")))
                 : nullptr;
}

// The host's server loads the company PARCELON_COMPANY names when a class object is first asked
// for: without the variable, a file, or a fixture it can read, each request fails with a clear
// HRESULT and a log line (written through the client's own host, which gives the log folder).
// These run before any test lets the server load the sample company for the process.
TEST_F(ClientTest, TheHostsServerRefusesAMissingOrUnreadableCompany) {
  const GetClassObjectEntry getClassObject = RefHostGetClassObject();
  ASSERT_TRUE(getClassObject) << "cannot load " << PARCELON_REFHOST_MODULE_PATH;
  const std::string scratch = PARCELON_SCRATCH_DIR;
  host_->SetLogFolder(scratch + "/refhost-log/");
  CreateDirectoryA((scratch + "/refhost-log").c_str(), nullptr);
  const std::string malformed = scratch + "/malformed-company.json";
  std::ofstream(malformed, std::ios::binary) << "{ \"company\": ";
  const struct {
    const char* what;
    std::string company;
    HRESULT expected;
    std::string logged;
  } cases[] = {
      {"no variable", "", HRESULT_FROM_WIN32(ERROR_ENVVAR_NOT_FOUND),
       "PARCELON_COMPANY names no company fixture."},
      {"no file", scratch + "/no-such-company.json", STG_E_FILENOTFOUND,
       "Failed to load the company: " + scratch + "/no-such-company.json: cannot open the file"},
      {"malformed fixture", malformed, HRESULT_FROM_WIN32(ERROR_INVALID_DATA),
       "Failed to load the company: " + malformed +
           ": line 1, column 14: syntax error while parsing value - unexpected end of input; "
           "expected '[', '{', or a literal"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    parcelon::SetEnv("PARCELON_COMPANY", test.company.empty() ? nullptr : test.company.c_str());
    std::remove((scratch + "/refhost-log/NALog.log").c_str());
    void* factory = &factory;
    EXPECT_EQ(test.expected,
              getClassObject(parcelon::host::CLSID_LXAddIn, IidOf<IClassFactory>(), &factory));
    EXPECT_EQ(nullptr, factory);
    // The whole log: its time stamp line, then the entry.
    std::string log = ReadText(scratch + "/refhost-log/NALog.log");
    log.erase(std::remove(log.begin(), log.end(), '\r'), log.end());
    char code[16];
    std::snprintf(code, sizeof code, "0x%08lx", static_cast<unsigned long>(test.expected));
    EXPECT_EQ("   " + test.logged + "  HRESULT=" + code + "\n", log.substr(log.find('\n') + 1));
  }
  parcelon::SetEnv("PARCELON_COMPANY", nullptr);
}

// A client that finds both servers through the registry alone: the component's classes from
// parcelon.dll and the host's from refhost.dll, on the company PARCELON_COMPANY names.
TEST_F(ClientTest, BothRegisteredServersRunTheWholeSend) {
  host_->Revoke();
  const std::wstring component = LoadedModulePath(PARCELON_MODULE_PATH);
  const std::wstring refhost = LoadedModulePath(PARCELON_REFHOST_MODULE_PATH);
  ASSERT_EQ(0u, Regsvr32(component));
  ASSERT_EQ(0u, Regsvr32(refhost));
  parcelon::SetEnv("PARCELON_COMPANY", (kSources + "/samples/sample-company.json").c_str());
  std::string transcript;
  EXPECT_EQ(S_OK, parcelon::tools::RunSend(EmailedInvoice(), transcript)) << transcript;
  EXPECT_EQ(ReadText(kEmailedInvoiceTranscript), WithoutRequestIds(transcript));
  EXPECT_EQ(S_OK, module_.canUnloadNow());
  EXPECT_EQ(0u, Regsvr32(component, true));
  EXPECT_EQ(0u, Regsvr32(refhost, true));
}

// The host's server has class objects for the host's classes only.
TEST(RefHostServer, HasClassObjectsOnlyForTheHostsClasses) {
  const GetClassObjectEntry getClassObject = RefHostGetClassObject();
  ASSERT_TRUE(getClassObject) << "cannot load " << PARCELON_REFHOST_MODULE_PATH;
  void* factory = &factory;
  EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE,
            getClassObject(CLSID_NA_Forms, IidOf<IClassFactory>(), &factory));
  EXPECT_EQ(nullptr, factory);
}

#endif  // _WIN32

}  // namespace
