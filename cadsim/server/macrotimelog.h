#pragma once

#include "cadsim/server/macrorunner.h"

#include <QString>
#include <memory>

// Wraps a macro runner so that every run call appends the microseconds it
// spent inside the macro, one number per line, to logPath. Benchmarks of real
// runs subtract this from their total to get the add-in's own share; several
// stand-in processes of one run may append to the same file.
std::unique_ptr<MacroRunner> makeTimedMacroRunner(std::unique_ptr<MacroRunner> runner, const QString &logPath);
