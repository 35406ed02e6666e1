#include "platform/registrytree.h"

#include <QJsonArray>

namespace {

QString keyOf(const QString &name)
{
    return name.toCaseFolded();
}

// The views that have a tree of their own: the machine-wide roots have a
// 32-bit view besides the native (64-bit) one; the user's root is shared.
QString rootId(RegistryRoot root, RegistryView view)
{
    const bool view32 = view == RegistryView::View32;
    switch (root) {
    case RegistryRoot::LocalMachine:
        return view32 ? QStringLiteral("HKLM32") : QStringLiteral("HKLM");
    case RegistryRoot::ClassesRoot:
        return view32 ? QStringLiteral("HKCR32") : QStringLiteral("HKCR");
    case RegistryRoot::CurrentUser:
        break;
    }
    return QStringLiteral("HKCU");
}

const QStringList &rootIds()
{
    static const QStringList ids = {QStringLiteral("HKLM"), QStringLiteral("HKLM32"), QStringLiteral("HKCU"),
                                    QStringLiteral("HKCR"), QStringLiteral("HKCR32")};
    return ids;
}

QString typeName(RegistryValueType type)
{
    switch (type) {
    case RegistryValueType::Dword:
        return QStringLiteral("dword");
    case RegistryValueType::ExpandString:
        return QStringLiteral("expand_sz");
    case RegistryValueType::String:
        break;
    }
    return QStringLiteral("sz");
}

QJsonObject keyToJson(const RegistryTree::Key &key)
{
    QJsonObject values;
    for (const auto &[lower, entry] : key.values) {
        const auto &[name, value] = entry;
        QJsonObject v;
        v.insert(QStringLiteral("type"), typeName(value.type));
        if (value.type == RegistryValueType::Dword)
            v.insert(QStringLiteral("data"), static_cast<qint64>(value.dword));
        else
            v.insert(QStringLiteral("data"), value.text);
        values.insert(name, v);
    }
    QJsonObject subKeys;
    for (const auto &[lower, sub] : key.subKeys)
        subKeys.insert(sub->name, keyToJson(*sub));
    QJsonObject json;
    if (!values.isEmpty())
        json.insert(QStringLiteral("values"), values);
    if (!subKeys.isEmpty())
        json.insert(QStringLiteral("keys"), subKeys);
    return json;
}

bool keyFromJson(const QJsonObject &json, RegistryTree::Key &key)
{
    const QJsonObject values = json.value(QStringLiteral("values")).toObject();
    for (auto it = values.begin(); it != values.end(); ++it) {
        const QJsonObject v = it.value().toObject();
        const QString type = v.value(QStringLiteral("type")).toString();
        RegistryValue value;
        if (type == QLatin1String("dword")) {
            const qint64 data = v.value(QStringLiteral("data")).toInteger(-1);
            if (data < 0 || data > 0xFFFFFFFFLL)
                return false;
            value = RegistryValue::fromDword(static_cast<std::uint32_t>(data));
        } else if (type == QLatin1String("sz")) {
            value = RegistryValue::fromString(v.value(QStringLiteral("data")).toString());
        } else if (type == QLatin1String("expand_sz")) {
            value = RegistryValue::fromExpandString(v.value(QStringLiteral("data")).toString());
        } else {
            return false;
        }
        key.values[keyOf(it.key())] = {it.key(), value};
    }
    const QJsonObject subKeys = json.value(QStringLiteral("keys")).toObject();
    for (auto it = subKeys.begin(); it != subKeys.end(); ++it) {
        auto sub = std::make_unique<RegistryTree::Key>();
        sub->name = it.key();
        if (!keyFromJson(it.value().toObject(), *sub))
            return false;
        key.subKeys[keyOf(it.key())] = std::move(sub);
    }
    return true;
}

} // namespace

RegistryTree::RegistryTree()
{
    clear();
}

void RegistryTree::clear()
{
    m_roots.clear();
    for (const QString &id : rootIds())
        m_roots[id].name = id;
}

