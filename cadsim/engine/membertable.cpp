#include "cadsim/engine/membertable.h"

namespace cadsim {

void MemberTable::method(const char *name, Handler handler)
{
    m_members.add(name, {std::move(handler), false});
}

void MemberTable::property(const char *name, std::function<ScriptValue()> get,
                           std::function<void(const ScriptValue &)> let)
{
    const bool writable = static_cast<bool>(let);
    Handler handler = [get = std::move(get), let = std::move(let)](CallKind kind, ScriptArgs &args) -> ScriptValue {
        if (kind != CallKind::Let && kind != CallKind::Set)
            return get();
        if (!let)
            throw ScriptError(ErrNo::NoSuchMember);
        if (args.empty())
            throw ScriptError(ErrNo::ArgumentNotOptional);
        let(*args.back());
        return {};
    };
    m_members.add(name, {std::move(handler), writable});
}

ScriptValue MemberTable::invoke(const QString &name, CallKind kind, ScriptArgs &args) const
{
    const Member *member = find(name);
    if (!member)
        throw ScriptError(ErrNo::NoSuchMember);
    return member->handler(kind, args);
}

ScriptValue &requiredArg(ScriptArgs &args, std::size_t i)
{
    if (i >= args.size() || !args[i] || args[i]->isMissing())
        throw ScriptError(ErrNo::ArgumentNotOptional);
    return *args[i];
}

const ScriptValue &optionalArg(const ScriptArgs &args, std::size_t i)
{
    static const ScriptValue missing = ScriptValue::missing();
    return i < args.size() && args[i] ? *args[i] : missing;
}

void writeBack(ScriptArgs &args, std::size_t i, ScriptValue value)
{
    if (hasArg(args, i))
        *args[i] = std::move(value);
}

} // namespace cadsim
