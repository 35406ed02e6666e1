#include "addin/mctaskaddin.h"

#include "addin/taskcatalogue.h"
#include "settings/tasksettings.h"
#include "host/hostcall.h"
#include "host/hosterror.h"
#include "host/idoxtask.h"
#include "host/idoxvault.h"

namespace {

// The CAD application's own start-up add-ins are off while it runs for a
// task, and back on however the run ends.
class StartupAddInsOff final
{
public:
    explicit StartupAddInsOff(RunDriver &driver) : m_driver(driver) { m_driver.suspendStartupAddIns(false); }
    ~StartupAddInsOff()
    {
        try {
            m_driver.suspendStartupAddIns(true);
        } catch (...) {
            // The run's own result matters more than a failed restore.
        }
    }
    StartupAddInsOff(const StartupAddInsOff &) = delete;
    StartupAddInsOff &operator=(const StartupAddInsOff &) = delete;

private:
    RunDriver &m_driver;
};

constexpr std::int32_t TaskTypeConvert = 1;
constexpr std::int32_t TaskTypePrint = 2;
constexpr std::int32_t TaskTypeScript = 3;

// Hooks are registered in this order.
constexpr std::int32_t HookedCommands[] = {DoxCmd_TaskSetup, DoxCmd_TaskSetupButton, DoxCmd_TaskDetails,
                                           DoxCmd_TaskLaunch, DoxCmd_TaskLaunchButton, DoxCmd_TaskRun};

QString addInDescription()
{
    return QStringLiteral("Add-in used to run custom Mecadra macros\r\n")
        + QStringLiteral("Version %1, SP%2, Build %3").arg(2013).arg(0).arg(511);
}

} // namespace

CMcTaskAddIn::CMcTaskAddIn(AddInServices services) : m_services(std::move(services)) {}

CMcTaskAddIn::~CMcTaskAddIn() = default;

QString CMcTaskAddIn::text(std::int32_t number, const QString &english) const
{
    return m_services.text ? m_services.text(number, english) : english;
}

HRESULT CMcTaskAddIn::GetAddInInfo(DoxAddInInfo *info, const std::shared_ptr<IDoxVault> &,
                                   const std::shared_ptr<IDoxCmdMgr> &cmdMgr)
{
    if (!info || !cmdMgr)
        return E_POINTER;
    info->addInName = QStringLiteral("Mecadra Task Add-in");
    info->company = QStringLiteral("Mecadra Corporation");
    info->description = addInDescription();
    info->addInVersion = AddInVersion;
    info->requiredVersionMajor = 13;
    info->requiredVersionMinor = 0;
    // A hook the host refuses leaves that command unhooked; the add-in
    // still loads.
    for (const std::int32_t command : HookedCommands)
        cmdMgr->AddHook(command, 0);
    return S_OK;
}

HRESULT CMcTaskAddIn::OnCmd(DoxCmd *cmd, DoxCmdDataArray *data)
{
    if (!cmd || !data)
        return E_POINTER;
    std::shared_ptr<IDoxVault> vault;
    if (cmd->vault) {
        vault = queryInterface<IDoxVault>(cmd->vault);
        if (!vault)
            return E_NOINTERFACE;
    }
    try {
        switch (cmd->commandType) {
        case DoxCmd_TaskSetup: return onSetup(*cmd, vault);
        case DoxCmd_TaskSetupButton: return onSetupButton(*cmd);
        case DoxCmd_TaskDetails: return onDetails(*cmd, vault);
        case DoxCmd_TaskRun: return onRun(*cmd, *data, vault);
        case DoxCmd_TaskLaunch: return onLaunch(*cmd, *data, vault);
        case DoxCmd_TaskLaunchButton: return onLaunchButton(*cmd);
        default: return S_OK;
        }
    } catch (const HostError &e) {
        return e.code();
    } catch (const std::bad_alloc &) {
        return E_OUTOFMEMORY;
    }
}

HRESULT CMcTaskAddIn::readTaskType(IDoxVariables &holder)
{
    std::int32_t type = TaskTypeScript;
    const HRESULT hr = readIntVariable(holder, TaskKeys::Type, TaskTypeScript, type);
    if (failed(hr))
        return hr;
    m_taskType = type;
    return S_OK;
}

std::unique_ptr<TaskPage> &CMcTaskAddIn::pageSlot(PageId id)
{
    switch (id) {
    case PageId::FileCard: return m_fileCardPage;
    case PageId::OutputFileDetails: return m_outputDetailsPage;
    case PageId::Printer: return m_printerPage;
    case PageId::PaperSize: return m_paperPage;
    case PageId::Margins: return m_marginsPage;
    case PageId::PrintFiles: return m_filesPage;
    case PageId::Details: return m_detailsPage;
    default: return m_scriptPage;
    }
}

