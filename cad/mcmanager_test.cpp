#include "cad/mcmanager.h"
#include "cad/mecadraversion.h"
#include "cad/testing/fakemecadra.h"
#include "common/settingslight.h"
#include "host/hosterror.h"
#include "platform/automation/classregistry.h"
#include "base/codepage.h"
#include "platform/memoryfilesystem.h"
#include "platform/memoryregistrystore.h"
#include "platform/registry.h"
#include "platform/testing/coreapp.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

constexpr auto kClassId = "{11111111-2222-3333-4444-555555555555}";
constexpr HRESULT ClassNotRegistered = makeHresult(0x80040154u);
constexpr HRESULT TimedOut = makeHresult(0x800705B4u);

// The (preference, value) pairs of the calls of a preference setter.
std::vector<std::pair<int, int>> preferences(const FakeMecadra &fake, const QString &setter, std::size_t fromCall = 0)
{
    std::vector<std::pair<int, int>> pairs;
    for (std::size_t i = fromCall; i < fake.calls.size(); ++i)
        if (fake.calls[i].member == setter && fake.calls[i].args.size() == 2) {
            const AutomationValue &value = fake.calls[i].args[1];
            pairs.emplace_back(fake.calls[i].args[0].toI4(),
                               setter.endsWith(QLatin1String("Toggle")) ? int(value.toBool()) : value.toI4());
        }
    return pairs;
}

class McManagerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        coreApp();
        m_scopedClock = std::make_unique<ScopedClock>(m_clock); // the one-second polls take no time
        m_fake = std::make_shared<FakeMecadra>();
        m_manager = std::make_unique<McManager>(m_fake, m_store);
        m_manager->setLockFolder(m_lockFolder.path());
        McTiming timing;
        timing.watcherIntervalMs = 1;
        m_manager->setTiming(timing);
        m_manager->setWow64(false);
    }

    // The class, both ProgIDs and (unless folder is empty) the set-up key.
    void install(int year = 2013, const QString &folder = QStringLiteral("C:\\Program Files\\Mecadra 2013\\"),
                 std::optional<std::uint32_t> office = 1, RegistryView view = RegistryView::Native)
    {
        ClassRegistry::registerLocalServer({QString::fromLatin1(kClassId), QStringLiteral("Mecadra"),
                                            QStringLiteral("C:\\Server\\CADRIX.EXE"),
                                            MecadraVersion::versionedProgId(year), MecadraVersion::ProgId},
                                           m_store);
        if (folder.isEmpty())
            return;
        const QString key = MecadraVersion::setupKey(year);
        m_store.createKey(RegistryRoot::LocalMachine, view, key);
        m_store.writeValue(RegistryRoot::LocalMachine, view, key, MecadraVersion::FolderValue,
                           RegistryValue::fromString(folder));
        if (office)
            m_store.writeValue(RegistryRoot::LocalMachine, view, key, MecadraVersion::OfficeInstalledValue,
                               RegistryValue::fromDword(*office));
    }

    // The default installation, initialised for 2013 and started.
    bool installAndStart()
    {
        install();
        m_manager->Init(nullptr, 1, nullptr, 2013);
        return m_manager->Start() == S_OK;
    }

    void setUserValue(const QString &name, const RegistryValue &value)
    {
        const QString key = QString::fromUtf16(kAddInUserKey);
        m_store.createKey(RegistryRoot::CurrentUser, RegistryView::Native, key);
        m_store.writeValue(RegistryRoot::CurrentUser, RegistryView::Native, key, name, value);
    }

    // Runs a macro; the HRESULT it raised, S_OK when it returned.
    HRESULT runMacro(const QString &text = QStringLiteral("Sub main()\r\nEnd Sub\r\n"))
    {
        try {
            m_manager->RunMacro(text);
            return S_OK;
        } catch (const HostError &error) {
            EXPECT_EQ(error.context(), m_manager->lastError());
            return error.code();
        }
    }

    int startedProcesses() const { return static_cast<int>(m_fake->commandLines.size()); }

    FakeClock m_clock;
    std::unique_ptr<ScopedClock> m_scopedClock;
    MemoryRegistryStore m_store;
    std::shared_ptr<FakeMecadra> m_fake;
    QTemporaryDir m_lockFolder;
    std::unique_ptr<McManager> m_manager;
};

// --- locating ---------------------------------------------------------------

