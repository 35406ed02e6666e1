#include "vault/vaultstore.h"

#include "host/hosterror.h"
#include "vault/localjournal.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <set>

namespace {

QString integrity(VaultStore &store)
{
    Statement s = store.db().prepare("PRAGMA integrity_check");
    const QString result = s.step() ? s.text(0) : QString();
    return result;
}

class MultiProcessTest : public ::testing::Test
{
protected:
    void SetUp() override { VaultStore::create(root(), QStringLiteral("Shared")); }
    QString root() const { return m_dir.path() + "/vault"; }

    void start(QProcess &p, const QString &folder, int count, bool hold = false)
    {
        QStringList args = {QStringLiteral("add"), root(), folder, QString::number(count)};
        if (hold)
            args << QStringLiteral("--hold");
        p.start(QStringLiteral(VAULT_TEST_HELPER), args);
        ASSERT_TRUE(p.waitForStarted());
    }

    // Runs the helper in mode (copy, update) until it holds at the middle
    // call of kind, then kills it.
    void killHalfWay(const QString &mode, const QString &folder, int count, const QString &kind)
    {
        QProcess p;
        p.start(QStringLiteral(VAULT_TEST_HELPER),
                {mode, root(), folder, QString::number(count), QStringLiteral("--hold-at"), kind});
        ASSERT_TRUE(p.waitForStarted());
        ASSERT_TRUE(p.waitForReadyRead(60000)) << p.readAllStandardError().toStdString();
        ASSERT_EQ(p.readLine().trimmed(), QByteArray("holding"));
        p.kill();
        ASSERT_TRUE(p.waitForFinished(60000));
        ASSERT_EQ(p.exitStatus(), QProcess::CrashExit);
    }

    void run(const QString &mode, const QString &folder, int count)
    {
        QProcess p;
        p.start(QStringLiteral(VAULT_TEST_HELPER), {mode, root(), folder, QString::number(count)});
        ASSERT_TRUE(p.waitForStarted());
        expectFinishedOk(p);
    }

