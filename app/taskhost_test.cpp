#include "app/taskhost.h"

#include "host/testing/faketask.h"

#include <gtest/gtest.h>

namespace {

struct Report {
    std::int32_t position;
    std::int32_t maximum;
    QString text;
    bool operator==(const Report &) const = default;
};

TEST(ProgressReportingInstanceTest, TheAddInTalksToTheInstanceAndTheProgramHearsTheProgress)
{
    auto inner = std::make_shared<FakeTaskInstance>();
    inner->set("ReplaceOutput", Variant::fromBool(true));
    std::vector<Report> reports;
    ProgressReportingInstance instance(inner, [&](std::int32_t position, std::int32_t maximum, const QString &text) {
        reports.push_back({position, maximum, text});
    });

    Variant value;
    ASSERT_EQ(instance.GetVariable("ReplaceOutput", value), S_OK);
    EXPECT_TRUE(value.toBool());
    EXPECT_EQ(instance.GetVariable("Missing", value), S_FALSE);
    ASSERT_EQ(instance.SetVariable("__output_list", Variant::fromBStr("<sels/>")), S_OK);
    EXPECT_EQ(inner->value("__output_list").toText(), "<sels/>");

    ASSERT_EQ(instance.SetProgressRange(4, 0, "Starting"), S_OK);
    ASSERT_EQ(instance.SetProgressPos(1, "gear.mcdprt"), S_OK);
    ASSERT_EQ(instance.SetProgressPos(2, ""), S_OK);
    EXPECT_EQ(reports, (std::vector<Report>{{0, 4, "Starting"}, {1, 4, "gear.mcdprt"}, {2, 4, ""}}));
    EXPECT_EQ(inner->progressMax, 4);
    EXPECT_EQ(inner->progress.size(), 3u);

    ASSERT_EQ(instance.SetStatus(TaskStatus_FinishedWithError, E_NOTIMPL, QString("no driver"), {{7, 1, 2, 3}},
                                 std::nullopt),
              S_OK);
    std::int32_t status = 0;
    ASSERT_EQ(instance.GetStatus(status), S_OK);
    EXPECT_EQ(status, TaskStatus_FinishedWithError);
    EXPECT_EQ(inner->finalResult, E_NOTIMPL);
    EXPECT_EQ(inner->finalMessage, QString("no driver"));
    EXPECT_EQ(inner->affected, (std::vector<AffectedObject>{{7, 1, 2, 3}}));

    inner->getStatusResult = E_ACCESSDENIED;
    EXPECT_EQ(instance.GetStatus(status), E_ACCESSDENIED);
}

} // namespace
