#ifndef POLYGONS_PATH_SIMPLIFY_H
#define POLYGONS_PATH_SIMPLIFY_H

#include "polygons/path.h"

#include <vector>

// Resampling and Douglas-Peucker simplification of paths, in single precision.

// The most pieces one segment is cut into by resamplePath: beyond 2^24 the fractions i / pieces
// no longer differ in single precision.
inline constexpr int mostPiecesPerSegment = 1 << 24;

// The path with no segment longer than max_step: each segment is cut into
// ceil(length / max_step) equal pieces, at least one, and the points t * b + (1 - t) * a are
// appended with t = i / pieces, the last being b itself. The first point is copied and repeated
// points stay. A segment whose quotient is not a finite number (a max_step of 0, infinite
// coordinates) stays one piece, and no segment gets more than mostPiecesPerSegment pieces. An
// empty path gives an empty path.
Path resamplePath(Path const& path, float max_step);

// Douglas-Peucker over the path: a point stays where it lies farther than `tolerance` (strictly)
// from the chord of its range. An open path keeps its first and last point; a ring keeps point 0
// and is split at the farthest point from it, so that it needs no chosen split point. Among
// points at equal distance the earliest is taken. Paths of fewer than 3 points come back as they
// are from simplifyPath, but give an empty list from simplifyPathIndices.
Path simplifyPath(Path const& path, bool closed, float tolerance);
// The indices of the points that simplifyPath keeps, in path order.
std::vector<int> simplifyPathIndices(Path const& path, bool closed, float tolerance);

#endif
