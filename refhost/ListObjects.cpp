// The host's list records and list collections over the reference host's lists: terms, names
// (customers, jobs and other names), items, classes, sales reps, ship methods, customer messages.
#include <algorithm>
#include <optional>
#include <vector>

#include "refhost/AttributeObjects.h"
#include "refhost/CollectionObject.h"
#include "refhost/HostObjects.h"

namespace parcelon::refhost {

// The element objects of the collections, found by CollectionObject through the record type.
HRESULT NewElementObject(const CompanyPtr& company, Term& record, ITerm** out);
HRESULT NewElementObject(const CompanyPtr& company, Name& record, IName** out);
HRESULT NewElementObject(const CompanyPtr& company, Item& record, IItem** out);
HRESULT NewElementObject(const CompanyPtr& company, Class& record, IClass** out);
HRESULT NewElementObject(const CompanyPtr& company, SalesRep& record, ISalesRep** out);
HRESULT NewElementObject(const CompanyPtr& company, ShipMethod& record, IShipMethod** out);
HRESULT NewElementObject(const CompanyPtr& company, CustomerMessage& record,
                         ICustomerMessage** out);

namespace {

// "Parent:Child" for a record of a tree; the name itself elsewhere. Trees are at most
// kMaxTreeLevel deep.
template <class Record>
Text FullName(Company& company, const Record& record) {
  Text fullName = record.name;
  if constexpr (std::is_base_of_v<TreeLinks, Record>) {
    for (const Record* at = &record; at->parent != 0;) {
      at = company.List<Record>().Find(at->parent);
      if (!at) break;
      fullName.insert(0, at->name + u":");
    }
  }
  return fullName;
}

// What every list record object has: the methods of IListElement. Their operations are named
// after the record's interface Element and also answer to "IListElement".
template <class Record, class Element, class Most = Element, class... Also>
class ListElementObject : public ComObject<Most, Also..., IListElement> {
  using Base = ComObject<Most, Also..., IListElement>;

 public:
  ListElementObject(CompanyPtr company, Record& record)
      : Base(std::move(company), record.recNum), record_(record) {}

  HRESULT STDMETHODCALLTYPE GetRecNum(LONG* out) override {
    return this->Give(Op("GetRecNum"), out, record_.recNum);
  }
  HRESULT STDMETHODCALLTYPE GetName(BSTR* out) override {
    return this->Give(Op("GetName"), out, record_.name);
  }
  HRESULT STDMETHODCALLTYPE GetFullName(BSTR* out) override {
    return this->Give(Op("GetFullName"), out, FullName(this->company(), record_));
  }
  HRESULT STDMETHODCALLTYPE GetIsHidden(VARIANT_BOOL* out) override {
    return this->Give(Op("GetIsHidden"), out, record_.hidden);
  }
  HRESULT STDMETHODCALLTYPE GetModTime(LONG* out) override {
    return this->Give(Op("GetModTime"), out, record_.modTime);
  }
  HRESULT STDMETHODCALLTYPE GetAttributes(IAttributeContainer** out) override {
    RETURN_IF_FAILED(this->Ready(Op("GetAttributes"), out));
    return NewAttributeContainer(this->companyPtr(), Record::kList, record_, out);
  }
  // E_ACCESSDENIED when the record is locked for edit already.
  HRESULT STDMETHODCALLTYPE LockForEdit() override {
    RETURN_IF_FAILED(this->Check(Op("LockForEdit")));
    if (record_.lockedForEdit) return E_ACCESSDENIED;
    record_.lockedForEdit = true;
    return S_OK;
  }
  // Writes the attributes changed since LockForEdit, and nothing else: the modification time
  // stays. E_UNEXPECTED without LockForEdit.
  HRESULT STDMETHODCALLTYPE Save() override {
    RETURN_IF_FAILED(this->Check(Op("Save")));
    if (!record_.lockedForEdit) return E_UNEXPECTED;
    if (record_.attributesChanged) {
      RETURN_IF_FAILED(StoreAttributes(this->company(), Record::kList, record_));
      record_.attributesChanged = false;
    }
    record_.lockedForEdit = false;
    return S_OK;
  }

