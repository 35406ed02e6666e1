#include "cadsim/engine/value.h"

#include "cadsim/engine/record.h"
#include "cadsim/engine/scriptobject.h"

#include <QDate>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace cadsim {

namespace {

double roundHalfEven(double v)
{
    return std::nearbyint(v); // default rounding mode rounds halves to even, as VBA does
}

[[noreturn]] void typeMismatch()
{
    throw ScriptError(ErrNo::TypeMismatch);
}

[[noreturn]] void invalidNull()
{
    throw ScriptError(94);
}

} // namespace

bool parseVbNumber(const QString &text, double *out)
{
    const QString t = text.trimmed();
    if (t.isEmpty())
        return false;
    if (t.startsWith(QLatin1String("&H"), Qt::CaseInsensitive) || t.startsWith(QLatin1String("&O"), Qt::CaseInsensitive)) {
        bool ok = false;
        const qlonglong v = t.mid(2).toLongLong(&ok, t.at(1).toUpper() == QLatin1Char('H') ? 16 : 8);
        if (!ok)
            return false;
        *out = static_cast<double>(v <= 0xFFFF && t.size() <= 6 ? static_cast<std::int16_t>(v)
                                                                  : static_cast<std::int32_t>(v));
        return true;
    }
    // Only plain decimal notation: no "inf", "nan" or hexadecimal floats.
    for (const QChar c : t) {
        if (!(c.isDigit() || c == QLatin1Char('.') || c == QLatin1Char('-') || c == QLatin1Char('+')
              || c == QLatin1Char('e') || c == QLatin1Char('E') || c == QLatin1Char(',')))
            return false;
    }
    QString plain = t;
    plain.remove(QLatin1Char(','));
    bool ok = false;
    const double v = plain.toDouble(&ok);
    if (!ok)
        return false;
    *out = v;
    return true;
}

ScriptValue toByte(const ScriptValue &v)
{
    const std::int32_t n = v.toLong();
    if (n < 0 || n > 255)
        throw ScriptError(ErrNo::Overflow);
    return ScriptValue::fromByte(static_cast<std::uint8_t>(n));
}

double oleDateFromParts(int year, int month, int day, int hour, int minute, int second)
{
    const QDate base(1899, 12, 30);
    const double days = static_cast<double>(base.daysTo(QDate(year, month, day)));
    const double frac = (hour * 3600.0 + minute * 60.0 + second) / 86400.0;
    return days >= 0 ? days + frac : days - frac;
}

namespace {

// The whole days and the seconds of the day of an OLE date, the seconds rounded.
void splitOleDate(double oleDate, double *days, int *secs)
{
    *days = std::trunc(oleDate);
    *secs = static_cast<int>(std::lround(std::fabs(oleDate - *days) * 86400.0));
    if (*secs >= 86400) {
        *secs -= 86400;
        *days += oleDate < 0 ? -1 : 1;
    }
}

} // namespace

QString formatOleShortDate(double oleDate)
{
    double days = 0;
    int secs = 0;
    splitOleDate(oleDate, &days, &secs);
    const QDate date = QDate(1899, 12, 30).addDays(static_cast<qint64>(days));
    return QStringLiteral("%1/%2/%3").arg(date.month()).arg(date.day()).arg(date.year());
}

QString formatOleLongTime(double oleDate)
{
    double days = 0;
    int secs = 0;
    splitOleDate(oleDate, &days, &secs);
    const int h = secs / 3600;
    return QStringLiteral("%1:%2:%3 %4")
        .arg(h % 12 == 0 ? 12 : h % 12)
        .arg((secs / 60) % 60, 2, 10, QLatin1Char('0'))
        .arg(secs % 60, 2, 10, QLatin1Char('0'))
        .arg(h < 12 ? QStringLiteral("AM") : QStringLiteral("PM"));
}

QString formatOleDate(double oleDate)
{
    double days = 0;
    int secs = 0;
    splitOleDate(oleDate, &days, &secs);
    if (days == 0 && secs != 0)
        return formatOleLongTime(oleDate);
    if (secs == 0)
        return formatOleShortDate(oleDate);
    return formatOleShortDate(oleDate) + QLatin1Char(' ') + formatOleLongTime(oleDate);
}

ScriptValue ScriptValue::null()
{
    ScriptValue v;
    v.m_type = ValueType::Null;
    return v;
}

