#ifndef POLYGONS_PATH_CLIP_H
#define POLYGONS_PATH_CLIP_H

#include "polygons/path.h"

#include <clipper.hpp>

#include <vector>

// Boolean operations on rings through ClipperLib, on its integer grid of 0.1 mm (a plane of
// metres; path_grid.h). Both operands are filled by the positive rule: a point is inside where
// the rings around it wind counter-clockwise (y up) more often than clockwise, so that a
// clockwise ring inside a counter-clockwise one is a hole. Results are rings as ClipperLib gives
// them: outer rings counter-clockwise, holes clockwise, coordinates on the grid.

// `clip_type` of the subjects (rings if `subjects_closed`, else open paths) and the clip rings.
// The result lists each outer ring of the solution before its holes and the rings inside those,
// the children of a ring last to first; `group_index`, where given, is cleared and receives for
// each result the index of the outer ring (among the solution's top-level rings) that it belongs
// to. `strictly_simple` asks ClipperLib for rings that do not even touch themselves. Any failure
// of ClipperLib, among them a coordinate too large for the grid, infinite or not a number, gives
// an empty list and leaves `group_index` as it was. So does an open subject with a spike, two
// consecutive edges (on the grid) that run opposite ways along one line, which ClipperLib 6.4.2
// keeps and may then process through a null pointer or an overflowing conversion.
PathList clipPaths(PathList const& subjects, bool subjects_closed, PathList const& clips,
                   ClipperLib::ClipType clip_type, std::vector<int>* group_index,
                   bool strictly_simple);

// clipPaths of one subject ring and one clip ring, not strictly simple.
PathList clipPair(Path const& subject, Path const& clip, ClipperLib::ClipType clip_type,
                  std::vector<int>* group_index);

#endif
