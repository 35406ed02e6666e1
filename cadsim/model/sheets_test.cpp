// Drawings, images and prints as a user sees them: the paper, the hidden-line
// views of the solid, the PDF and TIF options, and what a print queue gets.

#include "cadsim/model/cadapplication.h"
#include "cadsim/model/cadconstants.h"
#include "cadsim/geometry/shapebuilder.h"
#include "cadsim/model/imageencoding.h"
#include "cadsim/model/paperlayout.h"
#include "cadsim/model/projection.h"
#include "modeltestsupport.h"
#include "platform/printing/printers.h"

#include <QDir>
#include <QImageReader>
#include <QRegularExpression>
#include <gtest/gtest.h>

#include <tiffio.h>

namespace {

// The page's size in whole millimetres, as Qt keeps the ANSI sizes.
QSize pageMm(const QPageLayout &layout)
{
    return layout.fullRect(QPageLayout::Millimeter).size().toSize();
}

TEST(PaperLayout, PaperCodesOrientationAndMarginsGiveThePage)
{
    EXPECT_EQ(pageMm(pageLayoutOf(8, 2)), QSize(420, 297));
    EXPECT_EQ(pageMm(pageLayoutOf(8, 1)), QSize(297, 420));
    EXPECT_EQ(pageMm(pageLayoutOf(66, 1)), QSize(420, 594));
    EXPECT_EQ(pageMm(pageLayoutOf(260, 1)), QSize(841, 1189));
    EXPECT_EQ(pageMm(pageLayoutOf(261, 2)), QSize(841, 594));
    EXPECT_EQ(pageMm(pageLayoutOf(262, 1)), QSize(216, 279)); // ANSI A
    EXPECT_EQ(pageMm(pageLayoutOf(263, 1)), QSize(279, 432)); // ANSI B
    EXPECT_EQ(pageMm(pageLayoutOf(24, 1)), QSize(432, 559));  // ANSI C
    EXPECT_EQ(pageMm(pageLayoutOf(26, 1)), QSize(864, 1118)); // ANSI E
    // A4 fed rotated lies on its side before the orientation turns it.
    EXPECT_EQ(pageMm(pageLayoutOf(77, 1)), QSize(297, 210));
    EXPECT_EQ(pageMm(pageLayoutOf(12345, 1)), QSize(210, 297));

    // Custom margins are kept in metres; the printer's are a quarter inch.
    Preferences prefs;
    prefs.setReal(cad::mcPageSetupPrinterTopMargin, 0.03);
    prefs.setReal(cad::mcPageSetupPrinterBottomMargin, 0.01);
    prefs.setReal(cad::mcPageSetupPrinterLeftMargin, 0.025);
    prefs.setReal(cad::mcPageSetupPrinterRightMargin, -0.005);
    EXPECT_EQ(printMargins(prefs), QMarginsF(25, 30, 0, 10));
    prefs.setToggle(cad::mcPageSetupPrinterUsePrinterMargin, true);
    EXPECT_EQ(printMargins(prefs), QMarginsF(6.35, 6.35, 6.35, 6.35));

    const QRectF inside = pageLayoutOf(9, 1, QMarginsF(25, 30, 0, 10)).paintRect(QPageLayout::Millimeter);
    EXPECT_NEAR(inside.left(), 25, 0.01);
    EXPECT_NEAR(inside.top(), 30, 0.01);
    EXPECT_NEAR(inside.width(), 185, 0.01);
    EXPECT_NEAR(inside.height(), 257, 0.01);
    // Margins wider than the page leave a third of it.
    const QRectF squeezed = pageLayoutOf(9, 1, QMarginsF(500, 500, 500, 500)).paintRect(QPageLayout::Millimeter);
    EXPECT_NEAR(squeezed.width(), 70, 0.01);
    EXPECT_NEAR(squeezed.height(), 99, 0.01);
}

// Polylines that run straight up at x (within 0.01 mm) from y0 to y1.
bool hasVerticalLine(const QList<QPolygonF> &lines, double x, double y0, double y1)
{
    return std::any_of(lines.begin(), lines.end(), [&](const QPolygonF &l) {
        const QRectF b = l.boundingRect();
        return qAbs(b.left() - x) < 0.01 && qAbs(b.right() - x) < 0.01 && qAbs(b.top() - y0) < 0.01
               && qAbs(b.bottom() - y1) < 0.01;
    });
}

TopoDS_Shape sampleSolid(const QString &file, const QString &configuration)
{
    const ParseResult parsed = parseDocument(QString::fromUtf8(fileBytes(QStringLiteral(MCTASK_SAMPLES_DIR "/") + file)));
    if (!parsed.data)
        return {};
    return buildSolid(ModelGeometry{{Body{file, parsed.data->featuresOf(configuration), {}}}});
}

TEST(HiddenLineProjection, StandardViewsShowTheSolidsExtentsAndHideWhatMaterialCovers)
{
    // The machined bracket: an L of 80 x 50 (y up) extruded 40 along z, and
    // a hole of diameter 12 at x 50, z 20 straight down through the 10 mm base.
    const TopoDS_Shape solid = sampleSolid("bracket.mcdprt", "Machined");
    ASSERT_FALSE(solid.IsNull());
    const ProjectedView front = projectHiddenLines(solid, ViewDirection::Front);
    const ProjectedView top = projectHiddenLines(solid, ViewDirection::Top);
    const ProjectedView right = projectHiddenLines(solid, ViewDirection::Right);
    auto near = [](const QRectF &a, const QRectF &b) {
        return qAbs(a.left() - b.left()) < 0.01 && qAbs(a.top() - b.top()) < 0.01 && qAbs(a.width() - b.width()) < 0.01
               && qAbs(a.height() - b.height()) < 0.01;
    };
    EXPECT_TRUE(near(front.bounds(), QRectF(0, 0, 80, 50)));
    // The top view has the front (z 40) at the bottom; the right view the front at the left.
    EXPECT_TRUE(near(top.bounds(), QRectF(0, -40, 80, 40)));
    EXPECT_TRUE(near(right.bounds(), QRectF(-40, 0, 40, 50)));

    // From the front the hole lies inside the base: its sides are hidden, not drawn.
    EXPECT_TRUE(hasVerticalLine(front.hidden, 44, 0, 10));
    EXPECT_TRUE(hasVerticalLine(front.hidden, 56, 0, 10));
    EXPECT_FALSE(hasVerticalLine(front.visible, 44, 0, 10));
    // From the right as well.
    EXPECT_TRUE(hasVerticalLine(right.hidden, -26, 0, 10));
    EXPECT_TRUE(hasVerticalLine(right.hidden, -14, 0, 10));
    // From the top the hole is a visible circle.
    EXPECT_TRUE(std::any_of(top.visible.begin(), top.visible.end(), [&](const QPolygonF &l) {
        return near(l.boundingRect(), QRectF(44, -26, 12, 12));
    }));
    // The default configuration has no hole to hide.
    EXPECT_FALSE(hasVerticalLine(projectHiddenLines(sampleSolid("bracket.mcdprt", "Default"), ViewDirection::Front).hidden,
                                 44, 0, 10));

    const ProjectedView iso = projectHiddenLines(solid, ViewDirection::Isometric);
    EXPECT_GT(iso.bounds().width(), 80);
    EXPECT_FALSE(iso.visible.isEmpty());
    EXPECT_TRUE(projectHiddenLines(TopoDS_Shape(), ViewDirection::Front).isEmpty());
}

TEST(ImageEncoding, APictureThatCannotBeWrittenGivesNoFile)
{
    EXPECT_FALSE(encodeTiff(QImage(), {}, QString()));
    EXPECT_FALSE(encodeImage(QImage(), "png", QString()));
    QImage picture(8, 8, QImage::Format_RGB32);
    picture.fill(Qt::white);
    EXPECT_FALSE(encodeImage(picture, "no-such-format", QString()));
    EXPECT_TRUE(encodeImage(picture, "png", QString()));
}

// Pixels whose channels differ: colour, not grey.
int colouredPixels(const QImage &image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = image.pixel(x, y);
            const int spread = qMax(qMax(qRed(p), qGreen(p)), qBlue(p)) - qMin(qMin(qRed(p), qGreen(p)), qBlue(p));
            count += spread > 6;
        }
    return count;
}