ScriptValue ScriptValue::fromBool(bool b)
{
    ScriptValue v;
    v.m_type = ValueType::Boolean;
    v.m_int = b ? -1 : 0;
    return v;
}

ScriptValue ScriptValue::fromInteger(std::int16_t i)
{
    ScriptValue v;
    v.m_type = ValueType::Integer;
    v.m_int = i;
    return v;
}

ScriptValue ScriptValue::fromLong(std::int32_t i)
{
    ScriptValue v;
    v.m_type = ValueType::Long;
    v.m_int = i;
    return v;
}

ScriptValue ScriptValue::fromByte(std::uint8_t i)
{
    ScriptValue v;
    v.m_type = ValueType::Byte;
    v.m_int = i;
    return v;
}

ScriptValue ScriptValue::ofFloatingType(ValueType type, double d)
{
    ScriptValue v;
    v.m_type = type;
    v.m_double = d;
    return v;
}

ScriptValue ScriptValue::fromDouble(double d)
{
    return ofFloatingType(ValueType::Double, d);
}

ScriptValue ScriptValue::fromSingle(double d)
{
    if (std::isfinite(d) && std::fabs(d) > std::numeric_limits<float>::max())
        throw ScriptError(ErrNo::Overflow);
    return ofFloatingType(ValueType::Single, static_cast<float>(d));
}

ScriptValue ScriptValue::fromCurrency(std::int64_t scaled)
{
    ScriptValue v;
    v.m_type = ValueType::Currency;
    v.m_currency = scaled;
    return v;
}

ScriptValue ScriptValue::fromDecimal(double d)
{
    return fromDecimal(Decimal::fromDouble(d));
}

ScriptValue ScriptValue::fromDecimal(const Decimal &d)
{
    ScriptValue v;
    v.m_type = ValueType::Decimal;
    v.m_decimalScale = static_cast<std::uint8_t>(d.scale());
    v.m_decimalNegative = d.isNegative();
    v.m_int = static_cast<std::int32_t>(d.high());
    v.m_decimalLow = d.low();
    return v;
}

Decimal ScriptValue::toDecimal() const
{
    switch (m_type) {
    case ValueType::Decimal:
        return Decimal::fromParts(m_decimalLow, static_cast<std::uint32_t>(m_int), m_decimalScale, m_decimalNegative);
    case ValueType::Empty:
        return Decimal();
    case ValueType::Boolean:
    case ValueType::Byte:
    case ValueType::Integer:
    case ValueType::Long:
        return Decimal::fromInt64(m_int);
    case ValueType::Currency:
        return Decimal::fromScaled(m_currency, 4);
    case ValueType::Single:
        return Decimal::fromDouble(m_double, 7);
    case ValueType::String:
        if (const std::optional<Decimal> d = Decimal::parse(m_string))
            return *d;
        return Decimal::fromDouble(toDouble()); // raises 13 for text that is no number
    default:
        return Decimal::fromDouble(toDouble());
    }
}

ScriptValue ScriptValue::fromDate(double oleDate)
{
    return ofFloatingType(ValueType::Date, oleDate);
}

ScriptValue ScriptValue::fromString(const QString &s)
{
    ScriptValue v;
    v.m_type = ValueType::String;
    v.m_string = s;
    return v;
}

ScriptValue ScriptValue::fromBytes(const QByteArray &bytes)
{
    std::u16string units(static_cast<std::size_t>(bytes.size() / 2 + bytes.size() % 2), u'\0');
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned>(static_cast<unsigned char>(bytes.at(i)));
        units[static_cast<std::size_t>(i / 2)] |= static_cast<char16_t>(i % 2 ? byte << 8 : byte);
    }
    ScriptValue v = fromString(QString::fromStdU16String(units));
    v.m_int = static_cast<std::int32_t>(bytes.size() % 2);
    return v;
}

QByteArray ScriptValue::toBytes() const
{
    const QString text = toString();
    QByteArray bytes;
    bytes.reserve(text.size() * 2);
    for (const QChar c : text) {
        bytes += static_cast<char>(c.unicode() & 0xFF);
        bytes += static_cast<char>(c.unicode() >> 8);
    }
    if (m_type == ValueType::String && m_int == 1)
        bytes.chop(1);
    return bytes;
}

qsizetype ScriptValue::byteLength() const
{
    return toString().size() * 2 - (m_type == ValueType::String && m_int == 1 ? 1 : 0);
}

