#pragma once

#include "common/translator.h"
#include "host/doxcmd.h"
#include "host/hresult.h"
#include "macro/macrobuilder.h"
#include "run/cadconnection.h"
#include "run/filerecord.h"

#include <QString>
#include <functional>
#include <memory>
#include <vector>

class IDoxTaskInstance;
class IDoxVault;
class TaskRunRecord;

// Runs one task instance on the task host: reads the run settings, starts the
// CAD application once, runs the task's macro for every selected file while
// reporting progress and honouring suspend and cancel, closes the CAD
// application, stores the output list, hands the results to the vault, and
// finally reports the outcome. Host calls inside a step throw HostError;
// Run and Finish are the boundaries that turn it into a result.
class HostError;

class TaskRunDriver final
{
public:
    static constexpr qint64 SuspendPollMs = 5000;

    TaskRunDriver(std::shared_ptr<TaskRunRecord> record, std::shared_ptr<CadConnection> cad, TextLookup text = {},
                  VaultDateStyleLookup dateStyle = {});

    // 0 success, 1 cancelled or nothing to do (the command's cancel flag is
    // then set), negative the first error.
    HRESULT Run(const std::shared_ptr<IDoxVault> &vault, const std::shared_ptr<IDoxTaskInstance> &instance,
                DoxCmd &cmd, const DoxCmdDataArray &data);
    // Reports the final status, message and affected files; 1 without a
    // status when the host asked to cancel.
    HRESULT Finish(IDoxTaskInstance &instance, HRESULT runResult);

    const std::vector<std::shared_ptr<FileRecord>> &selectedFiles() const { return m_selected; }
    const MacroBuilder &macroBuilder() const { return m_builder; }

    // Texts of the run (number, English).
    static constexpr std::int32_t NoFileSelectedText = 143;
    static constexpr std::int32_t NoFileConvertedText = 144;
    static constexpr std::int32_t AddingFilesText = 164;
    static constexpr std::int32_t FinishedWithErrorsText = 165;

private:
    HRESULT runFiles(const std::shared_ptr<IDoxVault> &vault, const std::shared_ptr<IDoxTaskInstance> &instance,
                     DoxCmd &cmd, const DoxCmdDataArray &data);
    // Throws HostError(S_FALSE) on a cancel; waits while suspended.
    void checkSuspendAndCancel(IDoxTaskInstance &instance) const;
    void checkOutErrorLog(IDoxVault &vault) const;
    void logFailedFile(const FileRecord *file, const HostError &error) const;
    void logUnprocessedFiles(std::size_t firstUnprocessed, const FileRecord &failed) const;
    std::vector<AffectedObject> affectedObjects(std::int32_t status) const;
    QString text(std::int32_t number, const char *english) const;

    std::shared_ptr<TaskRunRecord> m_record;
    std::shared_ptr<CadConnection> m_cad;
    TextLookup m_text;
    MacroBuilder m_builder;
    std::vector<std::shared_ptr<FileRecord>> m_selected;
    // The connection's text when the run failed, before Close.
    QString m_failureText;
    std::int32_t m_taskType = 3;
};
