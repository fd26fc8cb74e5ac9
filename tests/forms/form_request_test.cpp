// The form request envelope against the reference host: whole request texts for what the whole
// sends (tests/component/sends) leave unset or empty (copies, reply address, flags, the fax and
// paper mail details), the service status, the attachment description, the request for other
// documents, and every failure of the envelope reached through the host's faults.
#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "forms/FormRequest.h"
#include "forms/FormsTestHost.h"
#include "support/RequestValidity.h"

namespace parcelon::test {
namespace {

constexpr char kFixture[] = R"({
  "company": {
    "companyName": "Acme & Sons",
    "address": {"lines": ["1 Main St"], "city": "Springfield"},
    "email": "billing@acme.test",
    "phone": "555-0100",
    "companyUID": "UID-42",
    "companyAuthID": "AUTH-7",
    "subscriptions": {"lxob1.lxn": 1, "lxobpay.lxn": 2, "lxobpaper.lxn": -1}
  },
  "customers": [
    {"recNum": 10, "name": "Bob's Barn", "address": {"lines": ["9 Farm Rd"], "city": "Dale"}},
    {"recNum": 11, "name": "Roof", "parent": 10}
  ],
  "invoices": [
    {"recNum": 100, "transactionNumber": 4711, "amount": "99.50", "customer": 10,
     "invoiceNumber": "INV-1", "remainingBalance": "99.50"}
  ],
  "estimates": [
    {"recNum": 200, "transactionNumber": 12, "amount": "10.00", "customer": 11,
     "estimateNumber": "E-2"}
  ]
})";

constexpr char kCompanyBlock[] =
    "<Company>\n<CompanyName>Acme &amp; Sons</CompanyName>\n<CompanyEmail>billing@acme.test</CompanyEmail>\n<Address>\n"
    "<Addr1>1 Main St</Addr1>\n<City>Springfield</City>\n</Address>\n<CompanyPhone>555-0100</CompanyPhone>\n"
    "</Company>\n";

const std::string kInvoiceForm =
    FormText("Invoice",
             "<TranID>100</TranID>\n<TranNum>4711</TranNum>\n<TotalAmount>99.50</TotalAmount>\n"
             "<TMCreateStamp>0</TMCreateStamp>\n<CustomerJobID>10</CustomerJobID>\n"
             "<CustomerJobName>Bob&apos;s Barn</CustomerJobName>\n<InvoiceNum>INV-1</InvoiceNum>\n"
             "<BalRemaining>99.50</BalRemaining>\n",
             kCompanyBlock);

const std::string kEstimateForm =
    FormText("Estimate",
             "<TranID>200</TranID>\n<TranNum>12</TranNum>\n<TotalAmount>10.00</TotalAmount>\n"
             "<TMCreateStamp>0</TMCreateStamp>\n<Project>Roof</Project>\n<CustomerJobID>11</CustomerJobID>\n"
             "<CustomerJobName>Bob&apos;s Barn:Roof</CustomerJobName>\n<EstimateNum>E-2</EstimateNum>\n",
             kCompanyBlock);

// A statement of job 11 for March 2009, dated 7 March, due 6 April.
const std::string kStatementForm =
    FormText("Statement",
             "<StatementID>7</StatementID>\n<StatementDate>20090307</StatementDate>\n<DueDate>20090406</DueDate>\n"
             "<AmountDue>1,234.50</AmountDue>\n<CustomerJobName>Bob&apos;s Barn:Roof</CustomerJobName>\n"
             "<CustomerJobID>11</CustomerJobID>\n<BillAddress>\n<Addr1>9 Farm Rd</Addr1>\n<City>Dale</City>\n"
             "</BillAddress>\n<StatementFromDate>20090301</StatementFromDate>\n"
             "<StatementToDate>20090331</StatementToDate>\n",
             kCompanyBlock);

constexpr char kServiceStatus[] =
    "<ServiceStatusData>\n<ServiceDesc>lxob1.lxn</ServiceDesc>\n<StatusValue>1</StatusValue>\n</ServiceStatusData>\n"
    "<ServiceStatusData>\n<ServiceDesc>lxob2.lxn</ServiceDesc>\n<StatusValue>0</StatusValue>\n</ServiceStatusData>\n"
    "<ServiceStatusData>\n<ServiceDesc>lxobpay.lxn</ServiceDesc>\n<StatusValue>2</StatusValue>\n</ServiceStatusData>\n"
    "<ServiceStatusData>\n<ServiceDesc>lxobpaper.lxn</ServiceDesc>\n<StatusValue>-1</StatusValue>\n"
    "</ServiceStatusData>\n";

