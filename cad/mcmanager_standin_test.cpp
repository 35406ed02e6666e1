// McManager against real stand-in processes, installed into a private
// registry store and object table.

#include "cad/mcmanager.h"
#include "cadsim/server/installation.h"
#include "common/settingslight.h"
#include "host/hosterror.h"
#include "host/testing/faketask.h"
#include "host/testing/fakevault.h"
#include "platform/automation/automationerrors.h"
#include "platform/automation/processes.h"
#include "platform/clock.h"
#include "platform/memoryregistrystore.h"
#include "platform/qtestprint.h"
#include "platform/testing/coreapp.h"
#include "run/taskrunrecord.h"

#include <QDir>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

namespace {

const QStringList kFaults = {"MCSIM_PRINTERS", "MCSIM_SPOOL_FILE", "MCSIM_SHOW_WINDOW", "MCSIM_SHOW_WINDOW_AT", "MCSIM_CRASH_AFTER", "MCSIM_HANG_IN_MACRO",
                             "MCSIM_NEVER_REGISTER", "MCSIM_REFUSE_EXIT", "MCSIM_GROW_MIB"};
const QString kTrivialMacro = QStringLiteral("Sub main()\r\nEnd Sub\r\n");

class McManagerStandInTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        coreApp();
        m_previousHome = qgetenv("MCTASK_HOME");
        qputenv("MCTASK_HOME", QFile::encodeName(m_home.path()));
        StandInInstallation installation;
        installation.folder = m_home.filePath(QStringLiteral("Mecadra 2013"));
        QString error;
        ASSERT_TRUE(installation.install(QStringLiteral(MCSIM_PROGRAM), error, m_store)) << error.toStdString();
        newManager();
    }

    void TearDown() override
    {
        if (m_manager->processId() != 0 && Processes::instance().isRunning(m_manager->processId()))
            m_manager->Close(true, E_FAIL);
        m_manager.reset();
        for (const QString &fault : kFaults)
            qunsetenv(qPrintable(fault));
        qputenv("MCTASK_HOME", m_previousHome);
    }

    void newManager()
    {
        m_manager = std::make_unique<McManager>(std::make_shared<LaunchedMecadraProcesses>(), m_store);
        m_manager->setTiming({10, 120, 11, 46, 20, 1800});
        m_manager->Init(nullptr, 3, nullptr, 2013);
    }

    void setUserValue(const QString &name, std::uint32_t value)
    {
        const QString key = QString::fromUtf16(kAddInUserKey);
        m_store.createKey(RegistryRoot::CurrentUser, RegistryView::Native, key);
        m_store.writeValue(RegistryRoot::CurrentUser, RegistryView::Native, key, name, RegistryValue::fromDword(value));
    }

    HRESULT runMacro(const QString &macro = kTrivialMacro)
    {
        try {
            m_manager->RunMacro(macro);
            return S_OK;
        } catch (const HostError &error) {
            return error.code();
        }
    }

    // A call on the stand-in with a client of the test's own.
    AutomationReply ask(qint64 pid, const ObjectRef &object, const QString &member, AutomationArgs args = {})
    {
        AutomationClient client;
        const QString endpoint = ObjectTable().lookup(object.isRoot() && object.rootName() == QLatin1String("Windows")
                                                          ? Monikers::windows(pid)
                                                          : Monikers::application(pid));
        if (endpoint.isEmpty() || failed(client.connectTo(endpoint)))
            return {RPC_S_SERVER_UNAVAILABLE, {}, {}};
        return client.call(object, member, std::move(args));
    }

    static bool running(qint64 pid) { return Processes::instance().isRunning(pid); }

    QTemporaryDir m_home;
    QByteArray m_previousHome;
    MemoryRegistryStore m_store;
    std::unique_ptr<McManager> m_manager;
};

