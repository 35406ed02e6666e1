#include "app/vaultlocator.h"

#include "app/cli.h"
#include "host/hosterror.h"
#include "platform/drivemap.h"
#include "vault/vaultstore.h"

#include <QDir>
#include <QFileInfo>

QString locateVault(const QString &explicitDir)
{
    if (!explicitDir.isEmpty()) {
        if (!VaultStore::isVault(explicitDir))
            throw CliError(QStringLiteral("no vault in %1").arg(explicitDir));
        return QDir(explicitDir).absolutePath();
    }
    const QString fromEnvironment = qEnvironmentVariable("MCTASK_VAULT");
    if (!fromEnvironment.isEmpty()) {
        if (!VaultStore::isVault(fromEnvironment))
            throw CliError(QStringLiteral("no vault in %1 (named by MCTASK_VAULT)").arg(fromEnvironment));
        return QDir(fromEnvironment).absolutePath();
    }
    QDir dir = QDir::current();
    while (true) {
        if (VaultStore::isVault(dir.absolutePath()))
            return dir.absolutePath();
        if (!dir.cdUp())
            break;
    }
    throw CliError(QStringLiteral("no vault here or above; name one with --vault DIR or MCTASK_VAULT"));
}

std::shared_ptr<VaultStore> openLocatedVault(const QString &explicitDir)
{
    const QString dir = locateVault(explicitDir);
    std::shared_ptr<VaultStore> store;
    try {
        store = VaultStore::open(dir);
    } catch (const HostError &e) {
        throw CliError(QStringLiteral("cannot open the vault in %1: %2").arg(dir, e.context()));
    }
    mountVaultDrive(*store, false);
    return store;
}

bool mountVaultDrive(const VaultStore &store, bool replace)
{
    DriveMap &map = DriveMap::instance();
    const QChar letter = store.paths().driveLetter();
    const QString current = map.root(letter);
    if (current == store.paths().nativeRoot())
        return true;
    if (!current.isEmpty() && !replace)
        return true;
    return map.mount(letter, store.paths().nativeRoot());
}

QString vaultPathArgument(const VaultStore &store, const QString &argument)
{
    const VaultPaths &paths = store.paths();
    QString relative;
    if (paths.toRelative(argument, relative))
        return relative;
    QString native;
    if (argument.size() >= 2 && argument[1] == ':' && argument[0].isLetter())
        native = DriveMap::instance().toNative(argument);
    else
        native = QDir::cleanPath(QDir::current().absoluteFilePath(argument));
    if (!native.isEmpty() && paths.toRelative(native, relative))
        return relative;
    throw CliError(QStringLiteral("%1 is not inside the vault (%2, %3)")
                       .arg(argument, paths.windowsRoot() + '\\', paths.nativeRoot()));
}
