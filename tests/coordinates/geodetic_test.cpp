// Geodetic conversions and the local plane frames: both directions against PROJ's tangent plane,
// the iteration against PROJ's geocentric conversion, the frame cache and the whole-file form
// bit for bit, the 100 m cells of fastToGeo and their indices.
#include "coordinates/geodetic.h"
#include "coordinates/local_frame.h"

#include "proj_oracle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <thread>
#include <vector>

namespace {

double const degree = 3.141592653589793 / 180.0;
double const semiMajorAxis = 6378137.0;
// What Decart2Geo leaves: it stops once a step moves the point by less than 1 cm, and the error
// left after that step is some 20 um.
double const iterationTolerance = 1e-4;

// Both hemispheres and both sides of the antimeridian, the last one beyond the latitudes where
// fastToGeo holds to a millimetre. The poles are left out, as east has no direction there.
GeoPoint const centres[] = {
    {0.0, 0.0, 250.0},        {0.0, 90.0, 250.0},       {52.0, 9.0, 100.0}, {-45.0, -100.0, 800.0},
    {-17.8, 179.9995, 250.0}, {60.0, -179.9995, 150.0}, {78.2, 15.6, 0.0}};

template <typename T> bool sameBits(T const& a, T const& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// Metres on the ground between two nearby positions; longitudes must be in the same range.
double groundDistance(GeoPoint const& a, GeoPoint const& b) {
    return std::hypot((a.latitude - b.latitude) * 111320.0,
                      (a.longitude - b.longitude) * 111320.0 * std::cos(a.latitude * degree));
}

} // namespace

TEST(CoordConv_centre, unsetFrameRefusesAndAnEcefCentreGoesThroughGeodetic) {
    CoordConv frame;
    double a = 7.0;
    double b = 7.0;
    double c = 7.0;
    EXPECT_FALSE(frame.getLocalCenterLLH(&a, &b, &c));
    EXPECT_FALSE(frame.getLocalCenterECEF(&a, &b, &c));
    EXPECT_FALSE(frame.ECEFToLocal(semiMajorAxis, 0.0, 0.0, &a, &b));
    EXPECT_FALSE(frame.LocalToLLH(1.0, 1.0, &a, &b, &c));
    EXPECT_TRUE(a == 7.0 && b == 7.0 && c == 7.0);

    double centre[3] = {};
    Geo2Decart(-33.9 * degree, 18.4 * degree, 300.0, centre[0], centre[1], centre[2]);
    frame.setLocalCenterECEF(centre[0], centre[1], centre[2]);
    ASSERT_TRUE(frame.getLocalCenterLLH(&a, &b, &c));
    EXPECT_NEAR(a, -33.9 * degree, 1e-11);
    EXPECT_NEAR(b, 18.4 * degree, 1e-11);
    EXPECT_NEAR(c, 300.0, iterationTolerance);
}

TEST(Frame_proj, bothDirectionsAgreeWithProjsTangentPlane) {
    for (GeoPoint const& centre : centres) {
        SCOPED_TRACE(testing::Message() << centre.latitude << ", " << centre.longitude);
        char definition[256];
        std::snprintf(definition, sizeof definition,
                      "+proj=cart +ellps=WGS84 +step +proj=topocentric +ellps=WGS84 +lat_0=%.17g "
                      "+lon_0=%.17g +h_0=%.17g",
                      centre.latitude, centre.longitude, centre.height);
        ProjOracle const topocentric(definition);
        ASSERT_TRUE(topocentric.valid());
        LocalFrame const frame(centre);
        for (int i = -10; i <= 10; ++i) {
            for (int j = -10; j <= 10; ++j) {
                // A plane point goes onto PROJ's plane (up 0) and comes back within the
                // iteration's error, then rounded to single precision.
                LocalPoint const point{static_cast<float>(i * 500.3),
                                       static_cast<float>(j * 499.7)};
                GeoPoint const geo = localToGeo(point, centre);
                PJ_COORD enu = topocentric.forward(geo.longitude, geo.latitude, geo.height);
                EXPECT_NEAR(enu.enu.e, point.x, iterationTolerance);
                EXPECT_NEAR(enu.enu.n, -point.y, iterationTolerance);
                EXPECT_NEAR(enu.enu.u, 0.0, iterationTolerance);
                EXPECT_LT(groundDistance(frame.toGeo(point), geo), 1e-6);
                EXPECT_NEAR(frame.toGeo(point).height, geo.height, 1e-6);
                LocalPoint const back = geoToLocal(geo, centre);
                EXPECT_NEAR(back.x, point.x, std::fabs(point.x) * 0x1p-23 + iterationTolerance);
                EXPECT_NEAR(back.y, point.y, std::fabs(point.y) * 0x1p-23 + iterationTolerance);

                // A geodetic point gives PROJ's east and north, rounded to single precision: half
                // a unit in the last place, 0.24 mm at 4 km; the frame keeps degree factors of its
                // own, which may round the other way.
                double const lon = centre.longitude + j * 0.004;
                GeoPoint const near{centre.latitude + i * 0.004,
                                    lon > 180.0    ? lon - 360.0
                                    : lon < -180.0 ? lon + 360.0
                                                   : lon,
                                    250.0 + i * 10.0};
                enu = topocentric.forward(near.longitude, near.latitude, near.height);
                for (LocalPoint const local : {geoToLocal(near, centre), frame.toLocal(near)}) {
                    EXPECT_NEAR(local.x, enu.enu.e, std::fabs(enu.enu.e) * 0x1p-23 + 1e-6);
                    EXPECT_NEAR(local.y, -enu.enu.n, std::fabs(enu.enu.n) * 0x1p-23 + 1e-6);
                }
            }
        }
    }
}

TEST(Geodetic_proj, decart2GeoInvertsProjsGeocentricConversion) {
    // Against the point that PROJ converted: PROJ's own inverse is a closed formula that drifts
    // by 29 mm at 20000 km.
    ProjOracle const geocentric("+proj=cart +ellps=WGS84");
    ASSERT_TRUE(geocentric.valid());
    for (double lat = -89.99; lat < 90.0; lat += 7.7) {
        for (double lon = -180.0; lon < 180.0; lon += 33.3) {
            for (double h : {-5000.0, 0.0, 300.0, 1e4, 1e5, 1e6, 2e7}) {
                SCOPED_TRACE(testing::Message() << lat << ", " << lon << ", " << h);
                PJ_COORD const xyz = geocentric.forward(lon, lat, h);
                double const point[3] = {xyz.xyz.x, xyz.xyz.y, xyz.xyz.z};
                GeoPoint back;
                Decart2Geo(point, back.latitude, back.longitude, back.height);
                EXPECT_LT(
                    groundDistance({back.latitude / degree, back.longitude / degree}, {lat, lon}),
                    iterationTolerance);
                EXPECT_NEAR(back.height, h, iterationTolerance);
            }
        }
    }
    // At the Earth's centre the first step divides 0 by 0; it runs on and ends without a signal.
    GeoPoint centre{1.0, 1.0, 1.0};
    Decart2Geo(0.0, 0.0, 0.0, centre.latitude, centre.longitude, centre.height);
    EXPECT_TRUE(std::isnan(centre.latitude) && centre.longitude == 0.0 &&
                std::isnan(centre.height));
}

TEST(Frame_cache, alternatingCentresGiveTheBitsOfAFreshFrame) {
    // Each centre differs from the one before in one value; -0.0 and 0.0 differ only in bits.
    GeoPoint const sequence[] = {{52.0, 9.0, 100.0}, {52.0, 9.0, 160.0}, {52.0, 9.5, 160.0},
                                 {52.5, 9.5, 160.0}, {52.0, 9.0, 100.0}, {-0.0, 0.0, 0.0},
                                 {0.0, 0.0, 0.0}};
    LocalPoint const local{1234.5f, -987.25f};
    GeoPoint const geo{52.01, 9.02, 130.0};
    for (GeoPoint const& centre : sequence) {
        GeoPoint const converted = localToGeo(local, centre);
        LocalPoint const projected = geoToLocal(geo, centre);
        // A new thread has converted nothing before, so it builds its frame afresh.
        GeoPoint fresh;
        LocalPoint freshProjected;
        std::thread([&] {
            fresh = localToGeo(local, centre);
            freshProjected = geoToLocal(geo, centre);
        }).join();
        EXPECT_TRUE(sameBits(converted, fresh));
        EXPECT_TRUE(sameBits(projected, freshProjected));
    }
    // Only the centre's height changed: the plane and the point on it are 60 m higher.
    EXPECT_NEAR(localToGeo(local, sequence[1]).height - localToGeo(local, sequence[0]).height, 60.0,
                1e-5);
}

TEST(Frame_file, wholeFileGivesTheBitsOfSinglePoints) {
    std::vector<LocalPoint> points;
    for (int i = 0; i < 1001; ++i) // not a multiple of the points done together
        points.push_back({static_cast<float>(i * 9.7 - 4000.0), static_cast<float>(i * -3.3)});
    // The last centre lies at the Earth's centre, where no frame can be set.
    for (GeoPoint const& centre : {centres[4], GeoPoint{0.0, 0.0, -semiMajorAxis}}) {
        std::vector<GeoPoint> const converted = localToGeo(points, centre);
        ASSERT_EQ(converted.size(), points.size());
        for (std::size_t i = 0; i < points.size(); ++i)
            EXPECT_TRUE(sameBits(converted[i], localToGeo(points[i], centre))) << i;
    }
    EXPECT_TRUE(localToGeo(std::vector<LocalPoint>(), centres[4]).empty());
}

TEST(Gravity_normal, matchesTheNormalGravityOfTheEllipsoid) {
    // WGS-84 normal gravity by the closed formula, m/s^2; the series is good to 2 um/s^2.
    EXPECT_NEAR(getLocalGravity(0.0, 0.0), 9.7803253359, 2e-6);
    EXPECT_NEAR(getLocalGravity(45.0 * degree, 0.0), 9.806199203, 2e-6);
    EXPECT_NEAR(getLocalGravity(-90.0 * degree, 0.0), 9.8321849378, 2e-6);
    // The free-air gradient is 3.086 um/s^2 per metre at 45 degrees.
    EXPECT_NEAR(getLocalGravity(45.0 * degree, 1000.0), 9.806199203 - 0.003086, 4e-6);
}

TEST(FastToGeo_accuracy, withinAMillimetreOrSoOfTheExactConversionWhateverCameBefore) {
    // A projective map of a 100 m cell cannot follow the curvature of the parallels: the error is
    // largest mid-cell and grows with latitude, 0.75 mm at 52 degrees and 1 mm at 60.
    for (GeoPoint const& centre : centres) {
        if (centre.latitude > 60.0)
            continue;
        SCOPED_TRACE(centre.latitude);
        LocalFrame frame(centre);
        double const tolerance = 1.2e-3;
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
    // The map of a cell does not depend on the cell visited before.
    LocalPoint const point{1234.5f, -567.25f};
    GeoPoint const fresh = LocalFrame(centres[2]).fastToGeo(point);
    // Same row, same column, same cell, mirrored indices.
    for (LocalPoint const other : {LocalPoint{5000.0f, -567.25f}, LocalPoint{1234.5f, 3000.0f},
                                   LocalPoint{1299.0f, -501.0f}, LocalPoint{-1234.5f, 567.25f}}) {
        LocalFrame frame(centres[2]);
        frame.fastToGeo(other);
        EXPECT_TRUE(sameBits(frame.fastToGeo(point), fresh)) << other.x << " " << other.y;
    }
}

TEST(GridCell_index, cellsByFloorInRowOrderWithTruncatingArithmetic) {
    EXPECT_EQ(GridCell(LocalPoint{100.0f, 50.0f}), GridCell(1, 0));
    EXPECT_EQ(GridCell(LocalPoint{99.99f, -0.01f}), GridCell(0, -1));
    EXPECT_EQ(GridCell(LocalPoint{-100.0f, -100.5f}), GridCell(-1, -2));
    // Beyond the index range the cell is clamped, short of the value that marks no cell.
    EXPECT_EQ(GridCell(LocalPoint{1e30f, -1e30f}), GridCell(2147483520, -2147483520));
    float const nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(GridCell(LocalPoint{nan, nan}), GridCell(0, 0));

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
