// OLAPrecisionInteger, OLAAmount and OLAPercent: text forms, validity, comparisons, arithmetic
// rounded half to even, DECIMAL conversion, and COLAConvert's reading of the host's values. The
// laws over random operands (text round trips, exact small results, quotient and remainder) are
// checked by fuzz/decimal_fuzzer.cpp, and on Windows against the system in decimal_oracle_test.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <string>
#include <tuple>
#include <utility>

#include "clienttools/COLAConvert.h"
#include "clienttools/OLAPrecisionInteger.h"
#include "platform/ComError.h"
#include "support/FakeHostValues.h"

namespace {

using parcelon::test::FakeAmount;
using parcelon::test::FakePercent;
using parcelon::test::FakeQuantity;
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
constexpr int64_t kInt64Min = std::numeric_limits<int64_t>::min();
constexpr int64_t kInt64Max = std::numeric_limits<int64_t>::max();

// --- Text form ---------------------------------------------------------------------------------

TEST(OLAPrecisionIntegerText, FromIntegerAndScale) {
  const struct { int64_t value; uint16_t scale; const char* text; } cases[] = {
      {0, 2, "0"}, {5, 2, ".05"}, {50, 2, ".5"}, {-5, 2, "-.05"}, {-1250, 2, "-12.5"},
      {123456, 2, "1234.56"}, {123450, 2, "1234.5"}, {123400, 2, "1234"}, {825000, 5, "8.25"},
      {10000000, 5, "100"}, {300, 2, "3"}, {7, 0, "7"}, {10, 0, "10"}, {100, 1, "10"},
      {-100, 0, "-100"}, {1005, 3, "1.005"}, {1, 29, ".00000000000000000000000000001"},
      {5, 30, "0"}, {-5, 30, "0"}, {123, 65535, "0"},  // an invalid scale writes "0"
      {4294967295, 0, "4294967295"}, {4294967295, 10, ".4294967295"}, {4294967296, 0, "4294967296"},
      {4294967296, 12, ".004294967296"}, {1099511627776, 20, ".00000001099511627776"},
      {-1099511627776, 4, "-109951162.7776"}, {kInt64Min, 0, "-9223372036854775808"},
      {kInt64Max, 18, "9.223372036854775807"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.value) + " scale " + std::to_string(c.scale));
    EXPECT_STREQ(OLAPrecisionInteger(c.value, c.scale).ToString(), c.text);
  }
  // Every integer type of the host takes the same constructor path.
  EXPECT_EQ(Describe(OLAPrecisionInteger(int32_t{-7}, 1)), "-7e-1");
  EXPECT_EQ(Describe(OLAPrecisionInteger(LONG{-7}, 1)), "-7e-1");
  EXPECT_EQ(Describe(OLAPrecisionInteger(LONGLONG{-7}, 1)), "-7e-1");
  EXPECT_EQ(Describe(OLAPrecisionInteger(SHORT{-7}, 1)), "-7e-1");
  EXPECT_EQ(Describe(OLAPrecisionInteger(uint32_t{4294967295u}, 0)), "4294967295e-0");
  EXPECT_EQ(Describe(OLAPrecisionInteger()), "0e-0");
}

