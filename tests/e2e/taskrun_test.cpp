// Task runs from launch to the vault: the mctask program as the task host,
// the add-in module it loads, the stand-in Mecadra it starts, and the
// embedded vault the results land in.

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

#include <csignal>

#include "platform/automation/objecttable.h"
#include "platform/testing/coreapp.h"
#include "platform/testing/processgone.h"
#include "tests/e2e/conversiondefaults.h"
#include "tests/programrun.h"

namespace {

class TaskRunTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_home.isValid() && m_work.isValid());
        m_vault = m_work.filePath("vault");
        ASSERT_EQ(run({"vault", "init", m_vault, "--name", "E2E"}).status, 0);
        const ProgramRun registered = runProgram(QStringLiteral(MCSIM_PROGRAM), {"/regserver"}, setting());
        ASSERT_EQ(registered.status, 0) << registered.err.toStdString();
    }

    ProgramSetting setting() const { return ProgramSetting(m_home.path()).offscreen().withVault(m_vault); }
    ProgramRun run(const QStringList &args) { return runProgram(QStringLiteral(MCTASK_PROGRAM), args, setting()); }
    void ok(const QStringList &args)
    {
        const ProgramRun r = run(args);
        ASSERT_EQ(r.status, 0) << args.join(' ').toStdString() << "\n" << r.err.toStdString();
    }

    void addSamples(const QStringList &names, const QString &folder, const QStringList &extra = {})
    {
        QStringList args{"vault", "add"};
        for (const QString &name : names)
            args << QStringLiteral(MCTASK_SAMPLES) + '/' + name;
        ok(args + QStringList{"--to", folder} + extra);
    }

    // A PDF conversion task: one file per sheet and per configuration, all
    // fixed by the set-up.
    void createPdfTask(const QString &name, const QStringList &settings = {})
    {
        ok({"task", "create", name, "--kind", "convert"});
        ok(QStringList{"task", "set", name} + ConversionDefaults
           + QStringList{"OutputPath=<Path>\\PDF\\<Filename>_<Configuration>", "OutputConfs:int=2",
                         "FileConfs:int=4", "OutputSheets:int=2", "FileSheets:int=4", "PromptOutput:bool=false",
                         "SourceRefs:int=2"}
           + settings);
    }

    int launch(const QStringList &args)
    {
        const ProgramRun launched = run(QStringList{"task", "launch"} + args);
        EXPECT_EQ(launched.status, 0) << launched.err.toStdString();
        return launched.lastLine().toInt();
    }

    QJsonObject runInstance(int id, int expectedStatus = 0)
    {
        const ProgramRun ran = run({"task", "run", QString::number(id), "--json"});
        EXPECT_EQ(ran.status, expectedStatus) << ran.out.toStdString() << ran.err.toStdString();
        return ran.json().object();
    }

    QJsonObject show(const QString &file)
    {
        const ProgramRun shown = run({"vault", "show", file, "--json"});
        EXPECT_EQ(shown.status, 0) << file.toStdString() << shown.err.toStdString();
        return shown.json().object();
    }

    QStringList filesUnder(const QString &folder)
    {
        const ProgramRun listed = run({"vault", "ls", "V:\\" + QString(folder).replace('/', '\\'), "--json"});
        QStringList paths;
        for (const QJsonValue &row : listed.json().array())
            paths << row.toObject()["path"].toString();
        paths.sort();
        return paths;
    }

    // Starts "task run" and lets it go on while the test acts from outside.
    std::unique_ptr<QProcess> startRun(int id)
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("MCTASK_HOME", m_home.path());
        env.insert("MCTASK_VAULT", m_vault);
        env.insert("QT_QPA_PLATFORM", "offscreen");
        process->setProcessEnvironment(env);
        process->start(QStringLiteral(MCTASK_PROGRAM), {"task", "run", QString::number(id), "--json"});
        EXPECT_TRUE(process->waitForStarted());
        return process;
    }

    // n copies of one part, "part1.mcdprt" ..., in the vault folder Parts.
    void addPartCopies(int n)
    {
        QStringList names;
        for (int i = 1; i <= n; ++i) {
            const QString copy = m_work.filePath(QStringLiteral("part%1.mcdprt").arg(i));
            ASSERT_TRUE(QFile::copy(QStringLiteral(MCTASK_SAMPLES) + "/shaft.mcdprt", copy));
            names << copy;
        }
        ok(QStringList{"vault", "add"} + names + QStringList{"--to", "Parts"});
    }

    QJsonObject instanceRow(int id)
    {
        for (const QJsonValue &row : run({"task", "instances", "--json"}).json().array())
            if (row.toObject()["id"].toInt() == id)
                return row.toObject();
        return {};
    }
    int statusOf(int id) { return instanceRow(id)["status"].toInt(-1); }
    int progressOf(int id) { return instanceRow(id)["progress"].toInt(-1); }

    // Polls until the condition holds (at most 60 s).
    template <typename Condition>
    bool waitFor(Condition holds)
    {
        for (int i = 0; i < 600; ++i) {
            if (holds())
                return true;
            QThread::msleep(100);
        }
        return false;
    }
    bool waitForStatus(int id, int status)
    {
        return waitFor([&] { return statusOf(id) == status; });
    }

    QTemporaryDir m_home;
    QTemporaryDir m_work;
    QString m_vault;
};