constexpr char kEMailData[] =
    "<EMailData>\n<EMailFrom>billing@acme.test</EMailFrom>\n<EMailTo>bob@barn.test</EMailTo>\n"
    "<EMailSubject>Invoice INV-1 &amp; more</EMailSubject>\n<EMailText>Dear Bob,\nplease find attached.</EMailText>\n"
    "<AllowPayment>Y</AllowPayment>\n<AllowPosting>N</AllowPosting>\n</EMailData>\n";

// The description of the uploaded attachment "inv 1.pdf" of a form of `formType`.
std::string Attachments(const std::string& formType = "Invoice", const char* removeOnSend = "N") {
  return "<Attachments>\n<MsgID>MSG-0001</MsgID>\n<AttachmentInfo>\n<FileName>inv 1.pdf</FileName>\n<FormType>" +
         formType + "</FormType>\n<DocType>pdf</DocType>\n<RemoveOnSend>" + removeOnSend +
         "</RemoveOnSend>\n</AttachmentInfo>\n</Attachments>\n";
}

constexpr char kBuildXMLPrefix[] = "Parcelon:CNA_Form::BuildXML(short, BSTR*): ";
constexpr char kLXOBPrefix[] = "Parcelon:CNA_Form::BuildLXOBFormXML: ";
constexpr char kServicesPrefix[] =
    "Parcelon:CNA_Form::AddServiceSubscriptionElements(XMLBuilder&, ICompanyFilePtr&): ";
constexpr char kCompanyFilePrefix[] = "Parcelon:CNA_Form::GetCurrentCompanyFilePtr(ICompanyFilePtr&): ";
constexpr char kCompanyUIDPrefix[] = "Parcelon:CNA_Form::RetreiveCompanyUID(OLAString*): ";

// The request of kind `rq` that carries `body`, with its trnUID as "*".
std::string Envelope(const std::string& rq, const std::string& body) {
  return "<LXNParcelonMsgsRq version=\"1\">\n<" + rq + " trnUID=\"*\">\n<AuthID>AUTH-7</AuthID>\n" +
         "<CompanyUID>UID-42</CompanyUID>\n" + body + "</" + rq + ">\n</LXNParcelonMsgsRq>\n";
}

using TextSetter = HRESULT (STDMETHODCALLTYPE INA_Form7::*)(BSTR);
using BoolSetter = HRESULT (STDMETHODCALLTYPE INA_Form7::*)(VARIANT_BOOL);

class FormRequestTest : public FormsTest {
 protected:
  void SetUp() override {
    FormsTest::SetUp();
    UseCompany(kFixture);
  }

  static void Set(const INA_Form7Ptr& form, TextSetter put, const char* value) {
    ASSERT_EQ(S_OK, (form.Get()->*put)(MakeBstr(value).Get()));
  }
  static void Set(const INA_Form7Ptr& form, std::initializer_list<std::pair<TextSetter, const char*>> values) {
    for (const auto& [put, value] : values) Set(form, put, value);
  }
  static void Set(const INA_Form7Ptr& form, BoolSetter put, bool value) {
    ASSERT_EQ(S_OK, (form.Get()->*put)(value ? VARIANT_TRUE : VARIANT_FALSE));
  }

  // A form of `type` sent by `method` for transaction `recNum`, with the e-mail texts, payment
  // allowed, and the attachment that the attachment pass has uploaded.
  static INA_Form7Ptr Form(NAFormType type, NASendType method, LONG recNum) {
    INA_Form7Ptr form = NewForm();
    EXPECT_EQ(S_OK, form->put_FormType(type));
    EXPECT_EQ(S_OK, form->put_SendMethod(method));
    EXPECT_EQ(S_OK, form->put_TransactionRecordNumber(recNum));
    Set(form, {{&INA_Form::put_From, "billing@acme.test"}, {&INA_Form::put_To, "bob@barn.test"},
               {&INA_Form::put_Subject, "Invoice INV-1 & more"},
               {&INA_Form::put_Text, "Dear Bob,\nplease find attached."}});
    Set(form, &INA_Form::put_Pay, true);
    Set(form, {{&INA_Form5::put_MessageID, "MSG-0001"}, {&INA_Form5::put_AttachmentFileName, "inv 1.pdf"},
               {&INA_Form5::put_DocType, "pdf"}});
    return form;
  }

