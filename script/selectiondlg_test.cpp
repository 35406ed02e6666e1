#include "script/selectiondlg.h"

#include "common/errortexts.h"
#include "common/help/testing/helpenvironment.h"
#include "common/testing/testlanguage.h"
#include "common/translator.h"
#include "common/widgets/recordingprompter.h"
#include "common/widgets/testing/widgetapp.h"
#include "host/testing/fakevault.h"
#include "host/testing/mockvault.h"
#include "platform/memoryfilesystem.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace {

using testing::_;
using testing::DoAll;
using testing::Return;
using testing::SetArgReferee;

const QString Root = QStringLiteral("V:\\Demo");

// The filter of "Add Files..." with the English type names.
const QString EnglishFilter = QStringLiteral(
    "Mecadra Files (*.mcdasm;*.mcdprt;*.mcddrw)|*.mcdasm; *.mcdprt; *.mcddrw|"
    "Part (*.prt;*.mcdprt)|*.prt; *.mcdprt|"
    "Assembly (*.asm;*.mcdasm)|*.asm; *.mcdasm|"
    "Drawing (*.drw;*.mcddrw)|*.drw; *.mcddrw|"
    "DXF (*.dxf)|*.dxf|"
    "DWG (*.dwg)|*.dwg|"
    "Adobe Photoshop Files (*.psd)|*.psd|"
    "Adobe Illustrator Files (*.ai)|*.ai|"
    "Lib Feat Part (*.lfp;*.mcdlfp)|*.lfp; *.mcdlfp|"
    "Template (*.prtdot;*.asmdot;*.drwdot)|*.prtdot; *.asmdot; *.drwdot|"
    "Parasolid (*.x_t;*.x_b;*.xmt_txt;*.xmt_bin)|*.x_t; *.x_b; *.xmt_txt; *.xmt_bin|"
    "IGES (*.igs;*.iges)|*.igs; *.iges|"
    "STEP AP203/214 (*.step;*.stp)|*.step; *.stp|"
    "ACIS (*.sat)|*.sat|"
    "VDAFS (*.vda)|*.vda|"
    "VRML (*.wrl)|*.wrl|"
    "STL (*.stl)|*.stl|"
    "Korinth Graphics (*.kgr)|*.kgr|"
    "ProE Part (*.prt;*.prt;*.xpr)|*.prt; *.prt; *.xpr|"
    "ProE Assembly (*.asm;*.asm;*.xas)|*.asm; *.asm; *.xas|"
    "UGII (*.prt)|*.prt|"
    "Inventor Part (*.ipt)|*.ipt|"
    "Inventor Assembly (*.iam)|*.iam|"
    "Solid Edge Part (*.par;*.psm)|*.par; *.psm|"
    "Solid Edge Assembly (*.asm)|*.asm|"
    "CADKEY (*.prt;*.cdk)|*.prt; *.cdk|"
    "IDF (*.emn;*.brd;*.dbf;*.idb)|*.emn; *.brd; *.dbf; *.idb|"
    "Rhino (*.3dm)|*.3dm||");

class TestFolder final : public IDoxFolder
{
public:
    TestFolder(std::int32_t id, QString path) : m_id(id), m_path(std::move(path)) {}
    std::int32_t GetID() override { return m_id; }
    QString GetLocalPath() override { return m_path; }
    HRESULT GetFiles(std::vector<std::shared_ptr<IDoxFile>> &) override { return E_NOTIMPL; }
    HRESULT GetSubFolders(std::vector<std::shared_ptr<IDoxFolder>> &) override { return E_NOTIMPL; }

private:
    std::int32_t m_id;
    QString m_path;
};

class SelectionDlgTest : public ::testing::Test, public WithWidgetApp
{
protected:
    SelectionDlgTest() : m_prompts(prompter) {}

    // The vault's file picker answers these files, each in folder 7.
    void pickFiles(std::vector<std::shared_ptr<IDoxFile>> files, const QString &title = "Select Files",
                   const QString &filter = EnglishFilter)
    {
        std::vector<std::shared_ptr<IDoxFolder>> folders(files.size(), std::make_shared<TestFolder>(7, Root + "\\Parts"));
        EXPECT_CALL(*vault, BrowseForFiles(_, title, filter, _, _))
            .WillOnce(DoAll(SetArgReferee<3>(files), SetArgReferee<4>(folders), Return(S_OK)));
    }

    std::shared_ptr<testing::NiceMock<MockVault>> vault = makeVaultWithRoot(Root);
    RecordingPrompter prompter;

private:
    ScopedPrompter m_prompts;
};

