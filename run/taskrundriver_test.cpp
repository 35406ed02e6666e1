#include "run/taskrundriver.h"

#include "host/hosterror.h"
#include "host/testing/faketask.h"
#include "host/testing/switchedvault.h"
#include "platform/clock.h"
#include "platform/drivemap.h"
#include "run/filecardmapping.h"
#include "run/taskrunrecord.h"
#include "vault/embeddedvault.h"
#include "vault/vaulttesting.h"

#include <gmock/gmock.h>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr HRESULT MacroFailed = makeHresult(0x80040301u);

// Stands for the CAD application: each macro "saves" the outputs that
// outputsFor names for the current source, reporting them first as the
// real one does, and can fail or refuse to start on demand.
class FakeCad final : public CadConnection
{
public:
    explicit FakeCad(TempVault &vault) : m_vault(vault) {}

    void Init(std::shared_ptr<TaskRunRecord> record, std::int32_t type, std::shared_ptr<IDoxTaskInstance>,
              std::int32_t version) override
    {
        m_record = std::move(record);
        taskType = type;
        versionYear = version;
    }
    HRESULT Start() override
    {
        ++starts;
        if (failed(startResult))
            error = QStringLiteral("Mecadra could not be started. 0");
        return startResult;
    }
    HRESULT RetryStart(HRESULT) override
    {
        ++retries;
        return retryResult;
    }
    void RunMacro(const QString &macroText) override
    {
        macros.append(macroText);
        const FileRecord &source = *m_record->currentSource();
        if (macros.size() == failAt) {
            error = QStringLiteral("Macro run failed 0 (error 0)");
            throw HostError(MacroFailed);
        }
        if (beforeMacro)
            beforeMacro(macros.size());
        for (const QString &relative : outputsFor(source)) {
            m_record->registerOutput(QStringLiteral("V:\\") + QString(relative).replace('/', '\\'), conf, false);
            m_vault.localFile(relative, "export of " + source.path.toUtf8());
        }
    }
    void AfterFile() override { ++afterFiles; }
    HRESULT Close(bool force, HRESULT) override
    {
        closes.push_back(force);
        if (clearErrorOnClose)
            error.clear();
        return closeResult;
    }
    QString lastError() const override { return error; }

    // One PDF per source, named after it.
    static QStringList onePdf(const FileRecord &source)
    {
        const QString name = source.path.mid(source.path.lastIndexOf('\\') + 1).section('.', 0, 0);
        return QStringList{QStringLiteral("Out/%1.pdf").arg(name)};
    }

    std::function<QStringList(const FileRecord &source)> outputsFor = &FakeCad::onePdf;
    std::function<void(qsizetype macroNumber)> beforeMacro;
    QString conf = QStringLiteral("Sheet1");
    HRESULT startResult = S_OK;
    HRESULT retryResult = S_OK;
    HRESULT closeResult = S_OK;
    qsizetype failAt = -1;
    bool clearErrorOnClose = false;
    QString error;
    QStringList macros;
    std::vector<bool> closes;
    int starts = 0;
    int retries = 0;
    int afterFiles = 0;
    std::int32_t taskType = 0;
    std::int32_t versionYear = -1;

private:
    TempVault &m_vault;
    std::shared_ptr<TaskRunRecord> m_record;
};

class RunDriverTest : public ::testing::Test
{
protected:
    RunDriverTest()
    {
        drives.mount('V', temp.root());
        newInstance();
    }

    // A conversion instance with a script and nothing else set.
    void newInstance()
    {
        instance = std::make_shared<FakeTaskInstance>();
        instance->set(QStringLiteral("__type"), Variant::fromI4(1));
        instance->set(QStringLiteral("__script"), Variant::fromBStr(QStringLiteral("' <Filepath>")));
        instance->set(QStringLiteral("__mc_version"), Variant::fromI4(2013));
    }

    // A source file of the vault and its entry in the data array.
    DoxCmdData source(const QString &name, const QString &revision = QString())
    {
        const VaultFileRow row = store->addFile(temp.outsideFile(name, "part " + name.toUtf8()), "Parts", name, {});
        if (!revision.isEmpty())
            store->setVersionLabels(row.id, 1, revision, QStringLiteral("Approved"));
        return {row.id, row.folderId, QStringLiteral("V:\\Parts\\") + name, QString(), DoxObject_File, 1};
    }

