// VARIANT conversions, clearing and copying, checked alike against the adapter and against the
// system's oleaut32 (Wine), which makes the latter the oracle for the former.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "platform/ComBase.h"
#include "support/TestSupport.h"

namespace {

using parcelon::test::MakeBstr;

// VARIANT_ALPHABOOL: a VT_BOOL becomes "True"/"False" rather than "-1"/"0".
constexpr USHORT kAlphaBool = 0x2;

std::string Ascii(BSTR text) {
  std::string out;
  for (UINT i = 0; i < SysStringLen(text); ++i) out.push_back(char(text[i]));
  return out;
}

// A variant that owns its value.
struct Var : VARIANT {
  Var() { VariantInit(this); }
  ~Var() { VariantClear(this); }
  Var(const Var&) = delete;
  Var& operator=(const Var&) = delete;

  void SetText(const std::string& text) {
    VariantClear(this);
    vt = VT_BSTR;
    bstrVal = MakeBstr(text).Detach();
  }
};

// The destination holds a marker so that a failed conversion shows whether it was touched.
constexpr LONG kUntouched = 77;

struct ToI4Result {
  HRESULT hr;
  LONG value;
  VARTYPE vt;
};

ToI4Result ChangeToI4(VARIANT& source) {
  Var dest;
  dest.vt = VT_I4;
  dest.lVal = kUntouched;
  const HRESULT hr = VariantChangeType(&dest, &source, 0, VT_I4);
  return {hr, dest.lVal, dest.vt};
}

TEST(Variant, I8ToI4InRangeAndOverflow) {
  const struct {
    LONGLONG value;
    HRESULT hr;
    LONG expected;
  } cases[] = {
      {0, S_OK, 0},
      {123, S_OK, 123},
      {-123, S_OK, -123},
      {2147483647LL, S_OK, 2147483647},
      {-2147483647LL - 1, S_OK, -2147483647 - 1},
      {2147483648LL, DISP_E_OVERFLOW, kUntouched},
      {-2147483649LL, DISP_E_OVERFLOW, kUntouched},
      {INT64_MAX, DISP_E_OVERFLOW, kUntouched},
      {INT64_MIN, DISP_E_OVERFLOW, kUntouched},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    Var source;
    source.vt = VT_I8;
    source.llVal = c.value;
    const ToI4Result result = ChangeToI4(source);
    EXPECT_EQ(result.hr, c.hr);
    EXPECT_EQ(result.vt, VT_I4);
    EXPECT_EQ(result.value, c.expected);
  }
}

// Doubles round half to even.
TEST(Variant, R8ToI4RoundsHalfToEven) {
  const struct {
    double value;
    HRESULT hr;
    LONG expected;
  } cases[] = {
      {2.5, S_OK, 2},
      {3.5, S_OK, 4},
      {-2.5, S_OK, -2},
      {0.5, S_OK, 0},
      {1.5, S_OK, 2},
      {-0.5, S_OK, 0},
      {2.4999, S_OK, 2},
      {2147483647.4999, S_OK, 2147483647},
      {2147483647.5, DISP_E_OVERFLOW, kUntouched},
      {-2147483648.5, S_OK, -2147483647 - 1},
      {-2147483648.6, DISP_E_OVERFLOW, kUntouched},
      {1e300, DISP_E_OVERFLOW, kUntouched},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    Var source;
    source.vt = VT_R8;
    source.dblVal = c.value;
    const ToI4Result result = ChangeToI4(source);
    EXPECT_EQ(result.hr, c.hr);
    EXPECT_EQ(result.value, c.expected);
  }
}

TEST(Variant, BstrToI4) {
  const struct {
    const char* text;
    HRESULT hr;
    LONG expected;
  } cases[] = {
      {"123", S_OK, 123},
      {" 123 ", S_OK, 123},
      {"\t7", S_OK, 7},
      {"7\t", S_OK, 7},
      {"-5", S_OK, -5},
      {"+5", S_OK, 5},
      {"2.5", S_OK, 2},
      {"3.5", S_OK, 4},
      {"1e3", S_OK, 1000},
      {"5.", S_OK, 5},
      {".5", S_OK, 0},
      {"1e-400", S_OK, 0},
      {"abc", DISP_E_TYPEMISMATCH, kUntouched},
      {"", DISP_E_TYPEMISMATCH, kUntouched},
      {"   ", DISP_E_TYPEMISMATCH, kUntouched},
      {"12abc", DISP_E_TYPEMISMATCH, kUntouched},
      {"0x10", DISP_E_TYPEMISMATCH, kUntouched},
      {"inf", DISP_E_TYPEMISMATCH, kUntouched},
      {"nan", DISP_E_TYPEMISMATCH, kUntouched},
      {"-", DISP_E_TYPEMISMATCH, kUntouched},
      {".", DISP_E_TYPEMISMATCH, kUntouched},
      {"1.5e", DISP_E_TYPEMISMATCH, kUntouched},
      {"2147483648", DISP_E_OVERFLOW, kUntouched},
      {"9223372036854775807", DISP_E_OVERFLOW, kUntouched},
      {"1e400", DISP_E_OVERFLOW, kUntouched},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string("\"") + c.text + "\"");
    Var source;
    source.SetText(c.text);
    const ToI4Result result = ChangeToI4(source);
    EXPECT_EQ(result.hr, c.hr);
    EXPECT_EQ(result.vt, VT_I4);
    EXPECT_EQ(result.value, c.expected);
  }
}

