#include "hostservice/taskqueue.h"

#include "host/hosterror.h"
#include "platform/clock.h"
#include "vault/pgdb.h"
#include "vault/sqlitedb.h"
#include "vault/vaultschema.h"
#include "vault/vaulttesting.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <thread>

namespace {

const TaskHolder HostA{QStringLiteral("alpha"), 101, 1};
const TaskHolder HostB{QStringLiteral("beta"), 202, 2};

class TaskQueueTest : public VaultBackendTest
{
protected:
    TaskQueueTest() : m_clockGuard(m_clock), m_queue(m_vault.store)
    {
        m_taskId = m_queue.tasks().createTask(QStringLiteral("Convert"), QStringLiteral("{0}")).id;
    }

    int launch() { return m_queue.tasks().createInstance(m_taskId).id; }
    InstanceRow row(int id) { return *m_queue.tasks().instanceById(id); }

    HRESULT failureOf(const std::function<void()> &write)
    {
        try {
            write();
        } catch (const HostError &e) {
            return e.code();
        }
        return S_OK;
    }

    FakeClock m_clock;
    ScopedClock m_clockGuard;
    TempVault m_vault{QStringLiteral("alice"), server()};
    TaskQueue m_queue;
    QueuePolicy m_policy{2000, 2};
    int m_taskId = 0;
};
INSTANTIATE_TEST_SUITE_P(Backends, TaskQueueTest, VaultBackends);

TEST_P(TaskQueueTest, ClaimsTakeWaitingInstancesInLaunchOrderAndRecordTheHolder)
{
    const int first = launch();
    const int suspended = launch();
    const int ended = launch();
    const int resumed = launch();
    m_queue.tasks().setStatusOnly(suspended, TaskStatus_SuspendRequested);
    m_queue.tasks().setStatus(ended, TaskStatus_Finished, S_OK, std::nullopt, {}, std::nullopt);
    m_queue.tasks().setStatusOnly(resumed, TaskStatus_ResumeRequested);

    const auto a = m_queue.claimNext(HostA, m_policy);
    ASSERT_TRUE(a);
    EXPECT_EQ(a->instanceId, first);
    EXPECT_EQ(a->attempt, 1);
    const InstanceRow held = row(first);
    EXPECT_EQ(held.status, TaskStatus_Running);
    EXPECT_EQ(held.holderHost, QStringLiteral("alpha"));
    EXPECT_EQ(held.holderPid, 101);
    EXPECT_EQ(held.holderWorker, 1);
    EXPECT_EQ(held.attempt, 1);
    EXPECT_EQ(held.leaseExpiry, m_clock.now().toMSecsSinceEpoch() + 2000);
    EXPECT_FALSE(held.started.isEmpty());
    EXPECT_TRUE(held.finished.isEmpty());

    // A suspended instance that never ran waits for its resume; a resumed one runs.
    const auto b = m_queue.claimNext(HostB, m_policy);
    ASSERT_TRUE(b);
    EXPECT_EQ(b->instanceId, resumed);
    EXPECT_EQ(row(resumed).status, TaskStatus_Running);
    EXPECT_FALSE(m_queue.claimNext(HostB, m_policy));
    EXPECT_EQ(m_queue.pendingCount(), 2); // the two held ones

    // The end is recorded and the lease goes; the holder stays on the row.
    m_queue.setStatus(*a, TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
    const InstanceRow done = row(first);
    EXPECT_FALSE(done.held());
    EXPECT_FALSE(done.finished.isEmpty());
    EXPECT_EQ(done.holderHost, QStringLiteral("alpha"));
    EXPECT_EQ(m_queue.pendingCount(), 1);
    EXPECT_EQ(row(suspended).holderHost, QString());
    EXPECT_EQ(row(ended).holderHost, QString());
}

TEST_P(TaskQueueTest, AClaimByNameIsRefusedForAHeldOrEndedInstanceAndChangesNothing)
{
    const int held = launch();
    const int ended = launch();
    ASSERT_EQ(m_queue.claim(held, HostA, m_policy).kind, ClaimOutcome::Kind::Claimed);
    m_queue.tasks().setStatus(ended, TaskStatus_FinishedWithError, E_FAIL, QStringLiteral("broken"), {}, std::nullopt);
    const InstanceRow heldBefore = row(held);
    const InstanceRow endedBefore = row(ended);

    const ClaimOutcome onHeld = m_queue.claim(held, HostB, m_policy);
    EXPECT_EQ(onHeld.kind, ClaimOutcome::Kind::Held);
    EXPECT_EQ(onHeld.refusal, QStringLiteral("instance %1 is held by host alpha (process 101, worker 1)").arg(held));
    const ClaimOutcome onEnded = m_queue.claim(ended, HostB, m_policy);
    EXPECT_EQ(onEnded.kind, ClaimOutcome::Kind::Ended);
    EXPECT_EQ(onEnded.refusal, QStringLiteral("instance %1 has ended (finished with errors)").arg(ended));
    EXPECT_EQ(m_queue.claim(9999, HostB, m_policy).kind, ClaimOutcome::Kind::Missing);

    for (const auto &[before, after] : {std::pair{heldBefore, row(held)}, std::pair{endedBefore, row(ended)}}) {
        EXPECT_EQ(after.holderHost, before.holderHost);
        EXPECT_EQ(after.attempt, before.attempt);
        EXPECT_EQ(after.status, before.status);
        EXPECT_EQ(after.leaseExpiry, before.leaseExpiry);
    }
    // A suspended instance may be claimed by name: its run honours the request.
    const int suspended = launch();
    m_queue.tasks().setStatusOnly(suspended, TaskStatus_SuspendRequested);
    EXPECT_EQ(m_queue.claim(suspended, HostB, m_policy).kind, ClaimOutcome::Kind::Claimed);
    EXPECT_EQ(row(suspended).status, TaskStatus_SuspendRequested);
}

TEST_P(TaskQueueTest, ALostHostsInstanceIsRequeuedThenFinishedWithStatus9AndALogLine)
{
    const int id = launch();
    m_queue.tasks().setInstanceVariable(id, QStringLiteral("ErrorLogPath"), Variant::fromBStr(QStringLiteral("Logs")));
    const TaskClaim first = *m_queue.claimNext(HostA, m_policy);

    // Renewed leases keep the claim past its first expiry.
    m_clock.advance(1500);
    EXPECT_EQ(m_queue.renewLeases(HostA.host, HostA.pid, m_policy.leaseMs), 1);
    EXPECT_EQ(m_queue.renewLeases(HostA.host, 999, m_policy.leaseMs), 0); // another process of the name
    m_clock.advance(1500);
    EXPECT_FALSE(m_queue.claimNext(HostB, m_policy));
    EXPECT_TRUE(m_queue.holds(first));

    // No heartbeat: the lease runs out, and the next claim puts it back first.
    m_clock.advance(2001);
    const auto second = m_queue.claimNext(HostB, m_policy);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->instanceId, id);
    EXPECT_EQ(second->attempt, 2);
    EXPECT_EQ(row(id).holderHost, QStringLiteral("beta"));

    // Lost again at the limit: finished with status 9, naming the lost host.
    m_clock.advance(2001);
    EXPECT_FALSE(m_queue.claimNext(HostA, m_policy));
    const InstanceRow end = row(id);
    EXPECT_EQ(end.status, TaskStatus_FinishedWithError);
    EXPECT_FALSE(end.held());
    EXPECT_FALSE(end.finished.isEmpty());
    const QString expected = QStringLiteral("The task host beta (process 202, worker 2) was lost while it ran this "
                                            "instance (attempt 2 of 2).");
    EXPECT_EQ(end.message, expected);
    const QByteArray log = TempVault::readFile(m_vault.root() + "/Logs/" + end.guid + ".log");
    EXPECT_EQ(log, QByteArray("An error occured: ") + expected.toUtf8() + "\r\n");
    EXPECT_EQ(m_queue.pendingCount(), 0);
}

TEST_P(TaskQueueTest, AStaleClaimCanWriteNothing)
{
    const int id = launch();
    const TaskClaim stale = *m_queue.claimNext(HostA, m_policy);
    m_clock.advance(2001);
    const TaskClaim current = *m_queue.claimNext(HostA, m_policy); // the same holder, a new attempt
    ASSERT_EQ(current.attempt, 2);
    m_queue.setProgress(current, 4, 1, QStringLiteral("gear"));

    EXPECT_EQ(failureOf([&] { m_queue.setProgress(stale, 9, 9, QStringLiteral("old")); }), E_ACCESSDENIED);
    EXPECT_EQ(failureOf([&] { m_queue.setVariable(stale, QStringLiteral("__output_list"), Variant::fromBStr("x")); }),
              E_ACCESSDENIED);
    EXPECT_EQ(failureOf([&] { m_queue.markHandover(stale); }), E_ACCESSDENIED);
    EXPECT_EQ(failureOf([&] {
                  m_queue.setStatus(stale, TaskStatus_FinishedWithError, E_FAIL, std::nullopt, {}, std::nullopt);
              }),
              E_ACCESSDENIED);
    TaskClaim otherWorker = current;
    otherWorker.holder.worker = 7;
    EXPECT_EQ(failureOf([&] { m_queue.setProgress(otherWorker, 9, 9, QStringLiteral("old")); }), E_ACCESSDENIED);

    const InstanceRow now = row(id);
    EXPECT_EQ(now.status, TaskStatus_Running);
    EXPECT_EQ(now.progressPos, 1);
    EXPECT_EQ(now.progressText, QStringLiteral("gear"));
    EXPECT_TRUE(now.handover.isEmpty());
    EXPECT_FALSE(m_queue.tasks().instanceValue(id, QStringLiteral("__output_list")));
    // The instance's own end also ends the claim's right to write.
    m_queue.setStatus(current, TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
    EXPECT_EQ(failureOf([&] { m_queue.setProgress(current, 9, 9, QString()); }), E_ACCESSDENIED);
}

TEST_P(TaskQueueTest, ALeaseRenewedWhileAnotherHostRecoversItKeepsItsClaim)
{
    if (!onPostgres())
        GTEST_SKIP() << "only a server lets a renewal and a recovery meet on one row";
    const int id = launch();
    const TaskClaim first = *m_queue.claimNext(HostA, m_policy);
    m_clock.advance(2001);

    // The holder renews its lease in a transaction that is still open when
    // another host finds the lease run out and goes for the row.
    VaultDb holder(std::make_unique<PgDb>(server()));
    PgDb watcher(server());
    Transaction renewal(holder);
    holder.prepare("UPDATE instances SET lease_expiry = ? WHERE id = ?")
        .bind(1, static_cast<std::int64_t>(m_clock.now().toMSecsSinceEpoch() + 60000))
        .bind(2, id)
        .exec();
    int handled = -1;
    std::thread other([&] { handled = TaskQueue(m_vault.reopen()).recoverExpired(m_policy); });
    bool waiting = false;
    for (int i = 0; i < 1000 && !waiting; ++i) {
        PgStatement s = watcher.prepare("SELECT count(*) FROM pg_stat_activity WHERE wait_event_type = 'Lock' "
                                        "AND query LIKE '%instances%'");
        waiting = s.step() && s.integer(0) > 0;
        if (!waiting)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    renewal.commit();
    other.join();
    EXPECT_TRUE(waiting);

    EXPECT_EQ(handled, 0);
    EXPECT_TRUE(m_queue.holds(first));
    EXPECT_EQ(row(id).attempt, 1);
    EXPECT_EQ(row(id).status, TaskStatus_Running);
}

TEST_P(TaskQueueTest, ARunThatReachedTheHandOverIsNotRunAgain)
{
    const int id = launch();
    const int other = launch();
    const TaskClaim claim = *m_queue.claimNext(HostA, m_policy);
    m_queue.markHandover(claim);
    EXPECT_FALSE(row(id).handover.isEmpty());
    m_clock.advance(2001);

    // Attempts are left, but the outputs may be in the vault already.
    const auto next = m_queue.claimNext(HostB, m_policy);
    ASSERT_TRUE(next);
    EXPECT_EQ(next->instanceId, other);
    const InstanceRow end = row(id);
    EXPECT_EQ(end.status, TaskStatus_FinishedWithError);
    EXPECT_EQ(end.attempt, 1);
    EXPECT_TRUE(end.message->endsWith(
        QStringLiteral("It had begun adding the outputs to the vault, so it is not run again.")));
}

TEST_P(TaskQueueTest, ExpiredRequestsSurviveTheRequeueAndHostsAreListedWithTheirRuns)
{
    const int suspended = launch();
    const int cancelled = launch();
    const TaskClaim a = *m_queue.claimNext(HostA, m_policy);
    const TaskClaim b = *m_queue.claimNext(HostA, {m_policy.leaseMs, 2});
    m_queue.setStatus(a, TaskStatus_Suspended, S_OK, std::nullopt, {}, std::nullopt);
    EXPECT_EQ(m_queue.requestCancelHeldBy(HostA.host, HostA.pid), 2);
    EXPECT_EQ(row(cancelled).status, TaskStatus_CancelRequested);
    m_queue.tasks().setStatusOnly(suspended, TaskStatus_Suspended); // the run's own answer

    m_queue.heartbeat(HostA.host, HostA.pid, 2);
    std::vector<HostRow> hosts = m_queue.hosts();
    ASSERT_EQ(hosts.size(), 1u);
    EXPECT_EQ(hosts[0].workers, 2);
    EXPECT_EQ(hosts[0].running.size(), 2u);
    EXPECT_TRUE(hosts[0].stopped.isEmpty());

    m_clock.advance(2001);
    EXPECT_EQ(m_queue.recoverExpired(m_policy), 2);
    EXPECT_EQ(row(suspended).status, TaskStatus_SuspendRequested);
    EXPECT_EQ(row(cancelled).status, TaskStatus_CancelRequested);
    // The cancelled one is taken again (to be ended), the suspended one waits.
    const auto again = m_queue.claimNext(HostB, m_policy);
    ASSERT_TRUE(again);
    EXPECT_EQ(again->instanceId, b.instanceId);

    m_queue.markStopped(HostA.host, HostA.pid);
    hosts = m_queue.hosts();
    EXPECT_FALSE(hosts[0].stopped.isEmpty());
    EXPECT_TRUE(hosts[0].running.empty());
    m_queue.forgetHost(HostA.host, HostA.pid);
    EXPECT_TRUE(m_queue.hosts().empty());
}

// Claimers with connections of their own, as workers and hosts have them.
std::vector<int> claimAll(const std::shared_ptr<VaultStore> &store, const TaskHolder &holder)
{
    TaskQueue queue(store);
    std::vector<int> claimed;
    while (const auto claim = queue.claimNext(holder, {60000, 2})) {
        claimed.push_back(claim->instanceId);
        queue.setStatus(*claim, TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
    }
    return claimed;
}

// count launched instances of one task.
void launchMany(TempVault &vault, int count)
{
    TaskStore tasks(vault.store);
    const int task = tasks.createTask(QStringLiteral("T"), QStringLiteral("{0}")).id;
    for (int i = 0; i < count; ++i)
        tasks.createInstance(task);
}

void expectEachClaimedOnce(const std::vector<std::vector<int>> &claims, int count)
{
    std::multiset<int> all;
    for (const auto &list : claims)
        all.insert(list.begin(), list.end());
    EXPECT_EQ(all.size(), static_cast<std::size_t>(count));
    for (int id = 1; id <= count; ++id)
        EXPECT_EQ(all.count(id), 1u) << "instance " << id;
}

using TaskQueueConcurrencyTest = VaultBackendTest;
INSTANTIATE_TEST_SUITE_P(Backends, TaskQueueConcurrencyTest, VaultBackends);

TEST_P(TaskQueueConcurrencyTest, ThreadsWithTheirOwnConnectionsNeverClaimOneInstanceTwice)
{
    TempVault vault(QStringLiteral("alice"), server());
    constexpr int Count = 120;
    launchMany(vault, Count);
    std::vector<std::vector<int>> claims(4);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] { claims[t] = claimAll(vault.reopen(), {QStringLiteral("h"), 1, t + 1}); });
    for (std::thread &thread : threads)
        thread.join();
    expectEachClaimedOnce(claims, Count);
}

TEST_P(TaskQueueConcurrencyTest, TwoProcessesOnOneVaultNeverClaimOneInstanceTwice)
{
    TempVault vault(QStringLiteral("alice"), server());
    constexpr int Count = 200;
    launchMany(vault, Count);
    QProcess first;
    QProcess second;
    first.start(QStringLiteral(CLAIMER_PROGRAM), {vault.root(), QStringLiteral("first")});
    second.start(QStringLiteral(CLAIMER_PROGRAM), {vault.root(), QStringLiteral("second")});
    std::vector<std::vector<int>> claims(3);
    claims[2] = claimAll(vault.reopen(), {QStringLiteral("this"), 1, 1});
    int index = 0;
    for (QProcess *process : {&first, &second}) {
        ASSERT_TRUE(process->waitForFinished(60000));
        ASSERT_EQ(process->exitCode(), 0) << process->readAllStandardError().toStdString();
        for (const QByteArray &line : process->readAllStandardOutput().split('\n'))
            if (!line.isEmpty())
                claims[index].push_back(line.toInt());
        ++index;
    }
    expectEachClaimedOnce(claims, Count);
    // The table says who ran each.
    for (const InstanceRow &row : TaskStore(vault.store).listInstances())
        EXPECT_TRUE(row.holderHost == "first" || row.holderHost == "second" || row.holderHost == "this");
}

TEST(TaskQueueSchemaTest, AVaultOfTheEarlierSchemaIsUpgradedInPlace)
{
    QTemporaryDir dir;
    const QString root = dir.path() + "/vault";
    const int taskId = [&] {
        // What the program before the task host made: schema 2, one waiting instance.
        QDir().mkpath(root + "/.mctask");
        VaultDb db(std::make_unique<SqliteDb>(VaultStore::databasePath(root)));
        VaultSchema::ensure(db, true, 2);
        db.exec("INSERT INTO settings (key, value) VALUES ('name', 'Old'), ('drive', 'V');"
                "INSERT INTO tasks (id, name, name_key, class_id) VALUES (4, 'T', 't', '{0}');"
                "INSERT INTO instances (task_id, guid, status, created) VALUES (4, '{A}', 0, '2024-01-01');"
                "INSERT INTO instances (task_id, guid, status, created) VALUES (4, '{B}', 7, '2024-01-01');");
        EXPECT_EQ(db.userVersion(), 2);
        return 4;
    }();
    const auto store = VaultStore::open(root);
    EXPECT_EQ(store->db().userVersion(), VaultSchema::CurrentVersion);
    TaskQueue queue(store);
    const auto claim = queue.claimNext(HostA, {1000, 2});
    ASSERT_TRUE(claim);
    EXPECT_EQ(claim->attempt, 1);
    const std::vector<InstanceRow> rows = queue.tasks().listInstances(taskId);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].holderHost, QStringLiteral("alpha"));
    EXPECT_EQ(rows[1].holderHost, QString());
    EXPECT_EQ(rows[1].attempt, 0);
    EXPECT_FALSE(queue.claimNext(HostA, {1000, 2}));
    queue.heartbeat(HostA.host, HostA.pid, 1);
    EXPECT_EQ(queue.hosts().size(), 1u);
}

} // namespace
