#include "convert/conversionsettings.h"

#include "settings/tasksettings.h"
#include "convert/convoptions.h"
#include "host/hostcall.h"
#include "host/hosterror.h"
#include "host/idoxtask.h"

#include <algorithm>
#include <optional>

namespace {

struct FormatText {
    std::int32_t index;
    std::int32_t textId;
    const char *english;
};

constexpr FormatText Formats[] = {
    {0, 57, "<Prompt the user>"},
    {1, 58, "Scene Markup (*.scnxml)"},
    {2, 59, "ACIS (*.sat)"},
    {3, 60, "Adobe Illustrator (*.ai)"},
    {4, 61, "Adobe PDF (*.pdf)"},
    {5, 62, "Adobe Photoshop (*.psd)"},
    {6, 63, "Korinth Graphics (*.kgr)"},
    {7, 64, "AutoCAD DXF (*.dxf)"},
    {8, 65, "AutoCAD DWG (*.dwg)"},
    {9, 66, "Glimpse (*.gprt; *.gasm; *.glmp)"},
    {10, 67, "ZPK-File (*.zpk)"},
    {11, 68, "HOOPS HSF (*.hsf)"},
    {12, 69, "IGES (*.igs)"},
    {13, 70, "JPEG (*.jpg)"},
    {14, 71, "Microsoft XAML (*.xaml)"},
    {15, 72, "Parasolid (*.x_t)"},
    {16, 73, "Parasolid Binary (*.x_b)"},
    {17, 142, "STEP (*.step)"},
    {18, 74, "STL (*.stl)"},
    {19, 75, "TIF (*.tif)"},
    {20, 76, "Universal 3D (*.u3d)"},
    {21, 77, "VDAFS (*.vda)"},
    {22, 78, "VRML (*.wrl)"},
};

constexpr std::int32_t DefaultTextId = 54;

// Reads an integer key; S_FALSE when absent. Host errors are thrown.
std::optional<std::int32_t> optionalInt(IDoxVariables &holder, const QString &key)
{
    std::int32_t value = 0;
    if (throwIfFailed(readIntVariable(holder, key, 0, value)) == S_FALSE)
        return std::nullopt;
    return value;
}

} // namespace

QString formatExtension(const OutputFormatEntry &format)
{
    if (format.index == 0)
        return QStringLiteral(".pdf");
    const qsizetype star = format.text.indexOf(QLatin1Char('*'));
    if (star < 0)
        return {};
    qsizetype end = format.text.indexOf(QLatin1Char(';'), star);
    if (end < 0)
        end = format.text.indexOf(QLatin1Char(')'), star);
    return format.text.mid(star + 1, end < 0 ? -1 : end - star - 1);
}

QString examplePath(const QString &pathTemplate, const QString &vaultRoot, const QString &today,
                    const QString &extension)
{
    static const std::pair<const char *, const char *> samples[] = {
        {"<Filename>", "Part"},     {"<Extension>", "mcdprt"}, {"<Configuration>", "Default"},
        {"<Revision>", "A1"},       {"<Version>", "1"},        {"<WorkflowState>", "Approved"},
    };
    QString example = pathTemplate;
    example.replace(QLatin1String("<Path>"), vaultRoot, Qt::CaseInsensitive);
    example.replace(QLatin1String("<VaultPath>"), vaultRoot, Qt::CaseInsensitive);
    for (const auto &[placeholder, sample] : samples)
        example.replace(QLatin1String(placeholder), QLatin1String(sample), Qt::CaseInsensitive);
    example.replace(QLatin1String("<Today>"), today, Qt::CaseInsensitive);
    if (!pathTemplate.isEmpty())
        example += extension;
    return example;
}

QString withVaultPathPlaceholder(const QString &pathTemplate, const QString &vaultRoot)
{
    if (vaultRoot.isEmpty() || !pathTemplate.startsWith(vaultRoot, Qt::CaseInsensitive))
        return pathTemplate;
    return QStringLiteral("<VaultPath>") + pathTemplate.mid(vaultRoot.size());
}

