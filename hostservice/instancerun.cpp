#include "hostservice/instancerun.h"

#include "host/hostcall.h"
#include "host/hosterror.h"

ClaimedTaskInstance::ClaimedTaskInstance(std::shared_ptr<VaultStore> store, TaskClaim claim, ProgressObserver progress)
    : m_store(store), m_queue(store),
      m_stored(std::make_shared<StoredTaskInstance>(TaskStore(store), claim.instanceId)),
      m_claim(std::move(claim)),
      m_progress(std::move(progress))
{
}

HRESULT ClaimedTaskInstance::GetVariable(const QString &name, Variant &value)
{
    return reconnecting([&] { return m_stored->GetVariable(name, value); });
}

HRESULT ClaimedTaskInstance::reconnecting(const std::function<HRESULT()> &call)
{
    const HRESULT hr = call();
    VaultDb &db = m_store->db();
    if (!failed(hr) || !db.isConnectionLost())
        return hr;
    try {
        db.reconnect();
    } catch (const HostError &) {
        return hr; // still away
    }
    return call();
}

HRESULT ClaimedTaskInstance::guarded(const std::function<void()> &write)
{
    const HRESULT hr = reconnecting([&] {
        return hostCall([&] {
            write();
            return S_OK;
        });
    });
    if (hr == E_ACCESSDENIED)
        ++m_refused;
    return hr;
}

HRESULT ClaimedTaskInstance::SetVariable(const QString &name, const Variant &value)
{
    return guarded([&] { m_queue.setVariable(m_claim, name, value); });
}

HRESULT ClaimedTaskInstance::GetInstanceGuid(QString &guid)
{
    return m_stored->GetInstanceGuid(guid);
}

HRESULT ClaimedTaskInstance::GetStatus(std::int32_t &status)
{
    return reconnecting([&] { return m_stored->GetStatus(status); });
}

HRESULT ClaimedTaskInstance::SetStatus(std::int32_t status, HRESULT result, const std::optional<QString> &message,
                                       const std::vector<AffectedObject> &affected,
                                       const std::optional<QString> &extra)
{
    return guarded([&] { m_queue.setStatus(m_claim, status, result, message, affected, extra); });
}

HRESULT ClaimedTaskInstance::SetProgressRange(std::int32_t maximum, std::int32_t position, const QString &text)
{
    return guarded([&] {
        m_queue.setProgress(m_claim, maximum, position, text);
        m_maximum = maximum;
        if (m_progress)
            m_progress(position, m_maximum, text);
    });
}

HRESULT ClaimedTaskInstance::SetProgressPos(std::int32_t position, const QString &text)
{
    return guarded([&] {
        m_queue.setProgress(m_claim, std::nullopt, position, text);
        if (m_progress)
            m_progress(position, m_maximum, text);
    });
}

HRESULT ClaimedTaskInstance::GetTaskValue(const Variant &nameOrNumber, Variant &value)
{
    return m_stored->GetTaskValue(nameOrNumber, value);
}

HandoverRecordingVault::HandoverRecordingVault(std::shared_ptr<IDoxVault> vault, std::shared_ptr<VaultStore> store,
                                               TaskClaim claim)
    : m_vault(std::move(vault)), m_store(store), m_queue(std::move(store)), m_claim(std::move(claim))
{
}

HRESULT HandoverRecordingVault::GetName(QString &name)
{
    return m_vault->GetName(name);
}

HRESULT HandoverRecordingVault::GetRootFolderPath(QString &path)
{
    return m_vault->GetRootFolderPath(path);
}

HRESULT HandoverRecordingVault::GetFileFromPath(const QString &path, std::shared_ptr<IDoxFile> &file,
                                                std::shared_ptr<IDoxFolder> &folder)
{
    return m_vault->GetFileFromPath(path, file, folder);
}

HRESULT HandoverRecordingVault::GetFolderFromPath(const QString &path, std::shared_ptr<IDoxFolder> &folder)
{
    return m_vault->GetFolderFromPath(path, folder);
}

HRESULT HandoverRecordingVault::GetFile(std::int32_t id, std::shared_ptr<IDoxFile> &file)
{
    return m_vault->GetFile(id, file);
}

HRESULT HandoverRecordingVault::GetFolder(std::int32_t id, std::shared_ptr<IDoxFolder> &folder)
{
    return m_vault->GetFolder(id, folder);
}