  // The statement data of job 11.
  static void SetStatement(const INA_Form7Ptr& form) {
    EXPECT_EQ(S_OK, form->put_StatementID(7));
    EXPECT_EQ(S_OK, form->put_StatementCustomerRecNum(11));
    EXPECT_EQ(S_OK, form->put_StatementDate(39879));     // 7 March 2009
    EXPECT_EQ(S_OK, form->put_StatementDueDate(39909));  // 6 April 2009
    EXPECT_EQ(S_OK, form->put_StatementFromDate(39873));
    EXPECT_EQ(S_OK, form->put_StatementToDate(39903));
    Set(form, &INA_Form2::put_StatementAmountDue, "1,234.50");
  }


  // The request of `form`, with its trnUIDs as "*".
  std::string Request(const INA_Form7Ptr& form, HRESULT expected = S_OK) {
    BSTR xml = nullptr;
    EXPECT_EQ(expected, BuildFormRequest(form.Get(), &xml));
    std::string request = Take(xml);
    // Every request that was built whole validates against its document type.
    if (expected == S_OK) {
      EXPECT_EQ("valid", RequestValidity(request)) << request;
    }
    return WithoutTrnUIDs(request);
  }
};

// ---- E-mail ------------------------------------------------------------------------------------

TEST_F(FormRequestTest, EMailedInvoiceWithCopiesReplyAddressAndBatch) {
  const INA_Form7Ptr form = Form(naftINVOICE, nastEMAIL, 100);
  Set(form, {{&INA_Form::put_Cc, "acct@barn.test"}, {&INA_Form::put_Bcc, "<archive>@acme.test"},
             {&INA_Form::put_ReplyTo, "ar@acme.test"}});
  Set(form, &INA_Form::put_Pay, false);
  Set(form, &INA_Form::put_Post, true);
  Set(form, &INA_Form5::put_BatchSend, true);
  Set(form, &INA_Form5::put_RemoveAfterSend, true);
  EXPECT_EQ(Envelope("InvoiceEMailRq", std::string("<EMailData>\n"
                                                   "<EMailFrom>billing@acme.test</EMailFrom>\n"
                                                   "<EMailTo>bob@barn.test</EMailTo>\n"
                                                   "<EMailCc>acct@barn.test</EMailCc>\n"
                                                   "<EMailBcc>&lt;archive&gt;@acme.test</EMailBcc>\n"
                                                   "<EMailReplyTo>ar@acme.test</EMailReplyTo>\n"
                                                   "<EMailSubject>Invoice INV-1 &amp; more</EMailSubject>\n"
                                                   "<EMailText>Dear Bob,\nplease find attached.</EMailText>\n"
                                                   "<AllowPayment>N</AllowPayment>\n<AllowPosting>Y</AllowPosting>\n"
                                                   "</EMailData>\n") +
                                           kInvoiceForm + kServiceStatus + Attachments("Invoice", "Y") +
                                           "<BatchSend>Y</BatchSend>\n"),
            Request(form));
}

TEST_F(FormRequestTest, UnsetAddressesAndTextsAreWrittenEmpty) {
  INA_Form7Ptr form = NewForm();
  ASSERT_EQ(S_OK, form->put_FormType(naftINVOICE));
  ASSERT_EQ(S_OK, form->put_SendMethod(nastEMAIL));
  ASSERT_EQ(S_OK, form->put_TransactionRecordNumber(100));
  // Nor is there an attachment to describe.
  EXPECT_EQ(Envelope("InvoiceEMailRq", std::string("<EMailData>\n"
                                                   "<EMailFrom></EMailFrom>\n<EMailTo></EMailTo>\n"
                                                   "<EMailSubject></EMailSubject>\n<EMailText></EMailText>\n"
                                                   "<AllowPayment>N</AllowPayment>\n<AllowPosting>N</AllowPosting>\n"
                                                   "</EMailData>\n") +
                                           kInvoiceForm + kServiceStatus + "<BatchSend>N</BatchSend>\n"),
            Request(form));
}

