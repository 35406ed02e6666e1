#include "common/settingslight.h"

#include "platform/drivemap.h"
#include "platform/filesystem.h"
#include "platform/registry.h"
#include "base/windowspath.h"

#include <QDir>
#include <QStandardPaths>
#include <vector>

namespace {

enum class Group { Policy, Databases, Vaults, Namespace, ViewSetup };

std::vector<Group> groupsOf(unsigned flags)
{
    switch (flags & 0xFFu) {
    case LookupDatabases:
        return {Group::Databases};
    case LookupVaults:
        return {Group::Vaults};
    case LookupNamespace:
        return {Group::Namespace};
    case LookupViewSetup:
        return {Group::ViewSetup};
    case LookupPolicy:
        return {Group::Policy};
    case LookupPolicyThenVaults:
        return {Group::Policy, Group::Vaults};
    case LookupVaultsThenDatabases:
        return {Group::Vaults, Group::Databases};
    case LookupAll:
        return {Group::Policy, Group::Vaults, Group::Databases, Group::Namespace, Group::ViewSetup};
    default:
        return {};
    }
}

QString groupKey(Group group)
{
    switch (group) {
    case Group::Databases:
        return QStringLiteral("Databases");
    case Group::Namespace:
        return QStringLiteral("Namespace");
    case Group::ViewSetup:
        return QStringLiteral("ViewSetup");
    case Group::Vaults:
    case Group::Policy:
        break;
    }
    return QStringLiteral("Vaults");
}

QString settingsRoot()
{
    return QString::fromUtf16(kSettingsRootKey);
}

QString under(const QString &a, const QString &b)
{
    return a + QLatin1Char('\\') + b;
}

} // namespace

SettingsLight::SettingsLight(RegistryStore &store) : m_store(store) {}

std::optional<RegistryValue> SettingsLight::lookup(const QString &vault, const QString &name,
                                                   unsigned flags) const
{
    if (vault.isEmpty())
        return std::nullopt;
    for (const Group group : groupsOf(flags)) {
        if (group == Group::Policy) {
            const QString key = under(under(QString::fromUtf16(kPolicyKey), QStringLiteral("Vaults")), vault);
            for (const RegistryRoot root : {RegistryRoot::CurrentUser, RegistryRoot::LocalMachine}) {
                Registry policy(m_store);
                if (policy.open(root, key, RegistryRead, kView)) {
                    if (auto value = policy.value(name))
                        return value;
                }
            }
            continue;
        }
        Registry key(m_store);
        if (key.open(kRoot, under(under(settingsRoot(), groupKey(group)), vault), RegistryRead, kView)) {
            if (auto value = key.value(name))
                return value;
        }
    }
    return std::nullopt;
}

std::uint32_t SettingsLight::lookupDword(const QString &vault, const QString &name, unsigned flags) const
{
    const auto value = lookup(vault, name, flags);
    return value && value->type == RegistryValueType::Dword ? value->dword : 0;
}

QString SettingsLight::lookupString(const QString &vault, const QString &name, unsigned flags) const
{
    const auto value = lookup(vault, name, flags);
    if (!value || value->type == RegistryValueType::Dword)
        return {};
    return value->type == RegistryValueType::ExpandString ? expandEnvironmentStrings(value->text) : value->text;
}

bool SettingsLight::write(const QString &vault, const QString &name, const RegistryValue &value, unsigned flags)
{
    if (!(flags & LookupWrite) || vault.isEmpty())
        return false;
    for (const Group group : groupsOf(flags)) {
        if (group == Group::Policy)
            continue;
        Registry key(m_store);
        if (!key.create(kRoot, under(under(settingsRoot(), groupKey(group)), vault), RegistryReadWrite, kView))
            return false;
        return m_store.writeValue(kRoot, kView, key.path(), name, value);
    }
    return false;
}

std::uint32_t SettingsLight::vaultDateStyle(const QString &vault) const
{
    return lookupDword(vault, QStringLiteral("DateFmt"), LookupVaults | LookupRead);
}

bool SettingsLight::setVaultDateStyle(const QString &vault, std::uint32_t style)
{
    return write(vault, QStringLiteral("DateFmt"), RegistryValue::fromDword(style), LookupVaults | LookupWrite);
}

QString SettingsLight::language()
{
    Registry settings(m_store);
    // The key is created when missing, so the copy below has a place to go.
    if (settings.create(kRoot, under(settingsRoot(), QString::fromUtf16(kLanguageKey)), RegistryReadWrite, kView) ||
        settings.open(kRoot, under(settingsRoot(), QString::fromUtf16(kLanguageKey)), RegistryRead, kView)) {
        const QString current = settings.readString(QStringLiteral("0")).value_or(QString());
        if (!current.isEmpty())
            return current;
    }
    const QString fallback = rootString(QStringLiteral("DefaultLanguage"));
    if (fallback.isEmpty())
        return QStringLiteral("GB");
    settings.writeString(QStringLiteral("0"), fallback);
    Registry root(m_store);
    if (root.open(kRoot, settingsRoot(), RegistryReadWrite, kView))
        root.writeString(QStringLiteral("Language"), fallback);
    return fallback;
}

bool SettingsLight::setLanguage(const QString &code)
{
    Registry settings(m_store);
    if (!settings.create(kRoot, under(settingsRoot(), QString::fromUtf16(kLanguageKey)), RegistryReadWrite, kView))
        return false;
    std::lock_guard lock(m_mutex);
    m_paths = {}; // the folders below the language change with it
    return settings.writeString(QStringLiteral("0"), code);
}