QStringList conversionSettingKeys()
{
    using namespace ConversionKeys;
    return {FileFormat, SourceRefs, OutputPath, OutputConfs, NamedConf, FileConfs, OutputSheets, NamedSheet, FileSheets};
}

std::vector<OutputFormatEntry> outputFormatList(bool withPrompt, const TextLookup &text)
{
    std::vector<OutputFormatEntry> list;
    for (const FormatText &format : Formats) {
        if (format.index == 0 && !withPrompt)
            continue;
        list.push_back({format.index, lookupText(text, format.textId, format.english)});
    }
    return list;
}

TemplateTabValues::Keys TemplateTabValues::configurationKeys()
{
    return {ConversionKeys::OutputConfs, ConversionKeys::NamedConf, ConversionKeys::FileConfs, {9, 0}};
}

TemplateTabValues::Keys TemplateTabValues::sheetKeys()
{
    return {ConversionKeys::OutputSheets, ConversionKeys::NamedSheet, ConversionKeys::FileSheets, {4, 9, 0}};
}

TemplateTabValues::TemplateTabValues(Keys keys, bool launchMode, QString defaultPattern)
    : pattern(std::move(defaultPattern)), m_keys(std::move(keys)), m_launchMode(launchMode)
{
}

bool TemplateTabValues::multiOutput() const
{
    const auto &formats = m_keys.multiOutputFormats;
    return std::find(formats.begin(), formats.end(), m_format) != formats.end();
}

HRESULT TemplateTabValues::load(IDoxVariables &holder)
{
    using namespace ConversionBits;
    return hostCall([&] {
        const auto storedOutput = optionalInt(holder, m_keys.output);
        if (storedOutput) {
            output = (*storedOutput & OutputNamed) ? OutputNamed : (*storedOutput & OutputLastActive) ? OutputLastActive
                                                                                                       : OutputAll;
            allowOutput = (*storedOutput & UserMayChange) != 0;
            if (output == OutputNamed)
                throwIfFailed(readTextVariable(holder, m_keys.named, pattern, pattern));
        } else {
            allowOutput = true;
        }
        const auto storedFile = optionalInt(holder, m_keys.file);
        if (storedFile) {
            file = (*storedFile & FileAllInOne) ? FileAllInOne : FileOnePerItem;
            allowFile = (*storedFile & UserMayChange) != 0;
        } else {
            allowFile = true;
        }
        // An absent key counts as left open.
        m_outputOpen = m_launchMode && allowOutput;
        m_fileOpen = m_launchMode && allowFile;
        return S_OK;
    });
}

HRESULT TemplateTabValues::save(IDoxVariables &holder) const
{
    using namespace ConversionBits;
    VariableSaver saver(holder);
    const std::int32_t outputBits = output == OutputNamed ? OutputNamed : output == OutputAll ? OutputAll : OutputLastActive;
    saver.integer(m_keys.output, outputBits + (allowOutput ? UserMayChange : 0));
    if (outputBits == OutputNamed)
        saver.text(m_keys.named, pattern);
    const std::int32_t fileBits =
        outputBits != OutputLastActive && multiOutput() && file == FileAllInOne ? FileAllInOne : FileOnePerItem;
    saver.integer(m_keys.file, fileBits + (allowFile ? UserMayChange : 0));
    return saver.result();
}

ConversionSettingsValues::ConversionSettingsValues(bool launchMode, TextLookup text)
    : configurations(TemplateTabValues::configurationKeys(), launchMode, lookupText(text, DefaultTextId, "Default")),
      sheets(TemplateTabValues::sheetKeys(), launchMode, lookupText(text, DefaultTextId, "Default")),
      m_launchMode(launchMode), m_formats(outputFormatList(!launchMode, text))
{
}

bool ConversionSettingsValues::selectFormat(const QString &text)
{
    for (std::size_t i = 0; i < m_formats.size(); ++i) {
        if (m_formats[i].text.compare(text, Qt::CaseInsensitive) == 0) {
            m_selected = i;
            configurations.setFormat(m_formats[i].index);
            sheets.setFormat(m_formats[i].index);
            return true;
        }
    }
    return false;
}

