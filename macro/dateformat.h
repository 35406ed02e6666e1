#pragma once

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <optional>

// Calendar fields of an automation date (days since 30 December 1899; the
// fraction is the time of day, also for negative days). valid is false for
// values that do not map onto the years 100 to 9999; the fields are then -1.
struct AutomationDateFields {
    bool valid = false;
    int year = -1;
    int month = -1;
    int day = -1;
    int hour = -1;
    int minute = -1;
    int second = -1;
};

AutomationDateFields splitAutomationDate(double date);

// The automation date of a local calendar time (to the second).
double toAutomationDate(const QDateTime &local);

// Which part of a date FormatDate writes.
enum class DatePart : int {
    DateTimeSeconds = 1,
    DateOnly = 2,
    DateTimeMinutes = 3,
};

// The date in one of the vault's date styles. No text for the date value 0.
// part is 1, 2 or 3 (DatePart); any other number writes each style as it
// stands, without cutting or adding a time.
std::optional<QString> FormatDate(double date, std::int32_t style, int part);

// <Today> of a macro: the local date of now in the vault's style, date only,
// with "/" turned into "_" so that it can stand in a file name.
QString todayText(const QDateTime &now, std::int32_t style);
