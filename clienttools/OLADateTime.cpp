#include "clienttools/OLADateTime.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

// Days before each month, 13 entries so that [month] is the last day of the month.
constexpr uint16_t kDaysBefore[2][13] = {
    {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365},
    {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366},
};

// Days from 1 January of year 0 (proleptic Gregorian) to 30 December 1899, the OLE day 0.
constexpr long kDaysToOleEpoch = 693959;
constexpr long kDaysPer400Years = 146097;
constexpr long kDaysPerLeapCentury = 36525;  // the first century of a 400-year cycle
constexpr long kDaysPerCentury = 36524;
constexpr long kDaysPer4Years = 1461;
constexpr long kDaysPerPlain4Years = 1460;  // the first four years of a century but the first
constexpr double kHalfSecond = 1.0 / 172800.0;

struct ZoneNames {
  int offset;
  const char* standard;
  const char* daylight;
};
// The four North American zones, by standard offset.
constexpr ZoneNames kNamedZones[] = {
    {-8, "PST", "PDT"}, {-7, "MST", "MDT"}, {-6, "CST", "CDT"}, {-5, "EST", "EDT"}};

bool UtcBrokenDown(time_t moment, std::tm& out) {
#ifdef _WIN32
  return gmtime_s(&out, &moment) == 0;
#else
  return gmtime_r(&moment, &out) != nullptr;
#endif
}

bool LocalBrokenDown(time_t moment, std::tm& out) {
#ifdef _WIN32
  return localtime_s(&out, &moment) == 0;
#else
  return localtime_r(&moment, &out) != nullptr;
#endif
}

// Splits a day count from 1 January of year 0 into a year and a 1-based day of that year.
void SplitDays(long days, unsigned& year, unsigned& dayOfYear) {
  year = unsigned(400 * (days / kDaysPer400Years));
  days %= kDaysPer400Years;
  // Year 0 of a 400-year cycle is a leap year, so its first century has one day more.
  bool leapCentury = days < kDaysPerLeapCentury;
  if (!leapCentury) {
    days -= kDaysPerLeapCentury;
    year += unsigned(100 + 100 * (days / kDaysPerCentury));
    days %= kDaysPerCentury;
  }
  // A century that starts with a plain year starts with four plain years.
  if (!leapCentury && days < kDaysPerPlain4Years) {
    year += unsigned(days / 365);
    dayOfYear = unsigned(days % 365) + 1;
    return;
  }
  if (!leapCentury) {
    days -= kDaysPerPlain4Years;
    year += 4;
  }
  year += unsigned(4 * (days / kDaysPer4Years));
  days %= kDaysPer4Years;
  // The first year of a 4-year cycle is the leap year.
  if (days >= 366) {
    days -= 366;
    year += unsigned(1 + days / 365);
    days %= 365;
  }
  dayOfYear = unsigned(days) + 1;
}

}  // namespace

OLADateTimeBase::OLADateTimeBase(uint16_t year, uint16_t month, uint16_t day, uint16_t hour,
                                 uint16_t minute, uint16_t second, uint16_t millisecond)
    : year_(year),
      month_(month),
      day_(day),
      hour_(hour),
      minute_(minute),
      second_(second),
      millisecond_(millisecond) {}

