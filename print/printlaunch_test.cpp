#include "print/printuidlg.h"

#include "common/errortexts.h"
#include "common/help/testing/helpenvironment.h"
#include "common/testing/testlanguage.h"
#include "common/translator.h"
#include "common/widgets/recordingprompter.h"
#include "common/widgets/testing/widgetapp.h"
#include "host/testing/faketask.h"
#include "platform/memoryfilesystem.h"
#include "print/filereftreemodel.h"
#include "vault/embeddedvault.h"
#include "vault/vaulttesting.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <gtest/gtest.h>

namespace {

// An assembly in the embedded vault that references two parts, a drawing of
// its own and a file no print can take.
class PrintLaunchTest : public ::testing::Test, private WithWidgetApp
{
protected:
    PrintLaunchTest() : m_prompts(prompter)
    {
        const auto add = [&](const QString &name) {
            return store->addFile(temp.outsideFile(name, name.toUtf8()), "Parts", name, {});
        };
        assembly = add("gearbox.mcdasm");
        const VaultFileRow shaft = add("shaft.mcdprt");
        const VaultFileRow cover = add("cover.mcdprt");
        drawing = add("gearbox.mcddrw");
        const VaultFileRow notes = add("notes.xyz");
        for (const VaultFileRow &child : {shaft, cover, drawing, notes})
            store->addReference(assembly.id, child.id, child.name == "shaft.mcdprt" ? "Long" : "");
        selection = {{assembly.id, assembly.folderId, root() + "\\Parts\\gearbox.mcdasm", {}, DoxObject_File, 1}};
        instance->set("__type", Variant::fromI4(2));
        instance->set("__printer_prseltype", Variant::fromI4(0)); // as every set-up stores it
        instance->set("__printer_prname", Variant::fromBStr("Office"));
    }

    QString root() const
    {
        QString r;
        vault->GetRootFolderPath(r);
        return r;
    }
    QStringList selectedPaths() const
    {
        QStringList paths;
        for (const DoxCmdData &d : selection)
            paths << d.string1.section('\\', -1) + (d.string2.isEmpty() ? "" : "|" + d.string2);
        return paths;
    }
    DoxCmd command()
    {
        DoxCmd cmd;
        cmd.commandType = DoxCmd_TaskLaunch;
        cmd.extra = instance;
        return cmd;
    }
    // The window of a launch, filled but not shown.
    std::unique_ptr<PrintUIDlg> dialog()
    {
        auto d = std::make_unique<PrintUIDlg>(vault, instance, selection, TextLookup{});
        d->initialise();
        return d;
    }
    template <class W> W *find(PrintUIDlg &d, const char *name)
    {
        W *w = d.window()->findChild<W *>(name);
        EXPECT_TRUE(w) << name;
        return w;
    }

