#include "run/taskdetailspage.h"

#include "host/testing/faketask.h"

#include <QApplication>
#include <QTreeWidget>
#include <gtest/gtest.h>

namespace {

QApplication &application()
{
    static int argc = 1;
    static char name[] = "runpages_test";
    static char *argv[] = {name, nullptr};
    static QApplication app(argc, argv);
    return app;
}

const QString Selection = QStringLiteral(
    "<sels><sel><doc_id>4</doc_id><proj_id>2</proj_id><path>V:\\Parts\\gear.mcdprt</path><ver>3</ver></sel></sels>");
const QString Outputs = QStringLiteral(
    "<sels><sel><doc_id>4</doc_id><proj_id>2</proj_id><path>V:\\Parts\\gear.mcdprt</path><ver>3</ver>"
    "<conf>Default</conf><extra>V:\\Out\\gear.pdf</extra></sel></sels>");

QStringList headerOf(const QTreeWidget &list)
{
    QStringList captions;
    for (int c = 0; c < list.columnCount(); ++c)
        captions.append(list.headerItem()->text(c));
    return captions;
}

TEST(TaskDetailsPageTest, ListShowsTheSelectionUntilFinishedThenTheOutputs)
{
    application();
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
    auto *list = window->findChild<QTreeWidget *>("list391");
    ASSERT_TRUE(list);
    EXPECT_EQ(headerOf(*list), QStringList({"File Name", "Version", "Found in"}));
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(list->topLevelItem(0)->text(0), "gear.mcdprt");
    EXPECT_EQ(list->topLevelItem(0)->text(1), "3/-");
    EXPECT_EQ(list->topLevelItem(0)->text(2), "V:\\Parts");

    context.finished = true;
    TaskDetailsPage done(context, [](int number, const QString &english) {
        return number == 116 ? QStringLiteral("Quelldatei") : english;
    });
    list = done.create(&host)->findChild<QTreeWidget *>("list391");
    ASSERT_TRUE(list);
    EXPECT_EQ(headerOf(*list),
              QStringList({"Quelldatei", "Configuration", "Version", "Found in", "Output File"}));
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(list->topLevelItem(0)->text(1), "Default");
    EXPECT_EQ(list->topLevelItem(0)->text(4), "V:\\Out\\gear.pdf");
    EXPECT_EQ(done.loadResult(), S_OK);
}

TEST(TaskDetailsPageTest, PageWithoutListStaysEmptyAndOutlivesItsHost)
{
    application();
    auto host = std::make_unique<QWidget>();
    PageContext context;
    context.instance = std::make_shared<FakeTaskInstance>();
    context.taskType = 3;
    context.finished = true;
    TaskDetailsPage page(context, {});
    auto *list = page.create(host.get())->findChild<QTreeWidget *>("list391");
    ASSERT_TRUE(list);
    EXPECT_EQ(list->topLevelItemCount(), 0);
    EXPECT_EQ(list->columnCount(), 4);
    host.reset(); // the host's window takes the page's window with it
    EXPECT_EQ(page.window(), nullptr);
}

} // namespace
