#pragma once

#include <QString>

// What a run call reports: whether the macro could be run, and the run
// call's error code (0 when none).
struct MacroOutcome
{
    bool ok = true;
    int errorCode = 0;
};

// Runs a procedure of a module in a macro file, on the calling thread.
class MacroRunner
{
public:
    virtual ~MacroRunner() = default;
    virtual MacroOutcome run(const QString &nativePath, const QString &module, const QString &procedure) = 0;
};