TEST(OLAPrecisionIntegerText, AmountIsWholeTimes100PlusHundredths) {
  const struct {
    int64_t whole;
    int32_t hundredths;
    const char* parts;
    const char* text;
  } cases[] = {
      {12, 50, "1250e-2", "12.5"}, {0, 5, "5e-2", ".05"}, {-5, 25, "-475e-2", "-4.75"},
      {0, 0, "0e-2", "0"}, {1234, 56, "123456e-2", "1234.56"},
      {kInt64Max, 99, "922337203685477580799e-2", "9223372036854775807.99"},
      {kInt64Min, 0, "-922337203685477580800e-2", "-9223372036854775808"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    OLAAmount amount(c.whole, c.hundredths);
    EXPECT_EQ(Describe(amount), c.parts);
    EXPECT_STREQ(amount.ToString(), c.text);
  }
}

// Text in: the digits and scale it gives, and the text form written back.
TEST(OLAPrecisionIntegerText, ParsesWithItsScaleAndWritesTheDocumentForm) {
  const struct { const char* input; const char* parts; const char* text; } cases[] = {
      {"12.50", "1250e-2", "12.5"}, {"-.5", "-5e-1", "-.5"}, {".05", "5e-2", ".05"},
      {"+3", "3e-0", "3"}, {"5.", "5e-0", "5"}, {"007", "7e-0", "7"}, {"-0", "0e-0", "0"},
      {"-0.00", "0e-2", "0"}, {"00000000000000000000000000000000000012.5", "125e-1", "12.5"},
      {"0.00000000000000000000000000001", "1e-29", ".00000000000000000000000000001"},
      {kLargest, "79228162514264337593543950335e-0", kLargest},
      {"-79228162514264337593543950335", "-79228162514264337593543950335e-0",
       "-79228162514264337593543950335"},
      {"7.9228162514264337593543950335", "79228162514264337593543950335e-28",
       "7.9228162514264337593543950335"},
      {"0.79228162514264337593543950335", "79228162514264337593543950335e-29",
       ".79228162514264337593543950335"},
      {"10000000000000000000000000000", "10000000000000000000000000000e-0",
       "10000000000000000000000000000"},
      {"1.0000000000000000000000000000", "10000000000000000000000000000e-28", "1"},
      {"-0.0000000000000000000000000010", "-10e-28", "-.000000000000000000000000001"},
      {"18446744073709551616.00", "1844674407370955161600e-2", "18446744073709551616"},
      {"184467440737095516.1600", "1844674407370955161600e-4", "184467440737095516.16"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.input);
    OLAPrecisionInteger value(c.input);
    EXPECT_TRUE(value.IsValid());
    EXPECT_EQ(Describe(value), c.parts);
    EXPECT_STREQ(value.ToString(), c.text);
  }
}

TEST(OLAPrecisionIntegerText, MalformedTextGivesTheInvalidValue) {
  const struct { const char* input; HRESULT result; } cases[] = {
      {"", DISP_E_TYPEMISMATCH}, {"-", DISP_E_TYPEMISMATCH}, {"+", DISP_E_TYPEMISMATCH},
      {".", DISP_E_TYPEMISMATCH}, {"-.", DISP_E_TYPEMISMATCH}, {"1.2.3", DISP_E_TYPEMISMATCH},
      {"12a", DISP_E_TYPEMISMATCH}, {"1e5", DISP_E_TYPEMISMATCH}, {" 1", DISP_E_TYPEMISMATCH},
      {"1 ", DISP_E_TYPEMISMATCH}, {"1 000", DISP_E_TYPEMISMATCH}, {"--1", DISP_E_TYPEMISMATCH},
      {"1,5", DISP_E_TYPEMISMATCH}, {"0x10", DISP_E_TYPEMISMATCH}, {"1-", DISP_E_TYPEMISMATCH},
      {"79228162514264337593543950336", DISP_E_OVERFLOW},
      {"0.000000000000000000000000000001", DISP_E_OVERFLOW},
      {"1.000000000000000000000000000000", DISP_E_OVERFLOW},
      {"123456789012345678901234567890x", DISP_E_TYPEMISMATCH}, {nullptr, E_POINTER},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.input ? c.input : "null");
    OLAPrecisionInteger value(5, 1);
    EXPECT_EQ(value.SetFromText(c.input), c.result);
    EXPECT_FALSE(value.IsValid());
    EXPECT_TRUE(value.IsZero());
    EXPECT_STREQ(value.ToString(), "0");
    EXPECT_EQ(OLAPrecisionInteger(c.input).Scale(), OLAPrecisionInteger::kInvalidScale);
  }
  // Long inputs end cleanly.
  EXPECT_EQ(OLAPrecisionInteger().SetFromText(std::string(100000, '9').c_str()), DISP_E_OVERFLOW);
  EXPECT_EQ(Describe(OLAPrecisionInteger(std::string(100000, '0').c_str())), "0e-0");
  EXPECT_EQ(OLAPrecisionInteger().SetFromText(std::string(100000, '.').c_str()), DISP_E_TYPEMISMATCH);
}

