#include "vault/pgdb.h"

#include "host/hosterror.h"

#include <libpq-fe.h>
#include <libpq/libpq-fs.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

QString firstLine(const char *message)
{
    return QString::fromUtf8(message).section(QLatin1Char('\n'), 0, 0).trimmed();
}

// What a SQLSTATE means to a person; empty where the server's own message
// says it well enough.
QString pgFailureText(const QByteArray &state)
{
    if (state.startsWith("08"))
        return QStringLiteral("the connection to the server was lost");
    if (state == "57P01" || state == "57P02")
        return QStringLiteral("the server closed the connection");
    if (state == "57P03")
        return QStringLiteral("the server is starting up or shutting down");
    if (state == "53100")
        return QStringLiteral("the server's disk is full");
    if (state == "40001" || state == "40P01")
        return QStringLiteral("a concurrent change got in the way");
    return {};
}

// Why a connection could not be made. libpq says "connection to server on
// socket ... failed: why": the why is what counts.
QString connectFailure(pg_conn *conn)
{
    QString why = firstLine(PQerrorMessage(conn));
    const qsizetype failed = why.lastIndexOf(QLatin1String("failed: "));
    if (failed >= 0)
        why = why.mid(failed + 8);
    // A missing socket or a refused port: nothing listens there.
    if (why.contains(QLatin1String("No such file or directory")) || why.contains(QLatin1String("Connection refused")))
        return QStringLiteral("cannot connect (%1): the server is not running or not reachable").arg(why);
    return QStringLiteral("cannot connect (%1)").arg(why);
}

[[noreturn]] void fail(HRESULT code, const QString &server, const QString &message, const char *what)
{
    QString text = QStringLiteral("vault server %1: %2").arg(server, message);
    if (what && *what)
        text += QStringLiteral(" (%1)").arg(QString::fromUtf8(what).simplified());
    throw HostError(code, text);
}

void ignoreNotice(void *, const char *)
{
}

} // namespace

QString pgServerName(const QString &url)
{
    char *error = nullptr;
    PQconninfoOption *options = PQconninfoParse(url.toUtf8().constData(), &error);
    if (!options) {
        PQfreemem(error); // the message may quote the string, password and all
        return QStringLiteral("(a connection string that cannot be read)");
    }
    QString database, host, port, user;
    for (PQconninfoOption *o = options; o->keyword; ++o) {
        if (!o->val)
            continue;
        const QString value = QString::fromUtf8(o->val);
        const std::string keyword = o->keyword;
        if (keyword == "dbname")
            database = value;
        else if (keyword == "host" && host.isEmpty())
            host = value;
        else if (keyword == "hostaddr")
            host = value;
        else if (keyword == "port")
            port = value;
        else if (keyword == "user")
            user = value;
    }
    PQconninfoFree(options);
    QString name = database.isEmpty() ? QStringLiteral("the default database") : database;
    name += host.isEmpty() ? QStringLiteral(" on the local server") : QStringLiteral(" on ") + host;
    if (!port.isEmpty())
        name += QLatin1Char(':') + port;
    return name;
}

QString pgUrlWithSearchPath(const QString &url, const QString &schema)
{
    if (url.contains(QLatin1String("://")))
        return url + (url.contains(QLatin1Char('?')) ? '&' : '?') + "options=-csearch_path%3D" + schema;
    return url + " options='-csearch_path=" + schema + "'";
}

