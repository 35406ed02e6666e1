#include "convert/advancedconvopdlg.h"
#include "convert/conversionsettingspage.h"
#include "convert/filecardpagedlg.h"
#include "convert/outputfiledetailspagedlg.h"

#include "common/errortexts.h"
#include "common/help/help.h"
#include "common/help/testing/helpenvironment.h"
#include "common/widgets/elidedlabel.h"
#include "common/widgets/placeholderedit.h"
#include "common/widgets/recordingprompter.h"
#include "common/widgets/testing/widgetapp.h"
#include "host/testing/faketask.h"
#include "host/testing/fakevault.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <gtest/gtest.h>

namespace {

TEST(FormatOptionsTest, ResetAllThenOkStoresTheResetValuesAndCancelStoresNothing)
{
    widgetApp();
    FakeTaskProperties task;
    {
        CAdvancedConvOpDlg vrml(task, 22, "VRML (*.wrl)", nullptr, true);
        vrml.resetAll();
        vrml.reject();
    }
    EXPECT_TRUE(task.writes().isEmpty());
    {
        CAdvancedConvOpDlg vrml(task, 22, "VRML (*.wrl)", nullptr, true);
        EXPECT_EQ(vrml.page()->value("VrmlOutputAsUnit"), 0);
        EXPECT_EQ(vrml.findChild<QComboBox *>("VrmlOutputAsUnit")->currentText(), "Millimeters");
        vrml.resetAll();
        EXPECT_EQ(vrml.findChild<QComboBox *>("VrmlOutputAsUnit")->currentText(), "Meters");
        vrml.accept();
    }
    EXPECT_EQ(task.value("VrmlOutputAsUnit"), Variant::fromI4(2));
    EXPECT_EQ(task.value("VrmlSaveAssemblyAsOneFile"), Variant::fromBool(true));

    EXPECT_EQ(CAdvancedConvOpDlg::title("Parasolid Binary (*.x_b)", {}), "Advanced Scripting Options (Parasolid Binary)");
}

// Every format's options dialog opens the topic of its own page, in the
// user's language.
TEST(FormatOptionsTest, HelpOpensTheTopicOfTheFormatsPage)
{
    widgetApp();
    HelpEnvironment german(QStringLiteral("DE"));
    FakeTaskProperties task;
    for (const std::int32_t index : convOpStoreOrder()) {
        CAdvancedConvOpDlg dialog(task, index, "x", nullptr, true);
        dialog.findChild<QPushButton *>("helpButton")->click();
        const HelpWindow *help = HelpEnvironment::shownBeside(&dialog);
        ASSERT_TRUE(help) << index;
        EXPECT_EQ(help->topic(), convOpPageFor(index)->helpTopic) << index;
        EXPECT_TRUE(help->helpFile().endsWith("/DE/McTaskAddIn.qch"));
        // Each topic lands on its format's own part of the options page.
        EXPECT_FALSE(help->browser()->source().fragment().isEmpty()) << index;
    }
    EXPECT_TRUE(task.writes().isEmpty());
}

TEST(FormatOptionsTest, OptionsThatCannotBeReadAreShownAsAnErrorAndKeptAsStored)
{
    widgetApp();
    RecordingPrompter prompter;
    ScopedPrompter scoped(prompter);
    FakeTaskProperties task;
    task.set("AcisGeometry", Variant::fromI4(2));
    task.set("AcisVersion", Variant::fromI4(9));
    task.failRead("AcisOutputAsUnit", E_ACCESSDENIED);
    CAdvancedConvOpDlg acis(task, 2, "ACIS (*.sat)", nullptr, true);
    EXPECT_EQ(acis.loadResult(), E_ACCESSDENIED);
    EXPECT_EQ(acis.exec(), QDialog::Rejected);
    EXPECT_EQ(prompter.messages, QStringList{errorText(E_ACCESSDENIED)});
    acis.accept();
    EXPECT_TRUE(task.writes().isEmpty());
    EXPECT_EQ(task.value("AcisVersion"), Variant::fromI4(9));
}

TEST(FormatOptionsTest, ControlsStoreThePreferenceCodesAndFollowTheirSwitches)
{
    widgetApp();
    FakeTaskProperties task;
    CAdvancedConvOpDlg acis(task, 2, "ACIS (*.sat)", nullptr, true);
    auto *curves = acis.findChild<QRadioButton *>("AcisGeometry_1");
    auto *sketches = acis.findChild<QCheckBox *>("AcisGeometry_sketches");
    EXPECT_FALSE(sketches->isEnabled());
    curves->click();
    sketches->click();
    EXPECT_EQ(acis.page()->value("AcisGeometry"), 2);
    auto *versions = acis.findChild<QComboBox *>("AcisVersion");
    versions->setCurrentIndex(versions->findText("8.0"));
    emit versions->activated(versions->currentIndex());
    acis.accept();
    EXPECT_EQ(task.value("AcisGeometry"), Variant::fromI4(2));
    EXPECT_EQ(task.value("AcisVersion"), Variant::fromI4(9));

    // Solid geometry greys the sketch box; back on curves its tick counts again.
    task.set("StepGeometry", Variant::fromI4(2));
    for (const auto &[index, key] : {std::pair{2, QString("AcisGeometry")}, std::pair{17, QString("StepGeometry")}}) {
        SCOPED_TRACE(key.toStdString());
        CAdvancedConvOpDlg again(task, index, "x", nullptr, true);
        again.findChild<QRadioButton *>(key + "_0")->click();
        EXPECT_FALSE(again.findChild<QCheckBox *>(key + "_sketches")->isEnabled());
        EXPECT_EQ(again.page()->value(key), 0);
        again.findChild<QRadioButton *>(key + "_1")->click();
        EXPECT_TRUE(again.findChild<QCheckBox *>(key + "_sketches")->isEnabled());
        EXPECT_EQ(again.page()->value(key), 2);
    }

    // Every box of the Glimpse page has its explanation right below it.
    CAdvancedConvOpDlg glimpse(task, 9, "Glimpse (*.gprt; *.gasm; *.glmp)", nullptr, true);
    glimpse.show();
    for (const QString key : {"GlmpOkayToMeasure", "GlmpAllowExportOfSTL", "GlmpSaveShadedData", "GlmpSaveBOM",
                              "GlmpSaveMotionStudies", "GlmpRecalcMotionStudies"}) {
        SCOPED_TRACE(key.toStdString());
        auto *box = glimpse.findChild<QCheckBox *>(key);
        auto *note = glimpse.findChild<QLabel *>(key + "_note");
        ASSERT_TRUE(box && note);
        EXPECT_FALSE(note->text().isEmpty());
        EXPECT_TRUE(note->isVisible());
        EXPECT_GE(note->y(), box->geometry().bottom());
        EXPECT_LT(note->y() - box->geometry().bottom(), box->height());
    }

    // A stored code without an entry stays as it is, with no entry selected.
    task.set("IgesSystem", Variant::fromI4(77));
    CAdvancedConvOpDlg iges(task, 12, "IGES (*.igs)", nullptr, true);
    EXPECT_EQ(iges.findChild<QComboBox *>("IgesSystem")->currentIndex(), -1);
    EXPECT_FALSE(iges.findChild<QComboBox *>("IgesCurveRepresentation")->isEnabled());
    iges.findChild<QCheckBox *>("IgesExportWireframe")->click();
    EXPECT_TRUE(iges.findChild<QComboBox *>("IgesCurveRepresentation")->isEnabled());
    iges.accept();
    EXPECT_EQ(task.value("IgesSystem"), Variant::fromI4(77));
}

TEST(PathExampleTest, SamplesTheTemplateAndKeepsPathsInsideTheVaultRelative)
{
    EXPECT_EQ(examplePath("<Path>\\<Filename>_<Extension>_<Configuration>", "V:\\Demo", "x", ".pdf"),
              "V:\\Demo\\Part_mcdprt_Default.pdf");
    EXPECT_EQ(examplePath("", "V:\\Demo", "x", ".pdf"), "");
    EXPECT_EQ(withVaultPathPlaceholder("v:\\demo\\Out", "V:\\Demo"), "<VaultPath>\\Out");
    EXPECT_EQ(withVaultPathPlaceholder("W:\\Demo\\Out", "V:\\Demo"), "W:\\Demo\\Out");
    EXPECT_EQ(formatExtension({9, "Glimpse (*.gprt; *.gasm; *.glmp)"}), ".gprt");
    EXPECT_EQ(formatExtension({0, "<Prompt the user>"}), ".pdf");

    widgetApp();
    PageContext context;
    context.vault = std::make_shared<FakeVault>("Demo", "V:\\Demo");
    COutputFileDetailsPageDlg page(context, {});
    QWidget *window = page.create(nullptr);
    auto *primary = window->findChild<PlaceholderEdit *>("primaryPathEdit");
    auto *secondary = window->findChild<PlaceholderEdit *>("secondaryPathEdit");
    secondary->setFocus();
    secondary->insertPlainText("V:\\DEMO\\Copies");
    EXPECT_EQ(secondary->text(), "<VaultPath>\\Copies");
    // The menu of one ">" inserts into its own editor only.
    window->findChild<QMenu *>("primaryPlaceholderButtonMenu")->actions().at(4)->trigger();
    EXPECT_EQ(primary->text(), "<VaultPath><Path>\\<Filename>_<Extension>_<Configuration>");
    EXPECT_EQ(secondary->text(), "<VaultPath>\\Copies");
    EXPECT_EQ(window->findChild<QLabel *>("secondaryExampleLabel")->text(), "Example: V:\\Demo\\Copies.pdf");

    // A long path neither widens the page nor loses its ends: it is elided
    // in the middle to the label's width.
    const int width = window->sizeHint().width();
    secondary->setFocus();
    secondary->insertPlainText(QString("\\Very long folder name").repeated(20));
    EXPECT_EQ(window->sizeHint().width(), width);
    window->resize(width, window->sizeHint().height());
    window->show();
    auto *example = window->findChild<ElidedLabel *>("secondaryExampleLabel");
    ASSERT_TRUE(example);
    const QString shown = example->displayedText();
    EXPECT_TRUE(shown.startsWith("Example: V:\\Demo\\Copies")) << shown.toStdString();
    EXPECT_TRUE(shown.endsWith("name.pdf")) << shown.toStdString();
    EXPECT_TRUE(shown.contains(QChar(0x2026))) << shown.toStdString();
    EXPECT_LE(example->fontMetrics().horizontalAdvance(shown), example->contentsRect().width());
    EXPECT_TRUE(example->text().endsWith(QString("\\Very long folder name").repeated(20) + ".pdf"));
}

TEST(OutputFileDetailsTest, StoredValuesShowAndAFailingKeyKeepsTheRestAtTheirDefaults)
{
    widgetApp();
    FakeTaskProperties task;
    task.set("ReplaceOutput", Variant::fromBool(false));
    task.set("OutputPath2", Variant::fromBStr("<VaultPath>\\Copies\\<Filename>"));
    PageContext context;
    COutputFileDetailsPageDlg page(context, {});
    QWidget *window = page.create(nullptr);
    ASSERT_EQ(page.load(task), S_OK);
    EXPECT_TRUE(window->findChild<QRadioButton *>("newVersionRadio")->isChecked());
    EXPECT_EQ(page.errorLogPath, "\\Logs\\Convert to PDF");

    FakeTaskProperties failing;
    failing.set("RefToSource", Variant::fromBool(true));
    failing.set("PromptOutput", Variant::fromBool(false));
    failing.failRead("OutputPath2", E_ACCESSDENIED);
    COutputFileDetailsPageDlg stopped(context, {});
    EXPECT_EQ(stopped.load(failing), E_ACCESSDENIED);
    EXPECT_FALSE(stopped.refToSource);
    EXPECT_TRUE(stopped.promptOutput);
}

TEST(OutputFileDetailsTest, AdvancedScriptingOptionsShowsAFailedLoad)
{
    widgetApp();
    RecordingPrompter prompter;
    ScopedPrompter scoped(prompter);
    auto task = std::make_shared<FakeTaskProperties>();
    task->failRead("__script", E_ACCESSDENIED);
    PageContext context;
    context.properties = task;
    context.taskType = 1;
    COutputFileDetailsPageDlg page(context, {});
    QWidget *window = page.create(nullptr);
    window->findChild<QPushButton *>("advancedScriptingButton")->click();
    EXPECT_EQ(prompter.messages, QStringList{errorText(E_ACCESSDENIED)});
    EXPECT_TRUE(task->writes().isEmpty());
}

TEST(FileCardTest, RowsAreStoredInListOrderAndUnknownVariablesAreDropped)
{
    PageContext context;
    auto vault = std::make_shared<FakeVault>();
    vault->cardVariables = {"Title", "Description", "PartNo", "Number"};
    context.vault = vault;
    FakeTaskProperties task;
    task.set("FileCardData", Variant::fromBStr("Description;1;\nGone;8;x\nPartNo;100;Number\nTitle;100;Lost\n"));
    CFileCardPageDlg page(context, {});
    ASSERT_EQ(page.load(task), S_OK);
    ASSERT_EQ(page.rows().size(), 2u);
    page.addRow();
    EXPECT_EQ(page.rows().back().destination, "Description"); // the first name in order
    page.chooseDestination(3);                                    // Title
    page.setFreeText("Converted file");
    ASSERT_EQ(page.save(task), S_OK);
    EXPECT_EQ(task.value("FileCardData").toText(),
              "Description;1;\nPartNo;100;Number\nTitle;8;Converted file\n");
    EXPECT_EQ(task.declared, QStringList({"Description", "PartNo", "Number", "Title"}));

    CFileCardPageDlg empty({}, {});
    FakeTaskProperties fresh;
    empty.load(fresh);
    empty.addRow(); // no card variables: an empty destination
    EXPECT_EQ(empty.rows().front().destination, "");
}

TEST(FileCardTest, VariableNamesAreExactAndAFailedReadKeepsTheStoredRows)
{
    widgetApp();
    PageContext context;
    auto vault = std::make_shared<FakeVault>();
    vault->cardVariables = {"title", "Number", "Title"};
    context.vault = vault;
    const QString stored = "TITLE;1;\ntitle;8;a\nTitle;100;number\nTitle;100;Number\n";
    FakeTaskProperties task;
    task.set("FileCardData", Variant::fromBStr(stored));
    {
        CFileCardPageDlg page(context, {});
        QWidget *window = page.create(nullptr);
        EXPECT_EQ(page.variableNames(), QStringList({"Number", "Title", "title"}));
        ASSERT_EQ(page.load(task), S_OK);
        EXPECT_EQ(page.rows(), (std::vector<FileCardRow>{{"title", 8, "a"}, {"Title", 100, "Number"}}));
        // Each row shows its own variable, not the first that differs in case.
        auto *destinations = window->findChild<QComboBox *>("destinationList");
        page.selectRow(0);
        EXPECT_EQ(destinations->currentText(), "title");
        page.selectRow(1);
        EXPECT_EQ(destinations->currentText(), "Title");
        EXPECT_EQ(window->findChild<QComboBox *>("sourceList")->currentText(), "Number");
    }

    // The names cannot be read: Load says so, and "OK" stores what was there.
    vault->fail("GetCardVariableNames", E_ACCESSDENIED);
    CFileCardPageDlg page(context, {});
    page.create(nullptr);
    EXPECT_EQ(page.load(task), E_ACCESSDENIED);
    ASSERT_EQ(page.save(task), S_OK);
    EXPECT_EQ(task.value("FileCardData").toText(), stored);
}

TEST(ConversionSettingsWindowTest, ALaunchWithOnlyTheSheetsOpenShowsOneTab)
{
    widgetApp();
    FakeTaskInstance instance;
    instance.set("FileFormat", Variant::fromBStr("Adobe PDF (*.pdf)"));
    instance.set("PromptOutput", Variant::fromBool(false));
    instance.set("SourceRefs", Variant::fromI4(2));
    instance.set("OutputConfs", Variant::fromI4(2));
    instance.set("FileConfs", Variant::fromI4(4));
    PageContext context;
    context.launchMode = true;
    CConversionSettingsPageDlg page(context, {});
    QWidget *window = page.create(nullptr);
    ASSERT_EQ(page.load(instance), S_OK);
    window->show();
    EXPECT_TRUE(page.hasLaunchPrompt());
    auto *tabs = window->findChild<QTabWidget *>("templateTabs");
    ASSERT_EQ(tabs->count(), 1);
    EXPECT_EQ(tabs->currentWidget()->objectName(), "SheetsTemplateDlg");
    EXPECT_TRUE(tabs->isVisible());
    EXPECT_FALSE(window->findChild<QWidget *>("formatSection")->isVisible());
    EXPECT_FALSE(window->findChild<QWidget *>("pathSection")->isVisible());
    EXPECT_FALSE(window->findChild<QWidget *>("referencesGroup")->isVisible());
    // PDF holds several sheets in one file: that choice is open as well.
    EXPECT_TRUE(tabs->currentWidget()->findChild<QWidget *>("fileGroup")->isVisible());
    // At launch the tab is part of the user's topic, not the administrator's.
    EXPECT_EQ(helpTopicWithin(window, tabs->currentWidget()->findChild<QWidget *>("fileGroup")),
              "ConversionSettingsPageDlg.Launch");
}

} // namespace
