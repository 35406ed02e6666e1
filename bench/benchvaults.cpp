#include "benchvaults.h"

#include "host/hosterror.h"
#include "vault/batchservices.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUuid>

QString benchServer()
{
    return qEnvironmentVariable("MCTASK_BENCH_PG");
}

bool haveServer(benchmark::State &state)
{
    if (!benchServer().isEmpty())
        return true;
    state.SkipWithError("MCTASK_BENCH_PG names no server");
    return false;
}

QString freshSchema()
{
    const QByteArray name = "b_" + QUuid::createUuid().toByteArray(QUuid::Id128);
    PgDb(benchServer()).exec(("CREATE SCHEMA " + name).constData());
    return pgUrlWithSearchPath(benchServer(), QString::fromLatin1(name));
}

void writeBenchTree(const QString &root, int folders, int filesPerFolder)
{
    for (int d = 0; d < folders; ++d) {
        const QString dir = QStringLiteral("%1/Top%2/Dir%3").arg(root).arg(d / 10).arg(d % 10);
        QDir().mkpath(dir);
        for (int i = 0; i < filesPerFolder; ++i) {
            QFile file(QStringLiteral("%1/f%2.mcdprt").arg(dir).arg(i));
            if (!file.open(QIODevice::WriteOnly))
                throw HostError(E_DOX_IO_ERROR, file.fileName());
            file.write(QByteArray::number(d * 100000 + i));
        }
    }
}

std::shared_ptr<VaultStore> vaultWithBenchTree(const QTemporaryDir &dir, const MakeBenchStore &makeStore)
{
    const QString root = dir.path() + "/vault";
    auto store = makeStore(root);
    writeBenchTree(root, 100, 100);
    return store;
}

void benchBatchAddAndCheckIn10k(benchmark::State &state, const MakeBenchStore &makeStore)
{
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir dir;
        auto store = vaultWithBenchTree(dir, makeStore);
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
