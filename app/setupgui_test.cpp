#include "app/cli.h"
#include "app/vaultlocator.h"
#include "common/settingslight.h"
#include "macro/templateloader.h"
#include "vault/taskstore.h"
#include "vault/vaultstore.h"

#include <QApplication>
#include <QScopeGuard>
#include <QCheckBox>
#include <QComboBox>
#include <QJsonArray>
#include <QTreeWidget>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QLabel>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QJsonObject>
#include <QTimer>
#include <QTreeWidget>
#include <QAbstractItemView>
#include <QIcon>
#include <QFile>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>

#include "tests/programrun.h"

namespace {

// "mctask task setup NAME --gui" as the program runs it, on whatever
// platform the test runs on (offscreen, or an X server), with the test
// acting as the administrator in front of the dialog.
class SetupGuiTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        static int argc = 1;
        static char name[] = "setupgui_test";
        static char *argv[] = {name, nullptr};
        if (!QApplication::instance())
            new QApplication(argc, argv);
        ASSERT_TRUE(m_home.isValid() && m_work.isValid());
        qputenv("MCTASK_HOME", m_home.path().toLocal8Bit());
        m_vault = m_work.filePath("vault");
        ASSERT_EQ(program({"vault", "init", m_vault, "--name", "Demo"}).status, 0);
        const ProgramRun created = program({"task", "create", "--vault", m_vault, "Script", "--kind", "script"});
        ASSERT_EQ(created.status, 0) << created.err.toStdString();
    }

    ProgramRun program(const QStringList &args)
    {
        return runProgram(MCTASK_PROGRAM, args, ProgramSetting(m_home.path()).in(m_work.path()).timeout(60000));
    }

    // Runs the command in this process, as main() does.
    int command(const QString &group, const QString &name, const QStringList &args, QString &err)
    {
        QString out;
        return command(group, name, args, err, out);
    }
    int command(const QString &group, const QString &name, const QStringList &args, QString &err, QString &outText)
    {
        for (const CommandEntry &entry : allCommands()) {
            if (entry.group == group && entry.name == name) {
                QTextStream out(&outText);
                QTextStream errStream(&err);
                CommandContext context{args, out, errStream};
                const int status = entry.run(context);
                errStream.flush();
                return status;
            }
        }
        ADD_FAILURE() << "no command " << group.toStdString() << ' ' << name.toStdString();
        return -1;
    }

    // Acts on a window once the command (or another window) has opened it; a
    // failed step closes what is left open, so the command returns and the test ends.
    static void soonOn(const QString &name, std::function<void(QDialog &)> action)
    {
        QTimer::singleShot(0, [name, action] {
            if (QTest::qWaitFor([name] { return openDialog(name) != nullptr; }, 5000)) {
                EXPECT_TRUE(QTest::qWaitForWindowExposed(openDialog(name)));
                action(*openDialog(name));
            } else
                ADD_FAILURE() << "no window " << name.toStdString();
            if (QDialog *left = openDialog(name))
                left->reject();
        });
    }

    static QDialog *openDialog(const QString &name)
    {
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            auto *dialog = qobject_cast<QDialog *>(widget);
            if (dialog && dialog->objectName() == name && dialog->isVisible())
                return dialog;
        }
        return nullptr;
    }

    // On a screen the refusal is a message box; it is answered as a person would.
    static void answerMessageBoxSoon()
    {
        if (QGuiApplication::platformName() == QLatin1String("offscreen"))
            return;
        QTimer::singleShot(200, [] {
            for (QWidget *widget : QApplication::topLevelWidgets()) {
                if (auto *box = qobject_cast<QMessageBox *>(widget); box && box->isVisible()) {
                    EXPECT_EQ(box->text(), "Please enter menu command.");
                    box->accept();
                    return;
                }
            }
            ADD_FAILURE() << "no message box";
        });
    }

    std::unique_ptr<TaskStore> tasks() { return std::make_unique<TaskStore>(openLocatedVault(m_vault)); }

    QTemporaryDir m_home;
    QTemporaryDir m_work;
    QString m_vault;
};

