#pragma once

#include "host/doxcmd.h"
#include "host/idoxtask.h"

#include <memory>

class IDoxVault;

// What a command answers when the page it needs is not part of this build.
inline constexpr HRESULT E_PAGE_MISSING = E_NOTIMPL;

// Dialog template numbers of the pages and dialogs the dispatcher creates.
enum class PageId : std::int32_t {
    Script = 103,
    ConversionSettings = 105,
    FileCard = 106,
    OutputFileDetails = 107,
    Details = 119,
    Printer = 202,
    PaperSize = 203,
    Margins = 204,
    PrintFiles = 205,
    MenuCommand = 212,
};

// A set-up or launch page: it owns its values and its load, validation and
// save; its window is created on demand as a child of the host's window.
class TaskPage
{
public:
    virtual ~TaskPage() = default;

    virtual HostWindow create(HostWindow parent) = 0;
    virtual HostWindow window() const = 0;
    virtual HRESULT load(IDoxVariables &holder) = 0;
    // 0 saved, 1 input refused (nothing written), negative host failure.
    virtual HRESULT save(IDoxVariables &holder) = 0;
    // Takes the values over from the controls; false when they are not valid.
    virtual bool takeControlValues() { return true; }
};

class MenuCommandPage : public TaskPage
{
public:
    virtual bool displayMenuCommand() const = 0;
    virtual QString menuText() const = 0;
    virtual QString statusBarHelp() const = 0;
};

class ConversionSettingsPage : public TaskPage
{
public:
    // In launch mode: whether the page has anything to ask the user.
    virtual bool hasLaunchPrompt() const = 0;
    // The extension of the chosen format, for the example lines of paths.
    virtual QString currentExtension() const = 0;
};

// What a page needs to be built.
struct PageContext {
    std::shared_ptr<IDoxVault> vault;
    // The host's task of a set-up; the host holds it, and it holds the pages.
    std::weak_ptr<IDoxTaskProperties> properties;
    ConversionSettingsPage *conversionPage = nullptr; // the set-up's, for the pages after it
    std::int32_t taskType = 3;
    bool launchMode = false;                    // conversion settings shown at launch
    std::shared_ptr<IDoxTaskInstance> instance; // details page
    bool finished = false;                      // details page
};

// Builds the pages of every task kind; the dispatcher decides which and when.
class PageFactory
{
public:
    virtual ~PageFactory() = default;
    virtual std::unique_ptr<MenuCommandPage> createMenuCommandPage(const PageContext &context) = 0;
    virtual std::unique_ptr<ConversionSettingsPage> createConversionSettingsPage(const PageContext &context) = 0;
    virtual std::unique_ptr<TaskPage> createPage(PageId id, const PageContext &context) = 0;
};
