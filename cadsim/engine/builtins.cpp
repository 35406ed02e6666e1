#include "cadsim/engine/builtins.h"

#include "base/codepage.h"
#include "base/windowspath.h"
#include "cadsim/engine/fso.h"
#include "cadsim/engine/interpreter.h"
#include "cadsim/engine/likematcher.h"
#include "cadsim/engine/numberformat.h"
#include "cadsim/engine/scriptobject.h"

#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QLocale>
#include <QTime>

#include <algorithm>
#include <cmath>
#include <optional>

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

// The compare argument: 0 binary, 1 text, 2 database (there is no database here, so text);
// omitted, the module's Option Compare. Null raises 94, other numbers 5.
Qt::CaseSensitivity compareMode(Interpreter &in, const Args &a, std::size_t i)
{
    if (!given(a, i))
        return in.compareText() ? Qt::CaseInsensitive : Qt::CaseSensitive;
    const std::int32_t mode = a[i].toLong();
    if (mode < 0 || mode > 2)
        throw ScriptError(ErrNo::InvalidCall);
    return mode == 0 ? Qt::CaseSensitive : Qt::CaseInsensitive;
}

// The first day of the week (0 the system's, Sunday here; 1 Sunday ... 7 Saturday).
int firstDayOfWeek(const Args &a, std::size_t i)
{
    const std::int32_t day = lngOr(a, i, 1);
    if (day < 0 || day > 7)
        throw ScriptError(ErrNo::InvalidCall);
    return day == 0 ? 1 : day;
}

// The first week of the year (0 the system's, January 1 here; 1..3).
int firstWeekOfYear(const Args &a, std::size_t i)
{
    const std::int32_t week = lngOr(a, i, 1);
    if (week < 0 || week > 3)
        throw ScriptError(ErrNo::InvalidCall);
    return week == 0 ? 1 : week;
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
    // A byte string of three bytes is one character long, as VBA counts whole characters.
    return ScriptValue::fromLong(static_cast<std::int32_t>(a[0].byteLength() / 2));
}

ScriptValue fnLeft(Interpreter &, Args &a)
{
    const std::int32_t n = lng(a, 1);
    if (a[0].isNull())
        return a[0];
    if (n < 0)
        throw ScriptError(ErrNo::InvalidCall);
    return s(str(a, 0).left(n));
}

ScriptValue fnRight(Interpreter &, Args &a)
{
    const std::int32_t n = lng(a, 1);
    if (a[0].isNull())
        return a[0];
    if (n < 0)
        throw ScriptError(ErrNo::InvalidCall);
    return s(str(a, 0).right(n));
}

ScriptValue fnMid(Interpreter &, Args &a)
{
    const std::int32_t start = lng(a, 1);
    if (start < 1)
        throw ScriptError(ErrNo::InvalidCall);
    const std::int32_t n = lngOr(a, 2, -1);
    if (given(a, 2) && n < 0)
        throw ScriptError(ErrNo::InvalidCall);
    if (a[0].isNull())
        return a[0];
    return s(str(a, 0).mid(start - 1, n));
}

// The optional start that InStr and InStrB take first: the index of the text argument, and the
// start (1 when left out).
std::pair<std::size_t, std::int32_t> leadingStart(const Args &a)
{
    if (a.size() < 3)
        return {0, 1};
    const std::int32_t start = given(a, 0) ? lng(a, 0) : 1;
    if (start < 1)
        throw ScriptError(ErrNo::InvalidCall);
    return {1, start};
}

