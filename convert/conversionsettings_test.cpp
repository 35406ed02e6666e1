#include "convert/conversionsettingspage.h"

#include "common/testing/testlanguage.h"
#include "common/translator.h"
#include "common/widgets/testing/widgetapp.h"
#include "host/testing/faketask.h"
#include "platform/memoryfilesystem.h"

#include <gmock/gmock.h>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

CConversionSettingsPageDlg launchPage()
{
    widgetApp();
    PageContext context;
    context.launchMode = true;
    context.taskType = 1;
    return CConversionSettingsPageDlg(context, {});
}

// A task whose administrator fixed everything.
void fixEverything(FakeVariables &task, const QString &format = QStringLiteral("Adobe PDF (*.pdf)"))
{
    task.set("FileFormat", Variant::fromBStr(format));
    task.set("PromptOutput", Variant::fromBool(false));
    task.set("SourceRefs", Variant::fromI4(1));
    task.set("OutputConfs", Variant::fromI4(2));
    task.set("FileConfs", Variant::fromI4(4));
    task.set("OutputSheets", Variant::fromI4(2));
    task.set("FileSheets", Variant::fromI4(4));
}

TEST(ConversionLaunchTest, FixedTaskAsksNothingAndSavesWhatItLoaded)
{
    FakeTaskInstance instance;
    fixEverything(instance);
    instance.set("OutputPath", Variant::fromBStr("<VaultPath>\\PDF\\<Filename>"));
    auto page = launchPage();
    ASSERT_EQ(page.load(instance), S_OK);
    EXPECT_FALSE(page.hasLaunchPrompt());
    EXPECT_THAT(page.values().openKeys(), IsEmpty());

    FakeTaskInstance saved;
    ASSERT_EQ(page.save(saved), S_OK);
    EXPECT_EQ(saved.value("FileFormat").toText(), "Adobe PDF (*.pdf)");
    EXPECT_EQ(saved.value("SourceRefs").toI4(), 1);
    EXPECT_EQ(saved.value("OutputPath").toText(), "<VaultPath>\\PDF\\<Filename>");
    EXPECT_EQ(saved.value("OutputConfs").toI4(), 2);
    EXPECT_EQ(saved.value("FileConfs").toI4(), 4);
    EXPECT_EQ(saved.value("FileSheets").toI4(), 4);
    EXPECT_FALSE(saved.has("NamedConf"));
}

TEST(ConversionLaunchTest, EachOpenSectionMakesTheLaunchAsk)
{
    struct Case {
        const char *name;
        std::function<void(FakeVariables &)> open;
        QStringList keys;
    };
    const std::vector<Case> cases{
        {"prompted format", [](FakeVariables &t) { t.set("FileFormat", Variant::fromBStr("<Prompt the user>")); },
         {"FileFormat"}},
        {"unknown format", [](FakeVariables &t) { t.set("FileFormat", Variant::fromBStr("Nothing (*.x)")); },
         {"FileFormat"}},
        {"output path", [](FakeVariables &t) { t.set("PromptOutput", Variant::fromBool(true)); }, {"OutputPath"}},
        {"references", [](FakeVariables &t) { t.set("SourceRefs", Variant::fromI4(2 + 4)); }, {"SourceRefs"}},
        {"sheets to output", [](FakeVariables &t) { t.set("OutputSheets", Variant::fromI4(8 + 1)); },
         {"OutputSheets", "NamedSheet"}},
        // PDF holds several sheets in one file, but not several configurations.
        {"multi-sheet file", [](FakeVariables &t) { t.set("FileSheets", Variant::fromI4(4 + 1)); }, {"FileSheets"}},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        FakeTaskInstance instance;
        fixEverything(instance);
        c.open(instance);
        auto page = launchPage();
        ASSERT_EQ(page.load(instance), S_OK);
        EXPECT_TRUE(page.hasLaunchPrompt());
        EXPECT_EQ(page.values().openKeys(), c.keys);
    }

    FakeTaskInstance multiConf;
    fixEverything(multiConf);
    multiConf.set("FileConfs", Variant::fromI4(2 + 1));
    auto pdf = launchPage();
    ASSERT_EQ(pdf.load(multiConf), S_OK);
    EXPECT_FALSE(pdf.hasLaunchPrompt());
    fixEverything(multiConf, "glimpse (*.gprt; *.gasm; *.glmp)");
    multiConf.set("FileConfs", Variant::fromI4(2 + 1));
    auto glimpse = launchPage();
    ASSERT_EQ(glimpse.load(multiConf), S_OK);
    EXPECT_TRUE(glimpse.hasLaunchPrompt());
    EXPECT_EQ(glimpse.values().selectedFormat().index, 9);
}

