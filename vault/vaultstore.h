#pragma once

#include "host/variant.h"
#include "vault/localjournal.h"
#include "vault/vaultdb.h"
#include "vault/vaultpaths.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

struct VaultFolderRow {
    int id = 0;
    int parentId = 0; // 0 for the root
    QString path;     // relative, "" for the root
};

enum class VaultLock : int {
    None = 0,
    Added = 1,      // added and not yet checked in: unchanged bytes make no new version
    CheckedOut = 2, // checked out: the check-in always makes a new version
};

struct VaultFileRow {
    int id = 0;
    int folderId = 0;
    QString name;
    QString path; // relative
    int kind = 1;
    int latestVersion = 0;
    QString lockedBy; // empty when not checked out
    VaultLock lock = VaultLock::None;
    QString revision; // of the latest version
    QString state;
    QString hash; // of the latest version's bytes
};

struct VaultVersionRow {
    int version = 0;
    QString revision;
    QString state;
    QString hash;
    qint64 size = 0;
    QString comment;
    QString user;
    QString created;
};

struct VaultReferenceRow {
    int parentId = 0;
    int parentVersion = 0;
    int childId = 0;
    int childVersion = 0;
    QString configuration;
};

struct VaultCardValue {
    QString variable;
    QString configuration;
    Variant value;
};

struct VaultOpenOptions {
    QChar drive = 'V';
    QString user;                          // empty: $USER, else "user"
    std::function<QDateTime()> now;        // empty: the process-wide Clock
    int busyTimeoutMs = 10000;
    // The caller only reads: a vault it may not write opens read-only
    // (every write then fails as read-only) instead of being refused.
    bool reading = false;
};

// The vault's data: folders, files and their versions with the bytes of
// every version, card variables, references and check-out state, in one
// SQLite database or one PostgreSQL database that several machines share
// (each with a local view of its own). Every write runs in a transaction; several writes that
// belong together run inside the caller's Transaction on db(), which then
// commits them at once. Threads of a process may share one VaultStore (its
// operations and transactions take turns); several processes may open the
// same vault.
class VaultStore final
{
public:
    // The database of the vault folder dir: dir/.mctask/vault.db.
    static QString databasePath(const QString &dir);
    // Where a local view of a vault on a server keeps the server's URL:
    // dir/.mctask/server (owner-only: the URL may carry a password).
    static QString serverFilePath(const QString &dir);
    static bool isVault(const QString &dir);
    // True when dir is a local view of a vault on a server.
    static bool isOnServer(const QString &dir);

    // Makes dir a new vault (the folder is created when missing). Throws
    // HostError E_DOX_NAME_ALREADY_EXISTS when it already is one.
    static std::shared_ptr<VaultStore> create(const QString &dir, const QString &name, const VaultOpenOptions &options = {});
    // Opens the vault of dir; E_DOX_CANT_OPEN_DATABASE when there is none,
    // or when its database is empty or damaged (never a new vault then).
    // Finishes what a batch of a killed process left (LocalJournal).
    static std::shared_ptr<VaultStore> open(const QString &dir, const VaultOpenOptions &options = {});
    // A vault whose database lives in memory; its local view is dir.
    static std::shared_ptr<VaultStore> createInMemory(const QString &dir, const QString &name,
                                                      const VaultOpenOptions &options = {});
    // A new vault in the PostgreSQL database at url (a libpq URI or key=value
    // string), with dir as this machine's local view. E_DOX_NAME_ALREADY_EXISTS
    // when the database or dir already holds a vault.
    static std::shared_ptr<VaultStore> createOnServer(const QString &url, const QString &dir, const QString &name,
                                                      const VaultOpenOptions &options = {});
    // Makes dir a local view of the vault at url; later open(dir) finds it.
    // drive: this view's own letter (kept in dir/.mctask/drive), else the
    // vault's. E_DOX_CANT_OPEN_DATABASE when the database holds no vault.
    static std::shared_ptr<VaultStore> attachToServer(const QString &url, const QString &dir,
                                                      const VaultOpenOptions &options = {},
                                                      std::optional<QChar> drive = std::nullopt);

