#include "vault/sqlitedb.h"

#include "host/hosterror.h"

#include <QFileInfo>
#include <QUrl>

#include <sqlite3.h>

#include <utility>

QString sqliteFailureText(int rc)
{
    switch (rc & 0xff) {
    case SQLITE_READONLY:
    case SQLITE_PERM:
        return QStringLiteral("the vault is read-only");
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return QStringLiteral("the vault is locked by another process");
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return QStringLiteral("the vault database is damaged");
    case SQLITE_CANTOPEN:
        return QStringLiteral("the vault database cannot be opened");
    case SQLITE_FULL:
        return QStringLiteral("the disk is full");
    case SQLITE_IOERR:
        return QStringLiteral("the vault database cannot be read or written");
    default:
        return {};
    }
}

int checkSqlite(int rc, sqlite3 *db, const char *what, HRESULT failure)
{
    if (rc == SQLITE_OK || rc == SQLITE_ROW || rc == SQLITE_DONE)
        return rc;
    // The extended code tells more than a step's result (e.g. a read-only
    // folder shows as "cannot open" the write-ahead log).
    const int code = db ? sqlite3_extended_errcode(db) : rc;
    const QString message = db ? QString::fromUtf8(sqlite3_errmsg(db)) : QString::fromUtf8(sqlite3_errstr(rc));
    QString plain = sqliteFailureText(code);
    if (plain.isEmpty())
        plain = sqliteFailureText(rc);
    // A person learns what happened; the statement only helps with the rest.
    if (!plain.isEmpty())
        throw HostError(failure, QStringLiteral("%1 (%2)").arg(plain, message));
    throw HostError(failure, QStringLiteral("%1 (%2)").arg(message, QString::fromUtf8(what)));
}

SqliteStatement::SqliteStatement(sqlite3 *db, sqlite3_stmt *stmt, bool *inUse, std::unique_lock<std::recursive_mutex> lock)
    : m_db(db), m_stmt(stmt), m_inUse(inUse), m_lock(std::move(lock))
{
}

SqliteStatement::SqliteStatement(SqliteStatement &&other) noexcept
    : m_db(other.m_db), m_stmt(std::exchange(other.m_stmt, nullptr)), m_inUse(std::exchange(other.m_inUse, nullptr)),
      m_lock(std::move(other.m_lock))
{
}

SqliteStatement::~SqliteStatement()
{
    if (!m_stmt)
        return;
    if (!m_inUse) {
        sqlite3_finalize(m_stmt);
        return;
    }
    sqlite3_reset(m_stmt);
    sqlite3_clear_bindings(m_stmt);
    *m_inUse = false;
}

SqliteStatement &SqliteStatement::bind(int index, std::int64_t value)
{
    checkSqlite(sqlite3_bind_int64(m_stmt, index, value), m_db, "bind");
    return *this;
}

SqliteStatement &SqliteStatement::bind(int index, double value)
{
    checkSqlite(sqlite3_bind_double(m_stmt, index, value), m_db, "bind");
    return *this;
}

SqliteStatement &SqliteStatement::bind(int index, const QString &value)
{
    const QByteArray utf8 = value.toUtf8();
    checkSqlite(sqlite3_bind_text(m_stmt, index, utf8.constData(), static_cast<int>(utf8.size()), SQLITE_TRANSIENT),
                m_db, "bind");
    return *this;
}

SqliteStatement &SqliteStatement::bindBlob(int index, const QByteArray &value)
{
    // A zero-length blob must still be a blob, not NULL.
    checkSqlite(sqlite3_bind_blob64(m_stmt, index, value.isEmpty() ? "" : value.constData(),
                                    static_cast<sqlite3_uint64>(value.size()), SQLITE_TRANSIENT),
                m_db, "bind");
    return *this;
}

SqliteStatement &SqliteStatement::bindNull(int index)
{
    checkSqlite(sqlite3_bind_null(m_stmt, index), m_db, "bind");
    return *this;
}

bool SqliteStatement::step()
{
    const int rc = sqlite3_step(m_stmt);
    if (rc != SQLITE_ROW && rc != SQLITE_DONE) {
        // Reset keeps the error's message for the check.
        sqlite3_reset(m_stmt);
        checkSqlite(rc, m_db, sqlite3_sql(m_stmt));
    }
    return rc == SQLITE_ROW;
}

void SqliteStatement::exec()
{
    while (step()) {
    }
}

bool SqliteStatement::isNull(int column) const
{
    return sqlite3_column_type(m_stmt, column) == SQLITE_NULL;
}

std::int64_t SqliteStatement::int64(int column) const
{
    return sqlite3_column_int64(m_stmt, column);
}

double SqliteStatement::real(int column) const
{
    return sqlite3_column_double(m_stmt, column);
}

QString SqliteStatement::text(int column) const
{
    const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(m_stmt, column));
    return data ? QString::fromUtf8(data, sqlite3_column_bytes(m_stmt, column)) : QString();
}

QByteArray SqliteStatement::blob(int column) const
{
    const void *data = sqlite3_column_blob(m_stmt, column);
    const int size = sqlite3_column_bytes(m_stmt, column);
    return data ? QByteArray(static_cast<const char *>(data), size) : QByteArray();
}

