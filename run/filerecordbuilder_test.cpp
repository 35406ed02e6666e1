#include "run/filerecordbuilder.h"

#include "host/hosterror.h"
#include "host/testing/fakevariables.h"
#include "run/testing/runfakes.h"

#include <gtest/gtest.h>

namespace {

DoxCmdData fileElement(std::int32_t id, std::int32_t folder, const QString &path, std::int32_t version,
                       const QString &conf = {})
{
    return DoxCmdData{id, folder, path, conf, DoxObject_File, version};
}

DoxCmdData folderElement(std::int32_t id)
{
    return DoxCmdData{id, 0, QStringLiteral("V:\\ignored"), QString(), DoxObject_Folder, 0};
}

QStringList paths(const std::vector<FileRecord> &records)
{
    QStringList out;
    for (const FileRecord &r : records)
        out.append(r.path);
    return out;
}

TEST(FileRecordBuilderTest, FilesBecomeRecordsInArrayOrder)
{
    const DoxCmdDataArray data{fileElement(11, 2, QStringLiteral("V:\\a\\Part.MCDPRT"), 3, QStringLiteral("Cfg")),
                               fileElement(12, 2, QStringLiteral("V:\\a\\README"), 1),
                               fileElement(13, 2, QStringLiteral("V:\\a.dir\\notes"), 1),
                               fileElement(14, 4, QStringLiteral("V:\\a\\name."), 1),
                               DoxCmdData{15, 2, QStringLiteral("V:\\a\\x.pdf"), QString(), 7, 1},
                               fileElement(16, 5, QStringLiteral("V:\\a\\sheet.pdf"), -1)};
    const auto records = buildFileRecords(nullptr, nullptr, data, false);
    ASSERT_EQ(paths(records),
              QStringList({QStringLiteral("V:\\a\\Part.MCDPRT"), QStringLiteral("V:\\a\\name."),
                           QStringLiteral("V:\\a\\sheet.pdf")}));

    const FileRecord &part = records[0];
    EXPECT_EQ(part.docId, 11);
    EXPECT_EQ(part.projId, 2);
    EXPECT_EQ(part.version, 3);
    EXPECT_EQ(part.sourceConf, QStringLiteral("Cfg"));
    EXPECT_EQ(part.altVersion, -1);
    EXPECT_TRUE(part.isCadDocument);
    EXPECT_EQ(part.source, nullptr);
    EXPECT_FALSE(part.checkedOut || part.isErrorLog || part.isPrintEntry || part.inVaultTree);
    EXPECT_FALSE(records[2].isCadDocument);
    EXPECT_EQ(records[2].version, -1);
}

TEST(FileRecordBuilderTest, FoldersExpandDepthFirstToFilesWithKnownExtensions)
{
    RunTestVault vault;
    auto top = vault.addFolder(10, QStringLiteral("V:\\Vault\\Top"));
    auto sub1 = vault.addFolder(11, QStringLiteral("V:\\Vault\\Top\\Sub1"));
    auto deep = vault.addFolder(12, QStringLiteral("V:\\Vault\\Top\\Sub1\\Deep"));
    auto sub2 = vault.addFolder(13, QStringLiteral("V:\\Vault\\Top\\Sub2"));
    top->subFolders = {sub1, sub2};
    sub1->subFolders = {deep};
    vault.addFile(top, 1, QStringLiteral("a.mcdprt"), 4);
    vault.addFile(top, 2, QStringLiteral("manual.pdf"));
    vault.addFile(top, 3, QStringLiteral("b.X_T"));
    vault.addFile(sub1, 4, QStringLiteral("c.3dm"));
    vault.addFile(deep, 5, QStringLiteral("d.STEP"));
    vault.addFile(deep, 6, QStringLiteral("step"));
    vault.addFile(sub2, 7, QStringLiteral("e.mcddrw"), 9);

    const DoxCmdDataArray data{folderElement(10), fileElement(1, 10, QStringLiteral("V:\\Vault\\Top\\a.mcdprt"), 4),
                               folderElement(99)};
    const auto records = buildFileRecords(&vault, nullptr, data, false);
    EXPECT_EQ(paths(records), QStringList({QStringLiteral("V:\\Vault\\Top\\a.mcdprt"),
                                           QStringLiteral("V:\\Vault\\Top\\b.X_T"),
                                           QStringLiteral("V:\\Vault\\Top\\Sub1\\c.3dm"),
                                           QStringLiteral("V:\\Vault\\Top\\Sub1\\Deep\\d.STEP"),
                                           QStringLiteral("V:\\Vault\\Top\\Sub2\\e.mcddrw"),
                                           // The same file selected on its own: no de-duplication.
                                           QStringLiteral("V:\\Vault\\Top\\a.mcdprt")}));
    EXPECT_EQ(records[0].docId, 1);
    EXPECT_EQ(records[0].projId, 10);
    EXPECT_EQ(records[0].version, 4);
    EXPECT_TRUE(records[0].isCadDocument);
    EXPECT_EQ(records[4].projId, 13);
    EXPECT_EQ(records[4].version, 9);
    EXPECT_TRUE(records[3].sourceConf.isEmpty());

    // Without a vault a folder contributes nothing.
    EXPECT_EQ(buildFileRecords(nullptr, nullptr, {folderElement(10)}, false).size(), 0u);
}

TEST(FileRecordBuilderTest, VaultFailuresWhileExpandingRaise)
{
    RunTestVault vault;
    auto top = vault.addFolder(10, QStringLiteral("V:\\Vault\\Top"));
    top->filesResult = E_DOX_DATABASE_ACCESS;
    try {
        buildFileRecords(&vault, nullptr, {folderElement(10)}, false);
        FAIL() << "expected a HostError";
    } catch (const HostError &error) {
        EXPECT_EQ(error.code(), E_DOX_DATABASE_ACCESS);
    }

    top->filesResult = S_OK;
    vault.addFile(top, 1, QStringLiteral("a.mcdprt"))->localPathResult = E_DOX_IO_ERROR;
    EXPECT_THROW(buildFileRecords(&vault, nullptr, {folderElement(10)}, false), HostError);

    vault.folderResult = E_DOX_INVALID_ID;
    EXPECT_THROW(buildFileRecords(&vault, nullptr, {folderElement(10)}, false), HostError);
}

TEST(FileRecordBuilderTest, AtRunTheReferenceServiceSetsAltVersion)
{
    RunTestVault vault;
    FakeVariables holder;
    holder.set(QStringLiteral("__printer_refversiontype"), Variant::fromI4(2));
    const DoxCmdDataArray data{fileElement(1, 5, QStringLiteral("V:\\a.mcdprt"), 3),
                               fileElement(2, 6, QStringLiteral("V:\\b.mcddrw"), 0)};

    auto records = buildFileRecords(&vault, &holder, data, true);
    ASSERT_EQ(records.size(), 2u);
    EXPECT_EQ(vault.referenceSetting, 2);
    ASSERT_EQ(vault.referenceQueries.size(), 2u);
    EXPECT_EQ(vault.referenceQueries[1].docId, 2);
    EXPECT_EQ(vault.referenceQueries[1].folderId, 6);
    EXPECT_EQ(vault.referenceQueries[1].version, 0);
    EXPECT_EQ(vault.referenceQueries[1].path, QStringLiteral("V:\\b.mcddrw"));
    EXPECT_EQ(records[0].altVersion, 103);
    EXPECT_EQ(records[1].altVersion, 100);
    EXPECT_EQ(records[1].effectiveVersion(), 100);
    EXPECT_EQ(records[0].effectiveVersion(), 3);

    // "SourceRefs" takes precedence, also when stored as text.
    holder.set(QStringLiteral("SourceRefs"), Variant::fromBStr(QStringLiteral("1")));
    buildFileRecords(&vault, &holder, data, true);
    EXPECT_EQ(vault.referenceSetting, 1);

    // Not at launch.
    vault.referenceSetting = -1;
    records = buildFileRecords(&vault, &holder, data, false);
    EXPECT_EQ(vault.referenceSetting, -1);
    EXPECT_EQ(records[0].altVersion, -1);
}

TEST(FileRecordBuilderTest, AtRunHostFailuresRaise)
{
    RunTestVault vault;
    FakeVariables holder;
    const DoxCmdDataArray data{fileElement(1, 5, QStringLiteral("V:\\a.mcdprt"), 3)};

    vault.referenceResult = E_DOX_DATABASE_ACCESS;
    EXPECT_THROW(buildFileRecords(&vault, &holder, data, true), HostError);

    vault.referenceResult = S_OK;
    holder.failRead(QStringLiteral("SourceRefs"), E_ACCESSDENIED);
    try {
        buildFileRecords(&vault, &holder, data, true);
        FAIL() << "expected a HostError";
    } catch (const HostError &error) {
        EXPECT_EQ(error.code(), E_ACCESSDENIED);
    }
}

} // namespace
