#include "cadsim/engine/decimal96.h"

#include "cadsim/engine/scripterror.h"
#include "cadsim/engine/value.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace cadsim {

namespace {

using u128 = unsigned __int128;

constexpr u128 kMantissaLimit = u128(1) << 96;

u128 pow10(int n)
{
    u128 p = 1;
    for (int i = 0; i < n; ++i)
        p *= 10;
    return p;
}

[[noreturn]] void overflow()
{
    throw ScriptError(ErrNo::Overflow);
}

// An unsigned 256-bit integer for intermediates: a 96 x 96-bit product, a mantissa aligned to a
// larger scale (times up to 10^28), or the digits of a text.
struct Wide {
    std::array<std::uint64_t, 4> limbs{}; // least significant first

    static Wide of(u128 v)
    {
        Wide w;
        w.limbs[0] = static_cast<std::uint64_t>(v);
        w.limbs[1] = static_cast<std::uint64_t>(v >> 64);
        return w;
    }
    static Wide product(u128 a, u128 b)
    {
        const std::uint64_t x[2] = {static_cast<std::uint64_t>(a), static_cast<std::uint64_t>(a >> 64)};
        const std::uint64_t y[2] = {static_cast<std::uint64_t>(b), static_cast<std::uint64_t>(b >> 64)};
        Wide w;
        for (int i = 0; i < 2; ++i) {
            u128 carry = 0;
            for (int j = 0; j < 2; ++j) {
                const u128 t = static_cast<u128>(x[i]) * y[j] + w.limbs[i + j] + carry;
                w.limbs[i + j] = static_cast<std::uint64_t>(t);
                carry = t >> 64;
            }
            w.limbs[i + 2] = static_cast<std::uint64_t>(carry);
        }
        return w;
    }
    // Callers keep the result below 2^256.
    void mulAdd(std::uint64_t factor, std::uint64_t addend)
    {
        u128 carry = addend;
        for (std::uint64_t &limb : limbs) {
            const u128 t = static_cast<u128>(limb) * factor + carry;
            limb = static_cast<std::uint64_t>(t);
            carry = t >> 64;
        }
    }
    unsigned divSmall(unsigned divisor)
    {
        u128 rest = 0;
        for (int i = 3; i >= 0; --i) {
            const u128 cur = (rest << 64) | limbs[i];
            limbs[i] = static_cast<std::uint64_t>(cur / divisor);
            rest = cur % divisor;
        }
        return static_cast<unsigned>(rest);
    }
    void add(const Wide &o)
    {
        u128 carry = 0;
        for (int i = 0; i < 4; ++i) {
            const u128 t = static_cast<u128>(limbs[i]) + o.limbs[i] + carry;
            limbs[i] = static_cast<std::uint64_t>(t);
            carry = t >> 64;
        }
    }
    void subtract(const Wide &o) // *this >= o
    {
        std::uint64_t borrow = 0;
        for (int i = 0; i < 4; ++i) {
            const std::uint64_t d = limbs[i] - o.limbs[i] - borrow;
            borrow = (limbs[i] < o.limbs[i] || (limbs[i] == o.limbs[i] && borrow)) ? 1 : 0;
            limbs[i] = d;
        }
    }
    int compare(const Wide &o) const
    {
        for (int i = 3; i >= 0; --i) {
            if (limbs[i] != o.limbs[i])
                return limbs[i] < o.limbs[i] ? -1 : 1;
        }
        return 0;
    }
    bool fits96() const { return limbs[3] == 0 && limbs[2] == 0 && (limbs[1] >> 32) == 0; }
    bool isZero() const { return (limbs[0] | limbs[1] | limbs[2] | limbs[3]) == 0; }
    u128 low128() const { return (static_cast<u128>(limbs[1]) << 64) | limbs[0]; }
};

enum class Rounding { HalfEven, TowardZero, AwayFromZero };

// Drops the last `count` digits. `sticky`: digits dropped before were not all zero.
void dropDigits(Wide &m, int count, Rounding mode, bool sticky = false)
{
    unsigned last = 0;
    for (int i = 0; i < count; ++i) {
        sticky = sticky || last != 0;
        last = m.divSmall(10);
    }
    bool up = false;
    if (mode == Rounding::HalfEven)
        up = last > 5 || (last == 5 && (sticky || (m.limbs[0] & 1) != 0));
    else if (mode == Rounding::AwayFromZero)
        up = last != 0 || sticky;
    if (up)
        m.add(Wide::of(1));
}

Wide aligned(u128 mantissa, int fromScale, int toScale)
{
    return Wide::product(mantissa, pow10(toScale - fromScale));
}

} // namespace

