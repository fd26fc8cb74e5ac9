// The estimate form aggregate against the reference host: whole texts for an estimate of a
// customer and one of a job (which names the job as its project), a zero date; every failure of
// a required or optional read, reached through the host's faults, with its log lines.
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

const std::string kCustomerEstimate = FormText(
    "Estimate",
    "<TranID>200</TranID>\n<TranNum>88</TranNum>\n<TranDate>20090501T000000-0500</TranDate>\n"
    "<TotalAmount>-980.05</TotalAmount>\n<TMCreateStamp>1241100000</TMCreateStamp>\n<CustomerJobID>10</CustomerJobID>\n"
    "<CustomerJobName>" + kCustomerName + "</CustomerJobName>\n"
    "<BillAddress>\n<Addr2>Unit 4 &amp; 5</Addr2>\n<Country>Canada</Country>\n</BillAddress>\n"
    "<EstimateNum>E-7</EstimateNum>\n");

// An estimate for a job names the job as its project and leaves out its zero date.
const std::string kJobEstimate = FormText(
    "Estimate",
    "<TranID>201</TranID>\n<TranNum>89</TranNum>\n<TotalAmount>0.00</TotalAmount>\n"
    "<TMCreateStamp>1241200000</TMCreateStamp>\n<Project>Gutters</Project>\n<CustomerJobID>12</CustomerJobID>\n"
    "<CustomerJobName>" + kCustomerName + ":Roof:Gutters</CustomerJobName>\n");

std::string Detail(const std::string& message, const char* hr = "0x80004005") {
  return Entry(kDetailPrefix, message, hr);
}
std::string Skipped(const std::string& message) { return Detail(message + kSkipping); }

class EstimateFormTest : public FormAggregateTest {
 protected:
  void SetUp() override {
    FormAggregateTest::SetUp();
    UseCompany(kFixture);
  }

  std::string BuildForm(LONG recNum, HRESULT expected) {
    return Written(expected,
                   [&](XMLBuilder& b) { return CEstimateFormBuilder(CompanyFile().Get(), recNum).BuildXML(b); });
  }
};

TEST_F(EstimateFormTest, EstimatesOfACustomerAndOfAJob) {
  EXPECT_EQ(kCustomerEstimate, BuildForm(200, S_OK));
  EXPECT_EQ(kJobEstimate, BuildForm(201, S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(EstimateFormTest, EveryFailedReadOfTheJobsEstimate) {
  const std::string detailFailed = Entry(kFormPrefix, "Failed to build estimate detail aggregate XML.");
  const std::string notInitialised = Detail("Failed to initialize the estimate ptr.");
  ExpectFaults(
      {
          {{"ICompanyInfo::GetCompanyName", {}, E_FAIL}, E_FAIL,
           {"Parcelon:CCompanyBuilder::BuildXML(): Failed to get company name from company info in LX.  "
            "HRESULT=0x80004005",
            Entry(kFormPrefix, "Failed to build company aggregate XML.")}},
          {{"ICompanyFile::GetTransactions", {}, E_FAIL}, E_FAIL,
           {Entry(kInitPrefix, "Failed to get transactions from company file in LX."), notInitialised, detailFailed}},
          {{"ITransactions::GetEstimates", {}, E_FAIL}, E_FAIL,
           {Entry(kInitPrefix, "Failed to get estimates from transactions in LX."), notInitialised, detailFailed}},
          {{"IEstimates::GetItemByRecNum", {}, E_FAIL}, E_FAIL,
           {Entry(kInitPrefix, "Failed to get item from estimates in LX."), notInitialised, detailFailed}},
          {{"IEstimate::GetAmount", 201, E_FAIL}, E_FAIL,
           {Detail("Failed to get amount from estimate in LX."), detailFailed}},
          {{"IAmount::Prepare", 201, E_FAIL}, E_FAIL,
           {Detail("Failed converting amount to XML for total amount."), detailFailed}},
          {{"IAmount2", {}, E_NOINTERFACE}, E_NOINTERFACE,
           {Detail("Failed to get double from amount in LX when getting estimate's total amount.", "0x80004002"),
            Entry(kFormPrefix, "Failed to build estimate detail aggregate XML.", "0x80004002")}},
          {{"IEstimate::GetCreateTimeStamp", 201, E_FAIL}, E_FAIL,
           {Detail("Failed to get create time stamp from estimate in LX."), detailFailed}},
          // The customer is read twice: for the project, optionally, and for its identifier.
          {{"IEstimate::GetCustomer", 201, E_FAIL}, E_FAIL,
           {Skipped("Failed to get customer from estimate in LX."),
            Detail("Failed to get customer from estimate in LX."), detailFailed}},
          {{"IName::GetRecNum", 12, E_FAIL}, E_FAIL,
           {Detail("Failed to get record number from customer in LX while getting estimate's customer job ID."),
            detailFailed}},
          {{"IName::GetFullName", 12, E_FAIL}, E_FAIL, {Detail("Failed to get customer job name."), detailFailed}},
          // The optional reads.
          {{"IEstimate::GetTransactionNumber", 201, E_FAIL}, S_OK,
           {Skipped("Failed to get transaction number from estimate in LX.")}, {"<TranNum>89</TranNum>\n"}},
          {{"IName::GetIsJob", 12, E_FAIL}, S_OK,
           {Skipped("Failed to get is job from customer in LX while getting estimate's project.")},
           {"<Project>Gutters</Project>\n"}},
          {{"IName::GetName", 12, E_FAIL}, S_OK,
           {Skipped("Failed to get name from customer in LX while getting estimate's project.")},
           {"<Project>Gutters</Project>\n"}},
      },
      kJobEstimate, [&](HRESULT status) { return BuildForm(201, status); });
}

TEST_F(EstimateFormTest, EveryOptionalReadOfTheCustomersEstimate) {
  ExpectFaults(
      {
          {{"IEstimate::GetDate", 200, E_FAIL}, S_OK,
           {Skipped("Failed to get date from estimate in LX.")}, {"<TranDate>20090501T000000-0500</TranDate>\n"}},
          {{"IEstimate::GetBillingAddress", 200, E_FAIL}, S_OK,
           {Skipped("Failed to get billing address lines from estimate in LX.")},
           {"<BillAddress>\n", "<Addr2>Unit 4 &amp; 5</Addr2>\n", "<Country>Canada</Country>\n", "</BillAddress>\n"}},
          {{"IEstimate::GetEstimateNumber", 200, E_FAIL}, S_OK,
           {Skipped("Failed to get estimate number from estimate in LX.")}, {"<EstimateNum>E-7</EstimateNum>\n"}},
          {{"IEstimate::GetCustomerIsTaxable", 200, E_FAIL}, S_OK,
           {Entry(kFormPrefix, "Failed to get customer is taxable from estimate in LX.  We'll assume he is.")}},
      },
      kCustomerEstimate, [&](HRESULT status) { return BuildForm(200, status); });
}

}  // namespace
}  // namespace parcelon::test
