#include "platform/filesystem.h"
#include "platform/qtestprint.h"
#include "platform/memoryfilesystem.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>

namespace {

// The real and the memory file system obey the same rules.
template <class Fs>
class FileSystemTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if constexpr (std::is_same_v<Fs, RealFileSystem>) {
            m_base = m_dir.path();
        } else {
            m_base = "/work";
            ASSERT_TRUE(m_fs.mkpath(m_base));
        }
    }
    QString path(const QString &name) const { return m_base + '/' + name; }

    QTemporaryDir m_dir;
    Fs m_fs;
    QString m_base;
};

using FileSystemTypes = ::testing::Types<RealFileSystem, MemoryFileSystem>;
TYPED_TEST_SUITE(FileSystemTest, FileSystemTypes);

} // namespace

TYPED_TEST(FileSystemTest, WriteAppendReadAndRemove)
{
    auto &fs = this->m_fs;
    const QString file = this->path("a.log");
    EXPECT_FALSE(fs.exists(file));
    EXPECT_EQ(fs.read(file), std::nullopt);
    EXPECT_EQ(fs.size(file), -1);
    ASSERT_TRUE(fs.write(file, "one\r\n"));
    ASSERT_TRUE(fs.append(file, "two\r\n"));
    EXPECT_EQ(fs.read(file), QByteArray("one\r\ntwo\r\n"));
    EXPECT_EQ(fs.size(file), 10);
    ASSERT_TRUE(fs.write(file, "x"));
    EXPECT_EQ(fs.read(file), QByteArray("x"));
    EXPECT_TRUE(fs.remove(file));
    EXPECT_FALSE(fs.remove(file));
    EXPECT_FALSE(fs.exists(file));
}

TYPED_TEST(FileSystemTest, FoldersMustExistAndAreListedSorted)
{
    auto &fs = this->m_fs;
    EXPECT_FALSE(fs.write(this->path("missing/a.txt"), "x"));
    ASSERT_TRUE(fs.mkpath(this->path("d/e")));
    EXPECT_TRUE(fs.isDirectory(this->path("d")));
    ASSERT_TRUE(fs.write(this->path("d/b.txt"), "b"));
    ASSERT_TRUE(fs.write(this->path("d/a.txt"), "a"));
    EXPECT_EQ(fs.entries(this->path("d")), (QStringList{"a.txt", "b.txt", "e"}));
    EXPECT_FALSE(fs.remove(this->path("d/e"))); // not a file
    EXPECT_FALSE(fs.isDirectory(this->path("d/a.txt")));
}

TYPED_TEST(FileSystemTest, ReadOnlyFilesCannotBeChangedOrRemoved)
{
    auto &fs = this->m_fs;
    const QString file = this->path("ro.txt");
    ASSERT_TRUE(fs.write(file, "keep"));
    ASSERT_TRUE(fs.setWritable(file, false));
    EXPECT_FALSE(fs.isWritable(file));
    EXPECT_FALSE(fs.write(file, "changed"));
    EXPECT_FALSE(fs.append(file, "more"));
    EXPECT_FALSE(fs.remove(file));
    EXPECT_EQ(fs.read(file), QByteArray("keep"));
    ASSERT_TRUE(fs.setWritable(file, true));
    EXPECT_TRUE(fs.remove(file));
    EXPECT_FALSE(fs.setWritable(file, true));
}

TYPED_TEST(FileSystemTest, RenameMovesAFileAndSparesAReadOnlyTarget)
{
    auto &fs = this->m_fs;
    const QString from = this->path("TFR1.tmp");
    const QString to = this->path("TFR1.mcb");
    EXPECT_FALSE(fs.rename(from, to)); // nothing to move
    ASSERT_TRUE(fs.write(from, "macro"));
    ASSERT_TRUE(fs.write(to, "older"));
    ASSERT_TRUE(fs.rename(from, to));
    EXPECT_FALSE(fs.exists(from));
    EXPECT_EQ(fs.read(to), QByteArray("macro"));

    ASSERT_TRUE(fs.write(from, "newer"));
    ASSERT_TRUE(fs.setWritable(to, false));
    EXPECT_FALSE(fs.rename(from, to));
    EXPECT_EQ(fs.read(from), QByteArray("newer"));
    EXPECT_EQ(fs.read(to), QByteArray("macro"));
    fs.setWritable(to, true);
}
