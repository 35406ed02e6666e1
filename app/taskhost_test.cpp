#include "app/taskhost.h"

#include "host/testing/faketask.h"
#include "vault/taskstore.h"
#include "vault/vaulttesting.h"

#include <gtest/gtest.h>

namespace {

struct Report {
    std::int32_t position;
    std::int32_t maximum;
    QString text;
    bool operator==(const Report &) const = default;
};

TEST(ProgressReportingInstanceTest, TheProgramHearsTheProgressTheAddInReports)
{
    auto inner = std::make_shared<FakeTaskInstance>();
    std::vector<Report> reports;
    ProgressReportingInstance instance(inner, [&](std::int32_t position, std::int32_t maximum, const QString &text) {
        reports.push_back({position, maximum, text});
    });

    // Variables and the end of the run pass through unchanged; the end-to-end runs read them.
    ASSERT_EQ(instance.SetProgressRange(4, 0, "Starting"), S_OK);
    ASSERT_EQ(instance.SetProgressPos(1, "gear.mcdprt"), S_OK);
    ASSERT_EQ(instance.SetProgressPos(2, ""), S_OK);
    EXPECT_EQ(reports, (std::vector<Report>{{0, 4, "Starting"}, {1, 4, "gear.mcdprt"}, {2, 4, ""}}));
    EXPECT_EQ(inner->progressMax, 4);
    EXPECT_EQ(inner->progress.size(), 3u);
}

TEST(RunWithHostRulesTest, TheHostNeverRunsACancelledInstanceAndEndsWhatTheAddInLeftOpen)
{
    TempVault vault;
    TaskStore tasks(vault.store);
    const int taskId = tasks.createTask(QStringLiteral("Convert"), QStringLiteral("{0}")).id;

    const int cancelled = tasks.createInstance(taskId).id;
    tasks.setStatusOnly(cancelled, TaskStatus_CancelRequested);
    bool called = false;
    const RunEnd none = runWithHostRules(tasks, cancelled, [&] {
        called = true;
        return S_OK;
    });
    EXPECT_FALSE(called);
    EXPECT_TRUE(none.cancelledBeforeStart);
    EXPECT_EQ(none.commandResult, S_FALSE);
    EXPECT_EQ(tasks.instanceById(cancelled)->status, TaskStatus_Finished);
    EXPECT_EQ(tasks.instanceById(cancelled)->message, QStringLiteral("Cancelled before the run started."));

    // The add-in gets a running instance; what it leaves open ends with the command's result.
    const int left = tasks.createInstance(taskId).id;
    std::int32_t seen = 0;
    const RunEnd open = runWithHostRules(tasks, left, [&] {
        seen = tasks.instanceById(left)->status;
        return E_FAIL;
    });
    EXPECT_EQ(seen, TaskStatus_Running);
    EXPECT_FALSE(open.cancelledBeforeStart);
    EXPECT_EQ(open.commandResult, E_FAIL);
    const InstanceRow ended = *tasks.instanceById(left);
    EXPECT_EQ(ended.status, TaskStatus_Finished);
    EXPECT_EQ(ended.result, E_FAIL);
    EXPECT_EQ(ended.message, QStringLiteral("The add-in did not report the end of the run."));

    // A pending suspend request stays for the add-in, and the end it reports stands.
    const int suspended = tasks.createInstance(taskId).id;
    tasks.setStatusOnly(suspended, TaskStatus_SuspendRequested);
    runWithHostRules(tasks, suspended, [&] {
        seen = tasks.instanceById(suspended)->status;
        tasks.setStatus(suspended, TaskStatus_FinishedOk, S_OK, QStringLiteral("done"), {}, std::nullopt);
        return S_OK;
    });
    EXPECT_EQ(seen, TaskStatus_SuspendRequested);
    EXPECT_EQ(tasks.instanceById(suspended)->status, TaskStatus_FinishedOk);
    EXPECT_EQ(tasks.instanceById(suspended)->message, QStringLiteral("done"));
}

} // namespace