 protected:
  Record& data() const { return record_; }
  static OperationName Op(std::string_view method) {
    return {IidOf<Element>(), method, "IListElement"};
  }

 private:
  Record& record_;
};

class TermObject final : public ListElementObject<Term, ITerm, ITerm2, ITerm> {
 public:
  using ListElementObject::ListElementObject;

  HRESULT STDMETHODCALLTYPE GetType(LONG* out) override {
    return Give("ITerm::GetType", out, data().type);
  }
  HRESULT STDMETHODCALLTYPE GetStdDueDays(LONG* out) override {
    return Give("ITerm::GetStdDueDays", out, data().stdDueDays);
  }
  HRESULT STDMETHODCALLTYPE GetStdDiscountDays(LONG* out) override {
    return Give("ITerm::GetStdDiscountDays", out, data().stdDiscountDays);
  }
  HRESULT STDMETHODCALLTYPE GetDayOfMonthDue(LONG* out) override {
    return Give("ITerm::GetDayOfMonthDue", out, data().dayOfMonthDue);
  }
  HRESULT STDMETHODCALLTYPE GetDiscountDayOfMonth(LONG* out) override {
    return Give("ITerm::GetDiscountDayOfMonth", out, data().discountDayOfMonth);
  }
  HRESULT STDMETHODCALLTYPE GetDiscountPct(IPercent** out) override {
    return Give("ITerm::GetDiscountPct", out, data().discountPct);
  }
  HRESULT STDMETHODCALLTYPE GetMinDays(LONG* out) override {
    return Give("ITerm::GetMinDays", out, data().minDays);
  }
  HRESULT STDMETHODCALLTYPE GetIsDiscountEmpty(VARIANT_BOOL* out) override {
    return Give("ITerm2::GetIsDiscountEmpty", out, data().discountEmpty);
  }
};

class JobInfoObject final : public ComObject<IJobInfo> {
 public:
  JobInfoObject(CompanyPtr company, const Name& name)
      : ComObject(std::move(company), name.recNum), status_(name.jobStatus) {}

  HRESULT STDMETHODCALLTYPE GetJobStatus(LONG* out) override {
    return Give("IJobInfo::GetJobStatus", out, status_);
  }

 private:
  LONG status_;
};

class NameObject final : public ListElementObject<Name, IName> {
 public:
  using ListElementObject::ListElementObject;

