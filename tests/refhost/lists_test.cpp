// The host's lists over a loaded company: the customer and job tree, lookups by index and by
// record number, the customer filter by modification time, items and their groups, and the
// attributes of list records with LockForEdit and Save.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CompanyTestSupport.h"
#include "refhost/DataFileStore.h"
#if PARCELON_HAVE_SQLITE
#include "refhost/CompanyStore.h"
#endif

namespace parcelon::refhost::test {
namespace {

// A customer with a job three levels deep, a second customer, and another name.
constexpr const char* kCompany = R"({
  "terms": [{"recNum": 10, "name": "Net 30"}],
  "customers": [
    {"recNum": 1, "name": "Acme", "modTime": 100},
    {"recNum": 2, "name": "Roof", "parent": 1, "modTime": 200},
    {"recNum": 3, "name": "Phase 1", "parent": 2, "modTime": 300},
    {"recNum": 4, "name": "Globex", "modTime": 200}
  ],
  "otherNames": [{"recNum": 5, "name": "Vendor", "modTime": 500}],
  "items": [
    {"recNum": 20, "name": "Labour", "type": "service"},
    {"recNum": 21, "name": "Parts", "type": "part", "parent": 20},
    {"recNum": 22, "name": "Kit", "type": "group", "groupItems": [21, 20]}
  ],
  "classes": [{"recNum": 30, "name": "East"}, {"recNum": 31, "name": "Coast", "parent": 30}]
})";

TEST(Trees, ParentRootSubLevelAndFullName) {
  const CompanyPtr company = LoadCompany(kCompany);
  struct Position {
    LONG recNum;
    bool isJob;
    LONG parent, parentRoot, root, subLevel;  // -1 for none
    const char* fullName;
  };
  const Position positions[] = {
      {1, false, -1, -1, 1, 0, "Acme"},
      {2, true, 1, 1, 1, 1, "Acme:Roof"},
      {3, true, 2, 1, 1, 2, "Acme:Roof:Phase 1"},
      {4, false, -1, -1, 4, 0, "Globex"},
  };
  for (const Position& p : positions) {
    SCOPED_TRACE(p.recNum);
    const ComPtr<IName> name = RecordOf<IName>(company, p.recNum);
    EXPECT_EQ(p.isJob, Get(name, &IName::GetIsJob));
    EXPECT_EQ(p.parent, RecNumOf(Get(name, &IName::GetParent)));
    EXPECT_EQ(p.parentRoot, RecNumOf(Get(name, &IName::GetParentRoot)));
    EXPECT_EQ(p.root, RecNumOf(Get(name, &IName::GetRoot)));
    EXPECT_EQ(p.subLevel, Get(name, &IName::GetSubLevel));
    EXPECT_EQ(p.fullName, Get(name, &IName::GetFullName));
  }
  const ComPtr<IClass> coast = RecordOf<IClass>(company, 31);
  EXPECT_EQ(30, RecNumOf(Get(coast, &IClass::GetParent)));
  EXPECT_EQ(30, RecNumOf(Get(coast, &IClass::GetParentRoot)));
  EXPECT_EQ(1, Get(coast, &IClass::GetSubLevel));
  EXPECT_EQ("East:Coast", Get(coast, &IClass::GetFullName));
  EXPECT_EQ(-1, RecNumOf(Get(RecordOf<IClass>(company, 30), &IClass::GetParentRoot)));
}

TEST(Customers, ListCustomersAndJobsNamesListEveryName) {
  const CompanyPtr company = LoadCompany(kCompany);
  const ComPtr<ICustomers> customers = Get(ListsOf(company), &ILists::GetCustomers);
  const ComPtr<INames> names = Get(ListsOf(company), &ILists::GetNames);
  EXPECT_EQ(4, Get(customers, &ICustomers::GetCount));
  EXPECT_EQ(5, Get(names, &INames::GetCount));
  EXPECT_EQ(4, RecNumOf(Get(customers, &ICustomers::GetItem, 3)));
  ComPtr<IName> name;
  EXPECT_EQ(LX_E_NOTFOUND, customers->GetItemByRecNum(RecNumVariant(5), name.ReleaseAndGetAddressOf()));
  EXPECT_FALSE(name);
  EXPECT_EQ(S_OK, names->GetItemByRecNum(RecNumVariant(5), name.ReleaseAndGetAddressOf()));
  EXPECT_EQ(5, RecNumOf(name));
  EXPECT_EQ(E_INVALIDARG, customers->GetItem(4, name.ReleaseAndGetAddressOf()));
  EXPECT_EQ(E_INVALIDARG, customers->GetItem(-1, name.ReleaseAndGetAddressOf()));
}

struct RecNumArgument {
  const char* what;
  VARTYPE type;
  LONGLONG value;
  HRESULT expected;
};

