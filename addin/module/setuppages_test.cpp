#include "addin/module/setuppagefactory.h"

#include "addin/mctaskaddin.h"
#include "common/translator.h"
#include "common/widgets/recordingprompter.h"
#include "common/widgets/testing/widgetapp.h"
#include "host/testing/faketask.h"
#include "host/testing/fakevault.h"
#include "macro/templateloader.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <gtest/gtest.h>

namespace {

// The add-in as the host holds it, with the module's pages, inside a host
// window that is never shown.
class SetupPagesTest : public ::testing::Test, private WithWidgetApp
{
protected:
    SetupPagesTest() : m_prompts(prompter)
    {
        AddInServices services;
        services.pages = std::make_shared<SetupPageFactory>(englishText);
        services.text = englishText;
        addin = std::make_shared<CMcTaskAddIn>(std::move(services));
        props = std::make_shared<FakeTaskProperties>();
    }

    HRESULT send(std::int32_t type, const QString &comment, DoxCmd *out = nullptr)
    {
        DoxCmd cmd;
        cmd.commandType = type;
        cmd.window = &host;
        cmd.comment = comment;
        cmd.extra = props;
        cmd.vault = vault;
        DoxCmdDataArray none;
        const HRESULT hr = addin->OnCmd(&cmd, &none);
        if (out)
            *out = cmd;
        return hr;
    }

    QWidget *page(std::size_t index) const { return props->setupPages.at(index).window; }

    QWidget host;
    RecordingPrompter prompter;
    std::shared_ptr<CMcTaskAddIn> addin;
    std::shared_ptr<FakeTaskProperties> props;
    std::shared_ptr<FakeVault> vault = std::make_shared<FakeVault>();

private:
    ScopedPrompter m_prompts;
};

TEST_F(SetupPagesTest, ChoosingPrintingOnTheScriptPageMakesAPrintTask)
{
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    auto *kinds = page(1)->findChild<QComboBox *>("kindCombo");
    ASSERT_NE(kinds, nullptr);
    kinds->setCurrentIndex(kinds->findData(2));
    EXPECT_EQ(prompter.messages.size(), 1);
    ASSERT_EQ(send(DoxCmd_TaskSetupButton, "OK"), S_OK);
    EXPECT_EQ(props->value("__type").toI4(), 2);
    EXPECT_EQ(props->value("__script").bstr(), loadScriptTemplate(PrintTemplate, {}));

    // The next set-up is a print task's, with the print pages.
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    EXPECT_EQ(props->setupPages.size(), 5u);
}

TEST_F(SetupPagesTest, ANewConversionTaskConfirmedWithOkStoresEveryDefaultAndNothingElse)
{
    props->set("__type", Variant::fromI4(1));
    props->taskName = "To STEP";
    ASSERT_EQ(send(DoxCmd_TaskSetup, {}), S_OK);
    QStringList captions;
    for (const SetupPage &page : props->setupPages)
        captions << page.caption;
    EXPECT_EQ(captions, QStringList({"Menu Command", "Conversion Settings", "File Card", "Output File Details"}));
    ASSERT_EQ(send(DoxCmd_TaskSetupButton, "OK"), S_OK);

    const std::map<QString, Variant> expected{
        // The format options, with the values of a page never stored.
        {"PdfInColor", Variant::fromBool(true)}, {"PdfEmbedFonts", Variant::fromBool(true)},
        {"PdfHighQuality", Variant::fromBool(false)}, {"PdfPrintHeaderFooter", Variant::fromBool(false)},
        {"PdfUsePrinterLineWeights", Variant::fromBool(true)}, {"GlmpOkayToMeasure", Variant::fromBool(false)},
        {"GlmpAllowExportOfSTL", Variant::fromBool(false)}, {"GlmpSaveShadedData", Variant::fromBool(true)},
        {"GlmpSaveBOM", Variant::fromBool(true)}, {"GlmpSaveMotionStudies", Variant::fromBool(true)},
        {"GlmpSaveMotionStudiesToAllConfs", Variant::fromBool(false)},
        {"GlmpRecalcMotionStudies", Variant::fromBool(true)}, {"VrmlOutputAsUnit", Variant::fromI4(0)},
        {"VrmlSaveAssemblyAsOneFile", Variant::fromBool(false)}, {"AcisGeometry", Variant::fromI4(0)},
        {"AcisVersion", Variant::fromI4(18)}, {"AcisOutputAsUnit", Variant::fromI4(0)},
        {"ParasolidVersion", Variant::fromI4(17)}, {"ParasolidFlattenHierarchy", Variant::fromBool(false)},
        {"IgesExportSolidSurface", Variant::fromBool(true)}, {"IgesRepresentation", Variant::fromI4(0)},
        {"IgesExportWireframe", Variant::fromBool(false)}, {"IgesCurveRepresentation", Variant::fromI4(0)},
        {"IgesSystem", Variant::fromI4(0)}, {"IgesExportFreeCurves", Variant::fromBool(true)},
        {"IgesExportSketchEntities", Variant::fromBool(false)}, {"IgesHighCurveAccuracy", Variant::fromBool(true)},
        {"IgesComponentsIntoOneFile", Variant::fromBool(true)},
        {"IgesFlattenAssemblyHierarchy", Variant::fromBool(true)}, {"StepGeometry", Variant::fromI4(0)},
        {"StepVersion", Variant::fromI4(203)}, {"StlOutputAs", Variant::fromBool(true)},
        {"StlOutputAsUnit", Variant::fromI4(0)}, {"StlQuality", Variant::fromI4(1)},
        {"StlDontTranslatePositive", Variant::fromBool(false)}, {"StlComponentsIntoOneFile", Variant::fromBool(false)},
        {"StlCheckForInterferences", Variant::fromBool(false)}, {"TifImageType", Variant::fromI4(1)},
        {"TifCompressionScheme", Variant::fromI4(0)},
        // Conversion settings and their tabs.
        {"FileFormat", Variant::fromBStr("<Prompt the user>")}, {"SourceRefs", Variant::fromI4(6)},
        {"OutputConfs", Variant::fromI4(3)}, {"FileConfs", Variant::fromI4(5)}, {"OutputSheets", Variant::fromI4(3)},
        {"FileSheets", Variant::fromI4(5)},
        // File card, output file details, menu command.
        {"FileCardData", Variant::fromBStr("")},
        {"OutputPath", Variant::fromBStr("<Path>\\<Filename>_<Extension>_<Configuration>")},
        {"OutputPath2", Variant::fromBStr("")}, {"RefToSource", Variant::fromBool(false)},
        {"ReplaceOutput", Variant::fromBool(true)}, {"PromptOutput", Variant::fromBool(true)},
        {"ErrorLogPath", Variant::fromBStr("\\Logs\\To STEP")}, {"__menucmd_display", Variant::fromBool(true)},
    };
    std::map<QString, Variant> stored;
    for (const QString &key : props->writes())
        stored[key] = props->value(key);
    EXPECT_EQ(stored.size(), expected.size());
    for (const auto &[key, value] : expected) {
        SCOPED_TRACE(key.toStdString());
        ASSERT_TRUE(stored.count(key));
        EXPECT_EQ(stored[key].type(), value.type());
        EXPECT_EQ(stored[key], value);
    }
    EXPECT_EQ(props->menuCommands,
              (std::vector<TaskMenuCommand>{
                  {1, "Convert Files", TaskMenuCommandFlags, "Converts Mecadra files from one format to another"}}));
}

} // namespace
