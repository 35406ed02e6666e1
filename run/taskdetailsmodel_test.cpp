#include "run/taskdetailsmodel.h"

#include "host/testing/faketask.h"
#include "host/testing/mockvault.h"

#include <gtest/gtest.h>

namespace {

using testing::_;
using testing::DoAll;
using testing::Return;
using testing::SetArgReferee;

const QString Selection = QStringLiteral(
    "<sels><sel><doc_id>4</doc_id><proj_id>2</proj_id><path>V:\\Parts\\gear.mcdprt</path><ver>3</ver>"
    "<conf>Default</conf></sel>"
    "<sel><doc_id>5</doc_id><proj_id>2</proj_id><path>V:\\Parts\\Sub\\plate.mcddrw</path><ver>0</ver></sel></sels>");

const QString ConvertOutputs = QStringLiteral(
    "<sels><sel><doc_id>4</doc_id><proj_id>2</proj_id><path>V:\\Parts\\gear.mcdprt</path><ver>3</ver>"
    "<conf>Default</conf><extra>V:\\Out\\gear.pdf</extra></sel></sels>");

const QString PrintOutputs = QStringLiteral(
    "<sels><sel><doc_id>5</doc_id><proj_id>2</proj_id><path>V:\\Parts\\plate.mcddrw</path><ver>2</ver>"
    "<conf>Sheet1</conf><extra>Office Laser</extra></sel></sels>");

std::vector<QString> captionsOf(const TaskDetailsModel &model)
{
    const QStringList captions = model.captions();
    return {captions.begin(), captions.end()};
}

TEST(TaskDetailsModelTest, FinishedRunsShowTheirOutputsInTheKindsColumns)
{
    FakeTaskInstance convert;
    convert.set("__selection_list", Variant::fromBStr(Selection));
    convert.set("__output_list", Variant::fromBStr(ConvertOutputs));
    TaskDetailsModel converted(1, true);
    ASSERT_EQ(converted.load(convert, nullptr), S_OK);
    EXPECT_EQ(captionsOf(converted),
              (std::vector<QString>{"Source File", "Configuration", "Version", "Found in", "Output File"}));
    ASSERT_EQ(converted.rows().size(), 1u);
    EXPECT_EQ(converted.rowTexts(0),
              (QStringList{"gear.mcdprt", "Default", "3/-", "V:\\Parts", "V:\\Out\\gear.pdf"}));

    FakeTaskInstance print;
    print.set("__output_list", Variant::fromBStr(PrintOutputs));
    TaskDetailsModel printed(2, true);
    ASSERT_EQ(printed.load(print, nullptr), S_OK);
    EXPECT_EQ(captionsOf(printed),
              (std::vector<QString>{"File Name", "Configuration", "Printer", "Version", "Found in"}));
    EXPECT_EQ(printed.rowTexts(0), (QStringList{"plate.mcddrw", "Sheet1", "Office Laser", "2/-", "V:\\Parts"}));
    // Only a conversion's extra text is an output file.
    EXPECT_TRUE(printed.rows()[0].outputFile.isEmpty());
}

TEST(TaskDetailsModelTest, SecondVersionsComeFromTheVaultsReferenceService)
{
    FakeTaskInstance instance;
    instance.set("__selection_list", Variant::fromBStr(Selection));
    testing::StrictMock<MockVault> vault;
    EXPECT_CALL(vault, ResolveReferenceVersions(testing::SizeIs(2), _, _))
        .WillOnce(DoAll(SetArgReferee<2>(std::vector<std::int32_t>{5, 7}), Return(S_OK)));
    TaskDetailsModel model(3, false);
    ASSERT_EQ(model.load(instance, &vault), S_OK);
    EXPECT_EQ(model.cellText(0, 1), "3/5");
    // Version 0 stands aside for the second version.
    EXPECT_EQ(model.cellText(1, 1), "7/7");

    // A failing reference service keeps the rows with the stored versions.
    testing::StrictMock<MockVault> broken;
    EXPECT_CALL(broken, ResolveReferenceVersions(_, _, _)).WillOnce(Return(E_ACCESSDENIED));
    ASSERT_EQ(model.load(instance, &broken), E_ACCESSDENIED);
    ASSERT_EQ(model.rows().size(), 2u);
    EXPECT_EQ(model.cellText(0, 1), "3/-");
}

TEST(TaskDetailsModelTest, ReadFailuresAndBrokenListsLeaveNoRows)
{
    FakeTaskInstance instance;
    instance.failRead("__selection_list", E_ACCESSDENIED);
    TaskDetailsModel model(3, false);
    EXPECT_EQ(model.load(instance, nullptr), E_ACCESSDENIED);
    EXPECT_TRUE(model.rows().empty());

    FakeTaskInstance garbled;
    garbled.set("__selection_list", Variant::fromBStr("<sels><sel>"));
    EXPECT_EQ(model.load(garbled, nullptr), S_OK);
    EXPECT_TRUE(model.rows().empty());
}

} // namespace
