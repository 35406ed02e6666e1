#include "macro/macropreview.h"

#include "host/hosterror.h"
#include "host/testing/faketask.h"
#include "host/testing/fakevault.h"
#include "platform/clock.h"

#include <gtest/gtest.h>

namespace {

std::int32_t style103(const QString &)
{
    return 103;
}

class MacroPreviewTest : public ::testing::Test
{
protected:
    MacroPreviewTest() : m_clock(QDateTime(QDate(2012, 3, 5), QTime(9, 0))), m_useClock(m_clock)
    {
        auto file = m_vault->addFile(42, "V:\\Design\\Parts\\Gear.mcdprt", 7);
        file->setVersion(1, "A", "Draft");
        file->setVersion(2, "B", "Released");
    }

    FakeClock m_clock;
    ScopedClock m_useClock;
    std::shared_ptr<FakeVault> m_vault = std::make_shared<FakeVault>("Design", "V:\\Design");
};

TEST_F(MacroPreviewTest, FindsTheFileWithItsIdsAndLatestVersion)
{
    const PreviewFile f = findPreviewFile(*m_vault, "v:\\design\\parts\\gear.MCDPRT", "Sheet1", 0);
    EXPECT_EQ(f.path, "V:\\Design\\Parts\\Gear.mcdprt");
    EXPECT_EQ(f.fileId, 42);
    EXPECT_EQ(f.folderId, 7);
    EXPECT_EQ(f.version, 2);
    EXPECT_EQ(f.cfgOrSheet, "Sheet1");
    EXPECT_EQ(findPreviewFile(*m_vault, "V:\\Design\\Parts\\Gear.mcdprt", "", 1).version, 1);
    try {
        findPreviewFile(*m_vault, "V:\\Design\\missing.mcdprt", "", 0);
        FAIL() << "unknown file accepted";
    } catch (const HostError &e) {
        EXPECT_EQ(e.code(), E_DOX_FILE_NOT_FOUND);
    }
}

TEST_F(MacroPreviewTest, InstanceMacroHasBothPasses)
{
    auto instance = std::make_shared<FakeTaskInstance>();
    instance->guid = "{AB}";
    instance->set("__script", Variant::fromBStr("f = \"<Filepath>\": c = [PdfInColor]: o = \"[OutputPath]\": "
                                                "g = \"<TaskInstanceGuid>\""));
    instance->set("PdfInColor", Variant::fromBool(false));
    instance->set("OutputPath", Variant::fromBStr("<Path>\\<Filename>_<Revision>_<Today>"));
    const PreviewFile f = findPreviewFile(*m_vault, "V:\\Design\\Parts\\Gear.mcdprt", "", 0);
    EXPECT_EQ(previewFileMacro(m_vault, instance, f, style103),
              "f = \"V:\\Design\\Parts\\Gear.mcdprt\": c = False: o = \"V:\\Design\\Parts\\<Filename>_B_05_03_2012\": "
              "g = \"{AB}\"");
}

TEST_F(MacroPreviewTest, TaskMacroKeepsTheInstancePlaceholder)
{
    auto task = std::make_shared<FakeTaskProperties>();
    task->set("__script", Variant::fromBStr("n = \"{#1}\" id = {#2} x = \"{#3}\" g = \"<TaskInstanceGuid>\""));
    auto instance = std::make_shared<TaskPreviewInstance>(task, "Convert to PDF", 5);
    const PreviewFile f = findPreviewFile(*m_vault, "V:\\Design\\Parts\\Gear.mcdprt", "", 0);
    EXPECT_EQ(previewFileMacro(m_vault, instance, f, style103),
              "n = \"Convert to PDF\" id = 5 x = \"\" g = \"<TaskInstanceGuid>\"");
    // A preview never writes into the task.
    EXPECT_TRUE(failed(instance->SetVariable("__script", Variant::fromBStr("x"))));
    EXPECT_EQ(task->value("__script").bstr().left(3), "n =");
}

TEST_F(MacroPreviewTest, NoScriptFailsAsARunWould)
{
    auto instance = std::make_shared<FakeTaskInstance>();
    const PreviewFile f = findPreviewFile(*m_vault, "V:\\Design\\Parts\\Gear.mcdprt", "", 0);
    try {
        previewFileMacro(m_vault, instance, f, style103);
        FAIL() << "a task without macro text gave a macro";
    } catch (const HostError &e) {
        EXPECT_EQ(e.code(), E_UNEXPECTED);
    }
}

} // namespace
