// parallelPath of recorded contour lines of 1,000, 10,000 and 100,000 points, and
// offsetAllAndUnite of field boundaries with holes of 400, 4,000 and 40,000 vertices, each at 3,
// 12 and 36 m, in source points per second, with the growth exponent of the time over the two
// larger sizes. Beside them, in the same run and on the same input, GEOS with round joins of as
// many segments: its offset curve for the lines and its buffer for the fields, the ratio of our
// time to GEOS's, and the Hausdorff distance between the lines or the area of the symmetric
// difference between the regions.

#include "../patterns/recorded_lines.h"

#include "bench_support/geos_compare.h"
#include "bench_support/machine.h"
#include "bench_support/timing.h"
#include "polygons/path_measures.h"
#include "polygons/path_offset.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

float const distances[] = {3.0f, 12.0f, 36.0f};
float const arcStep = 0.5f;
double const pi = 3.141592653589793;

// GEOS's segments per quarter circle for the joins that offsetRing makes at `distance`.
int quarterSegments(float distance) {
    return static_cast<int>(distance * (pi / 2.0) / arcStep) + 1;
}

// A field of about `vertices` points: a counter-clockwise boundary of half of them, some 800 m
// across with bays and bulges, and four clockwise holes of an eighth each, some 60 m across.
PathList fieldWithHoles(int vertices) {
    int const outerCount = vertices / 2;
    int const holeCount = vertices / 8;
    PathList rings(1);
    for (int i = 0; i < outerCount; ++i) {
        double const angle = 2.0 * pi * i / outerCount;
        double const radius = 400.0 + 60.0 * std::sin(3.0 * angle) +
                              25.0 * std::sin(11.0 * angle + 1.0) +
                              10.0 * std::sin(29.0 * angle + 2.0);
        rings[0].push_back({static_cast<float>(radius * std::cos(angle)),
                            static_cast<float>(radius * std::sin(angle))});
    }
    for (double const cx : {-150.0, 150.0}) {
        for (double const cy : {-150.0, 150.0}) {
            Path hole;
            for (int i = 0; i < holeCount; ++i) {
                double const angle = -2.0 * pi * i / holeCount;
                double const radius = 30.0 + 8.0 * std::sin(4.0 * angle);
                hole.push_back({static_cast<float>(cx + radius * std::cos(angle)),
                                static_cast<float>(cy + radius * std::sin(angle))});
            }
            rings.push_back(hole);
        }
    }
    return rings;
}

int pointCount(PathList const& paths) {
    int count = 0;
    for (Path const& path : paths)
        count += static_cast<int>(path.size());
    return count;
}

GEOSGeometry* multiLine(GEOSContextHandle_t geos, PathList const& lines) {
    std::vector<GEOSGeometry*> parts;
    for (Path const& line : lines)
        if (line.size() >= 2)
            parts.push_back(bench_support::lineString(geos, line));
    return GEOSGeom_createCollection_r(geos, GEOS_MULTILINESTRING, parts.data(),
                                       static_cast<unsigned>(parts.size()));
}

GEOSGeometry* linearRing(GEOSContextHandle_t geos, Path const& ring) {
    Path closed = ring;
    closed.push_back(ring.front());
    GEOSCoordSequence* sequence =
        GEOSCoordSeq_create_r(geos, static_cast<unsigned>(closed.size()), 2);
    for (std::size_t i = 0; i < closed.size(); ++i)
        GEOSCoordSeq_setXY_r(geos, sequence, static_cast<unsigned>(i), closed[i].x, closed[i].y);
    return GEOSGeom_createLinearRing_r(geos, sequence);
}

// The union of the rings of one orientation, each as a polygon.
GEOSGeometry* unionOfRings(GEOSContextHandle_t geos, PathList const& rings, bool holes) {
    std::vector<GEOSGeometry*> polygons;
    for (Path const& ring : rings)
        if (ring.size() >= 3 && (signedArea(ring) < 0.0f) == holes)
            polygons.push_back(GEOSGeom_createPolygon_r(geos, linearRing(geos, ring), nullptr, 0));
    GEOSGeometry* collection = GEOSGeom_createCollection_r(geos, GEOS_MULTIPOLYGON, polygons.data(),
                                                           static_cast<unsigned>(polygons.size()));
    GEOSGeometry* united = GEOSUnaryUnion_r(geos, collection);
    GEOSGeom_destroy_r(geos, collection);
    return united;
}

// The region of counter-clockwise outer rings less clockwise holes; islands in holes would need
// the nesting, which neither a field nor its offset here has.
GEOSGeometry* region(GEOSContextHandle_t geos, PathList const& rings) {
    GEOSGeometry* outer = unionOfRings(geos, rings, false);
    GEOSGeometry* holes = unionOfRings(geos, rings, true);
    GEOSGeometry* difference = GEOSDifference_r(geos, outer, holes);
    GEOSGeom_destroy_r(geos, outer);
    GEOSGeom_destroy_r(geos, holes);
    return difference;
}

