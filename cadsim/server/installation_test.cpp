#include "cadsim/server/installation.h"
#include "cadsim/server/mcsimcommandline.h"

#include "cad/mecadraversion.h"
#include "platform/automation/classregistry.h"
#include "platform/installedproducts.h"
#include "platform/memoryregistrystore.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

std::optional<RegistryValue> machineValue(RegistryStore &store, const QString &key, const QString &name)
{
    return store.readValue(RegistryRoot::LocalMachine, RegistryView::Native, key, name);
}

TEST(StandInInstallationTest, InstallsWhatTheConnectionReadsAndRemovesItAgain)
{
    QTemporaryDir dir;
    MemoryRegistryStore store;
    StandInInstallation install;
    install.versionYear = 2014;
    install.officeEdition = false;
    install.folder = dir.filePath(QStringLiteral("Mecadra 2014"));
    QString error;
    ASSERT_TRUE(install.install(QStringLiteral("/bin/true"), error, store)) << error.toStdString();

    const auto classId = ClassRegistry::classIdFromProgId(QStringLiteral("Cadrix.Application.22"), store);
    ASSERT_TRUE(classId);
    EXPECT_EQ(ClassRegistry::classIdFromProgId(QStringLiteral("Cadrix.Application"), store), classId);
    EXPECT_EQ(ClassRegistry::classValue(*classId, QStringLiteral("ProgID"), store), "Cadrix.Application.22");
    const QString executable = install.folder + QStringLiteral("/CADRIX.EXE");
    EXPECT_EQ(ClassRegistry::classValue(*classId, QStringLiteral("LocalServer32"), store), '"' + executable + '"');
    EXPECT_EQ(QFileInfo(executable).symLinkTarget(), "/bin/true");

    const QString setup = MecadraVersion::setupKey(2014);
    EXPECT_EQ(machineValue(store, setup, QStringLiteral("Mecadra Folder")), RegistryValue::fromString(install.folder));
    EXPECT_EQ(machineValue(store, setup, QStringLiteral("Mecadra Office Installed")), RegistryValue::fromDword(0));
    const auto products = InstalledProducts::list(store);
    ASSERT_EQ(products.size(), 1u);
    EXPECT_EQ(products[0].name, "Mecadra 2014 x64 Edition SP0.0");

    ASSERT_TRUE(install.uninstall(error, store)) << error.toStdString();
    EXPECT_FALSE(ClassRegistry::classIdFromProgId(QStringLiteral("Cadrix.Application.22"), store));
    EXPECT_FALSE(ClassRegistry::classIdFromProgId(QStringLiteral("Cadrix.Application"), store));
    EXPECT_FALSE(store.keyExists(RegistryRoot::LocalMachine, RegistryView::Native, QStringLiteral("SOFTWARE\\Mecadra\\Mecadra 2014")));
    EXPECT_TRUE(InstalledProducts::list(store).empty());
    EXPECT_FALSE(QFileInfo(executable).isSymLink());
    EXPECT_TRUE(install.uninstall(error, store)); // twice is fine
}

TEST(StandInInstallationTest, VersionsLiveSideBySide)
{
    QTemporaryDir dir;
    MemoryRegistryStore store;
    StandInInstallation older;
    older.versionYear = 2012;
    older.folder = dir.filePath(QStringLiteral("2012"));
    StandInInstallation newer;
    newer.versionYear = 2013;
    newer.folder = dir.filePath(QStringLiteral("2013"));
    QString error;
    ASSERT_TRUE(older.install(QStringLiteral("/bin/true"), error, store));
    ASSERT_TRUE(newer.install(QStringLiteral("/bin/true"), error, store));
    EXPECT_NE(older.classId(), newer.classId());
    EXPECT_EQ(ClassRegistry::classIdFromProgId(QStringLiteral("Cadrix.Application"), store), newer.classId());

    // Removing the older one leaves the unversioned ProgID with the newer.
    ASSERT_TRUE(older.uninstall(error, store));
    EXPECT_EQ(ClassRegistry::classIdFromProgId(QStringLiteral("Cadrix.Application"), store), newer.classId());
    EXPECT_EQ(ClassRegistry::classIdFromProgId(QStringLiteral("Cadrix.Application.21"), store), newer.classId());
    EXPECT_EQ(InstalledProducts::list(store).size(), 1u);
}

TEST(McsimCommandLineTest, ReadsSwitchesAndOptionsAndRefusesTheRest)
{
    auto parse = [](std::initializer_list<const char *> words) {
        QStringList arguments;
        for (const char *word : words)
            arguments << QString::fromLatin1(word);
        return McsimCommandLine::parse(arguments);
    };
    EXPECT_EQ(parse({"/r"}).startSwitch, "/R");
    EXPECT_EQ(parse({"/B"}).action, McsimCommandLine::Action::Run);
    const McsimCommandLine reg = parse({"/RegServer", "--year", "2011", "--edition=standard", "--folder", "/opt/m"});
    EXPECT_TRUE(reg.error.isEmpty());
    EXPECT_EQ(reg.action, McsimCommandLine::Action::Register);
    EXPECT_EQ(reg.installation.versionYear, 2011);
    EXPECT_FALSE(reg.installation.officeEdition);
    EXPECT_EQ(reg.installation.folder, "/opt/m");
    EXPECT_EQ(parse({"/unregserver", "--year=2012"}).action, McsimCommandLine::Action::Unregister);
    EXPECT_EQ(parse({"/?"}).action, McsimCommandLine::Action::Help);

    EXPECT_EQ(parse({"/Q"}).error, "unknown switch \"/Q\"");
    EXPECT_EQ(parse({"file.mcb"}).error, "unknown switch \"file.mcb\"");
    EXPECT_FALSE(parse({"/regserver", "/unregserver"}).error.isEmpty());
    EXPECT_FALSE(parse({"--year"}).error.isEmpty());
    EXPECT_FALSE(parse({"--year", "1900"}).error.isEmpty());
    EXPECT_FALSE(parse({"--edition", "home"}).error.isEmpty());
}

} // namespace
