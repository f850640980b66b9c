#ifndef POLYGONS_PATH_H
#define POLYGONS_PATH_H

#include "coordinates/points.h"

#include <vector>

// A path of plane points, open or a ring. A ring does not repeat its first point: its last point
// joins the first implicitly, and operations on rings wrap their indices around the size.
using Path = std::vector<LocalPoint>;
using PathList = std::vector<Path>;

#endif
