#pragma once

#include "cadsim/server/installation.h"

#include <QString>
#include <QStringList>

// What mcsim was asked to do by its command line.
struct McsimCommandLine {
    enum class Action { Run, Register, Unregister, Help };

    Action action = Action::Run;
    QString startSwitch; // "/R", "/B" or empty
    StandInInstallation installation;
    QString error; // set when the command line is refused

    // Switches in any letter case: /R, /B, /regserver, /unregserver, /? ;
    // options: --year YEAR, --edition office|standard, --folder DIR, --help.
    static McsimCommandLine parse(const QStringList &arguments);
    static QString usage();
};
