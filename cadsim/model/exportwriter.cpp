#include "cadsim/model/exportwriter.h"

#include "base/codepage.h"
#include "cadsim/model/imageencoding.h"

#include <QBuffer>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>
#include <QXmlStreamWriter>


namespace {

QString valueText(const QJsonValue &value)
{
    if (value.isArray())
        return value.toVariant().toStringList().join(QLatin1Char('|'));
    if (value.isBool())
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    return value.toVariant().toString();
}

// What one page, image or solid of an export shows.
struct ExportView
{
    const ExportDescription &d;
    const QJsonObject &description;

    QString documentName() const
    {
        const QString path = d.source;
        return path.mid(path.lastIndexOf(QLatin1Char('\\')) + 1);
    }
    QStringList items() const { return d.documentType == DocumentType::Drawing ? d.sheets : d.configurations; }
    QString itemKind() const
    {
        return d.documentType == DocumentType::Drawing ? QStringLiteral("Sheet") : QStringLiteral("Configuration");
    }
    QString itemsText() const { return items().join(QStringLiteral(", ")); }
    QByteArray compactJson() const { return QJsonDocument(description).toJson(QJsonDocument::Compact); }
    QString optionsText() const
    {
        QStringList parts;
        const QJsonObject prefs = description.value(QStringLiteral("preferences")).toObject();
        for (auto it = prefs.begin(); it != prefs.end(); ++it)
            parts << it.key() + QLatin1Char('=') + valueText(it.value());
        parts << QStringLiteral("version=%1").arg(d.version) << QStringLiteral("options=%1").arg(d.options);
        return parts.join(QStringLiteral("; "));
    }
};

// The pages of an export: one per sheet or configuration, each with the
// views of the solid it shows.
SheetPage sheetPage(const ExportView &view, const SheetOptions &sheet, const QString &item)
{
    SheetPage page;
    page.documentName = view.documentName();
    page.itemKind = view.itemKind();
    page.item = item;
    page.format = view.d.format;
    page.notes = view.optionsText();
    page.sheetMm = sheet.sheetMm;
    if (sheet.views)
        page.views = sheet.views(item);
    return page;
}

constexpr double kPointsPerMm = 72 / 25.4;

QByteArray xmpMetadata(const ExportView &view, const QString &title)
{
    QByteArray xml;
    QXmlStreamWriter w(&xml);
    w.writeStartElement(QStringLiteral("x:xmpmeta"));
    w.writeAttribute(QStringLiteral("xmlns:x"), QStringLiteral("adobe:ns:meta/"));
    w.writeStartElement(QStringLiteral("rdf:RDF"));
    w.writeAttribute(QStringLiteral("xmlns:rdf"), QStringLiteral("http://www.w3.org/1999/02/22-rdf-syntax-ns#"));
    w.writeStartElement(QStringLiteral("rdf:Description"));
    w.writeAttribute(QStringLiteral("rdf:about"), QString());
    w.writeAttribute(QStringLiteral("xmlns:dc"), QStringLiteral("http://purl.org/dc/elements/1.1/"));
    w.writeAttribute(QStringLiteral("xmlns:pdf"), QStringLiteral("http://ns.adobe.com/pdf/1.3/"));
    w.writeStartElement(QStringLiteral("dc:title"));
    w.writeStartElement(QStringLiteral("rdf:Alt"));
    w.writeStartElement(QStringLiteral("rdf:li"));
    w.writeAttribute(QStringLiteral("xml:lang"), QStringLiteral("x-default"));
    w.writeCharacters(title);
    w.writeEndElement();
    w.writeEndElement();
    w.writeEndElement();
    w.writeStartElement(QStringLiteral("dc:subject"));
    w.writeStartElement(QStringLiteral("rdf:Bag"));
    for (const QString &item : view.items())
        w.writeTextElement(QStringLiteral("rdf:li"), item);
    w.writeEndElement();
    w.writeEndElement();
    w.writeTextElement(QStringLiteral("pdf:Keywords"), view.optionsText());
    w.writeTextElement(QStringLiteral("dc:source"), view.d.source);
    w.writeEndElement();
    w.writeEndElement();
    w.writeEndElement();
    return xml;
}

QByteArray pdf(const ExportView &view, const SheetOptions &sheet)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        const QString title = view.documentName() + QStringLiteral(" - ") + view.itemsText();
        writer.setTitle(title);
        writer.setCreator(QStringLiteral("mcsim"));
        writer.setDocumentXmpMetadata(xmpMetadata(view, title));
        writer.setResolution(72);
        writer.setPageLayout(sheet.layout);
        QPainter p(&writer);
        // The painter's origin is the corner of the area inside the margins.
        const QRectF area(QPointF(0, 0), sheet.layout.paintRect(QPageLayout::Millimeter).size());
        const QStringList items = view.items();
        for (qsizetype i = 0; i < items.size(); ++i) {
            if (i > 0)
                writer.newPage();
            paintSheet(p, area, kPointsPerMm, sheetPage(view, sheet, items[i]), sheet.style);
        }
    }
    return buffer.data();
}