    HRESULT run(const DoxCmdDataArray &data)
    {
        cmd.cancel = 0;
        return driver.Run(vault, instance, cmd, data);
    }

    std::optional<VaultFileRow> file(QString relative) { return store->fileByPath(relative.replace('/', '\\')); }

    TempVault temp;
    std::shared_ptr<VaultStore> store = temp.store;
    std::shared_ptr<SwitchedVault> vault = std::make_shared<SwitchedVault>(std::make_shared<EmbeddedVault>(store));
    DriveMap drives;
    ScopedDriveMap scopedDrives{drives};
    FakeClock clock;
    ScopedClock scopedClock{clock};
    std::shared_ptr<FakeTaskInstance> instance;
    std::shared_ptr<TaskRunRecord> record = std::make_shared<TaskRunRecord>();
    std::shared_ptr<FakeCad> cad = std::make_shared<FakeCad>(temp);
    TaskRunDriver driver{record, cad, {}, [](const QString &) { return 0; }};
    DoxCmd cmd;
};

TEST_F(RunDriverTest, ConversionAddsReferencesCardsAndChecksInEveryOutput)
{
    store->defineCardVariable(QStringLiteral("Description"));
    store->defineCardVariable(QStringLiteral("Revision"));
    store->defineCardVariable(QStringLiteral("Converted"));
    store->defineCardVariable(QStringLiteral("Number"));
    store->defineCardVariable(QStringLiteral("PartNo"));
    instance->set(QStringLiteral("RefToSource"), Variant::fromBool(true));
    instance->set(QStringLiteral("FileCardData"),
                  Variant::fromBStr(formatFileCardData({{QStringLiteral("Description"), 8, QStringLiteral("PDF; A4")},
                                                        {QStringLiteral("Revision"), 4, {}},
                                                        {QStringLiteral("Converted"), 7, {}},
                                                        {QStringLiteral("PartNo"), 100, QStringLiteral("Number")}})));
    const DoxCmdData bracket = source(QStringLiteral("Bracket.mcdprt"), QStringLiteral("B"));
    DoxCmdData plate = source(QStringLiteral("Plate.mcdprt"), QStringLiteral("C"));
    plate.long2 = 0; // unknown: the vault's version stands in, here and in the report
    store->setCardValue(bracket.objectId1, 1, QStringLiteral("Number"), {}, Variant::fromBStr(QStringLiteral("BR-1")));

    ASSERT_EQ(run({bracket, plate}), S_OK);
    EXPECT_EQ(cmd.cancel, 0);
    EXPECT_EQ(cad->taskType, 1);
    EXPECT_EQ(cad->versionYear, 2013);
    EXPECT_THAT(cad->macros, ElementsAre("' V:\\Parts\\Bracket.mcdprt", "' V:\\Parts\\Plate.mcdprt"));
    EXPECT_EQ(cad->afterFiles, 2);
    EXPECT_THAT(cad->closes, ElementsAre(true));
    EXPECT_EQ(instance->progressMax, 3);
    EXPECT_THAT(instance->progress,
                ElementsAre(FakeTaskInstance::Progress{0, "V:\\Parts\\Bracket.mcdprt"},
                            FakeTaskInstance::Progress{1, "V:\\Parts\\Plate.mcdprt"},
                            FakeTaskInstance::Progress{2, "Adding files to vault..."}, FakeTaskInstance::Progress{3, ""}));

    for (const QString name : {"Bracket", "Plate"}) {
        SCOPED_TRACE(name.toStdString());
        const auto output = file("Out/" + name + ".pdf");
        ASSERT_TRUE(output);
        EXPECT_EQ(output->lock, VaultLock::None);
        ASSERT_EQ(store->versions(output->id).size(), 1u);
        EXPECT_EQ(store->versions(output->id).front().comment, "Mecadra Task Add-in");
        const auto refs = store->references(output->id, 0);
        ASSERT_EQ(refs.size(), 1u);
        EXPECT_EQ(refs.front().childId, file("Parts/" + name + ".mcdprt")->id);
        EXPECT_EQ(store->cardValue(output->id, 0, "Description", {})->toText(), "PDF; A4");
        const auto converted = store->cardValue(output->id, 0, "Converted", {});
        ASSERT_TRUE(converted);
        EXPECT_EQ(converted->type(), VarType::Date);
    }
    const int bracketOut = file("Out/Bracket.pdf")->id;
    EXPECT_EQ(store->cardValue(bracketOut, 0, "Revision", {})->toText(), "B");
    EXPECT_EQ(store->cardValue(file("Out/Plate.pdf")->id, 0, "Revision", {})->toText(), "C");
    EXPECT_EQ(store->cardValue(bracketOut, 0, "PartNo", {})->toText(), "BR-1");
    // A source without the variable gives the output nothing.
    EXPECT_FALSE(store->cardValue(file("Out/Plate.pdf")->id, 0, "PartNo", {}));

    std::vector<FileRecord> outputs;
    ASSERT_EQ(TaskRunRecord::readList(*instance, true, outputs), S_OK);
    ASSERT_EQ(outputs.size(), 2u);
    EXPECT_EQ(outputs[1].path, "V:\\Parts\\Plate.mcdprt");
    EXPECT_EQ(outputs[1].info, "V:\\Out\\Plate.pdf");
    EXPECT_EQ(outputs[1].conf, "Sheet1");

    ASSERT_EQ(driver.Finish(*instance, S_OK), S_OK);
    EXPECT_EQ(instance->status, TaskStatus_FinishedOk);
    EXPECT_FALSE(instance->finalMessage);
    EXPECT_THAT(instance->affected,
                ElementsAre(AffectedObject{bracketOut, 1, file("Out/Bracket.pdf")->folderId, 1},
                            AffectedObject{file("Out/Plate.pdf")->id, 1, file("Out/Plate.pdf")->folderId, 1},
                            AffectedObject{bracket.objectId1, 1, bracket.objectId2, 1},
                            AffectedObject{plate.objectId1, 1, plate.objectId2, 1}));
}

