#include "macro/outputnames.h"

#include "settings/tasksettings.h"
#include "common/translator.h"

const std::vector<OutputPlaceholder> &outputPathPlaceholders()
{
    static const std::vector<OutputPlaceholder> placeholders = {
        {QStringLiteral("<Filename>"), 23, QStringLiteral("Source File Name")},
        {QStringLiteral("<Extension>"), 24, QStringLiteral("Source File Extension")},
        {QStringLiteral("<Configuration>"), 25, QStringLiteral("Configuration Name")},
        {QStringLiteral("<Path>"), 26, QStringLiteral("Source Folder Path")},
        {QStringLiteral("<VaultPath>"), 27, QStringLiteral("Vault Root Folder Path")},
        {QStringLiteral("<Revision>"), 130, QStringLiteral("Source File Revision")},
        {QStringLiteral("<Version>"), 131, QStringLiteral("Source File Version")},
        {QStringLiteral("<WorkflowState>"), 132, QStringLiteral("Source File Workflow State")},
        {QStringLiteral("<Today>"), 133, QStringLiteral("Todays Date")},
    };
    return placeholders;
}

OutputLabels OutputLabels::read(IDoxVariables &variables, TextLookup text)
{
    if (!text)
        text = [](std::int32_t number, const QString &english) { return tr_ts(number, english); };
    OutputLabels labels;
    Choice &sheets = labels.m_sheets;
    sheets.fileMode = getIntVariable(variables, QStringLiteral("FileSheets"), sheets.fileMode);
    sheets.output = getIntVariable(variables, QStringLiteral("OutputSheets"), sheets.output);
    sheets.pattern = getTextVariable(variables, QStringLiteral("NamedSheet"));
    sheets.allText = text(kAllSheetsTextId, QStringLiteral("All sheets"));

    Choice &confs = labels.m_configurations;
    confs.fileMode = getIntVariable(variables, QStringLiteral("FileConfs"), confs.fileMode);
    confs.output = getIntVariable(variables, QStringLiteral("OutputConfs"), confs.output);
    confs.pattern = getTextVariable(variables, QStringLiteral("NamedConf"));
    confs.allText = text(kAllConfigurationsTextId, QStringLiteral("All configurations"));
    return labels;
}

QString OutputLabels::label(const Choice &choice, const QString &name)
{
    if (choice.fileMode & kOneFileEach)
        return name;
    if (choice.output & kOutputAll)
        return choice.allText;
    if (choice.output & kOutputNamed)
        return choice.pattern;
    return name;
}

QString OutputLabels::SheetLabel(const QString &sheetName) const
{
    return label(m_sheets, sheetName);
}

QString OutputLabels::ConfigurationLabel(const QString &configurationName) const
{
    return label(m_configurations, configurationName);
}
