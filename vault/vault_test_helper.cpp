// A second process for the multi-process tests of the vault:
//   vault_test_helper add VAULTDIR FOLDER COUNT [--hold]
// writes COUNT files into FOLDER of the vault's local view, adds them with
// one batch add and checks them in with one batch check-in. With --hold it
// stops half-way through the batch add's commit (while reading the files),
// prints "holding" and waits for its standard input to close or a kill.
//   vault_test_helper copy VAULTDIR FOLDER COUNT [--hold-at write|replace]
// writes the COUNT files outside the vault and batch-adds them into FOLDER,
// so the vault copies them into its local view.
//   vault_test_helper update VAULTDIR FOLDER COUNT [--hold-at write|replace]
// gives each file FOLDER\f<i>.txt of the vault a new version with new bytes
// from outside, in one transaction, as "mctask vault add" does.
// --hold-at stops at the middle write (the copies being staged, before the
// commit) or the middle replace (the copies being moved into place, after
// the commit).
#include "host/hosterror.h"
#include "platform/filesystem.h"
#include "vault/batchservices.h"
#include "vault/vaultstore.h"

#include <QDir>

#include <cstdio>
#include <iostream>
#include <string>

namespace {

void hold()
{
    std::printf("holding\n");
    std::fflush(stdout);
    std::string line;
    while (std::getline(std::cin, line)) {
    }
}

// The real file system, except that the n-th call of one kind stops the
// process.
class HoldingFileSystem final : public FileSystem
{
public:
    HoldingFileSystem(std::string kind, int holdAt) : m_kind(std::move(kind)), m_holdAt(holdAt) {}

    bool exists(const QString &path) const override { return m_real.exists(path); }
    bool isDirectory(const QString &path) const override { return m_real.isDirectory(path); }
    std::optional<QByteArray> read(const QString &path) const override
    {
        count("read");
        return m_real.read(path);
    }
    bool write(const QString &path, const QByteArray &data) override
    {
        count("write");
        return m_real.write(path, data);
    }
    bool append(const QString &path, const QByteArray &data) override { return m_real.append(path, data); }
    bool create(const QString &path, const QByteArray &data) override { return m_real.create(path, data); }
    bool remove(const QString &path) override { return m_real.remove(path); }
    bool replace(const QString &from, const QString &to) override
    {
        count("replace");
        return m_real.replace(from, to);
    }
    bool isWritable(const QString &path) const override { return m_real.isWritable(path); }
    bool setWritable(const QString &path, bool writable) override { return m_real.setWritable(path, writable); }
    bool mkpath(const QString &path) override { return m_real.mkpath(path); }
    QStringList entries(const QString &directory) const override { return m_real.entries(directory); }
    qint64 size(const QString &path) const override { return m_real.size(path); }
    QDateTime lastModified(const QString &path) const override { return m_real.lastModified(path); }

private:
    void count(const char *kind) const
    {
        if (m_kind == kind && ++m_calls == m_holdAt)
            hold();
    }

    RealFileSystem m_real;
    std::string m_kind;
    int m_holdAt;
    mutable int m_calls = 0;
};

QString fileName(int i)
{
    return QStringLiteral("f%1.txt").arg(i);
}

void batchAdd(VaultStore &store, const QString &folder, const QString &sourceFolder, int count)
{
    VaultBatchAdd add(std::shared_ptr<VaultStore>(&store, [](VaultStore *) {}));
    const QString folderPath = store.paths().toWindows(folder);
    for (int i = 0; i < count; ++i)
        throwIfFailed(add.AddFileFromPath(sourceFolder + '/' + fileName(i), folderPath), fileName(i));
    std::vector<DoxBatchAddResult> results;
    throwIfFailed(add.CommitAdd(results), QStringLiteral("commit"));
    std::vector<DoxFolderPair> selection;
    for (const DoxBatchAddResult &r : results) {
        throwIfFailed(r.result, r.path);
        selection.push_back({r.docId, r.folderId});
    }
    VaultBatchCheckIn checkIn(std::shared_ptr<VaultStore>(&store, [](VaultStore *) {}));
    checkIn.AddSelection(selection);
    throwIfFailed(checkIn.CheckIn(), QStringLiteral("check-in"));
}

} // namespace

int main(int argc, char **argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    if (argc < 5 || (mode != "add" && mode != "copy" && mode != "update")) {
        std::fprintf(stderr, "usage: vault_test_helper add|copy|update VAULTDIR FOLDER COUNT [--hold | --hold-at KIND]\n");
        return 2;
    }
    const QString dir = QString::fromLocal8Bit(argv[2]);
    const QString folder = QString::fromLocal8Bit(argv[3]);
    const int count = std::atoi(argv[4]);
    std::string holdKind;
    if (argc > 5 && std::string(argv[5]) == "--hold")
        holdKind = "read";
    else if (argc > 6 && std::string(argv[5]) == "--hold-at")
        holdKind = argv[6];
    try {
        auto store = VaultStore::open(dir);
        FileSystem &fs = FileSystem::instance();
        // Sources: in the local view for add, beside the vault otherwise.
        const QString sources = mode == "add" ? store->paths().toNative(folder)
                                              : QDir::cleanPath(QDir(dir).absoluteFilePath(QStringLiteral("../sources-") + folder));
        fs.mkpath(sources);
        for (int i = 0; i < count; ++i) {
            const QString text = mode == "update" ? QStringLiteral("%1 %2 new") : QStringLiteral("%1 %2");
            if (!fs.write(sources + '/' + fileName(i), text.arg(folder).arg(i).toUtf8()))
                return 1;
        }
        HoldingFileSystem holding(holdKind, holdKind.empty() ? -1 : count / 2);
        ScopedFileSystem scoped(holding);

        if (mode != "update") {
            batchAdd(*store, folder, sources, count);
        } else {
            Transaction transaction(store->db());
            for (int i = 0; i < count; ++i) {
                const auto file = store->fileByPath(VaultPaths::join(folder, fileName(i)));
                if (!file)
                    throw HostError(E_DOX_FILE_NOT_FOUND, fileName(i));
                store->checkOut(file->id, file->folderId);
                store->writeLocal(store->paths().toNative(file->path), *fs.read(sources + '/' + fileName(i)));
                store->checkIn(file->id, QString());
            }
            transaction.commit();
        }
        std::printf("done %d\n", count);
        return 0;
    } catch (const HostError &e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
}
