#include "vault/vaultdb.h"

#include "platform/clock.h"

VaultDb::VaultDb(std::unique_ptr<SqliteDb> db) : m_sqlite(std::move(db))
{
}

VaultDb::VaultDb(std::unique_ptr<PgDb> db) : m_pg(std::move(db))
{
}

VaultDb::~VaultDb() = default;

QString VaultDb::waitingChannel()
{
    const auto lock = guard();
    if (m_channel.isEmpty()) {
        PgStatement s = m_pg->prepare("SELECT COALESCE(current_schema(), '')");
        s.step();
        // A channel is a name: at most 63 bytes.
        m_channel = QStringLiteral("mctask_waiting_%1").arg(s.text(0)).left(63);
    }
    return m_channel;
}

void VaultDb::announceWaiting()
{
    if (m_pg)
        m_pg->notify(waitingChannel());
}

void VaultDb::listenForWaiting()
{
    if (m_pg)
        m_pg->listen(waitingChannel());
}

void VaultDb::reconnect()
{
    if (m_pg)
        m_pg->reconnect();
}

bool VaultDb::waitForWaiting(qint64 ms)
{
    if (!m_pg) {
        Clock::instance().sleep(ms);
        return false;
    }
    listenForWaiting();
    return m_pg->waitForNotification(ms);
}

Statement VaultDb::prepare(const char *sql)
{
    return m_sqlite ? Statement(m_sqlite->prepare(sql)) : Statement(m_pg->prepare(sql));
}

void VaultDb::exec(const char *sql)
{
    m_sqlite ? m_sqlite->exec(sql) : m_pg->exec(sql);
}

int VaultDb::changes() const
{
    return m_sqlite ? m_sqlite->changes() : m_pg->changes();
}

bool VaultDb::inTransaction() const
{
    return m_sqlite ? m_sqlite->inTransaction() : m_pg->inTransaction();
}

bool VaultDb::isReadOnly() const
{
    return m_sqlite && m_sqlite->isReadOnly();
}

int VaultDb::userVersion()
{
    if (m_sqlite)
        return m_sqlite->userVersion();
    const auto lock = guard();
    PgStatement exists = m_pg->prepare("SELECT to_regclass('vault_schema') IS NOT NULL");
    exists.step();
    if (exists.text(0) != QLatin1String("t"))
        return 0;
    PgStatement s = m_pg->prepare("SELECT version FROM vault_schema");
    return s.step() ? s.integer(0) : 0;
}

void VaultDb::setUserVersion(int version)
{
    if (m_sqlite) {
        m_sqlite->setUserVersion(version);
        return;
    }
    const auto lock = guard();
    m_pg->exec("CREATE TABLE IF NOT EXISTS vault_schema (version INTEGER NOT NULL); DELETE FROM vault_schema");
    m_pg->prepare("INSERT INTO vault_schema (version) VALUES (?)").bind(1, version).exec();
}

void VaultDb::onTransactionEnd(std::function<void(bool)> callback)
{
    m_sqlite ? m_sqlite->onTransactionEnd(std::move(callback)) : m_pg->onTransactionEnd(std::move(callback));
}

std::unique_lock<std::recursive_mutex> VaultDb::guard()
{
    return m_sqlite ? m_sqlite->guard() : m_pg->guard();
}

