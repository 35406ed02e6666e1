#include "hostservice/taskqueue.h"

#include "base/codepage.h"
#include "base/windowspath.h"
#include "host/hosterror.h"
#include "platform/clock.h"
#include "platform/drivemap.h"
#include "platform/filesystem.h"

#include <QFileInfo>

namespace {

// The statuses of an instance that may be taken off the queue (the schema's
// index instances_waiting has the same condition).
constexpr const char *WaitingCondition = "lease_expiry IS NULL AND status IN (0, 6, 11)";

// Guarded by the whole claim: holder, process, worker and attempt.
constexpr const char *ClaimCondition = "id = ? AND holder_host = ? AND holder_pid = ? AND holder_worker = ? "
                                       "AND attempt = ? AND lease_expiry IS NOT NULL";

Statement &bindClaim(Statement &s, int first, const TaskClaim &claim)
{
    return s.bind(first, claim.instanceId)
        .bind(first + 1, claim.holder.host)
        .bind(first + 2, static_cast<std::int64_t>(claim.holder.pid))
        .bind(first + 3, claim.holder.worker)
        .bind(first + 4, claim.attempt);
}

QString holderText(const InstanceRow &row)
{
    return QStringLiteral("%1 (process %2, worker %3)").arg(row.holderHost).arg(row.holderPid).arg(row.holderWorker);
}

// Runs write in a transaction whose commit is not flushed to disk (see
// UnflushedCommits), for frequent writes that are worth less than a flush.
template<typename Write>
auto unflushedWrite(VaultDb &db, Write &&write)
{
    const UnflushedCommits unflushed(db);
    Transaction t(db);
    auto result = write();
    t.commit();
    return result;
}

} // namespace

QString taskStatusText(std::int32_t status)
{
    switch (status) {
    case TaskStatus_Waiting: return QStringLiteral("waiting");
    case TaskStatus_Running: return QStringLiteral("running");
    case TaskStatus_Suspended: return QStringLiteral("suspended");
    case TaskStatus_CancelRequested: return QStringLiteral("cancel requested");
    case TaskStatus_FinishedOk: return QStringLiteral("finished");
    case TaskStatus_Finished: return QStringLiteral("ended by the host");
    case TaskStatus_FinishedWithError: return QStringLiteral("finished with errors");
    case TaskStatus_SuspendRequested: return QStringLiteral("suspend requested");
    case TaskStatus_ResumeRequested: return QStringLiteral("resume requested");
    default: return QString::number(status);
    }
}

TaskQueue::TaskQueue(std::shared_ptr<VaultStore> store) : m_store(store), m_tasks(std::move(store)) {}

qint64 TaskQueue::nowMs() const
{
    return Clock::instance().now().toMSecsSinceEpoch();
}

TaskClaim TaskQueue::take(int instanceId, int attempt, const TaskHolder &holder, const QueuePolicy &policy)
{
    VaultDb &db = m_store->db();
    const QString now = m_store->timestamp();
    // A launched or resumed instance runs from here on; a cancel or suspend
    // request stays for the run to honour.
    Statement s = db.prepare("UPDATE instances SET holder_host = ?2, holder_pid = ?3, holder_worker = ?4, "
                             "attempt = attempt + 1, claimed = ?5, started = ?5, lease_expiry = ?6, handover = NULL, "
                             "status = CASE WHEN status IN (0, 11) THEN 3 ELSE status END "
                             "WHERE id = ?1 AND lease_expiry IS NULL AND status NOT IN (7, 8, 9)");
    s.bind(1, instanceId)
        .bind(2, holder.host)
        .bind(3, static_cast<std::int64_t>(holder.pid))
        .bind(4, holder.worker)
        .bind(5, now)
        .bind(6, static_cast<std::int64_t>(nowMs() + policy.leaseMs))
        .exec();
    if (db.changes() != 1)
        throw HostError(E_DOX_DATABASE_ACCESS, QStringLiteral("instance %1 was taken while it was claimed").arg(instanceId));
    return TaskClaim{instanceId, holder, attempt + 1};
}

