// Dates and times as fixtures write them: "2009-03-07", "2009-03-07T14:30:00", the latter with
// "Z" for a UTC time, and their OLE date and seconds-since-1970 values.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace parcelon::refhost {

// A date and time read from "YYYY-MM-DD", "YYYY-MM-DDTHH:MM:SS" or "YYYY-MM-DDTHH:MM:SSZ".
struct DateTime {
  int year, month, day, hour = 0, minute = 0, second = 0;
};

// The date and time of `text`; with `requireTime` only "YYYY-MM-DDTHH:MM:SSZ". None for anything
// else or a day that does not exist.
std::optional<DateTime> ParseDateTime(std::string_view text, bool requireTime);

// Seconds from 1970-01-01T00:00:00 to `t`.
int64_t SecondsOf(const DateTime& t);

// The OLE date of `t`: days since 1899-12-30 with the time as the fraction.
double OleDateOf(const DateTime& t);

// OLE dates: days since 1899-12-30; the fixture takes 1900-01-01 to 9999-12-31.
inline constexpr double kMaxOleDate = 2958465.999988426;

}  // namespace parcelon::refhost
