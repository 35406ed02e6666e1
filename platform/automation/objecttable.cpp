#include "platform/automation/objecttable.h"

#include "platform/automation/automationserver.h"
#include "platform/home.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>

#include <atomic>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const QString kApplicationPrefix = QStringLiteral("Mecadra_PID_");
const QString kWindowsPrefix = QStringLiteral("Windows_PID_");

// Longest socket path the system takes (the address field keeps a final NUL).
constexpr qsizetype kMaxSocketPath = sizeof(sockaddr_un{}.sun_path) - 1;

// Holds the table's lock file: entries are published and dead ones removed
// one at a time, so a removal never takes away a server that just replaced
// the dead entry.
class TableLock final
{
public:
    explicit TableLock(const QString &directory)
        : m_fd(::open(QFile::encodeName(directory + QStringLiteral("/.lock")).constData(), O_RDWR | O_CREAT | O_CLOEXEC,
                      0600))
    {
        if (m_fd >= 0)
            ::flock(m_fd, LOCK_EX);
    }
    ~TableLock()
    {
        if (m_fd >= 0)
            ::close(m_fd); // releases the lock
    }
    TableLock(const TableLock &) = delete;
    TableLock &operator=(const TableLock &) = delete;

private:
    int m_fd;
};

} // namespace

QString Monikers::application(qint64 pid) { return kApplicationPrefix + QString::number(pid); }

QString Monikers::windows(qint64 pid) { return kWindowsPrefix + QString::number(pid); }

std::optional<qint64> Monikers::windowsProcess(const QString &moniker)
{
    if (!moniker.startsWith(kWindowsPrefix))
        return std::nullopt;
    bool ok = false;
    const qint64 pid = moniker.mid(kWindowsPrefix.size()).toLongLong(&ok);
    return ok ? std::optional<qint64>(pid) : std::nullopt;
}

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
    m_lastError.clear();
    if (!QDir().mkpath(m_directory)) {
        m_lastError = QStringLiteral("cannot create the object table folder %1").arg(m_directory);
        return false;
    }
    const QString path = endpointPath(moniker);
    // Listen under a private name first, then move it into place: a name in
    // the table always answers (or belongs to a dead process).
    static std::atomic<int> counter{0};
    const QString pending = QStringLiteral("%1/.pending-%2-%3")
                                .arg(m_directory)
                                .arg(QCoreApplication::applicationPid())
                                .arg(counter++);
    for (const QString &socketPath : {path, pending}) {
        const qsizetype length = QFile::encodeName(socketPath).size();
        if (length > kMaxSocketPath) {
            m_lastError = QStringLiteral("the socket path is too long (%1 bytes, at most %2): %3")
                              .arg(length)
                              .arg(kMaxSocketPath)
                              .arg(socketPath);
            return false;
        }
    }
    TableLock lock(m_directory);
    if (isAlive(path)) {
        m_lastError = QStringLiteral("%1 is registered by another live server").arg(moniker);
        return false;
    }
    if (!server.listen(pending)) {
        m_lastError = QStringLiteral("cannot listen at %1").arg(pending);
        return false;
    }
    if (!server.publishAs(path)) {
        m_lastError = QStringLiteral("cannot publish the endpoint as %1").arg(path);
        server.close();
        return false;
    }
    return true;
}

void ObjectTable::revoke(AutomationServer &server) { server.close(); }

QString ObjectTable::lookup(const QString &moniker) const
{
    const QString path = endpointPath(moniker);
    if (!QFileInfo::exists(path))
        return {};
    if (isAlive(path))
        return path;
    removeDead(path);
    return {};
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

void ObjectTable::removeDead(const QString &path) const
{
    TableLock lock(m_directory);
    // Checked again under the lock: a server may have taken the name since.
    QLocalSocket probe;
    probe.connectToServer(path);
    if (probe.waitForConnected(1000)) {
        probe.abort();
        return;
    }
    // Only a socket that refuses connections is dead; a busy one is not.
    if (probe.error() == QLocalSocket::ConnectionRefusedError)
        QFile::remove(path);
}
