#include "cadsim/server/installation.h"

#include "cad/mecadraversion.h"
#include "platform/automation/classregistry.h"
#include "platform/home.h"
#include "platform/installedproducts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

constexpr RegistryRoot kMachine = RegistryRoot::LocalMachine;
constexpr RegistryView kView = RegistryView::Native;

} // namespace

QString StandInInstallation::installFolder() const
{
    if (!folder.isEmpty())
        return QDir::cleanPath(QDir(folder).absolutePath());
    return mctaskHomePath(QStringLiteral("Mecadra %1").arg(versionYear));
}

QString StandInInstallation::classId() const
{
    return QStringLiteral("{6C2A9D1E-4B7F-4E8A-9C3D-00000000%1}").arg(versionYear, 4, 16, QLatin1Char('0')).toUpper();
}

QString StandInInstallation::productName() const
{
    return QStringLiteral("Mecadra %1 x64 Edition SP0.0").arg(versionYear);
}

QString StandInInstallation::productCode() const
{
    return QStringLiteral("{8E41B0C7-2D95-4F36-A1E8-00000000%1}").arg(versionYear, 4, 16, QLatin1Char('0')).toUpper();
}

bool StandInInstallation::install(const QString &program, QString &error, RegistryStore &store) const
{
    const QString dir = installFolder();
    const QString executable = dir + QLatin1Char('/') + MecadraVersion::ExecutableName;
    if (!QDir().mkpath(dir)) {
        error = QStringLiteral("cannot create the installation folder %1").arg(dir);
        return false;
    }
    if (QFileInfo(executable).isSymLink() || QFileInfo::exists(executable))
        QFile::remove(executable);
    if (!QFile::link(QFileInfo(program).absoluteFilePath(), executable)) {
        error = QStringLiteral("cannot link %1 to %2").arg(executable, program);
        return false;
    }

    ClassRegistry::LocalServer server;
    server.classId = classId();
    server.description = QStringLiteral("Mecadra %1 Application").arg(versionYear);
    server.commandLine = QStringLiteral("\"%1\"").arg(executable);
    server.progId = MecadraVersion::versionedProgId(versionYear);
    server.versionIndependentProgId = MecadraVersion::ProgId;
    const QString setup = MecadraVersion::setupKey(versionYear);
    const bool written = ClassRegistry::registerLocalServer(server, store) && store.createKey(kMachine, kView, setup)
        && store.writeValue(kMachine, kView, setup, MecadraVersion::FolderValue, RegistryValue::fromString(dir))
        && store.writeValue(kMachine, kView, setup, MecadraVersion::OfficeInstalledValue,
                            RegistryValue::fromDword(officeEdition ? 1 : 0))
        && InstalledProducts::add({productCode(), productName()}, store);
    if (!written)
        error = QStringLiteral("cannot write the registry store");
    return written;
}

bool StandInInstallation::uninstall(QString &error, RegistryStore &store) const
{
    const QString setup = MecadraVersion::setupKey(versionYear);
    const QString versionKey = setup.section(QLatin1Char('\\'), 0, -2);
    const auto recorded = store.readValue(kMachine, kView, setup, MecadraVersion::FolderValue);
    const QString dir = recorded && !recorded->text.isEmpty() ? recorded->text : installFolder();
    bool ok = ClassRegistry::unregisterLocalServer(classId(), MecadraVersion::versionedProgId(versionYear),
                                                   MecadraVersion::ProgId, store);
    if (store.keyExists(kMachine, kView, versionKey))
        ok = store.deleteKeyTree(kMachine, kView, versionKey) && ok;
    ok = InstalledProducts::remove(productCode(), store) && ok;
    const QString executable = dir + QLatin1Char('/') + MecadraVersion::ExecutableName;
    if (QFileInfo(executable).isSymLink())
        ok = QFile::remove(executable) && ok;
    QDir().rmdir(dir); // only when nothing else lies there
    if (!ok)
        error = QStringLiteral("cannot remove every entry of Mecadra %1").arg(versionYear);
    return ok;
}
