#pragma once

#include "cad/dialogwatcher.h"
#include "cad/mecadraprocesses.h"
#include "macro/outputnames.h"
#include "platform/registrystore.h"
#include "run/cadconnection.h"

#include <QMap>
#include <QString>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

class CMcDocument;

// The waits of the connection. The defaults are the product's; tests and
// tools that start a local stand-in may poll faster.
struct McTiming {
    qint64 pollIntervalMs = 1000; // object table polls and exit checks
    int startPolls = 120;
    int closeWaits = 11;
    int killWaits = 46;
    qint64 watcherIntervalMs = 1000;
    int watcherPasses = 1800;
};

// The CAD connection of one task run: finds the wanted Mecadra installation,
// starts it hidden, keeps it healthy across files, runs each file's macro in
// it while the dialog watcher answers stray windows, records what it saves
// and prints through the document and view sinks, and closes it.
class McManager final : public CadConnection, public StartupAddIns, private AutomationEventSink
{
public:
    static constexpr int ExitCodeKilled = 255;
    static constexpr quint64 MemoryLimitBytes = 268435456; // 256 MiB
    static constexpr int FilesPerStart = 100;
    static constexpr std::uint32_t DefaultMacroTimeoutSeconds = 1800;

    explicit McManager(std::shared_ptr<MecadraProcesses> processes = std::make_shared<LaunchedMecadraProcesses>(),
                       RegistryStore &store = RegistryStore::instance());
    ~McManager() override;
    McManager(const McManager &) = delete;
    McManager &operator=(const McManager &) = delete;

    // CadConnection
    void Init(std::shared_ptr<TaskRunRecord> selectionList, std::int32_t taskType,
              std::shared_ptr<IDoxTaskInstance> taskInstance, std::int32_t versionYear) override;
    HRESULT Start() override;
    HRESULT RetryStart(HRESULT previousError) override;
    void RunMacro(const QString &macroText) override;
    void AfterFile() override;
    HRESULT Close(bool force, HRESULT previousError) override;
    QString lastError() const override { return m_lastError; }

    // StartupAddIns
    void SuspendStartupAddIns(bool restore) override;

    // The command line that starts the class's server, with its switch.
    QString GetExecutablePath(const QString &classId);

    void setTiming(const McTiming &timing) { m_timing = timing; }
    // Whether registry reads follow the 32-bit-on-64-bit rule (the process's
    // own bitness unless set).
    void setWow64(bool wow64) { m_wow64 = wow64; }

    // State, for the run driver's report and for tests.
    std::int32_t versionYear() const { return m_versionYear; }
    qint64 processId() const { return m_processId; }
    bool isConnected() const { return m_app != nullptr; }
    bool regressionStart() const { return m_regressionStart; }
    bool forceRegression() const { return m_forceRegression; }
    std::int32_t filesSinceStart() const { return m_filesSinceStart; }
    std::int32_t restartCount() const { return m_restartCount; }
    void setRestartCount(std::int32_t count) { m_restartCount = count; }
    quint64 baselineWorkingSet() const { return m_baselineWorkingSet; }
    std::int16_t revisionMajor() const { return m_revisionMajor; }
    std::size_t documentSinkCount() const { return m_documents.size(); }
    // Restarts since construction (start after a close within the manager).
    int restarts() const { return m_restarts; }
    // The startup add-in values remembered by the last suspension.
    const QMap<QString, QString> &suspendedAddIns() const { return m_suspendedAddIns; }
    // The folder of the machine-wide lock around the start-up add-in switch.
    void setLockFolder(const QString &folder) { m_lockFolder = folder; }

    // What the document sinks need of the manager.
    McAutomation *automation() const { return m_app.get(); }
    void countSavedFile() { ++m_filesSinceStart; }
    void removeDocumentSink(ObjectHandle document);

private:
    HRESULT onEvent(const AutomationEvent &event) override;
    void AttachDocumentSinks();
    void disconnectSinks();

    HRESULT hideApplication();
    HRESULT restart(HRESULT previousError);
    int healthCheck();
    std::optional<QString> setupFolder(std::optional<std::uint32_t> *officeInstalled);
    bool regressionForced() const;

    void StartWatcher();
    void StopWatcher();

    // One run call on the ".mcb" file: its result, success flag and error code.
    struct RunOutcome {
        HRESULT hr = S_OK;
        bool flag = false;
        std::int32_t errorCode = 0;
        bool timedOut = false;
    };
    RunOutcome callRun(const QString &macroFile, std::uint32_t timeoutSeconds);
    std::uint32_t macroTimeoutSeconds() const;

    std::shared_ptr<MecadraProcesses> m_processes;
    RegistryStore &m_store;
    McTiming m_timing;
    bool m_wow64;

    // The fields of the connection, in the order the product keeps them.
    bool m_regressionStart = false;
    bool m_measureBaseline = false;
    std::shared_ptr<TaskRunRecord> m_selectionList;
    std::unique_ptr<McAutomation> m_app;
    std::int16_t m_revisionMajor = 0;
    QString m_lastError;
    qint64 m_processId = 0;
    std::int32_t m_versionYear = 0;
    std::int32_t m_filesSinceStart = 0;
    quint64 m_baselineWorkingSet = 0;
    DialogWatcher m_watcher;
    std::int32_t m_taskType = 3;
    std::int32_t m_restartCount = 0;
    bool m_forceRegression = false;

    std::optional<OutputLabels> m_labels; // conversion runs
    ObjectHandle m_applicationHandle = 0;
    std::map<ObjectHandle, std::unique_ptr<CMcDocument>> m_documents;
    QMap<QString, QString> m_suspendedAddIns;
    QString m_suspensionHolder; // this run's name among the suspension's holders
    QString m_lockFolder;
    int m_restarts = 0;
};
