#ifndef POLYGONS_LINES_H
#define POLYGONS_LINES_H

#include "coordinates/points.h"

// Directions, lines and angles in the plane, all in single precision. Normals are right normals:
// seen along a->b in a plane with y up, they point to the right.

// The unit vector from a to b; (0, 1) where the two coincide, so that callers always get a
// direction.
LocalPoint directionOf(LocalPoint a, LocalPoint b);

// (b.y - a.y, a.x - b.x), as long as a->b.
LocalPoint rightNormal(LocalPoint a, LocalPoint b);

// rightNormal of unit length; (0, 1) where the length of b - a is exactly 0.
LocalPoint unitRightNormal(LocalPoint a, LocalPoint b);

// Writes the crossing of the infinite lines a1a2 and b1b2 to `out` and returns true; returns
// false and leaves `out` alone only where the determinant is exactly 0 (parallel lines, or a line
// given by two equal points). Nearly parallel lines meet far away.
bool intersectLines(LocalPoint& out, LocalPoint a1, LocalPoint a2, LocalPoint b1, LocalPoint b2);

// The foot of p on the infinite line ab; a where a and b give no line.
LocalPoint projectOnLine(LocalPoint p, LocalPoint a, LocalPoint b);

// The point of segment ab nearest to p; a for a segment not longer than 1e-5.
LocalPoint closestOnSegment(LocalPoint p, LocalPoint a, LocalPoint b);

// v turned counter-clockwise by `angle` radians, with sine and cosine taken in double precision.
LocalPoint rotated(LocalPoint v, float angle);

// The signed angle in radians at b between b - a and b - c, in [-pi, pi].
float angleAt(LocalPoint a, LocalPoint b, LocalPoint c);

#endif
