#include "clienttools/OLAPrecisionInteger.h"

#include <array>
#include <cstring>

namespace {

using u128 = unsigned __int128;

constexpr u128 kMaxMagnitude = (u128(1) << 96) - 1;

// 10^0 to 10^29, computed by the compiler: the table exists before any code runs, so no
// initialisation can race. 10^29 is beyond 96 bits but well within 128.
constexpr std::array<u128, 30> MakePowersOfTen() {
  std::array<u128, 30> table{};
  u128 power = 1;
  for (auto& entry : table) {
    entry = power;
    power *= 10;
  }
  return table;
}
constexpr std::array<u128, 30> kPowersOfTen = MakePowersOfTen();

// An unsigned 256-bit integer, least significant word first: wide enough for a product of two
// magnitudes (192 bits) and for a magnitude brought to a scale 29 places higher (193 bits).
struct Wide {
  uint64_t w[4] = {0, 0, 0, 0};

  static Wide From(u128 value) {
    Wide out;
    out.w[0] = uint64_t(value);
    out.w[1] = uint64_t(value >> 64);
    return out;
  }
  bool IsZero() const { return (w[0] | w[1] | w[2] | w[3]) == 0; }
  bool FitsMagnitude() const { return w[3] == 0 && w[2] == 0 && (w[1] >> 32) == 0; }
  u128 Low128() const { return (u128(w[1]) << 64) | w[0]; }

  // Callers keep the product within 256 bits.
  void MultiplySmall(uint64_t factor) {
    u128 carry = 0;
    for (auto& word : w) {
      u128 t = u128(word) * factor + carry;
      word = uint64_t(t);
      carry = t >> 64;
    }
  }
  // Divides in place and returns the remainder.
  uint64_t DivideSmall(uint64_t divisor) {
    u128 rest = 0;
    for (int i = 3; i >= 0; --i) {
      u128 t = (rest << 64) | w[i];
      w[i] = uint64_t(t / divisor);
      rest = t % divisor;
    }
    return uint64_t(rest);
  }
  void MultiplyByPowerOfTen(int exponent) {
    for (; exponent >= 19; exponent -= 19) MultiplySmall(10000000000000000000ull);
    if (exponent > 0) MultiplySmall(uint64_t(kPowersOfTen[exponent]));
  }
  // Callers keep the sum within 256 bits.
  void Add(const Wide& other) {
    unsigned carry = 0;
    for (int i = 0; i < 4; ++i) {
      u128 t = u128(w[i]) + other.w[i] + carry;
      w[i] = uint64_t(t);
      carry = unsigned(t >> 64);
    }
  }
  // Requires *this >= other.
  void Subtract(const Wide& other) {
    unsigned borrow = 0;
    for (int i = 0; i < 4; ++i) {
      u128 t = u128(w[i]) - other.w[i] - borrow;
      w[i] = uint64_t(t);
      borrow = unsigned(t >> 64) & 1;
    }
  }
  void Increment() { Add(From(1)); }
  void ShiftLeftOne() {
    for (int i = 3; i > 0; --i) w[i] = (w[i] << 1) | (w[i - 1] >> 63);
    w[0] <<= 1;
  }
  bool Bit(int index) const { return (w[index / 64] >> (index % 64)) & 1; }
  void SetBit(int index) { w[index / 64] |= uint64_t(1) << (index % 64); }

