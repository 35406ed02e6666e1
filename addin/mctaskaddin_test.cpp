#include "addin/mctaskaddin.h"

#include "host/hosterror.h"
#include "host/testing/faketask.h"
#include "host/testing/mockvault.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::_;
using testing::InSequence;
using testing::NiceMock;
using testing::Return;

namespace {

HostWindow fakeWindow(int n)
{
    static char windows[16];
    return reinterpret_cast<HostWindow>(&windows[n]);
}

class MockPage : public TaskPage
{
public:
    explicit MockPage(int windowNo = 1)
    {
        ON_CALL(*this, create(_)).WillByDefault(Return(fakeWindow(windowNo)));
        ON_CALL(*this, window()).WillByDefault(Return(fakeWindow(windowNo)));
        ON_CALL(*this, takeControlValues()).WillByDefault(Return(true));
    }
    MOCK_METHOD(HostWindow, create, (HostWindow), (override));
    MOCK_METHOD(HostWindow, window, (), (const, override));
    MOCK_METHOD(HRESULT, load, (IDoxVariables &), (override));
    MOCK_METHOD(HRESULT, save, (IDoxVariables &), (override));
    MOCK_METHOD(bool, takeControlValues, (), (override));
};

class MockMenuPage : public MenuCommandPage
{
public:
    MockMenuPage()
    {
        ON_CALL(*this, create(_)).WillByDefault(Return(fakeWindow(0)));
        ON_CALL(*this, window()).WillByDefault(Return(fakeWindow(0)));
    }
    MOCK_METHOD(HostWindow, create, (HostWindow), (override));
    MOCK_METHOD(HostWindow, window, (), (const, override));
    MOCK_METHOD(HRESULT, load, (IDoxVariables &), (override));
    MOCK_METHOD(HRESULT, save, (IDoxVariables &), (override));
    MOCK_METHOD(bool, displayMenuCommand, (), (const, override));
    MOCK_METHOD(QString, menuText, (), (const, override));
    MOCK_METHOD(QString, statusBarHelp, (), (const, override));
};

class MockConversionPage : public ConversionSettingsPage
{
public:
    MockConversionPage()
    {
        ON_CALL(*this, create(_)).WillByDefault(Return(fakeWindow(5)));
        ON_CALL(*this, window()).WillByDefault(Return(fakeWindow(5)));
    }
    MOCK_METHOD(HostWindow, create, (HostWindow), (override));
    MOCK_METHOD(HostWindow, window, (), (const, override));
    MOCK_METHOD(HRESULT, load, (IDoxVariables &), (override));
    MOCK_METHOD(HRESULT, save, (IDoxVariables &), (override));
    MOCK_METHOD(bool, hasLaunchPrompt, (), (const, override));
    MOCK_METHOD(QString, currentExtension, (), (const, override));
};

// Hands out pre-made pages and remembers which were asked for.
class FakePageFactory final : public PageFactory
{
public:
    std::unique_ptr<MenuCommandPage> createMenuCommandPage(const PageContext &context) override
    {
        contexts.push_back(context);
        requested.push_back(PageId::MenuCommand);
        return std::move(menu);
    }
    std::unique_ptr<ConversionSettingsPage> createConversionSettingsPage(const PageContext &context) override
    {
        contexts.push_back(context);
        requested.push_back(PageId::ConversionSettings);
        return std::move(conversion);
    }
    std::unique_ptr<TaskPage> createPage(PageId id, const PageContext &context) override
    {
        contexts.push_back(context);
        requested.push_back(id);
        auto it = pages.find(id);
        if (it == pages.end())
            return std::make_unique<NiceMock<MockPage>>();
        return std::move(it->second);
    }

    // Raw pointers stay valid while the add-in owns the pages.
    MockMenuPage *makeMenu()
    {
        menu = std::make_unique<NiceMock<MockMenuPage>>();
        return static_cast<MockMenuPage *>(menu.get());
    }
    MockConversionPage *makeConversion()
    {
        conversion = std::make_unique<NiceMock<MockConversionPage>>();
        return static_cast<MockConversionPage *>(conversion.get());
    }
    MockPage *makePage(PageId id, int windowNo)
    {
        auto page = std::make_unique<NiceMock<MockPage>>(windowNo);
        MockPage *raw = page.get();
        pages[id] = std::move(page);
        return raw;
    }

