#pragma once

#include "cad/mecadraprocesses.h"
#include "platform/automation/automationerrors.h"
#include "platform/automation/windowmessages.h"
#include "platform/clock.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>

// Mecadra processes and application objects in memory: what a test needs to
// drive McManager without real processes. Run calls answer from a script;
// windows shown during a run wait until the watcher answers them.
class FakeMecadra final : public MecadraProcesses
{
public:
    struct RunAnswer {
        HRESULT hr = S_OK;
        bool flag = true;
        std::int32_t errorCode = 0;
        QString windowTitle; // shown during the call, answered by the watcher
    };
    struct Process {
        QString commandLine;
        bool running = true;
        int exitCode = 0;
    };

    // Settings of the next processes.
    bool registers = true;
    HRESULT attachFailure = S_OK; // the registered object cannot be reached
    bool refusesExit = false;
    bool survivesTerminate = false;
    QString revision = QStringLiteral("21.0.0");
    HRESULT hideFailure = S_OK; // the answer of "Visible"
    // Application members that fail with the given code.
    std::map<QString, HRESULT> failingMembers;
    // The answer to run call n (counted from 1 over all processes).
    std::function<RunAnswer(int call)> runAnswer = [](int) { return RunAnswer{}; };
    std::map<qint64, quint64> workingSets;

    // What happened.
    struct Call {
        QString member;
        AutomationArgs args;
    };
    std::vector<Call> calls; // application calls of every process, in order
    std::vector<QString> commandLines;
    std::map<qint64, Process> processes;
    int runCalls = 0;
    std::vector<int> runTimeouts; // the time limit of each run call
    int answeredWindows = 0;
    std::vector<QString> macroPaths;
    std::vector<QString> macroTexts;
    std::function<QString(const QString &)> readMacro;

    qint64 lastPid() const { return m_nextPid - 1; }

    std::optional<qint64> start(const QString &commandLine) override
    {
        commandLines.push_back(commandLine);
        if (commandLine.isEmpty())
            return std::nullopt;
        const qint64 pid = m_nextPid++;
        processes[pid] = Process{commandLine};
        return pid;
    }

    Attachment waitForApplication(qint64 pid, int polls, qint64 intervalMs) override
    {
        Attachment attachment;
        for (int poll = 0; poll < polls && !attachment.appeared; ++poll) {
            Clock::instance().sleep(intervalMs);
            attachment.appeared = registers;
        }
        attachment.hr = attachment.appeared ? attachFailure : S_OK;
        if (attachment.appeared && succeeded(attachFailure))
            attachment.app = std::make_unique<Application>(*this, pid);
        return attachment;
    }

    // The members called, in order (the run calls' names tell which was used).
    QStringList calledMembers() const
    {
        QStringList members;
        for (const Call &call : calls)
            members.append(call.member);
        return members;
    }
    // The arguments of every call of member.
    std::vector<AutomationArgs> argsOf(const QString &member) const
    {
        std::vector<AutomationArgs> found;
        for (const Call &call : calls)
            if (call.member == member)
                found.push_back(call.args);
        return found;
    }

    bool isRunning(qint64 pid) override { return processes.count(pid) && processes[pid].running; }

    bool waitForExit(qint64 pid, int polls, qint64 intervalMs) override
    {
        for (int poll = 0; poll < polls; ++poll) {
            Clock::instance().sleep(intervalMs);
            if (!isRunning(pid))
                return true;
        }
        return false;
    }

    bool terminate(qint64 pid, int exitCode) override
    {
        if (!isRunning(pid) || survivesTerminate)
            return false;
        processes[pid].running = false;
        processes[pid].exitCode = exitCode;
        return true;
    }

    std::optional<quint64> workingSet(qint64 pid) override
    {
        if (!isRunning(pid))
            return std::nullopt;
        const auto found = workingSets.find(pid);
        return found == workingSets.end() ? quint64(50) << 20 : found->second;
    }

    std::unique_ptr<DesktopWindows> openWindows() override { return std::make_unique<Windows>(*this); }

