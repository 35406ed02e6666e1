// A task host whose vault server goes away: how the outage is told, how the
// host waits for it, and what becomes of the run it could not end.

#include "hostservice/taskhostservice.h"

#include "host/hosterror.h"
#include "hostservice/testing/scriptedsession.h"
#include "platform/clock.h"
#include "vault/vaulttesting.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>

namespace {

using Kind = HostEvent::Kind;

// True when condition holds within about twenty seconds.
bool eventually(const std::function<bool()> &condition)
{
    for (int i = 0; i < 2000 && !condition(); ++i)
        Clock::instance().sleep(10);
    return condition();
}

TEST(ServerOutageTest, TellsEachOutageOnceWhicheverConnectionSeesItAndAWaitingOneHurries)
{
    FakeClock clock;
    const ScopedClock scoped(clock);
    std::vector<std::pair<bool, QString>> told;
    ServerOutage outage([&](bool lost, const QString &why) { told.emplace_back(lost, why); });
    bool down = true;
    const auto reach = [&] {
        if (down)
            throw HostError(E_DOX_CANT_OPEN_DATABASE, QStringLiteral("away"));
    };
    const auto never = [] { return false; };
    clock.setOnSleep([&](qint64) { down = clock.elapsed() < 2500; });

    int worker = 0;
    int keeper = 0;
    EXPECT_TRUE(outage.rideOut(worker, QStringLiteral("connection lost"), reach, never));
    EXPECT_EQ(told, (std::vector<std::pair<bool, QString>>{{true, "connection lost"}, {false, ""}}));
    // The keeper finds its connection broken only now: the same outage.
    const qint64 before = clock.elapsed();
    EXPECT_TRUE(outage.rideOut(keeper, QStringLiteral("later"), reach, never));
    EXPECT_EQ(told.size(), 2u);
    EXPECT_EQ(clock.elapsed(), before); // reconnected at once

    // A new outage is told again, by whoever sees it first.
    const qint64 again = clock.elapsed();
    down = true;
    clock.setOnSleep([&](qint64) { down = clock.elapsed() < again + 500; });
    EXPECT_TRUE(outage.rideOut(keeper, QStringLiteral("second"), reach, never));
    ASSERT_EQ(told.size(), 4u);
    EXPECT_EQ(told[2], std::make_pair(true, QStringLiteral("second")));
    EXPECT_FALSE(told[3].first);

    // A wait ends early when hurried.
    std::vector<qint64> attempts;
    bool hurried = false;
    clock.setOnSleep({});
    const qint64 start = clock.elapsed();
    EXPECT_TRUE(retryWithBackoff(
        [&] {
            attempts.push_back(clock.elapsed() - start);
            if (attempts.size() < 2)
                throw HostError(E_DOX_CANT_OPEN_DATABASE, QStringLiteral("away"));
        },
        never,
        [&] {
            if (hurried || clock.elapsed() - start < 1500)
                return false;
            return hurried = true;
        }));
    EXPECT_EQ(attempts, (std::vector<qint64>{1000, 1500}));
}

// A host on a PostgreSQL server of the test's own, which the test stops and
// starts again.
class OutageTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        MCTASK_PRIVATE_PG_OR_SKIP(m_server, MCTASK_PRIVATEPG_SCRIPT);
        m_vault = std::make_unique<TempVault>(QStringLiteral("alice"), m_server->url());
        m_taskId = TaskStore(m_vault->store).createTask(QStringLiteral("Convert"), QStringLiteral("{0}")).id;
        m_options.name = QStringLiteral("host1");
        m_options.pid = 4242;
        m_options.pollMs = 30000;
        m_options.serverVault = true;
    }

    std::unique_ptr<TaskHostService> makeService(ScriptedSession::Script script = {})
    {
        return std::make_unique<TaskHostService>(
            m_options, [this] { return m_vault->reopen(); },
            [this, script](int, QString &) -> std::unique_ptr<AddInSession> {
                auto store = m_vault->reopen();
                PgStatement s = store->db().postgres()->prepare("SELECT pg_backend_pid()");
                s.step();
                m_workerPid = s.int64(0);
                return std::make_unique<ScriptedSession>(store, script);
            },
            [this](const HostEvent &event) {
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_events.push_back(event);
            });
    }

    std::vector<Kind> kinds()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<Kind> seen;
        for (const HostEvent &event : m_events)
            if (event.kind == Kind::ServerLost || event.kind == Kind::ServerRegained)
                seen.push_back(event.kind);
        return seen;
    }

    static void stopAndJoin(TaskHostService &service)
    {
        service.stop();
        EXPECT_TRUE(eventually([&] { return service.finished(); }));
        service.join();
    }

    std::unique_ptr<PrivatePgServer> m_server;
    std::unique_ptr<TempVault> m_vault;
    int m_taskId = 0;
    TaskHostService::Options m_options;
    std::atomic<std::int64_t> m_workerPid{0};
    std::mutex m_mutex;
    std::vector<HostEvent> m_events;
};

