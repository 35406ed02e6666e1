#include "hostservice/taskhostservice.h"

#include "host/hosterror.h"
#include "hostservice/testing/scriptedsession.h"
#include "platform/clock.h"
#include "vault/vaulttesting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <map>
#include <mutex>

namespace {

// True when condition holds within about ten seconds.
bool waitFor(const std::function<bool()> &condition)
{
    for (int i = 0; i < 1000 && !condition(); ++i)
        Clock::instance().sleep(10);
    return condition();
}

// The service on a vault of its own, with scripted sessions (one per
// worker, each with its own connection) and the real clock: the waits are
// a few milliseconds.
class TaskHostServiceTest : public testing::Test
{
protected:
    TaskHostServiceTest() : m_tasks(m_vault.store)
    {
        m_taskId = m_tasks.createTask(QStringLiteral("Convert"), QStringLiteral("{0}")).id;
        m_options.name = QStringLiteral("host1");
        m_options.pid = 4242;
        m_options.leaseMs = 5000;
        m_options.pollMs = 10;
    }

    int launch() { return m_tasks.createInstance(m_taskId).id; }
    InstanceRow row(int id) { return *m_tasks.instanceById(id); }

    std::unique_ptr<TaskHostService> makeService()
    {
        return std::make_unique<TaskHostService>(
            m_options, [this] { return m_vault.reopen(); },
            [this](int, QString &) -> std::unique_ptr<AddInSession> {
                return std::make_unique<ScriptedSession>(m_vault.reopen(), m_script);
            },
            [this](const HostEvent &event) {
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_events.push_back(event);
            });
    }

    // An add-in that counts its runs per instance; run gets the instance.
    ScriptedSession::Script counting(std::function<HRESULT(IDoxTaskInstance &, DoxCmd &)> run)
    {
        return [this, run](DoxCmd &cmd, DoxCmdDataArray &, IDoxTaskInstance &instance, IDoxVault &) {
            Variant id;
            instance.GetTaskValue(Variant::fromI4(4), id);
            {
                const std::lock_guard<std::mutex> lock(m_mutex);
                ++m_runs[id.i4()];
            }
            return run(instance, cmd);
        };
    }