  static int Compare(const Wide& a, const Wide& b) {
    for (int i = 3; i >= 0; --i) {
      if (a.w[i] != b.w[i]) return a.w[i] < b.w[i] ? -1 : 1;
    }
    return 0;
  }
  static Wide Multiply(u128 a, u128 b) {
    // Schoolbook on 64-bit halves; both factors are below 2^96.
    uint64_t a0 = uint64_t(a), a1 = uint64_t(a >> 64);
    uint64_t b0 = uint64_t(b), b1 = uint64_t(b >> 64);
    Wide out = From(u128(a0) * b0);
    Wide cross = From(u128(a0) * b1);
    cross.Add(From(u128(a1) * b0));
    // Shift the cross products up one word.
    cross.w[3] = cross.w[2];
    cross.w[2] = cross.w[1];
    cross.w[1] = cross.w[0];
    cross.w[0] = 0;
    out.Add(cross);
    Wide top = From(u128(a1) * b1);
    top.w[3] = top.w[1];
    top.w[2] = top.w[0];
    top.w[1] = top.w[0] = 0;
    out.Add(top);
    return out;
  }
  // Bit-by-bit long division; the divisor is not zero. 256 steps, a fixed cost.
  static void DivideWithRemainder(const Wide& dividend, const Wide& divisor, Wide& quotient,
                                  Wide& remainder) {
    quotient = Wide();
    remainder = Wide();
    for (int bit = 255; bit >= 0; --bit) {
      remainder.ShiftLeftOne();
      if (dividend.Bit(bit)) remainder.w[0] |= 1;
      if (Compare(remainder, divisor) >= 0) {
        remainder.Subtract(divisor);
        quotient.SetBit(bit);
      }
    }
  }
};

// Rounds value / 10^k half to even for the smallest k that brings the scale to at most
// kMaxResultScale and the result within 96 bits. False when that needs a negative scale.
bool FitResult(Wide value, int scale, u128& magnitude, int& resultScale) {
  unsigned lastDigit = 0;
  bool sticky = false;  // some digit below the last removed one was not zero
  for (;;) {
    while (scale > OLAPrecisionInteger::kMaxResultScale || !value.FitsMagnitude()) {
      if (scale == 0) return false;
      sticky = sticky || lastDigit != 0;
      lastDigit = unsigned(value.DivideSmall(10));
      --scale;
    }
    bool roundUp = lastDigit > 5 || (lastDigit == 5 && (sticky || (value.w[0] & 1)));
    if (!roundUp) break;
    value.Increment();
    // Rounding up can carry to 2^96; the next pass removes one more digit from that.
    sticky = sticky || lastDigit != 0;
    lastDigit = 0;
    if (value.FitsMagnitude()) break;
  }
  magnitude = value.Low128();
  resultScale = scale;
  return true;
}

}  // namespace

OLAPrecisionInteger::OLAPrecisionInteger(int32_t value, uint16_t scale) { Assign(value, scale); }

OLAPrecisionInteger::OLAPrecisionInteger(int64_t value, uint16_t scale) { Assign(value, scale); }

OLAPrecisionInteger::OLAPrecisionInteger(const char* text) { SetFromText(text); }

void OLAPrecisionInteger::Assign(int32_t value, uint16_t scale) { Assign(int64_t{value}, scale); }

void OLAPrecisionInteger::Assign(int64_t value, uint16_t scale) {
  // The magnitude is taken in unsigned arithmetic, so INT64_MIN is exact.
  uint64_t magnitude = value < 0 ? 0 - uint64_t(value) : uint64_t(value);
  SetParts(magnitude, value < 0, scale);
}

void OLAPrecisionInteger::Assign(const OLAPrecisionInteger& other) { *this = other; }

HRESULT OLAPrecisionInteger::SetFromText(const char* text) {
  SetParts(0, false, kInvalidScale);
  if (!text) return E_POINTER;
  const char* p = text;
  bool negative = *p == '-';
  if (*p == '-' || *p == '+') ++p;
  u128 magnitude = 0;
  int digits = 0;
  int decimals = 0;
  bool point = false;
  bool tooLong = false;
  for (; *p; ++p) {
    if (*p == '.') {
      if (point) return DISP_E_TYPEMISMATCH;
      point = true;
      continue;
    }
    if (*p < '0' || *p > '9') return DISP_E_TYPEMISMATCH;
    ++digits;
    if (tooLong) continue;  // keep checking the form, which decides the result first
    if (point && ++decimals > kMaxScale) tooLong = true;
    magnitude = magnitude * 10 + unsigned(*p - '0');
    if (magnitude > kMaxMagnitude) tooLong = true;
  }
  if (digits == 0) return DISP_E_TYPEMISMATCH;
  if (tooLong) return DISP_E_OVERFLOW;
  SetParts(magnitude, negative, uint16_t(decimals));
  return S_OK;
}

