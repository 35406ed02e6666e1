#include "app/taskhost.h"

#include "addin/module/moduleregistration.h"
#include "app/addinhost.h"
#include "app/vaultbrowser.h"
#include "common/translator.h"
#include "host/hosterror.h"
#include "platform/home.h"
#include "platform/jsonregistrystore.h"
#include "vault/embeddedvault.h"
#include "vault/taskstore.h"

#include <QApplication>
#include <QWidget>

TaskHost::~TaskHost()
{
    // Pages the add-in made are children of the window; they go with the
    // add-in object, before the window.
    m_addin.reset();
    m_window.reset();
}

std::unique_ptr<TaskHost> TaskHost::open(std::shared_ptr<VaultStore> store, QTextStream &err, QString &error)
{
    const QString registryFile = mctaskHomePath(QStringLiteral("registry.json"));
    std::unique_ptr<AddInHost> addin;
    {
        JsonRegistryStore registry(registryFile);
        addin = AddInHost::create(registry, McTaskAddInIds::ClassId, error);
    }
    if (!addin) {
        const bool registered = [&] {
            JsonRegistryStore registry(registryFile);
            return registry.keyExists(RegistryRoot::ClassesRoot, RegistryView::Native,
                                      QStringLiteral("CLSID\\") + McTaskAddInIds::ClassId);
        }();
        if (registered)
            return nullptr; // registered but broken: the caller shows why
        const QString module = defaultAddInModulePath();
        if (module.isEmpty()) {
            error = QStringLiteral("the add-in is not registered and no module was found next to the program "
                                   "(run 'mctask addin register MODULE')");
            return nullptr;
        }
        QString registrationError;
        const HRESULT hr = callModuleRegistration(module, false, registrationError);
        if (failed(hr) || !registrationError.isEmpty()) {
            error = QStringLiteral("the add-in is not registered and registering %1 failed%2")
                        .arg(module, registrationError.isEmpty() ? QString() : QStringLiteral(": ") + registrationError);
            return nullptr;
        }
        recordInstallationFolder(module); // without it the texts stay English
        err << "mctask: the add-in was not registered; registered " << module << '\n';
        err.flush();
        error.clear();
        JsonRegistryStore registry(registryFile);
        addin = AddInHost::create(registry, McTaskAddInIds::ClassId, error);
        if (!addin)
            return nullptr;
    }

    std::unique_ptr<TaskHost> host(new TaskHost);
    host->m_store = store;
    host->m_tasks = std::make_unique<TaskStore>(store);
    host->m_vault = std::make_shared<EmbeddedVault>(store);
    // The host's browse windows, for pages and dialogs that let the user pick
    // vault files and folders; only a user's click opens them.
    if (qobject_cast<QApplication *>(QCoreApplication::instance())) {
        installVaultBrowsers(*host->m_vault);
        // Standard buttons, file dialogs and context menus in the language.
        Translator::instance().installQtTranslations();
    }
    const HRESULT hr = addin->initialise(host->m_vault);
    if (failed(hr)) {
        error = QStringLiteral("the add-in refused to start (0x%1)").arg(static_cast<quint32>(hr), 8, 16, QLatin1Char('0'));
        return nullptr;
    }
    host->m_addin = std::move(addin);
    return host;
}

HostWindow TaskHost::window()
{
    if (!m_window && qobject_cast<QApplication *>(QCoreApplication::instance()))
        m_window = std::make_unique<QWidget>();
    return m_window.get();
}

DoxCmd TaskHost::command(DoxCmdType type, HostObjectPtr extra, const QString &comment)
{
    DoxCmd cmd;
    cmd.commandType = type;
    cmd.vault = m_vault;
    cmd.extra = std::move(extra);
    cmd.comment = comment;
    if (type != DoxCmd_TaskRun)
        cmd.window = window();
    return cmd;
}

HRESULT TaskHost::send(DoxCmd &cmd, DoxCmdDataArray &data)
{
    return m_addin->send(cmd, data);
}

std::shared_ptr<IDoxVault> TaskHost::hostVault()
{
    return m_vault;
}

std::shared_ptr<StoredTaskProperties> TaskHost::properties(int taskId)
{
    return std::make_shared<StoredTaskProperties>(*m_tasks, taskId);
}

std::shared_ptr<StoredTaskInstance> TaskHost::instance(int instanceId)
{
    return std::make_shared<StoredTaskInstance>(*m_tasks, instanceId);
}

HRESULT TaskHost::beginSetup(const std::shared_ptr<StoredTaskProperties> &properties)
{
    DoxCmd cmd = command(DoxCmd_TaskSetup, properties);
    DoxCmdDataArray none;
    return send(cmd, none);
}

HRESULT TaskHost::pressSetupButton(const std::shared_ptr<StoredTaskProperties> &properties, const QString &button,
                                   QString &refusedPage)
{
    DoxCmd cmd = command(DoxCmd_TaskSetupButton, properties, button);
    DoxCmdDataArray none;
    const HRESULT hr = send(cmd, none);
    refusedPage = cmd.cancel == -1 ? cmd.comment : QString();
    return hr;
}

SetupOutcome TaskHost::setupWithOk(int taskId)
{
    SetupOutcome outcome;
    const auto props = properties(taskId);
    outcome.setupResult = beginSetup(props);
    if (failed(outcome.setupResult))
        return outcome;
    outcome.confirmed = true;
    outcome.buttonResult = pressSetupButton(props, QStringLiteral("OK"), outcome.refusedPage);
    return outcome;
}

