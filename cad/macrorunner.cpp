// McManager's macro runner and the start-up add-in switch.

#include "cad/cadtexts.h"
#include "cad/macrofile.h"
#include "cad/mcmanager.h"
#include "common/settingslight.h"
#include "host/hosterror.h"
#include "platform/automation/automationerrors.h"
#include "base/codepage.h"
#include "platform/drivemap.h"
#include "platform/filesystem.h"
#include "platform/automation/processes.h"
#include "platform/ipc/namedmutex.h"
#include "platform/registry.h"

#include <QCoreApplication>

#include <QDir>

#include <algorithm>
#include <atomic>

namespace {

inline constexpr HRESULT HRESULT_ERROR_TIMEOUT = makeHresult(0x800705B4u); // HRESULT_FROM_WIN32(ERROR_TIMEOUT)

const QString kModule = QStringLiteral("McMacro1");
const QString kProcedure = QStringLiteral("main");
constexpr int kFirstRevisionWithErrorCode = 17;

// Where the suspended add-ins' values and the runs holding the suspension
// are kept for the whole machine.
QString startupAddInsSavedKey()
{
    return QString::fromUtf16(kAddInUserKey) + QStringLiteral("\\SuspendedStartupAddIns");
}

const QStringList &startupAddInKeys()
{
    static const QStringList keys = {QStringLiteral("Software\\Mecadra\\AddInsStartup"),
                                     QStringLiteral("Software\\Mecadra\\Startup\\Applications")};
    return keys;
}

} // namespace

std::uint32_t McManager::macroTimeoutSeconds() const
{
    Registry settings(m_store);
    if (!settings.open(RegistryRoot::CurrentUser, QString::fromUtf16(kAddInUserKey)))
        return DefaultMacroTimeoutSeconds;
    return settings.readDword(QStringLiteral("MacroTimeout")).value_or(DefaultMacroTimeoutSeconds);
}

McManager::RunOutcome McManager::callRun(const QString &macroFile, std::uint32_t timeoutSeconds)
{
    RunOutcome outcome;
    if (!m_app) {
        outcome.hr = E_UNEXPECTED;
        return outcome;
    }
    const int timeoutMs = timeoutSeconds == 0 ? AutomationClient::kNoTimeout
                                              : static_cast<int>(std::min<std::uint32_t>(timeoutSeconds, 2000000) * 1000);
    AutomationArgs args{Variant::fromBStr(macroFile), Variant::fromBStr(kModule), Variant::fromBStr(kProcedure)};
    const bool withErrorCode = m_revisionMajor >= kFirstRevisionWithErrorCode;
    if (withErrorCode) {
        args.push_back(Variant::fromI4(0));
        args.push_back(Variant::fromI4(0));
    }
    try {
        const AutomationReply reply = m_app->call(QStringLiteral("Application"),
                                                  withErrorCode ? QStringLiteral("RunMacro2") : QStringLiteral("RunMacro"),
                                                  std::move(args), timeoutMs);
        outcome.hr = reply.hr;
        if (reply.hr == RPC_E_TIMEOUT) {
            // A hung macro: the run thread ends Mecadra; the restart rules follow.
            m_processes->terminate(m_processId, ExitCodeKilled);
            outcome.hr = HRESULT_ERROR_TIMEOUT;
            outcome.timedOut = true;
        } else if (reply.ok()) {
            outcome.flag = reply.value.toBool();
            if (withErrorCode && reply.out.size() > 4)
                outcome.errorCode = reply.out.at(4).toI4();
        }
    } catch (const std::exception &) {
        outcome.hr = E_UNEXPECTED;
    }
    return outcome;
}

