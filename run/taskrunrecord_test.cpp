#include "run/taskrunrecord.h"

#include "host/testing/faketask.h"
#include "platform/drivemap.h"
#include "platform/memoryfilesystem.h"
#include "run/filelistxml.h"
#include "run/testing/runfakes.h"

#include <gtest/gtest.h>

namespace {

// The vault's drive V: lives in memory at /mnt/v.
class TaskRunRecordTest : public ::testing::Test
{
protected:
    TaskRunRecordTest()
    {
        m_drives.mount(QLatin1Char('V'), QStringLiteral("/mnt/v"));
        m_fs.mkpath(QStringLiteral("/mnt/v/Vault/Out"));
        m_out = m_vault->addFolder(20, QStringLiteral("V:\\Vault\\Out"));
        m_record.setVaultClientNotifier([this](std::int32_t code, const QString &path) {
            m_notified.push_back({code, path});
        });
    }

    void startRun(bool replaceOutput, std::int32_t type = 1)
    {
        ASSERT_EQ(m_record.start(m_vault, type, replaceOutput), S_OK);
        m_source = std::make_shared<FileRecord>();
        m_source->path = QStringLiteral("V:\\Vault\\p.mcdprt");
        m_source->docId = 7;
        m_record.setCurrentSource(m_source);
    }

