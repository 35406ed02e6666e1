#pragma once

#include "cadsim/geometry/feature.h"

#include <QString>
#include <TopoDS_Shape.hxx>

// Solids of the stand-in's documents, built by the geometry kernel. This is
// the only header outside cadsim/geometry that shows kernel types; include it
// only where a shape is needed (drawings, exports).

// One body's solid from its features, placed; a null shape with error set
// when the features do not make a solid (none, a hole first, a failed
// boolean operation).
TopoDS_Shape buildBody(const Body &body, QString *error = nullptr);

// A document's shape: the solid of a part, the compound of the placed
// solids of an assembly's bodies. Null with error set when a body fails.
TopoDS_Shape buildSolid(const ModelGeometry &geometry, QString *error = nullptr);

// The enclosed volume of the shape's solids, in the shape's units cubed.
double shapeVolume(const TopoDS_Shape &shape);
