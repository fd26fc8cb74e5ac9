// The estimate form aggregate against the reference host: whole texts for an estimate of a
// customer and one of a job (which names the job as its project), a zero date; every failure of
// a required or optional read, reached through the host's faults, with its log lines; the
// indentation switch.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "forms/EstimateForm.h"
#include "forms/FormAggregateTest.h"

namespace parcelon::test {
namespace {

const std::string kFixture = std::string("{") + kAggregateCompany + R"(
  "estimates": [
    {"recNum": 200, "transactionNumber": 88, "date": "2009-05-01", "amount": "-980.05",
     "createTimeStamp": 1241100000, "customer": 10, "customerIsTaxable": true,
     "billingAddress": {"lines": ["", "Unit 4 & 5"], "country": "Canada"},
     "estimateNumber": "E-7", "lines": [{"description": "Survey"}]},
    {"recNum": 201, "transactionNumber": 89, "amount": "0.00", "createTimeStamp": 1241200000,
     "customer": 12}
  ]
})";

constexpr char kFormPrefix[] = "Parcelon:CEstimateFormBuilder::BuildXML(XMLBuilder&): ";
constexpr char kDetailPrefix[] = "Parcelon:CEstimateDetailBuilder::BuildXML(XMLBuilder&): ";
constexpr char kInitPrefix[] = "Parcelon:CEstimateDetailBuilder::InitEstimatePtr(void): ";

const std::string kCustomerEstimate = std::string("<EstimateForm>\n") + kCompanyBlock +
                                      "<EstimateDetail>\n"
                                      "<TranID>200</TranID>\n"
                                      "<TranNum>88</TranNum>\n"
                                      "<TranDate>20090501T000000-0500</TranDate>\n"
                                      "<TotalAmount>-980.05</TotalAmount>\n"
                                      "<TMCreateStamp>1241100000</TMCreateStamp>\n"
                                      "<CustomerJobID>10</CustomerJobID>\n"
                                      "<CustomerJobName>Caf O&apos;Brien &amp; &quot;Sons&quot; &lt;Ltd&gt;</CustomerJobName>\n"
                                      "<BillAddress>\n"
                                      "<Addr2>Unit 4 &amp; 5</Addr2>\n"
                                      "<Country>Canada</Country>\n"
                                      "</BillAddress>\n"
                                      "<EstimateNum>E-7</EstimateNum>\n"
                                      "</EstimateDetail>\n"
                                      "</EstimateForm>\n";

const std::string kJobEstimate = std::string("<EstimateForm>\n") + kCompanyBlock +
                                 "<EstimateDetail>\n"
                                 "<TranID>201</TranID>\n"
                                 "<TranNum>89</TranNum>\n"
                                 "<TotalAmount>0.00</TotalAmount>\n"
                                 "<TMCreateStamp>1241200000</TMCreateStamp>\n"
                                 "<Project>Gutters</Project>\n"
                                 "<CustomerJobID>12</CustomerJobID>\n"
                                 "<CustomerJobName>Caf O&apos;Brien &amp; &quot;Sons&quot; &lt;Ltd&gt;:Roof:Gutters</CustomerJobName>\n"
                                 "</EstimateDetail>\n"
                                 "</EstimateForm>\n";

std::string Line(const std::string& prefix, const std::string& message, const char* hr) {
  return prefix + message + "  HRESULT=" + hr;
}

class EstimateFormTest : public FormAggregateTest {
 protected:
  void SetUp() override {
    FormAggregateTest::SetUp();
    UseCompany(kFixture);
  }

  std::string BuildForm(LONG recNum, HRESULT expected) {
    HRESULT status = S_OK;
    const std::string text = Build(
        [&](XMLBuilder& builder) { return CEstimateFormBuilder(CompanyFile().Get(), recNum).BuildXML(builder); },
        status);
    EXPECT_EQ(expected, status);
    return text;
  }
};

