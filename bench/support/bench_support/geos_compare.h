#pragma once
// GEOS (C API) geometries of our points, and the distances by which benchmarks compare our
// results with GEOS's. Only benchmarks use GEOS.

#include "bench_support/timing.h"

#include <geos_c.h>

#include <algorithm>

namespace bench_support {

// A GEOS line string of points with x and y.
template <typename Points>
GEOSGeometry* lineString(GEOSContextHandle_t geos, Points const& points) {
    GEOSCoordSequence* sequence =
        GEOSCoordSeq_create_r(geos, static_cast<unsigned>(points.size()), 2);
    for (std::size_t i = 0; i < points.size(); ++i)
        GEOSCoordSeq_setXY_r(geos, sequence, static_cast<unsigned>(i), points[i].x, points[i].y);
    return GEOSGeom_createLineString_r(geos, sequence);
}

// The largest distance from a vertex of `from` (a line or a collection of lines) to `to`,
// through a prepared (indexed) geometry: the discrete Hausdorff distance in one direction, in
// n log n rather than n * m.
inline double farthestVertex(GEOSContextHandle_t geos, GEOSGeometry const* from,
                             GEOSGeometry const* to) {
    GEOSPreparedGeometry const* prepared = GEOSPrepare_r(geos, to);
    double farthest = 0.0;
    for (int part = 0; part < GEOSGetNumGeometries_r(geos, from); ++part) {
        GEOSCoordSequence const* vertices =
            GEOSGeom_getCoordSeq_r(geos, GEOSGetGeometryN_r(geos, from, part));
        unsigned size = 0;
        GEOSCoordSeq_getSize_r(geos, vertices, &size);
        for (unsigned i = 0; i < size; ++i) {
            double x = 0.0;
            double y = 0.0;
            GEOSCoordSeq_getXY_r(geos, vertices, i, &x, &y);
            GEOSGeometry* point = GEOSGeom_createPointFromXY_r(geos, x, y);
            double distance = 0.0;
            GEOSPreparedDistance_r(geos, prepared, point, &distance);
            farthest = std::max(farthest, distance);
            GEOSGeom_destroy_r(geos, point);
        }
    }
    GEOSPreparedGeom_destroy_r(geos, prepared);
    return farthest;
}

// The discrete Hausdorff distance of two lines, as GEOS's own but with indexed distances.
inline double hausdorff(GEOSContextHandle_t geos, GEOSGeometry const* a, GEOSGeometry const* b) {
    return std::max(farthestVertex(geos, a, b), farthestVertex(geos, b, a));
}

// The median time of `make`, a GEOS operation that returns a new geometry; the result of the last
// run is left in `result`, the others are destroyed between the runs.
template <typename Make>
double medianGeosSeconds(GEOSContextHandle_t geos, GEOSGeometry*& result, Make make) {
    result = nullptr;
    return medianSeconds(
        [&] {
            GEOSGeom_destroy_r(geos, result);
            result = nullptr;
        },
        [&] { result = make(); });
}

} // namespace bench_support
