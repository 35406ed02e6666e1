#pragma once

#include <QString>

#include <cstdint>

// A decimal integer read as the C runtime's string-to-long conversion reads
// it: leading blanks skipped, an optional sign, digits up to the first
// non-digit, 0 when there are none; clamped to the 32-bit range.
std::int32_t leadingInteger(const QString &text);
