#include "cadsim/model/cadapplication.h"
#include "cadsim/model/cadconstants.h"
#include "modeltestsupport.h"

#include <QProcessEnvironment>
#include <QSet>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class CadApplicationTest : public ::testing::Test
{
protected:
    CadApplicationTest() : app(testResolver(scratch)) { app.addObserver(&observer); }

    ModelDocPtr open(const QString &path, std::int32_t type, std::int32_t &errors)
    {
        auto openRequest = app.getOpenDocSpec(path);
        openRequest->documentType = type;
        openRequest->readOnly = true;
        openRequest->silent = true;
        ModelDocPtr doc = app.openDoc7(*openRequest);
        errors = openRequest->error;
        return doc;
    }

    QTemporaryDir scratch;
    CadApplication app;
    RecordingObserver observer;
};

} // namespace

TEST_F(CadApplicationTest, OpensAPartWithItsConfigurations)
{
    const auto openRequest = app.getOpenDocSpec("S:\\bracket.mcdprt");
    EXPECT_EQ(openRequest->documentType, cad::mcDocPART);

    std::int32_t errors = -1;
    ModelDocPtr doc = open("S:\\bracket.mcdprt", cad::mcDocPART, errors);
    ASSERT_TRUE(doc);
    EXPECT_EQ(errors, 0);
    EXPECT_EQ(doc->title(), "bracket.mcdprt");
    EXPECT_EQ(doc->pathName(), "S:\\bracket.mcdprt");
    EXPECT_EQ(doc->configurationNames(), (QStringList{"Default", "Machined", "A/B\\C"}));
    EXPECT_EQ(doc->activeConfiguration(), "Machined");
    EXPECT_TRUE(doc->showConfiguration("A/B\\C"));
    EXPECT_EQ(doc->activeConfiguration(), "A/B\\C");
    EXPECT_FALSE(doc->showConfiguration("Missing"));
    EXPECT_EQ(doc->activeConfiguration(), "A/B\\C");
    EXPECT_TRUE(doc->sheetNames().isEmpty());
    EXPECT_FALSE(doc->activateSheet("Sheet1"));
    EXPECT_EQ(app.activeDocument(), doc);
    EXPECT_EQ(observer.events, (QStringList{"opened:bracket.mcdprt", "activated:bracket.mcdprt"}));
}

TEST_F(CadApplicationTest, OpenWithConfigurationNameShowsIt)
{
    auto openRequest = app.getOpenDocSpec("S:\\bracket.mcdprt");
    openRequest->configurationName = "Default";
    ModelDocPtr doc = app.openDoc7(*openRequest);
    ASSERT_TRUE(doc);
    EXPECT_EQ(doc->activeConfiguration(), "Default");
}

TEST_F(CadApplicationTest, DrawingSheetsActivateCaseInsensitively)
{
    std::int32_t errors = -1;
    ModelDocPtr doc = open("S:\\layout.mcddrw", cad::mcDocDRAWING, errors);
    ASSERT_TRUE(doc);
    EXPECT_EQ(doc->sheetNames(), (QStringList{"Sheet1", "Sheet2", "Detail A"}));
    EXPECT_EQ(doc->currentSheet(), "Sheet2");
    EXPECT_TRUE(doc->activateSheet("detail a"));
    EXPECT_EQ(doc->currentSheet(), "Detail A");
    EXPECT_FALSE(doc->activateSheet("Sheet9"));
    EXPECT_EQ(doc->currentSheet(), "Detail A");
    EXPECT_TRUE(doc->configurationNames().isEmpty());
    EXPECT_EQ(doc->pageSetup().paperSize, 8);
    EXPECT_EQ(doc->pageSetup().orientation, 2);
}

TEST_F(CadApplicationTest, AssemblyComponentsResolveAgainstTheAssemblyFolder)
{
    std::int32_t errors = -1;
    ModelDocPtr doc = open("S:\\gearbox.mcdasm", cad::mcDocASSEMBLY, errors);
    ASSERT_TRUE(doc);
    const std::vector<Component> parts = doc->components(true);
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts[0].pathName, "S:\\shaft.mcdprt");
    EXPECT_EQ(parts[0].name, "shaft");
    EXPECT_FALSE(parts[0].isVirtual);
    EXPECT_EQ(parts[1].pathName, "S:\\cover.mcdprt");
    EXPECT_TRUE(parts[1].isVirtual);

    // The virtual component opens as a document of its own.
    ModelDocPtr cover = open(parts[1].pathName, cad::mcDocPART, errors);
    ASSERT_TRUE(cover);
    EXPECT_EQ(cover->configurationNames(), (QStringList{"Default", "Painted"}));
    EXPECT_EQ(app.documents().size(), 2u);
}

