// A vault on a server under the faults of a shared machine: writers on
// other machines racing for the same names, and connections that break in
// the middle of a batch.

#include "vault/batchservices.h"
#include "vault/localjournal.h"
#include "vault/taskstore.h"
#include "vault/vaulttesting.h"

#include "host/hosterror.h"
#include "platform/clock.h"

#include <QDir>
#include <QRegularExpression>

#include <thread>

namespace {

class PgFaultsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        MCTASK_PG_SCHEMA_OR_SKIP(m_schema);
        m_vault = std::make_unique<TempVault>(QStringLiteral("alice"), m_schema->url());
    }

    // Another machine's local view of the same vault: a new connection each call.
    std::shared_ptr<VaultStore> attach(const QString &name, const QString &user)
    {
        VaultOpenOptions options;
        options.user = user;
        const QString dir = m_other.path() + '/' + name;
        return VaultStore::isVault(dir) ? VaultStore::open(dir, options)
                                        : VaultStore::attachToServer(m_schema->url(), dir, options);
    }

    static std::int64_t backendPid(VaultStore &store)
    {
        PgStatement s = store.db().postgres()->prepare("SELECT pg_backend_pid()");
        s.step();
        return s.int64(0);
    }

    // Polls the server's view of a backend until holds(wait event type,
    // transaction open) is true (at most ten seconds).
    bool waitForBackend(std::int64_t pid, const std::function<bool(const QString &, bool)> &holds)
    {
        for (int i = 0; i < 2000; ++i) {
            PgStatement s = m_schema->admin().prepare(
                "SELECT COALESCE(wait_event_type, ''), xact_start IS NOT NULL FROM pg_stat_activity WHERE pid = ?");
            s.bind(1, pid);
            if (s.step() && holds(s.text(0), s.text(1) == QLatin1String("t")))
                return true;
            Clock::instance().sleep(5);
        }
        return false;
    }

    int rows(const char *table)
    {
        const auto fresh = m_vault->reopen();
        Statement s = fresh->db().prepare((QByteArray("SELECT COUNT(*) FROM ") + table).constData());
        s.step();
        return s.integer(0);
    }

    // Runs batch on a thread and ends its connection from the server's side
    // once its transaction has run a while; what the batch answered.
    HRESULT cutMidway(VaultStore &store, const std::function<HRESULT()> &batch)
    {
        const std::int64_t pid = backendPid(store);
        HRESULT hr = S_OK;
        std::thread worker([&] { hr = batch(); });
        const bool open = waitForBackend(pid, [](const QString &, bool inTransaction) { return inTransaction; });
        Clock::instance().sleep(150);
        m_schema->admin().prepare("SELECT pg_terminate_backend(?)").bind(1, pid).exec();
        worker.join();
        EXPECT_TRUE(open) << "the batch never opened its transaction";
        return hr;
    }

    // Files of distinct contents outside the vault.
    QStringList sources(int count)
    {
        QStringList paths;
        for (int i = 0; i < count; ++i)
            paths << m_vault->outsideFile(QStringLiteral("f%1.pdf").arg(i), QByteArray(2048, 'x') + QByteArray::number(i));
        return paths;
    }

    std::unique_ptr<PgTestSchema> m_schema;
    std::unique_ptr<TempVault> m_vault;
    QTemporaryDir m_other;
};

