#ifndef POLYGONS_PATH_OFFSET_H
#define POLYGONS_PATH_OFFSET_H

#include "polygons/path.h"

#include <vector>

// Rings and open paths moved sideways with round joins, in single precision; the raw offsets are
// cleaned by a union through ClipperLib on its 0.1 mm grid, filled by the positive rule
// (path_clip.h). Sides are those of a plane drawn with y up: a positive distance moves a point
// to the left of the direction of travel (y being south, that is the right of travel on a map),
// into a counter-clockwise ring and out of a clockwise one. An edge no longer than 1e-6 has no
// direction of its own and takes (0, 1).

// The most points that one round join of offsetRing adds. A join asks for
// |distance| * angle / arc_step points; this many cover a half turn at a distance of 8 km in
// steps of 0.1, far beyond any real use, and keep a tiny or zero arc_step from asking for
// billions.
inline constexpr int mostJoinPoints = 1 << 18;

// The raw offset of a ring by `distance`. For each vertex i in ring order: the vertex moved by
// `distance` along the left normal of its incoming edge; then, on an outer corner (a turn away
// from the offset's side, or none), a round join of trunc(|distance| * angle / arc_step) points
// (none where that is not a positive number, as for a negative arc_step, at most
// mostJoinPoints), or on an inner corner the vertex itself, unmoved; then the vertex moved along
// the left normal of its outgoing edge. So each vertex gives at least two points, and the result
// crosses itself at inner corners and wherever the ring bends more tightly than the distance;
// offsetAndUnite removes that. `source_index`, where given, is appended to (not cleared) with i
// once for each point of vertex i. An empty ring gives an empty result; a ring of one point
// gives that point moved by (-distance, 0) twice; a distance of 0 gives every vertex two or three
// times; coordinates that are not finite give points that are not finite.
Path offsetRing(Path const& ring, std::vector<int>* source_index, float distance, float arc_step);

// offsetRing, then its union with itself: the rings of the offset region, outer rings
// counter-clockwise before their clockwise holes, on the grid. Empty where ClipperLib fails, as
// for coordinates too large for the grid, infinite or not a number.
PathList offsetAndUnite(Path const& ring, float distance, float arc_step);

// offsetRing of each ring, then one union of all: counter-clockwise field boundaries with
// clockwise holes grow by a negative distance and shrink by a positive one.
PathList offsetAllAndUnite(PathList const& rings, float distance, float arc_step);

// The lines at `distance` beside an open path: on its left for a positive distance, on its
// right for a negative one (in a plane with y up), one path for each ring of the cleaned offset.
//
// The path is simplified (tolerance 0.01); where `extension`, widened to double, is above 0.1
// (as the float 0.1 is), its last point is put `extension` beyond the last but one point along
// the last segment (so a longer last segment gets shorter) and a point is put `extension` before
// the first one; then each end gets a hook
// 0.1 long, bent 1e-4 to the side. The path run forward and back, a ring of no area, is offset
// by offsetRing and united through ClipperLib, and of each ring of the union only the points
// that stem from the forward run between the hooks are kept, starting after a point that is not
// kept where there is one; a ring kept whole repeats its first point at its end. Each line is
// simplified (tolerance 0.02) and resampled to steps of at most 5, and comes in the union's order,
// as an empty path where nothing of a ring was kept.
//
// Lines of both signs run against the source path: the union gives the left side of a positive
// offset backwards, and the right side of a negative one forwards, which is then reversed.
//
// A |distance| below 1e-4 is no offset: the result is the extended and hooked path, simplified
// (0.02) and resampled (5), as one path. The hooks, 1e-4 to the side, leave every point of a
// straight path within 0.02 of the chord between them, so that a path of two points comes back
// as its two hooks alone, resampled.
//
// Fewer than 2 points, a negative `extension` or an `arc_step` below 0.1 give an empty list.
// Failures of ClipperLib pass to the caller as ClipperLib::clipperException, among them points
// of the offset too large for the grid, infinite or not a number.
PathList parallelPath(Path const& path, float extension, float distance, float arc_step);

#endif
