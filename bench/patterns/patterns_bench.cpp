// Parallel curves of recorded contour lines of 1,000, 10,000 and 100,000 points at 3, 12 and
// 36 m, by offsetByEvents and offsetByVertices with their clean-ups, in source points per second,
// with the growth exponent of the time from 10,000 to 100,000 points. Beside them GEOS's offset
// curve of the same lines (mitre joins): the ratio of our time to GEOS's and the Hausdorff
// distance between the two results.

#include "recorded_lines.h"

#include "bench_support/machine.h"

#include <geos_c.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

int const sizes[] = {1000, 10000, 100000};
float const distances[] = {3.0f, 12.0f, 36.0f};
// Each figure is the median of this many timings, each of enough repetitions to last 0.1 s.
int const timings = 5;
double const shortestTiming = 0.1;

double secondsOf(std::function<void()> const& run) {
    auto const start = std::chrono::steady_clock::now();
    run();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Median seconds of one call of `run`, where `prepare` (untimed) sets up each call.
double medianSeconds(std::function<void()> const& prepare, std::function<void()> const& run) {
    prepare();
    int repetitions = std::max(1, static_cast<int>(shortestTiming / secondsOf(run)));
    std::vector<double> seconds;
    for (int t = 0; t < timings; ++t) {
        double total = 0.0;
        for (int r = 0; r < repetitions; ++r) {
            prepare();
            total += secondsOf(run);
        }
        seconds.push_back(total / repetitions);
    }
    std::nth_element(seconds.begin(), seconds.begin() + timings / 2, seconds.end());
    return seconds[timings / 2];
}

GEOSGeometry* lineString(GEOSContextHandle_t geos, Path const& points) {
    GEOSCoordSequence* sequence =
        GEOSCoordSeq_create_r(geos, static_cast<unsigned>(points.size()), 2);
    for (std::size_t i = 0; i < points.size(); ++i)
        GEOSCoordSeq_setXY_r(geos, sequence, static_cast<unsigned>(i), points[i].x, points[i].y);
    return GEOSGeom_createLineString_r(geos, sequence);
}

// The largest distance from a vertex of `from` (a line or a collection of lines) to `to`,
// through a prepared (indexed) geometry: the discrete Hausdorff distance in one direction, in
// n log n rather than n * m.
double farthestVertex(GEOSContextHandle_t geos, GEOSGeometry const* from, GEOSGeometry const* to) {
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
double hausdorff(GEOSContextHandle_t geos, GEOSGeometry const* a, GEOSGeometry const* b) {
    return std::max(farthestVertex(geos, a, b), farthestVertex(geos, b, a));
}

} // namespace

int main() {
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    std::printf("%s; one thread\n", bench_support::machine_line().c_str());
    std::printf("recorded contour lines (bends of radius 6 to 80 m); median of %d timings\n\n",
                timings);
    GEOSContextHandle_t const geos = GEOS_init_r();
    std::printf("%-18s %8s %7s %12s %10s %10s %13s\n", "procedure", "points", "offset",
                "M points/s", "ms", "GEOS ms", "Hausdorff m");

    using Offset = void (*)(TGuidanceCurve&, float);
    struct Procedure {
        char const* name;
        Offset offset;
    } const procedures[] = {
        {"offsetByEvents", [](TGuidanceCurve& c, float d) { c.offsetByEvents(false, d); }},
        {"offsetByVertices", [](TGuidanceCurve& c, float d) { c.offsetByVertices(d); }},
    };
    std::vector<TGuidanceCurve> lines;
    for (int size : sizes)
        lines.push_back(bench_lines::recordedContour(size, 1));

    for (Procedure const& procedure : procedures) {
        for (float distance : distances) {
            double seconds[3] = {};
            for (std::size_t s = 0; s < lines.size(); ++s) {
                TGuidanceCurve work;
                seconds[s] = medianSeconds([&] { work = lines[s]; },
                                           [&] { procedure.offset(work, distance); });

                GEOSGeometry* source = lineString(geos, lines[s].points());
                GEOSGeometry* theirs = nullptr;
                // GEOS puts positive distances on the left; ours lie on the right.
                double const geosSeconds = medianSeconds(
                    [&] {
                        GEOSGeom_destroy_r(geos, theirs);
                        theirs = nullptr;
                    },
                    [&] {
                        theirs =
                            GEOSOffsetCurve_r(geos, source, -distance, 8, GEOSBUF_JOIN_MITRE, 5.0);
                    });
                GEOSGeometry* ours = lineString(geos, work.offsetPoints());
                std::printf("%-18s %8d %5.0f m %12.2f %10.2f %10.2f %13.3f   (%.2f x GEOS)\n",
                            procedure.name, lines[s].count(), distance,
                            lines[s].count() / seconds[s] / 1e6, seconds[s] * 1e3,
                            geosSeconds * 1e3, hausdorff(geos, ours, theirs),
                            seconds[s] / geosSeconds);
                GEOSGeom_destroy_r(geos, ours);
                GEOSGeom_destroy_r(geos, theirs);
                GEOSGeom_destroy_r(geos, source);
            }
            double const growth =
                std::log(seconds[2] / seconds[1]) /
                std::log(static_cast<double>(lines[2].count()) / lines[1].count());
            std::printf("%-18s growth exponent from %d to %d points at %.0f m: %.2f\n\n",
                        procedure.name, lines[1].count(), lines[2].count(), distance, growth);
        }
    }
    GEOS_finish_r(geos);
    return 0;
}