// Sets an environment variable of the stand-in for one test.
class ScopedEnv
{
public:
    ScopedEnv(const char *name, const QByteArray &value) : m_name(name) { qputenv(name, value); }
    ~ScopedEnv() { qunsetenv(m_name); }

private:
    const char *m_name;
};

TEST_F(TaskRunTest, ConversionOfAFolderPutsEveryOutputIntoTheVault)
{
    addSamples({"layout.mcddrw", "bracket.mcdprt"}, "Parts", {"--revision", "B"});
    ok({"vault", "card", "V:\\Parts\\layout.mcddrw", "Revision=", "Description="});
    createPdfTask("To PDF", {"RefToSource:bool=true", "FileCardData=Revision;4;\nDescription;8;Made by the task\n"});
    const int id = launch({"To PDF", "V:\\Parts"});
    const QJsonObject result = runInstance(id);
    EXPECT_EQ(result["status"], QJsonValue(7)) << result["message"].toString().toStdString();

    const QStringList outputs = filesUnder("Parts/PDF");
    ASSERT_FALSE(outputs.isEmpty());
    for (const QString &output : outputs) {
        SCOPED_TRACE(output.toStdString());
        const QJsonObject file = show(output);
        const QJsonArray versions = file["versions"].toArray();
        ASSERT_EQ(versions.size(), 1);
        EXPECT_EQ(versions[0].toObject()["comment"], QJsonValue("Mecadra Task Add-in"));
        EXPECT_EQ(file["checkedOutBy"], QJsonValue(""));
        const QJsonArray refs = file["references"].toArray();
        ASSERT_EQ(refs.size(), 1);
        const QString source = refs[0].toObject()["path"].toString();
        EXPECT_TRUE(source.endsWith(".mcddrw") || source.endsWith(".mcdprt")) << source.toStdString();
        QStringList card;
        for (const QJsonValue &v : file["card"].toArray())
            card << v.toObject()["variable"].toString() + '=' + v.toObject()["value"].toString();
        EXPECT_TRUE(card.contains("Revision=B")) << card.join(',').toStdString();
        EXPECT_TRUE(card.contains("Description=Made by the task")) << card.join(',').toStdString();
    }

    // The details list what the run produced, one row per output.
    const QJsonObject details = run({"task", "details", QString::number(id), "--json"}).json().object();
    EXPECT_EQ(details["caption"], QJsonValue("Converted Files"));
    EXPECT_EQ(details["rows"].toArray().size(), outputs.size());
    // Three sheets of the drawing, three configurations of the part.
    EXPECT_EQ(outputs, (QStringList{"V:\\Parts\\PDF\\bracket_ABC.pdf", "V:\\Parts\\PDF\\bracket_Default.pdf",
                                    "V:\\Parts\\PDF\\bracket_Machined.pdf", "V:\\Parts\\PDF\\layout_Detail A.pdf",
                                    "V:\\Parts\\PDF\\layout_Sheet1.pdf", "V:\\Parts\\PDF\\layout_Sheet2.pdf"}));
}

