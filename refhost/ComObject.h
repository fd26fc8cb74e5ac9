// COM objects of the reference host: IUnknown over an interface chain (honouring the faults that
// make an interface unavailable), and the getters through which an object reads as the list of
// its fields:
//
//   HRESULT GetCity(BSTR* out) override { return Give("IAddress::GetCity", out, data_.city); }
//
// A getter first asks the company's faults about the operation and the object's record, then
// fails with E_POINTER on a null out parameter, then copies the value: a new BSTR, a
// VARIANT_BOOL, a number, or a new child object for an amount, percent, quantity or address.
// Every object keeps its company alive.
#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>
#include <utility>

#include "host/HostModel.h"
#include "platform/ComBase.h"
#include "platform/ComError.h"
#include "platform/ComPtr.h"
#include "platform/RefCounted.h"
#include "refhost/CompanyData.h"
#include "refhost/Text.h"

namespace parcelon::refhost {

using CompanyPtr = std::shared_ptr<Company>;

// Value objects of a value, owned by record `record` (for fault selection); defined with the
// value objects (ValueObjects.cpp).
HRESULT NewObject(const CompanyPtr& company, LONG record, const Amount& value, IAmount** out);
HRESULT NewObject(const CompanyPtr& company, LONG record, const Percent& value, IPercent** out);
HRESULT NewObject(const CompanyPtr& company, LONG record, const Quantity& value, IQuantity** out);
HRESULT NewObject(const CompanyPtr& company, LONG record, const Address& value, IAddress** out);

// The object of record `recNum` of the list that answers for the interface: an empty record
// (record number 0, empty texts) for 0; LX_E_NOTFOUND for a record that does not exist or that
// a fault makes absent. Defined with the list objects (ListObjects.cpp); IStyle's with the
// template objects.
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, ITerm** out);
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, IName** out);
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, IItem** out);
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, IClass** out);
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, ISalesRep** out);
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, IShipMethod** out);
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, ICustomerMessage** out);
HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, IStyle** out);

// Copies of plain values into out parameters. VARIANT_BOOL and SHORT are one type: a bool
// value gives VARIANT_TRUE or VARIANT_FALSE, a SHORT value itself.
inline HRESULT Put(BSTR* out, const Text& value) {
  *out = ToBstr(value);
  return *out ? S_OK : E_OUTOFMEMORY;
}
inline HRESULT Put(VARIANT_BOOL* out, bool value) {
  *out = value ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}
inline HRESULT Put(SHORT* out, SHORT value) {
  *out = value;
  return S_OK;
}
inline HRESULT Put(LONG* out, LONG value) {
  *out = value;
  return S_OK;
}
inline HRESULT Put(LONGLONG* out, LONGLONG value) {
  *out = value;
  return S_OK;
}
// Numbers and OLE dates.
inline HRESULT Put(double* out, double value) {
  *out = value;
  return S_OK;
}

// The record number a GetItemByRecNum VARIANT carries: VT_I4, VT_I2, or VT_I8 within LONG's
// range; E_INVALIDARG for anything else.
inline HRESULT RecNumFromVariant(const VARIANT& value, RecNum& out) {
  switch (value.vt) {
    case VT_I4:
      out = value.lVal;
      return S_OK;
    case VT_I2:
      out = value.iVal;
      return S_OK;
    case VT_I8:
      if (value.llVal < INT32_MIN || value.llVal > INT32_MAX) return E_INVALIDARG;
      out = static_cast<RecNum>(value.llVal);
      return S_OK;
    default:
      return E_INVALIDARG;
  }
}

