#include "run/taskrunrecord.h"

#include "host/hosterror.h"
#include "host/idoxtask.h"
#include "host/idoxvault.h"
#include "platform/drivemap.h"
#include "platform/filesystem.h"
#include "base/windowspath.h"
#include "run/filelistxml.h"
#include "run/filerecordbuilder.h"

namespace {

const QString SelectionListKey = QStringLiteral("__selection_list");
const QString OutputListKey = QStringLiteral("__output_list");
constexpr std::int32_t FileReplacedCode = 1;

QString pathKey(const QString &canonicalPath)
{
    return canonicalPath.toCaseFolded();
}

} // namespace

void TaskRunRecord::reset()
{
    m_records.clear();
    resetIndex();
    m_currentSource.reset();
}

HRESULT TaskRunRecord::start(std::shared_ptr<IDoxVault> vault, std::int32_t taskType, bool replaceOutput)
{
    reset();
    m_vault = std::move(vault);
    m_taskType = taskType;
    m_replaceOutput = replaceOutput;
    m_vaultRoot.clear();
    if (!m_vault)
        return S_OK;
    QString root;
    const HRESULT hr = m_vault->GetRootFolderPath(root);
    if (failed(hr))
        return hr;
    m_vaultRoot = root;
    return S_OK;
}

void TaskRunRecord::registerOutput(const QString &path, const QString &conf, bool isErrorLog)
{
    if (path.isEmpty())
        return;
    const QString canonical = WindowsPath::canonicalize(path);
    if (m_outputPaths.contains(pathKey(canonical)))
        return;

    FileRecord record;
    record.path = canonical;
    record.conf = conf;
    record.source = m_currentSource;
    record.isErrorLog = isErrorLog;
    record.isCadDocument = isCadDocumentPath(canonical);
    record.inVaultTree = isInVaultTree(canonical);

    // The CAD application reports the save before it writes the file.
    if (m_vault) {
        std::shared_ptr<IDoxFile> file;
        std::shared_ptr<IDoxFolder> folder;
        if (m_vault->GetFileFromPath(canonical, file, folder) != S_OK || !file) {
            // Not in the vault: make room for a fresh file.
            removeLocalFile(canonical);
        } else {
            if (isErrorLog)
                return;
            std::int32_t folderId = 0;
            if (folder)
                folderId = folder->GetID();
            else if (failed(file->GetParentFolderId(folderId)))
                return;
            record.docId = file->GetID();
            record.projId = folderId;
            if (m_replaceOutput) {
                notify(canonical);
                if (failed(file->DeleteFromVault(folderId)))
                    return;
                record.docId = 0;
            } else {
                // Saved as the file's next version when checked in later.
                if (!file->IsLocked() && failed(file->LockFile(folderId)))
                    return;
                record.checkedOut = true;
            }
        }
    }

    if (record.docId == 0) {
        for (int i = 0; i < 3; ++i)
            notify(canonical);
    }
    indexRecord(record);
    m_records.push_back(std::move(record));
}

void TaskRunRecord::registerPrintEntry(const QString &info, const QString &conf)
{
    FileRecord record;
    record.info = info;
    record.conf = conf;
    record.source = m_currentSource;
    record.isPrintEntry = true;
    m_records.push_back(std::move(record));
}

void TaskRunRecord::appendRecord(FileRecord record)
{
    if (!record.isPrintEntry && (record.isErrorLog || record.source))
        indexRecord(record);
    m_records.push_back(std::move(record));
}

HRESULT TaskRunRecord::storeSelection(const std::shared_ptr<IDoxVault> &vault, IDoxTaskInstance &instance,
                                      const DoxCmdDataArray &data)
{
    std::vector<FileRecord> selected;
    try {
        selected = buildFileRecords(vault.get(), &instance, data, false);
    } catch (const HostError &error) {
        return error.code();
    }
    return storeSelectionList(instance, selected);
}

HRESULT TaskRunRecord::storeSelectionList(IDoxVariables &instance, const std::vector<FileRecord> &selected)
{
    m_records = selected;
    resetIndex();
    for (const FileRecord &record : m_records) {
        if (!record.isPrintEntry && (record.isErrorLog || record.source))
            indexRecord(record);
    }
    return storeList(instance, SelectionListKey);
}

HRESULT TaskRunRecord::storeOutputList(IDoxVariables &instance) const
{
    return storeList(instance, OutputListKey);
}

HRESULT TaskRunRecord::storeList(IDoxVariables &instance, const QString &key) const
{
    QString xml;
    if (const HRESULT hr = FileListXml::write(m_records, m_taskType, xml); failed(hr))
        return hr;
    return instance.SetVariable(key, Variant::fromBStr(xml));
}

HRESULT TaskRunRecord::readList(IDoxVariables &instance, bool outputList, std::vector<FileRecord> &records)
{
    records.clear();
    Variant value;
    const HRESULT hr = instance.GetVariable(outputList ? OutputListKey : SelectionListKey, value);
    if (hr != S_OK)
        return hr;
    Variant text;
    if (const HRESULT converted = value.changeType(VarType::BStr, text); failed(converted))
        return converted;
    records = FileListXml::read(text.bstr());
    return S_OK;
}

int TaskRunRecord::countOutputs(bool includeErrorLogs, bool includeAll) const
{
    int count = 0;
    for (const FileRecord &record : m_records) {
        if (record.isPrintEntry || (!record.inVaultTree && !includeAll) || (record.isErrorLog && !includeErrorLogs))
            continue;
        if (fileExists(record.path))
            ++count;
    }
    return count;
}

bool TaskRunRecord::hasErrors() const
{
    for (const FileRecord &record : m_records) {
        if (record.isErrorLog && fileExists(record.path))
            return true;
    }
    return false;
}

bool TaskRunRecord::isInVaultTree(const QString &path) const
{
    return !m_vaultRoot.isEmpty() && path.startsWith(m_vaultRoot, Qt::CaseInsensitive);
}

void TaskRunRecord::notify(const QString &path) const
{
    if (m_notify)
        m_notify(FileReplacedCode, path);
}

bool TaskRunRecord::fileExists(const QString &windowsPath)
{
    if (windowsPath.isEmpty())
        return false;
    const QString native = DriveMap::instance().toNative(windowsPath);
    return !native.isEmpty() && FileSystem::instance().exists(native) && !FileSystem::instance().isDirectory(native);
}

void TaskRunRecord::removeLocalFile(const QString &windowsPath)
{
    const QString native = DriveMap::instance().toNative(windowsPath);
    if (native.isEmpty())
        return;
    FileSystem &fs = FileSystem::instance();
    if (!fs.exists(native) || fs.isDirectory(native))
        return;
    if (!fs.isWritable(native))
        fs.setWritable(native, true);
    fs.remove(native);
}

void TaskRunRecord::resetIndex()
{
    m_outputPaths.clear();
}

void TaskRunRecord::indexRecord(const FileRecord &record)
{
    m_outputPaths.insert(pathKey(WindowsPath::canonicalize(record.path)));
}
