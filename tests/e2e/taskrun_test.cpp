// Task runs from launch to the vault: the mctask program as the task host,
// the add-in module it loads, the stand-in Mecadra it starts, and the
// embedded vault the results land in.

#include "platform/automation/objecttable.h"
#include "platform/testing/coreapp.h"
#include "platform/testing/processgone.h"
#include "tests/e2e/programtasktest.h"

#include <csignal>

namespace {

class TaskRunTest : public ProgramTaskTest
{
protected:
    // Starts "task run" and lets it go on while the test acts from outside.
    std::unique_ptr<QProcess> startRun(int id)
    {
        return startProgram({"task", "run", QString::number(id), "--json"});
    }
};

INSTANTIATE_TEST_SUITE_P(Backends, TaskRunTest, VaultBackends);

// What passes between the add-in and Mecadra (restarts, the object table, a
// suspended run's waiting) is the same whichever store holds the vault, so
// these run on SQLite only; the host tests suspend, resume and cancel runs on
// both.
using MecadraRunTest = TaskRunTest;
INSTANTIATE_TEST_SUITE_P(Backends, MecadraRunTest, ::testing::Values(VaultBackend::Sqlite), vaultBackendName);

TEST_P(TaskRunTest, ConversionOfAFolderPutsEveryOutputIntoTheVault)
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

// On a server the run is on another machine whose local view holds nothing
// yet: the assembly's components must be there before Mecadra opens it.
TEST_P(TaskRunTest, AnAssemblyConvertedOnAnotherMachineFindsItsComponents)
{
    addSamples({"gearbox.mcdasm", "shaft.mcdprt", "cover.mcdprt", "layout.mcddrw"}, "Gearbox");
    ok({"vault", "ref", "V:\\Gearbox\\gearbox.mcdasm", "V:\\Gearbox\\shaft.mcdprt"});
    ok({"vault", "ref", "V:\\Gearbox\\gearbox.mcdasm", "V:\\Gearbox\\cover.mcdprt"});
    ok({"task", "create", "To STEP", "--kind", "convert"});
    ok({"task", "set", "To STEP", "FileFormat=STEP (*.step)", "OutputPath=<Path>\\STEP\\<Filename>", "OutputPath2=",
        "ErrorLogPath=Logs", "RefToSource:bool=true", "PromptOutput:bool=false", "SourceRefs:int=2",
        "OutputConfs:int=1", "FileConfs:int=4", "OutputSheets:int=1", "FileSheets:int=4", "StepGeometry:int=0",
        "StepVersion:int=203"});
    const int id = launch({"To STEP", "V:\\Gearbox\\gearbox.mcdasm"});

    const Machine host = machine("cad01");
    const QString view = host.vault + "/Gearbox/";
    EXPECT_EQ(QFile::exists(view + "gearbox.mcdasm"), !onPostgres());
    const QJsonObject result = runInstance(host, id);
    EXPECT_EQ(result["status"], QJsonValue(7)) << result["message"].toString().toStdString();
    // The assembly's file, beside those of its virtual component.
    const QStringList outputs = filesUnder("Gearbox/STEP");
    ASSERT_TRUE(outputs.contains("V:\\Gearbox\\STEP\\gearbox.step")) << outputs.join(',').toStdString();
    QFile step(view + "STEP/gearbox.step");
    ASSERT_TRUE(step.open(QIODevice::ReadOnly));
    // Both components' solids: the shaft's and the cover's.
    EXPECT_EQ(step.readAll().count("MANIFOLD_SOLID_BREP"), 2);
    // The run's machine holds the assembly and its components, not the
    // drawing that nobody asked for.
    for (const char *name : {"gearbox.mcdasm", "shaft.mcdprt", "cover.mcdprt"})
        EXPECT_TRUE(QFile::exists(view + name)) << name;
    EXPECT_EQ(QFile::exists(view + "layout.mcddrw"), !onPostgres());
}

TEST_P(TaskRunTest, AnExistingOutputBecomesANewVersionOrIsReplaced)
{
    addSamples({"shaft.mcdprt"}, "Parts");
    createPdfTask("To PDF", {"ReplaceOutput:bool=false"});
    const QString output = "V:\\Parts\\PDF\\shaft_Default.pdf";
    // The add-in announces a new output three times; the run lists it once, with the count.
    const QJsonArray notices = runInstance(launch({"To PDF", "V:\\Parts\\shaft.mcdprt"}))["notifications"].toArray();
    ASSERT_EQ(notices.size(), 1);
    EXPECT_EQ(notices[0].toObject()["path"].toString().compare(output, Qt::CaseInsensitive), 0);
    EXPECT_EQ(notices[0].toObject()["count"], QJsonValue(3));
    ASSERT_EQ(show(output)["versions"].toArray().size(), 1);
    const int firstId = show(output)["id"].toInt();

    runInstance(launch({"To PDF", "V:\\Parts\\shaft.mcdprt"}));
    const QJsonObject versioned = show(output);
    EXPECT_EQ(versioned["id"].toInt(), firstId);
    ASSERT_EQ(versioned["versions"].toArray().size(), 2);
    EXPECT_EQ(versioned["versions"].toArray()[1].toObject()["comment"], QJsonValue("Mecadra Task Add-in"));

    ok({"task", "set", "To PDF", "ReplaceOutput:bool=true"});
    // Once for the file it replaces, three times as a new file: one line for the path.
    const ProgramRun replacing = run({"task", "run", QString::number(launch({"To PDF", "V:\\Parts\\shaft.mcdprt"}))});
    EXPECT_EQ(replacing.status, 0) << replacing.err.toStdString();
    EXPECT_EQ(replacing.err.count("vault client: "), 1) << replacing.err.toStdString();
    EXPECT_TRUE(replacing.err.contains("shaft_Default.pdf (4 times)", Qt::CaseInsensitive)) << replacing.err.toStdString();
    const QJsonObject replaced = show(output);
    EXPECT_EQ(replaced["versions"].toArray().size(), 1); // a new file, without the old one's history
}

TEST_P(TaskRunTest, ScriptTaskRunsOnEveryFileAndWritesNoOutputList)
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

TEST_P(MecadraRunTest, SuspendedRunWaitsForResumeOrCancel)
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

TEST_P(TaskRunTest, CancelBetweenFilesKeepsTheOutputsSoFar)
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

TEST_P(MecadraRunTest, ACrashedMecadraIsRestartedAndTheRunCompletes)
{
    addPartCopies(5);
    createPdfTask("To PDF");
    const int id = launch({"To PDF", "V:\\Parts"});
    const ScopedEnv crash("MCSIM_CRASH_AFTER", "3");
    const QJsonObject result = runInstance(id);
    EXPECT_EQ(result["status"], QJsonValue(7)) << result["message"].toString().toStdString();
    EXPECT_EQ(filesUnder("Parts/PDF").size(), 5);
}

TEST_P(TaskRunTest, AMacroThatNeverRunsEndsTheRunWithTheConnectionsMessage)
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

TEST_P(MecadraRunTest, AKilledHostLeavesNoMecadraAndItsTableEntriesAreDropped)
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