bool OLADateTimeBase::IsLeapYear(unsigned year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

unsigned OLADateTimeBase::DaysInMonth(unsigned month, unsigned year) {
  if (month < 1 || month > 12) return 0;
  const uint16_t* before = kDaysBefore[IsLeapYear(year) ? 1 : 0];
  return unsigned(before[month] - before[month - 1]);
}

bool OLADateTimeBase::IsDateValid() const {
  return month_ >= 1 && month_ <= 12 && day_ >= 1 && day_ <= DaysInMonth(month_, year_);
}

bool OLADateTimeBase::IsTimeValid() const {
  return hour_ <= 23 && minute_ <= 59 && second_ <= 59 && millisecond_ <= 999 &&
         zoneOffset_ >= kMinZoneOffset && zoneOffset_ <= kMaxZoneOffset;
}

void OLADateTimeBase::SetZone(const char* name, int16_t offset) {
  // The name is taken as given; it is not checked against the offset.
  zoneName_.SetText(name);
  zoneOffset_ = offset;
}

bool OLADateTimeBase::SetFromDayOfYear(unsigned dayOfYear, uint16_t year) {
  const uint16_t* before = kDaysBefore[IsLeapYear(year) ? 1 : 0];
  if (dayOfYear < 1 || dayOfYear > before[12]) return false;
  unsigned month = 1;
  while (dayOfYear > before[month]) ++month;
  year_ = year;
  month_ = uint16_t(month);
  day_ = uint16_t(dayOfYear - before[month - 1]);
  return true;
}

time_t OLADateTimeBase::ToTimeT() const {
  if (!IsValid()) return time_t(-1);
  std::tm local{};
  local.tm_year = int(year_) - 1900;
  local.tm_mon = int(month_) - 1;
  local.tm_mday = day_;
  local.tm_hour = hour_;
  local.tm_min = minute_;
  local.tm_sec = second_;
  local.tm_isdst = -1;
  return std::mktime(&local);
}

bool OLADateTime::SetFromOleDate(double oleDate) {
  // Written so that NaN fails the test too.
  if (!(oleDate >= kMinOleDate && oleDate <= kMaxOleDate)) return false;
  // Half a second away from zero, so that cutting off the fraction rounds to the nearest second.
  // The whole days count towards zero and the fraction is the time of day whatever the sign
  // (-1.25 is 29 December 1899, 06:00).
  const double rounded = oleDate + (oleDate < 0.0 ? -kHalfSecond : kHalfSecond);
  const long days = long(rounded);
  const double magnitude = std::fabs(rounded);
  const long secondOfDay = std::min(86399L, long((magnitude - std::floor(magnitude)) * 86400.0));

  unsigned year = 0;
  unsigned dayOfYear = 0;
  SplitDays(days + kDaysToOleEpoch, year, dayOfYear);
  SetFromDayOfYear(dayOfYear, uint16_t(year));
  hour_ = uint16_t(secondOfDay / 3600);
  minute_ = uint16_t(secondOfDay / 60 % 60);
  second_ = uint16_t(secondOfDay % 60);
  millisecond_ = 0;
  return true;
}

bool OLADateTime::FormatXML(OLAString& text) const {
  if (!IsValid()) return false;
  char buffer[64];
  int length = std::snprintf(buffer, sizeof buffer, "%04u%02u%02u", unsigned(year_),
                             unsigned(month_), unsigned(day_));
  if (hour_ != 0 || minute_ != 0 || second_ != 0 || zoneOffset_ != 0) {
    std::snprintf(buffer + length, sizeof buffer - size_t(length), "T%02u%02u%02u%+03d00",
                  unsigned(hour_), unsigned(minute_), unsigned(second_), int(zoneOffset_));
  }
  text.SetText(buffer);
  return true;
}

bool OLADateTime::FormatFull(OLAString& text) const {
  if (!IsValid()) return false;
  char buffer[64];
  int length = std::snprintf(buffer, sizeof buffer, "%04u%02u%02u", unsigned(year_),
                             unsigned(month_), unsigned(day_));
  OLAString full(buffer);
  if (hour_ == 0 && minute_ == 0 && second_ == 0 && millisecond_ == 0 && zoneOffset_ == 0) {
    text.SetText(full.GetText(), size_t(full.GetLength()));
    return true;
  }
  length = std::snprintf(buffer, sizeof buffer, "%02u%02u%02u", unsigned(hour_), unsigned(minute_),
                         unsigned(second_));
  if (millisecond_ != 0 || zoneOffset_ != 0)
    std::snprintf(buffer + length, sizeof buffer - size_t(length), ".%03u", unsigned(millisecond_));
  full.Append(buffer);
  if (zoneOffset_ != 0) {
    std::snprintf(buffer, sizeof buffer, "[%d", int(zoneOffset_));
    full.Append(buffer);
    if (!zoneName_.IsEmpty()) {
      full.AppendChar(':');
      full.Append(zoneName_);
    }
    full.AppendChar(']');
  }
  text.SetText(full.GetText(), size_t(full.GetLength()));
  return true;
}

int OLADateTime::StandardOffsetHours() {
  // One day after the epoch, so that the local reading stays after 1970 in every zone.
  const time_t utc = 86400;
  std::tm brokenDown{};
  if (!UtcBrokenDown(utc, brokenDown)) return 0;
  const time_t asLocal = std::mktime(&brokenDown);
  if (asLocal == time_t(-1)) return 0;
  return -int((asLocal - utc) / 3600);
}

bool OLADateTime::SetLocalZone() {
  const int standard = StandardOffsetHours();
  bool daylight = false;
  const time_t moment = ToTimeT();
  std::tm local{};
  if (moment != time_t(-1) && LocalBrokenDown(moment, local)) daylight = local.tm_isdst > 0;

  for (const ZoneNames& zone : kNamedZones) {
    if (zone.offset != standard) continue;
    if (daylight)
      SetZone(zone.daylight, int16_t(standard + 1));
    else
      SetZone(zone.standard, int16_t(standard));
    return true;
  }
  // Other zones move one hour west in daylight time; this is the form the gateway has always
  // received from us and it is kept.
  SetZone("---", int16_t(daylight ? standard - 1 : standard));
  return false;
}

bool OLATime::FormatXML(OLAString& text) const {
  if (!IsTimeValid()) return false;
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%02u%02u%02u", unsigned(hour_), unsigned(minute_),
                unsigned(second_));
  OLAString time(buffer);
  if (millisecond_ != 0) {
    std::snprintf(buffer, sizeof buffer, ".%u", unsigned(millisecond_));
    time.Append(buffer);
  }
  if (zoneOffset_ != 0) {
    std::snprintf(buffer, sizeof buffer, "[%d:", int(zoneOffset_));
    time.Append(buffer);
    time.Append(zoneName_);
    time.AppendChar(']');
  } else if (!zoneName_.IsEmpty()) {
    time.AppendChar(':');
    time.Append(zoneName_);
  }
  text.SetText(time.GetText(), size_t(time.GetLength()));
  return true;
}
