#include "benchvaults.h"

#include "vault/embeddedvault.h"
#include "vault/vaultstore.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <functional>

namespace {

// One vault of 100,000 files in 100 folders (10 x 10), built once.
struct BigVault {
    QTemporaryDir dir;
    std::shared_ptr<VaultStore> store;

    BigVault()
    {
        const QString root = dir.path() + "/vault";
        store = VaultStore::create(root, QStringLiteral("Big"));
        writeBenchTree(root, 100, 1000);
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

// Batch add and check-in of 10,000 files on a fresh vault file each round.
void BM_BatchAddAndCheckIn10k(benchmark::State &state)
{
    benchBatchAddAndCheckIn10k(state, [](const QString &root) { return VaultStore::create(root, QStringLiteral("Batch")); });
}
BENCHMARK(BM_BatchAddAndCheckIn10k)->Unit(benchmark::kMillisecond)->Iterations(3);

// The floor of the batch above: the same 10,000 files, each stat-ed and read
// (its bytes and their SHA-256 go into the rows), and the same rows
// (content, file, version, then the check-in's update of the file) written
// with raw prepared SQLite statements in one transaction of the same
// schema. Nothing else: no path handling, no checks, no local journal.
void BM_BatchAddFloor10k(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir dir;
        auto store = vaultWithBenchTree(dir, [](const QString &root) { return VaultStore::create(root, QStringLiteral("Floor")); });
        const QString root = store->paths().nativeRoot();
        sqlite3 *db = store->db().sqlite()->handle();
        sqlite3_stmt *folder = nullptr;
        sqlite3_prepare_v2(db, "INSERT INTO folders (parent_id, name, path, path_key) VALUES (?, ?, ?, ?)", -1, &folder,
                           nullptr);
        sqlite3_stmt *blob = nullptr;
        sqlite3_stmt *file = nullptr;
        sqlite3_stmt *version = nullptr;
        sqlite3_stmt *checkIn = nullptr;
        sqlite3_prepare_v2(db, "INSERT OR IGNORE INTO blobs (hash, size, data) VALUES (?, ?, ?)", -1, &blob, nullptr);
        sqlite3_prepare_v2(db, "INSERT INTO files (folder_id, name, path_key, kind, latest_version, locked_by, lock_kind, "
                               "lock_folder) VALUES (?, ?, ?, 1, 1, 'bench', 1, ?)", -1, &file, nullptr);
        sqlite3_prepare_v2(db, "INSERT INTO versions (file_id, version, revision, state, hash, comment, user, created) "
                               "VALUES (?, 1, '', '', ?, 'bench', 'bench', '2026-01-01T00:00:00.000Z')", -1, &version, nullptr);
        sqlite3_prepare_v2(db, "UPDATE files SET locked_by = NULL, lock_kind = 0, lock_folder = 0 WHERE id = ?", -1,
                           &checkIn, nullptr);
        state.ResumeTiming();

        sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
        bool ok = true;
        auto addFolder = [&](sqlite3_int64 parent, const QString &name, const QString &path) {
            const QByteArray n = name.toUtf8();
            const QByteArray p = path.toUtf8();
            const QByteArray k = path.toLower().toUtf8();
            sqlite3_bind_int64(folder, 1, parent);
            sqlite3_bind_text(folder, 2, n.constData(), static_cast<int>(n.size()), SQLITE_TRANSIENT);
            sqlite3_bind_text(folder, 3, p.constData(), static_cast<int>(p.size()), SQLITE_TRANSIENT);
            sqlite3_bind_text(folder, 4, k.constData(), static_cast<int>(k.size()), SQLITE_TRANSIENT);
            ok = ok && sqlite3_step(folder) == SQLITE_DONE;
            sqlite3_reset(folder);
            return sqlite3_last_insert_rowid(db);
        };
        std::vector<sqlite3_int64> folderIds;
        for (int t = 0; t < 10; ++t) {
            const QString top = QStringLiteral("Top%1").arg(t);
            const sqlite3_int64 topId = addFolder(VaultStore::RootFolderId, top, top);
            for (int d = 0; d < 10; ++d)
                folderIds.push_back(addFolder(topId, QStringLiteral("Dir%1").arg(d), top + QStringLiteral("\\Dir%1").arg(d)));
        }
        std::vector<sqlite3_int64> ids;
        ids.reserve(10000);
        for (int d = 0; d < 100; ++d) {
            const QString folder = QStringLiteral("Top%1/Dir%2").arg(d / 10).arg(d % 10);
            for (int i = 0; i < 100; ++i) {
                const QString name = QStringLiteral("f%1.mcdprt").arg(i);
                const QByteArray native = QFile::encodeName(root + '/' + folder + '/' + name);
                struct stat info {};
                ok = ok && ::stat(native.constData(), &info) == 0;
                QFile local(QString::fromLocal8Bit(native));
                ok = ok && local.open(QIODevice::ReadOnly);
                const QByteArray bytes = local.readAll();
                const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
                sqlite3_bind_text(blob, 1, hash.constData(), static_cast<int>(hash.size()), SQLITE_TRANSIENT);
                sqlite3_bind_int64(blob, 2, bytes.size());
                sqlite3_bind_blob(blob, 3, bytes.constData(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
                ok = ok && sqlite3_step(blob) == SQLITE_DONE;
                sqlite3_reset(blob);
                const QByteArray nameUtf8 = name.toUtf8();
                const QByteArray key = (QString(folder).replace('/', '\\') + '\\' + name).toLower().toUtf8();
                sqlite3_bind_int64(file, 1, folderIds[d]);
                sqlite3_bind_text(file, 2, nameUtf8.constData(), static_cast<int>(nameUtf8.size()), SQLITE_TRANSIENT);
                sqlite3_bind_text(file, 3, key.constData(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
                sqlite3_bind_int64(file, 4, folderIds[d]);
                ok = ok && sqlite3_step(file) == SQLITE_DONE;
                sqlite3_reset(file);
                const sqlite3_int64 id = sqlite3_last_insert_rowid(db);
                ids.push_back(id);
                sqlite3_bind_int64(version, 1, id);
                sqlite3_bind_text(version, 2, hash.constData(), static_cast<int>(hash.size()), SQLITE_TRANSIENT);
                ok = ok && sqlite3_step(version) == SQLITE_DONE;
                sqlite3_reset(version);
            }
        }
        for (const sqlite3_int64 id : ids) {
            sqlite3_bind_int64(checkIn, 1, id);
            ok = ok && sqlite3_step(checkIn) == SQLITE_DONE;
            sqlite3_reset(checkIn);
        }
        ok = ok && sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
        if (!ok)
            state.SkipWithError("raw insert failed");

        state.PauseTiming();
        for (sqlite3_stmt *s : {folder, blob, file, version, checkIn})
            sqlite3_finalize(s);
        store.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_BatchAddFloor10k)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
