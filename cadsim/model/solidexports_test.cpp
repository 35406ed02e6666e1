#include "cadsim/geometry/shapebuilder.h"
#include "cadsim/geometry/solidexport.h"
#include "cadsim/model/cadapplication.h"
#include "cadsim/model/cadconstants.h"
#include "cadsim/model/documentgeometry.h"
#include "cadsim/model/solidexports.h"
#include "modeltestsupport.h"

#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_Sewing.hxx>
#include <Bnd_Box.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <IGESControl_Reader.hxx>
#include <STEPControl_Reader.hxx>
#include <ShapeFix_Solid.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

namespace {

struct SampleConfiguration
{
    QString sample;
    QString configuration;
};

// Every configuration of every sample part and assembly.
const QList<SampleConfiguration> sampleConfigurations = {
    {"bracket.mcdprt", "Default"}, {"bracket.mcdprt", "Machined"}, {"bracket.mcdprt", "A/B\\C"},
    {"shaft.mcdprt", "Default"},   {"cover.mcdprt", "Default"},    {"cover.mcdprt", "Painted"},
    {"gearbox.mcdasm", "Default"},
};

int typeOf(const QString &sample)
{
    return sample.endsWith("mcdasm") ? cad::mcDocASSEMBLY : sample.endsWith("mcddrw") ? cad::mcDocDRAWING
                                                                                         : cad::mcDocPART;
}

// Exports the samples through SaveAs and reads the files back with the
// kernel's own readers.
class SolidExportTest : public ::testing::Test
{
protected:
    SolidExportTest() : app(testResolver(scratch), testSettings(scratch)) { QDir(scratch.path()).mkpath("out"); }

    ModelDocPtr open(const SampleConfiguration &s)
    {
        std::int32_t errors = 0, warnings = 0;
        ModelDocPtr doc = app.openDoc6("S:\\" + s.sample, typeOf(s.sample), 0, s.configuration, errors, warnings);
        if (doc) {
            EXPECT_EQ(doc->activeConfiguration(), s.configuration);
        }
        return doc;
    }

    // The document's own solid in its active configuration.
    TopoDS_Shape documentShape(const ModelDoc &doc)
    {
        QString error;
        const auto geometry = documentGeometry(app, doc, doc.activeConfiguration(), &error);
        EXPECT_TRUE(geometry) << error.toStdString();
        return geometry ? buildSolid(*geometry, &error) : TopoDS_Shape();
    }

    // The native path of the export, or empty when SaveAs refused it.
    QString save(ModelDoc &doc, const QString &extension, std::int32_t *errorsOut = nullptr)
    {
        const QString name = "C:\\out\\" + QFileInfo(doc.title()).completeBaseName() + "." + extension;
        std::int32_t errors = -1, warnings = -1;
        const bool ok = doc.extension().saveAs(name, cad::mcSaveAsCurrentVersion, cad::mcSaveAsOptions_Silent,
                                               nullptr, errors, warnings);
        if (errorsOut)
            *errorsOut = errors;
        return ok ? testResolver(scratch)(name) : QString();
    }

