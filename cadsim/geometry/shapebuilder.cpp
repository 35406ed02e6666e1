#include "cadsim/geometry/shapebuilder.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepGProp.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRep_Builder.hxx>
#include <GProp_GProps.hxx>
#include <Standard_Failure.hxx>
#include <TopoDS_Compound.hxx>
#include <gp_Ax2.hxx>
#include <gp_Trsf.hxx>

#include <cmath>

namespace {

gp_Pnt point(const std::array<double, 3> &p)
{
    return gp_Pnt(p[0], p[1], p[2]);
}

gp_Dir axisDirection(int axis)
{
    return axis == 0 ? gp_Dir(1, 0, 0) : axis == 1 ? gp_Dir(0, 1, 0) : gp_Dir(0, 0, 1);
}

TopoDS_Shape featureSolid(const Feature &f)
{
    switch (f.kind) {
    case Feature::Kind::Box:
        return BRepPrimAPI_MakeBox(point(f.at), f.size[0], f.size[1], f.size[2]).Shape();
    case Feature::Kind::Cylinder:
    case Feature::Kind::Hole:
        return BRepPrimAPI_MakeCylinder(gp_Ax2(point(f.at), axisDirection(f.axis)), f.size[0] / 2, f.size[1]).Shape();
    case Feature::Kind::Extrude: {
        BRepBuilderAPI_MakePolygon polygon;
        for (const auto &p : f.outline)
            polygon.Add(gp_Pnt(p[0] + f.at[0], p[1] + f.at[1], f.at[2]));
        polygon.Close();
        if (!polygon.IsDone())
            return {};
        BRepBuilderAPI_MakeFace face(polygon.Wire(), /*OnlyPlane=*/true);
        if (!face.IsDone())
            return {};
        return BRepPrimAPI_MakePrism(face.Face(), gp_Vec(0, 0, f.size[0])).Shape();
    }
    }
    return {};
}

gp_Trsf placement(const Placement &p)
{
    gp_Trsf turn;
    turn.SetRotation(gp_Ax1(gp_Pnt(0, 0, 0), gp_Dir(0, 0, 1)), p.rotationZ * M_PI / 180.0);
    gp_Trsf move;
    move.SetTranslation(gp_Vec(p.offset[0], p.offset[1], p.offset[2]));
    return move * turn;
}

void setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
}

} // namespace

TopoDS_Shape buildBody(const Body &body, QString *error)
{
    if (body.features.empty()) {
        setError(error, QStringLiteral("%1 has no features").arg(body.name));
        return {};
    }
    if (body.features.front().cuts()) {
        setError(error, QStringLiteral("%1 starts with a hole").arg(body.name));
        return {};
    }
    try {
        TopoDS_Shape shape;
        for (std::size_t i = 0; i < body.features.size(); ++i) {
            const Feature &f = body.features[i];
            const TopoDS_Shape tool = featureSolid(f);
            if (tool.IsNull()) {
                setError(error, QStringLiteral("%1: feature %2 (%3) is no solid").arg(body.name).arg(i + 1).arg(featureText(f)));
                return {};
            }
            if (shape.IsNull()) {
                shape = tool;
                continue;
            }
            if (f.cuts()) {
                BRepAlgoAPI_Cut cut(shape, tool);
                if (!cut.IsDone()) {
                    setError(error, QStringLiteral("%1: cutting feature %2 failed").arg(body.name).arg(i + 1));
                    return {};
                }
                shape = cut.Shape();
            } else {
                BRepAlgoAPI_Fuse fuse(shape, tool);
                if (!fuse.IsDone()) {
                    setError(error, QStringLiteral("%1: joining feature %2 failed").arg(body.name).arg(i + 1));
                    return {};
                }
                fuse.SimplifyResult(); // coplanar faces of joined blocks become one
                shape = fuse.Shape();
            }
        }
        if (body.placement == Placement{})
            return shape;
        return BRepBuilderAPI_Transform(shape, placement(body.placement), /*Copy=*/true).Shape();
    } catch (const Standard_Failure &e) {
        setError(error, QStringLiteral("%1: %2").arg(body.name, QString::fromUtf8(e.GetMessageString())));
        return {};
    }
}

TopoDS_Shape buildSolid(const ModelGeometry &geometry, QString *error)
{
    if (geometry.bodies.empty()) {
        setError(error, QStringLiteral("no geometry"));
        return {};
    }
    if (geometry.bodies.size() == 1)
        return buildBody(geometry.bodies.front(), error);
    BRep_Builder builder;
    TopoDS_Compound compound;
    builder.MakeCompound(compound);
    for (const Body &body : geometry.bodies) {
        const TopoDS_Shape solid = buildBody(body, error);
        if (solid.IsNull())
            return {};
        builder.Add(compound, solid);
    }
    return compound;
}

double shapeVolume(const TopoDS_Shape &shape)
{
    if (shape.IsNull())
        return 0;
    GProp_GProps props;
    BRepGProp::VolumeProperties(shape, props);
    return props.Mass();
}
