#include "platform/drivemap.h"
#include "platform/qtestprint.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class DriveMapTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_dir.isValid());
        m_root = m_dir.path() + "/vault";
        ASSERT_TRUE(QDir().mkpath(m_root + "/Folder/Sub"));
        QFile file(m_root + "/Folder/Sub/File.TXT");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }

    QTemporaryDir m_dir;
    QString m_root;
};

} // namespace

TEST_F(DriveMapTest, ToNativeMatchesLetterAndNamesCaseInsensitively)
{
    DriveMap map;
    ASSERT_TRUE(map.mount('v', m_root));
    EXPECT_EQ(map.toNative("V:\\Folder\\Sub\\File.TXT"), m_root + "/Folder/Sub/File.TXT");
    EXPECT_EQ(map.toNative("v:\\folder\\SUB\\file.txt"), m_root + "/Folder/Sub/File.TXT");
    EXPECT_EQ(map.toNative("v:/FOLDER/sub/"), m_root + "/Folder/Sub");
    EXPECT_EQ(map.toNative("V:\\"), m_root);
    EXPECT_EQ(map.toNative("V:"), m_root);
    // What does not exist yet keeps its written case below the last match.
    EXPECT_EQ(map.toNative("V:\\folder\\New\\Out.PDF"), m_root + "/Folder/New/Out.PDF");
}

TEST_F(DriveMapTest, ToNativeStaysInsideTheRootAndNeedsAMappedDrive)
{
    DriveMap map;
    ASSERT_TRUE(map.mount('V', m_root));
    EXPECT_EQ(map.toNative("V:\\..\\..\\etc\\passwd"), m_root + "/etc/passwd");
    EXPECT_EQ(map.toNative("V:\\Folder\\.\\x\\..\\Sub"), m_root + "/Folder/Sub");
    EXPECT_EQ(map.toNative("W:\\Folder"), "");
    EXPECT_EQ(map.toNative("\\Folder\\a.txt"), "");
    EXPECT_EQ(map.toNative("\\\\server\\share\\a.txt"), "");
    EXPECT_EQ(map.toNative(""), "");
}

TEST_F(DriveMapTest, ToWindowsIsTheInverseAndPrefersTheDeepestRoot)
{
    DriveMap map;
    ASSERT_TRUE(map.mount('V', m_root));
    ASSERT_TRUE(map.mount('S', m_root + "/Folder/Sub"));
    EXPECT_EQ(map.toWindows(m_root + "/Folder/a.txt"), "V:\\Folder\\a.txt");
    EXPECT_EQ(map.toWindows(m_root), "V:\\");
    EXPECT_EQ(map.toWindows(m_root + "/Folder/Sub/File.TXT"), "S:\\File.TXT");
    EXPECT_EQ(map.toWindows(m_root + "/./Folder/../x"), "V:\\x");
    // A sibling whose name starts like the root is not under it.
    EXPECT_EQ(map.toWindows(m_root + "2/a.txt"), "");
    EXPECT_EQ(map.toWindows("relative/a.txt"), "");

    const QString windows = "V:\\Folder\\Sub\\File.TXT";
    EXPECT_EQ(map.toWindows(map.toNative(windows)), "S:\\File.TXT");
    EXPECT_EQ(map.toNative(map.toWindows(m_root + "/Folder/a.txt")), m_root + "/Folder/a.txt");
}

TEST_F(DriveMapTest, MountRulesAndListing)
{
    DriveMap map;
    EXPECT_FALSE(map.mount('1', m_root));
    EXPECT_FALSE(map.mount('V', ""));
    ASSERT_TRUE(map.mount('v', m_root + "/"));
    ASSERT_TRUE(map.mount('C', m_dir.path()));
    ASSERT_TRUE(map.mount('V', m_root + "/Folder")); // replaces
    const auto mounts = map.list();
    ASSERT_EQ(mounts.size(), 2u);
    EXPECT_EQ(mounts[0].letter, QChar('C'));
    EXPECT_EQ(mounts[1].letter, QChar('V'));
    EXPECT_EQ(mounts[1].nativeRoot, m_root + "/Folder");
    EXPECT_EQ(map.root('v'), m_root + "/Folder");
    EXPECT_TRUE(map.unmount('v'));
    EXPECT_FALSE(map.unmount('v'));
    EXPECT_EQ(map.toNative("V:\\a"), "");
}

TEST_F(DriveMapTest, FileBackedMapsShareMountsBetweenInstances)
{
    const QString file = m_dir.path() + "/home/drives.json";
    DriveMap first(file);
    DriveMap second(file);
    ASSERT_TRUE(first.mount('V', m_root));
    // The other instance (as another process would) sees the change.
    EXPECT_EQ(second.toNative("V:\\folder"), m_root + "/Folder");
    ASSERT_TRUE(second.mount('W', m_dir.path()));
    EXPECT_EQ(first.list().size(), 2u);
    EXPECT_TRUE(first.unmount('W'));
    EXPECT_EQ(second.root('W'), "");

    DriveMap reopened(file);
    EXPECT_EQ(reopened.root('V'), m_root);
    EXPECT_EQ(reopened.file(), file);
}

TEST_F(DriveMapTest, ProcessWideMapCanBeReplacedByATest)
{
    DriveMap map;
    ASSERT_TRUE(map.mount('Q', m_root));
    {
        ScopedDriveMap guard(map);
        EXPECT_EQ(&DriveMap::instance(), &map);
        EXPECT_EQ(DriveMap::instance().toNative("Q:\\Folder"), m_root + "/Folder");
    }
    EXPECT_NE(&DriveMap::instance(), &map);
}
