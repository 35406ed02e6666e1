#include "platform/home.h"
#include "platform/qtestprint.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

// Sets MCTASK_HOME for one test and puts the old value back.
class HomeTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_hadHome = qEnvironmentVariableIsSet("MCTASK_HOME");
        m_oldHome = qgetenv("MCTASK_HOME");
    }
    void TearDown() override
    {
        if (m_hadHome)
            qputenv("MCTASK_HOME", m_oldHome);
        else
            qunsetenv("MCTASK_HOME");
    }

    bool m_hadHome = false;
    QByteArray m_oldHome;
};

} // namespace

TEST_F(HomeTest, EnvironmentWinsAndIsMadeAbsoluteAndClean)
{
    QTemporaryDir dir;
    qputenv("MCTASK_HOME", (dir.path() + "/a/../home/").toLocal8Bit());
    EXPECT_EQ(mctaskHome(), dir.path() + "/home");
    EXPECT_EQ(mctaskHomePath("registry.json"), dir.path() + "/home/registry.json");
    EXPECT_FALSE(QDir(dir.path() + "/home").exists());
    EXPECT_EQ(ensureMctaskHome(), dir.path() + "/home");
    EXPECT_TRUE(QDir(dir.path() + "/home").exists());

    qputenv("MCTASK_HOME", "relative/home");
    EXPECT_EQ(mctaskHome(), QDir::current().absoluteFilePath("relative/home"));
}

TEST_F(HomeTest, DefaultsToTheUsersDataFolder)
{
    qunsetenv("MCTASK_HOME");
    EXPECT_EQ(mctaskHome(), QDir::homePath() + "/.local/share/mctask");
    qputenv("MCTASK_HOME", "");
    EXPECT_EQ(mctaskHome(), QDir::homePath() + "/.local/share/mctask");
}