TEST_F(McManagerStandInTest, StartsHiddenWithTheRecordedSwitchRunsAMacroAndCloses)
{
    ASSERT_EQ(m_manager->Start(), S_OK) << m_manager->lastError().toStdString();
    const qint64 pid = m_manager->processId();
    EXPECT_EQ(ask(pid, "Application", "StartSwitch").value.toText(), "/B"); // the Office edition
    EXPECT_EQ(ask(pid, "Application", "StartShowCommand").value.toI4(), static_cast<int>(ShowCommand::Minimized));
    EXPECT_FALSE(ask(pid, "Application", "Visible").value.toBool());
    const AutomationReply windows = ask(pid, "Windows", "List");
    ASSERT_TRUE(windows.ok());
    ASSERT_FALSE(windows.value.items().empty());
    EXPECT_EQ(windows.value.items().front().items().at(1).toText(), "Mecadra");
    EXPECT_FALSE(windows.value.items().front().items().at(3).toBool()); // the main window is hidden

    EXPECT_EQ(runMacro(), S_OK) << m_manager->lastError().toStdString();
    EXPECT_EQ(m_manager->Close(true, S_OK), S_OK);
    EXPECT_FALSE(running(pid));
    EXPECT_EQ(Processes::instance().exitCode(pid), 0);
    // The stand-in revoked its entries as it ended.
    EXPECT_TRUE(ObjectTable().list().isEmpty());
}

TEST_F(McManagerStandInTest, SavedFilesAndPrintsAreRecordedWithTheirSheetOrConfiguration)
{
    qputenv("MCSIM_PRINTERS", "Office Laser");
    qputenv("MCSIM_SPOOL_FILE", QFile::encodeName(m_home.filePath(QStringLiteral("spool.jsonl"))));
    auto record = std::make_shared<TaskRunRecord>();
    ASSERT_EQ(record->start(std::make_shared<FakeVault>(QStringLiteral("Vault"), m_home.path()), 1, false), S_OK);
    auto source = std::make_shared<FileRecord>();
    source->path = QStringLiteral(MCTASK_SAMPLES_DIR "/layout.mcddrw");
    record->setCurrentSource(source);
    m_manager->Init(record, 1, std::make_shared<FakeTaskInstance>(), 2013);
    ASSERT_EQ(m_manager->Start(), S_OK);

    const QString out = m_home.filePath(QStringLiteral("out"));
    QDir().mkpath(out);
    const QString macro = QStringLiteral(
        "Sub main()\r\n"
        "    Dim errors As Long, warnings As Long, model As Object, app As Object\r\n"
        "    Set app = Application.Cadrix\r\n"
        "    Set model = app.OpenDoc6(\"%1/layout.mcddrw\", 3, 0, \"\", errors, warnings)\r\n"
        "    model.Extension.SaveAs \"%2/layout.pdf\", 0, 1, Nothing, errors, warnings\r\n"
        "    Set model = app.OpenDoc6(\"%1/bracket.mcdprt\", 1, 0, \"\", errors, warnings)\r\n"
        "    model.Extension.SaveAs \"%2/bracket.step\", 0, 1, Nothing, errors, warnings\r\n"
        "    model.Extension.SaveAs \"%2/BRACKET.STEP\", 0, 1, Nothing, errors, warnings\r\n"
        "    model.Extension.PrintOut2 Empty, 1, False, \"Office Laser\", \"\"\r\n"
        "    app.CloseAllDocuments True\r\n"
        "End Sub\r\n").arg(QStringLiteral(MCTASK_SAMPLES_DIR), out);
    ASSERT_EQ(runMacro(macro), S_OK) << m_manager->lastError().toStdString();

    const std::vector<FileRecord> &records = record->records();
    ASSERT_EQ(records.size(), 3u);
    // The record keeps paths with the system's separators.
    auto recorded = [&](const QString &name) { return QString(out + QLatin1Char('/') + name).replace(QLatin1Char('/'), QLatin1Char('\\')); };
    EXPECT_EQ(records[0].path, recorded(QStringLiteral("layout.pdf")));
    EXPECT_EQ(records[0].conf, "Sheet2");
    EXPECT_EQ(records[1].path, recorded(QStringLiteral("bracket.step")));
    EXPECT_EQ(records[1].conf, "Machined");
    EXPECT_TRUE(records[2].isPrintEntry);
    EXPECT_EQ(records[2].info, "Office Laser");
    EXPECT_EQ(records[2].conf, "Machined");
    for (const FileRecord &output : records)
        EXPECT_EQ(output.source, source);
    EXPECT_EQ(m_manager->filesSinceStart(), 4); // every save and print counts
    EXPECT_EQ(m_manager->documentSinkCount(), 0u); // closed documents took their sinks along
}