TEST_F(RunDriverTest, OutputsOutsideTheVaultAreNeitherAddedNorAffected)
{
    QTemporaryDir elsewhere;
    drives.mount('C', elsewhere.path());
    cad->outputsFor = [](const FileRecord &) { return QStringList{}; };
    const DoxCmdData part = source(QStringLiteral("Bracket.mcdprt"));
    cad->beforeMacro = [&](qsizetype) {
        record->registerOutput(QStringLiteral("C:\\Exports\\Bracket.pdf"), {}, false);
        TempVault::writeFile(elsewhere.path() + "/Exports/Bracket.pdf", "pdf");
    };
    ASSERT_EQ(run({part}), S_OK);
    EXPECT_FALSE(file("Exports/Bracket.pdf"));
    ASSERT_EQ(driver.Finish(*instance, S_OK), S_OK);
    // The outside output still counts as converted; only the source is affected.
    EXPECT_EQ(instance->status, TaskStatus_FinishedOk);
    EXPECT_THAT(instance->affected, ElementsAre(AffectedObject{part.objectId1, 1, part.objectId2, 1}));
}

TEST_F(RunDriverTest, PrintRunCountsOneStepPerFileAndAddsNothing)
{
    instance->set(QStringLiteral("__type"), Variant::fromI4(2));
    cad->outputsFor = [](const FileRecord &) { return QStringList{}; };
    cad->beforeMacro = [&](qsizetype) { record->registerPrintEntry(QStringLiteral("Office printer"), "Sheet1"); };
    ASSERT_EQ(run({source(QStringLiteral("A.mcddrw")), source(QStringLiteral("B.mcddrw"))}), S_OK);
    EXPECT_EQ(instance->progressMax, 2);
    EXPECT_THAT(instance->progress,
                ElementsAre(FakeTaskInstance::Progress{0, "V:\\Parts\\A.mcddrw"},
                            FakeTaskInstance::Progress{1, "V:\\Parts\\B.mcddrw"}, FakeTaskInstance::Progress{2, ""}));
    std::vector<FileRecord> list;
    ASSERT_EQ(TaskRunRecord::readList(*instance, true, list), S_OK);
    EXPECT_EQ(list.size(), 2u);
    ASSERT_EQ(driver.Finish(*instance, S_OK), S_OK);
    EXPECT_EQ(instance->status, TaskStatus_FinishedOk);
}

