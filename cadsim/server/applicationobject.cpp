#include "cadsim/server/applicationobject.h"

#include "cadsim/model/cadapplication.h"
#include "cadsim/server/memberhelpers.h"
#include "cadsim/server/runservice.h"
#include "cadsim/server/scriptbridge.h"

#include <QRegularExpression>

namespace {

// The server is busy with another run call.
constexpr HRESULT RPC_E_CALL_REJECTED = makeHresult(0x80010001u);

// Revisions before this one have only the run call without an error code.
constexpr int kFirstRevisionWithRunErrorCode = 17;

} // namespace

ApplicationObject::ApplicationObject(ScriptBridge &bridge, WindowService &windows, RunService &runs,
                                     ProcessInfo process, bool refuseExit)
    : m_bridge(bridge),
      m_app(bridge.application()->application()),
      m_windows(windows),
      m_runs(runs),
      m_process(std::move(process)),
      m_refuseExit(refuseExit)
{
    m_app.frame().window = static_cast<std::int32_t>(m_process.mainWindow);
    m_members.add("StartSwitch", [this](AutomationCall &call) {
        call.setResult(Variant::fromBStr(m_process.startSwitch));
        return S_OK;
    });
    m_members.add("StartShowCommand", [this](AutomationCall &call) {
        call.setResult(Variant::fromI4(m_process.startShowCommand));
        return S_OK;
    });
    m_members.add("GetProcessID", [this](AutomationCall &call) {
        call.setResult(Variant::fromI4(static_cast<std::int32_t>(m_process.processId)));
        return S_OK;
    });
    m_members.add("ExitApp", [this](AutomationCall &call) {
        if (!m_refuseExit && m_exit)
            QMetaObject::invokeMethod(&call.server(), m_exit, Qt::QueuedConnection); // after the reply
        return S_OK;
    });
    m_members.add("RunMacro", [this](AutomationCall &call) { return runMacro(call, false); });
    m_members.add("RunMacro2", [this](AutomationCall &call) {
        if (revisionMajor(m_app.revisionNumber()) < kFirstRevisionWithRunErrorCode)
            return DISP_E_MEMBERNOTFOUND;
        return runMacro(call, true);
    });
}

int ApplicationObject::revisionMajor(const QString &revision)
{
    static const QRegularExpression leading(QStringLiteral("^\\s*(\\d+)"));
    const QRegularExpressionMatch match = leading.match(revision);
    return match.hasMatch() ? match.captured(1).toInt() : 0;
}

HRESULT ApplicationObject::invoke(const QString &name, AutomationCall &call)
{
    if (const Member *member = m_members.find(name))
        return (*member)(call);
    return m_bridge.invoke(*m_bridge.application(), name, call);
}

void ApplicationObject::visibilityChanged(bool visible)
{
    m_windows.showWindow(m_process.mainWindow, visible ? winmsg::SwShow : winmsg::SwHide);
}

QString ApplicationObject::nativePath(const QString &path) const
{
    if (path.startsWith(QLatin1Char('/')))
        return path;
    const QString native = m_app.resolve(path);
    return native.isEmpty() ? path : native;
}

HRESULT ApplicationObject::runMacro(AutomationCall &call, bool withErrorCode)
{
    member::requireArgs(call, 3);
    const QString path = nativePath(call.arg(0).toText());
    const QString module = call.arg(1).toText();
    const QString procedure = call.arg(2).toText();
    if (m_runs.busy())
        return RPC_E_CALL_REJECTED;

    auto pending = call.defer();
    if (withErrorCode && pending->args().size() < 5)
        pending->args().resize(5);
    const bool started = m_runs.start(path, module, procedure, [pending, withErrorCode, crash = m_crash](
                                                                    MacroOutcome outcome, bool lastBeforeCrash) {
        if (withErrorCode)
            pending->args()[4] = Variant::fromI4(outcome.errorCode);
        // One hand-over to the server's thread: the answer, then the crash.
        pending->complete(S_OK, Variant::fromBool(outcome.ok), lastBeforeCrash ? crash : std::function<void()>());
    });
    if (!started)
        pending->complete(RPC_E_CALL_REJECTED);
    return S_OK;
}