    MemoryFileSystem m_fs;
    ScopedFileSystem m_fsGuard{m_fs};
    DriveMap m_drives;
    ScopedDriveMap m_drivesGuard{m_drives};
    std::shared_ptr<RunTestVault> m_vault = std::make_shared<RunTestVault>();
    std::shared_ptr<RunTestFolder> m_out;
    std::shared_ptr<FileRecord> m_source;
    TaskRunRecord m_record;
    std::vector<std::pair<std::int32_t, QString>> m_notified;
};

TEST_F(TaskRunRecordTest, StartEmptiesTheListAndFailsWithoutTheVaultRoot)
{
    startRun(false);
    m_record.registerPrintEntry(QStringLiteral("x"), QString());
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\a.pdf"), QString(), false);
    ASSERT_EQ(m_record.start(m_vault, 2, true), S_OK);
    EXPECT_TRUE(m_record.records().empty());
    EXPECT_EQ(m_record.currentSource(), nullptr);
    // The earlier output no longer counts as registered.
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\a.pdf"), QString(), false);
    EXPECT_EQ(m_record.records().size(), 1u);

    m_vault->rootResult = E_DOX_CANT_OPEN_DATABASE;
    EXPECT_EQ(m_record.start(m_vault, 1, false), E_DOX_CANT_OPEN_DATABASE);
    EXPECT_TRUE(m_record.records().empty());
}

TEST_F(TaskRunRecordTest, NewOutputClearsAndDeletesTheLocalFileAndNotifiesThreeTimes)
{
    startRun(false);
    m_fs.addFile(QStringLiteral("/mnt/v/Vault/Out/Part.pdf"), "old");
    m_fs.setWritable(QStringLiteral("/mnt/v/Vault/Out/Part.pdf"), false);

    m_record.registerOutput(QStringLiteral("v:\\Vault\\Sub\\..\\Out\\.\\Part.pdf"), QStringLiteral("Default"), false);

    EXPECT_FALSE(m_fs.exists(QStringLiteral("/mnt/v/Vault/Out/Part.pdf")));
    ASSERT_EQ(m_record.records().size(), 1u);
    const FileRecord &out = m_record.records()[0];
    EXPECT_EQ(out.path, QStringLiteral("V:\\Vault\\Out\\Part.pdf")); // drive letters are canonical in upper case
    EXPECT_EQ(out.conf, QStringLiteral("Default"));
    EXPECT_EQ(out.source, m_source);
    EXPECT_EQ(out.docId, 0);
    EXPECT_TRUE(out.inVaultTree);
    EXPECT_FALSE(out.checkedOut || out.isErrorLog || out.isPrintEntry || out.isCadDocument);
    ASSERT_EQ(m_notified.size(), 3u);
    for (const auto &[code, path] : m_notified) {
        EXPECT_EQ(code, 1);
        EXPECT_EQ(path, QStringLiteral("V:\\Vault\\Out\\Part.pdf"));
    }

    // Outside the vault tree; nothing local to delete.
    m_record.registerOutput(QStringLiteral("C:\\Temp\\x.mcddrw"), QString(), false);
    EXPECT_FALSE(m_record.records()[1].inVaultTree);
    EXPECT_TRUE(m_record.records()[1].isCadDocument);
    // A vault failure on look-up counts as unknown.
    m_vault->lookupResult = E_DOX_DATABASE_ACCESS;
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\y.pdf"), QString(), false);
    EXPECT_EQ(m_record.records().size(), 3u);
}

TEST_F(TaskRunRecordTest, RepeatedSavesOfOnePathGiveOneRecord)
{
    startRun(false);
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\Part.PDF"), QStringLiteral("A"), false);
    m_record.registerOutput(QStringLiteral("v:\\vault\\out\\part.pdf"), QStringLiteral("B"), false);
    m_record.registerOutput(QStringLiteral("V:/Vault/Out/x/../Part.pdf"), QStringLiteral("C"), false);
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\Part.pdf"), QStringLiteral("D"), true);
    m_record.registerOutput(QString(), QStringLiteral("E"), false);
    ASSERT_EQ(m_record.records().size(), 1u);
    EXPECT_EQ(m_record.records()[0].conf, QStringLiteral("A"));
    EXPECT_EQ(m_notified.size(), 3u);

    // An error log blocks a later output of the same path, and print entries
    // are never de-duplicated.
    m_record.registerOutput(QStringLiteral("V:\\Vault\\task.log"), QString(), true);
    m_record.registerOutput(QStringLiteral("V:\\VAULT\\TASK.LOG"), QString(), false);
    m_record.registerPrintEntry(QStringLiteral("P"), QString());
    m_record.registerPrintEntry(QStringLiteral("P"), QString());
    EXPECT_EQ(m_record.records().size(), 4u);

    // A record appended by the vault hand-over takes part too.
    FileRecord log;
    log.path = QStringLiteral("V:\\Vault\\other.log");
    log.isErrorLog = true;
    m_record.appendRecord(log);
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Other.LOG"), QString(), true);
    EXPECT_EQ(m_record.records().size(), 5u);
}

TEST_F(TaskRunRecordTest, KnownFileIsCheckedOutUnlessAlreadyLocked)
{
    startRun(false);
    auto known = m_vault->addFile(m_out, 31, QStringLiteral("known.pdf"));
    m_fs.addFile(QStringLiteral("/mnt/v/Vault/Out/known.pdf"), "v1");

    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\KNOWN.pdf"), QString(), false);
    ASSERT_EQ(m_record.records().size(), 1u);
    EXPECT_EQ(m_record.records()[0].docId, 31);
    EXPECT_EQ(m_record.records()[0].projId, 20);
    EXPECT_TRUE(m_record.records()[0].checkedOut);
    EXPECT_EQ(known->lockCalls, std::vector<std::int32_t>{20});
    EXPECT_TRUE(known->deleteCalls.empty());
    EXPECT_TRUE(m_notified.empty());
    EXPECT_TRUE(m_fs.exists(QStringLiteral("/mnt/v/Vault/Out/known.pdf"))); // the local copy stays

    auto locked = m_vault->addFile(m_out, 32, QStringLiteral("locked.pdf"));
    locked->locked = true;
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\locked.pdf"), QString(), false);
    EXPECT_TRUE(locked->lockCalls.empty());
    EXPECT_TRUE(m_record.records().back().checkedOut);

    auto refused = m_vault->addFile(m_out, 33, QStringLiteral("refused.pdf"));
    refused->lockResult = E_DOX_FILE_IS_LOCKED;
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\refused.pdf"), QString(), false);
    EXPECT_EQ(m_record.records().size(), 2u);
    // A dropped record may be registered again on the next save.
    refused->lockResult = S_OK;
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\refused.pdf"), QString(), false);
    EXPECT_EQ(m_record.records().size(), 3u);
}

TEST_F(TaskRunRecordTest, ReplaceOutputDeletesTheKnownFileAndTreatsTheOutputAsNew)
{
    startRun(true);
    auto known = m_vault->addFile(m_out, 31, QStringLiteral("known.pdf"));

    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\known.pdf"), QString(), false);
    ASSERT_EQ(m_record.records().size(), 1u);
    EXPECT_EQ(m_record.records()[0].docId, 0);
    EXPECT_FALSE(m_record.records()[0].checkedOut);
    EXPECT_EQ(known->deleteCalls, std::vector<std::int32_t>{20});
    EXPECT_TRUE(known->lockCalls.empty());
    EXPECT_EQ(m_notified.size(), 4u); // once before the delete, three times as a new file

    auto undeletable = m_vault->addFile(m_out, 32, QStringLiteral("keep.pdf"));
    undeletable->deleteResult = E_ACCESSDENIED;
    m_notified.clear();
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\keep.pdf"), QString(), false);
    EXPECT_EQ(m_record.records().size(), 1u);
    EXPECT_EQ(m_notified.size(), 1u);
}

TEST_F(TaskRunRecordTest, ErrorLogKnownToTheVaultIsDropped)
{
    startRun(false);
    auto log = m_vault->addFile(m_out, 40, QStringLiteral("task.log"));
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\task.log"), QString(), true);
    EXPECT_TRUE(m_record.records().empty());
    EXPECT_TRUE(log->lockCalls.empty());

    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\new.log"), QString(), true);
    ASSERT_EQ(m_record.records().size(), 1u);
    EXPECT_TRUE(m_record.records()[0].isErrorLog);
}

TEST_F(TaskRunRecordTest, CountsAndErrorsLookAtFilesOnDisk)
{
    startRun(false);
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\a.pdf"), QString(), false);
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\b.pdf"), QString(), false);
    m_record.registerOutput(QStringLiteral("V:\\Outside\\c.pdf"), QString(), false);
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\task.log"), QString(), true);
    m_record.registerPrintEntry(QStringLiteral("P"), QString());
    EXPECT_EQ(m_record.countOutputs(true, true), 0);
    EXPECT_FALSE(m_record.hasErrors());

    // The CAD application writes the files after they were registered.
    m_fs.addFile(QStringLiteral("/mnt/v/Vault/Out/a.pdf"), "x");
    m_fs.addFile(QStringLiteral("/mnt/v/Outside/c.pdf"), "x");
    EXPECT_EQ(m_record.countOutputs(false, false), 1);
    EXPECT_EQ(m_record.countOutputs(false, true), 2);
    EXPECT_FALSE(m_record.hasErrors());
    m_fs.addFile(QStringLiteral("/mnt/v/Vault/Out/task.log"), "error");
    EXPECT_TRUE(m_record.hasErrors());
    EXPECT_EQ(m_record.countOutputs(true, false), 2);
    EXPECT_EQ(m_record.countOutputs(true, true), 3);
    EXPECT_EQ(m_record.countOutputs(false, true), 2);
}

TEST_F(TaskRunRecordTest, SelectionAndOutputListsGoToTheirVariables)
{
    FakeTaskInstance instance;
    const DoxCmdDataArray data{DoxCmdData{1, 2, QStringLiteral("V:\\Vault\\p.mcdprt"), QString(), DoxObject_File, 3},
                               DoxCmdData{9, 2, QStringLiteral("V:\\Vault\\README"), QString(), DoxObject_File, 1}};
    ASSERT_EQ(m_record.storeSelection(m_vault, instance, data), S_OK);
    ASSERT_EQ(m_record.records().size(), 1u);
    std::vector<FileRecord> read;
    ASSERT_EQ(TaskRunRecord::readList(instance, false, read), S_OK);
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].path, QStringLiteral("V:\\Vault\\p.mcdprt"));
    EXPECT_EQ(read[0].docId, 1);
    EXPECT_EQ(read[0].version, 3);
    EXPECT_EQ(instance.value(QStringLiteral("__selection_list")).type(), VarType::BStr);
    EXPECT_FALSE(instance.has(QStringLiteral("__output_list")));
    EXPECT_EQ(TaskRunRecord::readList(instance, true, read), S_FALSE);
    EXPECT_TRUE(read.empty());

    startRun(false);
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\p.pdf"), QStringLiteral("Default"), false);
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\task.log"), QString(), true);
    ASSERT_EQ(m_record.storeOutputList(instance), S_OK);
    ASSERT_EQ(TaskRunRecord::readList(instance, true, read), S_OK);
    ASSERT_EQ(read.size(), 1u);
    EXPECT_EQ(read[0].path, m_source->path);
    EXPECT_EQ(read[0].docId, 7);
    EXPECT_EQ(read[0].info, QStringLiteral("V:\\Vault\\Out\\p.pdf"));
    EXPECT_EQ(read[0].conf, QStringLiteral("Default"));
}

