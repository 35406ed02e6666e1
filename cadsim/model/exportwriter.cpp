#include "cadsim/model/exportwriter.h"

#include "base/codepage.h"


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

// A simple bracket outline with a hole, scaled into the given box.
void paintOutline(QPainter &p, const QRectF &box)
{
    const qreal w = box.width(), h = box.height();
    QPainterPath outline;
    outline.moveTo(box.left(), box.bottom());
    outline.lineTo(box.left(), box.top());
    outline.lineTo(box.left() + 0.3 * w, box.top());
    outline.lineTo(box.left() + 0.3 * w, box.top() + 0.6 * h);
    outline.lineTo(box.right(), box.top() + 0.6 * h);
    outline.lineTo(box.right(), box.bottom());
    outline.closeSubpath();
    outline.addEllipse(QPointF(box.left() + 0.15 * w, box.top() + 0.25 * h), 0.08 * w, 0.08 * w);
    p.setPen(QPen(Qt::black, qMax<qreal>(1.0, w / 200)));
    p.setBrush(QColor(225, 232, 240));
    p.drawPath(outline);
}

// One sheet or configuration: frame, names, options and the outline.
void paintItem(QPainter &p, const QRectF &page, const ExportView &view, const QString &item)
{
    p.fillRect(page, Qt::white);
    const qreal margin = page.width() * 0.04;
    const QRectF frame = page.adjusted(margin, margin, -margin, -margin);
    p.setPen(QPen(Qt::black, qMax<qreal>(1.0, page.width() / 400)));
    p.setBrush(Qt::NoBrush);
    p.drawRect(frame);

    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(qMax(8, int(page.height() / 18)));
    p.setFont(font);
    const qreal line = page.height() / 12;
    QRectF text(frame.left() + margin / 2, frame.top() + margin / 2, frame.width() - margin, line);
    p.drawText(text, Qt::AlignLeft | Qt::AlignVCenter, view.documentName());
    font.setPixelSize(qMax(6, int(page.height() / 28)));
    p.setFont(font);
    text.translate(0, line);
    p.drawText(text, Qt::AlignLeft | Qt::AlignVCenter, view.itemKind() + QStringLiteral(": ") + item);
    text.translate(0, line * 0.7);
    p.drawText(text, Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Format: ") + view.d.format.toUpper());
    font.setPixelSize(qMax(5, int(page.height() / 45)));
    p.setFont(font);
    const QRectF options(text.left(), text.bottom(), text.width() * 0.45, frame.bottom() - text.bottom() - margin / 2);
    p.drawText(options, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, view.optionsText());
    paintOutline(p, QRectF(frame.left() + frame.width() * 0.55, text.bottom(), frame.width() * 0.4,
                           frame.bottom() - text.bottom() - margin));
}

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

QByteArray pdf(const ExportView &view)
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
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageOrientation(QPageLayout::Landscape);
        QPainter p(&writer);
        const QRectF page(QPointF(0, 0), writer.pageLayout().paintRectPixels(writer.resolution()).size());
        const QStringList items = view.items();
        for (qsizetype i = 0; i < items.size(); ++i) {
            if (i > 0)
                writer.newPage();
            paintItem(p, page, view, items[i]);
        }
    }
    return buffer.data();
}

QImage renderImage(const ExportView &view)
{
    QImage image(640, 452, QImage::Format_RGB32);
    QPainter p(&image);
    const QStringList items = view.items();
    paintItem(p, QRectF(image.rect()), view, items.value(0));
    return image;
}

QByteArray image(const ExportView &view, const char *format)
{
    QImage picture = renderImage(view);
    picture.setText(QStringLiteral("Description"), QString::fromUtf8(view.compactJson()));
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setText(QStringLiteral("Description"), QString::fromUtf8(view.compactJson()));
    writer.write(picture);
    return buffer.data();
}

// Photoshop layout: header, empty colour-mode, resource and layer sections,
// then the raw planes R, G, B.
QByteArray psd(const ExportView &view)
{
    const QImage picture = renderImage(view);
    QByteArray out;
    auto u16 = [&](quint16 v) { out.append(char(v >> 8)).append(char(v & 0xff)); };
    auto u32 = [&](quint32 v) { u16(quint16(v >> 16)); u16(quint16(v & 0xffff)); };
    out.append("8BPS");
    u16(1);
    out.append(6, '\0');
    u16(3);
    u32(quint32(picture.height()));
    u32(quint32(picture.width()));
    u16(8);
    u16(3);
    u32(0);
    u32(0);
    u32(0);
    u16(0);
    for (int shift : {16, 8, 0}) // red, green, blue planes of the 0xAARRGGBB pixels
        for (int y = 0; y < picture.height(); ++y) {
            const auto *row = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
            for (int x = 0; x < picture.width(); ++x)
                out.append(char((row[x] >> shift) & 0xff));
        }
    return out;
}

QByteArray dxf(const ExportView &view)
{
    QByteArray out;
    auto pair = [&](int code, const QByteArray &value) { out.append(QByteArray::number(code) + '\n' + value + '\n'); };
    pair(999, view.compactJson());
    pair(0, "SECTION");
    pair(2, "HEADER");
    pair(9, "$ACADVER");
    pair(1, "AC1009");
    pair(0, "ENDSEC");
    pair(0, "SECTION");
    pair(2, "ENTITIES");
    const double corners[][4] = {{0, 0, 297, 0}, {297, 0, 297, 210}, {297, 210, 0, 210}, {0, 210, 0, 0}};
    for (const auto &c : corners) {
        pair(0, "LINE");
        pair(8, "0");
        pair(10, QByteArray::number(c[0], 'f', 1));
        pair(20, QByteArray::number(c[1], 'f', 1));
        pair(30, "0.0");
        pair(11, QByteArray::number(c[2], 'f', 1));
        pair(21, QByteArray::number(c[3], 'f', 1));
        pair(31, "0.0");
    }
    pair(0, "TEXT");
    pair(8, "0");
    pair(10, "10.0");
    pair(20, "190.0");
    pair(30, "0.0");
    pair(40, "5.0");
    pair(1, (view.documentName() + QStringLiteral(" - ") + view.itemsText()).toUtf8());
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

QByteArray ExportWriter::write(const ExportDescription &export_, const QJsonObject &description)
{
    const ExportView view{export_, description};
    const QString f = export_.format;
    if (f == QLatin1String("pdf"))
        return pdf(view);
    if (f == QLatin1String("tif"))
        return image(view, "tiff");
    if (f == QLatin1String("jpg"))
        return image(view, "jpeg");
    if (f == QLatin1String("png") || f == QLatin1String("bmp"))
        return image(view, f.toLatin1().constData());
    if (f == QLatin1String("psd"))
        return psd(view);
    if (f == QLatin1String("dxf"))
        return dxf(view);
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