ScriptValue fnInStr(Interpreter &in, Args &a)
{
    // InStr([start,] text, find [, compare])
    const auto [first, start] = leadingStart(a);
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
    if (a[0].isNull() || a[1].isNull())
        return ScriptValue::null();
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
ScriptValue fnCSng(Interpreter &, Args &a) { return ScriptValue::fromSingle(a[0].toDouble()); }
ScriptValue fnCBool(Interpreter &, Args &a) { return ScriptValue::fromBool(a[0].toBool()); }
ScriptValue fnCVar(Interpreter &, Args &a) { return a[0]; }
ScriptValue fnCByte(Interpreter &, Args &a) { return toByte(a[0]); }
// Both branches are evaluated before the call, as in VBA.
ScriptValue fnIIf(Interpreter &, Args &a) { return !a[0].isNull() && a[0].toBool() ? a[1] : a[2]; }

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

// The result of Abs, Int, Fix or Round in its argument's type; Decimals are done exactly by the callers.
ScriptValue keepType(const ScriptValue &like, double v)
{
    switch (like.type()) {
    case ValueType::Byte:
        return toByte(ScriptValue::fromDouble(v));
    case ValueType::Integer:
    case ValueType::Boolean:
        if (v >= -32768 && v <= 32767)
            return ScriptValue::fromInteger(static_cast<std::int16_t>(v));
        return ScriptValue::fromLong(static_cast<std::int32_t>(v));
    case ValueType::Long:
        return ScriptValue::fromLong(static_cast<std::int32_t>(v));
    case ValueType::Single:
        return ScriptValue::fromSingle(v);
    case ValueType::Currency:
        return ScriptValue::fromCurrency(ScriptValue::fromDouble(v).toCurrency());
    default:
        return ScriptValue::fromDouble(v);
    }
}

bool isDecimal(const ScriptValue &v) { return v.type() == ValueType::Decimal; }

ScriptValue fnAbs(Interpreter &, Args &a)
{
    if (isDecimal(a[0]))
        return ScriptValue::fromDecimal(a[0].toDecimal().abs());
    return a[0].isNull() ? a[0] : keepType(a[0], std::fabs(a[0].toDouble()));
}
ScriptValue fnInt(Interpreter &, Args &a)
{
    if (isDecimal(a[0]))
        return ScriptValue::fromDecimal(a[0].toDecimal().floored());
    return a[0].isNull() ? a[0] : keepType(a[0], std::floor(a[0].toDouble()));
}
ScriptValue fnFix(Interpreter &, Args &a)
{
    if (isDecimal(a[0]))
        return ScriptValue::fromDecimal(a[0].toDecimal().truncated());
    return a[0].isNull() ? a[0] : keepType(a[0], std::trunc(a[0].toDouble()));
}
ScriptValue fnSgn(Interpreter &, Args &a)
{
    if (isDecimal(a[0])) {
        const Decimal d = a[0].toDecimal();
        return ScriptValue::fromInteger(d.isZero() ? 0 : (d.isNegative() ? -1 : 1));
    }
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
    if (isDecimal(a[0]))
        return ScriptValue::fromDecimal(a[0].toDecimal().rounded(digits));
    const double f = std::pow(10.0, digits);
    const double v = std::nearbyint(a[0].toDouble() * f) / f;
    return keepType(a[0], v);
}
// Hex and Oct: Integers (and Bytes) as 16 bits, the others as Long; Null stays Null.
ScriptValue inBase(const ScriptValue &v, int base)
{
    if (v.isNull())
        return v;
    const std::int32_t n = v.toLong();
    const bool small = v.type() == ValueType::Integer || v.type() == ValueType::Byte;
    const std::uint32_t u = small ? static_cast<std::uint16_t>(n) : static_cast<std::uint32_t>(n);
    return s(QString::number(u, base).toUpper());
}

ScriptValue fnHex(Interpreter &, Args &a) { return inBase(a[0], 16); }

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

ScriptValue dateFromText(const ScriptValue &v);

// A date argument: a date, a number, or text that reads as a date.
double dateArg(const ScriptValue &v)
{
    return v.isString() ? dateFromText(v).toDouble() : v.toDouble();
}
QDate dateOf(const ScriptValue &v)
{
    return QDate(1899, 12, 30).addDays(static_cast<qint64>(std::floor(dateArg(v))));
}
int secondsOf(const ScriptValue &v)
{
    const double d = dateArg(v);
    return static_cast<int>(std::lround((d - std::floor(d)) * 86400.0)) % 86400;
}

// The date functions that give Null for a Null date.
template<int (*part)(const ScriptValue &)>
ScriptValue datePartOrNull(Interpreter &, Args &a)
{
    return a[0].isNull() ? a[0] : ScriptValue::fromInteger(static_cast<std::int16_t>(part(a[0])));
}
int yearOf(const ScriptValue &v) { return dateOf(v).year(); }
int monthOf(const ScriptValue &v) { return dateOf(v).month(); }
int dayOf(const ScriptValue &v) { return dateOf(v).day(); }
int hourOf(const ScriptValue &v) { return secondsOf(v) / 3600; }
int minuteOf(const ScriptValue &v) { return secondsOf(v) / 60 % 60; }
int secondOf(const ScriptValue &v) { return secondsOf(v) % 60; }

// Dates run from 1 January 100 to 31 December 9999; others raise 5.
ScriptValue checkedDate(const QDate &d, double timeOfDay = 0)
{
    if (!d.isValid() || d.year() < 100 || d.year() > 9999)
        throw ScriptError(ErrNo::InvalidCall);
    return ScriptValue::fromDate(oleDateFromParts(d.year(), d.month(), d.day()) + timeOfDay);
}

ScriptValue fnDateSerial(Interpreter &, Args &a)
{
    // Each part is an Integer; months and days past their range carry into the next unit.
    const auto part = [&a](std::size_t i) {
        const std::int32_t v = lng(a, i);
        if (v < -32768 || v > 32767)
            throw ScriptError(ErrNo::Overflow);
        return v;
    };
    std::int32_t year = part(0);
    const std::int32_t month = part(1);
    const std::int32_t day = part(2);
    // Two-digit years: 0..29 are 2000..2029, 30..99 are 1930..1999.
    if (year >= 0 && year <= 29)
        year += 2000;
    else if (year >= 30 && year <= 99)
        year += 1900;
    const std::int64_t months = static_cast<std::int64_t>(year) * 12 + (month - 1);
    const std::int64_t y = months >= 0 ? months / 12 : -((-months + 11) / 12);
    if (y < 1 || y > 9999)
        throw ScriptError(ErrNo::InvalidCall);
    return checkedDate(QDate(static_cast<int>(y), static_cast<int>(months - y * 12) + 1, 1).addDays(day - 1));
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
    if (a[2].isNull())
        return a[2];
    const double date = dateArg(a[2]);
    if (const double secs = secondsPerUnit(interval)) {
        const double sum = date + n * secs / 86400.0;
        checkedDate(QDate(1899, 12, 30).addDays(static_cast<qint64>(std::floor(sum))));
        return ScriptValue::fromDate(sum);
    }
    const int months = monthsPerUnit(interval);
    if (!months)
        throw ScriptError(ErrNo::InvalidCall);
    return checkedDate(dateOf(a[2]).addMonths(static_cast<qint64>(n) * months), date - std::floor(date));
}

ScriptValue fnDateDiff(Interpreter &, Args &a)
{
    const QString interval = str(a, 0).toLower();
    const double from = dateArg(a[1]);
    const double to = dateArg(a[2]);
    const int firstDay = firstDayOfWeek(a, 3);
    firstWeekOfYear(a, 4);
    if (interval == QLatin1String("w")) // whole weeks
        return ScriptValue::fromLong(static_cast<std::int32_t>(std::trunc((std::floor(to) - std::floor(from)) / 7)));
    if (interval == QLatin1String("ww")) {
        // Weeks crossed: the first days of the week after from, up to to. Day 1 (31 Dec 1899) is
        // a Sunday.
        const auto week = [firstDay](double d) { return std::floor((std::floor(d) - firstDay) / 7); };
        return ScriptValue::fromLong(static_cast<std::int32_t>(week(to) - week(from)));
    }
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


// FormatDateTime's formats (vbGeneralDate ... vbShortTime), US English, and Format's medium date.
enum class NamedDate { General = 0, Long = 1, Short = 2, LongTime = 3, ShortTime = 4, Medium };

QString namedDateFormat(double d, NamedDate named)
{
    const QDate day = dateOf(ScriptValue::fromDate(d));
    const int secs = secondsOf(ScriptValue::fromDate(d));
    const QString hhmm = QStringLiteral("%1:%2").arg(secs / 3600, 2, 10, QLatin1Char('0')).arg(secs / 60 % 60, 2, 10, QLatin1Char('0'));
    switch (named) {
    case NamedDate::Long:
        return QLocale::c().toString(day, QStringLiteral("dddd, MMMM d, yyyy"));
    case NamedDate::Short:
        return formatOleShortDate(d);
    case NamedDate::LongTime:
        return formatOleLongTime(d);
    case NamedDate::ShortTime: // 24 hours
        return hhmm;
    case NamedDate::Medium:
        return QLocale::c().toString(day, QStringLiteral("dd-MMM-yy"));
    case NamedDate::General:
        break;
    }
    return formatOleDate(d);
}

ScriptValue fnFormat(Interpreter &, Args &a)
{
    // The common forms only: no format, "0.00"-style digits, and date patterns.
    const ScriptValue &v = a[0];
    if (!given(a, 1))
        return s(v.toString());
    const QString f = a[1].toString();
    // Named date and Boolean-style formats.
    static const QHash<QString, NamedDate> dates = {
        {QStringLiteral("general date"), NamedDate::General}, {QStringLiteral("long date"), NamedDate::Long},
        {QStringLiteral("medium date"), NamedDate::Medium},   {QStringLiteral("short date"), NamedDate::Short},
        {QStringLiteral("long time"), NamedDate::LongTime},   {QStringLiteral("short time"), NamedDate::ShortTime},
    };
    const auto date = dates.constFind(f.toLower());
    if (date != dates.constEnd())
        return v.isNull() ? v : s(namedDateFormat(dateArg(v), *date));
    static const QHash<QString, std::pair<const char *, const char *>> flags = {
        {QStringLiteral("yes/no"), {"Yes", "No"}}, {QStringLiteral("true/false"), {"True", "False"}},
        {QStringLiteral("on/off"), {"On", "Off"}},
    };
    const auto flag = flags.constFind(f.toLower());
    if (flag != flags.constEnd() && !v.isNull()) {
        double number = 0;
        if (v.isString() && !parseVbNumber(v.toString(), &number))
            return s(v.toString());
        number = v.isString() ? number : v.toDouble();
        return s(QLatin1String(number != 0 ? flag->first : flag->second));
    }
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
    // Named formats and numeric patterns.
    const QString named = f.toLower();
    double number = 0;
    if (v.isString() && !parseVbNumber(v.toString(), &number))
        return s(v.toString());
    number = v.isString() ? number : v.toDouble();
    if (named == QLatin1String("general number"))
        return s(ScriptValue::fromDouble(number).toString());
    if (named == QLatin1String("currency"))
        return s(formatNumberStyle(number, NumberStyle::Currency, 2, true, true, true));
    if (named == QLatin1String("fixed"))
        return s(formatNumberPattern(number, QStringLiteral("0.00")));
    if (named == QLatin1String("standard"))
        return s(formatNumberPattern(number, QStringLiteral("#,##0.00")));
    if (named == QLatin1String("percent"))
        return s(formatNumberPattern(number, QStringLiteral("0.00%")));
    if (named == QLatin1String("scientific"))
        return s(formatNumberPattern(number, QStringLiteral("0.00E+00")));
    return s(formatNumberPattern(number, f));
}

// ---- more dates ---------------------------------------------------------------------------

ScriptValue fnTimeSerial(Interpreter &, Args &a)
{
    const double secs = lng(a, 0) * 3600.0 + lng(a, 1) * 60.0 + lng(a, 2);
    return ScriptValue::fromDate(secs / 86400.0);
}

ScriptValue dateFromText(const ScriptValue &v)
{
    if (!v.isString())
        return ScriptValue::fromDate(v.toDouble());
    const QString t = v.toString().trimmed();
    static const char *const dateForms[] = {"M/d/yyyy", "yyyy-MM-dd", "MMMM d, yyyy", "MMM d, yyyy", "d MMMM yyyy", "d-MMM-yyyy", "M/d/yy", "d-MMM-yy"};
    static const char *const timeForms[] = {"h:mm:ss AP", "h:mm AP", "H:mm:ss", "H:mm", "h:mm:ssAP", "h:mmAP"};
    const QStringList words = t.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    // The date, the time, or both ("11/23/2026 9:05:00 AM").
    for (int split = 0; split <= words.size(); ++split) {
        const QString datePart = QStringList(words.mid(0, split)).join(QLatin1Char(' '));
        const QString timePart = QStringList(words.mid(split)).join(QLatin1Char(' '));
        double date = 0;
        bool ok = datePart.isEmpty();
        for (const char *form : dateForms) {
            if (ok)
                break;
            QDate d = QDate::fromString(datePart, QLatin1String(form));
            if (d.isValid() && QLatin1String(form).endsWith(QLatin1String("yy")) && !QLatin1String(form).endsWith(QLatin1String("yyyy")))
                d = d.addYears(d.year() < 1930 ? 100 : 0);
            if (d.isValid()) {
                date = oleDateFromParts(d.year(), d.month(), d.day());
                ok = true;
            }
        }
        if (!ok)
            continue;
        if (timePart.isEmpty())
            return ScriptValue::fromDate(date);
        for (const char *form : timeForms) {
            const QTime time = QTime::fromString(timePart.toUpper(), QLatin1String(form));
            if (time.isValid())
                return ScriptValue::fromDate(date + (time.hour() * 3600.0 + time.minute() * 60.0 + time.second()) / 86400.0);
        }
    }
    throw ScriptError(ErrNo::TypeMismatch);
}

ScriptValue fnDateValue(Interpreter &, Args &a)
{
    if (a[0].isNull())
        return a[0];
    return ScriptValue::fromDate(std::floor(dateFromText(a[0]).toDouble()));
}

ScriptValue fnTimeValue(Interpreter &, Args &a)
{
    if (a[0].isNull())
        return a[0];
    const double d = dateFromText(a[0]).toDouble();
    return ScriptValue::fromDate(std::fabs(d - std::trunc(d)));
}

ScriptValue fnCDate(Interpreter &, Args &a) { return dateFromText(a[0]); }

ScriptValue fnIsDate(Interpreter &, Args &a)
{
    if (a[0].type() == ValueType::Date)
        return ScriptValue::fromBool(true);
    if (!a[0].isString())
        return ScriptValue::fromBool(false);
    try {
        dateFromText(a[0]);
        return ScriptValue::fromBool(true);
    } catch (const ScriptError &) {
        return ScriptValue::fromBool(false);
    }
}

// Weekday of a date counted from firstDay (1 = Sunday ... 7 = Saturday).
int weekdayFrom(const QDate &d, int firstDay)
{
    const int sundayBased = d.dayOfWeek() % 7 + 1; // 1 = Sunday
    return (sundayBased - firstDay + 7) % 7 + 1;
}

int weekOfYear(const QDate &d, int firstDay, int firstWeek)
{
    const QDate jan1(d.year(), 1, 1);
    // The first day of week 1.
    QDate start = jan1.addDays(1 - weekdayFrom(jan1, firstDay));
    if (firstWeek == 3 && start < jan1) // vbFirstFullWeek
        start = start.addDays(7);
    else if (firstWeek == 2 && jan1.daysTo(start.addDays(7)) < 4) // vbFirstFourDays
        start = start.addDays(7);
    if (d < start) // belongs to the last week of the year before
        return weekOfYear(QDate(d.year() - 1, 12, 31), firstDay, firstWeek);
    return static_cast<int>(start.daysTo(d) / 7) + 1;
}

ScriptValue fnWeekday(Interpreter &, Args &a)
{
    const int firstDay = firstDayOfWeek(a, 1);
    if (a[0].isNull())
        return a[0];
    return ScriptValue::fromInteger(static_cast<std::int16_t>(weekdayFrom(dateOf(a[0]), firstDay)));
}

ScriptValue fnDatePart(Interpreter &, Args &a)
{
    const QString interval = str(a, 0).toLower();
    const int firstDay = firstDayOfWeek(a, 2);
    const int firstWeek = firstWeekOfYear(a, 3);
    if (a[1].isNull())
        return a[1];
    const ScriptValue date = dateFromText(a[1]);
    const QDate d = dateOf(date);
    const int secs = secondsOf(date);
    int r = 0;
    if (interval == QLatin1String("yyyy"))
        r = d.year();
    else if (interval == QLatin1String("q"))
        r = (d.month() - 1) / 3 + 1;
    else if (interval == QLatin1String("m"))
        r = d.month();
    else if (interval == QLatin1String("y"))
        r = d.dayOfYear();
    else if (interval == QLatin1String("d"))
        r = d.day();
    else if (interval == QLatin1String("w"))
        r = weekdayFrom(d, firstDay);
    else if (interval == QLatin1String("ww"))
        r = weekOfYear(d, firstDay, firstWeek);
    else if (interval == QLatin1String("h"))
        r = secs / 3600;
    else if (interval == QLatin1String("n"))
        r = secs / 60 % 60;
    else if (interval == QLatin1String("s"))
        r = secs % 60;
    else
        throw ScriptError(ErrNo::InvalidCall);
    return ScriptValue::fromInteger(static_cast<std::int16_t>(r));
}

ScriptValue fnMonthName(Interpreter &, Args &a)
{
    static const char *const names[] = {"January", "February", "March", "April", "May", "June", "July",
                                        "August", "September", "October", "November", "December"};
    const std::int32_t m = lng(a, 0);
    if (m < 1 || m > 12)
        throw ScriptError(ErrNo::InvalidCall);
    const QString name = QLatin1String(names[m - 1]);
    return s(given(a, 1) && a[1].toBool() ? name.left(3) : name);
}

ScriptValue fnWeekdayName(Interpreter &, Args &a)
{
    static const char *const names[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
    const std::int32_t w = lng(a, 0);
    const int firstDay = firstDayOfWeek(a, 2);
    if (w < 1 || w > 7)
        throw ScriptError(ErrNo::InvalidCall);
    const QString name = QLatin1String(names[(w - 1 + firstDay - 1) % 7]);
    return s(given(a, 1) && a[1].toBool() ? name.left(3) : name);
}

ScriptValue fnFormatDateTime(Interpreter &, Args &a)
{
    const std::int32_t named = lngOr(a, 1, 0);
    if (named < 0 || named > 4)
        throw ScriptError(ErrNo::InvalidCall);
    return s(namedDateFormat(dateArg(a[0]), static_cast<NamedDate>(named)));
}

// ---- colours ------------------------------------------------------------------------------

ScriptValue fnRGB(Interpreter &, Args &a)
{
    // Red in the low byte; parts above 255 count as 255.
    std::int32_t colour = 0;
    for (std::size_t i = 3; i-- > 0;) {
        const std::int32_t part = lng(a, i);
        if (part < 0)
            throw ScriptError(ErrNo::InvalidCall);
        colour = colour * 256 + std::min<std::int32_t>(part, 255);
    }
    return ScriptValue::fromLong(colour);
}

ScriptValue fnQBColor(Interpreter &, Args &a)
{
    static const std::int32_t colours[16] = {0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080,
                                             0x008080, 0xC0C0C0, 0x808080, 0xFF0000, 0x00FF00, 0xFFFF00,
                                             0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF};
    const std::int32_t n = lng(a, 0);
    if (n < 0 || n > 15)
        throw ScriptError(ErrNo::InvalidCall);
    return ScriptValue::fromLong(colours[n]);
}

// ---- financial ----------------------------------------------------------------------------
// Annuities: money paid out is negative, money received positive; type 1 pays at the start of
// each period, 0 at its end.

double num(const Args &a, std::size_t i)
{
    if (!given(a, i))
        throw ScriptError(ErrNo::ArgumentNotOptional);
    return a[i].toDouble();
}

double numOr(const Args &a, std::size_t i, double fallback)
{
    return given(a, i) ? a[i].toDouble() : fallback;
}

ScriptValue financial(double v)
{
    if (!std::isfinite(v))
        throw ScriptError(ErrNo::InvalidCall);
    return ScriptValue::fromDouble(v);
}

double annuityFV(double rate, double nper, double pmt, double pv, double type)
{
    if (rate == 0)
        return -(pv + pmt * nper);
    const double growth = std::pow(1 + rate, nper);
    return -(pv * growth + pmt * (1 + rate * type) * (growth - 1) / rate);
}

double annuityPmt(double rate, double nper, double pv, double fv, double type)
{
    if (nper == 0)
        throw ScriptError(ErrNo::InvalidCall);
    if (rate == 0)
        return -(pv + fv) / nper;
    const double growth = std::pow(1 + rate, nper);
    return -(fv + pv * growth) * rate / ((1 + rate * type) * (growth - 1));
}

// The interest part of payment per (1-based).
double annuityIPmt(double rate, double per, double nper, double pv, double fv, double type)
{
    if (per < 1 || per > nper)
        throw ScriptError(ErrNo::InvalidCall);
    if (type != 0 && per == 1)
        return 0;
    const double pmt = annuityPmt(rate, nper, pv, fv, type);
    const double interest = annuityFV(rate, per - 1, pmt, pv, type) * rate;
    return type != 0 ? interest / (1 + rate) : interest;
}

ScriptValue fnFV(Interpreter &, Args &a)
{
    return financial(annuityFV(num(a, 0), num(a, 1), num(a, 2), numOr(a, 3, 0), numOr(a, 4, 0)));
}

ScriptValue fnPV(Interpreter &, Args &a)
{
    const double rate = num(a, 0), nper = num(a, 1), pmt = num(a, 2), fv = numOr(a, 3, 0), type = numOr(a, 4, 0);
    if (rate == 0)
        return financial(-(fv + pmt * nper));
    const double growth = std::pow(1 + rate, nper);
    return financial(-(fv + pmt * (1 + rate * type) * (growth - 1) / rate) / growth);
}

ScriptValue fnPmt(Interpreter &, Args &a)
{
    return financial(annuityPmt(num(a, 0), num(a, 1), num(a, 2), numOr(a, 3, 0), numOr(a, 4, 0)));
}

ScriptValue fnNPer(Interpreter &, Args &a)
{
    const double rate = num(a, 0), pmt = num(a, 1), pv = num(a, 2), fv = numOr(a, 3, 0), type = numOr(a, 4, 0);
    if (rate == 0) {
        if (pmt == 0)
            throw ScriptError(ErrNo::InvalidCall);
        return financial(-(pv + fv) / pmt);
    }
    const double due = pmt * (1 + rate * type);
    const double ratio = (due - fv * rate) / (due + pv * rate);
    if (ratio <= 0 || rate <= -1)
        throw ScriptError(ErrNo::InvalidCall);
    return financial(std::log(ratio) / std::log(1 + rate));
}

ScriptValue fnIPmt(Interpreter &, Args &a)
{
    return financial(annuityIPmt(num(a, 0), num(a, 1), num(a, 2), num(a, 3), numOr(a, 4, 0), numOr(a, 5, 0)));
}

ScriptValue fnPPmt(Interpreter &, Args &a)
{
    const double rate = num(a, 0), per = num(a, 1), nper = num(a, 2), pv = num(a, 3), fv = numOr(a, 4, 0),
                 type = numOr(a, 5, 0);
    const double interest = annuityIPmt(rate, per, nper, pv, fv, type);
    return financial(annuityPmt(rate, nper, pv, fv, type) - interest);
}

// Newton's method from guess; VBA gives up with 5 after 20 tries.
template<typename F>
double solveRate(double guess, F presentValue)
{
    double rate = guess;
    for (int attempt = 0; attempt < 20; ++attempt) {
        const double h = 1e-7;
        const double value = presentValue(rate);
        if (std::fabs(value) < 1e-7)
            return rate;
        const double slope = (presentValue(rate + h) - value) / h;
        if (slope == 0 || !std::isfinite(slope))
            break;
        rate -= value / slope;
        if (!std::isfinite(rate) || rate <= -1)
            break;
    }
    throw ScriptError(ErrNo::InvalidCall);
}

ScriptValue fnRate(Interpreter &, Args &a)
{
    const double nper = num(a, 0), pmt = num(a, 1), pv = num(a, 2), fv = numOr(a, 3, 0), type = numOr(a, 4, 0);
    if (nper <= 0)
        throw ScriptError(ErrNo::InvalidCall);
    return financial(solveRate(numOr(a, 5, 0.1), [&](double r) { return annuityFV(r, nper, pmt, pv, type) - fv; }));
}

// The numbers of an array argument of NPV, IRR and MIRR.
std::vector<double> cashFlows(const ScriptValue &v)
{
    if (!v.isArray() || !v.array())
        throw ScriptError(ErrNo::TypeMismatch);
    std::vector<double> flows;
    flows.reserve(v.array()->items.size());
    for (const ScriptValue &item : v.array()->items)
        flows.push_back(item.toDouble());
    return flows;
}

double netPresentValue(double rate, const std::vector<double> &flows)
{
    double sum = 0;
    for (std::size_t i = 0; i < flows.size(); ++i)
        sum += flows[i] / std::pow(1 + rate, static_cast<double>(i + 1));
    return sum;
}

// A series to value needs a payment and a receipt.
void requireBothSigns(const std::vector<double> &flows)
{
    const bool paid = std::any_of(flows.begin(), flows.end(), [](double f) { return f < 0; });
    const bool received = std::any_of(flows.begin(), flows.end(), [](double f) { return f > 0; });
    if (!paid || !received)
        throw ScriptError(ErrNo::InvalidCall);
}

ScriptValue fnNPV(Interpreter &, Args &a)
{
    const double rate = num(a, 0);
    if (rate == -1)
        throw ScriptError(ErrNo::InvalidCall);
    const std::vector<double> flows = cashFlows(a[1]);
    requireBothSigns(flows);
    return financial(netPresentValue(rate, flows));
}

ScriptValue fnIRR(Interpreter &, Args &a)
{
    const std::vector<double> flows = cashFlows(a[0]);
    requireBothSigns(flows);
    return financial(solveRate(numOr(a, 1, 0.1), [&flows](double r) { return netPresentValue(r, flows); }));
}

ScriptValue fnMIRR(Interpreter &, Args &a)
{
    const std::vector<double> flows = cashFlows(a[0]);
    requireBothSigns(flows);
    const double financeRate = num(a, 1), reinvestRate = num(a, 2);
    if (financeRate == -1 || reinvestRate == -1)
        throw ScriptError(ErrNo::InvalidCall);
    std::vector<double> paid, received;
    for (const double f : flows) {
        paid.push_back(f < 0 ? f : 0);
        received.push_back(f > 0 ? f : 0);
    }
    const auto n = static_cast<double>(flows.size());
    const double gains = -netPresentValue(reinvestRate, received) * std::pow(1 + reinvestRate, n);
    const double costs = netPresentValue(financeRate, paid) * (1 + financeRate);
    return financial(std::pow(gains / costs, 1 / (n - 1)) - 1);
}

ScriptValue fnSLN(Interpreter &, Args &a)
{
    const double life = num(a, 2);
    if (life == 0)
        throw ScriptError(ErrNo::InvalidCall);
    return financial((num(a, 0) - num(a, 1)) / life);
}

ScriptValue fnSYD(Interpreter &, Args &a)
{
    const double cost = num(a, 0), salvage = num(a, 1), life = num(a, 2), period = num(a, 3);
    if (life <= 0 || period <= 0 || period > life || salvage < 0)
        throw ScriptError(ErrNo::InvalidCall);
    return financial((cost - salvage) * (life - period + 1) * 2 / (life * (life + 1)));
}

// ---- ranges -------------------------------------------------------------------------------

ScriptValue fnPartition(Interpreter &, Args &a)
{
    for (std::size_t i = 0; i < 4; ++i) {
        if (a[i].isNull())
            return a[i];
    }
    const std::int64_t number = lng(a, 0);
    const std::int64_t start = lng(a, 1);
    const std::int64_t stop = lng(a, 2);
    const std::int64_t interval = lng(a, 3);
    if (start < 0 || stop <= start || interval < 1)
        throw ScriptError(ErrNo::InvalidCall);
    // Both ends padded to the width of stop plus one, so that the texts sort as the ranges do.
    const int width = static_cast<int>(QString::number(stop).size()) + 1;
    const auto end = [width](std::optional<std::int64_t> v) {
        return v ? QStringLiteral("%1").arg(*v, width) : QString(width, QLatin1Char(' '));
    };
    std::optional<std::int64_t> lower;
    std::optional<std::int64_t> upper;
    if (interval == 1) {
        lower = upper = number;
    } else if (number < start) {
        upper = start - 1;
    } else if (number > stop) {
        lower = stop + 1;
    } else {
        lower = start + (number - start) / interval * interval;
        upper = std::min(*lower + interval - 1, stop);
    }
    return s(end(lower) + QLatin1Char(':') + end(upper));
}

// ---- byte strings -------------------------------------------------------------------------

ScriptValue fnAscB(Interpreter &, Args &a)
{
    str(a, 0); // 94 for Null
    const QByteArray bytes = a[0].toBytes();
    if (bytes.isEmpty())
        throw ScriptError(ErrNo::InvalidCall);
    return ScriptValue::fromInteger(static_cast<std::int16_t>(static_cast<unsigned char>(bytes.at(0))));
}

ScriptValue fnChrB(Interpreter &, Args &a)
{
    const std::int32_t c = lng(a, 0);
    if (c < 0 || c > 255)
        throw ScriptError(ErrNo::InvalidCall);
    return ScriptValue::fromBytes(QByteArray(1, static_cast<char>(c)));
}

// LeftB, RightB and MidB count bytes of the string as it is held (two to a character).
ScriptValue bytePart(Args &a, std::int32_t start, std::int32_t length)
{
    return ScriptValue::fromBytes(a[0].toBytes().mid(start, length));
}

ScriptValue fnLeftB(Interpreter &, Args &a)
{
    const std::int32_t n = lng(a, 1);
    if (n < 0)
        throw ScriptError(ErrNo::InvalidCall);
    return a[0].isNull() ? a[0] : bytePart(a, 0, n);
}

ScriptValue fnRightB(Interpreter &, Args &a)
{
    const std::int32_t n = lng(a, 1);
    if (n < 0)
        throw ScriptError(ErrNo::InvalidCall);
    if (a[0].isNull())
        return a[0];
    const auto size = static_cast<std::int32_t>(a[0].byteLength());
    return bytePart(a, std::max(0, size - n), n);
}

ScriptValue fnMidB(Interpreter &, Args &a)
{
    const std::int32_t start = lng(a, 1);
    const std::int32_t n = lngOr(a, 2, -1);
    if (start < 1 || (given(a, 2) && n < 0))
        throw ScriptError(ErrNo::InvalidCall);
    return a[0].isNull() ? a[0] : bytePart(a, start - 1, n);
}

ScriptValue fnInStrB(Interpreter &, Args &a)
{
    // InStrB([start,] text, find): byte positions, binary comparison.
    const auto [first, start] = leadingStart(a);
    if (a[first].isNull() || a[first + 1].isNull())
        return ScriptValue::null();
    const QByteArray text = a[first].toBytes();
    const QByteArray find = a[first + 1].toBytes();
    if (start > text.size() + 1)
        return ScriptValue::fromLong(0);
    if (find.isEmpty())
        return ScriptValue::fromLong(start);
    return ScriptValue::fromLong(static_cast<std::int32_t>(text.indexOf(find, start - 1) + 1));
}

// ---- more text ----------------------------------------------------------------------------

ScriptValue fnStrConv(Interpreter &, Args &a)
{
    const QString t = a[0].isArray() ? QString() : str(a, 0);
    const std::int32_t how = lng(a, 1);
    switch (how) {
    case 1:
        return s(t.toUpper());
    case 2:
        return s(t.toLower());
    case 3: {
        // Proper case: the first letter of every word up, the rest down.
        QString out = t.toLower();
        bool wordStart = true;
        for (QChar &c : out) {
            if (wordStart && c.isLetter())
                c = c.toUpper();
            wordStart = c.isSpace() || c == QChar(0);
        }
        return s(out);
    }
    case 128:
        // Unicode to the 8-bit code page: a byte string, as long in bytes as the text in characters.
        return ScriptValue::fromBytes(encodeWindows1252(t));
    case 64: {
        // The bytes of the string, or of a Byte array, read as 8-bit code page text.
        QByteArray bytes;
        if (a[0].isArray()) {
            for (const ScriptValue &item : a[0].array()->items)
                bytes += static_cast<char>(item.toLong() & 0xFF);
        } else {
            bytes = a[0].toBytes();
        }
        return s(decodeWindows1252(bytes));
    }
    default:
        throw ScriptError(ErrNo::InvalidCall);
    }
}

ScriptValue fnStr(Interpreter &, Args &a)
{
    if (a[0].isNull())
        return a[0];
    if (!a[0].isNumeric() && !a[0].isString())
        throw ScriptError(ErrNo::TypeMismatch);
    const ScriptValue n = a[0].isString() ? ScriptValue::fromDouble(a[0].toDouble()) : a[0];
    return s(strOfNumber(n.type() == ValueType::Boolean ? QString::number(n.toLong()) : n.toString()));
}

ScriptValue fnOct(Interpreter &, Args &a) { return inBase(a[0], 8); }

ScriptValue fnLenB(Interpreter &, Args &a)
{
    if (a[0].isNull())
        return a[0];
    return ScriptValue::fromLong(static_cast<std::int32_t>(a[0].byteLength()));
}

ScriptValue fnChoose(Interpreter &, Args &a)
{
    const double index = a[0].toDouble();
    const auto i = static_cast<std::int64_t>(std::nearbyint(index));
    if (i < 1 || i >= static_cast<std::int64_t>(a.size()))
        return ScriptValue::null();
    return a[static_cast<std::size_t>(i)];
}

ScriptValue fnSwitch(Interpreter &, Args &a)
{
    if (a.size() % 2 != 0)
        throw ScriptError(ErrNo::InvalidCall);
    for (std::size_t i = 0; i < a.size(); i += 2) {
        if (!a[i].isNull() && a[i].toBool())
            return a[i + 1];
    }
    return ScriptValue::null();
}

// ---- more numbers -------------------------------------------------------------------------

ScriptValue checkedNumber(double v)
{
    if (std::isnan(v) || std::isinf(v))
        throw ScriptError(ErrNo::Overflow);
    return ScriptValue::fromDouble(v);
}

ScriptValue fnLog(Interpreter &, Args &a)
{
    const double v = a[0].toDouble();
    if (v <= 0)
        throw ScriptError(ErrNo::InvalidCall);
    return ScriptValue::fromDouble(std::log(v));
}
ScriptValue fnExp(Interpreter &, Args &a) { return checkedNumber(std::exp(a[0].toDouble())); }
ScriptValue fnSin(Interpreter &, Args &a) { return ScriptValue::fromDouble(std::sin(a[0].toDouble())); }
ScriptValue fnCos(Interpreter &, Args &a) { return ScriptValue::fromDouble(std::cos(a[0].toDouble())); }
ScriptValue fnTan(Interpreter &, Args &a) { return checkedNumber(std::tan(a[0].toDouble())); }
ScriptValue fnAtn(Interpreter &, Args &a) { return ScriptValue::fromDouble(std::atan(a[0].toDouble())); }

ScriptValue fnRnd(Interpreter &in, Args &a)
{
    return ScriptValue::fromDouble(in.random().next(given(a, 0) ? std::optional(a[0].toDouble()) : std::nullopt));
}

ScriptValue fnRandomize(Interpreter &in, Args &a)
{
    if (given(a, 0)) {
        in.random().seed(a[0].toDouble());
    } else {
        const double n = in.now();
        in.random().seed((n - std::floor(n)) * 86400.0);
    }
    return {};
}

// Currency keeps four decimals, rounded half to even as VBA's conversions do.
ScriptValue fnCCur(Interpreter &, Args &a) { return ScriptValue::fromCurrency(a[0].toCurrency()); }

ScriptValue fnCDec(Interpreter &, Args &a) { return ScriptValue::fromDecimal(a[0].toDecimal()); }

ScriptValue formatStyled(Args &a, NumberStyle style)
{
    if (a[0].isNull())
        return s(QString());
    const int decimals = lngOr(a, 1, -1);
    const auto flag = [&a](std::size_t i, bool fallback) {
        const int v = lngOr(a, i, -2); // vbUseDefault
        return v == -2 ? fallback : v != 0;
    };
    return s(formatNumberStyle(a[0].toDouble(), style, decimals < 0 ? 2 : decimals, flag(2, true),
                               flag(3, style == NumberStyle::Currency), flag(4, true)));
}
ScriptValue fnFormatNumber(Interpreter &, Args &a) { return formatStyled(a, NumberStyle::Number); }
ScriptValue fnFormatCurrency(Interpreter &, Args &a) { return formatStyled(a, NumberStyle::Currency); }
ScriptValue fnFormatPercent(Interpreter &, Args &a) { return formatStyled(a, NumberStyle::Percent); }

// ---- errors -------------------------------------------------------------------------------

ScriptValue fnIsError(Interpreter &, Args &a) { return ScriptValue::fromBool(a[0].type() == ValueType::Error && !a[0].isMissing()); }

ScriptValue fnCVErr(Interpreter &, Args &a) { return ScriptValue::fromError(lng(a, 0)); }

ScriptValue fnError(Interpreter &in, Args &a)
{
    if (!given(a, 0))
        return s(in.err().description());
    const std::int32_t n = lng(a, 0);
    if (n < 0 || n > 65535)
        throw ScriptError(ErrNo::InvalidCall);
    if (n == 0)
        return s(QString());
    const QString text = ScriptError::standardDescription(n);
    return s(text.isEmpty() ? QStringLiteral("Application-defined or object-defined error") : text);
}

// ---- more files ---------------------------------------------------------------------------

ScriptValue fnLOF(Interpreter &in, Args &a) { return ScriptValue::fromLong(static_cast<std::int32_t>(in.files().length(lng(a, 0)))); }

ScriptValue fnCurDir(Interpreter &, Args &) { return s(QDir::toNativeSeparators(QDir::currentPath())); }

ScriptValue fnGetAttr(Interpreter &in, Args &a)
{
    const QFileInfo info(in.resolvePath(str(a, 0)));
    if (!info.exists())
        throw ScriptError(ErrNo::FileNotFound);
    int attributes = info.isDir() ? 16 : 32; // vbDirectory, vbArchive
    if (!(info.permissions() & QFile::WriteOwner))
        attributes |= 1; // vbReadOnly
    if (info.isHidden())
        attributes |= 2;
    return ScriptValue::fromInteger(static_cast<std::int16_t>(attributes));
}

ScriptValue fnSetAttr(Interpreter &in, Args &a)
{
    const QString path = in.resolvePath(str(a, 0));
    const std::int32_t attributes = lng(a, 1);
    if (!QFileInfo::exists(path))
        throw ScriptError(ErrNo::FileNotFound);
    if (in.files().isPathOpen(path))
        throw ScriptError(ErrNo::PathFileAccess);
    // Only the read-only flag has a counterpart here.
    QFile::Permissions p = QFile::permissions(path);
    const QFile::Permissions write = QFile::WriteOwner | QFile::WriteUser;
    p = (attributes & 1) ? (p & ~write) : (p | write);
    QFile::setPermissions(path, p);
    return {};
}

// ---- objects ------------------------------------------------------------------------------

ScriptValue fnCallByName(Interpreter &, Args &a)
{
    if (!a[0].isObject() && !a[0].isRecord())
        throw ScriptError(ErrNo::ObjectRequired);
    if (!a[0].object())
        throw ScriptError(ErrNo::ObjectVariableNotSet);
    const QString member = str(a, 1);
    CallKind kind = CallKind::Call;
    switch (lng(a, 2)) {
    case 1: kind = CallKind::Call; break; // vbMethod
    case 2: kind = CallKind::Get; break;  // vbGet
    case 4: kind = CallKind::Let; break;  // vbLet
    case 8: kind = CallKind::Set; break;  // vbSet
    default: throw ScriptError(ErrNo::InvalidCall);
    }
    ScriptArgs args;
    for (std::size_t i = 3; i < a.size(); ++i)
        args.push_back(&a[i]);
    // A method's result comes back too: CallByName(c, "Item", vbMethod, 1).
    return a[0].object()->invoke(member, kind == CallKind::Call ? CallKind::Get : kind, args);
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
// The stand-in has no loudspeaker, and Mecadra starts no macro with arguments of its own.
ScriptValue fnBeep(Interpreter &, Args &) { return {}; }
ScriptValue fnCommand(Interpreter &, Args &) { return s(QString()); }
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
        {QStringLiteral("csng"), {fnCSng, 1, 1}},
        {QStringLiteral("cbool"), {fnCBool, 1, 1}},
        {QStringLiteral("cstr"), {fnCStr, 1, 1}},
        {QStringLiteral("cvar"), {fnCVar, 1, 1}},
        {QStringLiteral("cbyte"), {fnCByte, 1, 1}},
        {QStringLiteral("iif"), {fnIIf, 3, 3}},
        {QStringLiteral("cdate"), {fnCDate, 1, 1}},
        {QStringLiteral("cvdate"), {fnCDate, 1, 1}},
        {QStringLiteral("rgb"), {fnRGB, 3, 3}},
        {QStringLiteral("partition"), {fnPartition, 4, 4}},
        {QStringLiteral("fv"), {fnFV, 3, 5}},
        {QStringLiteral("pv"), {fnPV, 3, 5}},
        {QStringLiteral("pmt"), {fnPmt, 3, 5}},
        {QStringLiteral("nper"), {fnNPer, 3, 5}},
        {QStringLiteral("ipmt"), {fnIPmt, 4, 6}},
        {QStringLiteral("ppmt"), {fnPPmt, 4, 6}},
        {QStringLiteral("rate"), {fnRate, 3, 6}},
        {QStringLiteral("npv"), {fnNPV, 2, 2}},
        {QStringLiteral("irr"), {fnIRR, 1, 2}},
        {QStringLiteral("mirr"), {fnMIRR, 3, 3}},
        {QStringLiteral("sln"), {fnSLN, 3, 3}},
        {QStringLiteral("syd"), {fnSYD, 4, 4}},
        {QStringLiteral("ascb"), {fnAscB, 1, 1}},
        {QStringLiteral("chrb"), {fnChrB, 1, 1}},
        {QStringLiteral("leftb"), {fnLeftB, 2, 2}},
        {QStringLiteral("rightb"), {fnRightB, 2, 2}},
        {QStringLiteral("midb"), {fnMidB, 2, 3}},
        {QStringLiteral("instrb"), {fnInStrB, 2, 4}},
        {QStringLiteral("beep"), {fnBeep, 0, 0}},
        {QStringLiteral("command"), {fnCommand, 0, 0}},
        {QStringLiteral("qbcolor"), {fnQBColor, 1, 1}},
        {QStringLiteral("formatdatetime"), {fnFormatDateTime, 1, 2}},
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
        {QStringLiteral("year"), {datePartOrNull<yearOf>, 1, 1}},
        {QStringLiteral("month"), {datePartOrNull<monthOf>, 1, 1}},
        {QStringLiteral("day"), {datePartOrNull<dayOf>, 1, 1}},
        {QStringLiteral("hour"), {datePartOrNull<hourOf>, 1, 1}},
        {QStringLiteral("minute"), {datePartOrNull<minuteOf>, 1, 1}},
        {QStringLiteral("second"), {datePartOrNull<secondOf>, 1, 1}},
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
        {QStringLiteral("timeserial"), {fnTimeSerial, 3, 3}},
        {QStringLiteral("datevalue"), {fnDateValue, 1, 1}},
        {QStringLiteral("timevalue"), {fnTimeValue, 1, 1}},
        {QStringLiteral("datepart"), {fnDatePart, 2, 4}},
        {QStringLiteral("monthname"), {fnMonthName, 1, 2}},
        {QStringLiteral("weekdayname"), {fnWeekdayName, 1, 3}},
        {QStringLiteral("strconv"), {fnStrConv, 2, 3}},
        {QStringLiteral("str"), {fnStr, 1, 1}},
        {QStringLiteral("oct"), {fnOct, 1, 1}},
        {QStringLiteral("lenb"), {fnLenB, 1, 1}},
        {QStringLiteral("choose"), {fnChoose, 2, -1}},
        {QStringLiteral("switch"), {fnSwitch, 0, -1}},
        {QStringLiteral("log"), {fnLog, 1, 1}},
        {QStringLiteral("exp"), {fnExp, 1, 1}},
        {QStringLiteral("sin"), {fnSin, 1, 1}},
        {QStringLiteral("cos"), {fnCos, 1, 1}},
        {QStringLiteral("tan"), {fnTan, 1, 1}},
        {QStringLiteral("atn"), {fnAtn, 1, 1}},
        {QStringLiteral("rnd"), {fnRnd, 0, 1}},
        {QStringLiteral("randomize"), {fnRandomize, 0, 1}},
        {QStringLiteral("ccur"), {fnCCur, 1, 1}},
        {QStringLiteral("cdec"), {fnCDec, 1, 1}},
        {QStringLiteral("formatnumber"), {fnFormatNumber, 1, 5}},
        {QStringLiteral("formatcurrency"), {fnFormatCurrency, 1, 5}},
        {QStringLiteral("formatpercent"), {fnFormatPercent, 1, 5}},
        {QStringLiteral("iserror"), {fnIsError, 1, 1}},
        {QStringLiteral("cverr"), {fnCVErr, 1, 1}},
        {QStringLiteral("error"), {fnError, 0, 1}},
        {QStringLiteral("lof"), {fnLOF, 1, 1}},
        {QStringLiteral("curdir"), {fnCurDir, 0, 1}},
        {QStringLiteral("getattr"), {fnGetAttr, 1, 1}},
        {QStringLiteral("setattr"), {fnSetAttr, 2, 2}},
        {QStringLiteral("callbyname"), {fnCallByName, 3, -1}},
    };
    return t;
}

} // namespace

const QStringList &builtinParameterNames(const QString &lowerName)
{
    // The names VBA gives the parameters, for calls with named arguments.
    static const QHash<QString, QStringList> names = {
        {QStringLiteral("instr"), {"start", "string1", "string2", "compare"}},
        {QStringLiteral("instrrev"), {"stringcheck", "stringmatch", "start", "compare"}},
        {QStringLiteral("replace"), {"expression", "find", "replace", "start", "count", "compare"}},
        {QStringLiteral("split"), {"expression", "delimiter", "limit", "compare"}},
        {QStringLiteral("join"), {"sourcearray", "delimiter"}},
        {QStringLiteral("filter"), {"sourcearray", "match", "include", "compare"}},
        {QStringLiteral("strcomp"), {"string1", "string2", "compare"}},
        {QStringLiteral("strconv"), {"string", "conversion", "lcid"}},
        {QStringLiteral("mid"), {"string", "start", "length"}},
        {QStringLiteral("left"), {"string", "length"}},
        {QStringLiteral("right"), {"string", "length"}},
        {QStringLiteral("msgbox"), {"prompt", "buttons", "title", "helpfile", "context"}},
        {QStringLiteral("inputbox"), {"prompt", "title", "default", "xpos", "ypos", "helpfile", "context"}},
        {QStringLiteral("dateadd"), {"interval", "number", "date"}},
        {QStringLiteral("datediff"), {"interval", "date1", "date2", "firstdayofweek", "firstweekofyear"}},
        {QStringLiteral("datepart"), {"interval", "date", "firstdayofweek", "firstweekofyear"}},
        {QStringLiteral("weekday"), {"date", "firstdayofweek"}},
        {QStringLiteral("weekdayname"), {"weekday", "abbreviate", "firstdayofweek"}},
        {QStringLiteral("formatdatetime"), {"date", "namedformat"}},
        {QStringLiteral("rgb"), {"red", "green", "blue"}},
        {QStringLiteral("dateserial"), {"year", "month", "day"}},
        {QStringLiteral("monthname"), {"month", "abbreviate"}},
        {QStringLiteral("format"), {"expression", "format", "firstdayofweek", "firstweekofyear"}},
        {QStringLiteral("formatnumber"), {"expression", "numdigitsafterdecimal", "includeleadingdigit", "useparensfornegativenumbers", "groupdigits"}},
        {QStringLiteral("formatcurrency"), {"expression", "numdigitsafterdecimal", "includeleadingdigit", "useparensfornegativenumbers", "groupdigits"}},
        {QStringLiteral("formatpercent"), {"expression", "numdigitsafterdecimal", "includeleadingdigit", "useparensfornegativenumbers", "groupdigits"}},
        {QStringLiteral("round"), {"number", "numdigitsafterdecimal"}},
        {QStringLiteral("dir"), {"pathname", "attributes"}},
        {QStringLiteral("callbyname"), {"object", "procname", "calltype", "args"}},
        {QStringLiteral("string"), {"number", "character"}},
        {QStringLiteral("space"), {"number"}},
        {QStringLiteral("iif"), {"expression", "truepart", "falsepart"}},
    };
    static const QStringList none;
    const auto it = names.constFind(lowerName);
    return it == names.constEnd() ? none : *it;
}

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
        if (win.isEmpty() || !WindowsPath::isRooted(win))
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
        return ScriptValue::fromLong(WindowsPath::isRooted(p) ? 0 : 1);
    }
    if (entry == QLatin1String("sleep"))
        return {};
    throw ScriptError(ErrNo::DllEntryNotFound, QStringLiteral("Can't find DLL entry point %1 in %2").arg(declare.alias.isEmpty() ? declare.name : declare.alias, declare.lib));
}

} // namespace cadsim
