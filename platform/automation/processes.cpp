#include "platform/automation/processes.h"

#include "platform/automation/processmemory.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <vector>

namespace {

Processes *g_override = nullptr;

// argv or envp for posix_spawn: the strings stay owned here.
class CStrings final
{
public:
    void add(const QString &text) { m_storage.push_back(QFile::encodeName(text)); }
    char *const *pointers()
    {
        m_pointers.clear();
        for (QByteArray &item : m_storage)
            m_pointers.push_back(item.data());
        m_pointers.push_back(nullptr);
        return m_pointers.data();
    }

private:
    std::vector<QByteArray> m_storage;
    std::vector<char *> m_pointers;
};

} // namespace

Processes &Processes::instance()
{
    static SystemProcesses system;
    return g_override ? *g_override : system;
}

Processes *Processes::setInstance(Processes *processes)
{
    Processes *previous = g_override;
    g_override = processes;
    return previous;
}

std::optional<qint64> SystemProcesses::start(const StartRequest &request)
{
    CStrings argv;
    argv.add(request.program);
    for (const QString &argument : request.arguments)
        argv.add(argument);
    QProcessEnvironment environment = request.environment;
    environment.insert(QString::fromLatin1(ShowCommandVariable), QString::number(static_cast<int>(request.show)));
    CStrings envp;
    for (const QString &entry : environment.toStringList())
        envp.add(entry);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const QByteArray output = request.outputFile.isEmpty() ? QByteArray("/dev/null") : QFile::encodeName(request.outputFile);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.constData(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    if (!request.outputFile.isEmpty())
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);

    const QByteArray program = QFile::encodeName(request.program);
    pid_t pid = 0;
    const int rc = posix_spawn(&pid, program.constData(), &actions, nullptr, argv.pointers(), envp.pointers());
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0)
        return std::nullopt;
    std::lock_guard lock(m_mutex);
    m_children[pid] = Child{};
    return pid;
}

bool SystemProcesses::reap(qint64 pid)
{
    auto found = m_children.find(pid);
    if (found == m_children.end())
        return false;
    Child &child = found->second;
    if (child.exitCode)
        return true;
    int status = 0;
    const pid_t rc = ::waitpid(static_cast<pid_t>(pid), &status, WNOHANG);
    if (rc == static_cast<pid_t>(pid)) {
        if (child.terminatedWith)
            child.exitCode = child.terminatedWith;
        else if (WIFEXITED(status))
            child.exitCode = WEXITSTATUS(status);
        else
            child.exitCode = 128 + WTERMSIG(status);
    } else if (rc < 0 && errno == ECHILD) {
        child.exitCode = child.terminatedWith.value_or(-1); // reaped elsewhere
    }
    return true;
}

bool SystemProcesses::isRunning(qint64 pid)
{
    std::lock_guard lock(m_mutex);
    if (reap(pid))
        return !m_children[pid].exitCode.has_value();
    return pid > 0 && (::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM);
}

std::optional<int> SystemProcesses::exitCode(qint64 pid)
{
    std::lock_guard lock(m_mutex);
    if (reap(pid))
        return m_children[pid].exitCode;
    return std::nullopt;
}

bool SystemProcesses::terminate(qint64 pid, int exitCode)
{
    std::lock_guard lock(m_mutex);
    const bool ours = reap(pid);
    if (ours && m_children[pid].exitCode)
        return false;
    if (pid <= 0 || ::kill(static_cast<pid_t>(pid), SIGKILL) != 0)
        return false;
    if (ours) {
        m_children[pid].terminatedWith = exitCode;
        // SIGKILL cannot be ignored: the child is gone in a moment; collect it.
        int status = 0;
        if (::waitpid(static_cast<pid_t>(pid), &status, 0) == static_cast<pid_t>(pid))
            m_children[pid].exitCode = exitCode;
    }
    return true;
}

std::optional<quint64> SystemProcesses::workingSet(qint64 pid)
{
    if (!isRunning(pid))
        return std::nullopt;
    return workingSetBytes(pid);
}
