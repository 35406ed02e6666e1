#include "platform/ipc/ipcnames.h"

#include "platform/home.h"

namespace IpcNames {

QString defaultFolder()
{
    return mctaskHome();
}

static QString lastComponent(const QString &name)
{
    const qsizetype cut = name.lastIndexOf(QLatin1Char('\\'));
    const QString leaf = cut < 0 ? name : name.mid(cut + 1);
    // A name must not climb out of the folder.
    QString safe = leaf;
    safe.replace(QLatin1Char('/'), QLatin1Char('_'));
    return safe;
}

QString pipeSocketPath(const QString &pipeName, const QString &folder)
{
    return folder + QLatin1Char('/') + lastComponent(pipeName);
}

QString mutexLockPath(const QString &mutexName, const QString &folder)
{
    return folder + QLatin1Char('/') + lastComponent(mutexName);
}

} // namespace IpcNames