std::optional<TaskClaim> TaskQueue::claimNext(const TaskHolder &holder, const QueuePolicy &policy)
{
    VaultDb &db = m_store->db();
    Transaction t(db);
    recoverExpired(policy);
    int id = 0;
    int attempt = 0;
    {
        // On PostgreSQL, claimers on other machines pass over the row this
        // one holds instead of waiting for it.
        static const QByteArray sql = QByteArray("SELECT id, attempt FROM instances WHERE ") + WaitingCondition +
                                      " ORDER BY id LIMIT 1";
        Statement pick = db.prepare(db.lockingRows(sql, true).constData());
        if (pick.step()) {
            id = pick.integer(0);
            attempt = pick.integer(1);
        }
    }
    if (id == 0) {
        t.commit(); // what recovery did
        return std::nullopt;
    }
    const TaskClaim claim = take(id, attempt, holder, policy);
    t.commit();
    return claim;
}

QString TaskQueue::refusal(const InstanceRow &row) const
{
    if (isFinishedStatus(row.status))
        return QStringLiteral("instance %1 has ended (%2)").arg(row.id).arg(taskStatusText(row.status));
    if (row.held() && *row.leaseExpiry >= nowMs())
        return QStringLiteral("instance %1 is held by host %2").arg(row.id).arg(holderText(row));
    return {};
}

ClaimOutcome TaskQueue::claim(int instanceId, const TaskHolder &holder, const QueuePolicy &policy)
{
    VaultDb &db = m_store->db();
    Transaction t(db);
    ClaimOutcome outcome;
    auto row = m_tasks.instanceById(instanceId);
    if (!row)
        return outcome;
    // A lost holder's lease is handled before the instance is judged.
    if (row->held() && *row->leaseExpiry < nowMs()) {
        recoverExpired(policy);
        row = m_tasks.instanceById(instanceId);
    }
    outcome.row = *row;
    outcome.refusal = refusal(*row);
    if (!outcome.refusal.isEmpty()) {
        outcome.kind = isFinishedStatus(row->status) ? ClaimOutcome::Kind::Ended : ClaimOutcome::Kind::Held;
        return outcome; // rolls back: nothing changes
    }
    outcome.claim = take(row->id, row->attempt, holder, policy);
    outcome.kind = ClaimOutcome::Kind::Claimed;
    outcome.row = *m_tasks.instanceById(instanceId);
    t.commit();
    return outcome;
}

int TaskQueue::renewLeases(const QString &host, qint64 pid, qint64 leaseMs)
{
    VaultDb &db = m_store->db();
    // A renewal is worth less than a flush; a lost one only shortens a lease.
    // A released claim (lease 0) stays given up.
    return unflushedWrite(db, [&] {
        db.prepare("UPDATE instances SET lease_expiry = ? WHERE holder_host = ? AND holder_pid = ? "
                   "AND lease_expiry > 0")
            .bind(1, static_cast<std::int64_t>(nowMs() + leaseMs))
            .bind(2, host)
            .bind(3, static_cast<std::int64_t>(pid))
            .exec();
        return db.changes();
    });
}

