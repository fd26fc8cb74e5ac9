// COM base types: the Windows SDK's on Windows, a small binary-compatible adapter elsewhere.
//
// Off Windows the adapter supplies HRESULT and its codes, GUID, IUnknown and IClassFactory with
// the Windows slot order, BSTR as length-prefixed UTF-16 (OLECHAR is char16_t), VARIANT for the
// types the component uses, DECIMAL, VARIANT_BOOL and DATE, and an in-process class table behind
// CoCreateInstance/CoRegisterClassObject. Everything else is shared code on both targets.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#include <oleauto.h>
#include <objbase.h>

#define PARCELON_OLESTR(s) L##s

#else  // !_WIN32

typedef int32_t HRESULT;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef int64_t LONGLONG;
typedef uint64_t ULONGLONG;
typedef uint32_t DWORD;
typedef uint16_t WORD;
typedef uint16_t USHORT;
typedef int16_t SHORT;
typedef uint8_t BYTE;
typedef int32_t INT;
typedef uint32_t UINT;
typedef int32_t BOOL;
typedef char16_t OLECHAR;
typedef char16_t WCHAR;
typedef OLECHAR* BSTR;
typedef const OLECHAR* LPCOLESTR;
typedef OLECHAR* LPOLESTR;
typedef short VARIANT_BOOL;
typedef double DATE;
typedef uint16_t VARTYPE;

#define PARCELON_OLESTR(s) u##s
#define OLESTR(s) u##s

#define STDMETHODCALLTYPE
#define STDAPI extern "C" HRESULT
#define WINAPI

#define TRUE 1
#define FALSE 0
#define VARIANT_TRUE ((VARIANT_BOOL)-1)
#define VARIANT_FALSE ((VARIANT_BOOL)0)

#define SUCCEEDED(hr) (((HRESULT)(hr)) >= 0)
#define FAILED(hr) (((HRESULT)(hr)) < 0)
#define HRESULT_CODE(hr) ((hr)&0xFFFF)
#define HRESULT_FACILITY(hr) (((hr) >> 16) & 0x1FFF)
#define MAKE_HRESULT(sev, fac, code) \
  ((HRESULT)(((uint32_t)(sev) << 31) | ((uint32_t)(fac) << 16) | ((uint32_t)(code))))
#define FACILITY_ITF 4
#define FACILITY_WIN32 7
#define SEVERITY_ERROR 1

constexpr HRESULT HRESULT_FROM_WIN32(uint32_t x) {
  return (HRESULT)x <= 0 ? (HRESULT)x : (HRESULT)((x & 0x0000FFFF) | (FACILITY_WIN32 << 16) | 0x80000000);
}

#define S_OK ((HRESULT)0)
#define S_FALSE ((HRESULT)1)
#define E_NOTIMPL ((HRESULT)0x80004001L)
#define E_NOINTERFACE ((HRESULT)0x80004002L)
#define E_POINTER ((HRESULT)0x80004003L)
#define E_ABORT ((HRESULT)0x80004004L)
#define E_FAIL ((HRESULT)0x80004005L)
#define E_UNEXPECTED ((HRESULT)0x8000FFFFL)
#define E_ACCESSDENIED ((HRESULT)0x80070005L)
#define E_HANDLE ((HRESULT)0x80070006L)
#define E_OUTOFMEMORY ((HRESULT)0x8007000EL)
#define E_INVALIDARG ((HRESULT)0x80070057L)
#define CLASS_E_NOAGGREGATION ((HRESULT)0x80040110L)
#define CLASS_E_CLASSNOTAVAILABLE ((HRESULT)0x80040111L)
#define REGDB_E_CLASSNOTREG ((HRESULT)0x80040154L)
#define CO_E_CLASSSTRING ((HRESULT)0x800401F3L)
#define DISP_E_BADVARTYPE ((HRESULT)0x80020008L)
#define DISP_E_OVERFLOW ((HRESULT)0x8002000AL)
#define DISP_E_TYPEMISMATCH ((HRESULT)0x80020005L)
#define DISP_E_DIVBYZERO ((HRESULT)0x80020012L)
#define STG_E_FILENOTFOUND ((HRESULT)0x80030002L)
#define STG_E_ACCESSDENIED ((HRESULT)0x80030005L)
#define ERROR_FILE_NOT_FOUND 2L
#define ERROR_ACCESS_DENIED 5L

