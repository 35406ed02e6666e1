#include "cad/mcmanager.h"

#include "cad/cadtexts.h"
#include "cad/mcdocument.h"
#include "cad/mecadraversion.h"
#include "common/settingslight.h"
#include "host/hosterror.h"
#include "host/idoxtask.h"
#include "platform/automation/automationerrors.h"
#include "platform/automation/classregistry.h"
#include "platform/automation/windowmessages.h"
#include "platform/ipc/ipcnames.h"
#include "platform/processbitness.h"
#include "platform/registry.h"

#include <QRegularExpression>

namespace {

inline constexpr HRESULT CO_E_CLASSSTRING = makeHresult(0x800401F3u);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = makeHresult(0x80040154u);

// Mecadra's preference ids for an unattended session.
constexpr int kPrefNoInteraction1 = 290;
constexpr int kPrefNoInteraction2 = 291;
constexpr int kPrefIntegerZero = 253;
constexpr int kPrefMainFrameToggle = 30;


const QString kApp = QStringLiteral("Application");

QString format(const CadTexts::Text &text, int value) { return text.translated().arg(value); }

std::int16_t leadingNumber(const QString &text)
{
    static const QRegularExpression leading(QStringLiteral("^\\s*(\\d+)"));
    const QRegularExpressionMatch match = leading.match(text);
    return match.hasMatch() ? static_cast<std::int16_t>(match.captured(1).toInt()) : 0;
}

// A sequence of calls where the first failure ends the sequence and wins.
class CallChain final
{
public:
    explicit CallChain(McAutomation &app) : m_app(app) {}

    AutomationValue call(const ObjectRef &object, const QString &member, AutomationArgs args = {})
    {
        if (failed(m_hr))
            return {};
        const AutomationReply reply = m_app.call(object, member, std::move(args));
        m_hr = reply.hr;
        return reply.value;
    }
    HRESULT result() const { return m_hr; }

private:
    McAutomation &m_app;
    HRESULT m_hr = S_OK;
};

} // namespace

McManager::McManager(std::shared_ptr<MecadraProcesses> processes, RegistryStore &store)
    : m_processes(std::move(processes)),
      m_store(store),
      m_wow64(isWow64Process()),
      m_watcher([processes = m_processes] { return processes->openWindows(); }),
      m_lockFolder(IpcNames::defaultFolder())
{
}

McManager::~McManager()
{
    m_watcher.stop();
    disconnectSinks();
}

void McManager::Init(std::shared_ptr<TaskRunRecord> selectionList, std::int32_t taskType,
                     std::shared_ptr<IDoxTaskInstance> taskInstance, std::int32_t versionYear)
{
    m_selectionList = std::move(selectionList);
    m_taskType = taskType;
    m_versionYear = versionYear;
    m_labels.reset();
    if (taskType == 1 && taskInstance)
        m_labels = OutputLabels::read(*taskInstance);
}

// --- locating ---------------------------------------------------------------

std::optional<QString> McManager::setupFolder(std::optional<std::uint32_t> *officeInstalled)
{
    const QString key = MecadraVersion::setupKey(m_versionYear);
    const std::vector<RegistryView> views =
        m_wow64 ? std::vector<RegistryView>{RegistryView::View64, RegistryView::View32}
                : std::vector<RegistryView>{RegistryView::Native};
    for (RegistryView view : views) {
        Registry setup(m_store);
        if (!setup.open(RegistryRoot::LocalMachine, key, RegistryRead, view))
            continue;
        std::optional<QString> folder = setup.readString(MecadraVersion::FolderValue);
        if (!folder || folder->isEmpty())
            folder = setup.readString(MecadraVersion::LocationValue);
        if (!folder || folder->isEmpty())
            continue;
        if (officeInstalled)
            *officeInstalled = setup.readDword(MecadraVersion::OfficeInstalledValue);
        return folder;
    }
    return std::nullopt;
}