int TaskQueue::recoverExpired(const QueuePolicy &policy)
{
    VaultDb &db = m_store->db();
    const auto guard = db.guard();
    std::vector<int> expired;
    {
        Statement s = db.prepare("SELECT id FROM instances WHERE lease_expiry IS NOT NULL AND lease_expiry < ? "
                                 "ORDER BY id");
        s.bind(1, static_cast<std::int64_t>(nowMs()));
        while (s.step())
            expired.push_back(s.integer(0));
    }
    // Every claim looks here first: the common case, nothing expired, opens
    // no transaction (inside a claim's, a savepoint costs two round trips).
    if (expired.empty())
        return 0;
    Transaction t(db);
    bool requeued = false;
    int handled = 0;
    for (const int id : expired) {
        // Looked at again under a row lock: its holder may have renewed the
        // lease, or another host handled it, since the look outside.
        Statement still = db.prepare(db.lockingRows("SELECT 1 FROM instances WHERE id = ? AND lease_expiry IS NOT NULL "
                                                    "AND lease_expiry < ?")
                                         .constData());
        still.bind(1, id).bind(2, static_cast<std::int64_t>(nowMs()));
        if (!still.step())
            continue;
        ++handled;
        const InstanceRow row = *m_tasks.instanceById(id);
        const QString lost = QStringLiteral("The task host %1 was lost while it ran this instance (attempt %2 of %3).")
                                 .arg(holderText(row))
                                 .arg(row.attempt)
                                 .arg(policy.attempts);
        if (!row.handover.isEmpty()) {
            const QString message =
                lost + QStringLiteral(" It had begun adding the outputs to the vault, so it is not run again.");
            m_tasks.setStatus(id, TaskStatus_FinishedWithError, E_FAIL, message, {}, std::nullopt);
            appendErrorLog(row, message);
        } else if (row.attempt >= policy.attempts) {
            m_tasks.setStatus(id, TaskStatus_FinishedWithError, E_FAIL, lost, {}, std::nullopt);
            appendErrorLog(row, lost);
        } else {
            // Back in the queue; a suspend or cancel request is kept.
            db.prepare("UPDATE instances SET lease_expiry = NULL, progress_pos = 0, progress_text = '', "
                       "status = CASE status WHEN 5 THEN 10 WHEN 6 THEN 6 WHEN 10 THEN 10 ELSE 0 END WHERE id = ?")
                .bind(1, id)
                .exec();
            requeued = true;
        }
    }
    if (requeued)
        db.announceWaiting();
    t.commit();
    return handled;
}

void TaskQueue::appendErrorLog(const InstanceRow &row, const QString &line)
{
    // Where the add-in writes its log: "ErrorLogPath" (relative to the vault
    // root when relative) and the instance's identifier.
    QString windows = m_store->paths().windowsRoot();
    const auto folder = m_tasks.instanceValue(row.id, QStringLiteral("ErrorLogPath"));
    if (folder && folder->type() == VarType::BStr && !folder->bstr().isEmpty())
        windows = WindowsPath::append(windows, folder->bstr());
    windows = WindowsPath::append(windows, row.guid) + QLatin1String(".log");
    QString relative;
    const QString native = m_store->paths().toRelative(windows, relative) ? m_store->paths().toNative(relative)
                                                                          : DriveMap::instance().toNative(windows);
    if (native.isEmpty())
        return;
    FileSystem &fs = FileSystem::instance();
    fs.mkpath(QFileInfo(native).absolutePath());
    fs.append(native, encodeWindows1252(QStringLiteral("An error occured: ") + line + QStringLiteral("\r\n")));
}

void TaskQueue::requireHeld(const TaskClaim &claim)
{
    VaultDb &db = m_store->db();
    Statement s = db.prepare(db.lockingRows(QByteArray("SELECT 1 FROM instances WHERE ") + ClaimCondition).constData());
    bindClaim(s, 1, claim);
    if (!s.step())
        throw HostError(E_ACCESSDENIED, QStringLiteral("instance %1 is no longer held by this run (attempt %2)")
                                            .arg(claim.instanceId)
                                            .arg(claim.attempt));
}

bool TaskQueue::holds(const TaskClaim &claim)
{
    Statement s = m_store->db().prepare((QByteArray("SELECT 1 FROM instances WHERE ") + ClaimCondition).constData());
    bindClaim(s, 1, claim);
    return s.step();
}

void TaskQueue::release(const TaskClaim &claim)
{
    VaultDb &db = m_store->db();
    Transaction t(db);
    Statement s = db.prepare((QByteArray("UPDATE instances SET lease_expiry = 0 WHERE ") + ClaimCondition).constData());
    bindClaim(s, 1, claim).exec();
    t.commit();
}

void TaskQueue::setStatus(const TaskClaim &claim, std::int32_t status, HRESULT result,
                          const std::optional<QString> &message, const std::vector<AffectedObject> &affected,
                          const std::optional<QString> &extra)
{
    Transaction t(m_store->db());
    requireHeld(claim);
    m_tasks.setStatus(claim.instanceId, status, result, message, affected, extra);
    t.commit();
}

