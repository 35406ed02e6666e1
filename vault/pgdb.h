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

struct pg_conn;
struct pg_result;

class PgDb;

// Who a connection string (a libpq URI or key=value string) names, for
// messages: "database mctask on /run/pg" or "database v on db.example:5433
// as alice". The password never appears.
QString pgServerName(const QString &url);

// The SQL of the vault writes its parameters as "?" or "?N", which
// PostgreSQL spells $1, $2, ...: returns the text with them numbered and
// their count. Question marks inside quoted literals, quoted names and
// comments stay.
std::pair<std::string, int> numberPlaceholders(const char *sql);

// The connection string url with schema as the search path: every table the
// connection makes or reads is in that schema (tests and benchmarks keep
// several vaults in one database this way).
QString pgUrlWithSearchPath(const QString &url, const QString &schema);

struct PgResultDeleter {
    void operator()(pg_result *result) const;
};
using PgResult = std::unique_ptr<pg_result, PgResultDeleter>;

// Turns a libpq result into a HostError (E_DOX_DATABASE_ACCESS, or the code
// given) naming the server and what went wrong, and passes a good result
// through. Every result of a PgDb goes through here; a null result (the
// connection failed before an answer) is a failure too.
PgResult checkPg(pg_result *result, PgDb &db, const char *what, HRESULT failure = E_DOX_DATABASE_ACCESS);

// One use of a prepared statement from PgDb::prepare: the parameters are
// bound by position from 1, as with SQLite, and the statement runs at the
// first step(); the rows then come from the result it received. The use holds
// the connection's lock.
class PgStatement final
{
public:
    PgStatement(PgStatement &&other) noexcept;
    ~PgStatement();
    PgStatement(const PgStatement &) = delete;
    PgStatement &operator=(const PgStatement &) = delete;
    PgStatement &operator=(PgStatement &&) = delete;

    PgStatement &bind(int index, std::int64_t value);
    PgStatement &bind(int index, int value) { return bind(index, static_cast<std::int64_t>(value)); }
    PgStatement &bind(int index, double value);
    PgStatement &bind(int index, const QString &value);
    // A bytea parameter, sent as it is (binary).
    PgStatement &bindBlob(int index, const QByteArray &value);
    PgStatement &bindNull(int index);

    // True while a row is available.
    bool step();
    // Runs a statement that returns no rows.
    void exec();
    // Rows the statement inserted, updated or deleted.
    int changes() const;

    bool isNull(int column) const;
    std::int64_t int64(int column) const;
    int integer(int column) const { return static_cast<int>(int64(column)); }
    double real(int column) const;
    QString text(int column) const;
    QByteArray blob(int column) const;

private:
    friend class PgDb;
    PgStatement(PgDb &db, const std::string &name, int parameters, std::unique_lock<std::recursive_mutex> lock);
    void set(int index, QByteArray value, bool binary);
    const char *value(int column) const;

    PgDb *m_db;
    std::string m_name;
    std::vector<QByteArray> m_values;
    std::vector<bool> m_null;
    std::vector<int> m_binary;
    PgResult m_result;
    int m_row = -1;
    std::unique_lock<std::recursive_mutex> m_lock;
};

// The one handle of a connection to a PostgreSQL vault. A connection that
// broke stays broken: every later use fails with its message, until the
// owner reconnects it or opens a new one.
class PgDb final
{
public:
    // url: a libpq connection URI or key=value string. Fails with
    // E_DOX_CANT_OPEN_DATABASE naming the server.
    explicit PgDb(const QString &url);
    ~PgDb();
    PgDb(const PgDb &) = delete;
    PgDb &operator=(const PgDb &) = delete;

    // A use of the statement for sql, prepared on the server once per text.
    PgStatement prepare(const char *sql);
    // Runs one or more statements without parameters or results.
    void exec(const char *sql);

    // Rows changed by the last statement run through prepare() or exec().
    int changes() const { return m_changes; }
    bool inTransaction() const;

    // Work that must follow the fate of the open transaction, as
    // SqliteDb::onTransactionEnd.
    void onTransactionEnd(std::function<void(bool committed)> callback);

    std::unique_lock<std::recursive_mutex> guard() { return std::unique_lock<std::recursive_mutex>(m_mutex); }

    // Large objects, inside the open transaction (the server allows them
    // nowhere else). They move in chunks of LargeObjectChunk bytes between the
    // server and the caller's buffer, so a large content is never held twice.
    static constexpr qsizetype LargeObjectChunk = 1 << 20;
    unsigned writeLargeObject(const QByteArray &bytes);
    QByteArray readLargeObject(unsigned oid);
    void unlinkLargeObject(unsigned oid);

    // Notifications (LISTEN/NOTIFY). notify() is delivered when the open
    // transaction commits (at once outside one); listen() is idempotent per
    // channel. waitForNotification() waits on the connection's socket at most
    // ms and consumes what came, also what arrived during earlier queries:
    // true when anything did.
    void notify(const QString &channel);
    void listen(const QString &channel);
    bool waitForNotification(qint64 ms);

    // True once the connection to the server is lost.
    bool isLost() const;
    // Connects anew after a loss, with the statements and listens of the
    // connection made again; fails as the constructor does.
    void reconnect();

    pg_conn *handle() const { return m_conn; }
    // What the messages call the server (pgServerName of the URL).
    const QString &serverName() const { return m_server; }

private:
    friend class PgTransaction;
    friend class PgStatement;
    friend PgResult checkPg(pg_result *, PgDb &, const char *, HRESULT);
    // The check of libpq's large-object calls, which answer -1 (or 0 for no
    // object) on failure.
    long long checkLo(long long rc, const char *what);
    // Reads what the socket holds and drops the notifications; true when any.
    bool takeNotifications();

    std::recursive_mutex m_mutex;
    pg_conn *m_conn = nullptr;
    QString m_server;
    int m_changes = 0;
    TransactionEndCallbacks m_endCallbacks;
    struct Prepared {
        std::string name;
        int parameters = 0;
    };
    std::unordered_map<std::string, Prepared> m_prepared;
    std::vector<QString> m_listening;
};

// A transaction, or a savepoint when one is already open. Rolls back in its
// destructor unless committed. Other threads of the process wait until it
// ends.
class PgTransaction final
{
public:
    explicit PgTransaction(PgDb &db);
    ~PgTransaction();
    PgTransaction(const PgTransaction &) = delete;
    PgTransaction &operator=(const PgTransaction &) = delete;

    void commit();
    // A savepoint inside a transaction that was open already.
    bool isNested() const { return m_nested; }

private:
    PgDb &m_db;
    std::unique_lock<std::recursive_mutex> m_guard;
    bool m_nested = false;
    bool m_done = false;
    std::size_t m_firstCallback = 0;
};
