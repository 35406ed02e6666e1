#pragma once

#include "host/idoxvault.h"
#include "vault/vaultstore.h"

#include <functional>
#include <memory>

// A file of the embedded vault as the host hands it out. It keeps only its
// id and reads everything else when asked, so it stays current.
class VaultFile final : public IDoxFile
{
public:
    VaultFile(std::shared_ptr<VaultStore> store, const VaultFileRow &row);

    std::int32_t GetID() override { return m_id; }
    QString GetName() override { return m_name; }
    std::int32_t GetCurrentVersion() override;
    std::int32_t GetKind() override { return m_kind; }
    HRESULT GetLocalPath(std::int32_t folderId, QString &path) override;
    HRESULT GetParentFolderId(std::int32_t &folderId) override;
    bool IsLocked() override;
    HRESULT LockFile(std::int32_t folderId) override;
    HRESULT UndoLockFile(std::int32_t folderId) override;
    HRESULT DeleteFromVault(std::int32_t folderId) override;
    HRESULT GetVersionInfo(std::int32_t version, std::int32_t folderId, DoxVersionInfo &info) override;
    HRESULT GetCardValue(const QString &variable, const QString &configuration, std::int32_t version,
                         Variant &value) override;
    HRESULT GetCardValueNames(std::int32_t version, QStringList &names) override;

private:
    std::shared_ptr<VaultStore> m_store;
    int m_id;
    int m_kind;
    QString m_name;
};

class VaultFolder final : public IDoxFolder
{
public:
    VaultFolder(std::shared_ptr<VaultStore> store, const VaultFolderRow &row);

    std::int32_t GetID() override { return m_row.id; }
    QString GetLocalPath() override;
    HRESULT GetFiles(std::vector<std::shared_ptr<IDoxFile>> &files) override;
    HRESULT GetSubFolders(std::vector<std::shared_ptr<IDoxFolder>> &folders) override;

private:
    std::shared_ptr<VaultStore> m_store;
    VaultFolderRow m_row;
};

// The embedded host's vault: IDoxVault over a VaultStore.
//
// The reference setting of ResolveReferenceVersions reads both forms the
// add-in stores: 0 (print "referenced") and 1 (conversion bit "referenced")
// give the version the query names, or the latest when it names none
// (0 or -1) or one the file does not have; 2 (latest) and any other value
// give the latest version. The bit 4 ("user may change") is ignored.
class EmbeddedVault final : public IDoxVault
{
public:
    // The pickers stand where the host would show its browse windows; they
    // answer vault paths (Windows or native). S_FALSE means cancelled.
    using FilePicker = std::function<HRESULT(HostWindow owner, const QString &title, const QString &filter,
                                             QStringList &paths)>;
    using FolderPicker = std::function<HRESULT(HostWindow owner, const QString &title, QString &path)>;

    explicit EmbeddedVault(std::shared_ptr<VaultStore> store);

    const std::shared_ptr<VaultStore> &store() const { return m_store; }
    void setFilePicker(FilePicker picker) { m_filePicker = std::move(picker); }
    void setFolderPicker(FolderPicker picker) { m_folderPicker = std::move(picker); }

    HRESULT GetName(QString &name) override;
    HRESULT GetRootFolderPath(QString &path) override;
    HRESULT GetFileFromPath(const QString &path, std::shared_ptr<IDoxFile> &file,
                            std::shared_ptr<IDoxFolder> &folder) override;
    HRESULT GetFolderFromPath(const QString &path, std::shared_ptr<IDoxFolder> &folder) override;
    HRESULT GetFile(std::int32_t id, std::shared_ptr<IDoxFile> &file) override;
    HRESULT GetFolder(std::int32_t id, std::shared_ptr<IDoxFolder> &folder) override;
    HRESULT CreateUtility(std::int32_t utility, HostObjectPtr &service) override;
    HRESULT ResolveReferenceVersions(const std::vector<DoxReferenceQuery> &files, std::int32_t setting,
                                     std::vector<std::int32_t> &versions) override;
    HRESULT GetCardVariableNames(QStringList &names) override;
    HRESULT GetErrorInfo(HRESULT code, QString &name, QString &description) override;
    HRESULT BrowseForFiles(HostWindow owner, const QString &title, const QString &filter,
                           std::vector<std::shared_ptr<IDoxFile>> &files,
                           std::vector<std::shared_ptr<IDoxFolder>> &folders) override;
    HRESULT BrowseForFolder(HostWindow owner, const QString &title, std::shared_ptr<IDoxFolder> &folder) override;

private:
    std::shared_ptr<VaultStore> m_store;
    FilePicker m_filePicker;
    FolderPicker m_folderPicker;
};
