#pragma once

#include <QString>

// The per-user folder where the registry store, the drive map, the object
// table and the pipes live: $MCTASK_HOME, else ~/.local/share/mctask.
// The folder is not created here.
QString mctaskHome();

// A file or folder directly under mctaskHome().
QString mctaskHomePath(const QString &name);

// mctaskHome(), created when missing; empty when it cannot be created.
QString ensureMctaskHome();

// A folder of files that can be made again (the help's collection files):
// "cache" under mctaskHome(), created when missing; empty when it cannot be.
QString ensureMctaskCacheFolder();