TEST_F(OutageTest, AHostStartedWhileItsServerIsDownWaitsForItAndASignalEndsTheWait)
{
    m_server->stop();
    const auto service = makeService();
    std::atomic<bool> reached{false};
    bool waited = false;
    std::thread starting([&] {
        waited = service->awaitVault([&] { reached = m_vault->reopen() != nullptr; }, [](int) { return 0; });
    });
    EXPECT_TRUE(eventually([&] { return !kinds().empty(); }));
    EXPECT_FALSE(reached);
    ASSERT_TRUE(m_server->start());
    starting.join();
    EXPECT_TRUE(waited);
    EXPECT_TRUE(reached);
    EXPECT_EQ(kinds(), (std::vector{Kind::ServerLost, Kind::ServerRegained}));
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        EXPECT_TRUE(m_events[0].message.contains("cannot connect")) << m_events[0].message.toStdString();
    }

    // A signal while it waits: no vault, and no regain to tell.
    m_server->stop();
    const auto stopped = makeService();
    int polls = 0;
    EXPECT_FALSE(stopped->awaitVault([&] { m_vault->reopen(); }, [&](int) { return ++polls > 20 ? 15 : 0; }));
    // Anything but a lost server is not waited for.
    m_options.serverVault = false;
    EXPECT_THROW(makeService()->awaitVault([&] { m_vault->reopen(); }, [](int) { return 0; }), HostError);
}

TEST_F(OutageTest, AnOutageSeenByTheWorkerAndLaterByTheLeaseKeeperIsToldOnce)
{
    // The keeper beats every five seconds: it finds its connection broken
    // well after the worker, which waits on the server's notifications, has
    // ridden the outage out.
    m_options.leaseMs = 15000;
    const auto service = makeService();
    service->start();
    ASSERT_TRUE(eventually([&] { return m_workerPid != 0; }));
    Clock::instance().sleep(300);
    m_server->stop();
    Clock::instance().sleep(300);
    ASSERT_TRUE(m_server->start());
    const QString restarted = Clock::instance().now().toUTC().toString(Qt::ISODateWithMs);
    EXPECT_TRUE(eventually([&] { return kinds().size() >= 2; }));
    // The keeper is back too once it records a heartbeat again.
    TaskQueue queue(m_vault->reopen());
    EXPECT_TRUE(eventually([&] {
        const std::vector<HostRow> hosts = queue.hosts();
        return hosts.size() == 1 && hosts[0].heartbeat > restarted;
    }));
    EXPECT_EQ(kinds(), (std::vector{Kind::ServerLost, Kind::ServerRegained}));

    // And the host serves.
    TaskStore tasks(m_vault->reopen());
    const int id = tasks.createInstance(m_taskId).id;
    EXPECT_TRUE(eventually([&] { return tasks.instanceById(id)->status == TaskStatus_FinishedOk; }));
    stopAndJoin(*service);
}

TEST_F(OutageTest, ARunThatLostItsConnectionBeforeItsEndGivesItsClaimUpAndTheInstanceRunsAgain)
{
    // The first run loses its connection after its work and cannot write
    // its end; the lease keeper, on a connection of its own, would hold the
    // claim for ever.
    m_options.leaseMs = 3000;
    std::atomic<int> runs{0};
    const auto service = makeService([&](DoxCmd &, DoxCmdDataArray &, IDoxTaskInstance &instance, IDoxVault &) {
        if (++runs == 1) {
            PgDb admin(m_server->url());
            admin.prepare("SELECT pg_terminate_backend(?)").bind(1, m_workerPid.load()).exec();
            return S_OK;
        }
        return instance.SetStatus(TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
    });
    TaskStore tasks(m_vault->reopen());
    const int id = tasks.createInstance(m_taskId).id;
    service->start();
    EXPECT_TRUE(eventually([&] { return tasks.instanceById(id)->status == TaskStatus_FinishedOk; }));
    stopAndJoin(*service);
    EXPECT_EQ(runs, 2);
    const InstanceRow row = *tasks.instanceById(id);
    EXPECT_EQ(row.attempt, 2);
    EXPECT_FALSE(row.held());
}

} // namespace
