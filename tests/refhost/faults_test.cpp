// Fault injection: a fault fails exactly the named operation on exactly the chosen record, from a
// test and from a fixture; interfaces unavailable from the fixture, and absent records.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CompanyTestSupport.h"

namespace parcelon::refhost::test {
namespace {

constexpr const char* kCompany = R"({
  "terms": [{"recNum": 2, "name": "Net 30"}, {"recNum": 3, "name": "Net 60"}],
  "customers": [
    {"recNum": 2, "name": "Acme", "companyName": "Acme Inc", "firstName": "Ann",
     "billingAddress": {"city": "Springfield"}},
    {"recNum": 3, "name": "Globex", "companyName": "Globex Corp", "terms": 3},
    {"recNum": 7, "name": "Roof", "parent": 2}
  ],
  "company": {"address": {"city": "Capital City"}}
})";

HRESULT CompanyNameOf(const CompanyPtr& company, LONG recNum) {
  return Status(RecordOf<IName>(company, recNum), &IName::GetCompanyName);
}
HRESULT FirstNameOf(const CompanyPtr& company, LONG recNum) {
  return Status(RecordOf<IName>(company, recNum), &IName::GetFirstName);
}

// A fault names its record or fails every record; a record's own fault wins over the one for all.
TEST(Faults, FailExactlyTheOperationOnTheirRecordOrOnEveryRecord) {
  const CompanyPtr company = LoadCompany(kCompany);
  ASSERT_TRUE(company->faults.Fail("IName::GetCompanyName", E_ACCESSDENIED, 2));
  ASSERT_TRUE(company->faults.Fail("IName::GetFirstName", E_FAIL));
  ASSERT_TRUE(company->faults.Fail("IName::GetFirstName", E_OUTOFMEMORY, 3));
  EXPECT_EQ(E_ACCESSDENIED, CompanyNameOf(company, 2));
  EXPECT_EQ(S_OK, CompanyNameOf(company, 3));
  EXPECT_EQ(E_FAIL, FirstNameOf(company, 2));
  EXPECT_EQ(E_OUTOFMEMORY, FirstNameOf(company, 3));
  EXPECT_EQ(S_OK, Status(RecordOf<IName>(company, 2), &IName::GetLastName));
  EXPECT_EQ(1, company->faults.Triggered("IName::GetCompanyName"));
}

TEST(Faults, ListElementMethodsAnswerToTheRecordInterfaceAndToIListElement) {
  const CompanyPtr company = LoadCompany(kCompany);
  ASSERT_TRUE(company->faults.Fail("ITerm::GetName", E_FAIL, 2));
  EXPECT_EQ(E_FAIL, Status(RecordOf<ITerm>(company, 2), &ITerm::GetName));
  EXPECT_EQ(S_OK, Status(RecordOf<IName>(company, 2), &IName::GetName));
  ASSERT_TRUE(company->faults.Fail("IListElement::LockForEdit", E_ACCESSDENIED, 3));
  EXPECT_EQ(E_ACCESSDENIED, RecordOf<ITerm>(company, 3)->LockForEdit());
  EXPECT_EQ(E_ACCESSDENIED, RecordOf<IName>(company, 3)->LockForEdit());
  EXPECT_EQ(S_OK, RecordOf<IName>(company, 2)->LockForEdit());
}

TEST(Faults, ValuesBelongToTheRecordThatGaveThemOut) {
  const CompanyPtr company = LoadCompany(kCompany);
  ASSERT_TRUE(company->faults.Fail("IAddress::GetCity", E_FAIL, 2));
  EXPECT_EQ(E_FAIL, Status(Get(RecordOf<IName>(company, 2), &IName::GetBillingAddress), &IAddress::GetCity));
  ComPtr<ICompanyFile> file;
  ASSERT_EQ(S_OK, NewCompanyFile(company, file.ReleaseAndGetAddressOf()));
  const ComPtr<IAddress> companyAddress = Get(Get(file, &ICompanyFile::GetCompanyInfo), &ICompanyInfo::GetAddress);
  EXPECT_EQ("Capital City", Get(companyAddress, &IAddress::GetCity));
}

