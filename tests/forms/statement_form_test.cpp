// The statement form aggregate against the reference host: the whole text of a statement for a
// job (the job's full name and number, the address of the customer at the top of its tree) and
// its period; every failure of a read, reached through the host's faults, with its log lines;
// the aging, account, sales rep, terms and statement line writers.
#include <gtest/gtest.h>

#include <span>
#include <string>
#include <vector>

#include "forms/FormAggregateTest.h"
#include "forms/StatementForm.h"

namespace parcelon::test {
namespace {

const std::string kFixture = std::string("{") + kAggregateCompany + R"(
  "classes": []
})";

constexpr char kFormPrefix[] = "Parcelon:CStatementFormBuilder::BuildXML(XMLBuilder&): ";
constexpr char kCustomerPrefix[] = "Parcelon:CStatementDetailBuilder::BuildCustomerXML(XMLBuilder&): ";
constexpr char kAddressPrefix[] = "Parcelon:CStatementDetailBuilder::BuildCustomerAddress(XMLBuilder&): ";

// 1 March, 31 March and 30 April 2009 as OLE dates.
constexpr DATE k20090301 = 39873;
constexpr DATE k20090331 = 39903;
constexpr DATE k20090430 = 39933;

// The opening of the detail of statement 900, up to its customer.
const std::string kStatementHead =
    "<StatementID>900</StatementID>\n<StatementDate>20090331</StatementDate>\n"
    "<DueDate>20090430T120000+0000</DueDate>\n<AmountDue>1,234.50 &amp; more</AmountDue>\n";

// The address of customer 10, at the top of job 12's tree.
const std::string kTopAddress =
    "<BillAddress>\n<Addr1>12 Rue ole</Addr1>\n<Addr3>Floor 3</Addr3>\n<City>Quebec</City>\n<State>QC</State>\n"
    "<PostalCode>G1R 4P5</PostalCode>\n<Country>Canada</Country>\n</BillAddress>\n";

const std::string kStatement = FormText(
    "Statement", kStatementHead + "<CustomerJobName>" + kCustomerName + ":Roof:Gutters</CustomerJobName>\n" +
                     "<CustomerJobID>12</CustomerJobID>\n" + kTopAddress +
                     "<StatementFromDate>20090301</StatementFromDate>\n<StatementToDate>20090331</StatementToDate>\n");

class StatementFormTest : public FormAggregateTest {
 protected:
  void SetUp() override {
    FormAggregateTest::SetUp();
    UseCompany(kFixture);
  }

  // The statement of job 12 for March 2009, due at noon on 30 April.
  static StatementValues Values() {
    StatementValues values;
    values.statementID = 900;
    values.statementDate = k20090331;
    values.dueDate = k20090430 + 0.5;
    values.fromDate = k20090301;
    values.toDate = k20090331;
    values.amountDue = MakeBstr("1,234.50 & more");
    values.customerRecNum = 12;
    return values;
  }

  std::string BuildForm(const StatementValues& values, HRESULT expected) {
    return Written(expected,
                   [&](XMLBuilder& b) { return CStatementFormBuilder(CompanyFile().Get(), values).BuildXML(b); });
  }
};