TEST_F(McManagerTest, CommandLineComesFromTheVersionFolderWithTheEditionSwitch)
{
    install(2013, QStringLiteral("C:\\Program Files\\Mecadra 2013\\\\"), 1);
    m_manager->Init(nullptr, 1, nullptr, 2013);
    EXPECT_EQ(m_manager->GetExecutablePath(QString::fromLatin1(kClassId)),
              "C:\\Program Files\\Mecadra 2013\\CADRIX.EXE /B");
    EXPECT_FALSE(m_manager->regressionStart());

    for (std::optional<std::uint32_t> edition : {std::optional<std::uint32_t>(0), std::optional<std::uint32_t>()}) {
        m_store.deleteKeyTree(RegistryRoot::LocalMachine, RegistryView::Native, MecadraVersion::setupKey(2013));
        install(2013, QStringLiteral("C:\\M"), edition);
        EXPECT_EQ(m_manager->GetExecutablePath(QString::fromLatin1(kClassId)), "C:\\M\\CADRIX.EXE /R");
        EXPECT_TRUE(m_manager->regressionStart());
    }
}

TEST_F(McManagerTest, RegressionModeSettingForcesTheRegressionSwitch)
{
    install();
    m_manager->Init(nullptr, 1, nullptr, 2013);
    setUserValue(QStringLiteral("ForceRegressionMode"), RegistryValue::fromDword(0));
    EXPECT_TRUE(m_manager->GetExecutablePath(QString::fromLatin1(kClassId)).endsWith(" /B"));
    setUserValue(QStringLiteral("ForceRegressionMode"), RegistryValue::fromDword(1));
    EXPECT_TRUE(m_manager->GetExecutablePath(QString::fromLatin1(kClassId)).endsWith(" /R"));
}

TEST_F(McManagerTest, WithoutAVersionFolderTheClassGivesPathAndVersion)
{
    install(2013, QString());
    m_manager->Init(nullptr, 1, nullptr, 0);
    // No set-up key: the edition counts as missing.
    EXPECT_EQ(m_manager->GetExecutablePath(QString::fromLatin1(kClassId)), "C:\\Server\\CADRIX.EXE /R");
    EXPECT_EQ(m_manager->versionYear(), 2013);
}

TEST_F(McManagerTest, On64BitSystemsThe64BitViewIsReadFirstThenThe32BitView)
{
    m_manager->setWow64(true);
    install(2013, QStringLiteral("C:\\Only32"), 1, RegistryView::View32);
    m_manager->Init(nullptr, 1, nullptr, 2013);
    EXPECT_EQ(m_manager->GetExecutablePath(QString::fromLatin1(kClassId)), "C:\\Only32\\CADRIX.EXE /B");

    install(2013, QStringLiteral("C:\\Both64"), 0, RegistryView::View64);
    EXPECT_EQ(m_manager->GetExecutablePath(QString::fromLatin1(kClassId)), "C:\\Both64\\CADRIX.EXE /R");

    // A process of the system's own bitness reads the normal view only.
    m_store.deleteKeyTree(RegistryRoot::LocalMachine, RegistryView::View64, QStringLiteral("SOFTWARE\\Mecadra"));
    m_manager->setWow64(false);
    EXPECT_EQ(m_manager->GetExecutablePath(QString::fromLatin1(kClassId)), "C:\\Server\\CADRIX.EXE /R");
}

TEST_F(McManagerTest, AMissingVersionFallsBackToTheUnversionedProgIdOrIsNotInstalled)
{
    m_manager->Init(nullptr, 1, nullptr, 2012);
    EXPECT_TRUE(failed(m_manager->Start()));
    EXPECT_EQ(m_manager->lastError(), "Mecadra 2012 is not installed.");
    EXPECT_EQ(startedProcesses(), 0);

    install(2013, QString());
    ASSERT_EQ(m_manager->Start(), S_OK) << m_manager->lastError().toStdString();
    // The unversioned ProgID's class names 2013 through its versioned ProgID.
    EXPECT_EQ(m_manager->versionYear(), 2013);
    EXPECT_EQ(m_fake->commandLines.back(), "C:\\Server\\CADRIX.EXE /R");
}

// --- starting and closing ---------------------------------------------------

