#include "cadsim/model/sheetpainter.h"

#include <QFont>
#include <QPainter>
#include <QPen>

#include <algorithm>

namespace {

constexpr double kBandMm = 8;        // header or footer band
constexpr double kInsetMm = 5;       // frame to title block and views
constexpr double kTitleHeightMm = 30;
constexpr double kTitleWidthMm = 150;
constexpr double kViewFill = 0.8;    // share of its cell a view may fill

// Cells of the views: a sheet's views in third-angle order (top above
// front, right beside it, the pictorial view in the corner), a single
// view in the whole area.
std::vector<QRectF> cells(const QRectF &area, std::size_t count)
{
    if (count <= 1)
        return {area};
    const double w = area.width() / 2, h = area.height() / 2;
    const QRectF topLeft(area.topLeft(), QSizeF(w, h));
    return {topLeft.translated(0, h), topLeft, topLeft.translated(w, h), topLeft.translated(w, 0)};
}

// Called with the page's millimetre transform in effect.
void drawText(QPainter &p, double unitsPerMm, const QRectF &rectMm, double heightMm, int flags, const QString &text)
{
    // Text is laid out in device units, where font sizes are whole pixels.
    p.save();
    p.setTransform(QTransform::fromScale(1 / unitsPerMm, 1 / unitsPerMm) * p.transform());
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(qMax(1, qRound(heightMm * unitsPerMm)));
    p.setFont(font);
    const QRectF r(rectMm.topLeft() * unitsPerMm, rectMm.size() * unitsPerMm);
    p.drawText(r, flags, text);
    p.restore();
}

void drawSections(QPainter &p, double unitsPerMm, const QRectF &band, const std::array<QString, 3> &sections,
                  const SheetStyle &style)
{
    p.setPen(style.ink(Qt::black));
    const int align[] = {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight};
    for (int i = 0; i < 3; ++i)
        drawText(p, unitsPerMm, band, 3.5, align[i] | Qt::AlignVCenter, sections[i]);
}

bool hasText(const std::array<QString, 3> &sections)
{
    return std::any_of(sections.begin(), sections.end(), [](const QString &s) { return !s.isEmpty(); });
}

} // namespace

QColor SheetStyle::ink(const QColor &c) const
{
    if (color)
        return c;
    const int g = qGray(c.rgb());
    return QColor(g, g, g, c.alpha());
}

SheetGeometry sheetGeometry(const QRectF &areaMm, const SheetPage &page, const SheetStyle &style)
{
    SheetGeometry g;
    QRectF rest = areaMm;
    if (hasText(style.header)) {
        g.header = QRectF(rest.left(), rest.top(), rest.width(), kBandMm);
        rest.setTop(rest.top() + kBandMm);
    }
    if (hasText(style.footer)) {
        g.footer = QRectF(rest.left(), rest.bottom() - kBandMm, rest.width(), kBandMm);
        rest.setBottom(rest.bottom() - kBandMm);
    }
    // The sheet in its own millimetres (y down), fitted into what is left.
    const QSizeF sheet = page.sheetMm.isEmpty() ? rest.size() : page.sheetMm;
    const double fit = qMin(rest.width() / sheet.width(), rest.height() / sheet.height());
    QTransform toArea;
    toArea.translate(rest.center().x() - sheet.width() * fit / 2, rest.center().y() - sheet.height() * fit / 2);
    toArea.scale(fit, fit);

    const QRectF frame = QRectF(QPointF(0, 0), sheet).adjusted(kInsetMm, kInsetMm, -kInsetMm, -kInsetMm);
    const QRectF inner = frame.adjusted(kInsetMm, kInsetMm, -kInsetMm, -kInsetMm);
    const double titleHeight = qMin(kTitleHeightMm, inner.height() / 3);
    const double titleWidth = qMin(kTitleWidthMm, inner.width());
    const QRectF title(inner.right() - titleWidth, inner.bottom() - titleHeight, titleWidth, titleHeight);
    g.frame = toArea.mapRect(frame);
    g.titleBlock = toArea.mapRect(title);

    // Views with a place on the sheet.
    std::vector<const SheetPageView *> unplaced;
    for (const SheetPageView &v : page.views) {
        if (!v.centre) {
            unplaced.push_back(&v);
            continue;
        }
        const QPointF c = v.projection.bounds().center();
        QTransform t;
        t.translate(v.centre->x(), sheet.height() - v.centre->y());
        t.scale(v.scale, -v.scale);
        t.translate(-c.x(), -c.y());
        const QRectF cell = t.mapRect(v.projection.bounds()).adjusted(-5, -5, 5, 12);
        g.views.push_back({&v.projection, t * toArea, toArea.mapRect(cell)});
    }

    // The others in a grid above the title block, at one scale.
    const QRectF viewArea(inner.left(), inner.top(), inner.width(), inner.height() - titleHeight - kInsetMm);
    const std::vector<QRectF> places = cells(viewArea, unplaced.size());
    double scale = 0;
    for (std::size_t i = 0; i < unplaced.size() && i < places.size(); ++i) {
        const QRectF b = unplaced[i]->projection.bounds();
        if (b.width() <= 0 && b.height() <= 0)
            continue;
        const double f = qMin(b.width() > 0 ? places[i].width() * kViewFill / b.width() : 1e9,
                              b.height() > 0 ? places[i].height() * kViewFill / b.height() : 1e9);
        scale = scale == 0 ? f : qMin(scale, f);
    }
    for (std::size_t i = 0; i < unplaced.size() && i < places.size(); ++i) {
        const QPointF centre = unplaced[i]->projection.bounds().center();
        QTransform t;
        t.translate(places[i].center().x(), places[i].center().y());
        t.scale(scale, -scale);
        t.translate(-centre.x(), -centre.y());
        g.views.push_back({&unplaced[i]->projection, t * toArea, toArea.mapRect(places[i])});
    }
    return g;
}

