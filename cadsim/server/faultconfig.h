#pragma once

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>

#include <cstdint>

// How the stand-in misbehaves on purpose, read from its environment so that
// restarts, the dialog watcher and recovery can be exercised for real.
// cadsim/README.md lists the variables.
struct FaultConfig
{
    enum class WindowMoment { Macro, Start };

    int registerDelayMs = 0;        // MCSIM_REGISTER_DELAY_MS
    bool neverRegister = false;     // MCSIM_NEVER_REGISTER
    int crashAfterMacros = 0;       // MCSIM_CRASH_AFTER: die after this many macros (0: never)
    int hangInMacro = 0;            // MCSIM_HANG_IN_MACRO: the n-th macro never ends (0: none)
    int macroDelayMs = 0;           // MCSIM_MACRO_DELAY_MS: every macro takes at least this long
    QString showWindow;             // MCSIM_SHOW_WINDOW: title of a window shown ...
    WindowMoment showWindowAt = WindowMoment::Macro; // MCSIM_SHOW_WINDOW_AT: "macro" or "start"
    QString showWindowParent;       // MCSIM_SHOW_WINDOW_PARENT: its parent's title (none: top-level)
    int growMiBPerMacro = 0;        // MCSIM_GROW_MIB
    bool refuseExit = false;        // MCSIM_REFUSE_EXIT
    int runError = 0;               // MCSIM_RUN_ERROR: run calls fail with this code (0: none)
    int randomFaultPercent = 0;     // MCSIM_RANDOM_FAULTS: share of run calls that get a random fault
    std::uint64_t faultSeed = 0;    // MCSIM_FAULT_SEED

    // What a run call suffers in the random mode.
    enum class RandomFault { None, Crash, Hang, Dialog, Grow, RunError };
    // The fault of the number-th run call of this process running macro:
    // drawn from the seed, the macro's text and number, so that one seed and
    // one sequence of calls give the same faults again.
    RandomFault drawFault(int number, const QByteArray &macro) const;
    // Fixed sizes of the random faults.
    static constexpr int RandomGrowMiB = 96;
    static constexpr int RandomRunError = 20; // "Call failed."

    // Unset or unreadable values keep the defaults above; problems are
    // collected in warnings (one line each) for the process to report.
    static FaultConfig fromEnvironment(const QProcessEnvironment &env, QStringList *warnings = nullptr);
};
