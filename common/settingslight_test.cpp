#include "common/settingslight.h"
#include "platform/drivemap.h"
#include "platform/memoryfilesystem.h"
#include "platform/memoryregistrystore.h"
#include "platform/qtestprint.h"
#include "platform/registry.h"

#include <gtest/gtest.h>

namespace {

const QString kRoot = QString::fromUtf16(kSettingsRootKey);

class SettingsLightTest : public ::testing::Test
{
protected:
    // Writes a value where the vault client keeps its settings.
    void set(const QString &subKey, const QString &name, const RegistryValue &value,
             RegistryRoot root = RegistryRoot::LocalMachine, RegistryView view = RegistryView::View32)
    {
        const QString key = subKey.isEmpty() ? kRoot : kRoot + '\\' + subKey;
        ASSERT_TRUE(m_store.createKey(root, view, key));
        ASSERT_TRUE(m_store.writeValue(root, view, key, name, value));
    }
    void setPolicy(RegistryRoot root, const QString &vault, const QString &name, std::uint32_t value)
    {
        const QString key = QString::fromUtf16(kPolicyKey) + "\\Vaults\\" + vault;
        ASSERT_TRUE(m_store.createKey(root, RegistryView::View32, key));
        ASSERT_TRUE(m_store.writeValue(root, RegistryView::View32, key, name, RegistryValue::fromDword(value)));
    }

    MemoryRegistryStore m_store;
    SettingsLight m_settings{m_store};
};

} // namespace

TEST_F(SettingsLightTest, DateStyleIsTheVaultsOwnDwordOrZero)
{
    EXPECT_EQ(m_settings.vaultDateStyle("Demo"), 0u);
    set("Vaults\\Demo", "DateFmt", RegistryValue::fromDword(3));
    set("Vaults\\Other", "DateFmt", RegistryValue::fromString("5"));
    EXPECT_EQ(m_settings.vaultDateStyle("Demo"), 3u);
    EXPECT_EQ(m_settings.vaultDateStyle("demo"), 3u);
    EXPECT_EQ(m_settings.vaultDateStyle("Other"), 0u); // not a DWORD
    EXPECT_EQ(m_settings.vaultDateStyle(""), 0u);
    // Only the 32-bit view holds the client's settings.
    set("Vaults\\Native", "DateFmt", RegistryValue::fromDword(4), RegistryRoot::LocalMachine, RegistryView::Native);
    EXPECT_EQ(m_settings.vaultDateStyle("Native"), 0u);

    ASSERT_TRUE(m_settings.setVaultDateStyle("New Vault", 2));
    EXPECT_EQ(m_settings.vaultDateStyle("new vault"), 2u);
    EXPECT_EQ(m_store.readValue(RegistryRoot::LocalMachine, RegistryView::View32, kRoot + "\\Vaults\\New Vault",
                                "DateFmt"),
              RegistryValue::fromDword(2));
}

TEST_F(SettingsLightTest, LookupSearchesTheSelectedGroupsInOrder)
{
    set("Vaults\\Demo", "Flag", RegistryValue::fromDword(1));
    set("Databases\\Demo", "Flag", RegistryValue::fromDword(2));
    set("Databases\\Demo", "OnlyDb", RegistryValue::fromDword(7));
    set("ViewSetup\\Demo", "Path", RegistryValue::fromExpandString("%MCTASK_SETTINGS_TEST%\\x"));
    qputenv("MCTASK_SETTINGS_TEST", "C:\\Data");

    EXPECT_EQ(m_settings.lookupDword("Demo", "Flag", LookupVaults), 1u);
    EXPECT_EQ(m_settings.lookupDword("Demo", "Flag", LookupDatabases | LookupRead), 2u);
    EXPECT_EQ(m_settings.lookupDword("Demo", "OnlyDb", LookupVaultsThenDatabases), 7u);
    EXPECT_EQ(m_settings.lookupDword("Demo", "OnlyDb", LookupVaults), 0u);
    EXPECT_EQ(m_settings.lookupDword("Demo", "Flag", LookupNamespace), 0u);
    EXPECT_EQ(m_settings.lookupString("Demo", "Path", LookupViewSetup), "C:\\Data\\x");
    EXPECT_EQ(m_settings.lookupString("Demo", "Path", LookupAll), "C:\\Data\\x");
    EXPECT_EQ(m_settings.lookup("Demo", "Flag", 0), std::nullopt);
    EXPECT_EQ(m_settings.lookup("Demo", "Flag", 9), std::nullopt);

    // Policies win over the vault's value, the user's over the machine's.
    setPolicy(RegistryRoot::LocalMachine, "Demo", "Flag", 10);
    EXPECT_EQ(m_settings.lookupDword("Demo", "Flag", LookupPolicyThenVaults), 10u);
    setPolicy(RegistryRoot::CurrentUser, "Demo", "Flag", 20);
    EXPECT_EQ(m_settings.lookupDword("Demo", "Flag", LookupAll), 20u);
    EXPECT_EQ(m_settings.lookupDword("Demo", "Flag", LookupVaults), 1u);
    EXPECT_EQ(m_settings.lookupDword("Demo", "OnlyDb", LookupPolicy), 0u);
}