std::pair<std::string, int> numberPlaceholders(const char *sql)
{
    std::string out;
    int count = 0;
    char quote = 0; // the quote that opened the literal or name we are in
    bool lineComment = false;
    int blockComments = 0;
    for (const char *p = sql; *p; ++p) {
        const char c = *p;
        // Two-character tokens (comment marks) are copied whole.
        const auto pair = [&] {
            out += c;
            out += *++p;
        };
        if (lineComment) {
            lineComment = c != '\n';
        } else if (blockComments > 0) {
            if (c == '*' && p[1] == '/') {
                pair();
                --blockComments;
                continue;
            }
            if (c == '/' && p[1] == '*') {
                pair();
                ++blockComments;
                continue;
            }
        } else if (quote) {
            if (c == quote) // a doubled quote closes and reopens: same result
                quote = 0;
        } else if (c == '\'' || c == '"') {
            quote = c;
        } else if (c == '-' && p[1] == '-') {
            lineComment = true;
        } else if (c == '/' && p[1] == '*') {
            pair();
            ++blockComments;
            continue;
        } else if (c == '?') {
            // ?NNN names its number; a bare ? takes the next after the
            // highest so far, as in SQLite.
            int number = 0;
            while (p[1] >= '0' && p[1] <= '9')
                number = number * 10 + (*++p - '0');
            if (number == 0)
                number = count + 1;
            count = std::max(count, number);
            out += '$' + std::to_string(number);
            continue;
        }
        out += c;
    }
    return {out, count};
}

void PgResultDeleter::operator()(pg_result *result) const
{
    PQclear(result);
}

PgResult checkPg(pg_result *raw, PgDb &db, const char *what, HRESULT failure)
{
    PgResult result(raw);
    const ExecStatusType status = result ? PQresultStatus(result.get()) : PGRES_FATAL_ERROR;
    if (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK || status == PGRES_EMPTY_QUERY)
        return result;
    QString message;
    QByteArray state;
    if (result) {
        state = PQresultErrorField(result.get(), PG_DIAG_SQLSTATE);
        message = firstLine(PQresultErrorField(result.get(), PG_DIAG_MESSAGE_PRIMARY));
    }
    if (message.isEmpty())
        message = firstLine(PQerrorMessage(db.m_conn));
    // A unique key that a concurrent writer took first: the vault's own
    // answer, as the look before the write gives it when nobody races.
    if (state == "23505")
        fail(E_DOX_NAME_ALREADY_EXISTS, db.m_server, QStringLiteral("already exists (%1)").arg(message), nullptr);
    QString plain = pgFailureText(state);
    if (plain.isEmpty() && PQstatus(db.m_conn) == CONNECTION_BAD)
        plain = pgFailureText("08000");
    if (!plain.isEmpty()) {
        // A person learns what happened; the server's words help with the rest.
        fail(failure, db.m_server, message.isEmpty() ? plain : QStringLiteral("%1 (%2)").arg(plain, message), nullptr);
    }
    fail(failure, db.m_server, message, what);
}

PgStatement::PgStatement(PgDb &db, const std::string &name, int parameters,
                         std::unique_lock<std::recursive_mutex> lock)
    : m_db(&db), m_name(name), m_values(parameters), m_null(parameters, true), m_binary(parameters, 0),
      m_lock(std::move(lock))
{
}

PgStatement::PgStatement(PgStatement &&other) noexcept
    : m_db(other.m_db), m_name(std::move(other.m_name)), m_values(std::move(other.m_values)),
      m_null(std::move(other.m_null)), m_binary(std::move(other.m_binary)), m_result(std::move(other.m_result)),
      m_row(other.m_row), m_lock(std::move(other.m_lock))
{
}

PgStatement::~PgStatement() = default;

void PgStatement::set(int index, QByteArray value, bool binary)
{
    if (index < 1 || index > static_cast<int>(m_values.size()))
        throw HostError(E_DOX_DATABASE_ACCESS, QStringLiteral("vault server %1: no parameter %2 (bind)")
                                                   .arg(m_db->serverName())
                                                   .arg(index));
    m_values[index - 1] = std::move(value);
    m_null[index - 1] = false;
    m_binary[index - 1] = binary ? 1 : 0;
}

PgStatement &PgStatement::bind(int index, std::int64_t value)
{
    set(index, QByteArray::number(static_cast<qlonglong>(value)), false);
    return *this;
}

