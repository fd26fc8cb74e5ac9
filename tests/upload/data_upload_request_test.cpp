// The data upload request against the reference host: the per-record decisions and marks of
// first and later uploads, the head's token and flags, removal notices, and failures with their
// log lines. The whole texts of uploads are the whole-send transcripts' (tests/component/sends).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "UploadTestSupport.h"
#include "support/RequestValidity.h"
#include "upload/DataUploadRequest.h"
#include "upload/UploadState.h"

namespace parcelon::test {
namespace {

// Terms 1 (selected by the invoice) and 2 (selected by nothing); customer 10 with job 11 and
// job 12 under it; customer 20. Uploaded at kNow - 100 where an attribute says so.
constexpr char kCompany[] = R"({
  "company": {"companyName": "Harbor & Pine", "legalCompanyName": "Harbor & Pine Ltd",
              "legalAddress": {"lines": ["1 Quay"], "city": "Cork", "country": "IE"},
              "phone": "555-0100", "email": "office@harbor.example",
              "companyUID": "{7D0F6E2A-33C1-4B8E-9A51-2C4E8F10B7D3}"},
  "terms": [
    {"recNum": 1, "name": "Net 30", "stdDueDays": 30, "modTime": 1699990000},
    {"recNum": 2, "name": "2% 10", "type": "dateDriven", "discountPct": 2, "modTime": 1699999900,
     "attributes": [{"name": "ParcelonUploadTime", "owner": "{54901C71-3408-44fb-9031-7B4BB81D871C}", "value": 1699999900}]}
  ],
  "customers": [
    {"recNum": 10, "name": "Siobhan", "companyName": "O'Brien Roofing", "email": "s@obrien.example"},
    {"recNum": 11, "name": "Roof", "parent": 10, "jobStatus": "inProgress"},
    {"recNum": 12, "name": "Gutters", "parent": 11, "jobStatus": "pending"},
    {"recNum": 20, "name": "Pine"}
  ],
  "invoices": [{"recNum": 100, "transactionNumber": 1001, "date": "2023-11-01", "amount": "250.00",
                "createTimeStamp": 1698800000, "customer": 12, "terms": 1, "invoiceNumber": "1001"}],
  "estimates": [{"recNum": 200, "amount": "75.50", "customer": 20, "estimateNumber": "E-7"}]
})";

class DataUploadRequestTest : public UploadTest {
 protected:
  void SetUp() override {
    UploadTest::SetUp();
    UseCompany(kCompany);
  }

  void AddForm(NAFormType type, LONG recNum, NASendType method = nastFAX, bool post = true) {
    INA_Form7Ptr form = NewForm();
    form->put_FormType(type);
    form->put_TransactionRecordNumber(recNum);
    form->put_SendMethod(method);
    form->put_Post(post ? VARIANT_TRUE : VARIANT_FALSE);
    forms_.push_back(form);
  }

  std::string Build(HRESULT expected = S_OK) {
    DataUploadSession session{map_, forms_, forceNewCompany_, false, 2};
    const std::string upload =
        Written(expected, [&](XMLBuilder& b) { return CDataUploadRequest(session).BuildLXDataMsgsRq(b); });
    // Every upload that was built whole validates against its document type.
    if (expected == S_OK) {
      EXPECT_EQ("valid", RequestValidity(upload)) << upload;
    }
    return WithoutTrnUIDs(upload);
  }

  std::vector<INA_Form7Ptr> forms_;
  CRecNumMap map_;
  bool forceNewCompany_ = false;
};

// A term uploaded at the time of its last change is up to date: selected, it is not sent.
TEST_F(DataUploadRequestTest, MarksSayWhatWasSentAndWhy) {
  AddForm(naftESTIMATE, 200);
  AddForm(naftINVOICE, 100, nastVOID);
  const std::string text = Build();
  EXPECT_NE(std::string::npos, text.find("<InvoicesDel>\n<ClientID>100</ClientID>\n</InvoicesDel>\n"));
  EXPECT_EQ(std::string::npos, text.find("<InvoicesAdd>"));
  EXPECT_EQ(std::string::npos, text.find("<TermsAdd>")) << "term 2 is up to date, term 1 selected by nothing";
  // The legal address leaves out its empty fields.
  EXPECT_NE(std::string::npos, text.find("<LegalAddress>\n<Addr1>1 Quay</Addr1>\n<City>Cork</City>\n"
                                         "<Country>IE</Country>\n</LegalAddress>\n"));
  EXPECT_EQ(uint32_t(kMarkDeleted), *map_.Find(RecordKind::kInvoice, 100));
  EXPECT_EQ(uint32_t(kMarkSentSelected), *map_.Find(RecordKind::kEstimate, 200));
  EXPECT_EQ(uint32_t(kMarkSentSelected), *map_.Find(RecordKind::kCustomerJob, 20));
  EXPECT_EQ(nullptr, map_.Find(RecordKind::kTerm, 2));
}

