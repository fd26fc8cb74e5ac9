// The common frame of the component's COM objects: creation through an interface, IDispatch for
// the dual interfaces, property accessors, and the class object of each class (the reference
// count and interface matching are platform/RefCounted.h's).
#pragma once

#include <new>

#include "diagnostics/LogIfFailed.h"
#include "platform/Bstr.h"
#include "platform/ComBase.h"
#include "platform/Dispatch.h"
#include "platform/RefCounted.h"

namespace parcelon {

// The IDispatch part of a dual interface. There is no type information yet, so automation by name
// is not offered; callers use the interface's own slots.
template <class Interface>
class CDispatchStub : public Interface {
 public:
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (!count) return E_POINTER;
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** typeInfo) override {
    if (typeInfo) *typeInfo = nullptr;
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }
};

// A new BSTR of `text` in `*out`; E_OUTOFMEMORY when it cannot allocate.
inline HRESULT ReturnText(const OLECHAR* text, BSTR* out) {
  if (!out) return E_POINTER;
  *out = SysAllocString(text);
  return *out ? S_OK : E_OUTOFMEMORY;
}

// A copy of `source` in `*copy`; a null string stays null. E_OUTOFMEMORY when it cannot allocate.
inline HRESULT CopyBstr(BSTR source, BSTR* copy) {
  if (!copy) return E_POINTER;
  *copy = source ? SysAllocStringLen(source, SysStringLen(source)) : nullptr;
  return (*copy || !source) ? S_OK : E_OUTOFMEMORY;
}

// A copy of `value`; a null string stays null. Raises E_OUTOFMEMORY as ComError.
inline Bstr CopyOf(BSTR value) {
  BSTR copy = nullptr;
  ThrowIfFailed(CopyBstr(value, &copy));
  return Bstr::Attach(copy);
}

// A property's value into its out parameter (a copy of a BSTR), and a new value into its field.
inline HRESULT ReadProperty(const Bstr& field, BSTR* out) { return CopyBstr(field.Get(), out); }
inline HRESULT WriteProperty(Bstr& field, BSTR value) {
  return CatchComError([&] { field = CopyOf(value); });
}
template <class T>
HRESULT ReadProperty(const T& field, T* out) {
  if (!out) return E_POINTER;
  *out = field;
  return S_OK;
}
template <class T>
HRESULT WriteProperty(T& field, T value) {
  field = value;
  return S_OK;
}

// Creates a T and returns its interface `riid`; the object goes away again when it has no such
// interface.
template <class T>
HRESULT CreateComObject(REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  T* object = new (std::nothrow) T();
  if (!object) return E_OUTOFMEMORY;
  object->AddRef();
  const HRESULT hr = object->QueryInterface(riid, ppv);
  object->Release();
  return hr;
}

// The class object of T: a process-lifetime object that creates T without aggregation.
template <class T>
class CClassFactory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    *ppv = IsOneOf<IUnknown, IClassFactory>(riid) ? static_cast<IClassFactory*>(this) : nullptr;
    return *ppv ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    return CreateComObject<T>(riid, ppv);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace parcelon

// A property's get_/put_ pair over a field of the object; the field of a BSTR property is a Bstr.
#define PARCELON_GETTER(Type, Name, field)                                      \
  HRESULT STDMETHODCALLTYPE get_##Name(Type* pVal) override {                   \
    return parcelon::ReadProperty(field, pVal);                                 \
  }
#define PARCELON_PUTTER(Type, Name, field)                                      \
  HRESULT STDMETHODCALLTYPE put_##Name(Type newVal) override {                  \
    return parcelon::WriteProperty(field, newVal);                              \
  }
#define PARCELON_PROPERTY(Type, Name, field) \
  PARCELON_GETTER(Type, Name, field)         \
  PARCELON_PUTTER(Type, Name, field)