int darkPixels(const QImage &image, const QRect &area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            count += qGray(image.pixel(x, y)) < 160;
    return count;
}

class SheetExportTest : public ::testing::Test
{
protected:
    SheetExportTest() : app(testResolver(scratch), testSettings(scratch)) { QDir(scratch.path()).mkpath("out"); }

    ModelDocPtr open(const QString &sample)
    {
        auto request = app.getOpenDocSpec("S:\\" + sample);
        return app.openDoc7(*request);
    }
    // The native path of the export, or empty when SaveAs refused it.
    QString save(const ModelDocPtr &doc, const QString &name)
    {
        std::int32_t errors = -1, warnings = -1;
        if (!doc || !doc->extension().saveAs("C:\\out\\" + name, cad::mcSaveAsCurrentVersion,
                                             cad::mcSaveAsOptions_Silent, nullptr, errors, warnings))
            return {};
        return scratch.filePath("out/" + name);
    }

    QTemporaryDir scratch;
    CadApplication app;
};

TEST_F(SheetExportTest, ADrawingsPdfShowsTheViewsOfItsPartOnTheSheetsPaper)
{
    const QString pdf = save(open("layout.mcddrw"), "layout.pdf");
    ASSERT_FALSE(pdf.isEmpty());
    const QString info = runTool("pdfinfo", {pdf});
    EXPECT_TRUE(info.contains(QRegularExpression("Page size:\\s+1191 x 842 pts \\(A3\\)"))) << info.toStdString();
    EXPECT_TRUE(info.contains(QRegularExpression("Pages:\\s+3\\n"))) << info.toStdString();
    const QString text = runTool("pdftotext", {"-f", "1", "-l", "1", pdf, "-"});
    for (const char *label : {"Front", "Top", "Right", "Isometric", "Sheet: Sheet1"})
        EXPECT_TRUE(text.contains(label)) << label << "\n" << text.toStdString();

    // Lines where the sheet places its views (centres in mm from the lower
    // left corner), and none in the empty middle of the sheet.
    const QImage page = pdfPageImage(pdf, 1);
    ASSERT_FALSE(page.isNull());
    const double px = page.width() / 420.0;
    auto around = [&](double x, double y, double half) {
        return QRect(QPoint(qRound((x - half) * px), qRound((297 - y - half) * px)),
                     QPoint(qRound((x + half) * px), qRound((297 - y + half) * px)));
    };
    for (const QPointF &centre : {QPointF(110, 190), QPointF(110, 80), QPointF(260, 190), QPointF(320, 115)})
        EXPECT_GT(darkPixels(page, around(centre.x(), centre.y(), 20)), 40) << centre.x() << "," << centre.y();
    EXPECT_EQ(darkPixels(page, around(200, 135, 10)), 0);
}

