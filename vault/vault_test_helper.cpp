// A second process for the multi-process tests of the vault:
//   vault_test_helper add VAULTDIR FOLDER COUNT [--hold]
// writes COUNT files into FOLDER of the vault's local view, adds them with
// one batch add and checks them in with one batch check-in. With --hold it
// stops half-way through the batch add's commit (while reading the files),
// prints "holding" and waits for its standard input to close or a kill.
#include "host/hosterror.h"
#include "platform/filesystem.h"
#include "vault/batchservices.h"
#include "vault/vaultstore.h"

#include <cstdio>
#include <iostream>
#include <string>

namespace {

// The real file system, except that the n-th read stops the process.
class HoldingFileSystem final : public FileSystem
{
public:
    explicit HoldingFileSystem(int holdAt) : m_holdAt(holdAt) {}

    bool exists(const QString &path) const override { return m_real.exists(path); }
    bool isDirectory(const QString &path) const override { return m_real.isDirectory(path); }
    std::optional<QByteArray> read(const QString &path) const override
    {
        if (++m_reads == m_holdAt) {
            std::printf("holding\n");
            std::fflush(stdout);
            std::string line;
            while (std::getline(std::cin, line)) {
            }
        }
        return m_real.read(path);
    }
    bool write(const QString &path, const QByteArray &data) override { return m_real.write(path, data); }
    bool append(const QString &path, const QByteArray &data) override { return m_real.append(path, data); }
    bool remove(const QString &path) override { return m_real.remove(path); }
    bool isWritable(const QString &path) const override { return m_real.isWritable(path); }
    bool setWritable(const QString &path, bool writable) override { return m_real.setWritable(path, writable); }
    bool mkpath(const QString &path) override { return m_real.mkpath(path); }
    QStringList entries(const QString &directory) const override { return m_real.entries(directory); }
    qint64 size(const QString &path) const override { return m_real.size(path); }
    QDateTime lastModified(const QString &path) const override { return m_real.lastModified(path); }

private:
    RealFileSystem m_real;
    int m_holdAt;
    mutable int m_reads = 0;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc < 5 || std::string(argv[1]) != "add") {
        std::fprintf(stderr, "usage: vault_test_helper add VAULTDIR FOLDER COUNT [--hold]\n");
        return 2;
    }
    const QString dir = QString::fromLocal8Bit(argv[2]);
    const QString folder = QString::fromLocal8Bit(argv[3]);
    const int count = std::atoi(argv[4]);
    const bool hold = argc > 5 && std::string(argv[5]) == "--hold";
    try {
        auto store = VaultStore::open(dir);
        FileSystem &fs = FileSystem::instance();
        fs.mkpath(store->paths().toNative(folder));
        for (int i = 0; i < count; ++i) {
            const QString name = QStringLiteral("f%1.txt").arg(i);
            if (!fs.write(store->paths().toNative(VaultPaths::join(folder, name)),
                          QStringLiteral("%1 %2").arg(folder).arg(i).toUtf8()))
                return 1;
        }
        HoldingFileSystem holding(hold ? count / 2 : -1);
        ScopedFileSystem scoped(holding);

        VaultBatchAdd add(store);
        const QString folderPath = store->paths().toWindows(folder);
        for (int i = 0; i < count; ++i)
            throwIfFailed(add.AddFileFromPath(QStringLiteral("%1\\f%2.txt").arg(folderPath).arg(i), folderPath));
        std::vector<DoxBatchAddResult> results;
        throwIfFailed(add.CommitAdd(results), QStringLiteral("commit"));
        std::vector<DoxFolderPair> selection;
        for (const DoxBatchAddResult &r : results) {
            throwIfFailed(r.result, r.path);
            selection.push_back({r.docId, r.folderId});
        }
        VaultBatchCheckIn checkIn(store);
        checkIn.AddSelection(selection);
        throwIfFailed(checkIn.CheckIn(), QStringLiteral("check-in"));
        std::printf("done %d\n", count);
        return 0;
    } catch (const HostError &e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
}
