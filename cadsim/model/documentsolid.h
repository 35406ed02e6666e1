#pragma once

#include "cadsim/model/documentdata.h"

#include <TopoDS_Shape.hxx>

// The solid a document shows in a configuration (a drawing: the part its
// views show). The documents do not describe their geometry yet, so every
// one is the same angle bracket with a hole, built from the kernel's
// primitives.
TopoDS_Shape documentSolid(const DocumentData &data, const QString &configuration);
