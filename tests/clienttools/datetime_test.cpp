// Tests of OLADateTime, OLATime and the transaction identifiers.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <limits>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <thread>
#include <unordered_set>
#include <vector>

#include "clienttools/OLADateTime.h"
#include "clienttools/TrnUID.h"
#include "support/TestSupport.h"

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace {

using parcelon::test::ScopedEnv;

// "YYYY-MM-DD hh:mm:ss.mmm", for readable comparisons.
std::string Fields(const OLADateTimeBase& value) {
  char text[64];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%03u", unsigned(value.GetYear()),
                unsigned(value.GetMonth()), unsigned(value.GetDay()), unsigned(value.GetHour()),
                unsigned(value.GetMinute()), unsigned(value.GetSecond()),
                unsigned(value.GetMillisecond()));
  return text;
}

// Days from 1 January 1970 to a proleptic Gregorian date, by the era-based method (an
// independent oracle for the decomposition of whole days).
long DaysFromCivil(long year, unsigned month, unsigned day) {
  year -= month <= 2;
  const long era = (year >= 0 ? year : year - 399) / 400;
  const unsigned yearOfEra = unsigned(year - era * 400);
  const unsigned dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + long(dayOfEra) - 719468;
}

long OleDayOf(const OLADateTimeBase& value) {
  return DaysFromCivil(value.GetYear(), value.GetMonth(), value.GetDay()) -
         DaysFromCivil(1899, 12, 30);
}

void ResetTimeZone() {
#ifdef _WIN32
  _tzset();
#else
  tzset();
#endif
}

// Gives the process the time zone `tz` for the scope and restores the previous one after.
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const char* tz) : env_(std::in_place, "TZ", tz) { ResetTimeZone(); }
  ~ScopedTimeZone() {
    env_.reset();
    ResetTimeZone();
  }
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

 private:
  std::optional<ScopedEnv> env_;
};

// Whether the C runtime applies daylight time for a TZ value with a daylight part: the C library
// on Linux does; the Windows C runtime under Wine takes daylight time from the system's own zone
// and not from TZ.
bool RuntimeAppliesDaylightTime() {
#ifdef _WIN32
  ScopedTimeZone zone("PST8PDT");
  std::tm july{};
  july.tm_year = 109;
  july.tm_mon = 6;
  july.tm_mday = 15;
  july.tm_hour = 12;
  july.tm_isdst = -1;
  std::mktime(&july);
  return july.tm_isdst > 0;
#else
  return true;
#endif
}

constexpr double kSecond = 1.0 / 86400.0;

// ---------------------------------------------------------------------------------------------
// SetFromOleDate

struct OleDateCase {
  double oleDate;
  const char* fields;
};

void PrintTo(const OleDateCase& c, std::ostream* os) {
  *os << std::setprecision(17) << c.oleDate;
}

class SetFromOleDateTest : public testing::TestWithParam<OleDateCase> {};

TEST_P(SetFromOleDateTest, Decomposes) {
  OLADateTime value;
  ASSERT_TRUE(value.SetFromOleDate(GetParam().oleDate));
  EXPECT_EQ(Fields(value), GetParam().fields);
  EXPECT_TRUE(value.IsValid());
}

