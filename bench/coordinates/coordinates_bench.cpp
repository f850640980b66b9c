// Points per second of the plane and geodetic conversions on a million points of one field.

#include "coordinates/geodetic.h"
#include "coordinates/local_frame.h"

#include "bench_support/machine.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

int const runs = 7;
GeoPoint const centre{52.0, 9.0, 100.0};

// Keeps the conversions from being optimised away.
volatile double sink = 0.0;

// A machine working a 5 km square field: 200 swaths 25 m apart, one point per metre, so that
// consecutive points lie close together as in a recorded file.
std::vector<LocalPoint> fieldPath() {
    std::vector<LocalPoint> points;
    points.reserve(1000000);
    for (int swath = 0; swath < 200; ++swath) {
        float const x = -2500.0f + 25.0f * static_cast<float>(swath);
        for (int step = 0; step < 5000; ++step) {
            float const along = -2500.0f + static_cast<float>(step);
            points.push_back({x, swath % 2 == 0 ? along : -along});
        }
    }
    return points;
}

// Median over several runs of one pass over all points.
template <typename Pass> double pointsPerSecond(std::size_t count, Pass pass) {
    std::vector<double> rates;
    for (int run = 0; run < runs; ++run) {
        auto const start = std::chrono::steady_clock::now();
        pass();
        std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
        rates.push_back(static_cast<double>(count) / seconds.count());
    }
    std::nth_element(rates.begin(), rates.begin() + runs / 2, rates.end());
    return rates[runs / 2];
}

void report(char const* name, double rate) {
    std::printf("%-48s %8.2f M points/s\n", name, rate / 1e6);
}

} // namespace

int main() {
    std::printf("%s; one thread\n", bench_support::machine_line().c_str());

    std::vector<LocalPoint> const path = fieldPath();
    std::vector<GeoPoint> const geoPath = localToGeo(path, centre);
    std::vector<LocalPoint> shuffled = path;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(42));
    std::printf("%zu points along swaths over a 5 km x 5 km field at 52 N 9 E; median of %d runs\n",
                path.size(), runs);

    report("localToGeo, point by point", pointsPerSecond(path.size(), [&] {
               for (LocalPoint const& p : path)
                   sink = sink + localToGeo(p, centre).latitude;
           }));
    report("localToGeo, whole file", pointsPerSecond(path.size(), [&] {
               sink = sink + localToGeo(path, centre).back().latitude;
           }));
    // Two centres in turn: the frame is built for every point.
    GeoPoint const otherCentre{52.0, 9.0, 101.0};
    report("localToGeo, centre changing every point", pointsPerSecond(path.size(), [&] {
               for (std::size_t i = 0; i < path.size(); ++i)
                   sink = sink + localToGeo(path[i], i % 2 == 0 ? centre : otherCentre).latitude;
           }));
    report("geoToLocal, point by point", pointsPerSecond(geoPath.size(), [&] {
               for (GeoPoint const& g : geoPath)
                   sink = sink + geoToLocal(g, centre).x;
           }));

    LocalFrame frame(centre);
    report("LocalFrame::toLocal", pointsPerSecond(geoPath.size(), [&] {
               for (GeoPoint const& g : geoPath)
                   sink = sink + frame.toLocal(g).x;
           }));
    report("LocalFrame::toGeo", pointsPerSecond(path.size(), [&] {
               for (LocalPoint const& p : path)
                   sink = sink + frame.toGeo(p).latitude;
           }));
    report("LocalFrame::fastToGeo, path order", pointsPerSecond(path.size(), [&] {
               for (LocalPoint const& p : path)
                   sink = sink + frame.fastToGeo(p).latitude;
           }));
    report("LocalFrame::fastToGeo, shuffled order", pointsPerSecond(shuffled.size(), [&] {
               for (LocalPoint const& p : shuffled)
                   sink = sink + frame.fastToGeo(p).latitude;
           }));
    return 0;
}
