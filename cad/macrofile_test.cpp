#include "cad/macrofile.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <barrier>
#include <thread>
#include <vector>

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

void writeFile(const QString &path, const QByteArray &data)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(data);
}

TEST(MacroFileTest, ParallelRunsDrawingTheSameNumberNeverShareAFile)
{
    QTemporaryDir dir;
    constexpr int kWorkers = 8;
    constexpr int kFilesEach = 40;
    std::vector<std::vector<std::pair<QString, QByteArray>>> made(kWorkers);
    std::barrier start(kWorkers);
    std::vector<std::thread> workers;
    for (int w = 0; w < kWorkers; ++w) {
        workers.emplace_back([&, w] {
            start.arrive_and_wait();
            for (int i = 0; i < kFilesEach; ++i) {
                const QByteArray text = QStringLiteral("Sub main() ' worker %1 file %2\r\nEnd Sub\r\n").arg(w).arg(i).toLatin1();
                // Every worker starts at the same number: the worst case.
                if (const auto file = MacroFile::create(dir.path(), text, 1))
                    made[w].emplace_back(file->path(), text);
            }
        });
    }
    for (std::thread &worker : workers)
        worker.join();

    QSet<QString> paths;
    for (const auto &files : made) {
        EXPECT_EQ(files.size(), static_cast<size_t>(kFilesEach));
        for (const auto &[path, text] : files) {
            EXPECT_TRUE(path.endsWith(QStringLiteral(".mcb"))) << path.toStdString();
            EXPECT_EQ(contentOf(path), text) << path.toStdString();
            paths.insert(path);
        }
    }
    EXPECT_EQ(paths.size(), kWorkers * kFilesEach);
    EXPECT_TRUE(QDir(dir.path()).entryList({QStringLiteral("*.tmp")}, QDir::Files).isEmpty());
}

TEST(MacroFileTest, NamesOfOtherRunsArePassedOverAndLeftAlone)
{
    QTemporaryDir dir;
    // Another run is writing TFR1.tmp; another still runs TFR2.mcb.
    writeFile(dir.filePath(QStringLiteral("TFR1.tmp")), "theirs 1");
    writeFile(dir.filePath(QStringLiteral("TFR2.mcb")), "theirs 2");

    const auto file = MacroFile::create(dir.path(), "mine", 1);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->path(), dir.filePath(QStringLiteral("TFR3.mcb")));
    EXPECT_EQ(contentOf(file->path()), "mine");
    EXPECT_EQ(contentOf(dir.filePath(QStringLiteral("TFR1.tmp"))), "theirs 1");
    EXPECT_EQ(contentOf(dir.filePath(QStringLiteral("TFR2.mcb"))), "theirs 2");
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("TFR2.tmp"))));
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("TFR3.tmp"))));

    // The last number wraps around to the first free one.
    const auto wrapped = MacroFile::create(dir.path(), "again", 0xFFFF);
    ASSERT_TRUE(wrapped);
    EXPECT_EQ(wrapped->path(), dir.filePath(QStringLiteral("TFRFFFF.mcb")));
    const auto next = MacroFile::create(dir.path(), "next", 0xFFFF);
    ASSERT_TRUE(next);
    EXPECT_EQ(next->path(), dir.filePath(QStringLiteral("TFR4.mcb")));

    file->remove();
    EXPECT_FALSE(QFile::exists(dir.filePath(QStringLiteral("TFR3.mcb"))));
    file->remove(); // already gone: nothing happens

    EXPECT_FALSE(MacroFile::create(dir.filePath(QStringLiteral("missing")), "text", 1));
}

} // namespace