TEST(Faults, RefuseWhatIsNoHostOperationOrInterfaceOrNoFailure) {
  Faults faults;
  EXPECT_FALSE(faults.Fail("IFoo::GetName", E_FAIL));
  EXPECT_FALSE(faults.Fail("GetName", E_FAIL));
  EXPECT_FALSE(faults.Fail("IName::", E_FAIL));
  EXPECT_FALSE(faults.Fail("IName::GetName", S_FALSE));
  EXPECT_FALSE(faults.MakeUnavailable("ITerm9"));
  EXPECT_FALSE(faults.Active());
}

TEST(Faults, FromTheFixture) {
  const std::string fixture = std::string(kCompany).insert(
      1, R"("faults": [{"operation": "ICustomers::GetItemByRecNum", "hresult": "0x80004005"},
                       {"operation": "IName::GetFirstName", "record": 2, "hresult": "E_POINTER"}],
           "unavailable": ["ITerm2"],
           "absent": [{"list": "customers", "record": 3}],
           "lockedDataFileRecords": ["DataUpload"],)");
  const CompanyPtr company = LoadCompany(fixture);
  const ComPtr<ICustomers> customers = Get(ListsOf(company), &ILists::GetCustomers);
  ComPtr<IName> name;
  EXPECT_EQ(E_FAIL, customers->GetItemByRecNum(RecNumVariant(2), name.ReleaseAndGetAddressOf()));
  EXPECT_EQ(S_OK, customers->GetItem(0, name.ReleaseAndGetAddressOf()));
  EXPECT_EQ(E_POINTER, FirstNameOf(company, 2));
  ComPtr<ITerm2> term2;
  EXPECT_EQ(E_NOINTERFACE, RecordOf<ITerm>(company, 2).As(term2));
  EXPECT_TRUE(company->faults.IsAbsent(ListKind::Names, 3));
  EXPECT_TRUE(company->faults.IsLockHeld(u"DataUpload"));
  EXPECT_FALSE(company->faults.IsLockHeld(u"Other"));
}

// A trap runs once, at the chosen call of its operation on any record, and the call goes on.
TEST(Faults, ATrapRunsAtTheChosenCallAndTheOperationGoesOn) {
  const CompanyPtr company = LoadCompany(kCompany);
  std::vector<std::string> sprung;
  ASSERT_TRUE(company->faults.Trap("IName::GetCompanyName", 2, [&] { sprung.push_back("second call"); }));
  EXPECT_FALSE(company->faults.Trap("INoSuchInterface::GetCompanyName", 1, [] {}));
  EXPECT_FALSE(company->faults.Trap("IName::GetCompanyName", 0, [] {}));
  EXPECT_EQ(S_OK, CompanyNameOf(company, 2));
  EXPECT_TRUE(sprung.empty());
  EXPECT_EQ(S_OK, CompanyNameOf(company, 3));
  EXPECT_EQ(std::vector<std::string>{"second call"}, sprung);
  EXPECT_EQ(S_OK, CompanyNameOf(company, 2));
  EXPECT_EQ(1u, sprung.size());
}

TEST(Absent, LookupsByRecordNumberDoNotFindTheRecord) {
  const CompanyPtr company = LoadCompany(kCompany);
  company->faults.MakeAbsent(ListKind::Names, 2);
  const ComPtr<ICustomers> customers = Get(ListsOf(company), &ILists::GetCustomers);
  ComPtr<IName> name;
  EXPECT_EQ(LX_E_NOTFOUND,
            customers->GetItemByRecNum(RecNumVariant(2), name.ReleaseAndGetAddressOf()));
  EXPECT_EQ(S_OK, customers->GetItemByRecNum(RecNumVariant(3), name.ReleaseAndGetAddressOf()));
  // A reference to it finds nothing either; the term of the same number is there.
  EXPECT_EQ(LX_E_NOTFOUND, Status(RecordOf<IName>(company, 7), &IName::GetParent));
  EXPECT_EQ(2, RecNumOf(RecordOf<ITerm>(company, 2)));
  EXPECT_EQ(3, Get(customers, &ICustomers::GetCount));
}

}  // namespace
}  // namespace parcelon::refhost::test
