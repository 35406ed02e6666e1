#pragma once

#include <QString>
#include <QStringList>

// What a trial run of one macro in the stand-in reported.
struct StandInRunResult {
    bool started = false;      // the stand-in came up and registered
    bool ran = false;          // the run call's flag
    int errorCode = 0;         // the run call's error code
    QStringList savedFiles;    // files announced as about to be saved, in order
    QString failure;           // why nothing ran, when started or the call failed
};

// Starts the stand-in CAD application (program), runs procedure "main" of
// module "McMacro1" in macroFile, reports the files it saved, and closes it.
// Meant for administrators trying a task's macro on one file.
StandInRunResult runMacroInStandIn(const QString &program, const QString &macroFile, int timeoutMs = 600000);

// The stand-in program of this build: $MCTASK_MCSIM, else next to mctask's
// build tree, else "mcsim" beside the program.
QString defaultStandInProgram();