TEST_F(RunDriverTest, MacroFailureEndsTheLoopButKeepsWhatWasDone)
{
    cad->failAt = 2;
    const HRESULT hr = run({source(QStringLiteral("A.mcdprt")), source(QStringLiteral("B.mcdprt")),
                            source(QStringLiteral("C.mcdprt"))});
    EXPECT_EQ(hr, MacroFailed);
    EXPECT_EQ(cmd.cancel, 0);
    EXPECT_EQ(cad->macros.size(), 2);
    EXPECT_THAT(cad->closes, ElementsAre(true));
    ASSERT_TRUE(file("Out/A.pdf"));
    EXPECT_FALSE(file("Out/B.pdf"));
    EXPECT_EQ(file("Out/A.pdf")->lock, VaultLock::None);

    EXPECT_EQ(driver.Finish(*instance, hr), MacroFailed);
    EXPECT_EQ(instance->status, TaskStatus_FinishedWithError);
    EXPECT_EQ(instance->finalResult, MacroFailed);
    EXPECT_EQ(instance->finalMessage, QStringLiteral("Macro run failed (error)"));
    // The failure is in the log, and the log is in the vault.
    const auto log = file(instance->guid + ".log");
    ASSERT_TRUE(log);
    // The file after the failed one is named as not processed.
    EXPECT_EQ(store->readVersion(log->id),
              "An error occured: V:\\Parts\\B.mcdprt: Macro run failed 0 (error 0)\r\n\t0x80040301\r\n"
              "An error occured: V:\\Parts\\C.mcdprt: Not processed: the run stopped at the error on "
              "V:\\Parts\\B.mcdprt.");
    EXPECT_EQ(instance->affected.at(1).objectId, log->id);

    // A connection that forgets its text when closed still has it reported.
    cad->clearErrorOnClose = true;
    cad->failAt = 3;
    EXPECT_EQ(run({source(QStringLiteral("D.mcdprt"))}), MacroFailed);
    EXPECT_EQ(driver.Finish(*instance, MacroFailed), MacroFailed);
    EXPECT_EQ(instance->finalMessage, QStringLiteral("Macro run failed (error)"));
}

TEST_F(RunDriverTest, StartIsRetriedOnceThenTheRunGivesUp)
{
    cad->startResult = E_FAIL;
    const DoxCmdData part = source(QStringLiteral("A.mcdprt"));
    EXPECT_EQ(run({part}), S_OK);
    EXPECT_EQ(cad->retries, 1);
    EXPECT_EQ(cad->macros.size(), 1);

    cad->retryResult = E_ACCESSDENIED;
    EXPECT_EQ(run({part}), E_ACCESSDENIED);
    EXPECT_EQ(cad->macros.size(), 1);
    EXPECT_EQ(cad->closes.size(), 1u); // only the first run had the application
    EXPECT_EQ(driver.Finish(*instance, E_ACCESSDENIED), E_ACCESSDENIED);
    EXPECT_EQ(instance->status, TaskStatus_FinishedWithError);
    EXPECT_EQ(instance->finalMessage, QStringLiteral("Mecadra could not be started."));
}

TEST_F(RunDriverTest, NothingToRunEndsWithTheRightMessage)
{
    const auto withScript = instance;
    instance = std::make_shared<FakeTaskInstance>();
    instance->set(QStringLiteral("__type"), Variant::fromI4(1));
    EXPECT_EQ(run({source(QStringLiteral("A.mcdprt"))}), E_UNEXPECTED);
    EXPECT_EQ(cad->starts, 0);

    instance = withScript;
    EXPECT_EQ(run({}), S_FALSE);
    EXPECT_EQ(cmd.cancel, -1);
    EXPECT_EQ(cad->starts, 0);
    EXPECT_EQ(driver.Finish(*instance, S_FALSE), S_FALSE);
    EXPECT_EQ(instance->status, TaskStatus_FinishedWithError);
    EXPECT_EQ(instance->finalMessage, QStringLiteral("No file selected."));
}

