#include "macro/dateformat.h"

#include <array>
#include <cmath>

namespace {

constexpr std::array<const char *, 12> kFullMonths = {
    "January", "February", "Mars", "April", "May", "June",
    "July", "August", "September", "October", "November", "December"};
constexpr std::array<const char *, 12> kShortMonths = {
    "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

const QDate &automationEpoch()
{
    static const QDate epoch(1899, 12, 30);
    return epoch;
}

QString monthName(const std::array<const char *, 12> &names, int month)
{
    if (month < 1 || month > 12)
        return {};
    return QString::fromLatin1(names[static_cast<std::size_t>(month - 1)]);
}

// Layout of one style: the full text, the text for part 2, and whether the
// style has no time of its own (then parts 1 and 3 append one).
struct StyleText {
    QString full;
    QString dateOnly;
    bool dateOnlyStyle = true;
};

StyleText styleText(std::int32_t style, const AutomationDateFields &f)
{
    const int yyyy = f.year;
    const int yy = f.valid ? f.year % 100 : -1;
    const int mm = f.month;
    const int dd = f.day;
    const int hh = f.hour;
    const int h12 = (f.valid && hh > 12) ? hh - 12 : hh;
    const int mi = f.minute;
    const int ss = f.second;
    const char *ap = (f.valid && hh > 12) ? "PM" : "AM";
    const QByteArray mon = monthName(kShortMonths, f.month).toLatin1();
    const QByteArray month = monthName(kFullMonths, f.month).toLatin1();

    auto same = [](const QString &text) { return StyleText{text, text, true}; };

    switch (style) {
    case 0:
    case 100:
        return {QString::asprintf("%s %02d %04d %02d:%02d %s", mon.constData(), dd, yyyy, h12, mi, ap),
                QString::asprintf("%s %02d %04d", mon.constData(), dd, yyyy), false};
    case 1: return same(QString::asprintf("%02d/%02d/%02d", mm, dd, yy));
    case 2: return same(QString::asprintf("%02d.%02d.%02d", yy, mm, dd));
    case 3: return same(QString::asprintf("%02d/%02d/%02d", dd, mm, yy));
    case 4: return same(QString::asprintf("%02d.%02d.%02d", dd, mm, yy));
    case 5: return same(QString::asprintf("%02d-%02d-%02d", dd, mm, yy));
    case 6: return same(QString::asprintf("%02d %s %02d", dd, mon.constData(), yy));
    case 7: return same(QString::asprintf("%s %02d, %02d", mon.constData(), dd, yy));
    case 10: return same(QString::asprintf("%02d-%02d-%02d", mm, dd, yy));
    case 11: return same(QString::asprintf("%02d/%02d/%02d", yy, mm, dd));
    case 12: return same(QString::asprintf("%02d%02d%02d", yy, mm, dd));
    case 101: return same(QString::asprintf("%02d/%02d/%04d", mm, dd, yyyy));
    case 102: return same(QString::asprintf("%04d.%02d.%02d", yyyy, mm, dd));
    case 103: return same(QString::asprintf("%02d/%02d/%04d", dd, mm, yyyy));
    case 104: return same(QString::asprintf("%02d.%02d.%04d", dd, mm, yyyy));
    case 105: return same(QString::asprintf("%02d-%02d-%04d", dd, mm, yyyy));
    case 106: return same(QString::asprintf("%02d %s %04d", dd, mon.constData(), yyyy));
    case 107: return same(QString::asprintf("%s %02d, %04d", mon.constData(), dd, yyyy));
    case 109:
        return {QString::asprintf("%s %02d %04d %02d:%02d:%02d:000 %s", mon.constData(), dd, yyyy, h12, mi, ss, ap),
                QString::asprintf("%s %02d %04d", mon.constData(), dd, yyyy), false};
    case 110: return same(QString::asprintf("%02d-%02d-%04d", mm, dd, yyyy));
    case 111: return same(QString::asprintf("%04d/%02d/%02d", yyyy, mm, dd));
    case 112: return same(QString::asprintf("%04d%02d%02d", yyyy, mm, dd));
    case 113:
        return {QString::asprintf("%02d %s %04d %02d:%02d:%02d:000", dd, month.constData(), yyyy, hh, mi, ss),
                QString::asprintf("%02d %s %04d", dd, month.constData(), yyyy), false};
    case 120: return same(QString::asprintf("%04d-%02d-%02d", yyyy, mm, dd));
    case 121:
        return {QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d.000", yyyy, mm, dd, hh, mi, ss),
                QString::asprintf("%04d-%02d-%02d", yyyy, mm, dd), false};
    default: {
        // Unknown styles write the long layout whatever part is asked for.
        const QString text =
            QString::asprintf("%02d %s %04d %02d:%02d:%02d:000", dd, month.constData(), yyyy, hh, mi, ss);
        return {text, text, false};
    }
    }
}

} // namespace

AutomationDateFields splitAutomationDate(double date)
{
    AutomationDateFields f;
    // Years 100 to 9999, as the automation date range allows.
    if (!std::isfinite(date) || date < -657434.0 || date >= 2958466.0)
        return f;
    const double whole = std::trunc(date);
    const double fraction = std::fabs(date - whole);
    auto days = static_cast<qint64>(whole);
    auto seconds = static_cast<qint64>(std::llround(fraction * 86400.0));
    if (seconds >= 86400) {
        // Rounded up to the next midnight: the next calendar day (the time
        // counts forward from the day's start also before the epoch).
        seconds -= 86400;
        days += 1;
    }
    const QDate d = automationEpoch().addDays(days);
    f.valid = d.isValid();
    if (!f.valid)
        return AutomationDateFields{};
    f.year = d.year();
    f.month = d.month();
    f.day = d.day();
    f.hour = static_cast<int>(seconds / 3600);
    f.minute = static_cast<int>(seconds / 60 % 60);
    f.second = static_cast<int>(seconds % 60);
    return f;
}

double toAutomationDate(const QDateTime &local)
{
    const qint64 days = automationEpoch().daysTo(local.date());
    const QTime t = local.time();
    const double fraction = (t.hour() * 3600 + t.minute() * 60 + t.second()) / 86400.0;
    // Before the epoch the fraction still counts forward from the day's start.
    return days >= 0 ? static_cast<double>(days) + fraction : static_cast<double>(days) - fraction;
}

std::optional<QString> FormatDate(double date, std::int32_t style, int part)
{
    if (date == 0.0)
        return std::nullopt;
    const AutomationDateFields f = splitAutomationDate(date);
    const StyleText s = styleText(style, f);
    switch (part) {
    case static_cast<int>(DatePart::DateOnly):
        return s.dateOnly;
    case static_cast<int>(DatePart::DateTimeSeconds):
        if (s.dateOnlyStyle)
            return s.full + QString::asprintf(" %02d:%02d:%02d", f.hour, f.minute, f.second);
        return s.full;
    case static_cast<int>(DatePart::DateTimeMinutes):
        if (s.dateOnlyStyle)
            return s.full + QString::asprintf(" %02d:%02d", f.hour, f.minute);
        return s.full;
    default:
        return s.full;
    }
}

QString todayText(const QDateTime &now, std::int32_t style)
{
    const std::optional<QString> text =
        FormatDate(toAutomationDate(now), style, static_cast<int>(DatePart::DateOnly));
    return text ? QString(*text).replace(QLatin1Char('/'), QLatin1Char('_')) : QString();
}