// The first sheet or configuration as a picture of the whole page, a pixel
// a point. Null when the picture cannot be had (no memory for it).
QImage renderImage(const ExportView &view, const SheetOptions &sheet)
{
    const QSizeF pageMm = sheet.layout.fullRect(QPageLayout::Millimeter).size();
    QImage image((pageMm * kPointsPerMm).toSize(), QImage::Format_RGB32);
    if (image.isNull())
        return image;
    image.setDotsPerMeterX(qRound(72 / 0.0254));
    image.setDotsPerMeterY(qRound(72 / 0.0254));
    image.fill(Qt::white);
    QPainter p(&image);
    paintSheet(p, QRectF(QPointF(0, 0), pageMm), kPointsPerMm, sheetPage(view, sheet, view.items().value(0)),
               sheet.style);
    return image;
}

std::optional<QByteArray> image(const ExportView &view, const SheetOptions &sheet, const char *format)
{
    const QString description = QString::fromUtf8(view.compactJson());
    const QImage picture = renderImage(view, sheet);
    if (QByteArray(format) == "tiff")
        return encodeTiff(picture, sheet.image, description);
    return encodeImage(picture, format, description);
}

// Photoshop layout: header, colour-mode, resource and layer sections (all
// empty), then the raw planes: one bit a pixel for a bilevel picture, else
// grey or red, green and blue bytes.
std::optional<QByteArray> psd(const ExportView &view, const SheetOptions &sheet)
{
    const QImage rendered = renderImage(view, sheet);
    if (rendered.isNull())
        return std::nullopt;
    const QImage picture = convertToImageType(rendered, sheet.image.type);
    const bool bilevel = sheet.image.type == ImageType::Bilevel;
    const int channels = sheet.image.type == ImageType::Rgb ? 3 : 1;
    QByteArray out;
    auto u16 = [&](quint16 v) { out.append(char(v >> 8)).append(char(v & 0xff)); };
    auto u32 = [&](quint32 v) { u16(quint16(v >> 16)); u16(quint16(v & 0xffff)); };
    out.append("8BPS");
    u16(1);
    out.append(6, '\0');
    u16(quint16(channels));
    u32(quint32(picture.height()));
    u32(quint32(picture.width()));
    u16(bilevel ? 1 : 8);
    u16(bilevel ? 0 : channels == 1 ? 1 : 3); // bitmap, greyscale or RGB mode
    u32(0);
    u32(0);
    u32(0);
    u16(0);
    const int rowBytes = bilevel ? (picture.width() + 7) / 8 : picture.width();
    for (int c = 0; c < channels; ++c)
        for (int y = 0; y < picture.height(); ++y) {
            const uchar *line = picture.constScanLine(y);
            for (int x = 0; x < rowBytes; ++x) {
                // Bitmap mode: a set bit is black.
                if (bilevel)
                    out.append(char(picture.color(0) == qRgb(0, 0, 0) ? ~line[x] : line[x]));
                else
                    out.append(char(line[x * channels + c]));
            }
        }
    return out;
}

// The first sheet on its paper in millimetres (y up, origin at the lower
// left corner): frame and title block on layer "FRAME", the views' edges on
// "VISIBLE" and "HIDDEN", the texts on "TEXT".
QByteArray dxf(const ExportView &view, const SheetOptions &sheet)
{
    QByteArray out;
    auto pair = [&](int code, const QByteArray &value) { out.append(QByteArray::number(code) + '\n' + value + '\n'); };
    auto number = [](double v) { return QByteArray::number(v, 'f', 3); };
    const QSizeF pageMm = sheet.layout.fullRect(QPageLayout::Millimeter).size();
    auto line = [&](const QByteArray &layer, QPointF a, QPointF b) {
        pair(0, "LINE");
        pair(8, layer);
        pair(10, number(a.x()));
        pair(20, number(pageMm.height() - a.y()));
        pair(30, "0.0");
        pair(11, number(b.x()));
        pair(21, number(pageMm.height() - b.y()));
        pair(31, "0.0");
    };
    auto rect = [&](const QByteArray &layer, const QRectF &r) {
        line(layer, r.topLeft(), r.topRight());
        line(layer, r.topRight(), r.bottomRight());
        line(layer, r.bottomRight(), r.bottomLeft());
        line(layer, r.bottomLeft(), r.topLeft());
    };
    auto text = [&](QPointF at, double height, const QString &value) {
        pair(0, "TEXT");
        pair(8, "TEXT");
        pair(10, number(at.x()));
        pair(20, number(pageMm.height() - at.y()));
        pair(30, "0.0");
        pair(40, number(height));
        pair(1, value.toUtf8());
    };

    pair(999, view.compactJson());
    pair(0, "SECTION");
    pair(2, "HEADER");
    pair(9, "$ACADVER");
    pair(1, "AC1009");
    pair(9, "$INSUNITS");
    pair(70, "4"); // millimetres
    pair(9, "$EXTMIN");
    pair(10, "0.0");
    pair(20, "0.0");
    pair(9, "$EXTMAX");
    pair(10, number(pageMm.width()));
    pair(20, number(pageMm.height()));
    pair(0, "ENDSEC");
    pair(0, "SECTION");
    pair(2, "ENTITIES");
    const SheetPage page = sheetPage(view, sheet, view.items().value(0));
    const SheetGeometry g = sheetGeometry(QRectF(QPointF(0, 0), pageMm), page, sheet.style);
    rect("FRAME", g.frame);
    rect("FRAME", g.titleBlock);
    const QPointF t = g.titleBlock.topLeft() + QPointF(3, 8);
    text(t, 5, page.documentName + QStringLiteral(" - ") + view.itemsText());
    text(t + QPointF(0, 8), 3.5, page.itemKind + QStringLiteral(": ") + page.item);
    for (const PlacedView &placed : g.views) {
        for (const auto &[layer, lines] : {std::pair<QByteArray, const QList<QPolygonF> *>{"HIDDEN", &placed.view->hidden},
                                           {"VISIBLE", &placed.view->visible}})
            for (const QPolygonF &polyline : *lines)
                for (qsizetype i = 1; i < polyline.size(); ++i)
                    line(layer, placed.toPage.map(polyline[i - 1]), placed.toPage.map(polyline[i]));
    }
    pair(0, "ENDSEC");
    pair(0, "EOF");
    return out;
}