TEST_F(RunDriverTest, ConversionWithoutOutputOrWithAnErrorLogFinishesWithError)
{
    cad->outputsFor = [](const FileRecord &) { return QStringList{}; };
    const DoxCmdData part = source(QStringLiteral("A.mcdprt"));
    ASSERT_EQ(run({part}), S_OK);
    ASSERT_EQ(driver.Finish(*instance, S_OK), S_OK);
    EXPECT_EQ(instance->status, TaskStatus_FinishedWithError);
    EXPECT_EQ(instance->finalMessage, QStringLiteral("No file converted."));

    // A macro that writes to the log: the log goes into the vault.
    cad->outputsFor = &FakeCad::onePdf;
    cad->beforeMacro = [&](qsizetype) { driver.macroBuilder().AppendErrorLog(QStringLiteral("Sheet 2 is empty\n")); };
    ASSERT_EQ(run({part}), S_OK);
    const QString logName = instance->guid + ".log";
    const auto log = file(logName);
    ASSERT_TRUE(log);
    EXPECT_EQ(log->lock, VaultLock::None);
    EXPECT_EQ(store->readVersion(log->id), "Sheet 2 is empty\r\n");
    ASSERT_EQ(driver.Finish(*instance, S_OK), S_OK);
    EXPECT_EQ(instance->status, TaskStatus_FinishedWithError);
    EXPECT_EQ(instance->finalMessage,
              QStringLiteral("Task finished with errors. Please see the log-file for more details."));
    EXPECT_EQ(instance->affected.front().objectId, file("Out/A.pdf")->id);
    EXPECT_EQ(instance->affected.at(1).objectId, log->id);

    // The next run appends to the log it checks out again.
    ASSERT_EQ(run({part}), S_OK);
    EXPECT_EQ(store->readVersion(log->id), "Sheet 2 is empty\r\nSheet 2 is empty\r\n");
    EXPECT_EQ(store->versions(log->id).size(), 2u);
}

TEST_F(RunDriverTest, AFailedFirstReadReportsNoFilesOfAnEarlierRun)
{
    const DoxCmdData part = source(QStringLiteral("A.mcdprt"));
    ASSERT_EQ(run({part}), S_OK);
    ASSERT_TRUE(file("Out/A.pdf"));
    for (const QString key : {"__type", "ReplaceOutput"}) {
        SCOPED_TRACE(key.toStdString());
        instance->failRead(key, E_ACCESSDENIED);
        EXPECT_EQ(run({part}), E_ACCESSDENIED);
        EXPECT_EQ(cad->macros.size(), 1);
        EXPECT_EQ(driver.Finish(*instance, E_ACCESSDENIED), E_ACCESSDENIED);
        EXPECT_EQ(instance->status, TaskStatus_FinishedWithError);
        // Only files of this run may be affected, and it has none.
        EXPECT_THAT(instance->affected, IsEmpty());
        newInstance();
    }
}

// The host's status answers around a run of three files, and what the
// driver does with them: the status it writes, the five-second waits, the
// cancel flag, the one close, and the outputs it keeps.
class SuspendAndCancelTest : public RunDriverTest
{
protected:
    HRESULT runThree(const std::vector<std::int32_t> &statuses)
    {
        if (m_three.empty())
            m_three = {source(QStringLiteral("A.mcdprt")), source(QStringLiteral("B.mcdprt")),
                       source(QStringLiteral("C.mcdprt"))};
        instance->statusScript.assign(statuses.begin(), statuses.end());
        return run(m_three);
    }
    DoxCmdDataArray m_three;
    static constexpr std::int32_t Running = TaskStatus_Running;
};

TEST_F(SuspendAndCancelTest, ASuspendWaitsInFiveSecondPollsUntilResumed)
{
    // Before the list is built, then before A, B (suspend, still suspend,
    // resume) and C.
    ASSERT_EQ(runThree({Running, Running, TaskStatus_SuspendRequested, TaskStatus_SuspendRequested,
                        TaskStatus_ResumeRequested, Running}),
              S_OK);
    EXPECT_EQ(cmd.cancel, 0);
    EXPECT_THAT(instance->statusWrites, ElementsAre(TaskStatus_Suspended, TaskStatus_Running));
    EXPECT_EQ(clock.sleepCount(), 2);
    EXPECT_EQ(clock.totalSlept(), 2 * TaskRunDriver::SuspendPollMs);
    EXPECT_EQ(cad->macros.size(), 3);
    EXPECT_THAT(cad->closes, ElementsAre(true));
}

