#pragma once

#include "host/hresult.h"
#include "vault/taskstore.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

// Who runs an instance: a task host (its name, so that several hosts on one
// machine stay apart), its process and worker.
struct TaskHolder {
    QString host;
    qint64 pid = 0;
    int worker = 0;
};

// One claim of an instance. attempt tells claims of the same holder apart:
// after a lost lease the instance is claimed anew with a higher attempt, and
// writes that carry the old one are refused.
struct TaskClaim {
    int instanceId = 0;
    TaskHolder holder;
    int attempt = 0;
};

// How long a claim lasts without a heartbeat, and how often an instance
// whose holder was lost is put back in the queue.
struct QueuePolicy {
    qint64 leaseMs = 30000;
    int attempts = 2;
};

// What a claim of one named instance came to.
struct ClaimOutcome {
    enum class Kind { Claimed, Ended, Held, Missing };
    Kind kind = Kind::Missing;
    TaskClaim claim;  // Claimed
    InstanceRow row;  // Claimed, Ended, Held: the instance as found
    // "instance 3 is held by host a (process 12, worker 1)" or "instance 3
    // has ended (finished with errors)"; empty when claimed.
    QString refusal;
};

// A host and what its workers run now.
struct HostRow {
    QString name;
    qint64 pid = 0;
    int workers = 0;
    QString started;
    QString heartbeat;
    QString stopped; // empty while it serves
    std::vector<InstanceRow> running; // the instances it holds, by worker
};

// The task host's queue in the vault database. A launched instance waits
// until one claim takes it: the oldest waiting instance in launch order,
// in one write transaction that first picks the candidate and then marks it
// with a guarded update that must change exactly one row (on a server
// database the pick is SELECT ... FOR UPDATE SKIP LOCKED). The claim holds a
// lease that a heartbeat renews; a claim whose lease ran out means a lost
// holder, which the next claim handles (recoverExpired). Every write a run
// makes after its claim carries the claim and is refused with
// E_ACCESSDENIED once the claim is no longer the instance's.
//
// Waiting means never ended and not held, with status 0 (launched), 11
// (resumed before it ran) or 6 (cancelled before it ran: the run ends it
// without calling the add-in). A suspended instance that never ran waits
// until it is resumed; only a claim by name takes it (task run).
class TaskQueue final
{
public:
    explicit TaskQueue(std::shared_ptr<VaultStore> store);

    TaskStore &tasks() { return m_tasks; }

    // The oldest waiting instance, claimed for holder; expired leases are
    // handled first. None when nothing waits.
    std::optional<TaskClaim> claimNext(const TaskHolder &holder, const QueuePolicy &policy);
    // One instance by id, for a run that names it. Refused (and nothing
    // written) when it has ended or another live claim holds it.
    ClaimOutcome claim(int instanceId, const TaskHolder &holder, const QueuePolicy &policy);
    // Why a claim by name would be refused (the instance ended, or a live
    // claim holds it); empty when it would not.
    QString refusal(const InstanceRow &row) const;

    // Renews the leases of every instance that the holder's process holds
    // (worker is ignored) and has not released; the number renewed.
    int renewLeases(const QString &host, qint64 pid, qint64 leaseMs);
    // Expired leases: back to waiting while attempts are left, otherwise (or
    // when the run had begun the hand-over to the vault, so that no output
    // is checked in twice) finished with status 9, a message naming the
    // lost host and a line in the instance's error log. The number handled.
    int recoverExpired(const QueuePolicy &policy);

    // The run's writes, refused (HostError E_ACCESSDENIED) for a stale claim.
    void setStatus(const TaskClaim &claim, std::int32_t status, HRESULT result, const std::optional<QString> &message,
                   const std::vector<AffectedObject> &affected, const std::optional<QString> &extra);
    void setProgress(const TaskClaim &claim, std::optional<std::int32_t> maximum, std::int32_t position,
                     const QString &text);
    void setVariable(const TaskClaim &claim, const QString &name, const Variant &value);
    // Records that the run begins to add or check in its outputs.
    void markHandover(const TaskClaim &claim);
    // True while the claim is the instance's and it has not ended.
    bool holds(const TaskClaim &claim);
    // Throws E_ACCESSDENIED unless the claim holds. Inside a write
    // transaction, which it locks the instance's row for: no other claim or
    // recovery takes the instance before that transaction ends.
    void requireHeld(const TaskClaim &claim);
    // Gives up a claim whose run could not write its end: its lease ends
    // now, and the next claim handles the instance as after a lost holder
    // (recoverExpired). A claim that is no longer the instance's changes
    // nothing.
    void release(const TaskClaim &claim);

    // Instances that a --once host still waits for: waiting ones and those
    // held by any claim.
    int pendingCount();
    // Asks every run of the holder's process to stop between files (status
    // 6, as "task cancel" does); the number asked.
    int requestCancelHeldBy(const QString &host, qint64 pid);

    // The hosts table: a heartbeat records the host as alive (and creates its
    // row); a stopped host keeps its row with the time it stopped.
    void heartbeat(const QString &host, qint64 pid, int workers);
    void markStopped(const QString &host, qint64 pid);
    void forgetHost(const QString &host, qint64 pid);
    std::vector<HostRow> hosts();

private:
    TaskClaim take(int instanceId, int attempt, const TaskHolder &holder, const QueuePolicy &policy);
    void appendErrorLog(const InstanceRow &row, const QString &line);
    qint64 nowMs() const;

    std::shared_ptr<VaultStore> m_store;
    TaskStore m_tasks;
};

// "waiting", "running", ... for people.
QString taskStatusText(std::int32_t status);
