// A conversion task's macro, built by the add-in's macro generation from the
// conversion template, run in the stand-in on sample documents of a vault.

#include "cadsim/model/exportrecords.h"
#include "tests/e2e/programtasktest.h"

namespace {

class MacroRunTest : public ProgramTaskTest
{
protected:
    void SetUp() override
    {
        ProgramTaskTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        addSamples({"layout.mcddrw", "bracket.mcdprt"}, "Parts");
        ok({"task", "create", "Convert", "--kind", "convert"});
    }

    void setTask(const QStringList &settings) { ok(QStringList{"task", "set", "Convert"} + settings); }

    // What the stand-in recorded of the export, once the file is there.
    QJsonObject exportOf(const QString &relative)
    {
        const QString path = QDir(m_vault).filePath(relative);
        if (!QFile::exists(path))
            return {};
        return ExportRecords::read(QDir(m_home.path()).filePath("mcsim/exports"), path);
    }
};

INSTANTIATE_TEST_SUITE_P(Backends, MacroRunTest, VaultBackends);

TEST_P(MacroRunTest, EverySheetOfADrawingBecomesOnePdf)
{
    setTask(ConversionDefaults + QStringList{R"(OutputPath=<Path>\PDF\<Filename>_<Configuration>)"});
    const ProgramRun ran = run({"macro", "run", "Convert", R"(V:\Parts\layout.mcddrw)"});
    ASSERT_EQ(ran.status, 0) << ran.out.toStdString() << ran.err.toStdString();
    EXPECT_EQ(ran.out, "saved V:\\Parts\\PDF\\layout_Sheet1.pdf\n"
                       "saved V:\\Parts\\PDF\\layout_Sheet2.pdf\n"
                       "saved V:\\Parts\\PDF\\layout_Detail A.pdf\n"
                       "the macro ran, error code 0\n");
    const QJsonObject sheet2 = exportOf("Parts/PDF/layout_Sheet2.pdf");
    EXPECT_EQ(sheet2.value("format").toString(), "pdf");
    EXPECT_EQ(sheet2.value("source").toString(), "V:\\Parts\\layout.mcddrw");
    EXPECT_EQ(sheet2.value("sheets").toVariant().toStringList(), QStringList{"Sheet2"});
    EXPECT_TRUE(sheet2.value("preferences").toObject().value("mcPDFExportInColor").toBool());
}

TEST_P(MacroRunTest, AllSheetsInOneFileAndConfigurationsByIndex)
{
    // All sheets into one file; configurations into a pattern without a
    // configuration placeholder get index suffixes.
    setTask(ConversionDefaults + QStringList{"FileSheets:int=3", R"(OutputPath=<Path>\Out\<Filename>)"});
    ProgramRun ran = run({"macro", "run", "Convert", R"(V:\Parts\layout.mcddrw)"});
    ASSERT_EQ(ran.status, 0) << ran.out.toStdString() << ran.err.toStdString();
    EXPECT_EQ(exportOf("Parts/Out/layout.pdf").value("sheets").toVariant().toStringList(),
              (QStringList{"Sheet1", "Sheet2", "Detail A"}));

    ran = run({"macro", "run", "Convert", R"(V:\Parts\bracket.mcdprt)"});
    ASSERT_EQ(ran.status, 0) << ran.out.toStdString() << ran.err.toStdString();
    for (const char *name : {"Parts/Out/bracket_0.pdf", "Parts/Out/bracket_1.pdf", "Parts/Out/bracket_2.pdf"})
        EXPECT_TRUE(QFile::exists(QDir(m_vault).filePath(name))) << name;
}

TEST_P(MacroRunTest, ASettingLeftOutIsCaughtBeforeAnythingRuns)
{
    // A conversion task that never went through the set-up pages holds only
    // what it is given: the conversion macro and the settings without one.
    ASSERT_EQ(run({"task", "create", "Bare", "--kind", "script"}).status, 0);
    const QString script =
        run({"task", "get", "Convert", "__script", "--json"}).json().object()["__script"].toString();
    ASSERT_FALSE(script.isEmpty());
    QStringList settings = ConversionDefaults;
    settings.removeIf([](const QString &s) { return s.startsWith("OutputSheets"); });
    const ProgramRun set = run(QStringList{"task", "set", "Bare", "__type:int=1", "__script=" + script}
                               + settings + QStringList{R"(OutputPath=<Path>\PDF\<Filename>)"});
    ASSERT_EQ(set.status, 0) << set.err.toStdString();
    const ProgramRun checked = run({"macro", "check", "Bare", R"(V:\Parts\layout.mcddrw)"});
    EXPECT_EQ(checked.status, 1);
    EXPECT_TRUE(checked.out.startsWith("V:\\Parts\\layout.mcddrw:")) << checked.out.toStdString();

    const ProgramRun ran = run({"macro", "run", "Bare", R"(V:\Parts\layout.mcddrw)"});
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(ran.out, "the macro did not run, error code 3\n");
    EXPECT_FALSE(QDir(m_vault).exists("Parts/PDF"));
}

} // namespace