void paintSheet(QPainter &p, const QRectF &areaMm, double unitsPerMm, const SheetPage &page, const SheetStyle &style)
{
    const SheetGeometry g = sheetGeometry(areaMm, page, style);
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    p.setTransform(QTransform::fromScale(unitsPerMm, unitsPerMm), true);
    const QTransform base = p.transform();

    if (!g.header.isNull())
        drawSections(p, unitsPerMm, g.header, style.header, style);
    if (!g.footer.isNull())
        drawSections(p, unitsPerMm, g.footer, style.footer, style);

    QPen frame(style.ink(Qt::black), style.frameWidth());
    frame.setJoinStyle(Qt::MiterJoin);
    p.setPen(frame);
    p.setBrush(Qt::NoBrush);
    p.drawRect(g.frame);

    // Title block: document, sheet or configuration, format, the options.
    p.setBrush(style.ink(QColor(220, 232, 250)));
    p.drawRect(g.titleBlock);
    const QRectF t = g.titleBlock.adjusted(3, 2, -3, -2);
    const double row = t.height() / 6;
    p.setPen(style.ink(QColor(0, 40, 140)));
    drawText(p, unitsPerMm, QRectF(t.left(), t.top(), t.width(), 1.5 * row), qMin(6.0, row), Qt::AlignLeft | Qt::AlignVCenter,
             page.documentName);
    p.setPen(style.ink(Qt::black));
    drawText(p, unitsPerMm, QRectF(t.left(), t.top() + 1.5 * row, t.width(), row), qMin(4.0, 0.8 * row),
             Qt::AlignLeft | Qt::AlignVCenter, page.itemKind + QStringLiteral(": ") + page.item);
    drawText(p, unitsPerMm, QRectF(t.left(), t.top() + 2.5 * row, t.width(), row), qMin(3.0, 0.6 * row),
             Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Format: ") + page.format.toUpper());
    drawText(p, unitsPerMm, QRectF(t.left(), t.top() + 3.5 * row, t.width(), 2.5 * row), qMin(2.0, 0.4 * row),
             Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, page.notes);

    // The views: hidden edges dashed and thinner under the visible ones.
    QPen hidden(style.ink(QColor(210, 100, 0)), style.hiddenWidth(), Qt::CustomDashLine, Qt::FlatCap);
    hidden.setDashPattern({6, 4});
    QPen visible(style.ink(QColor(0, 40, 140)), style.visibleWidth(), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    p.setBrush(Qt::NoBrush);
    for (const PlacedView &placed : g.views) {
        p.setTransform(placed.toPage * base);
        // Pen widths are in page millimetres whatever the view's scale.
        const double perMm = placed.toPage.m11() != 0 ? 1.0 / qAbs(placed.toPage.m11()) : 1.0;
        QPen h = hidden, v = visible;
        h.setWidthF(hidden.widthF() * perMm);
        v.setWidthF(visible.widthF() * perMm);
        p.setPen(h);
        for (const QPolygonF &line : placed.view->hidden)
            p.drawPolyline(line);
        p.setPen(v);
        for (const QPolygonF &line : placed.view->visible)
            p.drawPolyline(line);
        p.setTransform(base);
        if (page.views.size() > 1) {
            p.setPen(style.ink(Qt::black));
            const QRectF label(placed.cell.left(), placed.cell.bottom() - 6, placed.cell.width(), 5);
            drawText(p, unitsPerMm, label, 3, Qt::AlignHCenter | Qt::AlignVCenter, viewName(placed.view->direction));
        }
    }
    p.restore();
}