TEST_F(SettingsLightTest, WritesNeedWriteAccessAndNeverGoToPolicies)
{
    EXPECT_FALSE(m_settings.write("Demo", "X", RegistryValue::fromDword(1), LookupVaults | LookupRead));
    EXPECT_FALSE(m_settings.write("Demo", "X", RegistryValue::fromDword(1), LookupPolicy | LookupWrite));
    EXPECT_TRUE(m_settings.write("Demo", "X", RegistryValue::fromDword(1), LookupPolicyThenVaults | LookupWrite));
    EXPECT_EQ(m_settings.lookupDword("Demo", "X", LookupVaults), 1u);
    EXPECT_FALSE(m_store.keyExists(RegistryRoot::CurrentUser, RegistryView::Native, QString::fromUtf16(kPolicyKey)));
    EXPECT_FALSE(m_store.keyExists(RegistryRoot::LocalMachine, RegistryView::View32, QString::fromUtf16(kPolicyKey)));
}

TEST_F(SettingsLightTest, LanguageRule)
{
    // Neither value: "GB", and the language key now exists.
    EXPECT_EQ(m_settings.language(), "GB");
    EXPECT_TRUE(m_store.keyExists(RegistryRoot::LocalMachine, RegistryView::View32,
                                  kRoot + '\\' + QString::fromUtf16(kLanguageKey)));

    // The default language is used and copied to "0" and "Language".
    set("", "DefaultLanguage", RegistryValue::fromString("DE"));
    EXPECT_EQ(m_settings.language(), "DE");
    Registry root(m_store);
    ASSERT_TRUE(root.open(RegistryRoot::LocalMachine, kRoot, RegistryRead, RegistryView::View32));
    EXPECT_EQ(root.readString("Language"), "DE");
    EXPECT_EQ(root.openSubKey(QString::fromUtf16(kLanguageKey)).readString("0"), "DE");

    // Value "0" wins over the default from then on.
    set(QString::fromUtf16(kLanguageKey), "0", RegistryValue::fromString("FR"));
    EXPECT_EQ(m_settings.language(), "FR");
}

TEST_F(SettingsLightTest, InstallationFoldersUseTheirValueOrTheirFallBack)
{
    set("", "SharedLocation", RegistryValue::fromString("S:\\Shared"));
    set("", "InstallDir", RegistryValue::fromString("C:\\Program Files\\Vaultek"));
    set("", "InsoBinDir", RegistryValue::fromString("D:\\Filters\\"));
    set("", "DefaultLanguage", RegistryValue::fromString("DE"));

    EXPECT_EQ(m_settings.path(InstallPath::SharedFolder), "S:\\Shared\\");
    EXPECT_EQ(m_settings.path(InstallPath::NetworkFilesFolder), "S:\\Shared\\LanFiles\\");
    EXPECT_EQ(m_settings.path(InstallPath::FileFormatFiltersFolder), "D:\\Filters\\");
    EXPECT_EQ(m_settings.path(InstallPath::InstallationFolder), "C:\\Program Files\\Vaultek\\");
    EXPECT_EQ(m_settings.path(InstallPath::LanguageFolder), "C:\\Program Files\\Vaultek\\Lang\\DE\\");
    EXPECT_EQ(m_settings.path(InstallPath::ConfigurationsList),
              "C:\\Program Files\\Vaultek\\Default Configurations\\VaultConfigurations.ini");
}