// The one way a result becomes a Decimal: whole numbers past the range raise 6, digits beyond
// 96 bits or scale 28 are rounded away.
class DecimalBuilder {
public:
    static Decimal make(Wide m, long long scale, bool negative, bool sticky = false)
    {
        Decimal d;
        // At most 61 digits come in: past 28 + 62 decimals everything rounds to zero.
        if (m.isZero() || scale > Decimal::kMaxScale + 62)
            return d;
        if (scale < 0 && !m.fits96())
            overflow();
        for (; scale < 0; ++scale) {
            m.mulAdd(10, 0);
            if (!m.fits96())
                overflow();
        }
        for (long long drop = std::max(0LL, scale - Decimal::kMaxScale);; ++drop) {
            if (drop > scale)
                overflow();
            Wide t = m;
            dropDigits(t, static_cast<int>(drop), Rounding::HalfEven, sticky);
            if (t.fits96()) {
                m = t;
                scale -= drop;
                break;
            }
        }
        d.m_mantissa = m.low128();
        d.m_scale = static_cast<std::uint8_t>(scale);
        d.m_negative = negative && d.m_mantissa != 0;
        return d;
    }

    static Decimal withMode(const Decimal &v, int decimals, Rounding mode)
    {
        if (decimals >= v.m_scale)
            return v;
        Wide m = Wide::of(v.m_mantissa);
        dropDigits(m, v.m_scale - decimals, mode);
        return make(m, decimals, v.m_negative);
    }

    static Decimal addSigned(const Decimal &a, bool aNegative, const Decimal &b, bool bNegative)
    {
        const int scale = std::max(a.m_scale, b.m_scale);
        Wide x = aligned(a.m_mantissa, a.m_scale, scale);
        Wide y = aligned(b.m_mantissa, b.m_scale, scale);
        if (aNegative == bNegative) {
            x.add(y);
            return make(x, scale, aNegative);
        }
        if (x.compare(y) >= 0) {
            x.subtract(y);
            return make(x, scale, aNegative);
        }
        y.subtract(x);
        return make(y, scale, bNegative);
    }

    static Decimal divide(const Decimal &a, const Decimal &b)
    {
        if (b.isZero())
            throw ScriptError(ErrNo::DivisionByZero);
        if (a.isZero())
            return Decimal();
        // Long division, one more digit while the quotient fits 96 bits and scale 28.
        const u128 divisor = b.m_mantissa;
        u128 q = a.m_mantissa / divisor;
        u128 rest = a.m_mantissa % divisor;
        int scale = a.m_scale - b.m_scale;
        while (scale < Decimal::kMaxScale && (rest != 0 || scale < 0)) {
            const u128 next = q * 10 + rest * 10 / divisor;
            if (next >= kMantissaLimit)
                break;
            q = next;
            rest = rest * 10 % divisor;
            ++scale;
        }
        Wide m = Wide::of(q);
        if (rest != 0 && (rest * 2 > divisor || (rest * 2 == divisor && (q & 1) != 0)))
            m.add(Wide::of(1));
        return make(m, scale, a.m_negative != b.m_negative);
    }

    static Decimal multiply(const Decimal &a, const Decimal &b)
    {
        return make(Wide::product(a.m_mantissa, b.m_mantissa), a.m_scale + b.m_scale, a.m_negative != b.m_negative);
    }

    static int compare(const Decimal &a, const Decimal &b)
    {
        const int signA = a.isZero() ? 0 : (a.m_negative ? -1 : 1);
        const int signB = b.isZero() ? 0 : (b.m_negative ? -1 : 1);
        if (signA != signB)
            return signA < signB ? -1 : 1;
        const int scale = std::max(a.m_scale, b.m_scale);
        const int c = aligned(a.m_mantissa, a.m_scale, scale).compare(aligned(b.m_mantissa, b.m_scale, scale));
        return signA < 0 ? -c : c;
    }
};

Decimal Decimal::fromInt64(std::int64_t v)
{
    return fromScaled(v, 0);
}

Decimal Decimal::fromScaled(std::int64_t units, int scale)
{
    const std::uint64_t magnitude = units < 0 ? 0 - static_cast<std::uint64_t>(units) : static_cast<std::uint64_t>(units);
    return DecimalBuilder::make(Wide::of(magnitude), scale, units < 0);
}

Decimal Decimal::fromParts(std::uint64_t low, std::uint32_t high, int scale, bool negative)
{
    return DecimalBuilder::make(Wide::of((static_cast<u128>(high) << 64) | low), scale, negative);
}

Decimal Decimal::fromDouble(double v, int significantDigits)
{
    if (!(std::fabs(v) < 79228162514264337593543950336.0))
        overflow();
    if (v == 0)
        return Decimal();
    return *parse(QString::number(v, 'g', significantDigits));
}