TEST_F(McManagerStandInTest, RestartsAfterTheHundredthFile)
{
    ASSERT_EQ(m_manager->Start(), S_OK);
    const qint64 first = m_manager->processId();
    for (int file = 0; file < 100; ++file)
        m_manager->AfterFile();
    EXPECT_EQ(m_manager->processId(), first);
    m_manager->AfterFile();
    EXPECT_NE(m_manager->processId(), first);
    EXPECT_FALSE(running(first));
    EXPECT_TRUE(running(m_manager->processId()));
    EXPECT_EQ(m_manager->filesSinceStart(), 1);
}

TEST_F(McManagerStandInTest, RestartsWhenTheWorkingSetPassesTwiceTheBaselineAndTheLimit)
{
    qputenv("MCSIM_GROW_MIB", "140");
    ASSERT_EQ(m_manager->Start(), S_OK);
    const qint64 first = m_manager->processId();
    ASSERT_EQ(runMacro(), S_OK);
    m_manager->AfterFile(); // baseline: one growth
    const quint64 baseline = m_manager->baselineWorkingSet();
    ASSERT_GT(baseline, quint64(140) << 20);
    ASSERT_EQ(runMacro(), S_OK);
    m_manager->AfterFile(); // above 256 MiB, not above twice the baseline
    EXPECT_EQ(m_manager->processId(), first);
    ASSERT_EQ(runMacro(), S_OK);
    m_manager->AfterFile(); // above both
    EXPECT_NE(m_manager->processId(), first);
    EXPECT_FALSE(running(first));
}

TEST_F(McManagerStandInTest, AnswersMecadraMessageBoxesButNotThoseOfOtherProcesses)
{
    // Another process's box of the same title, shown at its start.
    ServerLauncher launcher;
    Processes::StartRequest other;
    other.program = QStringLiteral(MCSIM_PROGRAM);
    other.environment.insert(QStringLiteral("MCSIM_SHOW_WINDOW"), QStringLiteral("Mecadra"));
    other.environment.insert(QStringLiteral("MCSIM_SHOW_WINDOW_AT"), QStringLiteral("start"));
    const std::optional<qint64> otherPid = launcher.start(other);
    ASSERT_TRUE(otherPid);
    const QString otherWindows = launcher.waitForObject(Monikers::windows(*otherPid), *otherPid, 500, 10);
    ASSERT_FALSE(otherWindows.isEmpty());

    qputenv("MCSIM_SHOW_WINDOW", "Mecadra");
    ASSERT_EQ(m_manager->Start(), S_OK);
    EXPECT_EQ(runMacro(), S_OK); // the box blocked the macro until the watcher pressed Enter
    EXPECT_EQ(m_manager->restarts(), 0);

    const AutomationReply otherList = ask(*otherPid, "Windows", "List");
    int boxes = 0;
    for (const AutomationValue &window : otherList.value.items())
        boxes += window.items().at(1).toText() == QLatin1String("Mecadra") ? 1 : 0;
    EXPECT_EQ(boxes, 2); // its main window and its box
    EXPECT_TRUE(ObjectTable().lookup(Monikers::application(*otherPid)).isEmpty()); // still waiting
    launcher.terminate(*otherPid, 1);
}

