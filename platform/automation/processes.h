#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <map>
#include <mutex>
#include <optional>

// How a started program is asked to show its main window (the show commands
// of the window layer).
enum class ShowCommand : int {
    Hide = 0,
    Normal = 1,
    Minimized = 2,
    Maximized = 3,
};

// Processes the add-in starts, watches and ends, behind an interface so the
// process table can be replaced in tests. Exit codes are those a process
// reports, or the code it was terminated with.
class Processes
{
public:
    // The variable through which a started program learns its show command.
    static constexpr char ShowCommandVariable[] = "MCTASK_SHOW_WINDOW";

    struct StartRequest {
        QString program; // native path
        QStringList arguments;
        ShowCommand show = ShowCommand::Normal;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        QString outputFile; // stdout and stderr go there; empty: stdout discarded, stderr inherited
    };

    virtual ~Processes() = default;

    // The process id, or nothing when the program could not be started.
    virtual std::optional<qint64> start(const StartRequest &request) = 0;
    // Whether the process can still be opened: it has not ended.
    virtual bool isRunning(qint64 pid) = 0;
    // The exit code once the process has ended; nothing while it runs or
    // when it was not started here and is gone.
    virtual std::optional<int> exitCode(qint64 pid) = 0;
    // Ends the process at once; it then reports exitCode. False when it was gone.
    virtual bool terminate(qint64 pid, int exitCode) = 0;
    // Resident memory in bytes; nothing when the process is gone.
    virtual std::optional<quint64> workingSet(qint64 pid) = 0;

    static Processes &instance();
    // Installs processes as the process-wide one (nullptr restores the
    // system's) and returns the previous override. The caller keeps ownership.
    static Processes *setInstance(Processes *processes);
};

// The operating system's processes. Children started here are reaped when
// asked about, so an ended child is never left as a zombie once looked at.
// A child never outlives its starter: it gets SIGKILL when the thread that
// started it ends (the whole process killed included), so start programs
// from a thread that lives as long as they should. Each child leads a
// process group of its own, which terminate() ends as a whole.
class SystemProcesses final : public Processes
{
public:
    std::optional<qint64> start(const StartRequest &request) override;
    bool isRunning(qint64 pid) override;
    std::optional<int> exitCode(qint64 pid) override;
    bool terminate(qint64 pid, int exitCode) override;
    std::optional<quint64> workingSet(qint64 pid) override;

private:
    struct Child {
        std::optional<int> exitCode;
        std::optional<int> terminatedWith;
    };
    // Collects the child's status when it has ended; false when pid is not ours.
    bool reap(qint64 pid);

    std::mutex m_mutex;
    std::map<qint64, Child> m_children;
};

// Installs processes for the lifetime of the guard (tests).
class ScopedProcesses final
{
public:
    explicit ScopedProcesses(Processes &processes) : m_previous(Processes::setInstance(&processes)) {}
    ~ScopedProcesses() { Processes::setInstance(m_previous); }
    ScopedProcesses(const ScopedProcesses &) = delete;
    ScopedProcesses &operator=(const ScopedProcesses &) = delete;

private:
    Processes *m_previous;
};
