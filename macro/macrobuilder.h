#pragma once

#include "host/hresult.h"

#include <QString>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class IDoxTaskInstance;
class IDoxVault;

// The per-vault date style ("DateFmt") by vault name.
using VaultDateStyleLookup = std::function<std::int32_t(const QString &vaultName)>;

// Turns the task's macro text into one macro per file. Prepare fills the
// option placeholders ({...} from task values, [...] from task variables)
// once per run; per file, SetFile records the file's values and
// BuildFileMacro fills the file placeholders (<Filepath>, <Path>, ...) in a
// copy of the prepared text. It also owns the instance's error log.
// Failing host calls are thrown as HostError.
class MacroBuilder final
{
public:
    // dateStyle gives the vault's date style; when empty the machine
    // settings are asked (GetVaultDateStyle). "Now" comes from
    // Clock::instance(), files are reached through DriveMap::instance() and
    // FileSystem::instance().
    explicit MacroBuilder(VaultDateStyleLookup dateStyle = {});

    void Prepare(const std::shared_ptr<IDoxVault> &vault, const std::shared_ptr<IDoxTaskInstance> &taskInstance,
                 const QString &scriptText);
    void SetFile(const QString &path, const QString &cfgOrSheet, std::int32_t fileId, std::int32_t folderId,
                 std::int32_t versionNumber);
    QString BuildFileMacro() const;

    // The instance's log file (a Windows path): under "ErrorLogPath" (relative
    // to the vault root when relative), named by the instance's identifier.
    QString GetErrorLogFile() const;
    // Appends text to the log; a line feed becomes CR LF. Creates missing
    // folders once; writes nothing when the file still cannot be opened.
    void AppendErrorLog(const QString &text) const;
    // Appends the vault's name and description of errorCode after message;
    // nothing (and false) when the vault cannot describe the code.
    bool ReportHostError(HRESULT errorCode, const QString &message) const;

    // The prepared text and the values gathered so far.
    const QString &macroText() const { return m_macroText; }
    const QString &vaultPath() const { return m_vaultPath; }
    const QString &taskInstanceGuid() const { return m_taskInstanceGuid; }
    const QString &today() const { return m_today; }
    bool needsVersionInfo() const { return m_needsVersionInfo; }
    const QString &filePath() const { return m_filePath; }
    const QString &fileName() const { return m_fileName; }
    const QString &extension() const { return m_extension; }
    const QString &folderPath() const { return m_folderPath; }
    const QString &cfgOrSheet() const { return m_cfgOrSheet; }
    std::int32_t fileId() const { return m_fileId; }
    std::int32_t folderId() const { return m_folderId; }
    std::int32_t versionNumber() const { return m_versionNumber; }
    const QString &revision() const { return m_revision; }
    const QString &workflowState() const { return m_workflowState; }

private:
    // The file placeholders' values for the current file, in replacement order.
    std::array<QString, 9> fileValues() const;
    void indexFilePlaceholders();

    // Where the file placeholders stand in the prepared text, so that a
    // file's macro is built in one pass. Filled by Prepare.
    struct PlaceholderSpot {
        qsizetype position;
        qsizetype length;
        int placeholder;
    };

    std::shared_ptr<IDoxTaskInstance> m_taskInstance;
    std::shared_ptr<IDoxVault> m_vault;
    QString m_filePath;
    QString m_fileName;
    QString m_cfgOrSheet;
    QString m_extension;
    QString m_folderPath;
    QString m_vaultPath;
    QString m_taskInstanceGuid;
    QString m_macroText;
    std::int32_t m_fileId = 0;
    std::int32_t m_folderId = 0;
    std::int32_t m_versionNumber = 0;
    QString m_revision;
    QString m_versionText;
    QString m_workflowState;
    QString m_today;
    bool m_needsVersionInfo = false;

    std::vector<PlaceholderSpot> m_spots;
    // False when a placeholder stands right after "<" or a letter: a value
    // put there could complete a later placeholder, which only replacing one
    // placeholder after the other gets right.
    bool m_onePassSafe = true;
    VaultDateStyleLookup m_dateStyle;
};
