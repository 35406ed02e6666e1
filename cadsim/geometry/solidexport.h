#pragma once

#include "cadsim/geometry/feature.h"

#include <QByteArray>
#include <QString>
#include <vector>

// Files of a document's solid, written by the geometry kernel's own writers.
// Lengths in the documents are millimetres; the unit options are the codes
// of the export dialogs' unit list.

// Millimetres in one unit of the list: 0 mm, 1 cm, 2 m, 3 in, 4 ft;
// anything else reads as millimetres.
double millimetresPerUnit(int unitCode);
QString unitName(int unitCode);

// A file beside the target: the target's path without its extension, then suffix.
struct CompanionFile
{
    QString suffix;
    QByteArray bytes;
};

struct SolidExport
{
    QByteArray bytes; // the target's content
    std::vector<CompanionFile> companions;
    QString error; // set when nothing could be written

    bool ok() const { return error.isEmpty(); }
};

struct StepOptions
{
    int schema = 203; // 203 or 214
    int geometry = 0; // 0 solids and surfaces, 1 3D curves, 2 curves and sketch entities
    QString name;        // FILE_NAME's name
    QString description; // FILE_DESCRIPTION's text
};

struct IgesOptions
{
    bool solidSurface = true;
    int representation = 0; // 0 trimmed surfaces (144), 3 manifold solid B-rep objects (186)
    bool wireframe = false;  // the solid's edges as 3D curves too
    int curveRepresentation = 0;
    int system = 0;
    QString description; // the start section's text
};

struct StlOptions
{
    bool binary = true;
    int unit = 0;
    int quality = 1; // 1 coarse, 2 fine
    bool dontTranslateToPositive = false;
};

struct VrmlOptions
{
    int unit = 0;
    bool oneFile = true; // false: one file per body, inlined by the target
    QString baseName;    // the target's file name without extension, for the inlined names
    QString description;
};

SolidExport writeStep(const ModelGeometry &geometry, const StepOptions &options);
SolidExport writeIges(const ModelGeometry &geometry, const IgesOptions &options);
SolidExport writeStl(const ModelGeometry &geometry, const StlOptions &options);
SolidExport writeVrml(const ModelGeometry &geometry, const VrmlOptions &options);

// The kernel's own B-rep text of the solid, in millimetres.
SolidExport writeBrep(const ModelGeometry &geometry);

// The linear deflection (mm) a quality setting meshes with.
double stlDeflection(int quality);