TEST_F(FormRequestTest, AttachmentIsDescribedOnlyWithAllThreeValues) {
  const TextSetter setters[] = {&INA_Form5::put_MessageID, &INA_Form5::put_AttachmentFileName,
                                &INA_Form5::put_DocType};
  for (TextSetter cleared : setters) {
    const INA_Form7Ptr form = Form(naftINVOICE, nastEMAIL, 100);
    ASSERT_EQ(S_OK, (form.Get()->*cleared)(nullptr));
    const std::string request = Request(form);
    EXPECT_EQ(std::string::npos, request.find("<Attachments>")) << request;
    EXPECT_NE(std::string::npos, request.find(std::string(kServiceStatus) + "<BatchSend>N</BatchSend>\n"));
  }
  EXPECT_TRUE(LogEntries().empty());
}

// ---- Fax ---------------------------------------------------------------------------------------

TEST_F(FormRequestTest, FaxedInvoiceHasSenderRecipientAndNoteButNoStatusOrAttachment) {
  const INA_Form7Ptr form = Form(naftINVOICE, nastFAX, 100);
  Set(form, &INA_Form5::put_BatchSend, true);
  Set(form, {{&INA_Form::put_Fax_FromCompanyName, "Acme & Sons"}, {&INA_Form::put_Fax_FromTelephoneNumber, "555-0100"},
             {&INA_Form::put_Fax_FromFaxNumber, "555-0101"}, {&INA_Form::put_Fax_ToCompanyName, "Bob's Barn"},
             {&INA_Form::put_Fax_ToRecipientName, "Bob"}, {&INA_Form::put_Fax_ToFaxNumber, "555-0199"}});
  EXPECT_EQ(Envelope("InvoiceFaxRq", std::string("<FaxData>\n"
                                                 "<SenderInfo>\n<CompanyName>Acme &amp; Sons</CompanyName>\n"
                                                 "<Fax>555-0101</Fax>\n<Phone>555-0100</Phone>\n</SenderInfo>\n"
                                                 "<RecipientInfo>\n<CompanyName>Bob&apos;s Barn</CompanyName>\n"
                                                 "<Name>Bob</Name>\n<Fax>555-0199</Fax>\n</RecipientInfo>\n"
                                                 "<Note>Dear Bob,\nplease find attached.</Note>\n</FaxData>\n") +
                                         kInvoiceForm),
            Request(form));
}

TEST_F(FormRequestTest, FaxedEstimateAndStatementWithTheLeastFaxData) {
  const INA_Form7Ptr estimate = Form(naftESTIMATE, nastFAX, 200);
  Set(estimate, &INA_Form::put_Text, "");
  Set(estimate, &INA_Form::put_Fax_FromFaxNumber, "555-0101");
  EXPECT_EQ(Envelope("EstimateFaxRq", std::string("<FaxData>\n"
                                                  "<SenderInfo>\n<Fax>555-0101</Fax>\n</SenderInfo>\n<RecipientInfo>\n"
                                                  "<Fax></Fax>\n</RecipientInfo>\n</FaxData>\n") +
                                          kEstimateForm),
            Request(estimate));

  const INA_Form7Ptr statement = Form(naftSTATEMENT, nastFAX, 0);
  SetStatement(statement);
  Set(statement, &INA_Form::put_Text, "");
  Set(statement, &INA_Form::put_Fax_ToFaxNumber, "555-0199");
  EXPECT_EQ(Envelope("StatementFaxRq", std::string("<FaxData>\n"
                                                   "<RecipientInfo>\n<Fax>555-0199</Fax>\n</RecipientInfo>\n"
                                                   "</FaxData>\n") +
                                           kStatementForm),
            Request(statement));
}

// ---- Paper mail --------------------------------------------------------------------------------