TEST_F(SheetExportTest, PdfOptionsChooseColourOrGreyLineWeightsAndTheHeaderAndFooter)
{
    ModelDocPtr part = open("bracket.mcdprt");
    part->pageSetup().header = {"Left head", "Middle head", "Right head"};
    part->pageSetup().footer = {"", "Foot note", ""};

    // Never set: colour, the printer's weights, no header.
    const QString plain = save(part, "plain.pdf");
    const QImage colour = pdfPageImage(plain, 1);
    EXPECT_GT(colouredPixels(colour), 100);
    EXPECT_FALSE(runTool("pdftotext", {plain, "-"}).contains("Middle head"));

    app.preferences().setToggle(cad::mcPDFExportInColor, false);
    const QImage grey = pdfPageImage(save(part, "grey.pdf"), 1);
    ASSERT_FALSE(grey.isNull());
    EXPECT_EQ(colouredPixels(grey), 0);
    // Grey, not blank.
    EXPECT_GT(darkPixels(grey, grey.rect()), 300);

    app.preferences().setToggle(cad::mcPDFExportUseCurrentPrintLineWeights, false);
    const QImage thin = pdfPageImage(save(part, "thin.pdf"), 1, 72);
    app.preferences().setToggle(cad::mcPDFExportUseCurrentPrintLineWeights, true);
    const QImage heavy = pdfPageImage(save(part, "heavy.pdf"), 1, 72);
    // The view above the title block: the heavier pens blacken more of it.
    const QRect view(0, 0, heavy.width(), heavy.height() * 2 / 3);
    EXPECT_GT(darkPixels(heavy, view), darkPixels(thin, view) * 3 / 2);

    app.preferences().setToggle(cad::mcPDFExportPrintHeaderFooter, true);
    const QString headed = save(part, "headed.pdf");
    const QString text = runTool("pdftotext", {"-layout", headed, "-"});
    QStringList lines = text.split('\n');
    lines.removeIf([](const QString &l) { return l.trimmed().isEmpty(); });
    ASSERT_FALSE(lines.isEmpty());
    EXPECT_TRUE(lines.first().contains(QRegularExpression("Left head\\s+Middle head\\s+Right head")))
        << text.toStdString();
    EXPECT_TRUE(lines.last().contains("Foot note")) << text.toStdString();
}

