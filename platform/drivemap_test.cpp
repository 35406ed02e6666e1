#include "platform/clock.h"
#include "platform/drivemap.h"
#include "platform/qtestprint.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

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
    // Below a file nothing is looked up.
    EXPECT_EQ(map.toNative("V:\\folder\\sub\\file.txt\\x"), m_root + "/Folder/Sub/File.TXT/x");
    EXPECT_EQ(map.toNative("V:\\Folder\\Sub\\File.TXT\\x"), m_root + "/Folder/Sub/File.TXT/x");
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

    // Either kind of path: a native root with Windows parts appended stays native.
    EXPECT_EQ(map.toNativeOrSelf("/opt/mctask\\Lang\\DE\\McTaskAddIn.qch"), "/opt/mctask/Lang/DE/McTaskAddIn.qch");
    EXPECT_EQ(map.toNativeOrSelf("V:\\Folder\\a.txt"), m_root + "/Folder/a.txt");
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

namespace {

// Stands in for a change within one clock tick: the folder's time is set
// back to what it was before the change.
struct FolderTime {
    explicit FolderTime(const QString &folder) : m_path(QFile::encodeName(folder))
    {
        struct stat info {};
        EXPECT_EQ(::stat(m_path.constData(), &info), 0);
        m_times[0].tv_nsec = UTIME_OMIT;
        m_times[1] = info.st_mtim;
    }
    void restore() const { EXPECT_EQ(::utimensat(AT_FDCWD, m_path.constData(), m_times, 0), 0); }
    QDateTime modified() const
    {
        return QDateTime::fromMSecsSinceEpoch(m_times[1].tv_sec * 1000LL + m_times[1].tv_nsec / 1000000);
    }

    QByteArray m_path;
    timespec m_times[2] {};
};

bool touch(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly);
}

} // namespace

TEST_F(DriveMapTest, LookupsSeeEntriesCreatedRemovedAndRenamedSinceTheLastOne)
{
    // A clock well past every folder's time: listings are kept.
    FakeClock clock(QDateTime::currentDateTime().addSecs(3600));
    ScopedClock clockGuard(clock);
    DriveMap map;
    ASSERT_TRUE(map.mount('V', m_root));
    const QString sub = m_root + "/Folder/Sub";

    EXPECT_EQ(map.toNative("V:\\folder\\sub\\new.txt"), sub + "/new.txt");
    ASSERT_TRUE(touch(sub + "/NEW.txt"));
    EXPECT_EQ(map.toNative("V:\\folder\\sub\\new.txt"), sub + "/NEW.txt");
    ASSERT_TRUE(QFile::rename(sub + "/NEW.txt", sub + "/New.Txt"));
    EXPECT_EQ(map.toNative("V:\\folder\\sub\\new.txt"), sub + "/New.Txt");
    ASSERT_TRUE(QFile::remove(sub + "/New.Txt"));
    EXPECT_EQ(map.toNative("V:\\folder\\sub\\new.txt"), sub + "/new.txt");

    // Folders too, at any depth, and the exact case wins over another one.
    EXPECT_EQ(map.toNative("V:\\folder\\other\\x.txt"), m_root + "/Folder/other/x.txt");
    ASSERT_TRUE(QDir().mkpath(m_root + "/Folder/OTHER/Deep"));
    EXPECT_EQ(map.toNative("V:\\folder\\other\\deep\\x.txt"), m_root + "/Folder/OTHER/Deep/x.txt");
    ASSERT_TRUE(QDir().mkpath(m_root + "/Folder/other"));
    EXPECT_EQ(map.toNative("V:\\folder\\other\\deep"), m_root + "/Folder/other/deep");
    EXPECT_EQ(map.toNative("V:\\folder\\Other\\deep"), m_root + "/Folder/OTHER/Deep");
    ASSERT_TRUE(QDir(m_root + "/Folder/OTHER").removeRecursively());
    EXPECT_EQ(map.toNative("V:\\folder\\Other\\deep"), m_root + "/Folder/other/deep");

    // A folder replaced by another of the same name is a new folder.
    ASSERT_TRUE(QDir(sub).removeRecursively());
    ASSERT_TRUE(QDir().mkpath(sub));
    ASSERT_TRUE(touch(sub + "/FILE.txt"));
    EXPECT_EQ(map.toNative("V:\\folder\\sub\\file.txt"), sub + "/FILE.txt");
}

TEST_F(DriveMapTest, AListingIsKeptOnlyOnceTheFolderHasSettled)
{
    const QString sub = m_root + "/Folder/Sub";
    ASSERT_TRUE(touch(sub + "/placeholder"));
    const FolderTime folder(sub);
    DriveMap map;
    ASSERT_TRUE(map.mount('V', m_root));

    // Listed just after the folder changed: a change in the same tick (same
    // folder time, same size) must still be seen, so nothing was kept.
    FakeClock clock(folder.modified().addMSecs(10));
    ScopedClock clockGuard(clock);
    EXPECT_EQ(map.toNative("V:\\folder\\sub\\late.txt"), sub + "/late.txt");
    ASSERT_TRUE(QFile::remove(sub + "/placeholder"));
    ASSERT_TRUE(touch(sub + "/LATE.txt"));
    folder.restore();
    EXPECT_EQ(map.toNative("V:\\folder\\sub\\late.txt"), sub + "/LATE.txt");

    // Listed long after: the listing is reused while the folder's stamp
    // stays, which the same trick makes visible.
    clock.setNow(folder.modified().addSecs(60));
    EXPECT_EQ(map.toNative("V:\\folder\\sub\\later.txt"), sub + "/later.txt");
    ASSERT_TRUE(QFile::remove(sub + "/LATE.txt"));
    ASSERT_TRUE(touch(sub + "/LATER.txt"));
    folder.restore();
    EXPECT_EQ(map.toNative("V:\\folder\\sub\\later.txt"), sub + "/later.txt");
    // Any real change of the folder's time makes it listed again.
    ASSERT_TRUE(touch(sub + "/another"));
    EXPECT_EQ(map.toNative("V:\\folder\\sub\\later.txt"), sub + "/LATER.txt");
}