    // The folder and the database agree: every file of the vault has its
    // local copy holding its latest version, every local file is a file of
    // the vault, and nothing is left staged.
    static void expectFolderAndDatabaseAgree(VaultStore &store)
    {
        std::set<QString> known;
        for (const VaultFileRow &file : store.filesUnder(VaultStore::RootFolderId)) {
            const QString local = store.paths().toNative(file.path);
            known.insert(local);
            QFile copy(local);
            ASSERT_TRUE(copy.open(QIODevice::ReadOnly)) << local.toStdString();
            EXPECT_EQ(VaultStore::contentHash(copy.readAll()), store.version(file.id, 0)->hash) << local.toStdString();
        }
        QDirIterator it(store.paths().nativeRoot(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString local = it.next();
            if (!local.contains(QLatin1String("/.mctask/"))) {
                EXPECT_TRUE(known.count(local)) << "unknown to the vault: " << local.toStdString();
            }
        }
        const QDir staging(LocalJournal::stagingFolder(store.paths().nativeRoot()));
        EXPECT_TRUE(staging.entryList(QDir::Files).isEmpty()) << staging.entryList(QDir::Files).join(' ').toStdString();
        Statement rows = store.db().prepare("SELECT COUNT(*) FROM local_journal");
        rows.step();
        EXPECT_EQ(rows.integer(0), 0);
    }

    static void expectFinishedOk(QProcess &p)
    {
        ASSERT_TRUE(p.waitForFinished(120000));
        EXPECT_EQ(p.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(p.exitCode(), 0) << p.readAllStandardError().toStdString();
    }

private:
    QTemporaryDir m_dir;
};

TEST_F(MultiProcessTest, TwoProcessesAddingAtOnceBothSucceed)
{
    QProcess first;
    QProcess second;
    start(first, QStringLiteral("A"), 300);
    start(second, QStringLiteral("B"), 300);
    expectFinishedOk(first);
    expectFinishedOk(second);

    auto store = VaultStore::open(root());
    EXPECT_EQ(integrity(*store), QStringLiteral("ok"));
    EXPECT_EQ(store->filesUnder(store->folderByPath("A")->id).size(), 300u);
    EXPECT_EQ(store->filesUnder(store->folderByPath("B")->id).size(), 300u);
    const auto row = store->fileByPath(QStringLiteral("B\\f123.txt"));
    ASSERT_TRUE(row.has_value());
    EXPECT_EQ(store->readVersion(row->id, 1), QByteArray("B 123"));
    EXPECT_EQ(row->lock, VaultLock::None); // checked in by the same process
    EXPECT_EQ(row->latestVersion, 1);
}

TEST_F(MultiProcessTest, AProcessKilledInsideABatchLeavesTheVaultAsBefore)
{
    {
        auto store = VaultStore::open(root());
        QProcess before;
        start(before, QStringLiteral("Before"), 5);
        expectFinishedOk(before);
    }
    QProcess killed;
    start(killed, QStringLiteral("Batch"), 200, true);
    ASSERT_TRUE(killed.waitForReadyRead(60000));
    ASSERT_EQ(killed.readLine().trimmed(), QByteArray("holding"));
    {
        // The helper is inside its batch: it holds the vault's write lock.
        SqliteDb probe(VaultStore::databasePath(root()), 0);
        EXPECT_THROW(SqliteTransaction t(probe), HostError);
        // Readers go on meanwhile and see the vault as before the batch.
        VaultOpenOptions noWaiting;
        noWaiting.busyTimeoutMs = 0;
        auto reader = VaultStore::open(root(), noWaiting);
        EXPECT_EQ(reader->filesUnder(VaultStore::RootFolderId).size(), 5u);
    }
    killed.kill(); // SIGKILL: no destructor, no rollback by the process itself
    ASSERT_TRUE(killed.waitForFinished(60000));
    EXPECT_EQ(killed.exitStatus(), QProcess::CrashExit);

    {
        auto store = VaultStore::open(root());
        EXPECT_EQ(integrity(*store), QStringLiteral("ok"));
        EXPECT_FALSE(store->folderByPath(QStringLiteral("Batch")).has_value());
        EXPECT_FALSE(store->fileByPath(QStringLiteral("Batch\\f0.txt")).has_value());
        EXPECT_EQ(store->filesUnder(VaultStore::RootFolderId).size(), 5u);
    }

    QProcess rerun;
    start(rerun, QStringLiteral("Batch"), 200);
    expectFinishedOk(rerun);
    auto store = VaultStore::open(root());
    EXPECT_EQ(store->filesUnder(store->folderByPath("Batch")->id).size(), 200u);
    EXPECT_EQ(store->filesUnder(VaultStore::RootFolderId).size(), 205u);
}

// A batch that copies files into the vault, killed while staging them
// (before the commit): nothing of it is in the folder or the database.
// Killed while moving them into place (after the commit): the next opening
// finishes the move. Before the local journal the first left hundreds of
// copies the database never knew.
TEST_F(MultiProcessTest, AKilledCopyingBatchLeavesFolderAndDatabaseInStep)
{
    killHalfWay(QStringLiteral("copy"), QStringLiteral("Staged"), 200, QStringLiteral("write"));
    {
        auto store = VaultStore::open(root());
        EXPECT_FALSE(store->fileByPath(QStringLiteral("Staged\\f0.txt")).has_value());
        EXPECT_FALSE(QFile::exists(store->paths().toNative(QStringLiteral("Staged\\f0.txt"))));
        expectFolderAndDatabaseAgree(*store);
    }
    killHalfWay(QStringLiteral("copy"), QStringLiteral("Moved"), 200, QStringLiteral("replace"));
    auto store = VaultStore::open(root());
    EXPECT_EQ(store->filesUnder(store->folderByPath(QStringLiteral("Moved"))->id).size(), 200u);
    EXPECT_EQ(store->readVersion(store->fileByPath(QStringLiteral("Moved\\f199.txt"))->id), QByteArray("Moved 199"));
    expectFolderAndDatabaseAgree(*store);
}

// New versions from outside, killed before and after their commit: the
// local files hold the bytes of the version the vault lists. Before the
// journal they held the new bytes while the vault listed the old version.
TEST_F(MultiProcessTest, AKilledNewVersionBatchLeavesLocalFilesAtTheListedVersion)
{
    run(QStringLiteral("copy"), QStringLiteral("Docs"), 100);
    killHalfWay(QStringLiteral("update"), QStringLiteral("Docs"), 100, QStringLiteral("write"));
    {
        auto store = VaultStore::open(root());
        const auto file = store->fileByPath(QStringLiteral("Docs\\f10.txt"));
        ASSERT_TRUE(file.has_value());
        EXPECT_EQ(file->latestVersion, 1);
        EXPECT_EQ(file->lock, VaultLock::None);
        expectFolderAndDatabaseAgree(*store);
    }
    killHalfWay(QStringLiteral("update"), QStringLiteral("Docs"), 100, QStringLiteral("replace"));
    auto store = VaultStore::open(root());
    const auto file = store->fileByPath(QStringLiteral("Docs\\f99.txt"));
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ(file->latestVersion, 2);
    EXPECT_EQ(store->readVersion(file->id), QByteArray("Docs 99 new"));
    expectFolderAndDatabaseAgree(*store);
}

} // namespace