    void addWindow(qint64 pid, const QString &title)
    {
        std::lock_guard lock(m_mutex);
        m_windows.push_back({pid, m_nextWindow++, title, {}});
    }

private:
    class Application final : public McAutomation
    {
    public:
        Application(FakeMecadra &fake, qint64 pid) : m_fake(fake), m_pid(pid) {}

        AutomationReply call(const ObjectRef &, const QString &member, AutomationArgs args, int timeoutMs) override
        {
            m_fake.calls.push_back({member, args});
            if (!m_fake.isRunning(m_pid))
                return {RPC_S_SERVER_UNAVAILABLE, {}, {}};
            if (const auto failing = m_fake.failingMembers.find(member); failing != m_fake.failingMembers.end())
                return {failing->second, {}, {}};
            if (member == QLatin1String("RevisionNumber"))
                return {S_OK, Variant::fromBStr(m_fake.revision), {}};
            if (member == QLatin1String("Advise"))
                return {S_OK, AutomationValue::fromHandle(1), {}};
            if (member == QLatin1String("Frame"))
                return {S_OK, AutomationValue::fromHandle(2), {}};
            if (member == QLatin1String("GetHWndx64"))
                return {S_OK, Variant::fromI4(7), {}};
            if (member == QLatin1String("Visible"))
                return {m_fake.hideFailure, {}, {}};
            if (member == QLatin1String("GetFirstDocument"))
                return {S_OK, AutomationValue::nothing(), {}};
            if (member == QLatin1String("ExitApp")) {
                if (!m_fake.refusesExit)
                    m_fake.processes[m_pid].running = false;
                return {};
            }
            // As Mecadra: the call with an error code exists from revision 17 on.
            if (member == QLatin1String("RunMacro2") && m_fake.revision.section(QLatin1Char('.'), 0, 0).toInt() < 17)
                return {DISP_E_MEMBERNOTFOUND, {}, {}};
            if (member == QLatin1String("RunMacro2") || member == QLatin1String("RunMacro"))
                return m_fake.run(m_pid, std::move(args), timeoutMs);
            return {};
        }
        void setEventSink(AutomationEventSink *) override {}

    private:
        FakeMecadra &m_fake;
        qint64 m_pid;
    };

    class Windows final : public DesktopWindows
    {
    public:
        explicit Windows(FakeMecadra &fake) : m_fake(fake) {}
        std::vector<TopWindow> list() override
        {
            std::lock_guard lock(m_fake.m_mutex);
            return m_fake.m_windows;
        }
        void postMessage(const TopWindow &window, std::uint32_t message, std::uint32_t) override
        {
            if (message != winmsg::KeyUp && message != winmsg::Close) // the window goes on key-up or close
                return;
            std::lock_guard lock(m_fake.m_mutex);
            std::erase_if(m_fake.m_windows, [&](const TopWindow &w) { return w.handle == window.handle; });
            ++m_fake.answeredWindows;
            m_fake.m_answered.notify_all();
        }

    private:
        FakeMecadra &m_fake;
    };

    AutomationReply run(qint64 pid, AutomationArgs args, int timeoutMs)
    {
        runTimeouts.push_back(timeoutMs);
        const RunAnswer answer = runAnswer(++runCalls);
        const QString path = args.at(0).toText();
        macroPaths.push_back(path);
        if (readMacro)
            macroTexts.push_back(readMacro(path));
        if (!answer.windowTitle.isEmpty()) {
            addWindow(pid, answer.windowTitle);
            std::unique_lock lock(m_mutex);
            m_answered.wait_for(lock, std::chrono::seconds(5), [&] {
                return std::none_of(m_windows.begin(), m_windows.end(),
                                    [&](const TopWindow &w) { return w.title == answer.windowTitle; });
            });
        }
        AutomationReply reply{answer.hr, Variant::fromBool(answer.flag), std::move(args)};
        if (reply.out.size() > 4)
            reply.out[4] = Variant::fromI4(answer.errorCode);
        return reply;
    }

    qint64 m_nextPid = 1000;
    std::int64_t m_nextWindow = 1;
    std::mutex m_mutex;
    std::condition_variable m_answered;
    std::vector<TopWindow> m_windows;
};
