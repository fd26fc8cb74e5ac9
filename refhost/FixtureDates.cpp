// Dates and times as fixtures write them, on the proleptic Gregorian calendar.
#include "refhost/FixtureDates.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <string>

namespace parcelon::refhost {

namespace {

// Days from 1970-01-01 to a day of the proleptic Gregorian calendar.
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

bool IsLeap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

const int64_t kOleEpochDays = DaysFromCivil(1899, 12, 30);

}  // namespace

std::optional<DateTime> ParseDateTime(std::string_view text, bool requireTime) {
  DateTime t{};
  char tail = 0;
  const std::string copy(text);
  int consumed = 0;
  if (std::sscanf(copy.c_str(), "%4d-%2d-%2d%n", &t.year, &t.month, &t.day, &consumed) != 3 ||
      consumed != 10)
    return std::nullopt;
  if (copy.size() > 10) {
    int more = 0;
    if (std::sscanf(copy.c_str() + 10, "T%2d:%2d:%2d%n%c", &t.hour, &t.minute, &t.second, &more,
                    &tail) < 3 ||
        more != 9)
      return std::nullopt;
    const std::string rest = copy.substr(19);
    if (requireTime ? rest != "Z" : !rest.empty()) return std::nullopt;
  } else if (requireTime) {
    return std::nullopt;
  }
  static constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (t.month < 1 || t.month > 12 || t.day < 1 ||
      t.day > kDays[size_t(t.month - 1)] + (t.month == 2 && IsLeap(t.year)) || t.hour > 23 ||
      t.minute > 59 || t.second > 59 || t.hour < 0 || t.minute < 0 || t.second < 0)
    return std::nullopt;
  return t;
}

int64_t SecondsOf(const DateTime& t) {
  return DaysFromCivil(t.year, unsigned(t.month), unsigned(t.day)) * 86400 + t.hour * 3600 +
         t.minute * 60 + t.second;
}

double OleDateOf(const DateTime& t) {
  return double(DaysFromCivil(t.year, unsigned(t.month), unsigned(t.day)) - kOleEpochDays) +
         (t.hour * 3600 + t.minute * 60 + t.second) / 86400.0;
}

}  // namespace parcelon::refhost
