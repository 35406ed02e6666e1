#include "vault/vaultstore.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include "tests/foldertest.h"
#include "tests/programrun.h"

namespace {

class VaultCommandsTest : public FolderTest
{
protected:
    // Runs the built program from folder cwd, with its own home and no
    // MCTASK_VAULT from the caller's environment.
    ProgramRun run(const QStringList &args, const QString &cwd = {}, const QString &vaultVariable = {})
    {
        return runProgram(MCTASK_PROGRAM, args,
                          ProgramSetting(m_dir.path() + "/home")
                              .in(cwd.isEmpty() ? m_dir.path() : cwd)
                              .withVault(vaultVariable));
    }

    QJsonArray lsJson(const QStringList &extra = {})
    {
        const ProgramRun ls = run(QStringList{"vault", "ls", "--vault", path("v"), "--json"} + extra);
        EXPECT_EQ(ls.status, 0) << ls.err.toStdString();
        return QJsonDocument::fromJson(ls.out.toUtf8()).array();
    }
    void init()
    {
        const ProgramRun created = run({"vault", "init", path("v"), "--name", "Demo"});
        ASSERT_EQ(created.status, 0) << created.err.toStdString();
    }
};

TEST_F(VaultCommandsTest, AThousandFilesSurviveAReopenWithEveryVersion)
{
    init();
    for (int f = 0; f < 50; ++f)
        for (int i = 0; i < 20; ++i)
            write(QStringLiteral("src/Folder%1/part%2.mcdprt").arg(f, 2, 10, QChar('0')).arg(i), QByteArray::number(f * 100 + i));
    const ProgramRun added = run({"vault", "add", "--vault", path("v"), path("src"), "--to", "V:\\Data", "--json",
                                  "--revision", "A", "--card", "Title=Bulk"});
    ASSERT_EQ(added.status, 0) << added.err.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(added.out.toUtf8()).array().size(), 1000);

    const QJsonArray listed = lsJson();
    ASSERT_EQ(listed.size(), 1000);
    const QJsonObject first = listed.first().toObject();
    for (const char *key : {"id", "folder_id", "path", "version", "revision", "state", "checked_out"})
        EXPECT_TRUE(first.contains(key)) << key;
    EXPECT_EQ(first["path"].toString(), QStringLiteral("V:\\Data\\src\\Folder00\\part0.mcdprt"));
    EXPECT_EQ(first["revision"].toString(), QStringLiteral("A"));
    EXPECT_EQ(first["checked_out"].toBool(), false);
    EXPECT_EQ(lsJson({"V:\\data\\SRC\\folder07"}).size(), 20);

    // A second version, from a file outside the vault named by vault path.
    write("new/part3.mcdprt", "second");
    ProgramRun again = run({"vault", "add", "--vault", path("v"), path("new/part3.mcdprt"), "--to", "V:\\Data\\src\\Folder07"});
    ASSERT_EQ(again.status, 0) << again.err.toStdString();
    EXPECT_TRUE(again.out.contains("new version"));
    // The same bytes once more: no third version.
    again = run({"vault", "add", "--vault", path("v"), path("new/part3.mcdprt"), "--to", "V:\\Data\\src\\Folder07"});
    EXPECT_TRUE(again.out.contains("unchanged"));

    const QString part = QStringLiteral("V:\\Data\\src\\Folder07\\part3.mcdprt");
    const ProgramRun card = run({"vault", "card", "--vault", path("v"), part, "Number=P-7", "Title", "--json"});
    ASSERT_EQ(card.status, 0) << card.err.toStdString();
    const QJsonObject values = QJsonDocument::fromJson(card.out.toUtf8()).object();
    EXPECT_EQ(values["Number"].toString(), QStringLiteral("P-7"));
    EXPECT_EQ(values["Title"].toString(), QStringLiteral("Bulk")); // carried into version 2

