#pragma once

#include <QHash>
#include <QStringList>
#include <cstdint>

// The application's user preferences by number, one table per kind. A
// preference that was never set reads as false, 0, 0.0 or an empty list.
class Preferences final
{
public:
    bool toggle(std::int32_t id) const { return m_toggles.value(id, false); }
    std::int32_t integer(std::int32_t id) const { return m_integers.value(id, 0); }
    double real(std::int32_t id) const { return m_doubles.value(id, 0.0); }
    QStringList stringList(std::int32_t id) const { return m_lists.value(id); }

    void setToggle(std::int32_t id, bool value) { m_toggles.insert(id, value); }
    void setInteger(std::int32_t id, std::int32_t value) { m_integers.insert(id, value); }
    void setReal(std::int32_t id, double value) { m_doubles.insert(id, value); }
    void setStringList(std::int32_t id, const QStringList &value) { m_lists.insert(id, value); }

    bool hasToggle(std::int32_t id) const { return m_toggles.contains(id); }
    bool hasInteger(std::int32_t id) const { return m_integers.contains(id); }

private:
    QHash<std::int32_t, bool> m_toggles;
    QHash<std::int32_t, std::int32_t> m_integers;
    QHash<std::int32_t, double> m_doubles;
    QHash<std::int32_t, QStringList> m_lists;
};
