#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "tests/programrun.h"

namespace {

class VaultShowTest : public ::testing::Test
{
protected:
    ProgramRun run(const QStringList &args)
    {
        return runProgram(MCTASK_PROGRAM, args, ProgramSetting(m_dir.path() + "/home").withVault(m_dir.path() + "/v"));
    }
    void ok(const QStringList &args)
    {
        const ProgramRun r = run(args);
        ASSERT_EQ(r.status, 0) << r.err.toStdString();
    }
    QString source(const QString &name, const QByteArray &bytes)
    {
        const QString path = m_dir.path() + "/src/" + name;
        QDir().mkpath(m_dir.path() + "/src");
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        return path;
    }

    QTemporaryDir m_dir;
};

TEST_F(VaultShowTest, VersionsCardAndReferencesInBothDirections)
{
    ok({"vault", "init", m_dir.path() + "/v", "--name", "Demo"});
    ok({"vault", "add", source("part.mcdprt", "one"), "--to", "Parts", "--revision", "A", "--card", "Title=Shaft"});
    ok({"vault", "add", source("part.mcdprt", "two"), "--to", "Parts", "--revision", "B"});
    ok({"vault", "add", source("asm.mcdasm", "asm"), "--to", "Parts"});
    ok({"vault", "ref", "V:\\Parts\\asm.mcdasm", "V:\\Parts\\part.mcdprt", "--conf", "Default"});

    const ProgramRun shown = run({"vault", "show", "V:\\Parts\\part.mcdprt", "--json"});
    ASSERT_EQ(shown.status, 0) << shown.err.toStdString();
    const QJsonObject part = shown.json().object();
    EXPECT_EQ(part["path"], QJsonValue("V:\\Parts\\part.mcdprt"));
    const QJsonArray versions = part["versions"].toArray();
    ASSERT_EQ(versions.size(), 2);
    EXPECT_EQ(versions[0].toObject()["version"], QJsonValue(1));
    EXPECT_EQ(versions[1].toObject()["revision"], QJsonValue("B"));
    EXPECT_FALSE(versions[1].toObject()["date"].toString().isEmpty());
    ASSERT_EQ(part["card"].toArray().size(), 1);
    EXPECT_EQ(part["card"].toArray()[0].toObject()["value"], QJsonValue("Shaft"));
    EXPECT_TRUE(part["references"].toArray().isEmpty());
    ASSERT_EQ(part["referencedBy"].toArray().size(), 1);
    EXPECT_EQ(part["referencedBy"].toArray()[0].toObject()["path"], QJsonValue("V:\\Parts\\asm.mcdasm"));

    const QJsonObject assembly = run({"vault", "show", "V:\\Parts\\asm.mcdasm", "--json"}).json().object();
    ASSERT_EQ(assembly["references"].toArray().size(), 1);
    EXPECT_EQ(assembly["references"].toArray()[0].toObject()["configuration"], QJsonValue("Default"));

    const ProgramRun table = run({"vault", "show", "V:\\Parts\\part.mcdprt"});
    EXPECT_TRUE(table.out.contains("used by")) << table.out.toStdString();
    EXPECT_EQ(run({"vault", "show", "V:\\Parts\\none.mcdprt"}).status, 2);
}

} // namespace
