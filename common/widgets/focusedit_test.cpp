#include "common/widgets/focusedit.h"

#include "common/widgets/testing/widgetapp.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QDialog>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

namespace {

class Listener final : public FocusEditValue
{
public:
    void valueCommitted(FocusEdit &, const QString &text) override { committed.append(text); }
    bool characterTyped(FocusEdit &, QChar c, bool) override { return swallow.contains(c); }
    void pasted(FocusEdit &) override { ++pastes; }

    QStringList committed;
    QString swallow;
    int pastes = 0;
};

class FocusEditTest : public ::testing::Test, private WithWidgetApp
{
protected:
    void SetUp() override
    {
        widgetApp();
        auto *layout = new QVBoxLayout(&dialog);
        edit = new FocusEdit(&dialog);
        defaultButton = new QPushButton("OK", &dialog);
        defaultButton->setDefault(true);
        layout->addWidget(edit);
        layout->addWidget(defaultButton);
        QObject::connect(defaultButton, &QPushButton::clicked, [this] { ++defaultPresses; });
        edit->setListener(&listener);
        dialog.show();
        edit->setFocus();
    }

    QDialog dialog;
    FocusEdit *edit = nullptr;
    QPushButton *defaultButton = nullptr;
    Listener listener;
    int defaultPresses = 0;
};

TEST_F(FocusEditTest, EnterCommitsOnceAndNeverReachesTheDefaultButton)
{
    QTest::keyClicks(edit, "Letter");
    EXPECT_TRUE(listener.committed.isEmpty()); // typing alone commits nothing
    EXPECT_TRUE(edit->textChangedSinceCommit());
    QTest::keyClick(edit, Qt::Key_Return);
    QTest::keyClick(edit, Qt::Key_Enter);
    EXPECT_EQ(listener.committed, QStringList({"Letter", "Letter"}));
    EXPECT_FALSE(edit->textChangedSinceCommit());
    EXPECT_EQ(defaultPresses, 0);
    EXPECT_TRUE(dialog.isVisible());
}

TEST_F(FocusEditTest, ANameMapCommitsOnlyKnownNamesAsTheirCanonicalValue)
{
    edit->setNameMap({{"letter", {"Letter", false}}, {"a4", {"A4", true}}});
    edit->setText("LETTER");
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(listener.committed, QStringList({"Letter"}));
    EXPECT_EQ(edit->text(), "Letter"); // the edit shows the canonical name

    edit->setText("Tabloid");
    QTest::keyClick(edit, Qt::Key_Return);
    edit->setText("a4"); // an exact name must be typed as it is
    EXPECT_FALSE(edit->commit());
    edit->setText("A4");
    EXPECT_TRUE(edit->commit());
    EXPECT_EQ(listener.committed, QStringList({"Letter", "A4"}));
}

TEST_F(FocusEditTest, LiveModeCommitsEveryChange)
{
    edit->setLiveMode(true);
    QTest::keyClicks(edit, "ab");
    EXPECT_EQ(listener.committed, QStringList({"a", "ab"}));
    edit->setText("xyz");
    EXPECT_EQ(listener.committed.last(), "xyz");
}

TEST_F(FocusEditTest, TheListenerSeesCharactersFirstAndHearsOfPastes)
{
    listener.swallow = "-";
    QTest::keyClicks(edit, "1-2");
    EXPECT_EQ(edit->text(), "12");
    // Control characters too: Backspace and Ctrl+A reach the hook first.
    listener.swallow = QString(QChar(0x08)) + QChar(0x01);
    QTest::keyClick(edit, Qt::Key_Backspace);
    EXPECT_EQ(edit->text(), "12");
    QKeyEvent selectAll(QEvent::KeyPress, Qt::Key_A, Qt::ControlModifier, QString(QChar(0x01)));
    QApplication::sendEvent(edit, &selectAll);
    EXPECT_FALSE(edit->hasSelectedText());

    QGuiApplication::clipboard()->setText("34");
    QTest::keyClick(edit, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(listener.pastes, 1);
    EXPECT_EQ(edit->text(), "1234");

    // "Paste" of the context menu.
    QGuiApplication::clipboard()->setText("5");
    QContextMenuEvent request(QContextMenuEvent::Mouse, QPoint(2, 2), edit->mapToGlobal(QPoint(2, 2)));
    QApplication::sendEvent(edit, &request);
    QMenu *menu = edit->findChild<QMenu *>();
    ASSERT_TRUE(menu);
    QAction *paste = nullptr;
    for (QAction *action : menu->actions())
        if (action->text().startsWith("&Paste"))
            paste = action;
    ASSERT_TRUE(paste);
    paste->trigger();
    EXPECT_EQ(edit->text(), "12345");
    EXPECT_EQ(listener.pastes, 2);
}

} // namespace
