#pragma once

#include <QString>
#include <array>
#include <optional>
#include <vector>

// One modelling step of a part, as a document line describes it. Lengths are
// millimetres. Forms of the text (the point after "at" defaults to the
// origin, the axis to z):
//
//   box L W H [at X Y Z]                 block from the point along +x, +y, +z
//   cylinder D H [at X Y Z] [axis x|y|z] cylinder of diameter D, height H, base
//                                        centre at the point, along +axis
//   hole D H [at X Y Z] [axis x|y|z]     the same cylinder, cut away
//   extrude H X1 Y1 X2 Y2 X3 Y3 ... [at X Y Z]
//                                        closed outline in the xy plane,
//                                        moved to the point, extruded along +z
//
// Steps are applied in order: solids join the part, holes cut it.
struct Feature
{
    enum class Kind { Box, Cylinder, Hole, Extrude };

    Kind kind = Kind::Box;
    std::array<double, 3> size{}; // box: L W H; cylinder and hole: D H 0; extrude: H 0 0
    std::array<double, 3> at{};
    int axis = 2; // 0 x, 1 y, 2 z
    std::vector<std::array<double, 2>> outline; // extrude only

    bool cuts() const { return kind == Kind::Hole; }
    bool operator==(const Feature &) const = default;
};

struct FeatureParse
{
    std::optional<Feature> feature;
    QString error; // when feature is empty
};

FeatureParse parseFeature(const QString &text);

// The text parseFeature reads back to an equal feature.
QString featureText(const Feature &feature);

// Where an assembly puts a component: a turn about the z axis (degrees)
// through the component's origin, then a move.
struct Placement
{
    std::array<double, 3> offset{};
    double rotationZ = 0;

    bool operator==(const Placement &) const = default;
};

// The geometry of a document in one configuration: one body per part, each
// its own features at its placement. A part has one body at the origin.
struct Body
{
    QString name;
    std::vector<Feature> features;
    Placement placement;
};

struct ModelGeometry
{
    std::vector<Body> bodies;

    bool isEmpty() const { return bodies.empty(); }
};
