// The invoice form aggregate against the reference host: whole texts for invoices with and
// without terms and discount, zero dates, zero, negative and localised amounts, names that need
// escaping; every failure of a required or optional read, reached through the host's faults, with
// its log lines; the indentation switch.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "forms/FormAggregateTest.h"
#include "forms/InvoiceForm.h"

namespace parcelon::test {
namespace {

const std::string kFixture = std::string("{") + kAggregateCompany + R"(
  "invoices": [
    {"recNum": 100, "transactionNumber": 4711, "date": "2009-03-07", "dueDate": "2009-04-06",
     "amount": "1234.50", "createTimeStamp": 1236400000, "customer": 11, "customerIsTaxable": true,
     "terms": 2,
     "billingAddress": {"lines": ["PO Box 9", "Dept. “A”"], "city": "Quebec", "postalCode": "G1R"},
     "invoiceNumber": "INV-1001", "remainingBalance": "1000.00",
     "suggestedDiscountAmount": "24.69", "suggestedDiscountDate": "2009-03-17",
     "lines": [{"description": "Labor", "isTaxable": true}, {"description": "Nails"}]},
    {"recNum": 101, "customer": 10, "amount": "0", "remainingBalance": "-15.25"},
    {"recNum": 102, "transactionNumber": -3, "date": "2009-12-31T18:30:00", "customer": 10,
     "terms": 1, "amount": {"value": "12.50", "text": "12,50"}, "createTimeStamp": 1262300000,
     "invoiceNumber": "It's <#7>"},
    {"recNum": 103, "customer": 13, "amount": "-0.01", "createTimeStamp": 1, "invoiceNumber": "",
     "remainingBalance": "0.00", "terms": 1}
  ]
})";

constexpr char kFormPrefix[] = "Parcelon:CInvoiceFormBuilder::BuildXML(XMLBuilder&): ";
constexpr char kDetailPrefix[] = "Parcelon:CInvoiceDetailBuilder::BuildXML(XMLBuilder&): ";
constexpr char kInitPrefix[] = "Parcelon:CInvoiceDetailBuilder::InitInvoicePtr(void): ";

const std::string kInvoice100 = FormText(
    "Invoice",
    "<TranID>100</TranID>\n<TranNum>4711</TranNum>\n<TranDate>20090307T000000-0500</TranDate>\n"
    "<TotalAmount>1234.50</TotalAmount>\n<TMCreateStamp>1236400000</TMCreateStamp>\n"
    "<DueDate>20090406T000000-0500</DueDate>\n<Terms>2% 10 Net 30</Terms>\n<CustomerJobID>11</CustomerJobID>\n"
    "<CustomerJobName>" + kCustomerName + ":Roof</CustomerJobName>\n"
    "<BillAddress>\n<Addr1>PO Box 9</Addr1>\n<Addr2>Dept. A</Addr2>\n<City>Quebec</City>\n"
    "<PostalCode>G1R</PostalCode>\n</BillAddress>\n<InvoiceNum>INV-1001</InvoiceNum>\n"
    "<BalRemaining>1000.00</BalRemaining>\n<SuggestedDiscountData>\n<DiscountAmt>24.69</DiscountAmt>\n"
    "<DiscountDate>20090317T000000-0500</DiscountDate>\n</SuggestedDiscountData>\n");

const std::vector<std::string> kBillAddress = {
    "<BillAddress>\n", "<Addr1>PO Box 9</Addr1>\n", "<Addr2>Dept. A</Addr2>\n",
    "<City>Quebec</City>\n", "<PostalCode>G1R</PostalCode>\n", "</BillAddress>\n"};
const std::vector<std::string> kDiscount = {
    "<SuggestedDiscountData>\n", "<DiscountAmt>24.69</DiscountAmt>\n",
    "<DiscountDate>20090317T000000-0500</DiscountDate>\n", "</SuggestedDiscountData>\n"};

std::string Detail(const std::string& message, const char* hr = "0x80004005") {
  return Entry(kDetailPrefix, message, hr);
}
std::string Skipped(const std::string& message, const char* hr = "0x80004005") {
  return Detail(message + kSkipping, hr);
}