struct TiffFields
{
    uint16_t compression = 0, bits = 0, samples = 0;
    uint32_t width = 0;
};

TiffFields tiffFields(const QString &path)
{
    TiffFields f;
    if (TIFF *tif = TIFFOpen(path.toLocal8Bit().constData(), "r")) {
        TIFFGetField(tif, TIFFTAG_COMPRESSION, &f.compression);
        TIFFGetField(tif, TIFFTAG_BITSPERSAMPLE, &f.bits);
        TIFFGetField(tif, TIFFTAG_SAMPLESPERPIXEL, &f.samples);
        TIFFGetField(tif, TIFFTAG_IMAGEWIDTH, &f.width);
        TIFFClose(tif);
    }
    return f;
}

TEST_F(SheetExportTest, TifImageTypeAndCompressionReachTheFile)
{
    ModelDocPtr part = open("bracket.mcdprt");
    QHash<QString, qint64> sizes;
    for (int type : {0, 1, 2})
        for (int compression : {0, 1, 2}) {
            const QString label = QStringLiteral("type %1, compression %2").arg(type).arg(compression);
            app.preferences().setInteger(cad::mcTiffImageType, type);
            app.preferences().setInteger(cad::mcTiffCompressionScheme, compression);
            const QString path = save(part, QStringLiteral("p%1%2.tif").arg(type).arg(compression));
            ASSERT_FALSE(path.isEmpty()) << label.toStdString();
            const TiffFields f = tiffFields(path);
            EXPECT_EQ(f.compression, (std::array<uint16_t, 3>{COMPRESSION_NONE, COMPRESSION_PACKBITS,
                                                               COMPRESSION_CCITTFAX4}[compression]))
                << label.toStdString();
            // Fax compression is for bilevel pictures only.
            const bool bilevel = type == 0 || compression == 2;
            EXPECT_EQ(f.bits, bilevel ? 1 : 8) << label.toStdString();
            EXPECT_EQ(f.samples, type == 1 && !bilevel ? 3 : 1) << label.toStdString();
            EXPECT_EQ(f.width, 842u) << label.toStdString();
            sizes[label] = QFileInfo(path).size();

            const QImage back = QImageReader(path).read();
            ASSERT_FALSE(back.isNull()) << label.toStdString();
            EXPECT_EQ(back.allGray(), type != 1 || bilevel) << label.toStdString();
            if (bilevel) {
                const QImage rgb = back.convertToFormat(QImage::Format_RGB32);
                bool twoTones = true;
                for (int y = 0; y < rgb.height() && twoTones; ++y)
                    for (int x = 0; x < rgb.width() && twoTones; ++x)
                        twoTones = rgb.pixel(x, y) == qRgb(0, 0, 0) || rgb.pixel(x, y) == qRgb(255, 255, 255);
                EXPECT_TRUE(twoTones) << label.toStdString();
            }
            // Drawn, not blank: the view's lines and the title block.
            EXPECT_GT(darkPixels(back.convertToFormat(QImage::Format_RGB32), back.rect()), 300) << label.toStdString();
        }
    // The compressions compress a line drawing.
    for (int type : {0, 1, 2})
        EXPECT_LT(sizes[QStringLiteral("type %1, compression 1").arg(type)],
                  sizes[QStringLiteral("type %1, compression 0").arg(type)] / 2);
    EXPECT_LT(sizes["type 0, compression 2"], sizes["type 0, compression 1"]);
}

