#pragma once

#include <QApplication>

// The one widget application of a test program (offscreen under CTest).
inline QApplication &widgetApp()
{
    static int argc = 1;
    static char name[] = "widget_test";
    static char *argv[] = {name, nullptr};
    static QApplication *app =
        qobject_cast<QApplication *>(QCoreApplication::instance()) ?: new QApplication(argc, argv);
    return *app;
}

// A base for fixtures whose members are widgets: the application comes first.
struct WithWidgetApp {
    WithWidgetApp() { widgetApp(); }
};
