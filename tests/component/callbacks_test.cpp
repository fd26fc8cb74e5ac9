// The adapter's callbacks in each send state: addresses, content type, header lines, the response
// cookie, the service and document type, the e-mail parameters and the request body.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ComponentTest.h"
#include "forms/FormsTestHost.h"
#include "refhost/ReferenceHost.h"

namespace parcelon::test {
namespace {

constexpr const char* kLXMainDocType =
    "ZPN PUBLIC '-//ORVANE//DTD LXN Platform LXMAIN 1.0//EN' "
    "'https://gateway.orvane.example/dtds/lxmain.dtd'";
constexpr const char* kFormGateDocType =
    "ZPN PUBLIC '-//ORVANE//DTD LXN Platform FORMGATE 1.0//EN' "
    "'https://gateway.orvane.example/dtds/formgate.dtd'";

class CallbacksTest : public ComponentTest {
 protected:
  // Brings the session into `state` with one form of `type`: 0 (the form added, no Initialize),
  // 1 (an e-mailed form), 2 (a form sent by no method) or 3 (that form's pass completed).
  ComPtr<INA_Form7> StartIn(int state, NAFormType type = naftINVOICE) {
    ComPtr<INA_Form7> form = AddForm(state == 1 ? nastEMAIL : nastNONE, type);
    EXPECT_EQ(S_OK, form->put_DocType(MakeBstr("pdf").Get()));
    EXPECT_EQ(S_OK, form->put_AttachmentFileName(MakeBstr("inv 1001.pdf").Get()));
    if (state >= 1) {
      EXPECT_EQ(S_OK, base_->Initialize());
    }
    if (state == 3) {
      EXPECT_EQ(S_OK, base_->OnSynchCompleted());
    }
    EXPECT_EQ(state, ObservedState());
    return form;
  }