    enum class Opening { Create, Existing, ReadOnly };
    VaultStore(const QString &databasePath, const QString &dir, const VaultOpenOptions &options,
               Opening opening = Opening::Create);

    // The vault on the PostgreSQL database of db, dir its local view.
    VaultStore(std::unique_ptr<PgDb> db, const QString &dir, const VaultOpenOptions &options, bool create);

    VaultDb &db() { return m_db; }
    const VaultPaths &paths() const { return m_paths; }
    const QString &user() const { return m_user; }

    // Settings kept in the vault ("name", "drive", "DateFmt", ...).
    QString setting(const QString &key, const QString &fallback = {});
    void setSetting(const QString &key, const QString &value);
    QString name() { return setting(QStringLiteral("name")); }

    // Folders. The root has id 1 and the path "".
    static constexpr int RootFolderId = 1;
    std::optional<VaultFolderRow> folderById(int id);
    std::optional<VaultFolderRow> folderByPath(const QString &relative);
    // The folder of that path, created with its parents (also in the local
    // view) when missing. Throws E_DOX_INVALID_NAME for a bad component.
    int ensureFolder(const QString &relative);
    std::vector<VaultFolderRow> subFolders(int folderId);

    // Files.
    std::optional<VaultFileRow> fileById(int id);
    std::optional<VaultFileRow> fileByPath(const QString &relative);
    // fileById of many files at once, in order.
    std::vector<std::optional<VaultFileRow>> filesById(const std::vector<int> &ids);
    std::vector<VaultFileRow> filesIn(int folderId);
    // Every file in the folder and below, ordered by path.
    std::vector<VaultFileRow> filesUnder(int folderId);
    // Calls visit for every folder (parents first) and every file below
    // folderId, without building a list; for large trees.
    void walk(int folderId, const std::function<void(const VaultFolderRow &)> &folder,
              const std::function<void(const VaultFileRow &)> &file);
    // By id when it is positive, else by the Windows or native path.
    std::optional<VaultFileRow> fileByIdOrPath(int id, const QString &path);

    std::vector<VaultVersionRow> versions(int fileId);
    // version <= 0 means the latest.
    std::optional<VaultVersionRow> version(int fileId, int version);
    // The bytes of a version (<= 0: latest). Throws E_DOX_FILE_NOT_FOUND or
    // E_INVALIDARG for an unknown file or version.
    QByteArray readVersion(int fileId, int version = 0);

    struct AddOptions {
        QString revision;
        QString state;
        QString comment;
        bool keepCheckedOut = false; // as a batch add leaves new files
    };
    // Stores the bytes of the native file source as version 1 of a new file
    // named name in the folder, and copies them into the local view unless
    // source already is that file. E_DOX_NAME_ALREADY_EXISTS when the path is
    // taken, E_DOX_FILE_NOT_FOUND / E_DOX_IO_ERROR when source can't be read.
    VaultFileRow addFile(const QString &source, const QString &folderRelative, const QString &name,
                         const AddOptions &options);
    struct NewFile {
        QString source; // native
        QString folder; // relative
        QString name;
    };
    struct NewFileResult {
        HRESULT result = S_OK; // E_DOX_NAME_ALREADY_EXISTS, E_DOX_FILE_NOT_FOUND, ...
        QString problem;       // what failed, for a failed result
        int id = 0;
        int folderId = 0;
    };
    // addFile for many files in one transaction, one result each in order;
    // a file that cannot be added gets its code and the others go on. A
    // database failure throws and adds nothing.
    std::vector<NewFileResult> addFiles(const std::vector<NewFile> &files, const AddOptions &options);
    // The bytes of the local copy become the next version when they changed
    // or the file was checked out explicitly; the lock is released either
    // way. Returns the latest version. E_DOX_FILE_NOT_LOCKED_BY_YOU when the
    // user does not hold the lock.
    int checkIn(int fileId, const QString &comment);
    // checkIn of each of the distinct files, in one transaction: the first
    // failure throws and checks in none. The latest versions, in order.
    std::vector<int> checkInFiles(const std::vector<int> &fileIds, const QString &comment);
    // E_DOX_FILE_IS_LOCKED when somebody else holds it; no-op when we do.
    void checkOut(int fileId, int folderId);
    // The bytes of the native file source become the file's next version
    // only when they differ from its latest version (checked out, copied
    // into the local view, checked in). The latest version's number, and
    // whether a version was made. E_DOX_IO_ERROR when source can't be read.
    struct Update {
        int version = 0;
        bool changed = false;
    };
    Update updateFrom(int fileId, const QString &source);
    // Releases the lock and restores the local copy of the latest version.
    void undoCheckOut(int fileId);
    // Removes the file, its versions, card values and references, and its
    // local copy.
    void deleteFile(int fileId);
    void setVersionLabels(int fileId, int version, const QString &revision, const QString &state);
    // Writes the latest version's bytes to the local view.
    void restoreLocalCopy(int fileId);
    // Brings this machine's local copy of the file up to its latest version
    // when it is missing or holds other bytes; a copy the user has checked
    // out stays as it is. True when it wrote the copy.
    bool fetch(int fileId);
    // fetch for each file and every file its latest version references,
    // down the whole tree (each once): what a run needs before the CAD
    // application opens them. The number of copies written.
    int fetchWithReferences(const std::vector<int> &fileIds);
    // True for a vault on a server, whose local view holds only what was
    // fetched into it.
    bool isShared() const { return m_db.kind() == VaultDb::Kind::Postgres; }
    // Writes a file of the local view (native path) as part of the open
    // transaction: it changes only if the transaction commits, and a check-in
    // inside it already sees the new bytes.
    void writeLocal(const QString &native, const QByteArray &bytes);

