#include "app/vaultlocator.h"

#include "app/cli.h"
#include "base/windowspath.h"
#include "host/hosterror.h"
#include "platform/drivemap.h"
#include "vault/vaultstore.h"

#include <QDir>
#include <QFileInfo>

namespace {

// "no vault in DIR", unless DIR cannot be looked into: then that is said.
CliError noVault(const QString &dir, const QString &namedBy = {})
{
    const QFileInfo folder(dir);
    const QFileInfo data(QDir(dir).absoluteFilePath(QStringLiteral(".mctask")));
    QString why = QStringLiteral("no vault in %1").arg(dir);
    if (folder.isDir() && (!folder.isReadable() || !folder.isExecutable()))
        why = QStringLiteral("cannot read the vault folder %1 (no permission)").arg(dir);
    else if (data.isDir() && (!data.isReadable() || !data.isExecutable()))
        why = QStringLiteral("cannot read the vault's data in %1 (no permission)").arg(data.absoluteFilePath());
    return CliError(namedBy.isEmpty() ? why : QStringLiteral("%1 (named by %2)").arg(why, namedBy));
}

// How long a command waits for another process's write lock on the vault:
// MCTASK_LOCK_WAIT milliseconds, else 10 seconds.
int lockWaitMs()
{
    bool ok = false;
    const int ms = qEnvironmentVariableIntValue("MCTASK_LOCK_WAIT", &ok);
    return ok && ms >= 0 ? ms : 10000;
}

} // namespace

QString locateVault(const QString &explicitDir)
{
    if (!explicitDir.isEmpty()) {
        if (!VaultStore::isVault(explicitDir))
            throw noVault(explicitDir);
        return QDir(explicitDir).absolutePath();
    }
    const QString fromEnvironment = qEnvironmentVariable("MCTASK_VAULT");
    if (!fromEnvironment.isEmpty()) {
        if (!VaultStore::isVault(fromEnvironment))
            throw noVault(fromEnvironment, QStringLiteral("MCTASK_VAULT"));
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

std::shared_ptr<VaultStore> openLocatedVault(const QString &explicitDir, VaultUse use)
{
    const QString dir = locateVault(explicitDir);
    std::shared_ptr<VaultStore> store;
    VaultOpenOptions options;
    options.busyTimeoutMs = lockWaitMs();
    options.reading = use == VaultUse::Read;
    try {
        store = VaultStore::open(dir, options);
    } catch (const HostError &e) {
        if (e.context().contains(dir))
            throw;
        throw HostError(e.code(), QStringLiteral("cannot open the vault in %1: %2").arg(dir, e.context()));
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
    requirePath(argument, QStringLiteral("a vault path"));
    const VaultPaths &paths = store.paths();
    QString relative;
    if (paths.toRelative(argument, relative))
        return relative;
    QString native;
    if (!WindowsPath::driveLetter(argument).isNull())
        native = DriveMap::instance().toNative(argument);
    else
        native = QDir::cleanPath(QDir::current().absoluteFilePath(argument));
    if (!native.isEmpty() && paths.toRelative(native, relative))
        return relative;
    throw CliError(QStringLiteral("%1 is not inside the vault (%2, %3)")
                       .arg(argument, paths.windowsRoot() + '\\', paths.nativeRoot()));
}