INSTANTIATE_TEST_SUITE_P(
    EdgeCases, SetFromOleDateTest,
    testing::Values(
        OleDateCase{0.0, "1899-12-30 00:00:00.000"},
        OleDateCase{1.0, "1899-12-31 00:00:00.000"},
        OleDateCase{2.0, "1900-01-01 00:00:00.000"},
        OleDateCase{39879.5, "2009-03-07 12:00:00.000"},
        OleDateCase{39879.0 + 50531 * kSecond, "2009-03-07 14:02:11.000"},
        // 1900 is no leap year: day 60 is 28 February and day 61 is 1 March.
        OleDateCase{60.0, "1900-02-28 00:00:00.000"},
        OleDateCase{61.0, "1900-03-01 00:00:00.000"},
        OleDateCase{36584.0, "2000-02-28 00:00:00.000"},
        OleDateCase{36585.0, "2000-02-29 00:00:00.000"},
        OleDateCase{36586.0, "2000-03-01 00:00:00.000"},
        OleDateCase{1521.0, "1904-02-29 00:00:00.000"},
        OleDateCase{-109512.0, "1600-02-29 00:00:00.000"},
        OleDateCase{-109511.0, "1600-03-01 00:00:00.000"},
        OleDateCase{-72988.0, "1700-02-28 00:00:00.000"},
        OleDateCase{-72987.0, "1700-03-01 00:00:00.000"},
        OleDateCase{73109.0, "2100-02-28 00:00:00.000"},
        OleDateCase{73110.0, "2100-03-01 00:00:00.000"},
        OleDateCase{-655915.0, "0104-02-29 00:00:00.000"},
        OleDateCase{-657376.0, "0100-02-28 00:00:00.000"},
        OleDateCase{-657375.0, "0100-03-01 00:00:00.000"},
        OleDateCase{-547803.0, "0400-02-29 00:00:00.000"},
        OleDateCase{-547497.0, "0400-12-31 00:00:00.000"},
        OleDateCase{-547496.0, "0401-01-01 00:00:00.000"},
        // The ends of the range.
        OleDateCase{-657434.0, "0100-01-01 00:00:00.000"},
        OleDateCase{2958465.0, "9999-12-31 00:00:00.000"},
        OleDateCase{-657433.5, "0100-01-02 12:00:00.000"},
        OleDateCase{2958464.75, "9999-12-30 18:00:00.000"},
        // Rounding to the nearest second.
        OleDateCase{39879.0 + 86399.6 * kSecond, "2009-03-08 00:00:00.000"},
        OleDateCase{39879.0 + 86399.4 * kSecond, "2009-03-07 23:59:59.000"},
        OleDateCase{39879.0 + 59.6 * kSecond, "2009-03-07 00:01:00.000"},
        OleDateCase{39879.0 + 3599.7 * kSecond, "2009-03-07 01:00:00.000"},
        OleDateCase{36525.0 + 86399.6 * kSecond, "2000-01-01 00:00:00.000"},
        OleDateCase{2958464.0 + 86399.6 * kSecond, "9999-12-31 00:00:00.000"},
        OleDateCase{0.4 * kSecond, "1899-12-30 00:00:00.000"},
        OleDateCase{0.6 * kSecond, "1899-12-30 00:00:01.000"},
        // Before 30 December 1899 the whole days count back from day 0 and the fraction is still
        // the time of day: -1.25 is 29 December 1899 at 06:00, and -0.5 is day 0 at noon.
        OleDateCase{-1.25, "1899-12-29 06:00:00.000"},
        OleDateCase{-1.5, "1899-12-29 12:00:00.000"},
        OleDateCase{-1.75, "1899-12-29 18:00:00.000"},
        OleDateCase{-0.5, "1899-12-30 12:00:00.000"},
        OleDateCase{-0.4 * kSecond, "1899-12-30 00:00:00.000"},
        OleDateCase{-36522.0 - 50531 * kSecond, "1800-01-01 14:02:11.000"},
        OleDateCase{-1.0 - 86399.4 * kSecond, "1899-12-29 23:59:59.000"},
        // Half a second is added away from zero before the whole days are taken, so a negative
        // value within half a second of the next whole day lands on that day number, which lies
        // before the value's own day.
        OleDateCase{-1.0 - 86399.6 * kSecond, "1899-12-28 00:00:00.000"},
        OleDateCase{-657433.0 - 86399.6 * kSecond, "0100-01-01 00:00:00.000"}));

struct RefusedCase {
  const char* name;
  double oleDate;
};

void PrintTo(const RefusedCase& c, std::ostream* os) {
  *os << c.name;
}

class RefusedOleDateTest : public testing::TestWithParam<RefusedCase> {};

TEST_P(RefusedOleDateTest, LeavesTheValueAlone) {
  OLADateTime value(2009, 3, 7, 14, 2, 11, 5);
  value.SetZone("PST", -8);
  EXPECT_FALSE(value.SetFromOleDate(GetParam().oleDate));
  EXPECT_EQ(Fields(value), "2009-03-07 14:02:11.005");
  EXPECT_EQ(value.GetZoneOffset(), -8);
  EXPECT_STREQ(value.GetZoneName().GetText(), "PST");
}

INSTANTIATE_TEST_SUITE_P(
    OutOfRange, RefusedOleDateTest,
    testing::Values(RefusedCase{"AfterLastDay", 2958466.0},
                    RefusedCase{"LastDayNoon", 2958465.5},
                    RefusedCase{"JustAboveMaximum", std::nextafter(2958465.0, 3e6)},
                    RefusedCase{"BeforeFirstDay", -657435.0},
                    RefusedCase{"FirstDayNoon", -657434.5},
                    RefusedCase{"JustBelowMinimum", std::nextafter(-657434.0, -1e6)},
                    RefusedCase{"Huge", 1e300},
                    RefusedCase{"HugeNegative", -1e300},
                    RefusedCase{"NaN", std::numeric_limits<double>::quiet_NaN()},
                    RefusedCase{"Infinity", std::numeric_limits<double>::infinity()},
                    RefusedCase{"MinusInfinity", -std::numeric_limits<double>::infinity()}),
    [](const testing::TestParamInfo<RefusedCase>& info) { return std::string(info.param.name); });

TEST(SetFromOleDate, KeepsTheZoneAndClearsMilliseconds) {
  OLADateTime value(2000, 1, 1, 1, 1, 1, 999);
  value.SetZone("EST", -5);
  ASSERT_TRUE(value.SetFromOleDate(39879.5));
  EXPECT_EQ(Fields(value), "2009-03-07 12:00:00.000");
  EXPECT_EQ(value.GetZoneOffset(), -5);
  EXPECT_STREQ(value.GetZoneName().GetText(), "EST");
}

