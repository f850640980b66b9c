#ifndef POLYGONS_POINT_COMPARE_H
#define POLYGONS_POINT_COMPARE_H

#include "coordinates/points.h"

#include <cmath>

// Two points are the same within this absolute tolerance per axis, in the plane's unit; it absorbs
// the rounding of single-precision coordinates of a field, not a measuring error.
inline constexpr float pointTolerance = 1e-6f;

// True if x or y differ by more than pointTolerance; a difference of exactly the tolerance is no
// difference. A not-a-number coordinate differs from nothing.
inline bool pointsDiffer(LocalPoint a, LocalPoint b) {
    return std::fabs(a.x - b.x) > pointTolerance || std::fabs(a.y - b.y) > pointTolerance;
}

inline bool pointsEqual(LocalPoint a, LocalPoint b) {
    return !pointsDiffer(a, b);
}

// Orderings by y, and by x where the y are exactly equal.
inline bool pointGreater(LocalPoint a, LocalPoint b) {
    return a.y > b.y || (a.y == b.y && a.x > b.x);
}
inline bool pointLess(LocalPoint a, LocalPoint b) {
    return a.y < b.y || (a.y == b.y && a.x < b.x);
}
inline bool pointNotLess(LocalPoint a, LocalPoint b) {
    return a.y > b.y || (a.y == b.y && a.x >= b.x);
}
inline bool pointNotGreater(LocalPoint a, LocalPoint b) {
    return a.y < b.y || (a.y == b.y && a.x <= b.x);
}

#endif
