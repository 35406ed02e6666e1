#include "cadsim/engine/errobject.h"

namespace cadsim {

namespace {

const ScriptValue &argAt(ScriptArgs &args, std::size_t i)
{
    static const ScriptValue missing = ScriptValue::missing();
    return i < args.size() && args[i] ? *args[i] : missing;
}

} // namespace

void ErrObject::set(const ScriptError &error)
{
    m_number = error.number();
    m_description = error.description();
    m_source = QStringLiteral("McMacro1");
}

void ErrObject::clear()
{
    m_number = 0;
    m_description.clear();
    m_source.clear();
}

ScriptValue ErrObject::defaultValue(ScriptArgs &)
{
    return ScriptValue::fromLong(m_number);
}

ScriptValue ErrObject::invoke(const QString &member, CallKind kind, ScriptArgs &args)
{
    const QString m = member.toLower();
    const bool write = kind == CallKind::Let;
    if (m == QLatin1String("number")) {
        if (write) {
            m_number = argAt(args, args.size() - 1).toLong();
            m_description = ScriptError::standardDescription(m_number);
            return {};
        }
        return ScriptValue::fromLong(m_number);
    }
    if (m == QLatin1String("description")) {
        if (write) {
            m_description = argAt(args, args.size() - 1).toString();
            return {};
        }
        return ScriptValue::fromString(m_description);
    }
    if (m == QLatin1String("source")) {
        if (write) {
            m_source = argAt(args, args.size() - 1).toString();
            return {};
        }
        return ScriptValue::fromString(m_source);
    }
    if (m == QLatin1String("helpfile") || m == QLatin1String("helpcontext") || m == QLatin1String("lastdllerror")) {
        return m == QLatin1String("helpfile") ? ScriptValue::fromString(QString()) : ScriptValue::fromLong(0);
    }
    if (m == QLatin1String("clear")) {
        clear();
        return {};
    }
    if (m == QLatin1String("raise")) {
        const ScriptValue &num = argAt(args, 0);
        if (num.isMissing())
            throw ScriptError(ErrNo::ArgumentNotOptional);
        const int n = num.toLong();
        const ScriptValue &desc = argAt(args, 2);
        ScriptError e(n, desc.isMissing() ? QString() : desc.toString());
        throw e;
    }
    throw ScriptError(ErrNo::NoSuchMember);
}

} // namespace cadsim
