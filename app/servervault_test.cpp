#include "vault/pgtesting.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "tests/foldertest.h"
#include "tests/programrun.h"

namespace {

// Machines are homes of their own (registry, drive map, local view) that
// share one vault on a private PostgreSQL server.
class ServerVaultTest : public FolderTest
{
protected:
    void SetUp() override { MCTASK_PG_SCHEMA_OR_SKIP(m_schema); }

    ProgramRun run(const QString &home, const QStringList &args)
    {
        return runProgram(MCTASK_PROGRAM, args, ProgramSetting(path(home + "/home")).in(m_dir.path()));
    }
    std::unique_ptr<PgTestSchema> m_schema;
};

TEST_F(ServerVaultTest, AFileAddedInOneHomeIsFetchedIntoAnothersLocalView)
{
    const QString url = m_schema->url();
    const ProgramRun created = run("a", {"vault", "init", path("a/v"), "--server", url, "--name", "Shared"});
    ASSERT_EQ(created.status, 0) << created.err.toStdString();
    // The URL may carry a password: only the owner reads the local view's note of it.
    EXPECT_EQ(QFile::permissions(path("a/v/.mctask/server")), QFileDevice::ReadOwner | QFileDevice::WriteOwner
                                                                | QFileDevice::ReadUser | QFileDevice::WriteUser);
    write("src/part.mcdprt", "first");
    const ProgramRun added = run("a", {"vault", "add", "--vault", path("a/v"), path("src/part.mcdprt"), "--to", "V:\\Parts"});
    ASSERT_EQ(added.status, 0) << added.err.toStdString();

    const ProgramRun attached = run("b", {"vault", "attach", url, path("b/v"), "--drive", "W"});
    ASSERT_EQ(attached.status, 0) << attached.err.toStdString();
    EXPECT_TRUE(attached.out.contains("as W:")) << attached.out.toStdString();
    // B sees the file in the shared store before it has a local copy.
    const ProgramRun listed = run("b", {"vault", "ls", "--vault", path("b/v"), "--json"});
    ASSERT_EQ(listed.status, 0) << listed.err.toStdString();
    const QJsonArray files = QJsonDocument::fromJson(listed.out.toUtf8()).array();
    ASSERT_EQ(files.size(), 1);
    EXPECT_EQ(files[0].toObject()["path"].toString(), QStringLiteral("W:\\Parts\\part.mcdprt"));
    EXPECT_FALSE(QFile::exists(path("b/v/Parts/part.mcdprt")));

    ProgramRun got = run("b", {"vault", "get", "--vault", path("b/v"), "W:\\Parts"});
    ASSERT_EQ(got.status, 0) << got.err.toStdString();
    EXPECT_TRUE(got.out.contains("fetched 1 of 1")) << got.out.toStdString();
    EXPECT_EQ(read("b/v/Parts/part.mcdprt"), QByteArray("first"));
    got = run("b", {"vault", "get", "--vault", path("b/v")});
    EXPECT_TRUE(got.out.contains("fetched 0 of 1")) << got.out.toStdString();

    // A new version made in A replaces B's stale copy on the next get.
    write("src/part.mcdprt", "second");
    ASSERT_EQ(run("a", {"vault", "add", "--vault", path("a/v"), path("src/part.mcdprt"), "--to", "V:\\Parts"}).status, 0);
    got = run("b", {"vault", "get", "--vault", path("b/v"), path("b/v/Parts/part.mcdprt")});
    EXPECT_TRUE(got.out.contains("fetched 1 of 1")) << got.out.toStdString();
    EXPECT_EQ(read("b/v/Parts/part.mcdprt"), QByteArray("second"));

    // The database holds one vault.
    const ProgramRun again = run("c", {"vault", "init", path("c/v"), "--server", url});
    EXPECT_NE(again.status, 0);
    EXPECT_TRUE(again.err.contains("already holds a vault")) << again.err.toStdString();
}

TEST_F(ServerVaultTest, AServerThatCannotBeReachedFailsWithOneLineAndNoPassword)
{
    QTemporaryDir nowhere;
    const QString url = "postgresql://alice:s3cret@/vault?host=" + nowhere.path();
    const ProgramRun attached = run("a", {"vault", "attach", url, path("a/v")});
    EXPECT_EQ(attached.status, 1);
    EXPECT_EQ(attached.err.count('\n'), 1) << attached.err.toStdString();
    EXPECT_TRUE(attached.err.contains("vault server vault on " + nowhere.path())) << attached.err.toStdString();
    EXPECT_FALSE(attached.err.contains("s3cret"));
    EXPECT_FALSE(QFile::exists(path("a/v/.mctask/server")));

    // A local view whose server went away: every command says so the same way.
    const ProgramRun created = run("b", {"vault", "init", path("b/v"), "--server", m_schema->url()});
    ASSERT_EQ(created.status, 0) << created.err.toStdString();
    QFile server(path("b/v/.mctask/server"));
    ASSERT_TRUE(server.open(QIODevice::WriteOnly | QIODevice::Truncate));
    server.write(url.toUtf8());
    server.close();
    const ProgramRun listed = run("b", {"vault", "ls", "--vault", path("b/v")});
    EXPECT_EQ(listed.status, 1);
    EXPECT_EQ(listed.err.count('\n'), 1) << listed.err.toStdString();
    EXPECT_TRUE(listed.err.contains("cannot connect")) << listed.err.toStdString();
    EXPECT_FALSE(listed.err.contains("s3cret"));
}

TEST_F(ServerVaultTest, EveryCommandFailsWithOneLineNamingTheServerWhileItIsStopped)
{
    std::unique_ptr<PrivatePgServer> server;
    MCTASK_PRIVATE_PG_OR_SKIP(server, MCTASK_PRIVATEPG_SCRIPT);
    // A password in the URL (the private server trusts its socket and ignores it).
    QString url = server->url();
    url.replace("postgresql:///", "postgresql://mctask:s3cret@/");
    const auto ok = [&](const QStringList &args) {
        const ProgramRun r = run("a", args);
        EXPECT_EQ(r.status, 0) << args.join(' ').toStdString() << ": " << r.err.toStdString();
        return r;
    };
    ok({"vault", "init", path("a/v"), "--server", url});
    write("src/part.mcdprt", "part");
    ok({"vault", "add", "--vault", path("a/v"), path("src/part.mcdprt"), "--to", "Parts"});
    ok({"task", "create", "--vault", path("a/v"), "Convert", "--kind", "convert"});
    const QString instance =
        ok({"task", "launch", "--vault", path("a/v"), "Convert", "V:\\Parts\\part.mcdprt"}).lastLine();
    server->stop();

    const QString socket = url.section("host=", 1).section('&', 0, 0);
    const QList<QStringList> commands{
        {"vault", "ls"},
        {"vault", "add", path("src/part.mcdprt"), "--to", "Other"},
        {"vault", "get"},
        {"vault", "show", "V:\\Parts\\part.mcdprt"},
        {"task", "launch", "Convert", "V:\\Parts\\part.mcdprt"},
        {"task", "instances"},
        {"task", "run", instance},
        {"host", "status"},
    };
    for (const QStringList &command : commands) {
        const ProgramRun r = run("a", command + QStringList{"--vault", path("a/v")});
        const std::string name = command.mid(0, 2).join(' ').toStdString();
        EXPECT_EQ(r.status, 1) << name;
        EXPECT_EQ(r.err.count('\n'), 1) << name << ": " << r.err.toStdString();
        EXPECT_TRUE(r.err.contains("vault server mctask on " + socket)) << name << ": " << r.err.toStdString();
        EXPECT_TRUE(r.err.contains("the server is not running or not reachable")) << name << ": " << r.err.toStdString();
        EXPECT_FALSE(r.err.contains("s3cret")) << name;
        EXPECT_TRUE(r.out.isEmpty()) << name << ": " << r.out.toStdString();
    }
}

} // namespace
