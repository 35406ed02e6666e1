#include "platform/automation/automationclient.h"
#include "platform/automation/automationerrors.h"
#include "platform/automation/automationserver.h"
#include "platform/automation/objecttable.h"
#include "platform/automation/processmemory.h"
#include "platform/testing/coreapp.h"

#include <QFile>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <future>
#include <cstring>
#include <thread>

namespace {

constexpr HRESULT kSinkRefusal = makeHresult(0x80004004u);

// A counter that sources events and hands out child objects.
class Counter final : public AutomationObject
{
public:
    HRESULT invoke(const QString &member, AutomationCall &call) override
    {
        if (member == QLatin1String("Add")) {
            m_value += call.arg(0).toI4();
            call.setResult(Variant::fromI4(m_value));
            return S_OK;
        }
        if (member == QLatin1String("Value")) {
            if (call.argCount() == 1)
                m_value = call.arg(0).toI4();
            else
                call.setResult(Variant::fromI4(m_value));
            return S_OK;
        }
        if (member == QLatin1String("Split")) { // ByRef outputs in args 1 and 2
            call.args().at(1) = Variant::fromI4(m_value / 2);
            call.args().at(2) = Variant::fromI4(m_value % 2);
            call.setResult(Variant::fromBool(true));
            return S_OK;
        }
        if (member == QLatin1String("Child")) {
            if (!m_child)
                m_child = std::make_shared<Counter>();
            call.setResult(AutomationValue::fromObject(m_child));
            return S_OK;
        }
        if (member == QLatin1String("Fail"))
            return E_ACCESSDENIED;
        if (member == QLatin1String("Later")) {
            // Answers from a worker, after firing event 7 with the argument
            // and ByRef-writing the event's own result into arg 1.
            auto pending = call.defer();
            auto self = shared();
            std::thread([self, pending] {
                const HRESULT fired = self->server->fireEvent(self, 7, {pending->args().at(0)});
                pending->args().at(1) = Variant::fromI4(fired);
                pending->complete(S_OK, Variant::fromBStr(QStringLiteral("done")));
            }).detach();
            return S_OK;
        }
        if (member == QLatin1String("Never")) {
            m_parked = call.defer(); // never answered
            return S_OK;
        }
        return DISP_E_MEMBERNOTFOUND;
    }
    bool sourcesEvents() const override { return true; }

    std::shared_ptr<Counter> shared() { return m_self.lock(); }
    std::weak_ptr<Counter> m_self;
    AutomationServer *server = nullptr;

private:
    int m_value = 0;
    std::shared_ptr<Counter> m_child;
    std::shared_ptr<PendingReply> m_parked;
};

class Silent final : public AutomationObject
{
public:
    HRESULT invoke(const QString &, AutomationCall &) override { return DISP_E_MEMBERNOTFOUND; }
};

// A server living on its own thread with an event loop, as in the stand-in.
class ChannelTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        coreApp();
        ASSERT_TRUE(m_dir.isValid());
        m_endpoint = m_dir.filePath(QStringLiteral("ep"));
        m_thread.start();
        m_counter = std::make_shared<Counter>();
        m_counter->m_self = m_counter;
        bool listening = false;
        QMetaObject::invokeMethod(
            &m_holder,
            [&] {
                m_server = new AutomationServer;
                m_counter->server = m_server;
                m_server->addRoot(QStringLiteral("Counter"), m_counter);
                m_server->addRoot(QStringLiteral("Silent"), std::make_shared<Silent>());
                listening = m_server->listen(m_endpoint);
            },
            Qt::BlockingQueuedConnection);
        ASSERT_TRUE(listening);
    }
    void TearDown() override
    {
        stopServer();
        m_thread.quit();
        m_thread.wait();
    }
    void stopServer()
    {
        if (!m_server)
            return;
        QMetaObject::invokeMethod(&m_holder, [&] { delete m_server; }, Qt::BlockingQueuedConnection);
        m_server = nullptr;
    }
    template <class F>
    auto onServer(F f)
    {
        decltype(f()) result{};
        QMetaObject::invokeMethod(&m_holder, [&] { result = f(); }, Qt::BlockingQueuedConnection);
        return result;
    }

    struct Holder : QObject {};
    QTemporaryDir m_dir;
    QString m_endpoint;
    QThread m_thread;
    Holder m_holder;
    AutomationServer *m_server = nullptr;
    std::shared_ptr<Counter> m_counter;

public:
    ChannelTest() { m_holder.moveToThread(&m_thread); }
};