// Every whole day of the range against an independent calendar computation.
TEST(SetFromOleDate, EveryWholeDayMatchesTheCalendar) {
  OLADateTime value;
  long failures = 0;
  for (long day = -657434; day <= 2958465 && failures < 10; ++day) {
    if (!value.SetFromOleDate(double(day)) || !value.IsValid() || OleDayOf(value) != day ||
        value.GetHour() != 0 || value.GetMinute() != 0 || value.GetSecond() != 0) {
      ADD_FAILURE() << "day " << day << " gives " << Fields(value);
      ++failures;
    }
  }
}

// Random times of day, kept at least 0.1 second away from a half second so that the expected
// second is certain, on both sides of day 0.
TEST(SetFromOleDate, RandomTimesRoundToTheNearestSecond) {
  std::mt19937_64 generator(20090307);
  std::uniform_int_distribution<long> days(-657433, 2958464);
  std::uniform_int_distribution<long> seconds(0, 86399);
  std::uniform_real_distribution<double> part(-0.4, 0.4);
  OLADateTime value;
  for (int i = 0; i < 200000; ++i) {
    const long day = days(generator);
    const long second = seconds(generator);
    double offset = part(generator);
    if (second == 0 && offset < 0) offset = -offset;  // keep the value within its own day
    const double fraction = (double(second) + offset) * kSecond;
    const double oleDate = day < 0 ? double(day) - fraction : double(day) + fraction;
    ASSERT_TRUE(value.SetFromOleDate(oleDate)) << oleDate;
    ASSERT_EQ(OleDayOf(value), day) << oleDate;
    ASSERT_EQ(value.GetHour() * 3600L + value.GetMinute() * 60L + value.GetSecond(), second)
        << oleDate;
  }
}

// ---------------------------------------------------------------------------------------------
// Construction and validity

TEST(OLADateTimeBase, ConstructorsAndCopy) {
  OLADateTime empty;
  EXPECT_EQ(Fields(empty), "0000-00-00 00:00:00.000");
  EXPECT_EQ(empty.GetZoneOffset(), 0);
  EXPECT_TRUE(empty.GetZoneName().IsEmpty());
  EXPECT_FALSE(empty.IsDateValid());
  EXPECT_TRUE(empty.IsTimeValid());

  OLADateTime value(2009, 3, 7, 14, 2, 11, 250);
  EXPECT_EQ(Fields(value), "2009-03-07 14:02:11.250");
  EXPECT_EQ(value.GetZoneOffset(), 0);
  EXPECT_TRUE(value.GetZoneName().IsEmpty());

  value.SetZone("PST", -8);
  OLADateTime copy(value);
  EXPECT_EQ(Fields(copy), "2009-03-07 14:02:11.250");
  EXPECT_EQ(copy.GetZoneOffset(), -8);
  EXPECT_STREQ(copy.GetZoneName().GetText(), "PST");
  value.SetZone(nullptr, 0);
  EXPECT_STREQ(copy.GetZoneName().GetText(), "PST");
  EXPECT_TRUE(value.GetZoneName().IsEmpty());
}

struct ValidityCase {
  OLADateTimeBase value;
  int16_t offset;
  bool dateValid;
  bool timeValid;
};

void PrintTo(const ValidityCase& c, std::ostream* os) {
  *os << Fields(c.value) << " offset " << c.offset;
}

class ValidityTest : public testing::TestWithParam<ValidityCase> {};

TEST_P(ValidityTest, ChecksEachField) {
  OLADateTimeBase value = GetParam().value;
  value.SetZone(nullptr, GetParam().offset);
  EXPECT_EQ(value.IsDateValid(), GetParam().dateValid) << Fields(value);
  EXPECT_EQ(value.IsTimeValid(), GetParam().timeValid) << Fields(value);
  EXPECT_EQ(value.IsValid(), GetParam().dateValid && GetParam().timeValid);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, ValidityTest,
    testing::Values(ValidityCase{{2009, 3, 7, 0, 0, 0, 0}, 0, true, true},
                    ValidityCase{{2009, 1, 31, 23, 59, 59, 999}, 12, true, true},
                    ValidityCase{{2009, 12, 31, 0, 0, 0, 0}, -12, true, true},
                    ValidityCase{{2009, 0, 1, 0, 0, 0, 0}, 0, false, true},
                    ValidityCase{{2009, 13, 1, 0, 0, 0, 0}, 0, false, true},
                    ValidityCase{{2009, 1, 0, 0, 0, 0, 0}, 0, false, true},
                    ValidityCase{{2009, 1, 32, 0, 0, 0, 0}, 0, false, true},
                    ValidityCase{{2009, 4, 31, 0, 0, 0, 0}, 0, false, true},
                    ValidityCase{{2009, 2, 29, 0, 0, 0, 0}, 0, false, true},
                    ValidityCase{{2008, 2, 29, 0, 0, 0, 0}, 0, true, true},
                    ValidityCase{{2008, 2, 30, 0, 0, 0, 0}, 0, false, true},
                    ValidityCase{{1900, 2, 29, 0, 0, 0, 0}, 0, false, true},
                    ValidityCase{{2000, 2, 29, 0, 0, 0, 0}, 0, true, true},
                    ValidityCase{{2009, 3, 7, 24, 0, 0, 0}, 0, true, false},
                    ValidityCase{{2009, 3, 7, 0, 60, 0, 0}, 0, true, false},
                    ValidityCase{{2009, 3, 7, 0, 0, 60, 0}, 0, true, false},
                    ValidityCase{{2009, 3, 7, 0, 0, 0, 1000}, 0, true, false},
                    ValidityCase{{2009, 3, 7, 0, 0, 0, 0}, 13, true, false},
                    ValidityCase{{2009, 3, 7, 0, 0, 0, 0}, -13, true, false}));

