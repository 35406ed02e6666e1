#pragma once

#include "cadsim/geometry/solidexport.h"

#include <QJsonObject>
#include <QString>

class CadApplication;
class ModelDoc;
struct ExportDescription;

// Exports of a part's or assembly's solid: STEP, IGES, STL and VRML by the
// geometry kernel's writers with the options of the application's export
// preferences, and the formats of other kernels (Parasolid, ACIS) as a
// labelled placeholder that carries the options and the solid as the
// kernel's own B-rep text.
class SolidExports final
{
public:
    static bool handles(const QString &format);

    // description: exportDescriptionJson of the export. The solid is the
    // document's in the export's first configuration.
    static SolidExport write(CadApplication &app, const ModelDoc &doc, const ExportDescription &export_,
                             const QJsonObject &description);
};