HRESULT OLAPrecisionInteger::FromDecimal(const DECIMAL& value) {
  if (value.scale > kMaxResultScale || (value.sign != 0 && value.sign != DECIMAL_NEG)) {
    return E_INVALIDARG;
  }
  u128 magnitude = (u128(value.Hi32) << 64) | (u128(value.Mid32) << 32) | value.Lo32;
  SetParts(magnitude, value.sign == DECIMAL_NEG, value.scale);
  return S_OK;
}

HRESULT OLAPrecisionInteger::ToDecimal(DECIMAL& out) const {
  if (!HasValidScale()) return E_INVALIDARG;
  u128 magnitude = Magnitude();
  int scale = scale_;
  if (scale > kMaxResultScale) {
    // Scale 29 has one digit more than DECIMAL holds; dividing can only make the value smaller.
    FitResult(Wide::From(magnitude), scale, magnitude, scale);
  }
  out = DECIMAL{};
  out.scale = BYTE(scale);
  out.sign = IsNegative() && magnitude != 0 ? DECIMAL_NEG : 0;
  out.Hi32 = ULONG(magnitude >> 64);
  out.Mid32 = ULONG(magnitude >> 32);
  out.Lo32 = ULONG(magnitude);
  return S_OK;
}

int OLAPrecisionInteger::Compare(const OLAPrecisionInteger& other) const {
  if (!HasValidScale() || !other.HasValidScale()) return kUnordered;
  if (IsZero() && other.IsZero()) return 0;
  if (sign_ != other.sign_) return sign_ < other.sign_ ? -1 : 1;
  // Same sign: compare magnitudes at the larger scale; both scales are at most 29.
  Wide a = Wide::From(Magnitude());
  Wide b = Wide::From(other.Magnitude());
  if (scale_ < other.scale_) a.MultiplyByPowerOfTen(other.scale_ - scale_);
  if (other.scale_ < scale_) b.MultiplyByPowerOfTen(scale_ - other.scale_);
  int order = Wide::Compare(a, b);
  return IsNegative() ? -order : order;
}

bool OLAPrecisionInteger::Equals(const OLAPrecisionInteger& other) const {
  return Compare(other) == 0;
}
bool OLAPrecisionInteger::NotEquals(const OLAPrecisionInteger& other) const {
  return Compare(other) != 0;
}
bool OLAPrecisionInteger::GreaterThan(const OLAPrecisionInteger& other) const {
  return Compare(other) == 1;
}
bool OLAPrecisionInteger::GreaterOrEqual(const OLAPrecisionInteger& other) const {
  int order = Compare(other);
  return order == 0 || order == 1;
}
bool OLAPrecisionInteger::LessThan(const OLAPrecisionInteger& other) const {
  return Compare(other) == -1;
}
bool OLAPrecisionInteger::LessOrEqual(const OLAPrecisionInteger& other) const {
  int order = Compare(other);
  return order == 0 || order == -1;
}

HRESULT OLAPrecisionInteger::Add(const OLAPrecisionInteger& other) {
  if (!HasValidScale() || !other.HasValidScale()) return E_INVALIDARG;
  int scale = scale_ > other.scale_ ? scale_ : other.scale_;
  Wide a = Wide::From(Magnitude());
  Wide b = Wide::From(other.Magnitude());
  a.MultiplyByPowerOfTen(scale - scale_);
  b.MultiplyByPowerOfTen(scale - other.scale_);
  bool negative = IsNegative();
  if (IsNegative() == other.IsNegative()) {
    a.Add(b);
  } else if (Wide::Compare(a, b) >= 0) {
    a.Subtract(b);
  } else {
    b.Subtract(a);
    a = b;
    negative = other.IsNegative();
  }
  u128 magnitude;
  int resultScale;
  if (!FitResult(a, scale, magnitude, resultScale)) return DISP_E_OVERFLOW;
  SetParts(magnitude, negative, uint16_t(resultScale));
  return S_OK;
}