TEST_F(SettingsLightTest, RecordedInstallationAndChosenLanguageMoveTheLanguageFolder)
{
    EXPECT_EQ(m_settings.path(InstallPath::LanguageFolder), ""); // cached, but the setters forget it
    ASSERT_TRUE(m_settings.setInstallationFolder("/opt/mctask"));
    EXPECT_EQ(m_settings.path(InstallPath::LanguageFolder), "/opt/mctask\\Lang\\GB\\");
    ASSERT_TRUE(m_settings.setLanguage("DE"));
    EXPECT_EQ(m_settings.language(), "DE");
    EXPECT_EQ(m_settings.path(InstallPath::LanguageFolder), "/opt/mctask\\Lang\\DE\\");
    // A chosen language is not replaced by the default one.
    set("", "DefaultLanguage", RegistryValue::fromString("FR"));
    EXPECT_EQ(SettingsLight(m_store).language(), "DE");
    // "LangDir" still wins.
    set("", "LangDir", RegistryValue::fromString("L:\\Lang\\IT"));
    EXPECT_EQ(SettingsLight(m_store).path(InstallPath::LanguageFolder), "L:\\Lang\\IT\\");
}

TEST_F(SettingsLightTest, FoldersWithoutValueOrBaseAreEmpty)
{
    EXPECT_EQ(m_settings.path(InstallPath::SharedFolder), "");
    EXPECT_EQ(m_settings.path(InstallPath::NetworkFilesFolder), "");
    EXPECT_EQ(m_settings.path(InstallPath::LanguageFolder), "");
    EXPECT_EQ(m_settings.path(InstallPath::HelpFile), "");
    EXPECT_EQ(m_settings.path(InstallPath::ConfigurationsList), "");
    EXPECT_EQ(m_settings.path(static_cast<InstallPath>(99)), "");

    SettingsLight other(m_store);
    set("", "LangDir", RegistryValue::fromString("L:\\Lang\\IT"));
    EXPECT_EQ(other.path(InstallPath::LanguageFolder), "L:\\Lang\\IT\\");
}

TEST_F(SettingsLightTest, HelpFilesAreCheckedOnDisk)
{
    MemoryFileSystem fs;
    ScopedFileSystem fsGuard(fs);
    DriveMap drives;
    ASSERT_TRUE(drives.mount('C', "/c"));
    ScopedDriveMap drivesGuard(drives);
    set("", "InstallDir", RegistryValue::fromString("C:\\Vaultek"));
    set(QString::fromUtf16(kLanguageKey), "0", RegistryValue::fromString("DE"));

    // No German help: the English one.
    EXPECT_EQ(m_settings.path(InstallPath::HelpFile), "C:\\Vaultek\\Lang\\GB\\McTaskAddIn.qch");
    fs.addFile("/c/Vaultek/Lang/DE/McTaskAddIn.qch", "help");
    SettingsLight fresh(m_store);
    EXPECT_EQ(fresh.path(InstallPath::HelpFile), "C:\\Vaultek\\Lang\\DE\\McTaskAddIn.qch");

    qputenv("ProgramFiles", "C:\\Programs");
    EXPECT_EQ(fresh.path(InstallPath::HelpViewer), "");
    fs.addFile("/c/Programs/Common Files/Mecadra Shared/mcHelpViewer/mcHelpViewer.exe", "exe");
    EXPECT_EQ(SettingsLight(m_store).path(InstallPath::HelpViewer),
              "C:\\Programs\\Common Files\\Mecadra Shared\\mcHelpViewer\\mcHelpViewer.exe");
    qunsetenv("ProgramFiles");
}

TEST_F(SettingsLightTest, UserDataFolderFollowsTheProfileVariables)
{
    qputenv("LOCALAPPDATA", "C:\\Users\\me\\AppData\\Local");
    qputenv("APPDATA", "C:\\Users\\me\\AppData\\Roaming");
    EXPECT_EQ(SettingsLight(m_store).path(InstallPath::UserDataFolder),
              "C:\\Users\\me\\AppData\\Local\\Mecadra\\Mecadra Vaultora\\");
    qunsetenv("LOCALAPPDATA");
    EXPECT_EQ(SettingsLight(m_store).path(InstallPath::UserDataFolder),
              "C:\\Users\\me\\AppData\\Roaming\\Mecadra\\Mecadra Vaultora\\");
    qunsetenv("APPDATA");
    EXPECT_TRUE(SettingsLight(m_store).path(InstallPath::UserDataFolder).endsWith("Mecadra Vaultora/"));
}
