// Claims per second of the task host's queue on the embedded vault: a claim
// and a finish, with no run in between. Target: 500 or more a second. The
// floor beside it is one empty write transaction of the same database.
// Then eight claimers at once, each with a connection of its own, drain one
// queue on SQLite and on PostgreSQL (MCTASK_BENCH_PG), and every instance
// must have been claimed exactly once.

#include "benchvaults.h"

#include "host/hosterror.h"
#include "hostservice/taskqueue.h"
#include "vault/taskstore.h"
#include "vault/vaultstore.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <thread>

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

constexpr int kClaimers = 8;
constexpr int kQueued = 2000;

// Eight claimers, threads with a store (a connection) each, drain a queue of
// kQueued launched instances of a fresh vault: claim the next and end it as a
// run does, until nothing waits. items_per_second: claims a second.
// range(0): 0 SQLite, 1 PostgreSQL.
void BM_ClaimersDrainQueue(benchmark::State &state)
{
    const bool onServer = state.range(0) == 1;
    if (onServer && !haveServer(state))
        return;
    std::int64_t claims = 0;
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir dir;
        const QString root = dir.path() + QStringLiteral("/vault");
        auto store = onServer ? VaultStore::createOnServer(freshSchema(), root, QStringLiteral("Bench"))
                              : VaultStore::create(root, QStringLiteral("Bench"));
        {
            TaskStore tasks(store);
            const int taskId = tasks.createTask(QStringLiteral("Convert"), QStringLiteral("{bench}")).id;
            Transaction transaction(store->db());
            for (int i = 0; i < kQueued; ++i)
                tasks.createInstance(taskId);
            transaction.commit();
        }
        std::vector<std::shared_ptr<VaultStore>> stores;
        for (int c = 0; c < kClaimers; ++c)
            stores.push_back(VaultStore::open(root));
        std::vector<std::vector<int>> claimed(kClaimers);
        std::vector<QString> failures(kClaimers);
        state.ResumeTiming();

        std::vector<std::thread> claimers;
        for (int c = 0; c < kClaimers; ++c) {
            claimers.emplace_back([&, c] {
                try {
                    TaskQueue queue(stores[c]);
                    const TaskHolder holder{QStringLiteral("bench"), 1, c + 1};
                    const QueuePolicy policy;
                    while (const std::optional<TaskClaim> claim = queue.claimNext(holder, policy)) {
                        queue.setStatus(*claim, TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
                        claimed[c].push_back(claim->instanceId);
                    }
                } catch (const HostError &e) {
                    failures[c] = e.context();
                }
            });
        }
        for (std::thread &claimer : claimers)
            claimer.join();

        state.PauseTiming();
        std::vector<int> all;
        for (const std::vector<int> &ids : claimed)
            all.insert(all.end(), ids.begin(), ids.end());
        std::sort(all.begin(), all.end());
        std::vector<int> launched;
        int endedOnce = 0;
        for (const InstanceRow &row : TaskStore(store).listInstances()) {
            launched.push_back(row.id);
            endedOnce += row.status == TaskStatus_FinishedOk && row.attempt == 1 ? 1 : 0;
        }
        for (const QString &failure : failures)
            if (!failure.isEmpty())
                state.SkipWithError(qPrintable("a claimer failed: " + failure));
        if (all != launched || endedOnce != kQueued)
            state.SkipWithError("an instance was not claimed exactly once");
        claims += static_cast<std::int64_t>(all.size());
        state.counters["most_by_one"] = static_cast<double>(
            std::max_element(claimed.begin(), claimed.end(), [](const auto &a, const auto &b) {
                return a.size() < b.size();
            })->size());
        state.counters["fewest_by_one"] = static_cast<double>(
            std::min_element(claimed.begin(), claimed.end(), [](const auto &a, const auto &b) {
                return a.size() < b.size();
            })->size());
        stores.clear();
        store.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(claims);
}
BENCHMARK(BM_ClaimersDrainQueue)
    ->ArgName("postgres")
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace
