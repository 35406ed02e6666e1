#include "cadsim/server/runservice.h"

#include "platform/clock.h"

#include <QFile>

#include <condition_variable>
#include <thread>

RunService::RunService(const FaultConfig &faults, WindowService &windows, MacroRunner &runner)
    : m_faults(faults), m_windows(windows), m_runner(runner)
{
}

RunService::~RunService() = default;

bool RunService::start(const QString &nativePath, const QString &module, const QString &procedure, Done done)
{
    bool idle = false;
    if (!m_busy.compare_exchange_strong(idle, true))
        return false;
    const int number = ++m_started;
    // Detached: a hung macro must not hold up the end of the process, which
    // leaves with _exit.
    std::thread([this, number, nativePath, module, procedure, done = std::move(done)] {
        bool randomCrash = false;
        const MacroOutcome outcome = execute(number, nativePath, module, procedure, randomCrash);
        const bool lastBeforeCrash =
            randomCrash || (m_faults.crashAfterMacros > 0 && number >= m_faults.crashAfterMacros);
        ++m_finished;
        m_busy = false;
        done(outcome, lastBeforeCrash);
    }).detach();
    return true;
}

std::size_t RunService::grownBytes() const
{
    std::lock_guard lock(m_ballastMutex);
    std::size_t total = 0;
    for (const auto &block : m_ballast)
        total += block.size();
    return total;
}

MacroOutcome RunService::execute(int number, const QString &nativePath, const QString &module,
                                 const QString &procedure, bool &randomCrash)
{
    using RandomFault = FaultConfig::RandomFault;
    RandomFault random = RandomFault::None;
    if (m_faults.randomFaultPercent > 0) {
        QFile macro(nativePath);
        random = m_faults.drawFault(number, macro.open(QIODevice::ReadOnly) ? macro.readAll() : QByteArray());
    }
    randomCrash = random == RandomFault::Crash;

    if (m_faults.runError != 0)
        return {false, m_faults.runError};
    if (random == RandomFault::RunError)
        return {false, FaultConfig::RandomRunError};

    if (!m_faults.showWindow.isEmpty() && m_faults.showWindowAt == FaultConfig::WindowMoment::Macro) {
        WindowService::WindowId parent = 0;
        if (!m_faults.showWindowParent.isEmpty()) {
            // A parent of its own with the wanted title.
            parent = m_windows.createWindow(m_faults.showWindowParent);
        }
        m_windows.showModal(m_faults.showWindow, parent);
        if (parent != 0)
            m_windows.destroyWindow(parent);
    }
    if (random == RandomFault::Dialog)
        m_windows.showModal(QStringLiteral("Mecadra"), 0); // a stray message box, as a macro's MsgBox shows it

    if (m_faults.hangInMacro == number || random == RandomFault::Hang) {
        std::mutex never;
        std::condition_variable neverSignalled;
        std::unique_lock lock(never);
        neverSignalled.wait(lock, [] { return false; });
    }

    if (m_faults.macroDelayMs > 0)
        Clock::instance().sleep(m_faults.macroDelayMs);

    const int growMiB = random == RandomFault::Grow ? FaultConfig::RandomGrowMiB : m_faults.growMiBPerMacro;
    if (growMiB > 0) {
        // Filled, so the pages are really resident.
        std::vector<char> block(static_cast<std::size_t>(growMiB) * 1024 * 1024, '\x5a');
        std::lock_guard lock(m_ballastMutex);
        m_ballast.push_back(std::move(block));
    }

    return m_runner.run(nativePath, module, procedure);
}
