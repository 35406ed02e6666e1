#pragma once

#include "platform/registrystore.h"

#include <QString>
#include <array>
#include <cstdint>
#include <mutex>
#include <optional>

// The vault client's settings root under HKEY_LOCAL_MACHINE (32-bit view).
inline constexpr char16_t kSettingsRootKey[] = u"Software\\Mecadra\\Applications\\Vaultek Enterprise";
// Policy overrides, under HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE.
inline constexpr char16_t kPolicyKey[] = u"Software\\Policies\\Mecadra\\Vaultek Enterprise";
// The add-in's own per-user values, under HKEY_CURRENT_USER.
inline constexpr char16_t kAddInUserKey[] = u"Software\\Mecadra\\Applications\\Vaultek Enterprise\\McTaskAddIn";
// The key that holds the user-interface language (value "0"), below the root.
inline constexpr char16_t kLanguageKey[] = u"Vaults\\_-Global\\Settings";

// The add-in's help (Qt Help) in a language folder, and the language whose
// folder stands in when a language has none.
inline constexpr char16_t kHelpFileName[] = u"McTaskAddIn.qch";
inline constexpr char16_t kFallbackLanguage[] = u"GB";

// Which groups of the settings root a lookup searches, in which order (low
// byte), and with which access (bits 0x100, 0x200). Every group keeps one
// sub-key per vault; the policy group is the vault's sub-key of "Vaults"
// under the policy key, the current user's before the machine's.
enum SettingsLookup : unsigned {
    LookupDatabases = 1,              // "Databases\<vault>"
    LookupVaults = 2,                 // "Vaults\<vault>"
    LookupNamespace = 3,              // "Namespace\<vault>"
    LookupViewSetup = 4,              // "ViewSetup\<vault>"
    LookupPolicy = 5,                 // policy only
    LookupPolicyThenVaults = 6,       // policy, then "Vaults"
    LookupVaultsThenDatabases = 7,    // "Vaults", then "Databases"
    LookupAll = 8,                    // policy, Vaults, Databases, Namespace, ViewSetup
    LookupRead = 0x100,
    LookupWrite = 0x200,
};

// Folders and files of the vault client's installation, by kind number.
enum class InstallPath {
    SharedFolder = 0,
    UserDataFolder = 1,
    NetworkFilesFolder = 2,
    FileFormatFiltersFolder = 3,
    LanguageFolder = 4,
    HelpFile = 5, // kHelpFileName in the language folder, else in the "GB" one
    DefaultDataFolder = 6,
    DefaultCardsFolder = 7,
    DefaultConfigurationsFolder = 8,
    ConfigurationsList = 9,
    HelpViewer = 10,
    InstallationFolder = 11,
};
inline constexpr int kInstallPathCount = 12;

// Reads the vault client's machine settings. Missing keys or values give
// empty texts or 0, never an error.
class SettingsLight final
{
public:
    explicit SettingsLight(RegistryStore &store = RegistryStore::instance());

    // Looks name up in the vault's sub-key of the groups that flags select
    // (read access is implied); the first group that has it wins.
    std::optional<RegistryValue> lookup(const QString &vault, const QString &name, unsigned flags) const;
    std::uint32_t lookupDword(const QString &vault, const QString &name, unsigned flags) const;
    QString lookupString(const QString &vault, const QString &name, unsigned flags) const;
    // Writes name into the first group that flags select (needs LookupWrite),
    // creating the vault's sub-key. Policy groups are never written.
    bool write(const QString &vault, const QString &name, const RegistryValue &value, unsigned flags);

    // The vault's date style ("DateFmt" in "Vaults\<vault>"); 0 when absent.
    std::uint32_t vaultDateStyle(const QString &vault) const;
    bool setVaultDateStyle(const QString &vault, std::uint32_t style);

    // The user-interface language: value "0" of the language key, else
    // "DefaultLanguage" of the root (then copied to "0" and "Language"),
    // else "GB".
    QString language();
    // Sets value "0" of the language key (what "mctask language CODE" does).
    bool setLanguage(const QString &code);

    // Records the add-in's installation folder ("InstallDir" of the root),
    // below which "Lang\<language>\" is the language folder.
    bool setInstallationFolder(const QString &folder);

    // A folder (with a trailing "\") or file of the installation; empty when
    // neither its value nor its fall-back gives one. Cached per object.
    QString path(InstallPath kind);
    // The English help file beside a language folder ("...\Lang\DE\" gives
    // "...\Lang\GB\McTaskAddIn.qch").
    static QString englishHelpFile(const QString &languageFolder);

    // Where the settings live: HKLM, 32-bit view (the client is a 32-bit
    // program on 64-bit systems).
    static constexpr RegistryRoot kRoot = RegistryRoot::LocalMachine;
    static constexpr RegistryView kView = RegistryView::View32;

private:
    QString rootString(const QString &name) const;
    QString computePath(InstallPath kind);
    bool fileExists(const QString &path) const;

    RegistryStore &m_store;
    std::mutex m_mutex;
    std::array<std::optional<QString>, kInstallPathCount> m_paths;
};
