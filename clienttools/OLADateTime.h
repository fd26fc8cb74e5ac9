// OLADateTime, OLATime: calendar dates, times of day and zone offsets, from OLE Automation dates
// to the compact date-time text of the request documents.
#pragma once

#include <cstdint>
#include <ctime>

#include "clienttools/OLAString.h"

// A date, a time of day and a whole-hour offset from UTC, as separate small fields.
class OLADateTimeBase {
 public:
  // All fields zero, no zone name.
  OLADateTimeBase() = default;
  // The seven numbers; zone offset 0, no zone name.
  OLADateTimeBase(uint16_t year, uint16_t month, uint16_t day, uint16_t hour, uint16_t minute,
                  uint16_t second, uint16_t millisecond);
  OLADateTimeBase(const OLADateTimeBase& other) = default;
  OLADateTimeBase& operator=(const OLADateTimeBase& other) = default;

  // The offsets that real zones use: from Baker Island's -12 to the Line Islands' +14.
  static constexpr int16_t kMinZoneOffset = -12;
  static constexpr int16_t kMaxZoneOffset = 14;

  // Month 1 to 12 and day 1 to the month's length (29 February only in leap years).
  bool IsDateValid() const;
  // Hour 0-23, minute 0-59, second 0-59, millisecond 0-999, zone offset kMinZoneOffset to
  // kMaxZoneOffset.
  bool IsTimeValid() const;
  bool IsValid() const { return IsDateValid() && IsTimeValid(); }

  // Stores the zone name (null for none) and the offset in whole hours from UTC.
  void SetZone(const char* name, int16_t offset);

  // Year, month and day from a day of the year, 1 to 365 (366 in leap years). False, and nothing
  // changed, for a day number outside that range.
  bool SetFromDayOfYear(unsigned dayOfYear, uint16_t year);

  // The value's moment as seconds since 1970, reading the fields as the machine's local time
  // (the C library decides whether daylight time applies). (time_t)-1 for an invalid value or one
  // the C library cannot represent.
  time_t ToTimeT() const;

  uint16_t GetYear() const { return year_; }
  uint16_t GetMonth() const { return month_; }
  uint16_t GetDay() const { return day_; }
  uint16_t GetHour() const { return hour_; }
  uint16_t GetMinute() const { return minute_; }
  uint16_t GetSecond() const { return second_; }
  uint16_t GetMillisecond() const { return millisecond_; }
  int16_t GetZoneOffset() const { return zoneOffset_; }
  const OLAString& GetZoneName() const { return zoneName_; }

  // Gregorian rule: every fourth year, but of the centuries only those divisible by 400.
  static bool IsLeapYear(unsigned year);
  // 28 to 31; 0 for a month outside 1 to 12.
  static unsigned DaysInMonth(unsigned month, unsigned year);

 protected:
  uint16_t year_ = 0;
  uint16_t month_ = 0;
  uint16_t day_ = 0;
  uint16_t hour_ = 0;
  uint16_t minute_ = 0;
  uint16_t second_ = 0;
  uint16_t millisecond_ = 0;
  int16_t zoneOffset_ = 0;
  OLAString zoneName_;
  uint64_t spare_ = 0;
};

// A date and time: the value behind every date element of the request documents.
class OLADateTime : public OLADateTimeBase {
 public:
  using OLADateTimeBase::OLADateTimeBase;

  // OLE Automation date range: 1 January 100 to 31 December 9999.
  static constexpr double kMinOleDate = -657434.0;
  static constexpr double kMaxOleDate = 2958465.0;

  // Fills date and time from an OLE Automation date (days since 30 December 1899), rounded to
  // the nearest second; milliseconds 0, zone unchanged. False, and nothing changed, for a value
  // outside kMinOleDate..kMaxOleDate, NaN or an infinity.
  bool SetFromOleDate(double oleDate);

  // Replaces `text` with the request form: "%04u%02u%02u", then, unless hour, minute, second and
  // zone offset are all 0, "T%02u%02u%02u%+03d00" (20090307T140211-0800). False, and `text` left
  // alone, for an invalid value.
  bool FormatXML(OLAString& text) const;

  // Replaces `text` with the long form: "%04u%02u%02u", then, unless hour, minute, second,
  // millisecond and offset are all 0, "%02u%02u%02u", ".%03u" when the milliseconds or the offset
  // are not 0, and "[%d]" or "[%d:%s]" (with the zone name) when the offset is not 0:
  // 20090307140211.000[-8:PST]. False, and `text` left alone, for an invalid value.
  bool FormatFull(OLAString& text) const;

  // Gives the value the machine's time zone. The standard offset is that of 2 January 1970; the
  // daylight flag is that of the value's own moment. The North American zones get their names
  // ("PST"/"PDT" -8/-7, "MST"/"MDT" -7/-6, "CST"/"CDT" -6/-5, "EST"/"EDT" -5/-4) and the result
  // true. Every other zone gets "---" with the standard offset, or in daylight time the standard
  // offset minus one, and the result false.
  bool SetLocalZone();

  // The machine's standard offset from UTC in whole hours (west of Greenwich negative).
  static int StandardOffsetHours();
};

// A time of day with its own time-only text form.
class OLATime : public OLADateTimeBase {
 public:
  using OLADateTimeBase::OLADateTimeBase;

  // Replaces `text` with "%02u%02u%02u" (hour, minute, second), then ".%u" with the milliseconds
  // when they are not 0, then "[%d:%s]" with offset and zone name when the offset is not 0, or
  // ":%s" with the name alone when only a name is set. False, and `text` left alone, for an
  // invalid time.
  bool FormatXML(OLAString& text) const;
};
