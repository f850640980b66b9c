#include "coordinates/geodetic.h"

#include "proj_oracle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

namespace {

double const degree = 3.141592653589793 / 180.0;
double const semiMajorAxis = 6378137.0;
// What Decart2Geo leaves: it stops once a step moves the point by less than 1 cm, and the error
// left after that step is some 20 um.
double const iterationTolerance = 1e-4;

// Both hemispheres and both sides of the antimeridian, height 250 m. The poles are left out, as
// east has no direction there.
GeoPoint const centres[] = {
    {0.0, 0.0, 250.0},        {0.0, 90.0, 250.0},       {52.0, 9.0, 250.0}, {-45.0, -100.0, 250.0},
    {-17.8, 179.9995, 250.0}, {65.5, -179.9995, 250.0}, {78.2, 15.6, 250.0}};

ProjOracle topocentricAt(GeoPoint centre) {
    char definition[256];
    std::snprintf(definition, sizeof definition,
                  "+proj=cart +ellps=WGS84 +step +proj=topocentric +ellps=WGS84 +lat_0=%.17g "
                  "+lon_0=%.17g +h_0=%.17g",
                  centre.latitude, centre.longitude, centre.height);
    return ProjOracle(definition);
}

double wrapLongitude(double lon) {
    return lon > 180.0 ? lon - 360.0 : lon < -180.0 ? lon + 360.0 : lon;
}

// Along a parallel at a height, by the radius of curvature across the meridian.
double metresPerDegreeOfLongitude(double latitude, double height = 0.0) {
    double const sinLat = std::sin(latitude * degree);
    double const radius = semiMajorAxis / std::sqrt(1 - 0.0066943799901413 * sinLat * sinLat);
    return (radius + height) * std::cos(latitude * degree) * degree;
}

bool sameBits(GeoPoint const& a, GeoPoint const& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}
bool sameBits(LocalPoint const& a, LocalPoint const& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

TEST(CoordConv_centre, unsetFrameRefusesAndWritesNothing) {
    CoordConv frame;
    double a = 7.0;
    double b = 7.0;
    double c = 7.0;
    EXPECT_FALSE(frame.getLocalCenterLLH(&a, &b, &c));
    EXPECT_FALSE(frame.getLocalCenterECEF(&a, &b, &c));
    EXPECT_FALSE(frame.ECEFToLocal(semiMajorAxis, 0.0, 0.0, &a, &b));
    EXPECT_FALSE(frame.LLHToLocal(0.0, 0.0, 0.0, &a, &b));
    EXPECT_FALSE(frame.LocalToECEF(1.0, 1.0, &a, &b, &c));
    EXPECT_FALSE(frame.LocalToLLH(1.0, 1.0, &a, &b, &c));
    EXPECT_TRUE(a == 7.0 && b == 7.0 && c == 7.0);

    frame.setLocalCenterLLH(0.0, 0.0, 0.0);
    ASSERT_TRUE(frame.getLocalCenterLLH(&a, &b, &c));
    EXPECT_TRUE(a == 0.0 && b == 0.0 && c == 0.0);
}

TEST(CoordConv_centre, ecefCentreGoesThroughGeodeticCoordinates) {
    double centre[3] = {};
    Geo2Decart(-33.9 * degree, 18.4 * degree, 300.0, centre[0], centre[1], centre[2]);
    CoordConv frame;
    frame.setLocalCenterECEF(centre[0], centre[1], centre[2]);
    double lat = 0.0;
    double lon = 0.0;
    double h = 0.0;
    ASSERT_TRUE(frame.getLocalCenterLLH(&lat, &lon, &h));
    EXPECT_NEAR(lat, -33.9 * degree, 1e-11);
    EXPECT_NEAR(lon, 18.4 * degree, 1e-11);
    EXPECT_NEAR(h, 300.0, iterationTolerance);
}

TEST(Frame_proj, localToGeoLiesOnProjsTangentPlaneAndComesBack) {
    for (GeoPoint const& centre : centres) {
        SCOPED_TRACE(testing::Message() << centre.latitude << ", " << centre.longitude);
        ProjOracle const topocentric = topocentricAt(centre);
        ASSERT_TRUE(topocentric.valid());
        for (int i = -10; i <= 10; ++i) {
            for (int j = -10; j <= 10; ++j) {
                LocalPoint const point{static_cast<float>(i * 500.3),
                                       static_cast<float>(j * 499.7)};
                GeoPoint const geo = localToGeo(point, centre);
                PJ_COORD const enu = topocentric.forward(geo.longitude, geo.latitude, geo.height);
                EXPECT_NEAR(enu.enu.e, point.x, iterationTolerance);
                EXPECT_NEAR(enu.enu.n, -point.y, iterationTolerance);
                EXPECT_NEAR(enu.enu.u, 0.0, iterationTolerance);
                // Back within the iteration's error, then rounded to single precision.
                LocalPoint const back = geoToLocal(geo, centre);
                EXPECT_NEAR(back.x, point.x, std::fabs(point.x) * 0x1p-23 + iterationTolerance);
                EXPECT_NEAR(back.y, point.y, std::fabs(point.y) * 0x1p-23 + iterationTolerance);
            }
        }
    }
}

TEST(Frame_proj, geoToLocalGivesProjsEastAndNorth) {
    for (GeoPoint const& centre : centres) {
        SCOPED_TRACE(testing::Message() << centre.latitude << ", " << centre.longitude);
        ProjOracle const topocentric = topocentricAt(centre);
        ASSERT_TRUE(topocentric.valid());
        for (int i = -10; i <= 10; ++i) {
            for (int j = -10; j <= 10; ++j) {
                GeoPoint const geo{centre.latitude + i * 0.004,
                                   wrapLongitude(centre.longitude + j * 0.004), 250.0 + i * 10.0};
                PJ_COORD const enu = topocentric.forward(geo.longitude, geo.latitude, geo.height);
                LocalPoint const local = geoToLocal(geo, centre);
                // Rounded to single precision: half a unit in the last place, 0.24 mm at 4 km.
                EXPECT_NEAR(local.x, enu.enu.e, std::fabs(enu.enu.e) * 0x1p-24 + 1e-6);
                EXPECT_NEAR(local.y, -enu.enu.n, std::fabs(enu.enu.n) * 0x1p-24 + 1e-6);
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
                double back[3] = {};
                Decart2Geo(point, back[0], back[1], back[2]);
                // In metres on the ground.
                EXPECT_NEAR((back[0] / degree - lat) * 111320.0, 0.0, iterationTolerance);
                EXPECT_NEAR((back[1] / degree - lon) * 111320.0 * std::cos(lat * degree), 0.0,
                            iterationTolerance);
                EXPECT_NEAR(back[2], h, iterationTolerance);
            }
        }
    }
    // At the Earth's centre the first step divides 0 by 0; it runs on and ends without a signal.
    double lat = 1.0;
    double lon = 1.0;
    double h = 1.0;
    Decart2Geo(0.0, 0.0, 0.0, lat, lon, h);
    EXPECT_TRUE(std::isnan(lat) && lon == 0.0 && std::isnan(h));
}

TEST(Frame_height, tangentPlaneRisesAboveTheEllipsoid) {
    GeoPoint const centre{52.0, 9.0, 120.0};
    // Back to the centre within what the iteration leaves: 1e-10 degrees is 11 um.
    GeoPoint const atCentre = localToGeo({0.0f, 0.0f}, centre);
    EXPECT_NEAR(atCentre.latitude, centre.latitude, 1e-10);
    EXPECT_NEAR(atCentre.longitude, centre.longitude, 1e-10);
    EXPECT_NEAR(atCentre.height, centre.height, iterationTolerance);
    // d^2 / 2N, with N the radius of curvature across the meridian: 7.8 cm at 1 km.
    double const radius = metresPerDegreeOfLongitude(52.0) / std::cos(52.0 * degree) / degree;
    GeoPoint const kilometreEast = localToGeo({1000.0f, 0.0f}, centre);
    EXPECT_NEAR(kilometreEast.height - centre.height, 1000.0 * 1000.0 / (2 * radius), 1e-5);
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
