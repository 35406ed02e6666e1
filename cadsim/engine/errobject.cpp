#include "cadsim/engine/errobject.h"

#include <QStringList>

namespace cadsim {

namespace {

// The programmatic name of the macro's project, the source of errors that name none.
const QString &projectName()
{
    static const QString name = QStringLiteral("McMacro1");
    return name;
}

const ScriptValue &argAt(ScriptArgs &args, std::size_t i)
{
    static const ScriptValue missing = ScriptValue::missing();
    return i < args.size() && args[i] ? *args[i] : missing;
}

} // namespace

std::int32_t ErrObject::mappedNumber(std::int32_t number)
{
    const auto bits = static_cast<std::uint32_t>(number);
    return (bits & 0xFFFF0000u) == 0x800A0000u ? static_cast<std::int32_t>(bits & 0xFFFFu) : number;
}

void ErrObject::set(const ScriptError &error)
{
    m_number = error.number();
    m_description = error.description();
    m_source = error.source().isEmpty() ? projectName() : error.source();
    m_helpFile = error.helpFile();
    m_helpContext = error.helpContext();
}

void ErrObject::clear()
{
    m_number = 0;
    m_description.clear();
    m_source.clear();
    m_helpFile.clear();
    m_helpContext = 0;
}

ScriptValue ErrObject::defaultValue(ScriptArgs &)
{
    return ScriptValue::fromLong(m_number);
}

const QStringList &ErrObject::parameterNames(const QString &member) const
{
    static const QStringList raise = {QStringLiteral("number"), QStringLiteral("source"), QStringLiteral("description"),
                                      QStringLiteral("helpfile"), QStringLiteral("helpcontext")};
    static const QStringList none;
    return member.compare(QLatin1String("raise"), Qt::CaseInsensitive) == 0 ? raise : none;
}

void ErrObject::raise(ScriptArgs &args) const
{
    const ScriptValue &num = argAt(args, 0);
    if (num.isMissing())
        throw ScriptError(ErrNo::ArgumentNotOptional);
    const std::int32_t n = mappedNumber(num.toLong());
    // 0 is no error, and positive numbers past 65535 are neither VBA's errors nor HRESULTs.
    if (n == 0 || n > 65535)
        throw ScriptError(ErrNo::InvalidCall);
    // What the call leaves out comes from the Err object while it still holds an error.
    const auto text = [&args](std::size_t i, const QString &kept) {
        const ScriptValue &v = argAt(args, i);
        return v.isMissing() ? kept : v.toString();
    };
    const bool holdsError = m_number != 0;
    ScriptError e(n, text(2, holdsError ? m_description : QString()));
    const ScriptValue &context = argAt(args, 4);
    e.setRaisedDetails(text(1, holdsError ? m_source : QString()), text(3, holdsError ? m_helpFile : QString()),
                       context.isMissing() ? (holdsError ? m_helpContext : 0) : context.toLong());
    throw e;
}

ScriptValue ErrObject::invoke(const QString &member, CallKind kind, ScriptArgs &args)
{
    const QString m = member.toLower();
    const bool write = kind == CallKind::Let;
    const ScriptValue &assigned = argAt(args, args.size() - 1);
    if (m == QLatin1String("number")) {
        if (write) {
            m_number = mappedNumber(assigned.toLong());
            m_description = ScriptError::standardDescription(m_number);
            return {};
        }
        return ScriptValue::fromLong(m_number);
    }
    QString *text = m == QLatin1String("description") ? &m_description
                    : m == QLatin1String("source")    ? &m_source
                    : m == QLatin1String("helpfile")  ? &m_helpFile
                                                      : nullptr;
    if (text) {
        if (write) {
            *text = assigned.toString();
            return {};
        }
        return ScriptValue::fromString(*text);
    }
    if (m == QLatin1String("helpcontext")) {
        if (write) {
            m_helpContext = assigned.toLong();
            return {};
        }
        return ScriptValue::fromLong(m_helpContext);
    }
    if (m == QLatin1String("lastdllerror"))
        return ScriptValue::fromLong(0);
    if (m == QLatin1String("clear")) {
        clear();
        return {};
    }
    if (m == QLatin1String("raise"))
        raise(args);
    throw ScriptError(ErrNo::NoSuchMember);
}

} // namespace cadsim