void VaultDb::storeContent(const QString &hash, const QByteArray &bytes)
{
    const auto lock = guard();
    if (m_sqlite) {
        m_sqlite->prepare("INSERT INTO blobs (hash, size, data) VALUES (?, ?, ?) ON CONFLICT (hash) DO NOTHING")
            .bind(1, hash)
            .bind(2, static_cast<std::int64_t>(bytes.size()))
            .bindBlob(3, bytes)
            .exec();
        return;
    }
    if (bytes.size() <= PgDb::LargeObjectChunk) {
        // A small content goes in one round trip (one statement needs no
        // transaction of its own): the object is made only when the content
        // is new, and dropped again when another machine stored the same
        // content meanwhile.
        m_pg->prepare("WITH made AS (SELECT lo_from_bytea(0, ?3) AS oid "
                      "            WHERE NOT EXISTS (SELECT 1 FROM blobs WHERE hash = ?1)), "
                      "kept AS (INSERT INTO blobs (hash, size, data) SELECT ?1, CAST(?2 AS BIGINT), oid FROM made "
                      "         ON CONFLICT (hash) DO NOTHING RETURNING data) "
                      "SELECT lo_unlink(oid) FROM made WHERE oid NOT IN (SELECT data FROM kept)")
            .bind(1, hash)
            .bind(2, static_cast<std::int64_t>(bytes.size()))
            .bindBlob(3, bytes)
            .exec();
        return;
    }
    if (m_pg->prepare("SELECT 1 FROM blobs WHERE hash = ?").bind(1, hash).step())
        return;
    // Large objects live only inside a transaction. The store's writes run
    // in one already, where a savepoint per content would only cost two
    // more round trips; the same holds below.
    std::optional<PgTransaction> t;
    if (!m_pg->inTransaction())
        t.emplace(*m_pg);
    const unsigned oid = m_pg->writeLargeObject(bytes);
    PgStatement insert = m_pg->prepare("INSERT INTO blobs (hash, size, data) VALUES (?, ?, ?) ON CONFLICT (hash) DO NOTHING");
    insert.bind(1, hash).bind(2, static_cast<std::int64_t>(bytes.size())).bind(3, static_cast<std::int64_t>(oid)).exec();
    // Another machine stored the same content meanwhile: its object serves.
    if (insert.changes() == 0)
        m_pg->unlinkLargeObject(oid);
    if (t)
        t->commit();
}

std::optional<QByteArray> VaultDb::readContent(const QString &hash)
{
    const auto lock = guard();
    if (m_sqlite) {
        SqliteStatement s = m_sqlite->prepare("SELECT data FROM blobs WHERE hash = ?");
        if (!s.bind(1, hash).step())
            return std::nullopt;
        return s.blob(0);
    }
    std::optional<PgTransaction> t;
    if (!m_pg->inTransaction())
        t.emplace(*m_pg);
    PgStatement s = m_pg->prepare("SELECT data FROM blobs WHERE hash = ?");
    if (!s.bind(1, hash).step())
        return std::nullopt;
    QByteArray bytes = m_pg->readLargeObject(static_cast<unsigned>(s.int64(0)));
    if (t)
        t->commit();
    return bytes;
}

void VaultDb::dropContentIfUnused(const QString &hash)
{
    const auto lock = guard();
    if (m_sqlite) {
        m_sqlite->prepare("DELETE FROM blobs WHERE hash = ?1 AND NOT EXISTS (SELECT 1 FROM versions WHERE hash = ?1)")
            .bind(1, hash)
            .exec();
        return;
    }
    std::optional<PgTransaction> t;
    if (!m_pg->inTransaction())
        t.emplace(*m_pg);
    PgStatement s = m_pg->prepare(
        "DELETE FROM blobs WHERE hash = ?1 AND NOT EXISTS (SELECT 1 FROM versions WHERE hash = ?1) RETURNING data");
    if (s.bind(1, hash).step())
        m_pg->unlinkLargeObject(static_cast<unsigned>(s.int64(0)));
    if (t)
        t->commit();
}

QByteArray VaultDb::lockingRows(const QByteArray &select, bool skipLocked) const
{
    if (m_sqlite)
        return select;
    return select + (skipLocked ? " FOR UPDATE SKIP LOCKED" : " FOR UPDATE");
}

Transaction::Transaction(VaultDb &db)
{
    if (db.sqlite())
        m_sqlite.emplace(*db.sqlite());
    else
        m_pg.emplace(*db.postgres());
}

void Transaction::commit()
{
    m_sqlite ? m_sqlite->commit() : m_pg->commit();
}

UnflushedCommits::UnflushedCommits(VaultDb &db)
{
    if (db.sqlite()) {
        m_sqlite.emplace(*db.sqlite());
        return;
    }
    m_guard = db.guard();
    if (!db.inTransaction()) {
        db.exec("SET synchronous_commit TO off");
        m_pg = db.postgres();
    }
}

UnflushedCommits::~UnflushedCommits()
{
    if (!m_pg)
        return;
    try {
        m_pg->exec("RESET synchronous_commit");
    } catch (...) {
        // The connection is failing anyway; its next use reports it.
    }
}