    std::unique_ptr<MenuCommandPage> menu;
    std::unique_ptr<ConversionSettingsPage> conversion;
    std::map<PageId, std::unique_ptr<TaskPage>> pages;
    std::vector<PageId> requested;
    std::vector<PageContext> contexts;
};

class MockRunDriver : public RunDriver
{
public:
    MOCK_METHOD(HRESULT, run,
                (const std::shared_ptr<IDoxVault> &, const std::shared_ptr<IDoxTaskInstance> &, DoxCmd &,
                 DoxCmdDataArray &),
                (override));
    MOCK_METHOD(HRESULT, finish, (const std::shared_ptr<IDoxTaskInstance> &, HRESULT), (override));
    MOCK_METHOD(void, suspendStartupAddIns, (bool), (override));
};

class MockLaunchDialogs : public LaunchDialogs
{
public:
    MOCK_METHOD(HRESULT, runSelectionDialog,
                (HostWindow, const std::shared_ptr<IDoxVault> &, const QString &, DoxCmdDataArray &), (override));
    MOCK_METHOD(bool, runPrintLaunchDialog, (const std::shared_ptr<IDoxVault> &, DoxCmd &, DoxCmdDataArray &, bool),
                (override));
};

class MockSelectionStore : public SelectionStore
{
public:
    MOCK_METHOD(HRESULT, storeSelection,
                (const std::shared_ptr<IDoxVault> &, const std::shared_ptr<IDoxTaskInstance> &,
                 const DoxCmdDataArray &),
                (override));
};

class MockCmdMgr : public IDoxCmdMgr
{
public:
    MOCK_METHOD(HRESULT, AddHook, (std::int32_t, std::int32_t), (override));
};

class AddInTest : public testing::Test
{
protected:
    AddInTest()
    {
        AddInServices services;
        services.pages = pages;
        services.runDriver = runDriver;
        services.launchDialogs = dialogs;
        services.selectionStore = store;
        services.text = [](std::int32_t, const QString &english) { return english; };
        addin = std::make_shared<CMcTaskAddIn>(services);
    }

    DoxCmd command(std::int32_t type, HostObjectPtr extra, QString comment = {})
    {
        DoxCmd cmd;
        cmd.commandType = type;
        cmd.window = fakeWindow(9);
        cmd.vault = vault;
        cmd.extra = std::move(extra);
        cmd.comment = std::move(comment);
        return cmd;
    }

    HRESULT send(DoxCmd &cmd) { return addin->OnCmd(&cmd, &data); }

    QStringList captions() const
    {
        QStringList result;
        for (const SetupPage &p : props->setupPages)
            result << p.caption;
        return result;
    }