TEST_F(McManagerTest, AProcessThatRefusesToExitIsTerminatedAfterElevenSeconds)
{
    FakeClock &clock = m_clock;
    m_fake->refusesExit = true;
    ASSERT_TRUE(installAndStart()) << m_manager->lastError().toStdString();
    const qint64 before = clock.totalSlept();
    EXPECT_EQ(m_manager->Close(true, S_OK), S_OK);
    EXPECT_EQ(clock.totalSlept() - before, 11 * 1000 + 1000); // 11 waits, then the first after termination
    EXPECT_EQ(m_fake->processes[m_manager->processId()].exitCode, McManager::ExitCodeKilled);
}

TEST_F(McManagerTest, AFailedHideIsReportedAndRetryStartBeginsAgain)
{
    install();
    m_fake->hideFailure = E_ACCESSDENIED;
    m_manager->Init(nullptr, 1, nullptr, 2013);
    EXPECT_EQ(m_manager->Start(), E_ACCESSDENIED);
    EXPECT_EQ(m_manager->lastError(), "Failed to set Mecadra main window as invisible.");
    const qint64 first = m_manager->processId();
    m_fake->hideFailure = S_OK;
    EXPECT_EQ(m_manager->RetryStart(E_ACCESSDENIED), S_OK);
    EXPECT_NE(m_manager->processId(), first);
    EXPECT_FALSE(m_fake->isRunning(first));
    EXPECT_EQ(m_manager->restartCount(), 1);
}

TEST_F(McManagerTest, AnApplicationThatAppearsButCannotBeReachedIsToldApart)
{
    install();
    m_manager->Init(nullptr, 1, nullptr, 2013);
    struct Case { HRESULT attach; const char *message; };
    for (const Case c : {Case{ClassNotRegistered, "Mecadra 2013 is not installed."},
                         Case{E_ACCESSDENIED, "Failed to start Mecadra 2013."}}) {
        m_fake->attachFailure = c.attach;
        EXPECT_EQ(m_manager->Start(), c.attach);
        EXPECT_EQ(m_manager->lastError(), c.message);
        EXPECT_FALSE(m_manager->isConnected());
        // Not one that never appeared: it is left for Close, which ends it.
        const qint64 pid = m_manager->processId();
        EXPECT_TRUE(m_fake->isRunning(pid));
        EXPECT_EQ(m_manager->Close(true, S_OK), S_OK);
        EXPECT_FALSE(m_fake->isRunning(pid));
    }
}

TEST_F(McManagerTest, StartSetsThePreferencesAndNamesEachFailedStep)
{
    ASSERT_TRUE(installAndStart()) << m_manager->lastError().toStdString();
    using Pairs = std::vector<std::pair<int, int>>;
    EXPECT_EQ(preferences(*m_fake, QStringLiteral("SetUserPreferenceToggle")), (Pairs{{290, 1}, {291, 1}, {30, 0}}));
    EXPECT_EQ(preferences(*m_fake, QStringLiteral("SetUserPreferenceIntegerValue")), (Pairs{{253, 0}}));

    struct Case { const char *member; const char *message; };
    for (const Case c : {Case{"RevisionNumber", "Failed to get Mecadra revision number."},
                         Case{"Advise", "Failed to attach event handlers to Mecadra."},
                         Case{"GetHWndx64", "Failed to set Mecadra main window as invisible."}}) {
        SCOPED_TRACE(c.member);
        m_fake->failingMembers = {{QString::fromLatin1(c.member), RPC_E_DISCONNECTED}};
        EXPECT_EQ(m_manager->Start(), RPC_E_DISCONNECTED);
        EXPECT_EQ(m_manager->lastError(), c.message);
    }
}