double area(GEOSContextHandle_t geos, GEOSGeometry const* geometry) {
    double value = 0.0;
    GEOSArea_r(geos, geometry, &value);
    return value;
}

void printGrowth(char const* what, int smaller, int larger, double smallerSeconds,
                 double largerSeconds, float distance) {
    double const growth =
        std::log(largerSeconds / smallerSeconds) / std::log(static_cast<double>(larger) / smaller);
    std::printf("%-18s growth exponent from %d to %d points at %.0f m: %.2f\n\n", what, smaller,
                larger, distance, growth);
}

void benchParallelPath(GEOSContextHandle_t geos) {
    std::vector<Path> lines;
    for (int size : {1000, 10000, 100000})
        lines.push_back(bench_lines::recordedContour(size, 1).points());
    for (float distance : distances) {
        double seconds[3] = {};
        for (std::size_t s = 0; s < lines.size(); ++s) {
            PathList ours;
            seconds[s] = bench_support::medianSeconds(
                [] {}, [&] { ours = parallelPath(lines[s], 0.0f, distance, arcStep); });
            GEOSGeometry* source = bench_support::lineString(geos, lines[s]);
            GEOSGeometry* theirs = nullptr;
            // Both put a positive distance on the left (y up).
            double const geosSeconds = bench_support::medianGeosSeconds(geos, theirs, [&] {
                return GEOSOffsetCurve_r(geos, source, distance, quarterSegments(distance),
                                         GEOSBUF_JOIN_ROUND, 5.0);
            });
            GEOSGeometry* oursGeos = multiLine(geos, ours);
            int const size = static_cast<int>(lines[s].size());
            std::printf("%-18s %8d %5.0f m %12.2f %10.2f %10.2f %13.3f   (%.2f x GEOS)\n",
                        "parallelPath", size, distance, size / seconds[s] / 1e6, seconds[s] * 1e3,
                        geosSeconds * 1e3, bench_support::hausdorff(geos, oursGeos, theirs),
                        seconds[s] / geosSeconds);
            GEOSGeom_destroy_r(geos, oursGeos);
            GEOSGeom_destroy_r(geos, theirs);
            GEOSGeom_destroy_r(geos, source);
        }
        printGrowth("parallelPath", static_cast<int>(lines[1].size()),
                    static_cast<int>(lines[2].size()), seconds[1], seconds[2], distance);
    }
}

void benchOffsetAllAndUnite(GEOSContextHandle_t geos) {
    std::vector<PathList> fields;
    for (int size : {400, 4000, 40000})
        fields.push_back(fieldWithHoles(size));
    for (float distance : distances) {
        double seconds[3] = {};
        for (std::size_t s = 0; s < fields.size(); ++s) {
            PathList ours;
            // A positive distance moves into the counter-clockwise boundary and out of the holes.
            seconds[s] = bench_support::medianSeconds(
                [] {}, [&] { ours = offsetAllAndUnite(fields[s], distance, arcStep); });
            GEOSGeometry* source = region(geos, fields[s]);
            GEOSGeometry* theirs = nullptr;
            double const geosSeconds = bench_support::medianGeosSeconds(geos, theirs, [&] {
                return GEOSBufferWithStyle_r(geos, source, -distance, quarterSegments(distance),
                                             GEOSBUF_CAP_ROUND, GEOSBUF_JOIN_ROUND, 5.0);
            });
            GEOSGeometry* oursGeos = region(geos, ours);
            GEOSGeometry* difference = GEOSSymDifference_r(geos, oursGeos, theirs);
            int const size = pointCount(fields[s]);
            std::printf(
                "%-18s %8d %5.0f m %12.2f %10.2f %10.2f %10.2f m2 of %.0f   (%.2f x GEOS)\n",
                "offsetAllAndUnite", size, distance, size / seconds[s] / 1e6, seconds[s] * 1e3,
                geosSeconds * 1e3, area(geos, difference), area(geos, theirs),
                seconds[s] / geosSeconds);
            GEOSGeom_destroy_r(geos, difference);
            GEOSGeom_destroy_r(geos, oursGeos);
            GEOSGeom_destroy_r(geos, theirs);
            GEOSGeom_destroy_r(geos, source);
        }
        printGrowth("offsetAllAndUnite", pointCount(fields[1]), pointCount(fields[2]), seconds[1],
                    seconds[2], distance);
    }
}

} // namespace

int main() {
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    std::printf("%s; one thread\n", bench_support::machine_line().c_str());
    std::printf("arc step %.1f m, GEOS with as many segments per quarter circle; median of %d "
                "timings\n\n",
                arcStep, bench_support::timings);
    GEOSContextHandle_t const geos = GEOS_init_r();
    std::printf("%-18s %8s %7s %12s %10s %10s %13s\n", "procedure", "points", "offset",
                "M points/s", "ms", "GEOS ms", "Hausdorff m / symmetric difference");
    benchParallelPath(geos);
    benchOffsetAllAndUnite(geos);
    GEOS_finish_r(geos);
    return 0;
}
