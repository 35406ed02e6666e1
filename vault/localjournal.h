#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

class NamedMutex;
class VaultDb;

// The vault's local copies follow its transactions. Bytes written inside a
// transaction go to a staging file under .mctask/staging and, in the same
// transaction, into the table local_journal; once the outermost transaction
// commits they are renamed into place and their rows dropped, and a
// rollback deletes them. So a process killed at any point leaves either the
// old local files and the old database, or a committed journal that the
// next opening of the vault finishes (recover()).
//
// Each open vault stages under an owner name of its own, whose lock file it
// holds while it lives; recover() only touches owners whose lock is free,
// that is, processes that are gone.
class LocalJournal final
{
public:
    // root: the vault's folder. An in-memory database has no journal to
    // recover and no other process to share it.
    LocalJournal(VaultDb &db, const QString &root, bool inMemory);
    ~LocalJournal();
    LocalJournal(const LocalJournal &) = delete;
    LocalJournal &operator=(const LocalJournal &) = delete;

    // Writes bytes to the native path target: at once outside a transaction,
    // else staged until the transaction ends. Throws HostError E_DOX_IO_ERROR
    // with the reason when the file cannot be written.
    void write(const QString &target, const QByteArray &bytes);
    // The bytes the open transaction has staged for target, if any.
    std::optional<QByteArray> staged(const QString &target) const;
    // Makes a folder of the local view once the transaction commits.
    void makeFolder(const QString &target);

    // Finishes the committed work of dead owners and deletes the rest of
    // what they staged. A committed copy goes into place only when
    // isCurrent(target, bytes) says the vault holds those bytes there now.
    // A vault that cannot be written is left for a later opening.
    void recover(const std::function<bool(const QString &target, const QByteArray &bytes)> &isCurrent);

    static QString stagingFolder(const QString &root);

private:
    void ensureOwner();
    void finish(const QString &name, const QString &target, bool committed);
    void dropMovedRows();
    QString relativeToRoot(const QString &native) const;

    VaultDb &m_db;
    QString m_root;
    QString m_staging;
    bool m_inMemory;
    QString m_owner;
    std::unique_ptr<NamedMutex> m_lock;
    int m_counter = 0;
    std::map<QString, QString> m_pending; // target -> staging file name
    std::vector<QString> m_moved;         // in place, rows still to drop
    bool m_leftovers = false;
};