TEST(GetItemByRecNum, AcceptsWholeNumbersThatFitARecordNumber) {
  const CompanyPtr company = LoadCompany(kCompany);
  const ComPtr<ITerms> terms = Get(ListsOf(company), &ILists::GetTerms);
  const RecNumArgument arguments[] = {
      {"VT_I4", VT_I4, 10, S_OK},
      {"VT_I2", VT_I2, 10, S_OK},
      {"VT_I8", VT_I8, 10, S_OK},
      {"VT_I8 beyond LONG", VT_I8, (LONGLONG(1) << 32) + 10, E_INVALIDARG},
      {"VT_R8", VT_R8, 0, E_INVALIDARG},
      {"VT_EMPTY", VT_EMPTY, 0, E_INVALIDARG},
      {"unknown record", VT_I4, 11, LX_E_NOTFOUND},
  };
  for (const RecNumArgument& a : arguments) {
    VARIANT v;
    VariantInit(&v);
    v.vt = a.type;
    if (a.type == VT_I2)
      v.iVal = SHORT(a.value);
    else if (a.type == VT_I8)
      v.llVal = a.value;
    else if (a.type == VT_R8)
      v.dblVal = 10.0;
    else
      v.lVal = LONG(a.value);
    ComPtr<ITerm> term;
    EXPECT_EQ(a.expected, terms->GetItemByRecNum(v, term.ReleaseAndGetAddressOf())) << a.what;
    EXPECT_EQ(a.expected == S_OK ? 10 : -1, RecNumOf(term)) << a.what;
  }
}

TEST(CustomerFilter, SelectsByModificationTime) {
  const ComPtr<ICustomers> customers = Get(ListsOf(LoadCompany(kCompany)), &ILists::GetCustomers);
  struct Case {
    LONG modTime;
    LONG comparison;  // an LXDateComparison; -1 for no criterion
    std::vector<LONG> recNums;
  };
  const Case cases[] = {
      {0, -1, {1, 2, 3, 4}}, {150, dcAfter, {2, 3, 4}}, {200, dcAfter, {3}}, {200, dcBefore, {1}},
      {200, dcEqual, {2, 4}}, {500, dcEqual, {}},  // the other name is no customer
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.modTime << " " << c.comparison);
    const ComPtr<ICustomerFilter> filter = Get(customers, &ICustomers::GetFilter);
    if (c.comparison >= 0) {
      ASSERT_EQ(S_OK, filter->SetModDateCriterion(c.modTime, c.comparison));
    }
    std::vector<LONG> found;
    for (LONG i = 0; i < Get(filter, &ICustomerFilter::GetCount); ++i)
      found.push_back(RecNumOf(Get(filter, &ICustomerFilter::GetItem, i)));
    EXPECT_EQ(c.recNums, found);
  }
  EXPECT_EQ(E_INVALIDARG, Get(customers, &ICustomers::GetFilter)->SetModDateCriterion(0, 3));
}

TEST(Items, ParentAndGroupMembers) {
  const CompanyPtr company = LoadCompany(kCompany);
  const ComPtr<IItem> kit = RecordOf<IItem>(company, 22);
  EXPECT_EQ(itGROUP, Get(kit, &IItem::GetType));
  ASSERT_EQ(2, Get(kit, &IItem::GetGroupCount));
  EXPECT_EQ(21, RecNumOf(Get(kit, &IItem::GetGroupItem, 1)));
  EXPECT_EQ(20, RecNumOf(Get(kit, &IItem::GetGroupItem, 2)));
  ComPtr<IItem> member;
  EXPECT_EQ(E_INVALIDARG, kit->GetGroupItem(0, member.ReleaseAndGetAddressOf()));
  EXPECT_EQ(E_INVALIDARG, kit->GetGroupItem(3, member.ReleaseAndGetAddressOf()));
  EXPECT_EQ(20, RecNumOf(Get(RecordOf<IItem>(company, 21), &IItem::GetParent)));
  EXPECT_EQ(-1, RecNumOf(Get(kit, &IItem::GetParent)));
}

const char* const kOwner = "{54901C71-3408-44fb-9031-7B4BB81D871C}";
const char* const kUploadTime = "ParcelonUploadTime";

HRESULT Find(const ComPtr<IAttributeContainer>& attributes, const char* name, ComPtr<IAttribute>& found) {
  return attributes->FindAttribute(MakeBstr(name).Get(), MakeBstr(kOwner).Get(), found.ReleaseAndGetAddressOf());
}
HRESULT Add(const ComPtr<IAttributeContainer>& attributes, const char* name, ComPtr<ILongAttribute>& added) {
  return attributes->AddLongAttribute(MakeBstr(name).Get(), MakeBstr(kOwner).Get(), added.ReleaseAndGetAddressOf());
}

