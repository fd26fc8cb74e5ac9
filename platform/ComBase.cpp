// The COM adapter's functions off Windows (BSTR, VARIANT, GUID text, class table), and the
// GUID text helpers shared by both targets.
#include "platform/ComBase.h"

#include <cerrno>
#include <cinttypes>
#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

namespace parcelon {

namespace {
int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool ParseHex(const char*& p, int digits, uint64_t& out) {
  out = 0;
  for (int i = 0; i < digits; ++i) {
    const int v = HexValue(*p);
    if (v < 0) return false;
    out = out << 4 | unsigned(v);
    ++p;
  }
  return true;
}
}  // namespace

bool ParseGuid(const char* text, GUID& out) {
  if (!text) return false;
  const char* p = text;
  const bool braced = *p == '{';
  if (braced) ++p;
  static constexpr int kGroups[] = {8, 4, 4, 4, 12};
  uint64_t group[5];
  for (int g = 0; g < 5; ++g) {
    if (!ParseHex(p, kGroups[g], group[g])) return false;
    if (g < 4 && *p++ != '-') return false;
  }
  if (braced && *p++ != '}') return false;
  if (*p != '\0') return false;
  out.Data1 = uint32_t(group[0]);
  out.Data2 = uint16_t(group[1]);
  out.Data3 = uint16_t(group[2]);
  out.Data4[0] = uint8_t(group[3] >> 8);
  out.Data4[1] = uint8_t(group[3]);
  for (int i = 0; i < 6; ++i) out.Data4[2 + i] = uint8_t(group[4] >> (40 - 8 * i));
  return true;
}

void FormatGuid(const GUID& g, char (&out)[39]) {
  std::snprintf(out, sizeof out, "{%08" PRIX32 "-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                uint32_t(g.Data1), unsigned(g.Data2), unsigned(g.Data3), g.Data4[0], g.Data4[1],
                g.Data4[2], g.Data4[3], g.Data4[4], g.Data4[5], g.Data4[6], g.Data4[7]);
}

}  // namespace parcelon

#ifndef _WIN32

const IID IID_IUnknown = InterfaceId<IUnknown>::value;
const IID IID_IClassFactory = InterfaceId<IClassFactory>::value;
const GUID GUID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

// ---------------------------------------------------------------------------------------------
// BSTR

namespace {
// Largest byte count whose allocation (prefix, text, terminator) still fits the signed length.
constexpr uint64_t kMaxBstrBytes = uint64_t(INT32_MAX) - sizeof(uint32_t) - sizeof(OLECHAR);

BSTR AllocBstrBytes(const void* bytes, uint64_t byteLength) {
  if (byteLength > kMaxBstrBytes) return nullptr;
  auto* block = static_cast<char*>(std::malloc(sizeof(uint32_t) + byteLength + sizeof(OLECHAR) + 1));
  if (!block) return nullptr;
  const auto length32 = uint32_t(byteLength);
  std::memcpy(block, &length32, sizeof length32);
  char* text = block + sizeof(uint32_t);
  if (bytes) std::memcpy(text, bytes, byteLength);
  // Two terminating zero bytes after the text, plus one more so that an odd byte length still
  // ends in a whole zero OLECHAR.
  text[byteLength] = text[byteLength + 1] = text[byteLength + 2] = 0;
  return reinterpret_cast<BSTR>(text);
}

size_t OleLength(const OLECHAR* text) {
  size_t n = 0;
  while (text[n]) ++n;
  return n;
}
}  // namespace

BSTR SysAllocString(const OLECHAR* text) {
  if (!text) return nullptr;
  return AllocBstrBytes(text, uint64_t(OleLength(text)) * sizeof(OLECHAR));
}

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
  return AllocBstrBytes(text, uint64_t(length) * sizeof(OLECHAR));
}

BSTR SysAllocStringByteLen(const char* bytes, UINT byteLength) {
  return AllocBstrBytes(bytes, byteLength);
}

