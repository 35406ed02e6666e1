#include "macro/macrobuilder.h"

#include "settings/tasksettings.h"
#include "host/hosterror.h"
#include "host/idoxtask.h"
#include "host/idoxvault.h"
#include "base/codepage.h"
#include "macro/dateformat.h"
#include "macro/expanddelimited.h"
#include "macro/macroliteral.h"
#include "macro/vaultdatestyle.h"
#include "platform/clock.h"
#include "platform/drivemap.h"
#include "platform/filesystem.h"
#include "base/windowspath.h"

namespace {

const QString kOutputPath = QStringLiteral("OutputPath");
const QString kOutputPath2 = QStringLiteral("OutputPath2");
const QString kErrorLogPath = QStringLiteral("ErrorLogPath");

// The file placeholders in the order they are replaced.
constexpr std::array<QLatin1StringView, 9> kFilePlaceholders = {
    QLatin1StringView("<Filepath>"),     QLatin1StringView("<Path>"),     QLatin1StringView("<VaultPath>"),
    QLatin1StringView("<TaskInstanceGuid>"), QLatin1StringView("<SelCfgOrSheet>"), QLatin1StringView("<Revision>"),
    QLatin1StringView("<Version>"),      QLatin1StringView("<WorkflowState>"), QLatin1StringView("<Today>")};

bool isAsciiLetter(QChar c)
{
    return (c >= QLatin1Char('a') && c <= QLatin1Char('z')) || (c >= QLatin1Char('A') && c <= QLatin1Char('Z'));
}

bool usesVersionInfo(const QString &pattern)
{
    return pattern.contains(QLatin1String("<Revision>")) || pattern.contains(QLatin1String("<WorkflowState>"));
}

QString withoutTrailingBackslash(const QString &path)
{
    return path.endsWith(QLatin1Char('\\')) ? path.left(path.size() - 1) : path;
}

// Creates every folder of a Windows file path from the root down (a
// separator right after a drive colon does not end a folder). True when the
// file's own folder did not exist before.
bool createFoldersOf(const QString &windowsPath)
{
    FileSystem &fs = FileSystem::instance();
    const DriveMap &drives = DriveMap::instance();
    bool lastCreated = false;
    for (qsizetype i = 1; i < windowsPath.size(); ++i) {
        if (!WindowsPath::isSeparator(windowsPath[i]) || windowsPath[i - 1] == QLatin1Char(':'))
            continue;
        const QString native = drives.toNative(windowsPath.left(i));
        lastCreated = !native.isEmpty() && !fs.exists(native) && fs.mkpath(native);
    }
    return lastCreated;
}

} // namespace

MacroBuilder::MacroBuilder(VaultDateStyleLookup dateStyle) : m_dateStyle(std::move(dateStyle))
{
    if (!m_dateStyle)
        m_dateStyle = [](const QString &vaultName) { return GetVaultDateStyle(vaultName); };
}

void MacroBuilder::Prepare(const std::shared_ptr<IDoxVault> &vault,
                           const std::shared_ptr<IDoxTaskInstance> &taskInstance, const QString &scriptText)
{
    if (!vault || !taskInstance)
        throw HostError(E_POINTER, QStringLiteral("MacroBuilder::Prepare"));
    m_vault = vault;
    m_taskInstance = taskInstance;
    m_macroText = scriptText;

    IDoxTaskInstance &instance = *m_taskInstance;
    m_macroText = ExpandDelimited(m_macroText, QLatin1Char('{'), QLatin1Char('}'), [&](const QString &name) {
        return lookupTaskValue(name, [&](const Variant &key) -> std::optional<Variant> {
            Variant value;
            const HRESULT hr = throwIfFailed(instance.GetTaskValue(key, value), QStringLiteral("GetTaskValue"));
            return hr == S_OK ? std::optional<Variant>(value) : std::nullopt;
        });
    });
    m_macroText = ExpandDelimited(m_macroText, QLatin1Char('['), QLatin1Char(']'),
                                  [&](const QString &name) -> std::optional<Variant> {
                                      Variant value;
                                      const HRESULT hr = throwIfFailed(instance.GetVariable(name, value),
                                                                       QStringLiteral("GetVariable ") + name);
                                      return hr == S_OK ? std::optional<Variant>(value) : std::nullopt;
                                  });

    throwIfFailed(m_vault->GetRootFolderPath(m_vaultPath), QStringLiteral("GetRootFolderPath"));
    throwIfFailed(instance.GetInstanceGuid(m_taskInstanceGuid), QStringLiteral("GetInstanceGuid"));
    QString vaultName;
    throwIfFailed(m_vault->GetName(vaultName), QStringLiteral("GetName"));

    m_needsVersionInfo = usesVersionInfo(getTextVariable(instance, kOutputPath))
                         || usesVersionInfo(getTextVariable(instance, kOutputPath2));

    m_vaultPath = withoutTrailingBackslash(m_vaultPath);
    m_today = todayText(Clock::instance().now(), m_dateStyle(vaultName));
    indexFilePlaceholders();
}

void MacroBuilder::indexFilePlaceholders()
{
    m_spots.clear();
    m_onePassSafe = true;
    const QStringView text(m_macroText);
    for (qsizetype pos = text.indexOf(QLatin1Char('<')); pos >= 0; pos = text.indexOf(QLatin1Char('<'), pos + 1)) {
        const QStringView rest = text.mid(pos);
        for (int i = 0; i < static_cast<int>(kFilePlaceholders.size()); ++i) {
            if (!rest.startsWith(kFilePlaceholders[i]))
                continue;
            if (pos > 0 && (text[pos - 1] == QLatin1Char('<') || isAsciiLetter(text[pos - 1])))
                m_onePassSafe = false;
            m_spots.push_back({pos, kFilePlaceholders[i].size(), i});
            pos += kFilePlaceholders[i].size() - 1;
            break;
        }
    }
}

