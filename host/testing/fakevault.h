#pragma once

#include "host/idoxvault.h"

#include <QHash>
#include <QMap>
#include <QPair>
#include <memory>
#include <vector>

// A vault file for tests: an id, a path and the revision and workflow state
// of each version. Version lookups are recorded. Operations the fake does
// not model answer E_NOTIMPL.
class FakeFile : public IDoxFile
{
public:
    FakeFile(std::int32_t id, QString path, std::int32_t folderId)
        : m_id(id), m_path(std::move(path)), m_folderId(folderId)
    {
    }

    std::int32_t GetID() override { return m_id; }
    QString GetName() override { return m_path.mid(m_path.lastIndexOf(QLatin1Char('\\')) + 1); }
    std::int32_t GetCurrentVersion() override { return m_versions.isEmpty() ? 1 : m_versions.lastKey(); }
    std::int32_t GetKind() override { return 1; }
    HRESULT GetLocalPath(std::int32_t, QString &path) override
    {
        path = m_path;
        return S_OK;
    }
    HRESULT GetParentFolderId(std::int32_t &folderId) override
    {
        folderId = m_folderId;
        return S_OK;
    }
    bool IsLocked() override { return false; }
    HRESULT LockFile(std::int32_t) override { return E_NOTIMPL; }
    HRESULT UndoLockFile(std::int32_t) override { return E_NOTIMPL; }
    HRESULT DeleteFromVault(std::int32_t) override { return E_NOTIMPL; }

    HRESULT GetVersionInfo(std::int32_t version, std::int32_t folderId, DoxVersionInfo &info) override
    {
        m_versionQueries.push_back({version, folderId});
        if (failed(m_versionResult))
            return m_versionResult;
        const auto it = m_versions.constFind(version);
        if (it == m_versions.cend())
            return E_DOX_INVALID_ID;
        info = *it;
        return S_OK;
    }
    HRESULT GetCardValue(const QString &, const QString &, std::int32_t, Variant &) override { return S_FALSE; }
    HRESULT GetCardValueNames(std::int32_t, QStringList &names) override
    {
        names.clear();
        return S_OK;
    }

    void setVersion(std::int32_t version, const QString &revision, const QString &state)
    {
        m_versions.insert(version, DoxVersionInfo{version, revision, state});
    }
    void failVersionInfo(HRESULT hr) { m_versionResult = hr; }
    const QString &path() const { return m_path; }
    // (version, folderId) of every GetVersionInfo call, in order.
    const std::vector<QPair<std::int32_t, std::int32_t>> &versionQueries() const { return m_versionQueries; }

private:
    std::int32_t m_id;
    QString m_path;
    std::int32_t m_folderId;
    QMap<std::int32_t, DoxVersionInfo> m_versions;
    HRESULT m_versionResult = S_OK;
    std::vector<QPair<std::int32_t, std::int32_t>> m_versionQueries;
};

// A vault for tests: a name, a root folder, files found by path (compared
// case-insensitively, as Windows paths are) and error texts by code. Any
// operation can be made to fail by its name.
class FakeVault : public IDoxVault
{
public:
    explicit FakeVault(QString name = QStringLiteral("TestVault"), QString root = QStringLiteral("V:\\TestVault"))
        : m_name(std::move(name)), m_root(std::move(root))
    {
    }

    HRESULT GetName(QString &name) override
    {
        if (const HRESULT hr = failure(QStringLiteral("GetName")); failed(hr))
            return hr;
        name = m_name;
        return S_OK;
    }
    HRESULT GetRootFolderPath(QString &path) override
    {
        if (const HRESULT hr = failure(QStringLiteral("GetRootFolderPath")); failed(hr))
            return hr;
        path = m_root;
        return S_OK;
    }
    HRESULT GetFileFromPath(const QString &path, std::shared_ptr<IDoxFile> &file,
                            std::shared_ptr<IDoxFolder> &folder) override
    {
        if (const HRESULT hr = failure(QStringLiteral("GetFileFromPath")); failed(hr))
            return hr;
        folder.reset();
        const auto it = m_filesByPath.constFind(path.toLower());
        if (it == m_filesByPath.cend()) {
            file.reset();
            return S_FALSE;
        }
        file = *it;
        return S_OK;
    }
    HRESULT GetFolderFromPath(const QString &, std::shared_ptr<IDoxFolder> &) override { return E_NOTIMPL; }
    HRESULT GetFile(std::int32_t id, std::shared_ptr<IDoxFile> &file) override
    {
        for (const auto &f : m_filesByPath) {
            if (f->GetID() == id) {
                file = f;
                return S_OK;
            }
        }
        return E_DOX_FILE_NOT_FOUND;
    }
    HRESULT GetFolder(std::int32_t, std::shared_ptr<IDoxFolder> &) override { return E_NOTIMPL; }
    HRESULT CreateUtility(std::int32_t, HostObjectPtr &) override { return E_NOTIMPL; }
    HRESULT ResolveReferenceVersions(const std::vector<DoxReferenceQuery> &, std::int32_t,
                                     std::vector<std::int32_t> &) override
    {
        return E_NOTIMPL;
    }
    HRESULT GetCardVariableNames(QStringList &names) override
    {
        if (const HRESULT hr = failure(QStringLiteral("GetCardVariableNames")); failed(hr))
            return hr;
        names = cardVariables;
        return S_OK;
    }
    HRESULT GetErrorInfo(HRESULT code, QString &name, QString &description) override
    {
        if (const HRESULT hr = failure(QStringLiteral("GetErrorInfo")); failed(hr))
            return hr;
        const auto it = m_errors.constFind(code);
        if (it == m_errors.cend())
            return S_FALSE;
        name = it->first;
        description = it->second;
        return S_OK;
    }
    HRESULT BrowseForFiles(HostWindow, const QString &, const QString &, std::vector<std::shared_ptr<IDoxFile>> &,
                           std::vector<std::shared_ptr<IDoxFolder>> &) override
    {
        return S_FALSE;
    }
    HRESULT BrowseForFolder(HostWindow, const QString &, std::shared_ptr<IDoxFolder> &) override { return S_FALSE; }

    std::shared_ptr<FakeFile> addFile(std::int32_t id, const QString &path, std::int32_t folderId = 1)
    {
        auto file = std::make_shared<FakeFile>(id, path, folderId);
        m_filesByPath.insert(path.toLower(), file);
        return file;
    }
    void setErrorInfo(HRESULT code, const QString &name, const QString &description)
    {
        m_errors.insert(code, {name, description});
    }
    // Makes the named operation ("GetName", "GetRootFolderPath",
    // "GetFileFromPath", "GetErrorInfo") return hr.
    void fail(const QString &operation, HRESULT hr) { m_failures.insert(operation, hr); }

    QStringList cardVariables;

private:
    HRESULT failure(const QString &operation) const { return m_failures.value(operation, S_OK); }

    QString m_name;
    QString m_root;
    QHash<QString, std::shared_ptr<FakeFile>> m_filesByPath;
    QHash<HRESULT, QPair<QString, QString>> m_errors;
    QHash<QString, HRESULT> m_failures;
};
