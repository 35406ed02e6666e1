#include "cadsim/engine/operators.h"

#include "cadsim/engine/likematcher.h"
#include "cadsim/engine/scriptobject.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace cadsim {

namespace {

// Result types of arithmetic, least precise first; Date is above all of them.
enum Rank { kByte, kInteger, kLong, kSingle, kDouble, kCurrency, kDecimal, kDate };

int numericRank(const ScriptValue &v)
{
    switch (v.type()) {
    case ValueType::Byte:
        return kByte;
    case ValueType::Empty:
    case ValueType::Boolean:
    case ValueType::Integer:
        return kInteger;
    case ValueType::Long:
        return kLong;
    case ValueType::Single:
        return kSingle;
    case ValueType::Currency:
        return kCurrency;
    case ValueType::Decimal:
        return kDecimal;
    case ValueType::Date:
        return kDate;
    case ValueType::Null:
        throw ScriptError(94);
    case ValueType::Object:
    case ValueType::Array:
    case ValueType::Error:
        throw ScriptError(ErrNo::TypeMismatch);
    default:
        return kDouble;
    }
}

// Single with Long makes Double, as VBA widens them.
int resultRank(const ScriptValue &a, const ScriptValue &b)
{
    const int x = a.isString() ? kDouble : numericRank(a);
    const int y = b.isString() ? kDouble : numericRank(b);
    if ((x == kSingle && y == kLong) || (x == kLong && y == kSingle))
        return kDouble;
    return std::max(x, y);
}

ScriptValue numberOfRank(double v, int rank)
{
    if (rank == kDate)
        return ScriptValue::fromDate(v);
    if (std::isnan(v) || std::isinf(v))
        throw ScriptError(ErrNo::Overflow);
    // A Byte, Integer or Long result that overflows becomes the next wider type.
    if (rank == kByte && v >= 0 && v <= 255)
        return ScriptValue::fromByte(static_cast<std::uint8_t>(v));
    if (rank <= kInteger && v >= -32768 && v <= 32767)
        return ScriptValue::fromInteger(static_cast<std::int16_t>(v));
    if (rank <= kLong && v >= -2147483648.0 && v <= 2147483647.0)
        return ScriptValue::fromLong(static_cast<std::int32_t>(v));
    if (rank == kSingle)
        return ScriptValue::fromSingle(v);
    if (rank == kCurrency)
        return ScriptValue::fromCurrency(ScriptValue::fromDouble(v).toCurrency());
    return ScriptValue::fromDouble(v);
}

// Currency sums and products are exact in ten-thousandths; products round half to even.
ScriptValue currencyArithmetic(Op op, std::int64_t x, std::int64_t y)
{
    std::int64_t r = 0;
    bool overflow = false;
    if (op == Op::Add) {
        overflow = __builtin_add_overflow(x, y, &r);
    } else if (op == Op::Sub) {
        overflow = __builtin_sub_overflow(x, y, &r);
    } else {
        const __int128 product = static_cast<__int128>(x) * y;
        __int128 q = product / 10000;
        const __int128 rest = product % 10000;
        const __int128 twice = (rest < 0 ? -rest : rest) * 2;
        if (twice > 10000 || (twice == 10000 && (q & 1) != 0))
            q += product < 0 ? -1 : 1;
        overflow = q > std::numeric_limits<std::int64_t>::max() || q < std::numeric_limits<std::int64_t>::min();
        r = static_cast<std::int64_t>(q);
    }
    if (overflow)
        throw ScriptError(ErrNo::Overflow);
    return ScriptValue::fromCurrency(r);
}

ScriptValue decimalArithmetic(Op op, const Decimal &x, const Decimal &y)
{
    switch (op) {
    case Op::Add: return ScriptValue::fromDecimal(x + y);
    case Op::Sub: return ScriptValue::fromDecimal(x - y);
    case Op::Mul: return ScriptValue::fromDecimal(x * y);
    default: return ScriptValue::fromDecimal(x / y);
    }
}

ScriptValue objectValue(const ScriptValue &v)
{
    if (!v.isObject())
        return v;
    if (!v.object())
        throw ScriptError(ErrNo::ObjectVariableNotSet);
    ScriptArgs none;
    return v.object()->defaultValue(none);
}

ScriptValue bitwise(Op op, const ScriptValue &a, const ScriptValue &b)
{
    if (a.type() == ValueType::Boolean && b.type() == ValueType::Boolean) {
        const bool x = a.toBool(), y = b.toBool();
        bool r = false;
        switch (op) {
        case Op::And: r = x && y; break;
        case Op::Or: r = x || y; break;
        case Op::Xor: r = x != y; break;
        case Op::Eqv: r = x == y; break;
        default: r = !x || y; break;
        }
        return ScriptValue::fromBool(r);
    }
    const std::int32_t x = a.toLong(), y = b.toLong();
    std::int32_t r = 0;
    switch (op) {
    case Op::And: r = x & y; break;
    case Op::Or: r = x | y; break;
    case Op::Xor: r = x ^ y; break;
    case Op::Eqv: r = ~(x ^ y); break;
    default: r = ~x | y; break;
    }
    const int rank = std::max(numericRank(a), numericRank(b));
    if (rank == kByte)
        return ScriptValue::fromByte(static_cast<std::uint8_t>(r));
    return rank == kInteger ? ScriptValue::fromInteger(static_cast<std::int16_t>(r)) : ScriptValue::fromLong(r);
}

bool isNumericString(const ScriptValue &v, double *out)
{
    return v.isString() && parseVbNumber(v.toString(), out);
}

} // namespace

