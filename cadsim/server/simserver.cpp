#include "cadsim/server/simserver.h"

#include "cadsim/server/applicationobject.h"
#include "cadsim/server/eventforwarder.h"
#include "cadsim/server/windowsobject.h"

#include <QTimer>

#include <thread>

namespace {

const QString kApplicationRoot = QStringLiteral("Application");
const QString kWindowsRoot = QStringLiteral("Windows");

} // namespace

SimServer::SimServer(Options options, const RunnerFactory &makeRunner, QObject *parent)
    : QObject(parent),
      m_options(std::move(options)),
      m_table(m_options.tableDirectory.isEmpty() ? ObjectTable() : ObjectTable(m_options.tableDirectory)),
      m_app(std::make_shared<CadApplication>(m_options.resolver, m_options.cad)),
      m_mainWindow(m_windows.createWindow(QStringLiteral("Mecadra"))),
      m_bridge(cadsim::ScriptCadApplication::create(m_app)),
      m_runner(makeRunner(m_app, m_windows)),
      m_runs(m_options.faults, m_windows, *m_runner)
{
    ProcessInfo process;
    process.startSwitch = m_options.startSwitch;
    process.startShowCommand = m_options.startShowCommand;
    process.processId = m_options.processId;
    process.mainWindow = m_mainWindow;
    m_appObject = std::make_shared<ApplicationObject>(m_bridge, m_windows, m_runs, process,
                                                      m_options.faults.refuseExit);
    m_bridge.adopt(m_bridge.application(), m_appObject);
    m_app->addObserver(m_appObject.get());
    m_appObject->setExitHandler([this] { emit exitRequested(); });
    m_appObject->setCrashHandler([this] { emit crashRequested(); });

    auto windowsObject = std::make_shared<WindowsObject>(m_windows, m_options.processId);
    m_appServer.addRoot(kApplicationRoot, m_appObject);
    m_appServer.addRoot(kWindowsRoot, windowsObject);
    m_windowServer.addRoot(kWindowsRoot, windowsObject);

    m_events = std::make_unique<EventForwarder>(m_appServer, m_appObject, m_bridge);
    m_app->addObserver(m_events.get());
}

SimServer::~SimServer()
{
    m_app->removeObserver(m_events.get());
    m_app->removeObserver(m_appObject.get());
    shutdown();
}

bool SimServer::start()
{
    if (!m_table.registerServer(m_windowServer, Monikers::windows(m_options.processId)))
        return false;

    const FaultConfig &faults = m_options.faults;
    if (faults.neverRegister) {
        QTimer::singleShot(0, this, [this] { emit registrationSkipped(); });
        return true;
    }
    if (!faults.showWindow.isEmpty() && faults.showWindowAt == FaultConfig::WindowMoment::Start) {
        // A start-up dialog holds registration back until someone answers it.
        std::thread([this, title = faults.showWindow] {
            m_windows.showModal(title);
            QMetaObject::invokeMethod(
                this, [this] { QTimer::singleShot(m_options.faults.registerDelayMs, this, &SimServer::registerApplication); },
                Qt::QueuedConnection);
        }).detach();
        return true;
    }
    QTimer::singleShot(faults.registerDelayMs, this, &SimServer::registerApplication);
    return true;
}

void SimServer::registerApplication()
{
    const QString moniker = Monikers::application(m_options.processId);
    if (m_table.registerServer(m_appServer, moniker))
        emit registered(moniker);
    else
        emit registrationFailed(moniker, m_table.lastError());
}

void SimServer::shutdown()
{
    m_table.revoke(m_appServer);
    m_table.revoke(m_windowServer);
    m_windows.abandonAll();
}
