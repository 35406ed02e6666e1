#pragma once

#include <QString>

// Where the machine-wide pipes and mutexes of this platform live: Unix
// sockets and lock files in one folder, MCTASK_HOME unless told otherwise.
namespace IpcNames {

// The user's home folder of this system (mctaskHome()).
QString defaultFolder();

// The socket of a Windows pipe name ("\\.\pipe\NAME" gives folder/NAME).
QString pipeSocketPath(const QString &pipeName, const QString &folder);

// The lock file of a mutex name (the name itself, as a file in folder).
QString mutexLockPath(const QString &mutexName, const QString &folder);

} // namespace IpcNames
