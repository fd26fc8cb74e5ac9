#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <ostream>
#include <random>
#include <string>
#include <type_traits>
#include <utility>

#include "clienttools/COLAConvert.h"
#include "clienttools/OLAPrecisionInteger.h"
#include "platform/ComError.h"

namespace {

using u128 = unsigned __int128;

// "-1250e-2": sign, magnitude and scale exactly, read from the fields (not from ToString).
std::string Describe(const OLAPrecisionInteger& value) {
  u128 magnitude = (u128(value.High()) << 64) | (u128(value.Middle()) << 32) | value.Low();
  std::string digits;
  do {
    digits.insert(digits.begin(), char('0' + int(magnitude % 10)));
    magnitude /= 10;
  } while (magnitude != 0);
  return (value.IsNegative() ? "-" : "") + digits + "e-" + std::to_string(value.Scale());
}

OLAPrecisionInteger Parse(const char* text) {
  OLAPrecisionInteger value;
  EXPECT_EQ(value.SetFromText(text), S_OK) << text;
  return value;
}

constexpr const char* kLargest = "79228162514264337593543950335";  // 2^96 - 1

// --- Text form ---------------------------------------------------------------------------------

struct IntegerText {
  int64_t value;
  uint16_t scale;
  const char* text;
};
void PrintTo(const IntegerText& c, std::ostream* os) { *os << c.value << " scale " << c.scale; }

class ToStringFromInteger : public ::testing::TestWithParam<IntegerText> {};

TEST_P(ToStringFromInteger, WritesTheDocumentForm) {
  OLAPrecisionInteger value(GetParam().value, GetParam().scale);
  EXPECT_STREQ(value.ToString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Edges, ToStringFromInteger,
    ::testing::Values(IntegerText{0, 2, "0"}, IntegerText{5, 2, ".05"}, IntegerText{50, 2, ".5"},
                      IntegerText{-5, 2, "-.05"}, IntegerText{-1250, 2, "-12.5"},
                      IntegerText{123456, 2, "1234.56"}, IntegerText{123450, 2, "1234.5"},
                      IntegerText{123400, 2, "1234"}, IntegerText{825000, 5, "8.25"},
                      IntegerText{10000000, 5, "100"}, IntegerText{300, 2, "3"},
                      IntegerText{7, 0, "7"}, IntegerText{10, 0, "10"}, IntegerText{100, 1, "10"},
                      IntegerText{-100, 0, "-100"}, IntegerText{1005, 3, "1.005"},
                      IntegerText{1, 29, ".00000000000000000000000000001"},
                      IntegerText{5, 30, "0"}, IntegerText{-5, 30, "0"},
                      IntegerText{123, 65535, "0"},
                      IntegerText{4294967295, 0, "4294967295"},
                      IntegerText{4294967295, 10, ".4294967295"},
                      IntegerText{4294967296, 0, "4294967296"},
                      IntegerText{4294967296, 12, ".004294967296"},
                      IntegerText{1099511627776, 20, ".00000001099511627776"},
                      IntegerText{-1099511627776, 4, "-109951162.7776"},
                      IntegerText{std::numeric_limits<int64_t>::min(), 0, "-9223372036854775808"},
                      IntegerText{std::numeric_limits<int64_t>::max(), 18, "9.223372036854775807"}));

struct TextCase {
  const char* input;
  const char* text;
};
void PrintTo(const TextCase& c, std::ostream* os) { *os << c.input; }

class ToStringFromText : public ::testing::TestWithParam<TextCase> {};

TEST_P(ToStringFromText, WritesTheDocumentForm) {
  OLAPrecisionInteger value = Parse(GetParam().input);
  EXPECT_STREQ(value.ToString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Large, ToStringFromText,
    ::testing::Values(TextCase{kLargest, kLargest},
                      TextCase{"-79228162514264337593543950335", "-79228162514264337593543950335"},
                      TextCase{"7.9228162514264337593543950335", "7.9228162514264337593543950335"},
                      TextCase{"0.79228162514264337593543950335", ".79228162514264337593543950335"},
                      TextCase{"10000000000000000000000000000", "10000000000000000000000000000"},
                      TextCase{"1.0000000000000000000000000000", "1"},
                      TextCase{"-0.0000000000000000000000000010", "-.000000000000000000000000001"},
                      TextCase{"18446744073709551616.00", "18446744073709551616"},
                      TextCase{"184467440737095516.1600", "184467440737095516.16"}));

TEST(OLAPrecisionIntegerText, IsRewrittenByEachCall) {
  OLAPrecisionInteger value(125, 2);
  const char* text = value.ToString();
  EXPECT_STREQ(text, "1.25");
  ASSERT_EQ(value.Add(OLAPrecisionInteger(1, 0)), S_OK);
  EXPECT_STREQ(value.ToString(), "2.25");
  EXPECT_EQ(value.ToString(), text);  // the same buffer, rewritten
}

TEST(OLAPrecisionIntegerText, CopiesAndMovesCarryTheirOwnText) {
  static_assert(std::is_nothrow_copy_constructible_v<OLAAmount>);
  static_assert(std::is_nothrow_move_constructible_v<OLAAmount>);
  OLAAmount amount(12, 50);
  EXPECT_STREQ(amount.ToString(), "12.5");
  OLAAmount copy = amount;
  amount.Negate();
  EXPECT_STREQ(amount.ToString(), "-12.5");
  EXPECT_STREQ(copy.ToString(), "12.5");
  OLAAmount moved = std::move(copy);
  EXPECT_STREQ(moved.ToString(), "12.5");
  EXPECT_NE(moved.ToString(), amount.ToString());
}

// --- Validity ----------------------------------------------------------------------------------

TEST(OLAPrecisionIntegerValidity, ScaleUpTo29IsValid) {
  EXPECT_TRUE(OLAPrecisionInteger(1, 29).IsValid());
  EXPECT_FALSE(OLAPrecisionInteger(1, 30).IsValid());
  OLAPrecisionInteger value(1, 2);
  value.SetScale(30);
  EXPECT_FALSE(value.IsValid());
  EXPECT_STREQ(value.ToString(), "0");
  value.SetScale(3);
  EXPECT_TRUE(value.IsValid());
  EXPECT_STREQ(value.ToString(), ".001");
}

struct PercentCase {
  const char* text;
  bool valid;
};

class PercentValidity : public ::testing::TestWithParam<PercentCase> {};

TEST_P(PercentValidity, IsValidFrom0To100) {
  OLAPercent percent(Parse(GetParam().text));
  EXPECT_EQ(percent.IsValid(), GetParam().valid);
  // Through the base class too: the override is what the writer sees.
  const OLAPrecisionInteger& base = percent;
  EXPECT_EQ(base.IsValid(), GetParam().valid);
}

INSTANTIATE_TEST_SUITE_P(Bounds, PercentValidity,
                         ::testing::Values(PercentCase{"150", false}, PercentCase{"100", true},
                                           PercentCase{"100.00000", true},
                                           PercentCase{"100.00001", false},
                                           PercentCase{"0", true}, PercentCase{"-0.00001", false},
                                           PercentCase{"-5", false}, PercentCase{"8.25", true},
                                           PercentCase{"0.00000000000000000000000000001", true}));

TEST(PercentValidity, InvalidScaleIsInvalid) {
  EXPECT_FALSE(OLAPercent(5, 30).IsValid());
  EXPECT_TRUE(OLAPercent().IsValid());
  EXPECT_EQ(Describe(OLAPercent()), "0e-5");
}

// --- Comparisons -------------------------------------------------------------------------------

struct CompareCase {
  const char* a;
  const char* b;
  int order;  // -1, 0, 1
};
void PrintTo(const CompareCase& c, std::ostream* os) { *os << c.a << " ? " << c.b; }

class Comparisons : public ::testing::TestWithParam<CompareCase> {};

TEST_P(Comparisons, AgreeWithTheOrder) {
  OLAPrecisionInteger a = Parse(GetParam().a);
  OLAPrecisionInteger b = Parse(GetParam().b);
  int order = GetParam().order;
  EXPECT_EQ(a.Equals(b), order == 0);
  EXPECT_EQ(a.NotEquals(b), order != 0);
  EXPECT_EQ(a.GreaterThan(b), order > 0);
  EXPECT_EQ(a.GreaterOrEqual(b), order >= 0);
  EXPECT_EQ(a.LessThan(b), order < 0);
  EXPECT_EQ(a.LessOrEqual(b), order <= 0);
  // And the other way round.
  EXPECT_EQ(b.GreaterThan(a), order < 0);
  EXPECT_EQ(b.LessThan(a), order > 0);
}

INSTANTIATE_TEST_SUITE_P(
    AcrossScales, Comparisons,
    ::testing::Values(
        CompareCase{"1.5", "1.50", 0}, CompareCase{"1.5", "1.49", 1},
        CompareCase{"-0", "0.000", 0}, CompareCase{"0", "0.00000000000000000000000000001", -1},
        CompareCase{"-1", "1", -1}, CompareCase{"-2", "-1.5", -1},
        CompareCase{"-0.001", "0", -1}, CompareCase{"12", "11.99999999999999999999999999", 1},
        CompareCase{kLargest, "7.9228162514264337593543950335", 1},
        CompareCase{kLargest, "79228162514264337593543950334", 1},
        CompareCase{"-79228162514264337593543950335", "-79228162514264337593543950334", -1},
        CompareCase{"7.922816251426433759354395033", "7.9228162514264337593543950330", 0},
        CompareCase{"0.00000000000000000000000000002", "0.0000000000000000000000000001", -1},
        CompareCase{"-5857155101124.6795945325986837", "-1351732346343552237.02220331", 1}));

TEST(Comparisons, InvalidValuesAreUnordered) {
  OLAPrecisionInteger invalid(0, 30);
  OLAPrecisionInteger zero(0, 0);
  for (const auto& [a, b] : {std::pair{&invalid, &zero}, std::pair{&zero, &invalid},
                             std::pair{&invalid, &invalid}}) {
    EXPECT_FALSE(a->Equals(*b));
    EXPECT_TRUE(a->NotEquals(*b));
    EXPECT_FALSE(a->GreaterThan(*b));
    EXPECT_FALSE(a->GreaterOrEqual(*b));
    EXPECT_FALSE(a->LessThan(*b));
    EXPECT_FALSE(a->LessOrEqual(*b));
  }
}

// --- Arithmetic --------------------------------------------------------------------------------

// Expected results computed with an independent exact decimal implementation (round half to
// even): "overflow", "divbyzero", or the result as Describe writes it.
struct ArithmeticCase {
  const char* a;
  const char* b;
  const char* result;
};
void PrintTo(const ArithmeticCase& c, std::ostream* os) { *os << c.a << ", " << c.b; }

void CheckOperation(HRESULT (OLAPrecisionInteger::*operation)(const OLAPrecisionInteger&),
                    const ArithmeticCase& c) {
  OLAPrecisionInteger value = Parse(c.a);
  std::string before = Describe(value);
  HRESULT hr = (value.*operation)(Parse(c.b));
  std::string expected = c.result;
  if (expected == "overflow" || expected == "divbyzero") {
    EXPECT_EQ(hr, expected == "overflow" ? DISP_E_OVERFLOW : DISP_E_DIVBYZERO);
    EXPECT_EQ(Describe(value), before);  // unchanged
  } else {
    EXPECT_EQ(hr, S_OK);
    EXPECT_EQ(Describe(value), expected);
  }
}

class Addition : public ::testing::TestWithParam<ArithmeticCase> {};
TEST_P(Addition, IsExactOrRoundedHalfToEven) { CheckOperation(&OLAPrecisionInteger::Add, GetParam()); }
INSTANTIATE_TEST_SUITE_P(
    Cases, Addition,
    ::testing::Values(
        ArithmeticCase{kLargest, "1", "overflow"}, ArithmeticCase{kLargest, "0.5", "overflow"},
        ArithmeticCase{kLargest, "0.49", "79228162514264337593543950335e-0"},
        ArithmeticCase{"79228162514264337593543950334", "0.5", "79228162514264337593543950334e-0"},
        ArithmeticCase{"79228162514264337593543950333", "0.5", "79228162514264337593543950334e-0"},
        // Rounds to 2^96 at scale 1, so one more digit goes.
        ArithmeticCase{"7922816251426433759354395033.5", "0.05", "7922816251426433759354395034e-0"},
        ArithmeticCase{"1", "0.0000000000000000000000000001", "10000000000000000000000000001e-28"},
        ArithmeticCase{"10", "0.0000000000000000000000000001", "10000000000000000000000000000e-27"},
        ArithmeticCase{"10", "0.0000000000000000000000000005", "10000000000000000000000000000e-27"},
        ArithmeticCase{"10", "0.0000000000000000000000000015", "10000000000000000000000000002e-27"},
        ArithmeticCase{"-10", "-0.0000000000000000000000000015",
                       "-10000000000000000000000000002e-27"},
        ArithmeticCase{"10", "0.00000000000000000000000000051", "10000000000000000000000000001e-27"},
        ArithmeticCase{"0.1", "-0.1", "0e-1"}, ArithmeticCase{"1.5", "2.25", "375e-2"},
        ArithmeticCase{"-2", "1.25", "-75e-2"}, ArithmeticCase{"0", "-5.000", "-5000e-3"},
        ArithmeticCase{"-79228162514264337593543950335", "-1", "overflow"}));

class Subtraction : public ::testing::TestWithParam<ArithmeticCase> {};
TEST_P(Subtraction, IsExactOrRoundedHalfToEven) {
  CheckOperation(&OLAPrecisionInteger::Subtract, GetParam());
}
INSTANTIATE_TEST_SUITE_P(
    Cases, Subtraction,
    ::testing::Values(ArithmeticCase{"1", "0.01", "99e-2"},
                      ArithmeticCase{"-79228162514264337593543950335", "1", "overflow"},
                      ArithmeticCase{"0", "5", "-5e-0"}, ArithmeticCase{"5.5", "5.50", "0e-2"},
                      ArithmeticCase{"-1.5", "-2.25", "75e-2"},
                      ArithmeticCase{"1", "0.00000000000000000000000000001",
                                     "10000000000000000000000000000e-28"}));

class Multiplication : public ::testing::TestWithParam<ArithmeticCase> {};
TEST_P(Multiplication, IsExactOrRoundedHalfToEven) {
  CheckOperation(&OLAPrecisionInteger::Multiply, GetParam());
}
INSTANTIATE_TEST_SUITE_P(
    Cases, Multiplication,
    ::testing::Values(
        ArithmeticCase{"1.5", "2.0", "300e-2"},
        ArithmeticCase{kLargest, "0.1", "79228162514264337593543950335e-1"},
        ArithmeticCase{kLargest, kLargest, "overflow"},
        ArithmeticCase{kLargest, "-1", "-79228162514264337593543950335e-0"},
        ArithmeticCase{"0.0000000000000000000000000001", "0.1", "0e-0"},
        ArithmeticCase{"0.0000000000000000000000000001", "0.5", "0e-0"},
        ArithmeticCase{"0.0000000000000000000000000001", "0.6", "1e-28"},
        ArithmeticCase{"0.0000000000000000000000000003", "0.5", "2e-28"},
        ArithmeticCase{"1.0000000000000000000000000001", "1.0000000000000000000000000001",
                       "10000000000000000000000000002e-28"},
        ArithmeticCase{"0", "1.5", "0e-1"},
        ArithmeticCase{"0.000", "0.0000000000000000000000000001", "0e-28"},
        ArithmeticCase{kLargest, "0.5", "39614081257132168796771975168e-0"},
        ArithmeticCase{"3.3333333333333333333333333333", "3", "10000000000000000000000000000e-27"},
        ArithmeticCase{"8000000000000000000000000000", "10", "overflow"},
        ArithmeticCase{"-1.5", "-2", "30e-1"}, ArithmeticCase{"-1.5", "2", "-30e-1"}));

class Division : public ::testing::TestWithParam<ArithmeticCase> {};
TEST_P(Division, IsExactOrRoundedHalfToEven) {
  CheckOperation(&OLAPrecisionInteger::Divide, GetParam());
}
INSTANTIATE_TEST_SUITE_P(
    Cases, Division,
    ::testing::Values(
        ArithmeticCase{"1", "3", "3333333333333333333333333333e-28"},
        ArithmeticCase{"2", "3", "6666666666666666666666666667e-28"},
        ArithmeticCase{"1", "8", "125e-3"}, ArithmeticCase{"10", "4", "25e-1"},
        ArithmeticCase{"1", "0.5", "2e-0"}, ArithmeticCase{"1.00", "1", "100e-2"},
        ArithmeticCase{"-7", "2", "-35e-1"},
        ArithmeticCase{kLargest, "2", "39614081257132168796771975168e-0"},
        ArithmeticCase{"79228162514264337593543950333", "2", "39614081257132168796771975166e-0"},
        ArithmeticCase{kLargest, "0.1", "overflow"}, ArithmeticCase{"0", "5", "0e-0"},
        ArithmeticCase{"0.000", "5", "0e-0"},
        ArithmeticCase{"7.9228162514264337593543950335", "42949672.96",
                       "1844674407370955161600e-28"},
        ArithmeticCase{"1", "0.0000000000000000000000000001", "10000000000000000000000000000e-0"},
        ArithmeticCase{"10", "0.0000000000000000000000000001", "overflow"},
        ArithmeticCase{"0.00000000000000000000000000001", "1", "0e-0"},
        ArithmeticCase{"0.00000000000000000000000000005", "1", "0e-0"},
        ArithmeticCase{"0.00000000000000000000000000015", "1", "2e-28"},
        ArithmeticCase{"1", "7", "1428571428571428571428571429e-28"},
        ArithmeticCase{"100", "3", "33333333333333333333333333333e-27"},
        ArithmeticCase{"10000000000000000000000000000", "3", "33333333333333333333333333333e-1"},
        ArithmeticCase{"7.9228162514264337593543950335", "0.5",
                       "15845632502852867518708790067e-27"},
        ArithmeticCase{"-1", "-3", "3333333333333333333333333333e-28"},
        ArithmeticCase{"1", "-3", "-3333333333333333333333333333e-28"},
        ArithmeticCase{"5", "0", "divbyzero"}, ArithmeticCase{"1.5", "0.05", "30e-0"},
        ArithmeticCase{"0.1", "10", "1e-2"},
        // Rounds up to 2^96 at scale 28, so one more digit goes.
        ArithmeticCase{"5.5459713759985036315480765235", "0.7", "7922816251426433759354395034e-27"},
        ArithmeticCase{"5.5459713759985036315480765234", "0.7",
                       "79228162514264337593543950334e-28"}));

TEST(Arithmetic, InvalidOperandsAreRefused) {
  OLAPrecisionInteger invalid(1, 30);
  OLAPrecisionInteger one(1, 0);
  OLAPrecisionInteger remainder;
  for (auto operation : {&OLAPrecisionInteger::Add, &OLAPrecisionInteger::Subtract,
                         &OLAPrecisionInteger::Multiply, &OLAPrecisionInteger::Divide}) {
    OLAPrecisionInteger value = one;
    EXPECT_EQ((value.*operation)(invalid), E_INVALIDARG);
    EXPECT_EQ(Describe(value), "1e-0");
    EXPECT_EQ((invalid.*operation)(one), E_INVALIDARG);
  }
  OLAPrecisionInteger value = one;
  EXPECT_EQ(value.DivideWithRemainder(invalid, remainder), E_INVALIDARG);
  // An out-of-range percent is still a number: arithmetic takes it.
  OLAPercent percent(150, 0);
  EXPECT_EQ(percent.Subtract(OLAPrecisionInteger(50, 0)), S_OK);
  EXPECT_TRUE(percent.IsValid());
}

struct RemainderCase {
  const char* a;
  const char* b;
  const char* quotient;
  const char* remainder;
};

class DivideWithRemainder : public ::testing::TestWithParam<RemainderCase> {};

TEST_P(DivideWithRemainder, TruncatesTowardsZero) {
  OLAPrecisionInteger value = Parse(GetParam().a);
  OLAPrecisionInteger remainder;
  ASSERT_EQ(value.DivideWithRemainder(Parse(GetParam().b), remainder), S_OK);
  EXPECT_EQ(Describe(value), GetParam().quotient);
  EXPECT_EQ(Describe(remainder), GetParam().remainder);
  // quotient * b + remainder == a
  ASSERT_EQ(value.Multiply(Parse(GetParam().b)), S_OK);
  ASSERT_EQ(value.Add(remainder), S_OK);
  EXPECT_TRUE(value.Equals(Parse(GetParam().a)));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DivideWithRemainder,
    ::testing::Values(RemainderCase{"7", "2", "3e-0", "1e-0"},
                      RemainderCase{"-7", "2", "-3e-0", "-1e-0"},
                      RemainderCase{"7", "-2", "-3e-0", "1e-0"},
                      RemainderCase{"7.5", "2", "3e-0", "15e-1"},
                      RemainderCase{"1", "0.3", "3e-0", "1e-1"},
                      RemainderCase{"0.5", "3", "0e-0", "5e-1"},
                      RemainderCase{kLargest, "10000000000000000000000000000",
                                    "7e-0", "9228162514264337593543950335e-0"},
                      RemainderCase{"0.0000000000000000000000000005",
                                    "0.0000000000000000000000000002", "2e-0", "1e-28"}));

TEST(DivideWithRemainder, RefusesZeroAndOverflow) {
  OLAPrecisionInteger value(7, 0);
  OLAPrecisionInteger remainder(3, 0);
  EXPECT_EQ(value.DivideWithRemainder(OLAPrecisionInteger(0, 2), remainder), DISP_E_DIVBYZERO);
  OLAPrecisionInteger largest = Parse(kLargest);
  EXPECT_EQ(largest.DivideWithRemainder(Parse("0.1"), remainder), DISP_E_OVERFLOW);
  EXPECT_EQ(Describe(largest), "79228162514264337593543950335e-0");
  EXPECT_EQ(Describe(remainder), "3e-0");
}

TEST(Arithmetic, MultiplyByTenKeepsTheScale) {
  OLAPrecisionInteger value(5, 2);
  ASSERT_EQ(value.MultiplyByTen(), S_OK);
  EXPECT_EQ(Describe(value), "50e-2");
  EXPECT_STREQ(value.ToString(), ".5");
  OLAPrecisionInteger largest = Parse("7922816251426433759354395034");
  EXPECT_EQ(largest.MultiplyByTen(), DISP_E_OVERFLOW);
  EXPECT_EQ(Describe(largest), "7922816251426433759354395034e-0");
  OLAPrecisionInteger fits = Parse("-7922816251426433759354395033");
  ASSERT_EQ(fits.MultiplyByTen(), S_OK);
  EXPECT_EQ(Describe(fits), "-79228162514264337593543950330e-0");
}

TEST(Arithmetic, NegateLeavesZeroPositive) {
  OLAPrecisionInteger zero(0, 3);
  zero.Negate();
  EXPECT_EQ(zero.Sign(), 1);
  EXPECT_STREQ(zero.ToString(), "0");
  OLAPrecisionInteger value(-12, 1);
  EXPECT_EQ(value.Sign(), -1);
  value.Negate();
  EXPECT_EQ(Describe(value), "12e-1");
}

// Identities on values small enough that every result is exact.
TEST(Arithmetic, IdentitiesHoldOnExactValues) {
  std::mt19937_64 rng(7);
  auto random = [&rng](int bits, int maxScale) {
    int64_t magnitude = int64_t(rng() >> (64 - bits));
    return OLAPrecisionInteger((rng() & 1) ? -magnitude : magnitude,
                               uint16_t(rng() % unsigned(maxScale + 1)));
  };
  for (int i = 0; i < 2000; ++i) {
    OLAPrecisionInteger a = random(60, 8);
    OLAPrecisionInteger b = random(60, 8);
    SCOPED_TRACE(Describe(a) + " " + Describe(b));
    OLAPrecisionInteger sum = a;
    ASSERT_EQ(sum.Add(b), S_OK);
    OLAPrecisionInteger reversed = b;
    ASSERT_EQ(reversed.Add(a), S_OK);
    EXPECT_EQ(Describe(sum), Describe(reversed));
    ASSERT_EQ(sum.Subtract(b), S_OK);
    EXPECT_TRUE(sum.Equals(a));
    OLAPrecisionInteger difference = a;
    ASSERT_EQ(difference.Subtract(b), S_OK);
    EXPECT_EQ(difference.IsNegative(), a.LessThan(b));
    EXPECT_EQ(difference.IsZero(), a.Equals(b));
    OLAPrecisionInteger self = a;
    ASSERT_EQ(self.Subtract(a), S_OK);
    EXPECT_TRUE(self.IsZero());

    OLAPrecisionInteger x = random(40, 10);
    OLAPrecisionInteger y = random(40, 10);
    if (y.IsZero()) continue;
    OLAPrecisionInteger product = x;
    ASSERT_EQ(product.Multiply(y), S_OK);
    EXPECT_EQ(product.Scale(), x.Scale() + y.Scale());
    ASSERT_EQ(product.Divide(y), S_OK);
    EXPECT_TRUE(product.Equals(x));
    OLAPrecisionInteger quotient = x;
    OLAPrecisionInteger remainder;
    ASSERT_EQ(quotient.DivideWithRemainder(y, remainder), S_OK);
    ASSERT_EQ(quotient.Multiply(y), S_OK);
    ASSERT_EQ(quotient.Add(remainder), S_OK);
    EXPECT_TRUE(quotient.Equals(x));
  }
}

// --- Construction ------------------------------------------------------------------------------

class ValidText : public ::testing::TestWithParam<TextCase> {};

TEST_P(ValidText, ParsesWithItsScale) {
  OLAPrecisionInteger value(GetParam().input);
  EXPECT_TRUE(value.IsValid());
  EXPECT_EQ(Describe(value), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, ValidText,
    ::testing::Values(TextCase{"12.50", "1250e-2"}, TextCase{"-.5", "-5e-1"},
                      TextCase{".05", "5e-2"}, TextCase{"+3", "3e-0"}, TextCase{"5.", "5e-0"},
                      TextCase{"007", "7e-0"}, TextCase{"-0", "0e-0"}, TextCase{"-0.00", "0e-2"},
                      TextCase{kLargest, "79228162514264337593543950335e-0"},
                      TextCase{"0.00000000000000000000000000001", "1e-29"},
                      TextCase{"00000000000000000000000000000000000012.5", "125e-1"}));

struct BadText {
  const char* input;
  HRESULT result;
};
void PrintTo(const BadText& c, std::ostream* os) { *os << (c.input ? c.input : "null"); }

class MalformedText : public ::testing::TestWithParam<BadText> {};

TEST_P(MalformedText, GivesTheInvalidValue) {
  OLAPrecisionInteger value(5, 1);
  EXPECT_EQ(value.SetFromText(GetParam().input), GetParam().result);
  EXPECT_FALSE(value.IsValid());
  EXPECT_TRUE(value.IsZero());
  EXPECT_STREQ(value.ToString(), "0");
  OLAPrecisionInteger constructed(GetParam().input);
  EXPECT_FALSE(constructed.IsValid());
  EXPECT_EQ(constructed.Scale(), OLAPrecisionInteger::kInvalidScale);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, MalformedText,
    ::testing::Values(BadText{"", DISP_E_TYPEMISMATCH}, BadText{"-", DISP_E_TYPEMISMATCH},
                      BadText{"+", DISP_E_TYPEMISMATCH}, BadText{".", DISP_E_TYPEMISMATCH},
                      BadText{"-.", DISP_E_TYPEMISMATCH}, BadText{"1.2.3", DISP_E_TYPEMISMATCH},
                      BadText{"12a", DISP_E_TYPEMISMATCH}, BadText{"1e5", DISP_E_TYPEMISMATCH},
                      BadText{" 1", DISP_E_TYPEMISMATCH}, BadText{"1 ", DISP_E_TYPEMISMATCH},
                      BadText{"1 000", DISP_E_TYPEMISMATCH}, BadText{"--1", DISP_E_TYPEMISMATCH},
                      BadText{"1,5", DISP_E_TYPEMISMATCH}, BadText{"0x10", DISP_E_TYPEMISMATCH},
                      BadText{"1-", DISP_E_TYPEMISMATCH},
                      BadText{"79228162514264337593543950336", DISP_E_OVERFLOW},
                      BadText{"0.000000000000000000000000000001", DISP_E_OVERFLOW},
                      BadText{"1.000000000000000000000000000000", DISP_E_OVERFLOW},
                      BadText{"123456789012345678901234567890x", DISP_E_TYPEMISMATCH},
                      BadText{nullptr, E_POINTER}));

TEST(MalformedText, LongInputsEndCleanly) {
  std::string digits(100000, '9');
  EXPECT_EQ(OLAPrecisionInteger().SetFromText(digits.c_str()), DISP_E_OVERFLOW);
  std::string zeros(100000, '0');
  OLAPrecisionInteger zero(zeros.c_str());
  EXPECT_EQ(Describe(zero), "0e-0");
  std::string manyPoints(100000, '.');
  EXPECT_EQ(OLAPrecisionInteger().SetFromText(manyPoints.c_str()), DISP_E_TYPEMISMATCH);
}

TEST(OLAPrecisionIntegerText, RoundTripsThroughTheTextConstructor) {
  std::mt19937_64 rng(11);
  for (int i = 0; i < 3000; ++i) {
    DECIMAL d{};
    int bits = int(rng() % 97);
    u128 magnitude = bits == 0 ? 0 : ((u128(rng()) << 64) | rng()) >> (128 - bits);
    d.Lo32 = ULONG(magnitude);
    d.Mid32 = ULONG(magnitude >> 32);
    d.Hi32 = ULONG(magnitude >> 64);
    d.scale = BYTE(rng() % 29);
    d.sign = (rng() & 1) && magnitude != 0 ? DECIMAL_NEG : 0;
    OLAPrecisionInteger value;
    ASSERT_EQ(value.FromDecimal(d), S_OK);
    std::string text = value.ToString();
    OLAPrecisionInteger back(text.c_str());
    ASSERT_TRUE(back.IsValid()) << text;
    EXPECT_TRUE(back.Equals(value)) << text;
    EXPECT_STREQ(back.ToString(), text.c_str());
  }
}

TEST(OLAPrecisionIntegerConstruction, IntegersOfEveryHostType) {
  EXPECT_EQ(Describe(OLAPrecisionInteger(int32_t{-7}, 1)), "-7e-1");
  EXPECT_EQ(Describe(OLAPrecisionInteger(LONG{-7}, 1)), "-7e-1");
  EXPECT_EQ(Describe(OLAPrecisionInteger(LONGLONG{-7}, 1)), "-7e-1");
  EXPECT_EQ(Describe(OLAPrecisionInteger(SHORT{-7}, 1)), "-7e-1");
  EXPECT_EQ(Describe(OLAPrecisionInteger(uint32_t{4294967295u}, 0)), "4294967295e-0");
  EXPECT_EQ(Describe(OLAPrecisionInteger(std::numeric_limits<int64_t>::min(), 0)),
            "-9223372036854775808e-0");
  EXPECT_EQ(Describe(OLAPrecisionInteger()), "0e-0");
}

struct AmountCase {
  int64_t whole;
  int32_t hundredths;
  const char* parts;
  const char* text;
};

class AmountConstruction : public ::testing::TestWithParam<AmountCase> {};

TEST_P(AmountConstruction, HoldsWholeTimes100PlusHundredths) {
  OLAAmount amount(GetParam().whole, GetParam().hundredths);
  EXPECT_EQ(Describe(amount), GetParam().parts);
  EXPECT_STREQ(amount.ToString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, AmountConstruction,
    ::testing::Values(AmountCase{12, 50, "1250e-2", "12.5"}, AmountCase{0, 5, "5e-2", ".05"},
                      AmountCase{-5, 25, "-475e-2", "-4.75"}, AmountCase{0, 0, "0e-2", "0"},
                      AmountCase{1234, 56, "123456e-2", "1234.56"},
                      AmountCase{std::numeric_limits<int64_t>::max(), 99,
                                 "922337203685477580799e-2", "9223372036854775807.99"},
                      AmountCase{std::numeric_limits<int64_t>::min(), 0,
                                 "-922337203685477580800e-2", "-9223372036854775808"}));

// --- DECIMAL -----------------------------------------------------------------------------------

TEST(DecimalConversion, RoundTripsEveryField) {
  DECIMAL d{};
  d.Hi32 = 0xFFFFFFFF;
  d.Mid32 = 0x12345678;
  d.Lo32 = 0x9ABCDEF0;
  d.scale = 28;
  d.sign = DECIMAL_NEG;
  OLAPrecisionInteger value;
  ASSERT_EQ(value.FromDecimal(d), S_OK);
  EXPECT_EQ(value.High(), 0xFFFFFFFFu);
  EXPECT_EQ(value.Middle(), 0x12345678u);
  EXPECT_EQ(value.Low(), 0x9ABCDEF0u);
  EXPECT_EQ(value.Scale(), 28);
  EXPECT_EQ(value.Sign(), -1);
  DECIMAL back{};
  ASSERT_EQ(value.ToDecimal(back), S_OK);
  EXPECT_EQ(back.Hi32, d.Hi32);
  EXPECT_EQ(back.Mid32, d.Mid32);
  EXPECT_EQ(back.Lo32, d.Lo32);
  EXPECT_EQ(back.scale, d.scale);
  EXPECT_EQ(back.sign, d.sign);
}

TEST(DecimalConversion, RefusesWhatADecimalCannotHold) {
  DECIMAL d{};
  d.Lo32 = 1;
  d.scale = 29;
  OLAPrecisionInteger value(3, 0);
  EXPECT_EQ(value.FromDecimal(d), E_INVALIDARG);
  d.scale = 2;
  d.sign = 1;
  EXPECT_EQ(value.FromDecimal(d), E_INVALIDARG);
  EXPECT_EQ(Describe(value), "3e-0");
  DECIMAL out{};
  EXPECT_EQ(OLAPrecisionInteger(1, 30).ToDecimal(out), E_INVALIDARG);
}

TEST(DecimalConversion, NegativeZeroBecomesZero) {
  DECIMAL d{};
  d.sign = DECIMAL_NEG;
  d.scale = 4;
  OLAPrecisionInteger value;
  ASSERT_EQ(value.FromDecimal(d), S_OK);
  EXPECT_EQ(Describe(value), "0e-4");
  DECIMAL back{};
  ASSERT_EQ(value.ToDecimal(back), S_OK);
  EXPECT_EQ(back.sign, 0);
}

TEST(DecimalConversion, Scale29IsRoundedTo28) {
  struct {
    const char* text;
    const char* parts;
  } cases[] = {{"0.00000000000000000000000000015", "2e-28"},
               {"0.00000000000000000000000000025", "2e-28"},
               {"-0.00000000000000000000000000026", "-3e-28"},
               {"0.00000000000000000000000000004", "0e-28"}};
  for (const auto& c : cases) {
    DECIMAL d{};
    ASSERT_EQ(Parse(c.text).ToDecimal(d), S_OK);
    OLAPrecisionInteger back;
    ASSERT_EQ(back.FromDecimal(d), S_OK);
    EXPECT_EQ(Describe(back), c.parts) << c.text;
  }
}

// --- COLAConvert -------------------------------------------------------------------------------

// A host value object whose operations answer from public fields; the operation named in
// `failing` returns `failure` instead.
template <class Interface>
class FakeHostValue : public Interface {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  std::string failing;
  HRESULT failure = E_FAIL;

 protected:
  template <class T, class U>
  HRESULT Answer(const char* operation, T* out, U value) {
    if (failing == operation) return failure;
    *out = value;
    return S_OK;
  }
};

VARIANT_BOOL Flag(bool value) { return value ? VARIANT_TRUE : VARIANT_FALSE; }

class FakeAmount : public FakeHostValue<IAmount> {
 public:
  HRESULT STDMETHODCALLTYPE Prepare(LONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetText(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* out) override {
    return Answer("IsEmpty", out, Flag(empty));
  }
  HRESULT STDMETHODCALLTYPE IsValid(VARIANT_BOOL* out) override {
    return Answer("IsValid", out, Flag(valid));
  }
  HRESULT STDMETHODCALLTYPE GetWhole(LONGLONG* out) override {
    return Answer("GetWhole", out, whole);
  }
  HRESULT STDMETHODCALLTYPE GetHundredths(LONG* out) override {
    return Answer("GetHundredths", out, hundredths);
  }
  HRESULT STDMETHODCALLTYPE IsNegative(VARIANT_BOOL* out) override {
    return Answer("IsNegative", out, Flag(negative));
  }

  bool empty = false;
  bool valid = true;
  LONGLONG whole = 0;
  LONG hundredths = 0;
  bool negative = false;
};

class FakePercent : public FakeHostValue<IPercent> {
 public:
  HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* out) override {
    return Answer("IsEmpty", out, Flag(empty));
  }
  HRESULT STDMETHODCALLTYPE GetValue(double* out) override {
    return Answer("GetValue", out, value);
  }

  bool empty = false;
  double value = 0;
};

class FakeQuantity : public FakeHostValue<IQuantity> {
 public:
  HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* out) override {
    return Answer("IsEmpty", out, Flag(empty));
  }
  HRESULT STDMETHODCALLTYPE IsValid(VARIANT_BOOL* out) override {
    return Answer("IsValid", out, Flag(valid));
  }
  HRESULT STDMETHODCALLTYPE GetInteger(LONGLONG* out) override {
    return Answer("GetInteger", out, integer);
  }
  HRESULT STDMETHODCALLTYPE GetDecimals(SHORT* out) override {
    return Answer("GetDecimals", out, decimals);
  }
  HRESULT STDMETHODCALLTYPE IsNegative(VARIANT_BOOL* out) override {
    return Answer("IsNegative", out, Flag(negative));
  }

  bool empty = false;
  bool valid = true;
  LONGLONG integer = 0;
  SHORT decimals = 0;
  bool negative = false;
};

// Runs `call`, which must throw ComError with `hr` and `source`.
template <class Call>
void ExpectComError(Call call, HRESULT hr, const IID& source) {
  try {
    call();
    ADD_FAILURE() << "no ComError";
  } catch (const ComError& error) {
    EXPECT_EQ(error.Error(), hr);
    EXPECT_EQ(std::memcmp(&error.Source(), &source, sizeof(IID)), 0);
  }
}

constexpr HRESULT kHostFailure = HRESULT(0x80040201);

struct HostAmountCase {
  LONGLONG whole;
  LONG hundredths;
  bool negative;
  const char* parts;
  const char* text;
};

class AmountFromHost : public ::testing::TestWithParam<HostAmountCase> {};

TEST_P(AmountFromHost, ReadsWholeHundredthsAndSign) {
  FakeAmount host;
  host.whole = GetParam().whole;
  host.hundredths = GetParam().hundredths;
  host.negative = GetParam().negative;
  OLAAmount amount;
  EXPECT_TRUE(COLAConvert().AmountFromHost(&host, amount));
  EXPECT_TRUE(amount.IsValid());
  EXPECT_EQ(Describe(amount), GetParam().parts);
  EXPECT_STREQ(amount.ToString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, AmountFromHost,
    ::testing::Values(HostAmountCase{1234, 56, false, "123456e-2", "1234.56"},
                      HostAmountCase{1234, 50, false, "123450e-2", "1234.5"},
                      HostAmountCase{1234, 0, false, "123400e-2", "1234"},
                      HostAmountCase{12, 50, true, "-1250e-2", "-12.5"},
                      HostAmountCase{0, 5, true, "-5e-2", "-.05"},
                      HostAmountCase{0, 0, true, "0e-2", "0"}));

TEST(AmountFromHost, EmptyOrInvalidHostValueGivesTheInvalidValue) {
  for (bool empty : {true, false}) {
    FakeAmount host;
    host.empty = empty;
    host.valid = false;
    host.failing = "GetWhole";  // never asked
    OLAAmount amount(1, 0);
    EXPECT_FALSE(COLAConvert().AmountFromHost(&host, amount));
    EXPECT_FALSE(amount.IsValid());
  }
}

TEST(AmountFromHost, FailingHostCallsThrowWithTheAmountInterface) {
  for (const char* operation : {"IsEmpty", "IsValid", "GetWhole", "GetHundredths", "IsNegative"}) {
    SCOPED_TRACE(operation);
    FakeAmount host;
    host.failing = operation;
    host.failure = kHostFailure;
    OLAAmount amount;
    ExpectComError([&] { COLAConvert().AmountFromHost(&host, amount); }, kHostFailure,
                   IidOf<IAmount>());
  }
  OLAAmount amount;
  ExpectComError([&] { COLAConvert().AmountFromHost(nullptr, amount); }, E_POINTER, GUID_NULL);
}

struct HostPercentCase {
  double value;
  const char* parts;
  const char* text;
  bool valid;
};

class PercentFromHost : public ::testing::TestWithParam<HostPercentCase> {};

TEST_P(PercentFromHost, FloorsAtTheFifthDecimal) {
  FakePercent host;
  host.value = GetParam().value;
  OLAPercent percent;
  EXPECT_TRUE(COLAConvert().PercentFromHost(&host, percent));
  EXPECT_EQ(Describe(percent), GetParam().parts);
  EXPECT_STREQ(percent.ToString(), GetParam().text);
  EXPECT_EQ(percent.IsValid(), GetParam().valid);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PercentFromHost,
    ::testing::Values(HostPercentCase{8.25, "825000e-5", "8.25", true},
                      HostPercentCase{0.000009, "0e-5", "0", true},
                      HostPercentCase{100, "10000000e-5", "100", true},
                      HostPercentCase{150, "15000000e-5", "150", false},
                      HostPercentCase{-0.000001, "-1e-5", "-.00001", false},
                      // 0.29 * 100000.0 is 28999.999999999996 in binary: the floor keeps it.
                      HostPercentCase{0.29, "28999e-5", ".28999", true},
                      HostPercentCase{12.345678, "1234567e-5", "12.34567", true}));

TEST(PercentFromHost, ValuesBeyondTheIntegerRangeGiveTheInvalidValue) {
  for (double value : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e300, 92233720368547.76}) {
    SCOPED_TRACE(value);
    FakePercent host;
    host.value = value;
    OLAPercent percent;
    EXPECT_FALSE(COLAConvert().PercentFromHost(&host, percent));
    EXPECT_FALSE(percent.IsValid());
    EXPECT_EQ(percent.Scale(), OLAPrecisionInteger::kInvalidScale);
  }
  FakePercent host;
  host.value = 92233720368547.74;  // the floor still fits 64 bits
  OLAPercent percent;
  EXPECT_TRUE(COLAConvert().PercentFromHost(&host, percent));
  EXPECT_EQ(Describe(percent), "9223372036854773760e-5");
}

TEST(PercentFromHost, EmptyAndFailingHostValues) {
  FakePercent empty;
  empty.empty = true;
  empty.failing = "GetValue";  // never asked
  OLAPercent percent;
  EXPECT_FALSE(COLAConvert().PercentFromHost(&empty, percent));
  EXPECT_FALSE(percent.IsValid());
  for (const char* operation : {"IsEmpty", "GetValue"}) {
    SCOPED_TRACE(operation);
    FakePercent host;
    host.failing = operation;
    host.failure = E_OUTOFMEMORY;
    ExpectComError([&] { COLAConvert().PercentFromHost(&host, percent); }, E_OUTOFMEMORY,
                   IidOf<IPercent>());
  }
  ExpectComError([&] { COLAConvert().PercentFromHost(nullptr, percent); }, E_POINTER, GUID_NULL);
}

struct HostQuantityCase {
  LONGLONG integer;
  SHORT decimals;
  bool negative;
  const char* parts;
  const char* text;
};

class QuantityFromHost : public ::testing::TestWithParam<HostQuantityCase> {};

TEST_P(QuantityFromHost, ReadsIntegerDecimalsAndSign) {
  FakeQuantity host;
  host.integer = GetParam().integer;
  host.decimals = GetParam().decimals;
  host.negative = GetParam().negative;
  OLAPrecisionInteger quantity;
  EXPECT_TRUE(COLAConvert().QuantityFromHost(&host, quantity));
  EXPECT_EQ(Describe(quantity), GetParam().parts);
  EXPECT_STREQ(quantity.ToString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Cases, QuantityFromHost,
                         ::testing::Values(HostQuantityCase{300, 2, false, "300e-2", "3"},
                                           HostQuantityCase{1234, 3, true, "-1234e-3", "-1.234"},
                                           HostQuantityCase{5, 0, false, "5e-0", "5"},
                                           HostQuantityCase{7, 29, false, "7e-29",
                                                            ".00000000000000000000000000007"}));

TEST(QuantityFromHost, DecimalsOutsideTheScaleRangeGiveTheInvalidValue) {
  for (SHORT decimals : {SHORT(-1), SHORT(30), SHORT(32767)}) {
    FakeQuantity host;
    host.integer = 5;
    host.decimals = decimals;
    OLAPrecisionInteger quantity(1, 0);
    EXPECT_FALSE(COLAConvert().QuantityFromHost(&host, quantity));
    EXPECT_FALSE(quantity.IsValid());
  }
}

TEST(QuantityFromHost, EmptyInvalidAndFailingHostValues) {
  FakeQuantity empty;
  empty.empty = true;
  OLAPrecisionInteger quantity;
  EXPECT_FALSE(COLAConvert().QuantityFromHost(&empty, quantity));
  FakeQuantity invalid;
  invalid.valid = false;
  EXPECT_FALSE(COLAConvert().QuantityFromHost(&invalid, quantity));
  EXPECT_FALSE(quantity.IsValid());
  for (const char* operation :
       {"IsEmpty", "IsValid", "GetInteger", "GetDecimals", "IsNegative"}) {
    SCOPED_TRACE(operation);
    FakeQuantity host;
    host.failing = operation;
    host.failure = kHostFailure;
    ExpectComError([&] { COLAConvert().QuantityFromHost(&host, quantity); }, kHostFailure,
                   IidOf<IQuantity>());
  }
  ExpectComError([&] { COLAConvert().QuantityFromHost(nullptr, quantity); }, E_POINTER,
                 GUID_NULL);
}

}  // namespace