TEST(OLAPrecisionIntegerText, CopiesAndMovesCarryTheirOwnText) {
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

TEST(OLAPrecisionIntegerValidity, PercentIsValidFrom0To100) {
  const struct { const char* text; bool valid; } cases[] = {
      {"150", false}, {"100", true}, {"100.00000", true}, {"100.00001", false}, {"0", true},
      {"-0.00001", false}, {"-5", false}, {"8.25", true},
      {"0.00000000000000000000000000001", true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    OLAPercent percent(Parse(c.text));
    EXPECT_EQ(percent.IsValid(), c.valid);
    // Through the base class too: the override is what the writer sees.
    EXPECT_EQ(static_cast<const OLAPrecisionInteger&>(percent).IsValid(), c.valid);
  }
  EXPECT_FALSE(OLAPercent(5, 30).IsValid());
  EXPECT_TRUE(OLAPercent().IsValid());
  EXPECT_EQ(Describe(OLAPercent()), "0e-5");
}

// --- Comparisons -------------------------------------------------------------------------------

TEST(OLAPrecisionIntegerComparison, AgreesWithTheOrderAcrossScales) {
  const struct {
    const char* a;
    const char* b;
    int order;  // -1, 0, 1
  } cases[] = {
      {"1.5", "1.50", 0}, {"1.5", "1.49", 1}, {"-0", "0.000", 0},
      {"0", "0.00000000000000000000000000001", -1}, {"-1", "1", -1}, {"-2", "-1.5", -1},
      {"-0.001", "0", -1}, {"12", "11.99999999999999999999999999", 1},
      {kLargest, "7.9228162514264337593543950335", 1},
      {kLargest, "79228162514264337593543950334", 1},
      {"-79228162514264337593543950335", "-79228162514264337593543950334", -1},
      {"7.922816251426433759354395033", "7.9228162514264337593543950330", 0},
      {"0.00000000000000000000000000002", "0.0000000000000000000000000001", -1},
      {"-5857155101124.6795945325986837", "-1351732346343552237.02220331", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.a) + " ? " + c.b);
    OLAPrecisionInteger a = Parse(c.a);
    OLAPrecisionInteger b = Parse(c.b);
    EXPECT_EQ(a.Equals(b), c.order == 0);
    EXPECT_EQ(a.NotEquals(b), c.order != 0);
    EXPECT_EQ(a.GreaterThan(b), c.order > 0);
    EXPECT_EQ(a.GreaterOrEqual(b), c.order >= 0);
    EXPECT_EQ(a.LessThan(b), c.order < 0);
    EXPECT_EQ(a.LessOrEqual(b), c.order <= 0);
    EXPECT_EQ(b.GreaterThan(a), c.order < 0);
    EXPECT_EQ(b.LessThan(a), c.order > 0);
  }
}

TEST(OLAPrecisionIntegerComparison, InvalidValuesAreUnordered) {
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

HRESULT Apply(char operation, OLAPrecisionInteger& value, const OLAPrecisionInteger& operand) {
  switch (operation) {
    case '+': return value.Add(operand);
    case '-': return value.Subtract(operand);
    case '*': return value.Multiply(operand);
    default: return value.Divide(operand);
  }
}

// Expected results computed with an independent exact decimal implementation (round half to
// even): "overflow", "divbyzero" (the value is then unchanged), or the result as Describe writes it.
TEST(OLAPrecisionIntegerArithmetic, IsExactOrRoundedHalfToEven) {
  const struct { char operation; const char* a; const char* b; const char* result; } cases[] = {
      {'+', kLargest, "1", "overflow"}, {'+', kLargest, "0.5", "overflow"},
      {'+', kLargest, "0.49", "79228162514264337593543950335e-0"},
      {'+', "79228162514264337593543950334", "0.5", "79228162514264337593543950334e-0"},
      {'+', "79228162514264337593543950333", "0.5", "79228162514264337593543950334e-0"},
      // Rounds to 2^96 at scale 1, so one more digit goes.
      {'+', "7922816251426433759354395033.5", "0.05", "7922816251426433759354395034e-0"},
      {'+', "1", "0.0000000000000000000000000001", "10000000000000000000000000001e-28"},
      {'+', "10", "0.0000000000000000000000000001", "10000000000000000000000000000e-27"},
      {'+', "10", "0.0000000000000000000000000005", "10000000000000000000000000000e-27"},
      {'+', "10", "0.0000000000000000000000000015", "10000000000000000000000000002e-27"},
      {'+', "-10", "-0.0000000000000000000000000015", "-10000000000000000000000000002e-27"},
      {'+', "10", "0.00000000000000000000000000051", "10000000000000000000000000001e-27"},
      {'+', "0.1", "-0.1", "0e-1"}, {'+', "1.5", "2.25", "375e-2"}, {'+', "-2", "1.25", "-75e-2"},
      {'+', "2.25", "1.5", "375e-2"}, {'-', "0.01", "1", "-99e-2"},
      {'+', "0", "-5.000", "-5000e-3"}, {'+', "-79228162514264337593543950335", "-1", "overflow"},
      {'-', "1", "0.01", "99e-2"}, {'-', "-79228162514264337593543950335", "1", "overflow"},
      {'-', "0", "5", "-5e-0"}, {'-', "5.5", "5.50", "0e-2"}, {'-', "-1.5", "-2.25", "75e-2"},
      {'-', "1", "0.00000000000000000000000000001", "10000000000000000000000000000e-28"},
      {'*', "1.5", "2.0", "300e-2"}, {'*', kLargest, "0.1", "79228162514264337593543950335e-1"},
      {'*', kLargest, kLargest, "overflow"},
      {'*', kLargest, "-1", "-79228162514264337593543950335e-0"},
      {'*', "0.0000000000000000000000000001", "0.1", "0e-0"},
      {'*', "0.0000000000000000000000000001", "0.5", "0e-0"},
      {'*', "0.0000000000000000000000000001", "0.6", "1e-28"},
      {'*', "0.0000000000000000000000000003", "0.5", "2e-28"},
      {'*', "1.0000000000000000000000000001", "1.0000000000000000000000000001",
       "10000000000000000000000000002e-28"},
      {'*', "0", "1.5", "0e-1"}, {'*', "0.000", "0.0000000000000000000000000001", "0e-28"},
      {'*', kLargest, "0.5", "39614081257132168796771975168e-0"},
      {'*', "3.3333333333333333333333333333", "3", "10000000000000000000000000000e-27"},
      {'*', "8000000000000000000000000000", "10", "overflow"}, {'*', "-1.5", "-2", "30e-1"},
      {'*', "-1.5", "2", "-30e-1"}, {'/', "1", "3", "3333333333333333333333333333e-28"},
      {'/', "2", "3", "6666666666666666666666666667e-28"}, {'/', "1", "8", "125e-3"},
      {'/', "10", "4", "25e-1"}, {'/', "1", "0.5", "2e-0"}, {'/', "1.00", "1", "100e-2"},
      {'/', "-7", "2", "-35e-1"}, {'/', kLargest, "2", "39614081257132168796771975168e-0"},
      {'/', "79228162514264337593543950333", "2", "39614081257132168796771975166e-0"},
      {'/', kLargest, "0.1", "overflow"}, {'/', "0", "5", "0e-0"}, {'/', "0.000", "5", "0e-0"},
      {'/', "7.9228162514264337593543950335", "42949672.96", "1844674407370955161600e-28"},
      {'/', "1", "0.0000000000000000000000000001", "10000000000000000000000000000e-0"},
      {'/', "10", "0.0000000000000000000000000001", "overflow"},
      {'/', "0.00000000000000000000000000001", "1", "0e-0"},
      {'/', "0.00000000000000000000000000005", "1", "0e-0"},
      {'/', "0.00000000000000000000000000015", "1", "2e-28"},
      {'/', "1", "7", "1428571428571428571428571429e-28"},
      {'/', "100", "3", "33333333333333333333333333333e-27"},
      {'/', "10000000000000000000000000000", "3", "33333333333333333333333333333e-1"},
      {'/', "7.9228162514264337593543950335", "0.5", "15845632502852867518708790067e-27"},
      {'/', "-1", "-3", "3333333333333333333333333333e-28"},
      {'/', "1", "-3", "-3333333333333333333333333333e-28"}, {'/', "5", "0", "divbyzero"},
      {'/', "1.5", "0.05", "30e-0"}, {'/', "0.1", "10", "1e-2"},
      // Rounds up to 2^96 at scale 28, so one more digit goes.
      {'/', "5.5459713759985036315480765235", "0.7", "7922816251426433759354395034e-27"},
      {'/', "5.5459713759985036315480765234", "0.7", "79228162514264337593543950334e-28"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.a) + " " + c.operation + " " + c.b);
    OLAPrecisionInteger value = Parse(c.a);
    const std::string before = Describe(value);
    const HRESULT hr = Apply(c.operation, value, Parse(c.b));
    const std::string expected = c.result;
    if (expected == "overflow" || expected == "divbyzero") {
      EXPECT_EQ(hr, expected == "overflow" ? DISP_E_OVERFLOW : DISP_E_DIVBYZERO);
      EXPECT_EQ(Describe(value), before);
    } else {
      EXPECT_EQ(hr, S_OK);
      EXPECT_EQ(Describe(value), expected);
    }
  }
}

TEST(OLAPrecisionIntegerArithmetic, InvalidOperandsAreRefused) {
  OLAPrecisionInteger invalid(1, 30);
  OLAPrecisionInteger one(1, 0);
  OLAPrecisionInteger remainder;
  for (char operation : {'+', '-', '*', '/'}) {
    OLAPrecisionInteger value = one;
    EXPECT_EQ(Apply(operation, value, invalid), E_INVALIDARG);
    EXPECT_EQ(Describe(value), "1e-0");
    EXPECT_EQ(Apply(operation, invalid, one), E_INVALIDARG);
  }
  OLAPrecisionInteger value = one;
  EXPECT_EQ(value.DivideWithRemainder(invalid, remainder), E_INVALIDARG);
  // An out-of-range percent is still a number: arithmetic takes it.
  OLAPercent percent(150, 0);
  EXPECT_EQ(percent.Subtract(OLAPrecisionInteger(50, 0)), S_OK);
  EXPECT_TRUE(percent.IsValid());
}

TEST(OLAPrecisionIntegerArithmetic, DivideWithRemainderTruncatesTowardsZero) {
  const struct {
    const char* a;
    const char* b;
    const char* quotient;
    const char* remainder;
  } cases[] = {
      {"7", "2", "3e-0", "1e-0"}, {"-7", "2", "-3e-0", "-1e-0"}, {"7", "-2", "-3e-0", "1e-0"},
      {"7.5", "2", "3e-0", "15e-1"}, {"1", "0.3", "3e-0", "1e-1"}, {"0.5", "3", "0e-0", "5e-1"},
      {kLargest, "10000000000000000000000000000", "7e-0", "9228162514264337593543950335e-0"},
      {"0.0000000000000000000000000005", "0.0000000000000000000000000002", "2e-0", "1e-28"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.a) + " / " + c.b);
    OLAPrecisionInteger value = Parse(c.a);
    OLAPrecisionInteger remainder;
    ASSERT_EQ(value.DivideWithRemainder(Parse(c.b), remainder), S_OK);
    EXPECT_EQ(Describe(value), c.quotient);
    EXPECT_EQ(Describe(remainder), c.remainder);
    // quotient * b + remainder == a
    ASSERT_EQ(value.Multiply(Parse(c.b)), S_OK);
    ASSERT_EQ(value.Add(remainder), S_OK);
    EXPECT_TRUE(value.Equals(Parse(c.a)));
  }
  OLAPrecisionInteger value(7, 0);
  OLAPrecisionInteger remainder(3, 0);
  EXPECT_EQ(value.DivideWithRemainder(OLAPrecisionInteger(0, 2), remainder), DISP_E_DIVBYZERO);
  OLAPrecisionInteger largest = Parse(kLargest);
  EXPECT_EQ(largest.DivideWithRemainder(Parse("0.1"), remainder), DISP_E_OVERFLOW);
  EXPECT_EQ(Describe(largest), "79228162514264337593543950335e-0");
  EXPECT_EQ(Describe(remainder), "3e-0");
}

