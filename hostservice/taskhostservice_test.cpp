#include "hostservice/taskhostservice.h"

#include "hostservice/testing/scriptedsession.h"
#include "platform/clock.h"
#include "vault/vaulttesting.h"

#include <gtest/gtest.h>

#include <csignal>
#include <map>
#include <mutex>

namespace {

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

    static bool waitFor(const std::function<bool()> &condition)
    {
        for (int i = 0; i < 1000 && !condition(); ++i)
            Clock::instance().sleep(10);
        return condition();
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

TEST_F(TaskHostServiceTest, AWorkerWithoutAnAddInEndsAndTheHostSaysWhy)
{
    launch();
    m_options.workers = 2;
    TaskHostService service(
        m_options, [this] { return m_vault.reopen(); },
        [](int worker, QString &failure) -> std::unique_ptr<AddInSession> {
            failure = QStringLiteral("no module for %1").arg(worker);
            return nullptr;
        },
        {});
    EXPECT_EQ(service.serve([](int ms) {
        Clock::instance().sleep(ms);
        return 0;
    }),
              1);
    QStringList failures = service.failures();
    failures.sort();
    EXPECT_EQ(failures, (QStringList{"worker 1: no module for 1", "worker 2: no module for 2"}));
}

} // namespace
