#include "common/widgets/strwnd.h"

#include "common/testing/testlanguage.h"
#include "common/translator.h"
#include "common/widgets/testing/widgetapp.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QLibraryInfo>
#include <QPushButton>
#include <QTranslator>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

namespace {

TEST(StrWndTest, ADialogTakesItsTextsFromItsOwnSection)
{
    widgetApp();
    MemoryFileSystem files;
    ScopedFileSystem filesGuard(files);
    addTestLanguage(files, "/lang/DE");
    Translator translator("/lang/DE");

    QWidget dialog;
    dialog.setWindowTitle("Menu Command");
    auto *label = new QLabel("Menu command:", &dialog);
    label->setObjectName("menuTextLabel");
    auto *check = new QCheckBox("Display", &dialog);
    check->setObjectName("displayCheck");
    auto *box = new QGroupBox("Group", &dialog);
    box->setObjectName("box");
    auto *plain = new QLabel("Plain", &dialog);
    plain->setObjectName("plainLabel");
    new QLabel("no name", &dialog);

    StrWnd helper(&dialog);
    EXPECT_EQ(helper.localise("MenuCommandDlg", translator), 4);
    EXPECT_EQ(dialog.windowTitle(), "Menübefehl");
    EXPECT_EQ(label->text(), "Befehl:");
    EXPECT_EQ(check->text(), "Anzeigen");
    EXPECT_EQ(box->title(), "Gruppe");
    EXPECT_EQ(plain->text(), "Plain"); // another dialog's text is not taken
}

TEST(StrWndTest, APageEmbeddedInADialogKeepsItsOwnDialogsTexts)
{
    widgetApp();
    MemoryFileSystem files;
    ScopedFileSystem filesGuard(files);
    addTestLanguage(files, "/lang/DE");
    Translator translator("/lang/DE");

    QWidget dialog;
    auto *page = new QWidget(&dialog);
    auto *inner = new QLabel("Menu command:", page);
    inner->setObjectName("menuTextLabel");
    auto *plain = new QLabel("Plain", page);
    plain->setObjectName("plainLabel");
    auto *outer = new QLabel("Menu command:", &dialog);
    outer->setObjectName("menuTextLabel");

    StrWnd(page).localise("OtherDlg", translator);
    StrWnd(&dialog).localise("MenuCommandDlg", translator);
    EXPECT_EQ(plain->text(), "nicht hier");
    EXPECT_EQ(inner->text(), "Menu command:"); // the page's dialog has no such text
    EXPECT_EQ(outer->text(), "Befehl:");
}

TEST(StrWndTest, GroupsHideAndCloseUpEnableAndMoveTogether)
{
    widgetApp();
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    layout->setSpacing(0);
    QWidget *top = new QLabel("top"), *first = new QLabel("first"), *second = new QLineEdit, *below = new QLabel("below");
    for (QWidget *w : {top, first, second, below}) {
        w->setFixedHeight(20);
        layout->addWidget(w);
    }
    layout->addStretch();
    window.resize(200, 200);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));

    StrWnd helper(&window);
    helper.addControl(1, first);
    helper.addControl(1, second);
    helper.addControl(2, below);
    const int belowY = below->y();

    helper.showGroup(1, false);
    layout->activate();
    EXPECT_FALSE(first->isVisible());
    EXPECT_FALSE(second->isVisible());
    EXPECT_EQ(below->y(), belowY - 40); // the section closed up
    EXPECT_TRUE(top->isVisible());
    helper.showGroup(1, true);
    layout->activate();
    EXPECT_EQ(below->y(), belowY);

    helper.enableGroup(1, false);
    EXPECT_FALSE(first->isEnabled());
    EXPECT_FALSE(second->isEnabled());
    EXPECT_TRUE(below->isEnabled());

    QWidget free;
    free.resize(100, 100);
    auto *a = new QLabel("a", &free);
    a->setGeometry(5, 5, 10, 10);
    StrWnd freeHelper(&free);
    freeHelper.addControl(3, a);
    freeHelper.moveGroup(3, 7, 3);
    EXPECT_EQ(a->pos(), QPoint(12, 8));
}

TEST(StrWndTest, FixedControlsFollowTheEdgesTheyAreAnchoredTo)
{
    widgetApp();
    QWidget window;
    window.resize(300, 200);
    auto *editor = new QWidget(&window);
    editor->setGeometry(10, 10, 280, 140);
    auto *button = new QWidget(&window);
    button->setGeometry(210, 160, 80, 25);
    auto *label = new QWidget(&window);
    label->setGeometry(10, 160, 60, 20);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    StrWnd helper(&window);
    helper.fixControl(editor, StrWnd::GrowX | StrWnd::GrowY);
    helper.fixControl(button, StrWnd::MoveX | StrWnd::MoveY);
    helper.fixControl(label, StrWnd::MoveY);

    window.resize(400, 260);
    EXPECT_EQ(editor->geometry(), QRect(10, 10, 380, 200));
    EXPECT_EQ(button->geometry(), QRect(310, 220, 80, 25));
    EXPECT_EQ(label->geometry(), QRect(10, 220, 60, 20));
    window.resize(300, 200); // and back
    EXPECT_EQ(editor->geometry(), QRect(10, 10, 280, 140));
    EXPECT_EQ(button->geometry(), QRect(210, 160, 80, 25));
}

} // namespace

namespace {

TEST(StrWndTest, QtsOwnTranslationsInTheLanguageFolderTranslateStandardButtons)
{
    widgetApp();
    MemoryFileSystem files;
    ScopedFileSystem filesGuard(files);
    QFile qtbase(QLibraryInfo::path(QLibraryInfo::TranslationsPath) + "/qtbase_de.qm");
    ASSERT_TRUE(qtbase.open(QIODevice::ReadOnly)) << "qt6-translations-l10n is missing";
    files.addFile("/strwnd/DE/qtbase_de.qm", qtbase.readAll());
    files.addFile("/strwnd/DE/qt_damaged_de.qm", "not a translation file");
    addTestLanguage(files, "/strwnd/DE");

    // The folder as the registry's rules build it below a native installation folder.
    const Translator translator("/strwnd\\DE\\");
    EXPECT_EQ(translator.languageFolder(), "/strwnd/DE");
    EXPECT_EQ(translator.installQtTranslations(), 1);
    EXPECT_EQ(translator.installQtTranslations(), 0); // once per folder
    QDialogButtonBox buttons(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    EXPECT_EQ(buttons.button(QDialogButtonBox::Cancel)->text(), "Abbrechen");

    // Other tests of this program see English buttons again.
    qDeleteAll(QCoreApplication::instance()->findChildren<QTranslator *>(Qt::FindDirectChildrenOnly));
    QDialogButtonBox english(QDialogButtonBox::Cancel);
    EXPECT_EQ(english.button(QDialogButtonBox::Cancel)->text(), "Cancel");
}

} // namespace