  HRESULT STDMETHODCALLTYPE GetIsJob(VARIANT_BOOL* out) override {
    return Give("IName::GetIsJob", out, data().parent != 0);
  }
  HRESULT STDMETHODCALLTYPE GetParent(IName** out) override {
    return GiveParent("IName::GetParent", out, data().parent);
  }
  HRESULT STDMETHODCALLTYPE GetParentRoot(IName** out) override {
    return GiveParent("IName::GetParentRoot", out, data().parent == 0 ? 0 : data().root);
  }
  HRESULT STDMETHODCALLTYPE GetRoot(IName** out) override {
    return GiveRecord("IName::GetRoot", out, data().root);
  }
  HRESULT STDMETHODCALLTYPE GetSubLevel(LONG* out) override {
    return Give("IName::GetSubLevel", out, data().level);
  }
  HRESULT STDMETHODCALLTYPE GetJobInfo(IJobInfo** out) override {
    return GiveNew<JobInfoObject>("IName::GetJobInfo", out, companyPtr(), data());
  }
  HRESULT STDMETHODCALLTYPE GetCompanyName(BSTR* out) override {
    return Give("IName::GetCompanyName", out, data().companyName);
  }
  HRESULT STDMETHODCALLTYPE GetSalutation(BSTR* out) override {
    return Give("IName::GetSalutation", out, data().salutation);
  }
  HRESULT STDMETHODCALLTYPE GetFirstName(BSTR* out) override {
    return Give("IName::GetFirstName", out, data().firstName);
  }
  HRESULT STDMETHODCALLTYPE GetMiddleInitial(BSTR* out) override {
    return Give("IName::GetMiddleInitial", out, data().middleInitial);
  }
  HRESULT STDMETHODCALLTYPE GetLastName(BSTR* out) override {
    return Give("IName::GetLastName", out, data().lastName);
  }
  HRESULT STDMETHODCALLTYPE GetContactName1(BSTR* out) override {
    return Give("IName::GetContactName1", out, data().contactName1);
  }
  HRESULT STDMETHODCALLTYPE GetContactName2(BSTR* out) override {
    return Give("IName::GetContactName2", out, data().contactName2);
  }
  HRESULT STDMETHODCALLTYPE GetTelephoneNumber1(BSTR* out) override {
    return Give("IName::GetTelephoneNumber1", out, data().telephoneNumber1);
  }
  HRESULT STDMETHODCALLTYPE GetTelephoneNumber2(BSTR* out) override {
    return Give("IName::GetTelephoneNumber2", out, data().telephoneNumber2);
  }
  HRESULT STDMETHODCALLTYPE GetFaxNumber(BSTR* out) override {
    return Give("IName::GetFaxNumber", out, data().faxNumber);
  }
  HRESULT STDMETHODCALLTYPE GetEmail(BSTR* out) override {
    return Give("IName::GetEmail", out, data().email);
  }
  HRESULT STDMETHODCALLTYPE GetAccountNumber(BSTR* out) override {
    return Give("IName::GetAccountNumber", out, data().accountNumber);
  }
  HRESULT STDMETHODCALLTYPE GetNote(BSTR* out) override {
    return Give("IName::GetNote", out, data().note);
  }
  HRESULT STDMETHODCALLTYPE GetAddress(IAddress** out) override {
    return Give("IName::GetAddress", out, data().address);
  }
  HRESULT STDMETHODCALLTYPE GetBillingAddress(IAddress** out) override {
    return Give("IName::GetBillingAddress", out, data().billingAddress);
  }
  HRESULT STDMETHODCALLTYPE GetShippingAddress(IAddress** out) override {
    return Give("IName::GetShippingAddress", out, data().shippingAddress);
  }
  HRESULT STDMETHODCALLTYPE GetSalesRep(ISalesRep** out) override {
    return GiveRecord("IName::GetSalesRep", out, data().salesRep);
  }
  HRESULT STDMETHODCALLTYPE GetTerms(ITerm** out) override {
    return GiveRecord("IName::GetTerms", out, data().terms);
  }
};

class ItemObject final : public ListElementObject<Item, IItem> {
 public:
  using ListElementObject::ListElementObject;

  HRESULT STDMETHODCALLTYPE GetType(LONG* out) override {
    return Give("IItem::GetType", out, data().type);
  }
  HRESULT STDMETHODCALLTYPE GetParent(IItem** out) override {
    return GiveParent("IItem::GetParent", out, data().parent);
  }
  HRESULT STDMETHODCALLTYPE GetLongDescription(BSTR* out) override {
    return Give("IItem::GetLongDescription", out, data().longDescription);
  }
  HRESULT STDMETHODCALLTYPE GetGroupCount(LONG* out) override {
    return Give("IItem::GetGroupCount", out, LONG(data().groupMembers.size()));
  }
  // Members 1 to GetGroupCount; E_INVALIDARG for any other index.
  HRESULT STDMETHODCALLTYPE GetGroupItem(LONG index, IItem** out) override {
    const std::vector<RecNum>& members = data().groupMembers;
    if (index < 1 || size_t(index) > members.size()) {
      RETURN_IF_FAILED(Check("IItem::GetGroupItem"));
      return E_INVALIDARG;
    }
    return GiveRecord("IItem::GetGroupItem", out, members[size_t(index) - 1]);
  }
};

class ClassObject final : public ListElementObject<Class, IClass> {
 public:
  using ListElementObject::ListElementObject;