class RecordingSink final : public AutomationEventSink
{
public:
    HRESULT onEvent(const AutomationEvent &event) override
    {
        events.push_back(event);
        if (client) // a sink may call back into the server while the event is pending
            nestedValue = client->call(QStringLiteral("Counter"), QStringLiteral("Value")).value.toI4();
        return answer;
    }
    std::vector<AutomationEvent> events;
    AutomationClient *client = nullptr;
    int nestedValue = -1;
    HRESULT answer = S_OK;
};

} // namespace

TEST_F(ChannelTest, CallsReachRootsAndHandedOutObjects)
{
    AutomationClient client;
    ASSERT_EQ(client.connectTo(m_endpoint), S_OK);
    EXPECT_EQ(client.call("Counter", "Add", {Variant::fromI4(5)}).value.toI4(), 5);
    EXPECT_EQ(client.call("Counter", "Add", {Variant::fromI4(-2)}).value.toI4(), 3);

    // Property write then read, distinguished by argument count.
    EXPECT_TRUE(client.call("Counter", "Value", {Variant::fromI4(9)}).ok());
    const AutomationReply split = client.call("Counter", "Split", {Variant::fromI4(0), AutomationValue(), AutomationValue()});
    ASSERT_TRUE(split.ok());
    ASSERT_EQ(split.out.size(), 3u);
    EXPECT_EQ(split.out[1].toI4(), 4);
    EXPECT_EQ(split.out[2].toI4(), 1);

    const AutomationReply child = client.call("Counter", "Child");
    ASSERT_TRUE(child.value.isObject());
    EXPECT_NE(child.value.handle(), 0);
    EXPECT_EQ(client.call(child.value, "Add", {Variant::fromI4(2)}).value.toI4(), 2);
    // The same object comes back under the same handle.
    EXPECT_EQ(client.call("Counter", "Child").value.handle(), child.value.handle());
    EXPECT_EQ(client.call("Counter", "Value").value.toI4(), 9);
}

