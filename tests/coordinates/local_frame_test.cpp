#include "coordinates/local_frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

double const degree = 3.141592653589793 / 180.0;

// Centres on both hemispheres and on both sides of the antimeridian.
GeoPoint const centres[] = {{0.0, 0.0, 0.0},          {52.0, 9.0, 100.0},
                            {-45.0, -100.0, 800.0},   {-17.8, 179.9995, 20.0},
                            {60.0, -179.9995, 150.0}, {60.0, 10.0, 0.0}};

bool sameBits(GeoPoint const& a, GeoPoint const& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Metres on the ground between two nearby positions; longitudes must be in the same range.
double groundDistance(GeoPoint const& a, GeoPoint const& b) {
    return std::hypot((a.latitude - b.latitude) * 111320.0,
                      (a.longitude - b.longitude) * 111320.0 * std::cos(a.latitude * degree));
}

} // namespace

TEST(LocalFrame_conversions, agreeWithTheConveniences) {
    for (GeoPoint const& centre : centres) {
        SCOPED_TRACE(centre.latitude);
        LocalFrame const frame(centre);
        for (int i = -5; i <= 5; ++i) {
            for (int j = -5; j <= 5; ++j) {
                GeoPoint const geo{centre.latitude + i * 0.007, centre.longitude + j * 0.009,
                                   centre.height + j};
                LocalPoint const local = frame.toLocal(geo);
                LocalPoint const convenient = geoToLocal(geo, centre);
                // The two keep their own degree factors, which may differ in the last bit; after
                // rounding to single precision that is at most one unit in the last place.
                EXPECT_NEAR(local.x, convenient.x, std::fabs(convenient.x) * 0x1p-23 + 1e-6);
                EXPECT_NEAR(local.y, convenient.y, std::fabs(convenient.y) * 0x1p-23 + 1e-6);

                GeoPoint const exact = frame.toGeo(local);
                GeoPoint const expected = localToGeo(local, centre);
                EXPECT_NEAR(exact.latitude, expected.latitude, 1e-12);
                EXPECT_NEAR(exact.longitude, expected.longitude, 1e-12);
                EXPECT_NEAR(exact.height, expected.height, 1e-6);
            }
        }
    }
}

TEST(FastToGeo_accuracy, withinAMillimetreOrSoOfTheExactConversion) {
    // A projective map of a 100 m cell cannot follow the curvature of the parallels: the error is
    // largest mid-cell and grows with latitude, 0.75 mm at 52 degrees and 1 mm at 60.
    double const tolerance = 1.2e-3;
    for (GeoPoint const& centre : centres) {
        SCOPED_TRACE(centre.latitude);
        LocalFrame frame(centre);
        double worst = 0.0;
        for (float y = -2500.0f; y <= 2500.0f; y += 23.7f) {
            for (float x = -2500.0f; x <= 2500.0f; x += 23.7f) {
                GeoPoint const fast = frame.fastToGeo({x, y});
                EXPECT_EQ(fast.height, 0.0);
                worst = std::max(worst, groundDistance(fast, frame.toGeo({x, y})));
            }
        }
        EXPECT_LT(worst, tolerance);
    }
}

TEST(FastToGeo_cache, resultDoesNotDependOnTheCellVisitedBefore) {
    LocalPoint const point{1234.5f, -567.25f};
    LocalPoint const visitedBefore[] = {
        {5000.0f, -567.25f}, // same row
        {1234.5f, 3000.0f},  // same column
        {1299.0f, -501.0f},  // same cell
        {-1234.5f, 567.25f}, // mirrored indices
    };
    GeoPoint const fresh = LocalFrame(centres[1]).fastToGeo(point);
    EXPECT_LT(groundDistance(fresh, LocalFrame(centres[1]).toGeo(point)), 1e-3);
    for (LocalPoint const& other : visitedBefore) {
        LocalFrame frame(centres[1]);
        frame.fastToGeo(other);
        EXPECT_TRUE(sameBits(frame.fastToGeo(point), fresh)) << other.x << " " << other.y;
    }
}

TEST(GridCell_index, cellOfAPointByFloor) {
    EXPECT_EQ(GridCell(LocalPoint{100.0f, 50.0f}), GridCell(1, 0));
    EXPECT_EQ(GridCell(LocalPoint{99.99f, -0.01f}), GridCell(0, -1));
    EXPECT_EQ(GridCell(LocalPoint{-100.0f, -100.5f}), GridCell(-1, -2));
    // Beyond the index range the cell is clamped, short of the value that marks no cell.
    EXPECT_EQ(GridCell(LocalPoint{1e30f, -1e30f}), GridCell(2147483520, -2147483520));
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(GridCell(LocalPoint{nan, nan}), GridCell(0, 0));
}

TEST(GridCell_index, orderAndArithmetic) {
    std::vector<GridCell> cells = {{3, 1}, {-2, 1}, {7, 0}, {0, -4}};
    std::sort(cells.begin(), cells.end());
    EXPECT_EQ(cells, (std::vector<GridCell>{{0, -4}, {7, 0}, {-2, 1}, {3, 1}})); // row by row
    EXPECT_TRUE(GridCell(1, 1) > GridCell(0, 1) && GridCell(1, 1) <= GridCell(1, 1) &&
                GridCell(1, 1) >= GridCell(1, 1) && GridCell(1, 2) != GridCell(2, 1));

    GridCell cell(-3, 7);
    EXPECT_EQ(-(cell + GridCell(1, 1) - GridCell(0, 3)), GridCell(2, -5));
    EXPECT_EQ(cell / 2.0f, GridCell(-1, 3)); // toward zero
    cell *= 1.5f;
    EXPECT_EQ(cell, GridCell(-4, 10));
    cell /= -4.0f;
    cell += GridCell(1, 1);
    cell -= GridCell(0, 2);
    EXPECT_EQ(cell, GridCell(2, -3));
    EXPECT_EQ(GridCell::lowerEdge(-2), -200.0f);
    EXPECT_EQ(GridCell::upperEdge(-2), -100.0f);
}