TEST_F(FormRequestTest, InvoiceByPaperMail) {
  const INA_Form7Ptr form = Form(naftINVOICE, nastPAPER_MAIL, 100);
  Set(form, {{&INA_Form5::put_PaperMail_FromAttention, "Billing"},
             {&INA_Form5::put_PaperMail_FromAddresseeName, "Acme & Sons"},
             {&INA_Form5::put_PaperMail_FromStreetAddress1, "1 Main St"},
             {&INA_Form5::put_PaperMail_FromStreetAddress2, "Suite 5"},
             {&INA_Form5::put_PaperMail_FromCity, "Springfield"}, {&INA_Form5::put_PaperMail_FromState, "IL"},
             {&INA_Form5::put_PaperMail_FromPostalCode, "62701"}, {&INA_Form5::put_PaperMail_FromCountry, "USA"},
             {&INA_Form5::put_PaperMail_ToAddresseeName, "Bob's Barn"},
             {&INA_Form5::put_PaperMail_ToStreetAddress1, "9 Farm Rd"}, {&INA_Form5::put_PaperMail_ToCity, "Dale"},
             {&INA_Form5::put_CoverLetter, "Thank you for your business."}});
  Set(form, &INA_Form5::put_IsSample, true);
  Set(form, &INA_Form5::put_UseColor, false);
  Set(form, &INA_Form5::put_BatchSend, true);
  EXPECT_EQ(Envelope("InvoicePaperMailRq", std::string("<PaperMailData>\n"
                                                       "<PaperMailFrom>\n<Attention>Billing</Attention>\n"
                                                       "<AddresseeName>Acme &amp; Sons</AddresseeName>\n"
                                                       "<Addr1>1 Main St</Addr1>\n<Addr2>Suite 5</Addr2>\n"
                                                       "<City>Springfield</City>\n<State>IL</State>\n"
                                                       "<PostalCode>62701</PostalCode>\n<Country>USA</Country>\n"
                                                       "</PaperMailFrom>\n<PaperMailTo>\n"
                                                       "<AddresseeName>Bob&apos;s Barn</AddresseeName>\n"
                                                       "<Addr1>9 Farm Rd</Addr1>\n<City>Dale</City>\n<State></State>\n"
                                                       "<PostalCode></PostalCode>\n<Country></Country>\n"
                                                       "</PaperMailTo>\n"
                                                       "<CoverLetter>Thank you for your business.</CoverLetter>\n"
                                                       "<AllowPayment>Y</AllowPayment>\n"
                                                       "<AllowPosting>N</AllowPosting>\n</PaperMailData>\n") +
                                               kInvoiceForm + kServiceStatus + Attachments() +
                                               "<IsSample>Y</IsSample>\n<UseColor>N</UseColor>\n"
                                               "<BatchSend>Y</BatchSend>\n"),
            Request(form));
}

// ---- No request --------------------------------------------------------------------------------

struct NoRequestCase {
  NAFormType type;
  NASendType method;
};

class NoRequestTest : public FormRequestTest, public ::testing::WithParamInterface<NoRequestCase> {};

