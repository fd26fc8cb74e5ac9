// The bundled sample company and the synthetic companies load, and hold what the scenarios of
// the other suites rely on.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "CompanyTestSupport.h"
#include "refhost/ReferenceHost.h"
#include "refhost/SyntheticCompany.h"

namespace parcelon::refhost::test {
namespace {

const std::string kSample = std::string(PARCELON_SOURCE_DIR) + "/samples/sample-company.json";

ComPtr<ICustomers> CustomersOf(const ReferenceHost& host) {
  ComPtr<ICompanyFile> file;
  EXPECT_EQ(S_OK, host.GetCompanyFile(file.ReleaseAndGetAddressOf()));
  return Get(Get(file, &ICompanyFile::GetLists), &ILists::GetCustomers);
}

ComPtr<IName> CustomerByRecNum(const ComPtr<ICustomers>& customers, LONG recNum) {
  ComPtr<IName> name;
  EXPECT_EQ(S_OK, customers->GetItemByRecNum(RecNumVariant(recNum), name.ReleaseAndGetAddressOf())) << recNum;
  return name;
}

TEST(Samples, TheSampleCompanyLoadsWithItsThreeLevelJobTree) {
  HRESULT hr = E_FAIL;
  std::string error;
  auto host = ReferenceHost::FromFixture(kSample, hr, error);
  ASSERT_EQ(hr, S_OK) << error;
  const auto customers = CustomersOf(*host);
  const auto pond = CustomerByRecNum(customers, 102);
  EXPECT_EQ(Get(pond, &IName::GetSubLevel), 2);
  EXPECT_EQ(Get(pond, &IListElement::GetFullName), "O’Brien & Daughters:Backyard <Phase 1>:Pond");
  EXPECT_EQ(RecNumOf(Get(pond, &IName::GetRoot)), 100);
  EXPECT_EQ(Get(CustomerByRecNum(customers, 103), &IName::GetSubLevel), 3);
  EXPECT_EQ(Get(CustomerByRecNum(customers, 110), &IName::GetCompanyName), "Café Müller GmbH");
}

TEST(Samples, SyntheticCompaniesHaveTheRequestedNamesThreeLevelsDeep) {
  for (int names : {0, 1, 8, 1001}) {
    SCOPED_TRACE(names);
    ReferenceHost host(LoadCompany(SyntheticCompanyJson(names)));
    const auto customers = CustomersOf(host);
    EXPECT_EQ(Get(customers, &ICustomers::GetCount), names);
    if (names >= 8) {
      EXPECT_EQ(Get(CustomerByRecNum(customers, 1004), &IName::GetSubLevel), 0);
      EXPECT_EQ(Get(CustomerByRecNum(customers, 1007), &IName::GetSubLevel), 3);
    }
  }
}

}  // namespace
}  // namespace parcelon::refhost::test
