#pragma once

#include "host/doxcmd.h"
#include "host/hresult.h"
#include "host/idoxtask.h"
#include "hostservice/instancerun.h"

#include <QString>
#include <QTextStream>
#include <functional>
#include <memory>

class AddInHost;
class EmbeddedVault;
class QWidget;
class StoredTaskInstance;
class StoredTaskProperties;
class TaskDetailsModel;
class TaskStore;
class VaultStore;

// What a set-up came to: the set-up command's result, then (when it passed)
// the "OK" button's, and the caption of a page that refused its values.
struct SetupOutcome {
    HRESULT setupResult = S_OK;
    HRESULT buttonResult = S_OK;
    bool confirmed = false;
    QString refusedPage;
    bool ok() const { return succeeded(setupResult) && confirmed && succeeded(buttonResult) && refusedPage.isEmpty(); }
};

// The embedded task host: the vault, its tasks and the add-in loaded as the
// host loads it. It builds the command records the add-in receives, and is
// the add-in session of the runs it makes (runClaimedInstance).
class TaskHost final : public AddInSession
{
public:
    ~TaskHost();

    // Loads the registered add-in; when it is not registered, registers the
    // module of this build first and says so on err. Null, with the reason in
    // error, when the add-in cannot be loaded or refuses to initialise.
    static std::unique_ptr<TaskHost> open(std::shared_ptr<VaultStore> store, QTextStream &err, QString &error);

    TaskStore &tasks() { return *m_tasks; }
    const std::shared_ptr<EmbeddedVault> &vault() const { return m_vault; }

    // The host's page window: without --gui an offscreen widget that is never
    // shown; null when the program runs without widgets.
    HostWindow window();

    DoxCmd command(DoxCmdType type, HostObjectPtr extra, const QString &comment = QString());
    HRESULT send(DoxCmd &cmd, DoxCmdDataArray &data) override;
    std::shared_ptr<VaultStore> store() override { return m_store; }
    std::shared_ptr<IDoxVault> hostVault() override;

    std::shared_ptr<StoredTaskProperties> properties(int taskId);
    std::shared_ptr<StoredTaskInstance> instance(int instanceId);

    // Command 40; the pages the add-in handed back stay with properties.
    HRESULT beginSetup(const std::shared_ptr<StoredTaskProperties> &properties);
    // Command 41 with a button name; refusedPage gets the page to bring to
    // front when the add-in kept the dialog open.
    HRESULT pressSetupButton(const std::shared_ptr<StoredTaskProperties> &properties, const QString &button,
                             QString &refusedPage);
    // Both, as an administrator who opens the dialog and presses "OK".
    SetupOutcome setupWithOk(int taskId);

private:
    TaskHost() = default;

    std::shared_ptr<VaultStore> m_store;
    std::unique_ptr<TaskStore> m_tasks;
    std::shared_ptr<EmbeddedVault> m_vault;
    std::unique_ptr<AddInHost> m_addin;
    std::unique_ptr<QWidget> m_window;
};

// The host's own windows, shown with --gui (taskcommands_windows.cpp).

// The set-up dialog over the pages handed back by command 40: "OK" sends 41
// "OK" and stays open on a page that refused its values; "Cancel" sends 41
// "Cancel".
void showSetupDialog(TaskHost &host, const std::shared_ptr<StoredTaskProperties> &properties, SetupOutcome &outcome);
// A page handed back at launch; true when the user pressed "OK".
bool showLaunchPage(HostWindow page, const QString &caption);
// The add-in's details page when it gave one, else the host's own list of
// the model.
void showDetails(HostWindow page, const QString &caption, const TaskDetailsModel &model);