TEST_F(McManagerTest, AMecadraThatCannotBeEndedIsReportedWithTheCodeOfWhatFailed)
{
    m_fake->refusesExit = true;
    m_fake->survivesTerminate = true;
    struct Case { const char *name; HRESULT attach; HRESULT exitFailure; HRESULT previous; HRESULT result; bool exitCalled; };
    for (const Case c : {Case{"exit calls answered", S_OK, S_OK, S_OK, E_FAIL, true},
                         Case{"exit call failed", S_OK, RPC_E_DISCONNECTED, S_OK, RPC_E_DISCONNECTED, true},
                         Case{"after an earlier failure", S_OK, S_OK, E_UNEXPECTED, E_UNEXPECTED, false},
                         Case{"without an application", E_ACCESSDENIED, S_OK, S_OK, E_POINTER, false}}) {
        SCOPED_TRACE(c.name);
        install();
        m_manager->Init(nullptr, 1, nullptr, 2013);
        m_fake->attachFailure = c.attach;
        m_fake->failingMembers.clear();
        m_manager->Start();
        if (failed(c.exitFailure))
            m_fake->failingMembers = {{QStringLiteral("ExitApp"), c.exitFailure}};
        const std::size_t before = m_fake->calls.size();
        const qint64 started = m_clock.totalSlept();
        EXPECT_EQ(m_manager->Close(true, c.previous), c.result);
        EXPECT_EQ(m_manager->lastError(), "Failed to close Mecadra application.");
        EXPECT_EQ(m_clock.totalSlept() - started, (11 + 46) * 1000);
        const QStringList closing = m_fake->calledMembers().mid(static_cast<qsizetype>(before));
        EXPECT_EQ(closing.contains(QStringLiteral("ExitApp")), c.exitCalled);
        if (c.exitCalled) {
            // The main frame comes back before the documents are closed.
            EXPECT_EQ(preferences(*m_fake, QStringLiteral("SetUserPreferenceToggle"), before),
                      (std::vector<std::pair<int, int>>{{30, 1}}));
            EXPECT_LT(closing.indexOf(QStringLiteral("CloseAllDocuments")), closing.indexOf(QStringLiteral("ExitApp")));
        }
    }
}

// --- restart policy ---------------------------------------------------------

// Growth above twice the baseline and the limit is covered with the real
// stand-in; twice a small baseline alone is no reason to restart.
TEST_F(McManagerTest, TwiceASmallBaselineUnderTheLimitIsNoRestart)
{
    ASSERT_TRUE(installAndStart()) << m_manager->lastError().toStdString();
    m_fake->workingSets[m_manager->processId()] = quint64(50) << 20;
    m_manager->AfterFile(); // measures the baseline
    EXPECT_EQ(m_manager->baselineWorkingSet(), quint64(50) << 20);
    m_fake->workingSets[m_manager->processId()] = quint64(250) << 20;
    m_manager->AfterFile();
    EXPECT_EQ(startedProcesses(), 1);
}

TEST_F(McManagerTest, AfterFileStartsWhenAnEarlierStartFailed)
{
    install();
    m_fake->registers = false;
    m_manager->setTiming({1, 2, 1, 1, 1, 1800});
    m_manager->Init(nullptr, 1, nullptr, 2013);
    EXPECT_EQ(m_manager->Start(), E_FAIL);
    m_fake->registers = true;
    m_manager->AfterFile();
    EXPECT_TRUE(m_manager->isConnected());
}

// --- macro runner -----------------------------------------------------------

TEST_F(McManagerTest, AttemptsShrinkWithRestartsAndEachFailedAttemptRestarts)
{
    m_fake->runAnswer = [](int) { return FakeMecadra::RunAnswer{E_UNEXPECTED, false, 0, {}}; };
    ASSERT_TRUE(installAndStart()) << m_manager->lastError().toStdString();

    struct Case { int restartCount; int calls; int restarts; };
    int calls = 0;
    int starts = startedProcesses();
    for (const Case c : {Case{0, 3, 2}, Case{2, 3, 2}, Case{3, 2, 1}, Case{7, 1, 0}, Case{9, 1, 0}}) {
        m_manager->setRestartCount(c.restartCount);
        EXPECT_EQ(runMacro(), E_UNEXPECTED) << "restartCount " << c.restartCount;
        EXPECT_EQ(m_fake->runCalls - calls, c.calls) << "restartCount " << c.restartCount;
        EXPECT_EQ(startedProcesses() - starts, c.restarts) << "restartCount " << c.restartCount;
        EXPECT_EQ(m_manager->restartCount(), 0);
        calls = m_fake->runCalls;
        starts = startedProcesses();
    }
    EXPECT_EQ(m_manager->lastError(), "Failed to run Mecadra macro.");
}