struct LeapYearCase {
  unsigned year;
  bool leap;
};

void PrintTo(const LeapYearCase& c, std::ostream* os) {
  *os << c.year;
}

class LeapYearTest : public testing::TestWithParam<LeapYearCase> {};

TEST_P(LeapYearTest, GregorianRule) {
  EXPECT_EQ(OLADateTimeBase::IsLeapYear(GetParam().year), GetParam().leap);
  EXPECT_EQ(OLADateTimeBase::DaysInMonth(2, GetParam().year), GetParam().leap ? 29u : 28u);
}

INSTANTIATE_TEST_SUITE_P(Years, LeapYearTest,
                         testing::Values(LeapYearCase{100, false}, LeapYearCase{400, true},
                                         LeapYearCase{1900, false}, LeapYearCase{2000, true},
                                         LeapYearCase{2008, true}, LeapYearCase{2009, false},
                                         LeapYearCase{2100, false}, LeapYearCase{9996, true}));

TEST(OLADateTimeBase, DaysInMonth) {
  const unsigned expected[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 0};
  for (unsigned month = 0; month <= 13; ++month)
    EXPECT_EQ(OLADateTimeBase::DaysInMonth(month, 2009), expected[month]) << month;
}

// ---------------------------------------------------------------------------------------------
// SetFromDayOfYear

struct DayOfYearCase {
  unsigned dayOfYear;
  uint16_t year;
  bool accepted;
  const char* fields;
};

void PrintTo(const DayOfYearCase& c, std::ostream* os) {
  *os << "day " << c.dayOfYear << " of " << c.year;
}

class SetFromDayOfYearTest : public testing::TestWithParam<DayOfYearCase> {};

TEST_P(SetFromDayOfYearTest, MonthAndDay) {
  OLADateTime value(1999, 9, 9, 9, 9, 9, 9);
  EXPECT_EQ(value.SetFromDayOfYear(GetParam().dayOfYear, GetParam().year), GetParam().accepted);
  EXPECT_EQ(Fields(value), GetParam().fields);
}

INSTANTIATE_TEST_SUITE_P(
    Days, SetFromDayOfYearTest,
    testing::Values(DayOfYearCase{1, 2009, true, "2009-01-01 09:09:09.009"},
                    DayOfYearCase{31, 2009, true, "2009-01-31 09:09:09.009"},
                    DayOfYearCase{32, 2009, true, "2009-02-01 09:09:09.009"},
                    DayOfYearCase{59, 2009, true, "2009-02-28 09:09:09.009"},
                    DayOfYearCase{60, 2009, true, "2009-03-01 09:09:09.009"},
                    DayOfYearCase{66, 2009, true, "2009-03-07 09:09:09.009"},
                    DayOfYearCase{365, 2009, true, "2009-12-31 09:09:09.009"},
                    DayOfYearCase{59, 2008, true, "2008-02-28 09:09:09.009"},
                    DayOfYearCase{60, 2008, true, "2008-02-29 09:09:09.009"},
                    DayOfYearCase{61, 2008, true, "2008-03-01 09:09:09.009"},
                    DayOfYearCase{335, 2008, true, "2008-11-30 09:09:09.009"},
                    DayOfYearCase{366, 2008, true, "2008-12-31 09:09:09.009"},
                    DayOfYearCase{60, 1900, true, "1900-03-01 09:09:09.009"},
                    DayOfYearCase{60, 2000, true, "2000-02-29 09:09:09.009"},
                    DayOfYearCase{0, 2009, false, "1999-09-09 09:09:09.009"},
                    DayOfYearCase{366, 2009, false, "1999-09-09 09:09:09.009"},
                    DayOfYearCase{367, 2008, false, "1999-09-09 09:09:09.009"},
                    DayOfYearCase{366, 1900, false, "1999-09-09 09:09:09.009"}));

// ---------------------------------------------------------------------------------------------
// Text forms

struct FormatCase {
  OLADateTimeBase value;
  const char* zoneName;
  int16_t offset;
  const char* text;  // null when the value is refused
};

void PrintTo(const FormatCase& c, std::ostream* os) {
  *os << Fields(c.value) << " [" << c.offset << ":" << (c.zoneName ? c.zoneName : "") << "]";
}

OLADateTimeBase Zoned(const OLADateTimeBase& value, const char* name, int16_t offset) {
  OLADateTimeBase zoned = value;
  zoned.SetZone(name, offset);
  return zoned;
}

class FormatXMLTest : public testing::TestWithParam<FormatCase> {};

