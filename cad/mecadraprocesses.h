#pragma once

#include "platform/automation/automationclient.h"
#include "platform/automation/serverlauncher.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

// One connection to a Mecadra application object: calls, and events that
// arrive while a call waits. Used on the thread that made it.
class McAutomation
{
public:
    virtual ~McAutomation() = default;
    virtual AutomationReply call(const ObjectRef &object, const QString &member, AutomationArgs args = {},
                                 int timeoutMs = 0) = 0;
    virtual void setEventSink(AutomationEventSink *sink) = 0;
};

// A top-level window of some process, as the dialog watcher sees it.
struct TopWindow {
    qint64 processId = 0;
    std::int64_t handle = 0;
    QString title;
    QString parentTitle;
};

// The machine's top-level windows, walked from the first to the last.
class DesktopWindows
{
public:
    virtual ~DesktopWindows() = default;
    virtual std::vector<TopWindow> list() = 0;
    virtual void postMessage(const TopWindow &window, std::uint32_t message, std::uint32_t wParam) = 0;
};

// What the connection asks of the machine: start Mecadra's command line,
// find the application object a process registered, watch and end the
// process, and reach the windows for the dialog watcher.
class MecadraProcesses
{
public:
    virtual ~MecadraProcesses() = default;

    // Starts commandLine with a minimised main window; the process id.
    virtual std::optional<qint64> start(const QString &commandLine) = 0;
    // What looking for the application of a process came to.
    struct Attachment {
        std::unique_ptr<McAutomation> app; // set once attached
        bool appeared = false;             // its entry was in the object table
        HRESULT hr = S_OK;                 // why an application that appeared could not be reached
    };
    // Up to polls times: sleep intervalMs, then look for the application
    // that pid registered; once it appears, attach to it.
    virtual Attachment waitForApplication(qint64 pid, int polls, qint64 intervalMs) = 0;
    virtual bool isRunning(qint64 pid) = 0;
    // Up to polls times: sleep intervalMs, then check; true once pid ended.
    virtual bool waitForExit(qint64 pid, int polls, qint64 intervalMs) = 0;
    virtual bool terminate(qint64 pid, int exitCode) = 0;
    virtual std::optional<quint64> workingSet(qint64 pid) = 0;
    // The windows, for use on the calling thread only (the watcher makes its own).
    virtual std::unique_ptr<DesktopWindows> openWindows() = 0;
};

// The real machine: the launcher, the object table and the window services
// that the processes registered there.
class LaunchedMecadraProcesses final : public MecadraProcesses
{
public:
    explicit LaunchedMecadraProcesses(ServerLauncher launcher = ServerLauncher());

    std::optional<qint64> start(const QString &commandLine) override;
    Attachment waitForApplication(qint64 pid, int polls, qint64 intervalMs) override;
    bool isRunning(qint64 pid) override;
    bool waitForExit(qint64 pid, int polls, qint64 intervalMs) override;
    bool terminate(qint64 pid, int exitCode) override;
    std::optional<quint64> workingSet(qint64 pid) override;
    std::unique_ptr<DesktopWindows> openWindows() override;

private:
    ServerLauncher m_launcher;
};