int compareValues(const ScriptValue &aIn, const ScriptValue &bIn, bool compareText)
{
    const ScriptValue a = objectValue(aIn);
    const ScriptValue b = objectValue(bIn);
    if (a.isArray() || b.isArray() || a.type() == ValueType::Error || b.type() == ValueType::Error)
        throw ScriptError(ErrNo::TypeMismatch);
    const bool aStr = a.isString() || (a.isEmpty() && b.isString());
    const bool bStr = b.isString() || (b.isEmpty() && a.isString());
    if (aStr && bStr) {
        const int c = QString::compare(a.toString(), b.toString(), compareText ? Qt::CaseInsensitive : Qt::CaseSensitive);
        return c < 0 ? -1 : (c > 0 ? 1 : 0);
    }
    double x = 0, y = 0;
    if (a.isString() && !isNumericString(a, &x))
        return 1; // a string is greater than any number
    if (b.isString() && !isNumericString(b, &y))
        return -1;
    // Decimals compare exactly, with the other side made a Decimal (Dates stay Doubles).
    if ((a.type() == ValueType::Decimal || b.type() == ValueType::Decimal) && a.type() != ValueType::Date
        && b.type() != ValueType::Date)
        return Decimal::compare(a.toDecimal(), b.toDecimal());
    const ValueType ta = a.type();
    const ValueType tb = b.type();
    // A Double compared with a Single is rounded to Single precision; a Single or Double compared
    // with Currency becomes Currency.
    if ((ta == ValueType::Single && tb == ValueType::Double) || (ta == ValueType::Double && tb == ValueType::Single)) {
        const float fx = static_cast<float>(a.toDouble());
        const float fy = static_cast<float>(b.toDouble());
        return fx < fy ? -1 : (fx > fy ? 1 : 0);
    }
    if ((ta == ValueType::Currency && (tb == ValueType::Currency || tb == ValueType::Single || tb == ValueType::Double))
        || (tb == ValueType::Currency && (ta == ValueType::Single || ta == ValueType::Double))) {
        const std::int64_t cx = a.toCurrency();
        const std::int64_t cy = b.toCurrency();
        return cx < cy ? -1 : (cx > cy ? 1 : 0);
    }
    if (!a.isString())
        x = a.toDouble();
    if (!b.isString())
        y = b.toDouble();
    return x < y ? -1 : (x > y ? 1 : 0);
}

ScriptValue applyUnary(Op op, const ScriptValue &aIn)
{
    const ScriptValue a = objectValue(aIn);
    if (a.isNull())
        return a;
    if (op == Op::Neg) {
        if (a.isString()) {
            return ScriptValue::fromDouble(-a.toDouble());
        }
        const int rank = numericRank(a);
        if (a.type() == ValueType::Boolean)
            return ScriptValue::fromInteger(static_cast<std::int16_t>(-a.toLong()));
        if (rank == kCurrency)
            return currencyArithmetic(Op::Sub, 0, a.toCurrency());
        if (rank == kDecimal)
            return ScriptValue::fromDecimal(-a.toDecimal());
        // A negated Byte is an Integer.
        if (rank <= kInteger)
            return numberOfRank(-a.toDouble(), a.toDouble() == -32768 ? kLong : kInteger);
        return numberOfRank(-a.toDouble(), rank);
    }
    // Not
    if (a.type() == ValueType::Boolean)
        return ScriptValue::fromBool(!a.toBool());
    if (a.isString()) {
        const QString t = a.toString().trimmed();
        if (t.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || t.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0)
            return ScriptValue::fromBool(!a.toBool());
        return ScriptValue::fromLong(~a.toLong());
    }
    if (numericRank(a) == kByte)
        return ScriptValue::fromByte(static_cast<std::uint8_t>(~a.toLong()));
    if (numericRank(a) == kInteger)
        return ScriptValue::fromInteger(static_cast<std::int16_t>(~a.toInteger()));
    return ScriptValue::fromLong(~a.toLong());
}

