#include "base/windowspath.h"

#include <gtest/gtest.h>

namespace wp = WindowsPath;

TEST(WindowsPathTest, AppendPutsRelativePartsUnderTheBase)
{
    EXPECT_EQ(wp::append("C:\\Base", "Sub\\a.txt"), "C:\\Base\\Sub\\a.txt");
    EXPECT_EQ(wp::append("C:\\Base\\", "Sub"), "C:\\Base\\Sub");
    // A leading backslash does not make the second part rooted.
    EXPECT_EQ(wp::append("C:\\Base", "\\Sub\\a.txt"), "C:\\Base\\Sub\\a.txt");
    EXPECT_EQ(wp::append("C:\\Base", "\\\\"), "C:\\Base");
    // A part with its own drive or server replaces the base.
    EXPECT_EQ(wp::append("C:\\Base", "D:\\Other\\x"), "D:\\Other\\x");
    EXPECT_EQ(wp::append("C:\\Base", "\\\\srv\\share\\x"), "\\\\srv\\share\\x");
    EXPECT_EQ(wp::append("", "a\\b"), "a\\b");
    EXPECT_EQ(wp::append("C:\\Base\\Deep", "..\\Side\\.\\f"), "C:\\Base\\Side\\f");
    EXPECT_EQ(wp::append("V:", "Logs"), "V:\\Logs");
}

TEST(WindowsPathTest, CanonicalizeRemovesDotsWithoutClimbingAboveTheRoot)
{
    EXPECT_EQ(wp::canonicalize("C:\\a\\.\\b\\..\\c"), "C:\\a\\c");
    EXPECT_EQ(wp::canonicalize("C:\\..\\..\\x"), "C:\\x");
    EXPECT_EQ(wp::canonicalize("c:"), "C:\\");
    EXPECT_EQ(wp::canonicalize("C:/a//b/"), "C:\\a\\b\\");
    EXPECT_EQ(wp::canonicalize("\\\\srv\\share\\a\\..\\..\\b"), "\\\\srv\\share\\b");
    EXPECT_EQ(wp::canonicalize("\\a\\..\\..\\b"), "\\b");
    // A relative path keeps the ".." it cannot resolve.
    EXPECT_EQ(wp::canonicalize("..\\a\\..\\b"), "..\\b");
    EXPECT_EQ(wp::canonicalize("a\\b\\..\\..\\.."), "..");
    EXPECT_EQ(wp::canonicalize(""), "");
}

TEST(WindowsPathTest, ComparisonIgnoresCaseSeparatorsAndTrailingBackslash)
{
    EXPECT_TRUE(wp::equals("V:\\Folder\\A.TXT", "v:/folder/a.txt"));
    EXPECT_TRUE(wp::equals("V:\\Folder\\", "V:\\folder"));
    EXPECT_TRUE(wp::equals("V:\\Folder\\x\\..\\a", "V:\\FOLDER\\A"));
    EXPECT_FALSE(wp::equals("V:\\Folder\\a", "V:\\Folder\\ab"));
    EXPECT_EQ(wp::compare("V:\\a", "v:\\A"), 0);
    EXPECT_LT(wp::compare("V:\\a", "V:\\B"), 0);
    EXPECT_GT(wp::compare("V:\\c", "V:\\B"), 0);
}

TEST(WindowsPathTest, NamePartsTakeTheLastSeparatorAndTheLastDot)
{
    EXPECT_EQ(wp::fileName("V:\\Dir\\part.mcdprt"), "part.mcdprt");
    EXPECT_EQ(wp::fileName("V:/Dir/part"), "part");
    EXPECT_EQ(wp::fileName("part.txt"), "part.txt");
    EXPECT_EQ(wp::fileName("V:\\Dir\\"), "");
    EXPECT_EQ(wp::extension("V:\\Dir\\a.tar.gz"), "gz");
    // A dot in a folder name is not an extension.
    EXPECT_EQ(wp::extension("V:\\Dir.v2\\readme"), "");
    EXPECT_EQ(wp::extension("V:\\Dir\\.profile"), "profile");
    EXPECT_EQ(wp::removeExtension("V:\\Dir.v2\\a.b.txt"), "V:\\Dir.v2\\a.b");
    EXPECT_EQ(wp::removeExtension("V:\\Dir.v2\\readme"), "V:\\Dir.v2\\readme");
}

TEST(WindowsPathTest, ParentAndBackslashHelpersKeepDriveRoots)
{
    EXPECT_EQ(wp::parent("C:\\a\\b.txt"), "C:\\a");
    EXPECT_EQ(wp::parent("C:\\a\\b\\"), "C:\\a");
    EXPECT_EQ(wp::parent("C:\\a"), "C:\\");
    EXPECT_EQ(wp::parent("name"), "");
    EXPECT_EQ(wp::addBackslash("C:\\a"), "C:\\a\\");
    EXPECT_EQ(wp::addBackslash("C:\\a\\"), "C:\\a\\");
    EXPECT_EQ(wp::addBackslash(""), "");
    EXPECT_EQ(wp::removeBackslash("C:\\a\\\\"), "C:\\a");
    EXPECT_EQ(wp::removeBackslash("C:\\"), "C:\\");
    EXPECT_EQ(wp::driveLetter("v:\\x"), QChar('V'));
    EXPECT_TRUE(wp::driveLetter("\\\\srv\\x").isNull());
    EXPECT_TRUE(wp::isAbsolute("\\\\srv\\share"));
    EXPECT_FALSE(wp::isAbsolute("\\rooted\\only"));
}

TEST(WindowsPathTest, DriveRelativeAndRootedPathsAreToldApart)
{
    // "C:x" is taken as rooted at its drive.
    EXPECT_TRUE(wp::isAbsolute("C:x"));
    EXPECT_EQ(wp::canonicalize("c:x\\..\\y"), "C:\\y");
    EXPECT_EQ(wp::fileName("C:b.x"), "b.x");
    EXPECT_EQ(wp::append("C:\\Base", "D:rel"), "D:\\rel");
    EXPECT_TRUE(wp::isRooted("\\only\\root"));
    EXPECT_TRUE(wp::isRooted("/native/x"));
    EXPECT_TRUE(wp::isRooted("\\\\srv\\share"));
    EXPECT_FALSE(wp::isRooted("sub\\x"));
    EXPECT_FALSE(wp::isRooted(":x"));
    EXPECT_TRUE(wp::driveLetter("1:\\x").isNull());
    EXPECT_EQ(wp::baseName("C:\\a.d\\b.c.X_T"), "b.c");
    EXPECT_EQ(wp::parent("\\\\srv\\share\\a\\b"), "\\\\srv\\share\\a");
}

TEST(WindowsPathTest, DriveResolverMapsLettersOnly)
{
    const PathResolver resolve = makeDriveResolver({{QChar('c'), "/tmp/cdrive"}, {QChar('V'), "/srv/v/"}});
    EXPECT_EQ(resolve("C:\\Docs\\a.mcdprt"), "/tmp/cdrive/Docs/a.mcdprt");
    EXPECT_EQ(resolve("v:/x\\..\\y"), "/srv/v/y");
    EXPECT_EQ(resolve("V:\\..\\..\\etc"), "/srv/v/etc");
    EXPECT_EQ(resolve("/native/path"), "/native/path");
    EXPECT_EQ(resolve("Q:\\unmapped"), "");
    EXPECT_EQ(resolve("relative\\x"), "");
    EXPECT_EQ(resolve("\\\\server\\share\\x"), "");
}
