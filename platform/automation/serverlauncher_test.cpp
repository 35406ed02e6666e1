#include "platform/automation/serverlauncher.h"

#include "platform/automation/automationclient.h"
#include "platform/automation/automationserver.h"
#include "platform/clock.h"
#include "platform/drivemap.h"
#include "platform/testing/coreapp.h"
#include "platform/testing/processgone.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>
#include <unistd.h>

namespace {

QString makeProgram(const QString &path)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write("#!/bin/sh\nexit 0\n");
    file.close();
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

TEST(CommandLineTest, FindsTheProgramOfQuotedUnquotedAndWindowsCommandLines)
{
    QTemporaryDir dir;
    const QString program = makeProgram(dir.filePath(QStringLiteral("Mecadra 2013/CADRIX.EXE")));

    const CommandLine quoted = CommandLine::parse(QStringLiteral("\"%1\" /R \"a b\"").arg(program));
    EXPECT_EQ(quoted.program, program);
    EXPECT_EQ(quoted.arguments, (QStringList{"/R", "a b"}));

    // Unquoted with a blank in the folder, and "\" before the file name.
    const QString folder = dir.filePath(QStringLiteral("Mecadra 2013"));
    const CommandLine unquoted = CommandLine::parse(folder + QStringLiteral("\\CADRIX.EXE /B"));
    EXPECT_EQ(unquoted.program, program);
    EXPECT_EQ(unquoted.arguments, QStringList{"/B"});

    DriveMap drives;
    ScopedDriveMap scoped(drives);
    ASSERT_TRUE(drives.mount(QLatin1Char('C'), dir.path()));
    const CommandLine windows = CommandLine::parse(QStringLiteral("C:\\Mecadra 2013\\CADRIX.EXE /R"));
    EXPECT_EQ(windows.program, program);
    EXPECT_EQ(windows.arguments, QStringList{"/R"});

    // Nothing names a program: the first word is tried, and fails to start.
    const CommandLine missing = CommandLine::parse(dir.filePath(QStringLiteral("No Such/x.exe /R")));
    EXPECT_EQ(missing.program, dir.filePath(QStringLiteral("No")));
    ServerLauncher launcher(ObjectTable(dir.filePath(QStringLiteral("rot"))));
    EXPECT_FALSE(launcher.start(dir.filePath(QStringLiteral("No Such/x.exe /R"))));
}

TEST(SystemProcessesTest, ReportsExitCodesTerminatesAndPassesTheShowCommand)
{
    SystemProcesses processes;
    Processes::StartRequest request;
    request.program = QStringLiteral("/bin/sh");
    request.arguments = {QStringLiteral("-c"), QStringLiteral("exit $MCTASK_SHOW_WINDOW")};
    request.show = ShowCommand::Minimized;
    const std::optional<qint64> shown = processes.start(request);
    ASSERT_TRUE(shown);
    ServerLauncher launcher(ObjectTable(QDir::tempPath()), processes);
    ASSERT_TRUE(launcher.waitForExit(*shown, 500, 10));
    EXPECT_EQ(processes.exitCode(*shown), 2);
    EXPECT_FALSE(processes.terminate(*shown, 255)); // already gone

    request.arguments = {QStringLiteral("-c"), QStringLiteral("sleep 30")};
    const std::optional<qint64> sleeper = processes.start(request);
    ASSERT_TRUE(sleeper);
    EXPECT_TRUE(processes.isRunning(*sleeper));
    EXPECT_FALSE(processes.exitCode(*sleeper));
    EXPECT_TRUE(processes.workingSet(*sleeper).value_or(0) > 0);
    EXPECT_TRUE(processes.terminate(*sleeper, 255));
    EXPECT_FALSE(processes.isRunning(*sleeper));
    EXPECT_EQ(processes.exitCode(*sleeper), 255);
    EXPECT_FALSE(processes.workingSet(*sleeper));

    request.program = QStringLiteral("/no/such/program");
    EXPECT_FALSE(processes.start(request));
}

TEST(SystemProcessesTest, AChildLeadsItsOwnGroupWhichTerminateEndsWhole)
{
    QTemporaryDir dir;
    SystemProcesses processes;
    Processes::StartRequest request;
    request.program = QStringLiteral("/bin/sh");
    const QString pidFile = dir.filePath(QStringLiteral("grandchild"));
    request.arguments = {QStringLiteral("-c"), QStringLiteral("sleep 60 & echo $! > '%1'; wait").arg(pidFile)};
    const std::optional<qint64> shell = processes.start(request);
    ASSERT_TRUE(shell);
    // Signals of the starter's terminal (Ctrl-C) go to its group, not this one.
    EXPECT_EQ(::getpgid(static_cast<pid_t>(*shell)), static_cast<pid_t>(*shell));
    qint64 grandchild = 0;
    for (int i = 0; i < 500 && grandchild == 0; ++i) {
        QFile file(pidFile);
        if (file.open(QIODevice::ReadOnly))
            grandchild = file.readAll().trimmed().toLongLong();
        if (grandchild == 0)
            QThread::msleep(10);
    }
    ASSERT_NE(grandchild, 0);
    EXPECT_TRUE(processes.terminate(*shell, 255));
    EXPECT_TRUE(waitUntilGone(grandchild, 5000)) << "what the child started outlived it";
}

TEST(SystemProcessesTest, AKilledStarterTakesItsChildAlong)
{
    // A starter that is killed outright has no chance to end its child.
    coreApp();
    QProcess starter;
    starter.start(QStringLiteral(PROCESS_STARTER), {QStringLiteral("/bin/sleep"), QStringLiteral("60")});
    ASSERT_TRUE(starter.waitForReadyRead(10000));
    const qint64 child = starter.readLine().trimmed().toLongLong();
    ASSERT_GT(child, 0);
    EXPECT_FALSE(processGone(child));
    ::kill(static_cast<pid_t>(starter.processId()), SIGKILL);
    starter.waitForFinished();
    EXPECT_TRUE(waitUntilGone(child, 5000)) << "the child of a killed starter is still running";
}

TEST(ServerLauncherTest, PollsOnTheClockAndStopsWhenTheProcessEnds)
{
    coreApp();
    QTemporaryDir dir;
    FakeClock clock;
    ScopedClock scoped(clock);
    ServerLauncher launcher(ObjectTable(dir.filePath(QStringLiteral("rot"))));
    // Every poll when nothing registers is counted in the stand-in's never-register case.
    // A server that registers while the caller waits is found and connected.
    AutomationServer server;
    int sleeps = 0;
    clock.setOnSleep([&](qint64) {
        if (++sleeps == 3)
            ObjectTable(dir.filePath(QStringLiteral("rot"))).registerServer(server, QStringLiteral("Mecadra_PID_1"));
    });
    AutomationClient client;
    EXPECT_EQ(launcher.connect(client, QStringLiteral("Mecadra_PID_1"), 0, 120, 1000), S_OK);
    EXPECT_EQ(clock.sleepCount(), 3);
    EXPECT_TRUE(client.isConnected());
    clock.setOnSleep({});

    // A process that ended cannot register any more.
    Processes::StartRequest request;
    request.program = QStringLiteral("/bin/true");
    const std::optional<qint64> pid = launcher.start(request);
    ASSERT_TRUE(pid);
    const int before = clock.sleepCount();
    for (int i = 0; i < 500 && launcher.processes().isRunning(*pid); ++i)
        QThread::msleep(2);
    EXPECT_TRUE(launcher.waitForObject(Monikers::application(*pid), *pid, 120, 1000).isEmpty());
    EXPECT_EQ(clock.sleepCount() - before, 1);
}

TEST(ObjectTableTest, SaysWhyARegistrationFails)
{
    coreApp();
    QTemporaryDir dir;
    // A path too long for a socket is reported by the stand-in itself (mcsim_test).
    AutomationServer server;
    ObjectTable table(dir.filePath(QStringLiteral("rot")));
    ASSERT_TRUE(table.registerServer(server, QStringLiteral("Mecadra_PID_1")));
    AutomationServer rival;
    EXPECT_FALSE(table.registerServer(rival, QStringLiteral("Mecadra_PID_1")));
    EXPECT_EQ(table.lastError(), "Mecadra_PID_1 is registered by another live server");
}

} // namespace
