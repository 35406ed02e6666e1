// The vault on PostgreSQL: adding and checking in 10,000 files against a
// floor of plain libpq writing the same rows and contents in the same run.
// The server is the one in MCTASK_BENCH_PG (tools/privatepg.sh start DIR
// prints one); each round works in a fresh schema of it.
#include "benchvaults.h"

#include "vault/vaultstore.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <libpq-fe.h>
#include <libpq/libpq-fs.h>

#include <memory>

namespace {

std::shared_ptr<VaultStore> vaultOnFreshSchema(const QString &root)
{
    return VaultStore::createOnServer(freshSchema(), root, QStringLiteral("Bench"));
}

void BM_PgBatchAddAndCheckIn10k(benchmark::State &state)
{
    if (haveServer(state))
        benchBatchAddAndCheckIn10k(state, vaultOnFreshSchema);
}
BENCHMARK(BM_PgBatchAddAndCheckIn10k)->Unit(benchmark::kMillisecond)->Iterations(3);

// The floor: the same 10,000 files read and hashed, and the same rows
// (folder, content as a large object and its row, file, version, then the
// check-in's update) written through plain libpq prepared statements in one
// transaction of the same schema. No path handling, checks or local journal.
void BM_PgBatchAddFloor10k(benchmark::State &state)
{
    if (!haveServer(state))
        return;
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir dir;
        auto store = vaultWithBenchTree(dir, vaultOnFreshSchema);
        const QString root = store->paths().nativeRoot();
        // The store's connection is on the round's schema; the floor writes through it directly.
        PGconn *conn = store->db().postgres()->handle();
        bool ok = true;
        auto prepare = [&](const char *name, const char *sql) {
            PGresult *r = PQprepare(conn, name, sql, 0, nullptr);
            ok = ok && PQresultStatus(r) == PGRES_COMMAND_OK;
            PQclear(r);
        };
        prepare("folder", "INSERT INTO folders (parent_id, name, path, path_key) VALUES ($1, $2, $3, $4) RETURNING id");
        prepare("blob", "INSERT INTO blobs (hash, size, data) VALUES ($1, $2, $3) ON CONFLICT (hash) DO NOTHING");
        prepare("file", "INSERT INTO files (folder_id, name, path_key, kind, latest_version, locked_by, lock_kind, "
                        "lock_folder) VALUES ($1, $2, $3, 1, 1, 'bench', 1, $1) RETURNING id");
        prepare("version", "INSERT INTO versions (file_id, version, revision, state, hash, comment, \"user\", created) "
                           "VALUES ($1, 1, '', '', $2, 'bench', 'bench', '2026-01-01T00:00:00.000Z')");
        prepare("checkin", "UPDATE files SET locked_by = NULL, lock_kind = 0, lock_folder = 0 WHERE id = $1");
        state.ResumeTiming();

        auto run = [&](const char *name, std::initializer_list<QByteArray> values) -> QByteArray {
            std::vector<const char *> pointers;
            for (const QByteArray &v : values)
                pointers.push_back(v.constData());
            PGresult *r = PQexecPrepared(conn, name, static_cast<int>(pointers.size()), pointers.data(), nullptr,
                                         nullptr, 0);
            const ExecStatusType status = PQresultStatus(r);
            ok = ok && (status == PGRES_COMMAND_OK || status == PGRES_TUPLES_OK);
            const QByteArray first = status == PGRES_TUPLES_OK && PQntuples(r) > 0 ? QByteArray(PQgetvalue(r, 0, 0)) : QByteArray();
            PQclear(r);
            return first;
        };
        PQclear(PQexec(conn, "BEGIN"));
        std::vector<QByteArray> folderIds;
        for (int t = 0; t < 10; ++t) {
            const QByteArray top = "Top" + QByteArray::number(t);
            const QByteArray topId = run("folder", {QByteArray::number(VaultStore::RootFolderId), top, top, top.toLower()});
            for (int d = 0; d < 10; ++d) {
                const QByteArray name = "Dir" + QByteArray::number(d);
                const QByteArray path = top + '\\' + name;
                folderIds.push_back(run("folder", {topId, name, path, path.toLower()}));
            }
        }
        std::vector<QByteArray> ids;
        ids.reserve(10000);
        for (int d = 0; d < 100; ++d) {
            const QString folder = QStringLiteral("Top%1/Dir%2").arg(d / 10).arg(d % 10);
            for (int i = 0; i < 100; ++i) {
                const QString name = QStringLiteral("f%1.mcdprt").arg(i);
                QFile local(root + '/' + folder + '/' + name);
                ok = ok && local.open(QIODevice::ReadOnly);
                const QByteArray bytes = local.readAll();
                const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
                const Oid oid = lo_creat(conn, INV_READ | INV_WRITE);
                const int fd = lo_open(conn, oid, INV_WRITE);
                ok = ok && oid != InvalidOid && fd >= 0 && lo_write(conn, fd, bytes.constData(), bytes.size()) >= 0 &&
                     lo_close(conn, fd) == 0;
                run("blob", {hash, QByteArray::number(bytes.size()), QByteArray::number(oid)});
                const QByteArray key = (QString(folder).replace('/', '\\') + '\\' + name).toLower().toUtf8();
                const QByteArray id = run("file", {folderIds[d], name.toUtf8(), key});
                ids.push_back(id);
                run("version", {id, hash});
            }
        }
        for (const QByteArray &id : ids)
            run("checkin", {id});
        PGresult *commit = PQexec(conn, "COMMIT");
        ok = ok && PQresultStatus(commit) == PGRES_COMMAND_OK;
        PQclear(commit);
        if (!ok)
            state.SkipWithError("raw insert failed");

        state.PauseTiming();
        store.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_PgBatchAddFloor10k)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
