#include "host/variant.h"

#include "host/hosterror.h"

#include <QDateTime>
#include <cmath>
#include <limits>

namespace {

// Automation rounds halves to even when a real becomes an integer.
double roundHalfEven(double v)
{
    const double r = std::nearbyint(v); // default rounding mode is to-nearest-even
    return r;
}

// Text to number as the automation layer parses it: blanks around, optional
// sign, digits with an optional fraction and exponent, or &H hex.
bool parseNumber(const QString &text, double &out)
{
    const QString t = text.trimmed();
    if (t.isEmpty())
        return false;
    if (t.startsWith(QLatin1String("&H"), Qt::CaseInsensitive)) {
        bool ok = false;
        const qlonglong v = t.mid(2).toLongLong(&ok, 16);
        if (!ok)
            return false;
        out = static_cast<double>(v);
        return true;
    }
    bool ok = false;
    const double v = t.toDouble(&ok);
    if (!ok || std::isnan(v) || std::isinf(v))
        return false;
    out = v;
    return true;
}

// OLE date: days since 1899-12-30, fraction is the time of day.
QDateTime oleToDateTime(double d)
{
    static const QDateTime epoch(QDate(1899, 12, 30), QTime(0, 0));
    const double days = std::trunc(d);
    const double frac = std::fabs(d - days);
    return epoch.addDays(static_cast<qint64>(days)).addMSecs(static_cast<qint64>(std::llround(frac * 86400000.0)));
}

bool oleFromText(const QString &text, double &out)
{
    const QString t = text.trimmed();
    for (const char *fmt : {"yyyy-MM-dd HH:mm:ss", "yyyy-MM-dd", "M/d/yyyy H:mm:ss", "M/d/yyyy"}) {
        const QDateTime dt = QDateTime::fromString(t, QLatin1String(fmt));
        if (dt.isValid()) {
            static const QDateTime epoch(QDate(1899, 12, 30), QTime(0, 0));
            const qint64 ms = epoch.msecsTo(dt);
            out = static_cast<double>(ms) / 86400000.0;
            return true;
        }
    }
    return false;
}

QString textOfReal(double v)
{
    if (v == std::trunc(v) && std::fabs(v) < 1e15)
        return QString::number(static_cast<qint64>(v));
    return QString::number(v, 'g', 15);
}

HRESULT integerOf(const Variant &v, double &out)
{
    switch (v.type()) {
    case VarType::Empty: out = 0; return S_OK;
    case VarType::I2: out = v.i2(); return S_OK;
    case VarType::I4: out = v.i4(); return S_OK;
    case VarType::UI1: out = v.ui1(); return S_OK;
    case VarType::Bool: out = v.boolValue() ? -1 : 0; return S_OK;
    case VarType::R4:
    case VarType::R8:
    case VarType::Date: out = roundHalfEven(v.r8()); return S_OK;
    case VarType::BStr: {
        double d = 0;
        if (!parseNumber(v.bstr(), d))
            return DISP_E_TYPEMISMATCH;
        out = roundHalfEven(d);
        return S_OK;
    }
    case VarType::Other: break;
    }
    return DISP_E_TYPEMISMATCH;
}

HRESULT realOf(const Variant &v, double &out)
{
    switch (v.type()) {
    case VarType::R4:
    case VarType::R8:
    case VarType::Date: out = v.r8(); return S_OK;
    case VarType::BStr: return parseNumber(v.bstr(), out) ? S_OK : DISP_E_TYPEMISMATCH;
    default: return integerOf(v, out);
    }
}

} // namespace

Variant Variant::fromI2(std::int16_t v) { Variant r; r.m_type = VarType::I2; r.m_int = v; return r; }
Variant Variant::fromI4(std::int32_t v) { Variant r; r.m_type = VarType::I4; r.m_int = v; return r; }
Variant Variant::fromR4(float v) { Variant r; r.m_type = VarType::R4; r.m_real = v; return r; }
Variant Variant::fromR8(double v) { Variant r; r.m_type = VarType::R8; r.m_real = v; return r; }
Variant Variant::fromDate(double d) { Variant r; r.m_type = VarType::Date; r.m_real = d; return r; }
Variant Variant::fromBStr(const QString &v) { Variant r; r.m_type = VarType::BStr; r.m_text = v; return r; }
Variant Variant::fromBool(bool v) { Variant r; r.m_type = VarType::Bool; r.m_int = v ? VARIANT_TRUE : VARIANT_FALSE; return r; }
Variant Variant::fromUI1(std::uint8_t v) { Variant r; r.m_type = VarType::UI1; r.m_int = v; return r; }
Variant Variant::other() { Variant r; r.m_type = VarType::Other; return r; }

