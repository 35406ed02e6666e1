#pragma once

#include "host/idoxvault.h"

#include <QHash>
#include <QString>

#include <memory>
#include <vector>

// A vault tree for tests of the file lists: folders with files and
// sub-folders, files found by path in any letter case, check-out and delete
// with their calls recorded, and a reference service that answers from a
// table. Each operation can be made to fail.
class RunTestFile final : public IDoxFile
{
public:
    RunTestFile(std::int32_t id, QString localPath, std::int32_t version)
        : m_id(id), m_path(std::move(localPath)), m_version(version)
    {
    }

    std::int32_t GetID() override { return m_id; }
    QString GetName() override { return m_path.mid(m_path.lastIndexOf(QLatin1Char('\\')) + 1); }
    std::int32_t GetCurrentVersion() override { return m_version; }
    std::int32_t GetKind() override { return 1; }
    HRESULT GetLocalPath(std::int32_t, QString &path) override
    {
        if (failed(localPathResult))
            return localPathResult;
        path = m_path;
        return S_OK;
    }
    HRESULT GetParentFolderId(std::int32_t &folderId) override
    {
        folderId = parentFolderId;
        return S_OK;
    }
    bool IsLocked() override { return locked; }
    HRESULT LockFile(std::int32_t folderId) override
    {
        lockCalls.push_back(folderId);
        if (succeeded(lockResult))
            locked = true;
        return lockResult;
    }
    HRESULT UndoLockFile(std::int32_t) override { return E_NOTIMPL; }
    HRESULT DeleteFromVault(std::int32_t folderId) override
    {
        deleteCalls.push_back(folderId);
        return deleteResult;
    }
    HRESULT GetVersionInfo(std::int32_t, std::int32_t, DoxVersionInfo &) override { return E_NOTIMPL; }
    HRESULT GetCardValue(const QString &, const QString &, std::int32_t, Variant &) override { return S_FALSE; }
    HRESULT GetCardValueNames(std::int32_t, QStringList &) override { return E_NOTIMPL; }

    const QString &path() const { return m_path; }

    std::int32_t parentFolderId = 0;
    bool locked = false;
    HRESULT lockResult = S_OK;
    HRESULT deleteResult = S_OK;
    HRESULT localPathResult = S_OK;
    std::vector<std::int32_t> lockCalls;
    std::vector<std::int32_t> deleteCalls;

private:
    std::int32_t m_id;
    QString m_path;
    std::int32_t m_version;
};

class RunTestFolder final : public IDoxFolder
{
public:
    RunTestFolder(std::int32_t id, QString path) : m_id(id), m_path(std::move(path)) {}

    std::int32_t GetID() override { return m_id; }
    QString GetLocalPath() override { return m_path; }
    HRESULT GetFiles(std::vector<std::shared_ptr<IDoxFile>> &out) override
    {
        if (failed(filesResult))
            return filesResult;
        out.assign(files.begin(), files.end());
        return S_OK;
    }
    HRESULT GetSubFolders(std::vector<std::shared_ptr<IDoxFolder>> &out) override
    {
        out.assign(subFolders.begin(), subFolders.end());
        return S_OK;
    }

    std::vector<std::shared_ptr<RunTestFile>> files;
    std::vector<std::shared_ptr<RunTestFolder>> subFolders;
    HRESULT filesResult = S_OK;

private:
    std::int32_t m_id;
    QString m_path;
};

class RunTestVault final : public IDoxVault
{
public:
    explicit RunTestVault(QString root = QStringLiteral("V:\\Vault")) : m_root(std::move(root)) {}

    HRESULT GetName(QString &name) override
    {
        name = QStringLiteral("Vault");
        return S_OK;
    }
    HRESULT GetRootFolderPath(QString &path) override
    {
        if (failed(rootResult))
            return rootResult;
        path = m_root;
        return S_OK;
    }
    HRESULT GetFileFromPath(const QString &path, std::shared_ptr<IDoxFile> &file,
                            std::shared_ptr<IDoxFolder> &folder) override
    {
        ++fileLookups;
        if (failed(lookupResult))
            return lookupResult;
        const auto it = m_byPath.constFind(path.toCaseFolded());
        if (it == m_byPath.cend())
            return S_FALSE;
        file = it->first;
        folder = it->second;
        return S_OK;
    }
    HRESULT GetFolderFromPath(const QString &, std::shared_ptr<IDoxFolder> &) override { return E_NOTIMPL; }
    HRESULT GetFile(std::int32_t, std::shared_ptr<IDoxFile> &) override { return E_NOTIMPL; }
    HRESULT GetFolder(std::int32_t id, std::shared_ptr<IDoxFolder> &folder) override
    {
        if (failed(folderResult))
            return folderResult;
        const auto it = m_folders.constFind(id);
        if (it == m_folders.cend())
            return S_FALSE;
        folder = *it;
        return S_OK;
    }
    HRESULT CreateUtility(std::int32_t, HostObjectPtr &) override { return E_NOTIMPL; }
    HRESULT ResolveReferenceVersions(const std::vector<DoxReferenceQuery> &files, std::int32_t setting,
                                     std::vector<std::int32_t> &versions) override
    {
        referenceQueries = files;
        referenceSetting = setting;
        if (failed(referenceResult))
            return referenceResult;
        versions.clear();
        for (const DoxReferenceQuery &query : files)
            versions.push_back(query.version + 100);
        return S_OK;
    }
    HRESULT GetCardVariableNames(QStringList &) override { return E_NOTIMPL; }
    HRESULT GetErrorInfo(HRESULT, QString &, QString &) override { return S_FALSE; }
    HRESULT BrowseForFiles(HostWindow, const QString &, const QString &, std::vector<std::shared_ptr<IDoxFile>> &,
                           std::vector<std::shared_ptr<IDoxFolder>> &) override
    {
        return S_FALSE;
    }
    HRESULT BrowseForFolder(HostWindow, const QString &, std::shared_ptr<IDoxFolder> &) override { return S_FALSE; }

    std::shared_ptr<RunTestFolder> addFolder(std::int32_t id, const QString &path)
    {
        auto folder = std::make_shared<RunTestFolder>(id, path);
        m_folders.insert(id, folder);
        return folder;
    }
    // A file in folder, found by its path "<folder path>\<name>".
    std::shared_ptr<RunTestFile> addFile(const std::shared_ptr<RunTestFolder> &folder, std::int32_t id,
                                         const QString &name, std::int32_t version = 1)
    {
        auto file = std::make_shared<RunTestFile>(id, folder->GetLocalPath() + QLatin1Char('\\') + name, version);
        file->parentFolderId = folder->GetID();
        folder->files.push_back(file);
        m_byPath.insert(file->path().toCaseFolded(), {file, folder});
        return file;
    }

    HRESULT rootResult = S_OK;
    HRESULT lookupResult = S_OK;
    HRESULT folderResult = S_OK;
    HRESULT referenceResult = S_OK;
    int fileLookups = 0;
    std::vector<DoxReferenceQuery> referenceQueries;
    std::int32_t referenceSetting = -1;

private:
    QString m_root;
    QHash<std::int32_t, std::shared_ptr<RunTestFolder>> m_folders;
    QHash<QString, std::pair<std::shared_ptr<RunTestFile>, std::shared_ptr<RunTestFolder>>> m_byPath;
};