void MacroBuilder::SetFile(const QString &path, const QString &cfgOrSheet, std::int32_t fileId,
                           std::int32_t folderId, std::int32_t versionNumber)
{
    m_filePath = path;
    const QString name = WindowsPath::fileName(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot >= 0) {
        qsizetype first = dot;
        while (first < name.size() && name[first] == QLatin1Char('.'))
            ++first;
        m_extension = name.mid(first);
        m_fileName = name.left(dot);
    } else {
        m_extension.clear();
        m_fileName = name;
    }
    const qsizetype slash = path.lastIndexOf(QLatin1Char('\\'));
    if (slash < 0)
        m_folderPath.clear();
    else if (slash == 2 && path.size() > 1 && path[1] == QLatin1Char(':'))
        m_folderPath = path.left(3); // a file in a drive's root keeps "C:\"
    else
        m_folderPath = path.left(slash);
    m_cfgOrSheet = cfgOrSheet;
    m_fileId = fileId;
    m_folderId = folderId;
    m_versionNumber = versionNumber;
    m_versionText = QString::number(versionNumber);

    if (!m_needsVersionInfo)
        return;
    if (!m_vault)
        throw HostError(E_UNEXPECTED, QStringLiteral("MacroBuilder::SetFile before Prepare"));
    std::shared_ptr<IDoxFile> file;
    std::shared_ptr<IDoxFolder> folder;
    const HRESULT hr = throwIfFailed(m_vault->GetFileFromPath(m_filePath, file, folder),
                                     QStringLiteral("GetFileFromPath ") + m_filePath);
    if (hr != S_OK || !file)
        throw HostError(E_DOX_FILE_NOT_FOUND, QStringLiteral("GetFileFromPath ") + m_filePath);
    DoxVersionInfo info;
    throwIfFailed(file->GetVersionInfo(m_versionNumber, m_folderId, info), QStringLiteral("GetVersionInfo"));
    m_revision = info.revision;
    m_workflowState = info.stateName;
}

std::array<QString, 9> MacroBuilder::fileValues() const
{
    return {EncodeMacroLiteral(m_filePath),   EncodeMacroLiteral(m_folderPath), EncodeMacroLiteral(m_vaultPath),
            m_taskInstanceGuid,               EncodeMacroLiteral(m_cfgOrSheet), EncodeMacroLiteral(m_revision),
            m_versionText,                    EncodeMacroLiteral(m_workflowState), m_today};
}

QString MacroBuilder::BuildFileMacro() const
{
    const std::array<QString, 9> values = fileValues();

    // A value holding "<" or ">" may form or be a later placeholder.
    bool onePass = m_onePassSafe;
    for (std::size_t i = 0; onePass && i + 1 < values.size(); ++i)
        onePass = !values[i].contains(QLatin1Char('<')) && !values[i].contains(QLatin1Char('>'));

    if (!onePass) {
        QString macro = m_macroText;
        for (std::size_t i = 0; i < values.size(); ++i)
            macro.replace(kFilePlaceholders[i], values[i]);
        return macro;
    }

    qsizetype size = m_macroText.size();
    for (const PlaceholderSpot &spot : m_spots)
        size += values[static_cast<std::size_t>(spot.placeholder)].size() - spot.length;
    QString macro;
    macro.reserve(size);
    qsizetype copied = 0;
    for (const PlaceholderSpot &spot : m_spots) {
        macro.append(QStringView(m_macroText).mid(copied, spot.position - copied));
        macro.append(values[static_cast<std::size_t>(spot.placeholder)]);
        copied = spot.position + spot.length;
    }
    macro.append(QStringView(m_macroText).mid(copied));
    return macro;
}

QString MacroBuilder::GetErrorLogFile() const
{
    if (!m_taskInstance)
        throw HostError(E_UNEXPECTED, QStringLiteral("MacroBuilder::GetErrorLogFile before Prepare"));
    QString path = withoutTrailingBackslash(m_vaultPath);
    const QString folder = getTextVariable(*m_taskInstance, kErrorLogPath);
    if (!folder.isEmpty())
        path = WindowsPath::append(path, folder);
    return WindowsPath::append(path, m_taskInstanceGuid) + QLatin1String(".log");
}

void MacroBuilder::AppendErrorLog(const QString &text) const
{
    const QString file = GetErrorLogFile();
    QString content = text;
    content.replace(QLatin1Char('\n'), QLatin1String("\r\n")); // text mode
    const QByteArray bytes = encodeWindows1252(content);

    FileSystem &fs = FileSystem::instance();
    const QString native = DriveMap::instance().toNative(file);
    if (!native.isEmpty() && fs.append(native, bytes))
        return;
    if (createFoldersOf(file) && !native.isEmpty())
        fs.append(native, bytes);
}

bool MacroBuilder::ReportHostError(HRESULT errorCode, const QString &message) const
{
    if (!m_vault)
        return false;
    QString name;
    QString description;
    if (m_vault->GetErrorInfo(errorCode, name, description) != S_OK)
        return false;
    // Written through the text mode of AppendErrorLog, so each line feed
    // lands in the file as CR LF.
    AppendErrorLog(QStringLiteral("An error occured: ") + message + QLatin1String("\n\t") + name
                   + QLatin1String("\n\t") + description);
    return true;
}