// GUID with the Windows memory layout.
struct GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
};
typedef GUID IID;
typedef GUID CLSID;
typedef const GUID& REFGUID;
typedef const IID& REFIID;
typedef const CLSID& REFCLSID;

inline bool IsEqualGUID(REFGUID a, REFGUID b) { return __builtin_memcmp(&a, &b, sizeof(GUID)) == 0; }
#define IsEqualIID(a, b) IsEqualGUID(a, b)
#define IsEqualCLSID(a, b) IsEqualGUID(a, b)
inline bool operator==(REFGUID a, REFGUID b) { return IsEqualGUID(a, b); }
inline bool operator!=(REFGUID a, REFGUID b) { return !IsEqualGUID(a, b); }

// The interfaces declare no virtual destructor, so the vtable holds exactly the methods in
// declaration order, as on Windows.
struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;
};
typedef IUnknown* LPUNKNOWN;

struct IClassFactory : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) = 0;
  virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) = 0;
};

extern const IID IID_IUnknown;
extern const IID IID_IClassFactory;
extern const GUID GUID_NULL;

// DECIMAL with the Windows layout: 96-bit magnitude, sign byte, scale byte.
#define DECIMAL_NEG ((BYTE)0x80)
struct DECIMAL {
  USHORT wReserved;
  union {
    struct {
      BYTE scale;
      BYTE sign;
    };
    USHORT signscale;
  };
  ULONG Hi32;
  union {
    struct {
      ULONG Lo32;
      ULONG Mid32;
    };
    ULONGLONG Lo64;
  };
};

enum VARENUM : VARTYPE {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_DATE = 7,
  VT_BSTR = 8,
  VT_ERROR = 10,
  VT_BOOL = 11,
  VT_UNKNOWN = 13,
  VT_DECIMAL = 14,
  VT_I1 = 16,
  VT_UI1 = 17,
  VT_UI2 = 18,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
};

// VARIANT with the Windows layout: a DECIMAL overlays the whole 16 bytes of the value part.
struct VARIANT {
  union {
    struct {
      VARTYPE vt;
      WORD wReserved1;
      WORD wReserved2;
      WORD wReserved3;
      union {
        LONGLONG llVal;
        LONG lVal;
        BYTE bVal;
        SHORT iVal;
        float fltVal;
        double dblVal;
        VARIANT_BOOL boolVal;
        HRESULT scode;
        DATE date;
        BSTR bstrVal;
        IUnknown* punkVal;
        signed char cVal;
        USHORT uiVal;
        ULONG ulVal;
        ULONGLONG ullVal;
        INT intVal;
        UINT uintVal;
      };
    };
    DECIMAL decVal;
  };
};
typedef VARIANT VARIANTARG;
#define V_VT(v) ((v)->vt)

// BSTR: a 32-bit byte count, the UTF-16 text, a 16-bit terminator. A null BSTR reads as empty.
BSTR SysAllocString(const OLECHAR* text);
BSTR SysAllocStringLen(const OLECHAR* text, UINT length);
BSTR SysAllocStringByteLen(const char* bytes, UINT byteLength);
INT SysReAllocString(BSTR* target, const OLECHAR* text);
INT SysReAllocStringLen(BSTR* target, const OLECHAR* text, UINT length);
void SysFreeString(BSTR text);
UINT SysStringLen(BSTR text);
UINT SysStringByteLen(BSTR text);

void VariantInit(VARIANT* v);
HRESULT VariantClear(VARIANT* v);
HRESULT VariantCopy(VARIANT* dest, const VARIANT* src);
#define VARIANT_NOVALUEPROP 0x1
HRESULT VariantChangeType(VARIANT* dest, const VARIANT* src, USHORT flags, VARTYPE vt);

HRESULT CLSIDFromString(LPCOLESTR text, CLSID* clsid);
int StringFromGUID2(REFGUID guid, LPOLESTR buffer, int capacity);