TEST_P(FormatXMLTest, RequestForm) {
  OLADateTime value;
  static_cast<OLADateTimeBase&>(value) = Zoned(GetParam().value, GetParam().zoneName, GetParam().offset);
  OLAString text("keep");
  EXPECT_EQ(value.FormatXML(text), GetParam().text != nullptr);
  EXPECT_STREQ(text.GetText(), GetParam().text ? GetParam().text : "keep");
}

INSTANTIATE_TEST_SUITE_P(
    Values, FormatXMLTest,
    testing::Values(
        FormatCase{{2009, 3, 7, 14, 2, 11, 0}, "PST", -8, "20090307T140211-0800"},
        FormatCase{{2009, 3, 7, 14, 2, 11, 0}, nullptr, -8, "20090307T140211-0800"},
        FormatCase{{2009, 3, 7, 9, 30, 0, 0}, nullptr, 0, "20090307T093000+0000"},
        FormatCase{{2009, 3, 7, 12, 0, 0, 0}, nullptr, 0, "20090307T120000+0000"},
        FormatCase{{2009, 3, 7, 0, 0, 0, 0}, nullptr, 0, "20090307"},
        // Milliseconds and the zone name are never written.
        FormatCase{{2009, 3, 7, 0, 0, 0, 500}, "---", 0, "20090307"},
        FormatCase{{2009, 3, 7, 0, 0, 1, 0}, nullptr, 0, "20090307T000001+0000"},
        FormatCase{{2009, 3, 7, 0, 1, 0, 0}, nullptr, 0, "20090307T000100+0000"},
        FormatCase{{2009, 3, 7, 1, 0, 0, 0}, nullptr, 0, "20090307T010000+0000"},
        FormatCase{{2009, 3, 7, 0, 0, 0, 0}, "---", 1, "20090307T000000+0100"},
        FormatCase{{2009, 7, 15, 12, 0, 0, 0}, "EDT", -4, "20090715T120000-0400"},
        FormatCase{{2009, 12, 31, 23, 59, 59, 999}, nullptr, 12, "20091231T235959+1200"},
        FormatCase{{2009, 1, 1, 0, 0, 0, 0}, nullptr, -12, "20090101T000000-1200"},
        FormatCase{{100, 1, 1, 0, 0, 0, 0}, nullptr, 0, "01000101"},
        FormatCase{{9999, 12, 31, 0, 0, 0, 0}, nullptr, 0, "99991231"},
        FormatCase{{2000, 2, 29, 0, 0, 0, 0}, nullptr, 0, "20000229"},
        FormatCase{{2009, 2, 29, 0, 0, 0, 0}, nullptr, 0, nullptr},
        FormatCase{{2009, 0, 7, 0, 0, 0, 0}, nullptr, 0, nullptr},
        FormatCase{{2009, 3, 7, 24, 0, 0, 0}, nullptr, 0, nullptr},
        FormatCase{{2009, 3, 7, 0, 0, 0, 1000}, nullptr, 0, nullptr},
        FormatCase{{2009, 3, 7, 12, 0, 0, 0}, nullptr, 13, nullptr},
        FormatCase{{2009, 3, 7, 12, 0, 0, 0}, nullptr, -13, nullptr}));

class FormatFullTest : public testing::TestWithParam<FormatCase> {};

TEST_P(FormatFullTest, LongForm) {
  OLADateTime value;
  static_cast<OLADateTimeBase&>(value) = Zoned(GetParam().value, GetParam().zoneName, GetParam().offset);
  OLAString text("keep");
  EXPECT_EQ(value.FormatFull(text), GetParam().text != nullptr);
  EXPECT_STREQ(text.GetText(), GetParam().text ? GetParam().text : "keep");
}

INSTANTIATE_TEST_SUITE_P(
    Values, FormatFullTest,
    testing::Values(
        FormatCase{{2009, 3, 7, 14, 2, 11, 0}, "PST", -8, "20090307140211.000[-8:PST]"},
        FormatCase{{2009, 3, 7, 14, 2, 11, 0}, nullptr, -8, "20090307140211.000[-8]"},
        FormatCase{{2009, 3, 7, 14, 2, 11, 0}, "---", 1, "20090307140211.000[1:---]"},
        FormatCase{{2009, 3, 7, 14, 2, 11, 0}, nullptr, 0, "20090307140211"},
        FormatCase{{2009, 3, 7, 14, 2, 11, 0}, "---", 0, "20090307140211"},
        FormatCase{{2009, 3, 7, 14, 2, 11, 5}, nullptr, 0, "20090307140211.005"},
        FormatCase{{2009, 3, 7, 14, 2, 11, 5}, "EDT", -4, "20090307140211.005[-4:EDT]"},
        FormatCase{{2009, 3, 7, 0, 0, 0, 0}, nullptr, 0, "20090307"},
        FormatCase{{2009, 3, 7, 0, 0, 0, 0}, "PST", 0, "20090307"},
        FormatCase{{2009, 3, 7, 0, 0, 0, 1}, nullptr, 0, "20090307000000.001"},
        FormatCase{{2009, 3, 7, 0, 0, 0, 0}, nullptr, 12, "20090307000000.000[12]"},
        FormatCase{{2009, 3, 7, 0, 0, 0, 0}, "XYZ", -12, "20090307000000.000[-12:XYZ]"},
        FormatCase{{2009, 2, 29, 14, 2, 11, 0}, "PST", -8, nullptr},
        FormatCase{{2009, 3, 7, 14, 60, 11, 0}, "PST", -8, nullptr},
        FormatCase{{2009, 3, 7, 14, 2, 11, 0}, "PST", 13, nullptr}));