ScriptValue applyBinary(Op op, const ScriptValue &aIn, const ScriptValue &bIn, bool compareText)
{
    if (op == Op::Is) {
        if (!aIn.isObject() || !bIn.isObject())
            throw ScriptError(ErrNo::ObjectRequired);
        return ScriptValue::fromBool(aIn.object() == bIn.object());
    }
    const ScriptValue a = objectValue(aIn);
    const ScriptValue b = objectValue(bIn);
    if (op == Op::Concat) {
        if (a.isNull() && b.isNull())
            return a;
        if (a.isArray() || b.isArray())
            throw ScriptError(ErrNo::TypeMismatch);
        const QString left = a.isNull() ? QString() : a.toString();
        const QString right = b.isNull() ? QString() : b.toString();
        if (left.size() + right.size() > kMaxStringLength)
            throw ScriptError(14);
        return ScriptValue::fromString(left + right);
    }
    if (a.isNull() || b.isNull())
        return ScriptValue::null();
    switch (op) {
    case Op::Like:
        return ScriptValue::fromBool(likeMatch(a.toString(), b.toString(), compareText));
    case Op::Eq:
        return ScriptValue::fromBool(compareValues(a, b, compareText) == 0);
    case Op::Ne:
        return ScriptValue::fromBool(compareValues(a, b, compareText) != 0);
    case Op::Lt:
        return ScriptValue::fromBool(compareValues(a, b, compareText) < 0);
    case Op::Gt:
        return ScriptValue::fromBool(compareValues(a, b, compareText) > 0);
    case Op::Le:
        return ScriptValue::fromBool(compareValues(a, b, compareText) <= 0);
    case Op::Ge:
        return ScriptValue::fromBool(compareValues(a, b, compareText) >= 0);
    case Op::And:
    case Op::Or:
    case Op::Xor:
    case Op::Eqv:
    case Op::Imp:
        return bitwise(op, a, b);
    default:
        break;
    }
    if (op == Op::Add && (a.isString() || a.isEmpty()) && (b.isString() || b.isEmpty()) && (a.isString() || b.isString())) {
        if (a.toString().size() + b.toString().size() > kMaxStringLength)
            throw ScriptError(14);
        return ScriptValue::fromString(a.toString() + b.toString());
    }
    int rank = resultRank(a, b);
    if (rank == kCurrency && (op == Op::Add || op == Op::Sub || op == Op::Mul))
        return currencyArithmetic(op, a.toCurrency(), b.toCurrency());
    if (rank == kDecimal && (op == Op::Add || op == Op::Sub || op == Op::Mul || op == Op::Div))
        return decimalArithmetic(op, a.toDecimal(), b.toDecimal());
    const double x = a.toDouble();
    const double y = b.toDouble();
    switch (op) {
    case Op::Add:
        return numberOfRank(x + y, rank);
    case Op::Sub:
        if (a.type() == ValueType::Date && b.type() == ValueType::Date)
            rank = kDouble;
        return numberOfRank(x - y, rank);
    case Op::Mul:
        return numberOfRank(x * y, rank == kDate ? kDouble : rank);
    case Op::Div:
        if (y == 0)
            throw ScriptError(x == 0 ? ErrNo::Overflow : ErrNo::DivisionByZero);
        // A quotient is a Double, except of two Singles or smaller (Decimals are done above).
        if (rank == kSingle)
            return numberOfRank(x / y, rank);
        return ScriptValue::fromDouble(x / y);
    case Op::Pow: {
        const double r = std::pow(x, y);
        if (std::isnan(r) && !(std::isnan(x) || std::isnan(y)))
            throw ScriptError(ErrNo::InvalidCall);
        return ScriptValue::fromDouble(r);
    }
    case Op::IntDiv:
    case Op::Mod: {
        const std::int32_t l = a.toLong();
        const std::int32_t r = b.toLong();
        if (r == 0)
            throw ScriptError(ErrNo::DivisionByZero);
        const double v = op == Op::IntDiv ? static_cast<double>(static_cast<std::int64_t>(l) / r)
                                          : static_cast<double>(static_cast<std::int64_t>(l) % r);
        return numberOfRank(v, rank <= kInteger ? rank : kLong);
    }
    default:
        break;
    }
    throw ScriptError(ErrNo::TypeMismatch);
}

} // namespace cadsim
