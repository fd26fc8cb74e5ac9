// Tests of OLADateTime, OLATime and the transaction identifiers. Random times of day against
// the moment they name are fuzz/ole_date_fuzzer.cpp's, and on Windows date_oracle_test's.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <unordered_set>
#include <utility>
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

TEST(SetFromOleDate, Decomposes) {
  const struct { double oleDate; const char* fields; } cases[] = {
      // Whole days are all checked against the calendar below; these show the day numbering.
      {0.0, "1899-12-30 00:00:00.000"}, {39879.5, "2009-03-07 12:00:00.000"},
      {39879.0 + 50531 * kSecond, "2009-03-07 14:02:11.000"},
      // 1900 is no leap year: day 60 is 28 February and day 61 is 1 March.
      {60.0, "1900-02-28 00:00:00.000"}, {61.0, "1900-03-01 00:00:00.000"},
      // The ends of the range.
      {-657434.0, "0100-01-01 00:00:00.000"}, {2958465.0, "9999-12-31 00:00:00.000"},
      {-657433.5, "0100-01-02 12:00:00.000"}, {2958464.75, "9999-12-30 18:00:00.000"},
      // Rounding to the nearest second.
      {39879.0 + 86399.6 * kSecond, "2009-03-08 00:00:00.000"},
      {39879.0 + 86399.4 * kSecond, "2009-03-07 23:59:59.000"},
      {39879.0 + 59.6 * kSecond, "2009-03-07 00:01:00.000"},
      {39879.0 + 3599.7 * kSecond, "2009-03-07 01:00:00.000"},
      {36525.0 + 86399.6 * kSecond, "2000-01-01 00:00:00.000"},
      {2958464.0 + 86399.6 * kSecond, "9999-12-31 00:00:00.000"},
      {0.4 * kSecond, "1899-12-30 00:00:00.000"}, {0.6 * kSecond, "1899-12-30 00:00:01.000"},
      // Before 30 December 1899 the whole days count back from day 0 and the fraction is still
      // the time of day: -1.25 is 29 December 1899 at 06:00, and -0.5 is day 0 at noon.
      {-1.25, "1899-12-29 06:00:00.000"}, {-1.5, "1899-12-29 12:00:00.000"},
      {-1.75, "1899-12-29 18:00:00.000"}, {-0.5, "1899-12-30 12:00:00.000"},
      {-0.4 * kSecond, "1899-12-30 00:00:00.000"},
      {-36522.0 - 50531 * kSecond, "1800-01-01 14:02:11.000"},
      {-1.0 - 86399.4 * kSecond, "1899-12-29 23:59:59.000"},
      // Half a second is added away from zero before the whole days are taken, so a negative
      // value within half a second of the next whole day lands on that day number, which lies
      // before the value's own day.
      {-1.0 - 86399.6 * kSecond, "1899-12-28 00:00:00.000"},
      {-657433.0 - 86399.6 * kSecond, "0100-01-01 00:00:00.000"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << std::setprecision(17) << c.oleDate);
    OLADateTime value;
    ASSERT_TRUE(value.SetFromOleDate(c.oleDate));
    EXPECT_EQ(Fields(value), c.fields);
    EXPECT_TRUE(value.IsValid());
  }
}

// A refused value leaves every field and the zone alone; an accepted one keeps the zone and
// clears the milliseconds.
TEST(SetFromOleDate, RefusesValuesOutOfRangeAndKeepsTheZone) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (double oleDate : {2958466.0, 2958465.5, std::nextafter(2958465.0, 3e6), -657435.0, -657434.5,
                         std::nextafter(-657434.0, -1e6), 1e300, -1e300,
                         std::numeric_limits<double>::quiet_NaN(), infinity, -infinity}) {
    SCOPED_TRACE(testing::Message() << std::setprecision(17) << oleDate);
    OLADateTime value(2009, 3, 7, 14, 2, 11, 5);
    value.SetZone("PST", -8);
    EXPECT_FALSE(value.SetFromOleDate(oleDate));
    EXPECT_EQ(Fields(value), "2009-03-07 14:02:11.005");
    EXPECT_EQ(value.GetZoneOffset(), -8);
    EXPECT_STREQ(value.GetZoneName().GetText(), "PST");
  }
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

