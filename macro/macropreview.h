#pragma once

#include "host/idoxtask.h"
#include "macro/macrobuilder.h"

#include <QString>
#include <cstdint>
#include <memory>

class IDoxVault;

// Stands in for a task instance when a task's macro is shown before any run:
// the variables are the task's, the task values by number are its name (1)
// and id (2), and as the instance identifier is not known yet,
// <TaskInstanceGuid> stays in the macro as it is. Nothing can be written.
class TaskPreviewInstance final : public IDoxTaskInstance
{
public:
    TaskPreviewInstance(std::shared_ptr<IDoxVariables> task, QString taskName, std::int32_t taskId);

    HRESULT GetVariable(const QString &name, Variant &value) override;
    HRESULT SetVariable(const QString &name, const Variant &value) override;
    HRESULT GetInstanceGuid(QString &guid) override;
    HRESULT GetStatus(std::int32_t &status) override;
    HRESULT SetStatus(std::int32_t status, HRESULT result, const std::optional<QString> &message,
                      const std::vector<AffectedObject> &affected, const std::optional<QString> &extra) override;
    HRESULT SetProgressRange(std::int32_t maximum, std::int32_t position, const QString &text) override;
    HRESULT SetProgressPos(std::int32_t position, const QString &text) override;
    HRESULT GetTaskValue(const Variant &nameOrNumber, Variant &value) override;

private:
    std::shared_ptr<IDoxVariables> m_task;
    QString m_taskName;
    std::int32_t m_taskId;
};

// One file as a run sees it: its path in the vault's view, the
// configuration or sheet chosen at launch, its ids and the version to use.
struct PreviewFile {
    QString path;
    QString cfgOrSheet;
    std::int32_t fileId = 0;
    std::int32_t folderId = 0;
    std::int32_t version = 0;
};

// Finds a file of the vault by its path; version <= 0 takes the latest.
// Throws HostError E_DOX_FILE_NOT_FOUND when the vault does not know it.
PreviewFile findPreviewFile(IDoxVault &vault, const QString &path, const QString &cfgOrSheet, std::int32_t version);

// The macro a run of instance would hand the CAD application for file: the
// option pass over "__script", then the file pass. Throws HostError
// (E_UNEXPECTED when there is no "__script", as a run would fail).
QString previewFileMacro(const std::shared_ptr<IDoxVault> &vault, const std::shared_ptr<IDoxTaskInstance> &instance,
                         const PreviewFile &file, VaultDateStyleLookup dateStyle = {});