TEST_F(McManagerTest, ASecondAttemptAfterARestartRunsTheSameMacro)
{
    m_fake->readMacro = [](const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? decodeWindows1252(file.readAll()) : QString();
    };
    m_fake->runAnswer = [](int call) {
        return call == 1 ? FakeMecadra::RunAnswer{RPC_S_SERVER_UNAVAILABLE, false, 0, {}} : FakeMecadra::RunAnswer{};
    };
    ASSERT_TRUE(installAndStart()) << m_manager->lastError().toStdString();
    const QString text = QStringLiteral("Sub main()\r\n  ' caf\u00e9\r\nEnd Sub\r\n");
    EXPECT_EQ(runMacro(text), S_OK);
    ASSERT_EQ(m_fake->macroTexts.size(), 2u);
    EXPECT_EQ(m_fake->macroTexts[0], text);
    EXPECT_EQ(m_fake->macroTexts[1], text);
    EXPECT_EQ(startedProcesses(), 2);
    const QString macroFile = m_fake->macroPaths[0];
    EXPECT_TRUE(QFileInfo(macroFile).fileName().startsWith("TFR"));
    EXPECT_TRUE(macroFile.endsWith(".mcb"));
    EXPECT_FALSE(QFile::exists(macroFile));
}

TEST_F(McManagerTest, FailedRunsGiveTheMessageWithTheReasonOfKnownCodes)
{
    ASSERT_TRUE(installAndStart()) << m_manager->lastError().toStdString();
    struct Case { std::int32_t errorCode; const char *message; };
    for (const Case c : {Case{0, "Failed to run Mecadra macro."}, Case{3, "Failed to run Mecadra macro."},
                         Case{8, "Failed to run Mecadra macro. Reason: Sub or Function expected."},
                         Case{28, "Failed to run Mecadra macro. Reason: File open failed."}}) {
        m_fake->runAnswer = [c](int) { return FakeMecadra::RunAnswer{S_OK, false, c.errorCode, {}}; };
        EXPECT_EQ(runMacro(), E_FAIL) << c.errorCode;
        EXPECT_EQ(m_manager->lastError(), c.message);
    }
    // A call that succeeded, whatever its flag, is not tried again.
    EXPECT_EQ(m_fake->runCalls, 4);
    EXPECT_EQ(startedProcesses(), 1);
}

TEST_F(McManagerTest, EachRevisionGetsTheRunCallItHas)
{
    // The newer call is refused below revision 17, as Mecadra refuses it.
    struct Case { const char *revision; std::int16_t major; const char *member; std::size_t args; };
    for (const Case c : {Case{"16.5", 16, "RunMacro", 3}, Case{"17.0.1", 17, "RunMacro2", 5}}) {
        SCOPED_TRACE(c.revision);
        m_fake->revision = QString::fromLatin1(c.revision);
        m_fake->calls.clear();
        ASSERT_TRUE(installAndStart()) << m_manager->lastError().toStdString();
        EXPECT_EQ(m_manager->revisionMajor(), c.major);
        EXPECT_EQ(runMacro(), S_OK) << m_manager->lastError().toStdString();
        const QStringList runs = m_fake->calledMembers().filter(QRegularExpression(QStringLiteral("^RunMacro")));
        EXPECT_EQ(runs, QStringList{QString::fromLatin1(c.member)});
        ASSERT_EQ(m_fake->argsOf(QString::fromLatin1(c.member)).size(), 1u);
        EXPECT_EQ(m_fake->argsOf(QString::fromLatin1(c.member)).front().size(), c.args);
    }
    // The older call has no error code to read: a true flag is success.
    m_fake->revision = QStringLiteral("16.0");
    m_fake->runAnswer = [](int) { return FakeMecadra::RunAnswer{S_OK, true, 8, {}}; };
    ASSERT_TRUE(installAndStart());
    EXPECT_EQ(runMacro(), S_OK);
}

TEST_F(McManagerTest, AMacroFileThatCannotBeWrittenFailsWithTheRunText)
{
    ASSERT_TRUE(installAndStart()) << m_manager->lastError().toStdString();
    MemoryFileSystem noTemporaryFolder;
    ScopedFileSystem scoped(noTemporaryFolder);
    EXPECT_EQ(runMacro(), E_ACCESSDENIED); // the helper also checks that the raised text is lastError
    EXPECT_EQ(m_manager->lastError(), "Failed to run Mecadra macro.");
    EXPECT_EQ(m_fake->runCalls, 0);
}