    TempVault temp;
    std::shared_ptr<VaultStore> store = temp.store;
    std::shared_ptr<EmbeddedVault> vault = std::make_shared<EmbeddedVault>(store);
    std::shared_ptr<FakeTaskInstance> instance = std::make_shared<FakeTaskInstance>();
    VaultFileRow assembly;
    VaultFileRow drawing;
    DoxCmdDataArray selection;
    RecordingPrompter prompter;

private:
    ScopedPrompter m_prompts;
};

TEST_F(PrintLaunchTest, WithoutTheDialogTheSelectionAndItsAutoSelectedReferencesArePrinted)
{
    instance->set("__printer_showprintdlg", Variant::fromBool(false));
    DoxCmd cmd = command();
    ASSERT_TRUE(runPrintLaunchDialog(vault, &cmd, selection, false));
    for (QWidget *w : QApplication::topLevelWidgets())
        EXPECT_FALSE(w->isVisible()) << w->objectName().toStdString();
    EXPECT_EQ(selectedPaths(), (QStringList{"gearbox.mcdasm", "gearbox.mcddrw"}));
    EXPECT_EQ(selection[1].long1, DoxObject_File);
    EXPECT_EQ(selection[1].long2, 1);
    EXPECT_EQ(instance->value("__printer_copycount").toI4(), 1);
    // Absent, the setting prompts, and the buttons start on the referenced version.
    EXPECT_EQ(instance->value("__printer_refversiontype").toI4(), 0);
    EXPECT_EQ(instance->value("__printer_deforientation").toI4(), 1);
    EXPECT_EQ(instance->value("__printer_defpapsize").toI4(), 10);
    EXPECT_TRUE(prompter.messages.isEmpty()) << prompter.messages.join('|').toStdString();

    // Parts and sub-assemblies instead: the parts with their configuration.
    selection.resize(1);
    selection[0].string1 = root() + "\\Parts\\gearbox.mcdasm";
    instance->set("__printer_autoselectrefstype", Variant::fromI4(2));
    ASSERT_TRUE(runPrintLaunchDialog(vault, &cmd, selection, false));
    EXPECT_EQ(selectedPaths(), (QStringList{"gearbox.mcdasm", "shaft.mcdprt|Long", "cover.mcdprt"}));
}

TEST_F(PrintLaunchTest, ASelectedFileIsListedOnceWhateverComesFirstAndCopiesGivenAtLaunchAreKept)
{
    // The drawing is selected and also a reference of the assembly listed before it.
    selection.push_back({drawing.id, drawing.folderId, root() + "\\Parts\\gearbox.mcddrw", {}, DoxObject_File, 1});
    instance->set("__printer_autoselectrefstype", Variant::fromI4(1));
    instance->set("__printer_copycount", Variant::fromI4(2));
    const auto d = dialog();
    const FileRefTreeModel &tree = d->tree();
    ASSERT_EQ(tree.rowCount({}), 2);
    EXPECT_EQ(tree.rowCount(tree.index(0, 0)), 3); // shaft, cover, notes
    EXPECT_EQ(tree.data(tree.index(1, 0), Qt::DisplayRole).toString(), "gearbox.mcddrw");
    EXPECT_EQ(find<QLineEdit>(*d, "copiesEdit")->text(), "2");

    instance->set("__printer_showprintdlg", Variant::fromBool(false));
    DoxCmd cmd = command();
    ASSERT_TRUE(runPrintLaunchDialog(vault, &cmd, selection, false));
    EXPECT_EQ(selectedPaths(), (QStringList{"gearbox.mcdasm", "gearbox.mcddrw"}));
    EXPECT_EQ(instance->value("__printer_copycount").toI4(), 2);
}

TEST_F(PrintLaunchTest, TheStoredPrinterIsOnlySelectedAndAnAbsentModePromptsWhenPrinting)
{
    instance->set("__printer_prnamelist", Variant::fromBStr("Plotter"));
    {
        // Mode 0: the stored printer is not added to a list that lacks it.
        const auto d = dialog();
        auto *printers = find<QComboBox>(*d, "printerCombo");
        EXPECT_EQ(printers->count(), 1);
        EXPECT_EQ(printers->currentIndex(), -1);
        EXPECT_FALSE(printers->isEnabled());
        EXPECT_TRUE(d->print());
        EXPECT_FALSE(instance->writes().contains("__printer_prname"));
    }
    // Absent, the mode fills the dialog as mode 0 but "Print" takes the data as mode 1.
    instance->remove("__printer_prseltype");
    const auto d = dialog();
    EXPECT_FALSE(find<QComboBox>(*d, "printerCombo")->isEnabled());
    EXPECT_FALSE(d->print());
    EXPECT_EQ(prompter.messages, QStringList{"No printer selected."});
    instance->set("__printer_prname", Variant::fromBStr("Plotter"));
    const auto again = dialog();
    EXPECT_TRUE(again->print());
    EXPECT_TRUE(instance->writes().contains("__printer_prname"));
}

TEST_F(PrintLaunchTest, HelpOpensThePrintTopicInTheUsersLanguage)
{
    HelpEnvironment german(QStringLiteral("DE"));
    const auto d = dialog();
    auto *button = find<QPushButton>(*d, "helpButton");
    ASSERT_TRUE(button->isEnabled());
    button->click();
    HelpWindow *help = HelpEnvironment::shownBeside(d->window());
    ASSERT_TRUE(help);
    EXPECT_EQ(help->topic(), "PrintUIDlg");
    EXPECT_EQ(help->browser()->documentTitle(), "Drucken");
    EXPECT_TRUE(prompter.messages.isEmpty());
}

TEST_F(PrintLaunchTest, TheVersionTipsComeFromTheReferenceDialogsTexts)
{
    MemoryFileSystem files;
    ScopedFileSystem filesGuard(files);
    addTestLanguage(files, "/lang/DE");
    Translator german("/lang/DE");
    ScopedTranslator translatorGuard(german);
    const auto d = dialog();
    EXPECT_EQ(find<QWidget>(*d, "referencedButton")->toolTip(), "Referenzierte Version");
    EXPECT_EQ(find<QWidget>(*d, "latestButton")->toolTip(), "Neueste Version");
}

TEST_F(PrintLaunchTest, AHostFailureInASlotIsShownAndTheDialogGoesOn)
{
    instance->set("__printer_prseltype", Variant::fromI4(2));
    instance->failRead("__printer_papsize_A3", E_ACCESSDENIED);
    const auto d = dialog();
    auto *papers = find<QComboBox>(*d, "paperCombo");
    papers->setCurrentIndex(papers->findText("A3"));
    EXPECT_EQ(prompter.messages, QStringList{errorText(E_ACCESSDENIED)});
    EXPECT_EQ(find<QComboBox>(*d, "printerCombo")->count(), 0);
    papers->setCurrentIndex(papers->findText("A4"));
    EXPECT_EQ(prompter.messages.size(), 1);
}

TEST_F(PrintLaunchTest, RefusalsKeepTheDialogOpenWithTheirMessages)
{
    instance->set("__printer_prseltype", Variant::fromI4(1));
    instance->set("__printer_prnamelist", Variant::fromBStr("Office\r\n\r\nPlotter\n"));
    instance->set("__printer_prname", Variant::fromBStr("Nowhere"));
    instance->set("__printer_autoselectrefstype", Variant::fromI4(3));
    const auto d = dialog();
    auto *printers = find<QComboBox>(*d, "printerCombo");
    EXPECT_EQ(printers->count(), 2);
    EXPECT_EQ(printers->currentIndex(), -1);
    EXPECT_FALSE(d->print());
    EXPECT_EQ(prompter.messages.value(0), "No printer selected.");
    EXPECT_FALSE(instance->has("__printer_prname") && instance->value("__printer_prname").bstr() != "Nowhere");

    // A refusal brings its control forward, from the other tab as well.
    d->window()->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(d->window()));
    auto *tabs = find<QTabWidget>(*d, "tabWidget");
    tabs->setCurrentIndex(1);
    printers->setCurrentIndex(1);
    auto *copies = find<QLineEdit>(*d, "copiesEdit");
    copies->setText("0");
    EXPECT_FALSE(d->print());
    EXPECT_EQ(prompter.messages.value(1), "Enter number of copies to print.");
    EXPECT_EQ(tabs->currentIndex(), 0);
    EXPECT_EQ(QApplication::focusWidget(), copies);

