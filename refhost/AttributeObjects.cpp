// Attribute containers and long attributes over the attributes of a list record.
#include "refhost/AttributeObjects.h"

#include <algorithm>

#include "refhost/DataFileStore.h"
#if PARCELON_HAVE_SQLITE
#include "refhost/CompanyStore.h"
#endif

namespace parcelon::refhost {

namespace {

std::vector<Attribute>::iterator FindIn(ListRecord& record, const Text& name, const Text& owner) {
  return std::find_if(record.attributes.begin(), record.attributes.end(),
                      [&](const Attribute& a) { return a.name == name && a.owner == owner; });
}

// One long attribute of a record, found again by name and owner at each call, so that a removed
// attribute answers LX_E_NOTFOUND.
class LongAttributeObject final : public ComObject<ILongAttribute, IAttribute> {
 public:
  LongAttributeObject(CompanyPtr company, ListRecord& record, Text name, Text owner)
      : ComObject(std::move(company), record.recNum),
        record_(record),
        name_(std::move(name)),
        owner_(std::move(owner)) {}

  HRESULT STDMETHODCALLTYPE GetName(BSTR* out) override {
    return Give("IAttribute::GetName", out, name_);
  }
  HRESULT STDMETHODCALLTYPE GetOwner(BSTR* out) override {
    return Give("IAttribute::GetOwner", out, owner_);
  }
  HRESULT STDMETHODCALLTYPE GetValue(LONG* out) override {
    RETURN_IF_FAILED(Ready("ILongAttribute::GetValue", out));
    const auto found = FindIn(record_, name_, owner_);
    if (found == record_.attributes.end()) return LX_E_NOTFOUND;
    return Put(out, found->value);
  }
  // E_ACCESSDENIED unless the record holds its edit lock.
  HRESULT STDMETHODCALLTYPE SetValue(LONG value) override {
    RETURN_IF_FAILED(Check("ILongAttribute::SetValue"));
    const auto found = FindIn(record_, name_, owner_);
    if (found == record_.attributes.end()) return LX_E_NOTFOUND;
    if (!record_.lockedForEdit) return E_ACCESSDENIED;
    if (found->value != value) {
      found->value = value;
      record_.attributesChanged = true;
    }
    return S_OK;
  }

  bool BelongsTo(const ListRecord& record) const { return &record_ == &record; }
  const Text& Name() const { return name_; }
  const Text& Owner() const { return owner_; }

 private:
  ListRecord& record_;
  Text name_;
  Text owner_;
};

class AttributeContainerObject final : public ComObject<IAttributeContainer> {
 public:
  AttributeContainerObject(CompanyPtr company, ListKind list, ListRecord& record)
      : ComObject(std::move(company), record.recNum), list_(list), record_(record) {}

  HRESULT STDMETHODCALLTYPE FindAttribute(BSTR name, BSTR owner, IAttribute** out) override {
    RETURN_IF_FAILED(Ready("IAttributeContainer::FindAttribute", out));
    *out = nullptr;
    Text nameText = FromBstr(name), ownerText = FromBstr(owner);
    if (FindIn(record_, nameText, ownerText) == record_.attributes.end()) return LX_E_NOTFOUND;
    return NewAttribute(std::move(nameText), std::move(ownerText), out);
  }
  // E_ACCESSDENIED unless the record holds its edit lock; kAlreadyExists when the record has
  // an attribute of that name and owner.
  HRESULT STDMETHODCALLTYPE AddLongAttribute(BSTR name, BSTR owner, ILongAttribute** out) override {
    RETURN_IF_FAILED(Ready("IAttributeContainer::AddLongAttribute", out));
    *out = nullptr;
    if (!record_.lockedForEdit) return E_ACCESSDENIED;
    Text nameText = FromBstr(name), ownerText = FromBstr(owner);
    if (FindIn(record_, nameText, ownerText) != record_.attributes.end()) return kAlreadyExists;
    record_.attributes.push_back(Attribute{nameText, ownerText, 0});
    record_.attributesChanged = true;
    return NewAttribute(std::move(nameText), std::move(ownerText), out);
  }
  // E_INVALIDARG for an attribute that this container did not give out; the removal reaches
  // the store at once.
  HRESULT STDMETHODCALLTYPE RemoveAttribute(IAttribute* attribute) override {
    RETURN_IF_FAILED(Ready("IAttributeContainer::RemoveAttribute", attribute));
    const auto* ours = dynamic_cast<const LongAttributeObject*>(attribute);
    if (!ours || !ours->BelongsTo(record_)) return E_INVALIDARG;
    const auto found = FindIn(record_, ours->Name(), ours->Owner());
    if (found == record_.attributes.end()) return LX_E_NOTFOUND;
    record_.attributes.erase(found);
    return StoreAttributes(company(), list_, record_);
  }

 private:
  template <class I>
  HRESULT NewAttribute(Text name, Text owner, I** out) {
    return CreateObject<LongAttributeObject>(out, companyPtr(), record_, std::move(name),
                                             std::move(owner));
  }

  ListKind list_;
  ListRecord& record_;
};

}  // namespace

HRESULT NewAttributeContainer(const CompanyPtr& company, ListKind list, ListRecord& record,
                              IAttributeContainer** out) {
  return CreateObject<AttributeContainerObject>(out, company, list, record);
}

HRESULT StoreAttributes(Company& company, ListKind list, const ListRecord& record) {
#if PARCELON_HAVE_SQLITE
  if (!company.store) return S_OK;
  try {
    company.store->WriteAttributes(list, record.recNum, record.attributes);
    return S_OK;
  } catch (const StoreError& e) {
    return e.Code();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
#else
  (void)company, (void)list, (void)record;
  return S_OK;
#endif
}

}  // namespace parcelon::refhost
