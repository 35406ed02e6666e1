#include "vault/vaultstore.h"

#include "host/hosterror.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString integrity(VaultStore &store)
{
    Statement &s = store.db().prepare("PRAGMA integrity_check");
    const QString result = s.step() ? s.text(0) : QString();
    s.reset();
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
        EXPECT_THROW(Transaction t(probe), HostError);
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

} // namespace