class InvoiceFormTest : public FormAggregateTest {
 protected:
  void SetUp() override {
    FormAggregateTest::SetUp();
    UseCompany(kFixture);
  }

  std::string BuildForm(LONG recNum, HRESULT expected) {
    return Written(expected,
                   [&](XMLBuilder& b) { return CInvoiceFormBuilder(CompanyFile().Get(), recNum).BuildXML(b); });
  }
};

TEST_F(InvoiceFormTest, WholeTexts) {
  const struct {
    LONG recNum;
    std::string text;
  } cases[] = {
      {100, kInvoice100},
      // No terms, dates or number; zero and negative amounts.
      {101, FormText("Invoice", "<TranID>101</TranID>\n<TranNum>0</TranNum>\n<TotalAmount>0.00</TotalAmount>\n"
                                "<TMCreateStamp>0</TMCreateStamp>\n<CustomerJobID>10</CustomerJobID>\n"
                                "<CustomerJobName>" + kCustomerName + "</CustomerJobName>\n"
                                "<BalRemaining>-15.25</BalRemaining>\n")},
      // Terms without discount; an amount whose text is localised; a number that needs escaping.
      {102, FormText("Invoice", "<TranID>102</TranID>\n<TranNum>-3</TranNum>\n"
                                "<TranDate>20091231T183000-0500</TranDate>\n<TotalAmount>12.50</TotalAmount>\n"
                                "<TMCreateStamp>1262300000</TMCreateStamp>\n<Terms>Net 30</Terms>\n"
                                "<CustomerJobID>10</CustomerJobID>\n"
                                "<CustomerJobName>" + kCustomerName + "</CustomerJobName>\n"
                                "<InvoiceNum>It&apos;s &lt;#7&gt;</InvoiceNum>\n")},
      // A customer without name still has its name element.
      {103, FormText("Invoice", "<TranID>103</TranID>\n<TranNum>0</TranNum>\n<TotalAmount>-0.01</TotalAmount>\n"
                                "<TMCreateStamp>1</TMCreateStamp>\n<Terms>Net 30</Terms>\n"
                                "<CustomerJobID>13</CustomerJobID>\n<CustomerJobName></CustomerJobName>\n"
                                "<BalRemaining>0.00</BalRemaining>\n")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.recNum);
    EXPECT_EQ(c.text, BuildForm(c.recNum, S_OK));
    EXPECT_TRUE(LogEntries().empty());
  }
}

// The aggregates leave the blanks to the builder, so the invoice stands for the estimate and the
// statement too: with the switch on only the blanks that start the lines change.
TEST_F(InvoiceFormTest, IndentationChangesNothingButLeadingBlanks) {
  WriteSettings("NetworkAdapter.IndentXML=1\n");
  const std::string text = BuildForm(100, S_OK);
  EXPECT_EQ(kInvoice100, WithoutLeadingBlanks(text));
  for (const char* piece : {"\n  <InvoiceDetail>\n    <TranID>100</TranID>\n", "\n      <Addr1>PO Box 9</Addr1>\n"})
    EXPECT_NE(std::string::npos, text.find(piece)) << piece;
}

// Zones east of twelve hours keep their dates: Tonga, the Line Islands, and New Zealand, whose
// summer (until 5 April 2009) the one-hour-west rule writes as +11.
TEST_F(InvoiceFormTest, DatesInZonesEastOfTwelveHours) {
  const struct {
    const char* tz;
    bool posix;  // the Windows runtime reads only the POSIX form of TZ
    const char* tranDate;
    const char* dueDate;
    const char* discountDate;
  } cases[] = {
      {"TOT-13", true, "+1300", "+1300", "+1300"},
      {"LIN-14", true, "+1400", "+1400", "+1400"},
      {"Pacific/Auckland", false, "+1100", "+1200", "+1100"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.tz);
#ifdef _WIN32
    if (!c.posix) continue;
#endif
    ScopedTimeZone zone(c.tz);
    std::string expected = kInvoice100;
    for (const auto& [date, offset] : {std::pair{"<TranDate>20090307", c.tranDate},
                                       std::pair{"<DueDate>20090406", c.dueDate},
                                       std::pair{"<DiscountDate>20090317", c.discountDate}}) {
      const std::string old = std::string(date) + "T000000-0500";
      expected.replace(expected.find(old), old.size(), std::string(date) + "T000000" + offset);
    }
    EXPECT_EQ(expected, BuildForm(100, S_OK));
  }
}