TEST_F(SetupGuiTest, TheAdministratorSetsAMenuCommandAfterARefusal)
{
    bool acted = false;
    soonOn("taskSetupDialog", [&](QDialog &window) {
        QDialog *dialog = &window;
        auto *list = dialog->findChild<QListWidget *>("pageList");
        ASSERT_NE(list, nullptr);
        ASSERT_EQ(list->count(), 2);
        EXPECT_EQ(list->item(0)->text(), "Menu Command");
        EXPECT_EQ(list->item(1)->text(), "Script");
        auto *box = dialog->findChild<QCheckBox *>("displayCheck");
        auto *menuText = dialog->findChild<QLineEdit *>("menuTextEdit");
        ASSERT_TRUE(box && menuText);
        EXPECT_FALSE(box->isChecked()); // an execute-script task offers no menu command by default
        EXPECT_FALSE(menuText->isEnabled());
        QPushButton *ok = dialog->findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok);

        // Ticked with a blank text: refused, the dialog stays on the page.
        list->setCurrentRow(1);
        box->click();
        menuText->clear();
        answerMessageBoxSoon();
        ok->click();
        EXPECT_TRUE(dialog->isVisible());
        EXPECT_EQ(list->currentItem()->text(), "Menu Command");
        EXPECT_TRUE(tasks()->menuCommands(tasks()->findTask("Script")->id).empty());
        // "task create" confirmed the defaults; the refused "OK" changed none of them.
        EXPECT_FALSE(tasks()->taskVariable(tasks()->findTask("Script")->id, "__menucmd_display")->toBool());

        menuText->setFocus();
        QTest::keyClicks(menuText, "Run my macro");
        acted = true;
        ok->click();
    });
    QString err;
    const int status = command("task", "setup", {"--vault", m_vault, "Script", "--gui"}, err);
    EXPECT_TRUE(acted);
    EXPECT_EQ(status, 0) << err.toStdString();

    // Read back through the program, as a script would.
    const ProgramRun got = program({"task", "get", "--vault", m_vault, "Script", "__menucmd_display", "__type",
                                    "__mc_version", "__script", "--json"});
    ASSERT_EQ(got.status, 0) << got.err.toStdString();
    const QJsonObject vars = got.json().object();
    EXPECT_EQ(vars["__menucmd_display"], QJsonValue(true));
    EXPECT_EQ(vars["__type"], QJsonValue(3));
    EXPECT_EQ(vars["__mc_version"], QJsonValue(0));
    EXPECT_EQ(vars["__script"].toString(), loadScriptTemplate(DefaultScriptTemplate, {}));

    const auto commands = tasks()->menuCommands(tasks()->findTask("Script")->id);
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(commands[0].commandId, 3);
    EXPECT_EQ(commands[0].menuText, "Run my macro");
    EXPECT_EQ(commands[0].flags, 0x4001);
    EXPECT_EQ(commands[0].statusBarHelp, "Executes script on selected documents");
}

// Help and F1 on every set-up page of every task kind open the page's topic
// in the language of the vault client, from the build's language folders.
TEST_F(SetupGuiTest, HelpOpensTheTopicOfEveryPageInTheClientsLanguage)
{
    // The host's windows read the settings through this process's registry
    // store, which stays on the home of the first test that used it: the
    // values go there, and go back as they were at the end.
    struct Setting {
        QString key;
        QString name;
        QString value;
        std::optional<RegistryValue> before;
    };
    RegistryStore &store = RegistryStore::instance();
    const QString root = QString::fromUtf16(kSettingsRootKey);
    std::vector<Setting> settings{{root, "InstallDir", MCTASK_HELP_INSTALL_DIR, {}},
                                  {root + "\\" + QString::fromUtf16(kLanguageKey), "0", "DE", {}}};
    for (Setting &setting : settings) {
        setting.before = store.readValue(SettingsLight::kRoot, SettingsLight::kView, setting.key, setting.name);
        ASSERT_TRUE(store.createKey(SettingsLight::kRoot, SettingsLight::kView, setting.key));
        ASSERT_TRUE(store.writeValue(SettingsLight::kRoot, SettingsLight::kView, setting.key, setting.name,
                                     RegistryValue::fromString(setting.value)));
    }
    const auto restore = qScopeGuard([&] {
        for (const Setting &setting : settings) {
            if (setting.before)
                store.writeValue(SettingsLight::kRoot, SettingsLight::kView, setting.key, setting.name, *setting.before);
            else
                store.deleteValue(SettingsLight::kRoot, SettingsLight::kView, setting.key, setting.name);
        }
    });
    ASSERT_EQ(program({"task", "create", "--vault", m_vault, "Convert", "--kind", "convert"}).status, 0);
    ASSERT_EQ(program({"task", "create", "--vault", m_vault, "Print", "--kind", "print"}).status, 0);
    const std::map<QString, QStringList> topics{
        {"Script", {"MenuCommandDlg", "ScriptPageDlg"}},
        {"Convert", {"MenuCommandDlg", "ConversionSettingsPageDlg", "FileCardPageDlg", "OutputFileDetailsPageDlg"}},
        {"Print", {"MenuCommandDlg", "PrinterDlg", "PaperSizeDlg", "MarginsDlg", "FilesDlg"}},
    };
    const auto shown = [](QDialog &dialog) {
        QWidget *help = dialog.findChild<QWidget *>("helpWindow", Qt::FindDirectChildrenOnly);
        return help && help->isVisible() ? help : nullptr;
    };
    for (const auto &[task, expected] : topics) {
        QStringList opened;
        soonOn("taskSetupDialog", [&](QDialog &dialog) {
            auto *list = dialog.findChild<QListWidget *>("pageList");
            ASSERT_EQ(list->count(), expected.size());
            for (int row = 0; row < list->count(); ++row) {
                list->setCurrentRow(row);
                dialog.findChild<QPushButton *>("helpButton")->click();
                QWidget *help = shown(dialog);
                ASSERT_TRUE(help) << row;
                EXPECT_TRUE(help->property("helpFile").toString().endsWith("/Lang/DE/McTaskAddIn.qch"));
                EXPECT_FALSE(help->findChild<QTextBrowser *>("helpBrowser")->documentTitle().isEmpty());
                opened << help->property("topic").toString();
                help->hide();
            }
            if (task == "Convert") {
                // F1 on the configurations tab opens that tab's part of the topic.
                list->setCurrentRow(1);
                QWidget *tab = dialog.findChild<QWidget *>("ConfsTemplateDlg");
                ASSERT_TRUE(tab);
                QApplication::setActiveWindow(&dialog);
                auto *radio = tab->findChild<QRadioButton *>();
                radio->setFocus();
                QTest::keyClick(radio, Qt::Key_F1);
                ASSERT_TRUE(shown(dialog));
                opened << shown(dialog)->property("topic").toString();
            }
            dialog.reject();
        });
        QString err;
        command("task", "setup", {"--vault", m_vault, task, "--gui"}, err);
        QStringList wanted = expected;
        if (task == "Convert")
            wanted << "ConfsTemplateDlg";
        EXPECT_EQ(opened, wanted) << task.toStdString();
    }
}

