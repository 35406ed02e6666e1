#include "cadsim/engine/record.h"

namespace cadsim {

namespace {

// A field keeps the type it was declared with: the initial value tells which.
ScriptValue converted(const ScriptValue &value, const ScriptValue &current)
{
    switch (current.type()) {
    case ValueType::Byte:
        return toByte(value);
    case ValueType::Integer:
        return ScriptValue::fromInteger(value.toInteger());
    case ValueType::Long:
        return ScriptValue::fromLong(value.toLong());
    case ValueType::Single:
        return ScriptValue::fromSingle(value.toDouble());
    case ValueType::Double:
        return ScriptValue::fromDouble(value.toDouble());
    case ValueType::Currency:
        return ScriptValue::fromCurrency(value.toCurrency());
    case ValueType::Date:
        return ScriptValue::fromDate(value.toDouble());
    case ValueType::String:
        return ScriptValue::fromString(value.toString());
    case ValueType::Boolean:
        return ScriptValue::fromBool(value.toBool());
    case ValueType::Record:
        if (!value.isRecord() || value.typeName() != current.typeName())
            throw ScriptError(ErrNo::TypeMismatch);
        return value.copied();
    case ValueType::Array:
        if (!value.isArray())
            throw ScriptError(ErrNo::TypeMismatch);
        return value.copied();
    default:
        return value.copied();
    }
}

} // namespace

ScriptRecord::ScriptRecord(QString typeName, std::shared_ptr<const QStringList> fieldNames, std::vector<ScriptValue> values)
    : m_typeName(std::move(typeName)), m_names(std::move(fieldNames)), m_values(std::move(values))
{
}

ScriptValue &ScriptRecord::field(const QString &member)
{
    const qsizetype i = m_names->indexOf(member.toLower());
    if (i < 0)
        throw ScriptError(438, QStringLiteral("Method or data member not found"));
    return m_values[static_cast<std::size_t>(i)];
}

ScriptValue ScriptRecord::invoke(const QString &member, CallKind kind, ScriptArgs &args)
{
    ScriptValue &value = field(member);
    const bool assigning = kind == CallKind::Let || kind == CallKind::Set;
    const std::size_t indexCount = args.size() - (assigning ? 1 : 0);
    ScriptValue *slot = &value;
    if (indexCount > 0) {
        if (!value.isArray())
            throw ScriptError(ErrNo::TypeMismatch);
        std::vector<std::int32_t> indexes;
        for (std::size_t i = 0; i < indexCount; ++i)
            indexes.push_back(args[i]->toLong());
        slot = &value.array()->at(indexes);
    }
    if (!assigning)
        return *slot;
    const ScriptValue &assigned = *args.back();
    if (kind == CallKind::Set) {
        if (!assigned.isObject())
            throw ScriptError(ErrNo::ObjectRequired);
        *slot = assigned;
    } else if (slot->isObject() && !slot->isEmpty()) {
        throw ScriptError(ErrNo::ObjectVariableNotSet);
    } else {
        *slot = converted(assigned, *slot);
    }
    return {};
}

std::shared_ptr<ScriptRecord> ScriptRecord::clone() const
{
    std::vector<ScriptValue> values;
    values.reserve(m_values.size());
    for (const ScriptValue &v : m_values)
        values.push_back(v.copied());
    return std::make_shared<ScriptRecord>(m_typeName, m_names, std::move(values));
}

} // namespace cadsim