    // Run from inside the vault: the nearest vault above is found, and a
    // relative native path starts at the current folder.
    const ProgramRun ref = run({"vault", "ref", "src/Folder01/part1.mcdprt", part, "--conf", "Default"}, path("v/Data"));
    ASSERT_EQ(ref.status, 0) << ref.err.toStdString();

    // Another process (this one) opens the vault and finds everything.
    auto store = VaultStore::open(path("v"));
    EXPECT_EQ(store->filesUnder(VaultStore::RootFolderId).size(), 1000u);
    const auto file = store->fileByPath(QStringLiteral("data\\src\\folder07\\PART3.mcdprt"));
    ASSERT_TRUE(file.has_value());
    EXPECT_EQ(file->latestVersion, 2);
    EXPECT_EQ(store->readVersion(file->id, 1), QByteArray("703"));
    EXPECT_EQ(store->readVersion(file->id, 2), QByteArray("second"));
    EXPECT_EQ(store->cardValue(file->id, 1, "Number", QString()), std::nullopt);
    const auto parent = store->fileByPath(QStringLiteral("Data\\src\\Folder01\\part1.mcdprt"));
    const auto refs = store->references(parent->id, 0);
    ASSERT_EQ(refs.size(), 1u);
    EXPECT_EQ(refs[0].childId, file->id);
    EXPECT_EQ(refs[0].childVersion, 2);
    EXPECT_EQ(refs[0].configuration, QStringLiteral("Default"));
    for (const VaultFileRow &row : store->filesUnder(store->folderByPath("Data\\src\\Folder42")->id))
        EXPECT_EQ(store->readVersion(row.id, 1), QByteArray::number(4200 + row.name.mid(4).section('.', 0, 0).toInt()));
}

TEST_F(VaultCommandsTest, BadInputGivesOneLineStatusTwoAndChangesNothing)
{
    init();
    write("v/a.txt", "a");
    ASSERT_EQ(run({"vault", "add", "--vault", path("v"), path("v/a.txt")}).status, 0);
    write("outside.txt", "o");
    const QJsonArray before = lsJson();

    const std::vector<QStringList> bad = {
        {"vault", "ls", "--vault", path("nowhere")},
        {"vault", "add", path("v/a.txt")}, // no vault here or above, none in the environment
        {"vault", "card", "--vault", path("v"), "V:\\a.txt", "=value"},
        {"vault", "add", "--vault", path("v"), path("outside.txt"), "--card", "NoEquals"},
        {"vault", "add", "--vault", path("v"), path("outside.txt"), path("missing.txt")},
        {"vault", "card", "--vault", path("v"), path("outside.txt"), "Title=x"},
        {"vault", "ref", "--vault", path("v"), "V:\\a.txt", path("outside.txt")},
        {"vault", "ls", "--vault", path("v"), "V:\\NoSuchFolder"},
        {"vault", "init", path("v")},
        {"vault", "init", path("w"), "--drive", "VV"},
        {"vault", "ls", "--vault", path("v"), "--bogus"},
        // An empty path would mean the current folder (it once added all of it).
        {"vault", "add", "--vault", path("v"), ""},
        {"vault", "add", "--vault", path("v"), path("outside.txt"), "--to", ""},
        {"vault", "init", ""},
        {"vault", "ls", "--vault", ""},
        {"--home", "", "vault", "ls", "--vault", path("v")},
        // The vault's own database is never a document (it once doubled).
        {"vault", "add", "--vault", path("v"), path("v/.mctask/vault.db"), "--to", "Docs"},
        {"vault", "add", "--vault", path("v"), path("v/.mctask")},
    };
    for (const QStringList &args : bad) {
        const ProgramRun r = run(args);
        EXPECT_EQ(r.status, 2) << args.join(' ').toStdString();
        EXPECT_EQ(r.err.count('\n'), 1) << r.err.toStdString();
        EXPECT_TRUE(r.err.startsWith("mctask: ")) << r.err.toStdString();
        EXPECT_TRUE(r.out.isEmpty()) << r.out.toStdString();
    }
    EXPECT_EQ(lsJson(), before);
    EXPECT_FALSE(QFileInfo::exists(path("w")));
    const ProgramRun card = run({"vault", "card", "--vault", path("v"), "V:\\a.txt", "--json"});
    EXPECT_EQ(QJsonDocument::fromJson(card.out.toUtf8()).object(), QJsonObject());
}

