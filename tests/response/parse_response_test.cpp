// ParseResponse and ParseInboxRequests against the reference host: what each aggregate changes
// (the form's message identifier, the accepted flag, the stored token, the inbox) and every
// failure with its exact log lines, the host's through its fault injection.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "ResponseTestSupport.h"
#include "response/ResponseCodes.h"
#include "response/ResponseProcessing.h"
#include "upload/UploadState.h"

namespace parcelon::test {
namespace {

const std::string kPrefix = "Parcelon:CNA_Forms::ParseResponse: ";
const std::string kInboxPrefix = "Parcelon:CNA_Forms::ParseInboxRequests(_bstr_t, OLAString): ";
const std::string kCompanyFilePrefix = "Parcelon:CNA_Form::GetCurrentCompanyFilePtr(ICompanyFilePtr&): ";
const std::string kWritePrefix = "NetworkAdapterManager:CDataFileStorage::WriteProperty(const char*, VARIANT): ";
const std::string kStoreTokenPrefix = "Parcelon:CNA_Forms::StoreLastDataUploadToken(OLAString): ";

// A form pass's message set with one "DataUploadRs" of `code` (none for null) and `token`.
std::string DataUploadRs(const char* code, const std::string& token = "") {
  std::string xml = "<LXDataMsgsRs>\n  <!-- answer -->\n  <DataUploadRs trnUID=\"0001\"";
  if (code) xml += std::string(" statusCode=\"") + code + "\"";
  xml += ">";
  if (!token.empty()) xml += "<LastDataUploadToken>" + token + "</LastDataUploadToken>";
  return xml + "</DataUploadRs>\n</LXDataMsgsRs>";
}

std::string AttachmentRs(const char* code, const std::string& messageID = "") {
  std::string xml = std::string("<AttachmentRs statusCode=\"") + code + "\">";
  if (!messageID.empty()) xml += "<MessageID>" + messageID + "</MessageID>";
  return xml + "</AttachmentRs>";
}

// What one response did.
struct Outcome {
  HRESULT hr = S_OK;
  bool accepted = false;
  std::string messageID;
  std::string token;
  std::vector<std::string> inbox;
  std::vector<std::string> log;

  bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& o) {
  out << "hr " << HexCode(o.hr) << ", accepted " << o.accepted << ", MessageID " << o.messageID << ", token "
      << o.token << "\ninbox:";
  for (const std::string& request : o.inbox) out << "\n  " << request;
  out << "\nlog:";
  for (const std::string& line : o.log) out << "\n  " << line;
  return out;
}

class ParseResponseTest : public FormsTest {
 protected:
  void SetUp() override {
    FormsTest::SetUp();
    UseCompany("{}");
  }

  std::string StoredToken() {
    OLAString token;
    EXPECT_EQ(S_OK, upload::RetrieveLastDataUploadToken(&token));
    return token.GetText();
  }

  // The inbox's requests as "name xml".
  std::vector<std::string> Inbox() {
    std::vector<std::string> requests;
    for (const refhost::InboxRequest& request : Host().InboxRequests()) {
      std::string name, xml;
      WideToAnsi(reinterpret_cast<const OLECHAR*>(request.name.data()), request.name.size(), name);
      WideToAnsi(reinterpret_cast<const OLECHAR*>(request.xml.data()), request.xml.size(), xml);
      // MSXML writes line breaks and tabs between elements; the libxml2 document does not.
      std::erase_if(xml, [](char c) { return c == '\r' || c == '\n' || c == '\t'; });
      requests.push_back(name + " " + xml);
    }
    return requests;
  }