TEST_F(McManagerTest, TheTimeLimitGoesToTheRunCallAndIsTheReasonWhenItEndsAMacro)
{
    ASSERT_TRUE(installAndStart()) << m_manager->lastError().toStdString();
    const qint64 first = m_manager->processId();
    m_fake->runAnswer = [](int) { return FakeMecadra::RunAnswer{RPC_E_TIMEOUT, false, 0, {}}; };
    m_manager->setRestartCount(9); // one attempt
    EXPECT_EQ(runMacro(), TimedOut);
    EXPECT_EQ(m_fake->runTimeouts.back(), 1800 * 1000);
    EXPECT_EQ(m_manager->lastError(), "Failed to run Mecadra macro. Reason: The macro did not finish within 1800 seconds.");
    EXPECT_EQ(m_fake->processes[first].exitCode, McManager::ExitCodeKilled);

    // Ended by the limit, then no new Mecadra: the limit is still the reason.
    setUserValue(QStringLiteral("MacroTimeout"), RegistryValue::fromDword(60));
    ASSERT_EQ(m_manager->Start(), S_OK);
    m_fake->registers = false;
    EXPECT_EQ(runMacro(), E_FAIL);
    EXPECT_EQ(m_fake->runTimeouts.back(), 60 * 1000);
    EXPECT_EQ(m_manager->lastError(), "Failed to run Mecadra macro. Reason: The macro did not finish within 60 seconds.");

    // 0: no limit at all.
    m_fake->registers = true;
    setUserValue(QStringLiteral("MacroTimeout"), RegistryValue::fromDword(0));
    ASSERT_EQ(m_manager->Start(), S_OK);
    m_fake->runAnswer = [](int) { return FakeMecadra::RunAnswer{}; };
    EXPECT_EQ(runMacro(), S_OK);
    EXPECT_EQ(m_fake->runTimeouts.back(), AutomationClient::kNoTimeout);
}

TEST_F(McManagerTest, ASchedulerWindowEarnsOneExtraAttemptAndForcesRegression)
{
    ASSERT_TRUE(installAndStart()) << m_manager->lastError().toStdString();
    EXPECT_FALSE(m_manager->regressionStart());

    // Once, with a single attempt left: restarted with /R and run again.
    m_manager->setRestartCount(7);
    m_fake->runAnswer = [](int call) {
        return call == 1 ? FakeMecadra::RunAnswer{S_OK, true, 0, QStringLiteral("Error - Mecadra Task Scheduler")}
                         : FakeMecadra::RunAnswer{};
    };
    EXPECT_EQ(runMacro(), S_OK);
    EXPECT_EQ(m_fake->runCalls, 2);
    EXPECT_TRUE(m_manager->forceRegression());
    EXPECT_TRUE(m_fake->commandLines.back().endsWith(" /R"));

    // At every attempt: the loop ends after the granted attempt.
    m_fake->runAnswer = [](int) {
        return FakeMecadra::RunAnswer{S_OK, true, 0, QStringLiteral("Error - Mecadra Task Scheduler")};
    };
    const int calls = m_fake->runCalls;
    EXPECT_EQ(runMacro(), E_FAIL);
    EXPECT_EQ(m_fake->runCalls - calls, 2);
    EXPECT_EQ(m_fake->answeredWindows, 3);
}

TEST_F(McManagerTest, ScriptCopyPathKeepsACopyAtTheExpandedPath)
{
    QTemporaryDir dir;
    qputenv("MCTASK_TEST_COPY_DIR", QFile::encodeName(dir.path()));
    setUserValue(QStringLiteral("ScriptCopyPath"), RegistryValue::fromString(QStringLiteral("%MCTASK_TEST_COPY_DIR%/last.mcb")));
    ASSERT_TRUE(installAndStart()) << m_manager->lastError().toStdString();
    EXPECT_EQ(runMacro(QStringLiteral("Sub main()\r\n'\u20ac\r\nEnd Sub\r\n")), S_OK);
    QFile copy(dir.filePath(QStringLiteral("last.mcb")));
    ASSERT_TRUE(copy.open(QIODevice::ReadOnly));
    EXPECT_EQ(copy.readAll(), QByteArray("Sub main()\r\n'\x80\r\nEnd Sub\r\n"));
    qunsetenv("MCTASK_TEST_COPY_DIR");
}

// --- start-up add-ins -------------------------------------------------------