TEST(ConversionLaunchTest, ALaunchTakesOnlyWhatThePageOffersInTheAddInsLanguage)
{
    MemoryFileSystem files;
    ScopedFileSystem filesGuard(files);
    addTestLanguage(files, "/lang/DE");
    Translator german("/lang/DE");
    ScopedTranslator translatorGuard(german);
    using Choice = ConversionSettingsValues::LaunchChoice;

    // The administrator fixed the format under its German name.
    FakeTaskInstance fixed;
    fixEverything(fixed, "Adobe-PDF-Dokument (*.pdf)");
    fixed.set("PromptOutput", Variant::fromBool(true));
    ConversionSettingsValues page(true, {});
    ASSERT_EQ(page.load(fixed), S_OK);
    EXPECT_EQ(page.selectedFormat().index, 4);
    EXPECT_EQ(page.launchChoice("FileFormat", "VRML-Welt (*.wrl)"), Choice::Fixed);
    EXPECT_EQ(page.launchChoice("pdfincolor", "false"), Choice::Fixed);
    EXPECT_EQ(page.launchChoice("SourceRefs", "2"), Choice::Fixed);
    EXPECT_EQ(page.launchChoice("OutputPath", "<VaultPath>\\Out"), Choice::Offered);
    EXPECT_EQ(page.launchChoice("Quality", "3"), Choice::NotOwned);

    // Left open: any entry of the list, as the list spells it, and the options.
    FakeTaskInstance open;
    fixEverything(open, "<Prompt the user>");
    ConversionSettingsValues choosing(true, {});
    ASSERT_EQ(choosing.load(open), S_OK);
    EXPECT_EQ(choosing.launchChoice("FileFormat", "vrml-welt (*.wrl)"), Choice::Offered);
    EXPECT_EQ(choosing.launchChoice("FileFormat", "VRML (*.wrl)"), Choice::NotOffered);
    EXPECT_EQ(choosing.launchChoice("FileFormat", "<Prompt the user>"), Choice::NotOffered);
    EXPECT_EQ(choosing.launchChoice("VrmlOutputAsUnit", "2"), Choice::Offered);
}

TEST(ConversionLaunchTest, NewTaskOpensEverythingAndOffersNoPrompt)
{
    FakeTaskInstance instance;
    auto page = launchPage();
    ASSERT_EQ(page.load(instance), S_OK);
    EXPECT_TRUE(page.hasLaunchPrompt());
    EXPECT_EQ(page.values().formats().front().text, "Scene Markup (*.scnxml)");
    EXPECT_EQ(page.values().formats().size(), 22u);
    EXPECT_THAT(page.values().openKeys(),
                ElementsAre("FileFormat", "OutputPath", "SourceRefs", "OutputConfs", "NamedConf", "OutputSheets",
                            "NamedSheet"));

    // The user picks STEP and one named configuration.
    ASSERT_TRUE(page.values().selectFormat("STEP (*.step)"));
    page.values().configurations.output = 8;
    page.values().configurations.pattern = "Default*";
    FakeTaskInstance saved;
    ASSERT_EQ(page.save(saved), S_OK);
    EXPECT_EQ(saved.value("FileFormat").toText(), "STEP (*.step)");
    EXPECT_EQ(saved.value("SourceRefs").toI4(), 2 + 4);
    EXPECT_EQ(saved.value("OutputConfs").toI4(), 8 + 1);
    EXPECT_EQ(saved.value("NamedConf").toText(), "Default*");
    EXPECT_EQ(saved.value("FileConfs").toI4(), 4 + 1);
    EXPECT_EQ(saved.value("OutputSheets").toI4(), 2 + 1);
    EXPECT_FALSE(saved.has("NamedSheet"));
}

TEST(ConversionLaunchTest, OneFileForAllOnlyWhereTheFormatAndChoiceAllowIt)
{
    FakeTaskInstance instance;
    fixEverything(instance);
    instance.set("FileSheets", Variant::fromI4(2));
    instance.set("FileConfs", Variant::fromI4(2));
    auto page = launchPage();
    ASSERT_EQ(page.load(instance), S_OK);
    FakeTaskInstance saved;
    ASSERT_EQ(page.save(saved), S_OK);
    EXPECT_EQ(saved.value("FileSheets").toI4(), 2); // PDF: all sheets in one file
    EXPECT_EQ(saved.value("FileConfs").toI4(), 4);  // not for configurations

    page.values().sheets.output = 4; // the last active sheet needs no multi-sheet file
    ASSERT_EQ(page.save(saved), S_OK);
    EXPECT_EQ(saved.value("FileSheets").toI4(), 4);
}

TEST(ConversionLaunchTest, HostErrorsStopLoadAndSave)
{
    FakeTaskInstance instance;
    instance.failRead("SourceRefs", E_ACCESSDENIED);
    auto page = launchPage();
    EXPECT_EQ(page.load(instance), E_ACCESSDENIED);
    FakeTaskInstance target;
    target.failWrite("OutputConfs", E_FAIL);
    EXPECT_EQ(page.save(target), E_FAIL);
    EXPECT_FALSE(target.has("OutputSheets"));
}

} // namespace
