#pragma once

#include "platform/registrystore.h"
#include "platform/registrytree.h"

#include "platform/filestamp.h"

#include <mutex>

// A registry store kept in one JSON file that several processes share.
// Every read looks at the file again when it changed since it was loaded;
// every change is made under a lock file on the newest content and written
// atomically, so no process loses another's write.
class JsonRegistryStore final : public RegistryStore
{
public:
    // file: e.g. mctaskHomePath("registry.json"); created on the first write.
    explicit JsonRegistryStore(const QString &file);

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

    QString file() const { return m_file; }

private:
    void reloadIfChanged() const;
    void load() const;
    bool save() const;
    // Runs change on the newest content under the lock file and saves when it
    // returns true. Returns what change returned and false when saving failed.
    template <class Change>
    bool modify(Change change);

    QString m_file;
    mutable std::recursive_mutex m_mutex;
    mutable RegistryTree m_tree;
    mutable FileStamp m_loaded;
};