QByteArray postscript(const ExportView &view)
{
    auto psString = [](const QString &s) {
        return '(' + printableAscii(s).replace('\\', "\\\\").replace('(', "\\(").replace(')', "\\)") + ')';
    };
    return "%!PS-Adobe-3.0\n%%Creator: mcsim\n%%Title: " + printableAscii(view.documentName()) + "\n%%BoundingBox: 0 0 842 595\n"
           + "%%Pages: 1\n%%EndComments\n%%Page: 1 1\n/Helvetica findfont 24 scalefont setfont\n"
           + "40 540 moveto " + psString(view.documentName()) + " show\n"
           + "/Helvetica findfont 14 scalefont setfont\n40 510 moveto " + psString(view.itemKind() + ": " + view.itemsText())
           + " show\n40 40 762 515 rectstroke\nshowpage\n%%Trailer\n%%EOF\n";
}

QByteArray xmlScene(const ExportView &view, bool xaml)
{
    QByteArray out;
    QXmlStreamWriter w(&out);
    w.setAutoFormatting(true);
    w.writeStartDocument();
    if (xaml) {
        w.writeStartElement(QStringLiteral("Viewport3D"));
        w.writeDefaultNamespace(QStringLiteral("http://schemas.microsoft.com/winfx/2006/xaml/presentation"));
        w.writeAttribute(QStringLiteral("Tag"), QString::fromUtf8(view.compactJson()));
        w.writeStartElement(QStringLiteral("ModelVisual3D"));
        w.writeEndElement();
    } else {
        w.writeStartElement(QStringLiteral("Scene"));
        w.writeAttribute(QStringLiteral("name"), view.documentName());
        w.writeTextElement(QStringLiteral("Description"), QString::fromUtf8(view.compactJson()));
        for (const QString &item : view.items()) {
            w.writeStartElement(QStringLiteral("Node"));
            w.writeAttribute(QStringLiteral("name"), item);
            w.writeEndElement();
        }
    }
    w.writeEndElement();
    w.writeEndDocument();
    return out;
}

} // namespace

std::optional<QByteArray> ExportWriter::write(const ExportDescription &export_, const QJsonObject &description,
                                               const SheetOptions &sheet)
{
    const ExportView view{export_, description};
    const QString f = export_.format;
    if (f == QLatin1String("pdf"))
        return pdf(view, sheet);
    if (f == QLatin1String("tif"))
        return image(view, sheet, "tiff");
    if (f == QLatin1String("jpg"))
        return image(view, sheet, "jpeg");
    if (f == QLatin1String("png") || f == QLatin1String("bmp"))
        return image(view, sheet, f.toLatin1().constData());
    if (f == QLatin1String("psd"))
        return psd(view, sheet);
    if (f == QLatin1String("dxf"))
        return dxf(view, sheet);
    if (f == QLatin1String("ai"))
        return postscript(view);
    if (f == QLatin1String("scnxml") || f == QLatin1String("xaml"))
        return xmlScene(view, f == QLatin1String("xaml"));
    // No public syntax: the description as text.
    return QJsonDocument(description).toJson(QJsonDocument::Indented);
}

bool ExportWriter::hasOwnSyntax(const QString &format)
{
    static const QStringList own = {"pdf", "tif", "jpg", "png", "bmp", "psd", "dxf", "ai", "scnxml", "xaml"};
    return own.contains(format);
}