void TaskQueue::setProgress(const TaskClaim &claim, std::optional<std::int32_t> maximum, std::int32_t position,
                            const QString &text)
{
    // Progress is redrawn by the next step anyway.
    unflushedWrite(m_store->db(), [&] {
        requireHeld(claim);
        m_tasks.setProgress(claim.instanceId, maximum, position, text);
        return 0;
    });
}

void TaskQueue::setVariable(const TaskClaim &claim, const QString &name, const Variant &value)
{
    Transaction t(m_store->db());
    requireHeld(claim);
    m_tasks.setInstanceVariable(claim.instanceId, name, value);
    t.commit();
}

void TaskQueue::markHandover(const TaskClaim &claim)
{
    VaultDb &db = m_store->db();
    Transaction t(db);
    requireHeld(claim);
    db.prepare("UPDATE instances SET handover = ? WHERE id = ? AND handover IS NULL")
        .bind(1, m_store->timestamp())
        .bind(2, claim.instanceId)
        .exec();
    t.commit();
}

int TaskQueue::pendingCount()
{
    Statement s = m_store->db().prepare(
        (QByteArray("SELECT COUNT(*) FROM instances WHERE lease_expiry IS NOT NULL OR ") + WaitingCondition).constData());
    s.step();
    return s.integer(0);
}

int TaskQueue::requestCancelHeldBy(const QString &host, qint64 pid)
{
    VaultDb &db = m_store->db();
    Transaction t(db);
    db.prepare("UPDATE instances SET status = 6 WHERE holder_host = ? AND holder_pid = ? AND lease_expiry IS NOT NULL")
        .bind(1, host)
        .bind(2, static_cast<std::int64_t>(pid))
        .exec();
    const int asked = db.changes();
    t.commit();
    return asked;
}

void TaskQueue::heartbeat(const QString &host, qint64 pid, int workers)
{
    VaultDb &db = m_store->db();
    // A lost heartbeat is followed by the next one.
    unflushedWrite(db, [&] {
        db.prepare("INSERT INTO hosts (name, pid, workers, started, heartbeat) VALUES (?1, ?2, ?3, ?4, ?4) "
                   "ON CONFLICT (name, pid) DO UPDATE SET heartbeat = ?4, workers = ?3, stopped = NULL")
            .bind(1, host)
            .bind(2, static_cast<std::int64_t>(pid))
            .bind(3, workers)
            .bind(4, m_store->timestamp())
            .exec();
        return 0;
    });
}

void TaskQueue::markStopped(const QString &host, qint64 pid)
{
    VaultDb &db = m_store->db();
    Transaction t(db);
    db.prepare("UPDATE hosts SET stopped = ?3, heartbeat = ?3 WHERE name = ?1 AND pid = ?2")
        .bind(1, host)
        .bind(2, static_cast<std::int64_t>(pid))
        .bind(3, m_store->timestamp())
        .exec();
    t.commit();
}

void TaskQueue::forgetHost(const QString &host, qint64 pid)
{
    VaultDb &db = m_store->db();
    Transaction t(db);
    db.prepare("DELETE FROM hosts WHERE name = ? AND pid = ?").bind(1, host).bind(2, static_cast<std::int64_t>(pid)).exec();
    t.commit();
}

std::vector<HostRow> TaskQueue::hosts()
{
    const auto guard = m_store->db().guard();
    std::vector<HostRow> rows;
    {
        Statement s = m_store->db().prepare(
            "SELECT name, pid, workers, started, heartbeat, stopped FROM hosts ORDER BY name, pid");
        while (s.step())
            rows.push_back(HostRow{s.text(0), s.int64(1), s.integer(2), s.text(3), s.text(4),
                                   s.isNull(5) ? QString() : s.text(5), {}});
    }
    const std::vector<InstanceRow> instances = m_tasks.listInstances();
    for (HostRow &host : rows)
        for (const InstanceRow &row : instances)
            if (row.held() && row.holderHost == host.name && row.holderPid == host.pid)
                host.running.push_back(row);
    return rows;
}