QStringList RegistryTree::splitPath(const QString &path)
{
    return path.split(QLatin1Char('\\'), Qt::SkipEmptyParts);
}

RegistryTree::Key &RegistryTree::rootKey(RegistryRoot root, RegistryView view)
{
    return m_roots[rootId(root, view)];
}

const RegistryTree::Key &RegistryTree::rootKey(RegistryRoot root, RegistryView view) const
{
    return m_roots.at(rootId(root, view));
}

const RegistryTree::Key *RegistryTree::find(RegistryRoot root, RegistryView view, const QString &path) const
{
    const Key *key = &rootKey(root, view);
    for (const QString &name : splitPath(path)) {
        const auto it = key->subKeys.find(keyOf(name));
        if (it == key->subKeys.end())
            return nullptr;
        key = it->second.get();
    }
    return key;
}

RegistryTree::Key *RegistryTree::find(RegistryRoot root, RegistryView view, const QString &path)
{
    return const_cast<Key *>(std::as_const(*this).find(root, view, path));
}

RegistryTree::Key *RegistryTree::create(RegistryRoot root, RegistryView view, const QString &path)
{
    Key *key = &rootKey(root, view);
    for (const QString &name : splitPath(path)) {
        auto &slot = key->subKeys[keyOf(name)];
        if (!slot) {
            slot = std::make_unique<Key>();
            slot->name = name;
        }
        key = slot.get();
    }
    return key;
}

bool RegistryTree::remove(RegistryRoot root, RegistryView view, const QString &path)
{
    QStringList names = splitPath(path);
    if (names.isEmpty())
        return false;
    const QString last = names.takeLast();
    Key *parentKey = find(root, view, names.join(QLatin1Char('\\')));
    return parentKey && parentKey->subKeys.erase(keyOf(last)) > 0;
}

QJsonObject RegistryTree::toJson() const
{
    QJsonObject json;
    for (const auto &[id, key] : m_roots) {
        const QJsonObject k = keyToJson(key);
        if (!k.isEmpty())
            json.insert(id, k);
    }
    return json;
}

bool RegistryTree::fromJson(const QJsonObject &json)
{
    clear();
    for (auto it = json.begin(); it != json.end(); ++it) {
        if (!rootIds().contains(it.key()) || !it.value().isObject() ||
            !keyFromJson(it.value().toObject(), m_roots[it.key()])) {
            clear();
            return false;
        }
    }
    return true;
}

std::optional<RegistryValue> RegistryTree::readValue(RegistryRoot root, RegistryView view, const QString &path,
                                                     const QString &name) const
{
    const Key *key = find(root, view, path);
    if (!key)
        return std::nullopt;
    const auto it = key->values.find(keyOf(name));
    if (it == key->values.end())
        return std::nullopt;
    return it->second.second;
}

bool RegistryTree::writeValue(RegistryRoot root, RegistryView view, const QString &path, const QString &name,
                              const RegistryValue &value)
{
    Key *key = find(root, view, path);
    if (!key)
        return false;
    auto &slot = key->values[keyOf(name)];
    // An existing value keeps the case of its first writer, as a key does.
    slot = {slot.first.isNull() ? name : slot.first, value};
    return true;
}

bool RegistryTree::deleteValue(RegistryRoot root, RegistryView view, const QString &path, const QString &name)
{
    Key *key = find(root, view, path);
    return key && key->values.erase(keyOf(name)) > 0;
}

// The maps are keyed by case-folded names, so map order is the
// case-insensitive order the interface promises.
QStringList RegistryTree::subKeys(RegistryRoot root, RegistryView view, const QString &path) const
{
    QStringList result;
    if (const Key *key = find(root, view, path)) {
        for (const auto &[lower, sub] : key->subKeys)
            result.append(sub->name);
    }
    return result;
}

QStringList RegistryTree::valueNames(RegistryRoot root, RegistryView view, const QString &path) const
{
    QStringList result;
    if (const Key *key = find(root, view, path)) {
        for (const auto &[lower, entry] : key->values)
            result.append(entry.first);
    }
    return result;
}
