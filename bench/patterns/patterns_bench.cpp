// Parallel curves of recorded contour lines of 1,000, 10,000 and 100,000 points at 3, 12 and
// 36 m, by offsetByEvents and offsetByVertices with their clean-ups, in source points per second,
// with the growth exponent of the time from 10,000 to 100,000 points. Beside them GEOS's offset
// curve of the same lines (mitre joins): the ratio of our time to GEOS's and the Hausdorff
// distance between the two results.

#include "recorded_lines.h"

#include "bench_support/geos_compare.h"
#include "bench_support/machine.h"
#include "bench_support/timing.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

int const sizes[] = {1000, 10000, 100000};
float const distances[] = {3.0f, 12.0f, 36.0f};

} // namespace

int main() {
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    std::printf("%s; one thread\n", bench_support::machine_line().c_str());
    std::printf("recorded contour lines (bends of radius 6 to 80 m); median of %d timings\n\n",
                bench_support::timings);
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
                seconds[s] = bench_support::medianSeconds(
                    [&] { work = lines[s]; }, [&] { procedure.offset(work, distance); });

                GEOSGeometry* source = bench_support::lineString(geos, lines[s].points());
                GEOSGeometry* theirs = nullptr;
                // GEOS puts positive distances on the left; ours lie on the right.
                double const geosSeconds = bench_support::medianGeosSeconds(geos, theirs, [&] {
                    return GEOSOffsetCurve_r(geos, source, -distance, 8, GEOSBUF_JOIN_MITRE, 5.0);
                });
                GEOSGeometry* ours = bench_support::lineString(geos, work.offsetPoints());
                std::printf("%-18s %8d %5.0f m %12.2f %10.2f %10.2f %13.3f   (%.2f x GEOS)\n",
                            procedure.name, lines[s].count(), distance,
                            lines[s].count() / seconds[s] / 1e6, seconds[s] * 1e3,
                            geosSeconds * 1e3, bench_support::hausdorff(geos, ours, theirs),
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