TEST_F(ChannelTest, FailuresComeBackAsResultCodes)
{
    AutomationClient client;
    ASSERT_EQ(client.connectTo(m_endpoint), S_OK);
    EXPECT_EQ(client.call("Counter", "Fail").hr, E_ACCESSDENIED);
    EXPECT_EQ(client.call("Counter", "NoSuchMember").hr, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(client.call("NoSuchRoot", "Add").hr, CO_E_OBJNOTCONNECTED);
    EXPECT_EQ(client.call(ObjectHandle(9999), "Add").hr, CO_E_OBJNOTCONNECTED);
    // A type change that fails inside the object reaches the caller too.
    EXPECT_EQ(client.call("Counter", "Add", {AutomationValue::fromHandle(1)}).hr, DISP_E_TYPEMISMATCH);
    EXPECT_EQ(client.call("Silent", "Advise").hr, CONNECT_E_NOCONNECTION);
    // The connection survives all of that.
    EXPECT_TRUE(client.call("Counter", "Value").ok());
}

TEST_F(ChannelTest, EventsArriveOnTheCallingThreadDuringTheCall)
{
    AutomationClient client;
    RecordingSink sink;
    sink.client = &client;
    sink.answer = kSinkRefusal;
    client.setEventSink(&sink);
    ASSERT_EQ(client.connectTo(m_endpoint), S_OK);
    ASSERT_TRUE(client.call("Counter", "Value", {Variant::fromI4(31)}).ok());

    // Not advised: the worker's event goes nowhere and costs nothing.
    AutomationReply reply = client.call("Counter", "Later", {Variant::fromBStr(QStringLiteral("x")), AutomationValue()});
    ASSERT_TRUE(reply.ok());
    EXPECT_TRUE(sink.events.empty());
    EXPECT_EQ(reply.out.at(1).toI4(), S_OK);

    const AutomationReply advised = client.call("Counter", "Advise");
    ASSERT_TRUE(advised.ok());
    reply = client.call("Counter", "Later", {Variant::fromBStr(QStringLiteral("saved.pdf")), AutomationValue()});
    ASSERT_TRUE(reply.ok());
    EXPECT_EQ(reply.value.toText(), QStringLiteral("done"));
    ASSERT_EQ(sink.events.size(), 1u);
    EXPECT_EQ(sink.events[0].dispId, 7);
    EXPECT_EQ(sink.events[0].source, advised.value.handle());
    EXPECT_EQ(sink.events[0].args.at(0).toText(), QStringLiteral("saved.pdf"));
    EXPECT_EQ(sink.nestedValue, 31);                 // the nested call was answered mid-event
    EXPECT_EQ(reply.out.at(1).toI4(), kSinkRefusal); // the firing side saw the sink's answer

    ASSERT_TRUE(client.call("Counter", "Unadvise").ok());
    ASSERT_TRUE(client.call("Counter", "Later", {Variant::fromI4(1), AutomationValue()}).ok());
    EXPECT_EQ(sink.events.size(), 1u);
}

TEST_F(ChannelTest, EventsReachEveryAdvisedConnectionAndWaitForAll)
{
    // first waits in a call on its own thread (a client belongs to the thread
    // that connected it); second is idle here, so the event waits for it
    // until it pumps.
    AutomationClient second;
    RecordingSink secondSink;
    second.setEventSink(&secondSink);
    ASSERT_EQ(second.connectTo(m_endpoint), S_OK);
    ASSERT_TRUE(second.call("Counter", "Advise").ok());

    std::promise<void> advised;
    RecordingSink firstSink;
    AutomationReply reply;
    // Sockets need a thread that Qt started.
    std::unique_ptr<QThread> caller(QThread::create([&] {
        AutomationClient first;
        first.setEventSink(&firstSink);
        first.connectTo(m_endpoint);
        first.call("Counter", "Advise");
        advised.set_value();
        reply = first.call("Counter", "Later", {Variant::fromI4(3), AutomationValue()});
    }));
    caller->start();
    advised.get_future().wait();
    EXPECT_EQ(onServer([&] { return m_server->advisedCount(m_counter); }), 2);
    int handled = 0;
    for (int i = 0; i < 500 && handled == 0; ++i)
        handled += second.processEvents(20);
    EXPECT_EQ(handled, 1);
    caller->wait();
    EXPECT_TRUE(reply.ok());
    EXPECT_EQ(firstSink.events.size(), 1u);
    EXPECT_EQ(secondSink.events.size(), 1u);
}

TEST_F(ChannelTest, AReceiverThatGoesAwayReleasesTheFiringThread)
{
    struct FlagSink final : AutomationEventSink {
        HRESULT onEvent(const AutomationEvent &) override { seen = true; return S_OK; }
        std::atomic<bool> seen{false};
    } sink;
    AutomationClient idle;
    ASSERT_EQ(idle.connectTo(m_endpoint), S_OK);
    ASSERT_TRUE(idle.call("Counter", "Advise").ok());

    AutomationReply reply;
    std::unique_ptr<QThread> callerThread(QThread::create([&] {
        AutomationClient caller;
        caller.setEventSink(&sink);
        caller.connectTo(m_endpoint);
        caller.call("Counter", "Advise");
        reply = caller.call("Counter", "Later", {Variant::fromI4(1), AutomationValue()});
    }));
    callerThread->start();
    // Both got the event in one go; once the caller has seen it, idle holds
    // an unanswered one. Leaving must release the firing thread.
    while (!sink.seen)
        std::this_thread::yield();
    idle.disconnect();
    callerThread->wait();
    ASSERT_TRUE(reply.ok());
    EXPECT_EQ(reply.out.at(1).toI4(), RPC_E_DISCONNECTED);
}

TEST_F(ChannelTest, TimeoutsAndDeadServersAreReported)
{
    AutomationClient client;
    ASSERT_EQ(client.connectTo(m_endpoint), S_OK);
    EXPECT_EQ(client.call("Counter", "Never", {}, 50).hr, RPC_E_TIMEOUT);
    EXPECT_TRUE(client.call("Counter", "Value").ok()); // still usable afterwards

    stopServer();
    EXPECT_EQ(client.call("Counter", "Value").hr, RPC_S_SERVER_UNAVAILABLE);
    EXPECT_FALSE(client.isConnected());
    AutomationClient late;
    EXPECT_EQ(late.connectTo(m_endpoint, 200), RPC_S_SERVER_UNAVAILABLE);
    EXPECT_EQ(late.call("Counter", "Value").hr, RPC_S_SERVER_UNAVAILABLE);
}

TEST(ObjectTableTest, RegistersLooksUpListsAndClearsDeadEntries)
{
    coreApp();
    QTemporaryDir home;
    ObjectTable table(home.filePath(QStringLiteral("rot")));
    EXPECT_TRUE(table.list().isEmpty());
    EXPECT_TRUE(table.lookup(QStringLiteral("Mecadra_PID_1")).isEmpty());

    AutomationServer server;
    ASSERT_TRUE(table.registerServer(server, QStringLiteral("Mecadra_PID_1")));
    EXPECT_EQ(table.lookup(QStringLiteral("Mecadra_PID_1")), table.endpointPath(QStringLiteral("Mecadra_PID_1")));
    EXPECT_EQ(table.list(), QStringList{QStringLiteral("Mecadra_PID_1")});
    AutomationServer rival;
    EXPECT_FALSE(table.registerServer(rival, QStringLiteral("Mecadra_PID_1")));

    table.revoke(server);
    EXPECT_TRUE(table.lookup(QStringLiteral("Mecadra_PID_1")).isEmpty());
    EXPECT_TRUE(table.list().isEmpty());

    // A socket left behind by a process that died: bound, never listening.
    const QString stale = table.endpointPath(QStringLiteral("Mecadra_PID_2"));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, QFile::encodeName(stale).constData(), sizeof(address.sun_path) - 1);
    ASSERT_EQ(::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)), 0);
    ::close(fd);
    ASSERT_TRUE(QFile::exists(stale));
    EXPECT_TRUE(table.list().isEmpty());
    EXPECT_FALSE(QFile::exists(stale)); // the dead entry is dropped from the table
    EXPECT_TRUE(table.lookup(QStringLiteral("Mecadra_PID_2")).isEmpty());
    // The name is free again: registering replaces the dead entry.
    EXPECT_TRUE(table.registerServer(rival, QStringLiteral("Mecadra_PID_2")));
    EXPECT_EQ(table.lookup(QStringLiteral("Mecadra_PID_2")), stale);
    EXPECT_EQ(table.list(), QStringList{QStringLiteral("Mecadra_PID_2")});
    AutomationClient client;
    EXPECT_EQ(client.connectTo(stale), S_OK);
    table.revoke(rival);
    EXPECT_FALSE(QFile::exists(stale));
}

