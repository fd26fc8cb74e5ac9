// Exact decimals: text in and out, arithmetic, and the conversion of the host's amount, percent
// and quantity objects. The oracle is 128-bit integer arithmetic on operands small enough that
// every result is exact, plus the laws that hold for any operands (the text form parses back to
// the same value, sums and products commute, a failed operation leaves the value unchanged, a
// quotient and its remainder give the dividend back).
#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstdint>
#include <string>

#include "clienttools/COLAConvert.h"
#include "clienttools/OLAPrecisionInteger.h"
#include "FuzzSupport.h"
#include "platform/ComError.h"

using parcelon::fuzz::Finding;
using Int128 = __int128;

namespace {

std::string Describe(OLAPrecisionInteger value) {
  return std::string(value.ToString()) + " (scale " + std::to_string(value.Scale()) + ")";
}

// The documented text form of value / 10^scale: no zero before the point, no trailing decimal
// zeros, no trailing point, "0" for zero.
std::string DecimalText(Int128 value, unsigned scale) {
  const bool negative = value < 0;
  unsigned __int128 magnitude = negative ? -(unsigned __int128)value : (unsigned __int128)value;
  std::string digits;
  do {
    digits.insert(digits.begin(), char('0' + int(magnitude % 10)));
    magnitude /= 10;
  } while (magnitude != 0);
  if (digits.size() <= scale) digits.insert(0, scale - digits.size() + 1, '0');
  std::string whole = digits.substr(0, digits.size() - scale);
  std::string fraction = digits.substr(digits.size() - scale);
  while (!fraction.empty() && fraction.back() == '0') fraction.pop_back();
  if (whole == "0") whole.clear();
  std::string text = whole + (fraction.empty() ? "" : "." + fraction);
  if (text.empty()) return "0";
  return (negative ? "-" : "") + text;
}

Int128 Power10(unsigned n) {
  Int128 p = 1;
  while (n--) p *= 10;
  return p;
}

void ExpectText(OLAPrecisionInteger value, Int128 exact, unsigned scale, const char* what) {
  const std::string expected = DecimalText(exact, scale);
  if (expected != value.ToString())
    Finding(std::string(what) + " gives " + Describe(value) + ", expected " + expected);
}

// A value from the input: either text as the host's amounts give it, or integer and scale.
OLAPrecisionInteger Operand(FuzzedDataProvider& in, Int128* small, unsigned* smallScale) {
  *small = 0;
  *smallScale = 0;
  if (in.ConsumeBool()) {
    const std::string text = in.ConsumeRandomLengthString(40);
    OLAPrecisionInteger value;
    const HRESULT hr = value.SetFromText(text.c_str());
    if (FAILED(hr) && (value.IsValid() || !value.IsZero()))
      Finding("text [" + text + "] refused but the value is " + Describe(value));
    if (SUCCEEDED(hr) && !value.IsValid()) Finding("text [" + text + "] accepted as an invalid value");
    if (SUCCEEDED(hr)) {
      // The text form parses back to the same value.
      const std::string form = value.ToString();
      OLAPrecisionInteger again(form.c_str());
      if (!again.Equals(value)) Finding("[" + text + "] prints as " + form + ", which reads back as " + Describe(again));
    }
    *smallScale = 99;  // not known exactly
    return value;
  }
  const int64_t integer = in.ConsumeIntegralInRange<int64_t>(-(int64_t(1) << 59), int64_t(1) << 59);
  const uint16_t scale = in.ConsumeIntegralInRange<uint16_t>(0, 9);
  OLAPrecisionInteger value(integer, scale);
  ExpectText(value, integer, scale, "an integer and scale");
  *small = integer;
  *smallScale = scale;
  return value;
}

// Laws that hold for any two operands.
void CheckArithmetic(const OLAPrecisionInteger& a, const OLAPrecisionInteger& b) {
  // Comparisons agree with each other.
  if (a.HasValidScale() && b.HasValidScale()) {
    const int ab = a.LessThan(b) + a.Equals(b) + a.GreaterThan(b);
    if (ab != 1) Finding("not exactly one of <, ==, > holds for " + Describe(a) + " and " + Describe(b));
    if (a.LessThan(b) != b.GreaterThan(a)) Finding("< and > disagree for " + Describe(a) + " and " + Describe(b));
    if (a.LessOrEqual(b) != (a.LessThan(b) || a.Equals(b))) Finding("<= disagrees");
  } else if (a.Equals(b) || !a.NotEquals(b) || a.LessThan(b) || a.GreaterOrEqual(b)) {
    Finding("an invalid operand compares as ordered: " + Describe(a) + " and " + Describe(b));
  }

  using Operation = HRESULT (OLAPrecisionInteger::*)(const OLAPrecisionInteger&);
  const struct {
    Operation run;
    const char* name;
    bool commutes;
  } operations[] = {{&OLAPrecisionInteger::Add, "+", true},
                    {&OLAPrecisionInteger::Subtract, "-", false},
                    {&OLAPrecisionInteger::Multiply, "*", true},
                    {&OLAPrecisionInteger::Divide, "/", false}};
  for (const auto& operation : operations) {
    OLAPrecisionInteger result(a);
    const HRESULT hr = (result.*operation.run)(b);
    const std::string what = Describe(a) + " " + operation.name + " " + Describe(b);
    if (FAILED(hr)) {
      if (result.Low() != a.Low() || result.Middle() != a.Middle() || result.High() != a.High() ||
          result.Sign() != a.Sign() || result.Scale() != a.Scale())
        Finding(what + " failed and changed the value to " + Describe(result));
      continue;
    }
    if (!result.IsValid() || result.Scale() > OLAPrecisionInteger::kMaxResultScale)
      Finding(what + " gives the invalid " + Describe(result));
    if (result.IsZero() && result.IsNegative()) Finding(what + " gives a negative zero");
    if (operation.commutes) {
      OLAPrecisionInteger swapped(b);
      if ((swapped.*operation.run)(a) != hr || !swapped.Equals(result))
        Finding(what + " gives " + Describe(result) + " but swapped gives " + Describe(swapped));
    }
    // The result's text form parses back to the same value.
    const std::string form = result.ToString();
    if (!OLAPrecisionInteger(form.c_str()).Equals(result)) Finding(what + " prints as " + form + ", which reads back otherwise");
  }

  // quotient * divisor + remainder gives the dividend back, exactly when the dividend's scale
  // holds every term and is one an arithmetic result can have (a sum is rounded to 28 places).
  OLAPrecisionInteger quotient(a), remainder;
  if (SUCCEEDED(quotient.DivideWithRemainder(b, remainder)) && a.Scale() >= b.Scale() &&
      a.Scale() <= OLAPrecisionInteger::kMaxResultScale) {
    if (quotient.Scale() != 0) Finding("a whole quotient with scale " + std::to_string(quotient.Scale()));
    if (!remainder.IsZero() && remainder.IsNegative() != a.IsNegative())
      Finding("the remainder of " + Describe(a) + " / " + Describe(b) + " has the divisor's sign");
    OLAPrecisionInteger back(quotient);
    if (SUCCEEDED(back.Multiply(b)) && SUCCEEDED(back.Add(remainder)) && !back.Equals(a))
      Finding(Describe(a) + " / " + Describe(b) + " gives " + Describe(quotient) + " remainder " + Describe(remainder) +
              ", which give back " + Describe(back));
  }

  // To DECIMAL and back (a DECIMAL holds 28 places; scale 29 is rounded on the way).
  DECIMAL decimal{};
  if (a.Scale() <= OLAPrecisionInteger::kMaxResultScale && SUCCEEDED(a.ToDecimal(decimal))) {
    OLAPrecisionInteger back;
    if (FAILED(back.FromDecimal(decimal)) || !back.Equals(a)) Finding(Describe(a) + " does not survive a DECIMAL");
  }
}

// Exact results of small operands in 128-bit integers.
void CheckExact(const OLAPrecisionInteger& a, Int128 x, unsigned xs, const OLAPrecisionInteger& b, Int128 y,
                unsigned ys) {
  const unsigned scale = xs > ys ? xs : ys;
  const Int128 xa = x * Power10(scale - xs), ya = y * Power10(scale - ys);
  OLAPrecisionInteger sum(a), difference(a), product(a);
  if (sum.Add(b) != S_OK) Finding("a small sum fails");
  ExpectText(sum, xa + ya, scale, "a small sum");
  if (sum.Scale() != scale) Finding("a sum does not keep the larger scale");
  if (difference.Subtract(b) != S_OK) Finding("a small difference fails");
  ExpectText(difference, xa - ya, scale, "a small difference");
  const Int128 exactProduct = x * y;  // below 2^118
  const unsigned __int128 magnitude = exactProduct < 0 ? -(unsigned __int128)exactProduct : exactProduct;
  if (magnitude < ((unsigned __int128)1 << 96) && xs + ys <= OLAPrecisionInteger::kMaxResultScale) {
    if (product.Multiply(b) != S_OK) Finding("a small product fails");
    ExpectText(product, exactProduct, xs + ys, "a small product");
  }
  if (y != 0) {
    OLAPrecisionInteger quotient(a);
    if (quotient.Divide(b) != S_OK) Finding("a small quotient fails");
    const long double expected = (long double)x / (long double)y * powl(10.0L, (int)ys - (int)xs);
    const long double got = strtold(quotient.ToString(), nullptr);
    if (fabsl(got - expected) > fabsl(expected) * 1e-15L + 1e-27L)
      Finding("a small quotient gives " + Describe(quotient) + ", expected about " + std::to_string((double)expected));
  } else {
    OLAPrecisionInteger quotient(a);
    if (quotient.Divide(b) != DISP_E_DIVBYZERO) Finding("a division by zero does not say so");
  }
}

// A host value object whose answers come from the input.
template <class Interface>
class InputValue : public Interface {
 public:
  explicit InputValue(FuzzedDataProvider& in) : in_(in) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
    *out = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

