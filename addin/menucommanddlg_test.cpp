#include "addin/menucommanddlg.h"

#include "common/widgets/recordingprompter.h"
#include "common/widgets/testing/widgetapp.h"
#include "host/testing/faketask.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QTest>
#include <gtest/gtest.h>

namespace {

class MenuCommandPageTest : public ::testing::Test
{
protected:
    MenuCommandPageTest() : m_prompts(prompter) {}

    FakeTaskProperties props;
    RecordingPrompter prompter;

private:
    ScopedPrompter m_prompts;
};

TEST_F(MenuCommandPageTest, ANewTaskTakesItsKindsDefaults)
{
    for (const std::int32_t type : {1, 2, 3, 9}) {
        CMenuCommandDlg page(type);
        ASSERT_EQ(page.load(props), S_OK);
        EXPECT_EQ(page.displayMenuCommand(), type == 1 || type == 2) << type;
        if (type == 1) {
            EXPECT_EQ(page.menuText(), "Convert Files");
            EXPECT_EQ(page.statusBarHelp(), "Converts Mecadra files from one format to another");
        } else if (type == 2) {
            EXPECT_EQ(page.menuText(), "Print Files");
            EXPECT_EQ(page.statusBarHelp(), "Prints selected documents with Mecadra");
        } else {
            EXPECT_EQ(page.menuText(), "Execute Script") << type;
            EXPECT_EQ(page.statusBarHelp(), "Executes script on selected documents");
        }
    }
    // The defaults go through the translation service.
    CMenuCommandDlg translated(1, [](std::int32_t number, const QString &english) {
        return number == 136 ? QStringLiteral("Dateien konvertieren") : english;
    });
    ASSERT_EQ(translated.load(props), S_OK);
    EXPECT_EQ(translated.menuText(), "Dateien konvertieren");
}

TEST_F(MenuCommandPageTest, StoredValuesWinOverTheDefaults)
{
    props.set("__menucmd_display", Variant::fromBool(false));
    props.menuCommands = {{1, "Make PDFs", TaskMenuCommandFlags, "Makes PDFs"}, {1, "second", 0, "ignored"}};
    CMenuCommandDlg page(1);
    ASSERT_EQ(page.load(props), S_OK);
    EXPECT_FALSE(page.displayMenuCommand());
    EXPECT_EQ(page.menuText(), "Make PDFs");
    EXPECT_EQ(page.statusBarHelp(), "Makes PDFs");

    // A null help text in the host's record leaves the page's field alone.
    props.menuCommands = {{3, "Run it", TaskMenuCommandFlags, QString()}};
    CMenuCommandDlg script(3);
    script.setStatusBarHelp("kept");
    ASSERT_EQ(script.load(props), S_OK);
    EXPECT_EQ(script.menuText(), "Run it");
    EXPECT_EQ(script.statusBarHelp(), "kept");
}

TEST_F(MenuCommandPageTest, HostFailuresStopTheLoad)
{
    props.failRead("__menucmd_display", E_ACCESSDENIED);
    CMenuCommandDlg page(2);
    EXPECT_EQ(page.load(props), E_ACCESSDENIED);

    // The menu-command list is the task properties' own.
    FakeTaskInstance instance;
    EXPECT_EQ(page.load(instance), E_NOINTERFACE);
}

TEST_F(MenuCommandPageTest, ABlankMenuTextIsRefusedOnlyWhileTheBoxIsTicked)
{
    CMenuCommandDlg page(3);
    ASSERT_EQ(page.load(props), S_OK);
    page.setDisplayMenuCommand(true);
    page.setMenuText(" \t ");
    EXPECT_EQ(page.save(props), S_FALSE);
    EXPECT_EQ(prompter.messages, QStringList({"Please enter menu command."}));
    EXPECT_TRUE(props.writes().isEmpty()); // nothing written

    page.setDisplayMenuCommand(false);
    ASSERT_EQ(page.save(props), S_OK);
    EXPECT_EQ(props.value("__menucmd_display").type(), VarType::Bool);
    EXPECT_FALSE(props.value("__menucmd_display").toBool());

    page.setDisplayMenuCommand(true);
    page.setMenuText("  Run  ");
    ASSERT_EQ(page.save(props), S_OK);
    EXPECT_EQ(props.value("__menucmd_display").boolValue(), -1);
    EXPECT_EQ(page.menuText(), "  Run  "); // published untrimmed
    EXPECT_EQ(prompter.messages.size(), 1);

    props.failWrite("__menucmd_display", E_FAIL);
    EXPECT_EQ(page.save(props), E_FAIL);
}

class MenuCommandWindowTest : public MenuCommandPageTest, private WithWidgetApp
{
protected:
    QWidget host;
};

TEST_F(MenuCommandWindowTest, TheBoxEnablesBothEditsAndTheControlsAreTheValues)
{
    props.menuCommands = {{3, "Run", TaskMenuCommandFlags, "Runs"}};
    CMenuCommandDlg page(3);
    QWidget *window = page.create(&host);
    ASSERT_EQ(window->parentWidget(), &host);
    ASSERT_EQ(page.load(props), S_OK);
    auto *box = window->findChild<QCheckBox *>("displayCheck");
    auto *menuText = window->findChild<QLineEdit *>("menuTextEdit");
    auto *help = window->findChild<QLineEdit *>("helpTextEdit");
    ASSERT_TRUE(box && menuText && help);
    EXPECT_FALSE(box->isChecked());
    EXPECT_EQ(menuText->text(), "Run");
    EXPECT_FALSE(menuText->isEnabled());
    EXPECT_FALSE(help->isEnabled());
    EXPECT_EQ(menuText->maxLength(), 255);
    EXPECT_EQ(help->maxLength(), 1020);

    box->click();
    EXPECT_TRUE(menuText->isEnabled());
    EXPECT_TRUE(help->isEnabled());

    host.show();
    host.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&host));
    menuText->clear();
    EXPECT_EQ(page.save(props), S_FALSE);
    EXPECT_TRUE(menuText->hasFocus());
    EXPECT_EQ(prompter.messages.size(), 1);

    QTest::keyClicks(menuText, "Execute");
    ASSERT_EQ(page.save(props), S_OK);
    EXPECT_TRUE(page.displayMenuCommand());
    EXPECT_EQ(page.menuText(), "Execute");
    EXPECT_EQ(page.statusBarHelp(), "Runs");

    box->click();
    EXPECT_FALSE(menuText->isEnabled());
    ASSERT_EQ(page.save(props), S_OK);
    EXPECT_FALSE(page.displayMenuCommand());
}

} // namespace
