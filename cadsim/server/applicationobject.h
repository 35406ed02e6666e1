#pragma once

#include "cadsim/server/windowservice.h"
#include "platform/automation/automationserver.h"

#include <QString>

#include <functional>
#include <memory>

class CadApplication;
class DocumentObjects;
class RunService;

// The frame of the main window: its window handle and whether it stays hidden.
class FrameObject final : public AutomationObject
{
public:
    FrameObject(CadApplication &app, WindowService::WindowId window) : m_app(app), m_window(window) {}
    HRESULT invoke(const QString &member, AutomationCall &call) override;

private:
    CadApplication &m_app;
    WindowService::WindowId m_window;
};

// What the process tells the application object about itself.
struct ProcessInfo
{
    QString startSwitch; // "/R", "/B" or empty, as given on the command line
    int startShowCommand = 1; // the show command the starter asked for (2: minimised)
    qint64 processId = 0;
    WindowService::WindowId mainWindow = 0;
};

// The application object served at the registered endpoint: revision,
// preferences, visibility and the other application properties, the frame,
// documents, closing them, exit and the two run calls. It fires the
// application events (see EventForwarder).
class ApplicationObject final : public AutomationObject
{
public:
    ApplicationObject(CadApplication &app, DocumentObjects &documents, WindowService &windows,
                      RunService &runs, ProcessInfo process, bool refuseExit);

    HRESULT invoke(const QString &member, AutomationCall &call) override;
    bool sourcesEvents() const override { return true; }

    // Called after the reply to an exit request (not called when exit is refused).
    void setExitHandler(std::function<void()> handler) { m_exit = std::move(handler); }
    // Called on the server thread right after answering the run call after
    // which the process is to crash (MCSIM_CRASH_AFTER).
    void setCrashHandler(std::function<void()> handler) { m_crash = std::move(handler); }

    // The leading number of the revision text ("21.0.0" -> 21; 0 when none).
    static int revisionMajor(const QString &revision);

private:
    HRESULT runMacro(AutomationCall &call, bool withErrorCode);
    HRESULT preference(const QString &member, AutomationCall &call, bool &handled);
    QString nativePath(const QString &path) const;

    CadApplication &m_app;
    DocumentObjects &m_documents;
    WindowService &m_windows;
    RunService &m_runs;
    ProcessInfo m_process;
    bool m_refuseExit;
    std::shared_ptr<FrameObject> m_frame;
    bool m_backgroundMode = false;
    bool m_userControl = true;
    std::function<void()> m_exit;
    std::function<void()> m_crash;
};
