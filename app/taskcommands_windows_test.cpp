#include "app/taskhost.h"

#include "common/help/help.h"
#include "common/help/testing/helpenvironment.h"
#include "run/taskdetailsmodel.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QTreeWidget>
#include <gtest/gtest.h>

#include <functional>

namespace {

// The host's windows are modal; each test acts on the open dialog from the
// event loop, as a user would.
class TaskWindowsTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        static int argc = 1;
        static char name[] = "taskwindows_test";
        static char *argv[] = {name, nullptr};
        if (!QApplication::instance())
            s_app = new QApplication(argc, argv);
    }

    // Runs action on the modal dialog named name once it is open.
    static void whenOpen(const QString &name, std::function<void(QDialog &)> action)
    {
        QTimer::singleShot(0, [name, action] {
            for (QWidget *widget : QApplication::topLevelWidgets()) {
                auto *dialog = qobject_cast<QDialog *>(widget);
                if (dialog && dialog->objectName() == name && dialog->isVisible()) {
                    action(*dialog);
                    return;
                }
            }
            ADD_FAILURE() << "no dialog " << name.toStdString();
            if (QWidget *modal = QApplication::activeModalWidget())
                modal->close();
        });
    }

    static void press(QDialog &dialog, QDialogButtonBox::StandardButton which)
    {
        auto *buttons = dialog.findChild<QDialogButtonBox *>();
        ASSERT_NE(buttons, nullptr);
        buttons->button(which)->click();
    }

    static QApplication *s_app;
};

QApplication *TaskWindowsTest::s_app = nullptr;

TEST_F(TaskWindowsTest, ALaunchPageGoesBackToItsOwnerWhateverThePress)
{
    QWidget owner;
    QPointer<QWidget> page = new QWidget(&owner);
    page->setObjectName("conversionPage");

    whenOpen("taskLaunchDialog", [&](QDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Conversion Settings");
        EXPECT_EQ(dialog.findChild<QWidget *>("conversionPage"), page.data());
        press(dialog, QDialogButtonBox::Ok);
    });
    EXPECT_TRUE(showLaunchPage(page, "Conversion Settings"));
    ASSERT_FALSE(page.isNull()); // the dialog must not take the add-in's page with it
    EXPECT_EQ(page->parentWidget(), &owner);

    whenOpen("taskLaunchDialog", [&](QDialog &dialog) { press(dialog, QDialogButtonBox::Cancel); });
    EXPECT_FALSE(showLaunchPage(page, "Conversion Settings"));
    ASSERT_FALSE(page.isNull());
    EXPECT_EQ(page->parentWidget(), &owner);
}

// The windows around the add-in's launch and details pages open the page's
// topic; the host's own details list opens the details topic.
TEST_F(TaskWindowsTest, HelpOpensTheTopicOfThePageShown)
{
    HelpEnvironment german(QStringLiteral("DE"));
    QString topic;
    QString title;
    const auto pressHelp = [&](QDialog &dialog) {
        dialog.findChild<QPushButton *>("helpButton")->click();
        if (const HelpWindow *help = HelpEnvironment::shownBeside(&dialog)) {
            topic = help->topic();
            title = help->browser()->documentTitle();
        }
        dialog.reject();
    };

    QWidget owner;
    auto *page = new QWidget(&owner);
    page->setObjectName("ConversionSettingsPageDlg");
    setHelpTopic(page, "ConversionSettingsPageDlg.Launch");
    whenOpen("taskLaunchDialog", pressHelp);
    showLaunchPage(page, "Conversion Settings");
    EXPECT_EQ(topic, "ConversionSettingsPageDlg.Launch");
    EXPECT_EQ(title, "Konvertierungseinstellungen beim Start");

    topic.clear();
    whenOpen("taskDetailsDialog", pressHelp);
    showDetails(nullptr, "Selected Files", TaskDetailsModel(1, false));
    EXPECT_EQ(topic, "TaskDetailsPage");
    EXPECT_EQ(title, "Aufgabendetails");
}

TEST_F(TaskWindowsTest, WithoutAnAddInPageTheDetailsAreTheHostsOwnList)
{
    TaskDetailsModel model(3, false);
    FileRecord gear;
    gear.path = "V:\\Parts\\gear.mcdprt";
    gear.version = 2;
    FileRecord plate;
    plate.path = "V:\\Parts\\plate.mcddrw";
    plate.version = 1;
    plate.altVersion = 4;
    model.setRecords({gear, plate});

    whenOpen("taskDetailsDialog", [&](QDialog &dialog) {
        auto *list = dialog.findChild<QTreeWidget *>("files");
        ASSERT_NE(list, nullptr);
        EXPECT_EQ(list->headerItem()->text(0), "File Name");
        EXPECT_EQ(list->headerItem()->text(2), "Found in");
        ASSERT_EQ(list->topLevelItemCount(), 2);
        EXPECT_EQ(list->topLevelItem(1)->text(0), "plate.mcddrw");
        EXPECT_EQ(list->topLevelItem(1)->text(1), "1/4");
        // Widths in tenths of the list's width: 3, 1, 6.
        EXPECT_EQ(list->columnWidth(0), 240);
        EXPECT_EQ(list->columnWidth(1), 80);
        dialog.reject();
    });
    showDetails(nullptr, "Selected Files", model);

    // The add-in's page, when there is one, is shown and given back.
    QWidget owner;
    QPointer<QWidget> page = new QWidget(&owner);
    page->setObjectName("detailsPage");
    whenOpen("taskDetailsDialog", [&](QDialog &dialog) {
        EXPECT_EQ(dialog.findChild<QTreeWidget *>("files"), nullptr);
        EXPECT_EQ(dialog.findChild<QWidget *>("detailsPage"), page.data());
        dialog.reject();
    });
    showDetails(page, "Selected Files", model);
    ASSERT_FALSE(page.isNull());
    EXPECT_EQ(page->parentWidget(), &owner);
}

} // namespace