class OLATimeFormatTest : public testing::TestWithParam<FormatCase> {};

TEST_P(OLATimeFormatTest, TimeOnlyForm) {
  OLATime value;
  static_cast<OLADateTimeBase&>(value) = Zoned(GetParam().value, GetParam().zoneName, GetParam().offset);
  OLAString text("keep");
  EXPECT_EQ(value.FormatXML(text), GetParam().text != nullptr);
  EXPECT_STREQ(text.GetText(), GetParam().text ? GetParam().text : "keep");
}

INSTANTIATE_TEST_SUITE_P(
    Values, OLATimeFormatTest,
    testing::Values(FormatCase{{0, 0, 0, 14, 2, 11, 0}, nullptr, 0, "140211"},
                    FormatCase{{0, 0, 0, 0, 0, 0, 0}, nullptr, 0, "000000"},
                    FormatCase{{2009, 3, 7, 14, 2, 11, 0}, nullptr, 0, "140211"},
                    // Milliseconds without leading zeros.
                    FormatCase{{0, 0, 0, 14, 2, 11, 5}, nullptr, 0, "140211.5"},
                    FormatCase{{0, 0, 0, 14, 2, 11, 250}, nullptr, 0, "140211.250"},
                    FormatCase{{0, 0, 0, 14, 2, 11, 0}, "PST", -8, "140211[-8:PST]"},
                    FormatCase{{0, 0, 0, 14, 2, 11, 0}, nullptr, -8, "140211[-8:]"},
                    FormatCase{{0, 0, 0, 14, 2, 11, 0}, "---", 0, "140211:---"},
                    FormatCase{{0, 0, 0, 14, 2, 11, 5}, "EST", -5, "140211.5[-5:EST]"},
                    FormatCase{{0, 0, 0, 24, 0, 0, 0}, nullptr, 0, nullptr},
                    FormatCase{{0, 0, 0, 14, 2, 11, 0}, "PST", 13, nullptr}));

TEST(FormatFull, LongZoneNameIsWrittenWhole) {
  OLADateTime value(2009, 3, 7, 14, 2, 11, 0);
  const std::string name(300, 'Z');
  value.SetZone(name.c_str(), -8);
  OLAString text;
  ASSERT_TRUE(value.FormatFull(text));
  EXPECT_EQ(std::string(text.GetText()), "20090307140211.000[-8:" + name + "]");
}

TEST(FormatXML, ReplacesTheText) {
  OLADateTime value;
  ASSERT_TRUE(value.SetFromOleDate(0.0));
  OLAString text("previous text");
  ASSERT_TRUE(value.FormatXML(text));
  EXPECT_STREQ(text.GetText(), "18991230");
}

// ---------------------------------------------------------------------------------------------
// Time zones

TEST(ToTimeT, ReadsTheFieldsAsLocalTime) {
  {
    ScopedTimeZone zone("UTC0");
    EXPECT_EQ(OLADateTime(1970, 1, 2, 0, 0, 0, 0).ToTimeT(), time_t(86400));
    EXPECT_EQ(OLADateTime(2009, 3, 7, 12, 0, 0, 0).ToTimeT(), time_t(1236427200));
  }
  {
    ScopedTimeZone zone("PST8PDT");
    EXPECT_EQ(OLADateTime(2009, 3, 7, 12, 0, 0, 0).ToTimeT(), time_t(1236427200 + 8 * 3600));
    // 15 July 2009 12:00 PDT is 19:00 UTC.
    if (RuntimeAppliesDaylightTime()) {
      EXPECT_EQ(OLADateTime(2009, 7, 15, 12, 0, 0, 0).ToTimeT(), time_t(1247684400));
    }
  }
  EXPECT_EQ(OLADateTime(2009, 2, 29, 12, 0, 0, 0).ToTimeT(), time_t(-1));
  EXPECT_EQ(OLADateTime().ToTimeT(), time_t(-1));
}

struct ZoneCase {
  const char* tz;
  bool ianaName;  // the Windows C runtime reads only the POSIX form "XXXn[YYY]"
  double oleDate;
  bool daylight;  // daylight time is in force at the value's moment
  bool named;
  const char* zoneName;
  int offset;
  const char* xml;
};

void PrintTo(const ZoneCase& c, std::ostream* os) {
  *os << "TZ=" << c.tz << " " << std::setprecision(17) << c.oleDate;
}

class SetLocalZoneTest : public testing::TestWithParam<ZoneCase> {};

