// Collections of the host's lists and transactions over the reference host's records: count,
// record by index (0 to count - 1, in list order), record by record number (a VARIANT, see
// RecNumFromVariant; LX_E_NOTFOUND when the list has no such record or a fault makes it absent).
//
// The element objects come from NewElementObject(company, record, out), an overload per record
// type found through the record's namespace, defined with the element objects.
#pragma once

#include <cstddef>
#include <utility>

#include "refhost/ComObject.h"

namespace parcelon::refhost {

// The records a collection shows: a whole list.
template <class Record>
struct WholeList {
  static size_t Count(Company& company) { return company.List<Record>().Size(); }
  static Record& At(Company& company, size_t index) { return company.List<Record>().At(index); }
  static Record* Find(Company& company, RecNum recNum) { return company.Find<Record>(recNum); }
};

template <class Collection, class Element, class Record, class View = WholeList<Record>>
class CollectionObject : public ComObject<Collection> {
 public:
  explicit CollectionObject(CompanyPtr company) : ComObject<Collection>(std::move(company), 0) {}

  HRESULT STDMETHODCALLTYPE GetCount(LONG* out) override {
    return this->Give(Op("GetCount"), out, LONG(View::Count(this->company())));
  }
  // E_INVALIDARG for an index out of range.
  HRESULT STDMETHODCALLTYPE GetItem(LONG index, Element** out) override {
    RETURN_IF_FAILED(this->Ready(Op("GetItem"), out));
    *out = nullptr;
    if (index < 0 || size_t(index) >= View::Count(this->company())) return E_INVALIDARG;
    return NewElementObject(this->companyPtr(), View::At(this->company(), size_t(index)), out);
  }
  HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, Element** out) override {
    RETURN_IF_FAILED(this->Ready(Op("GetItemByRecNum"), out));
    *out = nullptr;
    RecNum number = 0;
    RETURN_IF_FAILED(RecNumFromVariant(recNum, number));
    Record* record = View::Find(this->company(), number);
    if (!record) return LX_E_NOTFOUND;
    return NewElementObject(this->companyPtr(), *record, out);
  }

 protected:
  static OperationName Op(std::string_view method) { return {IidOf<Collection>(), method}; }
};

}  // namespace parcelon::refhost
