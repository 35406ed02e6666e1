#pragma once

#include "addin/taskpage.h"
#include "common/translator.h"
#include "host/doxcmd.h"

#include <functional>
#include <memory>

class IDoxVault;
class IDoxTaskInstance;

// Runs one task instance on the task host and reports its end.
class RunDriver
{
public:
    virtual ~RunDriver() = default;
    // 0 success, 1 cancelled or nothing to do, negative error.
    virtual HRESULT run(const std::shared_ptr<IDoxVault> &vault, const std::shared_ptr<IDoxTaskInstance> &instance,
                        DoxCmd &cmd, DoxCmdDataArray &data) = 0;
    virtual HRESULT finish(const std::shared_ptr<IDoxTaskInstance> &instance, HRESULT runResult) = 0;
    // Switches the CAD application's own start-up add-ins off (false) or back on (true).
    virtual void suspendStartupAddIns(bool restore) = 0;
};

// The modal dialogs of a launch.
class LaunchDialogs
{
public:
    virtual ~LaunchDialogs() = default;
    // S_OK with the chosen items in selection, S_FALSE when cancelled.
    virtual HRESULT runSelectionDialog(HostWindow owner, const std::shared_ptr<IDoxVault> &vault,
                                       const QString &vaultRoot, DoxCmdDataArray &selection) = 0;
    // True when the user printed (always when show is false).
    virtual bool runPrintLaunchDialog(const std::shared_ptr<IDoxVault> &vault, DoxCmd &cmd, DoxCmdDataArray &selection,
                                      bool show) = 0;
};

// Turns a launch's data array into file records and stores them in the instance.
class SelectionStore
{
public:
    virtual ~SelectionStore() = default;
    virtual HRESULT storeSelection(const std::shared_ptr<IDoxVault> &vault,
                                   const std::shared_ptr<IDoxTaskInstance> &instance, const DoxCmdDataArray &data) = 0;
};

// Everything the dispatcher reaches beyond the host. The module supplies the
// real ones; tests supply mocks.
struct AddInServices {
    std::shared_ptr<PageFactory> pages;
    std::shared_ptr<RunDriver> runDriver;
    std::shared_ptr<LaunchDialogs> launchDialogs;
    std::shared_ptr<SelectionStore> selectionStore;
    TextLookup text;
};