void SysFreeString(BSTR text) {
  if (text) std::free(reinterpret_cast<char*>(text) - sizeof(uint32_t));
}

UINT SysStringByteLen(BSTR text) {
  if (!text) return 0;
  uint32_t bytes;
  std::memcpy(&bytes, reinterpret_cast<const char*>(text) - sizeof(uint32_t), sizeof bytes);
  return bytes;
}

UINT SysStringLen(BSTR text) { return SysStringByteLen(text) / sizeof(OLECHAR); }

INT SysReAllocStringLen(BSTR* target, const OLECHAR* text, UINT length) {
  if (!target) return FALSE;
  BSTR fresh = SysAllocStringLen(text, length);
  if (!fresh) return FALSE;
  // Without new text the old text stays, as far as it fits: the string is reallocated.
  if (!text && *target)
    std::memcpy(fresh, *target, sizeof(OLECHAR) * std::min<size_t>(length, SysStringLen(*target)));
  SysFreeString(*target);
  *target = fresh;
  return TRUE;
}

INT SysReAllocString(BSTR* target, const OLECHAR* text) {
  if (!target) return FALSE;
  // No text gives no string, as SysAllocString(nullptr) does.
  if (!text) {
    SysFreeString(*target);
    *target = nullptr;
    return TRUE;
  }
  return SysReAllocStringLen(target, text, UINT(OleLength(text)));
}

// ---------------------------------------------------------------------------------------------
// VARIANT

void VariantInit(VARIANT* v) {
  if (!v) return;
  v->vt = VT_EMPTY;
  v->wReserved1 = v->wReserved2 = v->wReserved3 = 0;
  v->llVal = 0;
}

HRESULT VariantClear(VARIANT* v) {
  if (!v) return E_INVALIDARG;
  switch (v->vt) {
    case VT_BSTR:
      SysFreeString(v->bstrVal);
      break;
    case VT_UNKNOWN:
      if (v->punkVal) v->punkVal->Release();
      break;
    default:
      break;
  }
  VariantInit(v);
  return S_OK;
}

HRESULT VariantCopy(VARIANT* dest, const VARIANT* src) {
  if (!dest || !src) return E_INVALIDARG;
  if (dest == src) return S_OK;
  VARIANT copy = *src;
  if (src->vt == VT_BSTR && src->bstrVal) {
    copy.bstrVal = SysAllocStringByteLen(reinterpret_cast<const char*>(src->bstrVal),
                                         SysStringByteLen(src->bstrVal));
    if (!copy.bstrVal) return E_OUTOFMEMORY;
  } else if (src->vt == VT_UNKNOWN && src->punkVal) {
    src->punkVal->AddRef();
  }
  VariantClear(dest);
  *dest = copy;
  return S_OK;
}