SqliteDb::SqliteDb(const QString &path, int busyTimeoutMs, OpenMode mode) : m_readOnly(mode == OpenMode::ReadOnly)
{
    const QByteArray name = path.toUtf8();
    if (m_readOnly) {
        open(name, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX, busyTimeoutMs);
        // A log's index that cannot be made fails the first read; then the
        // file is read as it is, without the shared locks.
        if (sqlite3_exec(m_db, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr) == SQLITE_OK)
            return;
        sqlite3_close(m_db);
        m_db = nullptr;
        const QByteArray uri = QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded()
                               + QByteArrayLiteral("?immutable=1");
        open(uri, SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_URI, busyTimeoutMs);
        return;
    }
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    if (mode == OpenMode::Create)
        flags |= SQLITE_OPEN_CREATE;
    open(name, flags, busyTimeoutMs);
    try {
        // WAL lets readers go on while one writer commits; in-memory
        // databases keep their own journal mode. FULL syncs the log at every
        // commit, so a committed version survives a power cut too.
        exec("PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; PRAGMA foreign_keys=ON;");
    } catch (...) {
        sqlite3_close(m_db);
        m_db = nullptr;
        throw;
    }
}

void SqliteDb::open(const QByteArray &name, int flags, int busyTimeoutMs)
{
    try {
        checkSqlite(sqlite3_open_v2(name.constData(), &m_db, flags, nullptr), m_db, name.constData(),
                    E_DOX_CANT_OPEN_DATABASE);
        checkSqlite(sqlite3_busy_timeout(m_db, busyTimeoutMs), m_db, "busy timeout", E_DOX_CANT_OPEN_DATABASE);
    } catch (...) {
        sqlite3_close(m_db); // also after a failed open, which may leave a handle
        m_db = nullptr;
        throw;
    }
}

SqliteDb::~SqliteDb()
{
    for (const auto &entry : m_cache) // statements first: close refuses while they live
        sqlite3_finalize(entry.second->stmt);
    m_cache.clear();
    sqlite3_close(m_db);
}

SqliteStatement SqliteDb::prepare(const char *sql)
{
    auto lock = guard();
    auto &cached = m_cache[sql];
    if (!cached)
        cached = std::make_unique<CachedStatement>();
    if (!cached->stmt)
        checkSqlite(sqlite3_prepare_v2(m_db, sql, -1, &cached->stmt, nullptr), m_db, sql);
    if (cached->inUse) {
        sqlite3_stmt *own = nullptr;
        checkSqlite(sqlite3_prepare_v2(m_db, sql, -1, &own, nullptr), m_db, sql);
        return SqliteStatement(m_db, own, nullptr, std::move(lock));
    }
    cached->inUse = true;
    return SqliteStatement(m_db, cached->stmt, &cached->inUse, std::move(lock));
}

void SqliteDb::exec(const char *sql)
{
    const auto lock = guard();
    checkSqlite(sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr), m_db, sql);
}

std::int64_t SqliteDb::lastInsertId() const
{
    return sqlite3_last_insert_rowid(m_db);
}

int SqliteDb::changes() const
{
    return sqlite3_changes(m_db);
}

bool SqliteDb::inTransaction() const
{
    return sqlite3_get_autocommit(m_db) == 0;
}

int SqliteDb::userVersion()
{
    SqliteStatement s = prepare("PRAGMA user_version");
    s.step();
    return s.integer(0);
}

void SqliteDb::setUserVersion(int version)
{
    exec(QByteArray("PRAGMA user_version=" + QByteArray::number(version)).constData());
}

void SqliteDb::onTransactionEnd(std::function<void(bool)> callback)
{
    const auto lock = guard();
    if (!inTransaction()) {
        callback(true);
        return;
    }
    m_endCallbacks.add(std::move(callback));
}

SqliteUnflushedCommits::SqliteUnflushedCommits(SqliteDb &db) : m_db(db), m_guard(db.guard())
{
    if (!db.inTransaction()) {
        db.exec("PRAGMA synchronous=NORMAL");
        m_relaxed = true;
    }
}

SqliteUnflushedCommits::~SqliteUnflushedCommits()
{
    if (!m_relaxed)
        return;
    try {
        m_db.exec("PRAGMA synchronous=FULL");
    } catch (...) {
        // The connection is failing anyway; its next use reports it.
    }
}

SqliteTransaction::SqliteTransaction(SqliteDb &db) : m_db(db), m_guard(db.guard()), m_firstCallback(db.m_endCallbacks.size())
{
    // Savepoints share one name: SQLite releases and rolls back the
    // innermost of that name, which is ours, and the statements stay cached.
    if (db.inTransaction()) {
        m_nested = true;
        m_db.prepare("SAVEPOINT nested").exec();
    } else {
        m_db.exec("BEGIN IMMEDIATE");
    }
}

SqliteTransaction::~SqliteTransaction()
{
    if (m_done)
        return;
    // Errors are swallowed here: a destructor runs while another error is
    // already on its way out.
    try {
        if (m_nested) {
            m_db.prepare("ROLLBACK TO nested").exec();
            m_db.prepare("RELEASE nested").exec();
        } else if (m_db.inTransaction()) {
            m_db.exec("ROLLBACK");
        }
    } catch (...) {
    }
    m_db.m_endCallbacks.run(m_nested ? m_firstCallback : 0, false);
}

void SqliteTransaction::commit()
{
    if (m_nested) {
        m_db.prepare("RELEASE nested").exec();
        m_done = true;
        return;
    }
    m_db.exec("COMMIT");
    m_done = true;
    m_db.m_endCallbacks.run(0, true);
}