bool McManager::regressionForced() const
{
    Registry settings(m_store);
    if (!settings.open(RegistryRoot::CurrentUser, QString::fromUtf16(kAddInUserKey)))
        return false;
    return settings.readDword(QStringLiteral("ForceRegressionMode")).value_or(0) != 0;
}

QString McManager::GetExecutablePath(const QString &classId)
{
    QString path;
    std::optional<std::uint32_t> office;
    if (m_versionYear != 0) {
        if (std::optional<QString> folder = setupFolder(&office)) {
            QString trimmed = *folder;
            while (trimmed.endsWith(QLatin1Char('\\')))
                trimmed.chop(1);
            path = trimmed + QLatin1Char('\\') + MecadraVersion::ExecutableName;
        }
    }
    if (path.isEmpty()) {
        path = ClassRegistry::classValue(classId, QStringLiteral("LocalServer32"), m_store).value_or(QString());
        const QString progId = ClassRegistry::classValue(classId, QStringLiteral("ProgID"), m_store).value_or(QString());
        if (const std::optional<int> year = MecadraVersion::yearOfProgId(progId))
            m_versionYear = *year;
        // The edition of the version the class names.
        if (m_versionYear != 0)
            setupFolder(&office);
    }
    if (path.isEmpty())
        return path;
    // Missing counts as -1: not the Office edition.
    const std::int64_t edition = office ? static_cast<std::int32_t>(*office) : -1;
    m_regressionStart = edition < 1 || m_forceRegression || regressionForced();
    return path + (m_regressionStart ? QStringLiteral(" /R") : QStringLiteral(" /B"));
}

// --- starting ---------------------------------------------------------------

HRESULT McManager::Start()
{
    disconnectSinks();
    m_app.reset();
    m_applicationHandle = 0;

    const QString progId = m_versionYear == 0 ? MecadraVersion::ProgId : MecadraVersion::versionedProgId(m_versionYear);
    std::optional<QString> classId = ClassRegistry::classIdFromProgId(progId, m_store);
    if (!classId && m_versionYear != 0) {
        classId = ClassRegistry::classIdFromProgId(MecadraVersion::ProgId, m_store);
        if (classId)
            m_versionYear = 0;
    }
    if (!classId) {
        m_lastError = format(CadTexts::NotInstalled, m_versionYear);
        return CO_E_CLASSSTRING;
    }

    // The watcher answers what the process shows while it starts; it looks
    // for the windows of the new process, so it begins once the id is known.
    const std::optional<qint64> pid = m_processes->start(GetExecutablePath(*classId));
    MecadraProcesses::Attachment attachment;
    if (pid) {
        m_processId = *pid;
        StartWatcher();
        attachment = m_processes->waitForApplication(*pid, m_timing.startPolls, m_timing.pollIntervalMs);
        if (!attachment.appeared)
            m_processes->terminate(*pid, ExitCodeKilled);
        StopWatcher();
    }
    if (!pid || !attachment.appeared) {
        m_lastError = format(CadTexts::FailedToStart, m_versionYear);
        return E_FAIL;
    }
    if (!attachment.app) {
        // The process registered something that is not a usable application
        // object; it stays for Close to end.
        const HRESULT hr = failed(attachment.hr) ? attachment.hr : E_NOINTERFACE;
        m_lastError = hr == REGDB_E_CLASSNOTREG ? format(CadTexts::NotInstalled, m_versionYear)
                                                : format(CadTexts::FailedToStart, m_versionYear);
        return hr;
    }
    m_app = std::move(attachment.app);

    const AutomationReply revision = m_app->call(kApp, QStringLiteral("RevisionNumber"));
    if (!revision.ok()) {
        m_lastError = CadTexts::NoRevision.translated();
        return revision.hr;
    }
    m_revisionMajor = leadingNumber(revision.value.toText());

    m_app->call(kApp, QStringLiteral("SetUserPreferenceToggle"), {Variant::fromI4(kPrefNoInteraction1), Variant::fromBool(true)});
    m_app->call(kApp, QStringLiteral("SetUserPreferenceToggle"), {Variant::fromI4(kPrefNoInteraction2), Variant::fromBool(true)});
    m_app->call(kApp, QStringLiteral("SetUserPreferenceIntegerValue"), {Variant::fromI4(kPrefIntegerZero), Variant::fromI4(0)});

    m_app->setEventSink(this);
    const AutomationReply advised = m_app->call(kApp, QStringLiteral("Advise"));
    if (!advised.ok()) {
        m_lastError = CadTexts::NoEventHandlers.translated();
        return advised.hr;
    }
    m_applicationHandle = advised.value.handle();

    const HRESULT hidden = hideApplication();
    m_measureBaseline = true;
    m_filesSinceStart = 0;
    if (failed(hidden)) {
        m_lastError = CadTexts::NotInvisible.translated();
        return hidden;
    }
    m_lastError.clear();
    return S_OK;
}

