#include "cadsim/model/exportwriter.h"

#include "cadsim/model/imageencoding.h"

#include <QBuffer>
#include <QDateTime>
#include <QFileInfo>
#include <QImage>
#include <QImageWriter>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>
#include <QXmlStreamWriter>
#include <QtEndian>

#include <array>
#include <cstring>

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

struct Triangle
{
    std::array<float, 3> normal;
    std::array<std::array<float, 3>, 3> vertices;
};

// A 40 x 20 x 10 block, two triangles per face, counter-clockwise seen from outside.
std::vector<Triangle> blockTriangles()
{
    const float sx = 40, sy = 20, sz = 10;
    auto corner = [&](int i) { return std::array<float, 3>{(i & 1) ? sx : 0, (i & 2) ? sy : 0, (i & 4) ? sz : 0}; };
    struct Face { std::array<int, 4> c; std::array<float, 3> n; };
    const Face faces[] = {{{0, 2, 3, 1}, {0, 0, -1}}, {{4, 5, 7, 6}, {0, 0, 1}}, {{0, 1, 5, 4}, {0, -1, 0}},
                          {{2, 6, 7, 3}, {0, 1, 0}},  {{0, 4, 6, 2}, {-1, 0, 0}}, {{1, 3, 7, 5}, {1, 0, 0}}};
    std::vector<Triangle> triangles;
    for (const Face &f : faces) {
        triangles.push_back({f.n, {corner(f.c[0]), corner(f.c[1]), corner(f.c[2])}});
        triangles.push_back({f.n, {corner(f.c[0]), corner(f.c[2]), corner(f.c[3])}});
    }
    return triangles;
}

QByteArray asciiOnly(const QString &text)
{
    QByteArray out;
    for (QChar c : text)
        out.append(c.unicode() >= 32 && c.unicode() < 127 ? char(c.unicode()) : '_');
    return out;
}

QByteArray stl(const ExportView &view, bool binary)
{
    const auto triangles = blockTriangles();
    const QByteArray name = asciiOnly(view.documentName() + QLatin1Char(' ') + view.itemsText()).replace(' ', '_');
    QByteArray out;
    if (binary) {
        // The header must not begin with "solid", or readers take it for text.
        QByteArray header = "mcsim binary STL " + name;
        header = header.left(80).leftJustified(80, ' ');
        out.append(header);
        auto put32 = [&](quint32 v) { quint32 le = qToLittleEndian(v); out.append(reinterpret_cast<const char *>(&le), 4); };
        auto putFloat = [&](float f) { quint32 bits; std::memcpy(&bits, &f, 4); put32(bits); };
        put32(quint32(triangles.size()));
        for (const Triangle &t : triangles) {
            for (float f : t.normal)
                putFloat(f);
            for (const auto &v : t.vertices)
                for (float f : v)
                    putFloat(f);
            out.append(2, '\0');
        }
        return out;
    }
    out.append("solid " + name + '\n');
    for (const Triangle &t : triangles) {
        out.append(QStringLiteral("  facet normal %1 %2 %3\n    outer loop\n")
                       .arg(t.normal[0]).arg(t.normal[1]).arg(t.normal[2]).toLatin1());
        for (const auto &v : t.vertices)
            out.append(QStringLiteral("      vertex %1 %2 %3\n").arg(v[0]).arg(v[1]).arg(v[2]).toLatin1());
        out.append("    endloop\n  endfacet\n");
    }
    out.append("endsolid " + name + '\n');
    return out;
}

// A STEP string: apostrophes and backslashes doubled, everything outside
// printable ASCII as \X2\hhhh\X0\.
QByteArray stepString(const QString &text)
{
    QByteArray out = "'";
    for (QChar c : text) {
        const ushort u = c.unicode();
        if (u == '\'')
            out.append("''");
        else if (u == '\\')
            out.append("\\\\");
        else if (u >= 32 && u < 127)
            out.append(char(u));
        else
            out.append("\\X2\\" + QByteArray::number(u, 16).toUpper().rightJustified(4, '0') + "\\X0\\");
    }
    return out + "'";
}

QByteArray step(const ExportView &view)
{
    const QString stamp = QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
    QByteArray out = "ISO-10303-21;\nHEADER;\n";
    out.append("FILE_DESCRIPTION((" + stepString(QString::fromUtf8(view.compactJson())) + "),'2;1');\n");
    out.append("FILE_NAME(" + stepString(view.d.target) + ",'" + stamp.toLatin1()
               + "',('mcsim'),(''),'mcsim','mcsim','');\n");
    out.append("FILE_SCHEMA(('CONFIG_CONTROL_DESIGN'));\nENDSEC;\nDATA;\n");
    out.append("#1=CARTESIAN_POINT('origin',(0.,0.,0.));\n"
               "#2=DIRECTION('axis',(0.,0.,1.));\n"
               "#3=DIRECTION('ref_direction',(1.,0.,0.));\n"
               "#4=AXIS2_PLACEMENT_3D(" + stepString(view.itemsText()) + ",#1,#2,#3);\n");
    out.append("ENDSEC;\nEND-ISO-10303-21;\n");
    return out;
}

