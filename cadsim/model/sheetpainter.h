#pragma once

#include "cadsim/model/projection.h"

#include <QColor>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QTransform>
#include <array>
#include <optional>
#include <vector>

class QPainter;

// How a page is drawn: colours or greys, the line weights, and the header
// and footer sections (left, centre, right; empty ones are left out).
struct SheetStyle
{
    bool color = true;
    bool printerLineWeights = true; // the heavier weights of the printer's pens
    std::array<QString, 3> header;
    std::array<QString, 3> footer;

    // The colour as drawn: its own, or its grey in a greyscale style.
    QColor ink(const QColor &c) const;
    // Line widths in millimetres.
    double visibleWidth() const { return printerLineWeights ? 0.5 : 0.18; }
    double hiddenWidth() const { return printerLineWeights ? 0.25 : 0.13; }
    double frameWidth() const { return printerLineWeights ? 0.7 : 0.25; }
};

// A view on a page. A drawing places it on its sheet: centre in millimetres
// from the sheet's lower left corner, and scale; without a place the views
// share the page in a grid at one scale that fits them.
struct SheetPageView
{
    ProjectedView projection;
    std::optional<QPointF> centre;
    double scale = 1;
};

// What one page shows: a drawing sheet with its views and title block, or a
// part or assembly configuration as one pictorial view.
struct SheetPage
{
    QString documentName;
    QString itemKind; // "Sheet" or "Configuration"
    QString item;
    QString format;
    QString notes; // small print in the title block: the export's options
    QSizeF sheetMm; // a drawing's paper; empty: the page is the sheet
    std::vector<SheetPageView> views;
};

// A view placed on the page: the transform from model millimetres (y up) to
// page millimetres (y down), and the cell it sits in.
struct PlacedView
{
    const ProjectedView *view = nullptr;
    QTransform toPage;
    QRectF cell;
};

// Where the frame, the title block and the views go on a printable area of
// areaMm (page millimetres). A drawing's sheet is scaled to fit the area
// (a print on other paper), views and all.
struct SheetGeometry
{
    QRectF header, footer, frame, titleBlock;
    std::vector<PlacedView> views;
};
SheetGeometry sheetGeometry(const QRectF &areaMm, const SheetPage &page, const SheetStyle &style);

// Paints page into the painter's printable area areaMm; the painter's
// device units are unitsPerMm per millimetre.
void paintSheet(QPainter &p, const QRectF &areaMm, double unitsPerMm, const SheetPage &page, const SheetStyle &style);