void McManager::RunMacro(const QString &macroText)
{
    FileSystem &fs = FileSystem::instance();
    const std::optional<MacroFile> file = MacroFile::create(QDir::tempPath(), encodeWindows1252(macroText));
    if (!file) {
        // The run driver reports the connection's text; no macro ran.
        m_lastError = CadTexts::FailedToRunMacro.translated();
        throw HostError(E_ACCESSDENIED, m_lastError);
    }
    const QString &macroFile = file->path();

    const std::uint32_t timeoutSeconds = macroTimeoutSeconds();
    int attempts = std::max(0, 3 - m_restartCount / 3);
    bool dialogAttemptGranted = false;
    RunOutcome outcome;
    for (;;) {
        StartWatcher();
        outcome = callRun(macroFile, timeoutSeconds);
        StopWatcher();
        if (m_watcher.dialogDismissed()) {
            outcome.hr = E_FAIL;
            outcome.timedOut = false;
            // The extra attempt a dismissed dialog earns is granted once per
            // macro; a dialog at every attempt would otherwise never end.
            if (!dialogAttemptGranted) {
                attempts = 2;
                dialogAttemptGranted = true;
            }
        }
        if (succeeded(outcome.hr) || attempts <= 1) {
            m_restartCount = 0;
            break;
        }
        const HRESULT restarted = restart(outcome.hr);
        if (failed(restarted)) {
            // A macro ended by the time limit stays the reason.
            outcome = RunOutcome{restarted, false, 0, outcome.timedOut};
            break;
        }
        if (--attempts <= 0)
            break;
    }

    Registry settings(m_store);
    if (settings.open(RegistryRoot::CurrentUser, QString::fromUtf16(kAddInUserKey))) {
        const std::optional<QString> copyPath = settings.readString(QStringLiteral("ScriptCopyPath"));
        if (copyPath && !copyPath->isEmpty()) {
            const QString target = DriveMap::instance().toNativeOrSelf(expandEnvironmentStrings(*copyPath));
            if (const std::optional<QByteArray> text = fs.read(macroFile)) {
                fs.setWritable(target, true);
                fs.write(target, *text);
            }
        }
    }
    file->remove();

    if (succeeded(outcome.hr) && outcome.flag)
        return;
    m_lastError = CadTexts::FailedToRunMacro.translated();
    const QString reasonLead = QLatin1Char(' ') + CadTexts::Reason.translated() + QLatin1Char(' ');
    if (outcome.timedOut) {
        m_lastError += reasonLead + CadTexts::MacroTimedOut.translated().arg(timeoutSeconds);
    } else if (outcome.errorCode != 0) {
        if (const CadTexts::Text *reason = CadTexts::macroErrorReason(outcome.errorCode))
            m_lastError += reasonLead + reason->translated();
    }
    throw HostError(failed(outcome.hr) ? outcome.hr : E_FAIL, m_lastError);
}

void McManager::SuspendStartupAddIns(bool restore)
{
    // Several runs of this machine (workers of a host, hosts, a task run by
    // hand) overlap. The first to start switches the add-ins off and keeps
    // their values in the registry; the last to end puts them back. A run
    // whose process died no longer counts, and the values it kept survive it,
    // so the next run to end restores them instead of saving the "off".
    NamedMutex mutex(QStringLiteral("McTaskAddIn.StartupAddIns"), m_lockFolder);
    mutex.lock();
    Registry holders(m_store);
    Registry saved(m_store);
    if (!saved.create(RegistryRoot::CurrentUser, startupAddInsSavedKey())
        || !holders.create(RegistryRoot::CurrentUser, startupAddInsSavedKey() + QStringLiteral("\\Holders")))
        return;
    SystemProcesses processes;
    for (const QString &holder : holders.valueNames()) {
        const qint64 pid = holder.section(QLatin1Char(':'), 0, 0).toLongLong();
        if (pid <= 0 || !processes.isRunning(pid))
            holders.deleteValue(holder);
    }

    if (restore) {
        if (!m_suspensionHolder.isEmpty())
            holders.deleteValue(m_suspensionHolder);
        m_suspensionHolder.clear();
        if (!holders.valueNames().isEmpty())
            return;
        for (const QString &path : saved.valueNames()) {
            const QString value = saved.readString(path).value_or(QString());
            saved.deleteValue(path);
            Registry key(m_store);
            if (!key.open(RegistryRoot::CurrentUser, path, RegistryReadWrite))
                continue;
            if (value.compare(QLatin1String("1"), Qt::CaseInsensitive) == 0)
                key.writeDword(QString(), 1);
            else
                key.writeString(QString(), value);
        }
        return;
    }

    m_suspendedAddIns.clear();
    for (const QString &parentPath : startupAddInKeys()) {
        Registry parent(m_store);
        if (!parent.open(RegistryRoot::CurrentUser, parentPath))
            continue;
        for (const QString &name : parent.subKeys()) {
            if (name.size() > 260)
                continue;
            Registry key = parent.openSubKey(name, RegistryReadWrite);
            if (!key.isOpen())
                continue;
            const QString path = parentPath + QLatin1Char('\\') + name;
            const std::optional<RegistryValue> value = key.value(QString());
            if (!value)
                continue;
            if (value->type == RegistryValueType::Dword && value->dword == 1) {
                m_suspendedAddIns.insert(path, QStringLiteral("1"));
                key.writeDword(QString(), 0);
            } else if (value->type != RegistryValueType::Dword && !value->text.isEmpty()) {
                m_suspendedAddIns.insert(path, value->text);
                key.writeString(QString(), QString());
            }
        }
    }
    // A value kept by an earlier run is the original; the key is "off" now.
    for (auto it = m_suspendedAddIns.cbegin(); it != m_suspendedAddIns.cend(); ++it)
        if (!saved.readString(it.key()))
            saved.writeString(it.key(), it.value());
    static std::atomic<int> sequence{0};
    m_suspensionHolder = QStringLiteral("%1:%2").arg(QCoreApplication::applicationPid()).arg(++sequence);
    holders.writeDword(m_suspensionHolder, 1);
}