TEST_F(PgFaultsTest, WritersRacingForOneNameGetTheVaultsOwnAnswersAndShareNewFolders)
{
    const auto bob = attach("b", QStringLiteral("bob"));
    const auto bobsTask = attach("b", QStringLiteral("bob"));
    const auto bobsTitle = attach("b", QStringLiteral("bob"));
    const QString mine = m_vault->outsideFile("mine.prt", "alice's");
    const QString theirs = m_vault->outsideFile("theirs.prt", "bob's");
    const QString other = m_vault->outsideFile("other.prt", "another");
    VaultStore &alice = *m_vault->store;

    // Alice's writes are made and not yet committed when Bob's arrive.
    auto aliceWrites = std::make_unique<Transaction>(alice.db());
    const auto added = alice.addFiles({{mine, "Parts", "a.prt"}, {mine, "Parts\\Sub", "c.prt"}}, {});
    ASSERT_EQ(added[0].result, S_OK);
    ASSERT_EQ(added[1].result, S_OK);
    TaskStore(m_vault->store).createTask(QStringLiteral("Convert"), QStringLiteral("{0}"));
    const int title = alice.defineCardVariable(QStringLiteral("Title"));

    // Asked before the threads take the connections.
    std::vector<std::int64_t> pids;
    for (const auto &store : {bob, bobsTask, bobsTitle})
        pids.push_back(backendPid(*store));
    std::vector<VaultStore::NewFileResult> bobsFiles;
    HRESULT taskResult = S_OK;
    QString taskText;
    int titleId = 0;
    std::thread files([&] {
        bobsFiles = bob->addFiles({{theirs, "Parts", "a.prt"}, {other, "Parts", "b.prt"}, {other, "Parts\\Sub", "d.prt"}}, {});
    });
    std::thread task([&] {
        try {
            TaskStore(bobsTask).createTask(QStringLiteral("convert"), QStringLiteral("{0}"));
        } catch (const HostError &e) {
            taskResult = e.code();
            taskText = e.context();
        }
    });
    std::thread variable([&] { titleId = bobsTitle->defineCardVariable(QStringLiteral("TITLE")); });
    const auto waitsForALock = [](const QString &event, bool) { return event == QLatin1String("Lock"); };
    for (const std::int64_t pid : pids)
        EXPECT_TRUE(waitForBackend(pid, waitsForALock));
    aliceWrites->commit();
    files.join();
    task.join();
    variable.join();

    ASSERT_EQ(bobsFiles.size(), 3u);
    EXPECT_EQ(bobsFiles[0].result, E_DOX_NAME_ALREADY_EXISTS);
    EXPECT_EQ(bobsFiles[0].problem, QStringLiteral("V:\\Parts\\a.prt"));
    // The folders Alice made serve Bob's files too.
    EXPECT_EQ(bobsFiles[1].result, S_OK);
    EXPECT_EQ(bobsFiles[1].folderId, added[0].folderId);
    EXPECT_EQ(bobsFiles[2].result, S_OK);
    EXPECT_EQ(bobsFiles[2].folderId, added[1].folderId);
    EXPECT_EQ(titleId, title);
    EXPECT_EQ(taskResult, E_DOX_NAME_ALREADY_EXISTS);
    EXPECT_TRUE(taskText.contains("already exists")) << taskText.toStdString();

    // Alice's bytes are the file's, and Bob's view holds no copy of his own.
    const auto file = bob->fileByPath("Parts\\a.prt");
    ASSERT_TRUE(file);
    EXPECT_EQ(bob->readVersion(file->id, 1), QByteArray("alice's"));
    EXPECT_FALSE(QFile::exists(m_other.path() + "/b/Parts/a.prt"));
    EXPECT_EQ(rows("files"), 4);
    EXPECT_EQ(rows("folders"), 3);
}

TEST_F(PgFaultsTest, AConnectionCutInTheMiddleOfABatchLeavesNothingOfIt)
{
    VaultStore &store = *m_vault->store;
    const QStringList paths = sources(3000);
    VaultBatchAdd add(m_vault->store);
    for (const QString &path : paths)
        ASSERT_EQ(add.AddFileFromPath(path, QStringLiteral("V:\\Batch\\Deep")), S_OK);
    std::vector<DoxBatchAddResult> results;
    const HRESULT added = cutMidway(store, [&] { return add.CommitAdd(results); });
    EXPECT_TRUE(failed(added)) << "the batch ended before the cut";
    EXPECT_TRUE(results.empty());

    EXPECT_EQ(rows("files"), 0);
    EXPECT_EQ(rows("versions"), 0);
    EXPECT_EQ(rows("blobs"), 0);
    EXPECT_EQ(rows("folders"), 1); // the root
    EXPECT_EQ(rows("local_journal"), 0);
    EXPECT_FALSE(QDir(m_vault->root() + "/Batch").exists());
    const QStringList staged = QDir(LocalJournal::stagingFolder(m_vault->root()))
                                   .entryList(QDir::Files)
                                   .filter(QRegularExpression("-[0-9]+$"));
    EXPECT_TRUE(staged.isEmpty()) << staged.join(' ').toStdString();
}

TEST_F(PgFaultsTest, AConnectionCutInTheMiddleOfACheckInLeavesEveryFileAsItWas)
{
    const QStringList paths = sources(1000);
    std::vector<VaultStore::NewFile> files;
    for (const QString &path : paths)
        files.push_back({path, "Out", QFileInfo(path).fileName()});
    VaultStore::AddOptions checkedOut;
    checkedOut.keepCheckedOut = true;
    std::vector<DoxFolderPair> selection;
    for (const auto &result : m_vault->store->addFiles(files, checkedOut)) {
        ASSERT_EQ(result.result, S_OK);
        selection.push_back({result.id, result.folderId});
    }
    // New bytes in the local view, for new versions.
    for (const QString &path : paths)
        m_vault->localFile("Out/" + QFileInfo(path).fileName(), "changed");

    const auto checker = m_vault->reopen();
    VaultBatchCheckIn checkIn(checker);
    checkIn.SetComment(QStringLiteral("batch"));
    ASSERT_EQ(checkIn.AddSelection(selection), S_OK);
    ASSERT_EQ(checkIn.CreateTree(), S_OK);
    const HRESULT checkedIn = cutMidway(*checker, [&] { return checkIn.CheckIn(); });
    EXPECT_TRUE(failed(checkedIn)) << "the check-in ended before the cut";

    const auto fresh = m_vault->reopen();
    EXPECT_EQ(rows("versions"), 1000);
    Statement locked = fresh->db().prepare("SELECT COUNT(*) FROM files WHERE lock_kind <> 0");
    locked.step();
    EXPECT_EQ(locked.integer(0), 1000);
}

} // namespace
