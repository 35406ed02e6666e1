#include "platform/home.h"

#include <QDir>

QString mctaskHome()
{
    const QString fromEnvironment = qEnvironmentVariable("MCTASK_HOME");
    if (!fromEnvironment.isEmpty())
        return QDir::cleanPath(QDir(fromEnvironment).absolutePath());
    return QDir::cleanPath(QDir::homePath() + QStringLiteral("/.local/share/mctask"));
}

QString mctaskHomePath(const QString &name)
{
    return mctaskHome() + QLatin1Char('/') + name;
}

QString ensureMctaskHome()
{
    const QString home = mctaskHome();
    return QDir().mkpath(home) ? home : QString();
}

QString ensureMctaskCacheFolder()
{
    const QString cache = mctaskHomePath(QStringLiteral("cache"));
    return QDir().mkpath(cache) ? cache : QString();
}