HRESULT OLAPrecisionInteger::Subtract(const OLAPrecisionInteger& other) {
  OLAPrecisionInteger negated(other);
  negated.Negate();
  return Add(negated);
}

HRESULT OLAPrecisionInteger::Multiply(const OLAPrecisionInteger& other) {
  if (!HasValidScale() || !other.HasValidScale()) return E_INVALIDARG;
  Wide product = Wide::Multiply(Magnitude(), other.Magnitude());
  u128 magnitude;
  int resultScale;
  if (!FitResult(product, scale_ + other.scale_, magnitude, resultScale)) return DISP_E_OVERFLOW;
  // A product that rounds away to nothing is plain 0, as VarDecMul gives it; an exact zero
  // keeps its scale like any other exact product.
  if (magnitude == 0 && !product.IsZero()) resultScale = 0;
  SetParts(magnitude, IsNegative() != other.IsNegative(), uint16_t(resultScale));
  return S_OK;
}

HRESULT OLAPrecisionInteger::Divide(const OLAPrecisionInteger& divisor) {
  if (!HasValidScale() || !divisor.HasValidScale()) return E_INVALIDARG;
  if (divisor.IsZero()) return DISP_E_DIVBYZERO;
  // The quotient a / b has the scale scale_ - divisor.scale_. Digits are produced one scale
  // step at a time, q = q * 10 + (r * 10) / d: first up to scale 0, then further while the
  // division is inexact, the scale is below 28 and the quotient still fits 96 bits.
  u128 d = divisor.Magnitude();
  int scale = scale_ - divisor.scale_;
  if (scale > kMaxResultScale) {
    d *= kPowersOfTen[scale - kMaxResultScale];  // scale 29 over scale 0: d stays below 2^100
    scale = kMaxResultScale;
  }
  u128 q = Magnitude() / d;
  u128 r = Magnitude() % d;
  for (; scale < 0; ++scale) {
    q = q * 10 + r * 10 / d;
    r = r * 10 % d;
    if (q > kMaxMagnitude) return DISP_E_OVERFLOW;
  }
  while (r != 0 && scale < kMaxResultScale) {
    u128 next = q * 10 + r * 10 / d;
    if (next > kMaxMagnitude) break;
    q = next;
    r = r * 10 % d;
    ++scale;
  }
  // Half to even on what is left; r < d < 2^100, so 2r cannot wrap.
  if (2 * r > d || (2 * r == d && (q & 1))) ++q;
  if (q > kMaxMagnitude) {
    // Rounding carried to 2^96: drop one digit (its last digit is 6, so it rounds up again).
    if (scale == 0) return DISP_E_OVERFLOW;
    q = q / 10 + 1;
    --scale;
  }
  if (q == 0) scale = 0;  // a zero quotient, exact or rounded, is plain 0 as VarDecDiv gives it
  SetParts(q, IsNegative() != divisor.IsNegative(), uint16_t(scale));
  return S_OK;
}

HRESULT OLAPrecisionInteger::DivideWithRemainder(const OLAPrecisionInteger& divisor,
                                                 OLAPrecisionInteger& remainder) {
  if (!HasValidScale() || !divisor.HasValidScale()) return E_INVALIDARG;
  if (divisor.IsZero()) return DISP_E_DIVBYZERO;
  int scale = scale_ > divisor.scale_ ? scale_ : divisor.scale_;
  Wide a = Wide::From(Magnitude());
  Wide b = Wide::From(divisor.Magnitude());
  a.MultiplyByPowerOfTen(scale - scale_);
  b.MultiplyByPowerOfTen(scale - divisor.scale_);
  Wide quotient, rest;
  Wide::DivideWithRemainder(a, b, quotient, rest);
  // The remainder always fits: it is below b, or else not above a, and one of the two was not
  // rescaled.
  if (!quotient.FitsMagnitude()) return DISP_E_OVERFLOW;
  bool negative = IsNegative();
  remainder.SetParts(rest.Low128(), negative, uint16_t(scale));
  SetParts(quotient.Low128(), negative != divisor.IsNegative(), 0);
  return S_OK;
}