TEST_F(SheetExportTest, PsdHoldsThePictureInTheChosenImageType)
{
    ModelDocPtr part = open("bracket.mcdprt");
    const int header = 26 + 4 + 4 + 4 + 2;
    struct Case { int type; int channels; int depth; int mode; qsizetype planeBytes; };
    for (const Case &c : {Case{0, 1, 1, 0, (842 + 7) / 8 * 595}, Case{1, 3, 8, 3, 842 * 595},
                          Case{2, 1, 8, 1, 842 * 595}}) {
        app.preferences().setInteger(cad::mcTiffImageType, c.type);
        const QByteArray psd = fileBytes(save(part, QStringLiteral("p%1.psd").arg(c.type)));
        ASSERT_GE(psd.size(), header) << c.type;
        auto u16 = [&](int at) { return (uchar(psd[at]) << 8) | uchar(psd[at + 1]); };
        EXPECT_EQ(u16(12), c.channels) << c.type;
        EXPECT_EQ(u16(22), c.depth) << c.type;
        EXPECT_EQ(u16(24), c.mode) << c.type;
        EXPECT_EQ(psd.size(), header + c.channels * c.planeBytes) << c.type;
    }
}

// A print system with one queue that keeps what it was sent.
class KeepingQueue final : public Printers
{
public:
    QStringList names() override { return {QStringLiteral("Queue")}; }
    QString printPdf(const QString &printer, const QString &pdfPath, int copies, const QString &) override
    {
        const QString kept = QStringLiteral("%1/job-%2.pdf").arg(folder).arg(jobs.size() + 1);
        QFile::copy(pdfPath, kept);
        jobs << kept;
        this->copies << copies;
        printers << printer;
        return {};
    }
    QString folder;
    QStringList jobs;
    QList<int> copies;
    QStringList printers;
};

class SheetPrintTest : public SheetExportTest
{
protected:
    SheetPrintTest()
    {
        queue.folder = scratch.path();
        previous = Printers::setInstance(&queue);
        app.setSpoolFile(scratch.filePath("spool.jsonl"));
    }
    ~SheetPrintTest() override { Printers::setInstance(previous); }

    KeepingQueue queue;
    Printers *previous = nullptr;
};

// The words pdftotext finds, with their boxes in points.
QHash<QString, QRectF> wordBoxes(const QString &pdf, int page)
{
    QHash<QString, QRectF> boxes;
    const QString html = runTool("pdftotext", {"-bbox", "-f", QString::number(page), "-l", QString::number(page), pdf, "-"});
    static const QRegularExpression word(
        R"re(<word xMin="([\d.]+)" yMin="([\d.]+)" xMax="([\d.]+)" yMax="([\d.]+)">([^<]*)</word>)re");
    for (auto it = word.globalMatch(html); it.hasNext();) {
        const auto m = it.next();
        boxes.insert(m.captured(5), QRectF(QPointF(m.captured(1).toDouble(), m.captured(2).toDouble()),
                                           QPointF(m.captured(3).toDouble(), m.captured(4).toDouble())));
    }
    return boxes;
}

