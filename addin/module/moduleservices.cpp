#include "addin/module/moduleservices.h"

#include "host/idoxtask.h"

namespace {

// Set-up pages, launch dialogs, the selection store and the run driver are
// plugged in here as they are built; until then the commands that need them
// answer E_NOTIMPL to the host instead of pretending to work.
class PagesNotAvailable final : public PageFactory
{
public:
    std::unique_ptr<MenuCommandPage> createMenuCommandPage(const PageContext &) override { return nullptr; }
    std::unique_ptr<ConversionSettingsPage> createConversionSettingsPage(const PageContext &) override
    {
        return nullptr;
    }
    std::unique_ptr<TaskPage> createPage(PageId, const PageContext &) override { return nullptr; }
};

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

class SelectionNotAvailable final : public SelectionStore
{
public:
    HRESULT storeSelection(const std::shared_ptr<IDoxVault> &, const std::shared_ptr<IDoxTaskInstance> &,
                           const DoxCmdDataArray &) override
    {
        return E_NOTIMPL;
    }
};

} // namespace

AddInServices makeModuleServices()
{
    AddInServices services;
    services.pages = std::make_shared<PagesNotAvailable>();
    services.runDriver = std::make_shared<RunNotAvailable>();
    services.launchDialogs = std::make_shared<DialogsNotAvailable>();
    services.selectionStore = std::make_shared<SelectionNotAvailable>();
    services.text = [](std::int32_t, const QString &english) { return english; };
    return services;
}