// A new object of type Object (reference count 1) as interface I.
template <class Object, class I, class... Args>
HRESULT CreateObject(I** out, Args&&... args) {
  *out = nullptr;
  try {
    Object* object = new Object(std::forward<Args>(args)...);
    object->AddRef();
    *out = object;
    return S_OK;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

// IUnknown for an object whose most derived interface is Most; QueryInterface also answers for
// IUnknown and each of Also, which must be bases of Most. The reference count starts at 0.
template <class Most, class... Also>
class ComObject : public Most, private CRefCounted<ComObject<Most, Also...>> {
  static_assert((std::is_base_of_v<Also, Most> && ...), "the chain must be bases of Most");

 public:
  ComObject(CompanyPtr company, LONG record) : company_(std::move(company)), record_(record) {}
  ComObject(const ComObject&) = delete;
  ComObject& operator=(const ComObject&) = delete;
  virtual ~ComObject() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    void* answer = Answer(riid, static_cast<Most*>(this));
    if (!answer || company_->faults.IsUnavailable(riid)) return E_NOINTERFACE;
    *ppv = answer;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return this->AddRefImpl(); }
  ULONG STDMETHODCALLTYPE Release() override { return this->ReleaseImpl(); }

 protected:
  Company& company() const { return *company_; }
  const CompanyPtr& companyPtr() const { return company_; }
  // The record this object belongs to, for fault selection.
  LONG record() const { return record_; }

  // The failure a fault sets for `operation` on this object's record; S_OK when none.
  HRESULT Check(const OperationName& operation) const {
    return company_->faults.Check(operation, record_);
  }

  // The failure a fault sets for `operation`, else E_POINTER for a null `out`, else S_OK.
  HRESULT Ready(const OperationName& operation, const void* out) const {
    RETURN_IF_FAILED(Check(operation));
    return out ? S_OK : E_POINTER;
  }

  // Checks `operation` and `out`, then copies `value` into *out: Put for plain values, a new
  // value object for an Amount, Percent, Quantity or Address.
  template <class Out, class Value>
  HRESULT Give(const OperationName& operation, Out* out, const Value& value) {
    RETURN_IF_FAILED(Ready(operation, out));
    if constexpr (std::is_base_of_v<IUnknown, std::remove_pointer_t<Out>>)
      return NewObject(company_, record_, value, out);
    else
      return Put(out, value);
  }

  // Checks `operation` and `out`, then gives the record `recNum` of I's list (an empty record
  // for 0).
  template <class I>
  HRESULT GiveRecord(const OperationName& operation, I** out, RecNum recNum) {
    RETURN_IF_FAILED(Ready(operation, out));
    return NewRecordObject(company_, recNum, out);
  }

  // As GiveRecord, but null for 0: the parent getters at the top of a tree.
  template <class I>
  HRESULT GiveParent(const OperationName& operation, I** out, RecNum recNum) {
    RETURN_IF_FAILED(Ready(operation, out));
    *out = nullptr;
    return recNum == 0 ? S_OK : NewRecordObject(company_, recNum, out);
  }

  // Checks `operation` and `out`, then gives what `factory` makes of the company.
  template <class I>
  HRESULT GiveFrom(const OperationName& operation, I** out,
                   HRESULT (*factory)(const CompanyPtr&, I**)) {
    RETURN_IF_FAILED(Ready(operation, out));
    return factory(company_, out);
  }

  // Checks `operation` and `out`, then gives a new Object made of `args`.
  template <class Object, class I, class... Args>
  HRESULT GiveNew(const OperationName& operation, I** out, Args&&... args) {
    RETURN_IF_FAILED(Ready(operation, out));
    return CreateObject<Object>(out, std::forward<Args>(args)...);
  }

 private:
  // The pointer QueryInterface gives for `riid`; null when the object does not answer for it.
  static void* Answer(REFIID riid, Most* self) {
    if (IsOneOf<IUnknown, Most>(riid)) return self;
    void* answer = nullptr;
    (void)((answer = IsEqualGUID(riid, IidOf<Also>()) ? static_cast<Also*>(self) : nullptr) || ...);
    return answer;
  }

  friend class CRefCounted<ComObject>;
  CompanyPtr company_;
  LONG record_;
};

}  // namespace parcelon::refhost