HRESULT OLAPrecisionInteger::MultiplyByTen() {
  u128 magnitude = Magnitude() * 10;
  if (magnitude > kMaxMagnitude) return DISP_E_OVERFLOW;
  SetParts(magnitude, IsNegative(), scale_);
  return S_OK;
}

void OLAPrecisionInteger::SetScale(uint16_t scale) { scale_ = scale; }

void OLAPrecisionInteger::Negate() {
  if (!IsZero()) sign_ = int16_t(-sign_);
}

const char* OLAPrecisionInteger::ToString() {
  char* out = text_;
  if (!HasValidScale() || IsZero()) {
    std::memcpy(text_, "0", 2);
    return text_;
  }
  if (IsNegative()) *out++ = '-';

  // The digits of the magnitude, most significant first: a 32-bit magnitude directly, a larger
  // one by dividing by the powers of ten from 10^28 down, skipping leading zeros.
  char digits[kTextSize];
  int count = 0;
  if (middle_ == 0 && high_ == 0) {
    char reversed[10];
    int n = 0;
    for (uint32_t rest = low_; rest != 0; rest /= 10) reversed[n++] = char('0' + rest % 10);
    while (n > 0) digits[count++] = reversed[--n];
  } else {
    u128 rest = Magnitude();
    for (int power = 28; power >= 0; --power) {
      unsigned digit = unsigned(rest / kPowersOfTen[power]);
      rest %= kPowersOfTen[power];
      if (digit != 0 || count != 0) digits[count++] = char('0' + digit);
    }
  }

  // The point goes scale places from the right; with fewer digits than that the text starts
  // with the point and zeros, never with a zero before it.
  int scale = scale_;
  if (count > scale) {
    std::memcpy(out, digits, size_t(count - scale));
    out += count - scale;
    if (scale > 0) *out++ = '.';
    std::memcpy(out, digits + count - scale, size_t(scale));
    out += scale;
  } else {
    *out++ = '.';
    std::memset(out, '0', size_t(scale - count));
    out += scale - count;
    std::memcpy(out, digits, size_t(count));
    out += count;
  }
  if (scale > 0) {
    while (out[-1] == '0') --out;  // a non-zero value has a non-zero digit before its zeros
    if (out[-1] == '.') --out;
  }
  *out = '\0';
  return text_;
}

bool OLAPrecisionInteger::IsValid() const { return HasValidScale(); }

void OLAPrecisionInteger::SetParts(u128 magnitude, bool negative, uint16_t scale) {
  low_ = uint32_t(magnitude);
  middle_ = uint32_t(magnitude >> 32);
  high_ = uint32_t(magnitude >> 64);
  sign_ = negative && magnitude != 0 ? -1 : 1;
  scale_ = scale;
}

u128 OLAPrecisionInteger::Magnitude() const {
  return (u128(high_) << 64) | (u128(middle_) << 32) | low_;
}

OLAAmount::OLAAmount(int64_t whole, int32_t hundredths) {
  // |whole| * 100 is below 2^70, so the sum is exact in 128 bits.
  __int128 value = __int128(whole) * 100 + hundredths;
  SetParts(value < 0 ? u128(-value) : u128(value), value < 0, 2);
}

bool OLAPercent::IsValid() const {
  static const OLAPrecisionInteger kZero(int32_t{0}, 0);
  static const OLAPrecisionInteger kHundred(int32_t{100}, 0);
  return OLAPrecisionInteger::IsValid() && GreaterOrEqual(kZero) && LessOrEqual(kHundred);
}
