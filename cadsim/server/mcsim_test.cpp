#include "cadsim/server/mcsimprocess.h"
#include "platform/automation/automationerrors.h"
#include "platform/automation/processmemory.h"

#include <QCoreApplication>
#include <QDir>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <gtest/gtest.h>

#include <future>

namespace {

constexpr std::uint32_t kKeyDown = 0x0100;
constexpr std::uint32_t kKeyUp = 0x0101;
constexpr std::uint32_t kVkReturn = 0x0D;

void ensureApp()
{
    static int argc = 1;
    static char name[] = "mcsim_test";
    static char *argv[] = {name, nullptr};
    if (!QCoreApplication::instance())
        new QCoreApplication(argc, argv);
}

class McsimTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ensureApp();
        m_sim = std::make_unique<McsimProcess>(QStringLiteral(MCSIM_PROGRAM));
        m_macro = m_sim->home() + QStringLiteral("/empty.mcb");
        QFile file(m_macro);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("Sub main()\r\nEnd Sub\r\n");
    }

    void startAndConnect(const QStringList &arguments = {})
    {
        ASSERT_TRUE(m_sim->start(arguments));
        ASSERT_TRUE(m_sim->connectApplication(m_client))
            << "state " << m_sim->process().state() << " exit " << m_sim->process().exitCode() << " status "
            << m_sim->process().exitStatus() << ": " << m_sim->process().readAllStandardError().toStdString();
    }

    // A run call from a thread of its own, with a client of its own (a client
    // belongs to the thread that connected it).
    // (Sockets need a thread that Qt started.)
    std::future<AutomationReply> runMacro2Async(int timeoutMs)
    {
        const QString endpoint = m_sim->table().lookup(Monikers::application(m_sim->pid()));
        auto task = std::make_shared<std::packaged_task<AutomationReply()>>([this, endpoint, timeoutMs] {
            AutomationClient client;
            if (client.connectTo(endpoint) != S_OK)
                return AutomationReply{RPC_S_SERVER_UNAVAILABLE, {}, {}};
            return runMacro2(client, timeoutMs);
        });
        std::future<AutomationReply> result = task->get_future();
        m_threads.emplace_back(QThread::create([task] { (*task)(); }));
        m_threads.back()->start();
        return result;
    }

    void TearDown() override
    {
        m_sim.reset(); // ends the process, which ends every pending call
        for (auto &thread : m_threads)
            thread->wait();
    }

    AutomationReply runMacro2(AutomationClient &client, int timeoutMs = 0)
    {
        return client.call("Application", "RunMacro2",
                           {Variant::fromBStr(m_macro), Variant::fromBStr(QStringLiteral("McMacro1")),
                            Variant::fromBStr(QStringLiteral("main")), Variant::fromI4(0), Variant::fromI4(0)},
                           timeoutMs);
    }

    // Top-level windows as [handle, title, parent title, visible] entries.
    static std::vector<AutomationValue> windows(AutomationClient &client)
    {
        const AutomationReply reply = client.call("Windows", "List");
        EXPECT_TRUE(reply.ok());
        return reply.value.items();
    }

    static std::int32_t waitForWindow(AutomationClient &client, const QString &title, QString *parentTitle = nullptr)
    {
        const QDeadlineTimer deadline(5000);
        while (!deadline.hasExpired()) {
            for (const AutomationValue &entry : windows(client)) {
                if (entry.items().at(1).toText() == title) {
                    if (parentTitle)
                        *parentTitle = entry.items().at(2).toText();
                    return entry.items().at(0).toI4();
                }
            }
            QThread::msleep(2);
        }
        return 0;
    }

    std::vector<std::unique_ptr<QThread>> m_threads;
    std::unique_ptr<McsimProcess> m_sim;
    AutomationClient m_client;
    QString m_macro;
};

} // namespace