// Finds, or adds, the upload-time attribute of a record and writes `value`, as the component's
// upload does.
HRESULT Stamp(const ComPtr<IName>& record, LONG value) {
  ComPtr<IAttributeContainer> attributes;
  ComPtr<IAttribute> found;
  ComPtr<ILongAttribute> attribute;
  HRESULT hr = record->GetAttributes(attributes.ReleaseAndGetAddressOf());
  if (SUCCEEDED(hr)) hr = Find(attributes, kUploadTime, found);
  if (hr == LX_E_NOTFOUND)
    hr = Add(attributes, kUploadTime, attribute);
  else if (SUCCEEDED(hr))
    hr = found.As(attribute);
  return FAILED(hr) ? hr : attribute->SetValue(value);
}

TEST(Attributes, WrittenBetweenLockForEditAndSave) {
  const CompanyPtr company = LoadCompany(kCompany);
  const ComPtr<IName> roof = RecordOf<IName>(company, 2);
  EXPECT_EQ(E_ACCESSDENIED, Stamp(roof, 7));
  EXPECT_EQ(E_UNEXPECTED, roof->Save());
  ASSERT_EQ(S_OK, roof->LockForEdit());
  EXPECT_EQ(E_ACCESSDENIED, RecordOf<IName>(company, 2)->LockForEdit());
  EXPECT_EQ(S_OK, Stamp(roof, 7));
  EXPECT_EQ(S_OK, Stamp(roof, 8));
  EXPECT_EQ(S_OK, roof->Save());
  ComPtr<IAttribute> found;
  ASSERT_EQ(S_OK, Find(Get(RecordOf<IName>(company, 2), &IName::GetAttributes), kUploadTime, found));
  ComPtr<ILongAttribute> stamp;
  ASSERT_EQ(S_OK, found.As(stamp));
  EXPECT_EQ(8, Get(stamp, &ILongAttribute::GetValue));
  EXPECT_EQ(200, Get(roof, &IName::GetModTime));
}

TEST(Attributes, AddingTwiceFailsAndRemovalIsKeptAtOnce) {
  const CompanyPtr company = LoadCompany(kCompany);
  const ComPtr<ITerm> term = RecordOf<ITerm>(company, 10);
  const ComPtr<IAttributeContainer> attributes = Get(term, &ITerm::GetAttributes);
  ASSERT_EQ(S_OK, term->LockForEdit());
  ComPtr<ILongAttribute> added, again;
  ASSERT_EQ(S_OK, Add(attributes, "A", added));
  EXPECT_EQ(kAlreadyExists, Add(attributes, "A", again));
  ASSERT_EQ(S_OK, term->Save());
  ComPtr<IAttribute> found;
  ASSERT_EQ(S_OK, Find(attributes, "A", found));
  EXPECT_EQ(S_OK, attributes->RemoveAttribute(found.Get()));
  EXPECT_EQ(LX_E_NOTFOUND, Find(attributes, "A", found));
  LONG value = 0;
  EXPECT_EQ(LX_E_NOTFOUND, added->GetValue(&value));
  // Another record's attribute is not this container's to remove.
  EXPECT_EQ(E_INVALIDARG, Get(RecordOf<IName>(company, 1), &IName::GetAttributes)->RemoveAttribute(added.Get()));
}

#if PARCELON_HAVE_SQLITE
TEST(Attributes, SaveWritesToTheStoreOnlyWhatChanged) {
  ScratchFolder folder;
  const CompanyPtr company = LoadCompany(kCompany);
  company->store = CompanyStore::Create(folder.File("company.db"), kCompany, "test", *company);
  const ComPtr<IName> roof = RecordOf<IName>(company, 2);
  ASSERT_EQ(S_OK, roof->LockForEdit());
  ASSERT_EQ(S_OK, roof->Save());
  EXPECT_TRUE(company->store->Attributes().empty());

  ASSERT_EQ(S_OK, roof->LockForEdit());
  ASSERT_EQ(S_OK, Stamp(roof, 9));
  EXPECT_TRUE(company->store->Attributes().empty());
  ASSERT_EQ(S_OK, roof->Save());
  const std::vector<StoredAttributes> stored = company->store->Attributes();
  ASSERT_EQ(1u, stored.size());
  EXPECT_EQ(ListKind::Names, stored[0].list);
  EXPECT_EQ(2, stored[0].recNum);
  ASSERT_EQ(1u, stored[0].attributes.size());
  EXPECT_EQ(u"ParcelonUploadTime", stored[0].attributes[0].name);
  EXPECT_EQ(9, stored[0].attributes[0].value);
}
#endif

}  // namespace
}  // namespace parcelon::refhost::test
