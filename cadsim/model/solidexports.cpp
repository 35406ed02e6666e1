#include "cadsim/model/solidexports.h"

#include "cadsim/model/cadapplication.h"
#include "cadsim/model/cadconstants.h"
#include "cadsim/model/documentgeometry.h"
#include "cadsim/model/exportdescription.h"
#include "cadsim/model/modeldoc.h"
#include "base/windowspath.h"

#include <QJsonDocument>

namespace {

bool isOneOf(const QString &format, std::initializer_list<const char *> formats)
{
    for (const char *f : formats)
        if (format == QLatin1String(f))
            return true;
    return false;
}

QString formatTitle(const QString &format)
{
    if (format == QLatin1String("x_t"))
        return QStringLiteral("Parasolid text transmit file (.x_t)");
    if (format == QLatin1String("x_b"))
        return QStringLiteral("Parasolid binary transmit file (.x_b)");
    return QStringLiteral("ACIS text file (.sat)");
}

// What stands in for a format no writer here produces.
QByteArray placeholder(const QString &format, const QByteArray &descriptionJson, const QByteArray &brep)
{
    return "# mcsim placeholder for a " + formatTitle(format).toUtf8()
           + "\n# This is not a file of that format: the geometry kernel here has no writer for it.\n"
             "# The export's options follow, then the solid as the kernel's own B-rep text (millimetres).\n"
             "# options: "
           + descriptionJson + "\n" + brep;
}

} // namespace

bool SolidExports::handles(const QString &format)
{
    return isOneOf(format, {"step", "stp", "igs", "iges", "stl", "wrl", "x_t", "x_b", "sat"});
}

SolidExport SolidExports::write(CadApplication &app, const ModelDoc &doc, const ExportDescription &export_,
                                const QJsonObject &description)
{
    QString error;
    const auto geometry = documentGeometry(app, doc, export_.configurations.value(0), &error);
    if (!geometry) {
        SolidExport failed;
        failed.error = error;
        return failed;
    }
    const Preferences &prefs = app.preferences();
    const QString text = QString::fromUtf8(QJsonDocument(description).toJson(QJsonDocument::Compact));
    const QString &f = export_.format;
    if (isOneOf(f, {"step", "stp"})) {
        StepOptions o;
        o.schema = prefs.integer(cad::mcStepAP) == 214 ? 214 : 203;
        o.geometry = prefs.integer(cad::mcAcisOutputGeometryPreference);
        o.name = WindowsPath::fileName(export_.target);
        o.description = text;
        return writeStep(*geometry, o);
    }
    if (isOneOf(f, {"igs", "iges"})) {
        IgesOptions o;
        o.solidSurface = prefs.toggle(cad::mcIGESExportSolidAndSurface);
        o.representation = prefs.integer(cad::mcIGESRepresentation);
        o.wireframe = prefs.toggle(cad::mcIGESExportAsWireframe);
        o.curveRepresentation = prefs.integer(cad::mcIGESCurveRepresentation);
        o.system = prefs.integer(cad::mcIGESSystem);
        o.description = text;
        return writeIges(*geometry, o);
    }
    if (f == QLatin1String("stl")) {
        StlOptions o;
        o.binary = prefs.toggle(cad::mcSTLBinaryFormat);
        o.unit = prefs.integer(cad::mcExportStlUnits);
        o.quality = prefs.integer(cad::mcSTLQuality);
        o.dontTranslateToPositive = prefs.toggle(cad::mcSTLDontTranslateToPositive);
        return writeStl(*geometry, o);
    }
    if (f == QLatin1String("wrl")) {
        VrmlOptions o;
        o.unit = prefs.integer(cad::mcExportVrmlUnits);
        o.oneFile = prefs.toggle(cad::mcExportVrmlAllComponentsInSingleFile);
        o.baseName = WindowsPath::baseName(export_.target);
        o.description = text;
        return writeVrml(*geometry, o);
    }
    SolidExport brep = writeBrep(*geometry);
    if (brep.ok())
        brep.bytes = placeholder(f, text.toUtf8(), brep.bytes);
    return brep;
}
