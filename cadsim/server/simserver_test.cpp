#include "cadsim/model/cadapplication.h"
#include "cadsim/model/cadconstants.h"
#include "cadsim/model/modeldocextension.h"
#include "cadsim/server/simserver.h"
#include "platform/automation/automationclient.h"
#include "platform/automation/automationerrors.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>

namespace {

QCoreApplication &app()
{
    static int argc = 1;
    static char name[] = "simserver_test";
    static char *argv[] = {name, nullptr};
    if (!QCoreApplication::instance())
        new QCoreApplication(argc, argv);
    return *QCoreApplication::instance();
}

// Runs whatever the test gives it as "the macro", on the run service's thread.
class ScriptedRunner final : public MacroRunner
{
public:
    MacroOutcome run(const QString &, const QString &, const QString &) override { return macro ? macro() : MacroOutcome{}; }
    std::function<MacroOutcome()> macro;
};

// A sink that does what the add-in's sinks do: on the application's events
// it connects to every document and its first view, and on the saving event
// it asks the document about itself while the save waits.
class AddInLikeSink final : public AutomationEventSink
{
public:
    struct Seen
    {
        ObjectHandle source = 0;
        int dispId = 0;
        QString text;
        bool fileExisted = false;
        QString configuration;
    };

    HRESULT onEvent(const AutomationEvent &event) override
    {
        Seen seen;
        seen.source = event.source;
        seen.dispId = event.dispId;
        seen.text = event.args.empty() ? QString() : event.args[0].toText();
        if (event.source == appHandle) {
            for (AutomationValue doc = client->call("Application", "GetFirstDocument").value; !doc.isNothing();
                 doc = client->call(doc, "GetNext").value) {
                if (documents.insert(doc.handle()).second) {
                    client->call(doc, "Advise");
                    const AutomationValue view = client->call(doc, "GetFirstModelView").value;
                    if (!view.isNothing())
                        client->call(view, "Advise");
                }
            }
        } else if (event.dispId == 7) {
            seen.fileExisted = QFile::exists(seen.text);
            seen.configuration = client->call(event.source, "GetActiveConfigurationName").value.toText();
        }
        events.push_back(seen);
        return S_OK;
    }

    AutomationClient *client = nullptr;
    ObjectHandle appHandle = 0;
    std::set<ObjectHandle> documents;
    std::vector<Seen> events;
};

class SimServerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        app();
        ASSERT_TRUE(m_home.isValid());
        m_holder.moveToThread(&m_thread);
        m_thread.start();
        SimServer::Options options;
        options.tableDirectory = m_home.filePath(QStringLiteral("rot"));
        options.processId = 4242;
        options.resolver = [](const QString &path) { return path; };
        options.cad.printers = {{QStringLiteral("Office"), QString()}};
        options.cad.spoolFile = m_home.filePath(QStringLiteral("spool.txt"));
        QMetaObject::invokeMethod(
            &m_holder,
            [&] {
                m_server = new SimServer(options, [this](const std::shared_ptr<CadApplication> &cad, WindowService &) {
                    m_cad = cad;
                    auto runner = std::make_unique<ScriptedRunner>();
                    m_runner = runner.get();
                    return runner;
                });
                m_started = m_server->start();
            },
            Qt::BlockingQueuedConnection);
        ASSERT_TRUE(m_started);
        for (int i = 0; i < 1000 && m_endpoint.isEmpty(); ++i) {
            m_endpoint = ObjectTable(options.tableDirectory).lookup(Monikers::application(4242));
            if (m_endpoint.isEmpty())
                QThread::msleep(2);
        }
        ASSERT_FALSE(m_endpoint.isEmpty());
        ASSERT_EQ(m_client.connectTo(m_endpoint), S_OK);
    }
    void TearDown() override
    {
        m_client.disconnect();
        QMetaObject::invokeMethod(&m_holder, [&] { delete m_server; }, Qt::BlockingQueuedConnection);
        m_thread.quit();
        m_thread.wait();
    }

    AutomationReply runMacro(std::function<MacroOutcome()> macro)
    {
        m_runner->macro = std::move(macro);
        return m_client.call("Application", "RunMacro2",
                             {Variant::fromBStr(QStringLiteral("/x.mcb")), Variant::fromBStr(QStringLiteral("McMacro1")),
                              Variant::fromBStr(QStringLiteral("main")), Variant::fromI4(0), Variant::fromI4(0)});
    }

    struct Holder : QObject {};
    QTemporaryDir m_home;
    QThread m_thread;
    Holder m_holder;
    SimServer *m_server = nullptr;
    bool m_started = false;
    std::shared_ptr<CadApplication> m_cad;
    ScriptedRunner *m_runner = nullptr;
    QString m_endpoint;
    AutomationClient m_client;
};

QString sample(const char *name) { return QStringLiteral(MCTASK_SAMPLES_DIR "/") + QLatin1String(name); }

} // namespace

