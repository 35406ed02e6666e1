#pragma once

#include "platform/registrystore.h"

#include <optional>

// Access rights of an open key.
enum RegistryAccess : unsigned {
    RegistryRead = 0x1,
    RegistryWrite = 0x2,
    RegistryReadWrite = RegistryRead | RegistryWrite,
};

// A thin handle on one key of a RegistryStore: open or create a key under a
// root with given rights, read and write its named values, closed on
// destruction. Reads need read access and writes write access; every
// operation on a closed key fails.
class Registry final
{
public:
    explicit Registry(RegistryStore &store = RegistryStore::instance());
    ~Registry();
    Registry(Registry &&other) noexcept;
    Registry &operator=(Registry &&other) noexcept;
    Registry(const Registry &) = delete;
    Registry &operator=(const Registry &) = delete;

    // Opens an existing key; false (and closed) when it does not exist.
    bool open(RegistryRoot root, const QString &path, unsigned access = RegistryRead,
              RegistryView view = RegistryView::Native);
    // Opens the key, creating it and its parents when missing; needs write access.
    bool create(RegistryRoot root, const QString &path, unsigned access = RegistryReadWrite,
                RegistryView view = RegistryView::Native);
    // Opens a sub-key of this key into a new handle (same store, root and view).
    Registry openSubKey(const QString &subPath, unsigned access = RegistryRead) const;
    Registry createSubKey(const QString &subPath, unsigned access = RegistryReadWrite) const;
    void close();

    bool isOpen() const { return m_open; }
    RegistryRoot root() const { return m_root; }
    RegistryView view() const { return m_view; }
    QString path() const { return m_path; }

    std::optional<RegistryValue> value(const QString &name) const;
    // A DWORD value; nullopt when absent or of another type.
    std::optional<std::uint32_t> readDword(const QString &name) const;
    // A string or expandable string as stored; nullopt when absent or a DWORD.
    std::optional<QString> readString(const QString &name) const;
    // Like readString, with the environment references of an expandable
    // string expanded.
    std::optional<QString> readExpandedString(const QString &name) const;

    bool writeDword(const QString &name, std::uint32_t value);
    bool writeString(const QString &name, const QString &value);
    bool writeExpandString(const QString &name, const QString &value);
    bool deleteValue(const QString &name);
    // Removes a sub-key with everything below it.
    bool deleteSubKeyTree(const QString &subPath);

    QStringList subKeys() const;
    QStringList valueNames() const;

private:
    bool canRead() const { return m_open && (m_access & RegistryRead); }
    bool canWrite() const { return m_open && (m_access & RegistryWrite); }

    RegistryStore *m_store;
    bool m_open = false;
    unsigned m_access = 0;
    RegistryRoot m_root = RegistryRoot::LocalMachine;
    RegistryView m_view = RegistryView::Native;
    QString m_path;
};