// ---------------------------------------------------------------------------------------------
// Construction, validity, calendar

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
  value.SetZone(nullptr, 0);
  EXPECT_STREQ(copy.GetZoneName().GetText(), "PST");
  EXPECT_TRUE(value.GetZoneName().IsEmpty());
}

TEST(OLADateTimeBase, ValidityChecksEachField) {
  const struct {
    OLADateTimeBase value;
    int16_t offset;
    bool dateValid;
    bool timeValid;
  } cases[] = {
      {{2009, 3, 7, 0, 0, 0, 0}, 0, true, true}, {{2009, 1, 31, 23, 59, 59, 999}, 12, true, true},
      {{2009, 12, 31, 0, 0, 0, 0}, -12, true, true}, {{2009, 0, 1, 0, 0, 0, 0}, 0, false, true},
      {{2009, 13, 1, 0, 0, 0, 0}, 0, false, true}, {{2009, 1, 0, 0, 0, 0, 0}, 0, false, true},
      {{2009, 1, 32, 0, 0, 0, 0}, 0, false, true}, {{2009, 4, 31, 0, 0, 0, 0}, 0, false, true},
      {{2009, 2, 29, 0, 0, 0, 0}, 0, false, true}, {{2008, 2, 29, 0, 0, 0, 0}, 0, true, true},
      {{2008, 2, 30, 0, 0, 0, 0}, 0, false, true}, {{1900, 2, 29, 0, 0, 0, 0}, 0, false, true},
      {{2000, 2, 29, 0, 0, 0, 0}, 0, true, true}, {{2009, 3, 7, 24, 0, 0, 0}, 0, true, false},
      {{2009, 3, 7, 0, 60, 0, 0}, 0, true, false}, {{2009, 3, 7, 0, 0, 60, 0}, 0, true, false},
      {{2009, 3, 7, 0, 0, 0, 1000}, 0, true, false}, {{2009, 3, 7, 0, 0, 0, 0}, 14, true, true},
      {{2009, 3, 7, 0, 0, 0, 0}, 15, true, false}, {{2009, 3, 7, 0, 0, 0, 0}, -13, true, false},
  };
  for (const auto& c : cases) {
    OLADateTimeBase value = c.value;
    value.SetZone(nullptr, c.offset);
    SCOPED_TRACE(Fields(value) + " offset " + std::to_string(c.offset));
    EXPECT_EQ(value.IsDateValid(), c.dateValid);
    EXPECT_EQ(value.IsTimeValid(), c.timeValid);
    EXPECT_EQ(value.IsValid(), c.dateValid && c.timeValid);
  }
}

TEST(OLADateTimeBase, LeapYearsAndDaysInMonth) {
  const std::pair<unsigned, bool> years[] = {{100, false}, {400, true},   {1900, false}, {2000, true},
                                              {2008, true}, {2009, false}, {2100, false}, {9996, true}};
  for (const auto& [year, leap] : years) {
    EXPECT_EQ(OLADateTimeBase::IsLeapYear(year), leap) << year;
    EXPECT_EQ(OLADateTimeBase::DaysInMonth(2, year), leap ? 29u : 28u) << year;
  }
  const unsigned expected[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 0};
  for (unsigned month = 0; month <= 13; ++month)
    EXPECT_EQ(OLADateTimeBase::DaysInMonth(month, 2009), expected[month]) << month;
}