// The in-process class table (one per process: platform/ComClassTable.cpp is a shared library).
// Classes are registered by CLSID, class names by text; CoCreateInstance asks the registered
// class object. There is no out-of-process server.
#define CLSCTX_INPROC_SERVER 0x1
#define CLSCTX_ALL 0x17
#define REGCLS_MULTIPLEUSE 1
HRESULT CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD context, REFIID riid, void** ppv);
HRESULT CoGetClassObject(REFCLSID clsid, DWORD context, void* reserved, REFIID riid, void** ppv);
HRESULT CoRegisterClassObject(REFCLSID clsid, IUnknown* classObject, DWORD context, DWORD flags,
                              DWORD* cookie);
HRESULT CoRevokeClassObject(DWORD cookie);
// The class registered under a class name (ProgID, at most 39 characters); CO_E_CLASSSTRING when
// none is.
HRESULT CLSIDFromProgID(LPCOLESTR progId, CLSID* clsid);

namespace parcelon {
// The adapter's stand-in for the registry's class names: RegisterProgId makes CLSIDFromProgID
// answer `clsid` for `progId` (replacing an earlier entry); UnregisterProgId removes the entry
// (S_FALSE when there was none).
HRESULT RegisterProgId(LPCOLESTR progId, REFCLSID clsid);
HRESULT UnregisterProgId(LPCOLESTR progId);
}  // namespace parcelon

#endif  // _WIN32

// Interface identifiers by type, on both targets: IidOf<IFoo>() names IFoo's IID.
template <class T>
struct InterfaceId;

template <class T>
constexpr const IID& IidOf() {
  return InterfaceId<T>::value;
}

namespace parcelon {

// Compile-time reading of a GUID's published text "XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX" (braces
// optional, hex digits of either case). Every identifier the code names is written in that form,
// so that it can be compared with its publication by eye; a malformed text fails to compile.
namespace guid_text {
// Not constant expressions: reaching one while reading a text at compile time stops the build
// with the function's name in the diagnostic.
void NotAHexDigit();
void MisplacedDashOrBrace();

consteval unsigned HexDigit(char c) {
  if (c >= '0' && c <= '9') return unsigned(c - '0');
  if (c >= 'a' && c <= 'f') return unsigned(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return unsigned(c - 'A' + 10);
  NotAHexDigit();
  return 0;
}
consteval uint64_t Hex(const char* text, int digits) {
  uint64_t value = 0;
  for (int i = 0; i < digits; ++i) value = value << 4 | HexDigit(text[i]);
  return value;
}
}  // namespace guid_text

template <size_t N>
consteval GUID GuidFromText(const char (&text)[N]) {
  static_assert(N == 37 || N == 39, "a GUID text has 36 characters, 38 with braces");
  const char* p = text;
  if constexpr (N == 39) {
    if (text[0] != '{' || text[37] != '}') guid_text::MisplacedDashOrBrace();
    ++p;
  }
  if (p[8] != '-' || p[13] != '-' || p[18] != '-' || p[23] != '-')
    guid_text::MisplacedDashOrBrace();
  GUID guid{};
  guid.Data1 = uint32_t(guid_text::Hex(p, 8));
  guid.Data2 = uint16_t(guid_text::Hex(p + 9, 4));
  guid.Data3 = uint16_t(guid_text::Hex(p + 14, 4));
  guid.Data4[0] = uint8_t(guid_text::Hex(p + 19, 2));
  guid.Data4[1] = uint8_t(guid_text::Hex(p + 21, 2));
  for (int i = 0; i < 6; ++i) guid.Data4[2 + i] = uint8_t(guid_text::Hex(p + 24 + 2 * i, 2));
  return guid;
}

}  // namespace parcelon

// Declares the IID of `Interface` from its text: PARCELON_DECLARE_IID(IFoo, "XXXXXXXX-...").
#define PARCELON_DECLARE_IID(Interface, text)                                         \
  template <>                                                                         \
  struct InterfaceId<Interface> {                                                     \
    static constexpr IID value = parcelon::GuidFromText(text);                        \
  };

PARCELON_DECLARE_IID(IUnknown, "00000000-0000-0000-C000-000000000046")
PARCELON_DECLARE_IID(IClassFactory, "00000001-0000-0000-C000-000000000046")

namespace parcelon {

// Parses "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" (braces optional, hex digits of either case).
bool ParseGuid(const char* text, GUID& out);
// Formats as "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" in upper case, 38 characters.
void FormatGuid(const GUID& guid, char (&out)[39]);

}  // namespace parcelon
