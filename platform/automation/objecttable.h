#pragma once

#include <QString>
#include <QStringList>

class AutomationServer;

// The table of running automation servers: a directory of Unix sockets, one
// per registered object, named by its moniker. An entry appears in one step,
// already answering. Entries of servers that died without revoking are
// recognised (nothing answers) and skipped; registering under the same name
// replaces them.
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
    // by a live server or the socket cannot be created.
    bool registerServer(AutomationServer &server, const QString &moniker);
    // Withdraws the entry (the server stops listening).
    void revoke(AutomationServer &server);

    // The endpoint of a live server registered as moniker, or empty.
    QString lookup(const QString &moniker) const;
    // Monikers of live entries.
    QStringList list() const;

private:
    bool isAlive(const QString &path) const;

    QString m_directory;
};