 protected:
  // Every answer may fail, as a host call can.
  template <class T>
  HRESULT Give(T* out, T value) {
    if (in_.ConsumeIntegralInRange<int>(0, 40) == 0) return E_FAIL;
    *out = value;
    return S_OK;
  }
  FuzzedDataProvider& in_;
};

VARIANT_BOOL Flag(FuzzedDataProvider& in) { return in.ConsumeBool() ? VARIANT_TRUE : VARIANT_FALSE; }

class InputAmount : public InputValue<IAmount> {
 public:
  using InputValue::InputValue;
  HRESULT STDMETHODCALLTYPE Prepare(LONG) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE GetText(BSTR* text) override {
    *text = nullptr;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* out) override { return Give(out, in_.ConsumeIntegralInRange<int>(0, 7) ? VARIANT_FALSE : VARIANT_TRUE); }
  HRESULT STDMETHODCALLTYPE IsValid(VARIANT_BOOL* out) override { return Give(out, in_.ConsumeIntegralInRange<int>(0, 7) ? VARIANT_TRUE : VARIANT_FALSE); }
  HRESULT STDMETHODCALLTYPE GetWhole(LONGLONG* out) override { return Give(out, whole = in_.ConsumeIntegral<LONGLONG>()); }
  HRESULT STDMETHODCALLTYPE GetHundredths(LONG* out) override { return Give(out, hundredths = in_.ConsumeIntegral<LONG>()); }
  HRESULT STDMETHODCALLTYPE IsNegative(VARIANT_BOOL* out) override { return Give(out, negative = Flag(in_)); }
  LONGLONG whole = 0;
  LONG hundredths = 0;
  VARIANT_BOOL negative = VARIANT_FALSE;
};

class InputPercent : public InputValue<IPercent> {
 public:
  using InputValue::InputValue;
  HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* out) override { return Give(out, in_.ConsumeIntegralInRange<int>(0, 7) ? VARIANT_FALSE : VARIANT_TRUE); }
  HRESULT STDMETHODCALLTYPE GetValue(double* out) override { return Give(out, value = in_.ConsumeFloatingPoint<double>()); }
  double value = 0;
};