ScriptValue ScriptValue::fromObject(std::shared_ptr<ScriptObject> o)
{
    ScriptValue v;
    v.m_type = ValueType::Object;
    v.m_object = std::move(o);
    return v;
}

ScriptValue ScriptValue::fromArray(std::shared_ptr<ScriptArray> a)
{
    ScriptValue v;
    v.m_type = ValueType::Array;
    v.m_array = std::move(a);
    return v;
}

ScriptValue ScriptValue::fromError(std::int32_t code)
{
    ScriptValue v;
    v.m_type = ValueType::Error;
    v.m_int = code;
    return v;
}

ScriptValue ScriptValue::missing()
{
    return fromError(kMissing);
}

ScriptValue ScriptValue::fromNumber(double d)
{
    if (d == std::trunc(d) && std::fabs(d) <= 2147483647.0) {
        if (d >= -32768 && d <= 32767)
            return fromInteger(static_cast<std::int16_t>(d));
        return fromLong(static_cast<std::int32_t>(d));
    }
    return fromDouble(d);
}

ScriptValue ScriptValue::fromList(const std::vector<ScriptValue> &items)
{
    auto a = ScriptArray::create({{0, static_cast<std::int32_t>(items.size()) - 1}});
    a->items = items;
    return fromArray(a);
}

ScriptValue ScriptValue::fromStringList(const QStringList &items)
{
    std::vector<ScriptValue> values;
    values.reserve(items.size());
    for (const QString &s : items)
        values.push_back(fromString(s));
    return fromList(values);
}

bool ScriptValue::isNumeric() const
{
    switch (m_type) {
    case ValueType::Empty:
    case ValueType::Byte:
    case ValueType::Integer:
    case ValueType::Long:
    case ValueType::Single:
    case ValueType::Double:
    case ValueType::Currency:
    case ValueType::Decimal:
    case ValueType::Boolean:
    case ValueType::Date:
        return true;
    default:
        return false;
    }
}

bool ScriptValue::toBool() const
{
    switch (m_type) {
    case ValueType::Empty:
        return false;
    case ValueType::Boolean:
    case ValueType::Byte:
    case ValueType::Integer:
    case ValueType::Long:
        return m_int != 0;
    case ValueType::Currency:
        return m_currency != 0;
    case ValueType::Decimal:
        return m_int != 0 || m_decimalLow != 0;
    case ValueType::Single:
    case ValueType::Double:
    case ValueType::Date:
        return m_double != 0;
    case ValueType::String: {
        if (m_string.trimmed().compare(QLatin1String("True"), Qt::CaseInsensitive) == 0)
            return true;
        if (m_string.trimmed().compare(QLatin1String("False"), Qt::CaseInsensitive) == 0)
            return false;
        double d = 0;
        if (parseVbNumber(m_string, &d))
            return d != 0;
        typeMismatch();
    }
    case ValueType::Null:
        invalidNull();
    default:
        typeMismatch();
    }
}

double ScriptValue::toDouble() const
{
    switch (m_type) {
    case ValueType::Empty:
        return 0;
    case ValueType::Boolean:
    case ValueType::Byte:
    case ValueType::Integer:
    case ValueType::Long:
        return m_int;
    case ValueType::Currency:
        return static_cast<double>(m_currency) / 10000.0;
    case ValueType::Decimal:
        return toDecimal().toDouble();
    case ValueType::Single:
    case ValueType::Double:
    case ValueType::Date:
        return m_double;
    case ValueType::String: {
        // "True" and "False" are no numbers: CInt("True") raises 13, as in VBA.
        double d = 0;
        if (parseVbNumber(m_string, &d))
            return d;
        typeMismatch();
    }
    case ValueType::Null:
        invalidNull();
    default:
        typeMismatch();
    }
}

std::int32_t ScriptValue::toLong() const
{
    if (m_type == ValueType::Long || m_type == ValueType::Integer || m_type == ValueType::Boolean || m_type == ValueType::Byte)
        return m_int;
    if (m_type == ValueType::Decimal) {
        const std::int64_t whole = toDecimal().toInt64();
        if (whole < -2147483648LL || whole > 2147483647LL)
            throw ScriptError(ErrNo::Overflow);
        return static_cast<std::int32_t>(whole);
    }
    const double d = roundHalfEven(toDouble());
    if (!(d >= -2147483648.0 && d <= 2147483647.0))
        throw ScriptError(ErrNo::Overflow);
    return static_cast<std::int32_t>(d);
}