TEST_F(DataUploadRequestTest, TheStoredTokenAndAnEMailedFormShowInTheHead) {
  ASSERT_EQ(S_OK, upload::StoreLastDataUploadToken("TOKEN-9"));
  forceNewCompany_ = true;
  AddForm(naftESTIMATE, 200, nastEMAIL);
  const std::string text = Build();
  EXPECT_NE(std::string::npos,
            text.find("<ForceNewCompany>Y</ForceNewCompany>\n<LastDataUploadToken>TOKEN-9</LastDataUploadToken>\n"
                      "<ClientSync>N</ClientSync>\n"));
}

TEST_F(DataUploadRequestTest, OnlyPostOrAllCustomersMakeAnUploadDue) {
  bool ok = true;
  EXPECT_EQ(S_OK, IsOkayToBuildLXDataMsgsRq(false, nullptr, &ok));
  EXPECT_FALSE(ok);
  AddForm(naftINVOICE, 100, nastFAX, false);
  EXPECT_EQ(S_OK, IsOkayToBuildLXDataMsgsRq(false, forms_[0].Get(), &ok));
  EXPECT_FALSE(ok);
  EXPECT_EQ(S_OK, IsOkayToBuildLXDataMsgsRq(true, forms_[0].Get(), &ok));
  EXPECT_TRUE(ok);
  forms_[0]->put_Post(VARIANT_TRUE);
  EXPECT_EQ(S_OK, IsOkayToBuildLXDataMsgsRq(false, forms_[0].Get(), &ok));
  EXPECT_TRUE(ok);
}

TEST_F(DataUploadRequestTest, RequiredFailuresEndTheRequestWithTheirLines) {
  const std::string rq = "Parcelon:CNA_Forms::BuildDataUploadRq(ICompanyFilePtr, XMLBuilder&): ";
  const std::string msgs = "Parcelon:CNA_Forms::BuildLXDataMsgsRq(XMLBuilder&): ";
  const std::string failedRq = Entry(msgs, "Failed to build data upload request.");
  struct Case {
    HostFault fault;
    std::vector<std::string> log;
  };
  const Case cases[] = {
      {{"ICompanyFile::GetCompanyInfo", std::nullopt, E_FAIL},
       {Entry("Parcelon:CNA_Forms::BuildCompanyAdd(ICompanyFilePtr, XMLBuilder&): ",
              "Failed to get company info from company file in LX."),
        Entry(rq, "Failed while adding company."), failedRq}},
      {{"ITerms::GetCount", std::nullopt, E_FAIL},
       {Entry("Parcelon:CDataUploadHelper::AddTermItems(CRecNumMap&, XMLBuilder&): ",
              "Failed to get count from terms in LX."),
        Entry(rq, "Failed while adding term items."), failedRq}},
      {{"IName::GetSubLevel", 11, E_FAIL},
       {Entry("Parcelon:CCustomerJobItemBuilder::BuildXML(XMLBuilder&): ", "Failed to get sub level from customer in LX."),
        Entry("Parcelon:CDataUploadHelper::AddCustomerJobItems(CRecNumMap&, XMLBuilder&): ",
              "Failed while building customer job item XML."),
        Entry(rq, "Failed while adding customerjob items."), failedRq}},
      {{"IInvoice::GetCreateTimeStamp", std::nullopt, E_FAIL},
       {Entry("Parcelon:CInvoiceBuilder::BuildXML(XMLBuilder&): ", "Failed to get create time stamp from invoice in LX."),
        Entry("Parcelon:CDataUploadHelper::AddInvoices(CRecNumMap&, XMLBuilder&): ", "Failed while building invoice XML."),
        Entry(rq, "Failed while adding invoices."), failedRq}},
      {{"IInvoices::GetItemByRecNum", std::nullopt, E_FAIL},
       {Entry("Parcelon:CNA_Forms::PutInvoiceRecNumsInMap(ICompanyFilePtr, long): ", "Failed to get item from invoices in LX"),
        Entry("Parcelon:CNA_Forms::PutRecNumsInMap(ICompanyFilePtr): ", "Failed on mark invoice or its list items for upload."),
        Entry(msgs, "Failed to put rec nums in map.")}},
      {{"IAddInGoodies::GetCurrentCompanyFile", std::nullopt, E_FAIL},
       {Entry("Parcelon:CNA_Form::GetCurrentCompanyFilePtr(ICompanyFilePtr&): ",
              "Failed to attach to current company from add-in goodies in LX."),
        Entry(msgs, "Failed to get company file ptr.")}},
      {{"IDataFilePropertyBag::Read", std::nullopt, E_FAIL}, {}},
  };
  ASSERT_EQ(S_OK, upload::StoreLastDataUploadToken("T"));
  AddForm(naftINVOICE, 100);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    Inject(c.fault);
    Build(E_FAIL);
    if (!c.log.empty()) {
      EXPECT_EQ(c.log, LogEntries());
    }
  }
  EXPECT_EQ(Entry(rq, "Failed while getting last data upload token."), LogEntries().at(2));
}

