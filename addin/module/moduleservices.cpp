#include "addin/module/moduleservices.h"

#include "addin/module/setuppagefactory.h"
#include "cad/mcmanager.h"
#include "cad/vaultclientchannel.h"
#include "common/translator.h"
#include "host/idoxtask.h"
#include "print/printuidlg.h"
#include "run/cadconnection.h"
#include "run/taskdetailspage.h"
#include "run/taskrundriver.h"
#include "run/taskrunrecord.h"
#include "script/selectiondlg.h"

namespace {

QString moduleText(std::int32_t number, const QString &english)
{
    return tr_ts(number, english);
}

// The add-in's run: the run driver over the module's run record and CAD
// connection, with the connection's start-up add-in switch.
class ModuleRunDriver final : public RunDriver
{
public:
    ModuleRunDriver(std::shared_ptr<TaskRunRecord> record, std::shared_ptr<CadConnection> cad,
                    std::shared_ptr<StartupAddIns> startupAddIns)
        : m_driver(std::move(record), std::move(cad), &moduleText), m_startupAddIns(std::move(startupAddIns))
    {
    }
    HRESULT run(const std::shared_ptr<IDoxVault> &vault, const std::shared_ptr<IDoxTaskInstance> &instance,
                DoxCmd &cmd, DoxCmdDataArray &data) override
    {
        return m_driver.Run(vault, instance, cmd, data);
    }
    HRESULT finish(const std::shared_ptr<IDoxTaskInstance> &instance, HRESULT runResult) override
    {
        return m_driver.Finish(*instance, runResult);
    }
    void suspendStartupAddIns(bool restore) override
    {
        if (m_startupAddIns)
            m_startupAddIns->SuspendStartupAddIns(restore);
    }

private:
    TaskRunDriver m_driver;
    std::shared_ptr<StartupAddIns> m_startupAddIns;
};

// The launch dialogs: file and folder selection, and the print dialog.
class ModuleLaunchDialogs final : public LaunchDialogs
{
public:
    HRESULT runSelectionDialog(HostWindow owner, const std::shared_ptr<IDoxVault> &vault, const QString &vaultRoot,
                               DoxCmdDataArray &selection) override
    {
        return ::runSelectionDialog(owner, vault, vaultRoot, selection);
    }
    bool runPrintLaunchDialog(const std::shared_ptr<IDoxVault> &vault, DoxCmd &cmd, DoxCmdDataArray &selection,
                              bool show) override
    {
        return ::runPrintLaunchDialog(vault, &cmd, selection, show, &moduleText);
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
    auto pages = std::make_shared<SetupPageFactory>(&moduleText);
    pages->add(PageId::Details,
               [](const PageContext &context) { return std::make_unique<TaskDetailsPage>(context, &moduleText); });
    services.pages = pages;
    services.launchDialogs = std::make_shared<ModuleLaunchDialogs>();
    auto runRecord = std::make_shared<TaskRunRecord>();
    runRecord->setVaultClientNotifier(&NotifyVaultClient);
    // One connection to Mecadra per add-in object: it runs the files and
    // switches Mecadra's own start-up add-ins around the run.
    auto mecadra = std::make_shared<McManager>();
    services.runDriver = std::make_shared<ModuleRunDriver>(runRecord, mecadra, mecadra);
    services.selectionStore = std::make_shared<RunRecordSelectionStore>(runRecord);
    services.text = &moduleText;
    return services;
}
