#pragma once

// What the benchmarks of vaults on SQLite and on PostgreSQL share: the
// server, the local tree they add, and the batch add plus check-in they time.

#include "vault/vaultstore.h"

#include <QString>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>

// The PostgreSQL server of the benchmarks: MCTASK_BENCH_PG (tools/bench.sh
// starts a private one). haveServer() skips the benchmark when none is named.
QString benchServer();
bool haveServer(benchmark::State &state);
// A new schema on that server, as the URL of a connection that works in it.
// Schemas stay: the private server is thrown away after the run.
QString freshSchema();

// Local files Top<d/10>/Dir<d%10>/f<i>.mcdprt below root, for d below
// folders and i below filesPerFolder; each holds a number of its own.
void writeBenchTree(const QString &root, int folders, int filesPerFolder);

using MakeBenchStore = std::function<std::shared_ptr<VaultStore>(const QString &root)>;

// A fresh vault from makeStore(root) in dir, with writeBenchTree(root, 100,
// 100) in its local view, none of it added yet.
std::shared_ptr<VaultStore> vaultWithBenchTree(const QTemporaryDir &dir, const MakeBenchStore &makeStore);

// Batch add of the 10,000 files of writeBenchTree(root, 100, 100), then
// batch check-in of all of them, inside one transaction. Each round makes a
// fresh vaultWithBenchTree outside the timing.
void benchBatchAddAndCheckIn10k(benchmark::State &state, const MakeBenchStore &makeStore);