    // Card variables: definitions per vault, values per file version.
    int defineCardVariable(const QString &name);
    std::optional<int> cardVariableId(const QString &name);
    QStringList cardVariableNames();
    // E_DOX_VARIABLE_NOT_FOUND for an undefined variable.
    void setCardValue(int fileId, int version, const QString &variable, const QString &configuration,
                      const Variant &value);
    std::optional<Variant> cardValue(int fileId, int version, const QString &variable, const QString &configuration);
    std::vector<VaultCardValue> cardValues(int fileId, int version);

    // A reference from the parent's latest version to the child's latest
    // version (the "as built" version) in a configuration of the child.
    void addReference(int parentId, int childId, const QString &configuration);
    std::vector<VaultReferenceRow> references(int parentId, int parentVersion);
    // The references to a file: from every version of every parent.
    std::vector<VaultReferenceRow> referencedBy(int childId);

    // While it lives, each write transaction of the store's data runs check
    // inside it right before it commits; a check that throws rolls the
    // write back. It serves the one user of the store that installs it
    // (the run of a claimed instance), so a store with a check installed is
    // not shared with writers of other runs.
    class CommitCheck final
    {
    public:
        CommitCheck(VaultStore &store, std::function<void()> check);
        ~CommitCheck();
        CommitCheck(const CommitCheck &) = delete;
        CommitCheck &operator=(const CommitCheck &) = delete;

    private:
        VaultStore &m_store;
    };
    // Commits a write transaction on db(), after the installed check when it
    // is not nested in another; for callers that group several writes of
    // the store in one transaction of their own.
    void commit(Transaction &transaction);

    // "Now" in UTC, ISO 8601 with milliseconds, for the records' times.
    QString timestamp() const;

    // SHA-256 of bytes in hex, the key of the stored contents.
    static QString contentHash(const QByteArray &bytes);

private:
    VaultFileRow requireFile(int fileId);
    // The bytes of a native file, as the open transaction sees them.
    QByteArray readLocal(const QString &native) const;
    // True when the vault's latest version of the file at native has bytes.
    bool holdsLatest(const QString &native, const QByteArray &bytes);
    int resolveVersion(const VaultFileRow &file, int version);
    QString storeBlob(const QByteArray &bytes);
    static VaultFileRow readFileRow(const Statement &s);
    void finishOpening(bool create);

    VaultDb m_db;
    VaultPaths m_paths;
    LocalJournal m_journal;
    QString m_user;
    std::function<QDateTime()> m_now;
    std::function<void()> m_commitCheck;
};