TEST(OLAPrecisionIntegerArithmetic, MultiplyByTenKeepsTheScaleAndNegateLeavesZeroPositive) {
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

  OLAPrecisionInteger zero(0, 3);
  zero.Negate();
  EXPECT_EQ(zero.Sign(), 1);
  EXPECT_STREQ(zero.ToString(), "0");
  OLAPrecisionInteger negative(-12, 1);
  EXPECT_EQ(negative.Sign(), -1);
  negative.Negate();
  EXPECT_EQ(Describe(negative), "12e-1");
}

// --- DECIMAL -----------------------------------------------------------------------------------

auto Fields(const DECIMAL& d) { return std::tuple(d.Hi32, d.Mid32, d.Lo32, d.scale, d.sign); }

TEST(DecimalConversion, RoundTripsEveryField) {
  DECIMAL d{};
  d.Hi32 = 0xFFFFFFFF;
  d.Mid32 = 0x12345678;
  d.Lo32 = 0x9ABCDEF0;
  d.scale = 28;
  d.sign = DECIMAL_NEG;
  OLAPrecisionInteger value;
  ASSERT_EQ(value.FromDecimal(d), S_OK);
  EXPECT_EQ(std::tuple(value.High(), value.Middle(), value.Low(), value.Scale(), value.Sign()),
            std::tuple(0xFFFFFFFFu, 0x12345678u, 0x9ABCDEF0u, uint16_t(28), int16_t(-1)));
  DECIMAL back{};
  ASSERT_EQ(value.ToDecimal(back), S_OK);
  EXPECT_EQ(Fields(back), Fields(d));
}