void CMcTaskAddIn::releasePages()
{
    m_menuPage.reset();
    m_conversionPage.reset();
    m_fileCardPage.reset();
    m_outputDetailsPage.reset();
    m_scriptPage.reset();
    m_printerPage.reset();
    m_paperPage.reset();
    m_marginsPage.reset();
    m_filesPage.reset();
}

HRESULT CMcTaskAddIn::onSetup(DoxCmd &cmd, const std::shared_ptr<IDoxVault> &vault)
{
    const auto props = queryInterface<IDoxTaskProperties>(cmd.extra);
    if (!props)
        return E_POINTER;
    if (!cmd.window)
        return E_INVALIDARG;
    if (const HRESULT hr = props->SetTaskFlags(TaskFlags); failed(hr))
        return hr;
    if (const HRESULT hr = readTaskType(*props); failed(hr))
        return hr;

    releasePages();
    PageContext context;
    context.vault = vault;
    context.properties = props;
    context.taskType = m_taskType;
    PageFactory &factory = *m_services.pages;

    // The kind's pages in the catalogue's order, each created and loaded.
    std::vector<SetupPage> pages;
    const HostObjectPtr self = shared_from_this();
    for (const TaskCatalogue::Page &entry : TaskCatalogue::setupPages(m_taskType)) {
        TaskPage *page = nullptr;
        if (entry.id == PageId::MenuCommand) {
            m_menuPage = factory.createMenuCommandPage(context);
            page = m_menuPage.get();
        } else if (entry.id == PageId::ConversionSettings) {
            m_conversionPage = factory.createConversionSettingsPage(context);
            page = m_conversionPage.get();
            context.conversionPage = m_conversionPage.get();
        } else {
            std::unique_ptr<TaskPage> &slot = pageSlot(entry.id);
            slot = factory.createPage(entry.id, context);
            page = slot.get();
        }
        if (!page)
            return E_PAGE_MISSING;
        page->create(cmd.window);
        if (const HRESULT hr = page->load(*props); failed(hr))
            return hr;
        pages.push_back({text(entry.caption.number, QString::fromLatin1(entry.caption.english)), page->window(), self});
    }
    return props->SetSetupPages(pages);
}

HRESULT CMcTaskAddIn::onSetupButton(DoxCmd &cmd)
{
    if (cmd.comment != QLatin1String("OK"))
        return S_OK;
    const auto props = queryInterface<IDoxTaskProperties>(cmd.extra);
    if (!props)
        return E_POINTER;

    if (m_menuPage) {
        const HRESULT hr = m_menuPage->save(*props);
        if (failed(hr))
            return hr;
        if (hr == S_FALSE) {
            cmd.cancel = -1;
            cmd.comment = text(AddInText::MenuCommand, QStringLiteral("Menu Command"));
            return S_OK;
        }
    }

    // The kind's own pages; their results do not reach the host, the menu
    // command is published whatever they returned.
    if (m_taskType == TaskTypeConvert) {
        if (m_conversionPage && m_conversionPage->save(*props) == S_OK && m_fileCardPage
            && m_fileCardPage->save(*props) == S_OK && m_outputDetailsPage)
            m_outputDetailsPage->save(*props);
    } else if (m_taskType == TaskTypePrint) {
        savePrintPages(cmd, *props);
    } else if (m_taskType == TaskTypeScript) {
        if (m_scriptPage)
            m_scriptPage->save(*props);
    }
    return publishMenuCommand(*props);
}

HRESULT CMcTaskAddIn::savePrintPages(DoxCmd &cmd, IDoxTaskProperties &props)
{
    const struct {
        TaskPage *page;
        std::int32_t caption;
        const char *english;
    } printPages[] = {
        {m_printerPage.get(), AddInText::Printer, "Printer"},
        {m_paperPage.get(), AddInText::PaperSize, "Paper Size and Orientation"},
        {m_marginsPage.get(), AddInText::Margins, "Margins"},
        {m_filesPage.get(), AddInText::Files, "Files"},
    };
    for (const auto &p : printPages) {
        if (p.page && !p.page->takeControlValues()) {
            cmd.cancel = -1;
            cmd.comment = text(p.caption, QString::fromLatin1(p.english));
            return S_FALSE;
        }
    }
    for (const auto &p : printPages) {
        if (!p.page)
            continue;
        if (const HRESULT hr = p.page->save(props); failed(hr))
            return hr;
    }
    return S_OK;
}

HRESULT CMcTaskAddIn::publishMenuCommand(IDoxTaskProperties &props)
{
    std::vector<TaskMenuCommand> commands;
    if (m_menuPage && m_menuPage->displayMenuCommand()) {
        // The kind as the pages have just stored it: the Script page may
        // have changed it since the set-up began.
        std::int32_t kind = m_taskType;
        if (const HRESULT hr = readIntVariable(props, TaskKeys::Type, m_taskType, kind); failed(hr))
            return hr;
        commands.push_back({kind, m_menuPage->menuText(), TaskMenuCommandFlags, m_menuPage->statusBarHelp()});
    }
    return props.SetMenuCommands(commands);
}

