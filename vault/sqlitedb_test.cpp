#include "vault/sqlitedb.h"

#include "host/hosterror.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

HostError errorOf(const std::function<void()> &f)
{
    try {
        f();
    } catch (const HostError &e) {
        return e;
    }
    return HostError(S_OK);
}

int count(SqliteDb &db)
{
    SqliteStatement s = db.prepare("SELECT COUNT(*) FROM t");
    s.step();
    const int n = s.integer(0);
    return n;
}

class SqliteDbTest : public ::testing::Test
{
protected:
    void SetUp() override { db.exec("CREATE TABLE t (k TEXT PRIMARY KEY, v BLOB)"); }
    SqliteDb db{QStringLiteral(":memory:")};
};

TEST_F(SqliteDbTest, AUseEndsWithItsScopeAndOverlappingUsesDoNotShareState)
{
    db.exec("INSERT INTO t (k) VALUES ('a'), ('b')");
    const char *sql = "SELECT k FROM t WHERE k >= ? ORDER BY k";
    {
        SqliteStatement outer = db.prepare(sql);
        ASSERT_TRUE(outer.bind(1, QStringLiteral("a")).step());
        // The same text while the first use is open: a statement of its own.
        SqliteStatement inner = db.prepare(sql);
        ASSERT_TRUE(inner.bind(1, QStringLiteral("b")).step());
        EXPECT_EQ(inner.text(0), "b");
        ASSERT_TRUE(outer.step());
        EXPECT_EQ(outer.text(0), "b");
    }
    // A use left half-way starts again from the first row, with no bindings.
    {
        SqliteStatement again = db.prepare(sql);
        ASSERT_TRUE(again.bind(1, QStringLiteral("a")).step());
        EXPECT_EQ(again.text(0), "a");
    }
    EXPECT_FALSE(db.prepare(sql).step()); // NULL >= NULL is no row
}

TEST_F(SqliteDbTest, FailuresCarryTheDatabaseCodeAndSqlitesMessage)
{
    const HostError syntax = errorOf([&] { db.prepare("SELEC nonsense"); });
    EXPECT_EQ(syntax.code(), E_DOX_DATABASE_ACCESS);
    EXPECT_TRUE(syntax.context().contains(QLatin1String("syntax error"))) << syntax.what();

    SqliteStatement insert = db.prepare("INSERT INTO t (k, v) VALUES (?, ?)");
    insert.bind(1, QStringLiteral("a")).bindBlob(2, QByteArray()).exec();
    const HostError unique = errorOf([&] { db.prepare("INSERT INTO t (k, v) VALUES (?, ?)").bind(1, QStringLiteral("a")).exec(); });
    EXPECT_EQ(unique.code(), E_DOX_DATABASE_ACCESS);
    EXPECT_TRUE(unique.context().contains(QLatin1String("UNIQUE"))) << unique.what();
    // The cached statement is usable again after its failure.
    db.prepare("INSERT INTO t (k, v) VALUES (?, ?)").bind(1, QStringLiteral("b")).bindBlob(2, "x").exec();
    EXPECT_EQ(count(db), 2);

    SqliteStatement read = db.prepare("SELECT v FROM t WHERE k = ?");
    read.bind(1, QStringLiteral("a"));
    ASSERT_TRUE(read.step());
    EXPECT_FALSE(read.isNull(0)); // an empty blob is not NULL
    EXPECT_EQ(read.blob(0), QByteArray());

    EXPECT_EQ(errorOf([] { SqliteDb bad(QStringLiteral("/nonexistent/dir/x.db")); }).code(), E_DOX_CANT_OPEN_DATABASE);
}

// Only the scope's own commits skip the flush: every later commit of the
// connection is flushed again, and a scope inside a transaction leaves the
// transaction's setting alone.
TEST(SqliteDbFile, UnflushedCommitsEndWithTheirScope)
{
    QTemporaryDir dir;
    SqliteDb db(dir.path() + "/x.db");
    const auto synchronous = [&] {
        SqliteStatement s = db.prepare("PRAGMA synchronous");
        s.step();
        return s.integer(0);
    };
    const int full = synchronous();
    ASSERT_EQ(full, 2);
    {
        const SqliteUnflushedCommits unflushed(db);
        EXPECT_EQ(synchronous(), 1);
    }
    EXPECT_EQ(synchronous(), full);
    SqliteTransaction t(db);
    {
        const SqliteUnflushedCommits unflushed(db);
        EXPECT_EQ(synchronous(), full);
    }
    t.commit();
}

} // namespace
