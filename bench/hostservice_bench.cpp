// Claims per second of the task host's queue on the embedded vault: a claim
// and a finish, with no run in between. Target: 500 or more a second. The
// floor beside it is one empty write transaction of the same database.

#include "hostservice/taskqueue.h"
#include "vault/taskstore.h"
#include "vault/vaultstore.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

constexpr int kInstances = 3000;

struct QueueVault {
    QTemporaryDir dir;
    std::shared_ptr<VaultStore> store;
    int taskId = 0;

    QueueVault()
    {
        store = VaultStore::create(dir.path() + QStringLiteral("/vault"), QStringLiteral("Bench"));
        TaskStore tasks(store);
        taskId = tasks.createTask(QStringLiteral("Convert"), QStringLiteral("{bench}")).id;
    }

    void launch(int count)
    {
        TaskStore tasks(store);
        Transaction transaction(store->db());
        for (int i = 0; i < count; ++i)
            tasks.createInstance(taskId);
        transaction.commit();
    }
};

void BM_ClaimAndFinish(benchmark::State &state)
{
    QueueVault vault;
    vault.launch(kInstances);
    TaskQueue queue(vault.store);
    const TaskHolder holder{QStringLiteral("bench"), 1, 1};
    const QueuePolicy policy;
    int claimed = 0;
    for (auto _ : state) {
        const std::optional<TaskClaim> claim = queue.claimNext(holder, policy);
        if (!claim) {
            state.SkipWithError("the queue ran dry");
            break;
        }
        queue.setStatus(*claim, 7, S_OK, std::nullopt, {}, std::nullopt);
        ++claimed;
    }
    state.SetItemsProcessed(claimed);
    state.counters["target_per_s"] = 500;
}
BENCHMARK(BM_ClaimAndFinish)->Iterations(kInstances)->Unit(benchmark::kMicrosecond)->UseRealTime();

// The floor: what one committed write transaction of this database costs.
void BM_EmptyWriteTransaction(benchmark::State &state)
{
    QueueVault vault;
    for (auto _ : state) {
        Transaction transaction(vault.store->db());
        vault.store->setSetting(QStringLiteral("BenchCounter"), QString::number(state.iterations()));
        transaction.commit();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_EmptyWriteTransaction)->Iterations(kInstances)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace
