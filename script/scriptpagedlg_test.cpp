#include "script/scriptpagedlg.h"

#include "common/help/testing/helpenvironment.h"
#include "common/widgets/recordingprompter.h"
#include "common/widgets/testing/widgetapp.h"
#include "host/testing/faketask.h"

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTextBlock>
#include <QTimer>
#include <gtest/gtest.h>

namespace {

QString fakeTemplate(std::int32_t kind)
{
    return QStringLiteral("' template %1\nSub main\nEnd Sub\n").arg(kind == 1 || kind == 2 ? kind : 3);
}

class ScriptPageTest : public ::testing::Test
{
protected:
    ScriptPageTest() : m_prompts(prompter) {}

    std::unique_ptr<CScriptPageDlg> page(bool pageMode, std::int32_t type)
    {
        return std::make_unique<CScriptPageDlg>(
            pageMode, type, TextLookup(), [this] { return products; }, fakeTemplate);
    }

    FakeTaskProperties props;
    RecordingPrompter prompter;
    std::vector<InstalledProducts::Product> products{{"{1}", "Mecadra 2013 x64 Edition SP2.0"},
                                                     {"{2}", "Mecadra 2014 SP0.0"}};

private:
    ScopedPrompter m_prompts;
};

TEST_F(ScriptPageTest, StoredValuesLoadAndAVersionNotInstalledFallsBackToTheDefault)
{
    props.set("__script", Variant::fromBStr("Sub main\nEnd Sub"));
    props.set("__mc_version", Variant::fromI4(2014));
    auto known = page(true, 3);
    ASSERT_EQ(known->load(props), S_OK);
    EXPECT_EQ(known->editorText(), "Sub main\nEnd Sub");
    EXPECT_EQ(known->versionChoices()[known->selectedVersion()].year, 2014);

    props.set("__mc_version", Variant::fromI4(2011));
    auto missing = page(true, 3);
    ASSERT_EQ(missing->load(props), S_OK);
    EXPECT_EQ(missing->versionChoices()[missing->selectedVersion()].text, "<Use default>");
    ASSERT_EQ(missing->save(props), S_OK);
    EXPECT_EQ(props.value("__mc_version").toI4(), 0);

    missing->selectVersion(2);
    ASSERT_EQ(missing->save(props), S_OK);
    EXPECT_EQ(props.value("__mc_version").toI4(), 2014);
}

TEST_F(ScriptPageTest, ChangingTheKindOnThePageBringsItsTemplateAndTheRestartMessage)
{
    auto script = page(true, 3);
    ASSERT_EQ(script->load(props), S_OK);
    script->editScript("my own macro");
    script->selectKind(2);
    EXPECT_EQ(script->editorText(), fakeTemplate(2)); // edits are replaced
    ASSERT_EQ(prompter.messages.size(), 1);
    EXPECT_TRUE(prompter.messages[0].startsWith("You must restart the task property dialog box"));

    script->selectKind(3); // back to the loaded kind: nothing happens
    EXPECT_EQ(script->editorText(), fakeTemplate(2));
    EXPECT_EQ(prompter.messages.size(), 1);

    script->selectKind(2);
    ASSERT_EQ(script->save(props), S_OK);
    EXPECT_EQ(props.value("__type").toI4(), 2);
    EXPECT_EQ(props.value("__script").bstr(), fakeTemplate(2));
}

TEST_F(ScriptPageTest, LoadAndSaveFailuresReachTheCaller)
{
    props.failRead("__mc_version", E_ACCESSDENIED);
    EXPECT_EQ(page(true, 3)->load(props), E_ACCESSDENIED);

    FakeTaskProperties writing;
    writing.failWrite("__script", E_OUTOFMEMORY);
    auto script = page(true, 3);
    ASSERT_EQ(script->load(writing), S_OK);
    EXPECT_EQ(script->save(writing), E_OUTOFMEMORY);
    EXPECT_TRUE(writing.writes().isEmpty()); // nothing after a failed script

    // A failing version write does not change the result of the script write.
    FakeTaskProperties versionFails;
    versionFails.failWrite("__mc_version", E_FAIL);
    ASSERT_EQ(script->save(versionFails), S_OK);
    EXPECT_EQ(versionFails.writes(), QStringList({"__script", "__type"}));
}

TEST_F(ScriptPageTest, TheDialogResetsToTheSelectedKindsTemplateAfterAsking)
{
    props.set("__script", Variant::fromBStr(fakeTemplate(1)));
    auto options = page(false, 1);
    ASSERT_EQ(options->load(props), S_OK);
    EXPECT_FALSE(options->resetEnabled()); // the script is the template
    options->editScript(fakeTemplate(1) + "x");
    EXPECT_TRUE(options->resetEnabled());

    prompter.answers = {false, true};
    EXPECT_FALSE(options->reset());
    EXPECT_EQ(options->editorText(), fakeTemplate(1) + "x");
    EXPECT_TRUE(options->resetEnabled());
    options->selectKind(2); // dialog mode: nothing happens until "OK"
    EXPECT_EQ(options->editorText(), fakeTemplate(1) + "x");
    EXPECT_TRUE(options->reset());
    EXPECT_EQ(options->editorText(), fakeTemplate(2));
    EXPECT_FALSE(options->resetEnabled());
    EXPECT_EQ(prompter.questions.size(), 2);
    EXPECT_EQ(prompter.captions.last(), "Reset");

    // "OK" with a changed kind brings the template first, with the message.
    options->editScript("changed");
    options->acceptDialog();
    EXPECT_EQ(options->script(), fakeTemplate(2));
    EXPECT_EQ(options->taskType(), 2);
    EXPECT_EQ(prompter.messages.size(), 1);
}

TEST_F(ScriptPageTest, ADialogOnAChangedScriptOffersResetAtOnce)
{
    props.set("__script", Variant::fromBStr("custom"));
    auto options = page(false, 2);
    ASSERT_EQ(options->load(props), S_OK);
    EXPECT_TRUE(options->resetEnabled());
    options->acceptDialog();
    EXPECT_EQ(options->script(), "custom");
    EXPECT_EQ(options->taskType(), 2);
    EXPECT_TRUE(prompter.messages.isEmpty());
}

class ScriptWindowTest : public ScriptPageTest, private WithWidgetApp
{
protected:
    QWidget host;
};

TEST_F(ScriptWindowTest, TheWindowShowsTheValuesAndSortedLists)
{
    auto script = page(true, 3);
    QWidget *window = script->create(&host);
    ASSERT_EQ(script->load(props), S_OK);
    auto *editor = window->findChild<QPlainTextEdit *>("scriptEdit");
    auto *kinds = window->findChild<QComboBox *>("kindCombo");
    auto *versions = window->findChild<QComboBox *>("versionCombo");
    ASSERT_TRUE(editor && kinds && versions);
    EXPECT_EQ(editor->toPlainText(), fakeTemplate(3));
    ASSERT_EQ(kinds->count(), 3);
    EXPECT_EQ(kinds->itemText(0), "File Conversion");
    EXPECT_EQ(kinds->itemText(1), "General");
    EXPECT_EQ(kinds->itemText(2), "Printing");
    EXPECT_EQ(kinds->currentText(), "General");
    ASSERT_EQ(versions->count(), 3);
    EXPECT_EQ(versions->currentText(), "<Use default>");
    EXPECT_EQ(versions->itemText(2), "Mecadra 2014");
    // Page mode has neither "Reset..." nor dialog buttons.
    EXPECT_TRUE(window->findChild<QPushButton *>("resetButton")->isHidden());
    EXPECT_TRUE(window->findChild<QDialogButtonBox *>("buttons")->isHidden());
    EXPECT_FALSE(window->windowIcon().isNull());

    kinds->setCurrentIndex(kinds->findData(1));
    EXPECT_EQ(editor->toPlainText(), fakeTemplate(1));
    EXPECT_EQ(prompter.messages.size(), 1);
    versions->setCurrentIndex(1);
    editor->setPlainText("edited");
    ASSERT_EQ(script->save(props), S_OK);
    EXPECT_EQ(props.value("__script").bstr(), "edited");
    EXPECT_EQ(props.value("__type").toI4(), 1);
    EXPECT_EQ(props.value("__mc_version").toI4(), 2013);
}

TEST_F(ScriptWindowTest, EditingKeepsEachLinesEnd)
{
    // A template with one line ended by a lone LF among CR LF lines.
    const QString stored = "Sub main\r\n    x = 1\nEnd Sub\r\n";
    props.set("__script", Variant::fromBStr(stored));
    auto script = page(true, 3);
    QWidget *window = script->create(&host);
    ASSERT_EQ(script->load(props), S_OK);
    auto *editor = window->findChild<QPlainTextEdit *>("scriptEdit");
    EXPECT_EQ(editor->toPlainText(), "Sub main\n    x = 1\nEnd Sub\n");

    // Edit the middle line, then take the edit back: stored as it was.
    QTextCursor cursor(editor->document()->findBlockByNumber(1));
    cursor.movePosition(QTextCursor::EndOfBlock);
    cursor.insertText("0");
    EXPECT_EQ(script->editorText(), "Sub main\r\n    x = 10\nEnd Sub\r\n");
    cursor.deletePreviousChar();
    EXPECT_EQ(script->editorText(), stored);

    // A line typed after the last one, and one inserted after the first.
    editor->moveCursor(QTextCursor::End);
    editor->insertPlainText("' done");
    QTextCursor first(editor->document()->findBlockByNumber(0));
    first.movePosition(QTextCursor::EndOfBlock);
    first.insertText("\n    y = 2");
    ASSERT_EQ(script->save(props), S_OK);
    EXPECT_EQ(props.value("__script").bstr(), "Sub main\r\n    y = 2\r\n    x = 1\nEnd Sub\r\n' done");
}

TEST_F(ScriptWindowTest, InsertMacroReplacesTheSelectionAsOneUndoStep)
{
    auto script = page(true, 3);
    QWidget *window = script->create(&host);
    ASSERT_EQ(script->load(props), S_OK);
    auto *editor = window->findChild<QPlainTextEdit *>("scriptEdit");
    editor->setPlainText("Open NAME now");
    QTextCursor cursor = editor->textCursor();
    cursor.setPosition(5);
    cursor.setPosition(9, QTextCursor::KeepAnchor);
    editor->setTextCursor(cursor);

    auto *menu = window->findChild<QMenu *>("insertMacroMenu");
    ASSERT_NE(menu, nullptr);
    QStringList entries;
    for (QAction *action : menu->actions())
        entries.append(action->text());
    EXPECT_EQ(entries, QStringList({"Source File Name", "Source File Extension", "Configuration Name",
                                    "Source Folder Path", "Vault Root Folder Path", "Task Instance GUID",
                                    "Source File Path"}));
    host.show();
    QTimer::singleShot(0, [menu] {
        EXPECT_TRUE(menu->isVisible());
        menu->actions().at(6)->trigger();
        menu->close();
    });
    window->findChild<QPushButton *>("insertMacroButton")->click();
    EXPECT_TRUE(QTest::qWaitFor([editor] { return editor->toPlainText() != "Open NAME now"; }, 2000));
    EXPECT_EQ(editor->toPlainText(), "Open <Filepath> now");
    EXPECT_EQ(script->editorText(), "Open <Filepath> now");
    editor->undo();
    EXPECT_EQ(editor->toPlainText(), "Open NAME now");
}

TEST_F(ScriptWindowTest, HelpOfTheDialogOpensTheScriptTopic)
{
    HelpEnvironment english;
    auto options = page(false, 1);
    QWidget *window = options->create(&host);
    auto *button = window->findChild<QPushButton *>("helpButton");
    ASSERT_TRUE(button);
    button->click();
    const HelpWindow *help = HelpEnvironment::shownBeside(window);
    ASSERT_TRUE(help);
    EXPECT_EQ(help->topic(), "ScriptPageDlg");
    EXPECT_EQ(help->browser()->documentTitle(), "Script and Advanced Scripting Options");
}

TEST_F(ScriptWindowTest, AdvancedScriptingOptionsSavesOnlyOnOk)
{
    props.set("__type", Variant::fromI4(1));
    props.set("__script", Variant::fromBStr(fakeTemplate(1)));
    {
        auto options = page(false, 1);
        QWidget *window = options->create(&host);
        ASSERT_EQ(options->load(props), S_OK);
        auto *reset = window->findChild<QPushButton *>("resetButton");
        auto *editor = window->findChild<QPlainTextEdit *>("scriptEdit");
        EXPECT_EQ(window->windowTitle(), "Advanced Scripting Options");
        EXPECT_FALSE(reset->isEnabled());
        editor->setFocus();
        editor->moveCursor(QTextCursor::End);
        QTest::keyClicks(editor, "'");
        EXPECT_TRUE(reset->isEnabled());

        QTimer::singleShot(0, [window] {
            window->findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Cancel)->click();
        });
        EXPECT_FALSE(options->exec(&host));
    }
    EXPECT_TRUE(props.writes().isEmpty());

    // The one-call form: "OK" saves what the dialog shows.
    QTimer::singleShot(0, [] {
        for (QWidget *top : QApplication::topLevelWidgets()) {
            auto *dialog = qobject_cast<QDialog *>(top);
            if (dialog && dialog->isVisible()) {
                dialog->findChild<QPlainTextEdit *>("scriptEdit")->setPlainText("Sub main\nEnd Sub\n");
                dialog->findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok)->click();
                return;
            }
        }
        ADD_FAILURE() << "no dialog";
    });
    ASSERT_EQ(runAdvancedScriptingOptions(props, 1, &host), S_OK);
    EXPECT_EQ(props.value("__script").bstr(), "Sub main\nEnd Sub\n");
    EXPECT_EQ(props.value("__type").toI4(), 1);
}

} // namespace