    // Four printable documents: the unsupported one has no check box.
    copies->setText("3");
    EXPECT_EQ(find<QLabel>(*d, "totalLabel")->text(), "Total: 12");
    FileRefTreeModel &tree = d->tree();
    const QModelIndex top = tree.index(0, 0);
    ASSERT_EQ(tree.rowCount(top), 4);
    const QModelIndex notes = tree.index(3, 0, top);
    EXPECT_EQ(tree.data(notes, Qt::DisplayRole).toString(), "notes.xyz");
    EXPECT_FALSE(tree.data(notes, Qt::CheckStateRole).isValid());
    EXPECT_EQ(tree.data(tree.index(3, FileRefTreeModel::State, top), Qt::DisplayRole).toString(),
              "Unsupported File Format");
    for (const QModelIndex &i : {top, tree.index(0, 0, top), tree.index(1, 0, top), tree.index(2, 0, top)})
        tree.setData(i, Qt::Unchecked, Qt::CheckStateRole);
    EXPECT_EQ(find<QLabel>(*d, "totalLabel")->text(), "Total: 0");
    EXPECT_FALSE(d->print());
    EXPECT_EQ(prompter.messages.value(2), "Please select at least one file.");
    EXPECT_EQ(selection.size(), 1u); // nothing handed over yet