TEST_F(SuspendAndCancelTest, ACancelWhileSuspendedOrBetweenFilesKeepsWhatWasDone)
{
    struct Case {
        const char *name;
        std::vector<std::int32_t> statuses;
        std::vector<std::int32_t> writes;
        int sleeps;
    };
    const Case cases[] = {
        {"while suspended", {Running, Running, TaskStatus_SuspendRequested, TaskStatus_CancelRequested},
         {TaskStatus_Suspended}, 1},
        {"between files", {Running, Running, TaskStatus_CancelRequested}, {}, 0},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const int sleepsBefore = clock.sleepCount();
        instance->statusWrites.clear();
        cad->macros.clear();
        cad->closes.clear();
        EXPECT_EQ(runThree(c.statuses), S_FALSE);
        EXPECT_EQ(cmd.cancel, -1);
        EXPECT_EQ(instance->statusWrites, c.writes);
        EXPECT_EQ(clock.sleepCount() - sleepsBefore, c.sleeps);
        // A was converted before the cancel; its output still goes into the vault.
        EXPECT_EQ(cad->macros.size(), 1);
        EXPECT_THAT(cad->closes, ElementsAre(true));
        const auto output = file("Out/A.pdf");
        ASSERT_TRUE(output);
        EXPECT_EQ(output->lock, VaultLock::None);
        EXPECT_FALSE(file("Out/B.pdf"));
        // The host still says cancel: no status of the driver's own.
        EXPECT_EQ(driver.Finish(*instance, S_FALSE), S_FALSE);
        EXPECT_EQ(instance->statusWrites, c.writes);
        instance->status = Running;
    }
}

// Each way the vault's batch services can fail while the outputs of a
// conversion of two files go in: the run's result, the context in the
// error log, and which outputs are in the vault and which stay locked.
struct HandOverCase {
    const char *name;
    std::function<void(SwitchedVault &vault, VaultStore &store, const QString &root)> arrange;
    HRESULT result;
    QString logged;         // the context of the log entry; empty: no entry
    bool aInVault;          // Out/A.pdf is in the vault (B's fate follows the case's kind)
    bool locked;            // the outputs in the vault are still locked
    bool referenced = true; // the outputs refer to their sources
};

void PrintTo(const HandOverCase &c, std::ostream *os) { *os << c.name; }

class HandOverFailureTest : public RunDriverTest, public ::testing::WithParamInterface<HandOverCase>
{
protected:
    QByteArray log() const { return TempVault::readFile(temp.root() + '/' + instance->guid + ".log"); }
};

const QString OutA = QStringLiteral("V:\\Out\\A.pdf");

TEST_P(HandOverFailureTest, IsLoggedAndReturnedAndLeavesTheRightFilesLocked)
{
    const HandOverCase &c = GetParam();
    store->defineCardVariable(QStringLiteral("Description"));
    instance->set(QStringLiteral("RefToSource"), Variant::fromBool(true));
    instance->set(QStringLiteral("FileCardData"),
                  Variant::fromBStr(formatFileCardData({{QStringLiteral("Description"), 8, QStringLiteral("PDF")}})));
    c.arrange(*vault, *store, temp.root());

    EXPECT_EQ(run({source(QStringLiteral("A.mcdprt")), source(QStringLiteral("B.mcdprt"))}), c.result);
    if (c.logged.isEmpty())
        EXPECT_EQ(log(), QByteArray());
    else
        EXPECT_TRUE(log().startsWith("An error occured: " + c.logged.toLatin1() + "\r\n\t")) << log().toStdString();

    const auto a = file("Out/A.pdf");
    const auto b = file("Out/B.pdf");
    ASSERT_TRUE(b);
    EXPECT_EQ(bool(a), c.aInVault);
    for (const auto &output : {a, b}) {
        if (!output)
            continue;
        SCOPED_TRACE(output->name.toStdString());
        EXPECT_EQ(output->lock != VaultLock::None, c.locked);
        EXPECT_EQ(store->references(output->id, 0).size(), c.referenced ? 1u : 0u);
    }
    // A file the vault did not take stays on disk for the user.
    EXPECT_TRUE(QFileInfo::exists(temp.root() + "/Out/A.pdf"));
}