namespace {

bool IsIntegral(VARTYPE vt) {
  switch (vt) {
    case VT_I1: case VT_I2: case VT_I4: case VT_I8: case VT_INT:
    case VT_UI1: case VT_UI2: case VT_UI4: case VT_UI8: case VT_UINT: case VT_BOOL:
      return true;
    default:
      return false;
  }
}

// Reads any integral variant as a 128-bit-safe pair: value and whether it is an unsigned 64-bit
// value above INT64_MAX.
bool ReadIntegral(const VARIANT& v, int64_t& value, bool& hugeUnsigned) {
  hugeUnsigned = false;
  switch (v.vt) {
    case VT_I1: value = v.cVal; return true;
    case VT_I2: value = v.iVal; return true;
    case VT_I4: value = v.lVal; return true;
    case VT_INT: value = v.intVal; return true;
    case VT_I8: value = v.llVal; return true;
    case VT_UI1: value = v.bVal; return true;
    case VT_UI2: value = v.uiVal; return true;
    case VT_UI4: value = v.ulVal; return true;
    case VT_UINT: value = v.uintVal; return true;
    case VT_BOOL: value = v.boolVal; return true;
    case VT_UI8:
      if (v.ullVal > uint64_t(INT64_MAX)) hugeUnsigned = true;
      value = int64_t(v.ullVal);
      return true;
    default: return false;
  }
}

// Rounds half to even, as the Automation conversions do.
bool DoubleToInt64(double d, int64_t& out) {
  if (!std::isfinite(d)) return false;
  const double r = std::nearbyint(d);
  if (r < -9223372036854775808.0 || r >= 9223372036854775808.0) return false;
  out = int64_t(r);
  return true;
}

HRESULT StoreIntegral(VARIANT& out, VARTYPE vt, int64_t value, bool hugeUnsigned) {
  auto inRange = [&](int64_t lo, int64_t hi) { return !hugeUnsigned && value >= lo && value <= hi; };
  switch (vt) {
    case VT_I1: if (!inRange(INT8_MIN, INT8_MAX)) return DISP_E_OVERFLOW; out.cVal = (signed char)value; break;
    case VT_I2: if (!inRange(INT16_MIN, INT16_MAX)) return DISP_E_OVERFLOW; out.iVal = SHORT(value); break;
    case VT_I4: if (!inRange(INT32_MIN, INT32_MAX)) return DISP_E_OVERFLOW; out.lVal = LONG(value); break;
    case VT_INT: if (!inRange(INT32_MIN, INT32_MAX)) return DISP_E_OVERFLOW; out.intVal = INT(value); break;
    case VT_I8: if (hugeUnsigned) return DISP_E_OVERFLOW; out.llVal = value; break;
    case VT_UI1: if (!inRange(0, UINT8_MAX)) return DISP_E_OVERFLOW; out.bVal = BYTE(value); break;
    case VT_UI2: if (!inRange(0, UINT16_MAX)) return DISP_E_OVERFLOW; out.uiVal = USHORT(value); break;
    case VT_UI4: if (!inRange(0, UINT32_MAX)) return DISP_E_OVERFLOW; out.ulVal = ULONG(value); break;
    case VT_UINT: if (!inRange(0, UINT32_MAX)) return DISP_E_OVERFLOW; out.uintVal = UINT(value); break;
    case VT_UI8: if (!hugeUnsigned && value < 0) return DISP_E_OVERFLOW; out.ullVal = uint64_t(value); break;
    case VT_BOOL: out.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE; break;
    case VT_R8: out.dblVal = hugeUnsigned ? double(uint64_t(value)) : double(value); break;
    case VT_R4: out.fltVal = hugeUnsigned ? float(uint64_t(value)) : float(value); break;
    case VT_DATE: out.date = double(value); break;
    default: return DISP_E_TYPEMISMATCH;
  }
  out.vt = vt;
  return S_OK;
}

bool ReadDouble(const VARIANT& v, double& out) {
  switch (v.vt) {
    case VT_R8: out = v.dblVal; return true;
    case VT_R4: out = v.fltVal; return true;
    case VT_DATE: out = v.date; return true;
    default: return false;
  }
}

BSTR AsciiToBstr(const char* text) {
  const size_t n = std::strlen(text);
  BSTR out = SysAllocStringLen(nullptr, UINT(n));
  if (!out) return nullptr;
  for (size_t i = 0; i < n; ++i) out[i] = OLECHAR(static_cast<unsigned char>(text[i]));
  return out;
}

// Reads an ASCII number from a BSTR: optional blanks, then the number, then optional blanks.
bool BstrToAscii(BSTR text, std::string& out) {
  const UINT n = SysStringLen(text);
  if (n > 400) return false;
  out.clear();
  for (UINT i = 0; i < n; ++i) {
    if (text[i] > 0x7F) return false;
    out.push_back(char(text[i]));
  }
  return true;
}

bool IsBlankChar(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsDigitChar(char c) { return c >= '0' && c <= '9'; }

// Reads a number as VariantChangeType accepts it from text, in the invariant form: blanks around
// an optional sign, digits with an optional fraction, an optional exponent. Hexadecimal, "inf"
// and "nan" are not numbers. Integers are read exactly (VT_I8, or VT_UI8 above INT64_MAX);
// anything else becomes a VT_R8. `beyond64Bits` tells an integer that no 64-bit type holds, whose
// double might round back into range.
HRESULT ParseNumber(const std::string& text, VARIANT& out, bool& beyond64Bits) {
  beyond64Bits = false;
  size_t begin = 0, end = text.size();
  while (begin < end && IsBlankChar(text[begin])) ++begin;
  while (end > begin && IsBlankChar(text[end - 1])) --end;
  const std::string number = text.substr(begin, end - begin);
  size_t i = 0;
  if (i < number.size() && (number[i] == '+' || number[i] == '-')) ++i;
  const size_t unsignedStart = i;
  size_t digits = 0;
  bool integer = true;
  for (; i < number.size() && IsDigitChar(number[i]); ++i) ++digits;
  if (i < number.size() && number[i] == '.') {
    integer = false;
    for (++i; i < number.size() && IsDigitChar(number[i]); ++i) ++digits;
  }
  if (digits == 0) return DISP_E_TYPEMISMATCH;
  if (i < number.size() && (number[i] == 'e' || number[i] == 'E')) {
    integer = false;
    ++i;
    if (i < number.size() && (number[i] == '+' || number[i] == '-')) ++i;
    const size_t exponentStart = i;
    while (i < number.size() && IsDigitChar(number[i])) ++i;
    if (i == exponentStart) return DISP_E_TYPEMISMATCH;
  }
  if (i != number.size()) return DISP_E_TYPEMISMATCH;

  VariantInit(&out);
  const char* last = number.data() + number.size();
  if (integer) {
    const bool negative = number[0] == '-';
    const char* digitsStart = number.data() + unsignedStart;
    uint64_t magnitude = 0;
    const auto parsed = std::from_chars(digitsStart, last, magnitude);
    if (parsed.ec == std::errc() && !negative) {
      if (magnitude <= uint64_t(INT64_MAX)) {
        out.vt = VT_I8;
        out.llVal = int64_t(magnitude);
      } else {
        out.vt = VT_UI8;
        out.ullVal = magnitude;
      }
      return S_OK;
    }
    if (parsed.ec == std::errc() && magnitude <= uint64_t(INT64_MAX) + 1) {
      out.vt = VT_I8;
      out.llVal = int64_t(0 - magnitude);
      return S_OK;
    }
    beyond64Bits = true;
  }
  const double value = std::strtod(number.c_str(), nullptr);
  // Overflow gives an infinite value; underflow gives zero or a denormal and is no error.
  if (!std::isfinite(value)) return DISP_E_OVERFLOW;
  out.vt = VT_R8;
  out.dblVal = value;
  return S_OK;
}

// VARIANT_ALPHABOOL: a VT_BOOL becomes "True" or "False" instead of "-1" or "0".
constexpr USHORT kAlphaBool = 0x2;

}  // namespace

HRESULT VariantChangeType(VARIANT* dest, const VARIANT* src, USHORT flags, VARTYPE vt) {
  if (!dest || !src) return E_INVALIDARG;
  VARIANT result;
  VariantInit(&result);
  int64_t i = 0;
  bool huge = false;
  double d = 0;
  if (src->vt == vt) {
    HRESULT hr = VariantCopy(&result, src);
    if (FAILED(hr)) return hr;
  } else if (vt == VT_EMPTY) {
    // result stays empty
  } else if (src->vt == VT_EMPTY) {
    if (vt == VT_BSTR) {
      result.vt = VT_BSTR;
      result.bstrVal = SysAllocStringLen(nullptr, 0);
      if (!result.bstrVal) return E_OUTOFMEMORY;
    } else {
      HRESULT hr = StoreIntegral(result, vt, 0, false);
      if (FAILED(hr)) return hr;
    }
  } else if (IsIntegral(src->vt) && ReadIntegral(*src, i, huge)) {
    if (vt == VT_BSTR) {
      char text[32];
      if (src->vt == VT_BOOL && (flags & kAlphaBool))
        std::snprintf(text, sizeof text, "%s", i ? "True" : "False");
      else if (huge)
        std::snprintf(text, sizeof text, "%" PRIu64, uint64_t(i));
      else
        std::snprintf(text, sizeof text, "%" PRId64, i);
      result.vt = VT_BSTR;
      result.bstrVal = AsciiToBstr(text);
      if (!result.bstrVal) return E_OUTOFMEMORY;
    } else {
      HRESULT hr = StoreIntegral(result, vt, i, huge);
      if (FAILED(hr)) return hr;
    }
  } else if (ReadDouble(*src, d)) {
    if (vt == VT_BSTR) {
      char text[40];
      // Fifteen significant digits for a double, seven for a float, capital exponent.
      if (src->vt == VT_R4)
        std::snprintf(text, sizeof text, "%.7G", d);
      else
        std::snprintf(text, sizeof text, "%.15G", d);
      result.vt = VT_BSTR;
      result.bstrVal = AsciiToBstr(text);
      if (!result.bstrVal) return E_OUTOFMEMORY;
    } else if (vt == VT_R8 || vt == VT_DATE || vt == VT_R4) {
      result.vt = vt;
      if (vt == VT_R4) result.fltVal = float(d); else result.dblVal = d;
    } else if (vt == VT_BOOL) {
      result.vt = VT_BOOL;
      result.boolVal = d != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    } else {
      int64_t rounded;
      if (!DoubleToInt64(d, rounded)) return DISP_E_OVERFLOW;
      HRESULT hr = StoreIntegral(result, vt, rounded, false);
      if (FAILED(hr)) return hr;
    }
  } else if (src->vt == VT_BSTR) {
    std::string text;
    if (!BstrToAscii(src->bstrVal, text)) return DISP_E_TYPEMISMATCH;
    VARIANT number;
    bool beyond64Bits;
    const HRESULT hr = ParseNumber(text, number, beyond64Bits);
    if (FAILED(hr)) return hr;
    if (beyond64Bits && IsIntegral(vt) && vt != VT_BOOL) return DISP_E_OVERFLOW;
    return VariantChangeType(dest, &number, flags, vt);
  } else {
    return DISP_E_TYPEMISMATCH;
  }
  VariantClear(dest);
  *dest = result;
  return S_OK;
}

// ---------------------------------------------------------------------------------------------
// GUID text in OLECHAR form

HRESULT CLSIDFromString(LPCOLESTR text, CLSID* clsid) {
  if (!clsid) return E_INVALIDARG;
  // No text names the null class.
  if (!text) {
    *clsid = GUID_NULL;
    return S_OK;
  }
  char narrow[40];
  size_t n = 0;
  for (; text[n] && n < sizeof narrow - 1; ++n) {
    if (text[n] > 0x7F) return CO_E_CLASSSTRING;
    narrow[n] = char(text[n]);
  }
  if (text[n]) return CO_E_CLASSSTRING;
  narrow[n] = '\0';
  if (narrow[0] != '{' || !parcelon::ParseGuid(narrow, *clsid)) return CO_E_CLASSSTRING;
  return S_OK;
}

int StringFromGUID2(REFGUID guid, LPOLESTR buffer, int capacity) {
  if (!buffer || capacity < 39) return 0;
  char text[39];
  parcelon::FormatGuid(guid, text);
  for (int i = 0; i < 39; ++i) buffer[i] = OLECHAR(text[i]);
  return 39;
}

#endif  // !_WIN32