TEST_F(TaskRunTest, AnExistingOutputBecomesANewVersionOrIsReplaced)
{
    addSamples({"shaft.mcdprt"}, "Parts");
    createPdfTask("To PDF", {"ReplaceOutput:bool=false"});
    const QString output = "V:\\Parts\\PDF\\shaft_Default.pdf";
    runInstance(launch({"To PDF", "V:\\Parts\\shaft.mcdprt"}));
    ASSERT_EQ(show(output)["versions"].toArray().size(), 1);
    const int firstId = show(output)["id"].toInt();

    runInstance(launch({"To PDF", "V:\\Parts\\shaft.mcdprt"}));
    const QJsonObject versioned = show(output);
    EXPECT_EQ(versioned["id"].toInt(), firstId);
    ASSERT_EQ(versioned["versions"].toArray().size(), 2);
    EXPECT_EQ(versioned["versions"].toArray()[1].toObject()["comment"], QJsonValue("Mecadra Task Add-in"));

    ok({"task", "set", "To PDF", "ReplaceOutput:bool=true"});
    runInstance(launch({"To PDF", "V:\\Parts\\shaft.mcdprt"}));
    const QJsonObject replaced = show(output);
    EXPECT_EQ(replaced["versions"].toArray().size(), 1); // a new file, without the old one's history
}

TEST_F(TaskRunTest, ScriptTaskRunsOnEveryFileAndWritesNoOutputList)
{
    addSamples({"shaft.mcdprt", "bracket.mcdprt"}, "Parts");
    ok({"task", "create", "Script", "--kind", "script"});
    ok({"task", "set", "Script",
        "__script=Sub main()\r\n  Open \"<Filepath>.txt\" For Output As #1\r\n  Print #1, \"seen\"\r\n"
        "  Close #1\r\nEnd Sub\r\n"});
    const int id = launch({"Script", "V:\\Parts"});
    const QJsonObject result = runInstance(id);
    EXPECT_EQ(result["status"], QJsonValue(7)) << result["message"].toString().toStdString();
    EXPECT_TRUE(QFile::exists(m_vault + "/Parts/shaft.mcdprt.txt"));
    EXPECT_TRUE(QFile::exists(m_vault + "/Parts/bracket.mcdprt.txt"));
    const ProgramRun list = run({"task", "get", "Script", "__output_list"});
    EXPECT_EQ(list.status, 1); // not written
    EXPECT_EQ(run({"task", "details", QString::number(id), "--json"}).json().object()["rows"], QJsonArray{});
}

TEST_F(TaskRunTest, SuspendedRunWaitsForResumeOrCancel)
{
    addSamples({"shaft.mcdprt"}, "Parts");
    createPdfTask("To PDF", {"ReplaceOutput:bool=false"});
    const int id = launch({"To PDF", "V:\\Parts\\shaft.mcdprt"});
    ok({"task", "suspend", QString::number(id)});
    auto running = startRun(id);
    ASSERT_TRUE(waitForStatus(id, 5)); // the add-in took the request
    EXPECT_TRUE(filesUnder("Parts/PDF").isEmpty());
    ok({"task", "resume", QString::number(id)});
    ASSERT_TRUE(running->waitForFinished(60000));
    EXPECT_EQ(running->exitCode(), 0) << running->readAllStandardError().toStdString();
    EXPECT_EQ(filesUnder("Parts/PDF").size(), 1);

    const int second = launch({"To PDF", "V:\\Parts\\shaft.mcdprt"});
    ok({"task", "suspend", QString::number(second)});
    running = startRun(second);
    ASSERT_TRUE(waitForStatus(second, 5));
    ok({"task", "cancel", QString::number(second)});
    ASSERT_TRUE(running->waitForFinished(60000));
    const QJsonObject report = QJsonDocument::fromJson(running->readAllStandardOutput()).object();
    EXPECT_EQ(report["cancelled"], QJsonValue(true));
    EXPECT_EQ(report["commandResult"], QJsonValue("0x00000001"));
    // The add-in wrote no status of its own; the host ended the instance.
    EXPECT_EQ(report["status"], QJsonValue(8));
}