TEST_F(SetupGuiTest, CancelSavesNothing)
{
    soonOn("taskSetupDialog", [&](QDialog &window) {
        QDialog *dialog = &window;
        dialog->findChild<QCheckBox *>("displayCheck")->click();
        dialog->findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Cancel)->click();
    });
    QString err;
    EXPECT_EQ(command("task", "setup", {"--vault", m_vault, "Script", "--gui"}, err), 1);
    EXPECT_TRUE(err.contains("set-up cancelled")) << err.toStdString();
    EXPECT_TRUE(tasks()->menuCommands(tasks()->findTask("Script")->id).empty());
    const auto display = tasks()->taskVariable(tasks()->findTask("Script")->id, "__menucmd_display");
    ASSERT_TRUE(display.has_value()); // from "task create", which confirms the defaults
    EXPECT_FALSE(display->toBool());
}

// "mctask task launch NAME --gui" without files: the user picks a file and
// a folder in the vault's browse windows through the selection dialog.
TEST_F(SetupGuiTest, ALaunchWithoutFilesAsksForThemThroughTheVaultBrowsers)
{
    const QString part = m_work.filePath("gear.mcdprt");
    const QString notes = m_work.filePath("notes.txt");
    for (const QString &path : {part, notes}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("part\n");
        file.close();
        ASSERT_EQ(program({"vault", "add", "--vault", m_vault, path, "--to", "Parts"}).status, 0);
    }

    bool picked = false;
    soonOn("SelectionDlg", [&](QDialog &dialog) {
        soonOn("vaultFileBrowser", [](QDialog &browser) {
            auto *folders = browser.findChild<QTreeWidget *>("folderTree");
            auto *files = browser.findChild<QTreeWidget *>("fileList");
            ASSERT_TRUE(folders && files);
            QTreeWidgetItem *root = folders->topLevelItem(0);
            EXPECT_EQ(root->text(0), "Demo");
            ASSERT_EQ(root->childCount(), 1);
            folders->setCurrentItem(root->child(0));
            // "Mecadra Files" comes first: the text file is not offered.
            ASSERT_EQ(files->topLevelItemCount(), 1);
            EXPECT_EQ(files->topLevelItem(0)->text(0), "gear.mcdprt");
            files->topLevelItem(0)->setSelected(true);
            browser.findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok)->click();
        });
        dialog.findChild<QPushButton *>("addFiles213")->click();
        soonOn("vaultFolderBrowser", [](QDialog &browser) {
            auto *folders = browser.findChild<QTreeWidget *>("folderTree");
            folders->setCurrentItem(folders->topLevelItem(0)->child(0));
            browser.findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok)->click();
        });
        dialog.findChild<QPushButton *>("addFolder214")->click();
        auto *list = dialog.findChild<QListWidget *>("list209");
        ASSERT_EQ(list->count(), 2);
        EXPECT_EQ(list->item(0)->text(), "\\Parts\\gear.mcdprt");
        EXPECT_EQ(list->item(1)->text(), "\\Parts");
        picked = true;
        dialog.findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok)->click();
    });
    QString err;
    QString out;
    const int status = command("task", "launch", {"--vault", m_vault, "Script", "--gui"}, err, out);
    ASSERT_TRUE(picked);
    ASSERT_EQ(status, 0) << err.toStdString();

    // The host's data: in the order of the shown paths, folder first.
    const int instance = out.trimmed().section('\n', -1).toInt();
    const DoxCmdDataArray data = tasks()->instanceData(instance);
    ASSERT_EQ(data.size(), 2u);
    EXPECT_EQ(data[0].long1, DoxObject_Folder);
    EXPECT_TRUE(data[0].string1.endsWith("\\Parts")) << data[0].string1.toStdString();
    EXPECT_EQ(data[1].long1, DoxObject_File);
    EXPECT_TRUE(data[1].string1.endsWith("\\Parts\\gear.mcdprt"));
    // The add-in stored its list from them.
    EXPECT_TRUE(tasks()->instanceValue(instance, "__selection_list")->toText().contains("gear.mcdprt"));

    // Its details window lists the selection until it has run.
    bool shown = false;
    soonOn("taskDetailsDialog", [&](QDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Selected Files");
        auto *list = dialog.findChild<QAbstractItemView *>("list391");
        ASSERT_TRUE(list && list->model());
        const QAbstractItemModel &model = *list->model();
        ASSERT_EQ(model.columnCount(), 3);
        EXPECT_EQ(model.headerData(2, Qt::Horizontal).toString(), "Found in");
        // The folder's file and the file itself.
        ASSERT_EQ(model.rowCount(), 2);
        EXPECT_EQ(model.index(0, 0).data().toString(), "gear.mcdprt");
        EXPECT_FALSE(model.index(0, 0).data(Qt::DecorationRole).value<QIcon>().isNull());
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&dialog));
        EXPECT_GT(list->width(), 600); // the page's own width, columns in tenths of it
        shown = true;
    });
    EXPECT_EQ(command("task", "details", {"--vault", m_vault, QString::number(instance), "--gui"}, err), 0)
        << err.toStdString();
    EXPECT_TRUE(shown);
}