PgStatement &PgStatement::bind(int index, double value)
{
    // 17 digits give back the same double.
    set(index, QByteArray::number(value, 'g', 17), false);
    return *this;
}

PgStatement &PgStatement::bind(int index, const QString &value)
{
    set(index, value.toUtf8(), false);
    return *this;
}

PgStatement &PgStatement::bindBlob(int index, const QByteArray &value)
{
    // An empty array must still be a value, not NULL: set() marks it bound.
    set(index, value.isNull() ? QByteArray("") : value, true);
    return *this;
}

PgStatement &PgStatement::bindNull(int index)
{
    set(index, QByteArray(), false);
    m_null[index - 1] = true;
    return *this;
}

bool PgStatement::step()
{
    if (!m_result) {
        const std::size_t n = m_values.size();
        std::vector<const char *> values(n);
        std::vector<int> lengths(n);
        for (std::size_t i = 0; i < n; ++i) {
            values[i] = m_null[i] ? nullptr : m_values[i].constData();
            lengths[i] = static_cast<int>(m_values[i].size());
        }
        m_result = checkPg(PQexecPrepared(m_db->m_conn, m_name.c_str(), static_cast<int>(n), values.data(),
                                          lengths.data(), m_binary.data(), 0),
                           *m_db, m_name.c_str());
        m_db->m_changes = changes();
        m_row = 0;
    } else {
        ++m_row;
    }
    return m_row < PQntuples(m_result.get());
}

void PgStatement::exec()
{
    while (step()) {
    }
}

int PgStatement::changes() const
{
    return m_result ? std::atoi(PQcmdTuples(m_result.get())) : 0;
}

const char *PgStatement::value(int column) const
{
    return PQgetvalue(m_result.get(), m_row, column);
}

bool PgStatement::isNull(int column) const
{
    return PQgetisnull(m_result.get(), m_row, column) != 0;
}

std::int64_t PgStatement::int64(int column) const
{
    return std::strtoll(value(column), nullptr, 10);
}

double PgStatement::real(int column) const
{
    return std::strtod(value(column), nullptr);
}

QString PgStatement::text(int column) const
{
    if (isNull(column))
        return {};
    return QString::fromUtf8(value(column), PQgetlength(m_result.get(), m_row, column));
}

QByteArray PgStatement::blob(int column) const
{
    if (isNull(column))
        return {};
    std::size_t length = 0;
    unsigned char *bytes = PQunescapeBytea(reinterpret_cast<const unsigned char *>(value(column)), &length);
    if (!bytes)
        throw HostError(E_OUTOFMEMORY, QStringLiteral("vault server %1: a value too large for memory").arg(m_db->serverName()));
    QByteArray result(reinterpret_cast<const char *>(bytes), static_cast<qsizetype>(length));
    PQfreemem(bytes);
    return result;
}

PgDb::PgDb(const QString &url) : m_server(pgServerName(url))
{
    // The URL's own settings win over these defaults: it is expanded after them.
    const QByteArray dbname = url.toUtf8();
    const char *keywords[] = {"connect_timeout", "client_encoding", "dbname", nullptr};
    const char *values[] = {"10", "UTF8", dbname.constData(), nullptr};
    m_conn = PQconnectdbParams(keywords, values, 1);
    if (!m_conn)
        throw HostError(E_OUTOFMEMORY, QStringLiteral("vault server %1: no memory to connect").arg(m_server));
    if (PQstatus(m_conn) != CONNECTION_OK) {
        const QString why = connectFailure(m_conn);
        PQfinish(m_conn);
        m_conn = nullptr;
        fail(E_DOX_CANT_OPEN_DATABASE, m_server, why, nullptr);
    }
    PQsetNoticeProcessor(m_conn, ignoreNotice, nullptr);
}

bool PgDb::isLost() const
{
    return PQstatus(m_conn) == CONNECTION_BAD;
}

