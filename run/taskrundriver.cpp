#include "run/taskrundriver.h"

#include "settings/tasksettings.h"
#include "host/hostcall.h"
#include "host/hosterror.h"
#include "host/idoxtask.h"
#include "host/idoxvault.h"
#include "platform/clock.h"
#include "run/filerecordbuilder.h"
#include "run/taskrunrecord.h"
#include "run/vaulthandover.h"

namespace {

constexpr std::int32_t TaskTypeConvert = 1;
constexpr std::int32_t TaskTypePrint = 2;
constexpr std::int32_t TaskTypeScript = 3;

// The cancel that travels out of the file loop as an error with code 1.
[[noreturn]] void raiseCancel()
{
    throw HostError(S_FALSE, QStringLiteral("cancel requested"));
}

} // namespace

TaskRunDriver::TaskRunDriver(std::shared_ptr<TaskRunRecord> record, std::shared_ptr<CadConnection> cad, TextLookup text,
                             VaultDateStyleLookup dateStyle)
    : m_record(std::move(record)), m_cad(std::move(cad)), m_text(std::move(text)), m_builder(std::move(dateStyle))
{
}

QString TaskRunDriver::text(std::int32_t number, const char *english) const
{
    const QString fallback = QString::fromLatin1(english);
    return m_text ? m_text(number, fallback) : fallback;
}

HRESULT TaskRunDriver::Run(const std::shared_ptr<IDoxVault> &vault, const std::shared_ptr<IDoxTaskInstance> &instance,
                           DoxCmd &cmd, const DoxCmdDataArray &data)
{
    m_selected.clear();
    m_failureText.clear();
    // An earlier run's files must never be reported for this one, even when
    // the first read of a setting fails.
    m_record->reset();
    const HRESULT hr = hostCall([&] { return runFiles(vault, instance, cmd, data); });
    if (hr == S_FALSE)
        cmd.cancel = -1;
    return hr;
}

void TaskRunDriver::checkSuspendAndCancel(IDoxTaskInstance &instance) const
{
    std::int32_t status = 0;
    throwIfFailed(instance.GetStatus(status));
    if (status == TaskStatus_CancelRequested)
        raiseCancel();
    if (status != TaskStatus_SuspendRequested)
        return;
    throwIfFailed(instance.SetStatus(TaskStatus_Suspended, S_OK, std::nullopt, {}, std::nullopt));
    do {
        Clock::instance().sleep(SuspendPollMs);
        throwIfFailed(instance.GetStatus(status));
    } while (status != TaskStatus_ResumeRequested && status != TaskStatus_CancelRequested);
    if (status == TaskStatus_CancelRequested)
        raiseCancel();
    throwIfFailed(instance.SetStatus(TaskStatus_Running, S_OK, std::nullopt, {}, std::nullopt));
}

void TaskRunDriver::checkOutErrorLog(IDoxVault &vault) const
{
    // The macros append to the log, so a log the vault holds must be writable.
    std::shared_ptr<IDoxFile> file;
    std::shared_ptr<IDoxFolder> folder;
    if (throwIfFailed(vault.GetFileFromPath(m_builder.GetErrorLogFile(), file, folder)) != S_OK || !file
        || file->IsLocked())
        return;
    throwIfFailed(file->LockFile(folderIdOf(*file, folder.get())));
}

void TaskRunDriver::logFailedFile(const FileRecord *file, const HostError &error) const
{
    // A macro that never ran wrote no line of its own; without this entry the
    // log that goes into the vault would not say why the run stopped.
    const QString reason = m_failureText.isEmpty() ? error.context() : m_failureText;
    const QString context = file ? file->path + QLatin1String(": ") + reason : reason;
    if (!m_builder.ReportHostError(error.code(), context)) {
        // A code the vault cannot name (a CAD or system code) is logged by number.
        m_builder.AppendErrorLog(QStringLiteral("An error occured: ") + context + QLatin1String("\n\t0x")
                                 + QString::number(static_cast<quint32>(error.code()), 16).toUpper());
    }
}

void TaskRunDriver::logUnprocessedFiles(std::size_t firstUnprocessed, const FileRecord &failed) const
{
    // The loop ends at the first failed file; every file after it is named,
    // so that the log accounts for each selected file. An entry ends without
    // a line break, so each one starts on a line of its own.
    for (std::size_t i = firstUnprocessed; i < m_selected.size(); ++i)
        m_builder.AppendErrorLog(QStringLiteral("\nAn error occured: ") + m_selected[i]->path
                                 + QStringLiteral(": Not processed: the run stopped at the error on ") + failed.path
                                 + QLatin1Char('.'));
}

