#include "platform/automation/processes.h"

#include "platform/automation/processmemory.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
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
    const QByteArray program = QFile::encodeName(request.program);
    const QByteArray output = request.outputFile.isEmpty() ? QByteArray("/dev/null") : QFile::encodeName(request.outputFile);
    const bool outputToFile = !request.outputFile.isEmpty();
    char *const *argvPointers = argv.pointers();
    char *const *envpPointers = envp.pointers();

    // The child reports a failed exec through this pipe; a successful exec
    // closes it (close-on-exec) and the parent reads nothing.
    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0)
        return std::nullopt;
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid < 0) {
        ::close(report[0]);
        ::close(report[1]);
        return std::nullopt;
    }
    if (pid == 0) {
        // Only async-signal-safe calls from here to exec: the parent has threads.
        //
        // A group of its own: a Ctrl-C meant for the host does not reach the
        // program (a host asked to stop lets the running macro finish), and
        // terminate() ends whatever the program started too.
        ::setpgid(0, 0);
        // The program dies with the thread that started it, a host killed
        // with SIGKILL included. If the parent died before this call, the
        // signal would never come: stop here instead.
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent)
            ::_exit(127);
        // The host's blocked signals and ignored ones are no business of the program.
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT})
            ::signal(number, SIG_DFL);
        const int out = ::open(output.constData(), O_WRONLY | O_CREAT | O_APPEND, 0644);
        if (out >= 0) {
            ::dup2(out, STDOUT_FILENO);
            if (outputToFile)
                ::dup2(out, STDERR_FILENO);
            if (out != STDOUT_FILENO && out != STDERR_FILENO)
                ::close(out);
        }
        ::execve(program.constData(), argvPointers, envpPointers);
        const int error = errno;
        [[maybe_unused]] const ssize_t written = ::write(report[1], &error, sizeof error);
        ::_exit(127);
    }
    ::close(report[1]);
    int execError = 0;
    ssize_t got;
    do {
        got = ::read(report[0], &execError, sizeof execError);
    } while (got < 0 && errno == EINTR);
    ::close(report[0]);
    if (got == static_cast<ssize_t>(sizeof execError)) {
        int status = 0;
        ::waitpid(pid, &status, 0);
        return std::nullopt;
    }
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
    if (pid <= 0)
        return false;
    // A child of ours leads its own group: the whole group goes.
    if (ours)
        ::kill(-static_cast<pid_t>(pid), SIGKILL);
    if (::kill(static_cast<pid_t>(pid), SIGKILL) != 0 && !ours)
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