void PgDb::reconnect()
{
    const auto lock = guard();
    PQreset(m_conn);
    if (PQstatus(m_conn) != CONNECTION_OK)
        fail(E_DOX_CANT_OPEN_DATABASE, m_server, connectFailure(m_conn), nullptr);
    // Prepared statements and listens belong to the server's session.
    m_prepared.clear();
    std::vector<QString> channels;
    channels.swap(m_listening);
    for (const QString &channel : channels)
        listen(channel);
}

PgDb::~PgDb()
{
    PQfinish(m_conn);
}

long long PgDb::checkLo(long long rc, const char *what)
{
    if (rc < 0)
        checkPg(nullptr, *this, what);
    return rc;
}

unsigned PgDb::writeLargeObject(const QByteArray &bytes)
{
    const auto lock = guard();
    const Oid oid = lo_creat(m_conn, INV_READ | INV_WRITE);
    if (oid == InvalidOid)
        checkPg(nullptr, *this, "lo_creat");
    const int fd = static_cast<int>(checkLo(lo_open(m_conn, oid, INV_WRITE), "lo_open"));
    for (qsizetype at = 0; at < bytes.size(); at += LargeObjectChunk) {
        const auto length = static_cast<std::size_t>(std::min(LargeObjectChunk, bytes.size() - at));
        checkLo(lo_write(m_conn, fd, bytes.constData() + at, length), "lo_write");
    }
    checkLo(lo_close(m_conn, fd), "lo_close");
    return oid;
}

QByteArray PgDb::readLargeObject(unsigned oid)
{
    const auto lock = guard();
    const int fd = static_cast<int>(checkLo(lo_open(m_conn, oid, INV_READ), "lo_open"));
    const auto size = static_cast<qsizetype>(checkLo(lo_lseek64(m_conn, fd, 0, SEEK_END), "lo_lseek64"));
    checkLo(lo_lseek64(m_conn, fd, 0, SEEK_SET), "lo_lseek64");
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype at = 0; at < size;) {
        const auto length = static_cast<std::size_t>(std::min(LargeObjectChunk, size - at));
        const auto read = checkLo(lo_read(m_conn, fd, bytes.data() + at, length), "lo_read");
        if (read == 0)
            fail(E_DOX_DATABASE_ACCESS, m_server, QStringLiteral("a stored content ended early"), nullptr);
        at += static_cast<qsizetype>(read);
    }
    checkLo(lo_close(m_conn, fd), "lo_close");
    return bytes;
}

void PgDb::unlinkLargeObject(unsigned oid)
{
    const auto lock = guard();
    checkLo(lo_unlink(m_conn, oid), "lo_unlink");
}

PgStatement PgDb::prepare(const char *sql)
{
    auto lock = guard();
    auto found = m_prepared.find(sql);
    if (found == m_prepared.end()) {
        auto [text, parameters] = numberPlaceholders(sql);
        Prepared prepared{"s" + std::to_string(m_prepared.size() + 1), parameters};
        checkPg(PQprepare(m_conn, prepared.name.c_str(), text.c_str(), parameters, nullptr), *this, sql);
        found = m_prepared.emplace(sql, std::move(prepared)).first;
    }
    return PgStatement(*this, found->second.name, found->second.parameters, std::move(lock));
}

void PgDb::exec(const char *sql)
{
    const auto lock = guard();
    const PgResult result = checkPg(PQexec(m_conn, sql), *this, sql);
    m_changes = std::atoi(PQcmdTuples(result.get()));
}

void PgDb::notify(const QString &channel)
{
    prepare("SELECT pg_notify(?, '')").bind(1, channel).exec();
}

