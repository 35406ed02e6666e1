#include "cadsim/model/cadapplication.h"
#include "cadsim/model/cadconstants.h"
#include "cadsim/model/exportwriter.h"
#include "cadsim/model/solidexports.h"
#include "modeltestsupport.h"

#include <QDir>
#include <QImageReader>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QXmlStreamReader>
#include <gtest/gtest.h>


namespace {

// Exports the samples to every format of the conversion list and opens each
// file with what a user would use: poppler's tools, file(1), Qt's image
// reader, or a small reader of the format's syntax.
class ExportFilesTest : public ::testing::Test
{
protected:
    ExportFilesTest() : app(testResolver(scratch), testSettings(scratch)) { QDir(scratch.path()).mkpath("out"); }

    // The native path of the export, or empty when SaveAs refused it.
    QString exportTo(const QString &sample, const QString &extension)
    {
        auto request = app.getOpenDocSpec("S:\\" + sample);
        ModelDocPtr doc = app.openDoc7(*request);
        if (!doc)
            return {};
        const QString name = "C:\\out\\" + QFileInfo(sample).completeBaseName() + "." + extension;
        std::int32_t errors = -1, warnings = -1;
        if (!doc->extension().saveAs(name, cad::mcSaveAsCurrentVersion, cad::mcSaveAsOptions_Silent, nullptr,
                                     errors, warnings))
            return {};
        return testResolver(scratch)(name);
    }

    static QString tool(const QString &program, const QStringList &args) { return runTool(program, args); }
    static QString fileType(const QString &path) { return tool("file", {"-b", path}); }
    static QByteArray bytes(const QString &path) { return fileBytes(path); }

    QTemporaryDir scratch;
    CadApplication app;
};

TEST_F(ExportFilesTest, PdfHasOnePagePerSheetShowingItsNameAndTheRecordSaysWhatWasExported)
{
    const QString path = exportTo("layout.mcddrw", "pdf");
    ASSERT_FALSE(path.isEmpty());
    const QString info = tool("pdfinfo", {path});
    EXPECT_TRUE(info.contains(QRegularExpression("Pages:\\s+3\\n"))) << info.toStdString();
    EXPECT_TRUE(info.contains(QRegularExpression("Title:\\s+layout.mcddrw - Sheet1, Sheet2, Detail A")))
        << info.toStdString();
    const QString secondPage = tool("pdftotext", {"-f", "2", "-l", "2", path, "-"});
    EXPECT_TRUE(secondPage.contains("Sheet: Sheet2")) << secondPage.toStdString();
    EXPECT_FALSE(secondPage.contains("Sheet1"));
    EXPECT_TRUE(tool("pdfinfo", {"-meta", path}).contains("<rdf:li>Detail A</rdf:li>"));

    const QJsonObject record = exportRecord(app, path);
    EXPECT_EQ(record["format"].toString(), "pdf");
    EXPECT_EQ(record["sheets"].toVariant().toStringList(), (QStringList{"Sheet1", "Sheet2", "Detail A"}));
}

TEST_F(ExportFilesTest, ImagesOpenInQtsReaderAndFileNamesTheirFormat)
{
    for (const auto &[extension, qtFormat] :
         std::vector<std::pair<QString, QByteArray>>{{"tif", "tiff"}, {"jpg", "jpeg"}, {"png", "png"}, {"bmp", "bmp"}}) {
        const QString path = exportTo("bracket.mcdprt", extension);
        ASSERT_FALSE(path.isEmpty()) << extension.toStdString();
        QImageReader reader(path);
        EXPECT_EQ(reader.format(), qtFormat);
        const QImage image = reader.read();
        EXPECT_FALSE(image.isNull()) << extension.toStdString() << reader.errorString().toStdString();
        // A part is drawn on A4 landscape, a pixel a point.
        EXPECT_EQ(image.size(), QSize(842, 595)) << extension.toStdString();
        // The picture is not blank: the view above the title block has lines.
        int dark = 0;
        for (int y = 0; y < image.height() / 2; ++y)
            for (int x = 0; x < image.width(); ++x)
                dark += qGray(image.pixel(x, y)) < 128;
        EXPECT_GT(dark, 300) << extension.toStdString();
        EXPECT_EQ(exportRecord(app, path)["configurations"].toVariant().toStringList(), QStringList{"Machined"});
    }
    const QString psd = exportTo("layout.mcddrw", "psd");
    // A drawing on its sheets' paper: A3 landscape.
    EXPECT_TRUE(fileType(psd).startsWith("Adobe Photoshop Image, 1191 x 842, RGB")) << fileType(psd).toStdString();
    EXPECT_EQ(bytes(psd).size(), 26 + 4 + 4 + 4 + 2 + 3 * 1191 * 842);
}

TEST_F(ExportFilesTest, DrawingsAndScenesAreWellFormed)
{
    // DXF: group code and value pairs, sections closed, EOF last.
    const QList<QByteArray> dxf = bytes(exportTo("layout.mcddrw", "dxf")).split('\n');
    ASSERT_EQ(dxf.size() % 2, 1);
    int open = 0;
    for (int i = 0; i + 1 < dxf.size(); i += 2) {
        bool number = false;
        dxf[i].toInt(&number);
        ASSERT_TRUE(number) << i;
        if (dxf[i] == "0" && dxf[i + 1] == "SECTION")
            ++open;
        if (dxf[i] == "0" && dxf[i + 1] == "ENDSEC")
            --open;
        EXPECT_GE(open, 0);
    }
    EXPECT_EQ(open, 0);
    EXPECT_EQ(dxf[dxf.size() - 2], "EOF");

    EXPECT_TRUE(fileType(exportTo("layout.mcddrw", "ai")).startsWith("PostScript document"));

    for (const QString &extension : {QStringLiteral("scnxml"), QStringLiteral("xaml")}) {
        QXmlStreamReader xml(bytes(exportTo("bracket.mcdprt", extension)));
        while (!xml.atEnd())
            xml.readNext();
        EXPECT_FALSE(xml.hasError()) << extension.toStdString() << xml.errorString().toStdString();
    }
}

// Formats without a public syntax hold the description as text, and every
// format of the conversion list is written for a part.
TEST_F(ExportFilesTest, EveryFormatOfTheConversionListIsWritten)
{
    const QStringList formats = {"scnxml", "sat", "ai", "pdf", "psd", "kgr", "dxf", "dwg", "gprt", "zpk", "hsf",
                                 "igs", "jpg", "xaml", "x_t", "x_b", "step", "stl", "tif", "u3d", "vda", "wrl"};
    // The conversion macro always sets the IGES entity switches; here they are set by hand.
    app.preferences().setToggle(cad::mcIGESExportSolidAndSurface, true);
    for (const QString &format : formats) {
        const QString sample = format == "dxf" || format == "dwg" ? "layout.mcddrw" : "bracket.mcdprt";
        const QString path = exportTo(sample, format);
        ASSERT_FALSE(path.isEmpty()) << format.toStdString();
        EXPECT_EQ(exportRecord(app, path)["format"].toString(), format);
        if (ExportWriter::hasOwnSyntax(format) || SolidExports::handles(format))
            continue;
        const QJsonObject text = QJsonDocument::fromJson(bytes(path)).object();
        EXPECT_EQ(text["format"].toString(), format);
        EXPECT_EQ(text["source"].toString(), "S:\\" + sample);
    }
}

} // namespace