std::int64_t ScriptValue::toCurrency() const
{
    if (m_type == ValueType::Currency)
        return m_currency;
    if (m_type == ValueType::Long || m_type == ValueType::Integer || m_type == ValueType::Boolean || m_type == ValueType::Byte)
        return static_cast<std::int64_t>(m_int) * 10000;
    if (m_type == ValueType::Decimal)
        return toDecimal().toCurrencyUnits();
    if (m_type == ValueType::String) {
        // Exact for all of Currency's 19 digits, which a Double does not hold.
        if (const std::optional<Decimal> d = Decimal::parse(m_string))
            return d->toCurrencyUnits();
    }
    double whole = 0;
    double fraction = toDouble();
    fraction = std::modf(fraction, &whole);
    const double scaled = whole * 10000.0 + roundHalfEven(fraction * 10000.0);
    if (!(scaled >= -9223372036854775808.0 && scaled < 9223372036854775808.0))
        throw ScriptError(ErrNo::Overflow);
    return static_cast<std::int64_t>(scaled);
}

std::int16_t ScriptValue::toInteger() const
{
    const double d = m_type == ValueType::Long || m_type == ValueType::Integer || m_type == ValueType::Boolean
                             || m_type == ValueType::Byte || m_type == ValueType::Empty || m_type == ValueType::Decimal
                         ? static_cast<double>(toLong())
                         : roundHalfEven(toDouble());
    if (!(d >= -32768.0 && d <= 32767.0))
        throw ScriptError(ErrNo::Overflow);
    return static_cast<std::int16_t>(d);
}

QString ScriptValue::toString() const
{
    switch (m_type) {
    case ValueType::Empty:
        return QString();
    case ValueType::Boolean:
        return m_int ? QStringLiteral("True") : QStringLiteral("False");
    case ValueType::Byte:
    case ValueType::Integer:
    case ValueType::Long:
        return QString::number(m_int);
    case ValueType::Currency: {
        // Exact: the integer part, then the ten-thousandths without trailing zeros.
        const std::uint64_t magnitude = m_currency < 0 ? 0 - static_cast<std::uint64_t>(m_currency) : static_cast<std::uint64_t>(m_currency);
        QString s = QString::number(magnitude / 10000);
        QString decimals = QStringLiteral("%1").arg(magnitude % 10000, 4, 10, QLatin1Char('0'));
        while (decimals.endsWith(QLatin1Char('0')))
            decimals.chop(1);
        if (!decimals.isEmpty())
            s += QLatin1Char('.') + decimals;
        return m_currency < 0 ? QLatin1Char('-') + s : s;
    }
    case ValueType::Decimal:
        return toDecimal().toString();
    case ValueType::Single:
    case ValueType::Double: {
        if (m_double == std::trunc(m_double) && std::fabs(m_double) < 1e15)
            return QString::number(static_cast<qint64>(m_double));
        // Single shows seven significant digits, Double fifteen.
        QString s = QString::number(m_double, 'g', m_type == ValueType::Single ? 7 : 15);
        const int e = s.indexOf(QLatin1Char('e'));
        if (e >= 0) {
            // VBA writes exponents as E+15 / E-05.
            QString mant = s.left(e);
            QString exp = s.mid(e + 1);
            const QChar sign = exp.at(0);
            exp = exp.mid(1);
            while (exp.size() < 2)
                exp.prepend(QLatin1Char('0'));
            s = mant + QLatin1Char('E') + sign + exp;
        }
        return s;
    }
    case ValueType::Date:
        return formatOleDate(m_double);
    case ValueType::String:
        return m_string;
    case ValueType::Null:
        invalidNull();
    case ValueType::Error:
        return QStringLiteral("Error %1").arg(m_int);
    default:
        typeMismatch();
    }
}

std::shared_ptr<ScriptObject> ScriptValue::toObject() const
{
    if (m_type != ValueType::Object)
        throw ScriptError(ErrNo::ObjectRequired);
    return m_object;
}

ScriptValue ScriptValue::fromRecord(std::shared_ptr<ScriptObject> record)
{
    ScriptValue v;
    v.m_type = ValueType::Record;
    v.m_object = std::move(record);
    return v;
}