TEST_F(EstimateFormTest, EstimateForACustomerHasNoProject) {
  EXPECT_EQ(kCustomerEstimate, BuildForm(200, S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(EstimateFormTest, EstimateForAJobNamesItsProjectAndLeavesOutAZeroDate) {
  EXPECT_EQ(kJobEstimate, BuildForm(201, S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(EstimateFormTest, IndentationChangesNothingButLeadingBlanks) {
  WriteSettings("NetworkAdapter.IndentXML=1\n");
  const std::string indented = BuildForm(200, S_OK);
  EXPECT_EQ(kCustomerEstimate, WithoutLeadingBlanks(indented));
  EXPECT_NE(std::string::npos, indented.find("\n  <EstimateDetail>\n    <TranID>200</TranID>\n"));
  EXPECT_NE(std::string::npos, indented.find("\n      <Addr2>Unit 4 &amp; 5</Addr2>\n"));
}

struct RequiredCase {
  HostFault fault;
  std::vector<std::string> log;
};

TEST_F(EstimateFormTest, EveryRequiredReadEndsTheFormWithItsMessages) {
  const std::string detailFailed = Line(kFormPrefix, "Failed to build estimate detail aggregate XML.", "0x80004005");
  const std::string notInitialised = Line(kDetailPrefix, "Failed to initialize the estimate ptr.", "0x80004005");
  const RequiredCase cases[] = {
      {{"ICompanyInfo::GetCompanyName", {}, E_FAIL},
       {"Parcelon:CCompanyBuilder::BuildXML(): Failed to get company name from company info in LX.  HRESULT=0x80004005",
        Line(kFormPrefix, "Failed to build company aggregate XML.", "0x80004005")}},
      {{"ICompanyFile::GetTransactions", {}, E_FAIL},
       {Line(kInitPrefix, "Failed to get transactions from company file in LX.", "0x80004005"), notInitialised,
        detailFailed}},
      {{"ITransactions::GetEstimates", {}, E_FAIL},
       {Line(kInitPrefix, "Failed to get estimates from transactions in LX.", "0x80004005"), notInitialised,
        detailFailed}},
      {{"IEstimates::GetItemByRecNum", {}, E_FAIL},
       {Line(kInitPrefix, "Failed to get item from estimates in LX.", "0x80004005"), notInitialised, detailFailed}},
      {{"IEstimate::GetAmount", 201, E_FAIL},
       {Line(kDetailPrefix, "Failed to get amount from estimate in LX.", "0x80004005"), detailFailed}},
      {{"IAmount::Prepare", 201, E_FAIL},
       {Line(kDetailPrefix, "Failed converting amount to XML for total amount.", "0x80004005"), detailFailed}},
      {{"IAmount2", {}, E_NOINTERFACE},
       {Line(kDetailPrefix, "Failed to get double from amount in LX when getting estimate's total amount.",
             "0x80004002"),
        Line(kFormPrefix, "Failed to build estimate detail aggregate XML.", "0x80004002")}},
      {{"IEstimate::GetCreateTimeStamp", 201, E_FAIL},
       {Line(kDetailPrefix, "Failed to get create time stamp from estimate in LX.", "0x80004005"), detailFailed}},
      // The customer is read twice: for the project, optionally, and for its identifier.
      {{"IEstimate::GetCustomer", 201, E_FAIL},
       {Line(kDetailPrefix, "Failed to get customer from estimate in LX.  Skipping this optional element.",
             "0x80004005"),
        Line(kDetailPrefix, "Failed to get customer from estimate in LX.", "0x80004005"), detailFailed}},
      {{"IName::GetRecNum", 12, E_FAIL},
       {Line(kDetailPrefix,
             "Failed to get record number from customer in LX while getting estimate's customer job ID.",
             "0x80004005"),
        detailFailed}},
      {{"IName::GetFullName", 12, E_FAIL},
       {Line(kDetailPrefix, "Failed to get customer job name.", "0x80004005"), detailFailed}},
  };
  for (const RequiredCase& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    Inject(c.fault);
    BuildForm(201, c.fault.hr);
    EXPECT_EQ(c.log, LogEntries());
  }
}

struct OptionalCase {
  LONG estimate;
  HostFault fault;
  std::vector<std::string> missing;
  std::string log;
};

TEST_F(EstimateFormTest, EveryOptionalReadIsSkippedWithItsMessage) {
  const OptionalCase cases[] = {
      {201,
       {"IEstimate::GetTransactionNumber", 201, E_FAIL},
       {"<TranNum>89</TranNum>\n"},
       Line(kDetailPrefix, "Failed to get transaction number from estimate in LX.  Skipping this optional element.",
            "0x80004005")},
      {200,
       {"IEstimate::GetDate", 200, E_FAIL},
       {"<TranDate>20090501T000000-0500</TranDate>\n"},
       Line(kDetailPrefix, "Failed to get date from estimate in LX.  Skipping this optional element.",
            "0x80004005")},
      {201,
       {"IName::GetIsJob", 12, E_FAIL},
       {"<Project>Gutters</Project>\n"},
       Line(kDetailPrefix,
            "Failed to get is job from customer in LX while getting estimate's project.  Skipping this optional "
            "element.",
            "0x80004005")},
      {201,
       {"IName::GetName", 12, E_FAIL},
       {"<Project>Gutters</Project>\n"},
       Line(kDetailPrefix,
            "Failed to get name from customer in LX while getting estimate's project.  Skipping this optional "
            "element.",
            "0x80004005")},
      {200,
       {"IEstimate::GetBillingAddress", 200, E_FAIL},
       {"<BillAddress>\n", "<Addr2>Unit 4 &amp; 5</Addr2>\n", "<Country>Canada</Country>\n", "</BillAddress>\n"},
       Line(kDetailPrefix,
            "Failed to get billing address lines from estimate in LX.  Skipping this optional element.",
            "0x80004005")},
      {200,
       {"IEstimate::GetEstimateNumber", 200, E_FAIL},
       {"<EstimateNum>E-7</EstimateNum>\n"},
       Line(kDetailPrefix, "Failed to get estimate number from estimate in LX.  Skipping this optional element.",
            "0x80004005")},
      {200,
       {"IEstimate::GetCustomerIsTaxable", 200, E_FAIL},
       {},
       Line(kFormPrefix, "Failed to get customer is taxable from estimate in LX.  We'll assume he is.",
            "0x80004005")},
  };
  for (const OptionalCase& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    Inject(c.fault);
    EXPECT_EQ(WithoutLines(c.estimate == 200 ? kCustomerEstimate : kJobEstimate, c.missing),
              BuildForm(c.estimate, S_OK));
    EXPECT_EQ(std::vector<std::string>{c.log}, LogEntries());
  }
}

}  // namespace
}  // namespace parcelon::test
