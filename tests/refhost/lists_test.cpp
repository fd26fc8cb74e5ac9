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

struct TreePosition {
  LONG recNum;
  bool isJob;
  LONG parent;      // 0 for none
  LONG parentRoot;  // 0 for none
  LONG root;
  LONG subLevel;
  const char16_t* fullName;
};

TEST(JobTree, ParentRootAndSubLevel) {
  const CompanyPtr company = LoadCompany(kCompany);
  const TreePosition positions[] = {
      {1, false, 0, 0, 1, 0, u"Acme"},
      {2, true, 1, 1, 1, 1, u"Acme:Roof"},
      {3, true, 2, 1, 1, 2, u"Acme:Roof:Phase 1"},
      {4, false, 0, 0, 4, 0, u"Globex"},
  };
  for (const TreePosition& p : positions) {
    SCOPED_TRACE(p.recNum);
    const ComPtr<IName> name = RecordOf<IName>(company, p.recNum);
    VARIANT_BOOL isJob = VARIANT_FALSE;
    LONG level = -1;
    ComPtr<IName> parent, parentRoot, root;
    BSTR fullName = nullptr;
    EXPECT_EQ(S_OK, name->GetIsJob(&isJob));
    EXPECT_EQ(S_OK, name->GetParent(parent.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, name->GetParentRoot(parentRoot.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, name->GetRoot(root.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, name->GetSubLevel(&level));
    EXPECT_EQ(S_OK, name->GetFullName(&fullName));
    EXPECT_EQ(p.isJob ? VARIANT_TRUE : VARIANT_FALSE, isJob);
    EXPECT_EQ(p.parent, parent ? RecNumOf(parent) : 0);
    EXPECT_EQ(p.parentRoot, parentRoot ? RecNumOf(parentRoot) : 0);
    EXPECT_EQ(p.root, RecNumOf(root));
    EXPECT_EQ(p.subLevel, level);
    EXPECT_EQ(p.fullName, Take(fullName));
  }
}

TEST(ClassTree, ParentAndSubLevel) {
  const CompanyPtr company = LoadCompany(kCompany);
  const ComPtr<IClass> coast = RecordOf<IClass>(company, 31);
  ComPtr<IClass> parent, parentRoot;
  LONG level = -1;
  BSTR fullName = nullptr;
  EXPECT_EQ(S_OK, coast->GetParent(parent.ReleaseAndGetAddressOf()));
  EXPECT_EQ(S_OK, coast->GetParentRoot(parentRoot.ReleaseAndGetAddressOf()));
  EXPECT_EQ(S_OK, coast->GetSubLevel(&level));
  EXPECT_EQ(S_OK, coast->GetFullName(&fullName));
  EXPECT_EQ(30, RecNumOf(parent));
  EXPECT_EQ(30, RecNumOf(parentRoot));
  EXPECT_EQ(1, level);
  EXPECT_EQ(u"East:Coast", Take(fullName));
  EXPECT_EQ(S_OK,
            RecordOf<IClass>(company, 30)->GetParentRoot(parentRoot.ReleaseAndGetAddressOf()));
  EXPECT_FALSE(parentRoot);
}

TEST(Customers, ListCustomersAndJobsNamesListEveryName) {
  const CompanyPtr company = LoadCompany(kCompany);
  const ComPtr<ILists> lists = ListsOf(company);
  ComPtr<ICustomers> customers;
  ComPtr<INames> names;
  ASSERT_EQ(S_OK, lists->GetCustomers(customers.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, lists->GetNames(names.ReleaseAndGetAddressOf()));
  LONG count = 0;
  EXPECT_EQ(S_OK, customers->GetCount(&count));
  EXPECT_EQ(4, count);
  EXPECT_EQ(S_OK, names->GetCount(&count));
  EXPECT_EQ(5, count);
  ComPtr<IName> name;
  ASSERT_EQ(S_OK, customers->GetItem(3, name.ReleaseAndGetAddressOf()));
  EXPECT_EQ(4, RecNumOf(name));
  EXPECT_EQ(LX_E_NOTFOUND,
            customers->GetItemByRecNum(RecNumVariant(5), name.ReleaseAndGetAddressOf()));
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
  ComPtr<ITerms> terms;
  ASSERT_EQ(S_OK, ListsOf(company)->GetTerms(terms.ReleaseAndGetAddressOf()));
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

struct FilterCase {
  LONG modTime;
  LXDateComparison comparison;
  std::vector<LONG> recNums;
};

TEST(CustomerFilter, SelectsByModificationTime) {
  const CompanyPtr company = LoadCompany(kCompany);
  ComPtr<ICustomers> customers;
  ASSERT_EQ(S_OK, ListsOf(company)->GetCustomers(customers.ReleaseAndGetAddressOf()));
  const FilterCase cases[] = {
      {150, dcAfter, {2, 3, 4}}, {200, dcAfter, {3}}, {200, dcBefore, {1}},
      {200, dcEqual, {2, 4}},    {500, dcEqual, {}},  // the other name is no customer
  };
  for (const FilterCase& c : cases) {
    ComPtr<ICustomerFilter> filter;
    ASSERT_EQ(S_OK, customers->GetFilter(filter.ReleaseAndGetAddressOf()));
    ASSERT_EQ(S_OK, filter->SetModDateCriterion(c.modTime, c.comparison));
    LONG count = -1;
    ASSERT_EQ(S_OK, filter->GetCount(&count));
    std::vector<LONG> found;
    for (LONG i = 0; i < count; ++i) {
      ComPtr<IName> name;
      ASSERT_EQ(S_OK, filter->GetItem(i, name.ReleaseAndGetAddressOf()));
      found.push_back(RecNumOf(name));
    }
    EXPECT_EQ(c.recNums, found) << c.modTime << " " << c.comparison;
  }
}

TEST(CustomerFilter, WithoutCriterionPassesEveryCustomer) {
  const CompanyPtr company = LoadCompany(kCompany);
  ComPtr<ICustomers> customers;
  ASSERT_EQ(S_OK, ListsOf(company)->GetCustomers(customers.ReleaseAndGetAddressOf()));
  ComPtr<ICustomerFilter> filter;
  ASSERT_EQ(S_OK, customers->GetFilter(filter.ReleaseAndGetAddressOf()));
  LONG count = -1;
  EXPECT_EQ(S_OK, filter->GetCount(&count));
  EXPECT_EQ(4, count);
  EXPECT_EQ(E_INVALIDARG, filter->SetModDateCriterion(0, 3));
}

TEST(Items, ParentAndGroupMembers) {
  const CompanyPtr company = LoadCompany(kCompany);
  const ComPtr<IItem> kit = RecordOf<IItem>(company, 22);
  LONG type = -1, count = -1;
  EXPECT_EQ(S_OK, kit->GetType(&type));
  EXPECT_EQ(itGROUP, type);
  EXPECT_EQ(S_OK, kit->GetGroupCount(&count));
  ASSERT_EQ(2, count);
  ComPtr<IItem> member;
  EXPECT_EQ(S_OK, kit->GetGroupItem(1, member.ReleaseAndGetAddressOf()));
  EXPECT_EQ(21, RecNumOf(member));
  EXPECT_EQ(S_OK, kit->GetGroupItem(2, member.ReleaseAndGetAddressOf()));
  EXPECT_EQ(20, RecNumOf(member));
  EXPECT_EQ(E_INVALIDARG, kit->GetGroupItem(0, member.ReleaseAndGetAddressOf()));
  EXPECT_EQ(E_INVALIDARG, kit->GetGroupItem(3, member.ReleaseAndGetAddressOf()));

  ComPtr<IItem> parent;
  EXPECT_EQ(S_OK, RecordOf<IItem>(company, 21)->GetParent(parent.ReleaseAndGetAddressOf()));
  EXPECT_EQ(20, RecNumOf(parent));
  EXPECT_EQ(S_OK, kit->GetParent(parent.ReleaseAndGetAddressOf()));
  EXPECT_FALSE(parent);
}

TEST(References, UnsetReferencesGiveAnEmptyRecord) {
  const CompanyPtr company = LoadCompany(kCompany);
  const ComPtr<IName> acme = RecordOf<IName>(company, 1);
  ComPtr<ITerm> terms;
  ComPtr<ISalesRep> rep;
  ASSERT_EQ(S_OK, acme->GetTerms(terms.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, acme->GetSalesRep(rep.ReleaseAndGetAddressOf()));
  EXPECT_EQ(0, RecNumOf(terms));
  EXPECT_EQ(0, RecNumOf(rep));
  BSTR name = nullptr;
  EXPECT_EQ(S_OK, terms->GetName(&name));
  EXPECT_EQ(u"", Take(name));
}

const char* const kOwner = "{54901C71-3408-44fb-9031-7B4BB81D871C}";

// Finds, or adds, the upload-time attribute of a record and writes `value`, as the component's
// upload does.
HRESULT Stamp(IListElement* record, LONG value) {
  ComPtr<IAttributeContainer> attributes;
  HRESULT hr = record->GetAttributes(attributes.ReleaseAndGetAddressOf());
  if (FAILED(hr)) return hr;
  ComPtr<IAttribute> found;
  ComPtr<ILongAttribute> attribute;
  hr = attributes->FindAttribute(MakeBstr("ParcelonUploadTime").Get(), MakeBstr(kOwner).Get(),
                                 found.ReleaseAndGetAddressOf());
  if (hr == LX_E_NOTFOUND)
    hr = attributes->AddLongAttribute(MakeBstr("ParcelonUploadTime").Get(), MakeBstr(kOwner).Get(),
                                      attribute.ReleaseAndGetAddressOf());
  else if (SUCCEEDED(hr))
    hr = found.As(attribute);
  return FAILED(hr) ? hr : attribute->SetValue(value);
}

// The stamp of a record; -1 for none.
LONG StampOf(IListElement* record) {
  ComPtr<IAttributeContainer> attributes;
  ComPtr<IAttribute> found;
  ComPtr<ILongAttribute> attribute;
  LONG value = -1;
  if (FAILED(record->GetAttributes(attributes.ReleaseAndGetAddressOf())) ||
      FAILED(attributes->FindAttribute(MakeBstr("ParcelonUploadTime").Get(), MakeBstr(kOwner).Get(),
                                       found.ReleaseAndGetAddressOf())) ||
      FAILED(found.As(attribute)) || FAILED(attribute->GetValue(&value)))
    return -1;
  return value;
}

TEST(Attributes, WrittenBetweenLockForEditAndSave) {
  const CompanyPtr company = LoadCompany(kCompany);
  const ComPtr<IName> roof = RecordOf<IName>(company, 2);
  EXPECT_EQ(E_ACCESSDENIED, Stamp(roof.Get(), 7));
  EXPECT_EQ(E_UNEXPECTED, roof->Save());
  ASSERT_EQ(S_OK, roof->LockForEdit());
  EXPECT_EQ(E_ACCESSDENIED, RecordOf<IName>(company, 2)->LockForEdit());
  EXPECT_EQ(S_OK, Stamp(roof.Get(), 7));
  EXPECT_EQ(S_OK, Stamp(roof.Get(), 8));
  EXPECT_EQ(S_OK, roof->Save());
  EXPECT_EQ(8, StampOf(RecordOf<IName>(company, 2).Get()));
  LONG modTime = 0;
  EXPECT_EQ(S_OK, roof->GetModTime(&modTime));
  EXPECT_EQ(200, modTime);
}

TEST(Attributes, AddingTwiceFailsAndRemovalIsKeptAtOnce) {
  const CompanyPtr company = LoadCompany(kCompany);
  const ComPtr<ITerm> term = RecordOf<ITerm>(company, 10);
  ComPtr<IAttributeContainer> attributes;
  ASSERT_EQ(S_OK, term->GetAttributes(attributes.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, term->LockForEdit());
  ComPtr<ILongAttribute> added, again;
  ASSERT_EQ(S_OK, attributes->AddLongAttribute(MakeBstr("A").Get(), MakeBstr(kOwner).Get(),
                                               added.ReleaseAndGetAddressOf()));
  EXPECT_EQ(kAlreadyExists,
            attributes->AddLongAttribute(MakeBstr("A").Get(), MakeBstr(kOwner).Get(),
                                         again.ReleaseAndGetAddressOf()));
  ASSERT_EQ(S_OK, term->Save());
  ComPtr<IAttribute> found;
  ASSERT_EQ(S_OK, attributes->FindAttribute(MakeBstr("A").Get(), MakeBstr(kOwner).Get(),
                                            found.ReleaseAndGetAddressOf()));
  EXPECT_EQ(S_OK, attributes->RemoveAttribute(found.Get()));
  EXPECT_EQ(LX_E_NOTFOUND, attributes->FindAttribute(MakeBstr("A").Get(), MakeBstr(kOwner).Get(),
                                                     found.ReleaseAndGetAddressOf()));
  LONG value = 0;
  EXPECT_EQ(LX_E_NOTFOUND, added->GetValue(&value));
  // Another record's attribute is not this container's to remove.
  ComPtr<IAttributeContainer> other;
  ASSERT_EQ(S_OK, RecordOf<IName>(company, 1)->GetAttributes(other.ReleaseAndGetAddressOf()));
  EXPECT_EQ(E_INVALIDARG, other->RemoveAttribute(added.Get()));
}

#if PARCELON_HAVE_SQLITE
TEST(Attributes, SaveWritesToTheStoreOnlyWhatChanged) {
  parcelon::test::ScratchFolder folder;
  const CompanyPtr company = LoadCompany(kCompany);
  company->store = CompanyStore::Create(folder.File("company.db"), kCompany, "test", *company);
  const ComPtr<IName> roof = RecordOf<IName>(company, 2);
  ASSERT_EQ(S_OK, roof->LockForEdit());
  ASSERT_EQ(S_OK, roof->Save());
  EXPECT_TRUE(company->store->Attributes().empty());

  ASSERT_EQ(S_OK, roof->LockForEdit());
  ASSERT_EQ(S_OK, Stamp(roof.Get(), 9));
  EXPECT_TRUE(company->store->Attributes().empty());
  ASSERT_EQ(S_OK, roof->Save());
  const std::vector<StoredAttributes> stored = company->store->Attributes();
  ASSERT_EQ(1u, stored.size());
  EXPECT_EQ(ListKind::Names, stored[0].list);
  EXPECT_EQ(2, stored[0].recNum);
  ASSERT_EQ(1u, stored[0].attributes.size());
  EXPECT_EQ(9, stored[0].attributes[0].value);
}
#endif

}  // namespace
}  // namespace parcelon::refhost::test
