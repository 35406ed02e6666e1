#pragma once

#include "host/hosterror.h"
#include "vault/pgdb.h"
#include "vault/sqlitedb.h"

#include <memory>
#include <optional>
#include <variant>

// The store of a vault: an SQLite file (one machine) or a PostgreSQL
// database (several machines). The vault's SQL is written once, in the
// subset both understand (? parameters, ON CONFLICT upserts, RETURNING ids,
// COALESCE, CAST); what differs between them lives here and in VaultSchema.
class VaultDb final
{
public:
    enum class Kind { Sqlite, Postgres };

    explicit VaultDb(std::unique_ptr<SqliteDb> db);
    explicit VaultDb(std::unique_ptr<PgDb> db);
    ~VaultDb();
    VaultDb(const VaultDb &) = delete;
    VaultDb &operator=(const VaultDb &) = delete;

    Kind kind() const { return m_sqlite ? Kind::Sqlite : Kind::Postgres; }
    // The back end itself, null for the other kind.
    SqliteDb *sqlite() const { return m_sqlite.get(); }
    PgDb *postgres() const { return m_pg.get(); }

    class Statement prepare(const char *sql);
    void exec(const char *sql);
    int changes() const;
    bool inTransaction() const;
    bool isReadOnly() const;
    // The schema version: PRAGMA user_version in SQLite, the one row of
    // vault_schema in PostgreSQL (0 before there is one).
    int userVersion();
    void setUserVersion(int version);
    void onTransactionEnd(std::function<void(bool committed)> callback);
    // select, made to lock the rows it reads until the transaction ends: on
    // PostgreSQL FOR UPDATE (with skipLocked, rows that another transaction
    // locked are passed over instead of waited for); SQLite's write
    // transaction already keeps every other writer out.
    QByteArray lockingRows(const QByteArray &select, bool skipLocked = false) const;
    std::unique_lock<std::recursive_mutex> guard();

    // Contents, keyed by their SHA-256 in the table blobs: SQLite keeps the
    // bytes in the row, PostgreSQL a large object per content that moves in
    // chunks, so that a large file is never held twice. Storing a content
    // that is there already changes nothing.
    void storeContent(const QString &hash, const QByteArray &bytes);
    std::optional<QByteArray> readContent(const QString &hash);
    // Drops the content unless a version still has it.
    void dropContentIfUnused(const QString &hash);

    // Wake-ups of idle task hosts. On PostgreSQL announceWaiting() tells the
    // hosts that listen on this vault (when the open transaction commits) that
    // an instance waits, and waitForWaiting() returns as soon as they are
    // told; on SQLite nothing is sent and the wait is a sleep of the Clock.
    // Listen before looking at the queue, so no announcement falls between.
    void announceWaiting();
    void listenForWaiting();
    // Waits at most ms; true when an announcement came.
    bool waitForWaiting(qint64 ms);

    // A server vault whose connection was lost, and its new connection
    // (HostError E_DOX_CANT_OPEN_DATABASE while the server stays away). An
    // SQLite file is never lost.
    bool isConnectionLost() const { return m_pg && m_pg->isLost(); }
    void reconnect();

private:
    // One channel per vault: the server's vaults are apart by schema.
    QString waitingChannel();

    std::unique_ptr<SqliteDb> m_sqlite;
    std::unique_ptr<PgDb> m_pg;
    QString m_channel;
};

// A use of a prepared statement of either back end (see SqliteStatement).
class Statement final
{
public:
    explicit Statement(SqliteStatement s) : m_s(std::move(s)) {}
    explicit Statement(PgStatement s) : m_s(std::move(s)) {}

    template<typename T>
    Statement &bind(int index, T value)
    {
        std::visit([&](auto &s) { s.bind(index, value); }, m_s);
        return *this;
    }
    Statement &bindBlob(int index, const QByteArray &value)
    {
        std::visit([&](auto &s) { s.bindBlob(index, value); }, m_s);
        return *this;
    }
    Statement &bindNull(int index)
    {
        std::visit([&](auto &s) { s.bindNull(index); }, m_s);
        return *this;
    }
    bool step()
    {
        return std::visit([](auto &s) { return s.step(); }, m_s);
    }
    void exec()
    {
        std::visit([](auto &s) { s.exec(); }, m_s);
    }
    // Runs an INSERT ... RETURNING id to its end (SQLite keeps a statement
    // that has rows left open, and a commit fails while it is) and gives the id.
    std::int64_t insertedId()
    {
        const std::optional<std::int64_t> id = insertedIdIfNew();
        if (!id)
            throw HostError(E_DOX_DATABASE_ACCESS, QStringLiteral("an insert returned no id"));
        return *id;
    }
    // The same for an INSERT ... ON CONFLICT DO NOTHING RETURNING id: none
    // when the row was there already. On a server a concurrent insert of the
    // same key is waited for, so a writer that loses the race learns it here
    // instead of from a broken transaction.
    std::optional<std::int64_t> insertedIdIfNew()
    {
        if (!step())
            return std::nullopt;
        const std::int64_t id = int64(0);
        while (step()) {
        }
        return id;
    }
    bool isNull(int column) const
    {
        return std::visit([&](const auto &s) { return s.isNull(column); }, m_s);
    }
    std::int64_t int64(int column) const
    {
        return std::visit([&](const auto &s) { return s.int64(column); }, m_s);
    }
    int integer(int column) const { return static_cast<int>(int64(column)); }
    double real(int column) const
    {
        return std::visit([&](const auto &s) { return s.real(column); }, m_s);
    }
    QString text(int column) const
    {
        return std::visit([&](const auto &s) { return s.text(column); }, m_s);
    }
    QByteArray blob(int column) const
    {
        return std::visit([&](const auto &s) { return s.blob(column); }, m_s);
    }

private:
    std::variant<SqliteStatement, PgStatement> m_s;
};

// A write transaction of either back end, or a savepoint inside one; rolls
// back in its destructor unless committed.
class Transaction final
{
public:
    explicit Transaction(VaultDb &db);
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    void commit();
    bool isNested() const { return m_sqlite ? m_sqlite->isNested() : m_pg->isNested(); }

private:
    std::optional<SqliteTransaction> m_sqlite;
    std::optional<PgTransaction> m_pg;
};

// While it lives, commits are not flushed to disk before they return (see
// SqliteUnflushedCommits; on PostgreSQL, synchronous_commit is off): for
// frequent writes worth less than a flush, such as a run's progress.
class UnflushedCommits final
{
public:
    explicit UnflushedCommits(VaultDb &db);
    ~UnflushedCommits();
    UnflushedCommits(const UnflushedCommits &) = delete;
    UnflushedCommits &operator=(const UnflushedCommits &) = delete;

private:
    std::optional<SqliteUnflushedCommits> m_sqlite;
    PgDb *m_pg = nullptr;
    std::unique_lock<std::recursive_mutex> m_guard;
};
