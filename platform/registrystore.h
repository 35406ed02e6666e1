#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

// The machine's hierarchical settings store: keys with sub-keys and named,
// typed values under a few roots. Key paths use "\" between names; names of
// keys and values compare case-insensitively and keep the case they were
// created with. The value named "" is a key's default value.
enum class RegistryRoot {
    LocalMachine, // HKEY_LOCAL_MACHINE
    CurrentUser,  // HKEY_CURRENT_USER
    ClassesRoot,  // HKEY_CLASSES_ROOT
};

// The 32-bit and 64-bit views of the machine-wide roots. Native is the 64-bit
// view. As on 64-bit Windows, the current user's root is the same in both.
enum class RegistryView {
    Native,
    View32,
    View64,
};

enum class RegistryValueType {
    Dword,
    String,
    ExpandString, // a string with %NAME% references to environment variables
};

struct RegistryValue {
    RegistryValueType type = RegistryValueType::String;
    std::uint32_t dword = 0;
    QString text;

    static RegistryValue fromDword(std::uint32_t value) { return {RegistryValueType::Dword, value, {}}; }
    static RegistryValue fromString(const QString &value) { return {RegistryValueType::String, 0, value}; }
    static RegistryValue fromExpandString(const QString &value) { return {RegistryValueType::ExpandString, 0, value}; }

    bool operator==(const RegistryValue &other) const = default;
};

// "HKLM" / "HKEY_LOCAL_MACHINE" and the like; nullopt for anything else.
std::optional<RegistryRoot> registryRootFromName(const QString &name);
QString registryRootName(RegistryRoot root); // "HKEY_LOCAL_MACHINE", ...

// %NAME% replaced by the environment variable NAME (left as written when unset).
QString expandEnvironmentStrings(const QString &text);

class RegistryStore
{
public:
    virtual ~RegistryStore() = default;

    virtual bool keyExists(RegistryRoot root, RegistryView view, const QString &path) const = 0;
    // Creates the key and every missing parent. True when it exists afterwards.
    virtual bool createKey(RegistryRoot root, RegistryView view, const QString &path) = 0;
    // Removes the key with all its sub-keys and values. False when it did not
    // exist (or for the root itself: a root cannot be deleted).
    virtual bool deleteKeyTree(RegistryRoot root, RegistryView view, const QString &path) = 0;

    virtual std::optional<RegistryValue> readValue(RegistryRoot root, RegistryView view, const QString &path,
                                                   const QString &name) const = 0;
    // Writes a value; the key must exist. False otherwise.
    virtual bool writeValue(RegistryRoot root, RegistryView view, const QString &path, const QString &name,
                            const RegistryValue &value) = 0;
    virtual bool deleteValue(RegistryRoot root, RegistryView view, const QString &path, const QString &name) = 0;

    // Names of the direct sub-keys / values, in case-insensitive order.
    virtual QStringList subKeys(RegistryRoot root, RegistryView view, const QString &path) const = 0;
    virtual QStringList valueNames(RegistryRoot root, RegistryView view, const QString &path) const = 0;

    // The process-wide store: the JSON store under MCTASK_HOME unless a test
    // installed another.
    static RegistryStore &instance();
    // Installs store as the process-wide one (nullptr restores the default)
    // and returns the previous override. The caller keeps ownership.
    static RegistryStore *setInstance(RegistryStore *store);
};

// Installs a store for the lifetime of the guard (tests).
class ScopedRegistryStore final
{
public:
    explicit ScopedRegistryStore(RegistryStore &store) : m_previous(RegistryStore::setInstance(&store)) {}
    ~ScopedRegistryStore() { RegistryStore::setInstance(m_previous); }
    ScopedRegistryStore(const ScopedRegistryStore &) = delete;
    ScopedRegistryStore &operator=(const ScopedRegistryStore &) = delete;

private:
    RegistryStore *m_previous;
};