    TempVault m_vault;
    TaskStore m_tasks;
    int m_taskId = 0;
    TaskHostService::Options m_options;
    ScriptedSession::Script m_script;
    std::mutex m_mutex;
    std::vector<HostEvent> m_events;
    std::map<int, int> m_runs;
};

HRESULT finishOk(IDoxTaskInstance &instance, DoxCmd &)
{
    Clock::instance().sleep(5);
    return instance.SetStatus(TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
}

TEST_F(TaskHostServiceTest, TwoWorkersRunEveryInstanceOnceAndAOnceHostEndsWhenTheQueueIsEmpty)
{
    constexpr int Count = 16;
    for (int i = 0; i < Count; ++i)
        launch();
    m_options.workers = 2;
    m_options.once = true;
    m_script = counting(finishOk);
    const auto service = makeService();
    EXPECT_EQ(service->serve([](int ms) {
        Clock::instance().sleep(ms);
        return 0;
    }),
              0);

    ASSERT_EQ(m_runs.size(), static_cast<std::size_t>(Count));
    for (const auto &[id, runs] : m_runs) {
        EXPECT_EQ(runs, 1) << "instance " << id;
        const InstanceRow ran = row(id);
        EXPECT_EQ(ran.status, TaskStatus_FinishedOk);
        EXPECT_EQ(ran.holderHost, QStringLiteral("host1"));
        EXPECT_TRUE(ran.holderWorker == 1 || ran.holderWorker == 2);
    }
    // One line at the start and one at the end of each.
    ASSERT_EQ(m_events.size(), 2u * Count);
    std::map<int, std::vector<HostEvent::Kind>> kinds;
    for (const HostEvent &event : m_events) {
        kinds[event.instanceId].push_back(event.kind);
        EXPECT_EQ(event.task, QStringLiteral("Convert"));
    }
    for (const auto &[id, sequence] : kinds)
        EXPECT_EQ(sequence, (std::vector{HostEvent::Kind::Started, HostEvent::Kind::Ended})) << id;
    TaskQueue queue(m_vault.store);
    ASSERT_EQ(queue.hosts().size(), 1u);
    EXPECT_FALSE(queue.hosts()[0].stopped.isEmpty());
}

TEST_F(TaskHostServiceTest, AnIdleWorkerTakesALaterLaunch)
{
    m_script = counting(finishOk);
    const auto service = makeService();
    service->start();
    Clock::instance().sleep(30); // idle polls
    const int id = launch();
    EXPECT_TRUE(waitFor([&] { return row(id).status == TaskStatus_FinishedOk; }));
    service->stop();
    EXPECT_TRUE(waitFor([&] { return service->finished(); }));
    service->join();
    EXPECT_EQ(m_runs[id], 1);
}

TEST_F(TaskHostServiceTest, TheFirstSignalLetsTheRunningInstanceFinishAndTakesNothingNew)
{
    const int first = launch();
    const int second = launch();
    std::atomic<bool> running{false};
    std::atomic<bool> release{false};
    m_script = counting([&](IDoxTaskInstance &instance, DoxCmd &cmd) {
        running = true;
        while (!release)
            Clock::instance().sleep(5);
        return finishOk(instance, cmd);
    });
    const auto service = makeService();
    bool signalled = false;
    EXPECT_EQ(service->serve([&](int ms) {
        Clock::instance().sleep(ms);
        if (running && !signalled) {
            signalled = true;
            return SIGTERM;
        }
        release = signalled;
        return 0;
    }),
              0);
    EXPECT_EQ(row(first).status, TaskStatus_FinishedOk);
    EXPECT_EQ(row(second).status, TaskStatus_Waiting);
    EXPECT_FALSE(row(second).held());
    EXPECT_EQ(m_runs.size(), 1u);
}

TEST_F(TaskHostServiceTest, TheSecondSignalAsksTheRunningInstancesToCancel)
{
    const int first = launch();
    const int second = launch();
    m_options.workers = 2;
    std::atomic<int> running{0};
    // As the add-in does: it looks for a cancel request between files and
    // then leaves the end to the host.
    m_script = counting([&](IDoxTaskInstance &instance, DoxCmd &cmd) {
        ++running;
        std::int32_t status = 0;
        while (instance.GetStatus(status) == S_OK && status != TaskStatus_CancelRequested)
            Clock::instance().sleep(5);
        cmd.cancel = -1;
        return S_FALSE;
    });
    const auto service = makeService();
    int received = 0;
    EXPECT_EQ(service->serve([&](int ms) {
        Clock::instance().sleep(ms);
        if (running == 2 && received < 2)
            return ++received == 1 ? SIGTERM : SIGINT;
        return 0;
    }),
              0);
    for (const int id : {first, second}) {
        EXPECT_EQ(row(id).status, TaskStatus_Finished) << id;
        EXPECT_EQ(row(id).result, S_FALSE) << id;
    }
}

TEST_F(TaskHostServiceTest, TheLeaseKeeperHoldsTheClaimWhileARunWaitsLongerThanItsLease)
{
    const int id = launch();
    m_options.leaseMs = 150;
    m_options.once = true;
    ClaimOutcome seen;
    m_script = counting([&](IDoxTaskInstance &instance, DoxCmd &cmd) {
        Clock::instance().sleep(600); // four leases
        seen = TaskQueue(m_vault.reopen()).claim(id, {QStringLiteral("other"), 1, 1}, {150, 2});
        return finishOk(instance, cmd);
    });
    const auto service = makeService();
    EXPECT_EQ(service->serve([](int ms) {
        Clock::instance().sleep(ms);
        return 0;
    }),
              0);
    EXPECT_EQ(seen.kind, ClaimOutcome::Kind::Held) << seen.refusal.toStdString();
    EXPECT_EQ(row(id).status, TaskStatus_FinishedOk);
    EXPECT_EQ(row(id).attempt, 1);
}

// An idle host with a poll far longer than the waits below, on each back end.
class IdleHostTest : public VaultBackendTest
{
protected:
    void SetUp() override
    {
        VaultBackendTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        m_vault = std::make_unique<TempVault>(QStringLiteral("alice"), server());
        m_taskId = TaskStore(m_vault->store).createTask(QStringLiteral("Convert"), QStringLiteral("{0}")).id;
    }

    std::unique_ptr<TempVault> m_vault;
    int m_taskId = 0;
};

TEST_P(IdleHostTest, AStopEndsALongPollAndOnAServerALaunchEndsItAtOnce)
{
    TaskHostService::Options options;
    options.name = QStringLiteral("host1");
    options.pid = 4242;
    options.leaseMs = 5000;
    options.pollMs = 30000;
    TaskHostService service(
        options, [this] { return m_vault->reopen(); },
        [this](int, QString &) -> std::unique_ptr<AddInSession> {
            return std::make_unique<ScriptedSession>(m_vault->reopen());
        },
        {});
    service.start();
    Clock::instance().sleep(300); // the worker found nothing and waits
    TaskStore tasks(m_vault->store);
    const int id = tasks.createInstance(m_taskId).id;
    if (onPostgres()) {
        // Taken long before the poll would have ended.
        EXPECT_TRUE(waitFor([&] { return tasks.instanceById(id)->status == TaskStatus_FinishedOk; }));
    }
    service.stop();
    EXPECT_TRUE(waitFor([&] { return service.finished(); }));
    service.join();
    if (!onPostgres()) {
        EXPECT_EQ(tasks.instanceById(id)->status, TaskStatus_Waiting); // SQLite hosts only poll
    }
}

TEST_P(IdleHostTest, AWorkerWhoseServerConnectionIsLostSaysSoOnceAndGoesOnWhenItIsBack)
{
    if (!onPostgres())
        GTEST_SKIP() << "an SQLite vault has no server to lose";
    TaskHostService::Options options;
    options.name = QStringLiteral("host1");
    options.pid = 4242;
    options.pollMs = 30000;
    std::mutex mutex;
    std::vector<HostEvent> events;
    std::atomic<int> workerPid{0};
    TaskHostService service(
        options, [this] { return m_vault->reopen(); },
        [&](int, QString &) -> std::unique_ptr<AddInSession> {
            auto store = m_vault->reopen();
            PgStatement s = store->db().postgres()->prepare("SELECT pg_backend_pid()");
            s.step();
            workerPid = s.integer(0);
            return std::make_unique<ScriptedSession>(store);
        },
        [&](const HostEvent &event) {
            const std::lock_guard<std::mutex> lock(mutex);
            events.push_back(event);
        });
    const auto kinds = [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        std::vector<HostEvent::Kind> seen;
        for (const HostEvent &event : events)
            seen.push_back(event.kind);
        return seen;
    };
    service.start();
    ASSERT_TRUE(waitFor([&] { return workerPid != 0; }));
    Clock::instance().sleep(300); // idle
    m_schema->admin().prepare("SELECT pg_terminate_backend(?)").bind(1, workerPid.load()).exec();

    using Kind = HostEvent::Kind;
    EXPECT_TRUE(waitFor([&] { return kinds().size() >= 2; }));
    EXPECT_EQ(kinds(), (std::vector{Kind::ServerLost, Kind::ServerRegained}));
    {
        const std::lock_guard<std::mutex> lock(mutex);
        ASSERT_FALSE(events.empty());
        EXPECT_FALSE(events[0].message.isEmpty()); // why it was lost
    }
    // The new connection listens again: a launch ends the long poll.
    TaskStore tasks(m_vault->store);
    const int id = tasks.createInstance(m_taskId).id;
    EXPECT_TRUE(waitFor([&] { return tasks.instanceById(id)->status == TaskStatus_FinishedOk; }));
    service.stop();
    EXPECT_TRUE(waitFor([&] { return service.finished(); }));
    service.join();
}

INSTANTIATE_TEST_SUITE_P(Backends, IdleHostTest, VaultBackends);

TEST(RetryWithBackoffTest, WaitsLongerAfterEachFailureUpToAMaximumAndGivesUpOnStop)
{
    FakeClock clock;
    const ScopedClock scoped(clock);
    std::atomic<bool> stop{false};
    std::vector<qint64> calls;
    EXPECT_TRUE(retryWithBackoff(
        [&] {
            calls.push_back(clock.elapsed());
            if (calls.size() < 8)
                throw HostError(E_DOX_CANT_OPEN_DATABASE, QStringLiteral("away"));
        },
        stop));
    EXPECT_EQ(calls, (std::vector<qint64>{1000, 3000, 7000, 15000, 31000, 61000, 91000, 121000}));

    // A stop ends the wait between attempts.
    int attempts = 0;
    clock.setOnSleep([&](qint64) {
        if (clock.elapsed() >= 125000)
            stop = true;
    });
    EXPECT_FALSE(retryWithBackoff(
        [&] {
            ++attempts;
            throw HostError(E_DOX_CANT_OPEN_DATABASE, QStringLiteral("away"));
        },
        stop));
    EXPECT_EQ(attempts, 2); // at 122000 and 124000
    EXPECT_LT(clock.elapsed(), 125000 + 1000);
}

} // namespace
