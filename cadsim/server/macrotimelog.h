#pragma once

#include "cadsim/server/macrorunner.h"

#include <QString>
#include <memory>

// Wraps a macro runner so that every run call appends a line to logPath: the
// microseconds it spent inside the macro, the wall-clock millisecond it ended
// (since the epoch) and the stand-in's process id. Benchmarks of real runs
// subtract the first from their total to get the add-in's own share, and tell
// the gaps between files from the restarts of Mecadra by the process id;
// several stand-in processes of one run append to the same file.
std::unique_ptr<MacroRunner> makeTimedMacroRunner(std::unique_ptr<MacroRunner> runner, const QString &logPath);
