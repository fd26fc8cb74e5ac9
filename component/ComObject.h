// The common frame of the component's COM objects: the object alone or aggregated, creation
// through an interface, IDispatch for the dual interfaces, property accessors, and the class
// object of each class.
#pragma once

#include <new>
#include <type_traits>

#include "diagnostics/LogIfFailed.h"
#include "platform/RefCounted.h"
#include "platform/Bstr.h"
#include "platform/ComBase.h"
#include "platform/Dispatch.h"

namespace parcelon {

#ifdef _WIN32
// The type information of interface `iid` from the type library in the module that holds this
// code (the component's DLL); null when that module has none, as a test executable that links the
// component's library. The caller owns the reference.
ITypeInfo* TypeInfoOf(REFIID iid);

// Calls member `member` of `object`, an interface without a dispatch part of its own, through
// its type information `info`, for a script: a method without a return value gives its success
// code (S_OK 0, S_FALSE 1) as its result; a method call to a property put is the put with the
// last argument as the value (the form of a script without parametrized properties); and a
// method whose parameters are all pointers to pointers that no script can pass, called without
// arguments, is given a place for each and called (its results stay in the object).
HRESULT InvokeByTypeInfo(IUnknown* object, ITypeInfo* info, DISPID member, WORD flags,
                         DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception,
                         UINT* argumentError);
#endif

// The IDispatch part of a dual interface. On Windows it is served from the type library:
// names through DispGetIDsOfNames, calls through ITypeInfo::Invoke (DispInvoke) on the
// interface's own slots. Elsewhere there is no type information and automation by name answers
// E_NOTIMPL; callers use the interface's slots.
//
// `Secondary`, when given, is a second interface of the same object that has no dispatch part
// of its own (the session's INA_Base chain): a name the dual interface does not know is looked up
// in the secondary interface's type information, and its DISPID carries kSecondaryMember, so that
// Invoke calls it through the secondary interface's slots. A secondary method without a return
// value gives its success code (S_OK 0, S_FALSE 1) as its result, as a script reads it.
template <class Interface, class Secondary = void>
class CDispatchStub : public Interface {
 public:
  static constexpr DISPID kSecondaryMember = 0x08000000;

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (!count) return E_POINTER;
    *count = DispatchInfo() ? 1 : 0;
    return S_OK;
  }
#ifdef _WIN32
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** typeInfo) override {
    if (!typeInfo) return E_POINTER;
    *typeInfo = nullptr;
    ITypeInfo* info = DispatchInfo();
    if (!info) return E_NOTIMPL;
    if (index != 0) return DISP_E_BADINDEX;
    info->AddRef();
    *typeInfo = info;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID,
                                          DISPID* dispIds) override {
    if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    ITypeInfo* info = DispatchInfo();
    if (!info) return E_NOTIMPL;
    // ITypeInfo::GetIDsOfNames reads the first name whatever the count.
    if (count == 0) return S_OK;
    if (!names || !dispIds) return E_INVALIDARG;
    const HRESULT hr = DispGetIDsOfNames(info, names, count, dispIds);
    if constexpr (!std::is_void_v<Secondary>) {
      // Only a member name the dual interface lacks is looked up in the secondary one; a
      // parameter name it lacks still leaves the member's DISPID, as COM requires.
      ITypeInfo* secondary = SecondaryInfo();
      if (hr == DISP_E_UNKNOWNNAME && dispIds[0] == DISPID_UNKNOWN && secondary) {
        const HRESULT found = DispGetIDsOfNames(secondary, names, count, dispIds);
        if (dispIds[0] != DISPID_UNKNOWN && (dispIds[0] & kSecondaryMember) == 0) {
          dispIds[0] |= kSecondaryMember;
          return found;
        }
        dispIds[0] = DISPID_UNKNOWN;
      }
    }
    return hr;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID riid, LCID, WORD flags,
                                   DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception,
                                   UINT* argumentError) override {
    if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
    // ITypeInfo::Invoke reads the arrays as the counts say, without looking at them first.
    if (!params || (params->cArgs && !params->rgvarg) ||
        (params->cNamedArgs && !params->rgdispidNamedArgs) || params->cNamedArgs > params->cArgs)
      return E_INVALIDARG;
    if constexpr (!std::is_void_v<Secondary>) {
      if (member & kSecondaryMember)
        return InvokeSecondary(member & ~kSecondaryMember, flags, params, result, exception,
                               argumentError);
    }
    ITypeInfo* info = VtableInfo();
    if (!info) return E_NOTIMPL;
    return DispInvoke(static_cast<Interface*>(this), info, member, flags, params, result,
                      exception, argumentError);
  }
#else
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
#endif

 private:
