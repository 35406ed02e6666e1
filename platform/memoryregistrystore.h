#pragma once

#include "platform/registrystore.h"
#include "platform/registrytree.h"

#include <mutex>

// A registry store that lives in memory only (tests).
class MemoryRegistryStore final : public RegistryStore
{
public:
    bool keyExists(RegistryRoot root, RegistryView view, const QString &path) const override;
    bool createKey(RegistryRoot root, RegistryView view, const QString &path) override;
    bool deleteKeyTree(RegistryRoot root, RegistryView view, const QString &path) override;
    std::optional<RegistryValue> readValue(RegistryRoot root, RegistryView view, const QString &path,
                                           const QString &name) const override;
    bool writeValue(RegistryRoot root, RegistryView view, const QString &path, const QString &name,
                    const RegistryValue &value) override;
    bool deleteValue(RegistryRoot root, RegistryView view, const QString &path, const QString &name) override;
    QStringList subKeys(RegistryRoot root, RegistryView view, const QString &path) const override;
    QStringList valueNames(RegistryRoot root, RegistryView view, const QString &path) const override;

    // The whole content as JSON (the same form the file store writes).
    QByteArray toJson() const;

private:
    mutable std::mutex m_mutex;
    RegistryTree m_tree;
};