TEST(ObjectTableTest, EntriesSurviveCallersPollingWhileTheyRegister)
{
    coreApp();
    QTemporaryDir home;
    ObjectTable table(home.filePath(QStringLiteral("rot")));
    const QString moniker = QStringLiteral("Mecadra_PID_7");
    std::atomic<bool> stop{false};
    std::unique_ptr<QThread> poller(QThread::create([&] {
        ObjectTable view(home.filePath(QStringLiteral("rot")));
        while (!stop) {
            view.lookup(moniker);
            view.list();
            QThread::usleep(300); // a caller polls; it does not flood the listen queue
        }
    }));
    poller->start();
    int lost = 0;
    for (int i = 0; i < 100; ++i) {
        AutomationServer server;
        ASSERT_TRUE(table.registerServer(server, moniker));
        lost += table.lookup(moniker).isEmpty() ? 1 : 0;
        table.revoke(server);
    }
    stop = true;
    poller->wait();
    EXPECT_EQ(lost, 0);
}

TEST(ProcessMemoryTest, ReadsTheWorkingSetAndSeesItGrow)
{
    const auto before = workingSetBytes(::getpid());
    ASSERT_TRUE(before.has_value());
    EXPECT_GT(*before, 0u);
    std::vector<char> block(64 * 1024 * 1024, 1); // touched, so resident
    const auto after = workingSetBytes(::getpid());
    ASSERT_TRUE(after.has_value());
    EXPECT_GE(*after, *before + 48u * 1024 * 1024);
    EXPECT_EQ(block[12345], 1);
    EXPECT_FALSE(workingSetBytes(0x7ffffff0).has_value());
}

TEST_F(ChannelTest, LargeValuesCrossInBothDirections)
{
    AutomationClient client;
    ASSERT_EQ(client.connectTo(m_endpoint), S_OK);
    // Several MiB: more than any socket buffer holds at once.
    QString big(3 * 1024 * 1024, QLatin1Char('x'));
    big[12345] = QChar(0x4e2d);
    const AutomationReply reply = client.call("Counter", "Split", {Variant::fromBStr(big), AutomationValue(), AutomationValue()});
    ASSERT_TRUE(reply.ok());
    EXPECT_EQ(reply.out.at(0).toText(), big);
}

TEST_F(ChannelTest, AGarbledConnectionIsDroppedWithoutHarmingOthers)
{
    AutomationClient good;
    ASSERT_EQ(good.connectTo(m_endpoint), S_OK);
    ASSERT_TRUE(good.call("Counter", "Value", {Variant::fromI4(4)}).ok());

    QLocalSocket bad;
    bad.connectToServer(m_endpoint);
    ASSERT_TRUE(bad.waitForConnected(1000));
    bad.write(QByteArray("\x00\x00\x00\x05{oops", 9));
    bad.flush();
    bad.waitForBytesWritten(1000);
    // The server hangs up on it ...
    EXPECT_TRUE(bad.state() == QLocalSocket::UnconnectedState || bad.waitForDisconnected(5000));
    // ... and keeps serving everybody else.
    EXPECT_EQ(good.call("Counter", "Value").value.toI4(), 4);
}
