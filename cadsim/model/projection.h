#pragma once

#include <QList>
#include <QPolygonF>
#include <QRectF>
#include <QString>

class TopoDS_Shape;

// The directions a drawing view looks from.
enum class ViewDirection { Front, Top, Right, Isometric };

// One view of a solid after hidden-line removal: the edges and silhouettes
// as polylines in the view's plane (model millimetres, y pointing up).
struct ProjectedView
{
    ViewDirection direction = ViewDirection::Front;
    QList<QPolygonF> visible;
    QList<QPolygonF> hidden;

    QRectF bounds() const;
    bool isEmpty() const { return visible.isEmpty() && hidden.isEmpty(); }
};

QString viewName(ViewDirection direction);

// Projects shape along direction with the kernel's exact hidden-line
// removal. An empty shape gives an empty view.
ProjectedView projectHiddenLines(const TopoDS_Shape &shape, ViewDirection direction);
