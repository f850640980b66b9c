#ifndef POLYGONS_PATH_GRID_H
#define POLYGONS_PATH_GRID_H

#include "polygons/path.h"

#include <clipper.hpp>

#include <cmath>

// The integer grid on which ClipperLib works. A coordinate goes over as its single-precision
// product with gridScale, truncated toward zero, and comes back as that integer in single
// precision divided by gridScale: a grid of 0.1 mm in a plane of metres.
inline constexpr float gridScale = 10000.0f;

// ClipperLib refuses points farther out than 2^62 - 1 on either axis with a clipperException. A
// product of 2^62 or more in size, infinite or not a number has no integer on the grid, and the
// conversion refuses it with the same exception rather than truncate it.
inline constexpr float gridLimit = 0x1p62f;

inline ClipperLib::cInt toGrid(float coordinate) {
    float const product = coordinate * gridScale;
    if (!(std::fabs(product) < gridLimit))
        throw ClipperLib::clipperException("Coordinate outside allowed range");
    return static_cast<ClipperLib::cInt>(product);
}

// With Z 0.
inline ClipperLib::IntPoint toGrid(LocalPoint point) {
    return {toGrid(point.x), toGrid(point.y)};
}

inline LocalPoint fromGrid(ClipperLib::IntPoint const& point) {
    return {static_cast<float>(point.X) / gridScale, static_cast<float>(point.Y) / gridScale};
}

#endif
