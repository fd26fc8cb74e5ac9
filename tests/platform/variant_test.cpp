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

// A variant that owns its value.
struct Var : VARIANT {
  Var() { VariantInit(this); }
  explicit Var(const VARIANT& value) : VARIANT(value) {}
  ~Var() { VariantClear(this); }
  Var(const Var&) = delete;
  Var& operator=(const Var&) = delete;
};

// Source values for the tables; a text one owns its BSTR until a Var takes it over.
VARIANT Of(VARTYPE vt) {
  VARIANT v{};
  v.vt = vt;
  return v;
}
VARIANT I8(LONGLONG value) { VARIANT v = Of(VT_I8); v.llVal = value; return v; }
VARIANT I4(LONG value) { VARIANT v = Of(VT_I4); v.lVal = value; return v; }
VARIANT R8(double value) { VARIANT v = Of(VT_R8); v.dblVal = value; return v; }
VARIANT R4(float value) { VARIANT v = Of(VT_R4); v.fltVal = value; return v; }
VARIANT Bool(bool value) { VARIANT v = Of(VT_BOOL); v.boolVal = value ? -1 : 0; return v; }
VARIANT Text(const char* text) { VARIANT v = Of(VT_BSTR); v.bstrVal = MakeBstr(text).Detach(); return v; }

std::string Ascii(BSTR text) {
  std::string out;
  for (UINT i = 0; i < SysStringLen(text); ++i) out.push_back(char(text[i]));
  return out;
}

// The destination holds a marker so that a failed conversion shows whether it was touched.
constexpr LONG kUntouched = 77;

// Integers in range convert exactly, doubles and text round half to even, text is read with
// blanks around it and integers in it beyond what a double holds; what does not fit overflows.
TEST(Variant, ChangeTypeToIntegers) {
  const struct {
    VARIANT source;
    VARTYPE target;
    HRESULT hr;
    LONGLONG expected;  // kUntouched when refused
  } cases[] = {
      {I8(0), VT_I4, S_OK, 0}, {I8(123), VT_I4, S_OK, 123}, {I8(-123), VT_I4, S_OK, -123},
      {I8(2147483647LL), VT_I4, S_OK, 2147483647}, {I8(-2147483648LL), VT_I4, S_OK, -2147483648LL},
      {I8(2147483648LL), VT_I4, DISP_E_OVERFLOW, kUntouched},
      {I8(-2147483649LL), VT_I4, DISP_E_OVERFLOW, kUntouched},
      {I8(INT64_MAX), VT_I4, DISP_E_OVERFLOW, kUntouched},
      {I8(INT64_MIN), VT_I4, DISP_E_OVERFLOW, kUntouched}, {R8(2.5), VT_I4, S_OK, 2},
      {R8(3.5), VT_I4, S_OK, 4}, {R8(-2.5), VT_I4, S_OK, -2}, {R8(0.5), VT_I4, S_OK, 0},
      {R8(1.5), VT_I4, S_OK, 2}, {R8(-0.5), VT_I4, S_OK, 0}, {R8(2.4999), VT_I4, S_OK, 2},
      {R8(2147483647.4999), VT_I4, S_OK, 2147483647},
      {R8(2147483647.5), VT_I4, DISP_E_OVERFLOW, kUntouched},
      {R8(-2147483648.5), VT_I4, S_OK, -2147483648LL},
      {R8(-2147483648.6), VT_I4, DISP_E_OVERFLOW, kUntouched},
      {R8(1e300), VT_I4, DISP_E_OVERFLOW, kUntouched}, {Text("123"), VT_I4, S_OK, 123},
      {Text(" 123 "), VT_I4, S_OK, 123}, {Text("\t7"), VT_I4, S_OK, 7},
      {Text("7\t"), VT_I4, S_OK, 7}, {Text("-5"), VT_I4, S_OK, -5}, {Text("+5"), VT_I4, S_OK, 5},
      {Text("2.5"), VT_I4, S_OK, 2}, {Text("3.5"), VT_I4, S_OK, 4},
      {Text("1e3"), VT_I4, S_OK, 1000}, {Text("5."), VT_I4, S_OK, 5}, {Text(".5"), VT_I4, S_OK, 0},
      {Text("1e-400"), VT_I4, S_OK, 0}, {Text("abc"), VT_I4, DISP_E_TYPEMISMATCH, kUntouched},
      {Text(""), VT_I4, DISP_E_TYPEMISMATCH, kUntouched},
      {Text("   "), VT_I4, DISP_E_TYPEMISMATCH, kUntouched},
      {Text("12abc"), VT_I4, DISP_E_TYPEMISMATCH, kUntouched},
      {Text("0x10"), VT_I4, DISP_E_TYPEMISMATCH, kUntouched},
      {Text("inf"), VT_I4, DISP_E_TYPEMISMATCH, kUntouched},
      {Text("nan"), VT_I4, DISP_E_TYPEMISMATCH, kUntouched},
      {Text("-"), VT_I4, DISP_E_TYPEMISMATCH, kUntouched},
      {Text("."), VT_I4, DISP_E_TYPEMISMATCH, kUntouched},
      {Text("1.5e"), VT_I4, DISP_E_TYPEMISMATCH, kUntouched},
      {Text("2147483648"), VT_I4, DISP_E_OVERFLOW, kUntouched},
      {Text("9223372036854775807"), VT_I4, DISP_E_OVERFLOW, kUntouched},
      {Text("1e400"), VT_I4, DISP_E_OVERFLOW, kUntouched},
      {Text("9007199254740993"), VT_I8, S_OK, 9007199254740993LL},
      {Text("9223372036854775807"), VT_I8, S_OK, INT64_MAX},
      {Text("-9223372036854775808"), VT_I8, S_OK, INT64_MIN},
      {Text("9223372036854775808"), VT_I8, DISP_E_OVERFLOW, kUntouched},
      {Text("-9223372036854775809"), VT_I8, DISP_E_OVERFLOW, kUntouched},
      {Bool(true), VT_I4, S_OK, -1}, {Of(VT_EMPTY), VT_I4, S_OK, 0},
      {Of(VT_NULL), VT_I4, DISP_E_TYPEMISMATCH, kUntouched},
  };
  for (const auto& c : cases) {
    Var source(c.source);
    SCOPED_TRACE(testing::Message() << "type " << source.vt << " "
                                    << (source.vt == VT_BSTR ? Ascii(source.bstrVal) : ""));
    Var dest;
    dest.vt = c.target;
    dest.llVal = kUntouched;
    EXPECT_EQ(VariantChangeType(&dest, &source, 0, c.target), c.hr);
    EXPECT_EQ(dest.vt, c.target);
    EXPECT_EQ(c.target == VT_I8 ? dest.llVal : dest.lVal, c.expected);
  }
  Var five(I4(5));
  Var flag;
  ASSERT_EQ(VariantChangeType(&flag, &five, 0, VT_BOOL), S_OK);
  EXPECT_EQ(flag.vt, VT_BOOL);
  EXPECT_EQ(flag.boolVal, VARIANT_TRUE);
  // In place, the text is replaced.
  Var v(Text("42"));
  ASSERT_EQ(VariantChangeType(&v, &v, 0, VT_I4), S_OK);
  EXPECT_EQ(v.vt, VT_I4);
  EXPECT_EQ(v.lVal, 42);
}