HRESULT Variant::changeType(VarType to, Variant &out) const
{
    if (m_type == VarType::Other || to == VarType::Other)
        return DISP_E_TYPEMISMATCH;
    if (to == m_type) {
        out = *this;
        return S_OK;
    }
    switch (to) {
    case VarType::Empty:
        out = Variant();
        return S_OK;
    case VarType::I2:
    case VarType::I4:
    case VarType::UI1: {
        double d = 0;
        if (const HRESULT hr = integerOf(*this, d); failed(hr))
            return hr;
        if (to == VarType::I2) {
            if (d < std::numeric_limits<std::int16_t>::min() || d > std::numeric_limits<std::int16_t>::max())
                return DISP_E_OVERFLOW;
            out = fromI2(static_cast<std::int16_t>(d));
        } else if (to == VarType::I4) {
            if (d < std::numeric_limits<std::int32_t>::min() || d > std::numeric_limits<std::int32_t>::max())
                return DISP_E_OVERFLOW;
            out = fromI4(static_cast<std::int32_t>(d));
        } else {
            if (d < 0 || d > 255)
                return DISP_E_OVERFLOW;
            out = fromUI1(static_cast<std::uint8_t>(d));
        }
        return S_OK;
    }
    case VarType::R4:
    case VarType::R8: {
        double d = 0;
        if (const HRESULT hr = realOf(*this, d); failed(hr))
            return hr;
        if (to == VarType::R4) {
            if (std::fabs(d) > std::numeric_limits<float>::max())
                return DISP_E_OVERFLOW;
            out = fromR4(static_cast<float>(d));
        } else {
            out = fromR8(d);
        }
        return S_OK;
    }
    case VarType::Date: {
        double d = 0;
        if (m_type == VarType::BStr) {
            if (!oleFromText(m_text, d) && !parseNumber(m_text, d))
                return DISP_E_TYPEMISMATCH;
        } else if (const HRESULT hr = realOf(*this, d); failed(hr)) {
            return hr;
        }
        out = fromDate(d);
        return S_OK;
    }
    case VarType::Bool: {
        if (m_type == VarType::BStr) {
            const QString t = m_text.trimmed();
            if (t.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0) {
                out = fromBool(true);
                return S_OK;
            }
            if (t.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0) {
                out = fromBool(false);
                return S_OK;
            }
        }
        double d = 0;
        if (const HRESULT hr = realOf(*this, d); failed(hr))
            return hr;
        out = fromBool(d != 0.0);
        return S_OK;
    }
    case VarType::BStr:
        switch (m_type) {
        case VarType::Empty: out = fromBStr(QString()); return S_OK;
        case VarType::I2:
        case VarType::I4:
        case VarType::UI1: out = fromBStr(QString::number(m_int)); return S_OK;
        case VarType::Bool: out = fromBStr(m_int ? QStringLiteral("True") : QStringLiteral("False")); return S_OK;
        case VarType::R4: out = fromBStr(QString::number(static_cast<double>(static_cast<float>(m_real)), 'g', 7)); return S_OK;
        case VarType::R8: out = fromBStr(textOfReal(m_real)); return S_OK;
        case VarType::Date: {
            const QDateTime dt = oleToDateTime(m_real);
            const bool hasTime = dt.time() != QTime(0, 0);
            out = fromBStr(dt.toString(hasTime ? QStringLiteral("M/d/yyyy h:mm:ss AP") : QStringLiteral("M/d/yyyy")));
            return S_OK;
        }
        default: break;
        }
        return DISP_E_TYPEMISMATCH;
    case VarType::Other: break;
    }
    return DISP_E_TYPEMISMATCH;
}

std::int32_t Variant::toI4() const
{
    Variant v;
    throwIfFailed(changeType(VarType::I4, v), QStringLiteral("Converting a value to an integer."));
    return v.i4();
}

bool Variant::toBool() const
{
    Variant v;
    throwIfFailed(changeType(VarType::Bool, v), QStringLiteral("Converting a value to a boolean."));
    return v.boolValue() != 0;
}

QString Variant::toText() const
{
    Variant v;
    throwIfFailed(changeType(VarType::BStr, v), QStringLiteral("Converting a value to a text."));
    return v.bstr();
}

double Variant::toR8() const
{
    Variant v;
    throwIfFailed(changeType(VarType::R8, v), QStringLiteral("Converting a value to a number."));
    return v.r8();
}

bool Variant::operator==(const Variant &other) const
{
    if (m_type != other.m_type)
        return false;
    switch (m_type) {
    case VarType::BStr: return m_text == other.m_text;
    case VarType::R4:
    case VarType::R8:
    case VarType::Date: return m_real == other.m_real;
    default: return m_int == other.m_int;
    }
}

QString describeVariant(const Variant &v)
{
    switch (v.type()) {
    case VarType::Empty: return QStringLiteral("EMPTY");
    case VarType::I2: return QStringLiteral("I2 %1").arg(v.i2());
    case VarType::I4: return QStringLiteral("I4 %1").arg(v.i4());
    case VarType::UI1: return QStringLiteral("UI1 %1").arg(v.ui1());
    case VarType::R4: return QStringLiteral("R4 %1").arg(static_cast<double>(v.r4()));
    case VarType::R8: return QStringLiteral("R8 %1").arg(v.r8());
    case VarType::Date: return QStringLiteral("DATE %1").arg(v.date());
    case VarType::BStr: return QStringLiteral("BSTR \"%1\"").arg(v.bstr());
    case VarType::Bool: return v.boolValue() ? QStringLiteral("BOOL True") : QStringLiteral("BOOL False");
    case VarType::Other: return QStringLiteral("OTHER");
    }
    return {};
}