TEST_F(VaultCommandsTest, FindsTheVaultThroughTheEnvironmentAndMountsItsDrive)
{
    const ProgramRun created = run({"vault", "init", path("q"), "--drive", "q:", "--date-style", "3"});
    ASSERT_EQ(created.status, 0) << created.err.toStdString();
    EXPECT_TRUE(created.out.contains("Q:"));
    write("x.txt", "x");
    const ProgramRun added = run({"vault", "add", path("x.txt"), "--to", "Inbox"}, {}, path("q"));
    ASSERT_EQ(added.status, 0) << added.err.toStdString();
    EXPECT_TRUE(added.out.contains("Q:\\Inbox\\x.txt"));

    QFile drives(path("home/drives.json"));
    ASSERT_TRUE(drives.open(QIODevice::ReadOnly));
    const QJsonObject map = QJsonDocument::fromJson(drives.readAll()).object()["drives"].toObject();
    EXPECT_EQ(map["Q"].toString(), QDir(path("q")).absolutePath());
    EXPECT_EQ(VaultStore::open(path("q"))->setting("DateFmt"), QStringLiteral("3"));

    const ProgramRun group = run({"vault", "--help"});
    EXPECT_EQ(group.status, 0) << group.err.toStdString();
    EXPECT_TRUE(group.out.startsWith(QStringLiteral("Usage: mctask vault"))) << group.out.toStdString();
    for (const char *command : {"init", "add", "ls", "card", "ref"}) {
        EXPECT_TRUE(group.out.contains(QStringLiteral("vault ") + command)) << command;
        const ProgramRun help = run({"vault", command, "--help"});
        EXPECT_EQ(help.status, 0) << command;
        EXPECT_TRUE(help.out.startsWith(QStringLiteral("Usage: mctask vault ") + command)) << help.out.toStdString();
    }
}

// A folder added from outside takes its files, names what is no regular
// file (these were skipped without a word; reading a FIFO would hang), and
// never takes the vault's own data even when the vault itself is added.
TEST_F(VaultCommandsTest, AFolderAddNamesWhatItSkipsAndLeavesTheVaultsDataAlone)
{
    init();
    write("src/a.mcdprt", "a");
    write("src/sub/b.mcdprt", "b");
    ASSERT_EQ(::mkfifo(QFile::encodeName(path("src/sub/pipe")).constData(), 0600), 0);
    const ProgramRun added = run({"vault", "add", "--vault", path("v"), path("src"), "--json"});
    ASSERT_EQ(added.status, 0) << added.err.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(added.out.toUtf8()).array().size(), 2);
    EXPECT_TRUE(added.err.contains(QStringLiteral("skipped %1: not a regular file").arg(path("src/sub/pipe"))))
        << added.err.toStdString();
    const ProgramRun fifo = run({"vault", "add", "--vault", path("v"), path("src/sub/pipe")});
    EXPECT_EQ(fifo.status, 2);
    EXPECT_TRUE(fifo.err.contains("is not a regular file")) << fifo.err.toStdString();

    const qint64 databaseSize = QFileInfo(path("v/.mctask/vault.db")).size();
    const ProgramRun whole = run({"vault", "add", "--vault", path("v"), path("v"), "--json"});
    ASSERT_EQ(whole.status, 0) << whole.err.toStdString();
    for (const QJsonValue &row : QJsonDocument::fromJson(whole.out.toUtf8()).array())
        EXPECT_FALSE(row.toObject()["path"].toString().contains(".mctask")) << row.toObject()["path"].toString().toStdString();
    EXPECT_EQ(lsJson().size(), 2);
    EXPECT_LT(QFileInfo(path("v/.mctask/vault.db")).size(), 2 * databaseSize + 65536);
}

} // namespace
