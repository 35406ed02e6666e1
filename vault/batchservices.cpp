#include "vault/batchservices.h"

#include "platform/drivemap.h"
#include "platform/filesystem.h"
#include "host/hostcall.h"

#include <QFileInfo>
#include <algorithm>

HRESULT VaultBatchAdd::AddFileFromPath(const QString &localPath, const QString &destinationFolderPath)
{
    return hostCall([&] {
        const VaultPaths &paths = m_store->paths();
        QString source = localPath;
        QString relative;
        if (paths.toRelative(localPath, relative)) {
            if (VaultPaths::isReserved(relative))
                return E_INVALIDARG; // the vault's own data is never a document
            source = paths.findNative(relative);
        } else if (!localPath.startsWith('/')) {
            // Another drive: readable when the drive map knows it.
            source = DriveMap::instance().toNative(localPath);
            if (source.isEmpty())
                return E_INVALIDARG;
        }
        const FileSystem &fs = FileSystem::instance();
        if (!fs.exists(source) || fs.isDirectory(source))
            return E_DOX_FILE_NOT_FOUND;
        QString folder;
        if (!paths.toRelative(destinationFolderPath, folder))
            return E_DOX_FOLDER_NOT_FOUND;
        const QString name = QFileInfo(source).fileName();
        if (!VaultPaths::isValidName(name))
            return E_DOX_INVALID_NAME;
        m_entries.push_back({source, folder, name});
        return S_OK;
    });
}

HRESULT VaultBatchAdd::CommitAdd(std::vector<DoxBatchAddResult> &results)
{
    return hostCall([&] {
        std::vector<VaultStore::NewFile> files;
        files.reserve(m_entries.size());
        for (const Entry &entry : m_entries)
            files.push_back({entry.source, entry.folder, entry.name});
        VaultStore::AddOptions options;
        options.keepCheckedOut = true;
        const std::vector<VaultStore::NewFileResult> added = m_store->addFiles(files, options);
        std::vector<DoxBatchAddResult> out;
        out.reserve(added.size());
        for (std::size_t i = 0; i < added.size(); ++i) {
            DoxBatchAddResult result;
            result.path = m_store->paths().toWindows(VaultPaths::join(m_entries[i].folder, m_entries[i].name));
            result.result = added[i].result;
            result.docId = added[i].id;
            result.folderId = added[i].folderId;
            out.push_back(result);
        }
        m_entries.clear();
        results = std::move(out);
        return S_OK;
    });
}

HRESULT VaultBatchCheckIn::SetComment(const QString &comment)
{
    m_comment = comment;
    return S_OK;
}

HRESULT VaultBatchCheckIn::AddSelection(const std::vector<DoxFolderPair> &files)
{
    for (const DoxFolderPair &pair : files)
        if (m_selected.insert({pair.docId, pair.folderId}).second)
            m_selection.push_back(pair);
    return S_OK;
}

std::vector<int> VaultBatchCheckIn::selectedIds() const
{
    std::vector<int> ids;
    ids.reserve(m_selection.size());
    for (const DoxFolderPair &pair : m_selection)
        ids.push_back(pair.docId);
    return ids;
}

HRESULT VaultBatchCheckIn::CreateTree()
{
    return hostCall([&] {
        for (const std::optional<VaultFileRow> &row : m_store->filesById(selectedIds())) {
            if (!row)
                return E_DOX_FILE_NOT_FOUND;
            if (row->lock == VaultLock::None || row->lockedBy != m_store->user())
                return E_DOX_FILE_NOT_LOCKED_BY_YOU;
        }
        return S_OK;
    });
}

HRESULT VaultBatchCheckIn::CheckIn()
{
    return hostCall([&] {
        m_store->checkInFiles(selectedIds(), m_comment);
        m_selection.clear();
        m_selected.clear();
        return S_OK;
    });
}

HRESULT VaultCustomReferences::AddReferences(std::int32_t fromDocId, const std::vector<DoxFolderPair> &to)
{
    for (const DoxFolderPair &pair : to)
        m_pending.emplace_back(fromDocId, pair);
    return S_OK;
}

HRESULT VaultCustomReferences::IsCommitNeeded(bool &needed)
{
    needed = !m_pending.empty();
    return S_OK;
}

HRESULT VaultCustomReferences::Commit()
{
    return hostCall([&] {
        Transaction transaction(m_store->db());
        for (const auto &[from, to] : m_pending)
            m_store->addReference(from, to.docId, QString());
        m_store->commit(transaction);
        m_pending.clear();
        return S_OK;
    });
}