TEST(DecimalConversion, RefusesWhatADecimalCannotHoldAndDropsTheSignOfZero) {
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

  DECIMAL negativeZero{};
  negativeZero.sign = DECIMAL_NEG;
  negativeZero.scale = 4;
  ASSERT_EQ(value.FromDecimal(negativeZero), S_OK);
  EXPECT_EQ(Describe(value), "0e-4");
  ASSERT_EQ(value.ToDecimal(out), S_OK);
  EXPECT_EQ(out.sign, 0);
}

TEST(DecimalConversion, Scale29IsRoundedTo28) {
  const struct { const char* text; const char* parts; } cases[] = {
      {"0.00000000000000000000000000015", "2e-28"}, {"0.00000000000000000000000000025", "2e-28"},
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

// Each named host call, failing, makes the conversion throw its failure with the host interface as
// the source; no host object at all throws E_POINTER with no source.
template <class Fake, class Interface, class Value>
void ExpectFailingHostCallsThrow(bool (COLAConvert::*convert)(Interface*, Value&),
                                 std::initializer_list<const char*> operations) {
  constexpr HRESULT kHostFailure = HRESULT(0x80040201);
  Value value;
  for (const char* operation : operations) {
    SCOPED_TRACE(operation);
    Fake host;
    host.failing = operation;
    host.failure = kHostFailure;
    ExpectComError([&] { (COLAConvert().*convert)(&host, value); }, kHostFailure, IidOf<Interface>());
  }
  ExpectComError([&] { (COLAConvert().*convert)(nullptr, value); }, E_POINTER, GUID_NULL);
}

TEST(COLAConvert, AmountFromHostReadsWholeHundredthsAndSign) {
  const struct {
    LONGLONG whole;
    LONG hundredths;
    bool negative;
    const char* parts;
    const char* text;
  } cases[] = {{1234, 56, false, "123456e-2", "1234.56"}, {1234, 50, false, "123450e-2", "1234.5"},
               {1234, 0, false, "123400e-2", "1234"}, {12, 50, true, "-1250e-2", "-12.5"},
               {0, 5, true, "-5e-2", "-.05"}, {0, 0, true, "0e-2", "0"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    FakeAmount host;
    host.whole = c.whole;
    host.hundredths = c.hundredths;
    host.negative = c.negative;
    OLAAmount amount;
    EXPECT_TRUE(COLAConvert().AmountFromHost(&host, amount));
    EXPECT_TRUE(amount.IsValid());
    EXPECT_EQ(Describe(amount), c.parts);
    EXPECT_STREQ(amount.ToString(), c.text);
  }
  for (bool empty : {true, false}) {  // empty or invalid: the invalid value
    FakeAmount host;
    host.empty = empty;
    host.valid = false;
    host.failing = "GetWhole";  // never asked
    OLAAmount amount(1, 0);
    EXPECT_FALSE(COLAConvert().AmountFromHost(&host, amount));
    EXPECT_FALSE(amount.IsValid());
  }
  ExpectFailingHostCallsThrow<FakeAmount>(&COLAConvert::AmountFromHost,
                                          {"IsEmpty", "IsValid", "GetWhole", "GetHundredths", "IsNegative"});
}

TEST(COLAConvert, PercentFromHostFloorsAtTheFifthDecimal) {
  const struct { double value; const char* parts; const char* text; bool valid; } cases[] = {
      {8.25, "825000e-5", "8.25", true}, {0.000009, "0e-5", "0", true},
      {100, "10000000e-5", "100", true}, {150, "15000000e-5", "150", false},
      {-0.000001, "-1e-5", "-.00001", false},
      // 0.29 * 100000.0 is 28999.999999999996 in binary: the floor keeps it.
      {0.29, "28999e-5", ".28999", true}, {12.345678, "1234567e-5", "12.34567", true},
      {92233720368547.74, "9223372036854773760e-5", "92233720368547.7376", false},  // fits 64 bits
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    FakePercent host;
    host.value = c.value;
    OLAPercent percent;
    EXPECT_TRUE(COLAConvert().PercentFromHost(&host, percent));
    EXPECT_EQ(Describe(percent), c.parts);
    EXPECT_STREQ(percent.ToString(), c.text);
    EXPECT_EQ(percent.IsValid(), c.valid);
  }
  // Values beyond the integer range, and an empty value, give the invalid value.
  for (double value : {std::nan(""), HUGE_VAL, -HUGE_VAL, 1e300, 92233720368547.76}) {
    SCOPED_TRACE(value);
    FakePercent host;
    host.value = value;
    OLAPercent percent;
    EXPECT_FALSE(COLAConvert().PercentFromHost(&host, percent));
    EXPECT_EQ(percent.Scale(), OLAPrecisionInteger::kInvalidScale);
  }
  FakePercent empty;
  empty.empty = true;
  empty.failing = "GetValue";  // never asked
  OLAPercent percent;
  EXPECT_FALSE(COLAConvert().PercentFromHost(&empty, percent));
  EXPECT_FALSE(percent.IsValid());
  ExpectFailingHostCallsThrow<FakePercent>(&COLAConvert::PercentFromHost, {"IsEmpty", "GetValue"});
}

TEST(COLAConvert, QuantityFromHostReadsIntegerDecimalsAndSign) {
  const struct {
    LONGLONG integer;
    SHORT decimals;
    bool negative;
    const char* parts;  // null: the invalid value
    const char* text;
  } cases[] = {
      {300, 2, false, "300e-2", "3"}, {1234, 3, true, "-1234e-3", "-1.234"},
      {5, 0, false, "5e-0", "5"}, {7, 29, false, "7e-29", ".00000000000000000000000000007"},
      {5, -1, false, nullptr, "0"}, {5, 30, false, nullptr, "0"}, {5, 32767, false, nullptr, "0"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.integer) + " decimals " + std::to_string(c.decimals));
    FakeQuantity host;
    host.integer = c.integer;
    host.decimals = c.decimals;
    host.negative = c.negative;
    OLAPrecisionInteger quantity(1, 0);
    EXPECT_EQ(COLAConvert().QuantityFromHost(&host, quantity), c.parts != nullptr);
    EXPECT_EQ(quantity.IsValid(), c.parts != nullptr);
    if (c.parts) {
      EXPECT_EQ(Describe(quantity), c.parts);
    }
    EXPECT_STREQ(quantity.ToString(), c.text);
  }
  OLAPrecisionInteger quantity;
  FakeQuantity empty;
  empty.empty = true;
  EXPECT_FALSE(COLAConvert().QuantityFromHost(&empty, quantity));
  FakeQuantity invalid;
  invalid.valid = false;
  EXPECT_FALSE(COLAConvert().QuantityFromHost(&invalid, quantity));
  EXPECT_FALSE(quantity.IsValid());
  ExpectFailingHostCallsThrow<FakeQuantity>(
      &COLAConvert::QuantityFromHost, {"IsEmpty", "IsValid", "GetInteger", "GetDecimals", "IsNegative"});
}

}  // namespace
