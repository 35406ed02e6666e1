#pragma once

#include "cadsim/engine/scriptobject.h"

#include <QHash>

#include <functional>

namespace cadsim {

// Entries by member name, matched without regard to letter case.
template <class Entry>
class NamedTable final {
public:
    void add(const char *name, Entry entry) { m_entries.insert(QString::fromLatin1(name).toLower(), std::move(entry)); }
    const Entry *find(const QString &name) const
    {
        const auto it = m_entries.constFind(name.toLower());
        return it == m_entries.constEnd() ? nullptr : &it.value();
    }

private:
    QHash<QString, Entry> m_entries;
};

// The members of an automation object: each with its arguments, result and
// effect in one handler. For Let and Set the value is the last argument.
class MemberTable final {
public:
    using Handler = std::function<ScriptValue(CallKind, ScriptArgs &)>;
    struct Member {
        Handler handler;
        bool writable = false; // a property with a setter: one argument writes it
    };

    void method(const char *name, Handler handler);
    // A property with a getter and, when given, a setter taking the value.
    void property(const char *name, std::function<ScriptValue()> get,
                  std::function<void(const ScriptValue &)> let = {});
    const Member *find(const QString &name) const { return m_members.find(name); }
    // Raises 438 for a member the table does not have.
    ScriptValue invoke(const QString &name, CallKind kind, ScriptArgs &args) const;

private:
    NamedTable<Member> m_members;
};

// A script object whose members are a table.
class TableObject : public ScriptObject {
public:
    ScriptValue invoke(const QString &member, CallKind kind, ScriptArgs &args) override
    {
        return m_members.invoke(member, kind, args);
    }
    const MemberTable &members() const { return m_members; }

protected:
    using Handler = MemberTable::Handler;
    void method(const char *name, Handler handler) { m_members.method(name, std::move(handler)); }
    void property(const char *name, std::function<ScriptValue()> get, std::function<void(const ScriptValue &)> let = {})
    {
        m_members.property(name, std::move(get), std::move(let));
    }

    MemberTable m_members;
};

// Arguments as members read them.
// The i-th argument; raises 449 when it was omitted.
ScriptValue &requiredArg(ScriptArgs &args, std::size_t i);
// The i-th argument, or ScriptValue::missing() when it was omitted.
const ScriptValue &optionalArg(const ScriptArgs &args, std::size_t i);
inline bool hasArg(const ScriptArgs &args, std::size_t i) { return !optionalArg(args, i).isMissing(); }
// A ByRef result, stored when the caller passed the argument.
void writeBack(ScriptArgs &args, std::size_t i, ScriptValue value);

} // namespace cadsim