HRESULT HandoverRecordingVault::CreateUtility(std::int32_t utility, HostObjectPtr &service)
{
    // A listing only reads; every other service writes to the vault.
    if (utility != DoxUtil_BatchListing) {
        const HRESULT hr = hostCall([&] {
            m_queue.markHandover(m_claim);
            return S_OK;
        });
        if (hr == E_ACCESSDENIED)
            ++m_refused;
        if (failed(hr))
            return hr;
    }
    return m_vault->CreateUtility(utility, service);
}

void HandoverRecordingVault::requireClaim()
{
    try {
        m_queue.requireHeld(m_claim);
    } catch (const HostError &e) {
        if (e.code() == E_ACCESSDENIED)
            ++m_refused;
        throw;
    }
}

HRESULT HandoverRecordingVault::ResolveReferenceVersions(const std::vector<DoxReferenceQuery> &files,
                                                         std::int32_t setting, std::vector<std::int32_t> &versions)
{
    const HRESULT resolved = m_vault->ResolveReferenceVersions(files, setting, versions);
    if (resolved != S_OK || !m_store->isShared())
        return resolved;
    // The run builds its file list with this call and opens the files next.
    // A local view holds the latest versions, as a vault folder does.
    return hostCall([&] {
        std::vector<int> ids;
        for (const DoxReferenceQuery &query : files)
            if (const auto row = m_store->fileByIdOrPath(query.docId, query.path))
                ids.push_back(row->id);
        m_store->fetchWithReferences(ids);
        return S_OK;
    });
}

HRESULT HandoverRecordingVault::GetCardVariableNames(QStringList &names)
{
    return m_vault->GetCardVariableNames(names);
}

HRESULT HandoverRecordingVault::GetErrorInfo(HRESULT code, QString &name, QString &description)
{
    return m_vault->GetErrorInfo(code, name, description);
}

HRESULT HandoverRecordingVault::BrowseForFiles(HostWindow owner, const QString &title, const QString &filter,
                                               std::vector<std::shared_ptr<IDoxFile>> &files,
                                               std::vector<std::shared_ptr<IDoxFolder>> &folders)
{
    return m_vault->BrowseForFiles(owner, title, filter, files, folders);
}

HRESULT HandoverRecordingVault::BrowseForFolder(HostWindow owner, const QString &title,
                                                std::shared_ptr<IDoxFolder> &folder)
{
    return m_vault->BrowseForFolder(owner, title, folder);
}

RunReport runClaimedInstance(AddInSession &session, const TaskClaim &claim, const ProgressObserver &progress)
{
    const std::shared_ptr<VaultStore> store = session.store();
    TaskQueue queue(store);
    RunReport report;
    try {
        const InstanceRow before = *queue.tasks().instanceById(claim.instanceId);
        if (before.status == TaskStatus_CancelRequested) {
            queue.setStatus(claim, TaskStatus_Finished, S_FALSE, QStringLiteral("Cancelled before the run started."),
                            {}, std::nullopt);
            report.cancelled = true;
        } else {
            DoxCmd cmd;
            cmd.commandType = DoxCmd_TaskRun;
            const auto vault = std::make_shared<HandoverRecordingVault>(session.hostVault(), store, claim);
            // The batch services write the run's outputs through this store;
            // the queue's writes (such as the end below) check the claim
            // themselves.
            const VaultStore::CommitCheck claimCheck(*store, [&vault] { vault->requireClaim(); });
            const auto instance = std::make_shared<ClaimedTaskInstance>(store, claim, progress);
            cmd.vault = vault;
            cmd.extra = instance;
            DoxCmdDataArray data = queue.tasks().instanceData(claim.instanceId);
            report.commandResult = session.send(cmd, data);
            report.cancelled = cmd.cancel != 0;
            report.claimLost = instance->refusedWrites() + vault->refusedWrites() > 0;
            if (!isFinishedStatus(queue.tasks().instanceById(claim.instanceId)->status))
                queue.setStatus(claim, TaskStatus_Finished, report.commandResult,
                                QStringLiteral("The add-in did not report the end of the run."), {}, std::nullopt);
        }
    } catch (const HostError &e) {
        if (e.code() != E_ACCESSDENIED)
            throw;
        report.claimLost = true;
    }
    report.end = *queue.tasks().instanceById(claim.instanceId);
    return report;
}