TEST(Variant, ChangeTypeToBstr) {
  const struct { VARIANT source; USHORT flags; const char* text; } cases[] = {
      {Bool(true), 0, "-1"}, {Bool(false), 0, "0"}, {Bool(true), kAlphaBool, "True"},
      {Bool(false), kAlphaBool, "False"}, {I4(-42), 0, "-42"}, {R8(2.5), 0, "2.5"},
      {R8(0.1), 0, "0.1"}, {R8(1e20), 0, "1E+20"}, {R8(1.0 / 3), 0, "0.333333333333333"},
      {R4(0.1f), 0, "0.1"}, {Of(VT_EMPTY), 0, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    Var source(c.source);
    Var dest;
    ASSERT_EQ(VariantChangeType(&dest, &source, c.flags, VT_BSTR), S_OK);
    ASSERT_EQ(dest.vt, VT_BSTR);
    EXPECT_NE(dest.bstrVal, nullptr);
    EXPECT_EQ(Ascii(dest.bstrVal), c.text);
  }
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

TEST(Variant, ClearAndCopyTakeCareOfReferences) {
  Var text(Text("to be freed"));
  ASSERT_EQ(VariantClear(&text), S_OK);
  EXPECT_EQ(text.vt, VT_EMPTY);

  CountedUnknown object;
  {
    Var holder(Of(VT_UNKNOWN));
    holder.punkVal = &object;
    object.AddRef();
    Var copy;
    ASSERT_EQ(VariantCopy(&copy, &holder), S_OK);
    EXPECT_EQ(copy.punkVal, &object);
    EXPECT_EQ(object.references, 3u);
    ASSERT_EQ(VariantClear(&holder), S_OK);
    EXPECT_EQ(holder.vt, VT_EMPTY);
    EXPECT_EQ(object.references, 2u);
  }
  EXPECT_EQ(object.references, 1u);
}

TEST(Variant, CopyIsDeep) {
  Var source(Of(VT_BSTR));
  source.bstrVal = SysAllocStringByteLen("a\0bcd", 5);  // an embedded zero, an odd byte count
  Var copy(Text("replaced, and freed by the copy"));
  ASSERT_EQ(VariantCopy(&copy, &source), S_OK);
  ASSERT_EQ(copy.vt, VT_BSTR);
  EXPECT_NE(copy.bstrVal, source.bstrVal);
  EXPECT_EQ(SysStringByteLen(copy.bstrVal), 5u);
  VariantClear(&source);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(copy.bstrVal), 5), std::string("a\0bcd", 5));

  // A null text copies as an empty one (null, or an empty string as oleaut32 gives).
  Var nullText(Of(VT_BSTR));
  nullText.bstrVal = nullptr;
  Var nullCopy;
  ASSERT_EQ(VariantCopy(&nullCopy, &nullText), S_OK);
  EXPECT_EQ(nullCopy.vt, VT_BSTR);
  EXPECT_EQ(SysStringLen(nullCopy.bstrVal), 0u);
}

}  // namespace