void selectText(QComboBox *list, const QString &text)
{
    ASSERT_NE(list, nullptr);
    const int index = list->findText(text);
    ASSERT_GE(index, 0) << text.toStdString();
    list->setCurrentIndex(index);
}

TEST_F(SetupGuiTest, ALaunchWithAPromptedFormatShowsTheConversionSettingsAndStoresTheChoice)
{
    ASSERT_EQ(program({"task", "create", "--vault", m_vault, "Convert", "--kind", "convert"}).status, 0);
    ASSERT_EQ(program({"vault", "add", "--vault", m_vault, QStringLiteral(MCTASK_SAMPLES "/bracket.mcdprt"), "--to",
                       "Parts"})
                  .status,
              0);
    bool acted = false;
    soonOn("taskLaunchDialog", [&](QDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Conversion Settings");
        auto *formats = dialog.findChild<QComboBox *>("formatList");
        ASSERT_NE(formats, nullptr);
        EXPECT_TRUE(formats->isVisible());
        EXPECT_EQ(formats->findText("<Prompt the user>"), -1);
        EXPECT_EQ(formats->currentText(), "Scene Markup (*.scnxml)");
        auto *options = dialog.findChild<QPushButton *>("conversionOptionsButton");
        EXPECT_FALSE(options->isEnabled());
        selectText(formats, "STEP (*.step)");
        EXPECT_TRUE(options->isEnabled());
        // The administrator left the path open; the example follows the format.
        auto *example = dialog.findChild<QLabel *>("exampleLabel");
        EXPECT_TRUE(example->isVisible());
        EXPECT_TRUE(example->text().endsWith("_mcdprt_Default.step")) << example->text().toStdString();
        EXPECT_FALSE(dialog.findChild<QCheckBox *>("allowReferencesCheck")->isVisible());
        acted = true;
        dialog.findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok)->click();
    });
    QString err;
    const int status =
        command("task", "launch", {"--vault", m_vault, "Convert", "V:\\Parts\\bracket.mcdprt", "--gui"}, err);
    EXPECT_TRUE(acted);
    ASSERT_EQ(status, 0) << err.toStdString();
    EXPECT_EQ(tasks()->instanceValue(1, "FileFormat")->toText(), "STEP (*.step)");
    EXPECT_TRUE(tasks()->instanceValue(1, "__selection_list")->toText().contains("bracket.mcdprt"));
    // The task keeps what the administrator stored.
    EXPECT_EQ(tasks()->taskVariable(tasks()->findTask("Convert")->id, "FileFormat")->toText(), "<Prompt the user>");
}

