// The record builders of the data upload against the reference host: each optional read that
// fails leaves its element out with its line; each required one ends the element with its line.
// The whole elements are the whole-send transcripts' (tests/component/sends).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "UploadTestSupport.h"
#include "forms/FormParts.h"
#include "upload/ListItemBuilders.h"
#include "upload/TransactionBuilders.h"

namespace parcelon::test {
namespace {

constexpr char kCompany[] = R"({
  "terms": [{"recNum": 2, "name": "2% 10", "stdDueDays": 30, "stdDiscountDays": 10, "discountPct": 2,
             "modTime": 1699999900},
            {"recNum": 3, "name": "Net 30", "stdDueDays": 30}],
  "customers": [
    {"recNum": 10, "name": "Harbor", "email": "h@example.test", "note": "call first",
     "billingAddress": {"lines": ["1 Quay"], "city": "Cork"}},
    {"recNum": 11, "name": "Roof", "parent": 10, "email": "r@example.test"}
  ],
  "invoices": [{"recNum": 100, "amount": "10.00", "customer": 11, "terms": 2, "invoiceNumber": "7",
                "createTimeStamp": 1698800000, "suggestedDiscountAmount": "0.20",
                "suggestedDiscountDate": "2009-03-17"},
               {"recNum": 101, "amount": "10.00", "customer": 11, "terms": 3, "createTimeStamp": 1698800000},
               {"recNum": 102, "amount": "10.00", "customer": 11, "createTimeStamp": 1698800000}],
  "estimates": [{"recNum": 200, "amount": "5.00", "customer": 10, "estimateNumber": "E-1",
                 "createTimeStamp": 1698800000}]
})";

const std::string kTermPrefix = "Parcelon:CTermItemBuilder::BuildXML(XMLBuilder&): ";
const std::string kCustomerPrefix = "Parcelon:CCustomerJobItemBuilder::BuildXML(XMLBuilder&): ";
const std::string kInvoicePrefix = "Parcelon:CInvoiceBuilder::BuildXML(XMLBuilder&): ";
const std::string kEstimatePrefix = "Parcelon:CEstimateBuilder::BuildXML(XMLBuilder&): ";

struct Case {
  HostFault fault;
  HRESULT result;
  std::string prefix;
  std::string message;
  // The line the element loses (or the text the element ends with, for a required read).
  std::string element;
};

class RecordBuildersTest : public UploadTest {
 protected:
  void SetUp() override {
    UploadTest::SetUp();
    UseCompany(kCompany);
  }

