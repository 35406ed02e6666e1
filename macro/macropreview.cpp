#include "macro/macropreview.h"

#include "settings/tasksettings.h"
#include "host/hosterror.h"
#include "host/idoxvault.h"

TaskPreviewInstance::TaskPreviewInstance(std::shared_ptr<IDoxVariables> task, QString taskName, std::int32_t taskId)
    : m_task(std::move(task)), m_taskName(std::move(taskName)), m_taskId(taskId)
{
}

HRESULT TaskPreviewInstance::GetVariable(const QString &name, Variant &value)
{
    return m_task->GetVariable(name, value);
}

HRESULT TaskPreviewInstance::SetVariable(const QString &, const Variant &)
{
    return E_ACCESSDENIED;
}

HRESULT TaskPreviewInstance::GetInstanceGuid(QString &guid)
{
    guid = QStringLiteral("<TaskInstanceGuid>");
    return S_OK;
}

HRESULT TaskPreviewInstance::GetStatus(std::int32_t &)
{
    return E_NOTIMPL;
}

HRESULT TaskPreviewInstance::SetStatus(std::int32_t, HRESULT, const std::optional<QString> &,
                                       const std::vector<AffectedObject> &, const std::optional<QString> &)
{
    return E_ACCESSDENIED;
}

HRESULT TaskPreviewInstance::SetProgressRange(std::int32_t, std::int32_t, const QString &)
{
    return E_ACCESSDENIED;
}

HRESULT TaskPreviewInstance::SetProgressPos(std::int32_t, const QString &)
{
    return E_ACCESSDENIED;
}

HRESULT TaskPreviewInstance::GetTaskValue(const Variant &nameOrNumber, Variant &value)
{
    if (nameOrNumber.type() == VarType::BStr)
        return m_task->GetVariable(nameOrNumber.bstr(), value);
    Variant number;
    if (const HRESULT hr = nameOrNumber.changeType(VarType::I4, number); failed(hr))
        return hr;
    switch (number.i4()) {
    case 1:
        value = Variant::fromBStr(m_taskName);
        return S_OK;
    case 2:
        value = Variant::fromI4(m_taskId);
        return S_OK;
    default:
        return S_FALSE;
    }
}

PreviewFile findPreviewFile(IDoxVault &vault, const QString &path, const QString &cfgOrSheet, std::int32_t version)
{
    std::shared_ptr<IDoxFile> file;
    std::shared_ptr<IDoxFolder> folder;
    const HRESULT hr = throwIfFailed(vault.GetFileFromPath(path, file, folder), path);
    if (hr != S_OK || !file)
        throw HostError(E_DOX_FILE_NOT_FOUND, path);
    PreviewFile result;
    result.cfgOrSheet = cfgOrSheet;
    result.fileId = file->GetID();
    if (folder)
        result.folderId = folder->GetID();
    else
        throwIfFailed(file->GetParentFolderId(result.folderId), path);
    // The run works on the path the vault gives for the file, in its case.
    throwIfFailed(file->GetLocalPath(result.folderId, result.path), path);
    result.version = version > 0 ? version : file->GetCurrentVersion();
    return result;
}

QString previewFileMacro(const std::shared_ptr<IDoxVault> &vault, const std::shared_ptr<IDoxTaskInstance> &instance,
                         const PreviewFile &file, VaultDateStyleLookup dateStyle)
{
    QString script;
    if (throwIfFailed(readTextVariable(*instance, TaskKeys::Script, {}, script), TaskKeys::Script) != S_OK)
        throw HostError(E_UNEXPECTED, QStringLiteral("the task has no macro text (\"__script\")"));
    MacroBuilder builder(std::move(dateStyle));
    builder.Prepare(vault, instance, script);
    builder.SetFile(file.path, file.cfgOrSheet, file.fileId, file.folderId, file.version);
    return builder.BuildFileMacro();
}
