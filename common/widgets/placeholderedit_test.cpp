#include "common/widgets/placeholderedit.h"

#include "common/widgets/testing/widgetapp.h"

#include <QClipboard>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace {

class PlaceholderEditTest : public ::testing::Test, private WithWidgetApp
{
protected:
    void SetUp() override
    {
        widgetApp();
        edit.addPattern("File Name", "<Filename>");
        edit.addPattern("Date", "<Date>");
        edit.addPattern("Date Long", "<Date Long>");
        edit.show();
        edit.setFocus();
    }

    PlaceholderEdit edit;
};

TEST_F(PlaceholderEditTest, RegisteredPlaceholdersBecomeTokensAndTheTextKeepsThem)
{
    edit.setText("<Filename>_<Date Long>_<Unknown>.pdf");
    EXPECT_EQ(edit.tokenCount(), 2);
    EXPECT_EQ(edit.text(), "<Filename>_<Date Long>_<Unknown>.pdf");
    // One token is one character for the caret.
    EXPECT_EQ(edit.document()->characterCount() - 1, QString("__<Unknown>.pdf").size() + 2);

    edit.setText("<Date><Date>");
    EXPECT_EQ(edit.tokenCount(), 2);
    EXPECT_EQ(edit.text(), "<Date><Date>");
    edit.setText("a\nb");
    EXPECT_EQ(edit.text(), "a b"); // one line
}

TEST_F(PlaceholderEditTest, TypingNextToATokenStaysText)
{
    edit.setText("<Filename>");
    edit.moveCursor(QTextCursor::End);
    QTest::keyClicks(&edit, "_x");
    EXPECT_EQ(edit.text(), "<Filename>_x");
    EXPECT_EQ(edit.tokenCount(), 1);
    // Backspace over the token removes the whole placeholder.
    edit.moveCursor(QTextCursor::Start);
    edit.moveCursor(QTextCursor::Right);
    QTest::keyClick(&edit, Qt::Key_Backspace);
    EXPECT_EQ(edit.text(), "_x");
}

TEST_F(PlaceholderEditTest, InsertingReplacesTheSelectionAsOneUndoStep)
{
    edit.setText("out_name.pdf");
    QTextCursor cursor = edit.textCursor();
    cursor.setPosition(4);
    cursor.setPosition(8, QTextCursor::KeepAnchor); // "name"
    edit.setTextCursor(cursor);
    edit.insertPlaceholder("<Filename>");
    EXPECT_EQ(edit.text(), "out_<Filename>.pdf");
    EXPECT_EQ(edit.tokenCount(), 1);
    EXPECT_EQ(edit.textCursor().position(), 5); // after the token

    edit.undo();
    EXPECT_EQ(edit.text(), "out_name.pdf");
    edit.redo();
    EXPECT_EQ(edit.text(), "out_<Filename>.pdf");
    edit.undo();
    edit.undo(); // nothing before setText to go back to
    EXPECT_EQ(edit.text(), "out_name.pdf");
}

TEST_F(PlaceholderEditTest, EveryChangeIsReportedWithThePlainText)
{
    QSignalSpy spy(&edit, &PlaceholderEdit::textEdited);
    edit.setText("<Date>");
    QTest::keyClicks(&edit, "ab");
    edit.insertPlaceholder("<Filename>");
    QGuiApplication::clipboard()->setText("-<Date>\r\n");
    edit.paste();

    QStringList reported;
    for (const QList<QVariant> &args : spy)
        reported.append(args.at(0).toString());
    EXPECT_EQ(reported, QStringList({"<Date>", "a<Date>", "ab<Date>", "ab<Filename><Date>", "ab<Filename>-<Date> <Date>"}));
}

} // namespace
