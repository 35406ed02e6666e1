#pragma once

#include "host/doxcmd.h"
#include "host/idoxtask.h"
#include "host/idoxvault.h"
#include "hostservice/taskqueue.h"

#include <functional>
#include <memory>

// The loaded add-in as one run reaches it: the host's vault object, a
// connection to the task store, and command delivery. Each worker has one of
// its own (its own add-in object, its own Mecadra process).
class AddInSession
{
public:
    virtual ~AddInSession() = default;
    virtual std::shared_ptr<VaultStore> store() = 0;
    virtual std::shared_ptr<IDoxVault> hostVault() = 0;
    virtual HRESULT send(DoxCmd &cmd, DoxCmdDataArray &data) = 0;
};

// Progress as the add-in reports it: position of maximum, with its text.
using ProgressObserver = std::function<void(std::int32_t position, std::int32_t maximum, const QString &text)>;

// The task instance the add-in gets for a claimed run. Reads go to the
// store; every write carries the claim, so a run whose claim was lost
// (its lease ran out and another host took the instance) can change nothing:
// the write fails with E_ACCESSDENIED.
class ClaimedTaskInstance final : public IDoxTaskInstance
{
public:
    ClaimedTaskInstance(std::shared_ptr<VaultStore> store, TaskClaim claim, ProgressObserver progress = {});

    HRESULT GetVariable(const QString &name, Variant &value) override;
    HRESULT SetVariable(const QString &name, const Variant &value) override;
    HRESULT GetInstanceGuid(QString &guid) override;
    HRESULT GetStatus(std::int32_t &status) override;
    HRESULT SetStatus(std::int32_t status, HRESULT result, const std::optional<QString> &message,
                      const std::vector<AffectedObject> &affected, const std::optional<QString> &extra) override;
    HRESULT SetProgressRange(std::int32_t maximum, std::int32_t position, const QString &text) override;
    HRESULT SetProgressPos(std::int32_t position, const QString &text) override;
    HRESULT GetTaskValue(const Variant &nameOrNumber, Variant &value) override;

    // Writes refused because the claim was lost.
    int refusedWrites() const { return m_refused; }

private:
    HRESULT guarded(const std::function<void()> &write);
    // A connection that broke while the run waited elsewhere (the server
    // restarted meanwhile) is made again once before the call counts as
    // failed; the claim still decides whether a write is taken.
    HRESULT reconnecting(const std::function<HRESULT()> &call);

    std::shared_ptr<VaultStore> m_store;
    TaskQueue m_queue;
    std::shared_ptr<StoredTaskInstance> m_stored;
    int m_refused = 0;
    TaskClaim m_claim;
    ProgressObserver m_progress;
    std::int32_t m_maximum = 0;
};

// The host's vault as a claimed run sees it: the services that add, check
// in, reference or fill cards first record the hand-over of the run's
// outputs with the claim (see TaskQueue::recoverExpired), and are refused
// when the claim is lost, so that a run never checks in what another run
// of the instance may also check in. A service made while the claim held
// commits only while it still holds (requireClaim). On a vault on a server, the reference
// resolution the add-in asks for before the first file also brings the
// selected files and the files they reference into this home's local view.
class HandoverRecordingVault final : public IDoxVault
{
public:
    HandoverRecordingVault(std::shared_ptr<IDoxVault> vault, std::shared_ptr<VaultStore> store, TaskClaim claim);

    HRESULT GetName(QString &name) override;
    HRESULT GetRootFolderPath(QString &path) override;
    HRESULT GetFileFromPath(const QString &path, std::shared_ptr<IDoxFile> &file,
                            std::shared_ptr<IDoxFolder> &folder) override;
    HRESULT GetFolderFromPath(const QString &path, std::shared_ptr<IDoxFolder> &folder) override;
    HRESULT GetFile(std::int32_t id, std::shared_ptr<IDoxFile> &file) override;
    HRESULT GetFolder(std::int32_t id, std::shared_ptr<IDoxFolder> &folder) override;
    HRESULT CreateUtility(std::int32_t utility, HostObjectPtr &service) override;
    HRESULT ResolveReferenceVersions(const std::vector<DoxReferenceQuery> &files, std::int32_t setting,
                                     std::vector<std::int32_t> &versions) override;
    HRESULT GetCardVariableNames(QStringList &names) override;
    HRESULT GetErrorInfo(HRESULT code, QString &name, QString &description) override;
    HRESULT BrowseForFiles(HostWindow owner, const QString &title, const QString &filter,
                           std::vector<std::shared_ptr<IDoxFile>> &files,
                           std::vector<std::shared_ptr<IDoxFolder>> &folders) override;
    HRESULT BrowseForFolder(HostWindow owner, const QString &title, std::shared_ptr<IDoxFolder> &folder) override;

    int refusedWrites() const { return m_refused; }
    // Throws E_ACCESSDENIED, counted as a refused write, unless the claim
    // still holds. The run's writes to the vault store call it right before
    // they commit (VaultStore::CommitCheck), which keeps the instance with
    // the claim until the write ends.
    void requireClaim();

private:
    std::shared_ptr<IDoxVault> m_vault;
    std::shared_ptr<VaultStore> m_store;
    int m_refused = 0;
    TaskQueue m_queue;
    TaskClaim m_claim;
};

// How a run of a claimed instance ended.
struct RunReport {
    InstanceRow end;            // the instance after the run
    HRESULT commandResult = S_FALSE; // S_FALSE when the add-in was not called
    bool cancelled = false;     // the command's cancel flag, or cancelled before it started
    bool claimLost = false;     // the run's writes were refused: another claim took it
};

// The run of one claimed instance, the same for "task run", the task host's
// workers and the tests: an instance cancelled before it started never
// reaches the add-in and ends as cancelled (status 8); otherwise the add-in
// gets command 43 with the launch's data, and an instance it did not end is
// ended with the command's result (status 8).
RunReport runClaimedInstance(AddInSession &session, const TaskClaim &claim, const ProgressObserver &progress = {});