TEST_F(SetupGuiTest, AStepTaskSetUpThroughThePagesFillsTheCardsOfItsOutputs)
{
    const ProgramSetting standIn = ProgramSetting(m_home.path()).offscreen();
    ASSERT_EQ(runProgram(MCSIM_PROGRAM, {"/regserver"}, standIn).status, 0);
    ASSERT_EQ(program({"task", "create", "--vault", m_vault, "To STEP", "--kind", "convert"}).status, 0);
    ASSERT_EQ(program({"vault", "add", "--vault", m_vault, QStringLiteral(MCTASK_SAMPLES "/bracket.mcdprt"), "--to",
                       "Parts"})
                  .status,
              0);
    ASSERT_EQ(program({"vault", "card", "--vault", m_vault, "V:\\Parts\\bracket.mcdprt", "Description=", "Title="})
                  .status,
              0);

    soonOn("taskSetupDialog", [&](QDialog &dialog) {
        auto *pages = dialog.findChild<QListWidget *>("pageList");
        pages->setCurrentRow(1);
        selectText(dialog.findChild<QComboBox *>("formatList"), "STEP (*.step)");
        // Only one configuration: the part's last active one.
        dialog.findChild<QWidget *>("ConfsTemplateDlg")->findChild<QRadioButton *>("lastActiveRadio")->click();

        pages->setCurrentRow(2);
        auto *add = dialog.findChild<QPushButton *>("addButton");
        auto *sources = dialog.findChild<QComboBox *>("sourceList");
        auto *destinations = dialog.findChild<QComboBox *>("destinationList");
        auto *freeText = dialog.findChild<QLineEdit *>("freeTextEdit");
        add->click();
        selectText(destinations, "Description");
        EXPECT_TRUE(freeText->isEnabled());
        QTest::keyClicks(freeText, "Exported by the task");
        auto *rows = dialog.findChild<QTreeWidget *>("mappingList");
        EXPECT_EQ(rows->topLevelItem(0)->text(0), "Exported by the task");
        add->click();
        selectText(sources, "Source File Name");
        EXPECT_FALSE(freeText->isEnabled());
        selectText(destinations, "Title");
        dialog.findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok)->click();
    });
    QString err;
    ASSERT_EQ(command("task", "setup", {"--vault", m_vault, "To STEP", "--gui"}, err), 0) << err.toStdString();
    const int taskId = tasks()->findTask("To STEP")->id;
    EXPECT_EQ(tasks()->taskVariable(taskId, "FileCardData")->toText(),
              "Description;8;Exported by the task\nTitle;1;\n");

    const ProgramRun launched = program({"task", "launch", "--vault", m_vault, "To STEP", "V:\\Parts\\bracket.mcdprt"});
    ASSERT_EQ(launched.status, 0) << launched.err.toStdString();
    const ProgramSetting task = ProgramSetting(m_home.path()).offscreen().withVault(m_vault);
    const ProgramRun ran = runProgram(MCTASK_PROGRAM, {"task", "run", launched.lastLine(), "--json"}, task);
    ASSERT_EQ(ran.status, 0) << ran.out.toStdString() << ran.err.toStdString();

    const ProgramRun listed = runProgram(MCTASK_PROGRAM, {"vault", "ls", "V:\\Parts", "--json"}, task);
    QStringList outputs;
    for (const QJsonValue &row : listed.json().array())
        if (row.toObject()["path"].toString().endsWith(".step"))
            outputs << row.toObject()["path"].toString();
    ASSERT_EQ(outputs.size(), 1) << listed.out.toStdString();
    const ProgramRun shown = runProgram(MCTASK_PROGRAM, {"vault", "show", outputs[0], "--json"}, task);
    QStringList card;
    for (const QJsonValue &v : shown.json().object()["card"].toArray())
        card << v.toObject()["variable"].toString() + '=' + v.toObject()["value"].toString();
    EXPECT_TRUE(card.contains("Description=Exported by the task")) << card.join(',').toStdString();
    EXPECT_TRUE(card.contains("Title=V:\\Parts\\bracket.mcdprt")) << card.join(',').toStdString();
}

} // namespace