TEST_F(CadApplicationTest, OpenFailuresGiveTheirErrorCodes)
{
    struct Case { const char *path; std::int32_t type; std::int32_t error; };
    const Case cases[] = {
        {"S:\\missing.mcdprt", cad::mcDocPART, cad::mcFileNotFoundError},
        {"Q:\\unmapped.mcdprt", cad::mcDocPART, cad::mcFileNotFoundError},
        {"S:\\broken.mcdprt", cad::mcDocPART, cad::mcGenericError},
        {"S:\\newer.mcdprt", cad::mcDocPART, cad::mcFutureVersion},
        {"S:\\bracket.mcdprt", cad::mcDocDRAWING, cad::mcInvalidFileTypeError},
        {"S:\\bracket.mcdprt", cad::mcDocNONE, cad::mcInvalidFileTypeError},
    };
    for (const Case &c : cases) {
        std::int32_t errors = 0;
        EXPECT_FALSE(open(c.path, c.type, errors)) << c.path;
        EXPECT_EQ(errors, c.error) << c.path;
    }
    EXPECT_TRUE(app.documents().empty());
    EXPECT_FALSE(app.activeDocument());
    EXPECT_TRUE(observer.events.isEmpty());

    std::int32_t errors = 0, warnings = 0;
    EXPECT_FALSE(app.openDoc6("S:\\newer.mcdprt", cad::mcDocPART, 0, "", errors, warnings));
    EXPECT_EQ(errors, cad::mcFutureVersion);
}

TEST_F(CadApplicationTest, OpeningAnOpenDocumentReturnsIt)
{
    std::int32_t errors = 0;
    ModelDocPtr first = open("S:\\bracket.mcdprt", cad::mcDocPART, errors);
    ModelDocPtr layout = open("S:\\layout.mcddrw", cad::mcDocDRAWING, errors);
    ModelDocPtr again = open("s:/BRACKET.mcdprt", cad::mcDocPART, errors);
    EXPECT_EQ(first, again);
    EXPECT_EQ(app.documents().size(), 2u);
    EXPECT_EQ(app.activeDocument(), first);
    EXPECT_EQ(observer.events.count("opened:bracket.mcdprt"), 1);
    EXPECT_EQ(observer.events.last(), "activated:bracket.mcdprt");
    (void)layout;
}

TEST_F(CadApplicationTest, ImportsForeignFilesWithoutAPathName)
{
    std::int32_t errors = -1;
    ModelDocPtr doc = app.loadFile4("S:\\flange.igs", "", errors);
    ASSERT_TRUE(doc);
    EXPECT_EQ(errors, 0);
    EXPECT_EQ(doc->type(), DocumentType::Part);
    EXPECT_EQ(doc->pathName(), "");
    EXPECT_EQ(doc->sourcePath(), "S:\\flange.igs");
    EXPECT_EQ(doc->title(), "flange");
    EXPECT_EQ(doc->configurationNames(), QStringList{"Default"});

    // Found again by the file it came from, so activating by that name works.
    EXPECT_EQ(app.activateDoc2("S:\\flange.igs", true, errors), doc);
    EXPECT_EQ(errors, 0);

    EXPECT_FALSE(app.loadFile4("S:\\notes.xyz", "", errors));
    EXPECT_EQ(errors, cad::mcInvalidFileTypeError);
    EXPECT_FALSE(app.loadFile4("S:\\bracket.mcdprt", "", errors));
    EXPECT_EQ(errors, cad::mcInvalidFileTypeError);
    EXPECT_FALSE(app.loadFile4("S:\\absent.step", "", errors));
    EXPECT_EQ(errors, cad::mcFileNotFoundError);
}

TEST_F(CadApplicationTest, ImportOfADrawingFormatGivesOneSheet)
{
    QFile dxf(scratch.filePath("plan.dxf"));
    ASSERT_TRUE(dxf.open(QIODevice::WriteOnly));
    dxf.write("0\nSECTION\n0\nEOF\n");
    dxf.close();
    std::int32_t errors = -1;
    ModelDocPtr doc = app.loadFile4("C:\\plan.dxf", "", errors);
    ASSERT_TRUE(doc);
    EXPECT_EQ(doc->type(), DocumentType::Drawing);
    EXPECT_EQ(doc->sheetNames(), QStringList{"Sheet1"});
}

TEST_F(CadApplicationTest, ActivateAndCloseByTitleOrPath)
{
    std::int32_t errors = 0;
    ModelDocPtr part = open("S:\\bracket.mcdprt", cad::mcDocPART, errors);
    ModelDocPtr drawing = open("S:\\layout.mcddrw", cad::mcDocDRAWING, errors);
    observer.events.clear();

    EXPECT_EQ(app.activateDoc2("BRACKET.MCDPRT", false, errors), part);
    EXPECT_EQ(app.activeDocument(), part);
    EXPECT_FALSE(app.activateDoc2("nothing.mcdprt", false, errors));
    EXPECT_EQ(errors, cad::mcGenericError);

    EXPECT_TRUE(app.closeDoc(part->title()));
    EXPECT_TRUE(part->isClosed());
    EXPECT_EQ(app.activeDocument(), drawing);
    EXPECT_FALSE(app.closeDoc(part->title()));
    EXPECT_TRUE(app.closeDoc("S:\\layout.mcddrw"));
    EXPECT_FALSE(app.activeDocument());
    EXPECT_EQ(observer.events,
              (QStringList{"activated:bracket.mcdprt", "destroyed:bracket.mcdprt", "destroyed:layout.mcddrw"}));
}

