#pragma once

#include <QString>

namespace cadsim {

// Number to text as VBA's Format and FormatNumber write it (US English: "." decimals, ","
// thousands). Rounding is half away from zero on the number's 15 significant digits.

// Format(value, pattern) for numeric patterns: "0", "0.00", "#,##0.00", "0%", "0.000E+00",
// with literal text before and after; a second section ("...;...") is used for negatives.
QString formatNumberPattern(double value, const QString &pattern);

// FormatNumber / FormatCurrency / FormatPercent: decimals, leading zero, parentheses for
// negatives, thousands groups. Currency is written with "$" and negatives in parentheses
// unless parens is false.
enum class NumberStyle { Number, Currency, Percent };
QString formatNumberStyle(double value, NumberStyle style, int decimals, bool leadingDigit, bool parens, bool group);

// Str(): a blank before a number that is not negative, no zero before the decimal point.
QString strOfNumber(const QString &plain);

} // namespace cadsim
