#pragma once

#include "addin/addinservices.h"
#include "addin/taskpage.h"

#include <functional>
#include <map>

// The module's pages: each page id has a maker; a page nobody made yet is
// missing (null), and the dispatcher reports that to the host. The pages of
// further kinds join with add().
class SetupPageFactory final : public PageFactory
{
public:
    using Maker = std::function<std::unique_ptr<TaskPage>(const PageContext &)>;
    using ConversionMaker = std::function<std::unique_ptr<ConversionSettingsPage>(const PageContext &)>;

    // With the set-up pages of every kind that has them: "Menu Command",
    // "Script", the pages of a convert task and those of a print task.
    explicit SetupPageFactory(TextLookup text);

    void add(PageId id, Maker maker) { m_makers[id] = std::move(maker); }
    void setConversionSettings(ConversionMaker maker) { m_conversion = std::move(maker); }

    std::unique_ptr<MenuCommandPage> createMenuCommandPage(const PageContext &context) override;
    std::unique_ptr<ConversionSettingsPage> createConversionSettingsPage(const PageContext &context) override;
    std::unique_ptr<TaskPage> createPage(PageId id, const PageContext &context) override;

private:
    TextLookup m_text;
    std::map<PageId, Maker> m_makers;
    ConversionMaker m_conversion;
};
