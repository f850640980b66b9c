#pragma once
// Paths compared point for point, for the plane geometry of the polygon and pattern tests.

#include "polygons/path.h"

#include <gtest/gtest.h>

#include <cmath>

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
