#pragma once
// Recorded guidance lines for the benchmarks of the pattern library and the polygon toolkit.

#include "patterns/guidance_curve.h"

#include <cmath>
#include <random>

namespace bench_lines {

// A contour line as a display records it along a field's edge: it runs east overall, its
// heading staying within 85 degrees of east so that it never crosses itself, in straight runs of
// 5 to 60 m joined by bends of radius 6 to 80 m that turn either way by 30 to 170 degrees, so
// that offsets of 12 and 36 m meet inner turns tighter than themselves. The machine's position
// comes every 0.3 m with 3 cm of noise and goes through TGuidanceCurve::add, which thins it,
// until the line holds `count` points.
inline TGuidanceCurve recordedContour(int count, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::normal_distribution<double> noise(0.0, 0.03);
    double const pi = 3.141592653589793;
    double const widest = 85.0 * pi / 180.0;
    double const step = 0.3;
    double x = 0.0;
    double y = 0.0;
    double heading = 0.0;
    TGuidanceCurve line;
    auto advance = [&](double distance, double turn) {
        for (double done = 0.0; done < distance && line.count() < count; done += step) {
            heading += turn * step;
            x += step * std::cos(heading);
            y += step * std::sin(heading);
            line.add(
                {static_cast<float>(x + noise(random)), static_cast<float>(y + noise(random))});
        }
    };
    while (line.count() < count) {
        advance(5.0 + 55.0 * unit(random), 0.0);
        double target = heading;
        while (std::fabs(target - heading) < 30.0 * pi / 180.0)
            target = widest * (2.0 * unit(random) - 1.0);
        double const radius = 6.0 + 74.0 * unit(random);
        advance(radius * std::fabs(target - heading), (target > heading ? 1.0 : -1.0) / radius);
        heading = target;
    }
    line.finish();
    return line;
}

} // namespace bench_lines