#ifdef _WIN32
  // Loaded once per interface and kept for the life of the module.
  static ITypeInfo* DispatchInfo() {
    static ITypeInfo* const info = TypeInfoOf(IidOf<Interface>());
    return info;
  }
  // The vtable half of the dual interface, which ITypeInfo::Invoke calls through.
  static ITypeInfo* VtableInfo() {
    static ITypeInfo* const info = [] {
      ITypeInfo* dispatch = DispatchInfo();
      ITypeInfo* vtable = nullptr;
      HREFTYPE ref = 0;
      if (dispatch && SUCCEEDED(dispatch->GetRefTypeOfImplType(UINT(-1), &ref)))
        dispatch->GetRefTypeInfo(ref, &vtable);
      return vtable;
    }();
    return info;
  }
  static ITypeInfo* SecondaryInfo() {
    if constexpr (std::is_void_v<Secondary>) {
      return nullptr;
    } else {
      static ITypeInfo* const info = TypeInfoOf(IidOf<Secondary>());
      return info;
    }
  }
  HRESULT InvokeSecondary(DISPID member, WORD flags, DISPPARAMS* params, VARIANT* result,
                          EXCEPINFO* exception, UINT* argumentError) {
    ITypeInfo* info = SecondaryInfo();
    if (!info) return DISP_E_MEMBERNOTFOUND;
    IUnknown* secondary = nullptr;
    if (FAILED(this->QueryInterface(IidOf<Secondary>(), reinterpret_cast<void**>(&secondary))))
      return DISP_E_MEMBERNOTFOUND;
    const HRESULT hr = InvokeByTypeInfo(secondary, info, member, flags, params, result, exception,
                                        argumentError);
    secondary->Release();
    return hr;
  }
#else
  static ITypeInfo* DispatchInfo() { return nullptr; }
#endif
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

// The module's count of live objects and of class object locks (component/Module.cpp): the
// module can be unloaded when both are zero.
void ModuleObjectCreated();
void ModuleObjectDestroyed();
HRESULT ModuleLockServer(bool lock);

// One live object of the module for the lifetime of this member.
class ModuleObjectCount {
 public:
  ModuleObjectCount() { ModuleObjectCreated(); }
  ~ModuleObjectCount() { ModuleObjectDestroyed(); }
  ModuleObjectCount(const ModuleObjectCount&) = delete;
  ModuleObjectCount& operator=(const ModuleObjectCount&) = delete;
};

// The COM object of a class T as created without an outer object. T implements its interfaces
// and answers `void* FindInterface(REFIID)` (the interface, not yet counted, or null; the primary
// interface for IUnknown); the reference count and IUnknown are this object's.
template <class T>
class CComObject final : public T, private CRefCounted<CComObject<T>> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    *ppv = T::FindInterface(riid);
    if (!*ppv) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return this->AddRefImpl(); }
  ULONG STDMETHODCALLTYPE Release() override { return this->ReleaseImpl(); }

 private:
  friend class CRefCounted<CComObject<T>>;
  ModuleObjectCount counted_;
};

// T inside an aggregate: every IUnknown call on T's interfaces goes to the outer object.
template <class T>
class CContainedObject final : public T {
 public:
  explicit CContainedObject(IUnknown* outer) : outer_(outer) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    return outer_->QueryInterface(riid, ppv);
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return outer_->AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return outer_->Release(); }

 private:
  IUnknown* outer_;  // not counted: the outer object owns this one
};

// The inner unknown of T created inside an outer object: it alone counts the aggregate's
// references to T, answers IUnknown as itself and T's interfaces as the contained object's.
template <class T>
class CAggregatedObject final : public IUnknown, private CRefCounted<CAggregatedObject<T>> {
 public:
  explicit CAggregatedObject(IUnknown* outer) : contained_(outer) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    if (riid == IidOf<IUnknown>()) {
      *ppv = static_cast<IUnknown*>(this);
      AddRef();
      return S_OK;
    }
    *ppv = contained_.FindInterface(riid);
    if (!*ppv) return E_NOINTERFACE;
    contained_.AddRef();  // the outer object's count, as for any interface it hands out
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return this->AddRefImpl(); }
  ULONG STDMETHODCALLTYPE Release() override { return this->ReleaseImpl(); }

 private:
  friend class CRefCounted<CAggregatedObject<T>>;
  ModuleObjectCount counted_;
  CContainedObject<T> contained_;
};

// Creates a T and returns its interface `riid`; the object goes away again when it has no such
// interface. With an outer object the caller must ask for IUnknown and gets the inner unknown
// (CLASS_E_NOAGGREGATION otherwise, as COM requires).
template <class T>
HRESULT CreateComObject(IUnknown* outer, REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  if (outer) {
    if (riid != IidOf<IUnknown>()) return CLASS_E_NOAGGREGATION;
    auto* inner = new (std::nothrow) CAggregatedObject<T>(outer);
    if (!inner) return E_OUTOFMEMORY;
    inner->AddRef();
    *ppv = static_cast<IUnknown*>(inner);
    return S_OK;
  }
  auto* object = new (std::nothrow) CComObject<T>();
  if (!object) return E_OUTOFMEMORY;
  object->AddRef();
  const HRESULT hr = object->QueryInterface(riid, ppv);
  object->Release();
  return hr;
}
template <class T>
HRESULT CreateComObject(REFIID riid, void** ppv) {
  return CreateComObject<T>(nullptr, riid, ppv);
}

// The class object of T: a module-lifetime object (its references are not counted) that creates
// T, alone or inside an outer object; LockServer keeps the module loaded.
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
    return CreateComObject<T>(outer, riid, ppv);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override { return ModuleLockServer(lock != FALSE); }
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
