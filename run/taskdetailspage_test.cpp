#include "run/taskdetailspage.h"

#include "host/testing/faketask.h"

#include "common/widgets/testing/widgetapp.h"
#include "common/widgets/vlistctrl.h"

#include <QIcon>
#include <gtest/gtest.h>

namespace {

const QString Selection = QStringLiteral(
    "<sels><sel><doc_id>4</doc_id><proj_id>2</proj_id><path>V:\\Parts\\gear.mcdprt</path><ver>3</ver></sel></sels>");
const QString Outputs = QStringLiteral(
    "<sels><sel><doc_id>4</doc_id><proj_id>2</proj_id><path>V:\\Parts\\gear.mcdprt</path><ver>3</ver>"
    "<conf>Default</conf><extra>V:\\Out\\gear.pdf</extra></sel></sels>");

QStringList headerOf(const VListCtrl &list)
{
    QStringList captions;
    for (int c = 0; c < list.model()->columnCount(); ++c)
        captions.append(list.model()->headerData(c, Qt::Horizontal).toString());
    return captions;
}

QString cell(const VListCtrl &list, int row, int column, int role = Qt::DisplayRole)
{
    return list.model()->data(list.model()->index(row, column), role).toString();
}

bool hasIcon(const VListCtrl &list, int row, int column)
{
    return !list.model()->data(list.model()->index(row, column), Qt::DecorationRole).value<QIcon>().isNull();
}

TEST(TaskDetailsPageTest, ListShowsTheSelectionUntilFinishedThenTheOutputs)
{
    widgetApp();
    QWidget host;
    auto instance = std::make_shared<FakeTaskInstance>();
    instance->set("__selection_list", Variant::fromBStr(Selection));
    instance->set("__output_list", Variant::fromBStr(Outputs));
    PageContext context;
    context.instance = instance;
    context.taskType = 1;

    TaskDetailsPage running(context, {});
    QWidget *window = running.create(&host);
    ASSERT_TRUE(window);
    EXPECT_EQ(window->parentWidget(), &host);
    auto *list = window->findChild<VListCtrl *>("list391");
    ASSERT_TRUE(list);
    EXPECT_EQ(headerOf(*list), QStringList({"File Name", "Version", "Found in"}));
    ASSERT_EQ(list->model()->rowCount(), 1);
    EXPECT_EQ(cell(*list, 0, 0), "gear.mcdprt");
    EXPECT_EQ(cell(*list, 0, 1), "3/-");
    EXPECT_EQ(cell(*list, 0, 2), "V:\\Parts");
    // Tenths of the page's width: 3, 1 and 6.
    EXPECT_EQ(list->columnWidth(0), window->width() / 10 * 3);
    EXPECT_EQ(list->columnWidth(2), window->width() / 10 * 6);
    EXPECT_TRUE(hasIcon(*list, 0, 0));
    EXPECT_FALSE(hasIcon(*list, 0, 1));
    EXPECT_TRUE(hasIcon(*list, 0, 2));

    context.finished = true;
    TaskDetailsPage done(context, [](int number, const QString &english) {
        return number == 116 ? QStringLiteral("Quelldatei") : english;
    });
    list = done.create(&host)->findChild<VListCtrl *>("list391");
    ASSERT_TRUE(list);
    EXPECT_EQ(headerOf(*list),
              QStringList({"Quelldatei", "Configuration", "Version", "Found in", "Output File"}));
    ASSERT_EQ(list->model()->rowCount(), 1);
    EXPECT_EQ(cell(*list, 0, 1), "Default");
    EXPECT_EQ(cell(*list, 0, 4), "V:\\Out\\gear.pdf");
    EXPECT_TRUE(hasIcon(*list, 0, 4));
    EXPECT_EQ(done.loadResult(), S_OK);
}

TEST(TaskDetailsPageTest, PageWithoutListStaysEmptyAndOutlivesItsHost)
{
    widgetApp();
    auto host = std::make_unique<QWidget>();
    PageContext context;
    context.instance = std::make_shared<FakeTaskInstance>();
    context.taskType = 3;
    context.finished = true;
    TaskDetailsPage page(context, {});
    auto *list = page.create(host.get())->findChild<VListCtrl *>("list391");
    ASSERT_TRUE(list);
    EXPECT_EQ(list->model()->rowCount(), 0);
    EXPECT_EQ(list->model()->columnCount(), 4);
    host.reset(); // the host's window takes the page's window with it
    EXPECT_EQ(page.window(), nullptr);
}

} // namespace