TEST_F(McManagerTest, StartupAddInsAreSwitchedOffAndRestoredExactly)
{
    auto setDefault = [&](const QString &key, const RegistryValue &value) {
        m_store.createKey(RegistryRoot::CurrentUser, RegistryView::Native, key);
        m_store.writeValue(RegistryRoot::CurrentUser, RegistryView::Native, key, QString(), value);
    };
    auto readDefault = [&](const QString &key) {
        return m_store.readValue(RegistryRoot::CurrentUser, RegistryView::Native, key, QString());
    };
    const QString one = QStringLiteral("Software\\Mecadra\\AddInsStartup\\{A}");
    const QString two = QStringLiteral("Software\\Mecadra\\AddInsStartup\\{B}");
    const QString text = QStringLiteral("Software\\Mecadra\\Startup\\Applications\\Tool");
    const QString empty = QStringLiteral("Software\\Mecadra\\Startup\\Applications\\Empty");
    setDefault(one, RegistryValue::fromDword(1));
    setDefault(two, RegistryValue::fromDword(2));
    setDefault(text, RegistryValue::fromString(QStringLiteral("C:\\Tools\\tool.dll")));
    setDefault(empty, RegistryValue::fromString(QString()));

    m_manager->SuspendStartupAddIns(false);
    EXPECT_EQ(readDefault(one), RegistryValue::fromDword(0));
    EXPECT_EQ(readDefault(two), RegistryValue::fromDword(2));
    EXPECT_EQ(readDefault(text), RegistryValue::fromString(QString()));
    EXPECT_EQ(m_manager->suspendedAddIns().size(), 2);

    setDefault(two, RegistryValue::fromDword(5)); // changed meanwhile: not ours to restore
    m_manager->SuspendStartupAddIns(true);
    EXPECT_EQ(readDefault(one), RegistryValue::fromDword(1));
    EXPECT_EQ(readDefault(two), RegistryValue::fromDword(5));
    EXPECT_EQ(readDefault(text), RegistryValue::fromString(QStringLiteral("C:\\Tools\\tool.dll")));
    EXPECT_EQ(readDefault(empty), RegistryValue::fromString(QString()));
}

TEST_F(McManagerTest, OverlappingRunsRestoreTheStartupAddInsOnlyWhenTheLastEnds)
{
    const QString addIn = QStringLiteral("Software\\Mecadra\\AddInsStartup\\{A}");
    m_store.createKey(RegistryRoot::CurrentUser, RegistryView::Native, addIn);
    m_store.writeValue(RegistryRoot::CurrentUser, RegistryView::Native, addIn, QString(), RegistryValue::fromDword(1));
    auto state = [&] { return m_store.readValue(RegistryRoot::CurrentUser, RegistryView::Native, addIn, QString()); };

    // Two workers: the second starts while the add-in is already off.
    McManager second(m_fake, m_store);
    second.setLockFolder(m_lockFolder.path());
    m_manager->SuspendStartupAddIns(false);
    second.SuspendStartupAddIns(false);
    EXPECT_EQ(state(), RegistryValue::fromDword(0));
    m_manager->SuspendStartupAddIns(true);
    EXPECT_EQ(state(), RegistryValue::fromDword(0)) << "restored while another run still needs it off";
    second.SuspendStartupAddIns(true);
    EXPECT_EQ(state(), RegistryValue::fromDword(1));

    // A run whose process died keeps no one waiting, and its kept value is
    // the original that the next run restores.
    m_manager->SuspendStartupAddIns(false);
    const QString savedKey =
        QString::fromUtf16(kAddInUserKey) + QStringLiteral("\\SuspendedStartupAddIns\\Holders");
    const QStringList holders = m_store.valueNames(RegistryRoot::CurrentUser, RegistryView::Native, savedKey);
    ASSERT_EQ(holders.size(), 1);
    m_store.deleteValue(RegistryRoot::CurrentUser, RegistryView::Native, savedKey, holders.first());
    m_store.writeValue(RegistryRoot::CurrentUser, RegistryView::Native, savedKey, QStringLiteral("999999999:1"),
                       RegistryValue::fromDword(1)); // no such process
    McManager next(m_fake, m_store);
    next.setLockFolder(m_lockFolder.path());
    next.SuspendStartupAddIns(false);
    EXPECT_EQ(state(), RegistryValue::fromDword(0));
    next.SuspendStartupAddIns(true);
    EXPECT_EQ(state(), RegistryValue::fromDword(1));
}

} // namespace
