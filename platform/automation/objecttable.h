#pragma once

#include <QString>
#include <QStringList>

#include <optional>

class AutomationServer;

// The names under which a CAD process registers its objects.
namespace Monikers {
// The application object: "Mecadra_PID_<pid>".
QString application(qint64 pid);
// The window service: "Windows_PID_<pid>".
QString windows(qint64 pid);
// The process id of a window service's moniker; nothing for other names.
std::optional<qint64> windowsProcess(const QString &moniker);
} // namespace Monikers

// The table of running automation servers: a directory of Unix sockets, one
// per registered object, named by its moniker. An entry appears in one step,
// already answering. Entries of servers that died without revoking (nothing
// answers) are removed when a lookup or listing meets them, as the system's
// table drops the objects of ended processes; registering under the same
// name replaces them.
class ObjectTable final
{
public:
    // The table under MCTASK_HOME (default ~/.local/share/mctask), folder "rot".
    ObjectTable();
    explicit ObjectTable(QString directory);

    static QString defaultDirectory();
    QString directory() const { return m_directory; }
    QString endpointPath(const QString &moniker) const;

    // Makes server answer at moniker's endpoint; false when the name is taken
    // by a live server or the socket cannot be created, with the reason in
    // lastError().
    bool registerServer(AutomationServer &server, const QString &moniker);
    // Withdraws the entry (the server stops listening).
    void revoke(AutomationServer &server);
    QString lastError() const { return m_lastError; }

    // The endpoint of a live server registered as moniker, or empty.
    QString lookup(const QString &moniker) const;
    // Monikers of live entries.
    QStringList list() const;

private:
    bool isAlive(const QString &path) const;
    // Removes a dead entry unless a server replaced it meanwhile.
    void removeDead(const QString &path) const;

    QString m_directory;
    QString m_lastError;
};