TEST_F(McsimTest, RegistersUnderItsProcessIdAndAnswersTheApplicationCalls)
{
    startAndConnect({QStringLiteral("/R")});
    EXPECT_TRUE(m_sim->table().list().contains(Monikers::application(m_sim->pid())));
    EXPECT_EQ(m_client.call("Application", "RevisionNumber").value.toText(), QStringLiteral("21.0.0"));
    EXPECT_EQ(m_client.call("Application", "StartSwitch").value.toText(), QStringLiteral("/R"));
    EXPECT_EQ(m_client.call("Application", "GetProcessID").value.toI4(), m_sim->pid());
    EXPECT_TRUE(m_client.call("Application", "Advise").ok()); // it sources events
    EXPECT_EQ(m_client.call("Application", "NoSuchCall").hr, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(m_client.call("Application", "SetUserPreferenceToggle", {Variant::fromI4(290)}).hr,
              DISP_E_BADPARAMCOUNT);
}

TEST_F(McsimTest, MacrosAndCallersShareTheApplicationsMembers)
{
    // What a macro sets, a caller reads back; hiding from a macro hides the window too.
    QFile file(m_macro);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("Sub main()\r\n"
               "    Application.Cadrix.Visible = False\r\n"
               "    Application.Cadrix.SetUserPreferenceStringListValue 9, \" A\" & vbLf & vbLf & \"B \"\r\n"
               "End Sub\r\n");
    file.close();
    startAndConnect();
    const AutomationReply run = runMacro2(m_client);
    ASSERT_TRUE(run.ok());
    EXPECT_TRUE(run.value.toBool());
    EXPECT_FALSE(m_client.call("Application", "Visible").value.toBool());
    EXPECT_EQ(m_client.call("Application", "GetUserPreferenceStringListValue", {Variant::fromI4(9)}).value.toText(),
              QStringLiteral("A\nB"));
    for (const AutomationValue &entry : windows(m_client)) {
        if (entry.items().at(1).toText() == QStringLiteral("Mecadra")) {
            EXPECT_FALSE(entry.items().at(3).toBool());
        }
    }
}

TEST_F(McsimTest, StartSwitchAndRevisionComeFromCommandLineAndEnvironment)
{
    m_sim->setEnv(QStringLiteral("MCSIM_REVISION"), QStringLiteral("16.4.0"));
    startAndConnect({QStringLiteral("/b")});
    EXPECT_EQ(m_client.call("Application", "StartSwitch").value.toText(), QStringLiteral("/B"));
    EXPECT_EQ(m_client.call("Application", "RevisionNumber").value.toText(), QStringLiteral("16.4.0"));
    // Before revision 17 only the run call without an error code exists.
    EXPECT_EQ(runMacro2(m_client).hr, DISP_E_MEMBERNOTFOUND);
    const AutomationReply old = m_client.call("Application", "RunMacro",
                                              {Variant::fromBStr(m_macro), Variant::fromBStr(QStringLiteral("McMacro1")),
                                               Variant::fromBStr(QStringLiteral("main"))});
    EXPECT_TRUE(old.ok());
    EXPECT_EQ(old.value.scalar().type(), VarType::Bool);
}

TEST_F(McsimTest, PreferencesRoundTripOverTheChannel)
{
    startAndConnect();
    auto app = [this](const char *member, AutomationArgs args = {}) {
        const AutomationReply reply = m_client.call("Application", QString::fromLatin1(member), std::move(args));
        EXPECT_TRUE(reply.ok()) << member;
        return reply.value;
    };
    // What a caller does to run Mecadra without anyone watching.
    EXPECT_TRUE(app("SetUserPreferenceToggle", {Variant::fromI4(290), Variant::fromBool(true)}).toBool());
    app("SetUserPreferenceToggle", {Variant::fromI4(291), Variant::fromBool(true)});
    app("SetUserPreferenceIntegerValue", {Variant::fromI4(253), Variant::fromI4(0)});
    app("SetUserPreferenceToggle", {Variant::fromI4(30), Variant::fromBool(false)});
    app("SetUserPreferenceDoubleValue", {Variant::fromI4(7), Variant::fromR8(0.25)});
    app("SetUserPreferenceStringListValue", {Variant::fromI4(9), Variant::fromBStr(QStringLiteral(" Sheet1\n\nSheet3 \n"))});
    app("SetUserPreferenceStringListValue", {Variant::fromI4(10), AutomationValue::fromArray({Variant::fromBStr(QStringLiteral("A")), Variant::fromBStr(QStringLiteral("B"))})});
    app("SetUserPreferenceIntegerValue", {Variant::fromI4(254), Variant::fromBStr(QStringLiteral("42"))});

    EXPECT_TRUE(app("GetUserPreferenceToggle", {Variant::fromI4(290)}).toBool());
    EXPECT_TRUE(app("GetUserPreferenceToggle", {Variant::fromI4(291)}).toBool());
    EXPECT_FALSE(app("GetUserPreferenceToggle", {Variant::fromI4(30)}).toBool());
    EXPECT_EQ(app("GetUserPreferenceIntegerValue", {Variant::fromI4(253)}).toI4(), 0);
    EXPECT_EQ(app("GetUserPreferenceIntegerValue", {Variant::fromI4(254)}).toI4(), 42);
    EXPECT_DOUBLE_EQ(app("GetUserPreferenceDoubleValue", {Variant::fromI4(7)}).toR8(), 0.25);
    EXPECT_EQ(app("GetUserPreferenceStringListValue", {Variant::fromI4(9)}).toText(), QStringLiteral("Sheet1\nSheet3"));
    EXPECT_EQ(app("GetUserPreferenceStringListValue", {Variant::fromI4(10)}).toText(), QStringLiteral("A\nB"));
    EXPECT_EQ(m_client.call("Application", "SetUserPreferenceIntegerValue",
                            {Variant::fromI4(253), Variant::fromBStr(QStringLiteral("many"))}).hr,
              DISP_E_TYPEMISMATCH);

    EXPECT_EQ(app("GetDocumentCount").toI4(), 0);
    EXPECT_TRUE(app("GetFirstDocument").isNothing());
    EXPECT_TRUE(app("CloseAllDocuments", {Variant::fromBool(true)}).toBool());
}

TEST_F(McsimTest, RegisterDelayFaultHoldsBackOnlyTheApplication)
{
    m_sim->setEnv(QStringLiteral("MCSIM_REGISTER_DELAY_MS"), QStringLiteral("400"));
    QElapsedTimer sinceStart;
    sinceStart.start();
    ASSERT_TRUE(m_sim->start());
    AutomationClient windowsClient;
    ASSERT_TRUE(m_sim->connectWindows(windowsClient));
    EXPECT_TRUE(windowsClient.call("Windows", "List").ok());
    ASSERT_TRUE(m_sim->connectApplication(m_client));
    EXPECT_GE(sinceStart.elapsed(), 400);
}

TEST_F(McsimTest, ShowWindowFaultBlocksTheMacroUntilTheWindowIsAnswered)
{
    const QString title = QStringLiteral("Job 12 - Mecadra Task Scheduler");
    m_sim->setEnv(QStringLiteral("MCSIM_SHOW_WINDOW"), title);
    m_sim->setEnv(QStringLiteral("MCSIM_SHOW_WINDOW_PARENT"), QStringLiteral("Mecadra Premium"));
    startAndConnect();
    AutomationClient watcher; // the dialog watcher's own connection
    ASSERT_TRUE(m_sim->connectWindows(watcher));

    auto run = runMacro2Async(10000);
    QString parentTitle;
    const std::int32_t box = waitForWindow(watcher, title, &parentTitle);
    ASSERT_NE(box, 0);
    EXPECT_EQ(parentTitle, QStringLiteral("Mecadra Premium"));
    EXPECT_EQ(run.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    EXPECT_TRUE(watcher.call("Windows", "PostMessage", {Variant::fromI4(box), Variant::fromI4(kKeyDown), Variant::fromI4(kVkReturn)}).ok());
    // Key-down answered it: the key-up finds it gone, as on a real desktop.
    EXPECT_EQ(watcher.call("Windows", "PostMessage", {Variant::fromI4(box), Variant::fromI4(kKeyUp), Variant::fromI4(kVkReturn)}).hr,
              makeHresult(0x80070578u));
    const AutomationReply reply = run.get();
    EXPECT_TRUE(reply.ok());
    for (const AutomationValue &entry : windows(watcher))
        EXPECT_NE(entry.items().at(1).toText(), title);
}

TEST_F(McsimTest, ShowWindowAtStartHoldsRegistrationUntilAnswered)
{
    m_sim->setEnv(QStringLiteral("MCSIM_SHOW_WINDOW"), QStringLiteral("Mecadra"));
    m_sim->setEnv(QStringLiteral("MCSIM_SHOW_WINDOW_AT"), QStringLiteral("start"));
    ASSERT_TRUE(m_sim->start());
    AutomationClient watcher;
    ASSERT_TRUE(m_sim->connectWindows(watcher));
    // Both the frame and the box are titled "Mecadra": the box is the second.
    std::int32_t box = 0;
    const QDeadlineTimer deadline(5000);
    while (box == 0 && !deadline.hasExpired()) {
        const auto list = windows(watcher);
        if (list.size() == 2)
            box = list[1].items().at(0).toI4();
        else
            QThread::msleep(2);
    }
    ASSERT_NE(box, 0);
    EXPECT_TRUE(m_sim->table().lookup(Monikers::application(m_sim->pid())).isEmpty());
    EXPECT_TRUE(watcher.call("Windows", "PostMessage", {Variant::fromI4(box), Variant::fromI4(0x10), Variant::fromI4(0)}).ok());
    ASSERT_TRUE(m_sim->connectApplication(m_client));
}

TEST_F(McsimTest, HangFaultKeepsTheRunCallWaitingWhileTheServerAnswers)
{
    m_sim->setEnv(QStringLiteral("MCSIM_HANG_IN_MACRO"), QStringLiteral("1"));
    startAndConnect();
    EXPECT_EQ(runMacro2(m_client, 300).hr, RPC_E_TIMEOUT);
    AutomationClient other;
    ASSERT_TRUE(m_sim->connectApplication(other));
    EXPECT_TRUE(other.call("Application", "RevisionNumber").ok());
    EXPECT_FALSE(windows(other).empty());
    EXPECT_EQ(runMacro2(other).hr, makeHresult(0x80010001u)); // busy with the hung macro
    // Ending it from outside is what is left.
    m_sim->process().kill();
    EXPECT_TRUE(m_sim->waitForExit());
}

namespace {

void writeMacro(const QString &path, const QString &text)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text.toLatin1());
}

} // namespace