TEST_F(StatementFormTest, StatementForAJobNamesTheJobAndAddressesItsTopCustomer) {
  EXPECT_EQ(kStatement, BuildForm(Values(), S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(StatementFormTest, UnsetValuesAreStillWritten) {
  StatementValues values;
  values.customerRecNum = 10;
  EXPECT_EQ(FormText("Statement", "<StatementID>0</StatementID>\n<StatementDate>18991230</StatementDate>\n"
                                  "<DueDate>18991230</DueDate>\n<AmountDue></AmountDue>\n"
                                  "<CustomerJobName>" + kCustomerName + "</CustomerJobName>\n"
                                  "<CustomerJobID>10</CustomerJobID>\n" + kTopAddress +
                                  "<StatementFromDate>18991230</StatementFromDate>\n"
                                  "<StatementToDate>18991230</StatementToDate>\n"),
            BuildForm(values, S_OK));
}

TEST_F(StatementFormTest, EveryReadEndsTheFormWithItsMessages) {
  const std::string detailFailed = Entry(kFormPrefix, "Failed to build Statement Detail XML.");
  ExpectFaults(
      {
          {{"ICompanyFile::GetCompanyInfo", {}, E_FAIL}, E_FAIL,
           {"Parcelon:CCompanyBuilder::BuildXML(): Failed to get company info from company file in LX.  "
            "HRESULT=0x80004005",
            Entry(kFormPrefix, "Failed to build company aggregate XML.")}},
          {{"ICompanyFile::GetLists", {}, E_FAIL}, E_FAIL,
           {Entry(kCustomerPrefix, "Failed to get Lists from company file in LX."), detailFailed}},
          {{"ILists::GetNames", {}, E_FAIL}, E_FAIL,
           {Entry(kCustomerPrefix, "Failed to get Names from company file in LX."), detailFailed}},
          {{"INames::GetItemByRecNum", {}, E_FAIL}, E_FAIL,
           {Entry(kCustomerPrefix, "Failed to get customer from Names in LX."), detailFailed}},
          {{"IName::GetFullName", 12, E_FAIL}, E_FAIL,
           {Entry(kCustomerPrefix, "Failed to get Job Name."), detailFailed}},
          {{"IName::GetRoot", 12, E_FAIL}, E_FAIL,
           {Entry(kCustomerPrefix, "Failed to get Job Name Root."), detailFailed}},
          {{"IName::GetAddress", 10, E_FAIL}, E_FAIL,
           {Entry(kAddressPrefix, "Failed to get address lines from company info in LX."), detailFailed}},
          {{"IAddress::GetLine", 10, E_OUTOFMEMORY}, E_OUTOFMEMORY,
           {Entry(kAddressPrefix, "Failed to get address lines from company info in LX.", "0x8007000e"),
            Entry(kFormPrefix, "Failed to build Statement Detail XML.", "0x8007000e")}},
      },
      kStatement, [&](HRESULT status) { return BuildForm(Values(), status); });
}

TEST_F(StatementFormTest, ACustomerTheNamesDoNotKnowEndsTheForm) {
  Faults().MakeAbsent(refhost::ListKind::Names, 12);
  EXPECT_EQ(std::string("<StatementForm>\n") + kCompanyBlock + "<StatementDetail>\n" + kStatementHead,
            BuildForm(Values(), LX_E_NOTFOUND));
  EXPECT_EQ((std::vector<std::string>{Entry(kCustomerPrefix, "Failed to get customer from Names in LX.", "0x80041a00"),
                                      Entry(kFormPrefix, "Failed to build Statement Detail XML.", "0x80041a00")}),
            LogEntries());
}

// ---- The writers the statement form keeps -----------------------------------------------------

using Writer = HRESULT (CStatementDetailBuilder::*)(XMLBuilder&);

class StatementWritersTest : public StatementFormTest {
 protected:
  // What `writers` write in turn for customer `recNum`, the last status being `expected`.
  std::string Write(LONG recNum, HRESULT expected, std::initializer_list<Writer> writers) {
    CStatementDetailBuilder detail(CompanyFile().Get(), recNum);
    return Written(expected, [&](XMLBuilder& b) {
      HRESULT hr = S_OK;
      for (Writer writer : writers)
        if (SUCCEEDED(hr)) hr = (detail.*writer)(b);
      return hr;
    });
  }
};

TEST_F(StatementWritersTest, AgingNamesTheValuesInOrderAndWritesNoMoreThanSix) {
  const OLAString values[] = {"100.00", "20.00", "0.00", "5 & 6", "", "125.00", "extra"};
  CStatementDetailBuilder detail(CompanyFile().Get(), 10);
  XMLBuilder all(0, 4096), two(0, 4096);
  detail.BuildAgingXML(all, values);
  detail.BuildAgingXML(two, std::span<const OLAString>(values, 2));
  EXPECT_EQ("<AgingDetail>\n<Current>100.00</Current>\n<Due130>20.00</Due130>\n<Due3160>0.00</Due3160>\n"
            "<Due6190>5 &amp; 6</Due6190>\n<DueOver90></DueOver90>\n<AmountDue>125.00</AmountDue>\n</AgingDetail>\n",
            TextOf(all));
  EXPECT_EQ("<AgingDetail>\n<Current>100.00</Current>\n<Due130>20.00</Due130>\n</AgingDetail>\n", TextOf(two));
}

TEST_F(StatementWritersTest, AccountSalesRepAndTermsOfTheCustomer) {
  const auto account = &CStatementDetailBuilder::BuildCustomerAccnt;
  const auto salesRep = &CStatementDetailBuilder::BuildCustomerSalesRep;
  const auto terms = &CStatementDetailBuilder::BuildCustomerTerms;
  EXPECT_EQ("<AccountNumber>A-77</AccountNumber>\n", Write(10, S_OK, {account}));
  EXPECT_EQ("<SalesRep>RR</SalesRep>\n", Write(10, S_OK, {salesRep}));
  EXPECT_EQ("<Terms>2% 10 Net 30</Terms>\n", Write(10, S_OK, {terms}));
  // A job without them has them empty.
  EXPECT_EQ("<AccountNumber></AccountNumber>\n<SalesRep></SalesRep>\n<Terms></Terms>\n",
            Write(12, S_OK, {account, salesRep, terms}));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(StatementWritersTest, AccountSalesRepAndTermsFailures) {
  using B = CStatementDetailBuilder;
  const std::string account = "Parcelon:CStatementDetailBuilder::BuildCustomerAccnt(XMLBuilder&): ";
  const std::string salesRep = "Parcelon:CStatementDetailBuilder::BuildCustomerSalesRep(XMLBuilder&): ";
  const std::string terms = "Parcelon:CStatementDetailBuilder::BuildCustomerTerms(XMLBuilder&): ";
  const struct {
    Writer writer;
    HostFault fault;
    std::string log;
  } cases[] = {
      {&B::BuildCustomerAccnt, {"IName::GetAccountNumber", 10, E_FAIL}, account + "Failed to get account number."},
      {&B::BuildCustomerAccnt, {"ICompanyFile::GetLists", {}, E_FAIL},
       account + "Failed to get Lists from company file in LX."},
      {&B::BuildCustomerSalesRep, {"IName::GetSalesRep", 10, E_FAIL}, salesRep + "Failed to get SalesRep from IName."},
      {&B::BuildCustomerSalesRep, {"ISalesRep::GetName", 1, E_FAIL}, salesRep + "Failed to get salesRep name."},
      {&B::BuildCustomerSalesRep, {"ILists::GetNames", {}, E_FAIL},
       salesRep + "Failed to get Names from company file in LX."},
      {&B::BuildCustomerTerms, {"IName::GetTerms", 10, E_FAIL}, terms + "Failed to get Term from IName."},
      {&B::BuildCustomerTerms, {"ITerm::GetName", 2, E_FAIL}, terms + "Failed to get Term Name."},
      {&B::BuildCustomerTerms, {"INames::GetItemByRecNum", {}, E_FAIL},
       terms + "Failed to get customer from Names in LX."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    Inject(c.fault);
    EXPECT_EQ("", Write(10, E_FAIL, {c.writer}));
    EXPECT_EQ(std::vector<std::string>{Entry("", c.log)}, LogEntries());
  }
}

TEST_F(StatementWritersTest, StatementLineFromTheFormsValues) {
  const StatementTxnItemView line = StatementTxnItemView::FromHost(
      39874.75, MakeBstr("Invoice #12").Get(), MakeBstr("39.00").Get(), MakeBstr("Cedar <red> “A”").Get(),
      MakeBstr("12").Get(), MakeBstr("139.00").Get(), MakeBstr("3.25").Get());
  const StatementTxnItemView copy = line;
  EXPECT_EQ(line.txnDesc.get(), copy.txnDesc.get());
  CStatementDetailBuilder detail(CompanyFile().Get(), 10);
  XMLBuilder builder(0, 4096);
  detail.BuildStatementItemXML(builder, copy);
  detail.BuildStatementItemXML(builder, StatementTxnItemView::FromHost(39875, nullptr, nullptr, nullptr, nullptr,
                                                                       nullptr, nullptr));
  detail.BuildStatementItemXML(builder, StatementTxnItemView{});
  const std::string empty =
      "<TranDesc></TranDesc>\n<ItemDesc></ItemDesc>\n<Quantity></Quantity>\n<Rate></Rate>\n<Amount></Amount>\n"
      "<Balance></Balance>\n</StatementItem>\n";
  EXPECT_EQ("<StatementItem>\n<TranDate>20090302T180000-0500</TranDate>\n<TranDesc>Invoice #12</TranDesc>\n"
            "<ItemDesc>Cedar &lt;red&gt; A</ItemDesc>\n<Quantity>12</Quantity>\n<Rate>3.25</Rate>\n"
            "<Amount>39.00</Amount>\n<Balance>139.00</Balance>\n</StatementItem>\n"
            "<StatementItem>\n<TranDate>20090303T000000-0500</TranDate>\n" +
                empty + "<StatementItem>\n<TranDate>18991230T000000-0500</TranDate>\n" + empty,
            TextOf(builder));
}

}  // namespace
}  // namespace parcelon::test
