// IDispatch, the automation interface that dual interfaces derive from: the SDK's on Windows,
// a declaration with the Windows slot order elsewhere.
//
// Off Windows nothing drives automation by name, so the adapter declares only what the slot order
// and the method signatures need: DISPID, LCID, DISPPARAMS, EXCEPINFO and an opaque ITypeInfo.
#pragma once

#include "platform/ComBase.h"

#ifndef _WIN32

typedef LONG DISPID;
typedef DWORD LCID;
typedef LONG SCODE;

struct ITypeInfo;  // Type information is not available off Windows.

struct DISPPARAMS {
  VARIANTARG* rgvarg;
  DISPID* rgdispidNamedArgs;
  UINT cArgs;
  UINT cNamedArgs;
};

struct EXCEPINFO {
  WORD wCode;
  WORD wReserved;
  BSTR bstrSource;
  BSTR bstrDescription;
  BSTR bstrHelpFile;
  DWORD dwHelpContext;
  void* pvReserved;
  HRESULT(STDMETHODCALLTYPE* pfnDeferredFillIn)(EXCEPINFO*);
  SCODE scode;
};

#define DISPATCH_METHOD 0x1
#define DISPATCH_PROPERTYGET 0x2
#define DISPATCH_PROPERTYPUT 0x4
#define DISPATCH_PROPERTYPUTREF 0x8
#define DISPID_UNKNOWN (-1)
#define DISP_E_UNKNOWNNAME ((HRESULT)0x80020006L)
#define DISP_E_MEMBERNOTFOUND ((HRESULT)0x80020003L)
#define TYPE_E_ELEMENTNOTFOUND ((HRESULT)0x8002802BL)

struct IDispatch : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** typeInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count,
                                                  LCID locale, DISPID* dispIds) = 0;
  virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID riid, LCID locale, WORD flags,
                                           DISPPARAMS* params, VARIANT* result,
                                           EXCEPINFO* exception, UINT* argumentError) = 0;
};

#endif  // !_WIN32

PARCELON_DECLARE_IID(IDispatch, "00020400-0000-0000-C000-000000000046")
