// Automation by name for an interface without a dispatch part: the calls a script makes that
// ITypeInfo::Invoke alone cannot carry (see InvokeByTypeInfo).
#include "component/ComObject.h"

#ifdef _WIN32

#include <vector>

namespace parcelon {
namespace {

// The function description of method `member` of the interface `info` describes or of one it
// derives from, when every one of its parameters is a pointer to a pointer (a place no script can
// pass); null otherwise. The caller releases it through `owner`.
FUNCDESC* PointerOnlyMethod(ITypeInfo* info, DISPID member, ITypeInfo*& owner) {
  TYPEATTR* attributes = nullptr;
  if (FAILED(info->GetTypeAttr(&attributes))) return nullptr;
  const UINT count = attributes->cFuncs;
  info->ReleaseTypeAttr(attributes);
  for (UINT index = 0; index < count; ++index) {
    FUNCDESC* function = nullptr;
    if (FAILED(info->GetFuncDesc(index, &function))) return nullptr;
    bool pointersOnly = function->memid == member && function->invkind == INVOKE_FUNC &&
                        function->cParams > 0;
    for (SHORT i = 0; pointersOnly && i < function->cParams; ++i) {
      const TYPEDESC& type = function->lprgelemdescParam[i].tdesc;
      pointersOnly = type.vt == VT_PTR && type.lptdesc->vt == VT_PTR;
    }
    if (pointersOnly) {
      info->AddRef();
      owner = info;
      return function;
    }
    info->ReleaseFuncDesc(function);
  }
  HREFTYPE base = 0;
  ITypeInfo* baseInfo = nullptr;
  if (FAILED(info->GetRefTypeOfImplType(0, &base)) || FAILED(info->GetRefTypeInfo(base, &baseInfo)))
    return nullptr;
  FUNCDESC* function = PointerOnlyMethod(baseInfo, member, owner);
  baseInfo->Release();
  return function;
}

// Calls `function` of `object` with a scratch place for each of its pointer parameters, each
// passed as an integer of a pointer's size.
HRESULT CallWithScratchPlaces(IUnknown* object, const FUNCDESC& function) {
  constexpr VARTYPE kPointerSized = sizeof(void*) == 8 ? VT_I8 : VT_I4;
  const size_t count = size_t(function.cParams);
  std::vector<void*> places(count, nullptr);
  std::vector<VARIANTARG> arguments(count);
  std::vector<VARIANTARG*> argumentPointers(count);
  std::vector<VARTYPE> types(count, kPointerSized);
  for (size_t i = 0; i < count; ++i) {
    VariantInit(&arguments[i]);
    arguments[i].vt = kPointerSized;
    if constexpr (kPointerSized == VT_I8)
      arguments[i].llVal = LONGLONG(reinterpret_cast<intptr_t>(&places[i]));
    else
      arguments[i].lVal = LONG(reinterpret_cast<intptr_t>(&places[i]));
    argumentPointers[i] = &arguments[i];
  }
  VARIANT returned;
  VariantInit(&returned);
  const HRESULT called = DispCallFunc(object, function.oVft, CC_STDCALL, VT_ERROR, UINT(count),
                                      types.data(), argumentPointers.data(), &returned);
  return FAILED(called) ? called : returned.scode;
}

}  // namespace

HRESULT InvokeByTypeInfo(IUnknown* object, ITypeInfo* info, DISPID member, WORD flags,
                         DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception,
                         UINT* argumentError) {
  if (!params) return E_INVALIDARG;
  HRESULT hr = DISP_E_MEMBERNOTFOUND;
  if ((flags & DISPATCH_METHOD) && params->cArgs == 0) {
    ITypeInfo* owner = nullptr;
    if (FUNCDESC* function = PointerOnlyMethod(info, member, owner)) {
      hr = CallWithScratchPlaces(object, *function);
      owner->ReleaseFuncDesc(function);
      owner->Release();
      if (FAILED(hr)) {
        if (exception) {
          *exception = EXCEPINFO{};
          exception->scode = hr;
        }
        return DISP_E_EXCEPTION;
      }
    }
  }
  if (hr == DISP_E_MEMBERNOTFOUND)
    hr = DispInvoke(object, info, member, flags, params, result, exception, argumentError);
  if (hr == DISP_E_MEMBERNOTFOUND && (flags & DISPATCH_METHOD) && params->cArgs > 0 &&
      params->cNamedArgs == 0) {
    // The arguments come last first: the first one is the value put.
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS asPut{params->rgvarg, &put, params->cArgs, 1};
    hr = DispInvoke(object, info, member, DISPATCH_PROPERTYPUT, &asPut, nullptr, exception,
                    argumentError);
  }
  if (SUCCEEDED(hr) && result && result->vt == VT_EMPTY) {
    result->vt = VT_I4;
    result->lVal = hr;
  }
  return FAILED(hr) ? hr : S_OK;
}

}  // namespace parcelon

#endif  // _WIN32
