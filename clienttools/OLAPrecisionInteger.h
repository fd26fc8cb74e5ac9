// OLAPrecisionInteger, OLAAmount, OLAPercent: exact scaled decimals in the DECIMAL layout (a 96-bit
// magnitude, a sign and a power-of-ten scale) and their text form for the request documents.
#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

#include "platform/ComBase.h"

// A decimal number magnitude / 10^scale with a sign. Values with a scale above kMaxScale are
// invalid: they are written as "0" and left out of documents.
//
// Arithmetic is exact and follows the OLE Automation rules (VarDecAdd, VarDecMul, VarDecDiv):
// a result that needs more digits than the 96-bit magnitude or a scale above 28 holds is rounded
// half to even at a smaller scale. Sums and exact products keep the larger or the summed scale
// (1.5 * 2.0 is 3.00); a quotient takes the smallest scale that makes it exact, else as many
// decimals as fit; a zero quotient and a product that rounds away to nothing are plain 0. The
// operations return S_OK, DISP_E_OVERFLOW when the result does not fit even at scale 0,
// DISP_E_DIVBYZERO, or E_INVALIDARG for an operand with an invalid scale; on failure the value
// is left unchanged. Zero is never negative.
class OLAPrecisionInteger {
 public:
  // Largest scale of a valid value. The magnitude holds 28 to 29 significant digits, so a value
  // of scale 29 is below 0.8; arithmetic results never have a scale above kMaxResultScale.
  static constexpr uint16_t kMaxScale = 29;
  static constexpr uint16_t kMaxResultScale = 28;
  // The scale of a value that failed to parse or to convert: invalid, written as "0".
  static constexpr uint16_t kInvalidScale = 30;
  // Longest text form: sign, 29 digits and the point, plus the terminator.
  static constexpr int kTextSize = 32;

  // Zero with scale 0.
  OLAPrecisionInteger() = default;
  OLAPrecisionInteger(int32_t value, uint16_t scale);
  OLAPrecisionInteger(int64_t value, uint16_t scale);
  // Any other integer type that int64_t holds (long on Windows, short, unsigned int, ...), so
  // that host types such as LONG never make the two constructors above ambiguous.
  template <std::integral T>
    requires(!std::same_as<T, int32_t> && !std::same_as<T, int64_t> && !std::same_as<T, bool> &&
             (std::is_signed_v<T> ? sizeof(T) <= 8 : sizeof(T) < 8))
  OLAPrecisionInteger(T value, uint16_t scale) : OLAPrecisionInteger(int64_t(value), scale) {}
  // Decimal text: an optional "-" or "+", digits with at most one ".", at least one digit, no
  // blanks, at most 29 decimals and a magnitude below 2^96. Anything else gives the invalid
  // value (zero with kInvalidScale); SetFromText says why.
  explicit OLAPrecisionInteger(const char* text);
  OLAPrecisionInteger(const OLAPrecisionInteger&) = default;
  OLAPrecisionInteger(OLAPrecisionInteger&&) = default;
  OLAPrecisionInteger& operator=(const OLAPrecisionInteger&) = default;
  OLAPrecisionInteger& operator=(OLAPrecisionInteger&&) = default;
  virtual ~OLAPrecisionInteger() = default;

  // Assignment and construction.
  virtual void Assign(int32_t value, uint16_t scale);
  virtual void Assign(int64_t value, uint16_t scale);
  // Parses decimal text as the text constructor does. Returns S_OK, E_POINTER for null,
  // DISP_E_TYPEMISMATCH for text that is not a decimal number, DISP_E_OVERFLOW for one with
  // too many digits; on failure the value becomes zero with kInvalidScale.
  virtual HRESULT SetFromText(const char* text);
  virtual void Assign(const OLAPrecisionInteger& other);
  // From an OLE Automation DECIMAL: E_INVALIDARG (value unchanged) for a scale above 28 or a
  // sign byte other than 0 and DECIMAL_NEG.
  virtual HRESULT FromDecimal(const DECIMAL& value);

  // Comparisons by value across scales (1.5 equals 1.50). An invalid operand compares like a
  // NaN: NotEquals is true and every other comparison false.
  virtual bool Equals(const OLAPrecisionInteger& other) const;
  virtual bool NotEquals(const OLAPrecisionInteger& other) const;
  virtual bool GreaterThan(const OLAPrecisionInteger& other) const;
  virtual bool GreaterOrEqual(const OLAPrecisionInteger& other) const;
  virtual bool LessThan(const OLAPrecisionInteger& other) const;
  virtual bool LessOrEqual(const OLAPrecisionInteger& other) const;

