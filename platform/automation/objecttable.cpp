#include "platform/automation/objecttable.h"

#include "platform/automation/automationserver.h"
#include "platform/home.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>

#include <atomic>

ObjectTable::ObjectTable() : ObjectTable(defaultDirectory()) {}

ObjectTable::ObjectTable(QString directory) : m_directory(std::move(directory)) {}

QString ObjectTable::defaultDirectory()
{
    return mctaskHomePath(QStringLiteral("rot"));
}

QString ObjectTable::endpointPath(const QString &moniker) const
{
    return m_directory + QLatin1Char('/') + moniker;
}

bool ObjectTable::registerServer(AutomationServer &server, const QString &moniker)
{
    if (!QDir().mkpath(m_directory))
        return false;
    const QString path = endpointPath(moniker);
    if (isAlive(path))
        return false;
    // Listen under a private name first, then move it into place: a name in
    // the table always answers (or belongs to a dead process).
    static std::atomic<int> counter{0};
    const QString pending = QStringLiteral("%1/.pending-%2-%3")
                                .arg(m_directory)
                                .arg(QCoreApplication::applicationPid())
                                .arg(counter++);
    if (!server.listen(pending))
        return false;
    if (!server.publishAs(path)) {
        server.close();
        return false;
    }
    return true;
}

void ObjectTable::revoke(AutomationServer &server) { server.close(); }

QString ObjectTable::lookup(const QString &moniker) const
{
    const QString path = endpointPath(moniker);
    // Never removed from here: a dead entry may be replaced at any moment.
    if (!QFileInfo::exists(path) || !isAlive(path))
        return {};
    return path;
}

QStringList ObjectTable::list() const
{
    QStringList live;
    // Names being set up start with a dot and are not listed.
    const QStringList names = QDir(m_directory).entryList(QDir::System | QDir::Files | QDir::NoDotAndDotDot,
                                                          QDir::Name);
    for (const QString &name : names) {
        if (!lookup(name).isEmpty())
            live.append(name);
    }
    return live;
}

bool ObjectTable::isAlive(const QString &path) const
{
    QLocalSocket probe;
    probe.connectToServer(path);
    const bool alive = probe.waitForConnected(1000);
    probe.abort();
    return alive;
}
