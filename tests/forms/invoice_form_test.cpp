// The invoice form aggregate against the reference host: whole texts for invoices with and
// without terms and discount, zero dates, zero, negative and localised amounts, names that need
// escaping; every failure of a required or optional read, reached through the host's faults, with
// its log lines; the indentation switch.
#include <gtest/gtest.h>

#include <string>
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

const std::string kInvoice100 = std::string("<InvoiceForm>\n") + kCompanyBlock +
                                "<InvoiceDetail>\n"
                                "<TranID>100</TranID>\n"
                                "<TranNum>4711</TranNum>\n"
                                "<TranDate>20090307T000000-0500</TranDate>\n"
                                "<TotalAmount>1234.50</TotalAmount>\n"
                                "<TMCreateStamp>1236400000</TMCreateStamp>\n"
                                "<DueDate>20090406T000000-0500</DueDate>\n"
                                "<Terms>2% 10 Net 30</Terms>\n"
                                "<CustomerJobID>11</CustomerJobID>\n"
                                "<CustomerJobName>Caf O&apos;Brien &amp; &quot;Sons&quot; &lt;Ltd&gt;:Roof</CustomerJobName>\n"
                                "<BillAddress>\n"
                                "<Addr1>PO Box 9</Addr1>\n"
                                "<Addr2>Dept. A</Addr2>\n"
                                "<City>Quebec</City>\n"
                                "<PostalCode>G1R</PostalCode>\n"
                                "</BillAddress>\n"
                                "<InvoiceNum>INV-1001</InvoiceNum>\n"
                                "<BalRemaining>1000.00</BalRemaining>\n"
                                "<SuggestedDiscountData>\n"
                                "<DiscountAmt>24.69</DiscountAmt>\n"
                                "<DiscountDate>20090317T000000-0500</DiscountDate>\n"
                                "</SuggestedDiscountData>\n"
                                "</InvoiceDetail>\n"
                                "</InvoiceForm>\n";

const std::vector<std::string> kBillAddress = {
    "<BillAddress>\n", "<Addr1>PO Box 9</Addr1>\n", "<Addr2>Dept. A</Addr2>\n",
    "<City>Quebec</City>\n", "<PostalCode>G1R</PostalCode>\n", "</BillAddress>\n"};
const std::vector<std::string> kDiscount = {
    "<SuggestedDiscountData>\n", "<DiscountAmt>24.69</DiscountAmt>\n",
    "<DiscountDate>20090317T000000-0500</DiscountDate>\n", "</SuggestedDiscountData>\n"};

class InvoiceFormTest : public FormAggregateTest {
 protected:
  void SetUp() override {
    FormAggregateTest::SetUp();
    UseCompany(kFixture);
  }

  std::string BuildForm(LONG recNum, HRESULT expected) {
    HRESULT status = S_OK;
    const std::string text = Build(
        [&](XMLBuilder& builder) { return CInvoiceFormBuilder(CompanyFile().Get(), recNum).BuildXML(builder); },
        status);
    EXPECT_EQ(expected, status);
    return text;
  }
};