TEST_F(McsimTest, RunCallsReportCompileAndProcedureFailuresWithTheirCodes)
{
    startAndConnect();
    AutomationReply reply = runMacro2(m_client);
    ASSERT_TRUE(reply.ok());
    EXPECT_TRUE(reply.value.toBool());
    EXPECT_EQ(reply.out.at(4).toI4(), 0);

    writeMacro(m_macro, QStringLiteral("Sub main()\r\n    NoSuchProcedure 1\r\nEnd Sub\r\n"));
    reply = runMacro2(m_client);
    ASSERT_TRUE(reply.ok());
    EXPECT_FALSE(reply.value.toBool());
    EXPECT_EQ(reply.out.at(4).toI4(), 8); // Sub or Function expected

    writeMacro(m_macro, QStringLiteral("Sub other()\r\nEnd Sub\r\n"));
    reply = runMacro2(m_client);
    EXPECT_FALSE(reply.value.toBool());
    EXPECT_EQ(reply.out.at(4).toI4(), 6); // invalid procedure name

    m_macro += QStringLiteral(".missing");
    reply = runMacro2(m_client);
    EXPECT_FALSE(reply.value.toBool());
    EXPECT_EQ(reply.out.at(4).toI4(), 28); // file open failed
}

TEST_F(McsimTest, MsgBoxInAMacroWaitsForTheWindowService)
{
    writeMacro(m_macro, QStringLiteral("Sub main()\r\n    If MsgBox(\"Go on?\", vbOKCancel) = vbCancel Then Err.Raise 5\r\nEnd Sub\r\n"));
    startAndConnect();
    AutomationClient watcher;
    ASSERT_TRUE(m_sim->connectWindows(watcher));
    for (const std::uint32_t message : {kKeyDown, 0x0010u}) { // Enter: OK, then Close: Cancel
        auto run = runMacro2Async(10000);
        std::int32_t box = 0;
        const QDeadlineTimer deadline(5000);
        while (box == 0 && !deadline.hasExpired()) {
            const auto list = windows(watcher); // the frame first, then the box; both "Mecadra"
            if (list.size() == 2 && list[1].items().at(1).toText() == QStringLiteral("Mecadra"))
                box = list[1].items().at(0).toI4();
            else
                QThread::msleep(2);
        }
        ASSERT_NE(box, 0);
        EXPECT_TRUE(watcher.call("Windows", "PostMessage", {Variant::fromI4(box), Variant::fromI4(message), Variant::fromI4(kVkReturn)}).ok());
        if (message == kKeyDown) {
            const AutomationReply reply = run.get();
            EXPECT_TRUE(reply.value.toBool());
            continue;
        }
        // Cancel raises an unhandled error: its box must be answered as well.
        std::int32_t errorBox = 0;
        const QDeadlineTimer errorDeadline(5000);
        while (errorBox == 0 && !errorDeadline.hasExpired()) {
            const auto list = windows(watcher);
            if (list.size() == 2)
                errorBox = list[1].items().at(0).toI4();
            else
                QThread::msleep(2);
        }
        ASSERT_NE(errorBox, 0);
        EXPECT_TRUE(watcher.call("Windows", "PostMessage", {Variant::fromI4(errorBox), Variant::fromI4(kKeyDown), Variant::fromI4(kVkReturn)}).ok());
        const AutomationReply reply = run.get();
        EXPECT_FALSE(reply.value.toBool());
        EXPECT_EQ(reply.out.at(4).toI4(), 12); // unhandled exception
    }
}

