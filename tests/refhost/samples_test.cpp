// The synthetic companies load and hold what the benchmarks rely on. (The bundled sample company
// is loaded by the mutation test and read in full by every whole-send transcript.)
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "CompanyTestSupport.h"
#include "refhost/ReferenceHost.h"
#include "refhost/SyntheticCompany.h"

namespace parcelon::refhost::test {
namespace {

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