  HRESULT STDMETHODCALLTYPE GetParent(IClass** out) override {
    return GiveParent("IClass::GetParent", out, data().parent);
  }
  HRESULT STDMETHODCALLTYPE GetParentRoot(IClass** out) override {
    return GiveParent("IClass::GetParentRoot", out, data().parent == 0 ? 0 : data().root);
  }
  HRESULT STDMETHODCALLTYPE GetSubLevel(LONG* out) override {
    return Give("IClass::GetSubLevel", out, data().level);
  }
};

class SalesRepObject final : public ListElementObject<SalesRep, ISalesRep> {
 public:
  using ListElementObject::ListElementObject;

  HRESULT STDMETHODCALLTYPE GetAssociatedName(IName** out) override {
    return GiveRecord("ISalesRep::GetAssociatedName", out, data().associatedName);
  }
};

class ShipMethodObject final : public ListElementObject<ShipMethod, IShipMethod> {
 public:
  using ListElementObject::ListElementObject;
};

class CustomerMessageObject final : public ListElementObject<CustomerMessage, ICustomerMessage> {
 public:
  using ListElementObject::ListElementObject;
};

// The record object of `recNum`: the list's empty record for 0, LX_E_NOTFOUND for a record that
// lookups by record number do not find.
template <class Object, class Record, class I>
HRESULT NewRecord(const CompanyPtr& company, RecNum recNum, I** out) {
  *out = nullptr;
  Record* record = recNum == 0 ? &company->List<Record>().Empty() : company->Find<Record>(recNum);
  if (!record) return LX_E_NOTFOUND;
  return CreateObject<Object>(out, company, *record);
}

// The customers and jobs of the names list.
struct CustomerList {
  static size_t Count(Company& company) { return company.customers.size(); }
  static Name& At(Company& company, size_t index) {
    return company.names.At(company.customers[index]);
  }
  static Name* Find(Company& company, RecNum recNum) {
    Name* name = company.Find<Name>(recNum);
    return name && name->customer ? name : nullptr;
  }
};

// The customers passing a modification-time criterion, chosen when the criterion is set.
class CustomerFilterObject final : public ComObject<ICustomerFilter> {
 public:
  explicit CustomerFilterObject(CompanyPtr company) : ComObject(std::move(company), 0) {}

  // E_INVALIDARG for a comparison that is not an LXDateComparison.
  HRESULT STDMETHODCALLTYPE SetModDateCriterion(LONG modTime, LONG comparison) override {
    RETURN_IF_FAILED(Check("ICustomerFilter::SetModDateCriterion"));
    if (comparison != dcEqual && comparison != dcBefore && comparison != dcAfter)
      return E_INVALIDARG;
    Company& data = company();
    std::vector<size_t> selected;
    for (size_t position : data.customers) {
      const LONG time = data.names.At(position).modTime;
      if (comparison == dcEqual    ? time == modTime
          : comparison == dcBefore ? time < modTime
                                   : time > modTime)
        selected.push_back(position);
    }
    selected_ = std::move(selected);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetCount(LONG* out) override {
    return Give("ICustomerFilter::GetCount", out, LONG(Selected().size()));
  }
  // E_INVALIDARG for an index out of range.
  HRESULT STDMETHODCALLTYPE GetItem(LONG index, IName** out) override {
    RETURN_IF_FAILED(Ready("ICustomerFilter::GetItem", out));
    *out = nullptr;
    if (index < 0 || size_t(index) >= Selected().size()) return E_INVALIDARG;
    return CreateObject<NameObject>(out, companyPtr(),
                                    company().names.At(Selected()[size_t(index)]));
  }

 private:
  const std::vector<size_t>& Selected() const {
    return selected_ ? *selected_ : company().customers;
  }

  // Positions in the names list; none until a criterion is set.
  std::optional<std::vector<size_t>> selected_;
};

class CustomersObject final : public CollectionObject<ICustomers, IName, Name, CustomerList> {
 public:
  using CollectionObject::CollectionObject;

  HRESULT STDMETHODCALLTYPE GetFilter(ICustomerFilter** out) override {
    return GiveNew<CustomerFilterObject>("ICustomers::GetFilter", out, companyPtr());
  }
};

class ListsObject final : public ComObject<ILists> {
 public:
  explicit ListsObject(CompanyPtr company) : ComObject(std::move(company), 0) {}

