#include "platform/qtestprint.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "tests/programrun.h"

namespace {

class RegistryCommandsTest : public ::testing::Test
{
protected:
    ProgramRun mctask(const QStringList &args) const
    {
        return runProgram(MCTASK_PROGRAM, args, ProgramSetting(m_home.path()).timeout(30000));
    }

    QTemporaryDir m_home;
};

const QString kUserKey = QStringLiteral("HKCU\\Software\\Mecadra\\Applications\\Vaultek Enterprise\\McTaskAddIn");

TEST_F(RegistryCommandsTest, SetGetAndDeleteValuesThatLaterProcessesRead)
{
    ASSERT_EQ(mctask({"registry", "set", kUserKey, "MacroTimeout", "0x3c", "--dword"}).status, 0);
    ASSERT_EQ(mctask({"registry", "set", kUserKey, "ScriptCopyPath", "%TEMP%\\last.mcb"}).status, 0);

    const ProgramRun one = mctask({"registry", "get", kUserKey, "MacroTimeout"});
    EXPECT_EQ(one.status, 0);
    EXPECT_TRUE(one.out.contains(QRegularExpression("MacroTimeout\\s+REG_DWORD\\s+0x3c \\(60\\)"))) << one.out.toStdString();
    EXPECT_FALSE(one.out.contains("ScriptCopyPath"));

    // The key with all its values, and its parent listing it as a sub-key.
    const ProgramRun all = mctask({"registry", "get", kUserKey});
    EXPECT_TRUE(all.out.contains(QRegularExpression("ScriptCopyPath\\s+REG_SZ\\s+%TEMP%\\\\last\\.mcb"))) << all.out.toStdString();
    const ProgramRun parent = mctask({"registry", "get", kUserKey.section('\\', 0, -2)});
    EXPECT_TRUE(parent.out.contains(kUserKey)) << parent.out.toStdString();

    EXPECT_EQ(mctask({"registry", "delete", kUserKey, "MacroTimeout"}).status, 0);
    const ProgramRun gone = mctask({"registry", "get", kUserKey, "MacroTimeout"});
    EXPECT_EQ(gone.status, 1);
    EXPECT_TRUE(gone.err.contains("no value 'MacroTimeout'")) << gone.err.toStdString();
    EXPECT_EQ(mctask({"registry", "delete", kUserKey}).status, 0);
    EXPECT_EQ(mctask({"registry", "get", kUserKey}).status, 1);
    EXPECT_EQ(mctask({"registry", "delete", kUserKey}).status, 1);
}

TEST_F(RegistryCommandsTest, ViewsAndDefaultValuesAreKeptApart)
{
    const QString key = QStringLiteral("HKLM\\SOFTWARE\\Mecadra\\Mecadra 2013\\Setup");
    ASSERT_EQ(mctask({"registry", "set", "--view", "32", key, "Mecadra Folder", "C:\\M32"}).status, 0);
    EXPECT_EQ(mctask({"registry", "get", key}).status, 1); // nothing in the 64-bit view
    EXPECT_TRUE(mctask({"registry", "get", "--view", "32", key}).out.contains("C:\\M32"));

    ASSERT_EQ(mctask({"registry", "set", "HKCU\\Software\\Mecadra\\AddInsStartup\\{A}", "(Default)", "1", "--dword"}).status, 0);
    EXPECT_TRUE(mctask({"registry", "get", "HKCU\\Software\\Mecadra\\AddInsStartup\\{A}", ""})
                    .out.contains(QRegularExpression("\\(Default\\)\\s+REG_DWORD\\s+0x1 \\(1\\)")));
}

TEST_F(RegistryCommandsTest, RefusesBadKeysAndValuesWithStatusTwo)
{
    for (const QStringList &args : {QStringList{"registry", "get", "HKXX\\Software"}, QStringList{"registry", "get"},
                                    QStringList{"registry", "set", kUserKey, "N", "12x", "--dword"},
                                    QStringList{"registry", "set", kUserKey, "N", "0x100000000", "--dword"},
                                    QStringList{"registry", "set", kUserKey, "N", "1", "--dword", "--string"},
                                    QStringList{"registry", "get", "--view", "16", kUserKey},
                                    QStringList{"registry", "delete", "HKLM"}}) {
        const ProgramRun run = mctask(args);
        EXPECT_EQ(run.status, 2) << args.join(' ').toStdString();
        EXPECT_TRUE(run.err.startsWith("mctask: registry")) << run.err.toStdString();
    }
}

} // namespace