HRESULT TaskRunDriver::runFiles(const std::shared_ptr<IDoxVault> &vault,
                                const std::shared_ptr<IDoxTaskInstance> &instance, DoxCmd &cmd,
                                const DoxCmdDataArray &data)
{
    if (!instance)
        return E_POINTER;
    IDoxTaskInstance &task = *instance;
    m_taskType = getIntVariable(task, TaskKeys::Type, TaskTypeScript);
    const bool replaceOutput = getBoolVariable(task, TaskKeys::ReplaceOutput, false);
    throwIfFailed(m_record->start(vault, m_taskType, replaceOutput));

    Variant script;
    if (throwIfFailed(task.GetVariable(TaskKeys::Script, script)) == S_FALSE)
        return E_UNEXPECTED;
    const std::int32_t version = getIntVariable(task, TaskKeys::McVersion, 0);

    m_cad->Init(m_record, m_taskType, instance, version);
    m_builder.Prepare(vault, instance, script.toText());

    checkSuspendAndCancel(task);
    for (FileRecord &record : buildFileRecords(vault.get(), &task, data, true))
        m_selected.push_back(std::make_shared<FileRecord>(std::move(record)));
    if (m_selected.empty())
        return S_FALSE;

    if (vault)
        checkOutErrorLog(*vault);

    if (const HRESULT started = m_cad->Start(); failed(started)) {
        if (const HRESULT retried = m_cad->RetryStart(started); failed(retried)) {
            m_failureText = m_cad->lastError();
            return retried;
        }
    }

    const auto steps = static_cast<std::int32_t>(m_selected.size()) + (m_taskType == TaskTypePrint ? 0 : 1);
    HRESULT result = S_OK;
    bool cancelled = false;
    std::shared_ptr<FileRecord> current;
    std::size_t reached = 0;
    try {
        for (std::size_t i = 0; i < m_selected.size(); ++i) {
            const std::shared_ptr<FileRecord> &file = m_selected[i];
            current = file;
            reached = i;
            checkSuspendAndCancel(task);
            if (i == 0)
                throwIfFailed(task.SetProgressRange(steps, 0, file->path));
            else
                throwIfFailed(task.SetProgressPos(static_cast<std::int32_t>(i), file->path));
            m_builder.SetFile(file->path, file->sourceConf, file->docId, file->projId, file->effectiveVersion());
            m_record->setCurrentSource(file);
            m_cad->RunMacro(m_builder.BuildFileMacro());
            m_cad->AfterFile();
        }
    } catch (const HostError &e) {
        result = e.code();
        m_failureText = m_cad->lastError();
        cancelled = result == S_FALSE;
        if (cancelled)
            cmd.cancel = -1;
        else if (failed(result)) {
            logFailedFile(current.get(), e);
            if (current)
                logUnprocessedFiles(reached + 1, *current);
        }
    } catch (const std::bad_alloc &) {
        result = E_OUTOFMEMORY;
        if (current)
            logUnprocessedFiles(reached, *current);
    } catch (...) {
        // No error code: the loop ends and the result stays as it was.
    }
    m_record->setCurrentSource(nullptr);

    result = combineResult(result, m_cad->Close(true, S_OK));
    if (m_taskType == TaskTypeConvert || m_taskType == TaskTypePrint)
        result = combineResult(result, m_record->storeOutputList(task));
    if (steps > 1 && m_taskType != TaskTypePrint)
        task.SetProgressPos(steps - 1, text(AddingFilesText, "Adding files to vault..."));

    VaultHandOver handOver(vault, task, *m_record,
                           [this](HRESULT code, const QString &context) { m_builder.ReportHostError(code, context); });
    result = combineResult(result, handOver.addOutputs());
    // Without a log file the step answers 1, which is no news for the run.
    if (const HRESULT logged = handOver.putErrorLog(m_builder.GetErrorLogFile()); logged != S_FALSE)
        result = combineResult(result, logged);
    result = combineResult(result, task.SetProgressPos(steps, QString()));
    // A cancel stays the run's answer unless a later step failed.
    return cancelled && !failed(result) ? S_FALSE : result;
}

std::vector<AffectedObject> TaskRunDriver::affectedObjects(std::int32_t status) const
{
    std::vector<AffectedObject> affected;
    const std::shared_ptr<IDoxVault> &vault = m_record->vault();
    if (!vault)
        return affected;
    for (const FileRecord &record : m_record->records()) {
        if (record.isPrintEntry || !m_record->isInVaultTree(record.path)
            || (record.isErrorLog && status != TaskStatus_FinishedWithError) || !TaskRunRecord::fileExists(record.path))
            continue;
        std::shared_ptr<IDoxFile> file;
        std::shared_ptr<IDoxFolder> folder;
        if (throwIfFailed(vault->GetFileFromPath(record.path, file, folder)) != S_OK || !file)
            continue;
        affected.push_back({file->GetID(), DoxObject_File, folderIdOf(*file, folder.get()), file->GetCurrentVersion()});
    }
    return affected;
}

HRESULT TaskRunDriver::Finish(IDoxTaskInstance &instance, HRESULT runResult)
{
    return hostCall([&] {
        std::int32_t status = 0;
        throwIfFailed(instance.GetStatus(status));
        if (status == TaskStatus_CancelRequested)
            return S_FALSE;

        std::int32_t newStatus = runResult != S_OK ? TaskStatus_FinishedWithError : TaskStatus_FinishedOk;
        QString message;
        if (runResult != S_OK && !m_selected.empty()) {
            // Closing the application may have replaced the text of the failure.
            message = m_cad->lastError();
            if (message.isEmpty())
                message = m_failureText;
            message.remove(QLatin1String(" 0"));
        } else if (runResult != S_OK) {
            message = text(NoFileSelectedText, "No file selected.");
        } else if (m_record->hasErrors()) {
            newStatus = TaskStatus_FinishedWithError;
            message = text(FinishedWithErrorsText,
                           "Task finished with errors. Please see the log-file for more details.");
        }

        std::vector<AffectedObject> affected = affectedObjects(newStatus);
        if (newStatus == TaskStatus_FinishedOk && m_taskType == TaskTypeConvert
            && m_record->countOutputs(false, true) == 0) {
            newStatus = TaskStatus_FinishedWithError;
            message = text(NoFileConvertedText, "No file converted.");
        }
        for (const auto &file : m_selected)
            affected.push_back({file->docId, DoxObject_File, file->projId, file->effectiveVersion()});

        const std::optional<QString> shown = message.isEmpty() ? std::nullopt : std::optional<QString>(message);
        throwIfFailed(instance.SetStatus(newStatus, runResult, shown, affected, std::nullopt));
        return runResult;
    });
}