// Sets month and day only; a refused day leaves the value alone.
TEST(OLADateTimeBase, SetFromDayOfYear) {
  const struct {
    unsigned dayOfYear;
    uint16_t year;
    const char* date;  // null when refused
  } cases[] = {
      {1, 2009, "2009-01-01"}, {31, 2009, "2009-01-31"}, {32, 2009, "2009-02-01"},
      {59, 2009, "2009-02-28"}, {60, 2009, "2009-03-01"}, {66, 2009, "2009-03-07"},
      {365, 2009, "2009-12-31"}, {59, 2008, "2008-02-28"}, {60, 2008, "2008-02-29"},
      {61, 2008, "2008-03-01"}, {335, 2008, "2008-11-30"}, {366, 2008, "2008-12-31"},
      {60, 1900, "1900-03-01"}, {60, 2000, "2000-02-29"}, {0, 2009, nullptr}, {366, 2009, nullptr},
      {367, 2008, nullptr}, {366, 1900, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("day " + std::to_string(c.dayOfYear) + " of " + std::to_string(c.year));
    OLADateTime value(1999, 9, 9, 9, 9, 9, 9);
    EXPECT_EQ(value.SetFromDayOfYear(c.dayOfYear, c.year), c.date != nullptr);
    EXPECT_EQ(Fields(value), std::string(c.date ? c.date : "1999-09-09") + " 09:09:09.009");
  }
}

// ---------------------------------------------------------------------------------------------
// Text forms

enum class Form { kXml, kFull, kTime };

// Formats the fields with the zone as `form` says; a refused value leaves "keep" in the text.
std::string Formatted(Form form, OLADateTimeBase fields, const char* zoneName, int16_t offset) {
  fields.SetZone(zoneName, offset);
  OLAString text("keep");
  OLATime time;
  OLADateTime dateTime;
  static_cast<OLADateTimeBase&>(time) = fields;
  static_cast<OLADateTimeBase&>(dateTime) = fields;
  const bool done = form == Form::kTime  ? time.FormatXML(text)
                    : form == Form::kXml ? dateTime.FormatXML(text)
                                         : dateTime.FormatFull(text);
  EXPECT_EQ(done, std::string(text.GetText()) != "keep");
  return done ? text.GetText() : "refused";
}

// One row per rule of each form and its bounds; the forms of arbitrary values are checked against
// their printf formats by fuzz/ole_date_fuzzer.cpp.
TEST(Format, RequestLongAndTimeOnlyForms) {
  constexpr Form X = Form::kXml, F = Form::kFull, T = Form::kTime;
  const struct {
    Form form;
    OLADateTimeBase value;
    const char* zoneName;
    int16_t offset;
    const char* text;
  } cases[] = {
      {X, {2009, 3, 7, 14, 2, 11, 0}, "PST", -8, "20090307T140211-0800"},
      {X, {2009, 3, 7, 9, 30, 0, 0}, nullptr, 0, "20090307T093000+0000"},
      {X, {2009, 3, 7, 0, 0, 0, 0}, nullptr, 0, "20090307"},
      // Milliseconds and the zone name are never written in the request form.
      {X, {2009, 3, 7, 0, 0, 0, 500}, "---", 0, "20090307"},
      {X, {2009, 3, 7, 0, 0, 1, 0}, nullptr, 0, "20090307T000001+0000"},
      {X, {2009, 3, 7, 0, 1, 0, 0}, nullptr, 0, "20090307T000100+0000"},
      {X, {2009, 3, 7, 1, 0, 0, 0}, nullptr, 0, "20090307T010000+0000"},
      {X, {2009, 3, 7, 0, 0, 0, 0}, "---", 1, "20090307T000000+0100"},
      {X, {2009, 12, 31, 23, 59, 59, 999}, nullptr, 12, "20091231T235959+1200"},
      {X, {2009, 1, 1, 0, 0, 0, 0}, nullptr, -12, "20090101T000000-1200"},
      {X, {100, 1, 1, 0, 0, 0, 0}, nullptr, 0, "01000101"},
      {X, {9999, 12, 31, 0, 0, 0, 0}, nullptr, 0, "99991231"},
      {X, {2000, 2, 29, 0, 0, 0, 0}, nullptr, 0, "20000229"},
      {X, {2009, 2, 29, 0, 0, 0, 0}, nullptr, 0, "refused"},
      {X, {2009, 0, 7, 0, 0, 0, 0}, nullptr, 0, "refused"},
      {X, {2009, 3, 7, 24, 0, 0, 0}, nullptr, 0, "refused"},
      {X, {2009, 3, 7, 0, 0, 0, 1000}, nullptr, 0, "refused"},
      {X, {2009, 3, 7, 12, 0, 0, 0}, nullptr, 14, "20090307T120000+1400"},
      {X, {2009, 3, 7, 12, 0, 0, 0}, nullptr, 15, "refused"},
      {X, {2009, 3, 7, 12, 0, 0, 0}, nullptr, -13, "refused"},
      {F, {2009, 3, 7, 14, 2, 11, 0}, "PST", -8, "20090307140211.000[-8:PST]"},
      {F, {2009, 3, 7, 14, 2, 11, 0}, nullptr, -8, "20090307140211.000[-8]"},
      {F, {2009, 3, 7, 14, 2, 11, 0}, "---", 1, "20090307140211.000[1:---]"},
      {F, {2009, 3, 7, 14, 2, 11, 0}, nullptr, 0, "20090307140211"},
      {F, {2009, 3, 7, 14, 2, 11, 0}, "---", 0, "20090307140211"},
      {F, {2009, 3, 7, 14, 2, 11, 5}, nullptr, 0, "20090307140211.005"},
      {F, {2009, 3, 7, 0, 0, 0, 0}, nullptr, 0, "20090307"},
      {F, {2009, 3, 7, 0, 0, 0, 1}, nullptr, 0, "20090307000000.001"},
      {F, {2009, 3, 7, 0, 0, 0, 0}, nullptr, 12, "20090307000000.000[12]"},
      {F, {2009, 2, 29, 14, 2, 11, 0}, "PST", -8, "refused"},
      {F, {2009, 3, 7, 14, 2, 11, 0}, "---", 14, "20090307140211.000[14:---]"},
      {F, {2009, 3, 7, 14, 2, 11, 0}, "PST", 15, "refused"},
      {T, {0, 0, 0, 14, 2, 11, 0}, nullptr, 0, "140211"},
      {T, {0, 0, 0, 0, 0, 0, 0}, nullptr, 0, "000000"},
      {T, {2009, 3, 7, 14, 2, 11, 0}, nullptr, 0, "140211"},
      // Milliseconds without leading zeros.
      {T, {0, 0, 0, 14, 2, 11, 5}, nullptr, 0, "140211.5"},
      {T, {0, 0, 0, 14, 2, 11, 250}, nullptr, 0, "140211.250"},
      {T, {0, 0, 0, 14, 2, 11, 0}, "PST", -8, "140211[-8:PST]"},
      {T, {0, 0, 0, 14, 2, 11, 0}, nullptr, -8, "140211[-8:]"},
      {T, {0, 0, 0, 14, 2, 11, 0}, "---", 0, "140211:---"},
      {T, {0, 0, 0, 24, 0, 0, 0}, nullptr, 0, "refused"},
      {T, {0, 0, 0, 14, 2, 11, 0}, "---", 14, "140211[14:---]"},
      {T, {0, 0, 0, 14, 2, 11, 0}, "PST", 15, "refused"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << int(c.form) << " " << Fields(c.value) << " [" << c.offset
                                    << ":" << (c.zoneName ? c.zoneName : "") << "]");
    EXPECT_EQ(Formatted(c.form, c.value, c.zoneName, c.offset), c.text);
  }
  // A long zone name is written whole.
  const std::string name(300, 'Z');
  EXPECT_EQ(Formatted(F, {2009, 3, 7, 14, 2, 11, 0}, name.c_str(), -8),
            "20090307140211.000[-8:" + name + "]");
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

// Whether the C runtime can show the case: the Windows one reads only the POSIX form
// "XXXn[YYY]" of TZ, and may apply no daylight time.
bool RuntimeCanShow(bool ianaName, bool daylight) {
#ifdef _WIN32
  if (ianaName) return false;
#else
  (void)ianaName;
#endif
  return !daylight || RuntimeAppliesDaylightTime();
}

// 39828.5 is 15 January 2009 and 40009.5 15 July 2009, both at noon. Daylight time began in
// North America on 8 March 2009 (39880) at 2:00.
TEST(SetLocalZone, NamesAndOffsets) {
  const struct {
    const char* tz;
    bool ianaName;
    double oleDate;
    bool daylight;  // daylight time is in force at the value's moment
    bool named;
    const char* zoneName;
    int offset;
    const char* xml;
  } cases[] = {
      {"America/Denver", true, 39828.5, false, true, "MST", -7, "20090115T120000-0700"},
      {"America/Phoenix", true, 40009.5, false, true, "MST", -7, "20090715T120000-0700"},
      {"America/Chicago", true, 40009.5, true, true, "CDT", -5, "20090715T120000-0500"},
      {"America/New_York", true, 39880.0, false, true, "EST", -5, "20090308T000000-0500"},
      // Zones other than the four named ones move one hour west in daylight time.
      {"Australia/Sydney", true, 39828.5, true, false, "---", 9, "20090115T120000+0900"},
      {"Australia/Sydney", true, 40009.5, false, false, "---", 10, "20090715T120000+1000"},
      {"PST8PDT", false, 39828.5, false, true, "PST", -8, "20090115T120000-0800"},
      {"PST8PDT", false, 40009.5, true, true, "PDT", -7, "20090715T120000-0700"},
      {"PST8PDT", false, 39879.5, false, true, "PST", -8, "20090307T120000-0800"},
      {"PST8PDT", false, 39880.5, true, true, "PDT", -7, "20090308T120000-0700"},
      {"MST7MDT", false, 40009.5, true, true, "MDT", -6, "20090715T120000-0600"},
      {"CST6CDT", false, 39828.5, false, true, "CST", -6, "20090115T120000-0600"},
      {"EST5EDT", false, 39828.5, false, true, "EST", -5, "20090115T120000-0500"},
      {"EST5EDT", false, 40009.5, true, true, "EDT", -4, "20090715T120000-0400"},
      {"UTC0", false, 40009.5, false, false, "---", 0, "20090715T120000+0000"},
      {"CET-1CEST", false, 39828.5, false, false, "---", 1, "20090115T120000+0100"},
      {"CET-1CEST", false, 40009.5, true, false, "---", 0, "20090715T120000+0000"},
      {"JST-9", false, 40009.5, false, false, "---", 9, "20090715T120000+0900"},
      {"HST10", false, 40009.5, false, false, "---", -10, "20090715T120000-1000"},
      // East of twelve hours: Tonga and the Line Islands (no daylight time); New Zealand keeps +12
      // in winter and, by the one-hour-west rule, +11 in summer.
      {"TOT-13", false, 39828.5, false, false, "---", 13, "20090115T120000+1300"},
      {"LIN-14", false, 39828.5, false, false, "---", 14, "20090115T120000+1400"},
      {"Pacific/Auckland", true, 39828.5, true, false, "---", 11, "20090115T120000+1100"},
      {"Pacific/Auckland", true, 40009.5, false, false, "---", 12, "20090715T120000+1200"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "TZ=" << c.tz << " " << c.oleDate);
    if (!RuntimeCanShow(c.ianaName, c.daylight)) continue;
    ScopedTimeZone zone(c.tz);
    OLADateTime value;
    ASSERT_TRUE(value.SetFromOleDate(c.oleDate));
    EXPECT_EQ(value.SetLocalZone(), c.named);
    EXPECT_STREQ(value.GetZoneName().GetText(), c.zoneName);
    EXPECT_EQ(value.GetZoneOffset(), c.offset);
    OLAString text;
    ASSERT_TRUE(value.FormatXML(text));
    EXPECT_STREQ(text.GetText(), c.xml);
  }
}

TEST(SetLocalZone, StandardOffsetIsWholeHoursWestNegative) {
  const struct { const char* tz; bool ianaName; int hours; } cases[] = {
      {"PST8PDT", false, -8}, {"EST5EDT", false, -5}, {"UTC0", false, 0}, {"CET-1CEST", false, 1},
      {"JST-9", false, 9}, {"Asia/Kolkata", true, 5}};  // half-hour zones keep the whole hours only
  for (const auto& c : cases) {
    if (!RuntimeCanShow(c.ianaName, false)) continue;
    ScopedTimeZone zone(c.tz);
    EXPECT_EQ(OLADateTime::StandardOffsetHours(), c.hours) << c.tz;
  }
}

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

TEST(FormatTrnUID, GroupsOfFourUpperCaseDigits) {
  const struct {
    uint64_t ticks;
    uint32_t processId;
    uint32_t sequence;
    const char* text;
  } cases[] = {
      {0, 0, 0, "0000-0000-0000-0000-0000-0000-0000-0000"},
      {0x0123456789ABCDEFull, 0xDEADBEEF, 42, "0123-4567-89AB-CDEF-DEAD-BEEF-0000-002A"},
      {~0ull, ~0u, ~0u, "FFFF-FFFF-FFFF-FFFF-FFFF-FFFF-FFFF-FFFF"},
      {1, 0x10000, 0xFFFF, "0000-0000-0000-0001-0001-0000-0000-FFFF"},
  };
  for (const auto& c : cases) {
    const OLAString text = FormatTrnUID(c.ticks, c.processId, c.sequence);
    EXPECT_STREQ(text.GetText(), c.text);
    EXPECT_TRUE(HasTrnUIDShape(text.GetText())) << c.text;
  }
}

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

// Each thread asks in a tight loop.
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