TEST_F(SimServerTest, MacroActivityReachesTheConnectedSinksInOrder)
{
    AddInLikeSink sink;
    sink.client = &m_client;
    m_client.setEventSink(&sink);
    const AutomationReply advised = m_client.call("Application", "Advise");
    ASSERT_TRUE(advised.ok());
    sink.appHandle = advised.value.handle();

    const QString output = m_home.filePath(QStringLiteral("bracket.step"));
    const AutomationReply reply = runMacro([&] {
        std::int32_t errors = 0;
        std::int32_t warnings = 0;
        ModelDocPtr doc = m_cad->openDoc6(sample("bracket.mcdprt"), 1, 0, QString(), errors, warnings);
        if (!doc)
            return MacroOutcome{false, 28};
        doc->extension().saveAs(output, 0, 0, nullptr, errors, warnings);
        doc->extension().printOut2(std::nullopt, 1, false, QStringLiteral("Office"), QString());
        m_cad->closeAllDocuments(true);
        return MacroOutcome{};
    });
    ASSERT_TRUE(reply.ok());
    EXPECT_TRUE(reply.value.toBool());
    EXPECT_EQ(reply.out.at(4).toI4(), 0);
    EXPECT_TRUE(QFile::exists(output));

    // Opened (12), activated (7, 22); then the document's save (7) and
    // destruction (2) and the view's print (10).
    std::vector<std::pair<bool, int>> order;
    for (const auto &seen : sink.events)
        order.emplace_back(seen.source == sink.appHandle, seen.dispId);
    const std::vector<std::pair<bool, int>> expected = {{true, 12}, {true, 7}, {true, 22}, {false, 7}, {false, 10}, {false, 2}};
    EXPECT_EQ(order, expected);
    ASSERT_EQ(sink.events.size(), expected.size());
    EXPECT_EQ(sink.events[0].text, sample("bracket.mcdprt"));
    EXPECT_EQ(sink.events[3].text, output);
    EXPECT_FALSE(sink.events[3].fileExisted); // told before the bytes are written
    EXPECT_EQ(sink.events[3].configuration, QStringLiteral("Machined"));
    EXPECT_EQ(sink.documents.size(), 1u);
    EXPECT_EQ(m_client.call("Application", "GetDocumentCount").value.toI4(), 0);
}

TEST_F(SimServerTest, DocumentsCanBeWalkedAndOutliveTheirClosing)
{
    const AutomationReply reply = runMacro([&] {
        std::int32_t errors = 0;
        std::int32_t warnings = 0;
        m_cad->openDoc6(sample("shaft.mcdprt"), 1, 0, QString(), errors, warnings);
        m_cad->openDoc6(sample("layout.mcddrw"), 3, 0, QString(), errors, warnings);
        return MacroOutcome{errors == 0, errors};
    });
    ASSERT_TRUE(reply.ok());
    ASSERT_TRUE(reply.value.toBool());

    const AutomationValue first = m_client.call("Application", "GetFirstDocument").value;
    const AutomationValue second = m_client.call(first, "GetNext").value;
    EXPECT_TRUE(m_client.call(second, "GetNext").value.isNothing());
    EXPECT_EQ(m_client.call(first, "GetType").value.toI4(), 1);
    EXPECT_EQ(m_client.call(second, "GetType").value.toI4(), 3);
    EXPECT_EQ(m_client.call(second, "GetCurrentSheetName").value.toText(), QStringLiteral("Sheet2"));
    EXPECT_EQ(m_client.call("Application", "ActiveDoc").value.handle(), second.handle());

    // Closing from the caller's side fires document 2 without waiting for it.
    ASSERT_TRUE(m_client.call(second, "Advise").ok());
    int destroyed = 0;
    struct Counter final : AutomationEventSink {
        int *count;
        explicit Counter(int *c) : count(c) {}
        HRESULT onEvent(const AutomationEvent &e) override { *count += e.dispId == 2 ? 1 : 0; return S_OK; }
    } counter(&destroyed);
    m_client.setEventSink(&counter);
    EXPECT_TRUE(m_client.call("Application", "CloseAllDocuments", {Variant::fromBool(true)}).value.toBool());
    EXPECT_EQ(destroyed, 1);
    EXPECT_TRUE(m_client.call(second, "IsClosed").value.toBool());
    EXPECT_EQ(m_client.call(second, "GetTitle").hr, S_OK);
    EXPECT_TRUE(m_client.call(second, "GetNext").value.isNothing());
}

TEST_F(SimServerTest, CallersReachTheMembersMacrosUseWithTheirByRefResults)
{
    const QString missing = m_home.filePath(QStringLiteral("missing.mcdprt"));
    const AutomationArgs args = {Variant::fromBStr(missing), Variant::fromI4(1), Variant::fromI4(0),
                                 Variant::fromBStr(QString()), Variant::fromI4(0), Variant::fromI4(0)};
    const AutomationReply failed = m_client.call("Application", "OpenDoc6", args);
    ASSERT_TRUE(failed.ok());
    EXPECT_TRUE(failed.value.isNothing());
    ASSERT_EQ(failed.out.size(), args.size());
    EXPECT_EQ(failed.out[0], args[0]); // left as it came
    EXPECT_EQ(failed.out[4].toI4(), cad::mcFileNotFoundError);

    AutomationArgs open = args;
    open[0] = Variant::fromBStr(sample("bracket.mcdprt"));
    const AutomationValue doc = m_client.call("Application", "OpenDoc6", open).value;
    ASSERT_TRUE(doc.isObject());
    EXPECT_EQ(m_client.call(doc, "GetTitle").value.toText(), QStringLiteral("bracket.mcdprt"));
    EXPECT_EQ(m_client.call(doc, "GetConfigurationNames").value.items().size(), 3u);
}