  std::optional<std::string> Get(HRESULT (STDMETHODCALLTYPE INA_Base5::*getter)(BSTR*),
                                 HRESULT expected = S_OK) {
    BSTR value = nullptr;
    EXPECT_EQ(expected, (base_.Get()->*getter)(&value));
    return TakeText(value);
  }
};

// ---- Fixed answers --------------------------------------------------------------------------

// The login type, DTD and response types, which every pass of a whole send shows, are the same
// before any form (tests/component/sends).
TEST_F(CallbacksTest, NewSessionAnswers) {
  short headers = 5;
  EXPECT_EQ(S_OK, base_->get_NumResponseHeaderParams(&headers));
  EXPECT_EQ(0, headers);
  LONG size = 5;
  EXPECT_EQ(S_OK, base_->get_DataSize(&size));
  EXPECT_EQ(0, size);
  EXPECT_EQ(E_NOINTERFACE, base_->ParseResponse(nullptr)) << "no node to read";

  VARIANT_BOOL flag = VARIANT_TRUE;
  EXPECT_EQ(S_OK, session_->get_ForceNewCompany(&flag));
  EXPECT_EQ(VARIANT_FALSE, flag);
  flag = VARIANT_TRUE;
  EXPECT_EQ(S_OK, session_->get_DoAllCustomers(&flag));
  EXPECT_EQ(VARIANT_FALSE, flag);
  NAUploadScope scope = nausTXN_TARGETED;
  EXPECT_EQ(S_OK, session_->get_UploadScope(&scope));
  EXPECT_EQ(nausCHECK_ALL_CUSTOMERJOBS, scope);
  EXPECT_EQ(nausFULL, scope);
}

TEST_F(CallbacksTest, NullOutputsAreRefused) {
  StartIn(1);
  using Getter = HRESULT (STDMETHODCALLTYPE INA_Base5::*)(BSTR*);
  for (Getter getter : std::initializer_list<Getter>{
           &INA_Base5::get_DTD_ID, &INA_Base5::get_DTD_Version,
           &INA_Base5::get_ResponseTypesToParse, &INA_Base5::get_ServiceID, &INA_Base5::get_URL,
           &INA_Base5::get_ContentType, &INA_Base5::get_RequestHeaderParams,
           &INA_Base5::get_XMLDocType}) {
    EXPECT_EQ(E_POINTER, (base_.Get()->*getter)(nullptr));
  }
  EXPECT_EQ(E_POINTER, base_->BuildXML(0, nullptr));
  EXPECT_EQ(E_POINTER, base_->BuildData(nullptr));
  EXPECT_EQ(E_POINTER, base_->get_DataSize(nullptr));
  EXPECT_EQ(E_POINTER, base_->get_LoginType(nullptr));
  EXPECT_EQ(E_POINTER, base_->get_IsAnotherSynchNeeded(nullptr));
  EXPECT_EQ(E_POINTER, base_->get_NumResponseHeaderParams(nullptr));
  EXPECT_EQ(E_POINTER, base_->get_ResponseHeaderParamName(1, nullptr));
  EXPECT_EQ(E_POINTER, session_->AddForm(nullptr));
  EXPECT_EQ(E_POINTER, session_->get_ForceNewCompany(nullptr));
  EXPECT_EQ(E_POINTER, session_->get_DoAllCustomers(nullptr));
  EXPECT_EQ(E_POINTER, session_->get_UploadScope(nullptr));
  EXPECT_EQ(1, ObservedState());
}

// ---- URL ------------------------------------------------------------------------------------

struct URLCase {
  int state;
  NAFormType type;
  const char* address;
  HRESULT result;
  std::vector<std::string> log;
};

class URLTest : public CallbacksTest, public ::testing::WithParamInterface<URLCase> {};

TEST_P(URLTest, AttachmentPassGoesToItsOwnAddress) {
  StartIn(GetParam().state, GetParam().type);
  EXPECT_EQ(GetParam().address, Get(&INA_Base5::get_URL, GetParam().result));
  EXPECT_EQ(GetParam().log, LogEntries());
}

const std::string kUnexpectedState =
    SessionEntry("get_URL", "Unexpected send state.", "0x80004005");

INSTANTIATE_TEST_SUITE_P(
    Callbacks, URLTest,
    // The passes of a whole send (attachment, then form) are in tests/component/sends.
    ::testing::Values(URLCase{0, naftINVOICE, kGatewayURL, S_OK, {}},
                      URLCase{3, naftSTATEMENT, kGatewayURL, S_OK, {}},
                      // Before Initialize there is no current form to be other than a host form.
                      URLCase{0, naftNON_LX, kGatewayURL, S_OK, {}},
                      URLCase{2, naftCREDIT_MEMO, kGatewayURL, S_OK, {}},
                      // The address is still given, with the failure.
                      URLCase{3, naftPAYCHECK_STUB, kGatewayURL, E_FAIL, {kUnexpectedState}},
                      URLCase{3, NAFormType(12), kGatewayURL, E_FAIL, {kUnexpectedState}}));

TEST_F(CallbacksTest, URLWithoutConfiguredAddressIsEmpty) {
  WriteSettings("[ZPSSettings]\n");
  StartIn(1);
  EXPECT_EQ(std::nullopt, Get(&INA_Base5::get_URL));
}

// ---- ContentType ----------------------------------------------------------------------------

struct ContentTypeCase {
  int state;
  const char* docType;  // null: not set
  std::optional<std::string> contentType;
  HRESULT result;
  bool logged;  // "Invalid doc type"
};

class ContentTypeTest : public CallbacksTest,
                        public ::testing::WithParamInterface<ContentTypeCase> {};

// The attachment is declared by its bare document type, which must be "pdf" exactly.
TEST_P(ContentTypeTest, AttachmentIsDeclaredPdf) {
  const ContentTypeCase& c = GetParam();
  ComPtr<INA_Form7> form = StartIn(c.state);
  ASSERT_EQ(S_OK, form->put_DocType(c.docType ? MakeBstr(c.docType).Get() : nullptr));
  EXPECT_EQ(c.contentType, Get(&INA_Base5::get_ContentType, c.result));
  EXPECT_EQ(c.logged ? std::vector<std::string>{SessionEntry("get_ContentType", "Invalid doc type",
                                                             "0x80004005")}
                     : std::vector<std::string>{},
            LogEntries());
}

INSTANTIATE_TEST_SUITE_P(
    Callbacks, ContentTypeTest,
    // "pdf" in the attachment pass and the form pass's type are in tests/component/sends.
    ::testing::Values(ContentTypeCase{1, "PDF", std::nullopt, E_FAIL, true},
                      ContentTypeCase{1, "pdf ", std::nullopt, E_FAIL, true},
                      ContentTypeCase{1, "pd", std::nullopt, E_FAIL, true},
                      ContentTypeCase{1, "", std::nullopt, E_FAIL, true},
                      ContentTypeCase{1, nullptr, std::nullopt, E_FAIL, true},
                      ContentTypeCase{0, "PDF", "application/x-zpn", S_OK, false},
                      ContentTypeCase{3, nullptr, "application/x-zpn", S_OK, false}));

// ---- Request header lines -------------------------------------------------------------------

// The attachment pass sends the authentication values last given (empty before any) and the file
// name; outside the passes the output is left as it was. The form pass's "final: true" is in
// tests/component/sends.
TEST_F(CallbacksTest, RequestHeaderLinesOfEachState) {
  for (int state : {0, 3}) {
    ASSERT_EQ(S_OK, session_->RemoveAllForms());
    StartIn(state);
    BSTR untouched = reinterpret_cast<BSTR>(&untouched);
    BSTR headers = untouched;
    EXPECT_EQ(S_OK, base_->get_RequestHeaderParams(&headers));
    EXPECT_EQ(untouched, headers) << state;
  }
  ASSERT_EQ(S_OK, session_->RemoveAllForms());
  ComPtr<INA_Form7> form = StartIn(1);
  ASSERT_EQ(S_OK, form->put_AttachmentFileName(nullptr));
  EXPECT_EQ("ticket: \r\nauthid: \r\nfilename: \r\nfinal: false\r\n",
            Get(&INA_Base5::get_RequestHeaderParams));
  ASSERT_EQ(S_OK, base_->put_AuthParams(MakeBstr("old").Get(), MakeBstr("older").Get()));
  ASSERT_EQ(S_OK, base_->put_AuthParams(MakeBstr("T-77").Get(), MakeBstr("A-9").Get()));
  ASSERT_EQ(S_OK, form->put_AttachmentFileName(MakeBstr("inv 1001.pdf").Get()));
  EXPECT_EQ("ticket: T-77\r\nauthid: A-9\r\nfilename: inv 1001.pdf\r\nfinal: false\r\n",
            Get(&INA_Base5::get_RequestHeaderParams));
}

// ---- Response header name -------------------------------------------------------------------

struct HeaderNameCase {
  int state;
  short index;
};

class HeaderNameTest : public CallbacksTest,
                       public ::testing::WithParamInterface<HeaderNameCase> {};

// Only the attachment pass has a response header to read, the cookie, as number 1 (its name is in
// tests/component/sends), though the number of headers reported is 0: no other number, and no
// other pass, has a name.
TEST_P(HeaderNameTest, OnlyTheAttachmentPassesCookieHasAName) {
  StartIn(GetParam().state);
  BSTR name = reinterpret_cast<BSTR>(&name);
  EXPECT_EQ(E_FAIL, base_->get_ResponseHeaderParamName(GetParam().index, &name));
  EXPECT_EQ(nullptr, name);
  EXPECT_EQ(std::vector<std::string>{SessionEntry(
                "get_ResponseHeaderParamName",
                "Network Adapter asking for too many header param names.", "0x80004005")},
            LogEntries());
}

INSTANTIATE_TEST_SUITE_P(Callbacks, HeaderNameTest,
                         ::testing::Values(HeaderNameCase{1, 2}, HeaderNameCase{1, 0},
                                           HeaderNameCase{1, -1}, HeaderNameCase{0, 1},
                                           HeaderNameCase{2, 1}, HeaderNameCase{3, 1}));

// ---- The cookie -----------------------------------------------------------------------------

struct CookieCase {
  const char* name;
  const char* header;  // null: a null name
  std::string value;
  std::optional<std::string> messageID;  // nullopt: refused
  const char* failure = nullptr;
};

constexpr const char* kNoMessageId = "Did not find expected messageid value";
constexpr const char* kWrongHeader =
    "Network Adapter asking to set unexpected response header param or non-exist.";

class CookieTest : public CallbacksTest, public ::testing::WithParamInterface<CookieCase> {};

// The identifier runs from "messageid=" to the last character but one before the next ";" or the
// end; what is refused leaves the form without an identifier, and the attachment pass repeats.
TEST_P(CookieTest, MessageIdComesFromTheCookie) {
  const CookieCase& c = GetParam();
  ComPtr<INA_Form7> form = StartIn(1);
  const HRESULT hr = base_->SetResponseHeaderParamValue(
      c.header ? MakeBstr(c.header).Get() : nullptr, MakeBstr(c.value).Get());
  BSTR messageID = nullptr;
  ASSERT_EQ(S_OK, form->get_MessageID(&messageID));
  EXPECT_EQ(c.messageID, TakeText(messageID));
  if (c.messageID) {
    EXPECT_EQ(S_OK, hr);
    EXPECT_TRUE(LogEntries().empty());
    EXPECT_EQ(S_OK, base_->OnSynchCompleted());
    EXPECT_EQ(2, ObservedState());
  } else {
    EXPECT_EQ(E_FAIL, hr);
    EXPECT_EQ(std::vector<std::string>{SessionEntry("SetResponseHeaderParamValue", c.failure,
                                                    "0x80004005")},
              LogEntries());
    EXPECT_EQ(HRESULT(0x8004910FL), base_->OnSynchCompleted());
    EXPECT_EQ(1, ObservedState());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Callbacks, CookieTest,
    ::testing::Values(
        CookieCase{"LastCharacterDropped", "Set-Cookie", "messageid=ABCD;", "ABC"},
        CookieCase{"AmongOthers", "Set-Cookie", "path=/; messageid=M-2009-77x; secure",
                   "M-2009-77"},
        CookieCase{"AtTheEnd", "Set-Cookie", "a=1; messageid=XYZ", "XY"},
        CookieCase{"FirstOneCounts", "Set-Cookie", "messageid=AB;messageid=CDEF;", "A"},
        CookieCase{"Longest", "Set-Cookie", "messageid=" + std::string(100, 'k') + ";",
                   std::string(99, 'k')},
        CookieCase{"TooLong", "Set-Cookie", "messageid=" + std::string(101, 'k') + ";",
                   std::nullopt, kNoMessageId},
        CookieCase{"TwoHundred", "Set-Cookie", "messageid=" + std::string(200, 'k'), std::nullopt,
                   kNoMessageId},
        CookieCase{"OneCharacterOnly", "Set-Cookie", "messageid=A;", std::nullopt, kNoMessageId},
        CookieCase{"EqualsAtTheVeryEnd", "Set-Cookie", "session=1; messageid=", std::nullopt,
                   kNoMessageId},
        CookieCase{"NameAtTheVeryEnd", "Set-Cookie", "messageid", std::nullopt, kNoMessageId},
        CookieCase{"SeparatorAtOnce", "Set-Cookie", "messageid;=ABCDEF", std::nullopt,
                   kNoMessageId},
        CookieCase{"NoMessageId", "Set-Cookie", "sessionid=ABCD;", std::nullopt, kNoMessageId},
        CookieCase{"NameInOtherCase", "Set-Cookie", "MessageID=ABCD;", std::nullopt, kNoMessageId},
        CookieCase{"Empty", "Set-Cookie", "", std::nullopt, kNoMessageId},
        CookieCase{"HeaderInOtherCase", "set-cookie", "messageid=ABCD;", std::nullopt,
                   kWrongHeader},
        CookieCase{"OtherHeader", "Cookie", "messageid=ABCD;", std::nullopt, kWrongHeader},
        CookieCase{"NoHeaderName", nullptr, "messageid=ABCD;", std::nullopt, kWrongHeader}),
    [](const ::testing::TestParamInfo<CookieCase>& info) { return info.param.name; });

TEST_F(CallbacksTest, CookieIsDumpedWhenAsked) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.DumpResponseHeaderCookie=1\n");
  StartIn(1);
  ASSERT_EQ(S_OK, SetCookie("path=/; messageid=ABCD;"));
  EXPECT_EQ("path=/; messageid=ABCD;", ReadFile(TempPath() + "responseHeaderCookie.txt"));
}

// ---- Service and document type --------------------------------------------------------------

struct ServiceCase {
  const char* name;
  std::vector<std::pair<NASendType, NAFormType>> forms;
  bool initialize;
  const char* serviceID;
  const char* docType;
};

class ServiceTest : public CallbacksTest, public ::testing::WithParamInterface<ServiceCase> {};

TEST_P(ServiceTest, FirstFormsMethodAndCurrentFormsTypeChooseTheService) {
  for (const auto& [method, type] : GetParam().forms) AddForm(method, type);
  if (GetParam().initialize) {
    ASSERT_EQ(S_OK, base_->Initialize());
  }
  EXPECT_EQ(GetParam().serviceID, Get(&INA_Base5::get_ServiceID));
  EXPECT_EQ(GetParam().docType, Get(&INA_Base5::get_XMLDocType));
}

INSTANTIATE_TEST_SUITE_P(
    Callbacks, ServiceTest,
    ::testing::Values(
        // E-mailed, faxed and paper-mailed host forms and an e-mailed other document are in
        // tests/component/sends.
        ServiceCase{"NoForms", {}, false, "1006", kLXMainDocType},
        ServiceCase{
            "FaxFirstBeforeInitialize", {{nastFAX, naftNON_LX}}, false, "2010", kLXMainDocType},
        ServiceCase{"FaxSecond",
                    {{nastEMAIL, naftINVOICE}, {nastFAX, naftINVOICE}},
                    true,
                    "1006",
                    kLXMainDocType},
        ServiceCase{
            "FaxedOtherDocument", {{nastFAX, naftSALES_RECEIPT}}, true, "2036", kFormGateDocType},
        ServiceCase{"UnknownType", {{nastNONE, NAFormType(40)}}, true, "2036", kFormGateDocType}),
    [](const ::testing::TestParamInfo<ServiceCase>& info) { return info.param.name; });

// ---- E-mail parameters ----------------------------------------------------------------------

TEST_F(CallbacksTest, TxEParamsGiveTheFormsMailAndAttachmentsOnce) {
  ComPtr<INA_Form7> form = StartIn(2);
  ASSERT_EQ(S_OK, form->put_Subject(MakeBstr("Invoice 1001").Get()));
  ASSERT_EQ(S_OK, form->put_From(MakeBstr("office@smith.example").Get()));
  ASSERT_EQ(S_OK, form->put_Text(MakeBstr("Please find attached").Get()));
  ASSERT_EQ(S_OK, form->put_To(MakeBstr("ann@example.com").Get()));
  ASSERT_EQ(S_OK, form->put_Cc(MakeBstr("bob@example.com").Get()));
  ASSERT_EQ(S_OK, form->put_ReplyTo(MakeBstr("not-this@example.com").Get()));
  ASSERT_EQ(S_OK, form->put_AttachmentFileName(nullptr));
  ASSERT_EQ(S_OK, form->AddAttachmentFile(MakeBstr("x.pdf").Get()));
  ASSERT_EQ(S_OK, form->AddAttachmentFile(MakeBstr("y.pdf").Get()));

  for (const char* files : {"x.pdf|y.pdf", ""}) {
    EXPECT_EQ((std::vector<std::optional<std::string>>{"Invoice 1001", "office@smith.example",
                                                       "Please find attached", "ann@example.com",
                                                       "bob@example.com", std::nullopt, files}),
              TxEParams());
  }
}

// The form's own attachment is no list entry: it is named on every call.
TEST_F(CallbacksTest, TxEParamsNameTheFormsOwnAttachmentEveryTime) {
  ComPtr<INA_Form7> form = StartIn(1);
  ASSERT_EQ(S_OK, form->put_AttachmentPath(MakeBstr("C:\\Docs").Get()));
  for (int call = 0; call < 2; ++call) EXPECT_EQ("C:\\Docs\\inv 1001.pdf", TxEParams()[6]);
}

TEST_F(CallbacksTest, TxEParamsWithoutCurrentFormFail) {
  AddForm(nastEMAIL);
  BSTR out[7];
  for (BSTR& one : out) one = reinterpret_cast<BSTR>(&one);
  EXPECT_EQ(E_UNEXPECTED,
            base_->get_TxEParams(&out[0], &out[1], &out[2], &out[3], &out[4], &out[5], &out[6]));
  for (BSTR one : out) EXPECT_EQ(nullptr, one);
  EXPECT_EQ(std::vector<std::string>{SessionEntry("get_TxEParams",
                                                  "Failed to get email subject :", "0x8000ffff")},
            LogEntries());
  EXPECT_EQ(E_POINTER,
            base_->get_TxEParams(&out[0], &out[1], &out[2], &out[3], &out[4], &out[5], nullptr));
}

// ---- The attachment body -------------------------------------------------------------------

// The attachment pass's body is the file the form names, kept until the pass ends.
TEST_F(CallbacksTest, AttachmentBodyLastsUntilThePassEnds) {
  const std::string pdf("%PDF-1.4\n\0binary\xff", 17);
  WriteFile(scratch_.File("inv.pdf"), pdf);
  ComPtr<INA_Form7> form = StartIn(1);
  ASSERT_EQ(S_OK, form->AddAttachmentFile(MakeBstr(scratch_.File("inv.pdf")).Get()));
  BYTE* data = nullptr;
  ASSERT_EQ(S_OK, base_->BuildData(&data));
  LONG size = 0;
  ASSERT_EQ(S_OK, base_->get_DataSize(&size));
  ASSERT_EQ(LONG(pdf.size()), size);
  EXPECT_EQ(pdf, std::string(reinterpret_cast<const char*>(data), size_t(size)));

  // Released with the pass, whether or not the response gave a message identifier.
  EXPECT_EQ(HRESULT(0x8004910FL), base_->OnSynchCompleted());
  ASSERT_EQ(S_OK, base_->get_DataSize(&size));
  EXPECT_EQ(0, size);
  ASSERT_EQ(S_OK, base_->BuildData(&data));
  ASSERT_EQ(S_OK, SetCookie("messageid=M-1x"));
  EXPECT_EQ(S_OK, base_->OnSynchCompleted());
  ASSERT_EQ(S_OK, base_->get_DataSize(&size));
  EXPECT_EQ(0, size);
}

TEST_F(CallbacksTest, MissingAttachmentGivesNoBody) {
  ComPtr<INA_Form7> form = StartIn(1);
  ASSERT_EQ(S_OK, form->AddAttachmentFile(MakeBstr(scratch_.File("missing.pdf")).Get()));
  BYTE* data = reinterpret_cast<BYTE*>(&data);
  EXPECT_EQ(E_FAIL, base_->BuildData(&data));
  EXPECT_EQ(nullptr, data);
  LONG size = 5;
  ASSERT_EQ(S_OK, base_->get_DataSize(&size));
  EXPECT_EQ(0, size);
  EXPECT_EQ(
      std::vector<std::string>{SessionEntry("BuildData", "Error opening PDF file.", "0x80004005")},
      LogEntries());
}

// ---- The request body -----------------------------------------------------------------------

TEST_F(CallbacksTest, NoBodyWithoutAForm) {
  BSTR xml = reinterpret_cast<BSTR>(&xml);
  EXPECT_EQ(S_OK, base_->BuildXML(0, &xml));
  EXPECT_EQ(nullptr, xml);
}

// A form sent by no method has no request of its own; no data upload is due yet.
TEST_F(CallbacksTest, NoBodyForAFormSentByNoMethod) {
  for (NASendType method : {nastNONE, nastDELETE, nastVOID, nastPENDING}) {
    ASSERT_EQ(S_OK, session_->RemoveAllForms());
    AddForm(method);
    ASSERT_EQ(S_OK, base_->Initialize());
    BSTR xml = reinterpret_cast<BSTR>(&xml);
    EXPECT_EQ(S_OK, base_->BuildXML(1, &xml));
    EXPECT_EQ(nullptr, xml) << method;
  }
  EXPECT_TRUE(LogEntries().empty());
}

// Without a company file the form has no request: the session reports the form's failure.
TEST_F(CallbacksTest, FormsFailureEndsTheBody) {
  StartIn(1);
  BSTR xml = reinterpret_cast<BSTR>(&xml);
  const HRESULT hr = base_->BuildXML(0, &xml);
  EXPECT_TRUE(FAILED(hr));
  EXPECT_EQ(nullptr, xml);
  const std::vector<std::string> log = LogEntries();
  ASSERT_FALSE(log.empty());
  EXPECT_EQ(SessionEntry("BuildXML(short, BSTR*)", "Failed to build XML for a form", HexCode(hr)),
            log.back());
}

class BodyTest : public CallbacksTest {
 protected:
  void SetUp() override {
    CallbacksTest::SetUp();
    WriteFile(scratch_.File("company.json"), R"({
      "company": {"companyName": "Smith & Sons", "companyUID": "U-1", "companyAuthID": "A-1"}
    })");
    HRESULT hr = E_FAIL;
    std::string error;
    host_ = refhost::ReferenceHost::FromFixture(scratch_.File("company.json"), hr, error);
    ASSERT_TRUE(host_) << error;
    host_->SetLogFolder(scratch_.File("logs"));
    ASSERT_EQ(S_OK, host_->Register());
  }
  void TearDown() override {
    host_.reset();
    CallbacksTest::TearDown();
  }

  std::unique_ptr<refhost::ReferenceHost> host_;
};

// The form pass's body is the form's own request, whatever the indent level asked for.
TEST_F(BodyTest, FormPassCarriesTheFormsRequest) {
  ComPtr<INA_Form7> form = StartIn(1, naftNON_LX);
  ASSERT_EQ(S_OK, form->put_To(MakeBstr("ann@example.com").Get()));
  ASSERT_EQ(S_OK, SetCookie("messageid=M-1x;"));
  ASSERT_EQ(S_OK, base_->OnSynchCompleted());
  ASSERT_EQ(2, ObservedState());

  BSTR own = nullptr;
  ASSERT_EQ(S_OK, form->BuildXML(0, &own));
  const std::string expected = WithoutTrnUIDs(Take(own));
  ASSERT_NE(std::string::npos, expected.find("<MessageID>M-1</MessageID>")) << expected;
  for (short indent : {0, 3, 32767, -2}) {
    BSTR xml = nullptr;
    ASSERT_EQ(S_OK, base_->BuildXML(indent, &xml));
    EXPECT_EQ(expected, WithoutTrnUIDs(Take(xml))) << indent;
  }
  EXPECT_TRUE(LogEntries().empty());
}

}  // namespace
}  // namespace parcelon::test