// Integers in text are read exactly, beyond what a double holds.
TEST(Variant, BstrToI8IsExact) {
  const struct {
    const char* text;
    HRESULT hr;
    LONGLONG expected;
  } cases[] = {
      {"9007199254740993", S_OK, 9007199254740993LL},
      {"9223372036854775807", S_OK, INT64_MAX},
      {"-9223372036854775808", S_OK, INT64_MIN},
      {"9223372036854775808", DISP_E_OVERFLOW, 0},
      {"-9223372036854775809", DISP_E_OVERFLOW, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    Var source;
    source.SetText(c.text);
    Var dest;
    EXPECT_EQ(VariantChangeType(&dest, &source, 0, VT_I8), c.hr);
    if (c.hr == S_OK) {
      EXPECT_EQ(dest.vt, VT_I8);
      EXPECT_EQ(dest.llVal, c.expected);
    }
  }
}

TEST(Variant, ToBstr) {
  const struct {
    const char* name;
    VARTYPE vt;
    double number;  // as the source type
    USHORT flags;
    const char* text;
  } cases[] = {
      {"true", VT_BOOL, -1, 0, "-1"},
      {"false", VT_BOOL, 0, 0, "0"},
      {"true, alpha", VT_BOOL, -1, kAlphaBool, "True"},
      {"false, alpha", VT_BOOL, 0, kAlphaBool, "False"},
      {"i4", VT_I4, -42, 0, "-42"},
      {"r8 2.5", VT_R8, 2.5, 0, "2.5"},
      {"r8 0.1", VT_R8, 0.1, 0, "0.1"},
      {"r8 1e20", VT_R8, 1e20, 0, "1E+20"},
      {"r8 1/3", VT_R8, 1.0 / 3, 0, "0.333333333333333"},
      {"r4 0.1", VT_R4, 0.1, 0, "0.1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Var source;
    source.vt = c.vt;
    if (c.vt == VT_BOOL) source.boolVal = c.number ? VARIANT_TRUE : VARIANT_FALSE;
    if (c.vt == VT_I4) source.lVal = LONG(c.number);
    if (c.vt == VT_R8) source.dblVal = c.number;
    if (c.vt == VT_R4) source.fltVal = float(c.number);
    Var dest;
    ASSERT_EQ(VariantChangeType(&dest, &source, c.flags, VT_BSTR), S_OK);
    ASSERT_EQ(dest.vt, VT_BSTR);
    EXPECT_EQ(Ascii(dest.bstrVal), c.text);
  }
}

TEST(Variant, BoolAndEmptyAndNull) {
  Var source;
  source.vt = VT_BOOL;
  source.boolVal = VARIANT_TRUE;
  EXPECT_EQ(ChangeToI4(source).value, -1);

  Var five;
  five.vt = VT_I4;
  five.lVal = 5;
  Var flag;
  ASSERT_EQ(VariantChangeType(&flag, &five, 0, VT_BOOL), S_OK);
  EXPECT_EQ(flag.vt, VT_BOOL);
  EXPECT_EQ(flag.boolVal, VARIANT_TRUE);

  Var empty;
  const ToI4Result zero = ChangeToI4(empty);
  EXPECT_EQ(zero.hr, S_OK);
  EXPECT_EQ(zero.value, 0);
  Var emptyText;
  ASSERT_EQ(VariantChangeType(&emptyText, &empty, 0, VT_BSTR), S_OK);
  EXPECT_EQ(emptyText.vt, VT_BSTR);
  EXPECT_NE(emptyText.bstrVal, nullptr);
  EXPECT_EQ(SysStringLen(emptyText.bstrVal), 0u);

  Var null;
  null.vt = VT_NULL;
  EXPECT_EQ(ChangeToI4(null).hr, DISP_E_TYPEMISMATCH);
}

TEST(Variant, ChangeTypeInPlaceReplacesTheText) {
  Var v;
  v.SetText("42");
  ASSERT_EQ(VariantChangeType(&v, &v, 0, VT_I4), S_OK);
  EXPECT_EQ(v.vt, VT_I4);
  EXPECT_EQ(v.lVal, 42);
}

// Counts references, so that clearing and copying can be watched.
struct CountedUnknown : IUnknown {
  ULONG references = 1;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
    *out = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
};

TEST(Variant, ClearFreesTheTextAndReleasesTheObject) {
  Var text;
  text.SetText("to be freed");
  ASSERT_EQ(VariantClear(&text), S_OK);
  EXPECT_EQ(text.vt, VT_EMPTY);

  CountedUnknown object;
  Var holder;
  holder.vt = VT_UNKNOWN;
  holder.punkVal = &object;
  object.AddRef();
  ASSERT_EQ(VariantClear(&holder), S_OK);
  EXPECT_EQ(holder.vt, VT_EMPTY);
  EXPECT_EQ(object.references, 1u);
}

TEST(Variant, CopyIsDeep) {
  Var source;
  source.vt = VT_BSTR;
  source.bstrVal = SysAllocStringByteLen("a\0bcd", 5);  // an embedded zero, an odd byte count
  Var copy;
  copy.SetText("replaced, and freed by the copy");
  ASSERT_EQ(VariantCopy(&copy, &source), S_OK);
  ASSERT_EQ(copy.vt, VT_BSTR);
  EXPECT_NE(copy.bstrVal, source.bstrVal);
  EXPECT_EQ(SysStringByteLen(copy.bstrVal), 5u);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(copy.bstrVal), 5), std::string("a\0bcd", 5));
  VariantClear(&source);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(copy.bstrVal), 5), std::string("a\0bcd", 5));

  // A null text copies as an empty one (null, or an empty string as oleaut32 gives).
  Var nullText;
  nullText.vt = VT_BSTR;
  Var nullCopy;
  ASSERT_EQ(VariantCopy(&nullCopy, &nullText), S_OK);
  EXPECT_EQ(nullCopy.vt, VT_BSTR);
  EXPECT_EQ(SysStringLen(nullCopy.bstrVal), 0u);
}

TEST(Variant, CopyAddsAReference) {
  CountedUnknown object;
  {
    Var holder;
    holder.vt = VT_UNKNOWN;
    holder.punkVal = &object;
    object.AddRef();
    Var copy;
    ASSERT_EQ(VariantCopy(&copy, &holder), S_OK);
    EXPECT_EQ(copy.punkVal, &object);
    EXPECT_EQ(object.references, 3u);
  }
  EXPECT_EQ(object.references, 1u);
}

}  // namespace
