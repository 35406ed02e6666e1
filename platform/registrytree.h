#pragma once

#include "platform/registrystore.h"

#include <QByteArray>
#include <QJsonObject>

#include <map>
#include <memory>

// The content of a registry store: one key tree per root and view, with
// case-insensitive names that keep their written case. Not thread-safe; the
// stores lock around it.
class RegistryTree final
{
public:
    struct Key {
        QString name;
        std::map<QString, std::unique_ptr<Key>> subKeys; // by lower-case name
        std::map<QString, std::pair<QString, RegistryValue>> values; // lower-case name -> (name, value)
    };

    RegistryTree();

    const Key *find(RegistryRoot root, RegistryView view, const QString &path) const;
    Key *find(RegistryRoot root, RegistryView view, const QString &path);
    Key *create(RegistryRoot root, RegistryView view, const QString &path);
    bool remove(RegistryRoot root, RegistryView view, const QString &path);

    // The store operations on this tree (see RegistryStore).
    std::optional<RegistryValue> readValue(RegistryRoot root, RegistryView view, const QString &path,
                                           const QString &name) const;
    bool writeValue(RegistryRoot root, RegistryView view, const QString &path, const QString &name,
                    const RegistryValue &value);
    bool deleteValue(RegistryRoot root, RegistryView view, const QString &path, const QString &name);
    QStringList subKeys(RegistryRoot root, RegistryView view, const QString &path) const;
    QStringList valueNames(RegistryRoot root, RegistryView view, const QString &path) const;

    QJsonObject toJson() const;
    // Replaces the content; false (content emptied) when json is not a store.
    bool fromJson(const QJsonObject &json);
    void clear();

    // "A\\B\\C" -> {"A","B","C"}; empty names (doubled or outer "\") are dropped.
    static QStringList splitPath(const QString &path);

private:
    Key &rootKey(RegistryRoot root, RegistryView view);
    const Key &rootKey(RegistryRoot root, RegistryView view) const;

    std::map<QString, Key> m_roots; // "HKLM", "HKLM32", "HKCU", "HKCR", "HKCR32"
};
