#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace cadsim {

// VBA's Decimal: an unsigned 96-bit integer, a power of ten 0..28 that divides it, and a sign.
// Results that need more digits than fit drop the last ones, rounding half to even; results past
// +/-79,228,162,514,264,337,593,543,950,335 raise error 6, a zero divisor raises 11.
class Decimal final {
public:
    static constexpr int kMaxScale = 28;

    Decimal() = default;
    static Decimal fromInt64(std::int64_t v);
    // units / 10^scale, e.g. Currency's ten-thousandths with scale 4.
    static Decimal fromScaled(std::int64_t units, int scale);
    // A Double keeps 15 significant digits (a Single 7), as VBA converts them.
    static Decimal fromDouble(double v, int significantDigits = 15);
    // Plain or exponent notation with sign and blanks around it ("-1.5E-3"); nullopt when the text
    // is no number. Digits that do not fit are rounded away; raises 6 past the range.
    static std::optional<Decimal> parse(const QString &text);
    // The stored form: mantissa = high * 2^64 + low.
    static Decimal fromParts(std::uint64_t low, std::uint32_t high, int scale, bool negative);

    std::uint64_t low() const { return static_cast<std::uint64_t>(m_mantissa); }
    std::uint32_t high() const { return static_cast<std::uint32_t>(m_mantissa >> 64); }
    int scale() const { return m_scale; }
    bool isNegative() const { return m_negative; }
    bool isZero() const { return m_mantissa == 0; }

    double toDouble() const;
    // Plain digits, no exponent, no trailing zeros after the point: "1.5", "-0.25".
    QString toString() const;
    // Rounded half to even to a whole number; raises 6 past the 64-bit range.
    std::int64_t toInt64() const;
    // Ten-thousandths rounded half to even; raises 6 past the 64-bit range.
    std::int64_t toCurrencyUnits() const;

    Decimal operator-() const;
    Decimal abs() const;
    Decimal rounded(int decimals) const; // half to even: Round
    Decimal truncated() const;           // toward zero: Fix
    Decimal floored() const;             // toward minus infinity: Int

    friend Decimal operator+(const Decimal &a, const Decimal &b);
    friend Decimal operator-(const Decimal &a, const Decimal &b);
    friend Decimal operator*(const Decimal &a, const Decimal &b);
    friend Decimal operator/(const Decimal &a, const Decimal &b);
    // -1, 0 or 1 by value: 1.50 equals 1.5.
    static int compare(const Decimal &a, const Decimal &b);

private:
    friend class DecimalBuilder;

    unsigned __int128 m_mantissa = 0; // below 2^96
    std::uint8_t m_scale = 0;
    bool m_negative = false; // never set on zero
};

} // namespace cadsim