    std::shared_ptr<FakePageFactory> pages = std::make_shared<FakePageFactory>();
    std::shared_ptr<NiceMock<MockRunDriver>> runDriver = std::make_shared<NiceMock<MockRunDriver>>();
    std::shared_ptr<NiceMock<MockLaunchDialogs>> dialogs = std::make_shared<NiceMock<MockLaunchDialogs>>();
    std::shared_ptr<NiceMock<MockSelectionStore>> store = std::make_shared<NiceMock<MockSelectionStore>>();
    std::shared_ptr<NiceMock<MockVault>> vault = makeVaultWithRoot(QStringLiteral("V:"));
    std::shared_ptr<FakeTaskProperties> props = std::make_shared<FakeTaskProperties>();
    std::shared_ptr<FakeTaskInstance> instance = std::make_shared<FakeTaskInstance>();
    std::shared_ptr<CMcTaskAddIn> addin;
    DoxCmdDataArray data;
};

// ---- identity and dispatch ------------------------------------------------

TEST_F(AddInTest, InfoDescribesTheAddInAndHooksTheSixCommandsInOrder)
{
    auto mgr = std::make_shared<MockCmdMgr>();
    {
        InSequence order;
        for (const int type : {40, 41, 42, 44, 45, 43})
            EXPECT_CALL(*mgr, AddHook(type, 0)).WillOnce(Return(S_OK));
    }
    DoxAddInInfo info;
    ASSERT_EQ(addin->GetAddInInfo(&info, vault, mgr), S_OK);
    EXPECT_EQ(info.addInName, "Mecadra Task Add-in");
    EXPECT_EQ(info.company, "Mecadra Corporation");
    EXPECT_EQ(info.description, "Add-in used to run custom Mecadra macros\r\nVersion 2013, SP0, Build 511");
    EXPECT_EQ(info.addInVersion, 2013000511);
    EXPECT_EQ(info.requiredVersionMajor, 13);
    EXPECT_EQ(info.requiredVersionMinor, 0);
}

TEST_F(AddInTest, InfoSucceedsWhateverTheHooksAnswer)
{
    auto mgr = std::make_shared<MockCmdMgr>();
    EXPECT_CALL(*mgr, AddHook(_, 0)).Times(6).WillOnce(Return(E_FAIL)).WillRepeatedly(Return(S_FALSE));
    DoxAddInInfo info;
    EXPECT_EQ(addin->GetAddInInfo(&info, vault, mgr), S_OK);
    EXPECT_EQ(info.addInName, "Mecadra Task Add-in");
}

TEST_F(AddInTest, MissingPagesAreReportedAsSuchNotAsFailures)
{
    // No menu page: the set-up says the page is missing.
    DoxCmd setup = command(DoxCmd_TaskSetup, props);
    EXPECT_EQ(send(setup), E_PAGE_MISSING);
    // No conversion page at launch; no details page.
    instance->set("__type", Variant::fromI4(1));
    DoxCmdData file;
    file.string1 = "V:\\a.mcdprt";
    file.long1 = DoxObject_File;
    data = {file};
    DoxCmd launch = command(DoxCmd_TaskLaunch, instance);
    EXPECT_EQ(send(launch), E_PAGE_MISSING);
    pages->pages[PageId::Details] = nullptr;
    DoxCmd details = command(DoxCmd_TaskDetails, instance);
    EXPECT_EQ(send(details), E_PAGE_MISSING);
}

TEST_F(AddInTest, NullPointersAreRefused)
{
    DoxAddInInfo info;
    EXPECT_EQ(addin->GetAddInInfo(nullptr, vault, std::make_shared<MockCmdMgr>()), E_POINTER);
    EXPECT_EQ(addin->GetAddInInfo(&info, vault, nullptr), E_POINTER);
    DoxCmd cmd = command(DoxCmd_TaskSetup, props);
    EXPECT_EQ(addin->OnCmd(nullptr, &data), E_POINTER);
    EXPECT_EQ(addin->OnCmd(&cmd, nullptr), E_POINTER);
}

TEST_F(AddInTest, AVaultObjectWithoutTheVaultInterfaceFailsAndUnknownCommandsDoNothing)
{
    DoxCmd cmd = command(DoxCmd_TaskSetup, props);
    cmd.vault = std::make_shared<HostObject>();
    EXPECT_EQ(send(cmd), E_NOINTERFACE);
    DoxCmd other = command(39, props);
    EXPECT_EQ(send(other), S_OK);
    other.commandType = 46;
    EXPECT_EQ(send(other), S_OK);
    EXPECT_TRUE(pages->requested.empty());
}

// ---- set-up --------------------------------------------------------------

TEST_F(AddInTest, SetupRefusesAMissingPropertiesObjectOrWindow)
{
    DoxCmd cmd = command(DoxCmd_TaskSetup, instance);
    EXPECT_EQ(send(cmd), E_POINTER);
    DoxCmd noWindow = command(DoxCmd_TaskSetup, props);
    noWindow.window = nullptr;
    EXPECT_EQ(send(noWindow), E_INVALIDARG);
    EXPECT_TRUE(pages->requested.empty());
}

TEST_F(AddInTest, SetupOfATaskWithoutTypeShowsMenuAndScriptPages)
{
    pages->makeMenu();
    MockPage *script = pages->makePage(PageId::Script, 3);
    EXPECT_CALL(*script, create(fakeWindow(9)));
    EXPECT_CALL(*script, load(_)).WillOnce(Return(S_OK));
    DoxCmd cmd = command(DoxCmd_TaskSetup, props);
    ASSERT_EQ(send(cmd), S_OK);
    EXPECT_EQ(props->taskFlags, 0x17);
    EXPECT_EQ(captions(), (QStringList{"Menu Command", "Script"}));
    EXPECT_EQ(props->setupPages[1].window, fakeWindow(3));
    EXPECT_EQ(props->setupPages[1].callback, addin);
    EXPECT_EQ(addin->taskType(), 3);
}

TEST_F(AddInTest, SetupReturnsHostFailuresUnchanged)
{
    props->setFlagsResult = E_ACCESSDENIED;
    DoxCmd cmd = command(DoxCmd_TaskSetup, props);
    EXPECT_EQ(send(cmd), E_ACCESSDENIED);

    props->setFlagsResult = S_OK;
    props->failRead("__type", E_DOX_DATABASE_ACCESS);
    EXPECT_EQ(send(cmd), E_DOX_DATABASE_ACCESS);

    props->failRead("__type", S_FALSE);
    MockMenuPage *menu = pages->makeMenu();
    EXPECT_CALL(*menu, load(_)).WillOnce(Return(DISP_E_TYPEMISMATCH));
    EXPECT_EQ(send(cmd), DISP_E_TYPEMISMATCH);
    EXPECT_TRUE(props->setupPages.empty());

    pages->makeMenu();
    props->setPagesResult = E_FAIL;
    EXPECT_EQ(send(cmd), E_FAIL);
}

// ---- set-up button -------------------------------------------------------

class SetupButtonTest : public AddInTest
{
protected:
    void setUpPages(int type)
    {
        props->set("__type", Variant::fromI4(type));
        menu = pages->makeMenu();
        ON_CALL(*menu, displayMenuCommand()).WillByDefault(Return(true));
        ON_CALL(*menu, menuText()).WillByDefault(Return(QStringLiteral(" Convert Files ")));
        ON_CALL(*menu, statusBarHelp()).WillByDefault(Return(QStringLiteral("help")));
        if (type == 1) {
            conversion = pages->makeConversion();
            fileCard = pages->makePage(PageId::FileCard, 6);
            outputDetails = pages->makePage(PageId::OutputFileDetails, 7);
        } else if (type == 2) {
            printPages = {pages->makePage(PageId::Printer, 10), pages->makePage(PageId::PaperSize, 11),
                          pages->makePage(PageId::Margins, 12), pages->makePage(PageId::PrintFiles, 13)};
        } else {
            script = pages->makePage(PageId::Script, 3);
        }
        DoxCmd cmd = command(DoxCmd_TaskSetup, props);
        ASSERT_EQ(send(cmd), S_OK);
    }

