#pragma once

#include "host/hresult.h"
#include "platform/automation/objecttable.h"
#include "platform/automation/processes.h"

#include <QString>
#include <QStringList>

#include <optional>

class AutomationClient;

// A command line as a program and its arguments, the way the system's
// process start reads it: a quoted program path, or an unquoted one whose
// blanks are tried from the left until an existing program is found.
// Windows paths go through the drive map; native ones keep "/" and have
// any "\" turned into "/".
struct CommandLine {
    QString program;
    QStringList arguments;

    static CommandLine parse(const QString &commandLine);
};

// Starts automation servers and reaches them through the object table: start
// a command line with a show request, poll the table for a moniker on the
// process-wide clock, connect, and end the process or kill it with an exit
// code. Polls stop early once the process has ended: it can no longer register.
class ServerLauncher final
{
public:
    explicit ServerLauncher(ObjectTable table = ObjectTable(), Processes &processes = Processes::instance());

    std::optional<qint64> start(const QString &commandLine, ShowCommand show = ShowCommand::Minimized);
    std::optional<qint64> start(Processes::StartRequest request);

    // Up to polls times: sleep intervalMs, then look for moniker. The
    // endpoint, or empty when it never appeared or pid ended first (pid 0:
    // no process to watch).
    QString waitForObject(const QString &moniker, qint64 pid, int polls, qint64 intervalMs) const;
    // waitForObject, then connects client to what appeared. RPC_S_SERVER_UNAVAILABLE
    // when nothing did.
    HRESULT connect(AutomationClient &client, const QString &moniker, qint64 pid, int polls,
                    qint64 intervalMs) const;

    // Up to polls times: sleep intervalMs, then check; true once pid has ended.
    bool waitForExit(qint64 pid, int polls, qint64 intervalMs) const;
    bool terminate(qint64 pid, int exitCode) { return m_processes.terminate(pid, exitCode); }

    const ObjectTable &table() const { return m_table; }
    Processes &processes() const { return m_processes; }

private:
    ObjectTable m_table;
    Processes &m_processes;
};
