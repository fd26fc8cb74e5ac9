// Collections over the parts of one record: the lines of a transaction, the fields and the
// columns of a template. Count, and part by index (0 to count - 1).
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "refhost/ComObject.h"

namespace parcelon::refhost {

// Collection gives the parts as Element; each is an Object made of (company, record, part), and
// belongs to the record that owns the parts. Operations are named after Collection.
template <class Collection, class Element, class Object, class Part>
class PartCollectionObject : public ComObject<Collection> {
 public:
  PartCollectionObject(CompanyPtr company, LONG record, const std::vector<Part>& parts)
      : ComObject<Collection>(std::move(company), record), parts_(parts) {}

  HRESULT STDMETHODCALLTYPE GetCount(LONG* out) override {
    return this->Give(Op("GetCount"), out, LONG(parts_.size()));
  }
  // E_INVALIDARG for an index out of range.
  HRESULT STDMETHODCALLTYPE GetItem(LONG index, Element** out) override {
    RETURN_IF_FAILED(this->Check(Op("GetItem")));
    if (!out) return E_POINTER;
    *out = nullptr;
    if (index < 0 || size_t(index) >= parts_.size()) return E_INVALIDARG;
    return CreateObject<Object>(out, this->companyPtr(), this->record(), parts_[size_t(index)]);
  }

 private:
  static OperationName Op(std::string_view method) { return {IidOf<Collection>(), method}; }

  const std::vector<Part>& parts_;
};

}  // namespace parcelon::refhost