    MockMenuPage *menu = nullptr;
    MockConversionPage *conversion = nullptr;
    MockPage *fileCard = nullptr;
    MockPage *outputDetails = nullptr;
    MockPage *script = nullptr;
    std::vector<MockPage *> printPages;
};

TEST_F(SetupButtonTest, OnlyTheExactOkButtonSaves)
{
    setUpPages(3);
    EXPECT_CALL(*menu, save(_)).Times(0);
    EXPECT_CALL(*script, save(_)).Times(0);
    for (const char *button : {"Cancel", "ok", "", "OK "}) {
        DoxCmd cmd = command(DoxCmd_TaskSetupButton, props, QString::fromLatin1(button));
        EXPECT_EQ(send(cmd), S_OK) << button;
        EXPECT_EQ(cmd.cancel, 0);
    }
    EXPECT_EQ(props->menuCommandWrites, 0);
}

TEST_F(SetupButtonTest, MissingPropertiesIsAPointerError)
{
    setUpPages(3);
    DoxCmd cmd = command(DoxCmd_TaskSetupButton, instance, "OK");
    EXPECT_EQ(send(cmd), E_POINTER);
}

TEST_F(SetupButtonTest, MenuPageHostFailureIsReturnedAtOnce)
{
    setUpPages(3);
    EXPECT_CALL(*menu, save(_)).WillOnce(Return(E_ACCESSDENIED));
    EXPECT_CALL(*script, save(_)).Times(0);
    DoxCmd cmd = command(DoxCmd_TaskSetupButton, props, "OK");
    EXPECT_EQ(send(cmd), E_ACCESSDENIED);
    EXPECT_EQ(props->menuCommandWrites, 0);
}

TEST_F(SetupButtonTest, ScriptTaskSavesAndPublishesTheMenuCommand)
{
    setUpPages(3);
    EXPECT_CALL(*menu, save(_)).WillOnce(Return(S_OK));
    EXPECT_CALL(*script, save(_)).WillOnce(Return(S_OK));
    props->setMenuCommandsResult = E_FAIL;
    DoxCmd cmd = command(DoxCmd_TaskSetupButton, props, "OK");
    EXPECT_EQ(send(cmd), E_FAIL); // the registration's result is the handler's
    ASSERT_EQ(props->menuCommands.size(), 1u);
    EXPECT_EQ(props->menuCommands[0], (TaskMenuCommand{3, " Convert Files ", 0x4001, "help"}));
}

TEST_F(SetupButtonTest, TheMenuCommandCarriesTheKindTheScriptPageStored)
{
    setUpPages(3);
    EXPECT_CALL(*menu, save(_)).WillOnce(Return(S_OK));
    EXPECT_CALL(*script, save(_)).WillOnce(testing::Invoke([](IDoxVariables &holder) {
        return holder.SetVariable("__type", Variant::fromI4(2));
    }));
    DoxCmd cmd = command(DoxCmd_TaskSetupButton, props, "OK");
    EXPECT_EQ(send(cmd), S_OK);
    ASSERT_EQ(props->menuCommands.size(), 1u);
    EXPECT_EQ(props->menuCommands[0].commandId, 2);
}

TEST_F(SetupButtonTest, ConvertPagesSaveInChainAndTheMenuIsPublishedEvenWhenOneFails)
{
    setUpPages(1);
    EXPECT_CALL(*menu, save(_)).WillOnce(Return(S_OK));
    EXPECT_CALL(*conversion, save(_)).WillOnce(Return(S_OK));
    EXPECT_CALL(*fileCard, save(_)).WillOnce(Return(E_ACCESSDENIED));
    EXPECT_CALL(*outputDetails, save(_)).Times(0);
    DoxCmd cmd = command(DoxCmd_TaskSetupButton, props, "OK");
    EXPECT_EQ(send(cmd), S_OK);
    ASSERT_EQ(props->menuCommands.size(), 1u);
    EXPECT_EQ(props->menuCommands[0].commandId, 1);
}

TEST_F(SetupButtonTest, UncheckedMenuCommandPublishesAnEmptyList)
{
    setUpPages(1);
    props->menuCommands = {TaskMenuCommand{1, "old", 0x4001, "old"}};
    EXPECT_CALL(*menu, save(_)).WillOnce(Return(S_OK));
    EXPECT_CALL(*menu, displayMenuCommand()).WillRepeatedly(Return(false));
    EXPECT_CALL(*conversion, save(_)).WillOnce(Return(S_FALSE));
    EXPECT_CALL(*fileCard, save(_)).Times(0);
    DoxCmd cmd = command(DoxCmd_TaskSetupButton, props, "OK");
    EXPECT_EQ(send(cmd), S_OK);
    EXPECT_EQ(props->menuCommandWrites, 1);
    EXPECT_TRUE(props->menuCommands.empty());
}

TEST_F(SetupButtonTest, ValidPrintPagesSaveInOrderUntilTheFirstError)
{
    setUpPages(2);
    EXPECT_CALL(*menu, save(_)).WillOnce(Return(S_OK));
    {
        InSequence order;
        EXPECT_CALL(*printPages[0], save(_)).WillOnce(Return(S_OK));
        EXPECT_CALL(*printPages[1], save(_)).WillOnce(Return(E_FAIL));
    }
    EXPECT_CALL(*printPages[2], save(_)).Times(0);
    DoxCmd cmd = command(DoxCmd_TaskSetupButton, props, "OK");
    EXPECT_EQ(send(cmd), S_OK);
    EXPECT_EQ(cmd.cancel, 0);
    EXPECT_EQ(props->menuCommandWrites, 1);
}

// ---- details -------------------------------------------------------------

TEST_F(AddInTest, DetailsCaptionFollowsTypeAndStatus)
{
    struct Case {
        int type;
        int status;
        const char *caption;
        bool finished;
    } cases[] = {
        {1, 7, "Converted Files", true}, {1, 3, "Selected Files", false}, {2, 8, "Printed Files", true},
        {2, 9, "Printed Files", true},   {3, 9, "Selected Files", true},  {1, 10, "Selected Files", false},
    };
    for (const Case &c : cases) {
        instance->set("__type", Variant::fromI4(c.type));
        instance->status = c.status;
        pages->makePage(PageId::Details, 4);
        pages->contexts.clear();
        DoxCmd cmd = command(DoxCmd_TaskDetails, instance);
        ASSERT_EQ(send(cmd), S_OK);
        EXPECT_EQ(cmd.comment, c.caption) << c.type << '/' << c.status;
        EXPECT_EQ(cmd.window, fakeWindow(4));
        EXPECT_EQ(cmd.extra, addin);
        ASSERT_EQ(pages->contexts.size(), 1u);
        EXPECT_EQ(pages->contexts[0].finished, c.finished);
    }
}

TEST_F(AddInTest, DetailsReturnsInterfaceAndStatusFailures)
{
    DoxCmd cmd = command(DoxCmd_TaskDetails, props);
    EXPECT_EQ(send(cmd), E_NOINTERFACE);
    instance->getStatusResult = E_DOX_DATABASE_ACCESS;
    DoxCmd cmd2 = command(DoxCmd_TaskDetails, instance);
    EXPECT_EQ(send(cmd2), E_DOX_DATABASE_ACCESS);
}

// ---- launch --------------------------------------------------------------

TEST_F(AddInTest, LaunchNeedsVaultAndInstance)
{
    DoxCmd cmd = command(DoxCmd_TaskLaunch, instance);
    cmd.vault = nullptr;
    EXPECT_EQ(send(cmd), E_POINTER);
    DoxCmd noExtra = command(DoxCmd_TaskLaunch, nullptr);
    EXPECT_EQ(send(noExtra), E_POINTER);
}

TEST_F(AddInTest, CancelledSelectionStoresNothing)
{
    EXPECT_CALL(*dialogs, runSelectionDialog(_, _, _, _)).WillOnce(Return(S_FALSE));
    EXPECT_CALL(*store, storeSelection(_, _, _)).Times(0);
    EXPECT_CALL(*dialogs, runPrintLaunchDialog(_, _, _, _)).Times(0);
    instance->set("__type", Variant::fromI4(2));
    DoxCmd cmd = command(DoxCmd_TaskLaunch, instance);
    EXPECT_EQ(send(cmd), S_OK);
    EXPECT_EQ(cmd.cancel, -1);
}

TEST_F(AddInTest, ConversionPageWithNothingToAskIsNotHandedBack)
{
    data = {DoxCmdData{1, 1, "V:\\p.mcdprt", {}, 1, 1}};
    instance->set("__type", Variant::fromI4(1));
    MockConversionPage *page = pages->makeConversion();
    EXPECT_CALL(*page, hasLaunchPrompt()).WillOnce(Return(false));
    DoxCmd cmd = command(DoxCmd_TaskLaunch, instance);
    EXPECT_EQ(send(cmd), S_OK);
    EXPECT_EQ(cmd.window, fakeWindow(9));
    EXPECT_EQ(cmd.extra, instance);
}

TEST_F(AddInTest, PrintLaunchPassesTheShowFlagAndHonoursItsAnswer)
{
    data = {DoxCmdData{1, 1, "V:\\p.mcddrw", {}, 1, 1}};
    instance->set("__type", Variant::fromI4(2));
    EXPECT_CALL(*dialogs, runPrintLaunchDialog(_, _, _, true)).WillOnce(Return(true));
    EXPECT_CALL(*store, storeSelection(_, _, _)).WillOnce(Return(E_FAIL));
    DoxCmd cmd = command(DoxCmd_TaskLaunch, instance);
    EXPECT_EQ(send(cmd), E_FAIL);

    instance->set("__printer_showprintdlg", Variant::fromBool(false));
    EXPECT_CALL(*dialogs, runPrintLaunchDialog(_, _, _, false)).WillOnce(Return(false));
    EXPECT_CALL(*store, storeSelection(_, _, _)).Times(0);
    DoxCmd cmd2 = command(DoxCmd_TaskLaunch, instance);
    EXPECT_EQ(send(cmd2), S_OK);
    EXPECT_EQ(cmd2.cancel, -1);
}

TEST_F(AddInTest, LaunchButtonSavesTheConversionPageIntoTheInstance)
{
    data = {DoxCmdData{1, 1, "V:\\p.mcdprt", {}, 1, 1}};
    instance->set("__type", Variant::fromI4(1));
    MockConversionPage *page = pages->makeConversion();
    DoxCmd launch = command(DoxCmd_TaskLaunch, instance);
    ASSERT_EQ(send(launch), S_OK);

    EXPECT_CALL(*page, save(testing::Ref(static_cast<IDoxVariables &>(*instance)))).WillOnce(Return(E_FAIL));
    DoxCmd button = command(DoxCmd_TaskLaunchButton, instance, "OK");
    EXPECT_EQ(send(button), E_FAIL);
    DoxCmd cancel = command(DoxCmd_TaskLaunchButton, instance, "Cancel");
    EXPECT_EQ(send(cancel), S_OK);
    DoxCmd noInstance = command(DoxCmd_TaskLaunchButton, props, "OK");
    EXPECT_EQ(send(noInstance), E_POINTER);
}

// ---- run -----------------------------------------------------------------

TEST_F(AddInTest, RunSwitchesStartupAddInsAroundTheRunAndReportsTheEnd)
{
    InSequence order;
    EXPECT_CALL(*runDriver, suspendStartupAddIns(false));
    EXPECT_CALL(*runDriver, run(_, _, _, _)).WillOnce(Return(S_OK));
    EXPECT_CALL(*runDriver, suspendStartupAddIns(true));
    EXPECT_CALL(*runDriver, finish(_, S_OK)).WillOnce(Return(E_ACCESSDENIED));
    DoxCmd cmd = command(DoxCmd_TaskRun, instance);
    EXPECT_EQ(send(cmd), E_ACCESSDENIED);
    EXPECT_EQ(cmd.cancel, 0);
}

TEST_F(AddInTest, FailedOrThrowingRunStillRestoresStartupAddIns)
{
    EXPECT_CALL(*runDriver, suspendStartupAddIns(false)).Times(2);
    EXPECT_CALL(*runDriver, suspendStartupAddIns(true)).Times(2);
    EXPECT_CALL(*runDriver, run(_, _, _, _))
        .WillOnce(Return(E_UNEXPECTED))
        .WillOnce([](auto &&...) -> HRESULT { throw HostError(E_DOX_FILE_NOT_FOUND); });
    EXPECT_CALL(*runDriver, finish(_, _)).WillRepeatedly(Return(S_OK));
    DoxCmd cmd = command(DoxCmd_TaskRun, instance);
    EXPECT_EQ(send(cmd), E_UNEXPECTED);
    DoxCmd cmd2 = command(DoxCmd_TaskRun, instance);
    EXPECT_EQ(send(cmd2), E_DOX_FILE_NOT_FOUND);
}

TEST_F(AddInTest, RunWithoutInstanceOrWithUnreadableTypeStartsNothing)
{
    EXPECT_CALL(*runDriver, suspendStartupAddIns(_)).Times(0);
    DoxCmd cmd = command(DoxCmd_TaskRun, props);
    EXPECT_EQ(send(cmd), E_POINTER);
    instance->set("__type", Variant::fromBStr("abc"));
    DoxCmd cmd2 = command(DoxCmd_TaskRun, instance);
    EXPECT_EQ(send(cmd2), DISP_E_TYPEMISMATCH);
}

} // namespace
