#include "cadsim/server/applicationobject.h"

#include "cadsim/model/cadapplication.h"
#include "cadsim/server/documentobjects.h"
#include "cadsim/server/memberhelpers.h"
#include "cadsim/server/runservice.h"

#include <QRegularExpression>

namespace {

// The server is busy with another run call.
constexpr HRESULT RPC_E_CALL_REJECTED = makeHresult(0x80010001u);

// Revisions before this one have only the run call without an error code.
constexpr int kFirstRevisionWithRunErrorCode = 17;

// Entries come as one text separated by line feeds (as macros pass them) or
// as an array; either way trimmed, empty ones dropped.
QStringList toStringList(const AutomationValue &value)
{
    QStringList raw;
    if (value.isArray()) {
        for (const AutomationValue &item : value.items())
            raw << item.toText();
    } else {
        raw = value.toText().split(QLatin1Char('\n'));
    }
    QStringList items;
    for (const QString &item : raw) {
        if (!item.trimmed().isEmpty())
            items << item.trimmed();
    }
    return items;
}

} // namespace

HRESULT FrameObject::invoke(const QString &name, AutomationCall &call)
{
    if (member::is(name, "GetHWnd") || member::is(name, "GetHWndx64")) {
        call.setResult(Variant::fromI4(static_cast<std::int32_t>(m_window)));
    } else if (member::is(name, "KeepInVisible")) {
        if (call.argCount() >= 1)
            m_app.frame().keepInvisible = call.arg(0).toBool();
        else
            call.setResult(Variant::fromBool(m_app.frame().keepInvisible));
    } else {
        return DISP_E_MEMBERNOTFOUND;
    }
    return S_OK;
}

ApplicationObject::ApplicationObject(CadApplication &app, DocumentObjects &documents, WindowService &windows,
                                     RunService &runs, ProcessInfo process, bool refuseExit)
    : m_app(app),
      m_documents(documents),
      m_windows(windows),
      m_runs(runs),
      m_process(std::move(process)),
      m_refuseExit(refuseExit),
      m_frame(std::make_shared<FrameObject>(app, m_process.mainWindow))
{
}

int ApplicationObject::revisionMajor(const QString &revision)
{
    static const QRegularExpression leading(QStringLiteral("^\\s*(\\d+)"));
    const QRegularExpressionMatch match = leading.match(revision);
    return match.hasMatch() ? match.captured(1).toInt() : 0;
}

HRESULT ApplicationObject::invoke(const QString &name, AutomationCall &call)
{
    bool handled = false;
    const HRESULT hr = preference(name, call, handled);
    if (handled)
        return hr;

    if (member::is(name, "RevisionNumber")) {
        call.setResult(Variant::fromBStr(m_app.revisionNumber()));
    } else if (member::is(name, "Visible")) {
        if (call.argCount() >= 1) {
            const bool visible = call.arg(0).toBool();
            m_app.setVisible(visible);
            m_windows.showWindow(m_process.mainWindow, visible ? winmsg::SwShow : winmsg::SwHide);
        } else {
            call.setResult(Variant::fromBool(m_app.isVisible()));
        }
    } else if (member::is(name, "BackgroundMode")) {
        if (call.argCount() >= 1)
            m_backgroundMode = call.arg(0).toBool();
        else
            call.setResult(Variant::fromBool(m_backgroundMode));
    } else if (member::is(name, "UserControl")) {
        if (call.argCount() >= 1)
            m_userControl = call.arg(0).toBool();
        else
            call.setResult(Variant::fromBool(m_userControl));
    } else if (member::is(name, "Frame")) {
        call.setResult(AutomationValue::fromObject(m_frame));
    } else if (member::is(name, "StartSwitch")) {
        call.setResult(Variant::fromBStr(m_process.startSwitch));
    } else if (member::is(name, "StartShowCommand")) {
        call.setResult(Variant::fromI4(m_process.startShowCommand));
    } else if (member::is(name, "GetProcessID")) {
        call.setResult(Variant::fromI4(static_cast<std::int32_t>(m_process.processId)));
    } else if (member::is(name, "GetFirstDocument")) {
        const auto &documents = m_app.documents();
        call.setResult(documents.empty() ? AutomationValue::nothing()
                                         : AutomationValue::fromObject(m_documents.forDocument(*documents.front())));
    } else if (member::is(name, "ActiveDoc")) {
        const auto active = m_app.activeDocument();
        call.setResult(active ? AutomationValue::fromObject(m_documents.forDocument(*active))
                              : AutomationValue::nothing());
    } else if (member::is(name, "GetDocumentCount")) {
        call.setResult(Variant::fromI4(static_cast<std::int32_t>(m_app.documents().size())));
    } else if (member::is(name, "CloseAllDocuments")) {
        member::requireArgs(call, 1);
        m_app.closeAllDocuments(call.arg(0).toBool());
        call.setResult(Variant::fromBool(true));
    } else if (member::is(name, "ExitApp")) {
        if (!m_refuseExit && m_exit)
            QMetaObject::invokeMethod(&call.server(), m_exit, Qt::QueuedConnection); // after the reply
    } else if (member::is(name, "RunMacro")) {
        return runMacro(call, false);
    } else if (member::is(name, "RunMacro2")) {
        if (revisionMajor(m_app.revisionNumber()) < kFirstRevisionWithRunErrorCode)
            return DISP_E_MEMBERNOTFOUND;
        return runMacro(call, true);
    } else {
        return DISP_E_MEMBERNOTFOUND;
    }
    return S_OK;
}

HRESULT ApplicationObject::preference(const QString &name, AutomationCall &call, bool &handled)
{
    handled = true;
    Preferences &preferences = m_app.preferences();
    if (member::is(name, "SetUserPreferenceToggle")) {
        member::requireArgs(call, 2);
        preferences.setToggle(call.arg(0).toI4(), call.arg(1).toBool());
        call.setResult(Variant::fromBool(true));
    } else if (member::is(name, "GetUserPreferenceToggle")) {
        member::requireArgs(call, 1);
        call.setResult(Variant::fromBool(preferences.toggle(call.arg(0).toI4())));
    } else if (member::is(name, "SetUserPreferenceIntegerValue")) {
        member::requireArgs(call, 2);
        preferences.setInteger(call.arg(0).toI4(), call.arg(1).toI4());
        call.setResult(Variant::fromBool(true));
    } else if (member::is(name, "GetUserPreferenceIntegerValue")) {
        member::requireArgs(call, 1);
        call.setResult(Variant::fromI4(preferences.integer(call.arg(0).toI4())));
    } else if (member::is(name, "SetUserPreferenceDoubleValue")) {
        member::requireArgs(call, 2);
        preferences.setReal(call.arg(0).toI4(), call.arg(1).toR8());
        call.setResult(Variant::fromBool(true));
    } else if (member::is(name, "GetUserPreferenceDoubleValue")) {
        member::requireArgs(call, 1);
        call.setResult(Variant::fromR8(preferences.real(call.arg(0).toI4())));
    } else if (member::is(name, "SetUserPreferenceStringListValue")) {
        member::requireArgs(call, 2);
        preferences.setStringList(call.arg(0).toI4(), toStringList(call.arg(1)));
        call.setResult(Variant::fromBool(true));
    } else if (member::is(name, "GetUserPreferenceStringListValue")) {
        member::requireArgs(call, 1);
        call.setResult(Variant::fromBStr(preferences.stringList(call.arg(0).toI4()).join(QLatin1Char('\n'))));
    } else {
        handled = false;
    }
    return S_OK;
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
