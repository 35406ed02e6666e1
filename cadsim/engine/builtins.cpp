#include "cadsim/engine/builtins.h"

#include "cadsim/engine/fso.h"
#include "cadsim/engine/interpreter.h"
#include "cadsim/engine/likematcher.h"
#include "cadsim/engine/scriptobject.h"

#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QHash>

#include <cmath>

namespace cadsim {

namespace {

using Args = std::vector<ScriptValue>;

bool given(const Args &a, std::size_t i)
{
    return i < a.size() && !a[i].isMissing();
}

QString str(const Args &a, std::size_t i)
{
    if (!given(a, i))
        throw ScriptError(ErrNo::ArgumentNotOptional);
    if (a[i].isNull())
        throw ScriptError(94);
    return a[i].toString();
}

std::int32_t lng(const Args &a, std::size_t i)
{
    if (!given(a, i))
        throw ScriptError(ErrNo::ArgumentNotOptional);
    return a[i].toLong();
}

std::int32_t lngOr(const Args &a, std::size_t i, std::int32_t fallback)
{
    return given(a, i) ? a[i].toLong() : fallback;
}

Qt::CaseSensitivity compareMode(Interpreter &in, const Args &a, std::size_t i)
{
    const int mode = given(a, i) ? a[i].toLong() : (in.compareText() ? 1 : 0);
    if (mode == -1)
        return in.compareText() ? Qt::CaseInsensitive : Qt::CaseSensitive;
    return mode == 0 ? Qt::CaseSensitive : Qt::CaseInsensitive;
}

ScriptValue s(const QString &v)
{
    return ScriptValue::fromString(v);
}

// ---- strings ------------------------------------------------------------------------------

ScriptValue fnLen(Interpreter &, Args &a)
{
    if (a[0].isNull())
        return a[0];
    return ScriptValue::fromLong(static_cast<std::int32_t>(a[0].toString().size()));
}

ScriptValue fnLeft(Interpreter &, Args &a)
{
    const std::int32_t n = lng(a, 1);
    if (n < 0)
        throw ScriptError(ErrNo::InvalidCall);
    return s(str(a, 0).left(n));
}

ScriptValue fnRight(Interpreter &, Args &a)
{
    const std::int32_t n = lng(a, 1);
    if (n < 0)
        throw ScriptError(ErrNo::InvalidCall);
    return s(str(a, 0).right(n));
}

ScriptValue fnMid(Interpreter &, Args &a)
{
    const QString t = str(a, 0);
    const std::int32_t start = lng(a, 1);
    if (start < 1)
        throw ScriptError(ErrNo::InvalidCall);
    if (given(a, 2)) {
        const std::int32_t n = lng(a, 2);
        if (n < 0)
            throw ScriptError(ErrNo::InvalidCall);
        return s(t.mid(start - 1, n));
    }
    return s(t.mid(start - 1));
}

ScriptValue fnInStr(Interpreter &in, Args &a)
{
    // InStr([start,] text, find [, compare])
    std::size_t first = 0;
    std::int32_t start = 1;
    if (a.size() >= 3) {
        start = lng(a, 0);
        first = 1;
    }
    if (start < 1)
        throw ScriptError(ErrNo::InvalidCall);
    if (a[first].isNull() || a[first + 1].isNull())
        return ScriptValue::null();
    const QString text = str(a, first);
    const QString find = str(a, first + 1);
    if (start > text.size() + 1 || (start > text.size() && !find.isEmpty()))
        return ScriptValue::fromLong(0);
    if (find.isEmpty())
        return ScriptValue::fromLong(start);
    const qsizetype pos = text.indexOf(find, start - 1, compareMode(in, a, first + 2));
    return ScriptValue::fromLong(static_cast<std::int32_t>(pos + 1));
}

ScriptValue fnInStrRev(Interpreter &in, Args &a)
{
    const QString text = str(a, 0);
    const QString find = str(a, 1);
    const std::int32_t start = lngOr(a, 2, -1);
    if (start == 0 || start < -1)
        throw ScriptError(ErrNo::InvalidCall);
    if (find.isEmpty())
        return ScriptValue::fromLong(start == -1 ? static_cast<std::int32_t>(text.size()) : start);
    if (start > text.size())
        return ScriptValue::fromLong(0);
    const qsizetype from = start == -1 ? text.size() - find.size() : start - find.size();
    if (from < 0)
        return ScriptValue::fromLong(0);
    const qsizetype pos = text.lastIndexOf(find, from, compareMode(in, a, 3));
    return ScriptValue::fromLong(static_cast<std::int32_t>(pos + 1));
}

ScriptValue fnReplace(Interpreter &in, Args &a)
{
    const QString text = str(a, 0);
    const QString find = str(a, 1);
    const QString with = str(a, 2);
    const std::int32_t start = lngOr(a, 3, 1);
    std::int32_t count = lngOr(a, 4, -1);
    if (start < 1 || count < -1)
        throw ScriptError(ErrNo::InvalidCall);
    // The result starts at start, as VBA's Replace does.
    QString rest = text.mid(start - 1);
    if (find.isEmpty() || count == 0)
        return s(rest);
    const Qt::CaseSensitivity cs = compareMode(in, a, 5);
    QString out;
    qsizetype pos = 0;
    while (count != 0) {
        const qsizetype hit = rest.indexOf(find, pos, cs);
        if (hit < 0)
            break;
        out += rest.mid(pos, hit - pos) + with;
        if (out.size() > kMaxStringLength)
            throw ScriptError(14);
        pos = hit + find.size();
        if (count > 0)
            --count;
    }
    out += rest.mid(pos);
    return s(out);
}

// Character by character: the text keeps its length ("ß" stays).
QString mapCase(const QString &t, bool upper)
{
    QString out = t;
    for (QChar &c : out)
        c = upper ? c.toUpper() : c.toLower();
    return out;
}

ScriptValue fnLCase(Interpreter &, Args &a) { return a[0].isNull() ? a[0] : s(mapCase(a[0].toString(), false)); }
ScriptValue fnUCase(Interpreter &, Args &a) { return a[0].isNull() ? a[0] : s(mapCase(a[0].toString(), true)); }

QString trimChars(const QString &t, bool left, bool right)
{
    qsizetype b = 0, e = t.size();
    if (left)
        while (b < e && t.at(b) == QLatin1Char(' '))
            ++b;
    if (right)
        while (e > b && t.at(e - 1) == QLatin1Char(' '))
            --e;
    return t.mid(b, e - b);
}

ScriptValue fnTrim(Interpreter &, Args &a) { return a[0].isNull() ? a[0] : s(trimChars(a[0].toString(), true, true)); }
ScriptValue fnLTrim(Interpreter &, Args &a) { return a[0].isNull() ? a[0] : s(trimChars(a[0].toString(), true, false)); }
ScriptValue fnRTrim(Interpreter &, Args &a) { return a[0].isNull() ? a[0] : s(trimChars(a[0].toString(), false, true)); }

ScriptValue fnSpace(Interpreter &, Args &a)
{
    const std::int32_t n = lng(a, 0);
    if (n < 0)
        throw ScriptError(ErrNo::InvalidCall);
    if (n > kMaxStringLength)
        throw ScriptError(14);
    return s(QString(n, QLatin1Char(' ')));
}

ScriptValue fnString(Interpreter &, Args &a)
{
    const std::int32_t n = lng(a, 0);
    if (n < 0)
        throw ScriptError(ErrNo::InvalidCall);
    if (n > kMaxStringLength)
        throw ScriptError(14);
    const QChar c = a[1].isString() ? (a[1].toString().isEmpty() ? throw ScriptError(ErrNo::InvalidCall), QChar() : a[1].toString().at(0))
                                    : QChar(static_cast<char16_t>(a[1].toLong() & 0xFF));
    return s(QString(n, c));
}

ScriptValue fnStrComp(Interpreter &in, Args &a)
{
    if (a[0].isNull() || a[1].isNull())
        return ScriptValue::null();
    const int c = QString::compare(a[0].toString(), a[1].toString(), compareMode(in, a, 2));
    return ScriptValue::fromInteger(static_cast<std::int16_t>(c < 0 ? -1 : (c > 0 ? 1 : 0)));
}

ScriptValue fnStrReverse(Interpreter &, Args &a)
{
    QString t = str(a, 0);
    std::reverse(t.begin(), t.end());
    return s(t);
}

ScriptValue fnChr(Interpreter &, Args &a)
{
    const std::int32_t c = lng(a, 0);
    if (c < 0 || c > 255)
        throw ScriptError(ErrNo::InvalidCall);
    // Chr takes the ANSI code page.
    static const char16_t high[32] = {0x20AC, 0x81, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
                                      0x2039, 0x0152, 0x8D, 0x017D, 0x8F, 0x90, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
                                      0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D, 0x017E, 0x0178};
    const char16_t u = c >= 0x80 && c < 0xA0 ? high[c - 0x80] : static_cast<char16_t>(c);
    return s(QString(QChar(u)));
}

ScriptValue fnChrW(Interpreter &, Args &a)
{
    std::int32_t c = lng(a, 0);
    if (c < -32768 || c > 65535)
        throw ScriptError(ErrNo::InvalidCall);
    if (c < 0)
        c += 65536;
    return s(QString(QChar(static_cast<char16_t>(c))));
}

ScriptValue fnAscW(Interpreter &, Args &a)
{
    const QString t = str(a, 0);
    if (t.isEmpty())
        throw ScriptError(ErrNo::InvalidCall);
    return ScriptValue::fromInteger(static_cast<std::int16_t>(t.at(0).unicode()));
}

ScriptValue fnAsc(Interpreter &in, Args &a)
{
    const QString t = str(a, 0);
    if (t.isEmpty())
        throw ScriptError(ErrNo::InvalidCall);
    const char16_t u = t.at(0).unicode();
    if (u < 0x80 || (u >= 0xA0 && u <= 0xFF))
        return ScriptValue::fromInteger(static_cast<std::int16_t>(u));
    for (int c = 0x80; c < 0xA0; ++c) {
        Args probe{ScriptValue::fromLong(c)};
        if (fnChr(in, probe).toString().at(0).unicode() == u)
            return ScriptValue::fromInteger(static_cast<std::int16_t>(c));
    }
    return ScriptValue::fromInteger(63); // "?"
}

// ---- conversions and tests ----------------------------------------------------------------

ScriptValue fnVal(Interpreter &, Args &a)
{
    // Val reads the longest number at the start, skipping blanks anywhere.
    QString t = str(a, 0);
    t.remove(QLatin1Char(' ')).remove(QLatin1Char('\t')).remove(QLatin1Char('\n')).remove(QLatin1Char('\r'));
    if (t.startsWith(QLatin1String("&H"), Qt::CaseInsensitive) || t.startsWith(QLatin1String("&O"), Qt::CaseInsensitive)) {
        const bool hex = t.at(1).toUpper() == QLatin1Char('H');
        int j = 2;
        while (j < t.size() && (hex ? isxdigit(t.at(j).toLatin1()) : (t.at(j) >= QLatin1Char('0') && t.at(j) <= QLatin1Char('7'))))
            ++j;
        bool ok = false;
        const qlonglong v = t.mid(2, j - 2).toLongLong(&ok, hex ? 16 : 8);
        return ScriptValue::fromDouble(ok ? static_cast<double>(v) : 0);
    }
    int j = 0;
    if (j < t.size() && (t.at(j) == QLatin1Char('-') || t.at(j) == QLatin1Char('+')))
        ++j;
    while (j < t.size() && t.at(j).isDigit())
        ++j;
    if (j < t.size() && t.at(j) == QLatin1Char('.')) {
        ++j;
        while (j < t.size() && t.at(j).isDigit())
            ++j;
    }
    if (j < t.size() && (t.at(j) == QLatin1Char('e') || t.at(j) == QLatin1Char('E') || t.at(j) == QLatin1Char('d') || t.at(j) == QLatin1Char('D'))) {
        int k = j + 1;
        if (k < t.size() && (t.at(k) == QLatin1Char('-') || t.at(k) == QLatin1Char('+')))
            ++k;
        if (k < t.size() && t.at(k).isDigit()) {
            while (k < t.size() && t.at(k).isDigit())
                ++k;
            j = k;
        }
    }
    QString num = t.left(j);
    num.replace(QLatin1Char('d'), QLatin1Char('e')).replace(QLatin1Char('D'), QLatin1Char('e'));
    bool ok = false;
    const double v = num.toDouble(&ok);
    return ScriptValue::fromDouble(ok ? v : 0);
}

ScriptValue fnCInt(Interpreter &, Args &a) { return ScriptValue::fromInteger(a[0].toInteger()); }
ScriptValue fnCLng(Interpreter &, Args &a) { return ScriptValue::fromLong(a[0].toLong()); }
ScriptValue fnCDbl(Interpreter &, Args &a) { return ScriptValue::fromDouble(a[0].toDouble()); }
ScriptValue fnCBool(Interpreter &, Args &a) { return ScriptValue::fromBool(a[0].toBool()); }
ScriptValue fnCVar(Interpreter &, Args &a) { return a[0]; }
ScriptValue fnCByte(Interpreter &, Args &a)
{
    const std::int32_t n = a[0].toLong();
    if (n < 0 || n > 255)
        throw ScriptError(ErrNo::Overflow);
    return ScriptValue::fromInteger(static_cast<std::int16_t>(n));
}
// Both branches are evaluated before the call, as in VBA.
ScriptValue fnIIf(Interpreter &, Args &a) { return !a[0].isNull() && a[0].toBool() ? a[1] : a[2]; }
ScriptValue fnCDate(Interpreter &, Args &a)
{
    if (a[0].isString()) {
        const QDate d = QDate::fromString(a[0].toString().trimmed(), QStringLiteral("M/d/yyyy"));
        if (d.isValid())
            return ScriptValue::fromDate(oleDateFromParts(d.year(), d.month(), d.day()));
        const QDate iso = QDate::fromString(a[0].toString().trimmed(), Qt::ISODate);
        if (iso.isValid())
            return ScriptValue::fromDate(oleDateFromParts(iso.year(), iso.month(), iso.day()));
    }
    return ScriptValue::fromDate(a[0].toDouble());
}

ScriptValue fnCStr(Interpreter &, Args &a)
{
    if (a[0].isNull())
        throw ScriptError(94);
    return s(a[0].toString());
}

ScriptValue fnIsEmpty(Interpreter &, Args &a) { return ScriptValue::fromBool(a[0].isEmpty()); }
ScriptValue fnIsNull(Interpreter &, Args &a) { return ScriptValue::fromBool(a[0].isNull()); }
ScriptValue fnIsArray(Interpreter &, Args &a) { return ScriptValue::fromBool(a[0].isArray()); }
ScriptValue fnIsObject(Interpreter &, Args &a) { return ScriptValue::fromBool(a[0].isObject()); }
ScriptValue fnIsMissing(Interpreter &, Args &a) { return ScriptValue::fromBool(a[0].isMissing()); }
ScriptValue fnIsDate(Interpreter &, Args &a) { return ScriptValue::fromBool(a[0].type() == ValueType::Date); }

ScriptValue fnIsNumeric(Interpreter &, Args &a)
{
    const ScriptValue &v = a[0];
    if (v.isString()) {
        double d = 0;
        return ScriptValue::fromBool(parseVbNumber(v.toString(), &d));
    }
    return ScriptValue::fromBool(v.isNumeric() && v.type() != ValueType::Date);
}

ScriptValue fnTypeName(Interpreter &, Args &a) { return s(a[0].typeName()); }

ScriptValue fnVarType(Interpreter &, Args &a)
{
    if (a[0].isArray())
        return ScriptValue::fromInteger(8192 + 12);
    return ScriptValue::fromInteger(static_cast<std::int16_t>(a[0].type()));
}

// ---- numbers ------------------------------------------------------------------------------

ScriptValue keepType(const ScriptValue &like, double v)
{
    switch (like.type()) {
    case ValueType::Integer:
    case ValueType::Boolean:
        if (v >= -32768 && v <= 32767)
            return ScriptValue::fromInteger(static_cast<std::int16_t>(v));
        return ScriptValue::fromLong(static_cast<std::int32_t>(v));
    case ValueType::Long:
        return ScriptValue::fromLong(static_cast<std::int32_t>(v));
    default:
        return ScriptValue::fromDouble(v);
    }
}

ScriptValue fnAbs(Interpreter &, Args &a) { return a[0].isNull() ? a[0] : keepType(a[0], std::fabs(a[0].toDouble())); }
ScriptValue fnInt(Interpreter &, Args &a) { return a[0].isNull() ? a[0] : keepType(a[0], std::floor(a[0].toDouble())); }
ScriptValue fnFix(Interpreter &, Args &a) { return a[0].isNull() ? a[0] : keepType(a[0], std::trunc(a[0].toDouble())); }
ScriptValue fnSgn(Interpreter &, Args &a)
{
    const double d = a[0].toDouble();
    return ScriptValue::fromInteger(d > 0 ? 1 : (d < 0 ? -1 : 0));
}
ScriptValue fnSqr(Interpreter &, Args &a)
{
    const double d = a[0].toDouble();
    if (d < 0)
        throw ScriptError(ErrNo::InvalidCall);
    return ScriptValue::fromDouble(std::sqrt(d));
}
ScriptValue fnRound(Interpreter &, Args &a)
{
    const int digits = lngOr(a, 1, 0);
    if (digits < 0)
        throw ScriptError(ErrNo::InvalidCall);
    const double f = std::pow(10.0, digits);
    const double v = std::nearbyint(a[0].toDouble() * f) / f;
    return digits == 0 ? keepType(a[0], v) : ScriptValue::fromDouble(v);
}
ScriptValue fnHex(Interpreter &, Args &a)
{
    const std::int32_t v = a[0].toLong();
    const std::uint32_t u = a[0].type() == ValueType::Integer ? static_cast<std::uint16_t>(v) : static_cast<std::uint32_t>(v);
    return s(QString::number(u, 16).toUpper());
}

// ---- arrays -------------------------------------------------------------------------------

const ScriptArray &arrayArg(const Args &a)
{
    if (!a[0].isArray() || !a[0].array())
        throw ScriptError(ErrNo::TypeMismatch);
    return *a[0].array();
}

ScriptValue bound(Args &a, bool upper)
{
    const ScriptArray &arr = arrayArg(a);
    const std::int32_t dim = lngOr(a, 1, 1);
    if (arr.bounds.empty() || dim < 1 || dim > static_cast<std::int32_t>(arr.bounds.size()))
        throw ScriptError(ErrNo::SubscriptOutOfRange);
    const ScriptArray::Bound &b = arr.bounds[dim - 1];
    return ScriptValue::fromLong(upper ? b.upper : b.lower);
}

ScriptValue fnUBound(Interpreter &, Args &a) { return bound(a, true); }
ScriptValue fnLBound(Interpreter &, Args &a) { return bound(a, false); }

ScriptValue fnArray(Interpreter &, Args &a)
{
    for (const ScriptValue &v : a) {
        if (v.isMissing())
            throw ScriptError(ErrNo::ArgumentNotOptional);
    }
    return ScriptValue::fromList(a);
}

ScriptValue fnSplit(Interpreter &in, Args &a)
{
    const QString text = str(a, 0);
    const QString sep = given(a, 1) ? a[1].toString() : QStringLiteral(" ");
    std::int32_t limit = lngOr(a, 2, -1);
    if (limit < -1)
        throw ScriptError(ErrNo::InvalidCall);
    QStringList parts;
    if (text.isEmpty() || limit == 0) {
        // Split("") is an empty array: UBound -1.
    } else if (sep.isEmpty()) {
        parts << text;
    } else {
        const Qt::CaseSensitivity cs = compareMode(in, a, 3);
        qsizetype pos = 0;
        while (limit == -1 || parts.size() < limit - 1) {
            const qsizetype hit = text.indexOf(sep, pos, cs);
            if (hit < 0)
                break;
            parts << text.mid(pos, hit - pos);
            pos = hit + sep.size();
        }
        parts << text.mid(pos);
    }
    return ScriptValue::fromStringList(parts);
}

ScriptValue fnJoin(Interpreter &, Args &a)
{
    const ScriptArray &arr = arrayArg(a);
    if (arr.bounds.size() > 1)
        throw ScriptError(ErrNo::InvalidCall);
    const QString sep = given(a, 1) ? a[1].toString() : QStringLiteral(" ");
    QStringList parts;
    for (const ScriptValue &v : arr.items)
        parts << v.toString();
    return s(parts.join(sep));
}

ScriptValue fnFilter(Interpreter &in, Args &a)
{
    const ScriptArray &arr = arrayArg(a);
    const QString match = str(a, 1);
    const bool include = given(a, 2) ? a[2].toBool() : true;
    const Qt::CaseSensitivity cs = compareMode(in, a, 3);
    QStringList out;
    for (const ScriptValue &v : arr.items) {
        const QString t = v.toString();
        if (t.contains(match, cs) == include)
            out << t;
    }
    return ScriptValue::fromStringList(out);
}

// ---- time ---------------------------------------------------------------------------------

ScriptValue fnNow(Interpreter &in, Args &) { return ScriptValue::fromDate(in.now()); }
ScriptValue fnDate(Interpreter &in, Args &) { return ScriptValue::fromDate(std::floor(in.now())); }
ScriptValue fnTime(Interpreter &in, Args &)
{
    const double n = in.now();
    return ScriptValue::fromDate(n - std::floor(n));
}
ScriptValue fnTimer(Interpreter &in, Args &)
{
    const double n = in.now();
    return ScriptValue::fromDouble((n - std::floor(n)) * 86400.0);
}

QDate dateOf(const ScriptValue &v)
{
    return QDate(1899, 12, 30).addDays(static_cast<qint64>(std::floor(v.toDouble())));
}
int secondsOf(const ScriptValue &v)
{
    const double d = v.toDouble();
    return static_cast<int>(std::lround((d - std::floor(d)) * 86400.0)) % 86400;
}
ScriptValue fnYear(Interpreter &, Args &a) { return ScriptValue::fromInteger(static_cast<std::int16_t>(dateOf(a[0]).year())); }
ScriptValue fnMonth(Interpreter &, Args &a) { return ScriptValue::fromInteger(static_cast<std::int16_t>(dateOf(a[0]).month())); }
ScriptValue fnDay(Interpreter &, Args &a) { return ScriptValue::fromInteger(static_cast<std::int16_t>(dateOf(a[0]).day())); }
ScriptValue fnHour(Interpreter &, Args &a) { return ScriptValue::fromInteger(static_cast<std::int16_t>(secondsOf(a[0]) / 3600)); }
ScriptValue fnMinute(Interpreter &, Args &a) { return ScriptValue::fromInteger(static_cast<std::int16_t>(secondsOf(a[0]) / 60 % 60)); }
ScriptValue fnSecond(Interpreter &, Args &a) { return ScriptValue::fromInteger(static_cast<std::int16_t>(secondsOf(a[0]) % 60)); }
ScriptValue fnDateSerial(Interpreter &, Args &a)
{
    const QDate d = QDate(lng(a, 0), 1, 1).addMonths(lng(a, 1) - 1).addDays(lng(a, 2) - 1);
    return ScriptValue::fromDate(oleDateFromParts(d.year(), d.month(), d.day()));
}

double secondsPerUnit(const QString &interval)
{
    const QString i = interval.toLower();
    if (i == QLatin1String("d") || i == QLatin1String("y") || i == QLatin1String("w"))
        return 86400;
    if (i == QLatin1String("ww"))
        return 7 * 86400;
    if (i == QLatin1String("h"))
        return 3600;
    if (i == QLatin1String("n"))
        return 60;
    if (i == QLatin1String("s"))
        return 1;
    return 0; // months, quarters and years go by the calendar
}

int monthsPerUnit(const QString &interval)
{
    const QString i = interval.toLower();
    return i == QLatin1String("m") ? 1 : i == QLatin1String("q") ? 3 : i == QLatin1String("yyyy") ? 12 : 0;
}

ScriptValue fnDateAdd(Interpreter &, Args &a)
{
    const QString interval = str(a, 0);
    const std::int32_t n = lng(a, 1);
    const double date = a[2].toDouble();
    if (const double secs = secondsPerUnit(interval))
        return ScriptValue::fromDate(date + n * secs / 86400.0);
    const int months = monthsPerUnit(interval);
    if (!months)
        throw ScriptError(ErrNo::InvalidCall);
    const QDate d = dateOf(a[2]).addMonths(static_cast<qint64>(n) * months);
    return ScriptValue::fromDate(oleDateFromParts(d.year(), d.month(), d.day()) + (date - std::floor(date)));
}

ScriptValue fnDateDiff(Interpreter &, Args &a)
{
    const QString interval = str(a, 0);
    const double from = a[1].toDouble();
    const double to = a[2].toDouble();
    if (const double secs = secondsPerUnit(interval)) {
        // Whole units crossed, counted on the unit's boundaries.
        const double unit = secs / 86400.0;
        return ScriptValue::fromLong(static_cast<std::int32_t>(std::floor(to / unit + 1e-9) - std::floor(from / unit + 1e-9)));
    }
    const int months = monthsPerUnit(interval);
    if (!months)
        throw ScriptError(ErrNo::InvalidCall);
    const QDate f = dateOf(a[1]);
    const QDate t = dateOf(a[2]);
    const int monthIndexFrom = (f.year() * 12 + f.month() - 1) / months;
    const int monthIndexTo = (t.year() * 12 + t.month() - 1) / months;
    return ScriptValue::fromLong(monthIndexTo - monthIndexFrom);
}

ScriptValue fnWeekday(Interpreter &, Args &a)
{
    // 1 = Sunday
    return ScriptValue::fromInteger(static_cast<std::int16_t>(dateOf(a[0]).dayOfWeek() % 7 + 1));
}

ScriptValue fnFormat(Interpreter &, Args &a)
{
    // The common forms only: no format, "0.00"-style digits, and date patterns.
    const ScriptValue &v = a[0];
    if (!given(a, 1))
        return s(v.toString());
    const QString f = a[1].toString();
    if (v.type() == ValueType::Date || f.contains(QLatin1Char('y'), Qt::CaseInsensitive) || f.contains(QLatin1String("hh"), Qt::CaseInsensitive)) {
        const int secs = secondsOf(v);
        const QDateTime t(dateOf(v), QTime(secs / 3600, secs / 60 % 60, secs % 60));
        QString mapped;
        // VBA writes months "mm" and minutes "nn"; Qt wants "MM" and "mm".
        for (int i = 0; i < f.size();) {
            const QChar c = f.at(i).toLower();
            int run = 1;
            while (i + run < f.size() && f.at(i + run).toLower() == c)
                ++run;
            QString piece = f.mid(i, run);
            if (c == QLatin1Char('m'))
                piece = QString(run, QLatin1Char('M'));
            else if (c == QLatin1Char('n'))
                piece = QString(run, QLatin1Char('m'));
            else if (c == QLatin1Char('y'))
                piece = QString(run, QLatin1Char('y'));
            else if (c == QLatin1Char('h'))
                piece = QString(run, QLatin1Char('H'));
            else if (c == QLatin1Char('s'))
                piece = QString(run, QLatin1Char('s'));
            else if (c == QLatin1Char('d'))
                piece = QString(run, QLatin1Char('d'));
            else
                piece = QLatin1Char('\'') + piece + QLatin1Char('\'');
            mapped += piece;
            i += run;
        }
        return s(t.toString(mapped));
    }
    const int dot = f.indexOf(QLatin1Char('.'));
    const int decimals = dot < 0 ? 0 : static_cast<int>(f.size() - dot - 1);
    int width = dot < 0 ? static_cast<int>(f.size()) : dot;
    if (!f.startsWith(QLatin1Char('0')))
        width = 0;
    QString out = QString::number(v.toDouble(), 'f', decimals);
    const bool neg = out.startsWith(QLatin1Char('-'));
    if (neg)
        out.remove(0, 1);
    int intLen = out.indexOf(QLatin1Char('.'));
    if (intLen < 0)
        intLen = out.size();
    if (intLen < width)
        out.prepend(QString(width - intLen, QLatin1Char('0')));
    return s(neg ? QLatin1Char('-') + out : out);
}

// ---- interaction --------------------------------------------------------------------------

ScriptValue fnMsgBox(Interpreter &in, Args &a)
{
    const QString prompt = str(a, 0);
    const int buttons = lngOr(a, 1, 0);
    const QString title = given(a, 2) ? a[2].toString() : QStringLiteral("Mecadra");
    return ScriptValue::fromInteger(static_cast<std::int16_t>(in.messageBox(prompt, buttons, title)));
}

ScriptValue fnCreateObject(Interpreter &in, Args &a) { return in.createObject(str(a, 0)); }
ScriptValue fnGetObject(Interpreter &in, Args &a)
{
    return in.getObject(given(a, 0) ? a[0].toString() : QString(), given(a, 1) ? a[1].toString() : QString());
}
ScriptValue fnDoEvents(Interpreter &, Args &) { return ScriptValue::fromInteger(0); }
ScriptValue fnEnviron(Interpreter &, Args &a)
{
    if (!a[0].isString())
        return s(QString());
    return s(qEnvironmentVariable(a[0].toString().toUtf8().constData()));
}

// ---- files --------------------------------------------------------------------------------

ScriptValue fnFreeFile(Interpreter &in, Args &) { return ScriptValue::fromInteger(static_cast<std::int16_t>(in.files().freeFile())); }
ScriptValue fnEOF(Interpreter &in, Args &a) { return ScriptValue::fromBool(in.files().atEnd(lng(a, 0))); }

ScriptValue fnKill(Interpreter &in, Args &a)
{
    const QString win = str(a, 0);
    const QString pattern = FileSystemObject::fileName(win);
    const QString parent = FileSystemObject::parentFolder(win);
    const QString nativeDir = in.resolvePath(parent.isEmpty() ? QStringLiteral(".") : parent);
    int removed = 0;
    const QDir dir(nativeDir);
    for (const QString &name : dir.entryList(QDir::Files | QDir::Hidden)) {
        if (likeMatch(name, pattern, true)) {
            if (in.files().isPathOpen(dir.filePath(name)))
                throw ScriptError(ErrNo::PathFileAccess);
            if (!QFile::remove(dir.filePath(name)))
                throw ScriptError(ErrNo::PermissionDenied);
            ++removed;
        }
    }
    if (removed == 0)
        throw ScriptError(ErrNo::FileNotFound);
    return {};
}

ScriptValue fnMkDir(Interpreter &in, Args &a)
{
    const QString native = in.resolvePath(str(a, 0));
    if (QFileInfo::exists(native))
        throw ScriptError(ErrNo::PathFileAccess);
    if (!QFileInfo(native).dir().exists())
        throw ScriptError(ErrNo::PathNotFound);
    if (!QDir().mkdir(native))
        throw ScriptError(ErrNo::PathFileAccess);
    return {};
}

ScriptValue fnRmDir(Interpreter &in, Args &a)
{
    const QString native = in.resolvePath(str(a, 0));
    if (!QFileInfo(native).isDir())
        throw ScriptError(ErrNo::PathNotFound);
    if (!QDir().rmdir(native))
        throw ScriptError(ErrNo::PathFileAccess);
    return {};
}

ScriptValue fnFileLen(Interpreter &in, Args &a)
{
    const QFileInfo info(in.resolvePath(str(a, 0)));
    if (!info.isFile())
        throw ScriptError(ErrNo::FileNotFound);
    return ScriptValue::fromLong(static_cast<std::int32_t>(info.size()));
}

ScriptValue fnFileCopy(Interpreter &in, Args &a)
{
    const QString from = in.resolvePath(str(a, 0));
    const QString to = in.resolvePath(str(a, 1));
    if (!QFileInfo(from).isFile())
        throw ScriptError(ErrNo::FileNotFound);
    if (in.files().isPathOpen(to))
        throw ScriptError(ErrNo::PermissionDenied);
    if (QFileInfo::exists(to) && !QFile::remove(to))
        throw ScriptError(ErrNo::PermissionDenied);
    if (!QFileInfo(to).dir().exists())
        throw ScriptError(ErrNo::PathNotFound);
    if (!QFile::copy(from, to))
        throw ScriptError(ErrNo::PathFileAccess);
    return {};
}

ScriptValue fnFileDateTime(Interpreter &in, Args &a)
{
    const QFileInfo info(in.resolvePath(str(a, 0)));
    if (!info.exists())
        throw ScriptError(ErrNo::FileNotFound);
    const QDateTime t = info.lastModified();
    return ScriptValue::fromDate(oleDateFromParts(t.date().year(), t.date().month(), t.date().day(), t.time().hour(),
                                                  t.time().minute(), t.time().second()));
}

ScriptValue fnDir(Interpreter &in, Args &a)
{
    QStringList &matches = in.dirMatches();
    if (given(a, 0)) {
        matches.clear();
        const QString win = a[0].toString();
        const int attrs = lngOr(a, 1, 0);
        QString pattern = FileSystemObject::fileName(win);
        QString parent = FileSystemObject::parentFolder(win);
        if (!win.isEmpty() && (win.endsWith(QLatin1Char('\\')) || win.endsWith(QLatin1Char('/')))) {
            parent = win;
            pattern = QStringLiteral("*");
        }
        if (pattern.isEmpty())
            pattern = QStringLiteral("*");
        const QDir dir(in.resolvePath(parent.isEmpty() ? QStringLiteral(".") : parent));
        QDir::Filters filters = QDir::Files;
        if (attrs & 16)
            filters |= QDir::Dirs | QDir::NoDotAndDotDot;
        if (attrs & 2)
            filters |= QDir::Hidden;
        const bool wild = pattern.contains(QLatin1Char('*')) || pattern.contains(QLatin1Char('?'));
        // "*.*" matches names without a dot too.
        const QString likePattern = pattern == QLatin1String("*.*") ? QStringLiteral("*") : pattern;
        for (const QString &name : dir.entryList(filters, QDir::Name | QDir::IgnoreCase)) {
            if (wild ? likeMatch(name, likePattern, true) : name.compare(pattern, Qt::CaseInsensitive) == 0)
                matches << name;
        }
    } else if (matches.isEmpty()) {
        return s(QString());
    }
    if (matches.isEmpty())
        return s(QString());
    return s(matches.takeFirst());
}

const QHash<QString, Builtin> &table()
{
    static const QHash<QString, Builtin> t = {
        {QStringLiteral("len"), {fnLen, 1, 1}},
        {QStringLiteral("left"), {fnLeft, 2, 2}},
        {QStringLiteral("right"), {fnRight, 2, 2}},
        {QStringLiteral("mid"), {fnMid, 2, 3}},
        {QStringLiteral("instr"), {fnInStr, 2, 4}},
        {QStringLiteral("instrrev"), {fnInStrRev, 2, 4}},
        {QStringLiteral("replace"), {fnReplace, 3, 6}},
        {QStringLiteral("lcase"), {fnLCase, 1, 1}},
        {QStringLiteral("ucase"), {fnUCase, 1, 1}},
        {QStringLiteral("trim"), {fnTrim, 1, 1}},
        {QStringLiteral("ltrim"), {fnLTrim, 1, 1}},
        {QStringLiteral("rtrim"), {fnRTrim, 1, 1}},
        {QStringLiteral("space"), {fnSpace, 1, 1}},
        {QStringLiteral("string"), {fnString, 2, 2}},
        {QStringLiteral("strcomp"), {fnStrComp, 2, 3}},
        {QStringLiteral("strreverse"), {fnStrReverse, 1, 1}},
        {QStringLiteral("chr"), {fnChr, 1, 1}},
        {QStringLiteral("chrw"), {fnChrW, 1, 1}},
        {QStringLiteral("asc"), {fnAsc, 1, 1}},
        {QStringLiteral("ascw"), {fnAscW, 1, 1}},
        {QStringLiteral("val"), {fnVal, 1, 1}},
        {QStringLiteral("cint"), {fnCInt, 1, 1}},
        {QStringLiteral("clng"), {fnCLng, 1, 1}},
        {QStringLiteral("clnglng"), {fnCDbl, 1, 1}},
        {QStringLiteral("clngptr"), {fnCLng, 1, 1}},
        {QStringLiteral("cdbl"), {fnCDbl, 1, 1}},
        {QStringLiteral("csng"), {fnCDbl, 1, 1}},
        {QStringLiteral("cbool"), {fnCBool, 1, 1}},
        {QStringLiteral("cstr"), {fnCStr, 1, 1}},
        {QStringLiteral("cvar"), {fnCVar, 1, 1}},
        {QStringLiteral("cbyte"), {fnCByte, 1, 1}},
        {QStringLiteral("iif"), {fnIIf, 3, 3}},
        {QStringLiteral("cdate"), {fnCDate, 1, 1}},
        {QStringLiteral("isempty"), {fnIsEmpty, 1, 1}},
        {QStringLiteral("isnull"), {fnIsNull, 1, 1}},
        {QStringLiteral("isarray"), {fnIsArray, 1, 1}},
        {QStringLiteral("isobject"), {fnIsObject, 1, 1}},
        {QStringLiteral("ismissing"), {fnIsMissing, 1, 1}},
        {QStringLiteral("isnumeric"), {fnIsNumeric, 1, 1}},
        {QStringLiteral("isdate"), {fnIsDate, 1, 1}},
        {QStringLiteral("typename"), {fnTypeName, 1, 1}},
        {QStringLiteral("vartype"), {fnVarType, 1, 1}},
        {QStringLiteral("abs"), {fnAbs, 1, 1}},
        {QStringLiteral("int"), {fnInt, 1, 1}},
        {QStringLiteral("fix"), {fnFix, 1, 1}},
        {QStringLiteral("sgn"), {fnSgn, 1, 1}},
        {QStringLiteral("sqr"), {fnSqr, 1, 1}},
        {QStringLiteral("round"), {fnRound, 1, 2}},
        {QStringLiteral("hex"), {fnHex, 1, 1}},
        {QStringLiteral("ubound"), {fnUBound, 1, 2}},
        {QStringLiteral("lbound"), {fnLBound, 1, 2}},
        {QStringLiteral("array"), {fnArray, 0, -1}},
        {QStringLiteral("split"), {fnSplit, 1, 4}},
        {QStringLiteral("join"), {fnJoin, 1, 2}},
        {QStringLiteral("filter"), {fnFilter, 2, 4}},
        {QStringLiteral("now"), {fnNow, 0, 0}},
        {QStringLiteral("date"), {fnDate, 0, 0}},
        {QStringLiteral("time"), {fnTime, 0, 0}},
        {QStringLiteral("timer"), {fnTimer, 0, 0}},
        {QStringLiteral("year"), {fnYear, 1, 1}},
        {QStringLiteral("month"), {fnMonth, 1, 1}},
        {QStringLiteral("day"), {fnDay, 1, 1}},
        {QStringLiteral("hour"), {fnHour, 1, 1}},
        {QStringLiteral("minute"), {fnMinute, 1, 1}},
        {QStringLiteral("second"), {fnSecond, 1, 1}},
        {QStringLiteral("dateserial"), {fnDateSerial, 3, 3}},
        {QStringLiteral("dateadd"), {fnDateAdd, 3, 3}},
        {QStringLiteral("datediff"), {fnDateDiff, 3, 5}},
        {QStringLiteral("weekday"), {fnWeekday, 1, 2}},
        {QStringLiteral("format"), {fnFormat, 1, 2}},
        {QStringLiteral("msgbox"), {fnMsgBox, 1, 5}},
        {QStringLiteral("createobject"), {fnCreateObject, 1, 2}},
        {QStringLiteral("getobject"), {fnGetObject, 0, 2}},
        {QStringLiteral("doevents"), {fnDoEvents, 0, 0}},
        {QStringLiteral("environ"), {fnEnviron, 1, 1}},
        {QStringLiteral("freefile"), {fnFreeFile, 0, 1}},
        {QStringLiteral("eof"), {fnEOF, 1, 1}},
        {QStringLiteral("kill"), {fnKill, 1, 1}},
        {QStringLiteral("mkdir"), {fnMkDir, 1, 1}},
        {QStringLiteral("rmdir"), {fnRmDir, 1, 1}},
        {QStringLiteral("filelen"), {fnFileLen, 1, 1}},
        {QStringLiteral("filecopy"), {fnFileCopy, 2, 2}},
        {QStringLiteral("filedatetime"), {fnFileDateTime, 1, 1}},
        {QStringLiteral("dir"), {fnDir, 0, 2}},
    };
    return t;
}

// ---- Declare targets ----------------------------------------------------------------------

bool isRooted(const QString &p)
{
    return (!p.isEmpty() && (p.at(0) == QLatin1Char('\\') || p.at(0) == QLatin1Char('/')))
           || (p.size() >= 2 && p.at(1) == QLatin1Char(':'));
}

} // namespace

const Builtin *findBuiltin(const QString &lowerName)
{
    const auto &t = table();
    const auto it = t.constFind(lowerName);
    return it == t.constEnd() ? nullptr : &*it;
}

ScriptValue callDeclaredFunction(Interpreter &interp, const DeclareProc &declare, std::vector<ScriptValue> &args)
{
    const QString entry = (declare.alias.isEmpty() ? declare.name : declare.alias).toLower();
    if (entry == QLatin1String("shcreatedirectoryexa") || entry == QLatin1String("shcreatedirectoryexw")
        || entry == QLatin1String("shcreatedirectoryex")) {
        // 0 created, 183 already there, 3 path not usable (relative paths are refused).
        const QString win = args.size() > 1 ? args[1].toString() : QString();
        if (win.isEmpty() || !isRooted(win))
            return ScriptValue::fromLong(win.isEmpty() ? 161 : 3);
        const QString native = interp.resolvePath(win);
        const QFileInfo info(native);
        if (info.isDir())
            return ScriptValue::fromLong(183);
        if (info.exists())
            return ScriptValue::fromLong(183);
        if (!QDir().mkpath(native))
            return ScriptValue::fromLong(5);
        return ScriptValue::fromLong(0);
    }
    if (entry == QLatin1String("pathisrelativea") || entry == QLatin1String("pathisrelativew")
        || entry == QLatin1String("pathisrelative")) {
        const QString p = args.empty() ? QString() : args[0].toString();
        return ScriptValue::fromLong(isRooted(p) ? 0 : 1);
    }
    if (entry == QLatin1String("sleep"))
        return {};
    throw ScriptError(ErrNo::DllEntryNotFound, QStringLiteral("Can't find DLL entry point %1 in %2").arg(declare.alias.isEmpty() ? declare.name : declare.alias, declare.lib));
}

} // namespace cadsim
