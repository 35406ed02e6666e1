#pragma once

#include "cadsim/engine/membertable.h"
#include "cadsim/model/modelobserver.h"
#include "cadsim/server/windowservice.h"
#include "platform/automation/automationserver.h"

#include <QString>

#include <functional>
#include <memory>

class CadApplication;
class RunService;
class ScriptBridge;

// What the process tells the application object about itself.
struct ProcessInfo
{
    QString startSwitch; // "/R", "/B" or empty, as given on the command line
    int startShowCommand = 1; // the show command the starter asked for (2: minimised)
    qint64 processId = 0;
    WindowService::WindowId mainWindow = 0;
};

// The application object served at the registered endpoint: the model's
// application (its member table, shared with macros) and what only the
// process answers: its start, its id, exit and the two run calls. It fires
// the application events (see EventForwarder) and shows the main window when
// the application becomes visible.
class ApplicationObject final : public AutomationObject, public ModelObserver
{
public:
    ApplicationObject(ScriptBridge &bridge, WindowService &windows, RunService &runs, ProcessInfo process,
                      bool refuseExit);

    HRESULT invoke(const QString &member, AutomationCall &call) override;
    bool sourcesEvents() const override { return true; }
    void visibilityChanged(bool visible) override;

    // Called after the reply to an exit request (not called when exit is refused).
    void setExitHandler(std::function<void()> handler) { m_exit = std::move(handler); }
    // Called on the server thread right after answering the run call after
    // which the process is to crash (MCSIM_CRASH_AFTER).
    void setCrashHandler(std::function<void()> handler) { m_crash = std::move(handler); }

    // The leading number of the revision text ("21.0.0" -> 21; 0 when none).
    static int revisionMajor(const QString &revision);

private:
    using Member = std::function<HRESULT(AutomationCall &)>;
    HRESULT runMacro(AutomationCall &call, bool withErrorCode);
    QString nativePath(const QString &path) const;

    ScriptBridge &m_bridge;
    CadApplication &m_app;
    WindowService &m_windows;
    RunService &m_runs;
    ProcessInfo m_process;
    bool m_refuseExit;
    cadsim::NamedTable<Member> m_members;
    std::function<void()> m_exit;
    std::function<void()> m_crash;
};