TEST_F(SelectionDlgTest, ResultIsOrderedByDisplayedPathWithOneRecordPerEntry)
{
    CSelectionDlg dialog(vault, Root);
    auto gear = std::make_shared<FakeFile>(12, Root + "\\Parts\\gear.mcdprt", 7);
    gear->setVersion(3, "A", "Released");
    pickFiles({gear, std::make_shared<FakeFile>(11, Root + "\\Parts\\Axle.mcdprt", 7)});
    dialog.addFiles();
    // The vault's root itself is a folder one may pick: shown with no text.
    EXPECT_CALL(*vault, BrowseForFolder(_, QString("Please select a folder:"), _))
        .WillOnce(DoAll(SetArgReferee<2>(std::make_shared<TestFolder>(1, Root)), Return(S_OK)))
        .WillOnce(DoAll(SetArgReferee<2>(std::make_shared<TestFolder>(9, Root + "\\Assemblies")), Return(S_OK)))
        .WillOnce(Return(S_FALSE));
    dialog.addFolder();
    dialog.addFolder();
    dialog.addFolder(); // cancelled

    EXPECT_EQ(dialog.rows(), QStringList({"\\Parts\\gear.mcdprt", "\\Parts\\Axle.mcdprt", "", "\\Assemblies"}));
    // Ordinal order: "" < "\Assemblies" < "\Parts\Axle" < "\Parts\gear".
    const DoxCmdDataArray result = dialog.result();
    ASSERT_EQ(result.size(), 4u);
    EXPECT_EQ(result[0], (DoxCmdData{1, 0, Root, {}, DoxObject_Folder, 0}));
    EXPECT_EQ(result[1], (DoxCmdData{9, 0, Root + "\\Assemblies", {}, DoxObject_Folder, 0}));
    EXPECT_EQ(result[2], (DoxCmdData{11, 7, Root + "\\Parts\\Axle.mcdprt", {}, DoxObject_File, 1}));
    EXPECT_EQ(result[3], (DoxCmdData{12, 7, Root + "\\Parts\\gear.mcdprt", {}, DoxObject_File, 3}));

    // The same file again is not added twice; removing takes the entry too.
    pickFiles({std::make_shared<FakeFile>(12, Root + "\\Parts\\gear.mcdprt", 7)});
    dialog.addFiles();
    EXPECT_EQ(dialog.rows().size(), 4);
    dialog.removeRows({0, 2});
    EXPECT_EQ(dialog.rows(), QStringList({"\\Parts\\Axle.mcdprt", "\\Assemblies"}));
    EXPECT_EQ(dialog.result().size(), 2u);
    EXPECT_TRUE(prompter.messages.isEmpty());
}

TEST_F(SelectionDlgTest, HelpOpensTheSelectionTopicInTheUsersLanguage)
{
    HelpEnvironment german(QStringLiteral("DE"));
    CSelectionDlg dialog(vault, Root, "Print Drawings");
    QDialog *window = dialog.create(nullptr);
    window->findChild<QPushButton *>("helpButton")->click();
    const HelpWindow *help = HelpEnvironment::shownBeside(window);
    ASSERT_TRUE(help);
    EXPECT_EQ(help->topic(), "SelectionDlg");
    EXPECT_EQ(help->browser()->documentTitle(), "Dateien und Ordner für die Aufgabe auswählen");
    EXPECT_TRUE(prompter.messages.isEmpty());
}

TEST_F(SelectionDlgTest, WindowAddsRemovesWithDeleteAndRefusesAnEmptyList)
{
    // The dialog's own translator, not the process-wide one, gives every text.
    MemoryFileSystem files;
    ScopedFileSystem filesGuard(files);
    addTestLanguage(files, "/lang/DE");
    const Translator german("/lang/DE");
    CSelectionDlg dialog(vault, Root, "Print Drawings", &german);
    QDialog *window = dialog.create(nullptr);
    EXPECT_EQ(window->windowTitle(), "Auswahl für Print Drawings");
    EXPECT_EQ(window->findChild<QPushButton *>("addFiles213")->text(), "Dateien hinzufügen...");
    auto *list = window->findChild<QListWidget *>("list209");
    auto *remove = window->findChild<QPushButton *>("remove215");
    QPushButton *ok = window->findChild<QDialogButtonBox *>("buttons")->button(QDialogButtonBox::Ok);
    ASSERT_TRUE(list && remove && ok);
    window->show();

    // "OK" on an empty list: the message, and the dialog stays.
    ok->click();
    EXPECT_EQ(prompter.messages, QStringList({"Please select at least one folder or file."}));
    EXPECT_TRUE(window->isVisible());
    EXPECT_FALSE(remove->isEnabled());

    pickFiles({std::make_shared<FakeFile>(4, Root + "\\a.mcdprt", 7), std::make_shared<FakeFile>(5, Root + "\\b.mcddrw", 7),
               std::make_shared<FakeFile>(6, Root + "\\c.mcdasm", 7)},
              "Dateien wählen", QString(EnglishFilter).replace("|Part (", "|Teil ("));
    window->findChild<QPushButton *>("addFiles213")->click();
    ASSERT_EQ(list->count(), 3);
    EXPECT_FALSE(list->item(0)->icon().isNull());

    // Two rows selected, Delete: both go, and "Remove" follows the selection.
    list->item(0)->setSelected(true);
    list->item(2)->setSelected(true);
    EXPECT_TRUE(remove->isEnabled());
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Delete);
    ASSERT_EQ(list->count(), 1);
    EXPECT_EQ(list->item(0)->text(), "\\b.mcddrw");
    EXPECT_EQ(dialog.rows(), QStringList({"\\b.mcddrw"}));
    EXPECT_FALSE(remove->isEnabled());

    // A host failure while browsing is shown; the dialog stays open.
    EXPECT_CALL(*vault, BrowseForFolder(_, _, _)).WillOnce(Return(E_DOX_DATABASE_ACCESS));
    window->findChild<QPushButton *>("addFolder214")->click();
    ASSERT_EQ(prompter.messages.size(), 2);
    EXPECT_EQ(prompter.messages[1], errorText(E_DOX_DATABASE_ACCESS));
    EXPECT_TRUE(window->isVisible());

    ok->click();
    EXPECT_EQ(window->result(), QDialog::Accepted);
    EXPECT_EQ(dialog.result(), (DoxCmdDataArray{{5, 7, Root + "\\b.mcddrw", {}, DoxObject_File, 1}}));
}

} // namespace