TEST_P(SetLocalZoneTest, NamesAndOffsets) {
  const ZoneCase& c = GetParam();
#ifdef _WIN32
  if (c.ianaName) GTEST_SKIP() << "the C runtime does not read zone names such as " << c.tz;
#endif
  ScopedTimeZone zone(c.tz);
  if (c.daylight && !RuntimeAppliesDaylightTime())
    GTEST_SKIP() << "the C runtime applies no daylight time for TZ=" << c.tz;
  OLADateTime value;
  ASSERT_TRUE(value.SetFromOleDate(c.oleDate));
  EXPECT_EQ(value.SetLocalZone(), c.named);
  EXPECT_STREQ(value.GetZoneName().GetText(), c.zoneName);
  EXPECT_EQ(value.GetZoneOffset(), c.offset);
  OLAString text;
  ASSERT_TRUE(value.FormatXML(text));
  EXPECT_STREQ(text.GetText(), c.xml);
}

// 39828.5 is 15 January 2009 and 40009.5 15 July 2009, both at noon. Daylight time began in
// North America on 8 March 2009 (39880) at 2:00.
INSTANTIATE_TEST_SUITE_P(
    Zones, SetLocalZoneTest,
    testing::Values(
        ZoneCase{"America/Los_Angeles", true, 39828.5, false, true, "PST", -8, "20090115T120000-0800"},
        ZoneCase{"America/Los_Angeles", true, 40009.5, true, true, "PDT", -7, "20090715T120000-0700"},
        ZoneCase{"America/Denver", true, 39828.5, false, true, "MST", -7, "20090115T120000-0700"},
        ZoneCase{"America/Denver", true, 40009.5, true, true, "MDT", -6, "20090715T120000-0600"},
        ZoneCase{"America/Phoenix", true, 40009.5, false, true, "MST", -7, "20090715T120000-0700"},
        ZoneCase{"America/Chicago", true, 39828.5, false, true, "CST", -6, "20090115T120000-0600"},
        ZoneCase{"America/Chicago", true, 40009.5, true, true, "CDT", -5, "20090715T120000-0500"},
        ZoneCase{"America/New_York", true, 39828.5, false, true, "EST", -5, "20090115T120000-0500"},
        ZoneCase{"America/New_York", true, 40009.5, true, true, "EDT", -4, "20090715T120000-0400"},
        ZoneCase{"America/New_York", true, 39879.5, false, true, "EST", -5, "20090307T120000-0500"},
        ZoneCase{"America/New_York", true, 39880.0, false, true, "EST", -5, "20090308T000000-0500"},
        ZoneCase{"America/New_York", true, 39880.5, true, true, "EDT", -4, "20090308T120000-0400"},
        ZoneCase{"UTC", true, 39828.5, false, false, "---", 0, "20090115T120000+0000"},
        ZoneCase{"UTC", true, 40009.5, false, false, "---", 0, "20090715T120000+0000"},
        // Zones other than the four named ones move one hour west in daylight time.
        ZoneCase{"Europe/Berlin", true, 39828.5, false, false, "---", 1, "20090115T120000+0100"},
        ZoneCase{"Europe/Berlin", true, 40009.5, true, false, "---", 0, "20090715T120000+0000"},
        ZoneCase{"Asia/Tokyo", true, 40009.5, false, false, "---", 9, "20090715T120000+0900"},
        ZoneCase{"Australia/Sydney", true, 39828.5, true, false, "---", 9, "20090115T120000+0900"},
        ZoneCase{"Australia/Sydney", true, 40009.5, false, false, "---", 10, "20090715T120000+1000"},
        ZoneCase{"PST8PDT", false, 39828.5, false, true, "PST", -8, "20090115T120000-0800"},
        ZoneCase{"PST8PDT", false, 40009.5, true, true, "PDT", -7, "20090715T120000-0700"},
        ZoneCase{"PST8PDT", false, 39879.5, false, true, "PST", -8, "20090307T120000-0800"},
        ZoneCase{"PST8PDT", false, 39880.5, true, true, "PDT", -7, "20090308T120000-0700"},
        ZoneCase{"MST7MDT", false, 40009.5, true, true, "MDT", -6, "20090715T120000-0600"},
        ZoneCase{"CST6CDT", false, 39828.5, false, true, "CST", -6, "20090115T120000-0600"},
        ZoneCase{"EST5EDT", false, 39828.5, false, true, "EST", -5, "20090115T120000-0500"},
        ZoneCase{"EST5EDT", false, 40009.5, true, true, "EDT", -4, "20090715T120000-0400"},
        ZoneCase{"UTC0", false, 40009.5, false, false, "---", 0, "20090715T120000+0000"},
        ZoneCase{"CET-1CEST", false, 39828.5, false, false, "---", 1, "20090115T120000+0100"},
        ZoneCase{"CET-1CEST", false, 40009.5, true, false, "---", 0, "20090715T120000+0000"},
        ZoneCase{"JST-9", false, 40009.5, false, false, "---", 9, "20090715T120000+0900"},
        ZoneCase{"HST10", false, 40009.5, false, false, "---", -10, "20090715T120000-1000"}));

struct StandardOffsetCase {
  const char* tz;
  bool ianaName;
  int hours;
};

void PrintTo(const StandardOffsetCase& c, std::ostream* os) {
  *os << "TZ=" << c.tz;
}