// IGES: 80-column records, columns 73 to 80 the section letter and its
// sequence number.
class IgesWriter
{
public:
    void add(char section, const QByteArray &data)
    {
        int &count = m_counts[sectionIndex(section)];
        ++count;
        m_out.append(data.leftJustified(72, ' ', true) + section
                     + QByteArray::number(count).rightJustified(7, ' ') + '\n');
    }
    // Free text split over records of the section, at most width columns each.
    void addText(char section, const QByteArray &text, int width = 72)
    {
        for (qsizetype i = 0; i < text.size(); i += width)
            add(section, text.mid(i, width));
    }
    int count(char section) const { return m_counts[sectionIndex(section)]; }
    QByteArray finish()
    {
        const QByteArray t = "S" + QByteArray::number(count('S')).rightJustified(7, '0') + "G"
                             + QByteArray::number(count('G')).rightJustified(7, '0') + "D"
                             + QByteArray::number(count('D')).rightJustified(7, '0') + "P"
                             + QByteArray::number(count('P')).rightJustified(7, '0');
        add('T', t);
        return m_out;
    }

private:
    static int sectionIndex(char section) { return QByteArray("SGDPT").indexOf(section); }
    std::array<int, 5> m_counts{};
    QByteArray m_out;
};

QByteArray hollerith(const QByteArray &text) { return QByteArray::number(text.size()) + 'H' + text; }

QByteArray iges(const ExportView &view)
{
    IgesWriter w;
    w.addText('S', asciiOnly(QString::fromUtf8(view.compactJson())));
    const QByteArray stamp = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd.HHmmss")).toLatin1();
    const QByteArray global = "1H,,1H;," + hollerith("mcsim") + ',' + hollerith(asciiOnly(view.d.target)) + ','
                              + hollerith("mcsim") + ',' + hollerith("mcsim") + ",32,38,6,308,15,"
                              + hollerith(asciiOnly(view.documentName())) + ",1.,2," + hollerith("MM") + ",1,0.01,"
                              + hollerith(stamp) + ",0.001,1000.," + hollerith("mcsim") + ',' + hollerith("mcsim")
                              + ",11,0," + hollerith(stamp) + ';';
    w.addText('G', global);
    // One line entity (type 110): two directory records, one parameter record.
    auto field = [](int v) { return QByteArray::number(v).rightJustified(8, ' '); };
    w.add('D', field(110) + field(1) + field(0) + field(0) + field(0) + field(0) + field(0) + field(0)
                   + QByteArray("00000000"));
    w.add('D', field(110) + field(0) + field(0) + field(1) + field(0) + QByteArray(8, ' ') + QByteArray(8, ' ')
                   + QByteArray("    LINE") + field(0));
    w.add('P', QByteArray("110,0.,0.,0.,40.,0.,0.;").leftJustified(64, ' ') + field(1));
    return w.finish();
}

QByteArray vrml(const ExportView &view)
{
    QByteArray json = view.compactJson();
    QByteArray quoted = json;
    quoted.replace('\\', "\\\\").replace('"', "\\\"");
    return "#VRML V2.0 utf8\n# " + json + "\nWorldInfo {\n  title \"" + view.documentName().toUtf8().replace('"', "'")
           + "\"\n  info [ \"" + quoted + "\" ]\n}\n"
           + "Shape {\n  appearance Appearance { material Material { diffuseColor 0.7 0.75 0.8 } }\n"
           + "  geometry Box { size 40 20 10 }\n}\n";
}

QByteArray parasolidText(const ExportView &view)
{
    QByteArray out;
    out.append("**ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz**************************\n");
    out.append("**PARASOLID !\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~0123456789**************************\n");
    out.append("**PART1;MC=x86_64;APPL=mcsim;FORMAT=text;GUISE=transmit;KEY="
               + asciiOnly(view.documentName()) + ";FILE=" + asciiOnly(view.d.target) + ";\n");
    out.append("**PART2;SCH=SCH_0_0;USFLD_SIZE=0;DESC=" + asciiOnly(QString::fromUtf8(view.compactJson())) + ";\n");
    out.append("**PART3;\n");
    out.append("**END_OF_HEADER*****************************************************************\n");
    out.append("T51 : TRANSMIT FILE created by mcsim\n0\n");
    return out;
}

QByteArray acisText(const ExportView &view)
{
    auto counted = [](const QByteArray &s) { return '@' + QByteArray::number(s.size()) + ' ' + s; };
    const QByteArray date = QDateTime::currentDateTimeUtc().toString(QStringLiteral("ddd MMM dd HH:mm:ss yyyy")).toLatin1();
    return "700 0 0 0\n" + counted("mcsim " + asciiOnly(QString::fromUtf8(view.compactJson()))) + ' '
           + counted("ACIS 7.0 NT") + ' ' + counted(date) + "\n1 9.9999999999999995e-07 1e-10\nEnd-of-ACIS-data\n";
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
        return '(' + asciiOnly(s).replace('\\', "\\\\").replace('(', "\\(").replace(')', "\\)") + ')';
    };
    return "%!PS-Adobe-3.0\n%%Creator: mcsim\n%%Title: " + asciiOnly(view.documentName()) + "\n%%BoundingBox: 0 0 842 595\n"
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
    if (f == QLatin1String("stl")) {
        const bool binary = description.value(QStringLiteral("preferences")).toObject()
                                .value(QStringLiteral("mcSTLBinaryFormat")).toBool();
        return stl(view, binary);
    }
    if (f == QLatin1String("step") || f == QLatin1String("stp"))
        return step(view);
    if (f == QLatin1String("igs") || f == QLatin1String("iges"))
        return iges(view);
    if (f == QLatin1String("wrl"))
        return vrml(view);
    if (f == QLatin1String("x_t"))
        return parasolidText(view);
    if (f == QLatin1String("sat"))
        return acisText(view);
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
    static const QStringList own = {"pdf", "tif", "jpg", "png", "bmp", "psd", "stl", "step", "stp", "igs",
                                    "iges", "wrl", "x_t", "sat", "dxf", "ai", "scnxml", "xaml"};
    return own.contains(format);
}
