#include "host/idoxtask.h"
#include "run/taskrunrecord.h"
#include "vault/taskstore.h"
#include "vault/vaultstore.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "tests/programrun.h"

namespace {

// A vault with two files, made by the program under a home of its own; the
// add-in module of this build is found and registered by the first task
// command that needs it.
class TaskCommandsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_home.isValid() && m_work.isValid());
        m_vault = m_work.filePath("vault");
        ASSERT_EQ(run({"vault", "init", m_vault, "--name", "Demo"}).status, 0);
        addFile("gear.mcdprt", "Parts");
        addFile("plate.mcddrw", "Parts/Sheets");
    }

    void addFile(const QString &name, const QString &folder)
    {
        const QString source = m_work.filePath(name);
        QFile file(source);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("part\n");
        file.close();
        const ProgramRun added = run({"vault", "add", "--vault", m_vault, source, "--to", folder});
        ASSERT_EQ(added.status, 0) << added.err.toStdString();
    }

    ProgramRun run(const QStringList &args)
    {
        return runProgram(MCTASK_PROGRAM, args,
                          ProgramSetting(m_home.path()).in(m_work.path()).timeout(60000));
    }

    // Runs a task command on this test's vault.
    ProgramRun task(const QString &command, const QStringList &args)
    {
        return run(QStringList{"task", command, "--vault", m_vault} + args);
    }

    void createTask(const QString &name, const QString &kind)
    {
        const ProgramRun created = task("create", {name, "--kind", kind});
        ASSERT_EQ(created.status, 0) << created.err.toStdString();
    }

    int launch(const QString &name, const QStringList &args)
    {
        const ProgramRun launched = task("launch", QStringList{name} + args);
        EXPECT_EQ(launched.status, 0) << launched.err.toStdString();
        bool ok = false;
        const int id = launched.lastLine().toInt(&ok);
        EXPECT_TRUE(ok) << launched.out.toStdString();
        return id;
    }

    QJsonObject variables(const QString &name)
    {
        const ProgramRun got = task("get", {name, "--json"});
        EXPECT_EQ(got.status, 0) << got.err.toStdString();
        return got.json().object();
    }

    QJsonArray instances()
    {
        const ProgramRun listed = task("instances", {"--json"});
        EXPECT_EQ(listed.status, 0) << listed.err.toStdString();
        return listed.json().array();
    }

    std::int32_t statusOf(int instanceId)
    {
        TaskStore tasks(VaultStore::open(m_vault));
        return tasks.instanceById(instanceId)->status;
    }

    QString writeMacro(const QString &name, const QByteArray &text)
    {
        QFile file(m_work.filePath(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return file.fileName();
    }

    QTemporaryDir m_home;
    QTemporaryDir m_work;
    QString m_vault;
};

TEST_F(TaskCommandsTest, CreateRegistersTheAddInAndSetsUpEachKindFromItsTemplate)
{
    const ProgramRun first = task("create", {"Convert", "--kind", "convert"});
    ASSERT_EQ(first.status, 0) << first.err.toStdString();
    EXPECT_TRUE(first.err.contains("the add-in was not registered; registered")) << first.err.toStdString();
    EXPECT_FALSE(first.err.contains("not available yet")) << first.err.toStdString();

    const ProgramRun second = task("create", {"Print", "--kind", "print"});
    ASSERT_EQ(second.status, 0) << second.err.toStdString();
    EXPECT_FALSE(second.err.contains("registered")) << second.err.toStdString();
    EXPECT_FALSE(second.err.contains("not available yet")) << second.err.toStdString();
    createTask("Script", "script");

    const QJsonObject convert = variables("Convert");
    const QJsonObject print = variables("Print");
    const QJsonObject script = variables("Script");
    EXPECT_EQ(convert["__type"], QJsonValue(1));
    EXPECT_EQ(print["__type"], QJsonValue(2));
    EXPECT_EQ(script["__type"], QJsonValue(3));
    // Each kind starts from its own template, as the script page's reset gives it.
    for (const QJsonObject &vars : {convert, print, script})
        EXPECT_TRUE(vars["__script"].toString().contains("Sub main", Qt::CaseInsensitive));
    EXPECT_NE(convert["__script"], print["__script"]);
    EXPECT_NE(print["__script"], script["__script"]);
    // The print pages stored their defaults.
    EXPECT_EQ(print["__printer_defpapsize"], QJsonValue(10));
}

TEST_F(TaskCommandsTest, AnAddInThatCannotBeLoadedCreatesNothing)
{
    // Registered from a copy that is gone by the time a task is made.
    const QString copy = m_work.filePath("McTaskAddIn.so");
    ASSERT_TRUE(QFile::copy(MCTASK_ADDIN_MODULE, copy));
    ASSERT_EQ(run({"addin", "register", copy}).status, 0);
    ASSERT_TRUE(QFile::remove(copy));

    const ProgramRun created = task("create", {"Script", "--kind", "script"});
    EXPECT_EQ(created.status, 1);
    EXPECT_TRUE(created.err.contains("cannot load the add-in module")) << created.err.toStdString();
    EXPECT_EQ(task("get", {"Script"}).status, 2);
}

TEST_F(TaskCommandsTest, VariablesOfEveryKindRoundTripThroughSetAndGet)
{
    createTask("Print", "print");
    ASSERT_EQ(task("set", {"Print", "OutputPath=C:\\Out\\<Filename>=x", "__printer_copycount:int=-3",
                           "__printer_showprintdlg:bool=false", "PdfInColor:bool=YES", "__printer_margintop:real=0.1",
                           "Empty="})
                  .status,
              0);
    const QJsonObject vars = variables("Print");
    EXPECT_EQ(vars["OutputPath"], QJsonValue("C:\\Out\\<Filename>=x"));
    EXPECT_EQ(vars["__printer_copycount"], QJsonValue(-3));
    EXPECT_EQ(vars["__printer_showprintdlg"], QJsonValue(false));
    EXPECT_EQ(vars["PdfInColor"], QJsonValue(true));
    EXPECT_TRUE(vars["__printer_margintop"].isDouble());
    EXPECT_DOUBLE_EQ(vars["__printer_margintop"].toDouble(), 0.1);
    EXPECT_EQ(vars["Empty"], QJsonValue(""));

    // The text form is what "task set" takes: copying it to another task
    // gives the same values and kinds.
    const ProgramRun text = task("get", {"Print", "__printer_copycount", "PdfInColor", "__printer_margintop", "OutputPath"});
    ASSERT_EQ(text.status, 0);
    EXPECT_EQ(text.out, "__printer_copycount:int=-3\nPdfInColor:bool=true\n__printer_margintop:real=0.1\n"
                        "OutputPath=C:\\Out\\<Filename>=x\n");
    createTask("Copy", "script");
    ASSERT_EQ(task("set", QStringList{"Copy"} + text.out.trimmed().split('\n')).status, 0);
    const QJsonObject copy = variables("Copy");
    for (const char *key : {"__printer_copycount", "PdfInColor", "__printer_margintop", "OutputPath"})
        EXPECT_EQ(copy[key], vars[key]) << key;

    // Listing all gives one line per variable, multi-line texts summed up.
    const ProgramRun all = task("get", {"Print"});
    ASSERT_EQ(all.status, 0);
    const QStringList lines = all.out.trimmed().split('\n');
    EXPECT_EQ(lines.size(), variables("Print").size());
    EXPECT_EQ(lines.filter(QRegularExpression("^__script=\\(\\d+ lines of text; see --json\\)$")).size(), 1)
        << all.out.toStdString();
    // Named, it is printed whole.
    const ProgramRun script = task("get", {"Print", "__script"});
    ASSERT_EQ(script.status, 0);
    ASSERT_TRUE(vars["__script"].toString().contains('\n'));
    EXPECT_EQ(script.out, "__script=" + vars["__script"].toString() + "\n");

    // A named variable that is not set is null and fails the command.
    const ProgramRun missing = task("get", {"Print", "Nothing", "PdfInColor", "--json"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.json().object()["Nothing"], QJsonValue(QJsonValue::Null));
    EXPECT_EQ(missing.json().object()["PdfInColor"], QJsonValue(true));
}

TEST_F(TaskCommandsTest, BadInputIsOneLineExitTwoAndChangesNothing)
{
    createTask("Script", "script");
    const int instance = launch("Script", {"V:\\Parts\\gear.mcdprt"});
    const QString outside = m_work.filePath("gear.mcdprt"); // the source, not the vault's copy
    const QJsonObject varsBefore = variables("Script");
    const QJsonArray instancesBefore = instances();

    const QString id = QString::number(instance);
    const std::vector<QStringList> cases = {
        {"task", "set", "--vault", m_work.filePath("novault"), "Script", "A=1"},
        {"task", "set", "--vault", m_vault, "Nobody", "A=1"},
        {"task", "set", "--vault", m_vault, "Script", "A=1", "justtext"},
        {"task", "set", "--vault", m_vault, "Script", "A=1", "=1"},
        {"task", "set", "--vault", m_vault, "Script", "A=1", "B:int=12x"},
        {"task", "set", "--vault", m_vault, "Script", "A=1", "B:bool=maybe"},
        {"task", "set", "--vault", m_vault, "Script", "A=1", "B:real=wide"},
        {"task", "set", "--vault", m_vault, "Script", "A=1", "B:date=1"},
        {"task", "create", "--vault", m_vault, "Other", "--kind", "paint"},
        {"task", "create", "--vault", m_vault, "Script", "--kind", "script"},
        {"task", "launch", "--vault", m_vault, "Script", outside},
        {"task", "launch", "--vault", m_vault, "Script", "V:\\Parts\\none.mcdprt"},
        {"task", "launch", "--vault", m_vault, "Script", "V:\\Parts\\gear.mcdprt", "--set", "broken"},
        {"task", "launch", "--vault", m_vault, "Nobody", "V:\\Parts\\gear.mcdprt"},
        {"task", "run", "--vault", m_vault, "999"},
        {"task", "run", "--vault", m_vault, "{00000000-0000-0000-0000-000000000000}"},
        {"task", "details", "--vault", m_vault, "x"},
        {"task", "resume", "--vault", m_vault, id},
        {"task", "get", "--vault", m_vault},
        {"task", "run", "--vault", m_vault, id, "--frobnicate"},
        // Qt's own options are none of the program's.
        {"-platform", "nonsense"},
        {"task", "get", "--vault", m_vault, "Script", "-platform", "nonsense"},
        {"task", "get", "--vault", m_vault, "Script", "-reverse"},
        {"task", "setup", "--vault", m_vault, "Script", "-style", "windows"},
    };
    for (const QStringList &args : cases) {
        const ProgramRun bad = run(args);
        EXPECT_EQ(bad.status, 2) << args.join(' ').toStdString();
        EXPECT_EQ(bad.err.count('\n'), 1) << args.join(' ').toStdString() << ": " << bad.err.toStdString();
        EXPECT_TRUE(bad.err.startsWith("mctask: ")) << bad.err.toStdString();
    }
    EXPECT_EQ(variables("Script"), varsBefore);
    EXPECT_EQ(instances(), instancesBefore);
    EXPECT_EQ(statusOf(instance), TaskStatus_Waiting);
}

// Qt used to end the program (status 134) when it found no window system.
TEST_F(TaskCommandsTest, WindowsWithoutADisplayAreOneLineNotAnAbort)
{
    createTask("Script", "script");
    const ProgramRun shown = runProgram(MCTASK_PROGRAM, {"task", "setup", "--vault", m_vault, "Script", "--gui"},
                                        ProgramSetting(m_home.path())
                                            .in(m_work.path())
                                            .set("QT_QPA_PLATFORM", "")
                                            .set("DISPLAY", "")
                                            .set("WAYLAND_DISPLAY", ""));
    EXPECT_EQ(shown.status, 1);
    EXPECT_EQ(shown.err, "mctask: --gui needs a display: set DISPLAY or WAYLAND_DISPLAY (or QT_QPA_PLATFORM)\n");
}

TEST_F(TaskCommandsTest, LaunchStoresTheSelectionAndInstanceValuesOnly)
{
    createTask("Script", "script");
    ASSERT_EQ(task("set", {"Script", "Quality:int=1"}).status, 0);
    // One vault path, one native path inside the vault, one folder.
    const QString native = QDir(m_vault).filePath("Parts/Sheets/plate.mcddrw");
    const int id = launch("Script", {"v:\\parts\\GEAR.mcdprt", native, "V:\\Parts\\Sheets", "--set", "Quality:int=3",
                                     "--set", "Note=launched"});

    TaskStore tasks(VaultStore::open(m_vault));
    const DoxCmdDataArray data = tasks.instanceData(id);
    ASSERT_EQ(data.size(), 3u);
    EXPECT_EQ(data[0].string1, "V:\\Parts\\gear.mcdprt");
    EXPECT_EQ(data[0].long1, DoxObject_File);
    EXPECT_EQ(data[0].long2, 1);
    EXPECT_GT(data[0].objectId1, 0);
    EXPECT_GT(data[0].objectId2, 0);
    EXPECT_EQ(data[1].string1, "V:\\Parts\\Sheets\\plate.mcddrw");
    EXPECT_EQ(data[2].string1, "V:\\Parts\\Sheets");
    EXPECT_EQ(data[2].long1, DoxObject_Folder);
    EXPECT_EQ(data[1].objectId2, data[2].objectId1);

    // The add-in stored the selection: the two files, the folder expanded.
    std::vector<FileRecord> records;
    ASSERT_EQ(TaskRunRecord::readList(*tasks.taskInstance(id), false, records), S_OK);
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records[0].path, "V:\\Parts\\gear.mcdprt");
    EXPECT_EQ(records[0].docId, data[0].objectId1);
    EXPECT_EQ(records[1].path, "V:\\Parts\\Sheets\\plate.mcddrw");
    EXPECT_EQ(records[2].path, "V:\\Parts\\Sheets\\plate.mcddrw");

    // --set reached the instance, never the task.
    EXPECT_EQ(tasks.instanceValue(id, "Quality")->toI4(), 3);
    EXPECT_EQ(tasks.instanceValue(id, "Note")->toText(), "launched");
    const QJsonObject vars = variables("Script");
    EXPECT_EQ(vars["Quality"], QJsonValue(1));
    EXPECT_FALSE(vars.contains("Note"));

    const QJsonArray listed = instances();
    ASSERT_EQ(listed.size(), 1);
    EXPECT_EQ(listed[0].toObject()["id"], QJsonValue(id));
    EXPECT_EQ(listed[0].toObject()["task"], QJsonValue("Script"));
    EXPECT_EQ(listed[0].toObject()["status"], QJsonValue(TaskStatus_Waiting));
}

TEST_F(TaskCommandsTest, APrintLaunchWithoutGuiTakesTheSilentPathAndStoresTheSelection)
{
    // Nobody could answer the print dialog: it does its work unseen.
    createTask("Print", "print");
    ASSERT_EQ(task("setup", {"Print"}).status, 0); // the pages' defaults, as an administrator confirms them
    const ProgramRun print = task("launch", {"Print", "V:\\Parts\\Sheets\\plate.mcddrw"});
    ASSERT_EQ(print.status, 0) << print.err.toStdString();
    TaskStore tasks(VaultStore::open(m_vault));
    const auto instance = tasks.taskInstance(print.lastLine().toInt());
    std::vector<FileRecord> records;
    ASSERT_EQ(TaskRunRecord::readList(*instance, false, records), S_OK);
    ASSERT_EQ(records.size(), 1u);
    EXPECT_TRUE(records[0].path.endsWith("plate.mcddrw")) << records[0].path.toStdString();
    Variant copies;
    EXPECT_EQ(instance->GetVariable("__printer_copycount", copies), S_OK);
    EXPECT_EQ(copies.toI4(), 1);
}

TEST_F(TaskCommandsTest, ConversionLaunchChangesOnlyWhatTheSetUpLeftOpen)
{
    createTask("Convert", "convert");
    ASSERT_EQ(task("set", {"Convert", "FileFormat=Adobe PDF (*.pdf)", "SourceRefs:int=1", "PromptOutput:bool=true",
                           "OutputPath=<VaultPath>\\PDF\\<Filename>"})
                  .status,
              0);
    const ProgramRun fixed = task("launch", {"Convert", "V:\\Parts\\gear.mcdprt", "--set", "SourceRefs:int=2"});
    EXPECT_EQ(fixed.status, 2);
    EXPECT_TRUE(fixed.err.contains("SourceRefs is fixed by the set-up")) << fixed.err.toStdString();
    // The format is fixed, and with it its options.
    const ProgramRun option = task("launch", {"Convert", "V:\\Parts\\gear.mcdprt", "--set", "PdfInColor:bool=false"});
    EXPECT_EQ(option.status, 2);
    EXPECT_TRUE(option.err.contains("PdfInColor is fixed by the set-up")) << option.err.toStdString();
    EXPECT_TRUE(instances().isEmpty());

    const ProgramRun open =
        task("launch", {"Convert", "V:\\Parts\\gear.mcdprt", "--set", "OutputPath=<VaultPath>\\Out\\<Filename>"});
    ASSERT_EQ(open.status, 0) << open.err.toStdString();
    // The page confirmed the values it loaded, with the user's change.
    EXPECT_TRUE(open.err.contains("FileFormat=Adobe PDF (*.pdf)")) << open.err.toStdString();
    EXPECT_TRUE(open.err.contains("SourceRefs:int=1")) << open.err.toStdString();
    const int id = open.lastLine().toInt();
    TaskStore tasks(VaultStore::open(m_vault));
    EXPECT_EQ(tasks.instanceValue(id, "OutputPath")->toText(), "<VaultPath>\\Out\\<Filename>");
    EXPECT_EQ(tasks.instanceValue(id, "OutputConfs")->toI4(), 3);
    EXPECT_EQ(statusOf(id), TaskStatus_Waiting);
}

TEST_F(TaskCommandsTest, SuspendResumeAndCancelWriteRequests)
{
    createTask("Script", "script");
    const int id = launch("Script", {"V:\\Parts\\gear.mcdprt"});
    const QString instance = QString::number(id);

    ASSERT_EQ(task("suspend", {instance}).status, 0);
    EXPECT_EQ(statusOf(id), TaskStatus_SuspendRequested);
    EXPECT_EQ(task("suspend", {instance}).status, 2);
    ASSERT_EQ(task("resume", {instance}).status, 0);
    EXPECT_EQ(statusOf(id), TaskStatus_ResumeRequested);
    // By identifier as well as by number.
    const QString guid = instances()[0].toObject()["guid"].toString();
    ASSERT_EQ(task("cancel", {guid}).status, 0);
    EXPECT_EQ(statusOf(id), TaskStatus_CancelRequested);
    EXPECT_EQ(instances()[0].toObject()["status"], QJsonValue(TaskStatus_CancelRequested));

    // The host ends a run cancelled before it started, without the add-in.
    const ProgramRun ran = task("run", {instance, "--json"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.json().object()["status"], QJsonValue(TaskStatus_Finished));
    EXPECT_EQ(ran.json().object()["cancelled"], QJsonValue(true));
    EXPECT_EQ(task("cancel", {instance}).status, 2);
}

TEST_F(TaskCommandsTest, RunReportsTheAddInsOutcomeHonestly)
{
    createTask("Script", "script");
    const int id = launch("Script", {"V:\\Parts\\gear.mcdprt"});

    // Mecadra is not installed in this test's home: the run ends with the
    // connection's error and its text.
    const ProgramRun ran = task("run", {QString::number(id), "--json"});
    EXPECT_EQ(ran.status, 1) << ran.err.toStdString();
    const QJsonObject report = ran.json().object();
    EXPECT_EQ(report["status"], QJsonValue(TaskStatus_FinishedWithError));
    EXPECT_EQ(report["hresultText"], QJsonValue("0x800401F3"));
    EXPECT_EQ(report["message"], QJsonValue("Mecadra is not installed."));
    EXPECT_TRUE(report["notifications"].isArray());
    EXPECT_EQ(statusOf(id), TaskStatus_FinishedWithError);

    // An ended instance is not run again.
    const ProgramRun again = task("run", {QString::number(id)});
    EXPECT_EQ(again.status, 2);

    const int second = launch("Script", {"V:\\Parts\\gear.mcdprt"});
    const ProgramRun text = task("run", {QString::number(second)});
    EXPECT_EQ(text.status, 1);
    EXPECT_TRUE(text.out.contains("(status 9, 0x800401F3): Mecadra is not installed.")) << text.out.toStdString();
}

TEST_F(TaskCommandsTest, DetailsListTheSelectionUntilTheInstanceEnds)
{
    createTask("Script", "script");
    const int id = launch("Script", {"V:\\Parts\\gear.mcdprt", "V:\\Parts\\Sheets\\plate.mcddrw"});

    const ProgramRun details = task("details", {QString::number(id), "--json"});
    ASSERT_EQ(details.status, 0) << details.err.toStdString();
    const QJsonObject page = details.json().object();
    EXPECT_EQ(page["columns"], (QJsonArray{"File Name", "Version", "Found in"}));
    EXPECT_EQ(page["rows"], (QJsonArray{QJsonArray{"gear.mcdprt", "1/1", "V:\\Parts"},
                                        QJsonArray{"plate.mcddrw", "1/1", "V:\\Parts\\Sheets"}}));
    EXPECT_EQ(page["caption"], QJsonValue("Selected Files"));
    const ProgramRun table = task("details", {QString::number(id)});
    ASSERT_EQ(table.status, 0) << table.err.toStdString();
    EXPECT_TRUE(table.out.startsWith("Selected Files\n")) << table.out.toStdString();
    EXPECT_TRUE(table.out.contains("plate.mcddrw")) << table.out.toStdString();

    // Ended, an execute-script instance has no output list: four columns, no rows.
    ASSERT_EQ(task("run", {QString::number(id)}).status, 1);
    const QJsonObject ended = task("details", {QString::number(id), "--json"}).json().object();
    EXPECT_EQ(ended["columns"], (QJsonArray{"File Name", "Configuration", "Version", "Found in"}));
    EXPECT_EQ(ended["rows"], QJsonArray{});
}

TEST_F(TaskCommandsTest, MacroCheckReportsSyntaxErrorsWithLineAndColumn)
{
    const QString good = writeMacro("good.mcb", "Sub main()\r\n    Dim x As Long\r\n    x = 1\r\nEnd Sub\r\n");
    const ProgramRun ok = run({"macro", "check", good});
    EXPECT_EQ(ok.status, 0) << ok.out.toStdString() << ok.err.toStdString();

    const QString bad = writeMacro("bad.mcb", "Sub main()\r\n    Dim x As Long\r\n    x = (1 +\r\nEnd Sub\r\n");
    const ProgramRun broken = run({"macro", "check", bad});
    EXPECT_EQ(broken.status, 1);
    EXPECT_TRUE(broken.out.startsWith(bad + ":3:")) << broken.out.toStdString();
    EXPECT_EQ(broken.out.count('\n'), 1);

    EXPECT_EQ(run({"macro", "check", m_work.filePath("missing.mcb")}).status, 2);

    // A task's macro for a vault file, as a run would build it.
    createTask("Script", "script");
    const ProgramRun fine = run({"macro", "check", "--vault", m_vault, "Script", "V:\\Parts\\gear.mcdprt"});
    EXPECT_EQ(fine.status, 0) << fine.out.toStdString() << fine.err.toStdString();
    ASSERT_EQ(task("set", {"Script", "__script=Sub main()\r\n  If <Filepath> Then\r\nEnd Sub\r\n"}).status, 0);
    const ProgramRun failing = run({"macro", "check", "--vault", m_vault, "Script", "V:\\Parts\\gear.mcdprt"});
    EXPECT_EQ(failing.status, 1);
    EXPECT_TRUE(failing.out.startsWith("V:\\Parts\\gear.mcdprt:2:")) << failing.out.toStdString();
    EXPECT_EQ(run({"macro", "check", "--vault", m_vault, "Nobody", "V:\\Parts\\gear.mcdprt"}).status, 2);

    // An instance's own macro text stands before its task's.
    const int id = launch("Script", {"V:\\Parts\\gear.mcdprt", "--set", "__script=Sub main()\r\nEnd Sub\r\n"});
    const ProgramRun instance = run({"macro", "check", "--vault", m_vault, QString::number(id), "V:\\Parts\\gear.mcdprt"});
    EXPECT_EQ(instance.status, 0) << instance.out.toStdString() << instance.err.toStdString();
}

// Input the task commands cannot keep is refused with a message and status
// 2, and leaves no instance behind: a real that is no number (inf and nan
// were stored and shown as null), the keys the launch writes itself (once
// dropped without a word), a launch on nothing (once E_NOTIMPL and a dead
// instance), an instance id that is negative (once "unknown option").
TEST_F(TaskCommandsTest, InputTheTaskCannotKeepIsRefusedAndLeavesNothing)
{
    createTask("Convert", "convert");
    const qsizetype instancesBefore = instances().size();
    const QJsonObject variablesBefore = variables("Convert");
    const QList<QPair<QStringList, QString>> refused{
        {{"set", "Convert", "Margin:real=inf"}, "is not a number"},
        {{"set", "Convert", "Margin:real=nan"}, "is not a number"},
        {{"set", "Convert", "Margin:real=-INF"}, "is not a number"},
        {{"set", "Convert", "Margin:real=1e999"}, "is not a number"},
        {{"launch", "Convert", "V:\\Parts\\gear.mcdprt", "--set", "__selection_list=<sels/>"}, "kept by the add-in"},
        {{"launch", "Convert", "V:\\Parts\\gear.mcdprt", "--set", "__OUTPUT_LIST=x"}, "kept by the add-in"},
        {{"launch", "Convert"}, "name the files or folders"},
        {{"launch", "Convert", ""}, "empty path"},
        {{"details", "-1"}, "an instance id is expected"},
        {{"details", "0"}, "an instance id is expected"},
        {{"cancel", "-7"}, "an instance id is expected"},
    };
    for (const auto &[args, message] : refused) {
        const ProgramRun result = task(args.first(), args.mid(1));
        EXPECT_EQ(result.status, 2) << args.join(' ').toStdString() << ": " << result.err.toStdString();
        EXPECT_TRUE(result.err.contains(message)) << args.join(' ').toStdString() << ": " << result.err.toStdString();
    }
    EXPECT_EQ(instances().size(), instancesBefore);
    EXPECT_EQ(variables("Convert"), variablesBefore);

    const ProgramRun group = run({"task", "--help"});
    EXPECT_EQ(group.status, 0) << group.err.toStdString();
    for (const char *command : {"create", "set", "launch", "run", "details"})
        EXPECT_TRUE(group.out.contains(QStringLiteral("task ") + command)) << group.out.toStdString();
}

} // namespace
