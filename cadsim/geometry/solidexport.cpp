#include "cadsim/geometry/solidexport.h"

#include "cadsim/geometry/shapebuilder.h"

#include <APIHeaderSection_MakeHeader.hxx>
#include <BRepBndLib.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <Bnd_Box.hxx>
#include <IGESControl_Controller.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_PrinterOStream.hxx>
#include <IGESControl_Writer.hxx>
#include <IGESData_IGESModel.hxx>
#include <Interface_Static.hxx>
#include <STEPControl_Controller.hxx>
#include <STEPControl_Writer.hxx>
#include <Standard_Failure.hxx>
#include <StlAPI_Writer.hxx>
#include <TColStd_HSequenceOfHAsciiString.hxx>
#include <TCollection_HAsciiString.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <VrmlAPI_Writer.hxx>
#include <gp_Trsf.hxx>

#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

#include <functional>
#include <mutex>
#include <sstream>

namespace {

// The translators' parameters are process-wide: one export at a time. Their
// progress reports would go to standard output, which belongs to the program.
std::mutex &translatorMutex()
{
    static std::mutex m;
    static const bool quiet = [] {
        Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_PrinterOStream));
        return true;
    }();
    (void)quiet;
    return m;
}

SolidExport failed(const QString &why)
{
    SolidExport e;
    e.error = why;
    return e;
}

QByteArray asciiOnly(const QString &text)
{
    QByteArray out;
    for (QChar c : text)
        out.append(c.unicode() >= 32 && c.unicode() < 127 ? char(c.unicode()) : '_');
    return out;
}

Handle(TCollection_HAsciiString) hstring(const QString &text)
{
    return new TCollection_HAsciiString(asciiOnly(text).constData());
}

// The kernel's file writers take a path: they write into a private folder
// that is read back and removed.
std::optional<QByteArray> throughFile(const char *suffix, const std::function<bool(const char *)> &write)
{
    QTemporaryDir dir;
    if (!dir.isValid())
        return std::nullopt;
    const QByteArray path = QFile::encodeName(dir.filePath(QStringLiteral("out") + QLatin1String(suffix)));
    if (!write(path.constData()))
        return std::nullopt;
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

TopoDS_Shape scaled(const TopoDS_Shape &shape, int unitCode)
{
    const double factor = 1.0 / millimetresPerUnit(unitCode);
    if (factor == 1.0)
        return shape;
    gp_Trsf t;
    t.SetScale(gp_Pnt(0, 0, 0), factor);
    return BRepBuilderAPI_Transform(shape, t, /*Copy=*/true).Shape();
}

// The shape moved so that its bounding box starts at the origin.
TopoDS_Shape movedToPositive(const TopoDS_Shape &shape)
{
    Bnd_Box box;
    BRepBndLib::AddOptimal(shape, box, /*useTriangulation=*/false, /*useShapeTolerance=*/false);
    double x0, y0, z0, x1, y1, z1;
    box.Get(x0, y0, z0, x1, y1, z1);
    gp_Trsf t;
    t.SetTranslation(gp_Vec(-x0, -y0, -z0));
    return BRepBuilderAPI_Transform(shape, t, /*Copy=*/true).Shape();
}

TopoDS_Shape edgesOf(const TopoDS_Shape &shape)
{
    BRep_Builder builder;
    TopoDS_Compound edges;
    builder.MakeCompound(edges);
    for (TopExp_Explorer e(shape, TopAbs_EDGE); e.More(); e.Next())
        builder.Add(edges, e.Current());
    return edges;
}

template <typename Write>
SolidExport guarded(const ModelGeometry &geometry, Write write)
{
    QString error;
    const TopoDS_Shape shape = buildSolid(geometry, &error);
    if (shape.IsNull())
        return failed(error);
    try {
        return write(shape);
    } catch (const Standard_Failure &e) {
        return failed(QString::fromUtf8(e.GetMessageString()));
    }
}

} // namespace

double millimetresPerUnit(int unitCode)
{
    switch (unitCode) {
    case 1: return 10.0;
    case 2: return 1000.0;
    case 3: return 25.4;
    case 4: return 304.8;
    default: return 1.0;
    }
}

QString unitName(int unitCode)
{
    static const char *const names[] = {"millimetres", "centimetres", "metres", "inches", "feet"};
    return QLatin1String(unitCode >= 0 && unitCode <= 4 ? names[unitCode] : names[0]);
}

double stlDeflection(int quality)
{
    return quality == 2 ? 0.01 : 0.2;
}

SolidExport writeStep(const ModelGeometry &geometry, const StepOptions &options)
{
    return guarded(geometry, [&](const TopoDS_Shape &shape) {
        std::lock_guard lock(translatorMutex());
        STEPControl_Controller::Init();
        // The schema is read when the writer makes its model.
        Interface_Static::SetCVal("write.step.schema", options.schema == 214 ? "AP214IS" : "AP203");
        Interface_Static::SetCVal("write.step.unit", "MM");
        STEPControl_Writer writer;
        const STEPControl_StepModelType mode = options.geometry == 0 ? STEPControl_AsIs : STEPControl_GeometricCurveSet;
        if (writer.Transfer(shape, mode) != IFSelect_RetDone)
            return failed(QStringLiteral("the STEP translator refused the solid"));
        APIHeaderSection_MakeHeader header(writer.Model());
        header.SetName(hstring(options.name));
        header.SetDescriptionValue(1, hstring(options.description));
        header.SetOriginatingSystem(hstring(QStringLiteral("mcsim")));
        header.SetPreprocessorVersion(hstring(QStringLiteral("Open CASCADE")));
        const auto bytes = throughFile(".step", [&](const char *path) { return writer.Write(path) == IFSelect_RetDone; });
        if (!bytes)
            return failed(QStringLiteral("the STEP writer failed"));
        return SolidExport{*bytes, {}, {}};
    });
}

