#pragma once

#include "cadsim/model/cadapplication.h"
#include "cadsim/server/scriptbridge.h"
#include "cadsim/server/faultconfig.h"
#include "cadsim/server/macrorunner.h"
#include "cadsim/server/runservice.h"
#include "cadsim/server/windowservice.h"
#include "platform/automation/automationserver.h"
#include "platform/automation/objecttable.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>

class ApplicationObject;
class EventForwarder;

// Everything one stand-in process serves: the window service (registered at
// once as "Windows_PID_<pid>", so dialogs are reachable while the
// application starts) and the application object (registered as
// "Mecadra_PID_<pid>" after the configured delay).
class SimServer final : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        QString startSwitch; // "/R", "/B" or empty
        int startShowCommand = 1; // how the starter asked to show the main window
        FaultConfig faults;
        CadSettings cad;
        PathResolver resolver;
        QString tableDirectory; // empty: the default object table
        qint64 processId = 0;
    };

    // Builds the macro runner once the application and windows exist.
    using RunnerFactory =
        std::function<std::unique_ptr<MacroRunner>(const std::shared_ptr<CadApplication> &, WindowService &)>;

    SimServer(Options options, const RunnerFactory &makeRunner, QObject *parent = nullptr);
    ~SimServer() override;

    // Registers the window service now and the application when it is due.
    // False when the window service cannot be registered.
    bool start();
    void shutdown();

    CadApplication &application() { return *m_app; }
    WindowService &windows() { return m_windows; }
    ObjectTable &table() { return m_table; }

signals:
    void registered(const QString &moniker);
    void registrationSkipped();
    void registrationFailed(const QString &moniker, const QString &reason);
    void exitRequested();
    // The configured number of macros has run and its answer is out.
    void crashRequested();

private:
    void registerApplication();

    Options m_options;
    ObjectTable m_table;
    std::shared_ptr<CadApplication> m_app;
    WindowService m_windows;
    WindowService::WindowId m_mainWindow = 0;
    ScriptBridge m_bridge;
    std::unique_ptr<MacroRunner> m_runner;
    RunService m_runs;
    AutomationServer m_appServer;
    AutomationServer m_windowServer;
    std::shared_ptr<ApplicationObject> m_appObject;
    std::unique_ptr<EventForwarder> m_events;
};
