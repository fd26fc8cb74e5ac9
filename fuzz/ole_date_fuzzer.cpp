// OLE dates and their text forms. SetFromOleDate is checked against the moment the OLE date
// names (whole days towards zero from 30 December 1899, the fraction the time of day whatever the
// sign), to the nearest second, except where the half second added away from zero deliberately
// moves a negative value to another day; the text forms against their documented printf formats; the day
// of the year against the proleptic Gregorian calendar.
#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

#include "clienttools/OLADateTime.h"
#include "FuzzSupport.h"

using parcelon::fuzz::Finding;

namespace {

// Days from 1 January 1970 to the given date of the proleptic Gregorian calendar.
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = unsigned(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + int64_t(doe) - 719468;
}

bool Leap(unsigned year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

std::string Fields(const OLADateTimeBase& value) {
  char text[96];
  std::snprintf(text, sizeof text, "%u-%u-%u %u:%u:%u.%u [%d]", value.GetYear(), value.GetMonth(), value.GetDay(),
                value.GetHour(), value.GetMinute(), value.GetSecond(), value.GetMillisecond(), value.GetZoneOffset());
  return text;
}

void CheckOleDate(double date) {
  OLADateTime value;
  const bool inRange = date >= OLADateTime::kMinOleDate && date <= OLADateTime::kMaxOleDate;
  if (value.SetFromOleDate(date) != inRange) Finding("SetFromOleDate(" + std::to_string(date) + ") answers wrongly");
  if (!inRange) return;
  if (!value.IsValid()) Finding("SetFromOleDate(" + std::to_string(date) + ") gives the invalid " + Fields(value));
  // The moment in seconds from the OLE epoch, as named and as converted.
  const double whole = std::trunc(date);
  const double secondOfDay = std::fabs(date - whole) * 86400.0;
  const long double named = (long double)whole * 86400.0L + secondOfDay;
  const int64_t days = DaysFromCivil(value.GetYear(), value.GetMonth(), value.GetDay()) - DaysFromCivil(1899, 12, 30);
  const long double converted =
      (long double)days * 86400.0L + value.GetHour() * 3600 + value.GetMinute() * 60 + value.GetSecond();
  const bool nearest = std::fabs((double)(converted - named)) <= 0.5 + 1e-4;
  // The half second is added away from zero before the whole days are taken, so a negative value
  // within half a second of its day's end gives the midnight that starts the day before its own
  // (either way within a hair of the half second, where the sum in double precision decides).
  const bool dayBefore = converted == ((long double)whole - 1) * 86400.0L;
  const bool endOfNegativeDay = date < 0 && secondOfDay > 86399.5 + 1e-4;
  const bool nearTie = date < 0 && std::fabs(secondOfDay - 86399.5) <= 1e-4;
  if (endOfNegativeDay ? !dayBefore : !(nearest || (nearTie && dayBefore)))
    Finding("SetFromOleDate(" + std::to_string(date) + ") gives " + Fields(value) + ", " +
            std::to_string((double)(converted - named)) + " s from the moment it names");
}

// The documented text forms of a valid value; an invalid one leaves the text alone.
void CheckTextForms(const OLADateTime& value, const OLATime& time) {
  const char* kUntouched = "untouched";
  OLAString text(kUntouched);
  char expected[160];
  const unsigned y = value.GetYear(), mo = value.GetMonth(), d = value.GetDay(), h = value.GetHour(),
                 mi = value.GetMinute(), s = value.GetSecond(), ms = value.GetMillisecond();
  const int offset = value.GetZoneOffset();
  const std::string zone = value.GetZoneName().GetText();
  if (!value.IsValid()) {
    if (value.FormatXML(text) || value.FormatFull(text) || !text.Equals(kUntouched))
      Finding("an invalid value is formatted: " + Fields(value));
  } else {
    if (!value.FormatXML(text)) Finding("a valid value is not formatted: " + Fields(value));
    int n = std::snprintf(expected, sizeof expected, "%04u%02u%02u", y, mo, d);
    if (h || mi || s || offset) std::snprintf(expected + n, sizeof expected - n, "T%02u%02u%02u%+03d00", h, mi, s, offset);
    if (!text.Equals(expected)) Finding(std::string("FormatXML gives ") + text.GetText() + ", expected " + expected);

    if (!value.FormatFull(text)) Finding("a valid value has no long form: " + Fields(value));
    std::string full(expected, size_t(std::snprintf(expected, sizeof expected, "%04u%02u%02u", y, mo, d)));
    if (h || mi || s || ms || offset) {
      std::snprintf(expected, sizeof expected, "%02u%02u%02u", h, mi, s);
      full += expected;
      if (ms || offset) {
        std::snprintf(expected, sizeof expected, ".%03u", ms);
        full += expected;
      }
      if (offset) {
        if (zone.empty()) std::snprintf(expected, sizeof expected, "[%d]", offset);
        else std::snprintf(expected, sizeof expected, "[%d:%s]", offset, zone.c_str());
        full += expected;
      }
    }
    if (!text.Equals(full.c_str())) Finding(std::string("FormatFull gives ") + text.GetText() + ", expected " + full);
  }

  OLAString timeText(kUntouched);
  const bool timeValid = time.IsTimeValid();
  if (time.FormatXML(timeText) != timeValid) Finding("OLATime::FormatXML answers wrongly for " + Fields(time));
  if (!timeValid) {
    if (!timeText.Equals(kUntouched)) Finding("an invalid time is formatted");
    return;
  }
  const std::string timeZone = time.GetZoneName().GetText();
  std::string expectedTime;
  std::snprintf(expected, sizeof expected, "%02u%02u%02u", time.GetHour(), time.GetMinute(), time.GetSecond());
  expectedTime = expected;
  if (time.GetMillisecond()) expectedTime += "." + std::to_string(time.GetMillisecond());
  if (time.GetZoneOffset()) expectedTime += "[" + std::to_string(time.GetZoneOffset()) + ":" + timeZone + "]";
  else if (!timeZone.empty()) expectedTime += ":" + timeZone;
  if (!timeText.Equals(expectedTime.c_str()))
    Finding(std::string("OLATime::FormatXML gives ") + timeText.GetText() + ", expected " + expectedTime);
}

void CheckDayOfYear(unsigned dayOfYear, uint16_t year) {
  OLADateTime value(2001, 2, 3, 4, 5, 6, 7);
  const bool valid = dayOfYear >= 1 && dayOfYear <= (Leap(year) ? 366u : 365u);
  if (value.SetFromDayOfYear(dayOfYear, year) != valid) Finding("SetFromDayOfYear answers wrongly");
  if (!valid) {
    if (value.GetYear() != 2001 || value.GetMonth() != 2 || value.GetDay() != 3) Finding("a refused day changed the date");
    return;
  }
  const int64_t days = DaysFromCivil(value.GetYear(), value.GetMonth(), value.GetDay()) - DaysFromCivil(year, 1, 1);
  if (value.GetYear() != year || days != int64_t(dayOfYear) - 1 || !value.IsDateValid())
    Finding("day " + std::to_string(dayOfYear) + " of " + std::to_string(year) + " gives " + Fields(value));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  switch (in.ConsumeIntegralInRange<int>(0, 2)) {
    case 0:
      CheckOleDate(in.ConsumeFloatingPoint<double>());
      CheckOleDate(in.ConsumeFloatingPointInRange<double>(-700000.0, 3000000.0));
      CheckOleDate(in.ConsumeIntegralInRange<int32_t>(-657440, 2958470) + in.ConsumeProbability<double>());
      break;
    case 1: {
      auto field = [&](uint16_t usual) {
        return in.ConsumeIntegralInRange<int>(0, 9) == 0 ? in.ConsumeIntegral<uint16_t>()
                                                          : in.ConsumeIntegralInRange<uint16_t>(0, usual);
      };
      const uint16_t y = field(9999), mo = field(13), d = field(32), h = field(24), mi = field(60), s = field(60),
                     ms = field(1000);
      OLADateTime value(y, mo, d, h, mi, s, ms);
      OLATime time(y, mo, d, h, mi, s, ms);
      const std::string name = in.ConsumeRandomLengthString(12);
      const bool named = in.ConsumeBool();
      const auto offset = in.ConsumeIntegralInRange<int16_t>(-16, 16);
      value.SetZone(named ? name.c_str() : nullptr, offset);
      time.SetZone(in.ConsumeBool() ? name.c_str() : nullptr, in.ConsumeBool() ? offset : 0);
      CheckTextForms(value, time);
      value.ToTimeT();
      OLADateTime local(value);
      local.SetLocalZone();
      break;
    }
    default:
      CheckDayOfYear(in.ConsumeIntegralInRange<unsigned>(0, 400), in.ConsumeIntegral<uint16_t>());
      break;
  }
  return 0;
}