HRESULT CMcTaskAddIn::onDetails(DoxCmd &cmd, const std::shared_ptr<IDoxVault> &vault)
{
    if (!cmd.extra)
        return E_POINTER;
    const auto instance = queryInterface<IDoxTaskInstance>(cmd.extra);
    if (!instance)
        return E_NOINTERFACE;
    std::int32_t status = 0;
    if (const HRESULT hr = instance->GetStatus(status); failed(hr))
        return hr;
    const bool finished = isFinishedStatus(status);
    if (const HRESULT hr = readTaskType(*instance); failed(hr))
        return hr;

    PageContext context;
    context.vault = vault;
    context.taskType = m_taskType;
    context.instance = instance;
    context.finished = finished;
    m_detailsPage = m_services.pages->createPage(PageId::Details, context);
    if (!m_detailsPage)
        return E_PAGE_MISSING;
    const HostWindow window = m_detailsPage->create(cmd.window);

    QString caption;
    if (finished && m_taskType == TaskTypeConvert)
        caption = text(AddInText::ConvertedFiles, QStringLiteral("Converted Files"));
    else if (finished && m_taskType == TaskTypePrint)
        caption = text(AddInText::PrintedFiles, QStringLiteral("Printed Files"));
    else
        caption = text(AddInText::SelectedFiles, QStringLiteral("Selected Files"));
    cmd.comment = caption;
    cmd.extra = shared_from_this();
    cmd.window = window;
    return S_OK;
}

HRESULT CMcTaskAddIn::onLaunch(DoxCmd &cmd, DoxCmdDataArray &data, const std::shared_ptr<IDoxVault> &vault)
{
    if (!vault || !cmd.extra)
        return E_POINTER;
    const auto instance = queryInterface<IDoxTaskInstance>(cmd.extra);
    if (!instance)
        return E_NOINTERFACE;
    QString root;
    if (const HRESULT hr = vault->GetRootFolderPath(root); failed(hr))
        return hr;

    if (data.empty()) {
        const HRESULT hr = m_services.launchDialogs->runSelectionDialog(cmd.window, vault, root, data);
        if (failed(hr))
            return hr;
        cmd.cancel = hr == S_OK ? 0 : -1;
    }

    if (const HRESULT hr = readTaskType(*instance); failed(hr))
        return hr;

    if (m_taskType == TaskTypeConvert) {
        PageContext context;
        context.vault = vault;
        context.taskType = m_taskType;
        context.launchMode = true;
        m_conversionPage = m_services.pages->createConversionSettingsPage(context);
        if (!m_conversionPage)
            return E_PAGE_MISSING;
        const HostWindow window = m_conversionPage->create(cmd.window);
        if (const HRESULT hr = m_conversionPage->load(*instance); failed(hr))
            return hr;
        if (m_conversionPage->hasLaunchPrompt()) {
            cmd.window = window;
            cmd.comment = text(AddInText::ConversionSettings, QStringLiteral("Conversion Settings"));
            cmd.extra = shared_from_this();
        }
    } else if (m_taskType == TaskTypePrint && cmd.cancel == 0) {
        bool show = true;
        if (const HRESULT hr = readBoolVariable(*instance, TaskKeys::PrinterShowPrintDlg, true, show); failed(hr))
            return hr;
        if (!m_services.launchDialogs->runPrintLaunchDialog(vault, cmd, data, show))
            cmd.cancel = -1;
    }

    if (cmd.cancel == 0) {
        if (const HRESULT hr = m_services.selectionStore->storeSelection(vault, instance, data); failed(hr))
            return hr;
    }
    return S_OK;
}

HRESULT CMcTaskAddIn::onLaunchButton(DoxCmd &cmd)
{
    if (cmd.comment != QLatin1String("OK"))
        return S_OK;
    const auto instance = queryInterface<IDoxTaskInstance>(cmd.extra);
    if (!instance)
        return E_POINTER;
    if (m_taskType == TaskTypeConvert && m_conversionPage)
        return m_conversionPage->save(*instance);
    return S_OK;
}

HRESULT CMcTaskAddIn::onRun(DoxCmd &cmd, DoxCmdDataArray &data, const std::shared_ptr<IDoxVault> &vault)
{
    const auto instance = queryInterface<IDoxTaskInstance>(cmd.extra);
    if (!instance)
        return E_POINTER;
    if (const HRESULT hr = readTaskType(*instance); failed(hr))
        return hr;

    RunDriver &driver = *m_services.runDriver;
    HRESULT result = E_UNEXPECTED;
    {
        const StartupAddInsOff startupAddInsOff(driver);
        result = hostCall([&] { return driver.run(vault, instance, cmd, data); });
    }

    if (result == S_FALSE)
        cmd.cancel = -1;
    const HRESULT reported = driver.finish(instance, result);
    return failed(result) ? result : reported;
}