    static QByteArray bytes(const QString &path)
    {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

    static TopoDS_Shape readStep(const QString &path)
    {
        STEPControl_Reader reader;
        if (reader.ReadFile(QFile::encodeName(path).constData()) != IFSelect_RetDone)
            return {};
        reader.TransferRoots();
        return reader.OneShape();
    }

    // IGES trimmed surfaces come back as loose faces: sewn into a shell and
    // closed into a solid, as a receiving system would.
    static TopoDS_Shape readIgesSolid(const QString &path)
    {
        IGESControl_Reader reader;
        if (reader.ReadFile(QFile::encodeName(path).constData()) != IFSelect_RetDone)
            return {};
        reader.TransferRoots();
        const TopoDS_Shape read = reader.OneShape();
        if (TopExp_Explorer(read, TopAbs_SOLID).More())
            return read;
        BRepBuilderAPI_Sewing sewing(1e-4);
        sewing.Add(read);
        sewing.Perform();
        BRep_Builder builder;
        TopoDS_Compound solids;
        builder.MakeCompound(solids);
        for (TopExp_Explorer shell(sewing.SewedShape(), TopAbs_SHELL); shell.More(); shell.Next()) {
            TopoDS_Solid solid;
            builder.MakeSolid(solid);
            builder.Add(solid, shell.Current());
            ShapeFix_Solid fix(solid);
            fix.Perform();
            builder.Add(solids, fix.Solid());
        }
        return solids;
    }

    static int count(const TopoDS_Shape &shape, TopAbs_ShapeEnum kind)
    {
        int n = 0;
        for (TopExp_Explorer e(shape, kind); e.More(); e.Next())
            ++n;
        return n;
    }

    static void expectSameVolume(double expected, const TopoDS_Shape &read, const QString &what)
    {
        ASSERT_FALSE(read.IsNull()) << what.toStdString();
        EXPECT_GT(expected, 0) << what.toStdString();
        EXPECT_NEAR(shapeVolume(read), expected, expected * 0.001) << what.toStdString();
    }

    QTemporaryDir scratch;
    CadApplication app;
};

// The built solids have the volumes their features describe, and every
// configuration of a part is a different solid.
TEST_F(SolidExportTest, SamplesBuildTheSolidsTheirFeaturesDescribe)
{
    const double pi = M_PI;
    const double lOutline = (80 * 10 + 10 * 40) * 40.0;
    const double shaft = pi * 10 * 10 * 120 + pi * (15 * 15 - 10 * 10) * 20;
    const double cover = 60 * 60 * 5 - 4 * pi * 9 * 5;
    const QList<std::pair<SampleConfiguration, double>> expected = {
        {{"bracket.mcdprt", "Default"}, lOutline},
        {{"bracket.mcdprt", "Machined"}, lOutline - pi * 36 * 10},
        {{"bracket.mcdprt", "A/B\\C"}, lOutline + pi * 64 * 20 - pi * 16 * 30},
        {{"shaft.mcdprt", "Default"}, shaft},
        {{"cover.mcdprt", "Default"}, cover},
        {{"cover.mcdprt", "Painted"}, 60 * 60 * 5.4 - 4 * pi * 9 * 5.4},
        {{"gearbox.mcdasm", "Default"}, shaft + cover},
    };
    for (const auto &[s, volume] : expected) {
        ModelDocPtr doc = open(s);
        ASSERT_TRUE(doc) << s.sample.toStdString();
        EXPECT_NEAR(shapeVolume(documentShape(*doc)), volume, 1e-6 * volume)
            << s.sample.toStdString() << " " << s.configuration.toStdString();
    }

    // The drawing's geometry is its model's, the bracket in its active configuration.
    std::int32_t errors = 0, warnings = 0;
    ModelDocPtr drawing = app.openDoc6("S:\\layout.mcddrw", cad::mcDocDRAWING, 0, "", errors, warnings);
    ASSERT_TRUE(drawing);
    const auto geometry = documentGeometry(app, *drawing, QString());
    ASSERT_TRUE(geometry);
    EXPECT_NEAR(shapeVolume(buildSolid(*geometry)), lOutline - pi * 36 * 10, 1e-3);
}

TEST_F(SolidExportTest, StepOfEveryConfigurationReadsBackWithItsVolumeAndSchema)
{
    for (const int schema : {203, 214}) {
        app.preferences().setInteger(cad::mcStepAP, schema);
        QHash<QString, QList<double>> volumesBySample;
        for (const SampleConfiguration &s : sampleConfigurations) {
            ModelDocPtr doc = open(s);
            ASSERT_TRUE(doc);
            const QString what = QStringLiteral("%1 %2 AP%3").arg(s.sample, s.configuration).arg(schema);
            const QString path = save(*doc, "step");
            ASSERT_FALSE(path.isEmpty()) << what.toStdString();
            const QByteArray text = bytes(path);
            const QByteArray schemaName = schema == 203 ? "CONFIG_CONTROL_DESIGN" : "AUTOMOTIVE_DESIGN";
            EXPECT_TRUE(QRegularExpression("FILE_SCHEMA\\s*\\(\\s*\\(\\s*'" + schemaName)
                            .match(QString::fromLatin1(text)).hasMatch())
                << what.toStdString();
            EXPECT_TRUE(text.contains("MANIFOLD_SOLID_BREP")) << what.toStdString();
            // The export's description travels in the header.
            EXPECT_TRUE(text.contains("\"mcStepAP\":" + QByteArray::number(schema))) << what.toStdString();

            const double volume = shapeVolume(documentShape(*doc));
            expectSameVolume(volume, readStep(path), what);
            volumesBySample[s.sample] << volume;
            app.closeAllDocuments(true);
        }
        for (const QList<double> &volumes : volumesBySample)
            for (qsizetype i = 1; i < volumes.size(); ++i)
                EXPECT_GT(std::abs(volumes[i] - volumes[i - 1]), 1.0);
    }
}

TEST_F(SolidExportTest, IgesOfEveryConfigurationReadsBackWithItsVolume)
{
    app.preferences().setToggle(cad::mcIGESExportSolidAndSurface, true);
    for (const int representation : {0, 3}) {
        app.preferences().setInteger(cad::mcIGESRepresentation, representation);
        for (const SampleConfiguration &s : sampleConfigurations) {
            ModelDocPtr doc = open(s);
            ASSERT_TRUE(doc);
            const QString what = QStringLiteral("%1 %2 representation %3").arg(s.sample, s.configuration).arg(representation);
            const QString path = save(*doc, "igs");
            ASSERT_FALSE(path.isEmpty()) << what.toStdString();
            // Manifold solids are entity 186, trimmed surfaces 144, in the directory's first field.
            const QByteArray entity = representation == 3 ? "     186" : "     144";
            bool found = false;
            for (const QByteArray &line : bytes(path).split('\n'))
                found = found || (line.size() == 80 && line[72] == 'D' && line.startsWith(entity));
            EXPECT_TRUE(found) << what.toStdString();
            expectSameVolume(shapeVolume(documentShape(*doc)), readIgesSolid(path), what);
            app.closeAllDocuments(true);
        }
    }
}

TEST_F(SolidExportTest, CurveOptionsWriteEdgesWithoutFaces)
{
    ModelDocPtr doc = open({"bracket.mcdprt", "Machined"});
    ASSERT_TRUE(doc);
    app.preferences().setInteger(cad::mcAcisOutputGeometryPreference, 1);
    const TopoDS_Shape step = readStep(save(*doc, "step"));
    EXPECT_EQ(count(step, TopAbs_FACE), 0);
    EXPECT_GE(count(step, TopAbs_EDGE), 12);

    app.preferences().setToggle(cad::mcIGESExportSolidAndSurface, false);
    app.preferences().setToggle(cad::mcIGESExportAsWireframe, true);
    IGESControl_Reader reader;
    ASSERT_EQ(reader.ReadFile(QFile::encodeName(save(*doc, "igs")).constData()), IFSelect_RetDone);
    reader.TransferRoots();
    EXPECT_EQ(count(reader.OneShape(), TopAbs_FACE), 0);
    EXPECT_GE(count(reader.OneShape(), TopAbs_EDGE), 12);
}

// admesh's report: "Label : number" and "Label = number" pairs, the first
// number of each (the original mesh's, before admesh repaired anything).
QHash<QString, double> admeshReport(const QString &path)
{
    QProcess process;
    process.start("admesh", {path});
    QHash<QString, double> report;
    if (!process.waitForFinished(60000) || process.exitCode() != 0)
        return report;
    const QString out = QString::fromLocal8Bit(process.readAllStandardOutput());
    static const QRegularExpression pair(R"(([A-Za-z][A-Za-z0-9 ]*[A-Za-z])\s*[:=]\s*(-?[0-9.]+))");
    for (auto it = pair.globalMatch(out); it.hasNext();) {
        const auto m = it.next();
        const QString label = m.captured(1).simplified();
        if (!report.contains(label))
            report.insert(label, m.captured(2).toDouble());
    }
    return report;
}

TEST_F(SolidExportTest, StlIsAClosedOrientedMeshInTheChosenUnitAndQuality)
{
    ModelDocPtr doc = open({"bracket.mcdprt", "A/B\\C"});
    ASSERT_TRUE(doc);
    const double volume = shapeVolume(documentShape(*doc));
    QHash<int, double> facets;
    for (const bool binary : {false, true})
        for (const int quality : {1, 2}) {
            app.preferences().setToggle(cad::mcSTLBinaryFormat, binary);
            app.preferences().setInteger(cad::mcSTLQuality, quality);
            const QString path = save(*doc, "stl");
            ASSERT_FALSE(path.isEmpty());
            EXPECT_EQ(bytes(path).startsWith("solid"), !binary);
            const auto report = admeshReport(path);
            const std::string what = (binary ? "binary quality " : "ascii quality ") + std::to_string(quality);
            ASSERT_TRUE(report.contains("Number of facets")) << what;
            EXPECT_EQ(report.value("Total disconnected facets"), 0) << what;
            EXPECT_EQ(report.value("Edges fixed"), 0) << what;
            EXPECT_EQ(report.value("Facets removed"), 0) << what;
            EXPECT_EQ(report.value("Facets added"), 0) << what;
            EXPECT_EQ(report.value("Facets reversed"), 0) << what;
            EXPECT_EQ(report.value("Backwards edges"), 0) << what;
            EXPECT_EQ(report.value("Normals fixed"), 0) << what;
            EXPECT_EQ(report.value("Number of parts"), 1) << what;
            // A mesh of the solid: its volume within the tessellation's error.
            EXPECT_NEAR(report.value("Volume"), volume, volume * 0.02) << what;
            // Translated to positive space: the box starts at the origin.
            EXPECT_NEAR(report.value("Min X"), 0, 1e-4) << what;
            EXPECT_NEAR(report.value("Min Y"), 0, 1e-4) << what;
            EXPECT_NEAR(report.value("Min Z"), 0, 1e-4) << what;
            facets[quality] = report.value("Number of facets");
        }
    EXPECT_GT(facets[2], facets[1] * 2);

    // Inches, where the solid lies: the shaft's collar reaches 15 mm below the axis.
    ModelDocPtr shaft = open({"shaft.mcdprt", "Default"});
    ASSERT_TRUE(shaft);
    app.preferences().setInteger(cad::mcExportStlUnits, 3);
    app.preferences().setToggle(cad::mcSTLDontTranslateToPositive, true);
    app.preferences().setInteger(cad::mcSTLQuality, 1);
    const auto inches = admeshReport(save(*shaft, "stl"));
    EXPECT_NEAR(inches.value("Max X"), 120 / 25.4, 1e-4);
    EXPECT_NEAR(inches.value("Min Y"), -15 / 25.4, 1e-3);
    const double shaftVolume = shapeVolume(documentShape(*shaft)) / std::pow(25.4, 3);
    EXPECT_NEAR(inches.value("Volume"), shaftVolume, shaftVolume * 0.02);
}

TEST_F(SolidExportTest, VrmlIsOneFileOrOnePerComponentInTheChosenUnit)
{
    ModelDocPtr doc = open({"gearbox.mcdasm", "Default"});
    ASSERT_TRUE(doc);
    app.preferences().setInteger(cad::mcExportVrmlUnits, 2);
    app.preferences().setToggle(cad::mcExportVrmlAllComponentsInSingleFile, true);
    const QByteArray one = bytes(save(*doc, "wrl"));
    EXPECT_TRUE(one.startsWith("#VRML V2.0 utf8\n# units: metres\n"));
    EXPECT_FALSE(one.contains("Inline"));
    // Coordinates in metres: the farthest point is the shaft's end, 90 mm along x.
    const QRegularExpression pointList(R"(point\s*\[([^\]]*)\])");
    const QRegularExpression number(R"([-+]?\d+(?:\.\d*)?(?:e[-+]?\d+)?)");
    double largest = 0;
    int points = 0;
    for (auto list = pointList.globalMatch(QString::fromLatin1(one)); list.hasNext();)
        for (auto it = number.globalMatch(list.next().captured(1)); it.hasNext(); ++points)
            largest = std::max(largest, std::abs(it.next().captured().toDouble()));
    EXPECT_GT(points, 100);
    EXPECT_NEAR(largest, 0.09, 1e-6);

    app.preferences().setToggle(cad::mcExportVrmlAllComponentsInSingleFile, false);
    const QString path = save(*doc, "wrl");
    const QByteArray main = bytes(path);
    EXPECT_TRUE(main.contains("Inline { url \"gearbox_shaft.wrl\" }")) << main.constData();
    EXPECT_TRUE(main.contains("Inline { url \"gearbox_cover.wrl\" }")) << main.constData();
    const QDir out = QFileInfo(path).dir();
    for (const char *component : {"gearbox_shaft.wrl", "gearbox_cover.wrl"}) {
        const QByteArray part = bytes(out.filePath(component));
        EXPECT_TRUE(part.startsWith("#VRML V2.0 utf8\n")) << component;
        EXPECT_TRUE(part.contains("IndexedFaceSet")) << component;
    }
}

TEST_F(SolidExportTest, FormatsWithoutAWriterSayWhatTheyAreAndCarryTheSolid)
{
    ModelDocPtr doc = open({"cover.mcdprt", "Painted"});
    ASSERT_TRUE(doc);
    const double volume = shapeVolume(documentShape(*doc));
    for (const char *format : {"x_t", "x_b", "sat"}) {
        const QByteArray text = bytes(save(*doc, format));
        EXPECT_TRUE(text.startsWith("# mcsim placeholder for a ")) << format;
        EXPECT_TRUE(text.contains("This is not a file of that format")) << format;
        EXPECT_TRUE(text.contains("\"configurations\":[\"Painted\"]")) << format;
        std::istringstream brep(text.mid(text.indexOf("\nCASCADE Topology") + 1).toStdString());
        TopoDS_Shape read;
        BRep_Builder builder;
        BRepTools::Read(read, brep, builder);
        expectSameVolume(volume, read, format);
    }
}

// A component inside a component: the inner placement first, then the outer
// turn and move; a component that contains itself is refused, not followed.
TEST_F(SolidExportTest, NestedPlacementsTurnAndMoveComponents)
{
    const auto write = [&](const QString &name, const QByteArray &text) {
        QFile f(scratch.filePath(name));
        return f.open(QIODevice::WriteOnly) && f.write(text) == text.size();
    };
    ASSERT_TRUE(write("inner.mcdasm", "Mecadra-Document: 1\nType: assembly\nComponent: S:\\shaft.mcdprt at 10 0 0\n"));
    ASSERT_TRUE(write("outer.mcdasm", "Mecadra-Document: 1\nType: assembly\nComponent: inner.mcdasm at 100 0 0 rotate 90\n"));
    ASSERT_TRUE(write("loop.mcdasm", "Mecadra-Document: 1\nType: assembly\nComponent: loop.mcdasm\n"));

    std::int32_t errors = 0, warnings = 0;
    ModelDocPtr outer = app.openDoc6("C:\\outer.mcdasm", cad::mcDocASSEMBLY, 0, "", errors, warnings);
    ASSERT_TRUE(outer);
    Bnd_Box box;
    BRepBndLib::AddOptimal(documentShape(*outer), box, false, false);
    double x0, y0, z0, x1, y1, z1;
    box.Get(x0, y0, z0, x1, y1, z1);
    // The shaft runs 0..120 along x with its 30 mm collar; inside it starts
    // at x 10, turned it runs along y, moved it is centred on x 100.
    EXPECT_NEAR(x0, 85, 1e-6);
    EXPECT_NEAR(x1, 115, 1e-6);
    EXPECT_NEAR(y0, 10, 1e-6);
    EXPECT_NEAR(y1, 130, 1e-6);
    EXPECT_NEAR(z0, -15, 1e-6);

    ModelDocPtr loop = app.openDoc6("C:\\loop.mcdasm", cad::mcDocASSEMBLY, 0, "", errors, warnings);
    ASSERT_TRUE(loop);
    QString error;
    EXPECT_FALSE(documentGeometry(app, *loop, "Default", &error));
    EXPECT_TRUE(error.contains("nest too deep")) << error.toStdString();
}

TEST_F(SolidExportTest, ADocumentWithoutSolidExportsNoSolid)
{
    std::int32_t errors = 0;
    ModelDocPtr imported = app.loadFile4("S:\\flange.igs", "", errors);
    ASSERT_TRUE(imported);
    for (const char *format : {"step", "igs", "stl", "wrl", "x_t"}) {
        std::int32_t saveErrors = 0;
        EXPECT_TRUE(save(*imported, format, &saveErrors).isEmpty()) << format;
        EXPECT_EQ(saveErrors, cad::mcGenericSaveError) << format;
    }
}

} // namespace
