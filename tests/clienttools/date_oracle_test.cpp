// OLADateTime::SetFromOleDate against the system's VariantTimeToSystemTime (Windows only).
//
// Where the two differ by design the cases are sorted out before the comparison:
// - Ties: the half second is added to the whole value in double precision, so a time of day
//   within a few units in the last place of a half second (4e-5 s near year 9999) may round
//   either way. Values within kTieWindow of a half second are not compared; their share is
//   checked to stay tiny.
// - Values within half a second of the next midnight: the expected result is the midnight of the
//   next whole day number away from zero, taken from the oracle's decomposition of that whole
//   day. For a negative value this is the midnight two days before the one in time order, as the
//   half second added away from zero makes the whole days one more negative. The oracle is not
//   asked about such a value itself: Wine's VariantTimeToSystemTime rolls the last second of
//   30 November over to 1 January of the next year.
// - Range: the end days with a time of day (2958465.5 is 31 December 9999 12:00, -657434.5 is
//   1 January 100 12:00) and NaN are refused here; Wine's oleaut32 accepts them. Only the
//   refusal on this side is checked.
#ifdef _WIN32

#include <gtest/gtest.h>

#include <windows.h>
#include <oleauto.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

#include "clienttools/OLADateTime.h"

namespace {

constexpr double kTieWindow = 1e-4;  // seconds

// "YYYY-MM-DD hh:mm:ss".
std::string Text(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                 unsigned second) {
  char text[32];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u", year, month, day, hour, minute,
                second);
  return text;
}

// The date of a value as the system and as we take it apart, or "refused".
std::string Oracle(double oleDate) {
  SYSTEMTIME t{};
  if (!VariantTimeToSystemTime(oleDate, &t)) return "refused";
  return Text(t.wYear, t.wMonth, t.wDay, t.wHour, t.wMinute, t.wSecond);
}

std::string Ours(double oleDate) {
  OLADateTime v;
  if (!v.SetFromOleDate(oleDate)) return "refused";
  return Text(v.GetYear(), v.GetMonth(), v.GetDay(), v.GetHour(), v.GetMinute(), v.GetSecond());
}

// The time of day of a value in seconds, before rounding (the fraction counts the same way on
// both sides of day 0).
double SecondOfDay(double oleDate) {
  const double magnitude = std::fabs(oleDate);
  return (magnitude - std::floor(magnitude)) * 86400.0;
}

bool IsTie(double oleDate) {
  const double second = SecondOfDay(oleDate);
  return std::fabs(second - std::floor(second) - 0.5) < kTieWindow;
}

// Compares one value; returns false when it was a tie and not compared.
bool Compare(double oleDate) {
  if (IsTie(oleDate)) return false;
  if (SecondOfDay(oleDate) < 86399.5) {
    EXPECT_EQ(Ours(oleDate), Oracle(oleDate)) << std::to_string(oleDate);
    return true;
  }
  // The time rounds up to a midnight. The expected date is taken from the oracle's whole day,
  // as VariantTimeToSystemTime rolls the date over itself (and Wine's rolls 30 November over to
  // 1 January of the next year).
  const double midnight = oleDate >= 0 ? std::floor(oleDate) + 1.0 : std::ceil(oleDate) - 1.0;
  EXPECT_EQ(Ours(oleDate), Oracle(midnight)) << std::to_string(oleDate);
  return true;
}

TEST(DateOracle, EveryWholeDay) {
  for (long day = -657434; day <= 2958465; ++day) {
    const std::string expected = Oracle(double(day));
    const std::string actual = Ours(double(day));
    if (actual != expected) {
      ADD_FAILURE() << "day " << day << ": " << actual << " instead of " << expected;
      return;
    }
  }
}

TEST(DateOracle, RandomValuesOverTheWholeRange) {
  std::mt19937_64 generator(0x4F4C4144);
  std::uniform_real_distribution<double> values(-657434.0, 2958465.0);
  constexpr int kCount = 1000000;
  int ties = 0;
  for (int i = 0; i < kCount; ++i) {
    if (!Compare(values(generator))) ++ties;
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_LT(ties, kCount / 1000);
}

// Times of day within a few seconds of midnight, on both sides of day 0.
TEST(DateOracle, FractionsNearMidnight) {
  std::mt19937_64 generator(18991230);
  std::uniform_int_distribution<long> positiveDays(0, 2958464);
  std::uniform_int_distribution<long> negativeDays(-657433, -1);
  const double offsets[] = {0.001, 0.1, 0.3, 0.45, 0.55, 0.7, 0.9, 0.999, 1.0, 1.4, 1.6, 2.0};
  int compared = 0;
  for (int i = 0; i < 20000; ++i) {
    const double positive = double(positiveDays(generator));
    const double negative = double(negativeDays(generator));
    for (double offset : offsets) {
      const double early = offset / 86400.0;             // just after midnight
      const double late = (86400.0 - offset) / 86400.0;  // just before midnight
      for (double oleDate : {positive + early, positive + late, negative - early, negative - late})
        compared += Compare(oleDate) ? 1 : 0;
    }
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GT(compared, 20000 * 40);
}

// Every second of two days, a quarter of a second past and before the full second.
TEST(DateOracle, EverySecondOfADay) {
  for (double day : {39879.0, -39879.0}) {
    for (int second = 0; second < 86400; ++second) {
      for (double part : {0.25, -0.25}) {
        const double fraction = (second + part) / 86400.0;
        if (fraction < 0) continue;
        Compare(day < 0 ? day - fraction : day + fraction);
      }
      if (testing::Test::HasFailure()) return;
    }
  }
}

// Both refuse values beyond the range; only we refuse the end days with a time of day, and NaN.
TEST(DateOracle, EndsOfTheRange) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (double oleDate : {2958466.0, 2958466.5, 3e6, 1e300, infinity, -657435.0, -657435.5, -7e5,
                         -1e300, -infinity}) {
    EXPECT_EQ(Oracle(oleDate), "refused") << oleDate;
    EXPECT_EQ(Ours(oleDate), "refused") << oleDate;
  }
  for (double oleDate : {std::nextafter(2958465.0, 3e6), 2958465.5, 2958465.999,
                         std::nextafter(-657434.0, -1e6), -657434.5, -657434.999,
                         std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(Ours(oleDate), "refused") << oleDate;
  }
  EXPECT_EQ(Ours(-657434.0), Oracle(-657434.0));
  EXPECT_EQ(Ours(2958465.0), Oracle(2958465.0));
  EXPECT_EQ(Ours(-657434.0), "0100-01-01 00:00:00");
  EXPECT_EQ(Ours(2958465.0), "9999-12-31 00:00:00");
}

}  // namespace

#endif  // _WIN32
