#pragma once
// Paths compared point for point, and lines measured against their source, for the plane
// geometry of the polygon and pattern tests.

#include "polygons/lines.h"
#include "polygons/path.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

inline float const notANumber = std::numeric_limits<float>::quiet_NaN();

// Each coordinate within `tolerance` of the expected one; with the default 0, exactly equal,
// not-a-number matching not-a-number. A single point is a path of one.
inline ::testing::AssertionResult samePath(Path const& actual, Path const& expected,
                                           float tolerance = 0.0f) {
    if (actual.size() != expected.size())
        return ::testing::AssertionFailure()
               << actual.size() << " points where " << expected.size() << " were expected";
    auto const same = [&](float a, float e) {
        return a == e || std::fabs(a - e) <= tolerance || (std::isnan(a) && std::isnan(e));
    };
    for (std::size_t i = 0; i < actual.size(); ++i)
        if (!same(actual[i].x, expected[i].x) || !same(actual[i].y, expected[i].y))
            return ::testing::AssertionFailure()
                   << "point " << i << " is (" << actual[i].x << ", " << actual[i].y << ") where ("
                   << expected[i].x << ", " << expected[i].y << ") was expected";
    return ::testing::AssertionSuccess();
}

// Every point of the line lies |distance| from the source within `tolerance`, on its left (y up)
// for a positive distance: judged by the nearest segment, where a point beside a vertex counts
// for both sides.
inline void expectBeside(Path const& line, Path const& source, float distance, float tolerance) {
    ASSERT_GE(line.size(), 2u);
    for (LocalPoint p : line) {
        float nearest = std::numeric_limits<float>::max(), side = 0.0f;
        for (std::size_t i = 0; i + 1 < source.size(); ++i) {
            LocalPoint const a = source[i], b = source[i + 1], q = closestOnSegment(p, a, b);
            if (std::hypot(p.x - q.x, p.y - q.y) < nearest) {
                nearest = std::hypot(p.x - q.x, p.y - q.y);
                side = (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
            }
        }
        EXPECT_NEAR(nearest, std::fabs(distance), tolerance) << p.x << " " << p.y;
        EXPECT_GE(side * distance, 0.0f) << p.x << " " << p.y;
    }
}
