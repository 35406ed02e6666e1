#pragma once

#include "host/hresult.h"
#include "vault/transactionendcallbacks.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

class SqliteDb;

// Turns an SQLite return code into a HostError (E_DOX_DATABASE_ACCESS, or
// the code given, e.g. E_DOX_CANT_OPEN_DATABASE while opening) carrying
// SQLite's own message. Every call into SQLite goes through here; codes
// that mean "fine" pass.
int checkSqlite(int rc, sqlite3 *db, const char *what, HRESULT failure = E_DOX_DATABASE_ACCESS);

// What an SQLite result code means to a person ("the vault is read-only",
// "the vault is locked by another process", ...); empty for other codes.
QString sqliteFailureText(int rc);

// One use of a prepared statement from SqliteDb::prepare. The use holds the
// connection's lock, and when it ends the statement is reset and its
// bindings cleared, so the cache gets it back clean however the use ended.
class SqliteStatement final
{
public:
    SqliteStatement(SqliteStatement &&other) noexcept;
    ~SqliteStatement();
    SqliteStatement(const SqliteStatement &) = delete;
    SqliteStatement &operator=(const SqliteStatement &) = delete;
    SqliteStatement &operator=(SqliteStatement &&) = delete;

    SqliteStatement &bind(int index, std::int64_t value);
    SqliteStatement &bind(int index, int value) { return bind(index, static_cast<std::int64_t>(value)); }
    SqliteStatement &bind(int index, double value);
    SqliteStatement &bind(int index, const QString &value);
    SqliteStatement &bindBlob(int index, const QByteArray &value);
    SqliteStatement &bindNull(int index);

    // True while a row is available.
    bool step();
    // Runs a statement that returns no rows.
    void exec();

    bool isNull(int column) const;
    std::int64_t int64(int column) const;
    int integer(int column) const { return static_cast<int>(int64(column)); }
    double real(int column) const;
    QString text(int column) const;
    QByteArray blob(int column) const;

private:
    friend class SqliteDb;
    // inUse is the cache's mark for the statement; null for a statement the
    // use owns (the cached one was busy), which is finalized at the end.
    SqliteStatement(sqlite3 *db, sqlite3_stmt *stmt, bool *inUse, std::unique_lock<std::recursive_mutex> lock);

    sqlite3 *m_db;
    sqlite3_stmt *m_stmt;
    bool *m_inUse;
    std::unique_lock<std::recursive_mutex> m_lock;
};

// The one handle of a database connection. WAL journal, a busy timeout so
// that several processes can share the file, foreign keys on.
class SqliteDb final
{
public:
    enum class OpenMode { Create, Existing, ReadOnly };
    // path ":memory:" opens a private in-memory database. Existing never
    // makes a file: a database that vanished is an error. ReadOnly opens an
    // existing database for reading only: every write fails as read-only.
    // Where not even the write-ahead log's index can be made (a folder we
    // may not write), the file is read as one nobody changes meanwhile.
    explicit SqliteDb(const QString &path, int busyTimeoutMs = 10000, OpenMode mode = OpenMode::Create);
    ~SqliteDb();
    SqliteDb(const SqliteDb &) = delete;
    SqliteDb &operator=(const SqliteDb &) = delete;

    // A use of the statement prepared for sql (compiled once per text),
    // ready for binding. A use of a statement whose cached copy is still in
    // use gets a copy of its own.
    SqliteStatement prepare(const char *sql);
    // Runs one or more statements without results.
    void exec(const char *sql);

    std::int64_t lastInsertId() const;
    // Rows changed by the last INSERT, UPDATE or DELETE of the connection.
    int changes() const;
    bool inTransaction() const;
    int userVersion();
    void setUserVersion(int version);

    sqlite3 *handle() const { return m_db; }
    bool isReadOnly() const { return m_readOnly; }

    // Work that must follow the fate of the open transaction: called with
    // true after the outermost transaction committed, with false when the
    // transaction or the savepoint it was registered under rolls back.
    // Outside a transaction it is called at once with true. Callbacks must
    // not throw.
    void onTransactionEnd(std::function<void(bool committed)> callback);

    // The connection and its cached statements serve one thread at a time:
    // every use of them, and every transaction, holds this lock. It is
    // recursive, so the store's operations may call each other.
    std::unique_lock<std::recursive_mutex> guard() { return std::unique_lock<std::recursive_mutex>(m_mutex); }

private:
    friend class SqliteTransaction;
    void open(const QByteArray &name, int flags, int busyTimeoutMs);

    std::recursive_mutex m_mutex;
    sqlite3 *m_db = nullptr;
    bool m_readOnly = false;
    TransactionEndCallbacks m_endCallbacks;
    struct CachedStatement {
        sqlite3_stmt *stmt = nullptr;
        bool inUse = false;
    };
    std::unordered_map<std::string, std::unique_ptr<CachedStatement>> m_cache;
};

// A write transaction: BEGIN IMMEDIATE (so a writer waits for the lock up
// front instead of failing half-way), or a savepoint when one is already
// open. Rolls back in its destructor unless committed. Other threads of the
// process wait until it ends.
class SqliteTransaction final
{
public:
    explicit SqliteTransaction(SqliteDb &db);
    ~SqliteTransaction();
    SqliteTransaction(const SqliteTransaction &) = delete;
    SqliteTransaction &operator=(const SqliteTransaction &) = delete;

    void commit();
    // A savepoint inside a transaction that was open already.
    bool isNested() const { return m_nested; }

private:
    SqliteDb &m_db;
    std::unique_lock<std::recursive_mutex> m_guard;
    bool m_nested = false;
    bool m_done = false;
    std::size_t m_firstCallback = 0;
};

// While it lives, commits of the connection are not flushed to disk (the
// write-ahead log with synchronous=NORMAL): they survive a crash of the
// program but a power loss may undo them, until the next flushed commit.
// For frequent writes that are worth less than a flush, such as a run's
// progress. Inside an open transaction it changes nothing.
class SqliteUnflushedCommits final
{
public:
    explicit SqliteUnflushedCommits(SqliteDb &db);
    ~SqliteUnflushedCommits();
    SqliteUnflushedCommits(const SqliteUnflushedCommits &) = delete;
    SqliteUnflushedCommits &operator=(const SqliteUnflushedCommits &) = delete;

private:
    SqliteDb &m_db;
    std::unique_lock<std::recursive_mutex> m_guard;
    bool m_relaxed = false;
};
