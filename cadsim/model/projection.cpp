#include "cadsim/model/projection.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepLib.hxx>
#include <GCPnts_TangentialDeflection.hxx>
#include <HLRAlgo_Projector.hxx>
#include <HLRBRep_Algo.hxx>
#include <HLRBRep_HLRToShape.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <gp_Ax2.hxx>

namespace {

// The view's axis pointing at the eye and its horizontal axis, for parts
// modelled with y up and z towards the front: the front view looks along -z,
// the top view down -y (the front at the bottom), the right view along -x.
gp_Ax2 viewAxes(ViewDirection direction)
{
    const gp_Pnt origin(0, 0, 0);
    switch (direction) {
    case ViewDirection::Front: return gp_Ax2(origin, gp_Dir(0, 0, 1), gp_Dir(1, 0, 0));
    case ViewDirection::Top: return gp_Ax2(origin, gp_Dir(0, 1, 0), gp_Dir(1, 0, 0));
    case ViewDirection::Right: return gp_Ax2(origin, gp_Dir(1, 0, 0), gp_Dir(0, 0, -1));
    case ViewDirection::Isometric: return gp_Ax2(origin, gp_Dir(1, 1, 1), gp_Dir(1, 0, -1));
    }
    return gp_Ax2();
}

// The edges of one result compound as polylines; the kernel gives them as
// curves in the view plane, which need 3D curves to be sampled.
void addEdges(const TopoDS_Shape &compound, QList<QPolygonF> &into)
{
    if (compound.IsNull())
        return;
    TopoDS_Shape edges = compound;
    BRepLib::BuildCurves3d(edges);
    for (TopExp_Explorer it(edges, TopAbs_EDGE); it.More(); it.Next()) {
        const TopoDS_Edge &edge = TopoDS::Edge(it.Current());
        BRepAdaptor_Curve curve(edge);
        const GCPnts_TangentialDeflection sampled(curve, 0.05, 0.01);
        QPolygonF line;
        for (int i = 1; i <= sampled.NbPoints(); ++i) {
            const gp_Pnt p = sampled.Value(i);
            line << QPointF(p.X(), p.Y());
        }
        if (line.size() >= 2)
            into << line;
    }
}

} // namespace

QRectF ProjectedView::bounds() const
{
    QRectF box;
    for (const QList<QPolygonF> *lines : {&visible, &hidden})
        for (const QPolygonF &line : *lines)
            box = box.isNull() ? line.boundingRect() : box.united(line.boundingRect());
    return box;
}

QString viewName(ViewDirection direction)
{
    switch (direction) {
    case ViewDirection::Front: return QStringLiteral("Front");
    case ViewDirection::Top: return QStringLiteral("Top");
    case ViewDirection::Right: return QStringLiteral("Right");
    case ViewDirection::Isometric: return QStringLiteral("Isometric");
    }
    return {};
}

ProjectedView projectHiddenLines(const TopoDS_Shape &shape, ViewDirection direction)
{
    ProjectedView view;
    view.direction = direction;
    if (shape.IsNull())
        return view;
    try {
        Handle(HLRBRep_Algo) algo = new HLRBRep_Algo();
        algo->Add(shape);
        algo->Projector(HLRAlgo_Projector(viewAxes(direction)));
        algo->Update();
        algo->Hide();
        HLRBRep_HLRToShape result(algo);
        // Sharp edges, smooth edges between faces and silhouettes of curved faces.
        addEdges(result.VCompound(), view.visible);
        addEdges(result.Rg1LineVCompound(), view.visible);
        addEdges(result.OutLineVCompound(), view.visible);
        addEdges(result.HCompound(), view.hidden);
        addEdges(result.OutLineHCompound(), view.hidden);
    } catch (const Standard_Failure &) {
        // A shape the algorithm cannot handle draws as an empty view.
        return ProjectedView{direction, {}, {}};
    }
    return view;
}
