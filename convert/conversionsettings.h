#pragma once

#include "common/translator.h"
#include "host/hresult.h"

#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>
#include <vector>

class IDoxVariables;

// The task variables of the conversion settings and its two template tabs.
namespace ConversionKeys {
inline const QString FileFormat = QStringLiteral("FileFormat");
inline const QString SourceRefs = QStringLiteral("SourceRefs");
inline const QString PromptOutput = QStringLiteral("PromptOutput");
inline const QString OutputPath = QStringLiteral("OutputPath");
inline const QString OutputConfs = QStringLiteral("OutputConfs");
inline const QString NamedConf = QStringLiteral("NamedConf");
inline const QString FileConfs = QStringLiteral("FileConfs");
inline const QString OutputSheets = QStringLiteral("OutputSheets");
inline const QString NamedSheet = QStringLiteral("NamedSheet");
inline const QString FileSheets = QStringLiteral("FileSheets");
} // namespace ConversionKeys

// Every key the conversion settings page and its tabs write, in save order.
QStringList conversionSettingKeys();


// One entry of the output format list: its format index and display text.
struct OutputFormatEntry {
    std::int32_t index = 0;
    QString text;
};

// The extension an example line ends in: for the prompt ".pdf", otherwise
// the entry text from after its first "*" up to its first ";" or ")".
QString formatExtension(const OutputFormatEntry &format);

// The output path template with the placeholders replaced by sample values
// (a part "Part" in the vault's root, configuration "Default", revision
// "A1", version 1, state "Approved"); the extension follows a non-empty text.
QString examplePath(const QString &pathTemplate, const QString &vaultRoot, const QString &today,
                    const QString &extension);

// An absolute path inside the vault becomes a vault-relative template: a
// leading vault root (any letter case) turns into "<VaultPath>". The text is
// returned unchanged otherwise.
QString withVaultPathPlaceholder(const QString &pathTemplate, const QString &vaultRoot);

// The output formats in list order, with the texts of text (the add-in's own
// when empty); "<Prompt the user>" (index 0) first only when withPrompt.
std::vector<OutputFormatEntry> outputFormatList(bool withPrompt, const TextLookup &text);

// Bits of "SourceRefs", "OutputConfs"/"OutputSheets" and "FileConfs"/"FileSheets".
namespace ConversionBits {
inline constexpr std::int32_t RefReferenced = 1;
inline constexpr std::int32_t RefLatest = 2;
inline constexpr std::int32_t RefUserMayChange = 4;
inline constexpr std::int32_t UserMayChange = 1;
inline constexpr std::int32_t OutputAll = 2;
inline constexpr std::int32_t OutputLastActive = 4;
inline constexpr std::int32_t OutputNamed = 8;
inline constexpr std::int32_t FileAllInOne = 2;
inline constexpr std::int32_t FileOnePerItem = 4;
} // namespace ConversionBits

// The values of one template tab: which configurations (or sheets) are
// converted, and whether they go into one file or one file each.
class TemplateTabValues final
{
public:
    struct Keys {
        QString output;
        QString named;
        QString file;
        std::vector<std::int32_t> multiOutputFormats;
    };
    static Keys configurationKeys();
    static Keys sheetKeys();

    TemplateTabValues(Keys keys, bool launchMode, QString defaultPattern);

    HRESULT load(IDoxVariables &holder);
    HRESULT save(IDoxVariables &holder) const;
    void setFormat(std::int32_t formatIndex) { m_format = formatIndex; }
    bool multiOutput() const;

    // Launch mode: what the administrator left open.
    bool outputOpen() const { return m_outputOpen; }
    bool fileOpen() const { return m_fileOpen; }
    bool hasUserChoices() const { return m_outputOpen || (m_fileOpen && multiOutput()); }
    const Keys &keys() const { return m_keys; }

    std::int32_t output = ConversionBits::OutputAll;
    QString pattern;
    bool allowOutput = true;
    std::int32_t file = ConversionBits::FileOnePerItem;
    bool allowFile = true;

private:
    Keys m_keys;
    bool m_launchMode;
    std::int32_t m_format = 0;
    bool m_outputOpen = false;
    bool m_fileOpen = false;
};

// The values of the conversion settings page: the output format, the output
// path (launch only), the source-reference choice and the two tabs. In
// launch mode Load also decides which sections the administrator left open
// to the user.
class ConversionSettingsValues final
{
public:
    // text: where the format names and "Default" come from (the add-in's own
    // texts when empty), as the page shows them.
    ConversionSettingsValues(bool launchMode, TextLookup text);

    HRESULT load(IDoxVariables &holder);
    HRESULT save(IDoxVariables &holder) const;

    bool launchMode() const { return m_launchMode; }
    const std::vector<OutputFormatEntry> &formats() const { return m_formats; }
    // Selects the entry whose text equals text, ignoring case; false (and
    // nothing changed) when there is none.
    bool selectFormat(const QString &text);
    const OutputFormatEntry &selectedFormat() const { return m_formats.at(m_selected); }
    QString currentExtension() const { return formatExtension(selectedFormat()); }
    // Launch mode: whether the administrator left each section open.
    bool formatOpen() const { return m_formatOpen; }
    bool referencesOpen() const { return m_launchMode && allowRefChange; }

    // Launch mode: whether the page has anything to ask, and the keys the
    // user may change (those of the open sections).
    bool hasUserChoices() const;
    QStringList openKeys() const;

    // Launch mode, after Load: whether the page would let the user give key
    // the (text of) value. The option keys of the formats follow the format
    // section; a format must be one of the list's entries.
    enum class LaunchChoice { NotOwned, Offered, Fixed, NotOffered };
    LaunchChoice launchChoice(const QString &key, const QString &value) const;

    bool referencedVersions = false; // else the latest versions
    bool allowRefChange = true;
    bool promptOutput = true;
    QString outputPath;
    TemplateTabValues configurations;
    TemplateTabValues sheets;

private:
    bool m_launchMode;
    std::vector<OutputFormatEntry> m_formats;
    std::size_t m_selected = 0;
    bool m_userChoices = false;
    bool m_formatOpen = false;
};