INSTANTIATE_TEST_SUITE_P(
    RunDriverTest, HandOverFailureTest,
    ::testing::Values(
        HandOverCase{"OneFileOfTheCommitFails",
                     [](SwitchedVault &v, VaultStore &, const QString &) { v.failAdd(OutA, E_DOX_IO_ERROR); }, S_OK,
                     QStringLiteral("Error adding a file to the vault."), false, false},
        HandOverCase{"NameTakenMeanwhileIsLookedUp",
                     [](SwitchedVault &v, VaultStore &store, const QString &root) {
                         v.failAdd(OutA, E_DOX_NAME_ALREADY_EXISTS);
                         // Another client added the file between the save and the commit.
                         v.editAddResults = [&store, root](std::vector<DoxBatchAddResult> &) {
                             VaultStore::AddOptions held;
                             held.keepCheckedOut = true;
                             store.addFile(root + "/Out/A.pdf", QStringLiteral("Out"), QStringLiteral("A.pdf"), held);
                         };
                     },
                     S_OK, QString(), true, false},
        HandOverCase{"NameTakenButTheLookUpFindsNothing",
                     [](SwitchedVault &v, VaultStore &, const QString &) {
                         v.failAdd(OutA, E_DOX_NAME_ALREADY_EXISTS);
                     },
                     S_OK, QStringLiteral("Error adding a file to the vault."), false, false},
        HandOverCase{"ResultPathsDifferOnlyInCase",
                     [](SwitchedVault &v, VaultStore &, const QString &) {
                         v.editAddResults = [](std::vector<DoxBatchAddResult> &results) {
                             for (DoxBatchAddResult &r : results)
                                 r.path = r.path.toUpper();
                         };
                     },
                     S_OK, QString(), true, false},
        HandOverCase{"CardUpdateFails",
                     [](SwitchedVault &v, VaultStore &, const QString &) {
                         v.failOperation(QStringLiteral("Update.Commit"), E_DOX_DATABASE_ACCESS);
                     },
                     E_DOX_DATABASE_ACCESS, QStringLiteral("Error creating references from source to destination file."),
                     true, true, false},
        HandOverCase{"ReferencesFail",
                     [](SwitchedVault &v, VaultStore &, const QString &) {
                         v.failOperation(QStringLiteral("References.Commit"), E_DOX_DATABASE_ACCESS);
                     },
                     E_DOX_DATABASE_ACCESS, QStringLiteral("Error creating references from source to destination file."),
                     true, true, false},
        HandOverCase{"CheckInServiceCannotBeMade",
                     [](SwitchedVault &v, VaultStore &, const QString &) {
                         v.failCreate(DoxUtil_BatchCheckIn, E_OUTOFMEMORY);
                     },
                     E_OUTOFMEMORY, QStringLiteral("Checking in all checked out docs."), true, true},
        HandOverCase{"CheckInFails",
                     [](SwitchedVault &v, VaultStore &, const QString &) {
                         v.failOperation(QStringLiteral("CheckIn.CheckIn"), E_DOX_DATABASE_ACCESS);
                     },
                     E_DOX_DATABASE_ACCESS, QStringLiteral("Unlocking files."), true, true}),
    [](const ::testing::TestParamInfo<HandOverCase> &info) { return std::string(info.param.name); });

TEST_F(RunDriverTest, WithoutRefToSourceNoReferenceServiceIsMade)
{
    const DoxCmdData part = source(QStringLiteral("A.mcdprt"));
    for (const std::optional<bool> refToSource : {std::optional<bool>(false), std::optional<bool>()}) {
        SCOPED_TRACE(refToSource ? "false" : "missing");
        newInstance();
        if (refToSource)
            instance->set(QStringLiteral("RefToSource"), Variant::fromBool(*refToSource));
        ASSERT_EQ(run({part}), S_OK);
        EXPECT_THAT(vault->callsOf(QStringLiteral("References")), IsEmpty());
        const auto output = file("Out/A.pdf");
        ASSERT_TRUE(output);
        EXPECT_EQ(output->lock, VaultLock::None);
        EXPECT_THAT(store->references(output->id, 0), IsEmpty());
    }
}

TEST_F(RunDriverTest, AFailedPutOfTheErrorLogIsTheRunsResult)
{
    cad->beforeMacro = [&](qsizetype) { driver.macroBuilder().AppendErrorLog(QStringLiteral("Sheet 2 is empty\n")); };
    vault->failAdd(QStringLiteral("V:\\") + instance->guid + ".log", E_DOX_IO_ERROR);
    const HRESULT hr = run({source(QStringLiteral("A.mcdprt"))});
    EXPECT_EQ(hr, E_DOX_IO_ERROR);
    // The outputs went in before the log.
    ASSERT_TRUE(file("Out/A.pdf"));
    EXPECT_EQ(file("Out/A.pdf")->lock, VaultLock::None);
    EXPECT_FALSE(file(instance->guid + ".log"));
    ASSERT_EQ(driver.Finish(*instance, hr), hr);
    EXPECT_EQ(instance->status, TaskStatus_FinishedWithError);
}

} // namespace
