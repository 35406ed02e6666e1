#include "run/taskrundriver.h"

#include "host/hosterror.h"
#include "host/testing/faketask.h"
#include "platform/clock.h"
#include "platform/drivemap.h"
#include "run/filecardmapping.h"
#include "run/taskrunrecord.h"
#include "vault/embeddedvault.h"
#include "vault/vaulttesting.h"

#include <gmock/gmock.h>

namespace {

using ::testing::ElementsAre;

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
    std::shared_ptr<EmbeddedVault> vault = std::make_shared<EmbeddedVault>(store);
    DriveMap drives;
    ScopedDriveMap scopedDrives{drives};
    FakeClock clock;
    ScopedClock scopedClock{clock};
    std::shared_ptr<FakeTaskInstance> instance = std::make_shared<FakeTaskInstance>();
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
    const DoxCmdData plate = source(QStringLiteral("Plate.mcdprt"), QStringLiteral("C"));
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
    EXPECT_EQ(store->readVersion(log->id),
              "An error occured: V:\\Parts\\B.mcdprt: Macro run failed 0 (error 0)\r\n\t0x80040301");
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

} // namespace
