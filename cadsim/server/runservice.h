#pragma once

#include "cadsim/server/faultconfig.h"
#include "cadsim/server/macrorunner.h"
#include "cadsim/server/windowservice.h"

#include <QString>

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

// Runs macros one at a time on a worker thread, so that the server keeps
// answering (window service, calls made from event handlers) while a macro
// runs or waits on a message box. The injected faults act here.
class RunService final
{
public:
    // lastBeforeCrash: the process is to end right after answering this run.
    using Done = std::function<void(MacroOutcome outcome, bool lastBeforeCrash)>;

    RunService(const FaultConfig &faults, WindowService &windows, MacroRunner &runner);
    ~RunService();

    // False (and nothing runs) while another macro is running. done is called
    // on the worker thread when the macro ends, as the worker's last act.
    bool start(const QString &nativePath, const QString &module, const QString &procedure, Done done);

    int macrosStarted() const { return m_started; }
    bool busy() const { return m_busy; }
    std::size_t grownBytes() const;

private:
    // randomCrash: the random mode wants the process to end after this run.
    MacroOutcome execute(int number, const QString &nativePath, const QString &module, const QString &procedure,
                         bool &randomCrash);

    FaultConfig m_faults;
    WindowService &m_windows;
    MacroRunner &m_runner;
    std::atomic<int> m_started{0};
    std::atomic<int> m_finished{0};
    std::atomic<bool> m_busy{false};
    mutable std::mutex m_ballastMutex;
    std::vector<std::vector<char>> m_ballast; // memory kept on purpose (MCSIM_GROW_MIB)
};