TEST_F(McManagerStandInTest, ASchedulerWindowFailsTheMacroAndTheNextStartUsesRegression)
{
    qputenv("MCSIM_SHOW_WINDOW", "Error - Mecadra Task Scheduler");
    ASSERT_EQ(m_manager->Start(), S_OK);
    const qint64 first = m_manager->processId();
    EXPECT_EQ(runMacro(), E_FAIL);
    EXPECT_EQ(m_manager->lastError(), "Failed to run Mecadra macro.");
    EXPECT_TRUE(m_manager->forceRegression());
    EXPECT_FALSE(running(first));
    EXPECT_EQ(m_manager->restarts(), 1);
    EXPECT_EQ(ask(m_manager->processId(), "Application", "StartSwitch").value.toText(), "/R");
}

TEST_F(McManagerStandInTest, ACrashBetweenMacrosRestartsAndRunsTheMacroAgain)
{
    qputenv("MCSIM_CRASH_AFTER", "1");
    ASSERT_EQ(m_manager->Start(), S_OK);
    const qint64 first = m_manager->processId();
    ASSERT_EQ(runMacro(), S_OK); // answered, then the process aborts
    EXPECT_EQ(runMacro(), S_OK) << m_manager->lastError().toStdString();
    EXPECT_NE(m_manager->processId(), first);
    EXPECT_EQ(m_manager->restarts(), 1);
    EXPECT_EQ(m_manager->restartCount(), 0);
}

TEST_F(McManagerStandInTest, AHungMacroIsKilledAfterTheTimeLimitAndRunAgain)
{
    setUserValue(QStringLiteral("MacroTimeout"), 1);
    qputenv("MCSIM_HANG_IN_MACRO", "2");
    ASSERT_EQ(m_manager->Start(), S_OK);
    const qint64 first = m_manager->processId();
    ASSERT_EQ(runMacro(), S_OK);
    EXPECT_EQ(runMacro(), S_OK) << m_manager->lastError().toStdString(); // second call hangs in the first process
    EXPECT_NE(m_manager->processId(), first);
    EXPECT_EQ(Processes::instance().exitCode(first), McManager::ExitCodeKilled);

    // With no attempt left the time-out is the reason.
    qputenv("MCSIM_HANG_IN_MACRO", "1");
    ASSERT_EQ(m_manager->Close(true, S_OK), S_OK);
    ASSERT_EQ(m_manager->Start(), S_OK);
    m_manager->setRestartCount(7);
    EXPECT_EQ(runMacro(), makeHresult(0x800705B4u));
    EXPECT_EQ(m_manager->lastError(), "Failed to run Mecadra macro. Reason: The macro did not finish within 1 seconds.");
}

TEST_F(McManagerStandInTest, AStandInThatNeverRegistersIsKilledAfterTheLastPoll)
{
    qputenv("MCSIM_NEVER_REGISTER", "1");
    FakeClock clock;
    ScopedClock scoped(clock);
    EXPECT_EQ(m_manager->Start(), E_FAIL);
    EXPECT_EQ(m_manager->lastError(), "Failed to start Mecadra 2013.");
    EXPECT_EQ(clock.sleepCount(), 120);
    EXPECT_FALSE(running(m_manager->processId()));
    EXPECT_EQ(Processes::instance().exitCode(m_manager->processId()), McManager::ExitCodeKilled);
}

TEST_F(McManagerStandInTest, AStandInThatRefusesToExitIsTerminated)
{
    qputenv("MCSIM_REFUSE_EXIT", "1");
    ASSERT_EQ(m_manager->Start(), S_OK);
    const qint64 pid = m_manager->processId();
    EXPECT_EQ(m_manager->Close(true, S_OK), S_OK);
    EXPECT_FALSE(running(pid));
    EXPECT_EQ(Processes::instance().exitCode(pid), McManager::ExitCodeKilled);
    // A killed stand-in cannot revoke: its entries are dropped as dead.
    EXPECT_TRUE(ObjectTable().list().isEmpty());
    EXPECT_TRUE(QDir(ObjectTable().directory()).entryList(QDir::System | QDir::Files | QDir::NoDotAndDotDot).isEmpty());
}

} // namespace
