#include "vault/batchservices.h"

#include "platform/drivemap.h"
#include "vault/vaulttesting.h"

namespace {

class BatchTest : public VaultBackendTest
{
protected:
    TempVault temp{QStringLiteral("alice"), server()};
    std::shared_ptr<VaultStore> store = temp.store;
};
INSTANTIATE_TEST_SUITE_P(Backends, BatchTest, VaultBackends);

TEST_P(BatchTest, AddCommitsAllFilesAndReportsEachOne)
{
    const int existing = store->addFile(temp.outsideFile("e", "old"), "Out", "taken.pdf", {}).id;
    const QString inTree = temp.localFile("Out/a.pdf", "a");
    const QString outside = temp.outsideFile("b.pdf", "b");
    temp.localFile("Out/taken.pdf", "new");

    DriveMap drives;
    ScopedDriveMap scopedDrives(drives);
    drives.mount('C', QFileInfo(outside).absolutePath());
    VaultBatchAdd add(store);
    EXPECT_EQ(add.AddFileFromPath(QStringLiteral("V:\\out\\a.pdf"), QStringLiteral("V:\\Out")), S_OK);
    EXPECT_EQ(add.AddFileFromPath(outside, QStringLiteral("V:\\Out\\New")), S_OK);
    EXPECT_EQ(add.AddFileFromPath(temp.root() + "/Out/taken.pdf", QStringLiteral("V:\\OUT")), S_OK);
    EXPECT_EQ(add.AddFileFromPath(QStringLiteral("V:\\Out\\none.pdf"), QStringLiteral("V:\\Out")), E_DOX_FILE_NOT_FOUND);
    EXPECT_EQ(add.AddFileFromPath(QStringLiteral("C:\\B.PDF"), QStringLiteral("V:\\Out\\Mapped")), S_OK);
    EXPECT_EQ(add.AddFileFromPath(QStringLiteral("D:\\x.pdf"), QStringLiteral("V:\\Out")), E_INVALIDARG);
    EXPECT_EQ(add.AddFileFromPath(inTree, QStringLiteral("W:\\Out")), E_DOX_FOLDER_NOT_FOUND);

    std::vector<DoxBatchAddResult> results;
    ASSERT_EQ(add.CommitAdd(results), S_OK);
    ASSERT_EQ(results.size(), 4u);
    EXPECT_EQ(results[0].result, S_OK);
    EXPECT_EQ(results[0].path, QStringLiteral("V:\\Out\\a.pdf"));
    EXPECT_GT(results[0].docId, 0);
    EXPECT_EQ(results[1].result, S_OK);
    EXPECT_EQ(results[1].path, QStringLiteral("V:\\Out\\New\\b.pdf"));
    EXPECT_EQ(results[2].result, E_DOX_NAME_ALREADY_EXISTS);
    EXPECT_EQ(results[2].docId, 0);
    EXPECT_EQ(results[3].result, S_OK);
    EXPECT_EQ(results[3].path, QStringLiteral("V:\\Out\\Mapped\\b.pdf"));

    const auto a = store->fileById(results[0].docId);
    EXPECT_EQ(a->lock, VaultLock::Added); // checked out until the check-in
    EXPECT_EQ(a->folderId, results[0].folderId);
    EXPECT_EQ(store->readVersion(results[1].docId, 1), QByteArray("b"));
    EXPECT_EQ(TempVault::readFile(temp.root() + "/Out/New/b.pdf"), QByteArray("b"));
    EXPECT_EQ(store->readVersion(existing, 0), QByteArray("old"));

    // The queue is spent by the commit.
    ASSERT_EQ(add.CommitAdd(results), S_OK);
    EXPECT_TRUE(results.empty());
}

TEST_P(BatchTest, CheckInStoresEverySelectedFileOrNone)
{
    VaultStore::AddOptions keep;
    keep.keepCheckedOut = true;
    const auto a = store->addFile(temp.localFile("a.txt", "a"), QString(), "a.txt", keep);
    const auto b = store->addFile(temp.localFile("b.txt", "b"), QString(), "b.txt", {});
    store->checkOut(b.id, 0);
    temp.localFile("b.txt", "b2");
    const auto c = store->addFile(temp.localFile("c.txt", "c"), QString(), "c.txt", {});

    VaultBatchCheckIn bad(store);
    bad.SetComment(QStringLiteral("Mecadra Task Add-in"));
    bad.AddSelection({{b.id, b.folderId}, {c.id, c.folderId}});
    EXPECT_EQ(bad.CreateTree(), E_DOX_FILE_NOT_LOCKED_BY_YOU);
    EXPECT_EQ(bad.CheckIn(), E_DOX_FILE_NOT_LOCKED_BY_YOU);
    // b was checked in before c failed inside the same transaction: undone.
    EXPECT_EQ(store->fileById(b.id)->lock, VaultLock::CheckedOut);
    EXPECT_EQ(store->fileById(b.id)->latestVersion, 1);

    VaultBatchCheckIn good(store);
    good.SetComment(QStringLiteral("Mecadra Task Add-in"));
    good.AddSelection({{a.id, a.folderId}, {b.id, b.folderId}, {a.id, a.folderId}});
    EXPECT_EQ(good.CreateTree(), S_OK);
    EXPECT_EQ(good.CheckIn(), S_OK);
    EXPECT_EQ(store->fileById(a.id)->latestVersion, 1);
    EXPECT_EQ(store->fileById(b.id)->latestVersion, 2);
    EXPECT_EQ(store->version(b.id, 2)->comment, QStringLiteral("Mecadra Task Add-in"));
    EXPECT_EQ(store->readVersion(b.id, 2), QByteArray("b2"));
    EXPECT_EQ(store->fileById(a.id)->lock, VaultLock::None);
}

TEST_P(BatchTest, ReferencesAndCardUpdatesCommitTogether)
{
    const auto src = store->addFile(temp.outsideFile("s", "s"), QString(), "src.mcdprt", {});
    const auto out = store->addFile(temp.outsideFile("o", "o"), QString(), "out.pdf", {});
    VaultCustomReferences refs(store);
    bool needed = true;
    EXPECT_EQ(refs.IsCommitNeeded(needed), S_OK);
    EXPECT_FALSE(needed);
    refs.AddReferences(out.id, {{src.id, src.folderId}});
    EXPECT_EQ(refs.IsCommitNeeded(needed), S_OK);
    EXPECT_TRUE(needed);
    EXPECT_EQ(refs.Commit(), S_OK);
    ASSERT_EQ(store->references(out.id, 0).size(), 1u);
    EXPECT_EQ(store->references(out.id, 0)[0].childId, src.id);

    VaultCustomReferences broken(store);
    broken.AddReferences(src.id, {{out.id, out.folderId}, {9999, 1}});
    EXPECT_EQ(broken.Commit(), E_DOX_FILE_NOT_FOUND);
    EXPECT_TRUE(store->references(src.id, 0).empty());

    store->defineCardVariable(QStringLiteral("Title"));
    VaultBatchUpdate update(store);
    update.SetVariable(out.id, QStringLiteral("Title"), QString(), Variant::fromBStr("Converted"));
    update.SetVariable(out.id, QStringLiteral("NoSuchVariable"), QString(), Variant::fromI4(1));
    EXPECT_EQ(update.Commit(), E_DOX_VARIABLE_NOT_FOUND);
    EXPECT_FALSE(store->cardValue(out.id, 0, "Title", QString()).has_value());

    VaultBatchUpdate good(store);
    good.SetVariable(out.id, QStringLiteral("title"), QString(), Variant::fromBStr("Converted"));
    good.SetVariable(out.id, QStringLiteral("Title"), QStringLiteral("Sheet1"), Variant::fromBStr("Sheet"));
    EXPECT_EQ(good.Commit(), S_OK);
    EXPECT_EQ(store->cardValue(out.id, 0, "Title", QString())->bstr(), QStringLiteral("Converted"));
    EXPECT_EQ(store->cardValue(out.id, 0, "Title", "Sheet1")->bstr(), QStringLiteral("Sheet"));
}

// top (v1 -> sub v1) ; sub gets v2 with its own reference to leaf; top v2
// is never made, so "as built" stops at sub v1 while "latest" goes on.
TEST_P(BatchTest, ListingShowsReferencedOrLatestVersions)
{
    const auto top = store->addFile(temp.outsideFile("t", "t"), "Asm", "top.mcdasm", {});
    const auto sub = store->addFile(temp.outsideFile("s", "s"), "Asm", "sub.mcdasm", {});
    const auto leaf = store->addFile(temp.outsideFile("l", "l"), "Parts", "leaf.mcdprt", {});
    store->addReference(top.id, sub.id, QStringLiteral("Default"));
    store->checkOut(sub.id, 0);
    store->checkIn(sub.id, QString());
    store->addReference(sub.id, leaf.id, QStringLiteral("Big"));
    store->addReference(leaf.id, top.id, QString()); // a cycle must not loop

    const QString columns = QStringLiteral("\n#DoxCol_Name\n#DoxCol_Path\n#DoxCol_Configuration\n#DoxCol_ParentFileID\n"
                                           "#DoxCol_ParentFileConfiguration\n#DoxCol_DoxListRetFileFlag\n"
                                           "#DoxCol_AttachedVersion");
    VaultBatchListing listing(store);
    EXPECT_EQ(listing.AddFile(QStringLiteral("V:\\asm\\TOP.mcdasm")), S_OK);
    EXPECT_EQ(listing.AddFile(QStringLiteral("V:\\asm\\none.mcdasm")), E_DOX_FILE_NOT_FOUND);
    std::vector<DoxListingRow> rows;
    ASSERT_EQ(listing.CreateList(columns, DoxListing_ReferencedVersions, rows), S_OK);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].name, QStringLiteral("top.mcdasm"));
    EXPECT_EQ(rows[0].path, QStringLiteral("V:\\Asm"));
    EXPECT_EQ(rows[0].parentFileId, 0);
    EXPECT_EQ(rows[0].retFlag, VaultBatchListing::ListedFile);
    EXPECT_EQ(rows[1].fileId, sub.id);
    EXPECT_EQ(rows[1].configuration, QStringLiteral("Default"));
    EXPECT_EQ(rows[1].parentFileId, top.id);
    EXPECT_EQ(rows[1].attachedVersion, 1);
    EXPECT_EQ(rows[1].retFlag, VaultBatchListing::Reference);

    ASSERT_EQ(listing.CreateList(columns, DoxListing_LatestVersions, rows), S_OK);
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[1].attachedVersion, 2);
    EXPECT_EQ(rows[2].fileId, leaf.id);
    EXPECT_EQ(rows[2].parentFileId, sub.id);
    EXPECT_EQ(rows[2].parentConfiguration, QStringLiteral("Default"));
    EXPECT_EQ(rows[2].configuration, QStringLiteral("Big"));
    EXPECT_EQ(rows[3].fileId, top.id); // the cycle's back edge, listed once
    EXPECT_EQ(rows[3].parentFileId, leaf.id);

    EXPECT_EQ(listing.CreateList(QStringLiteral("\n#DoxCol_Bogus"), DoxListing_LatestVersions, rows), E_INVALIDARG);
}

TEST_P(BatchTest, ListingAFolderTakesEveryFileBelowItOnce)
{
    const auto a = store->addFile(temp.outsideFile("a", "a"), "F", "a.txt", {});
    const auto b = store->addFile(temp.outsideFile("b", "b"), "F\\G", "b.txt", {});
    store->addFile(temp.outsideFile("c", "c"), "H", "c.txt", {});
    VaultBatchListing listing(store);
    EXPECT_EQ(listing.AddFile(QStringLiteral("V:\\F\\G\\b.txt")), S_OK);
    EXPECT_EQ(listing.AddFolder(store->folderByPath("F")->id), S_OK);
    EXPECT_EQ(listing.AddFolder(4242), E_DOX_FOLDER_NOT_FOUND);
    std::vector<DoxListingRow> rows;
    ASSERT_EQ(listing.CreateList(QString(), DoxListing_LatestVersions, rows), S_OK);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].fileId, b.id);
    EXPECT_EQ(rows[1].fileId, a.id);
}

} // namespace