HRESULT VaultBatchUpdate::SetVariable(std::int32_t docId, const QString &variable, const QString &configuration,
                                      const Variant &value)
{
    m_pending.push_back({docId, variable, configuration, value});
    return S_OK;
}

HRESULT VaultBatchUpdate::Commit()
{
    return hostCall([&] {
        Transaction transaction(m_store->db());
        for (const Pending &p : m_pending)
            m_store->setCardValue(p.docId, 0, p.variable, p.configuration, p.value);
        m_store->commit(transaction);
        m_pending.clear();
        return S_OK;
    });
}

HRESULT VaultBatchListing::AddFolder(std::int32_t folderId)
{
    return hostCall([&] {
        if (!m_store->folderById(folderId))
            return E_DOX_FOLDER_NOT_FOUND;
        for (const VaultFileRow &row : m_store->filesUnder(folderId))
            if (std::find(m_fileIds.begin(), m_fileIds.end(), row.id) == m_fileIds.end())
                m_fileIds.push_back(row.id);
        return S_OK;
    });
}

HRESULT VaultBatchListing::AddFile(const QString &path)
{
    return hostCall([&] {
        QString relative;
        if (!m_store->paths().toRelative(path, relative))
            return E_DOX_FILE_NOT_FOUND;
        const auto row = m_store->fileByPath(relative);
        if (!row)
            return E_DOX_FILE_NOT_FOUND;
        if (std::find(m_fileIds.begin(), m_fileIds.end(), row->id) == m_fileIds.end())
            m_fileIds.push_back(row->id);
        return S_OK;
    });
}

DoxListingRow VaultBatchListing::rowFor(const VaultFileRow &file) const
{
    DoxListingRow row;
    row.name = file.name;
    row.path = m_store->paths().toWindows(VaultPaths::parentOf(file.path));
    row.fileId = file.id;
    row.folderId = file.folderId;
    return row;
}

void VaultBatchListing::listReferences(const VaultFileRow &parent, int parentVersion,
                                       const QString &parentConfiguration, bool referenced, std::vector<int> &chain,
                                       std::vector<DoxListingRow> &rows)
{
    chain.push_back(parent.id);
    for (const VaultReferenceRow &ref : m_store->references(parent.id, parentVersion)) {
        const auto child = m_store->fileById(ref.childId);
        if (!child)
            continue;
        DoxListingRow row = rowFor(*child);
        row.configuration = ref.configuration;
        row.parentFileId = parent.id;
        row.parentConfiguration = parentConfiguration;
        row.retFlag = Reference;
        row.attachedVersion = referenced ? ref.childVersion : child->latestVersion;
        rows.push_back(row);
        if (std::find(chain.begin(), chain.end(), child->id) == chain.end())
            listReferences(*child, row.attachedVersion, ref.configuration, referenced, chain, rows);
    }
    chain.pop_back();
}

HRESULT VaultBatchListing::CreateList(const QString &columns, std::int32_t flags, std::vector<DoxListingRow> &rows)
{
    static const QStringList known = {
        QStringLiteral("#DoxCol_Name"),          QStringLiteral("#DoxCol_Path"),
        QStringLiteral("#DoxCol_Configuration"), QStringLiteral("#DoxCol_ParentFileID"),
        QStringLiteral("#DoxCol_ParentFileConfiguration"), QStringLiteral("#DoxCol_DoxListRetFileFlag"),
        QStringLiteral("#DoxCol_AttachedVersion"), QStringLiteral("#DoxCol_FileID"),
        QStringLiteral("#DoxCol_FolderID"),
    };
    for (const QString &column : columns.split('\n', Qt::SkipEmptyParts))
        if (!known.contains(column.trimmed()))
            return E_INVALIDARG;
    return hostCall([&] {
        const bool referenced = (flags & 0x10) != 0;
        std::vector<DoxListingRow> out;
        std::vector<int> chain;
        for (const int id : m_fileIds) {
            const auto file = m_store->fileById(id);
            if (!file)
                continue; // deleted since it was added to the listing
            DoxListingRow row = rowFor(*file);
            row.retFlag = ListedFile;
            row.attachedVersion = file->latestVersion;
            out.push_back(row);
            listReferences(*file, file->latestVersion, QString(), referenced, chain, out);
        }
        rows = std::move(out);
        return S_OK;
    });
}