  // Hands `node` to ParseResponse with a new form whose message identifier is "COOKIE", then
  // clears the faults and reads what it did.
  Outcome Respond(IUnknown* node) {
    const INA_Form7Ptr form = NewForm();
    EXPECT_EQ(S_OK, form->put_MessageID(MakeBstr("COOKIE").Get()));
    Outcome outcome;
    outcome.hr = response::ParseResponse(node, form.Get(), outcome.accepted);
    outcome.log = LogEntries();
    Faults().Clear();
    Bstr messageID;
    EXPECT_EQ(S_OK, form->get_MessageID(messageID.Out()));
    outcome.messageID = Take(messageID.Detach());
    outcome.token = StoredToken();
    outcome.inbox = Inbox();
    return outcome;
  }
  Outcome Respond(const std::string& xml) { return Respond(RootOf(xml).Get()); }
};

const std::string kStoredRs = "DataUploadRs <DataUploadRs trnUID=\"0001\" statusCode=\"0\">"
                              "<LastDataUploadToken>TOK-2</LastDataUploadToken></DataUploadRs>";

TEST_F(ParseResponseTest, TheAttachmentsAnswer) {
  const std::string id99(99, 'M');
  const struct {
    const char* name;
    std::string xml;
    Outcome expected;
  } cases[] = {
      {"accepted", AttachmentRs("0", "ATT-9"), {S_OK, false, "ATT-9", "0", {}, {}}},
      {"accepted without an identifier", AttachmentRs("0"), {S_OK, false, "COOKIE", "0", {}, {}}},
      {"an identifier of 99 characters", AttachmentRs("0", id99), {S_OK, false, id99, "0", {}, {}}},
      {"an identifier of 100 characters",
       AttachmentRs("0", id99 + "M"),
       {kResponseValueTooLong, false, "COOKIE", "0", {},
        {Entry(kPrefix, "The attachment's message ID is 100 characters or longer; it is not kept.", "0x8007006f")}}},
      {"ticket expired",
       AttachmentRs("13109", "ATT-9"),
       {kTicketExpired, false, "COOKIE", "0", {}, {Entry(kPrefix, "Ticket expired. ", "0x8004910a")}}},
      {"refused", AttachmentRs("13102"), {kAttachmentRefused, false, "COOKIE", "0", {}, {}}},
      {"another status", AttachmentRs("500", "ATT-9"), {S_OK, false, "COOKIE", "0", {}, {}}},
      {"status in another case", "<AttachmentRs StatusCode=\"0\"/>",
       {E_FAIL, false, "COOKIE", "0", {}, {Entry(kPrefix, "The response aggregate carries no status code.")}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    StartCase();
    EXPECT_EQ(c.expected, Respond(c.xml));
  }
}

TEST_F(ParseResponseTest, TheDataUploadsAnswer) {
  const std::string token99(99, 'T');
  const struct {
    const char* name;
    std::string xml;
    Outcome expected;
  } cases[] = {
      {"accepted with a token", DataUploadRs("0", "TOK-2"), {S_OK, true, "COOKIE", "TOK-2", {kStoredRs}, {}}},
      {"accepted without a token",
       DataUploadRs("0"),
       {S_OK, true, "COOKIE", "0", {"DataUploadRs <DataUploadRs trnUID=\"0001\" statusCode=\"0\"/>"}, {}}},
      {"a failure status keeps the token",
       DataUploadRs("3000", "TOK-3"),
       {S_OK, false, "COOKIE", "TOK-3",
        {"DataUploadRs <DataUploadRs trnUID=\"0001\" statusCode=\"3000\">"
         "<LastDataUploadToken>TOK-3</LastDataUploadToken></DataUploadRs>"},
        {}}},
      {"a token of 99 characters", DataUploadRs("0", token99),
       {S_OK, true, "COOKIE", token99,
        {"DataUploadRs <DataUploadRs trnUID=\"0001\" statusCode=\"0\"><LastDataUploadToken>" + token99 +
         "</LastDataUploadToken></DataUploadRs>"},
        {}}},
      {"a token of 100 characters", DataUploadRs("0", token99 + "T"),
       {kResponseValueTooLong, false, "COOKIE", "0", {},
        {Entry(kPrefix, "The last data upload token is 100 characters or longer; it is not stored.", "0x8007006f")}}},
      {"a token of 3 MB", DataUploadRs("0", std::string(3 * 1024 * 1024, 'T')),
       {kResponseValueTooLong, false, "COOKIE", "0", {},
        {Entry(kPrefix, "The last data upload token is 100 characters or longer; it is not stored.", "0x8007006f")}}},
      {"no status", DataUploadRs(nullptr, "TOK-4"),
       {E_FAIL, false, "COOKIE", "0", {}, {Entry(kPrefix, "The response aggregate carries no status code.")}}},
      {"no element in the message set", "<LXDataMsgsRs> <!-- nothing --> </LXDataMsgsRs>",
       {kInboxStoreFailed, false, "COOKIE", "0", {}, {Entry(kPrefix, "Failed to parse DataUploadRs.", "0x8004911c")}}},
      {"another element first in the message set",
       "<LXDataMsgsRs><OtherRs statusCode=\"0\"/><DataUploadRs statusCode=\"0\"/></LXDataMsgsRs>",
       {kInboxStoreFailed, false, "COOKIE", "0", {}, {Entry(kPrefix, "Failed to parse DataUploadRs.", "0x8004911c")}}},
      {"a DataUploadRs on its own", "<DataUploadRs statusCode=\"0\"/>",
       {S_OK, true, "COOKIE", "0", {"DataUploadRs <DataUploadRs statusCode=\"0\"/>"}, {}}},
      {"another aggregate", "<SignonRs statusCode=\"0\"><MessageID>X</MessageID></SignonRs>",
       {S_OK, false, "COOKIE", "0", {}, {}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    StartCase();
    EXPECT_EQ(c.expected, Respond(c.xml));
    UseCompany("{}");  // a fresh token store and inbox for the next case
  }
}

// The host's failures while a "DataUploadRs" is applied, each with its log lines.
TEST_F(ParseResponseTest, TheHostsFailuresAreLogged) {
  const std::string storeFailed = Entry(kPrefix, "Failed to store the last data upload token.");
  const struct {
    const char* name;
    HostFault fault;
    Outcome expected;
  } cases[] = {
      {"the token cannot be written",
       {"IDataFileRecord::Save", std::nullopt, E_FAIL},
       {E_FAIL, false, "COOKIE", "0", {},
        {Entry(kWritePrefix, "Failed to save data file record in LX."),
         Entry(kStoreTokenPrefix, "Failed to write last data upload token \"TOK-2\" to the data file."),
         storeFailed}}},
      {"no inbox",
       {"ILXInbox", std::nullopt, E_NOINTERFACE},
       {E_NOINTERFACE, true, "COOKIE", "TOK-2", {},
        {Entry(kPrefix, "LXInbox.dll may be missing or unregistered.", "0x80004002")}}},
      {"the inbox refuses the request",
       {"ILXInbox::StoreRequest", std::nullopt, E_ACCESSDENIED},
       {kInboxStoreFailed, true, "COOKIE", "TOK-2", {},
        {Entry(kPrefix, "Failed to store a request in the LX inbox.", "0x8004911c")}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    UseCompany("{}");
    StartCase();
    Inject(c.fault);
    EXPECT_EQ(c.expected, Respond(DataUploadRs("0", "TOK-2")));
  }
}

// "4011" asks for a full upload again: every stamp goes. A failure there is logged and changes
// nothing else.
TEST_F(ParseResponseTest, StatusFourOElevenRemovesTheStamps) {
  Inject({"IAddInGoodies::GetCurrentCompanyFile", std::nullopt, E_FAIL});
  const Outcome noCompany = Respond(DataUploadRs("4011"));
  EXPECT_EQ(S_OK, noCompany.hr);
  EXPECT_FALSE(noCompany.accepted);
  EXPECT_EQ(1u, noCompany.inbox.size());
  EXPECT_EQ((std::vector<std::string>{
                Entry(kCompanyFilePrefix, "Failed to attach to current company from add-in goodies in LX."),
                Entry(kPrefix, "Failed to get current company file.  Can't delete attributes.")}),
            noCompany.log);

  // The lists cannot be had, so the removal fails whatever else it logs on its way.
  StartCase();
  Inject({"ICompanyFile::GetLists", std::nullopt, E_FAIL});
  const Outcome noLists = Respond(DataUploadRs("4011"));
  EXPECT_EQ(S_OK, noLists.hr);
  ASSERT_FALSE(noLists.log.empty());
  EXPECT_EQ(0u, noLists.log.back().find(kPrefix + "Problem removing attributes.  HRESULT=0x8")) << noLists.log.back();
}

TEST_F(ParseResponseTest, WhatIsNoNodeIsRefused) {
  const Outcome none = Respond(static_cast<IUnknown*>(nullptr));
  EXPECT_EQ(E_NOINTERFACE, none.hr);
  EXPECT_EQ(std::vector<std::string>{Entry(kPrefix, "The response aggregate is not an XML DOM node.", "0x80004002")},
            none.log);
  StartCase();
  const INA_Form7Ptr notANode = NewForm();
  EXPECT_EQ(E_NOINTERFACE, Respond(notANode.Get()).hr);

  // A node that cannot be read.
  StartCase();
  const ScopedFaultyDocumentClass documents({{"get_nodeName", E_OUTOFMEMORY}});
  IXMLDOMDocumentPtr document;
  ASSERT_EQ(S_OK, CreateDomDocument(document.ReleaseAndGetAddressOf()));
  const Outcome unreadable = Respond(document.Get());
  EXPECT_EQ(E_OUTOFMEMORY, unreadable.hr);
  EXPECT_EQ(std::vector<std::string>{Entry(kPrefix, "Failed while parsing the element node.", "0x8007000e")},
            unreadable.log);
}

// ---- ParseInboxRequests ---------------------------------------------------------------------

class ParseInboxRequestsTest : public ParseResponseTest {
 protected:
  void Store(const std::string& name, const std::string& xml) {
    ILXInboxPtr inbox;
    ASSERT_EQ(S_OK, CoCreateInstance(host::CLSID_LXInbox, nullptr, CLSCTX_INPROC_SERVER, IidOf<ILXInbox>(),
                                     inbox.ReleaseAndGetVoidAddress()));
    ASSERT_EQ(S_OK, inbox->StoreRequest(MakeBstr(xml).Get(), MakeBstr(name).Get()));
  }
};

TEST_F(ParseInboxRequestsTest, AppliesAndDeletesTheKeptRequests) {
  Store("DataUploadRs", "<DataUploadRs statusCode=\"0\"><LastDataUploadToken>TOK-7</LastDataUploadToken></DataUploadRs>");
  Store("DataUploadRs", "not XML");
  Store("OtherRs", "<OtherRs statusCode=\"0\"/>");
  Store("DataUploadRs", "<DataUploadRs statusCode=\"0\"><LastDataUploadToken>TOK-8</LastDataUploadToken></DataUploadRs>");
  StartCase();
  EXPECT_EQ(S_OK, response::ParseInboxRequests(MakeBstr("1; 2;3 ;;4;9").Get(), "; "));
  EXPECT_EQ("TOK-8", StoredToken()) << "applied in the order given";
  EXPECT_EQ((std::vector<std::string>{"DataUploadRs not XML", "OtherRs <OtherRs statusCode=\"0\"/>"}), Inbox());
  const std::vector<std::string> log = LogEntries();
  const std::string parseFailed = Entry(kInboxPrefix, "Failed to parse request from the Inbox.  Continuing...");
  ASSERT_EQ(4u, log.size());
  EXPECT_EQ(0u, log[0].find("Parcelon:CStatusParser::LoadXML(_bstr_t): XML load error: ")) << log[0];
  EXPECT_EQ(0u, log[1].find("Parcelon:CStatusParser::Parse(_bstr_t): Failed to load XML.")) << log[1];
  EXPECT_EQ(parseFailed, log[2]);
  EXPECT_EQ(parseFailed, log[3]) << "request 9 is not in the inbox";
}

TEST_F(ParseInboxRequestsTest, TheHostsFailuresAreLogged) {
  Store("DataUploadRs", "<DataUploadRs statusCode=\"0\"><LastDataUploadToken>TOK-7</LastDataUploadToken></DataUploadRs>");
  StartCase();
  Inject({"ILXInbox::DeleteRequest", std::nullopt, E_FAIL});
  EXPECT_EQ(S_OK, response::ParseInboxRequests(MakeBstr("1").Get(), ""));
  EXPECT_EQ("TOK-7", StoredToken());
  EXPECT_EQ(std::vector<std::string>{Entry(kInboxPrefix, "Failed to delete old request from the Inbox.  Continuing...")},
            LogEntries());

  // Without a company the stamps cannot go; the request is still applied and deleted.
  StartCase();
  Store("DataUploadRs", "<DataUploadRs statusCode=\"4011\"/>");
  Inject({"IAddInGoodies::GetCurrentCompanyFile", std::nullopt, E_FAIL});
  EXPECT_EQ(S_OK, response::ParseInboxRequests(MakeBstr("2").Get(), ""));
  EXPECT_EQ((std::vector<std::string>{
                Entry(kCompanyFilePrefix, "Failed to attach to current company from add-in goodies in LX."),
                Entry(kInboxPrefix, "Failed to get current company file.  Can't delete attributes.")}),
            LogEntries());
  EXPECT_EQ(1u, Host().InboxRequests().size());

  StartCase();
  Store("DataUploadRs", "<DataUploadRs statusCode=\"0\"><LastDataUploadToken>TOK-9</LastDataUploadToken></DataUploadRs>");
  Inject({"IDataFileRecord::Save", std::nullopt, E_FAIL});
  EXPECT_EQ(S_OK, response::ParseInboxRequests(MakeBstr("3").Get(), ""));
  EXPECT_EQ((std::vector<std::string>{
                Entry(kWritePrefix, "Failed to save data file record in LX."),
                Entry(kStoreTokenPrefix, "Failed to write last data upload token \"TOK-9\" to the data file."),
                Entry(kInboxPrefix, "Failed to store the last data upload token.")}),
            LogEntries());
  EXPECT_EQ(2u, Host().InboxRequests().size()) << "a request not applied stays";

  StartCase();
  Inject({"ILXInbox", std::nullopt, E_NOINTERFACE});
  EXPECT_EQ(E_NOINTERFACE, response::ParseInboxRequests(MakeBstr("1").Get(), ""));
  EXPECT_EQ(std::vector<std::string>{Entry(kInboxPrefix, "LXInbox.dll may be missing or unregistered.", "0x80004002")},
            LogEntries());
}

}  // namespace
}  // namespace parcelon::test
