#pragma once

#include "host/idoxvault.h"
#include "vault/vaultstore.h"

#include <memory>
#include <set>
#include <utility>
#include <vector>

// The vault's batch utilities. Each queues its work and does all of it in
// one transaction when committed: a crash or a failure half-way leaves the
// vault as it was before the batch.

// DoxUtil_BatchAdd (16). New files stay checked out by the user until a
// check-in, as the host's add does. A file that fails (name taken, source
// unreadable) gets its code in its result and the others go on.
class VaultBatchAdd final : public IDoxBatchAdd
{
public:
    explicit VaultBatchAdd(std::shared_ptr<VaultStore> store) : m_store(std::move(store)) {}

    HRESULT AddFileFromPath(const QString &localPath, const QString &destinationFolderPath) override;
    HRESULT CommitAdd(std::vector<DoxBatchAddResult> &results) override;

private:
    struct Entry {
        QString source;  // native
        QString folder;  // relative
        QString name;
    };
    std::shared_ptr<VaultStore> m_store;
    std::vector<Entry> m_entries;
};

// DoxUtil_BatchCheckIn (6): every selected file must be checked out by the
// user; CreateTree checks that, CheckIn stores the new versions.
class VaultBatchCheckIn final : public IDoxBatchCheckIn
{
public:
    explicit VaultBatchCheckIn(std::shared_ptr<VaultStore> store) : m_store(std::move(store)) {}

    HRESULT SetComment(const QString &comment) override;
    HRESULT AddSelection(const std::vector<DoxFolderPair> &files) override;
    HRESULT CreateTree() override;
    HRESULT CheckIn() override;

private:
    std::vector<int> selectedIds() const;

    std::shared_ptr<VaultStore> m_store;
    QString m_comment;
    std::vector<DoxFolderPair> m_selection;
    std::set<std::pair<std::int32_t, std::int32_t>> m_selected; // the same pairs, to find doubles
};

// DoxUtil_CustomReferences (8): references from the latest version of a file
// to the latest versions of others, without a configuration.
class VaultCustomReferences final : public IDoxCustomReferences
{
public:
    explicit VaultCustomReferences(std::shared_ptr<VaultStore> store) : m_store(std::move(store)) {}

    HRESULT AddReferences(std::int32_t fromDocId, const std::vector<DoxFolderPair> &to) override;
    HRESULT IsCommitNeeded(bool &needed) override;
    HRESULT Commit() override;

private:
    std::shared_ptr<VaultStore> m_store;
    std::vector<std::pair<std::int32_t, DoxFolderPair>> m_pending;
};

// DoxUtil_BatchUpdate (2): card values of the files' latest versions.
class VaultBatchUpdate final : public IDoxBatchUpdate
{
public:
    explicit VaultBatchUpdate(std::shared_ptr<VaultStore> store) : m_store(std::move(store)) {}

    HRESULT SetVariable(std::int32_t docId, const QString &variable, const QString &configuration,
                        const Variant &value) override;
    HRESULT Commit() override;

private:
    struct Pending {
        std::int32_t docId;
        QString variable;
        QString configuration;
        Variant value;
    };
    std::shared_ptr<VaultStore> m_store;
    std::vector<Pending> m_pending;
};

// DoxUtil_BatchListing (13). Each listed file (files added by path, and
// every file in and below an added folder, once each, in the order added)
// gives a row with parent id 0 and return flag ListedFile, followed by its
// references, depth first, with return flag Reference. With the flag bit
// 0x10 (DoxListing_ReferencedVersions) a reference shows the version it was
// made to ("as built") and its own references are those of that version;
// without it (DoxListing_LatestVersions) the latest version of each. A
// reference cycle is followed once. Every row carries all fields; the
// column list is only checked for names this listing knows.
class VaultBatchListing final : public IDoxBatchListing
{
public:
    static constexpr std::int32_t ListedFile = 1;
    static constexpr std::int32_t Reference = 2;

    explicit VaultBatchListing(std::shared_ptr<VaultStore> store) : m_store(std::move(store)) {}

    HRESULT AddFolder(std::int32_t folderId) override;
    HRESULT AddFile(const QString &path) override;
    HRESULT CreateList(const QString &columns, std::int32_t flags, std::vector<DoxListingRow> &rows) override;

private:
    void listReferences(const VaultFileRow &parent, int parentVersion, const QString &parentConfiguration,
                        bool referenced, std::vector<int> &chain, std::vector<DoxListingRow> &rows);
    DoxListingRow rowFor(const VaultFileRow &file) const;

    std::shared_ptr<VaultStore> m_store;
    std::vector<int> m_fileIds;
};