HRESULT McManager::hideApplication()
{
    CallChain chain(*m_app);
    chain.call(kApp, QStringLiteral("Visible"), {Variant::fromBool(false)});
    chain.call(kApp, QStringLiteral("BackgroundMode"), {Variant::fromBool(true)});
    const AutomationValue frame = chain.call(kApp, QStringLiteral("Frame"));
    // A 64-bit build asks for the window handle that holds 64 bits.
    const AutomationValue window = chain.call(frame, QStringLiteral("GetHWndx64"));
    chain.call(QStringLiteral("Windows"), QStringLiteral("ShowWindow"), {window, Variant::fromI4(winmsg::SwMaximize)});
    chain.call(QStringLiteral("Windows"), QStringLiteral("ShowWindow"), {window, Variant::fromI4(winmsg::SwHide)});
    chain.call(kApp, QStringLiteral("SetUserPreferenceToggle"), {Variant::fromI4(kPrefMainFrameToggle), Variant::fromBool(false)});
    chain.call(kApp, QStringLiteral("UserControl"), {Variant::fromBool(false)});
    return chain.result();
}

HRESULT McManager::RetryStart(HRESULT previousError)
{
    return restart(previousError);
}

HRESULT McManager::restart(HRESULT previousError)
{
    ++m_restartCount;
    if (m_watcher.dialogDismissed()) {
        m_forceRegression = true;
        m_restartCount = 0;
    }
    ++m_restarts;
    HRESULT hr = Close(true, previousError);
    if (succeeded(hr))
        hr = Start();
    return hr;
}

// --- health -----------------------------------------------------------------

int McManager::healthCheck()
{
    const std::optional<quint64> workingSet = m_processes->workingSet(m_processId);
    if (!workingSet)
        return 3;
    if (m_measureBaseline) {
        m_baselineWorkingSet = *workingSet;
        return 0;
    }
    return *workingSet > 2 * m_baselineWorkingSet && *workingSet > MemoryLimitBytes ? 2 : 1;
}

void McManager::AfterFile()
{
    HRESULT hr = S_OK;
    if (m_filesSinceStart >= FilesPerStart || healthCheck() == 2)
        hr = restart(S_OK);
    else if (!m_app)
        hr = Start();
    ++m_filesSinceStart;
    m_measureBaseline = false;
    if (failed(hr))
        throw HostError(hr, m_lastError);
}

// --- closing ----------------------------------------------------------------

