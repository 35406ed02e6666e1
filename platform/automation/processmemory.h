#pragma once

#include <QtGlobal>

#include <optional>

// Working-set size (resident set) of a process in bytes, from /proc;
// nothing when the process does not exist.
std::optional<quint64> workingSetBytes(qint64 pid);
