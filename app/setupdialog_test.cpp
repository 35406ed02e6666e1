#include "app/setupdialog.h"

#include "common/widgets/testing/widgetapp.h"

#include <QDialogButtonBox>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
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

    QWidget owner;
    QList<QPointer<QWidget>> pages;
};

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