HRESULT ConversionSettingsValues::load(IDoxVariables &holder)
{
    using namespace ConversionBits;
    return hostCall([&] {
        m_userChoices = false;
        QString format;
        const bool formatStored = throwIfFailed(readTextVariable(holder, ConversionKeys::FileFormat, {}, format)) == S_OK;
        m_selected = 0;
        const bool matched = formatStored && selectFormat(format);
        if (!matched)
            selectFormat(m_formats.front().text);

        const auto refs = optionalInt(holder, ConversionKeys::SourceRefs);
        if (refs) {
            referencedVersions = (*refs & RefReferenced) != 0;
            allowRefChange = (*refs & RefUserMayChange) != 0;
        } else {
            allowRefChange = true;
        }
        if (m_launchMode) {
            throwIfFailed(readBoolVariable(holder, ConversionKeys::PromptOutput, true, promptOutput));
            throwIfFailed(readTextVariable(holder, ConversionKeys::OutputPath, outputPath, outputPath));
        }
        throwIfFailed(configurations.load(holder));
        throwIfFailed(sheets.load(holder));

        if (m_launchMode) {
            m_formatOpen = !matched;
            m_userChoices = m_formatOpen || promptOutput || allowRefChange;
        }
        return S_OK;
    });
}

bool ConversionSettingsValues::hasUserChoices() const
{
    return m_launchMode && (m_userChoices || configurations.hasUserChoices() || sheets.hasUserChoices());
}

QStringList ConversionSettingsValues::openKeys() const
{
    QStringList keys;
    if (!m_launchMode)
        return keys;
    if (m_formatOpen)
        keys << ConversionKeys::FileFormat;
    if (promptOutput)
        keys << ConversionKeys::OutputPath;
    if (allowRefChange)
        keys << ConversionKeys::SourceRefs;
    for (const TemplateTabValues *tab : {&configurations, &sheets}) {
        if (tab->outputOpen())
            keys << tab->keys().output << tab->keys().named;
        if (tab->fileOpen() && tab->multiOutput())
            keys << tab->keys().file;
    }
    return keys;
}

ConversionSettingsValues::LaunchChoice ConversionSettingsValues::launchChoice(const QString &key,
                                                                            const QString &value) const
{
    const bool optionKey = isConvOpKey(key);
    if (!optionKey && !conversionSettingKeys().contains(key, Qt::CaseInsensitive))
        return LaunchChoice::NotOwned;
    // The format's options are reached through the format section only.
    const QString section = optionKey ? ConversionKeys::FileFormat : key;
    if (!openKeys().contains(section, Qt::CaseInsensitive))
        return LaunchChoice::Fixed;
    if (key.compare(ConversionKeys::FileFormat, Qt::CaseInsensitive) == 0
        && std::none_of(m_formats.begin(), m_formats.end(), [&](const OutputFormatEntry &format) {
               return format.text.compare(value, Qt::CaseInsensitive) == 0;
           }))
        return LaunchChoice::NotOffered;
    return LaunchChoice::Offered;
}

HRESULT ConversionSettingsValues::save(IDoxVariables &holder) const
{
    using namespace ConversionBits;
    // Every option placeholder of the macro gets a value, whatever format is chosen.
    if (const HRESULT hr = storeAllFormatOptions(holder); failed(hr))
        return hr;
    VariableSaver saver(holder);
    saver.text(ConversionKeys::FileFormat, selectedFormat().text);
    saver.integer(ConversionKeys::SourceRefs,
                  (referencedVersions ? RefReferenced : RefLatest) + (allowRefChange ? RefUserMayChange : 0));
    if (m_launchMode)
        saver.text(ConversionKeys::OutputPath, outputPath);
    if (failed(saver.result()))
        return saver.result();
    if (const HRESULT hr = configurations.save(holder); failed(hr))
        return hr;
    return sheets.save(holder);
}
