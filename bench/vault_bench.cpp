#include "host/hosterror.h"
#include "vault/batchservices.h"
#include "vault/embeddedvault.h"
#include "vault/vaultstore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <functional>

namespace {

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw HostError(E_DOX_IO_ERROR, path);
    file.write(bytes);
}

// Local files Dir00..Dir(folders-1)/f<i>.mcdprt in the vault's folder.
void writeTree(const QString &root, int folders, int filesPerFolder)
{
    for (int d = 0; d < folders; ++d) {
        const QString dir = QStringLiteral("%1/Top%2/Dir%3").arg(root).arg(d / 10).arg(d % 10);
        QDir().mkpath(dir);
        for (int i = 0; i < filesPerFolder; ++i)
            writeFile(QStringLiteral("%1/f%2.mcdprt").arg(dir).arg(i), QByteArray::number(d * 100000 + i));
    }
}

// One vault of 100,000 files in 100 folders (10 x 10), built once.
struct BigVault {
    QTemporaryDir dir;
    std::shared_ptr<VaultStore> store;

    BigVault()
    {
        const QString root = dir.path() + "/vault";
        store = VaultStore::create(root, QStringLiteral("Big"));
        writeTree(root, 100, 1000);
        Transaction t(store->db());
        for (int d = 0; d < 100; ++d) {
            const QString folder = QStringLiteral("Top%1\\Dir%2").arg(d / 10).arg(d % 10);
            for (int i = 0; i < 1000; ++i) {
                const QString name = QStringLiteral("f%1.mcdprt").arg(i);
                store->addFile(store->paths().toNative(VaultPaths::join(folder, name)), folder, name, {});
            }
        }
        t.commit();
    }
};

BigVault &bigVault()
{
    static BigVault vault;
    return vault;
}

// The store's own walk: one range scan over folders and one over files.
void BM_WalkStore100k(benchmark::State &state)
{
    VaultStore &store = *bigVault().store;
    for (auto _ : state) {
        std::size_t files = 0;
        store.walk(VaultStore::RootFolderId, nullptr, [&files](const VaultFileRow &) { ++files; });
        if (files != 100000)
            state.SkipWithError("wrong file count");
        benchmark::DoNotOptimize(files);
    }
}
BENCHMARK(BM_WalkStore100k)->Unit(benchmark::kMillisecond);

// The host interfaces as the add-in walks them: folder by folder through
// GetSubFolders and GetFiles, one object per file.
void BM_WalkHostFolders100k(benchmark::State &state)
{
    EmbeddedVault vault(bigVault().store);
    for (auto _ : state) {
        std::size_t files = 0;
        std::function<void(const std::shared_ptr<IDoxFolder> &)> visit = [&](const std::shared_ptr<IDoxFolder> &folder) {
            std::vector<std::shared_ptr<IDoxFile>> here;
            folder->GetFiles(here);
            files += here.size();
            std::vector<std::shared_ptr<IDoxFolder>> subs;
            folder->GetSubFolders(subs);
            for (const auto &sub : subs)
                visit(sub);
        };
        std::shared_ptr<IDoxFolder> root;
        vault.GetFolder(VaultStore::RootFolderId, root);
        visit(root);
        if (files != 100000)
            state.SkipWithError("wrong file count");
        benchmark::DoNotOptimize(files);
    }
}
BENCHMARK(BM_WalkHostFolders100k)->Unit(benchmark::kMillisecond);

// Batch add (16) of 10,000 local files in 100 folders, then batch check-in
// (6) of all of them, inside one transaction. A fresh vault each round; the
// local files are written outside the timing.
void BM_BatchAddAndCheckIn10k(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir dir;
        const QString root = dir.path() + "/vault";
        auto store = VaultStore::create(root, QStringLiteral("Batch"));
        writeTree(root, 100, 100);
        state.ResumeTiming();

        Transaction transaction(store->db());
        VaultBatchAdd add(store);
        for (int d = 0; d < 100; ++d) {
            const QString folder = QStringLiteral("V:\\Top%1\\Dir%2").arg(d / 10).arg(d % 10);
            for (int i = 0; i < 100; ++i)
                add.AddFileFromPath(QStringLiteral("%1\\f%2.mcdprt").arg(folder).arg(i), folder);
        }
        std::vector<DoxBatchAddResult> results;
        if (add.CommitAdd(results) != S_OK || results.size() != 10000)
            state.SkipWithError("batch add failed");
        std::vector<DoxFolderPair> selection;
        for (const DoxBatchAddResult &r : results)
            selection.push_back({r.docId, r.folderId});
        VaultBatchCheckIn checkIn(store);
        checkIn.SetComment(QStringLiteral("bench"));
        checkIn.AddSelection(selection);
        if (checkIn.CreateTree() != S_OK || checkIn.CheckIn() != S_OK)
            state.SkipWithError("check-in failed");
        transaction.commit();

        state.PauseTiming();
        store.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_BatchAddAndCheckIn10k)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