TEST_F(InvoiceFormTest, EveryFailedReadEndsTheFormOrSkipsItsElement) {
  const std::string detailFailed = Entry(kFormPrefix, "Failed to build invoice detail aggregate XML.");
  const std::string notInitialised = Detail("Failed to initialize the invoice ptr.");
  const std::string discountTerm =
      "Failed to get term(2) in LX while building invoice detail.  Skipping suggested discount info.";
  ExpectFaults(
      {
          {{"ICompanyFile::GetCompanyInfo", {}, E_FAIL}, E_FAIL,
           {"Parcelon:CCompanyBuilder::BuildXML(): Failed to get company info from company file in LX.  "
            "HRESULT=0x80004005",
            Entry(kFormPrefix, "Failed to build company aggregate XML.")}},
          {{"ICompanyFile::GetTransactions", {}, E_FAIL}, E_FAIL,
           {Entry(kInitPrefix, "Failed to get transactions from company file in LX."), notInitialised, detailFailed}},
          {{"ITransactions::GetInvoices", {}, E_FAIL}, E_FAIL,
           {Entry(kInitPrefix, "Failed to get invoices from transactions in LX."), notInitialised, detailFailed}},
          {{"IInvoices::GetItemByRecNum", {}, E_FAIL}, E_FAIL,
           {Entry(kInitPrefix, "Failed to get item from invoices in LX."), notInitialised, detailFailed}},
          {{"IInvoice::GetAmount", 100, E_FAIL}, E_FAIL,
           {Detail("Failed to get amount from invoice in LX."), detailFailed}},
          {{"IAmount::GetText", 100, E_FAIL}, E_FAIL,
           {Detail("Failed converting amount to XML for total amount."), detailFailed}},
          {{"IAmount2::GetDouble", 100, E_FAIL}, E_FAIL,
           {Detail("Failed to get double from amount in LX when getting invoice's total amount."), detailFailed}},
          {{"IInvoice::GetCreateTimeStamp", 100, E_FAIL}, E_FAIL,
           {Detail("Failed to get create time stamp from invoice in LX."), detailFailed}},
          {{"IInvoice::GetCustomer", 100, E_FAIL}, E_FAIL,
           {Detail("Failed to get customer from invoice in LX."), detailFailed}},
          {{"IName::GetRecNum", 11, E_FAIL}, E_FAIL,
           {Detail("Failed to get record number from customer in LX while getting invoice's customer job ID."),
            detailFailed}},
          {{"IName::GetFullName", 11, E_FAIL}, E_FAIL, {Detail("Failed to get customer job name."), detailFailed}},
          {{"ITerm::GetRecNum", 2, E_FAIL}, E_FAIL,
           {Detail("Failed to get record number from term in LX while getting invoice's suggested discount data."),
            detailFailed}},
          {{"IInvoice::GetLineItems", 100, E_FAIL}, E_FAIL,
           {Entry(kFormPrefix, "Failed to get invoice line items from invoice in LX.")}},
          {{"IInvoiceItemLineItems::GetCount", 100, E_FAIL}, E_FAIL,
           {Entry(kFormPrefix, "Failed to get count from invoice line items in LX.")}},
          {{"IInvoiceItemLineItems::GetItem", 100, E_FAIL}, E_FAIL,
           {Entry(kFormPrefix, "Failed to get item from invoice line items in LX.")}},
          {{"IInvoiceItemLineItem::GetIsTaxable", 100, E_FAIL}, E_FAIL,
           {Entry(kFormPrefix, "Failed to get is taxable from invoice line item in LX.")}},
          // Terms that cannot be read leave out the terms and their discount, nothing more.
          {{"IInvoice::GetTerms", 100, E_FAIL}, S_OK,
           {Skipped("Failed to get terms from invoice in LX.")},
           {"<Terms>2% 10 Net 30</Terms>\n", "<SuggestedDiscountData>\n", "<DiscountAmt>24.69</DiscountAmt>\n",
            "<DiscountDate>20090317T000000-0500</DiscountDate>\n", "</SuggestedDiscountData>\n"}},
          // The optional reads.
          {{"IInvoice::GetTransactionNumber", 100, E_FAIL}, S_OK,
           {Skipped("Failed to get transaction number from invoice in LX.")}, {"<TranNum>4711</TranNum>\n"}},
          {{"IInvoice::GetDate", 100, E_UNEXPECTED}, S_OK,
           {Skipped("Failed to get date from invoice in LX.", "0x8000ffff")},
           {"<TranDate>20090307T000000-0500</TranDate>\n"}},
          {{"IInvoice::GetDueDate", 100, E_FAIL}, S_OK,
           {Skipped("Failed to get due date from invoice in LX.")}, {"<DueDate>20090406T000000-0500</DueDate>\n"}},
          {{"ITerm::GetFullName", 2, E_FAIL}, S_OK,
           {Skipped("Failed to get full name from term in LX while getting invoice's terms.")},
           {"<Terms>2% 10 Net 30</Terms>\n"}},
          {{"IInvoice::GetBillingAddress", 100, E_FAIL}, S_OK,
           {Skipped("Failed to get billing address lines from invoice in LX.")}, kBillAddress},
          {{"IAddress::GetCity", 100, E_OUTOFMEMORY}, S_OK,
           {Skipped("Failed to get billing address lines from invoice in LX.", "0x8007000e")}, kBillAddress},
          {{"IInvoice::GetInvoiceNumber", 100, E_FAIL}, S_OK,
           {Skipped("Failed to get invoice number from invoice in LX.")}, {"<InvoiceNum>INV-1001</InvoiceNum>\n"}},
          {{"IInvoice::GetRemainingBalance", 100, E_FAIL}, S_OK,
           {Skipped("Failed to get remaining balance from invoice in LX.")},
           {"<BalRemaining>1000.00</BalRemaining>\n"}},
          {{"ITerm2", {}, E_NOINTERFACE}, S_OK, {Detail(discountTerm, "0x80004002")}, kDiscount},
          {{"ITerm2::GetIsDiscountEmpty", 2, E_FAIL}, S_OK, {Detail(discountTerm)}, kDiscount},
          {{"IInvoice2", {}, E_NOINTERFACE}, S_OK,
           {Detail("Failed to get amount(2) in LX while building invoice detail.  Skipping suggested discount info.",
                   "0x80004002")},
           kDiscount},
          {{"IInvoice::GetCustomerIsTaxable", 100, E_FAIL}, S_OK,
           {Entry(kFormPrefix, "Failed to get customer is taxable from invoice in LX.  We'll assume he is.")}},
      },
      kInvoice100, [&](HRESULT status) { return BuildForm(100, status); });
}

