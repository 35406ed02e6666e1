#pragma once

#include <QCoreApplication>

// The one application object of a test program that needs sockets, threads or timers.
inline QCoreApplication &coreApp()
{
    static int argc = 1;
    static char name[] = "mctask_test";
    static char *argv[] = {name, nullptr};
    static QCoreApplication *app = QCoreApplication::instance() ?: new QCoreApplication(argc, argv);
    return *app;
}
