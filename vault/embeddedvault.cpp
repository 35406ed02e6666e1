#include "vault/embeddedvault.h"

#include "vault/batchservices.h"
#include "host/hostcall.h"
#include "common/errortexts.h"

VaultFile::VaultFile(std::shared_ptr<VaultStore> store, const VaultFileRow &row)
    : m_store(std::move(store)), m_id(row.id), m_kind(row.kind), m_name(row.name)
{
}

std::int32_t VaultFile::GetCurrentVersion()
{
    try {
        const auto row = m_store->fileById(m_id);
        return row ? row->latestVersion : 0;
    } catch (const HostError &) {
        return 0;
    }
}

HRESULT VaultFile::GetLocalPath(std::int32_t, QString &path)
{
    // A file lives in one folder here, so the folder id only names it.
    return hostCall([&] {
        const auto row = m_store->fileById(m_id);
        if (!row)
            return E_DOX_FILE_NOT_FOUND;
        // Whoever asks for the local path is about to open the file: a
        // shared vault's local view gets it first.
        if (m_store->isShared())
            m_store->fetch(m_id);
        path = m_store->paths().toWindows(row->path);
        return S_OK;
    });
}

HRESULT VaultFile::GetParentFolderId(std::int32_t &folderId)
{
    return hostCall([&] {
        const auto row = m_store->fileById(m_id);
        if (!row)
            return E_DOX_FILE_NOT_FOUND;
        folderId = row->folderId;
        return S_OK;
    });
}

bool VaultFile::IsLocked()
{
    try {
        const auto row = m_store->fileById(m_id);
        return row && row->lock != VaultLock::None;
    } catch (const HostError &) {
        return false;
    }
}

HRESULT VaultFile::LockFile(std::int32_t folderId)
{
    return hostCall([&] {
        m_store->checkOut(m_id, folderId);
        return S_OK;
    });
}

HRESULT VaultFile::UndoLockFile(std::int32_t)
{
    return hostCall([&] {
        m_store->undoCheckOut(m_id);
        return S_OK;
    });
}

HRESULT VaultFile::DeleteFromVault(std::int32_t)
{
    return hostCall([&] {
        m_store->deleteFile(m_id);
        return S_OK;
    });
}

HRESULT VaultFile::GetVersionInfo(std::int32_t version, std::int32_t, DoxVersionInfo &info)
{
    return hostCall([&] {
        if (!m_store->fileById(m_id))
            return E_DOX_FILE_NOT_FOUND;
        const auto row = m_store->version(m_id, version);
        if (!row)
            return E_INVALIDARG;
        info.versionNumber = row->version;
        info.revision = row->revision;
        info.stateName = row->state;
        return S_OK;
    });
}

HRESULT VaultFile::GetCardValue(const QString &variable, const QString &configuration, std::int32_t version,
                                Variant &value)
{
    return hostCall([&] {
        const auto found = m_store->cardValue(m_id, version, variable, configuration);
        if (!found)
            return S_FALSE;
        value = *found;
        return S_OK;
    });
}

HRESULT VaultFile::GetCardValueNames(std::int32_t version, QStringList &names)
{
    return hostCall([&] {
        names.clear();
        for (const VaultCardValue &v : m_store->cardValues(m_id, version))
            if (!names.contains(v.variable))
                names.append(v.variable);
        return S_OK;
    });
}

VaultFolder::VaultFolder(std::shared_ptr<VaultStore> store, const VaultFolderRow &row)
    : m_store(std::move(store)), m_row(row)
{
}

QString VaultFolder::GetLocalPath()
{
    return m_store->paths().toWindows(m_row.path);
}

HRESULT VaultFolder::GetFiles(std::vector<std::shared_ptr<IDoxFile>> &files)
{
    return hostCall([&] {
        files.clear();
        for (const VaultFileRow &row : m_store->filesIn(m_row.id))
            files.push_back(std::make_shared<VaultFile>(m_store, row));
        return S_OK;
    });
}

HRESULT VaultFolder::GetSubFolders(std::vector<std::shared_ptr<IDoxFolder>> &folders)
{
    return hostCall([&] {
        folders.clear();
        for (const VaultFolderRow &row : m_store->subFolders(m_row.id))
            folders.push_back(std::make_shared<VaultFolder>(m_store, row));
        return S_OK;
    });
}

EmbeddedVault::EmbeddedVault(std::shared_ptr<VaultStore> store) : m_store(std::move(store)) {}

HRESULT EmbeddedVault::GetName(QString &name)
{
    return hostCall([&] {
        name = m_store->name();
        return S_OK;
    });
}

HRESULT EmbeddedVault::GetRootFolderPath(QString &path)
{
    path = m_store->paths().windowsRoot();
    return S_OK;
}

HRESULT EmbeddedVault::GetFileFromPath(const QString &path, std::shared_ptr<IDoxFile> &file,
                                       std::shared_ptr<IDoxFolder> &folder)
{
    return hostCall([&] {
        QString relative;
        if (!m_store->paths().toRelative(path, relative) || relative.isEmpty())
            return S_FALSE;
        const auto row = m_store->fileByPath(relative);
        if (!row)
            return S_FALSE;
        const auto folderRow = m_store->folderById(row->folderId);
        if (!folderRow)
            return E_DOX_FOLDER_NOT_FOUND;
        file = std::make_shared<VaultFile>(m_store, *row);
        folder = std::make_shared<VaultFolder>(m_store, *folderRow);
        return S_OK;
    });
}