TEST_F(InvoiceFormTest, UnknownInvoiceFailsWithTheHostsCode) {
  Faults().MakeAbsent(refhost::ListKind::Invoices, 100);
  BuildForm(100, LX_E_NOTFOUND);
  EXPECT_EQ((std::vector<std::string>{
                Entry(kInitPrefix, "Failed to get item from invoices in LX.", "0x80041a00"),
                Detail("Failed to initialize the invoice ptr.", "0x80041a00"),
                Entry(kFormPrefix, "Failed to build invoice detail aggregate XML.", "0x80041a00")}),
            LogEntries());
}

// A failed read of the discount itself, and a missing company file, raise the error unlogged.
TEST_F(InvoiceFormTest, DiscountReadsAndAMissingCompanyFileRaiseTheirErrors) {
  for (const char* operation : {"IInvoice2::GetSuggestedDiscountAmount", "IInvoice2::GetSuggestedDiscountDate"}) {
    SCOPED_TRACE(operation);
    Faults().Clear();
    Inject({operation, 100, E_ACCESSDENIED});
    EXPECT_EQ(E_ACCESSDENIED, ErrorRaisedBy([&] { BuildForm(100, S_OK); }));
  }
  EXPECT_EQ(E_POINTER, ErrorRaisedBy([] {
              XMLBuilder builder(0, 4096);
              CInvoiceFormBuilder(nullptr, 100).BuildXML(builder);
            }));
  EXPECT_TRUE(LogEntries().empty());
}

}  // namespace
}  // namespace parcelon::test
