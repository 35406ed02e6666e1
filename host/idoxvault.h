#pragma once

#include "host/doxcmd.h"
#include "host/hresult.h"
#include "host/variant.h"

#include <QStringList>
#include <memory>
#include <vector>

class IDoxFolder;

// Revision label and workflow state of one version of a file.
struct DoxVersionInfo {
    std::int32_t versionNumber = 0;
    QString revision;
    QString stateName;
};

// A file of the vault. Paths are Windows paths of the vault's local view.
class IDoxFile : public virtual HostObject
{
public:
    virtual std::int32_t GetID() = 0;
    virtual QString GetName() = 0;
    virtual std::int32_t GetCurrentVersion() = 0;
    virtual std::int32_t GetKind() = 0; // 1 document; other host kinds pass through
    virtual HRESULT GetLocalPath(std::int32_t folderId, QString &path) = 0;
    virtual HRESULT GetParentFolderId(std::int32_t &folderId) = 0;
    virtual bool IsLocked() = 0;
    virtual HRESULT LockFile(std::int32_t folderId) = 0;   // check out into that folder
    virtual HRESULT UndoLockFile(std::int32_t folderId) = 0;
    virtual HRESULT DeleteFromVault(std::int32_t folderId) = 0;
    virtual HRESULT GetVersionInfo(std::int32_t version, std::int32_t folderId, DoxVersionInfo &info) = 0;
    // A data-card value of the given version (0 = latest) and configuration
    // ("" for the file's own): S_OK, or S_FALSE when the card has no value.
    virtual HRESULT GetCardValue(const QString &variable, const QString &configuration, std::int32_t version,
                                 Variant &value) = 0;
    virtual HRESULT GetCardValueNames(std::int32_t version, QStringList &names) = 0;
};

class IDoxFolder : public virtual HostObject
{
public:
    virtual std::int32_t GetID() = 0;
    virtual QString GetLocalPath() = 0; // no trailing backslash
    virtual HRESULT GetFiles(std::vector<std::shared_ptr<IDoxFile>> &files) = 0;
    virtual HRESULT GetSubFolders(std::vector<std::shared_ptr<IDoxFolder>> &folders) = 0;
};

// Numbers of the vault's batch utilities.
enum DoxUtility : std::int32_t {
    DoxUtil_BatchUpdate = 2,
    DoxUtil_BatchCheckIn = 6,
    DoxUtil_CustomReferences = 8,
    DoxUtil_BatchListing = 13,
    DoxUtil_BatchAdd = 16,
};

struct DoxFolderPair {
    std::int32_t docId = 0;
    std::int32_t folderId = 0;
    bool operator==(const DoxFolderPair &) const = default;
};

struct DoxBatchAddResult {
    HRESULT result = S_OK;
    std::int32_t docId = 0;
    std::int32_t folderId = 0;
    QString path;
};

// Adds local files to vault folders; nothing is stored before the commit,
// and the commit is one transaction.
class IDoxBatchAdd : public virtual HostObject
{
public:
    virtual HRESULT AddFileFromPath(const QString &localPath, const QString &destinationFolderPath) = 0;
    virtual HRESULT CommitAdd(std::vector<DoxBatchAddResult> &results) = 0;
};

// Checks in (and so unlocks) a selection of checked-out files.
class IDoxBatchCheckIn : public virtual HostObject
{
public:
    virtual HRESULT SetComment(const QString &comment) = 0;
    virtual HRESULT AddSelection(const std::vector<DoxFolderPair> &files) = 0;
    virtual HRESULT CreateTree() = 0;
    virtual HRESULT CheckIn() = 0;
};

class IDoxCustomReferences : public virtual HostObject
{
public:
    virtual HRESULT AddReferences(std::int32_t fromDocId, const std::vector<DoxFolderPair> &to) = 0;
    virtual HRESULT IsCommitNeeded(bool &needed) = 0;
    virtual HRESULT Commit() = 0;
};

class IDoxBatchUpdate : public virtual HostObject
{
public:
    virtual HRESULT SetVariable(std::int32_t docId, const QString &variable, const QString &configuration,
                                const Variant &value) = 0;
    virtual HRESULT Commit() = 0;
};

// One row of a batch listing: a listed file or one of its references.
struct DoxListingRow {
    QString name;
    QString path;            // folder path of the file
    QString configuration;
    std::int32_t fileId = 0;
    std::int32_t folderId = 0;
    std::int32_t parentFileId = 0; // 0 for a listed file itself
    QString parentConfiguration;
    std::int32_t retFlag = 0;
    std::int32_t attachedVersion = 0;
};

inline constexpr std::int32_t DoxListing_LatestVersions = 14;
inline constexpr std::int32_t DoxListing_ReferencedVersions = 30;

class IDoxBatchListing : public virtual HostObject
{
public:
    virtual HRESULT AddFolder(std::int32_t folderId) = 0;
    virtual HRESULT AddFile(const QString &path) = 0;
    virtual HRESULT CreateList(const QString &columns, std::int32_t flags, std::vector<DoxListingRow> &rows) = 0;
};

// A selected file handed to the reference service.
struct DoxReferenceQuery {
    std::int32_t docId = 0;
    std::int32_t folderId = 0;
    std::int32_t version = 0;
    QString path;
};

class IDoxVault : public virtual HostObject
{
public:
    virtual HRESULT GetName(QString &name) = 0;
    virtual HRESULT GetRootFolderPath(QString &path) = 0; // no trailing backslash

    // S_OK with the file and the folder holding it, S_FALSE when the vault
    // does not know the path.
    virtual HRESULT GetFileFromPath(const QString &path, std::shared_ptr<IDoxFile> &file,
                                    std::shared_ptr<IDoxFolder> &folder) = 0;
    virtual HRESULT GetFolderFromPath(const QString &path, std::shared_ptr<IDoxFolder> &folder) = 0;
    virtual HRESULT GetFile(std::int32_t id, std::shared_ptr<IDoxFile> &file) = 0;
    virtual HRESULT GetFolder(std::int32_t id, std::shared_ptr<IDoxFolder> &folder) = 0;

    virtual HRESULT CreateUtility(std::int32_t utility, HostObjectPtr &service) = 0;

    // Version numbers of the selected files under a reference setting, one
    // per query, in order.
    virtual HRESULT ResolveReferenceVersions(const std::vector<DoxReferenceQuery> &files, std::int32_t setting,
                                             std::vector<std::int32_t> &versions) = 0;

    virtual HRESULT GetCardVariableNames(QStringList &names) = 0;

    // Name and description of a host error code; S_FALSE when unknown.
    virtual HRESULT GetErrorInfo(HRESULT code, QString &name, QString &description) = 0;

    // The host's pickers: S_FALSE when the user cancelled. BrowseForFiles gives
    // each picked file with the folder it was picked in (same index).
    virtual HRESULT BrowseForFiles(HostWindow owner, const QString &title, const QString &filter,
                                   std::vector<std::shared_ptr<IDoxFile>> &files,
                                   std::vector<std::shared_ptr<IDoxFolder>> &folders) = 0;
    virtual HRESULT BrowseForFolder(HostWindow owner, const QString &title, std::shared_ptr<IDoxFolder> &folder) = 0;
};

template <class Service>
HRESULT createVaultUtility(IDoxVault &vault, std::int32_t utility, std::shared_ptr<Service> &service)
{
    HostObjectPtr object;
    const HRESULT hr = vault.CreateUtility(utility, object);
    if (failed(hr))
        return hr;
    service = queryInterface<Service>(object);
    return service ? S_OK : E_NOINTERFACE;
}