TEST_P(NoRequestTest, WritesAnEmptyMessageSet) {
  EXPECT_EQ("<LXNParcelonMsgsRq version=\"1\">\n</LXNParcelonMsgsRq>\n",
            Request(Form(GetParam().type, GetParam().method, 100)));
  EXPECT_TRUE(LogEntries().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Combinations, NoRequestTest,
    ::testing::Values(NoRequestCase{naftESTIMATE, nastPAPER_MAIL}, NoRequestCase{naftSTATEMENT, nastPAPER_MAIL},
                      NoRequestCase{naftINVOICE, nastNONE}, NoRequestCase{naftINVOICE, nastDELETE},
                      NoRequestCase{naftINVOICE, nastVOID}, NoRequestCase{naftESTIMATE, nastPENDING},
                      NoRequestCase{naftSTATEMENT, nastNONE},
                      NoRequestCase{naftINVOICE, static_cast<NASendType>(17)}));

// ---- Other documents ---------------------------------------------------------------------------

struct OtherDocumentCase {
  NAFormType type;
  const char* name;
};

class OtherDocumentTest : public FormRequestTest, public ::testing::WithParamInterface<OtherDocumentCase> {};

TEST_P(OtherDocumentTest, AsksForDeliveryOfTheUploadedFile) {
  const INA_Form7Ptr form = Form(GetParam().type, nastEMAIL, 0);
  Set(form, &INA_Form::put_Cc, "acct@barn.test");
  Set(form, &INA_Form5::put_CoverLetter, "See attached.");
  EXPECT_EQ(std::string("<FormsMsgsRq version=\"1\">\n"
                        "<FormsDeliveryRq trnUID=\"*\">\n<MessageID>MSG-0001</MessageID>\n"
                        "<CompanyAuthID>AUTH-7</CompanyAuthID>\n<FormsDeliveryData deleteOnSend=\"yes\">\n"
                        "<EMailHeader>\n<EMailFrom>billing@acme.test</EMailFrom>\n<EMailTo>bob@barn.test</EMailTo>\n"
                        "<EMailCc>acct@barn.test</EMailCc>\n<EMailBcc></EMailBcc>\n<EMailReplyTo></EMailReplyTo>\n"
                        "<EMailSubject>Invoice INV-1 &amp; more</EMailSubject>\n</EMailHeader>\n"
                        "<CoverLetter>See attached.</CoverLetter>\n<AttachmentHeader deleteOnSend=\"yes\">\n"
                        "<FileName>inv 1.pdf</FileName>\n<DocType>pdf</DocType>\n<FormType>") +
                GetParam().name +
                "</FormType>\n</AttachmentHeader>\n</FormsDeliveryData>\n<NumberOfAttachments>1</NumberOfAttachments>\n"
                "<Service>EMAIL</Service>\n<Source>\n<Product>Ledgerine</Product>\n</Source>\n</FormsDeliveryRq>\n"
                "</FormsMsgsRq>\n",
            Request(form));
  EXPECT_TRUE(LogEntries().empty());
}

INSTANTIATE_TEST_SUITE_P(Types, OtherDocumentTest,
                         ::testing::Values(OtherDocumentCase{naftNON_LX, "Non-Ledgerine Document"},
                                           OtherDocumentCase{static_cast<NAFormType>(12), "Unknown"}));

TEST_F(FormRequestTest, OtherDocumentWithoutAuthIDOrProperties) {
  UseCompany(R"({"company": {"companyName": "Acme", "companyUID": "U"}})");
  INA_Form7Ptr form = NewForm();
  ASSERT_EQ(S_OK, form->put_FormType(naftNON_LX));
  EXPECT_EQ(
      "<FormsMsgsRq version=\"1\">\n<FormsDeliveryRq trnUID=\"*\">\n<MessageID></MessageID>\n"
      "<CompanyAuthID></CompanyAuthID>\n<FormsDeliveryData deleteOnSend=\"yes\">\n<EMailHeader>\n"
      "<EMailFrom></EMailFrom>\n<EMailTo></EMailTo>\n<EMailCc></EMailCc>\n<EMailBcc></EMailBcc>\n"
      "<EMailReplyTo></EMailReplyTo>\n<EMailSubject></EMailSubject>\n</EMailHeader>\n<CoverLetter></CoverLetter>\n"
      "<AttachmentHeader deleteOnSend=\"yes\">\n<FileName></FileName>\n<DocType></DocType>\n"
      "<FormType>Non-Ledgerine Document</FormType>\n</AttachmentHeader>\n</FormsDeliveryData>\n"
      "<NumberOfAttachments>1</NumberOfAttachments>\n<Service>EMAIL</Service>\n<Source>\n<Product>Ledgerine</Product>\n"
      "</Source>\n</FormsDeliveryRq>\n</FormsMsgsRq>\n",
      Request(form));
}

// ---- Indentation and transaction identifiers ---------------------------------------------------

TEST_F(FormRequestTest, IndentedRequestStartsTwoLevelsDown) {
  WriteSettings("NetworkAdapter.IndentXML=1\n");
  const INA_Form7Ptr form = Form(naftINVOICE, nastFAX, 100);
  Set(form, &INA_Form::put_Text, "");
  const std::string request = Request(form);
  EXPECT_EQ(
      "    <LXNParcelonMsgsRq version=\"1\">\n      <InvoiceFaxRq trnUID=\"*\">\n        <AuthID>AUTH-7</AuthID>\n"
      "        <CompanyUID>UID-42</CompanyUID>\n        <FaxData>\n          <RecipientInfo>\n            <Fax></Fax>\n"
      "          </RecipientInfo>\n        </FaxData>\n        <InvoiceForm>\n          <Company>\n            ",
      request.substr(0, request.find("<CompanyName>")));
  EXPECT_EQ("      </InvoiceFaxRq>\n    </LXNParcelonMsgsRq>\n",
            request.substr(request.size() - 47));
}

TEST_F(FormRequestTest, EveryRequestHasItsOwnTrnUID) {
  const INA_Form7Ptr form = Form(naftINVOICE, nastEMAIL, 100);
  BSTR first = nullptr, second = nullptr;
  ASSERT_EQ(S_OK, BuildFormRequest(form.Get(), &first));
  ASSERT_EQ(S_OK, BuildFormRequest(form.Get(), &second));
  const std::string a = Take(first), b = Take(second);
  const size_t at = a.find("trnUID=\"");
  ASSERT_NE(std::string::npos, at);
  EXPECT_NE(a.substr(at, 48), b.substr(at, 48));
}

// ---- Company identifiers -----------------------------------------------------------------------

TEST_F(FormRequestTest, EmptyAuthIDIsLeftOutWithoutComplaint) {
  UseCompany(std::string(kFixture).replace(std::string(kFixture).find("\"AUTH-7\""), 8, "\"\""));
  const std::string request = Request(Form(naftINVOICE, nastFAX, 100));
  EXPECT_EQ(std::string::npos, request.find("AuthID"));
  EXPECT_TRUE(LogEntries().empty());
}

// A fault met while the envelope is written: the request it leaves (none when it ends it) and the log.
struct EnvelopeFault {
  const char* what;
  const char* operation;  // a fault (E_ACCESSDENIED), an interface made unavailable, or "closed": no company open
  HRESULT status;         // what BuildFormRequest returns
  std::optional<std::string> request;
  std::vector<std::string> log;
};

class EnvelopeFaultTest : public FormRequestTest, public ::testing::WithParamInterface<EnvelopeFault> {};

TEST_P(EnvelopeFaultTest, LogsAndLeavesOutOrEnds) {
  const EnvelopeFault& c = GetParam();
  if (std::string(c.operation) == "closed")
    Host().SetCompanyOpen(false);
  else
    Inject({c.operation, {}, E_ACCESSDENIED});
  BSTR xml = reinterpret_cast<BSTR>(this);
  EXPECT_EQ(c.status, BuildFormRequest(Form(naftINVOICE, nastEMAIL, 100).Get(), &xml));
  if (c.request) {
    EXPECT_EQ(*c.request, WithoutTrnUIDs(Take(xml)));
  } else {
    EXPECT_EQ(nullptr, xml);
  }
  EXPECT_EQ(c.log, LogEntries());
}

const std::string kWithoutStatus =
    Envelope("InvoiceEMailRq", kEMailData + kInvoiceForm + Attachments() + "<BatchSend>N</BatchSend>\n");

INSTANTIATE_TEST_SUITE_P(
    Faults, EnvelopeFaultTest,
    ::testing::Values(
        EnvelopeFault{"no company open", "closed", E_FAIL, std::nullopt,
                      {Entry(kCompanyFilePrefix, "Failed to attach to current company from add-in goodies in LX."),
                       Entry(kBuildXMLPrefix, "Failed to get company file ptr.")}},
        EnvelopeFault{"no add-in goodies", "ILXApplication::GetAddInGoodies", E_ACCESSDENIED, std::nullopt,
                      {Entry(kCompanyFilePrefix, "Failed to get add-in goodies from LX application.", "0x80070005"),
                       Entry(kBuildXMLPrefix, "Failed to get company file ptr.", "0x80070005")}},
        EnvelopeFault{"no host application", "ILXApplication", E_NOINTERFACE, std::nullopt,
                      {Entry(kCompanyFilePrefix, "Failed to get add-in goodies from LX application.", "0x80004002"),
                       Entry(kBuildXMLPrefix, "Failed to get company file ptr.", "0x80004002")}},
        EnvelopeFault{"no company UID", "INAAuthTool::GetCompanyUID", E_ACCESSDENIED, std::nullopt,
                      {Entry(kBuildXMLPrefix, "Failed while getting company UID.", "0x80070005")}},
        EnvelopeFault{"no authentication tool", "INAAuthTool", E_NOINTERFACE, std::nullopt,
                      {Entry(kCompanyUIDPrefix, "NAAuthTool.dll may be missing or unregistered.", "0x80004002"),
                       Entry(kBuildXMLPrefix, "Failed while getting company UID.", "0x80004002")}},
        // Without an authentication identifier the request has no element for it.
        EnvelopeFault{"no auth ID", "INAAuthTool::GetCompanyAuthID", S_OK,
                      "<LXNParcelonMsgsRq version=\"1\">\n<InvoiceEMailRq trnUID=\"*\">\n"
                      "<CompanyUID>UID-42</CompanyUID>\n" +
                          std::string(kEMailData) + kInvoiceForm + kServiceStatus + Attachments() +
                          "<BatchSend>N</BatchSend>\n</InvoiceEMailRq>\n</LXNParcelonMsgsRq>\n",
                      {Entry(kBuildXMLPrefix, "Couldn't get company ID.  Skipping...", "0x80070005")}},
        // The service status is left out, and the request goes on.
        EnvelopeFault{"no second company file", "ICompanyFile2", S_OK, kWithoutStatus,
                      {Entry(kServicesPrefix, "Failed to get ICompanyFile2 interface", "0x80004002")}},
        EnvelopeFault{"no company profile", "ICompanyFile2::GetCompanyProfile", S_OK, kWithoutStatus,
                      {Entry(kServicesPrefix, "Failed to get company profile for company", "0x80070005")}},
        EnvelopeFault{"no subscription status", "ICompanyProfile::GetServiceSubscriptionStatus", S_OK, kWithoutStatus,
                      {Entry(kServicesPrefix,
                             "Failed to get service subscription status component from company profile",
                             "0x80070005")}},
        EnvelopeFault{"no status", "IServiceSubscriptionStatus::GetStatus", S_OK, kWithoutStatus,
                      {Entry(kServicesPrefix, "Failed to get service subscription status", "0x80070005")}}),
    [](const auto& info) {
      std::string name = info.param.what;
      for (char& c : name)
        if (c == ' ' || c == '-') c = '_';
      return name;
    });

// ---- The form aggregate ------------------------------------------------------------------------

struct AggregateFailure {
  NAFormType type;
  NASendType method;
  const char* opened;   // the text up to the form aggregate's own element
  const char* message;  // the envelope's log entry
};

class AggregateFailureTest : public FormRequestTest, public ::testing::WithParamInterface<AggregateFailure> {};

TEST_P(AggregateFailureTest, EndsTheRequestWithTheFailure) {
  const AggregateFailure& failure = GetParam();
  ASSERT_TRUE(Faults().Fail("ICompanyFile::GetCompanyInfo", E_ACCESSDENIED));
  const INA_Form7Ptr form = Form(failure.type, failure.method, failure.type == naftESTIMATE ? 200 : 100);
  if (failure.type == naftSTATEMENT) SetStatement(form);
  const std::string request = Request(form, E_ACCESSDENIED);
  // The text written so far comes back with the failure, unclosed.
  EXPECT_EQ(failure.opened, request.substr(request.size() - std::string(failure.opened).size()));
  const std::vector<std::string> log = LogEntries();
  ASSERT_FALSE(log.empty());
  EXPECT_EQ(Entry(kLXOBPrefix, failure.message, "0x80070005"), log.back());
  EXPECT_EQ("Parcelon:CCompanyBuilder::BuildXML(): Failed to get company info from company file in LX.  "
            "HRESULT=0x80070005",
            log.front());
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, AggregateFailureTest,
    ::testing::Values(
        AggregateFailure{naftINVOICE, nastEMAIL, "</EMailData>\n<InvoiceForm>\n",
                         "Failed to build invoice form aggregate XML for the invoice email."},
        AggregateFailure{naftINVOICE, nastPAPER_MAIL, "</PaperMailData>\n<InvoiceForm>\n",
                         "Failed to build invoice form aggregate XML for the invoice paper mail."},
        AggregateFailure{naftINVOICE, nastFAX, "</FaxData>\n<InvoiceForm>\n",
                         "Failed to build invoice form aggregate XML for the invoice fax."},
        AggregateFailure{naftESTIMATE, nastEMAIL, "</EMailData>\n<EstimateForm>\n",
                         "Failed to build estimate form aggregate XML for the estimate email"},
        AggregateFailure{naftESTIMATE, nastFAX, "</FaxData>\n<EstimateForm>\n",
                         "Failed to build estimate form aggregate XML for the estimate fax."},
        AggregateFailure{naftSTATEMENT, nastEMAIL, "</EMailData>\n<StatementForm>\n",
                         "Failed to build statement form for the Email."},
        AggregateFailure{naftSTATEMENT, nastFAX, "</FaxData>\n<StatementForm>\n",
                         "Failed to build statement form for the Fax."}));

TEST_F(FormRequestTest, MissingTransactionEndsTheRequest) {
  const std::string request = Request(Form(naftINVOICE, nastEMAIL, 999), LX_E_NOTFOUND);
  EXPECT_EQ(std::string::npos, request.find("</InvoiceEMailRq>"));
  EXPECT_EQ(Entry(kLXOBPrefix, "Failed to build invoice form aggregate XML for the invoice email.",
                  "0x80041a00"),
            LogEntries().back());
}

TEST_F(FormRequestTest, NullArguments) {
  BSTR xml = nullptr;
  EXPECT_EQ(E_POINTER, BuildFormRequest(nullptr, &xml));
  EXPECT_EQ(E_POINTER, BuildFormRequest(Form(naftINVOICE, nastEMAIL, 100).Get(), nullptr));
}

}  // namespace
}  // namespace parcelon::test