namespace {

thread_local int t_releaseDepth = 0;
thread_local std::vector<std::shared_ptr<void>> t_pendingRelease;
thread_local int t_copyDepth = 0;

} // namespace

// Values nested a million deep (an array in an array in ...) would be freed by recursion as deep
// as their nesting. Past a few levels, last references go on a list that the outermost release
// frees one after the other.
void ScriptValue::release()
{
    constexpr int kMaxReleaseDepth = 32;
    if (t_releaseDepth >= kMaxReleaseDepth) {
        if (m_array && m_array.use_count() == 1)
            t_pendingRelease.push_back(std::move(m_array));
        if (m_object && m_object.use_count() == 1)
            t_pendingRelease.push_back(std::move(m_object));
        return;
    }
    ++t_releaseDepth;
    m_array.reset();
    m_object.reset();
    if (t_releaseDepth == 1) {
        while (!t_pendingRelease.empty()) {
            std::shared_ptr<void> last = std::move(t_pendingRelease.back());
            t_pendingRelease.pop_back();
            last.reset();
        }
    }
    --t_releaseDepth;
}

ScriptValue ScriptValue::copied() const
{
    if (m_type != ValueType::Array && m_type != ValueType::Record)
        return *this;
    constexpr int kMaxCopyDepth = 1000;
    struct Depth {
        Depth()
        {
            if (++t_copyDepth > kMaxCopyDepth) {
                --t_copyDepth;
                throw ScriptError(28);
            }
        }
        ~Depth() { --t_copyDepth; }
    } depth;
    if (m_type == ValueType::Record)
        return fromRecord(static_cast<const ScriptRecord &>(*m_object).clone());
    if (!m_array)
        return *this;
    auto copy = std::make_shared<ScriptArray>();
    copy->bounds = m_array->bounds;
    copy->items.reserve(m_array->items.size());
    for (const ScriptValue &item : m_array->items)
        copy->items.push_back(item.copied());
    return fromArray(copy);
}

QString ScriptValue::typeName() const
{
    switch (m_type) {
    case ValueType::Empty: return QStringLiteral("Empty");
    case ValueType::Null: return QStringLiteral("Null");
    case ValueType::Byte: return QStringLiteral("Byte");
    case ValueType::Integer: return QStringLiteral("Integer");
    case ValueType::Long: return QStringLiteral("Long");
    case ValueType::Single: return QStringLiteral("Single");
    case ValueType::Double: return QStringLiteral("Double");
    case ValueType::Currency: return QStringLiteral("Currency");
    case ValueType::Decimal: return QStringLiteral("Decimal");
    case ValueType::Date: return QStringLiteral("Date");
    case ValueType::String: return QStringLiteral("String");
    case ValueType::Object: return m_object ? m_object->typeName() : QStringLiteral("Nothing");
    case ValueType::Error: return QStringLiteral("Error");
    case ValueType::Boolean: return QStringLiteral("Boolean");
    case ValueType::Array: return QStringLiteral("Variant()");
    case ValueType::Record: return m_object->typeName();
    }
    return QString();
}

std::shared_ptr<ScriptArray> ScriptArray::create(const std::vector<Bound> &bounds)
{
    auto a = std::make_shared<ScriptArray>();
    a->bounds = bounds;
    // Four million elements are far more than macros use and keep a runaway ReDim from
    // taking the machine's memory.
    constexpr std::size_t kMaxElements = std::size_t(1) << 22;
    std::size_t n = bounds.empty() ? 0 : 1;
    for (const Bound &b : bounds) {
        if (b.count() < 0)
            throw ScriptError(ErrNo::SubscriptOutOfRange);
        n *= static_cast<std::size_t>(b.count());
        if (n > kMaxElements)
            throw ScriptError(7);
    }
    a->items.resize(n);
    return a;
}

ScriptValue &ScriptArray::at(const std::vector<std::int32_t> &indexes)
{
    if (indexes.size() != bounds.size())
        throw ScriptError(ErrNo::SubscriptOutOfRange);
    std::size_t flat = 0;
    for (std::size_t i = 0; i < bounds.size(); ++i) {
        const Bound &b = bounds[i];
        if (indexes[i] < b.lower || indexes[i] > b.upper)
            throw ScriptError(ErrNo::SubscriptOutOfRange);
        flat = flat * static_cast<std::size_t>(b.count()) + static_cast<std::size_t>(indexes[i] - b.lower);
    }
    return items[flat];
}

} // namespace cadsim