  template <class Record, class List>
  ComPtr<Record> Find(HRESULT (STDMETHODCALLTYPE ILists::*getList)(List**), LONG recNum) {
    return FindListRecord<Record>(CompanyFile(), getList, recNum);
  }
  std::string Term(HRESULT expected) {
    return Written(expected, [&](XMLBuilder& b) { return CTermItemBuilder(Find<ITerm>(&ILists::GetTerms, 2)).BuildXML(b); });
  }
  std::string Customer(HRESULT expected) {
    return Written(expected, [&](XMLBuilder& b) {
      return CCustomerJobItemBuilder(Find<IName>(&ILists::GetCustomers, 11)).BuildXML(b);
    });
  }
  std::string Invoice(HRESULT expected, LONG recNum) {
    ITransactionsPtr transactions;
    IInvoicesPtr invoices;
    IInvoicePtr entry;
    EXPECT_EQ(S_OK, CompanyFile()->GetTransactions(transactions.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, transactions->GetInvoices(invoices.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, invoices->GetItemByRecNum(forms::RecNumKey(recNum), entry.ReleaseAndGetAddressOf()));
    return Written(expected, [&](XMLBuilder& b) { return CInvoiceBuilder(entry).BuildXML(b); });
  }
  std::string Transaction(HRESULT expected, bool invoice) {
    if (invoice) return Invoice(expected, 100);
    ITransactionsPtr transactions;
    EXPECT_EQ(S_OK, CompanyFile()->GetTransactions(transactions.ReleaseAndGetAddressOf()));
    IEstimatesPtr estimates;
    IEstimatePtr entry;
    EXPECT_EQ(S_OK, transactions->GetEstimates(estimates.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, estimates->GetItemByRecNum(forms::RecNumKey(200), entry.ReleaseAndGetAddressOf()));
    return Written(expected, [&](XMLBuilder& b) { return CEstimateBuilder(entry).BuildXML(b); });
  }

  // Runs each case against `build`: optional ones must give the whole text without their element,
  // required ones the text up to the failure.
  template <class Build>
  void Run(const std::vector<Case>& cases, Build build) {
    StartCase();
    const std::string whole = build(S_OK);
    for (const Case& c : cases) {
      SCOPED_TRACE(c.fault.operation);
      EXPECT_NE(std::string::npos, whole.find(c.element)) << whole;
      StartCase();
      Inject(c.fault);
      const std::string text = build(c.result);
      if (SUCCEEDED(c.result)) {
        EXPECT_EQ(WithoutLines(whole, {c.element}), text);
      } else {
        EXPECT_EQ(whole.substr(0, whole.find(c.element)), text);
      }
      EXPECT_EQ(std::vector<std::string>{Entry(c.prefix, c.message)}, LogEntries());
    }
  }
};

TEST_F(RecordBuildersTest, TermItem) {
  Run({{{"ITerm::GetModTime", std::nullopt, E_FAIL}, S_OK, kTermPrefix,
        "Failed to get mod time from term in LX." + kSkipping, "<TMModStamp>1699999900</TMModStamp>\n"},
       {{"ITerm::GetDiscountPct", std::nullopt, E_FAIL}, S_OK, kTermPrefix,
        "Failed to get discount percentage from term in LX." + kSkipping, "<DiscountPct>2.00000</DiscountPct>\n"},
       {{"ITerm::GetName", std::nullopt, E_FAIL}, E_FAIL, kTermPrefix, "Failed to get name from term in LX.", "<Name>"},
       {{"ITerm::GetStdDiscountDays", std::nullopt, E_FAIL}, E_FAIL, kTermPrefix,
        "Failed to get standard discount days from term in LX.", "<StdDiscountDays>"},
       {{"ITerm::GetMinDays", std::nullopt, E_FAIL}, E_FAIL, kTermPrefix, "Failed to get minimum days from term in LX.",
        "<MinDays>"}},
      [&](HRESULT expected) { return Term(expected); });
}

TEST_F(RecordBuildersTest, CustomerJobItem) {
  Run({{{"IName::GetParent", 11, E_FAIL}, S_OK, kCustomerPrefix,
        "Failed to get parent name from customer in LX." + kSkipping, "<ParentID>10</ParentID>\n"},
       {{"IName::GetParentRoot", 11, E_FAIL}, S_OK, kCustomerPrefix,
        "Failed to get parent name root from customer in LX." + kSkipping, "<ParentRootID>10</ParentRootID>\n"},
       {{"IName::GetEmail", 11, E_FAIL}, S_OK, kCustomerPrefix, "Failed to get email from customer in LX." + kSkipping,
        "<Email>r@example.test</Email>\n"},
       {{"IName::GetSubLevel", 11, E_FAIL}, E_FAIL, kCustomerPrefix, "Failed to get sub level from customer in LX.",
        "<Sublevel>"},
       {{"IName::GetIsHidden", 11, E_FAIL}, E_FAIL, kCustomerPrefix, "Failed to get hidden from customer in LX.",
        "<Hidden>"}},
      [&](HRESULT expected) { return Customer(expected); });
  StartCase();
  Inject({"IJobInfo::GetJobStatus", 11, E_FAIL});
  EXPECT_EQ("", Customer(E_FAIL));
  EXPECT_EQ(std::vector<std::string>{Entry(kCustomerPrefix, "Failed to get job status from customer in LX.")}, LogEntries());
}

TEST_F(RecordBuildersTest, InvoiceAndEstimate) {
  Run({{{"IInvoice::GetCustomer", std::nullopt, E_FAIL}, S_OK, kInvoicePrefix,
        "Failed to get customer from invoice in LX." + kSkipping, "<CustomerID>11</CustomerID>\n"},
       {{"IInvoice::GetInvoiceNumber", std::nullopt, E_FAIL}, S_OK, kInvoicePrefix,
        "Failed to get invoice number from invoice in LX." + kSkipping, "<InvoiceNum>7</InvoiceNum>\n"},
       {{"IInvoice::GetAmount", std::nullopt, E_FAIL}, E_FAIL, kInvoicePrefix, "Failed to get amount from invoice in LX.",
        "<Amt>"},
       {{"IInvoice::GetCreateTimeStamp", std::nullopt, E_FAIL}, E_FAIL, kInvoicePrefix,
        "Failed to get create time stamp from invoice in LX.", "<TMCreateStamp>"}},
      [&](HRESULT expected) { return Transaction(expected, true); });
  // An estimate whose creation time cannot be read is written without it.
  Run({{{"IEstimate::GetCreateTimeStamp", std::nullopt, E_FAIL}, S_OK, kEstimatePrefix,
        "Failed to get create time stamp from estimate in LX." + kSkipping, "<TMCreateStamp>1698800000</TMCreateStamp>\n"},
       {{"IEstimate::GetEstimateNumber", std::nullopt, E_FAIL}, S_OK, kEstimatePrefix,
        "Failed to get estimate number from estimate in LX." + kSkipping, "<EstimateNum>E-1</EstimateNum>\n"}},
      [&](HRESULT expected) { return Transaction(expected, false); });
  EXPECT_EQ(std::string::npos, Transaction(S_OK, true).find("Line"));
}

// The discount block is written only for terms that offer a discount; each way it can be skipped
// leaves the rest of the invoice as it was.
TEST_F(RecordBuildersTest, InvoiceSuggestedDiscount) {
  const std::string discount =
      "<SuggestedDiscountData>\n<DiscountAmt>0.20</DiscountAmt>\n<DiscountDate>20090317</DiscountDate>\n"
      "</SuggestedDiscountData>\n";
  EXPECT_NE(std::string::npos, Invoice(S_OK, 100).find(discount));
  // Terms without a discount, and no terms at all: no block and no line.
  for (const LONG recNum : {101, 102}) {
    SCOPED_TRACE(recNum);
    StartCase();
    EXPECT_EQ(std::string::npos, Invoice(S_OK, recNum).find("SuggestedDiscountData"));
    EXPECT_EQ(std::vector<std::string>{}, LogEntries());
  }
  const std::string noTerm2 = "Failed to get term(2) in LX while building invoice. Skipping suggested discount info.";
  Run({{{"ITerm2::GetIsDiscountEmpty", 2, E_FAIL}, S_OK, kInvoicePrefix, noTerm2, discount}},
      [&](HRESULT expected) { return Invoice(expected, 100); });
  StartCase();
  const std::string whole = Invoice(S_OK, 100);
  StartCase();
  Inject({"ITerm2", std::nullopt, E_NOINTERFACE});
  EXPECT_EQ(WithoutLines(whole, {discount}), Invoice(S_OK, 100));
  EXPECT_EQ(std::vector<std::string>{Entry(kInvoicePrefix, noTerm2, "0x80004002")}, LogEntries());

  // Without the invoice's second version both the block and "AllowPayment" are left out.
  StartCase();
  Inject({"IInvoice2", std::nullopt, E_NOINTERFACE});
  EXPECT_EQ(WithoutLines(whole, {discount, "<AllowPayment>N</AllowPayment>\n"}), Invoice(S_OK, 100));
  EXPECT_EQ((std::vector<std::string>{
                Entry(kInvoicePrefix,
                      "Failed to get amount(2) in LX while building invoice. Skipping suggested discount info.",
                      "0x80004002"),
                Entry(kInvoicePrefix, "Failed to get AllowPayment. Skipping this optional element.", "0x80004002")}),
            LogEntries());

  // The terms' record number is required here, although "TermsID" only skips it.
  StartCase();
  Inject({"ITerm::GetRecNum", 2, E_FAIL});
  EXPECT_EQ(WithoutLines(whole.substr(0, whole.find(discount)), {"<TermsID>2</TermsID>\n"}),
            Invoice(E_FAIL, 100));
  EXPECT_EQ((std::vector<std::string>{
                Entry(kInvoicePrefix,
                      "Failed to get record number from term in LX while getting invoice's terms ID." + kSkipping),
                Entry(kInvoicePrefix,
                      "Failed to get record number from term in LX while getting estimate's suggested discount data.")}),
            LogEntries());
}

}  // namespace
}  // namespace parcelon::test
