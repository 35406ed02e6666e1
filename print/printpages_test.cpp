#include "print/printpages.h"

#include "addin/mctaskaddin.h"
#include "addin/module/setuppagefactory.h"
#include "common/errortexts.h"
#include "common/translator.h"
#include "common/widgets/recordingprompter.h"
#include "common/widgets/testing/widgetapp.h"
#include "common/widgets/vlistctrl.h"
#include "host/testing/faketask.h"
#include "print/papersizepage.h"
#include "print/printerpage.h"
#include "print/printsettings.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <gtest/gtest.h>

namespace {

// A print task in the host's set-up dialog, with the module's pages.
class PrintSetupTest : public ::testing::Test, private WithWidgetApp
{
protected:
    PrintSetupTest() : m_prompts(prompter)
    {
        AddInServices services;
        services.pages = std::make_shared<SetupPageFactory>(englishText);
        services.text = englishText;
        addin = std::make_shared<CMcTaskAddIn>(std::move(services));
        props = std::make_shared<FakeTaskProperties>();
        props->taskName = "Plot Sheets";
        props->set("__type", Variant::fromI4(2));
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

    template <class W> W *find(std::size_t page, const char *name)
    {
        W *w = props->setupPages.at(page).window->findChild<W *>(name);
        EXPECT_TRUE(w) << name;
        return w;
    }

    QWidget host;
    RecordingPrompter prompter;
    std::shared_ptr<CMcTaskAddIn> addin;
    std::shared_ptr<FakeTaskProperties> props;

private:
    ScopedPrompter m_prompts;
};

TEST_F(PrintSetupTest, AdvancedScriptingOptionsShowsAFailedLoad)
{
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    props->failRead("__script", E_ACCESSDENIED);
    find<QPushButton>(4, "advancedButton")->click();
    EXPECT_EQ(prompter.messages, QStringList{errorText(E_ACCESSDENIED)});
}

TEST_F(PrintSetupTest, ANewPrintTaskConfirmedWithOkStoresThePageDefaults)
{
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    QStringList captions;
    for (const SetupPage &p : props->setupPages)
        captions << p.caption;
    EXPECT_EQ(captions, (QStringList{"Menu Command", "Printer", "Paper Size and Orientation", "Margins", "Files"}));
    // Only the printer name is open in mode 0; every "Prompt the user" is set.
    EXPECT_TRUE(find<QComboBox>(1, "printerCombo")->isEnabled());
    EXPECT_FALSE(find<QPlainTextEdit>(1, "printerListEdit")->isEnabled());
    EXPECT_FALSE(find<VListCtrl>(1, "paperList")->isEnabled());
    EXPECT_EQ(find<QComboBox>(2, "paperCombo")->currentText(), "A4");
    EXPECT_TRUE(find<QRadioButton>(3, "promptFooterRadio")->isChecked());
    EXPECT_FALSE(find<QLineEdit>(3, "topEdit")->isEnabled());

    ASSERT_EQ(send(DoxCmd_TaskSetupButton, "OK"), S_OK);
    const auto i4 = [&](const char *key) { return props->value(key).toI4(); };
    const auto isBool = [&](const char *key) {
        return props->value(key).type() == VarType::Bool && props->value(key).toBool();
    };
    EXPECT_EQ(i4("__printer_prseltype"), 0);
    EXPECT_EQ(i4("__printer_defpapsize"), 10);
    EXPECT_EQ(i4("__printer_deforientation"), 1);
    EXPECT_TRUE(isBool("__printer_usersizechange"));
    EXPECT_TRUE(isBool("__printer_userorientchange"));
    EXPECT_TRUE(isBool("__printer_usedrwnfo"));
    EXPECT_EQ(i4("__printer_margintype"), 1);
    EXPECT_EQ(i4("__printer_headertype"), 1);
    EXPECT_EQ(i4("__printer_footertype"), 1);
    EXPECT_TRUE(isBool("__printer_showprintdlg"));
    EXPECT_EQ(i4("__printer_autoselectrefstype"), 1);
    EXPECT_EQ(i4("__printer_refversiontype"), 2);
    EXPECT_EQ(props->value("ErrorLogPath").bstr(), "\\Logs\\Plot Sheets");
    EXPECT_FALSE(props->has("__printer_copycount"));
    EXPECT_EQ(props->value("__printer_margintop").type(), VarType::R4);
    // The pages save in the order of the dialog.
    const QStringList &w = props->writes();
    EXPECT_LT(w.indexOf("__printer_papsize_DEF"), w.indexOf("__printer_usedrwnfo"));
    EXPECT_LT(w.indexOf("__printer_footerright"), w.indexOf("__printer_showprintdlg"));
}

TEST_F(PrintSetupTest, AMarginThatIsNoNumberRefusesTheMarginsPageAndNothingIsSaved)
{
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    find<QRadioButton>(3, "fixedMarginsRadio")->click();
    EXPECT_TRUE(find<QLineEdit>(3, "topEdit")->isEnabled());
    find<QLineEdit>(3, "topEdit")->setText("12.5");
    find<QLineEdit>(3, "leftEdit")->setText("wide");

    DoxCmd cmd;
    ASSERT_EQ(send(DoxCmd_TaskSetupButton, "OK", &cmd), S_OK);
    EXPECT_EQ(cmd.cancel, -1);
    EXPECT_EQ(cmd.comment, "Margins");
    EXPECT_EQ(prompter.messages, QStringList{"Please enter a number."});
    EXPECT_FALSE(props->has("__printer_prseltype"));

    find<QLineEdit>(3, "leftEdit")->setText("0");
    ASSERT_EQ(send(DoxCmd_TaskSetupButton, "OK", &cmd), S_OK);
    EXPECT_EQ(props->value("__printer_margintype").toI4(), 2);
    EXPECT_EQ(props->value("__printer_margintop").type(), VarType::R4);
    EXPECT_FLOAT_EQ(props->value("__printer_margintop").toR8(), 12.5);
}

TEST_F(PrintSetupTest, PrintersPerPaperSizeAreEditedInPlaceAndSavedUnderTheirKeys)
{
    props->set("__printer_prseltype", Variant::fromI4(2));
    props->set("__printer_papsize_A3", Variant::fromBStr("Plotter"));
    props->set("__printer_defpapsize", Variant::fromI4(11));
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    auto *list = find<VListCtrl>(1, "paperList");
    ASSERT_TRUE(list->isEnabled());
    ASSERT_EQ(list->rows().size(), 11u);
    QStringList labels;
    for (const auto &row : list->rows())
        labels << row->text(0);
    EXPECT_EQ(labels, (QStringList{"A", "B", "C", "D", "E", "A0", "A1", "A2", "A3", "A4", "Default"}));
    EXPECT_EQ(list->rows()[8]->text(1), "Plotter");
    // A stored size the list does not offer selects nothing.
    EXPECT_EQ(find<QComboBox>(2, "paperCombo")->currentIndex(), -1);

    props->setupPages[1].window->show();
    const QRect cell = list->visualRect(list->model()->index(10, 1));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, cell.center());
    auto *editor = list->viewport()->findChild<QLineEdit *>();
    ASSERT_TRUE(editor);
    EXPECT_GE(editor->height(), 20);
    QTest::keyClicks(editor, "Office");
    QTest::keyClick(editor, Qt::Key_Return);
    EXPECT_EQ(list->rows()[10]->text(1), "Office");

    ASSERT_EQ(send(DoxCmd_TaskSetupButton, "OK"), S_OK);
    EXPECT_EQ(props->value("__printer_papsize_DEF").bstr(), "Office");
    EXPECT_EQ(props->value("__printer_papsize_A3").bstr(), "Plotter");
    EXPECT_EQ(props->value("__printer_papsize_B").type(), VarType::BStr);
    EXPECT_EQ(props->value("__printer_papsize_B").bstr(), "");
    EXPECT_EQ(props->value("__printer_defpapsize").toI4(), -1);
    EXPECT_EQ(props->value("__printer_prseltype").toI4(), 2);
}

} // namespace