HRESULT McManager::Close(bool /*force*/, HRESULT previousError)
{
    disconnectSinks();
    m_lastError.clear();
    const bool hadApp = m_app != nullptr;
    const bool opened = m_processId != 0 && m_processes->isRunning(m_processId);

    HRESULT exitHr = S_OK;
    if (m_app && succeeded(previousError)) {
        CallChain chain(*m_app);
        chain.call(kApp, QStringLiteral("Visible"), {Variant::fromBool(false)});
        chain.call(kApp, QStringLiteral("SetUserPreferenceToggle"), {Variant::fromI4(kPrefMainFrameToggle), Variant::fromBool(true)});
        chain.call(kApp, QStringLiteral("UserControl"), {Variant::fromBool(false)});
        chain.call(kApp, QStringLiteral("CloseAllDocuments"), {Variant::fromBool(true)});
        chain.call(kApp, QStringLiteral("ExitApp"));
        exitHr = chain.result();
    }
    if (opened) {
        bool ended = m_processes->waitForExit(m_processId, m_timing.closeWaits, m_timing.pollIntervalMs);
        if (!ended) {
            m_processes->terminate(m_processId, ExitCodeKilled);
            ended = m_processes->waitForExit(m_processId, m_timing.killWaits, m_timing.pollIntervalMs);
        }
        if (!ended)
            m_lastError = CadTexts::FailedToClose.translated();
    }
    if (m_app)
        m_app->setEventSink(nullptr);
    m_app.reset();
    m_applicationHandle = 0;

    if (m_lastError.isEmpty())
        return S_OK;
    if (failed(previousError))
        return previousError;
    if (failed(exitHr))
        return exitHr;
    return hadApp ? E_FAIL : E_POINTER;
}

// --- watcher ----------------------------------------------------------------

void McManager::StartWatcher()
{
    m_watcher.setTiming(m_timing.watcherIntervalMs, m_timing.watcherPasses);
    m_watcher.start(m_processId);
}

void McManager::StopWatcher() { m_watcher.stop(); }

// --- event sinks ------------------------------------------------------------

HRESULT McManager::onEvent(const AutomationEvent &event)
{
    if (event.source == m_applicationHandle) {
        if (event.dispId == 7 || event.dispId == 12 || event.dispId == 22)
            AttachDocumentSinks();
        return S_OK;
    }
    if (auto found = m_documents.find(event.source); found != m_documents.end()) {
        if (event.dispId == 7 && !event.args.empty())
            found->second->OnFileSaved(event.args.front().toText(), false);
        else if (event.dispId == 2)
            removeDocumentSink(event.source);
        return S_OK;
    }
    if (event.dispId != 10)
        return S_OK;
    for (auto &[handle, document] : m_documents) {
        if (document->ownsView(event.source)) {
            // A print entry names the printer the document went to (the
            // details list it); the document's path when Mecadra won't say.
            AutomationReply printer = m_app->call(handle, QStringLiteral("Printer"));
            if (!printer.ok() || printer.value.toText().isEmpty())
                printer = m_app->call(handle, QStringLiteral("GetPathName"));
            document->OnFileSaved(printer.ok() ? printer.value.toText() : QString(), true);
            break;
        }
    }
    return S_OK;
}

void McManager::AttachDocumentSinks()
{
    if (!m_app)
        return;
    AutomationValue document = m_app->call(kApp, QStringLiteral("GetFirstDocument")).value;
    while (document.isObject() && !document.isNothing()) {
        const ObjectHandle handle = document.handle();
        if (!m_documents.count(handle)) {
            const std::int32_t type = m_app->call(document, QStringLiteral("GetType")).value.toI4();
            auto sink = std::make_unique<CMcDocument>(*this, handle, type, m_taskType, m_revisionMajor, m_selectionList,
                                                      m_labels ? &*m_labels : nullptr);
            // A sink that cannot be connected is dropped: its document records nothing.
            if (sink->connect())
                m_documents.emplace(handle, std::move(sink));
        }
        document = m_app->call(document, QStringLiteral("GetNext")).value;
    }
}

void McManager::removeDocumentSink(ObjectHandle document)
{
    auto found = m_documents.find(document);
    if (found == m_documents.end())
        return;
    std::unique_ptr<CMcDocument> sink = std::move(found->second);
    m_documents.erase(found);
    sink->disconnect();
}

void McManager::disconnectSinks()
{
    for (auto &[handle, document] : m_documents)
        document->disconnect();
    m_documents.clear();
    if (m_app && m_applicationHandle != 0)
        m_app->call(kApp, QStringLiteral("Unadvise"));
    m_applicationHandle = 0;
}
