#include "vault/taskstore.h"
#include "vault/vaultstore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "tests/programrun.h"

namespace {

// A vault made and filled by the program itself, under a home of its own,
// with one task and one instance of it.
class MacroPreviewCommandTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_home.isValid() && m_work.isValid());
        m_vaultDir = m_work.filePath("vault");
        ASSERT_EQ(run({"vault", "init", m_vaultDir, "--name", "Demo", "--date-style", "103"}).status, 0);
        const QString source = m_work.filePath(QStringLiteral("Gear \u0416.mcdprt"));
        QFile file(source);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("part\n");
        file.close();
        const ProgramRun added =
            run({"vault", "add", "--vault", m_vaultDir, source, "--to", "Parts", "--revision", "B", "--state", "Released"});
        ASSERT_EQ(added.status, 0) << added.err.toStdString();

        auto store = VaultStore::open(m_vaultDir);
        TaskStore tasks(store);
        const TaskRow task = tasks.createTask("Convert", "{00000000-0000-0000-0000-000000000000}");
        tasks.setTaskVariable(task.id, "__script",
                              Variant::fromBStr("f = \"<Filepath>\": c = [PdfInColor]: s = \"<SelCfgOrSheet>\": "
                                                "o = \"[OutputPath]\": n = \"{#1}\": g = \"<TaskInstanceGuid>\""));
        tasks.setTaskVariable(task.id, "PdfInColor", Variant::fromBool(false));
        tasks.setTaskVariable(task.id, "OutputPath", Variant::fromBStr("<Path>\\<Revision>\\<Version>"));
        const InstanceRow instance = tasks.createInstance(task.id);
        m_guid = instance.guid;
        tasks.setInstanceVariable(instance.id, "PdfInColor", Variant::fromBool(true));
        DoxCmdData entry;
        entry.string1 = QStringLiteral("v:\\parts\\gear \u0416.MCDPRT");
        entry.string2 = "Sheet2";
        entry.long1 = DoxObject_File;
        entry.long2 = 1;
        tasks.setInstanceData(instance.id, {entry});
        tasks.createTask("Empty", "{00000000-0000-0000-0000-000000000000}");
    }

    ProgramRun run(const QStringList &args)
    {
        return runProgram(MCTASK_PROGRAM, args,
                          ProgramSetting(m_home.path()).in(m_work.path()).timeout(30000));
    }

    QTemporaryDir m_home;
    QTemporaryDir m_work;
    QString m_vaultDir;
    QString m_guid;
};

const QString kEncodedPath = QStringLiteral("V:\\Parts\\Gear \" & ChrW(1046) & \".mcdprt");

TEST_F(MacroPreviewCommandTest, TaskPreviewUsesTheTasksVariables)
{
    const ProgramRun preview = run({"macro", "preview", "--vault", m_vaultDir, "Convert", "V:\\Parts\\Gear \u0416.mcdprt"});
    ASSERT_EQ(preview.status, 0) << preview.err.toStdString();
    EXPECT_EQ(preview.out, "f = \"" + kEncodedPath + "\": c = False: s = \"\": o = \"V:\\Parts\\B\\1\": "
                           "n = \"Convert\": g = \"<TaskInstanceGuid>\"");
}

TEST_F(MacroPreviewCommandTest, InstancePreviewUsesWhatTheLaunchChose)
{
    // The file named natively, from inside the vault's folder.
    const QString native = QDir(m_vaultDir).filePath(QStringLiteral("Parts/Gear \u0416.mcdprt"));
    const ProgramRun preview = run({"macro", "preview", "--vault", m_vaultDir, m_guid, native});
    ASSERT_EQ(preview.status, 0) << preview.err.toStdString();
    EXPECT_EQ(preview.out, "f = \"" + kEncodedPath + "\": c = True: s = \"Sheet2\": o = \"V:\\Parts\\B\\1\": "
                           "n = \"Convert\": g = \"" + m_guid + "\"");

    const ProgramRun chosen = run({"macro", "preview", "--vault", m_vaultDir, "--config", "Other", m_guid,
                                   "V:\\Parts\\Gear \u0416.mcdprt"});
    EXPECT_TRUE(chosen.out.contains("s = \"Other\"")) << chosen.out.toStdString();
}

TEST_F(MacroPreviewCommandTest, BadInputAndFailuresAreReported)
{
    const QString file = QStringLiteral("V:\\Parts\\Gear \u0416.mcdprt");
    // Not a task or instance, a missing argument, a bad version: usage errors.
    EXPECT_EQ(run({"macro", "preview", "--vault", m_vaultDir, "Nothing", file}).status, 2);
    EXPECT_EQ(run({"macro", "preview", "--vault", m_vaultDir, "Convert"}).status, 2);
    EXPECT_EQ(run({"macro", "preview", "--vault", m_vaultDir, "--version", "x", "Convert", file}).status, 2);
    // A task without macro text fails as its run would.
    const ProgramRun empty = run({"macro", "preview", "--vault", m_vaultDir, "Empty", file});
    EXPECT_EQ(empty.status, 1);
    EXPECT_TRUE(empty.err.contains("E_UNEXPECTED")) << empty.err.toStdString();
    // A file the vault does not know.
    const ProgramRun missing = run({"macro", "preview", "--vault", m_vaultDir, "Convert", "V:\\Parts\\none.mcdprt"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains("E_DOX_FILE_NOT_FOUND")) << missing.err.toStdString();
}

// Bare macro files: checked and run with no vault or task.
class BareMacroCommandTest : public ::testing::Test
{
protected:
    QString write(const QString &name, const QByteArray &text)
    {
        const QString path = m_work.filePath(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return path;
    }
    ProgramRun run(const QStringList &args)
    {
        return runProgram(MCTASK_PROGRAM, args, ProgramSetting(m_home.path()).in(m_work.path()).timeout(30000));
    }

    QTemporaryDir m_home;
    QTemporaryDir m_work;
};

TEST_F(BareMacroCommandTest, RunPrintsDebugOutputAndFailsWithTheRunCode)
{
    const QString path = write("tool.mcb", "Sub main()\r\n    Debug.Print \"main\"; 1 + 1\r\nEnd Sub\r\n"
                                           "Sub other()\r\n    Debug.Print \"other\"\r\n    MsgBox \"hello\"\r\nEnd Sub\r\n"
                                           "Sub broken()\r\n    Dim x As Long\r\n    x = \"text\"\r\nEnd Sub\r\n");
    const ProgramRun ran = run({"macro", "run", path});
    EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
    EXPECT_EQ(ran.out, "main 2 \n");
    const ProgramRun other = run({"macro", "run", path, "--proc", "other"});
    EXPECT_EQ(other.status, 0);
    EXPECT_EQ(other.out, "other\n");
    EXPECT_TRUE(other.err.contains("msgbox[Mecadra]: hello")) << other.err.toStdString();
    // Type mismatch: run code 14, with the line of the failing statement.
    const ProgramRun broken = run({"macro", "run", path, "--proc", "broken"});
    EXPECT_EQ(broken.status, 14);
    EXPECT_TRUE(broken.err.contains(path + ":10:5: run code 14: Type mismatch")) << broken.err.toStdString();
    const ProgramRun missing = run({"macro", "run", path, "--proc", "nothing"});
    EXPECT_EQ(missing.status, 6);
}

} // namespace
