// Decimal numbers as fixtures write them ("-1234.50", "2.5") and the text of an amount in cents.
#pragma once

#include <cstdint>
#include <string_view>

#include "refhost/Text.h"

namespace parcelon::refhost {

// A decimal "-123.45": sign, digits, and at most `maxDecimals` digits after the point. Gives
// the scaled magnitude and the number of decimals; false for anything else or for more than
// 17 digits in all.
bool ParseDecimal(std::string_view text, int maxDecimals, bool& negative, int64_t& magnitude,
                  int& decimals);

// Has `number` at most `digits` digits?
bool WithinDigits(int64_t number, int digits);

// "-3.00": the amount of `cents` with two decimals and a point.
Text CentsText(int64_t cents);

}  // namespace parcelon::refhost
