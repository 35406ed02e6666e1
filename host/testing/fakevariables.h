#pragma once

#include "host/idoxtask.h"

#include <QHash>
#include <QStringList>

// An in-memory variable holder for tests: a name-to-Variant map, with a way
// to make reads or writes of one name fail and a record of the write order.
class FakeVariables : public virtual IDoxVariables
{
public:
    HRESULT GetVariable(const QString &name, Variant &value) override
    {
        if (const auto f = m_failRead.constFind(name); f != m_failRead.cend())
            return *f;
        const auto it = m_values.constFind(name);
        if (it == m_values.cend())
            return S_FALSE;
        value = *it;
        return S_OK;
    }

    HRESULT SetVariable(const QString &name, const Variant &value) override
    {
        if (const auto f = m_failWrite.constFind(name); f != m_failWrite.cend())
            return *f;
        m_values.insert(name, value);
        m_writes.append(name);
        return S_OK;
    }

    void set(const QString &name, const Variant &value) { m_values.insert(name, value); }
    void remove(const QString &name) { m_values.remove(name); }
    bool has(const QString &name) const { return m_values.contains(name); }
    Variant value(const QString &name) const { return m_values.value(name); }
    void failRead(const QString &name, HRESULT hr) { m_failRead.insert(name, hr); }
    void failWrite(const QString &name, HRESULT hr) { m_failWrite.insert(name, hr); }
    const QStringList &writes() const { return m_writes; }

private:
    QHash<QString, Variant> m_values;
    QHash<QString, HRESULT> m_failRead;
    QHash<QString, HRESULT> m_failWrite;
    QStringList m_writes;
};
