#ifndef POLYGONS_PATH_MEASURES_H
#define POLYGONS_PATH_MEASURES_H

#include "polygons/path.h"

// Measures and predicates of paths and rings, in single precision unless a result says double.
// Orientation is taken in a plane with y up: a counter-clockwise ring has a positive area.

// The square root of the largest double: what distanceToPath gives where there is nothing to
// measure against.
inline constexpr double noDistance = 1.3407807929942596e154;

// The smallest distance from p to the segments of the path; a closed path has the segment from
// its last point back to its first, and a closed path of one point is that point. An empty path
// and an open path of one point give noDistance. Segments with not-a-number points are passed
// over.
double distanceToPath(LocalPoint p, Path const& path, bool closed);

// Half the shoelace sum, closing edge included, summed in ring order: positive for a
// counter-clockwise ring, 0 for an empty one.
float signedArea(Path const& ring);

// The sum of signedArea over the rings, holes being clockwise and so negative; 0 for no rings.
float totalSignedArea(PathList const& rings);

// The area centroid. Not guarded: an empty ring or one of zero area gives not-a-number or
// infinite coordinates.
LocalPoint centroid(Path const& ring);

// Even-odd rule with half-open edges: a point on a left or lower edge is inside, on a right or
// upper edge outside. An empty ring contains nothing.
bool pointInRing(LocalPoint p, Path const& ring);

// Inside a region whose outer rings have an area of 0 or above and whose holes have a negative
// area: in some outer ring and in no hole. No rings contain nothing.
bool pointInRings(LocalPoint p, PathList const& rings);

// No corner turns right (isConvexLeft) or left (isConvexRight); a straight corner passes both,
// and so does an empty ring.
bool isConvexLeft(Path const& ring);
bool isConvexRight(Path const& ring);

#endif