std::optional<Decimal> Decimal::parse(const QString &text)
{
    const QString t = text.trimmed();
    if (t.startsWith(QLatin1String("&H"), Qt::CaseInsensitive) || t.startsWith(QLatin1String("&O"), Qt::CaseInsensitive)) {
        double d = 0;
        if (!parseVbNumber(t, &d))
            return std::nullopt;
        return fromInt64(static_cast<std::int64_t>(d));
    }
    const auto digitAt = [&t](qsizetype i) { return t.at(i) >= QLatin1Char('0') && t.at(i) <= QLatin1Char('9') ? t.at(i).unicode() - u'0' : -1; };
    const qsizetype n = t.size();
    qsizetype i = 0;
    const bool negative = i < n && t.at(i) == QLatin1Char('-');
    if (i < n && (t.at(i) == QLatin1Char('-') || t.at(i) == QLatin1Char('+')))
        ++i;
    // Sixty significant digits are kept (more than any result holds); the rest only decide rounding.
    constexpr int kKeptDigits = 60;
    Wide m;
    int kept = 0;
    bool sticky = false, point = false, anyDigit = false;
    long long exponent = 0;
    for (; i < n; ++i) {
        const int d = digitAt(i);
        if (d >= 0) {
            anyDigit = true;
            if (kept == 0 && d == 0) {
                exponent -= point ? 1 : 0;
            } else if (kept < kKeptDigits) {
                m.mulAdd(10, static_cast<std::uint64_t>(d));
                ++kept;
                exponent -= point ? 1 : 0;
            } else {
                sticky = sticky || d != 0;
                exponent += point ? 0 : 1;
            }
        } else if (t.at(i) == QLatin1Char('.') && !point) {
            point = true;
        } else if (!(t.at(i) == QLatin1Char(',') && !point)) {
            break;
        }
    }
    if (!anyDigit)
        return std::nullopt;
    if (i < n && (t.at(i) == QLatin1Char('e') || t.at(i) == QLatin1Char('E'))) {
        ++i;
        const bool minus = i < n && t.at(i) == QLatin1Char('-');
        if (i < n && (t.at(i) == QLatin1Char('-') || t.at(i) == QLatin1Char('+')))
            ++i;
        long long e = 0;
        const qsizetype first = i;
        for (; i < n && digitAt(i) >= 0; ++i)
            e = std::min(e * 10 + digitAt(i), 100000LL); // far past any Decimal either way
        if (i == first)
            return std::nullopt;
        exponent += minus ? -e : e;
    }
    if (i != n)
        return std::nullopt;
    return DecimalBuilder::make(m, -exponent, negative, sticky);
}

double Decimal::toDouble() const
{
    return toString().toDouble(); // correctly rounded, unlike mantissa / 10^scale
}

QString Decimal::toString() const
{
    char digits[40]; // least significant first
    int count = 0;
    u128 v = m_mantissa;
    do {
        digits[count++] = static_cast<char>('0' + static_cast<int>(v % 10));
        v /= 10;
    } while (v != 0);
    while (count <= m_scale)
        digits[count++] = '0';
    int firstKept = 0;
    while (firstKept < m_scale && digits[firstKept] == '0')
        ++firstKept;
    std::string s = m_negative ? "-" : "";
    for (int k = count - 1; k >= m_scale; --k)
        s += digits[k];
    if (firstKept < m_scale) {
        s += '.';
        for (int k = m_scale - 1; k >= firstKept; --k)
            s += digits[k];
    }
    return QString::fromLatin1(s);
}

std::int64_t Decimal::toInt64() const
{
    const Decimal r = rounded(0);
    const u128 limit = (u128(1) << 63) - (r.m_negative ? 0 : 1);
    if (r.m_mantissa > limit)
        overflow();
    const auto magnitude = static_cast<std::uint64_t>(r.m_mantissa);
    return r.m_negative ? static_cast<std::int64_t>(0 - magnitude) : static_cast<std::int64_t>(magnitude);
}

std::int64_t Decimal::toCurrencyUnits() const
{
    Decimal r = rounded(4);
    r.m_mantissa *= pow10(4 - r.m_scale); // below 2^110
    r.m_scale = 0;
    return r.toInt64();
}

Decimal Decimal::operator-() const
{
    Decimal d = *this;
    d.m_negative = !m_negative && m_mantissa != 0;
    return d;
}

Decimal Decimal::abs() const
{
    Decimal d = *this;
    d.m_negative = false;
    return d;
}

Decimal Decimal::rounded(int decimals) const
{
    return DecimalBuilder::withMode(*this, std::max(decimals, 0), Rounding::HalfEven);
}

Decimal Decimal::truncated() const
{
    return DecimalBuilder::withMode(*this, 0, Rounding::TowardZero);
}

Decimal Decimal::floored() const
{
    return DecimalBuilder::withMode(*this, 0, m_negative ? Rounding::AwayFromZero : Rounding::TowardZero);
}

Decimal operator+(const Decimal &a, const Decimal &b)
{
    return DecimalBuilder::addSigned(a, a.m_negative, b, b.m_negative);
}

Decimal operator-(const Decimal &a, const Decimal &b)
{
    return DecimalBuilder::addSigned(a, a.m_negative, b, !b.m_negative);
}

Decimal operator*(const Decimal &a, const Decimal &b)
{
    return DecimalBuilder::multiply(a, b);
}

Decimal operator/(const Decimal &a, const Decimal &b)
{
    return DecimalBuilder::divide(a, b);
}

int Decimal::compare(const Decimal &a, const Decimal &b)
{
    return DecimalBuilder::compare(a, b);
}

} // namespace cadsim
