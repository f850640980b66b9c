#pragma once
// What the preview draws of one partfield (PFD): its boundaries, guidance
// patterns and points, read from the store into the field's own plane
// (LocalPoint: metres east and south of the field's centre), and what of it
// cannot be drawn.

#include "coordinates/points.h"
#include "polygons/path.h"
#include "taskdata/task_data.h"

#include <QString>

#include <array>
#include <optional>
#include <vector>

// One line string (LSG) of a polygon; `interior` for LineStringType 2, a hole.
struct BoundaryRing {
    Path points;
    bool interior = false;
};

// One polygon (PLN).
struct Boundary {
    int type = 0;                     // PLN A, PolygonType; 0 when missing
    QString name;                     // PLN B
    std::optional<unsigned int> area; // PLN C, square metres
    std::vector<BoundaryRing> rings;  // those of three points or more
    bool hole() const;                // it has rings, and all are interior
};

// How a guidance pattern (GPN C, GuidancePatternType) is drawn.
enum class PatternShape {
    Line,   // AB (1) and A+ (2): the straight line through two of its points
    Curve,  // curve (3) and spiral (5): its points in order, a line per part
    Circle, // pivot (4): a circle of its radius around its centre
};

struct GuidanceLine {
    PatternShape shape = PatternShape::Curve;
    QString name; // GPN B, or the group's designator when it has none
    // Line: A and B (AB), or A alone with `heading` (A+); Curve: the points of
    // one part, from a point of type 6 (guidance reference A) to the next,
    // not all in one place; Circle: the centre.
    Path points;
    float heading = 0; // A+: degrees clockwise from north (GPN G)
    float radius = 0;  // Circle: metres (GPN H in millimetres)
};

// A guidance group (GGP) and those of its patterns that can be drawn.
struct LineGroup {
    QString name; // GGP B
    std::vector<GuidanceLine> lines;
};

// A point of the partfield (PNT), such as a flag.
struct FieldPoint {
    QString name; // PNT B
    LocalPoint at;
};

// Why an element is left out of the picture.
enum class LeftOut {
    ShortRing,            // a line string of a polygon with fewer than three positions
    PatternWithoutPoints, // a pattern without a position
    LineWithoutDirection, // an AB line or curve of one place, an A+ line without a heading
    PivotWithoutRadius,   // a pivot without a radius above 0
    UnknownPattern,       // a pattern of no type from 1 to 5
    PointWithoutPosition, // a point without a position
};
inline constexpr int leftOutKinds = 6;

struct FieldSketch {
    QString name; // PFD C
    // The field's centre: the middle of the range of latitudes and longitudes
    // of its drawn positions. Without any, the field has no place.
    std::optional<GeoPoint> centre;
    std::vector<Boundary> boundaries;
    std::vector<LineGroup> groups;
    std::vector<FieldPoint> points;
    std::array<int, leftOutKinds> left_out{};
};

// Reads the field's elements. A position is a latitude from -90 to 90 and a
// longitude from -180 to 180 degrees; a point without one is passed over, and
// an element that keeps too few is left out and counted.
FieldSketch readFieldSketch(TC::Task_data::Elements::Client::Partfield const& field);