HRESULT EmbeddedVault::GetFolderFromPath(const QString &path, std::shared_ptr<IDoxFolder> &folder)
{
    return hostCall([&] {
        QString relative;
        if (!m_store->paths().toRelative(path, relative))
            return S_FALSE;
        const auto row = m_store->folderByPath(relative);
        if (!row)
            return S_FALSE;
        folder = std::make_shared<VaultFolder>(m_store, *row);
        return S_OK;
    });
}

HRESULT EmbeddedVault::GetFile(std::int32_t id, std::shared_ptr<IDoxFile> &file)
{
    return hostCall([&] {
        const auto row = m_store->fileById(id);
        if (!row)
            return E_DOX_FILE_NOT_FOUND;
        file = std::make_shared<VaultFile>(m_store, *row);
        return S_OK;
    });
}

HRESULT EmbeddedVault::GetFolder(std::int32_t id, std::shared_ptr<IDoxFolder> &folder)
{
    return hostCall([&] {
        const auto row = m_store->folderById(id);
        if (!row)
            return E_DOX_FOLDER_NOT_FOUND;
        folder = std::make_shared<VaultFolder>(m_store, *row);
        return S_OK;
    });
}

HRESULT EmbeddedVault::CreateUtility(std::int32_t utility, HostObjectPtr &service)
{
    switch (utility) {
    case DoxUtil_BatchAdd:
        service = std::make_shared<VaultBatchAdd>(m_store);
        return S_OK;
    case DoxUtil_BatchCheckIn:
        service = std::make_shared<VaultBatchCheckIn>(m_store);
        return S_OK;
    case DoxUtil_CustomReferences:
        service = std::make_shared<VaultCustomReferences>(m_store);
        return S_OK;
    case DoxUtil_BatchUpdate:
        service = std::make_shared<VaultBatchUpdate>(m_store);
        return S_OK;
    case DoxUtil_BatchListing:
        service = std::make_shared<VaultBatchListing>(m_store);
        return S_OK;
    default:
        return E_NOTIMPL;
    }
}

HRESULT EmbeddedVault::ResolveReferenceVersions(const std::vector<DoxReferenceQuery> &files, std::int32_t setting,
                                                std::vector<std::int32_t> &versions)
{
    return hostCall([&] {
        const int mode = setting & ~4;
        const bool asReferenced = mode == 0 || mode == 1;
        std::vector<std::int32_t> result;
        result.reserve(files.size());
        for (const DoxReferenceQuery &q : files) {
            const std::optional<VaultFileRow> row = m_store->fileByIdOrPath(q.docId, q.path);
            if (!row)
                return E_DOX_FILE_NOT_FOUND;
            const bool named = q.version > 0 && q.version <= row->latestVersion;
            result.push_back(asReferenced && named ? q.version : row->latestVersion);
        }
        versions = std::move(result);
        return S_OK;
    });
}

HRESULT EmbeddedVault::GetCardVariableNames(QStringList &names)
{
    return hostCall([&] {
        names = m_store->cardVariableNames();
        return S_OK;
    });
}

HRESULT EmbeddedVault::GetErrorInfo(HRESULT code, QString &name, QString &description)
{
    // The error texts give every code some text; a code without a symbolic
    // name (only its number) is one this host does not know.
    const QString known = errorName(code);
    if (known.startsWith(QLatin1String("0x")))
        return S_FALSE;
    name = known;
    description = errorText(code);
    return S_OK;
}

HRESULT EmbeddedVault::BrowseForFiles(HostWindow owner, const QString &title, const QString &filter,
                                      std::vector<std::shared_ptr<IDoxFile>> &files,
                                      std::vector<std::shared_ptr<IDoxFolder>> &folders)
{
    if (!m_filePicker)
        return S_FALSE;
    QStringList paths;
    const HRESULT hr = m_filePicker(owner, title, filter, paths);
    if (hr != S_OK)
        return hr;
    std::vector<std::shared_ptr<IDoxFile>> pickedFiles;
    std::vector<std::shared_ptr<IDoxFolder>> pickedFolders;
    for (const QString &path : paths) {
        std::shared_ptr<IDoxFile> file;
        std::shared_ptr<IDoxFolder> folder;
        const HRESULT found = GetFileFromPath(path, file, folder);
        if (failed(found))
            return found;
        if (found == S_FALSE)
            return E_DOX_FILE_NOT_FOUND;
        pickedFiles.push_back(file);
        pickedFolders.push_back(folder);
    }
    files = std::move(pickedFiles);
    folders = std::move(pickedFolders);
    return S_OK;
}

HRESULT EmbeddedVault::BrowseForFolder(HostWindow owner, const QString &title, std::shared_ptr<IDoxFolder> &folder)
{
    if (!m_folderPicker)
        return S_FALSE;
    QString path;
    const HRESULT hr = m_folderPicker(owner, title, path);
    if (hr != S_OK)
        return hr;
    const HRESULT found = GetFolderFromPath(path, folder);
    return found == S_FALSE ? E_DOX_FOLDER_NOT_FOUND : found;
}