TEST_F(TaskRunRecordTest, ListFailuresAreReturnedWithAnEmptyList)
{
    FakeTaskInstance instance;
    std::vector<FileRecord> read{FileRecord{}};

    instance.failRead(QStringLiteral("__output_list"), E_DOX_DATABASE_ACCESS);
    EXPECT_EQ(TaskRunRecord::readList(instance, true, read), E_DOX_DATABASE_ACCESS);
    EXPECT_TRUE(read.empty());

    instance.set(QStringLiteral("__selection_list"), Variant::fromBStr(QStringLiteral("<sels><sel>")));
    read.resize(2);
    EXPECT_EQ(TaskRunRecord::readList(instance, false, read), S_OK);
    EXPECT_TRUE(read.empty());

    instance.set(QStringLiteral("__selection_list"), Variant::other());
    EXPECT_LT(TaskRunRecord::readList(instance, false, read), 0);

    // A value XML cannot carry: nothing is written.
    startRun(false);
    m_record.registerOutput(QStringLiteral("V:\\Vault\\Out\\p.pdf"), QStringLiteral("\x07"), false);
    EXPECT_EQ(m_record.storeOutputList(instance), E_INVALIDARG);
    EXPECT_FALSE(instance.has(QStringLiteral("__output_list")));

    instance.failWrite(QStringLiteral("__selection_list"), E_ACCESSDENIED);
    EXPECT_EQ(m_record.storeSelectionList(instance, {FileRecord{}}), E_ACCESSDENIED);

    // A host failure while a folder is expanded is the launch's result.
    m_vault->folderResult = E_DOX_INVALID_ID;
    instance.failWrite(QStringLiteral("__selection_list"), S_OK);
    const DoxCmdDataArray data{DoxCmdData{5, 0, QStringLiteral("V:\\Vault\\F"), QString(), DoxObject_Folder, 0}};
    EXPECT_EQ(m_record.storeSelection(m_vault, instance, data), E_DOX_INVALID_ID);
}

} // namespace
