// Decimal numbers as fixtures write them, exact in 64-bit integers.
#include "refhost/FixtureDecimals.h"

#include <cstdio>

namespace parcelon::refhost {

bool ParseDecimal(std::string_view text, int maxDecimals, bool& negative, int64_t& magnitude,
                  int& decimals) {
  negative = !text.empty() && text[0] == '-';
  if (negative) text.remove_prefix(1);
  const size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  const std::string_view fraction =
      point == std::string_view::npos ? std::string_view() : text.substr(point + 1);
  if (whole.empty() || (point != std::string_view::npos && fraction.empty()) ||
      fraction.size() > size_t(maxDecimals) || whole.size() + fraction.size() > 17)
    return false;
  magnitude = 0;
  for (std::string_view part : {whole, fraction})
    for (char c : part) {
      if (c < '0' || c > '9') return false;
      magnitude = magnitude * 10 + (c - '0');
    }
  decimals = int(fraction.size());
  return true;
}

bool WithinDigits(int64_t number, int digits) {
  int64_t limit = 1;
  for (int i = 0; i < digits; ++i) limit *= 10;
  return number > -limit && number < limit;
}

Text CentsText(int64_t cents) {
  const int64_t magnitude = cents < 0 ? -cents : cents;
  char text[32];
  std::snprintf(text, sizeof text, "%s%lld.%02lld", cents < 0 ? "-" : "",
                static_cast<long long>(magnitude / 100), static_cast<long long>(magnitude % 100));
  return AsciiText(text);
}

}  // namespace parcelon::refhost