  HRESULT STDMETHODCALLTYPE GetTerms(ITerms** out) override {
    return GiveNew<CollectionObject<ITerms, ITerm, Term>>("ILists::GetTerms", out, companyPtr());
  }
  HRESULT STDMETHODCALLTYPE GetCustomers(ICustomers** out) override {
    return GiveNew<CustomersObject>("ILists::GetCustomers", out, companyPtr());
  }
  HRESULT STDMETHODCALLTYPE GetNames(INames** out) override {
    return GiveNew<CollectionObject<INames, IName, Name>>("ILists::GetNames", out, companyPtr());
  }
  HRESULT STDMETHODCALLTYPE GetItems(IItems** out) override {
    return GiveNew<CollectionObject<IItems, IItem, Item>>("ILists::GetItems", out, companyPtr());
  }
  HRESULT STDMETHODCALLTYPE GetClasses(IClasses** out) override {
    return GiveNew<CollectionObject<IClasses, IClass, Class>>("ILists::GetClasses", out,
                                                              companyPtr());
  }
  HRESULT STDMETHODCALLTYPE GetSalesReps(ISalesReps** out) override {
    return GiveNew<CollectionObject<ISalesReps, ISalesRep, SalesRep>>("ILists::GetSalesReps", out,
                                                                      companyPtr());
  }
  HRESULT STDMETHODCALLTYPE GetShipMethods(IShipMethods** out) override {
    return GiveNew<CollectionObject<IShipMethods, IShipMethod, ShipMethod>>(
        "ILists::GetShipMethods", out, companyPtr());
  }
  HRESULT STDMETHODCALLTYPE GetCustomerMessages(ICustomerMessages** out) override {
    return GiveNew<CollectionObject<ICustomerMessages, ICustomerMessage, CustomerMessage>>(
        "ILists::GetCustomerMessages", out, companyPtr());
  }
  HRESULT STDMETHODCALLTYPE GetStyles(IStyles** out) override {
    return GiveFrom("ILists::GetStyles", out, NewStyles);
  }
};

}  // namespace

HRESULT NewElementObject(const CompanyPtr& company, Term& record, ITerm** out) {
  return CreateObject<TermObject>(out, company, record);
}
HRESULT NewElementObject(const CompanyPtr& company, Name& record, IName** out) {
  return CreateObject<NameObject>(out, company, record);
}
HRESULT NewElementObject(const CompanyPtr& company, Item& record, IItem** out) {
  return CreateObject<ItemObject>(out, company, record);
}
HRESULT NewElementObject(const CompanyPtr& company, Class& record, IClass** out) {
  return CreateObject<ClassObject>(out, company, record);
}
HRESULT NewElementObject(const CompanyPtr& company, SalesRep& record, ISalesRep** out) {
  return CreateObject<SalesRepObject>(out, company, record);
}
HRESULT NewElementObject(const CompanyPtr& company, ShipMethod& record, IShipMethod** out) {
  return CreateObject<ShipMethodObject>(out, company, record);
}
HRESULT NewElementObject(const CompanyPtr& company, CustomerMessage& record,
                         ICustomerMessage** out) {
  return CreateObject<CustomerMessageObject>(out, company, record);
}

HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, ITerm** out) {
  return NewRecord<TermObject, Term>(company, recNum, out);
}
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, IName** out) {
  return NewRecord<NameObject, Name>(company, recNum, out);
}
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, IItem** out) {
  return NewRecord<ItemObject, Item>(company, recNum, out);
}
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, IClass** out) {
  return NewRecord<ClassObject, Class>(company, recNum, out);
}
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, ISalesRep** out) {
  return NewRecord<SalesRepObject, SalesRep>(company, recNum, out);
}
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, IShipMethod** out) {
  return NewRecord<ShipMethodObject, ShipMethod>(company, recNum, out);
}
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, ICustomerMessage** out) {
  return NewRecord<CustomerMessageObject, CustomerMessage>(company, recNum, out);
}

HRESULT NewLists(const CompanyPtr& company, ILists** out) {
  return CreateObject<ListsObject>(out, company);
}

}  // namespace parcelon::refhost