// An upload time that cannot be read, or is not a long attribute, counts as none: the record is sent.
TEST_F(DataUploadRequestTest, AnUnreadableUploadTimeCountsAsNone) {
  AddForm(naftINVOICE, 100);
  Inject({"ILongAttribute", std::nullopt, E_FAIL});
  forms_.clear();
  const std::string text = Build();
  EXPECT_EQ(std::string::npos, text.find("<TermsAdd>"));
  EXPECT_EQ(std::vector<std::string>{Entry("Parcelon:CDataUploadHelper::GetUploadTimeAttribute(IAttributeContainerPtr&, long*): ",
                                           "Attribute is not a long attribute!", "0x80004002")},
            LogEntries());
}

class LaterUploadTest : public DataUploadRequestTest {
 protected:
  // Stamps `record` as uploaded at `uploadTime` and changed at `modTime`.
  static void Stamp(refhost::ListRecord& record, LONG uploadTime, LONG modTime) {
    record.attributes = {{u"ParcelonUploadTime", u"{54901C71-3408-44fb-9031-7B4BB81D871C}", uploadTime}};
    record.modTime = modTime;
  }
  refhost::Company& Company() { return Host().GetCompany(); }
  // What the request carries, as "terms 1 2; customers 10 ..." from the marks of sent records.
  std::string Sent() {
    Build();
    std::string text;
    for (const auto& [name, kind] : {std::pair{"terms", RecordKind::kTerm}, std::pair{"customers", RecordKind::kCustomerJob}}) {
      text += name;
      for (const auto& [recNum, mark] : map_.Of(kind))
        if (mark == kMarkSentSelected || mark == kMarkSentChanged) text += " " + std::to_string(recNum);
      text += "; ";
    }
    return text;
  }
};

// After an upload at kNow - 100: a term whose change equals its upload time is not sent; a
// selected customer in the same state is, and one uploaded after its change is not.
TEST_F(LaterUploadTest, AtEqualTimesATermIsNotSentButASelectedCustomerIs) {
  ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(kNow - 100));
  for (const LONG recNum : {1, 2}) Stamp(*Company().terms.Find(recNum), kNow - 100, kNow - 100);
  for (const LONG recNum : {10, 11}) Stamp(*Company().names.Find(recNum), kNow - 100, kNow - 200);
  Stamp(*Company().names.Find(12), kNow - 100, kNow - 100);
  AddForm(naftINVOICE, 100);
  EXPECT_EQ("terms; customers 12; ", Sent());
  EXPECT_EQ(uint32_t(kMarkUnchanged), *map_.Find(RecordKind::kTerm, 1));
  EXPECT_EQ(uint32_t(kMarkUnchanged), *map_.Find(RecordKind::kCustomerJob, 10));
}

// A customer changed after the last upload travels without a form, its parents with it; one that
// never had an upload time is not found changed.
TEST_F(LaterUploadTest, AChangedCustomerTravelsWithItsParents) {
  ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(kNow - 100));
  Stamp(*Company().names.Find(12), kNow - 300, kNow - 50);
  Company().names.Find(20)->modTime = kNow - 50;
  EXPECT_EQ("terms; customers 10 11 12; ", Sent());
  EXPECT_EQ(uint32_t(kMarkSentChanged), *map_.Find(RecordKind::kCustomerJob, 12));
  EXPECT_EQ(uint32_t(kMarkSentSelected), *map_.Find(RecordKind::kCustomerJob, 10));
}

// A last upload time after now counts as 0: every stamped, modified customer is found again by
// the whole-list scan.
TEST_F(LaterUploadTest, AnUploadTimeInTheFutureHidesNoChange) {
  ASSERT_EQ(S_OK, upload::StoreLastClientDataUploadTime(kNow + 1000));
  Stamp(*Company().names.Find(20), kNow - 300, kNow - 200);
  EXPECT_EQ("terms; customers 20; ", Sent());
}

}  // namespace
}  // namespace parcelon::test
