#include "cadsim/engine/collections.h"

#include "cadsim/engine/operators.h"

#include <vector>

namespace cadsim {

namespace {

const ScriptValue &arg(ScriptArgs &args, std::size_t i)
{
    static const ScriptValue missing = ScriptValue::missing();
    return i < args.size() && args[i] ? *args[i] : missing;
}

const ScriptValue &required(ScriptArgs &args, std::size_t i)
{
    const ScriptValue &v = arg(args, i);
    if (v.isMissing())
        throw ScriptError(ErrNo::ArgumentNotOptional);
    return v;
}

class Collection final : public ScriptObject {
public:
    QString typeName() const override { return QStringLiteral("Collection"); }
    std::vector<ScriptValue> enumerate() override
    {
        std::vector<ScriptValue> out;
        for (const auto &e : m_items)
            out.push_back(e.second);
        return out;
    }
    ScriptValue defaultValue(ScriptArgs &args) override { return m_items[indexOf(required(args, 0))].second; }
    ScriptValue invoke(const QString &member, CallKind, ScriptArgs &args) override
    {
        const QString m = member.toLower();
        if (m == QLatin1String("count"))
            return ScriptValue::fromLong(static_cast<std::int32_t>(m_items.size()));
        if (m == QLatin1String("item"))
            return defaultValue(args);
        if (m == QLatin1String("add")) {
            const ScriptValue &key = arg(args, 1);
            QString k;
            if (!key.isMissing()) {
                k = key.toString().toLower();
                for (const auto &e : m_items) {
                    if (!k.isEmpty() && e.first == k)
                        throw ScriptError(457);
                }
            }
            m_items.emplace_back(k, required(args, 0));
            return {};
        }
        if (m == QLatin1String("remove")) {
            m_items.erase(m_items.begin() + static_cast<std::ptrdiff_t>(indexOf(required(args, 0))));
            return {};
        }
        throw ScriptError(ErrNo::NoSuchMember);
    }

private:
    std::size_t indexOf(const ScriptValue &key) const
    {
        if (key.isString()) {
            const QString k = key.toString().toLower();
            for (std::size_t i = 0; i < m_items.size(); ++i) {
                if (m_items[i].first == k)
                    return i;
            }
            throw ScriptError(ErrNo::InvalidCall);
        }
        const std::int32_t n = key.toLong();
        if (n < 1 || n > static_cast<std::int32_t>(m_items.size()))
            throw ScriptError(ErrNo::SubscriptOutOfRange);
        return static_cast<std::size_t>(n - 1);
    }
    std::vector<std::pair<QString, ScriptValue>> m_items;
};

class Dictionary final : public ScriptObject {
public:
    QString typeName() const override { return QStringLiteral("Dictionary"); }
    std::vector<ScriptValue> enumerate() override
    {
        std::vector<ScriptValue> keys;
        for (const auto &e : m_items)
            keys.push_back(e.first);
        return keys;
    }
    ScriptValue defaultValue(ScriptArgs &args) override
    {
        // Reading a missing key adds it with an empty value, as the dictionary does.
        const ScriptValue &key = required(args, 0);
        const std::ptrdiff_t i = find(key);
        if (i >= 0)
            return m_items[static_cast<std::size_t>(i)].second;
        m_items.emplace_back(key, ScriptValue());
        return {};
    }
    ScriptValue invoke(const QString &member, CallKind kind, ScriptArgs &args) override
    {
        const QString m = member.toLower();
        if (m == QLatin1String("count"))
            return ScriptValue::fromLong(static_cast<std::int32_t>(m_items.size()));
        if (m == QLatin1String("comparemode")) {
            if (kind == CallKind::Let) {
                if (!m_items.empty())
                    throw ScriptError(ErrNo::InvalidCall);
                m_textCompare = required(args, 0).toLong() == 1;
                return {};
            }
            return ScriptValue::fromLong(m_textCompare ? 1 : 0);
        }
        if (m == QLatin1String("exists"))
            return ScriptValue::fromBool(find(required(args, 0)) >= 0);
        if (m == QLatin1String("add")) {
            if (find(required(args, 0)) >= 0)
                throw ScriptError(457);
            m_items.emplace_back(required(args, 0), required(args, 1));
            return {};
        }
        if (m == QLatin1String("item")) {
            if (kind == CallKind::Let || kind == CallKind::Set) {
                const ScriptValue &key = required(args, 0);
                const ScriptValue &value = required(args, 1);
                const std::ptrdiff_t i = find(key);
                if (i >= 0)
                    m_items[static_cast<std::size_t>(i)].second = value;
                else
                    m_items.emplace_back(key, value);
                return {};
            }
            return defaultValue(args);
        }
        if (m == QLatin1String("keys") || m == QLatin1String("items")) {
            std::vector<ScriptValue> out;
            for (const auto &e : m_items)
                out.push_back(m == QLatin1String("keys") ? e.first : e.second);
            return ScriptValue::fromList(out);
        }
        if (m == QLatin1String("remove")) {
            const std::ptrdiff_t i = find(required(args, 0));
            if (i < 0)
                throw ScriptError(32811, QStringLiteral("Element not found"));
            m_items.erase(m_items.begin() + i);
            return {};
        }
        if (m == QLatin1String("removeall")) {
            m_items.clear();
            return {};
        }
        throw ScriptError(ErrNo::NoSuchMember);
    }

private:
    std::ptrdiff_t find(const ScriptValue &key) const
    {
        for (std::size_t i = 0; i < m_items.size(); ++i) {
            const ScriptValue &k = m_items[i].first;
            if (k.isObject() || key.isObject()) {
                if (k.isObject() && key.isObject() && k.object() == key.object())
                    return static_cast<std::ptrdiff_t>(i);
                continue;
            }
            // Keys of different kinds never match ("1" is not 1).
            if (k.isString() != key.isString())
                continue;
            if (compareValues(k, key, m_textCompare) == 0)
                return static_cast<std::ptrdiff_t>(i);
        }
        return -1;
    }
    std::vector<std::pair<ScriptValue, ScriptValue>> m_items;
    bool m_textCompare = false;
};

} // namespace

std::shared_ptr<ScriptObject> makeCollection()
{
    return std::make_shared<Collection>();
}

std::shared_ptr<ScriptObject> makeDictionary()
{
    return std::make_shared<Dictionary>();
}

} // namespace cadsim