TEST_F(TaskRunTest, CancelBetweenFilesKeepsTheOutputsSoFar)
{
    addPartCopies(5);
    createPdfTask("To PDF");
    const int id = launch({"To PDF", "V:\\Parts"});
    const ScopedEnv slow("MCSIM_MACRO_DELAY_MS", "1500");
    auto running = startRun(id);
    // Position 1 is reported as the second file starts.
    ASSERT_TRUE(waitFor([&] { return progressOf(id) >= 1; }));
    ok({"task", "cancel", QString::number(id)});
    ASSERT_TRUE(running->waitForFinished(60000));
    const QJsonObject report = QJsonDocument::fromJson(running->readAllStandardOutput()).object();
    EXPECT_EQ(report["cancelled"], QJsonValue(true));
    EXPECT_EQ(report["commandResult"], QJsonValue("0x00000001"));
    EXPECT_EQ(report["status"], QJsonValue(8)); // the add-in wrote none
    // The files done before the cancel are in the vault, the rest never ran.
    const QStringList outputs = filesUnder("Parts/PDF");
    EXPECT_GE(outputs.size(), 2);
    EXPECT_LT(outputs.size(), 5);
    for (const QString &output : outputs)
        EXPECT_EQ(show(output)["versions"].toArray().size(), 1) << output.toStdString();
}

TEST_F(TaskRunTest, ACrashedMecadraIsRestartedAndTheRunCompletes)
{
    addPartCopies(5);
    createPdfTask("To PDF");
    const int id = launch({"To PDF", "V:\\Parts"});
    const ScopedEnv crash("MCSIM_CRASH_AFTER", "3");
    const QJsonObject result = runInstance(id);
    EXPECT_EQ(result["status"], QJsonValue(7)) << result["message"].toString().toStdString();
    EXPECT_EQ(filesUnder("Parts/PDF").size(), 5);
}

TEST_F(TaskRunTest, AMacroThatNeverRunsEndsTheRunWithTheConnectionsMessage)
{
    addSamples({"shaft.mcdprt", "bracket.mcdprt"}, "Parts");
    createPdfTask("To PDF");
    const int id = launch({"To PDF", "V:\\Parts"});
    const ScopedEnv fail("MCSIM_RUN_ERROR", "2");
    const QJsonObject result = runInstance(id, 1);
    EXPECT_EQ(result["status"], QJsonValue(9));
    EXPECT_FALSE(result["message"].toString().isEmpty());
    EXPECT_FALSE(result["message"].toString().contains(" 0")) << result["message"].toString().toStdString();
    EXPECT_TRUE(filesUnder("Parts/PDF").isEmpty());
    // The log that says why is checked into the vault.
    const QStringList logs = filesUnder("Logs");
    ASSERT_EQ(logs.size(), 1);
    const QJsonArray versions = show(logs.front())["versions"].toArray();
    ASSERT_EQ(versions.size(), 1);
    QFile log(m_vault + "/Logs/" + logs.front().section('\\', -1));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_TRUE(log.readAll().startsWith("An error occured: V:\\Parts\\"));
    // Mecadra was closed: no stand-in is left in the object table.
    EXPECT_TRUE(QDir(m_home.path() + "/rot").entryList(QDir::NoDotAndDotDot | QDir::AllEntries).isEmpty());
}

TEST_F(TaskRunTest, AKilledHostLeavesNoMecadraAndItsTableEntriesAreDropped)
{
    addSamples({"shaft.mcdprt"}, "Parts");
    createPdfTask("To PDF");
    const int id = launch({"To PDF", "V:\\Parts\\shaft.mcdprt"});
    const ScopedEnv hang("MCSIM_HANG_IN_MACRO", "1");
    auto running = startRun(id);
    const QString table = m_home.path() + "/rot";
    QString moniker;
    ASSERT_TRUE(waitFor([&] {
        const QStringList names = QDir(table).entryList({"Mecadra_PID_*"}, QDir::System);
        moniker = names.value(0);
        return !moniker.isEmpty();
    }));
    const qint64 mecadra = moniker.section('_', -1).toLongLong();
    ASSERT_GT(mecadra, 0);
    ASSERT_TRUE(waitFor([&] { return progressOf(id) >= 0 && statusOf(id) == 3; }));

    ::kill(static_cast<pid_t>(running->processId()), SIGKILL);
    ASSERT_TRUE(running->waitForFinished(10000));
    EXPECT_TRUE(waitUntilGone(mecadra, 10000)) << "Mecadra outlived the host that started it";

    // Its sockets are still in the folder; a look-up ignores and removes them.
    coreApp();
    ObjectTable objects(table);
    EXPECT_TRUE(objects.lookup(moniker).isEmpty());
    EXPECT_TRUE(objects.list().isEmpty());
    EXPECT_TRUE(QDir(table).entryList(QDir::NoDotAndDotDot | QDir::System | QDir::Files).isEmpty());
}

} // namespace