class InputQuantity : public InputValue<IQuantity> {
 public:
  using InputValue::InputValue;
  HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* out) override { return Give(out, in_.ConsumeIntegralInRange<int>(0, 7) ? VARIANT_FALSE : VARIANT_TRUE); }
  HRESULT STDMETHODCALLTYPE IsValid(VARIANT_BOOL* out) override { return Give(out, in_.ConsumeIntegralInRange<int>(0, 7) ? VARIANT_TRUE : VARIANT_FALSE); }
  HRESULT STDMETHODCALLTYPE GetInteger(LONGLONG* out) override { return Give(out, integer = in_.ConsumeIntegral<LONGLONG>()); }
  HRESULT STDMETHODCALLTYPE GetDecimals(SHORT* out) override { return Give(out, decimals = in_.ConsumeIntegralInRange<SHORT>(-3, 33)); }
  HRESULT STDMETHODCALLTYPE IsNegative(VARIANT_BOOL* out) override { return Give(out, negative = Flag(in_)); }
  LONGLONG integer = 0;
  SHORT decimals = 0;
  VARIANT_BOOL negative = VARIANT_FALSE;
};

// The conversions from the host's objects against their documented results.
void CheckConversions(FuzzedDataProvider& in) {
  COLAConvert convert;
  try {
    switch (in.ConsumeIntegralInRange<int>(0, 2)) {
      case 0: {
        InputAmount amount(in);
        OLAAmount value;
        if (!convert.AmountFromHost(&amount, value)) {
          if (value.IsValid()) Finding("an empty amount converts to a valid value");
          break;
        }
        const Int128 exact = Int128(amount.whole) * 100 + amount.hundredths;
        ExpectText(value, amount.negative == VARIANT_TRUE ? -exact : exact, 2, "an amount");
        break;
      }
      case 1: {
        InputPercent percent(in);
        OLAPercent value;
        if (!convert.PercentFromHost(&percent, value)) break;
        const double scaled = std::floor(percent.value * 100000.0);
        ExpectText(value, Int128(scaled), 5, "a percent");
        break;
      }
      default: {
        InputQuantity quantity(in);
        OLAPrecisionInteger value;
        const bool converted = convert.QuantityFromHost(&quantity, value);
        if (!converted) {
          if (value.IsValid()) Finding("a refused quantity converts to a valid value");
          break;
        }
        if (quantity.decimals < 0 || quantity.decimals > OLAPrecisionInteger::kMaxScale)
          Finding("a quantity with " + std::to_string(quantity.decimals) + " decimals converts");
        const Int128 exact = quantity.integer;
        ExpectText(value, quantity.negative == VARIANT_TRUE ? -exact : exact, unsigned(quantity.decimals),
                   "a quantity");
        break;
      }
    }
  } catch (const ComError& error) {
    if (error.Error() != E_FAIL) Finding("a failed host call comes back as " + std::to_string(error.Error()));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  Int128 x, y;
  unsigned xs, ys;
  const OLAPrecisionInteger a = Operand(in, &x, &xs);
  OLAPrecisionInteger b = Operand(in, &y, &ys);
  if (in.ConsumeIntegralInRange<int>(0, 7) == 0) {
    b.SetScale(in.ConsumeIntegralInRange<uint16_t>(0, 31));
    ys = 99;
  }
  CheckArithmetic(a, b);
  if (xs <= 9 && ys <= 9) CheckExact(a, x, xs, b, y, ys);
  CheckConversions(in);
  return 0;
}
