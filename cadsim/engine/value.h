#pragma once

#include "cadsim/engine/decimal96.h"
#include "cadsim/engine/scripterror.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

namespace cadsim {

class ScriptObject;
struct ScriptArray;

// The type of a ScriptValue, as VarType reports it.
enum class ValueType : std::uint16_t {
    Empty = 0,
    Null = 1,
    Integer = 2, // 16-bit
    Long = 3,    // 32-bit
    Single = 4,  // held at float precision
    Double = 5,
    Currency = 6, // a 64-bit integer of ten-thousandths
    Date = 7,    // days since 30 Dec 1899, fraction = time of day
    String = 8,
    Object = 9,  // a null object is Nothing
    Error = 10,
    Boolean = 11,
    Decimal = 14, // 96-bit integer, scale 0..28 and sign: see Decimal
    Byte = 17,    // 0..255
    Record = 36, // a value of a user-defined type
    Array = 8192,
};

// A macro value (a variant). Arrays are held by pointer; assignment in the engine copies them,
// as VBA does.
class ScriptValue final {
public:
    ScriptValue() = default;
    ScriptValue(const ScriptValue &) = default;
    ScriptValue(ScriptValue &&) noexcept = default;
    ScriptValue &operator=(const ScriptValue &) = default;
    ScriptValue &operator=(ScriptValue &&) noexcept = default;
    ~ScriptValue()
    {
        if (m_object || m_array)
            release();
    }
    static ScriptValue null();
    static ScriptValue nothing() { return fromObject(nullptr); }
    static ScriptValue fromBool(bool v);
    static ScriptValue fromInteger(std::int16_t v);
    static ScriptValue fromLong(std::int32_t v);
    static ScriptValue fromByte(std::uint8_t v);
    static ScriptValue fromDouble(double v);
    static ScriptValue fromSingle(double v); // rounds to float precision, raises 6 out of range
    // Ten-thousandths: fromCurrency(12345) is 1.2345.
    static ScriptValue fromCurrency(std::int64_t scaled);
    static ScriptValue fromDecimal(double v); // 15 significant digits; raises 6 past Decimal's range
    static ScriptValue fromDecimal(const Decimal &v);
    static ScriptValue fromDate(double oleDate);
    static ScriptValue fromString(const QString &v);
    // A byte string (StrConv's vbFromUnicode): two bytes to a character; an odd count is kept.
    static ScriptValue fromBytes(const QByteArray &bytes);
    static ScriptValue fromObject(std::shared_ptr<ScriptObject> v);
    static ScriptValue fromArray(std::shared_ptr<ScriptArray> v);
    static ScriptValue fromError(std::int32_t code);
    // A user-defined type's value; the object is a ScriptRecord, copied with the value.
    static ScriptValue fromRecord(std::shared_ptr<ScriptObject> record);
    // A number: Integer, Long or Double as small as holds it.
    static ScriptValue fromNumber(double v);
    // An array of one dimension 0..n-1 holding the given values.
    static ScriptValue fromList(const std::vector<ScriptValue> &items);
    static ScriptValue fromStringList(const QStringList &items);

    ValueType type() const { return m_type; }
    bool isEmpty() const { return m_type == ValueType::Empty; }
    bool isNull() const { return m_type == ValueType::Null; }
    bool isObject() const { return m_type == ValueType::Object; }
    bool isNothing() const { return m_type == ValueType::Object && !m_object; }
    bool isArray() const { return m_type == ValueType::Array; }
    bool isString() const { return m_type == ValueType::String; }
    bool isNumeric() const; // a number, Boolean, Date or Empty
    bool isMissing() const { return m_type == ValueType::Error && m_int == kMissing; }
    bool isRecord() const { return m_type == ValueType::Record; }

    // Conversions with VBA's rules; they raise ScriptError 13 (or 6 on overflow).
    bool toBool() const;
    std::int16_t toInteger() const;
    std::int32_t toLong() const;
    double toDouble() const;
    // Currency's ten-thousandths, rounded half to even; raises 6 past Currency's range.
    std::int64_t toCurrency() const;
    // Exact from whole numbers, Currency and Decimal; a Double keeps 15 digits, a Single 7.
    Decimal toDecimal() const;
    QString toString() const;
    // The bytes of a string as the text holds them (UTF-16LE), an odd count as made by fromBytes.
    QByteArray toBytes() const;
    qsizetype byteLength() const; // of a string: LenB
    std::shared_ptr<ScriptObject> toObject() const; // raises 424 unless an object (or Nothing)
    const std::shared_ptr<ScriptObject> &object() const { return m_object; }
    const std::shared_ptr<ScriptArray> &array() const { return m_array; }
    std::int32_t errorCode() const { return m_int; }

    // A deep copy of arrays and records (values of other types are shared or copied anyway).
    // Raises 28 for values nested deeper than any macro needs.
    ScriptValue copied() const;
    // The argument marker for an omitted optional parameter.
    static ScriptValue missing();

    QString typeName() const;

private:
    void release();
    static ScriptValue ofFloatingType(ValueType type, double d);

    static constexpr std::int32_t kMissing = static_cast<std::int32_t>(0x80020004u);

    ValueType m_type = ValueType::Empty;
    // Decimal: its scale and sign, with the mantissa's high 32 bits in m_int and low 64 bits in
    // m_decimalLow, so that a Decimal takes no more room than other values.
    std::uint8_t m_decimalScale = 0;
    bool m_decimalNegative = false;
    std::int32_t m_int = 0; // Boolean (-1/0), Byte, Integer, Long, Error; String: 1 for an odd byte count
    union {
        double m_double = 0;         // Single, Double, Date
        std::int64_t m_currency;     // Currency
        std::uint64_t m_decimalLow;  // Decimal
    };
    QString m_string;
    std::shared_ptr<ScriptObject> m_object;
    std::shared_ptr<ScriptArray> m_array;
};

// A variant array with per-dimension bounds; elements are kept in row-major order
// (the last index varies fastest).
struct ScriptArray {
    struct Bound {
        std::int32_t lower = 0;
        std::int32_t upper = -1;
        std::int32_t count() const { return upper - lower + 1; }
    };
    std::vector<Bound> bounds;
    std::vector<ScriptValue> items;
    bool fixed = false; // declared with bounds: ReDim is refused

    // Element by index list; raises 9 when out of range or of the wrong rank.
    ScriptValue &at(const std::vector<std::int32_t> &indexes);
    static std::shared_ptr<ScriptArray> create(const std::vector<Bound> &bounds);
};

} // namespace cadsim

namespace cadsim {

// Longest text a macro may build; longer ones raise 14 "Out of string space" instead of
// taking the machine's memory.
inline constexpr qsizetype kMaxStringLength = qsizetype(1) << 26;

// Reads a number the way VBA converts strings ("  12.5 ", "-3", "1E3", "&HFF"): the whole text
// must be the number, apart from surrounding blanks.
bool parseVbNumber(const QString &text, double *out);

// A Byte with VBA's conversion: rounded half to even, 6 outside 0..255.
ScriptValue toByte(const ScriptValue &v);

// OLE dates: days since 30 Dec 1899.
double oleDateFromParts(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);
// The US-English text of a date as CStr gives it ("11/23/2026 9:05:00 AM"): the short date
// and the long time, each left out when zero.
QString formatOleDate(double oleDate);
QString formatOleShortDate(double oleDate); // "11/23/2026"
QString formatOleLongTime(double oleDate);  // "9:05:00 AM"

} // namespace cadsim
