#include "app/setupdialog.h"

#include "common/widgets/testing/widgetapp.h"

#include <QDialogButtonBox>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>
#include <gtest/gtest.h>

namespace {

class SetupDialogTest : public ::testing::Test, private WithWidgetApp
{
protected:
    SetupDialogTest()
    {
        for (const char *name : {"menuPage", "scriptPage", "filesPage"}) {
            auto *page = new QWidget(&owner);
            page->setObjectName(name);
            pages.append(page);
        }
    }

    void fill(SetupDialog &dialog)
    {
        dialog.addPage("Menu Command", pages[0]);
        dialog.addPage("Script", pages[1]);
        dialog.addPage("Files", pages[2]);
    }

    static void pressOk(SetupDialog &dialog)
    {
        dialog.findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok)->click();
    }

    QWidget owner;
    QList<QPointer<QWidget>> pages;
};

TEST_F(SetupDialogTest, CaptionsOnTheLeftSelectThePageOnTheRight)
{
    SetupDialog dialog;
    fill(dialog);
    auto *list = dialog.findChild<QListWidget *>("pageList");
    auto *stack = dialog.findChild<QStackedWidget *>("pageStack");
    ASSERT_TRUE(list && stack);
    ASSERT_EQ(list->count(), 3);
    EXPECT_EQ(list->item(1)->text(), "Script");
    EXPECT_EQ(dialog.currentCaption(), "Menu Command");
    EXPECT_EQ(dialog.currentPage(), pages[0]);

    list->setCurrentRow(2);
    EXPECT_EQ(dialog.currentPage(), pages[2]);
    EXPECT_TRUE(dialog.showPage("Script"));
    EXPECT_EQ(stack->currentWidget(), pages[1]);
    EXPECT_FALSE(dialog.showPage("Printer"));
    EXPECT_EQ(dialog.currentPage(), pages[1]);
}

TEST_F(SetupDialogTest, ARefusingPageKeepsTheDialogOpenInFrontUntilOkPasses)
{
    SetupDialog dialog;
    fill(dialog);
    QStringList answers{"Menu Command", "Files", ""};
    int presses = 0;
    dialog.setOkHandler([&] {
        ++presses;
        return answers.takeFirst();
    });
    bool cancelled = false;
    dialog.setCancelHandler([&] { cancelled = true; });

    QTimer::singleShot(0, [&] {
        dialog.showPage("Script");
        pressOk(dialog);
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_EQ(dialog.currentCaption(), "Menu Command");
        pressOk(dialog);
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_EQ(dialog.currentPage(), pages[2]);
        pressOk(dialog);
    });
    EXPECT_EQ(dialog.exec(), QDialog::Accepted);
    EXPECT_EQ(presses, 3);
    EXPECT_FALSE(cancelled);
}

TEST_F(SetupDialogTest, CancelTellsTheOwnerAndThePagesGoBackToIt)
{
    {
        SetupDialog dialog;
        fill(dialog);
        bool cancelled = false;
        dialog.setOkHandler([] { return QString(); });
        dialog.setCancelHandler([&] { cancelled = true; });
        QTimer::singleShot(0, [&] {
            dialog.findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Cancel)->click();
        });
        EXPECT_EQ(dialog.exec(), QDialog::Rejected);
        EXPECT_TRUE(cancelled);
    }
    for (const QPointer<QWidget> &page : pages) {
        ASSERT_FALSE(page.isNull()); // the dialog must not take the add-in's pages with it
        EXPECT_EQ(page->parentWidget(), &owner);
    }
}

} // namespace