class StandardOffsetTest : public testing::TestWithParam<StandardOffsetCase> {};

TEST_P(StandardOffsetTest, WholeHoursWestNegative) {
#ifdef _WIN32
  if (GetParam().ianaName) GTEST_SKIP() << "the C runtime does not read " << GetParam().tz;
#endif
  ScopedTimeZone zone(GetParam().tz);
  EXPECT_EQ(OLADateTime::StandardOffsetHours(), GetParam().hours);
}

INSTANTIATE_TEST_SUITE_P(Zones, StandardOffsetTest,
                         testing::Values(StandardOffsetCase{"PST8PDT", false, -8},
                                         StandardOffsetCase{"EST5EDT", false, -5},
                                         StandardOffsetCase{"UTC0", false, 0},
                                         StandardOffsetCase{"CET-1CEST", false, 1},
                                         StandardOffsetCase{"JST-9", false, 9},
                                         StandardOffsetCase{"America/Los_Angeles", true, -8},
                                         StandardOffsetCase{"Europe/Berlin", true, 1},
                                         // Half-hour zones keep the whole hours only.
                                         StandardOffsetCase{"Asia/Kolkata", true, 5}));

// ---------------------------------------------------------------------------------------------
// Transaction identifiers

bool HasTrnUIDShape(const std::string& text) {
  if (text.size() != size_t(kTrnUIDLength)) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool dash = i % 5 == 4;
    if (dash != (c == '-')) return false;
    if (!dash && !((c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'))) return false;
  }
  return true;
}

uint64_t HexValue(const std::string& text) {
  uint64_t value = 0;
  for (char c : text) {
    if (c == '-') continue;
    value = value * 16 + uint64_t(c <= '9' ? c - '0' : c - 'A' + 10);
  }
  return value;
}

uint64_t TicksNow() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return uint64_t(std::chrono::duration_cast<std::chrono::duration<int64_t, std::ratio<1, 10000000>>>(
                      sinceEpoch)
                      .count());
}

struct TrnUIDCase {
  uint64_t ticks;
  uint32_t processId;
  uint32_t sequence;
  const char* text;
};

void PrintTo(const TrnUIDCase& c, std::ostream* os) {
  *os << c.text;
}

class FormatTrnUIDTest : public testing::TestWithParam<TrnUIDCase> {};

TEST_P(FormatTrnUIDTest, GroupsOfFourUpperCaseDigits) {
  const OLAString text = FormatTrnUID(GetParam().ticks, GetParam().processId, GetParam().sequence);
  EXPECT_STREQ(text.GetText(), GetParam().text);
  EXPECT_TRUE(HasTrnUIDShape(text.GetText()));
}

INSTANTIATE_TEST_SUITE_P(
    Parts, FormatTrnUIDTest,
    testing::Values(
        TrnUIDCase{0, 0, 0, "0000-0000-0000-0000-0000-0000-0000-0000"},
        TrnUIDCase{0x0123456789ABCDEFull, 0xDEADBEEF, 42, "0123-4567-89AB-CDEF-DEAD-BEEF-0000-002A"},
        TrnUIDCase{~0ull, ~0u, ~0u, "FFFF-FFFF-FFFF-FFFF-FFFF-FFFF-FFFF-FFFF"},
        TrnUIDCase{1, 0x10000, 0xFFFF, "0000-0000-0000-0001-0001-0000-0000-FFFF"}));

TEST(NewTrnUID, CarriesTheTimeAndTheProcessId) {
  const uint64_t before = TicksNow();
  const std::string text = NewTrnUID().GetText();
  const uint64_t after = TicksNow();
  ASSERT_TRUE(HasTrnUIDShape(text)) << text;
  const uint64_t ticks = HexValue(text.substr(0, 19));
  EXPECT_LE(before, ticks);
  EXPECT_LE(ticks, after);
#ifdef _WIN32
  const uint32_t processId = uint32_t(_getpid());
#else
  const uint32_t processId = uint32_t(getpid());
#endif
  EXPECT_EQ(HexValue(text.substr(20, 9)), processId) << text;
}

TEST(NewTrnUID, UniqueInATightLoop) {
  std::unordered_set<std::string> seen;
  for (int i = 0; i < 100000; ++i) {
    std::string text = NewTrnUID().GetText();
    ASSERT_TRUE(HasTrnUIDShape(text)) << text;
    ASSERT_TRUE(seen.insert(std::move(text)).second) << "repeated after " << i << " calls";
  }
}

TEST(NewTrnUID, UniqueAcrossThreads) {
  constexpr int kPerThread = 50000;
  std::vector<std::string> first(kPerThread);
  std::vector<std::string> second(kPerThread);
  auto fill = [](std::vector<std::string>* out) {
    for (std::string& text : *out) text = NewTrnUID().GetText();
  };
  std::thread a(fill, &first);
  std::thread b(fill, &second);
  a.join();
  b.join();
  std::unordered_set<std::string> seen(first.begin(), first.end());
  seen.insert(second.begin(), second.end());
  EXPECT_EQ(seen.size(), size_t(2 * kPerThread));
}

}  // namespace