TEST_F(SheetPrintTest, TheQueueGetsOnePagePerSheetOnThePaperMarginsHeaderAndFooterOfThePageSetUp)
{
    ModelDocPtr drawing = open("layout.mcddrw");
    drawing->pageSetup().paperSize = 8;
    drawing->pageSetup().orientation = cad::mcPageSetupOrient_Portrait;
    drawing->pageSetup().header = {"HeadLeft", "HeadMiddle", ""};
    drawing->pageSetup().footer = {"", "", "FootRight"};
    app.preferences().setToggle(cad::mcPageSetupPrinterUsePrinterMargin, false);
    app.preferences().setReal(cad::mcPageSetupPrinterTopMargin, 0.03);
    app.preferences().setReal(cad::mcPageSetupPrinterBottomMargin, 0.02);
    app.preferences().setReal(cad::mcPageSetupPrinterLeftMargin, 0.025);
    app.preferences().setReal(cad::mcPageSetupPrinterRightMargin, 0.015);
    ASSERT_TRUE(drawing->extension().printOut2(std::vector<std::int32_t>{3, 1}, 2, false, "Queue", ""))
        << app.takeErrorMessages().join('\n').toStdString();
    ASSERT_EQ(queue.jobs.size(), 1);
    EXPECT_EQ(queue.copies, QList<int>{2});
    const QString job = queue.jobs.first();

    const QString info = runTool("pdfinfo", {job});
    EXPECT_TRUE(info.contains(QRegularExpression("Page size:\\s+842 x 1191 pts \\(A3\\)"))) << info.toStdString();
    EXPECT_TRUE(info.contains(QRegularExpression("Pages:\\s+2\\n"))) << info.toStdString();
    EXPECT_TRUE(runTool("pdftotext", {"-f", "1", "-l", "1", job, "-"}).contains("Sheet: Detail A"));
    EXPECT_TRUE(runTool("pdftotext", {"-f", "2", "-l", "2", job, "-"}).contains("Sheet: Sheet1"));

    // Header and footer sit inside the margins: 25 mm from the left, 30 mm
    // from the top, 15 mm from the right and 20 mm from the bottom.
    constexpr double pt = 72 / 25.4;
    const QHash<QString, QRectF> words = wordBoxes(job, 1);
    ASSERT_TRUE(words.contains("HeadLeft") && words.contains("HeadMiddle") && words.contains("FootRight"))
        << QStringList(words.keys()).join(' ').toStdString();
    EXPECT_NEAR(words["HeadLeft"].left(), 25 * pt, 2);
    EXPECT_GT(words["HeadLeft"].top(), 30 * pt);
    EXPECT_LT(words["HeadLeft"].top(), 38 * pt);
    EXPECT_NEAR(words["HeadMiddle"].center().x(), (25 + (297 - 40) / 2.0) * pt, 2);
    EXPECT_NEAR(words["FootRight"].right(), (297 - 15) * pt, 2);
    EXPECT_LT(words["FootRight"].bottom(), (420 - 20) * pt);
    EXPECT_GT(words["FootRight"].bottom(), (420 - 28) * pt);

    // With the printer's margins the page set-up's paper and orientation stay.
    app.preferences().setToggle(cad::mcPageSetupPrinterUsePrinterMargin, true);
    drawing->pageSetup().paperSize = 9;
    drawing->pageSetup().orientation = cad::mcPageSetupOrient_Landscape;
    ASSERT_TRUE(drawing->extension().printOut2(std::nullopt, 1, false, "Queue", ""));
    ASSERT_EQ(queue.jobs.size(), 2);
    const QString second = runTool("pdfinfo", {queue.jobs[1]});
    EXPECT_TRUE(second.contains(QRegularExpression("Page size:\\s+842 x 595 pts \\(A4\\)"))) << second.toStdString();
    EXPECT_TRUE(second.contains(QRegularExpression("Pages:\\s+3\\n"))) << second.toStdString();
    EXPECT_NEAR(wordBoxes(queue.jobs[1], 1)["HeadLeft"].left(), 6.35 * pt, 2);
}

} // namespace