  // this = this op other.
  virtual HRESULT Add(const OLAPrecisionInteger& other);
  virtual HRESULT Subtract(const OLAPrecisionInteger& other);
  virtual HRESULT Multiply(const OLAPrecisionInteger& other);
  virtual HRESULT Divide(const OLAPrecisionInteger& divisor);
  // this = the whole-number quotient this / divisor, truncated towards zero (scale 0);
  // remainder = this - quotient * divisor, exact, with the sign of the dividend and the larger
  // of the two scales. DISP_E_OVERFLOW when the quotient does not fit 96 bits.
  virtual HRESULT DivideWithRemainder(const OLAPrecisionInteger& divisor,
                                      OLAPrecisionInteger& remainder);
  // Multiplies the magnitude by ten, keeping the scale (so the value grows tenfold).
  virtual HRESULT MultiplyByTen();
  // Sets the scale field: the magnitude stays, the value becomes magnitude / 10^scale.
  virtual void SetScale(uint16_t scale);
  // Changes the sign; zero stays positive.
  virtual void Negate();

  // The text form for documents: no zero before the point (.05, -.5), trailing decimal zeros
  // and a trailing point removed (12.5, 12), "0" for zero and for an invalid scale. The text is
  // kept in the value and rewritten by every call.
  virtual const char* ToString();
  // True when the scale is at most kMaxScale.
  virtual bool IsValid() const;

  // To an OLE Automation DECIMAL: E_INVALIDARG for an invalid value; a scale of 29 is rounded
  // half to even to 28.
  HRESULT ToDecimal(DECIMAL& out) const;

  uint32_t Low() const { return low_; }
  uint32_t Middle() const { return middle_; }
  uint32_t High() const { return high_; }
  // 1 for zero and positive values, -1 for negative ones.
  int16_t Sign() const { return sign_; }
  uint16_t Scale() const { return scale_; }
  bool IsZero() const { return (low_ | middle_ | high_) == 0; }
  bool IsNegative() const { return sign_ < 0; }
  // The scale part of validity, which arithmetic and comparisons need (OLAPercent's range test
  // does not apply to them).
  bool HasValidScale() const { return scale_ <= kMaxScale; }

 protected:
  // Replaces magnitude, sign and scale; a zero magnitude is always positive.
  void SetParts(unsigned __int128 magnitude, bool negative, uint16_t scale);
  unsigned __int128 Magnitude() const;

 private:
  // -1, 0 or 1, or kUnordered when either value is invalid.
  static constexpr int kUnordered = 2;
  int Compare(const OLAPrecisionInteger& other) const;

  uint32_t low_ = 0;
  uint32_t middle_ = 0;
  uint32_t high_ = 0;
  int16_t sign_ = 1;
  uint16_t scale_ = 0;
  // The text form written by ToString; kept inline so that copies never allocate.
  char text_[kTextSize] = "0";
  // Reserved; always null.
  void* spare_ = nullptr;
};

// A money amount: whole units and hundredths, scale 2.
class OLAAmount : public OLAPrecisionInteger {
 public:
  // 0.00
  OLAAmount() : OLAPrecisionInteger(int32_t{0}, 2) {}
  // whole * 100 + hundredths with scale 2 (both signed: -5 and 25 give -4.75).
  OLAAmount(int64_t whole, int32_t hundredths);
  // Any value taken as an amount, scale included.
  explicit OLAAmount(const OLAPrecisionInteger& value) : OLAPrecisionInteger(value) {}
};

// A percentage, normally with five decimals; valid only from 0 to 100 inclusive.
class OLAPercent : public OLAPrecisionInteger {
 public:
  // 0.00000
  OLAPercent() : OLAPrecisionInteger(int32_t{0}, 5) {}
  OLAPercent(int64_t value, uint16_t scale) : OLAPrecisionInteger(value, scale) {}
  explicit OLAPercent(const OLAPrecisionInteger& value) : OLAPrecisionInteger(value) {}

  // Scale at most kMaxScale and 0 <= value <= 100.
  bool IsValid() const override;
};