SolidExport writeIges(const ModelGeometry &geometry, const IgesOptions &options)
{
    return guarded(geometry, [&](const TopoDS_Shape &shape) {
        std::lock_guard lock(translatorMutex());
        IGESControl_Controller::Init();
        // Faces mode writes trimmed surfaces (144), B-rep mode solids (186).
        IGESControl_Writer writer("MM", options.representation == 3 ? 1 : 0);
        if (options.solidSurface && !writer.AddShape(shape))
            return failed(QStringLiteral("the IGES translator refused the solid"));
        if (options.wireframe && !writer.AddShape(edgesOf(shape)))
            return failed(QStringLiteral("the IGES translator refused the edges"));
        writer.ComputeModel();
        Handle(TColStd_HSequenceOfHAsciiString) start = new TColStd_HSequenceOfHAsciiString;
        const QByteArray text = asciiOnly(options.description);
        for (qsizetype i = 0; i < text.size(); i += 72)
            start->Append(new TCollection_HAsciiString(text.mid(i, 72).constData()));
        writer.Model()->SetStartSection(start);
        std::ostringstream out;
        if (!writer.Write(out))
            return failed(QStringLiteral("the IGES writer failed"));
        const std::string s = out.str();
        return SolidExport{QByteArray(s.data(), qsizetype(s.size())), {}, {}};
    });
}

SolidExport writeStl(const ModelGeometry &geometry, const StlOptions &options)
{
    return guarded(geometry, [&](const TopoDS_Shape &solid) {
        TopoDS_Shape shape = scaled(solid, options.unit);
        if (!options.dontTranslateToPositive)
            shape = movedToPositive(shape);
        const double deflection = stlDeflection(options.quality) / millimetresPerUnit(options.unit);
        BRepMesh_IncrementalMesh mesh(shape, deflection, /*isRelative=*/false, options.quality == 2 ? 0.1 : 0.5,
                                      /*isInParallel=*/false);
        if (!mesh.IsDone())
            return failed(QStringLiteral("the solid could not be meshed"));
        std::lock_guard lock(translatorMutex());
        StlAPI_Writer writer;
        writer.ASCIIMode() = !options.binary;
        const auto bytes = throughFile(".stl", [&](const char *path) { return writer.Write(shape, path); });
        if (!bytes)
            return failed(QStringLiteral("the STL writer failed"));
        return SolidExport{*bytes, {}, {}};
    });
}

SolidExport writeVrml(const ModelGeometry &geometry, const VrmlOptions &options)
{
    const auto vrmlOf = [&](const TopoDS_Shape &solid) -> std::optional<QByteArray> {
        const TopoDS_Shape shape = scaled(solid, options.unit);
        BRepMesh_IncrementalMesh mesh(shape, 0.1 / millimetresPerUnit(options.unit), false, 0.3, false);
        std::lock_guard lock(translatorMutex());
        VrmlAPI_Writer writer;
        writer.SetRepresentation(VrmlAPI_ShadedRepresentation);
        auto bytes = throughFile(".wrl", [&](const char *path) { return writer.Write(shape, path, 2); });
        if (!bytes)
            return std::nullopt;
        // The unit and the export's description as comments under the header line.
        const qsizetype eol = bytes->indexOf('\n');
        bytes->insert(eol < 0 ? bytes->size() : eol + 1,
                      "# units: " + unitName(options.unit).toLatin1() + "\n# " + asciiOnly(options.description) + '\n');
        return bytes;
    };
    if (options.oneFile || geometry.bodies.size() < 2) {
        return guarded(geometry, [&](const TopoDS_Shape &shape) {
            const auto bytes = vrmlOf(shape);
            return bytes ? SolidExport{*bytes, {}, {}} : failed(QStringLiteral("the VRML writer failed"));
        });
    }
    // One file per body; the target inlines them.
    SolidExport result;
    result.bytes = "#VRML V2.0 utf8\n# units: " + unitName(options.unit).toLatin1() + "\n# "
                   + asciiOnly(options.description) + '\n';
    QStringList used;
    for (const Body &body : geometry.bodies) {
        QString suffix = QLatin1Char('_') + body.name;
        for (int n = 2; used.contains(suffix, Qt::CaseInsensitive); ++n)
            suffix = QStringLiteral("_%1_%2").arg(body.name).arg(n);
        used << suffix;
        SolidExport part = guarded(ModelGeometry{{body}}, [&](const TopoDS_Shape &shape) {
            const auto bytes = vrmlOf(shape);
            return bytes ? SolidExport{*bytes, {}, {}} : failed(QStringLiteral("the VRML writer failed"));
        });
        if (!part.ok())
            return part;
        result.companions.push_back({suffix + QStringLiteral(".wrl"), part.bytes});
        result.bytes += "Inline { url \"" + QUrl::toPercentEncoding(options.baseName + suffix) + ".wrl\" }\n";
    }
    return result;
}

SolidExport writeBrep(const ModelGeometry &geometry)
{
    return guarded(geometry, [&](const TopoDS_Shape &shape) {
        std::ostringstream out;
        BRepTools::Write(shape, out);
        const std::string s = out.str();
        return SolidExport{QByteArray(s.data(), qsizetype(s.size())), {}, {}};
    });
}