bool SettingsLight::setInstallationFolder(const QString &folder)
{
    Registry root(m_store);
    if (!root.create(kRoot, settingsRoot(), RegistryReadWrite, kView))
        return false;
    std::lock_guard lock(m_mutex);
    m_paths = {};
    return root.writeString(QStringLiteral("InstallDir"), folder);
}

QString SettingsLight::rootString(const QString &name) const
{
    Registry root(m_store);
    if (!root.open(kRoot, settingsRoot(), RegistryRead, kView))
        return {};
    return root.readExpandedString(name).value_or(QString());
}

bool SettingsLight::fileExists(const QString &path) const
{
    const QString native = DriveMap::instance().toNativeOrSelf(path);
    return !native.isEmpty() && FileSystem::instance().exists(native);
}

QString SettingsLight::path(InstallPath kind)
{
    const auto index = static_cast<std::size_t>(kind);
    if (index >= m_paths.size())
        return {};
    {
        std::lock_guard lock(m_mutex);
        if (m_paths[index])
            return *m_paths[index];
    }
    const QString value = computePath(kind);
    std::lock_guard lock(m_mutex);
    m_paths[index] = value;
    return value;
}

QString SettingsLight::englishHelpFile(const QString &languageFolder)
{
    return WindowsPath::addBackslash(WindowsPath::parent(languageFolder)) + QString::fromUtf16(kFallbackLanguage) +
           QLatin1Char('\\') + QString::fromUtf16(kHelpFileName);
}

QString SettingsLight::computePath(InstallPath kind)
{
    // A folder read from the root, or built from another folder.
    auto folder = [&](const char *valueName, InstallPath base, const char *relative) -> QString {
        const QString fromRegistry = valueName ? rootString(QLatin1String(valueName)) : QString();
        if (!fromRegistry.isEmpty())
            return WindowsPath::addBackslash(fromRegistry);
        const QString basePath = path(base);
        if (basePath.isEmpty())
            return {};
        return WindowsPath::addBackslash(basePath + QLatin1String(relative));
    };

    switch (kind) {
    case InstallPath::SharedFolder:
        return WindowsPath::addBackslash(rootString(QStringLiteral("SharedLocation")));
    case InstallPath::InstallationFolder:
        return WindowsPath::addBackslash(rootString(QStringLiteral("InstallDir")));
    case InstallPath::UserDataFolder: {
        QString base = qEnvironmentVariable("LOCALAPPDATA");
        if (base.isEmpty())
            base = qEnvironmentVariable("APPDATA");
        if (base.isEmpty()) {
            // No Windows profile here: the user's data folder, as a Windows
            // path when a drive maps it, else as it is.
            const QString native = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
            const QString windows = DriveMap::instance().toWindows(native);
            if (windows.isEmpty())
                return native.isEmpty() ? QString() : native + QStringLiteral("/Mecadra/Mecadra Vaultora/");
            base = windows;
        }
        return WindowsPath::addBackslash(base) + QStringLiteral("Mecadra\\Mecadra Vaultora\\");
    }
    case InstallPath::NetworkFilesFolder:
        return folder("LanFileDir", InstallPath::SharedFolder, "LanFiles");
    case InstallPath::FileFormatFiltersFolder:
        return folder("InsoBinDir", InstallPath::SharedFolder, "FileFormats\\InsoBin");
    case InstallPath::LanguageFolder: {
        const QString fromRegistry = rootString(QStringLiteral("LangDir"));
        if (!fromRegistry.isEmpty())
            return WindowsPath::addBackslash(fromRegistry);
        const QString install = path(InstallPath::InstallationFolder);
        if (install.isEmpty())
            return {};
        return install + QStringLiteral("Lang\\") + language() + QLatin1Char('\\');
    }
    case InstallPath::HelpFile: {
        const QString languageFolder = path(InstallPath::LanguageFolder);
        if (languageFolder.isEmpty())
            return {};
        const QString help = languageFolder + QString::fromUtf16(kHelpFileName);
        if (fileExists(help))
            return help;
        return englishHelpFile(languageFolder);
    }
    case InstallPath::DefaultDataFolder:
        return folder("DefaultDataDir", InstallPath::InstallationFolder, "Default Data");
    case InstallPath::DefaultCardsFolder:
        return folder("DefaultCardDir", InstallPath::InstallationFolder, "Default Cards");
    case InstallPath::DefaultConfigurationsFolder:
        return folder("DefConfigDir", InstallPath::InstallationFolder, "Default Configurations");
    case InstallPath::ConfigurationsList: {
        const QString configurations = path(InstallPath::DefaultConfigurationsFolder);
        return configurations.isEmpty() ? QString() : configurations + QStringLiteral("VaultConfigurations.ini");
    }
    case InstallPath::HelpViewer: {
        const QString programFiles = qEnvironmentVariable("ProgramFiles");
        if (programFiles.isEmpty())
            return {};
        const QString viewer = WindowsPath::addBackslash(programFiles) +
                               QStringLiteral("Common Files\\Mecadra Shared\\mcHelpViewer\\mcHelpViewer.exe");
        return fileExists(viewer) ? viewer : QString();
    }
    }
    return {};
}