void PgDb::listen(const QString &channel)
{
    const auto lock = guard();
    if (std::find(m_listening.begin(), m_listening.end(), channel) != m_listening.end())
        return;
    const QByteArray name = channel.toUtf8();
    char *quoted = PQescapeIdentifier(m_conn, name.constData(), static_cast<size_t>(name.size()));
    if (!quoted)
        fail(E_DOX_DATABASE_ACCESS, m_server, firstLine(PQerrorMessage(m_conn)), "LISTEN");
    const QByteArray sql = "LISTEN " + QByteArray(quoted);
    PQfreemem(quoted);
    exec(sql.constData());
    m_listening.push_back(channel);
}

bool PgDb::takeNotifications()
{
    if (!PQconsumeInput(m_conn))
        fail(E_DOX_DATABASE_ACCESS, m_server,
             PQstatus(m_conn) == CONNECTION_BAD ? pgFailureText("08000") : firstLine(PQerrorMessage(m_conn)),
             "waiting for a notification");
    bool any = false;
    while (PGnotify *notification = PQnotifies(m_conn)) {
        any = true;
        PQfreemem(notification);
    }
    return any;
}

bool PgDb::waitForNotification(qint64 ms)
{
    int socket = -1;
    {
        const auto lock = guard();
        if (takeNotifications())
            return true;
        socket = PQsocket(m_conn);
    }
    if (socket < 0)
        fail(E_DOX_DATABASE_ACCESS, m_server, pgFailureText("08000"), "waiting for a notification");
    // The lock is not held while waiting: another thread may use the
    // connection, and what it reads is consumed below all the same.
    pollfd wait{socket, POLLIN, 0};
    const int rc = ::poll(&wait, 1, static_cast<int>(std::clamp<qint64>(ms, 0, 1 << 30)));
    if (rc < 0 && errno != EINTR)
        fail(E_DOX_DATABASE_ACCESS, m_server, QString::fromLocal8Bit(std::strerror(errno)), "waiting for a notification");
    const auto lock = guard();
    return takeNotifications();
}

bool PgDb::inTransaction() const
{
    const PGTransactionStatusType status = PQtransactionStatus(m_conn);
    return status == PQTRANS_INTRANS || status == PQTRANS_INERROR || status == PQTRANS_ACTIVE;
}

void PgDb::onTransactionEnd(std::function<void(bool)> callback)
{
    const auto lock = guard();
    if (!inTransaction()) {
        callback(true);
        return;
    }
    m_endCallbacks.add(std::move(callback));
}

PgTransaction::PgTransaction(PgDb &db) : m_db(db), m_guard(db.guard()), m_firstCallback(db.m_endCallbacks.size())
{
    // Savepoints share one name: ROLLBACK TO and RELEASE find the innermost
    // of that name, which is ours.
    if (db.inTransaction()) {
        m_nested = true;
        m_db.exec("SAVEPOINT nested");
    } else {
        m_db.exec("BEGIN");
    }
}

PgTransaction::~PgTransaction()
{
    if (m_done)
        return;
    // Errors are swallowed here: a destructor runs while another error is
    // already on its way out, and a broken connection has rolled back anyway.
    try {
        if (m_nested) {
            m_db.exec("ROLLBACK TO nested");
            m_db.exec("RELEASE nested");
        } else if (m_db.inTransaction()) {
            m_db.exec("ROLLBACK");
        }
    } catch (...) {
    }
    m_db.m_endCallbacks.run(m_nested ? m_firstCallback : 0, false);
}

void PgTransaction::commit()
{
    if (m_nested) {
        m_db.exec("RELEASE nested");
        m_done = true;
        return;
    }
    // COMMIT of a transaction that failed earlier answers ROLLBACK without an
    // error: that must not pass as a commit.
    const PgResult result = checkPg(PQexec(m_db.m_conn, "COMMIT"), m_db, "COMMIT");
    if (std::string(PQcmdStatus(result.get())) != "COMMIT")
        fail(E_DOX_DATABASE_ACCESS, m_db.m_server, QStringLiteral("the transaction was rolled back"), nullptr);
    m_done = true;
    m_db.m_endCallbacks.run(0, true);
}
