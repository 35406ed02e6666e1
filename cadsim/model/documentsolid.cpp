#include "cadsim/model/documentsolid.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <gp_Ax2.hxx>

TopoDS_Shape documentSolid(const DocumentData & /*data*/, const QString & /*configuration*/)
{
    const TopoDS_Shape base = BRepPrimAPI_MakeBox(80, 40, 10).Shape();
    const TopoDS_Shape upright = BRepPrimAPI_MakeBox(10, 40, 50).Shape();
    const TopoDS_Shape hole = BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(52, 20, -1), gp_Dir(0, 0, 1)), 7, 12).Shape();
    BRepAlgoAPI_Fuse angle(base, upright);
    angle.SimplifyResult();
    return BRepAlgoAPI_Cut(angle.Shape(), hole).Shape();
}
