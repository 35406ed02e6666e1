#include "addin/module/moduleservices.h"

#include "addin/module/setuppagefactory.h"
#include "cad/vaultclientchannel.h"
#include "common/translator.h"
#include "host/idoxtask.h"
#include "run/taskrunrecord.h"

namespace {

// Launch dialogs and the run driver are plugged in here as they are built;
// until then the commands that need them answer E_NOTIMPL to the host
// instead of pretending to work.
class RunNotAvailable final : public RunDriver
{
public:
    HRESULT run(const std::shared_ptr<IDoxVault> &, const std::shared_ptr<IDoxTaskInstance> &, DoxCmd &,
                DoxCmdDataArray &) override
    {
        return E_NOTIMPL;
    }
    HRESULT finish(const std::shared_ptr<IDoxTaskInstance> &instance, HRESULT runResult) override
    {
        return instance->SetStatus(TaskStatus_FinishedWithError, runResult, QStringLiteral("The run driver is not available."),
                                   {}, std::nullopt);
    }
    void suspendStartupAddIns(bool) override {}
};

class DialogsNotAvailable final : public LaunchDialogs
{
public:
    HRESULT runSelectionDialog(HostWindow, const std::shared_ptr<IDoxVault> &, const QString &,
                               DoxCmdDataArray &) override
    {
        return E_NOTIMPL;
    }
    bool runPrintLaunchDialog(const std::shared_ptr<IDoxVault> &, DoxCmd &, DoxCmdDataArray &, bool) override
    {
        return false;
    }
};

// The launch's selection goes through the add-in's one run record.
class RunRecordSelectionStore final : public SelectionStore
{
public:
    explicit RunRecordSelectionStore(std::shared_ptr<TaskRunRecord> record) : m_record(std::move(record)) {}
    HRESULT storeSelection(const std::shared_ptr<IDoxVault> &vault, const std::shared_ptr<IDoxTaskInstance> &instance,
                           const DoxCmdDataArray &data) override
    {
        return m_record->storeSelection(vault, *instance, data);
    }

private:
    std::shared_ptr<TaskRunRecord> m_record;
};

} // namespace

AddInServices makeModuleServices()
{
    AddInServices services;
    services.pages = std::make_shared<SetupPageFactory>(
        [](std::int32_t number, const QString &english) { return tr_ts(number, english); });
    services.runDriver = std::make_shared<RunNotAvailable>();
    services.launchDialogs = std::make_shared<DialogsNotAvailable>();
    auto runRecord = std::make_shared<TaskRunRecord>();
    runRecord->setVaultClientNotifier(&NotifyVaultClient);
    services.selectionStore = std::make_shared<RunRecordSelectionStore>(runRecord);
    services.text = [](std::int32_t number, const QString &english) { return tr_ts(number, english); };
    return services;
}