TEST_F(CadApplicationTest, CloseAllDestroysEveryDocument)
{
    std::int32_t errors = 0;
    open("S:\\bracket.mcdprt", cad::mcDocPART, errors);
    open("S:\\gearbox.mcdasm", cad::mcDocASSEMBLY, errors);
    app.loadFile4("S:\\flange.igs", "", errors);
    observer.events.clear();
    app.closeAllDocuments(true);
    EXPECT_TRUE(app.documents().empty());
    EXPECT_FALSE(app.activeDocument());
    EXPECT_EQ(observer.events.size(), 3);
    for (const QString &e : observer.events)
        EXPECT_TRUE(e.startsWith("destroyed:")) << e.toStdString();
}

TEST_F(CadApplicationTest, DocumentsOutliveTheirApplicationSafely)
{
    std::int32_t errors = 0;
    ModelDocPtr doc;
    {
        QTemporaryDir dir;
        CadApplication shortLived(testResolver(dir));
        auto openRequest = shortLived.getOpenDocSpec("S:\\layout.mcddrw");
        doc = shortLived.openDoc7(*openRequest);
        ASSERT_TRUE(doc);
    }
    EXPECT_EQ(doc->application(), nullptr);
    std::int32_t warnings = 0;
    EXPECT_FALSE(doc->extension().saveAs("C:\\x.pdf", 0, 1, nullptr, errors, warnings));
    EXPECT_EQ(errors, cad::mcGenericSaveError);
    EXPECT_FALSE(doc->extension().printOut2(std::nullopt, 1, false, "", ""));
}

TEST(CadSettings, ReadFromTheEnvironment)
{
    QProcessEnvironment env;
    env.insert("MCSIM_PRINTERS", "Office Laser; Plotter=Paper jam;;");
    env.insert("MCSIM_DEFAULT_PRINTER", "Plotter");
    env.insert("MCSIM_SPOOL_FILE", "/tmp/spool.jsonl");
    env.insert("MCSIM_REVISION", "17.2.0");
    const CadSettings s = CadSettings::fromEnvironment(env);
    ASSERT_EQ(s.printers.size(), 2);
    EXPECT_EQ(s.printers[0].name, "Office Laser");
    EXPECT_EQ(s.printers[0].failure, "");
    EXPECT_EQ(s.printers[1].name, "Plotter");
    EXPECT_EQ(s.printers[1].failure, "Paper jam");
    EXPECT_EQ(s.spoolFile, "/tmp/spool.jsonl");
    EXPECT_EQ(s.revision, "17.2.0");

    CadApplication app({}, s);
    EXPECT_EQ(app.defaultPrinter(), "Plotter");
    EXPECT_EQ(CadSettings::fromEnvironment(QProcessEnvironment()).revision, "21.0.0");

    // Without a spool file of its own, prints go beside the export records.
    QTemporaryDir scratch;
    QProcessEnvironment records;
    records.insert("MCSIM_EXPORT_RECORDS", scratch.filePath("mcsim/exports"));
    EXPECT_EQ(CadSettings::fromEnvironment(records).spoolFile, scratch.filePath("mcsim/print-spool.jsonl"));
}

TEST(CadConstants, TableIsCompleteAndUnambiguous)
{
    std::int32_t value = 0;
    ASSERT_TRUE(cad::findConstant("MCFUTUREVERSION", value));
    EXPECT_EQ(value, cad::mcFutureVersion);
    // The conversion macro spells these as literals.
    ASSERT_TRUE(cad::findConstant("mcFileSaveAsBadExtension", value));
    EXPECT_EQ(value, 256);
    ASSERT_TRUE(cad::findConstant("mcFileSaveAsNotSupported", value));
    EXPECT_EQ(value, 4096);
    ASSERT_TRUE(cad::findConstant("mcFileSaveWarning_MissingOLEObjects", value));
    EXPECT_EQ(value, 512);
    EXPECT_FALSE(cad::findConstant("mcNoSuchThing", value));

    QSet<QString> names;
    for (const cad::NamedConstant &c : cad::constantTable())
        EXPECT_FALSE(names.contains(QString::fromLatin1(c.name).toLower())) << c.name;
    // Every export preference is a named constant with the same number, and
    // preference numbers are unique.
    QSet<std::int32_t> ids;
    for (const cad::ExportPreference &p : cad::exportPreferences()) {
        ASSERT_TRUE(cad::findConstant(QLatin1String(p.name), value)) << p.name;
        EXPECT_EQ(value, p.id) << p.name;
        EXPECT_FALSE(ids.contains(p.id)) << p.name;
        ids.insert(p.id);
    }
}