    tree.setData(tree.index(2, 0, top), Qt::Checked, Qt::CheckStateRole);
    EXPECT_TRUE(d->print());
    EXPECT_EQ(selectedPaths(), QStringList{"gearbox.mcddrw"});
    EXPECT_EQ(instance->value("__printer_prname").bstr(), "Plotter");
    EXPECT_EQ(instance->value("__printer_copycount").toI4(), 3);
}

TEST_F(PrintLaunchTest, PrinterBySizeFollowsThePaperAndFixedMarginsLeaveNoMarginsTab)
{
    instance->set("__printer_prseltype", Variant::fromI4(2));
    instance->set("__printer_papsize_A3", Variant::fromBStr("Plotter"));
    instance->set("__printer_refversiontype", Variant::fromI4(0));
    for (const char *key : {"__printer_margintype", "__printer_headertype", "__printer_footertype"})
        instance->set(key, Variant::fromI4(2));
    const auto d = dialog();
    EXPECT_EQ(find<QTabWidget>(*d, "tabWidget")->count(), 1);
    EXPECT_TRUE(find<QWidget>(*d, "latestButton")->isHidden());
    auto *printers = find<QComboBox>(*d, "printerCombo");
    EXPECT_FALSE(printers->isEnabled());
    EXPECT_EQ(printers->count(), 0); // A4 has no printer of its own
    auto *papers = find<QComboBox>(*d, "paperCombo");
    papers->setCurrentIndex(papers->findText("A3"));
    ASSERT_EQ(printers->count(), 1);
    EXPECT_EQ(printers->currentText(), "Plotter");

    ASSERT_TRUE(d->print());
    EXPECT_EQ(instance->value("__printer_defpapsize").toI4(), 9);
    EXPECT_EQ(instance->value("__printer_refversiontype").toI4(), 0); // not the user's to change
    for (const char *key : {"__printer_margintop", "__printer_margintype", "__printer_headerleft"})
        EXPECT_FALSE(instance->writes().contains(key)) << key;
}

TEST_F(PrintLaunchTest, PromptedMarginsHeaderAndFooterAreWrittenAsTheUserAnswered)
{
    const auto d = dialog();
    ASSERT_EQ(find<QTabWidget>(*d, "tabWidget")->count(), 2);
    find<QLineEdit>(*d, "topEdit")->setText("15");
    find<QWidget>(*d, "useHeaderCheck")->setProperty("checked", true);
    find<QLineEdit>(*d, "headerCenterEdit")->setText("Draft");
    ASSERT_TRUE(d->print());
    EXPECT_EQ(instance->value("__printer_margintop").type(), VarType::I4);
    EXPECT_EQ(instance->value("__printer_margintop").toI4(), 15);
    EXPECT_EQ(instance->value("__printer_headertype").toI4(), 2);
    EXPECT_EQ(instance->value("__printer_headercenter").bstr(), "Draft");
    EXPECT_EQ(instance->value("__printer_footertype").toI4(), 0);
    EXPECT_FALSE(instance->writes().contains("__printer_footerleft"));
}

} // namespace
