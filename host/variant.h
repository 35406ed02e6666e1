#pragma once

#include "host/hresult.h"

#include <QString>
#include <cstdint>

// The automation VARIANT, limited to the types the add-in meets. Type numbers
// are the automation ones, so they can be shown and stored as such.
enum class VarType : std::uint16_t {
    Empty = 0,
    I2 = 2,
    I4 = 3,
    R4 = 4,
    R8 = 5,
    Date = 7,
    BStr = 8,
    Bool = 11,
    UI1 = 17,
    Other = 0xFFFF, // anything else the host may hand over; converts to nothing
};

constexpr std::int16_t VARIANT_TRUE = -1;
constexpr std::int16_t VARIANT_FALSE = 0;

class Variant final
{
public:
    Variant() = default;
    static Variant fromI2(std::int16_t v);
    static Variant fromI4(std::int32_t v);
    static Variant fromR4(float v);
    static Variant fromR8(double v);
    static Variant fromDate(double oleDate);
    static Variant fromBStr(const QString &v);
    static Variant fromBool(bool v);
    static Variant fromUI1(std::uint8_t v);
    static Variant other();

    VarType type() const { return m_type; }
    bool isEmpty() const { return m_type == VarType::Empty; }

    // Raw payloads; valid only for the matching type.
    std::int32_t i4() const { return static_cast<std::int32_t>(m_int); }
    std::int16_t i2() const { return static_cast<std::int16_t>(m_int); }
    std::uint8_t ui1() const { return static_cast<std::uint8_t>(m_int); }
    std::int16_t boolValue() const { return static_cast<std::int16_t>(m_int); }
    double r8() const { return m_real; }
    float r4() const { return static_cast<float>(m_real); }
    double date() const { return m_real; }
    const QString &bstr() const { return m_text; }

    // Automation type change: S_OK with the converted value in out, or
    // DISP_E_TYPEMISMATCH / DISP_E_OVERFLOW with out left alone.
    HRESULT changeType(VarType to, Variant &out) const;

    // Convenience wrappers that throw HostError on a failed change.
    std::int32_t toI4() const;
    bool toBool() const;
    QString toText() const;
    double toR8() const;

    bool operator==(const Variant &other) const;

private:
    VarType m_type = VarType::Empty;
    std::int64_t m_int = 0;
    double m_real = 0.0;
    QString m_text;
};

// Debug and log form, e.g. "I4 12" or "BSTR \"x\"".
QString describeVariant(const Variant &v);
