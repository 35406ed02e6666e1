#include "addin/module/setuppagefactory.h"

#include "addin/mctaskaddin.h"
#include "common/widgets/recordingprompter.h"
#include "common/widgets/testing/widgetapp.h"
#include "host/testing/faketask.h"
#include "macro/templateloader.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <gtest/gtest.h>

namespace {

QString english(std::int32_t, const QString &text)
{
    return text;
}

// The add-in as the host holds it, with the module's pages, inside a host
// window that is never shown.
class SetupPagesTest : public ::testing::Test, private WithWidgetApp
{
protected:
    SetupPagesTest() : m_prompts(prompter)
    {
        AddInServices services;
        services.pages = std::make_shared<SetupPageFactory>(english);
        services.text = english;
        addin = std::make_shared<CMcTaskAddIn>(std::move(services));
        props = std::make_shared<FakeTaskProperties>();
    }

    HRESULT send(std::int32_t type, const QString &comment, DoxCmd *out = nullptr)
    {
        DoxCmd cmd;
        cmd.commandType = type;
        cmd.window = &host;
        cmd.comment = comment;
        cmd.extra = props;
        DoxCmdDataArray none;
        const HRESULT hr = addin->OnCmd(&cmd, &none);
        if (out)
            *out = cmd;
        return hr;
    }

    QWidget *page(std::size_t index) const { return props->setupPages.at(index).window; }

    QWidget host;
    RecordingPrompter prompter;
    std::shared_ptr<CMcTaskAddIn> addin;
    std::shared_ptr<FakeTaskProperties> props;

private:
    ScopedPrompter m_prompts;
};

TEST_F(SetupPagesTest, ANewScriptTaskConfirmedWithOkStoresTheDefaultsAndNoMenuCommand)
{
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    ASSERT_EQ(props->setupPages.size(), 2u);
    EXPECT_EQ(props->setupPages[0].caption, "Menu Command");
    EXPECT_EQ(props->setupPages[1].caption, "Script");
    EXPECT_EQ(page(0)->parentWidget(), &host);
    EXPECT_EQ(page(1)->parentWidget(), &host);

    ASSERT_EQ(send(DoxCmd_TaskSetupButton, "OK"), S_OK);
    EXPECT_EQ(props->value("__script").bstr(), loadScriptTemplate(DefaultScriptTemplate, {}));
    EXPECT_EQ(props->value("__type").toI4(), 3);
    EXPECT_EQ(props->value("__mc_version").toI4(), 0);
    EXPECT_EQ(props->value("__menucmd_display").type(), VarType::Bool);
    EXPECT_FALSE(props->value("__menucmd_display").toBool());
    EXPECT_EQ(props->menuCommandWrites, 1);
    EXPECT_TRUE(props->menuCommands.empty());
}

TEST_F(SetupPagesTest, ATickedBoxWithAMenuTextPublishesTheMenuCommand)
{
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    page(0)->findChild<QCheckBox *>("displayCheck")->setChecked(true);
    page(0)->findChild<QLineEdit *>("menuTextEdit")->setText("Run my macro");
    ASSERT_EQ(send(DoxCmd_TaskSetupButton, "OK"), S_OK);
    EXPECT_EQ(props->menuCommands,
              (std::vector<TaskMenuCommand>{
                  {3, "Run my macro", TaskMenuCommandFlags, "Executes script on selected documents"}}));
    EXPECT_TRUE(props->value("__menucmd_display").toBool());

    // Opening the set-up again shows what the host holds.
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    EXPECT_TRUE(page(0)->findChild<QCheckBox *>("displayCheck")->isChecked());
    EXPECT_EQ(page(0)->findChild<QLineEdit *>("menuTextEdit")->text(), "Run my macro");
}

TEST_F(SetupPagesTest, ARefusedMenuCommandKeepsTheDialogOnItsPageAndSavesNothing)
{
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    page(0)->findChild<QCheckBox *>("displayCheck")->setChecked(true);
    page(0)->findChild<QLineEdit *>("menuTextEdit")->setText("   ");
    DoxCmd answered;
    ASSERT_EQ(send(DoxCmd_TaskSetupButton, "OK", &answered), S_OK);
    EXPECT_EQ(answered.cancel, -1);
    EXPECT_EQ(answered.comment, "Menu Command");
    EXPECT_EQ(prompter.messages, QStringList({"Please enter menu command."}));
    EXPECT_TRUE(props->writes().isEmpty());
    EXPECT_EQ(props->menuCommandWrites, 0);
}

TEST_F(SetupPagesTest, ChoosingPrintingOnTheScriptPageMakesAPrintTask)
{
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    auto *kinds = page(1)->findChild<QComboBox *>("kindCombo");
    ASSERT_NE(kinds, nullptr);
    kinds->setCurrentIndex(kinds->findData(2));
    EXPECT_EQ(prompter.messages.size(), 1);
    ASSERT_EQ(send(DoxCmd_TaskSetupButton, "OK"), S_OK);
    EXPECT_EQ(props->value("__type").toI4(), 2);
    EXPECT_EQ(props->value("__script").bstr(), loadScriptTemplate(PrintTemplate, {}));

    // The next set-up is a print task's, with the print pages.
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    EXPECT_EQ(props->setupPages.size(), 5u);
}

} // namespace