TEST_F(InvoiceFormTest, InvoiceWithTermsAndSuggestedDiscount) {
  EXPECT_EQ(kInvoice100, BuildForm(100, S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(InvoiceFormTest, InvoiceWithoutTermsDatesOrNumberAndWithZeroAndNegativeAmounts) {
  EXPECT_EQ(std::string("<InvoiceForm>\n") + kCompanyBlock +
                "<InvoiceDetail>\n"
                "<TranID>101</TranID>\n"
                "<TranNum>0</TranNum>\n"
                "<TotalAmount>0.00</TotalAmount>\n"
                "<TMCreateStamp>0</TMCreateStamp>\n"
                "<CustomerJobID>10</CustomerJobID>\n"
                "<CustomerJobName>Caf O&apos;Brien &amp; &quot;Sons&quot; &lt;Ltd&gt;</CustomerJobName>\n"
                "<BalRemaining>-15.25</BalRemaining>\n"
                "</InvoiceDetail>\n"
                "</InvoiceForm>\n",
            BuildForm(101, S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(InvoiceFormTest, TermsWithoutDiscountAndALocalisedAmount) {
  EXPECT_EQ(std::string("<InvoiceForm>\n") + kCompanyBlock +
                "<InvoiceDetail>\n"
                "<TranID>102</TranID>\n"
                "<TranNum>-3</TranNum>\n"
                "<TranDate>20091231T183000-0500</TranDate>\n"
                "<TotalAmount>12.50</TotalAmount>\n"
                "<TMCreateStamp>1262300000</TMCreateStamp>\n"
                "<Terms>Net 30</Terms>\n"
                "<CustomerJobID>10</CustomerJobID>\n"
                "<CustomerJobName>Caf O&apos;Brien &amp; &quot;Sons&quot; &lt;Ltd&gt;</CustomerJobName>\n"
                "<InvoiceNum>It&apos;s &lt;#7&gt;</InvoiceNum>\n"
                "</InvoiceDetail>\n"
                "</InvoiceForm>\n",
            BuildForm(102, S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(InvoiceFormTest, CustomerWithoutNameStillHasItsNameElement) {
  EXPECT_EQ(std::string("<InvoiceForm>\n") + kCompanyBlock +
                "<InvoiceDetail>\n"
                "<TranID>103</TranID>\n"
                "<TranNum>0</TranNum>\n"
                "<TotalAmount>-0.01</TotalAmount>\n"
                "<TMCreateStamp>1</TMCreateStamp>\n"
                "<Terms>Net 30</Terms>\n"
                "<CustomerJobID>13</CustomerJobID>\n"
                "<CustomerJobName></CustomerJobName>\n"
                "<BalRemaining>0.00</BalRemaining>\n"
                "</InvoiceDetail>\n"
                "</InvoiceForm>\n",
            BuildForm(103, S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(InvoiceFormTest, IndentationChangesNothingButLeadingBlanks) {
  WriteSettings("NetworkAdapter.IndentXML=1\n");
  const std::string indented = BuildForm(100, S_OK);
  EXPECT_NE(kInvoice100, indented);
  EXPECT_EQ(kInvoice100, WithoutLeadingBlanks(indented));
  EXPECT_NE(std::string::npos, indented.find("\n  <InvoiceDetail>\n    <TranID>100</TranID>\n"));
  EXPECT_NE(std::string::npos, indented.find("\n      <Addr1>PO Box 9</Addr1>\n"));
}

// A failure that ends the form: the status and the log lines.
struct RequiredCase {
  HostFault fault;
  std::vector<std::string> log;
};

std::string Line(const std::string& prefix, const std::string& message, const char* hr) {
  return prefix + message + "  HRESULT=" + hr;
}

TEST_F(InvoiceFormTest, EveryRequiredReadEndsTheFormWithItsMessages) {
  const std::string detailFailed = Line(kFormPrefix, "Failed to build invoice detail aggregate XML.", "0x80004005");
  const std::string notInitialised = Line(kDetailPrefix, "Failed to initialize the invoice ptr.", "0x80004005");
  const RequiredCase cases[] = {
      {{"ICompanyFile::GetCompanyInfo", {}, E_FAIL},
       {"Parcelon:CCompanyBuilder::BuildXML(): Failed to get company info from company file in LX.  HRESULT=0x80004005",
        Line(kFormPrefix, "Failed to build company aggregate XML.", "0x80004005")}},
      {{"ICompanyFile::GetTransactions", {}, E_FAIL},
       {Line(kInitPrefix, "Failed to get transactions from company file in LX.", "0x80004005"), notInitialised,
        detailFailed}},
      {{"ITransactions::GetInvoices", {}, E_FAIL},
       {Line(kInitPrefix, "Failed to get invoices from transactions in LX.", "0x80004005"), notInitialised,
        detailFailed}},
      {{"IInvoices::GetItemByRecNum", {}, E_FAIL},
       {Line(kInitPrefix, "Failed to get item from invoices in LX.", "0x80004005"), notInitialised, detailFailed}},
      {{"IInvoice::GetAmount", 100, E_FAIL},
       {Line(kDetailPrefix, "Failed to get amount from invoice in LX.", "0x80004005"), detailFailed}},
      {{"IAmount::GetText", 100, E_FAIL},
       {Line(kDetailPrefix, "Failed converting amount to XML for total amount.", "0x80004005"), detailFailed}},
      {{"IAmount2::GetDouble", 100, E_FAIL},
       {Line(kDetailPrefix, "Failed to get double from amount in LX when getting invoice's total amount.",
             "0x80004005"),
        detailFailed}},
      {{"IInvoice::GetCreateTimeStamp", 100, E_FAIL},
       {Line(kDetailPrefix, "Failed to get create time stamp from invoice in LX.", "0x80004005"), detailFailed}},
      {{"IInvoice::GetCustomer", 100, E_FAIL},
       {Line(kDetailPrefix, "Failed to get customer from invoice in LX.", "0x80004005"), detailFailed}},
      {{"IName::GetRecNum", 11, E_FAIL},
       {Line(kDetailPrefix,
             "Failed to get record number from customer in LX while getting invoice's customer job ID.",
             "0x80004005"),
        detailFailed}},
      {{"IName::GetFullName", 11, E_FAIL},
       {Line(kDetailPrefix, "Failed to get customer job name.", "0x80004005"), detailFailed}},
      {{"ITerm::GetRecNum", 2, E_FAIL},
       {Line(kDetailPrefix,
             "Failed to get record number from term in LX while getting invoice's suggested discount data.",
             "0x80004005"),
        detailFailed}},
      {{"IInvoice::GetLineItems", 100, E_FAIL},
       {Line(kFormPrefix, "Failed to get invoice line items from invoice in LX.", "0x80004005")}},
      {{"IInvoiceItemLineItems::GetCount", 100, E_FAIL},
       {Line(kFormPrefix, "Failed to get count from invoice line items in LX.", "0x80004005")}},
      {{"IInvoiceItemLineItems::GetItem", 100, E_FAIL},
       {Line(kFormPrefix, "Failed to get item from invoice line items in LX.", "0x80004005")}},
      {{"IInvoiceItemLineItem::GetIsTaxable", 100, E_FAIL},
       {Line(kFormPrefix, "Failed to get is taxable from invoice line item in LX.", "0x80004005")}},
  };
  for (const RequiredCase& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    Inject(c.fault);
    BuildForm(100, c.fault.hr);
    EXPECT_EQ(c.log, LogEntries());
  }
}

TEST_F(InvoiceFormTest, TermsThatCannotBeReadLeaveTheDiscountWithoutRecordNumber) {
  Inject({"IInvoice::GetTerms", 100, E_FAIL});
  BuildForm(100, E_POINTER);
  EXPECT_EQ((std::vector<std::string>{
                Line(kDetailPrefix, "Failed to get terms from invoice in LX.  Skipping this optional element.",
                     "0x80004005"),
                Line(kDetailPrefix,
                     "Failed to get record number from term in LX while getting invoice's suggested discount data.",
                     "0x80004003"),
                Line(kFormPrefix, "Failed to build invoice detail aggregate XML.", "0x80004003")}),
            LogEntries());
}

TEST_F(InvoiceFormTest, UnknownInvoiceFailsWithTheHostsCode) {
  Faults().MakeAbsent(refhost::ListKind::Invoices, 100);
  BuildForm(100, LX_E_NOTFOUND);
  EXPECT_EQ((std::vector<std::string>{
                Line(kInitPrefix, "Failed to get item from invoices in LX.", "0x80041a00"),
                Line(kDetailPrefix, "Failed to initialize the invoice ptr.", "0x80041a00"),
                Line(kFormPrefix, "Failed to build invoice detail aggregate XML.", "0x80041a00")}),
            LogEntries());
}

// A failure that leaves an element out: the lines missing from the whole text, and the log line.
struct OptionalCase {
  HostFault fault;
  std::vector<std::string> missing;
  std::string log;
};

TEST_F(InvoiceFormTest, EveryOptionalReadIsSkippedWithItsMessage) {
  const OptionalCase cases[] = {
      {{"IInvoice::GetTransactionNumber", 100, E_FAIL},
       {"<TranNum>4711</TranNum>\n"},
       Line(kDetailPrefix, "Failed to get transaction number from invoice in LX.  Skipping this optional element.",
            "0x80004005")},
      {{"IInvoice::GetDate", 100, E_UNEXPECTED},
       {"<TranDate>20090307T000000-0500</TranDate>\n"},
       Line(kDetailPrefix, "Failed to get date from invoice in LX.  Skipping this optional element.", "0x8000ffff")},
      {{"IInvoice::GetDueDate", 100, E_FAIL},
       {"<DueDate>20090406T000000-0500</DueDate>\n"},
       Line(kDetailPrefix, "Failed to get due date from invoice in LX.  Skipping this optional element.",
            "0x80004005")},
      {{"ITerm::GetFullName", 2, E_FAIL},
       {"<Terms>2% 10 Net 30</Terms>\n"},
       Line(kDetailPrefix,
            "Failed to get full name from term in LX while getting invoice's terms.  Skipping this optional element.",
            "0x80004005")},
      {{"IInvoice::GetBillingAddress", 100, E_FAIL},
       kBillAddress,
       Line(kDetailPrefix, "Failed to get billing address lines from invoice in LX.  Skipping this optional element.",
            "0x80004005")},
      {{"IAddress::GetCity", 100, E_OUTOFMEMORY},
       kBillAddress,
       Line(kDetailPrefix, "Failed to get billing address lines from invoice in LX.  Skipping this optional element.",
            "0x8007000e")},
      {{"IInvoice::GetInvoiceNumber", 100, E_FAIL},
       {"<InvoiceNum>INV-1001</InvoiceNum>\n"},
       Line(kDetailPrefix, "Failed to get invoice number from invoice in LX.  Skipping this optional element.",
            "0x80004005")},
      {{"IInvoice::GetRemainingBalance", 100, E_FAIL},
       {"<BalRemaining>1000.00</BalRemaining>\n"},
       Line(kDetailPrefix, "Failed to get remaining balance from invoice in LX.  Skipping this optional element.",
            "0x80004005")},
      {{"ITerm2", {}, E_NOINTERFACE},
       kDiscount,
       Line(kDetailPrefix,
            "Failed to get term(2) in LX while building invoice detail.  Skipping suggested discount info.",
            "0x80004002")},
      {{"ITerm2::GetIsDiscountEmpty", 2, E_FAIL},
       kDiscount,
       Line(kDetailPrefix,
            "Failed to get term(2) in LX while building invoice detail.  Skipping suggested discount info.",
            "0x80004005")},
      {{"IInvoice2", {}, E_NOINTERFACE},
       kDiscount,
       Line(kDetailPrefix,
            "Failed to get amount(2) in LX while building invoice detail.  Skipping suggested discount info.",
            "0x80004002")},
      {{"IInvoice::GetCustomerIsTaxable", 100, E_FAIL},
       {},
       Line(kFormPrefix, "Failed to get customer is taxable from invoice in LX.  We'll assume he is.",
            "0x80004005")},
  };
  for (const OptionalCase& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    Inject(c.fault);
    EXPECT_EQ(WithoutLines(kInvoice100, c.missing), BuildForm(100, S_OK));
    EXPECT_EQ(std::vector<std::string>{c.log}, LogEntries());
  }
}

TEST_F(InvoiceFormTest, AFailedReadOfTheDiscountItselfRaisesTheHostsError) {
  for (const char* operation : {"IInvoice2::GetSuggestedDiscountAmount", "IInvoice2::GetSuggestedDiscountDate"}) {
    SCOPED_TRACE(operation);
    Faults().Clear();
    Inject({operation, 100, E_ACCESSDENIED});
    XMLBuilder builder(0, 4096);
    try {
      CInvoiceFormBuilder(CompanyFile().Get(), 100).BuildXML(builder);
      ADD_FAILURE() << "no error raised";
    } catch (const ComError& error) {
      EXPECT_EQ(E_ACCESSDENIED, error.Error());
    }
  }
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(InvoiceFormTest, AMissingCompanyFileRaisesThePointerError) {
  XMLBuilder builder(0, 4096);
  try {
    CInvoiceFormBuilder(nullptr, 100).BuildXML(builder);
    ADD_FAILURE() << "no error raised";
  } catch (const ComError& error) {
    EXPECT_EQ(E_POINTER, error.Error());
  }
}

}  // namespace
}  // namespace parcelon::test
