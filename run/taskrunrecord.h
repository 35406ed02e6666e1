#pragma once

#include "host/doxcmd.h"
#include "host/hresult.h"
#include "run/filerecord.h"

#include <QSet>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

class IDoxTaskInstance;
class IDoxVariables;
class IDoxVault;

// The file list of one launch or run, owned by the add-in object: at launch
// the selection, during a run the outputs, error logs and print entries in
// the order they appeared. Local files are reached through the process-wide
// FileSystem and DriveMap.
class TaskRunRecord final
{
public:
    // Tells the vault client that a local file is being replaced (code 1).
    using VaultClientNotifier = std::function<void(std::int32_t code, const QString &path)>;

    TaskRunRecord() = default;

    // Empties the list and the current source, keeps vault, type and flag,
    // and reads the vault root; a failure to read it is returned.
    HRESULT start(std::shared_ptr<IDoxVault> vault, std::int32_t taskType, bool replaceOutput);
    // Empties the list and the current source; the rest stays.
    void reset();

    void setVaultClientNotifier(VaultClientNotifier notifier) { m_notify = std::move(notifier); }

    void setCurrentSource(std::shared_ptr<FileRecord> source) { m_currentSource = std::move(source); }
    const std::shared_ptr<FileRecord> &currentSource() const { return m_currentSource; }

    // A file the CAD application is about to save (or the task's error log).
    // Repeated saves of one path, in any letter case, give one record.
    // Vault failures drop the record; nothing is thrown.
    void registerOutput(const QString &path, const QString &conf, bool isErrorLog);
    void registerPrintEntry(const QString &info, const QString &conf);
    // Appends a record as it is (the error log once it is in the vault).
    void appendRecord(FileRecord record);

    // Launch: the data array's records become the list and go to
    // "__selection_list". Failures are returned.
    HRESULT storeSelection(const std::shared_ptr<IDoxVault> &vault, IDoxTaskInstance &instance,
                           const DoxCmdDataArray &data);
    // The list is replaced by copies of selected and written as "__selection_list".
    HRESULT storeSelectionList(IDoxVariables &instance, const std::vector<FileRecord> &selected);
    // The list is written as "__output_list" ("extra" after the task type).
    // Both writers return E_INVALIDARG, writing nothing, when a value cannot
    // be carried by XML.
    HRESULT storeOutputList(IDoxVariables &instance) const;
    // "__output_list" or "__selection_list": S_FALSE when absent and a host
    // error unchanged, both with an empty list; text that is not well-formed
    // XML gives an empty list and S_OK.
    static HRESULT readList(IDoxVariables &instance, bool outputList, std::vector<FileRecord> &records);

    // Records that are not print entries, lie in the vault tree (or
    // includeAll), are no error logs (unless includeErrorLogs) and whose
    // file exists.
    int countOutputs(bool includeErrorLogs, bool includeAll) const;
    // An error log record whose file exists.
    bool hasErrors() const;

    // Whether a file (not a folder) exists at a Windows path.
    static bool fileExists(const QString &windowsPath);

    // Whether a path starts with the vault root, in any letter case.
    bool isInVaultTree(const QString &path) const;

    const std::vector<FileRecord> &records() const { return m_records; }
    // For the vault hand-over, which updates ids and flags in place; paths
    // must not be changed through it.
    std::vector<FileRecord> &records() { return m_records; }
    const std::shared_ptr<IDoxVault> &vault() const { return m_vault; }
    const QString &vaultRoot() const { return m_vaultRoot; }
    std::int32_t taskType() const { return m_taskType; }
    bool replaceOutput() const { return m_replaceOutput; }

private:
    HRESULT storeList(IDoxVariables &instance, const QString &key) const;
    void notify(const QString &path) const;
    static void removeLocalFile(const QString &windowsPath);
    void resetIndex();
    void indexRecord(const FileRecord &record);

    std::vector<FileRecord> m_records;
    // Case-folded paths of the outputs and error logs in m_records.
    QSet<QString> m_outputPaths;
    std::shared_ptr<FileRecord> m_currentSource;
    std::shared_ptr<IDoxVault> m_vault;
    QString m_vaultRoot;
    std::int32_t m_taskType = 3;
    bool m_replaceOutput = false;
    VaultClientNotifier m_notify;
};
