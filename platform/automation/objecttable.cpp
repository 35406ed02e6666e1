#include "platform/automation/objecttable.h"

#include "platform/automation/automationserver.h"
#include "platform/home.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>

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
    return server.listen(path);
}

void ObjectTable::revoke(AutomationServer &server) { server.close(); }

QString ObjectTable::lookup(const QString &moniker) const
{
    const QString path = endpointPath(moniker);
    if (!QFileInfo::exists(path))
        return {};
    if (!isAlive(path)) {
        QFile::remove(path);
        return {};
    }
    return path;
}

QStringList ObjectTable::list() const
{
    QStringList live;
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
