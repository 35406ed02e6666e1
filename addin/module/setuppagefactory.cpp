#include "addin/module/setuppagefactory.h"

#include "addin/menucommanddlg.h"
#include "convert/conversionsettingspage.h"
#include "convert/filecardpagedlg.h"
#include "convert/outputfiledetailspagedlg.h"
#include "print/printpages.h"
#include "script/scriptpagedlg.h"

SetupPageFactory::SetupPageFactory(TextLookup text) : m_text(std::move(text))
{
    add(PageId::Script, [this](const PageContext &context) {
        return std::make_unique<CScriptPageDlg>(true, context.taskType, m_text);
    });
    setConversionSettings([this](const PageContext &context) {
        return std::make_unique<CConversionSettingsPageDlg>(context, m_text);
    });
    add(PageId::FileCard, [this](const PageContext &context) { return std::make_unique<CFileCardPageDlg>(context, m_text); });
    add(PageId::OutputFileDetails,
        [this](const PageContext &context) { return std::make_unique<COutputFileDetailsPageDlg>(context, m_text); });
    for (const PageId id : PrintSetupPages)
        add(id, [this, id](const PageContext &context) { return createPrintPage(id, context, m_text); });
}

std::unique_ptr<MenuCommandPage> SetupPageFactory::createMenuCommandPage(const PageContext &context)
{
    return std::make_unique<CMenuCommandDlg>(context.taskType, m_text);
}

std::unique_ptr<ConversionSettingsPage> SetupPageFactory::createConversionSettingsPage(const PageContext &context)
{
    return m_conversion ? m_conversion(context) : nullptr;
}

std::unique_ptr<TaskPage> SetupPageFactory::createPage(PageId id, const PageContext &context)
{
    const auto it = m_makers.find(id);
    return it == m_makers.end() ? nullptr : it->second(context);
}
