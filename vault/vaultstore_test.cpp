#include "vault/vaultstore.h"

#include "host/hosterror.h"
#include "platform/clock.h"
#include "vault/taskstore.h"
#include "vault/vaulttesting.h"
#include "vault/vaultschema.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QUuid>

#include <chrono>
#include <thread>

namespace {

// What lies staged in the vault's journal (its owners' lock files aside).
QStringList stagedFiles(const QString &root)
{
    return QDir(LocalJournal::stagingFolder(root)).entryList(QDir::Files).filter(QRegularExpression("-[0-9]+$"));
}

HRESULT codeOf(const std::function<void()> &f)
{
    try {
        f();
    } catch (const HostError &e) {
        return e.code();
    }
    return S_OK;
}

using VaultStoreTest = VaultBackendTest;
INSTANTIATE_TEST_SUITE_P(Backends, VaultStoreTest, VaultBackends);

TEST(VaultPaths, WindowsAndNativeFormsMapToOneRelativePath)
{
    const VaultPaths paths('v', QStringLiteral("/data/vault"));
    QString rel;
    EXPECT_TRUE(paths.toRelative(QStringLiteral("v:\\Parts\\.\\Sub\\..\\a.mcdprt"), rel));
    EXPECT_EQ(rel, QStringLiteral("Parts\\a.mcdprt"));
    EXPECT_TRUE(paths.toRelative(QStringLiteral("/data/vault/Parts//b.txt"), rel));
    EXPECT_EQ(rel, QStringLiteral("Parts\\b.txt"));
    EXPECT_TRUE(paths.toRelative(QStringLiteral("V:\\"), rel));
    EXPECT_EQ(rel, QString());
    EXPECT_TRUE(paths.toRelative(QStringLiteral("/data/vault"), rel));
    EXPECT_EQ(rel, QString());

    EXPECT_FALSE(paths.toRelative(QStringLiteral("C:\\Parts\\a.mcdprt"), rel));
    EXPECT_FALSE(paths.toRelative(QStringLiteral("V:\\..\\x"), rel));
    EXPECT_FALSE(paths.toRelative(QStringLiteral("/data/vault2/a"), rel));
    EXPECT_FALSE(paths.toRelative(QStringLiteral("relative\\a"), rel));

    EXPECT_EQ(paths.windowsRoot(), QStringLiteral("V:"));
    EXPECT_EQ(paths.toWindows(QStringLiteral("Parts\\a")), QStringLiteral("V:\\Parts\\a"));
    EXPECT_EQ(paths.toNative(QStringLiteral("Parts\\a")), QStringLiteral("/data/vault/Parts/a"));
}

TEST_P(VaultStoreTest, KeepsEveryVersionAndItsBytes)
{
    TempVault vault(QStringLiteral("alice"), server());
    VaultStore &store = *vault.store;
    const QString source = vault.outsideFile(QStringLiteral("a.txt"), "one");
    const VaultFileRow added = store.addFile(source, QStringLiteral("Parts\\Sub"), QStringLiteral("a.txt"), {});
    EXPECT_EQ(added.latestVersion, 1);
    EXPECT_EQ(added.path, QStringLiteral("Parts\\Sub\\a.txt"));
    EXPECT_EQ(added.lock, VaultLock::None);
    // The bytes were copied into the local view.
    EXPECT_EQ(TempVault::readFile(vault.root() + "/Parts/Sub/a.txt"), QByteArray("one"));

    store.checkOut(added.id, 0);
    TempVault::writeFile(vault.root() + "/Parts/Sub/a.txt", "two");
    EXPECT_EQ(store.checkIn(added.id, QStringLiteral("second")), 2);
    store.checkOut(added.id, 0);
    TempVault::writeFile(vault.root() + "/Parts/Sub/a.txt", "");
    EXPECT_EQ(store.checkIn(added.id, QString()), 3);

    EXPECT_EQ(store.readVersion(added.id, 1), QByteArray("one"));
    EXPECT_EQ(store.readVersion(added.id, 2), QByteArray("two"));
    EXPECT_EQ(store.readVersion(added.id, 3), QByteArray());
    EXPECT_EQ(store.readVersion(added.id, 0), QByteArray());
    EXPECT_EQ(codeOf([&] { store.readVersion(added.id, 4); }), E_INVALIDARG);
    EXPECT_EQ(codeOf([&] { store.readVersion(999, 1); }), E_DOX_FILE_NOT_FOUND);

    const auto versions = store.versions(added.id);
    ASSERT_EQ(versions.size(), 3u);
    EXPECT_EQ(versions[1].comment, QStringLiteral("second"));
    EXPECT_EQ(versions[1].size, 3);
    EXPECT_EQ(versions[1].user, QStringLiteral("alice"));
}

TEST_P(VaultStoreTest, CheckInMakesANewVersionOnlyWhenNeeded)
{
    TempVault vault(QStringLiteral("alice"), server());
    VaultStore &store = *vault.store;
    VaultStore::AddOptions keep;
    keep.keepCheckedOut = true;
    const QString local = vault.localFile(QStringLiteral("a.txt"), "x");
    const VaultFileRow added = store.addFile(local, QString(), QStringLiteral("a.txt"), keep);
    EXPECT_EQ(added.lock, VaultLock::Added);
    // Freshly added and unchanged: the check-in only releases the lock.
    EXPECT_EQ(store.checkIn(added.id, QString()), 1);
    EXPECT_EQ(store.fileById(added.id)->lock, VaultLock::None);
    // An explicit check-out always yields a version, changed or not.
    store.checkOut(added.id, 0);
    EXPECT_EQ(store.checkIn(added.id, QString()), 2);
    EXPECT_EQ(codeOf([&] { store.checkIn(added.id, QString()); }), E_DOX_FILE_NOT_LOCKED_BY_YOU);
}

TEST_P(VaultStoreTest, NewVersionsCarryLabelsCardsAndReferences)
{
    TempVault vault(QStringLiteral("alice"), server());
    VaultStore &store = *vault.store;
    VaultStore::AddOptions options;
    options.revision = QStringLiteral("A");
    options.state = QStringLiteral("Released");
    const int asm1 = store.addFile(vault.outsideFile("asm", "asm"), QString(), "top.mcdasm", options).id;
    const int part = store.addFile(vault.outsideFile("prt", "prt"), QString(), "part.mcdprt", {}).id;
    store.defineCardVariable(QStringLiteral("Description"));
    store.setCardValue(asm1, 0, QStringLiteral("description"), QString(), Variant::fromBStr("Top"));
    store.addReference(asm1, part, QStringLiteral("Default"));

    store.checkOut(asm1, 0);
    EXPECT_EQ(store.checkIn(asm1, QString()), 2);
    store.setVersionLabels(asm1, 2, QStringLiteral("B"), QStringLiteral("Work"));
    store.setCardValue(asm1, 2, QStringLiteral("Description"), QString(), Variant::fromBStr("Top v2"));

    EXPECT_EQ(store.version(asm1, 1)->revision, QStringLiteral("A"));
    EXPECT_EQ(store.version(asm1, 0)->revision, QStringLiteral("B"));
    EXPECT_EQ(store.version(asm1, 2)->state, QStringLiteral("Work"));
    EXPECT_EQ(store.cardValue(asm1, 1, "Description", QString())->bstr(), QStringLiteral("Top"));
    EXPECT_EQ(store.cardValue(asm1, 2, "Description", QString())->bstr(), QStringLiteral("Top v2"));
    EXPECT_FALSE(store.cardValue(asm1, 2, "Description", QStringLiteral("Other")).has_value());
    const auto refs = store.references(asm1, 2);
    ASSERT_EQ(refs.size(), 1u);
    EXPECT_EQ(refs[0].childId, part);
    EXPECT_EQ(refs[0].childVersion, 1);
    EXPECT_EQ(refs[0].configuration, QStringLiteral("Default"));

    EXPECT_EQ(codeOf([&] { store.setCardValue(asm1, 0, "Unknown", QString(), Variant::fromI4(1)); }),
              E_DOX_VARIABLE_NOT_FOUND);
    EXPECT_EQ(codeOf([&] { store.addReference(asm1, asm1, QString()); }), E_INVALIDARG);
}

TEST_P(VaultStoreTest, LooksPathsUpWithoutRegardToCase)
{
    TempVault vault(QStringLiteral("alice"), server());
    VaultStore &store = *vault.store;
    const int id = store.addFile(vault.outsideFile("a", "a"), QStringLiteral("Parts"), QStringLiteral("Bolt.MCDPRT"), {}).id;
    ASSERT_TRUE(store.fileByPath(QStringLiteral("parts\\bolt.mcdprt")).has_value());
    EXPECT_EQ(store.fileByPath(QStringLiteral("PARTS\\BOLT.mcdprt"))->id, id);
    EXPECT_EQ(store.fileByPath(QStringLiteral("parts\\bolt.mcdprt"))->name, QStringLiteral("Bolt.MCDPRT"));
    EXPECT_TRUE(store.folderByPath(QStringLiteral("PARTS")).has_value());
    EXPECT_EQ(codeOf([&] { store.addFile(vault.outsideFile("b", "b"), "parts", "bolt.mcdprt", {}); }),
              E_DOX_NAME_ALREADY_EXISTS);
    EXPECT_EQ(codeOf([&] { store.addFile(vault.outsideFile("c", "c"), "Parts", "a:b", {}); }), E_DOX_INVALID_NAME);
    EXPECT_EQ(codeOf([&] { store.addFile(vault.root() + "/missing", "Parts", "m", {}); }), E_DOX_FILE_NOT_FOUND);
}

TEST_P(VaultStoreTest, WalksATreeInPathOrder)
{
    TempVault vault(QStringLiteral("alice"), server());
    VaultStore &store = *vault.store;
    const QByteArray b = "b";
    store.addFile(vault.outsideFile("1", b), QStringLiteral("A\\B"), QStringLiteral("z.txt"), {});
    store.addFile(vault.outsideFile("2", b), QStringLiteral("A"), QStringLiteral("y.txt"), {});
    store.addFile(vault.outsideFile("3", b), QStringLiteral("AB"), QStringLiteral("x.txt"), {});
    store.addFile(vault.outsideFile("4", b), QString(), QStringLiteral("w.txt"), {});

    QStringList under;
    for (const auto &f : store.filesUnder(store.folderByPath("a")->id))
        under << f.path;
    // "AB" shares the prefix "A" but is not below it.
    EXPECT_EQ(under, (QStringList{"A\\B\\z.txt", "A\\y.txt"}));
    EXPECT_EQ(store.filesUnder(VaultStore::RootFolderId).size(), 4u);

    QStringList folders;
    store.walk(VaultStore::RootFolderId, [&](const VaultFolderRow &f) { folders << f.path; }, nullptr);
    EXPECT_EQ(folders, (QStringList{"", "A", "A\\B", "AB"}));
    const auto subs = store.subFolders(VaultStore::RootFolderId);
    ASSERT_EQ(subs.size(), 2u);
    EXPECT_EQ(store.filesIn(VaultStore::RootFolderId).size(), 1u);
}

TEST_P(VaultStoreTest, LocksBelongToOneUser)
{
    TempVault vault(QStringLiteral("alice"), server());
    const int id = vault.store->addFile(vault.outsideFile("a", "a"), QString(), "a.txt", {}).id;
    auto bob = vault.reopen(QStringLiteral("bob"));
    vault.store->checkOut(id, 0);
    vault.store->checkOut(id, 0); // again by the holder: fine
    EXPECT_EQ(codeOf([&] { bob->checkOut(id, 0); }), E_DOX_FILE_IS_LOCKED);
    EXPECT_EQ(codeOf([&] { bob->checkIn(id, QString()); }), E_DOX_FILE_NOT_LOCKED_BY_YOU);
    EXPECT_EQ(codeOf([&] { bob->undoCheckOut(id); }), E_DOX_FILE_NOT_LOCKED_BY_YOU);
    EXPECT_EQ(codeOf([&] { bob->deleteFile(id); }), E_DOX_FILE_IS_LOCKED);
    EXPECT_EQ(bob->fileById(id)->lockedBy, QStringLiteral("alice"));
}

TEST_P(VaultStoreTest, UndoCheckOutRestoresAndDeleteRemovesTheLocalCopy)
{
    TempVault vault(QStringLiteral("alice"), server());
    VaultStore &store = *vault.store;
    const int id = store.addFile(vault.outsideFile("a", "kept"), "F", "a.txt", {}).id;
    const QString local = vault.root() + "/F/a.txt";
    store.checkOut(id, 0);
    TempVault::writeFile(local, "scribbled");
    store.undoCheckOut(id);
    EXPECT_EQ(TempVault::readFile(local), QByteArray("kept"));
    EXPECT_EQ(store.fileById(id)->latestVersion, 1);

    const int shared = store.addFile(vault.outsideFile("b", "kept"), "F", "b.txt", {}).id;
    auto blobCount = [&store] {
        Statement s = store.db().prepare("SELECT COUNT(*) FROM blobs");
        s.step();
        const int n = s.integer(0);
        return n;
    };
    store.checkOut(id, 0);
    TempVault::writeFile(local, "only in a.txt");
    store.checkIn(id, QString());
    EXPECT_EQ(blobCount(), 2);

    store.deleteFile(id);
    // The bytes a.txt shared with b.txt stay; its own second version goes.
    EXPECT_EQ(blobCount(), 1);
    EXPECT_EQ(store.readVersion(shared, 1), QByteArray("kept"));
    EXPECT_FALSE(store.fileById(id).has_value());
    EXPECT_FALSE(QFileInfo::exists(local));
    EXPECT_TRUE(store.versions(id).empty());
}

TEST_P(VaultStoreTest, ATransactionThatFailsLeavesNothing)
{
    TempVault vault(QStringLiteral("alice"), server());
    VaultStore &store = *vault.store;
    try {
        Transaction t(store.db());
        store.addFile(vault.outsideFile("a", "a"), "F", "a.txt", {});
        store.addFile(vault.outsideFile("b", "b"), "F", "b.txt", {});
        throw HostError(E_FAIL);
    } catch (const HostError &) {
    }
    EXPECT_FALSE(store.fileByPath("F\\a.txt").has_value());
    EXPECT_FALSE(store.folderByPath("F").has_value());
    // Nor in the folder: the copies never left the staging area.
    EXPECT_FALSE(QFileInfo::exists(vault.root() + "/F/a.txt"));
    EXPECT_FALSE(QFileInfo::exists(vault.root() + "/F"));
    EXPECT_TRUE(stagedFiles(vault.root()).isEmpty());
    // The store is usable again afterwards.
    EXPECT_EQ(store.addFile(vault.outsideFile("a", "a"), "F", "a.txt", {}).latestVersion, 1);
}

// A local copy written inside a transaction is seen by that transaction (a
// check-in stores it) but reaches the folder only with the outermost commit;
// a savepoint that rolls back takes its copy with it.
TEST_P(VaultStoreTest, LocalCopiesFollowTheirTransaction)
{
    TempVault vault(QStringLiteral("alice"), server());
    VaultStore &store = *vault.store;
    const int id = store.addFile(vault.outsideFile("a", "old"), "F", "a.txt", {}).id;
    const QString local = vault.root() + "/F/a.txt";
    {
        Transaction outer(store.db());
        store.checkOut(id, 0);
        store.writeLocal(local, "new");
        EXPECT_EQ(store.checkIn(id, {}), 2);
        EXPECT_EQ(TempVault::readFile(local), QByteArray("old"));
        {
            Transaction inner(store.db());
            store.addFile(vault.outsideFile("b", "b"), "F", "b.txt", {});
        } // rolled back
        outer.commit();
    }
    EXPECT_EQ(store.readVersion(id, 2), QByteArray("new"));
    EXPECT_EQ(TempVault::readFile(local), QByteArray("new"));
    EXPECT_FALSE(QFileInfo::exists(vault.root() + "/F/b.txt"));
    EXPECT_FALSE(store.fileByPath("F\\b.txt").has_value());
    EXPECT_TRUE(stagedFiles(vault.root()).isEmpty());
    Statement rows = store.db().prepare("SELECT COUNT(*) FROM local_journal");
    ASSERT_TRUE(rows.step());
    EXPECT_EQ(rows.integer(0), 0);
}

// Reopening with every file, setting and version, and the errors of a second
// create or a missing vault, are checked through the program in vaultcommands_test.
TEST(VaultStore, KeepsItsOwnDriveLetterWhateverTheOpenerAsks)
{
    TempVault vault;
    const QString second = vault.root() + "/../second";
    {
        VaultOpenOptions options;
        options.drive = 'Q';
        EXPECT_EQ(VaultStore::create(second, "Second", options)->paths().windowsRoot(), QStringLiteral("Q:"));
    }
    VaultOpenOptions options;
    options.drive = 'Z';
    EXPECT_EQ(VaultStore::open(second, options)->paths().windowsRoot(), QStringLiteral("Q:"));
}

TEST_P(VaultStoreTest, RefusesADatabaseFromANewerProgram)
{
    TempVault vault(QStringLiteral("alice"), server());
    vault.store->db().setUserVersion(VaultSchema::CurrentVersion + 1);
    vault.store.reset();
    EXPECT_EQ(codeOf([&] { vault.reopen(); }), E_DOX_CANT_OPEN_DATABASE);
}

TEST(VaultStore, AnUpgradedVaultKeepsItsRowsAndPassesSQLitesIntegrityCheck)
{
    QTemporaryDir dir;
    const QString root = dir.path() + "/vault";
    {
        // A vault of schema 3 with a row in each table whose columns were reordered.
        QDir().mkpath(root + "/.mctask");
        VaultDb db(std::make_unique<SqliteDb>(VaultStore::databasePath(root)));
        VaultSchema::ensure(db, true, 3);
        db.exec("INSERT INTO settings (key, value) VALUES ('name', 'Old'), ('drive', 'V');"
                "INSERT INTO files (id, folder_id, name, path_key, latest_version) VALUES (2, 1, 'a', 'a', 1),"
                " (3, 1, 'b', 'b', 1);"
                "INSERT INTO blobs (hash, size, data) VALUES ('h', 1, x'41');"
                "INSERT INTO versions (file_id, version, hash, created) VALUES (2, 1, 'h', 'now'), (3, 1, 'h', 'now');"
                "INSERT INTO refs (parent_id, parent_version, child_id, child_version, configuration)"
                " VALUES (2, 1, 3, 1, 'Default');"
                "INSERT INTO tasks (id, name, name_key, class_id) VALUES (4, 'T', 't', '{0}');"
                "INSERT INTO task_variables (task_id, name, name_key, type, tvalue) VALUES (4, 'Path', 'path', 8, 'x');"
                "INSERT INTO task_declared (task_id, position, name) VALUES (4, 0, 'Path');"
                "INSERT INTO instances (id, task_id, guid, status, created) VALUES (5, 4, '{A}', 0, 'now');"
                "INSERT INTO instance_variables (instance_id, name, name_key, type, ivalue) VALUES (5, 'N', 'N', 3, 7);");
    }
    const auto store = VaultStore::open(root);
    EXPECT_EQ(store->db().userVersion(), VaultSchema::CurrentVersion);
    Statement check = store->db().prepare("PRAGMA integrity_check");
    ASSERT_TRUE(check.step());
    EXPECT_EQ(check.text(0), QStringLiteral("ok"));
    const auto references = store->references(2, 1);
    ASSERT_EQ(references.size(), 1u);
    EXPECT_EQ(references[0].childId, 3);
    EXPECT_EQ(references[0].childVersion, 1);
    EXPECT_EQ(references[0].configuration, QStringLiteral("Default"));
    TaskStore tasks(store);
    EXPECT_EQ(tasks.taskVariable(4, "path")->bstr(), QStringLiteral("x"));
    EXPECT_EQ(tasks.declaredVariables(4), QStringList{"Path"});
    EXPECT_EQ(tasks.instanceValue(5, "N")->i4(), 7);
}

TEST_P(VaultStoreTest, RecordsTimesFromTheClock)
{
    FakeClock clock(QDateTime(QDate(2024, 3, 1), QTime(12, 0, 0), Qt::UTC));
    ScopedClock scoped(clock);
    TempVault vault(QStringLiteral("alice"), server());
    const int id = vault.store->addFile(vault.outsideFile("a", "a"), "", "a.txt", {}).id;
    clock.advance(90 * 1000);
    vault.store->checkOut(id, 0);
    vault.store->checkIn(id, QString());
    const auto versions = vault.store->versions(id);
    ASSERT_EQ(versions.size(), 2u);
    EXPECT_EQ(versions[0].created, QStringLiteral("2024-03-01T12:00:00.000Z"));
    EXPECT_EQ(versions[1].created, QStringLiteral("2024-03-01T12:01:30.000Z"));
}

TEST_P(VaultStoreTest, ManyFilesAreAddedAndCheckedInAsOneWithEachJudgedOnItsOwn)
{
    TempVault vault(QStringLiteral("alice"), server());
    VaultStore &store = *vault.store;
    // More files than one list of ids or paths holds: the lists split, and the
    // last one is padded.
    std::vector<VaultStore::NewFile> files;
    for (int i = 0; i < 150; ++i) {
        const QString name = QStringLiteral("f%1.txt").arg(i);
        files.push_back({vault.localFile("Many/" + name, QByteArray::number(i)), QStringLiteral("Many"), name});
    }
    store.addFile(vault.outsideFile("old", "old"), QStringLiteral("Many"), QStringLiteral("F140.TXT"), {});
    files.push_back(files[3]); // the same path twice in one batch
    VaultStore::AddOptions keep;
    keep.keepCheckedOut = true;
    const std::vector<VaultStore::NewFileResult> added = store.addFiles(files, keep);
    ASSERT_EQ(added.size(), 151u);
    std::vector<int> ids;
    for (int i = 0; i < 150; ++i) {
        EXPECT_EQ(added[i].result, i == 140 ? E_DOX_NAME_ALREADY_EXISTS : S_OK) << i;
        if (i != 140)
            ids.push_back(added[i].id);
    }
    EXPECT_EQ(added[150].result, E_DOX_NAME_ALREADY_EXISTS);

    const auto some = store.filesById({ids[148], 999999, ids[5]});
    ASSERT_EQ(some.size(), 3u);
    EXPECT_EQ(some[0]->path, QStringLiteral("Many\\f149.txt"));
    EXPECT_FALSE(some[1]);
    EXPECT_EQ(some[2]->path, QStringLiteral("Many\\f5.txt"));

    vault.localFile(QStringLiteral("Many/f7.txt"), "seven");
    ids.push_back(ids[0]); // named twice: checked in once
    const std::vector<int> latest = store.checkInFiles(ids, QStringLiteral("batch"));
    ASSERT_EQ(latest.size(), ids.size());
    for (std::size_t i = 0; i < latest.size(); ++i)
        EXPECT_EQ(latest[i], i == 7 ? 2 : 1) << i;
    EXPECT_EQ(store.readVersion(ids[7], 2), QByteArray("seven"));
    EXPECT_EQ(store.version(ids[7], 2)->comment, QStringLiteral("batch"));
    EXPECT_EQ(store.version(ids[7], 1)->comment, QString());
    EXPECT_EQ(store.version(ids[148], 1)->comment, QStringLiteral("batch"));
    for (const VaultFileRow &row : store.filesIn(store.folderByPath(QStringLiteral("Many"))->id))
        EXPECT_EQ(row.lock, VaultLock::None) << qPrintable(row.path);
    EXPECT_EQ(store.version(store.fileByPath(QStringLiteral("Many\\f140.txt"))->id, 1)->comment, QString());
    EXPECT_EQ(codeOf([&] { store.checkInFiles({ids[1]}, QString()); }), E_DOX_FILE_NOT_LOCKED_BY_YOU);
}

TEST_P(VaultStoreTest, AContentStoredFromTwoMachinesAtOnceIsKeptOnce)
{
    if (!onPostgres())
        GTEST_SKIP() << "only a server vault has other machines";
    TempVault vault(QStringLiteral("alice"), server());
    VaultDb first(std::make_unique<PgDb>(server()));
    VaultDb second(std::make_unique<PgDb>(server()));
    PgDb watcher(server());
    const QByteArray bytes = QUuid::createUuid().toByteArray();
    const QString hash = VaultStore::contentHash(bytes);

    Transaction transaction(first);
    first.storeContent(hash, bytes);
    // The second finds no committed row, makes its object and waits on the
    // first's uncommitted key.
    std::thread other([&] { second.storeContent(hash, bytes); });
    bool waiting = false;
    for (int i = 0; i < 1000 && !waiting; ++i) {
        PgStatement s = watcher.prepare("SELECT count(*) FROM pg_stat_activity WHERE wait_event_type = 'Lock' "
                                        "AND query LIKE '%lo_from_bytea%'");
        waiting = s.step() && s.integer(0) > 0;
        if (!waiting)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    transaction.commit();
    other.join();
    EXPECT_TRUE(waiting);

    EXPECT_EQ(first.readContent(hash), bytes);
    // Large objects are the database's, not the schema's: found by content.
    PgStatement objects = watcher.prepare(
        "SELECT count(*) FROM pg_largeobject_metadata m WHERE lo_get(m.oid) = ?");
    ASSERT_TRUE(objects.bindBlob(1, bytes).step());
    EXPECT_EQ(objects.integer(0), 1);
}

TEST_P(VaultStoreTest, ThreadsOfOneProcessShareAStore)
{
    TempVault vault(QStringLiteral("alice"), server());
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        const QString folder = QStringLiteral("T%1").arg(t);
        for (int i = 0; i < 50; ++i)
            vault.localFile(QStringLiteral("%1/f%2").arg(folder).arg(i), QByteArray::number(t * 1000 + i));
        threads.emplace_back([&vault, folder] {
            for (int i = 0; i < 50; ++i) {
                const QString name = QStringLiteral("f%1").arg(i);
                vault.store->addFile(vault.store->paths().toNative(folder + '\\' + name), folder, name, {});
                vault.store->filesUnder(VaultStore::RootFolderId); // readers interleave with writers
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(vault.store->filesUnder(VaultStore::RootFolderId).size(), 200u);
    EXPECT_EQ(vault.store->readVersion(vault.store->fileByPath("t3\\f49")->id, 1), QByteArray("3049"));
}

} // namespace