TEST_F(McsimTest, RefusesUnknownSwitchesWithAMessageAndAFailingExit)
{
    for (const QStringList &arguments : {QStringList{QStringLiteral("/X")}, QStringList{QStringLiteral("--bogus")},
                                         QStringList{QStringLiteral("/R"), QStringLiteral("/regserver")},
                                         QStringList{QStringLiteral("/regserver"), QStringLiteral("--year"), QStringLiteral("soon")}}) {
        McsimProcess sim(QStringLiteral(MCSIM_PROGRAM));
        ASSERT_TRUE(sim.start(arguments));
        ASSERT_TRUE(sim.waitForExit());
        EXPECT_EQ(sim.process().exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(sim.process().exitCode(), 2) << arguments.join(' ').toStdString();
        const QString err = QString::fromLocal8Bit(sim.process().readAllStandardError());
        EXPECT_TRUE(err.startsWith(QStringLiteral("mcsim: "))) << err.toStdString();
        EXPECT_TRUE(err.contains(QStringLiteral("Usage:"))) << err.toStdString();
        EXPECT_TRUE(sim.table().list().isEmpty()); // it never started serving
    }
}

TEST_F(McsimTest, SaysWhyItCannotRegisterAndEnds)
{
    // A home so deep that the socket paths exceed what the system takes.
    const QString deep = m_sim->home() + QLatin1Char('/') + QString(120, QLatin1Char('d'));
    ASSERT_TRUE(QDir().mkpath(deep));
    m_sim->setEnv(QStringLiteral("MCTASK_HOME"), deep);
    ASSERT_TRUE(m_sim->start());
    ASSERT_TRUE(m_sim->waitForExit());
    EXPECT_NE(m_sim->process().exitCode(), 0);
    const QString err = QString::fromLocal8Bit(m_sim->process().readAllStandardError());
    EXPECT_TRUE(err.contains(QStringLiteral("the socket path is too long"))) << err.toStdString();
}
